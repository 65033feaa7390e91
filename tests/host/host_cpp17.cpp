// A host in C++17: wraps what the library hands out in owners, as a host of any size would, and takes a
// workbook through open, query, change, save and reopen. Says in a sentence what is not as it should be.
//
//   host_cpp17 SAMPLE FOLDER      SAMPLE: sample_biff5.xls or sample_biff8.xls; what is written goes into
//   FOLDER
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "tolvenar/tolvenar.h"

namespace {

void Require(bool condition, const std::string& sentence) {
  if (!condition) throw std::runtime_error(sentence);
}

// A VARIANT and what it holds.
class Value {
 public:
  Value() { VariantInit(&value_); }
  explicit Value(double number) : Value() {
    value_.vt = VT_R8;
    value_.dblVal = number;
  }
  explicit Value(std::string_view text) : Value() {
    const std::u16string units(text.begin(), text.end());
    value_.vt = VT_BSTR;
    value_.bstrVal =
        SysAllocStringLen(reinterpret_cast<const OLECHAR*>(units.data()), static_cast<UINT>(units.size()));
  }
  Value(Value&& other) noexcept : value_(other.value_) { VariantInit(&other.value_); }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
  Value& operator=(Value&&) = delete;
  ~Value() { VariantClear(&value_); }

  VARIANT* get() { return &value_; }

 private:
  VARIANT value_;
};

struct DestroyArray {
  void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
};
using Array = std::unique_ptr<SAFEARRAY, DestroyArray>;

struct Range {
  uint16_t firstRow = 0, lastRow = 0, firstColumn = 0, lastColumn = 0;
};

// An open workbook: the buffer, its size and its table.
class Workbook {
 public:
  explicit Workbook(const std::filesystem::path& path) {
    Check(XLOpenFile(path.string().c_str(), &buffer_, &size_), "open " + path.string());
    Locate();
    XLGetNumVers(buffer_, table_);
  }
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;
  ~Workbook() {
    XLFreeHandle(&table_);
    XLFreeHandle(&buffer_);
  }

  int Sheets() const { return XLGetNumSheets(table_); }
  int Generation() const { return XLGetNumVers(buffer_, table_); }

  Range UsedRange(int16_t sheet) const {
    Range range;
    Check(XLGetSheetSize(buffer_, table_, sheet, &range.firstRow, &range.lastRow, &range.firstColumn,
                         &range.lastColumn),
          "range");
    return range;
  }

  // Numbers and texts; formulas and errors would need an array of VT_VARIANT.
  Array Values(int16_t sheet) const {
    const Range range = UsedRange(sheet);
    SAFEARRAYBOUND bounds[2] = {{range.lastRow, 1}, {range.lastColumn, 1}};
    SAFEARRAY* cells = SafeArrayCreate(VT_BSTR, 2, bounds);
    Require(cells != nullptr, "no memory for an array");
    const int16_t result = XLGetVariantData(&cells, buffer_, table_, sheet);
    Array owner(cells);
    Check(result, "read the cells");
    return owner;
  }

  void Put(int16_t sheet, int16_t row, int16_t column, Value value) {
    Check(XLChangeCellValue(&buffer_, table_, &size_, sheet, row, column, value.get()), "change a cell");
  }

  void Format(int16_t sheet, int16_t row, int16_t column, uint16_t xf) {
    Check(XLChangeCellXF(&buffer_, table_, &size_, sheet, row, column, xf), "format a cell");
  }

  void Save(const std::filesystem::path& path) {
    Check(XLSaveFile(path.string().c_str(), &buffer_, &table_, &size_), "save " + path.string());
    Locate();
  }

 private:
  static void Check(int16_t result, const std::string& what) {
    Require(result == 0, "could not " + what + ": result " + std::to_string(result));
  }

  void Locate() { Check(XLLocateSheets(buffer_, &table_, size_), "locate the sheets"); }

  uint32_t buffer_ = 0;
  uint32_t table_ = 0;
  uint32_t size_ = 0;
};

// A cell's text, one byte a character.
std::string Cell(const Array& cells, LONG row, LONG column) {
  LONG index[2] = {row, column};
  BSTR value = nullptr;
  Require(SafeArrayGetElement(cells.get(), index, &value) == S_OK, "an element can't be read");
  std::string text;
  if (value != nullptr) text.assign(reinterpret_cast<const char*>(value), SysStringByteLen(value));
  SysFreeString(value);
  return text.substr(0, text.find('\0'));
}

void RequireCell(const Array& cells, LONG row, LONG column, const std::string& expected) {
  const std::string found = Cell(cells, row, column);
  Require(found == expected, "cell (" + std::to_string(row) + ", " + std::to_string(column) + ") is '" +
                                 found + "', not '" + expected + "'");
}

void ReadSample(const Workbook& book, int generation) {
  Require(book.Sheets() == 2, "the sample has not two sheets");
  Require(book.Generation() == generation, "the sample is of another generation");
  const Range range = book.UsedRange(2);
  Require(range.lastRow == 4 && range.lastColumn == 5, "the second sheet has another range");
  const Array cells = book.Values(2);
  RequireCell(cells, 1, 1, "Region");
  RequireCell(cells, 2, 2, "");
  RequireCell(cells, 3, 4, "250.000000");
  RequireCell(cells, 4, 5, "0.072000");
}

void ChangeSample(Workbook& book) {
  book.Put(2, 2, 4, Value(-1.25));
  book.Put(2, 3, 2, Value("Ada"));
  book.Put(2, 4, 4, Value());
  book.Format(2, 4, 5, 15);
}

// A text is written in BIFF5's layout in both generations, on purpose: a reader of BIFF8 takes its first
// character for flags, and one character of what stands behind it.
void RequireWrittenText(const Workbook& book, LONG row, LONG column, const std::string& text) {
  const std::string expected = text.substr(book.Generation() == 6 ? 1 : 0);
  const std::string found = Cell(book.Values(2), row, column);
  Require(found.substr(0, expected.size()) == expected, "the text '" + text + "' reads as '" + found + "'");
}

void ReadChanged(const Workbook& book) {
  const Array cells = book.Values(2);
  RequireCell(cells, 2, 4, "-1.250000");
  RequireWrittenText(book, 3, 2, "Ada");
  RequireCell(cells, 4, 4, "");
  RequireCell(cells, 3, 4, "250.000000");
}

// Saved again and again, the work goes on with the buffer that a save hands back.
void SaveTwice(const std::filesystem::path& sample, const std::filesystem::path& saved, int generation) {
  Workbook book(sample);
  ReadSample(book, generation);
  ChangeSample(book);
  ReadChanged(book);
  book.Save(saved);
  ReadChanged(book);
  book.Put(2, 3, 3, Value("555"));
  book.Save(saved);
}

void Run(const std::filesystem::path& sample, const std::filesystem::path& folder) {
  const int generation = sample.string().find("biff5") != std::string::npos ? 5 : 6;
  const std::string suffix = std::to_string(generation) + ".xls";
  const std::filesystem::path copy = folder / ("cpp17_copy_" + suffix);
  const std::filesystem::path saved = folder / ("cpp17_saved_" + suffix);
  std::filesystem::remove(saved);
  std::filesystem::remove(copy);  // not every C++ library replaces a file on Windows
  std::filesystem::copy_file(sample, copy);
  SaveTwice(copy, saved, generation);
  {
    const Workbook again(saved);
    ReadChanged(again);
    RequireWrittenText(again, 3, 3, "555");
  }
  uint32_t bytes = 0;
  Require(MEMORYHANDLES(&bytes, 0) == 0, "closed workbooks left blocks behind");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: host_cpp17 SAMPLE FOLDER\n";
    return 2;
  }
  try {
    Run(argv[1], argv[2]);
  } catch (const std::exception& problem) {
    std::cerr << "host_cpp17: " << problem.what() << '\n';
    return 1;
  }
  std::cout << argv[1] << ": opened, changed, saved and read back\n";
  return 0;
}
