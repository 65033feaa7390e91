// Calls: the pool, workbook files, queries.
#include "faults/calls.h"
#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "support/workbook_file.h"
#include "tolvenar/tolvenar.h"
#include "workbook/biff_version.h"

namespace tolvenar::testing {

namespace {

// A file of a workbook with filler behind its last EOF, which an open cuts off.
void BookFile(Ground& g) {
  ASSERT_TRUE(WriteWorkbook(g.Path(), "Workbook", TwoSheetBook(kBiff8).Stream() + Bytes(600)));
}

void OpenBookWithFile(Ground& g) {
  OpenBook(g);
  BookFile(g);
}

void OpenWithoutTable(Ground& g) {
  OpenBook(g);
  MEMORYFREE(&g.table);
}

// BIFF8 globals with one shared string, and a cell that shows it.
void OpenStringBook(Ground& g) {
  StreamBuilder book;
  book.Bof(6).Sheet("Data").Record(0x00FC, U32(1) + U32(1) + U16(2) + Bytes{0} + Text("hi"));
  book.Record(0x00FF, U16(8) + Bytes(8))
      .Eof()
      .Bof(6, kWorksheet)
      .Dimensions(0, 1, 0, 1)
      .LabelSst(0, 0, 15, 0);
  g.position = book.Last();
  OpenStream(g, book.Eof(), kBiff8);
  g.array = std::make_unique<TestArray>(VT_BSTR, 1, 1, 1, 1);
}

int32_t ExtLabel(Ground& g) {
  int32_t index = 0;
  int16_t bucket = 0;
  ::XLEXTLabel(g.buffer, &index, &bucket, ::XLNumStrExt(g.buffer, g.table), g.array->Ref(),
               static_cast<int32_t>(g.position));
  return 0;
}

int32_t List(Ground& g) {
  int32_t count = 0;
  g.array = std::make_unique<TestArray>(VT_BSTR, 1, 60);
  SAFEARRAY* none = nullptr;
  return ::XLGetList(g.buffer, static_cast<int32_t>(g.size), &count, &none, &none, g.array->Ref(), &none);
}

int32_t SheetSize(Ground& g) {
  uint16_t bounds[4] = {};
  return ::XLGetSheetSize(g.buffer, g.table, 1, bounds, bounds + 1, bounds + 2, bounds + 3);
}

void TakeBlock(Ground& g) {
  g.block = MEMORYALLOC(64);
}

int32_t Grow(Ground& g) {
  const uint32_t moved = ::MEMORYREALLOC(g.block, 5000);
  if (moved != 0) g.block = moved;
  return moved != 0;
}

using enum Leaves;

}  // namespace

std::vector<Call> PoolCalls() {
  // clang-format off
  return {
      {"MEMORYALLOC", "", Nothing, [](Ground& g) { return (g.block = ::MEMORYALLOC(64)) != 0; }, {1}, {{0, kNone}}},
      {"MEMORYREALLOC", "", TakeBlock, Grow, {1}, {{0, kNone}}},
      {"MEMORYFREE", "", TakeBlock, [](Ground& g) { return ::MEMORYFREE(&g.block); }, {1}, {}},
      {"MEMORYREMOVE", "", TakeBlock, [](Ground& g) { return ::MEMORYREMOVE(&g.block); }, {1}, {}},
      {"MEMORYISHANDLE", "", TakeBlock, [](Ground& g) { return ::MEMORYISHANDLE(g.block) != 0; }, {1}, {}},
      {"MEMORYFREEALL", "", Nothing, [](Ground&) { return ::MEMORYFREEALL(), 0; }, {0}, {}},
      {"MEMORYHANDLES", "", Nothing, [](Ground& g) { return ::MEMORYHANDLES(&g.size, 0) > 9; }, {0}, {}},
      {"MEMORYSIZE", "", TakeBlock, [](Ground& g) { return ::MEMORYSIZE(g.block) == 64; }, {1}, {}},
      {"MEMORYALLOCSIZE", "", TakeBlock, [](Ground& g) { return ::MEMORYALLOCSIZE(g.block) >= 64; }, {1}, {}},
      {"MEMORYSET", "", TakeBlock, [](Ground& g) { return ::MEMORYSET(&g.block, 64); }, {64}, {}},
      {"MEMORYSET1", "", TakeBlock, [](Ground& g) { return ::MEMORYSET1(&g.block, 64, 7); }, {64}, {}},
      {"MEMORYGET", "", TakeBlock, [](Ground& g) { return ::MEMORYGET(&g.block, 64, 1) != 0; }, {0}, {}},
  };
  // clang-format on
}

std::vector<Call> FileCalls() {
  const auto open = [](Ground& g) { return ::XLOpenFile(g.Path().c_str(), &g.buffer, &g.size); };
  const auto locate = [](Ground& g) { return ::XLLocateSheets(g.buffer, &g.table, g.size); };
  const auto save = [](Ground& g) { return ::XLSaveFile(g.Path().c_str(), &g.buffer, &g.table, &g.size); };
  const auto refresh = [](Ground& g) { return ::XLRefreshHandles(&g.buffer, g.table, &g.size); };
  const auto locate_empty = [](Ground& g) {
    return ::XLEmptyBookLocateSheets(g.buffer, &g.table, static_cast<int32_t>(g.size));
  };
  const auto make = [](int32_t selector) {
    return [selector](Ground& g) { return ::XLCreateEmptyBook(&g.buffer, &g.size, selector); };
  };
  const auto empty_book = [](Ground& g) { ::XLCreateEmptyBook(&g.buffer, &g.size, 8); };
  // clang-format off
  return {
      {"XLOpenFile", "", BookFile, open, {0}, {{5, kNone}, {2, kStale}}},
      {"XLLocateSheets", "", OpenWithoutTable, locate, {0}, {{11, kStale}}},
      {"XLFreeHandle", "", OpenBook, [](Ground& g) { return ::XLFreeHandle(&g.buffer) != 0; }, {1}, {}},
      {"XLSaveFile", "New", OpenBook, save, {0}, {{4, kUnchanged}, {6, kUnchanged}}},
      {"XLSaveFile", "Existing", OpenBookWithFile, save, {0}, {{4, kUnchanged}, {6, kUnchanged}}},
      {"DebugSaveFile", "", Nothing, [](Ground& g) { return ::DebugSaveFile(g.Path().c_str(), 3); }, {0}, {}},
      {"XLRefreshHandles", "", OpenBook, refresh, {0}, {{4, kUnchanged}, {6, kUnchanged}}},
      {"XLDeleteDBCells", "", OpenBook, [](Ground& g) { return ::XLDeleteDBCells(g.buffer, g.size); }, {0}, {}},
      {"XLCreateEmptyBook", "Biff5", Nothing, make(5), {0}, {{-1, kNone}, {-2, kNone}}},
      {"XLCreateEmptyBook", "Biff8", Nothing, make(8), {0}, {{-1, kNone}, {-2, kNone}}},
      {"XLEmptyBookLocateSheets", "", empty_book, locate_empty, {0}, {{11, kStale}}},
  };
  // clang-format on
}

std::vector<Call> QueryCalls() {
  const auto values = [](Ground& g) {
    g.array = std::make_unique<TestArray>(VT_BSTR, 1, 4, 1, 6);
    return ::XLGetVariantData(g.array->Ref(), g.buffer, g.table, 1);
  };
  const auto xfs = [](Ground& g) {
    g.array = std::make_unique<TestArray>(VT_I2, 1, 4, 1, 6);
    return ::XLGetCellData(g.array->Ref(), g.buffer, g.table, 1);
  };
  const auto access = [](Ground& g) {
    g.array = std::make_unique<TestArray>(VT_I2, 1, 4);
    return ::XLSGetVariantData(0, g.array->Ref());
  };
  // clang-format off
  return {
      {"XLGetList", "", OpenBook, List, {0}, {{10, kUnchanged}}},
      {"XLGetNumSheets", "", OpenBook, [](Ground& g) { return ::XLGetNumSheets(g.table); }, {2}, {}},
      {"XLGetNumVers", "", OpenBook, [](Ground& g) { return ::XLGetNumVers(g.buffer, g.table); }, {6}, {}},
      {"XLVersInt", "", Nothing, [](Ground&) { return ::XLVersInt(7); }, {7}, {}},
      {"XLGetNameSheet", "", OpenBook, [](Ground& g) { return ::XLGetNameSheet(g.buffer, g.table, 2, &g.text); }, {3}, {{0, kUnchanged}}},
      {"XLGetSheetParam", "", OpenBook, [](Ground& g) { return ::XLGetSheetParam(g.buffer, g.table, 2, 0, 0, 0, 0) != 0; }, {1}, {{0, kUnchanged}}},
      {"XLSheetsNameNum", "", OpenBook, [](Ground& g) { return ::XLSheetsNameNum(g.buffer, g.table, 0); }, {0}, {}},
      {"XLNumStrBucket", "", OpenStringBook, [](Ground& g) { return ::XLNumStrBucket(g.buffer, g.table); }, {8}, {}},
      {"XLNumStrExt", "", OpenStringBook, [](Ground& g) { return ::XLNumStrExt(g.buffer, g.table) > 0; }, {1}, {}},
      {"XLEXTLabel", "", OpenStringBook, ExtLabel, {0}, {}},
      {"XLGetSheetSize", "", OpenBook, SheetSize, {0}, {}},
      {"XLGetVariantData", "", OpenBook, values, {0}, {}},
      {"XLGetVariantData", "SharedString", OpenStringBook, [](Ground& g) { return ::XLGetVariantData(g.array->Ref(), g.buffer, g.table, 1); }, {0}, {}},
      {"XLSGetVariantData", "", Nothing, access, {0}, {}},
      {"XLGetCellData", "", OpenBook, xfs, {0}, {}},
  };
  // clang-format on
}

}  // namespace tolvenar::testing
