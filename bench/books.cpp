// Workbooks to measure on. What stands in them is drawn in books.h.
#include "books.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "sheet/sheet_splice.h"
#include "tolvenar/tolvenar.h"
#include "workbook/sheet_table.h"

namespace bench {

namespace {

using tolvenar::testing::Bytes;
using tolvenar::testing::operator+;
using tolvenar::testing::StreamBuilder;

constexpr uint16_t kXf = 15;
constexpr uint16_t kTypeSst = 0x00FC;

int TextsFor(int rows) {
  return std::max(1, rows * kTextColumns / kCellsPerText);
}

uint32_t RkOf(int32_t integer) {
  return static_cast<uint32_t>(integer) << 2 | 2u;
}

void AddNumbers(StreamBuilder* cells, uint16_t row, int value_row) {
  for (uint16_t column = 0; column < kColumns; ++column)
    cells->Number(row, column, kXf, NumberAt(value_row, column));
}

void AddIntegers(StreamBuilder* cells, uint16_t row, int value_row) {
  constexpr int kSingle = kColumns / 2;
  for (uint16_t column = 0; column < kSingle; ++column)
    cells->Rk(row, column, kXf, RkOf(IntegerAt(value_row, column)));
  Bytes run = tolvenar::testing::U16(row) + tolvenar::testing::U16(kSingle);
  for (int column = kSingle; column < kColumns; ++column)
    run = run + tolvenar::testing::U16(kXf) + tolvenar::testing::U32(RkOf(IntegerAt(value_row, column)));
  cells->Record(tolvenar::kTypeMulRk, run + tolvenar::testing::U16(kColumns - 1));
}

void AddTexts(StreamBuilder* cells, uint16_t row, int texts) {
  for (uint16_t column = 0; column < kTextColumns; ++column)
    cells->LabelSst(row, column, kXf, static_cast<uint32_t>((row * kTextColumns + column) % texts));
}

void AddMixed(StreamBuilder* cells, uint16_t row) {
  for (uint16_t column = 0; column < 5; ++column) cells->Number(row, column, kXf, NumberAt(row, column));
  cells->MulRk(row, 5, {{kXf, RkOf(row)}, {kXf, RkOf(7 * row)}, {kXf, RkOf(100)}})
      .Rk(row, 8, kXf, RkOf(IntegerAt(row, 8)))
      .LabelBiff8(row, 9, kXf, "a text of a report");
}

Bytes CellsOf(Kind kind, int rows, int first_value_row) {
  StreamBuilder cells;
  for (int i = 0; i < rows; ++i) {
    const uint16_t row = static_cast<uint16_t>(i);
    if (kind == Kind::kNumbers) AddNumbers(&cells, row, first_value_row + i);
    if (kind == Kind::kIntegers) AddIntegers(&cells, row, first_value_row + i);
    if (kind == Kind::kTexts) AddTexts(&cells, row, TextsFor(rows));
    if (kind == Kind::kMixed) AddMixed(&cells, row);
  }
  return cells.Stream();
}

Bytes SharedStrings(int texts) {
  Bytes strings = tolvenar::testing::U32(static_cast<uint32_t>(texts * kCellsPerText)) +
                  tolvenar::testing::U32(static_cast<uint32_t>(texts));
  for (int i = 0; i < texts; ++i) {
    const std::string text = TextAt(i);
    strings.push_back(static_cast<uint8_t>(text.size()));
    strings.insert(strings.end(), {0, 0});
    strings.insert(strings.end(), text.begin(), text.end());
  }
  return StreamBuilder().Record(kTypeSst, strings).Stream();
}

// Puts one SST record with all texts in front of the globals' EOF. It is longer than other programs make one: they would cut it by CONTINUE
// records, of which the library knows nothing.
void AddSharedStrings(Book* book, int texts) {
  const Bytes record = SharedStrings(texts);
  const uint32_t added = static_cast<uint32_t>(record.size());
  const uint32_t at = tolvenar::GlobalsEnd(tolvenar::OpenBlock(book->table));
  book->buffer = ::MEMORYREALLOC(book->buffer, static_cast<int32_t>(book->size + added));
  Require(book->buffer != 0, "no room for the shared strings");
  uint8_t* bytes = tolvenar::BlockBytes(book->buffer);
  std::memmove(bytes + at + added, bytes + at, book->size - at);
  std::copy(record.begin(), record.end(), bytes + at);
  book->size += added;
  tolvenar::ShiftSheetOffsets(book->buffer, added);
  ::XLFreeHandle(&book->table);
  Require(::XLLocateSheets(book->buffer, &book->table, book->size) == 0, "the sheets can't be located");
}

// Adds a sheet by the staged calls, its cells as they stand in `cells`.
void AddSheet(Book* book, int columns, int rows, const Bytes& cells) {
  const int16_t number = ::AppendVariantSheet1(&book->buffer, &book->size, "");
  uint32_t at = 0;
  Require(number > 0 && ::CreateVariantSheet1A(&book->buffer, &book->size, columns - 1, rows - 1, &at) == 0,
          "no sheet");
  StreamBuilder last_row;  // the one that states the range makes one ROW less
  last_row.Row(static_cast<uint16_t>(rows - 1), 0, static_cast<uint16_t>(columns));
  for (const Bytes& part : {last_row.Stream(), cells}) {
    const uint32_t end = at + static_cast<uint32_t>(part.size());
    book->buffer = ::MEMORYREALLOC(book->buffer, static_cast<int32_t>(end));
    Require(book->buffer != 0, "the workbook is too large for the pool");
    std::copy(part.begin(), part.end(), tolvenar::BlockBytes(book->buffer) + at);
    at = end;
  }
  book->size = at;
  Require(::CreateVariantSheet3(&book->buffer, &book->size, &at) == 0 &&
              ::AppendVariantSheet2(&book->buffer, &book->size, number) == number,
          "the sheet can't be closed");
}

int ColumnsOf(Kind kind) {
  return kind == Kind::kTexts ? kTextColumns : kind == Kind::kMixed ? kMixedColumns : kColumns;
}

}  // namespace

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "benchmark: %s\n", what);
  std::exit(1);
}

double NumberAt(int row, int column) {
  return row * 1.37 + column * 0.001 + 0.1;
}

int32_t IntegerAt(int row, int column) {
  return row % 1000 * 20 + column;
}

std::string TextAt(int index) {
  char text[16];
  std::snprintf(text, sizeof text, "Text %04d", index);
  return text;
}

int SheetsOf(Kind kind) {
  return kind == Kind::kNumbers || kind == Kind::kIntegers ? 2 : 1;
}

Book MakeBook(Kind kind, int rows) {
  ::MEMORYFREEALL();
  Book book;
  Require(::XLCreateEmptyBook(&book.buffer, &book.size, 8) == 0, "no empty book");
  const int sheets = SheetsOf(kind);
  for (int sheet = 0; sheet < sheets; ++sheet) {
    const int part = rows / sheets;
    AddSheet(&book, ColumnsOf(kind), part, CellsOf(kind, part, sheet * part));
  }
  Require(::XLLocateSheets(book.buffer, &book.table, book.size) == 0, "the sheets can't be located");
  if (kind == Kind::kTexts) AddSharedStrings(&book, TextsFor(rows));
  return book;
}

void Release(Book* book) {
  ::XLFreeHandle(&book->table);
  ::XLFreeHandle(&book->buffer);
}

void Save(Book* book, const std::string& path) {
  Require(::XLSaveFile(path.c_str(), &book->buffer, &book->table, &book->size) == 0,
          "the workbook can't be saved");
  Require(::XLLocateSheets(book->buffer, &book->table, book->size) == 0, "the sheets can't be located");
}

std::string FreshPath(const std::string& name) {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / ("tolvenar_bench_" + name);
  std::filesystem::remove(path);
  return path.string();
}

}  // namespace bench
