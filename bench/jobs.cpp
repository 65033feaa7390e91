// The pieces of work that are measured.
#include "jobs.h"

#include <algorithm>

#include "tolvenar/tolvenar.h"

namespace bench {

namespace {

constexpr int kSliceRows = 1000;
constexpr int kWrittenTextColumns = 10;
constexpr uint16_t kXf = 15;

VARIANT NumberValue(double number) {
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_R8;
  value.dblVal = number;
  return value;
}

void Change(Book* book, int16_t sheet, int row, int column, double number) {
  const VARIANT value = NumberValue(number);
  Require(::XLChangeCellValue(&book->buffer, book->table, &book->size, sheet, static_cast<int16_t>(row),
                              static_cast<int16_t>(column), &value) == 0,
          "a cell can't be changed");
}

void SaveAndClose(Book* book, const std::string& path) {
  Require(::XLSaveFile(path.c_str(), &book->buffer, &book->table, &book->size) == 0,
          "the workbook can't be saved");
  ::XLFreeHandle(&book->buffer);
}

uint16_t LastRowOf(const Book& book, int16_t sheet, uint16_t* last_column) {
  uint16_t first_row = 0;
  uint16_t last_row = 0;
  uint16_t first_column = 0;
  Require(::XLGetSheetSize(book.buffer, book.table, sheet, &first_row, &last_row, &first_column,
                           last_column) == 0,
          "the sheet has no size");
  return last_row;
}

}  // namespace

Book Open(const std::string& path) {
  Book book;
  Require(::XLOpenFile(path.c_str(), &book.buffer, &book.size) == 0, "the workbook can't be opened");
  Require(::XLLocateSheets(book.buffer, &book.table, book.size) == 0, "the sheets can't be located");
  return book;
}

SAFEARRAY* ArrayFor(const Book& book, int16_t sheet) {
  uint16_t columns = 0;
  const uint16_t rows = LastRowOf(book, sheet, &columns);
  SAFEARRAYBOUND bounds[2] = {{rows, 1}, {columns, 1}};
  SAFEARRAY* cells = SafeArrayCreate(VT_BSTR, 2, bounds);
  Require(cells != nullptr, "no array");
  return cells;
}

void ReadSheet(const Book& book, int16_t sheet, SAFEARRAY* cells) {
  Require(::XLGetVariantData(&cells, book.buffer, book.table, sheet) == 0, "the cells can't be read");
}

int64_t CountTexts(SAFEARRAY* cells) {
  LONG last_row = 0;
  LONG last_column = 0;
  SafeArrayGetUBound(cells, 1, &last_row);
  SafeArrayGetUBound(cells, 2, &last_column);
  void* data = nullptr;
  SafeArrayAccessData(cells, &data);
  const BSTR* texts = static_cast<const BSTR*>(data);
  const int64_t count = std::count_if(texts, texts + int64_t{last_row} * last_column,
                                      [](BSTR text) { return text != nullptr; });
  SafeArrayUnaccessData(cells);
  return count;
}

int ReadFile(const std::string& path) {
  Book book = Open(path);
  const int16_t sheets = ::XLGetNumSheets(book.table);
  for (int16_t sheet = 1; sheet <= sheets; ++sheet) {
    SAFEARRAY* cells = ArrayFor(book, sheet);
    ReadSheet(book, sheet, cells);
    SafeArrayDestroy(cells);
  }
  Release(&book);
  return sheets;
}

void ChangeOne(const std::string& path) {
  Book book = Open(path);
  uint16_t columns = 0;
  const uint16_t rows = LastRowOf(book, 2, &columns);
  Change(&book, 2, rows / 2 + 1, columns / 2 + 1, 0.1);
  SaveAndClose(&book, path);
}

void ChangeMany(const std::string& path, int rows, int count) {
  Book book = Open(path);
  for (int i = 0; i < count; ++i) {
    const int row =
        static_cast<int>(int64_t{i} * 7919 % rows) + 1;  // a prime: all over the sheet, in no order
    Change(&book, 1, row, i % kMixedColumns + 1, i + 0.5);
  }
  SaveAndClose(&book, path);
}

void InsertRow(const std::string& path, int rows) {
  Book book = Open(path);
  const int16_t position = static_cast<int16_t>(rows / SheetsOf(Kind::kNumbers) / 2);
  Require(::XLInsertRow(&book.buffer, book.table, &book.size, 1, position) == 0, "no row can be inserted");
  SaveAndClose(&book, path);
}

Values::Values(int rows_, int columns_)
    : rows(rows_), columns(columns_), xfs(static_cast<size_t>(columns_), kXf) {
  cells.reserve(static_cast<size_t>(rows) * static_cast<size_t>(columns));
}

Values::~Values() {
  for (VARIANT& cell : cells) VariantClear(&cell);
}

Values Values::Numbers(int rows) {
  Values made(rows, kColumns);
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < kColumns; ++column)
      made.cells.push_back(NumberValue(NumberAt(row, column)));
  }
  return made;
}

Values Values::Texts(int rows) {
  Values made(rows, kWrittenTextColumns);
  for (int i = 0; i < rows * kWrittenTextColumns; ++i) {
    const std::string narrow = TextAt(i % 5000);
    const std::u16string wide(narrow.begin(), narrow.end());
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(reinterpret_cast<const OLECHAR*>(wide.c_str()));
    made.cells.push_back(value);
  }
  return made;
}

uint32_t WriteBook(const std::string& path, const Values& values) {
  Book book;
  Require(::XLCreateEmptyBook(&book.buffer, &book.size, 8) == 0, "no empty book");
  const int16_t number = ::AppendVariantSheet1(&book.buffer, &book.size, "Data");
  uint32_t at = 0;
  bool done = ::CreateVariantSheet1A(&book.buffer, &book.size, values.columns - 1, values.rows - 1, &at) == 0;
  for (int row = 0; row < values.rows && done; row += kSliceRows) {
    const int slice = std::min(kSliceRows, values.rows - row);
    done =
        ::CreateVariantSheet2A(&book.buffer, &book.size, &at, 0, static_cast<uint16_t>(row),
                               static_cast<uint16_t>(values.columns), static_cast<uint16_t>(slice),
                               values.cells.data() + int64_t{row} * values.columns, values.xfs.data()) == 0;
  }
  Require(done && ::CreateVariantSheet3(&book.buffer, &book.size, &at) == 0 &&
              ::AppendVariantSheet2(&book.buffer, &book.size, number) == number,
          "the sheet can't be written");
  const uint32_t size = book.size;
  Require(::XLLocateSheets(book.buffer, &book.table, book.size) == 0, "the sheets can't be located");
  SaveAndClose(&book, path);
  return size;
}

}  // namespace bench
