// Calls: sheets added to a workbook, in one call and in stages.
#include "faults/calls.h"
#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "tolvenar/tolvenar.h"

namespace tolvenar::testing {

namespace {

constexpr int16_t kColumns = 2;
constexpr int16_t kRows = 3;
constexpr uint16_t kXfs[kColumns] = {1, 1};

constexpr uint32_t kSlot = 1024;  // the one that the copies of the workbooks with a sheet more are begun in

// A workbook of `size` bytes, in a larger slot, whose table has been let go, as it is stale after the call anyway.
void OpenOfSize(Ground& g, uint32_t size) {
  const uint32_t plain = static_cast<uint32_t>(TwoSheetBook(kBiff8).Stream().size());
  OpenStream(g, TwoSheetBook(kBiff8, size - kBufEndSize - kHeaderSize - plain), kBiff8);
  ASSERT_EQ(g.size, size);
  g.buffer = MEMORYREALLOC(g.buffer, 33000);
  MEMORYFREE(&g.table);
}

// A new sheet fits into the slot beside it, and does not.
void OpenForSheets(Ground& g) {
  OpenTightBook(g);
  MEMORYFREE(&g.table);
}
void OpenFull(Ground& g) {
  OpenOfSize(g, kSlot - 60);
}

// As large as it takes for the new sheet to end so near the end of the slot that a BUFEND does not fit behind it.
using Append = int32_t (*)(Ground&);
std::function<void(Ground&)> FullButForTheEnd(Append append) {
  return [append](Ground& g) {
    constexpr uint32_t kSmall = 700;
    uint32_t grown = 0;
    {
      Ground probe;
      OpenOfSize(probe, kSmall);
      append(probe);
      grown = probe.size - kSmall;
    }
    OpenOfSize(g, kSlot - 1 - grown + kBufEndSize);
  };
}

void FillCells(Ground& g) {
  for (int i = 0; i < kRows; ++i) g.cells.R8(i).Text(OLESTR("cell"));
}

int32_t AppendEmpty(Ground& g) {
  return ::XLAppendSheet(&g.buffer, &g.size, "New", kColumns, kRows);
}

int32_t AppendFull(Ground& g) {
  static const char kText[16] = "text";
  const std::vector<const char*> texts(size_t{kColumns} * kRows, kText);
  return ::XLAppendFullSheet(&g.buffer, &g.size, "New", kColumns, kRows, texts.data());
}

int32_t AppendVariants(Ground& g) {
  FillCells(g);
  return ::XLAppendVariantSheet(&g.buffer, &g.size, "New", kColumns, kRows, g.cells.Addresses().data(), kXfs);
}

// The last cell is none that can be written, and the new buffer has outgrown its slot by then.
int32_t AppendNull(Ground& g) {
  const std::u16string units(200, u'x');
  g.cells.Text(reinterpret_cast<const OLECHAR*>(units.c_str())).Empty(VT_NULL);
  return ::XLAppendVariantSheet(&g.buffer, &g.size, "New", 2, 1, g.cells.Addresses().data(), kXfs);
}

int32_t AppendNullArray(Ground& g) {
  g.array = std::make_unique<TestArray>(VT_VARIANT, 0, 9);
  VARIANT null = {};
  null.vt = VT_NULL;
  LONG last = 9;
  EXPECT_EQ(SafeArrayPutElement(g.array->Get(), &last, &null), S_OK);
  return ::XLAppendVariantSheetVB(&g.buffer, &g.size, "New", 1, 10, g.array->Ref(), nullptr);
}

int32_t AppendArray(Ground& g) {
  g.array = std::make_unique<TestArray>(VT_VARIANT, 0, kColumns * kRows - 1);
  g.array2 = std::make_unique<TestArray>(VT_I2, 0, kColumns - 1);
  return ::XLAppendVariantSheetVB(&g.buffer, &g.size, "New", kColumns, kRows, g.array->Ref(),
                                  g.array2->Ref());
}

// The stages up to the one under test.
void Spliced(Ground& g) {
  OpenForSheets(g);
  ASSERT_EQ(::AppendVariantSheet1(&g.buffer, &g.size, "New"), 3);
}

void SplicedFull(Ground& g) {
  OpenFull(g);
  ASSERT_EQ(::AppendVariantSheet1(&g.buffer, &g.size, "New"), 3);
}

void Opened(Ground& g) {
  Spliced(g);
  ASSERT_EQ(::CreateVariantSheet1(&g.buffer, &g.size, &g.position), 0);
}

void OpenedWithRows(Ground& g) {
  Spliced(g);
  ASSERT_EQ(::CreateVariantSheet1A(&g.buffer, &g.size, kColumns, kRows, &g.position), 0);
}

void Closed(Ground& g) {
  OpenedWithRows(g);
  ASSERT_EQ(::CreateVariantSheet3(&g.buffer, &g.size, &g.position), 0);
}

int32_t FillAll(Ground& g) {
  FillCells(g);
  return ::CreateVariantSheet2(&g.buffer, &g.size, &g.position, kColumns, kRows, g.cells.Data(), kXfs);
}

int32_t FillSlice(Ground& g) {
  FillCells(g);
  return ::CreateVariantSheet2A(&g.buffer, &g.size, &g.position, 0, 0, kColumns, kRows, g.cells.Data(), kXfs);
}

int32_t AppendRecords(Ground& g) {
  FillCells(g);
  return ::CreateVariantSheet(&g.buffer, &g.size, kColumns, kRows, g.cells.Addresses().data(), kXfs);
}

int32_t AppendRecordsWithNull(Ground& g) {
  const std::u16string units(200, u'x');
  g.cells.Text(reinterpret_cast<const OLECHAR*>(units.c_str())).Empty(VT_NULL);
  return ::CreateVariantSheet(&g.buffer, &g.size, 2, 1, g.cells.Addresses().data(), kXfs);
}

using enum Leaves;

}  // namespace

std::vector<Call> SheetCalls() {
  const auto splice = [](Ground& g) { return ::AppendVariantSheet1(&g.buffer, &g.size, "New"); };
  const auto open = [](Ground& g) { return ::CreateVariantSheet1(&g.buffer, &g.size, &g.position); };
  const auto open_a = [](Ground& g) {
    return ::CreateVariantSheet1A(&g.buffer, &g.size, kColumns, kRows, &g.position);
  };
  const auto close = [](Ground& g) { return ::CreateVariantSheet3(&g.buffer, &g.size, &g.position); };
  const auto finish = [](Ground& g) { return ::AppendVariantSheet2(&g.buffer, &g.size, 3); };
  const auto end = [](Ground& g) { return ::AddZemblerRecord(&g.buffer, &g.size); };
  const std::vector<Failure> appends = {
      {-2, kNone}, {-4, kUnchanged}, {-5, kAny}, {-7, kLive}, {-8, kReleased}};
  const std::vector<Failure> stages = {{-2, kReleased}};
  // clang-format off
  return {
      {"XLAppendSheet", "", OpenForSheets, AppendEmpty, {3}, appends},
      {"XLAppendSheet", "Full", OpenFull, AppendEmpty, {3}, appends},
      {"XLAppendSheet", "FullButForTheEnd", FullButForTheEnd(AppendEmpty), AppendEmpty, {3}, appends},
      {"XLAppendFullSheet", "", OpenForSheets, AppendFull, {3}, appends},
      {"XLAppendFullSheet", "Full", OpenFull, AppendFull, {3}, appends},
      {"XLAppendFullSheet", "FullButForTheEnd", FullButForTheEnd(AppendFull), AppendFull, {3}, appends},
      {"XLAppendVariantSheet", "", OpenForSheets, AppendVariants, {3}, appends},
      {"XLAppendVariantSheet", "Full", OpenFull, AppendVariants, {3}, appends},
      {"XLAppendVariantSheet", "FullButForTheEnd", FullButForTheEnd(AppendVariants), AppendVariants, {3}, appends},
      {"XLAppendVariantSheet", "Null", OpenForSheets, AppendNull, {-5}, appends},
      {"XLAppendVariantSheet", "FullNull", OpenFull, AppendNull, {-5}, appends},
      {"XLAppendVariantSheetVB", "", OpenForSheets, AppendArray, {3}, appends},
      {"XLAppendVariantSheetVB", "Full", OpenFull, AppendArray, {3}, appends},
      {"XLAppendVariantSheetVB", "FullButForTheEnd", FullButForTheEnd(AppendArray), AppendArray, {3}, appends},
      {"XLAppendVariantSheetVB", "FullNull", OpenFull, AppendNullArray, {-5}, appends},
      {"CreateVariantSheet", "", Spliced, AppendRecords, {0}, {{-2, kAny}}},
      {"CreateVariantSheet", "Full", SplicedFull, AppendRecords, {0}, {{-2, kAny}}},
      {"CreateVariantSheet", "Null", Spliced, AppendRecordsWithNull, {2}, {{-2, kAny}, {2, kAny}}},
      {"CreateVariantSheet", "FullNull", SplicedFull, AppendRecordsWithNull, {2}, {{-2, kAny}, {2, kAny}}},
      {"AppendVariantSheet1", "", OpenForSheets, splice, {3}, {{-2, kKept}}},
      {"CreateVariantSheet1", "", Spliced, open, {0}, stages},
      {"CreateVariantSheet1A", "", Spliced, open_a, {0}, stages},
      {"CreateVariantSheet2", "", Opened, FillAll, {0}, stages},
      {"CreateVariantSheet2A", "", OpenedWithRows, FillSlice, {0}, stages},
      {"CreateVariantSheet3", "", OpenedWithRows, close, {0}, stages},
      {"AppendVariantSheet2", "", Closed, finish, {3}, {{-2, kReleased}, {-8, kReleased}, {-7, kLive}}},
      {"AddZemblerRecord", "", OpenForSheets, end, {0}, stages},
  };
  // clang-format on
}

}  // namespace tolvenar::testing
