// How the workbook of workbook.h calls the library.
#include "workbook.h"

#include <algorithm>
#include <cstddef>
#include <memory>

namespace report {

namespace {

constexpr int kNoSuchCell = 1;            // XLChangeCellValue, XLChangeCellXF
constexpr int kListedAtMost = 32767;      // XLGetList counts with 16 bits
constexpr uint8_t kPatchTypeHigh = 0xFE;  // the high byte of a patch record's type; its low bytes:
constexpr uint8_t kDetour = 0xFF;
constexpr uint8_t kResume = 0xFA;
constexpr uint8_t kSlack = 0xFD;
constexpr uint8_t kBufEnd = 0xF8;
constexpr uint8_t kBof = 0x09;  // low bytes of ordinary types
constexpr uint8_t kEof = 0x0A;
constexpr uint8_t kFormula = 0x06;
constexpr size_t kFormulaRow = 4;  // fields of a FORMULA, from its first byte
constexpr size_t kFormulaColumn = 6;
constexpr size_t kFormulaLength = 24;
constexpr size_t kFormulaTokens = 26;

struct DestroyArray {
  void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
};
using Array = std::unique_ptr<SAFEARRAY, DestroyArray>;

void Check(int result, const std::string& what) {
  if (result != 0) throw Failure(what, result);
}

Array Checked(SAFEARRAY* array) {
  if (array == nullptr) throw std::bad_alloc();
  return Array(array);
}

// An array for a sheet, addressed from (1, 1) up to the last row and column.
Array MakeCells(VARTYPE type, ULONG rows, ULONG columns) {
  SAFEARRAYBOUND bounds[2] = {};
  bounds[0].cElements = rows;
  bounds[0].lLbound = 1;
  bounds[1].cElements = columns;
  bounds[1].lLbound = 1;
  return Checked(SafeArrayCreate(type, 2, bounds));
}

// The library's texts hold one byte a character, packed from the first byte on.
std::string TakeText(BSTR text) {
  std::string narrow;
  if (text != nullptr) narrow.assign(reinterpret_cast<const char*>(text), SysStringByteLen(text));
  SysFreeString(text);
  return narrow.substr(0, narrow.find('\0'));
}

bool IsNumber(const std::string& text) {
  const size_t point = text.find('.');
  return point != std::string::npos && text.size() == point + 7 &&
         text.find_first_not_of("0123456789", text[0] == '-' ? 1 : 0) == point;
}

Cell CellOfText(const std::string& text) {
  if (text.empty()) return {};
  return {IsNumber(text) ? Cell::Kind::kNumber : Cell::Kind::kText, text};
}

// What only an array of VARIANTs takes: the results of formulas that are numbers, and on Windows all that is
// no plain text or number.
Cell CellOfVariant(VARIANT* value) {
  Cell cell;
  if (value->vt == VT_R8) cell = {Cell::Kind::kFormula, std::to_string(value->dblVal)};
  if (value->vt == VT_BSTR) {
    cell = {Cell::Kind::kText, TakeText(value->bstrVal)};
    value->vt = VT_EMPTY;
  }
  VariantClear(value);
  return cell;
}

}  // namespace

Failure::Failure(const std::string& what, int result)
    : std::runtime_error(what + " (result " + std::to_string(result) + ")"), result_(result) {}

Workbook::Workbook(const std::filesystem::path& path) {
  const std::string name = path.string();
  const int opened = XLOpenFile(name.c_str(), &buffer_, &size_);
  if (opened != 0) {
    XLFreeHandle(&buffer_);
    throw Failure(opened == 101
                      ? name + " can't be opened: it is missing, in use, read-only or no compound file"
                  : opened == 102 ? name + " holds no workbook"
                  : opened == 103 ? name + " holds an empty workbook stream"
                                  : name + " can't be read",
                  opened);
  }
  const int located = XLLocateSheets(buffer_, &table_, size_);
  if (located != 0) throw Failure(name + " holds a workbook without the sheets that it names", located);
}

Workbook::~Workbook() {
  XLFreeHandle(&table_);
  XLFreeHandle(&buffer_);
}

int Workbook::SheetCount() const {
  return XLGetNumSheets(table_);
}

int Workbook::Generation() const {
  return XLGetNumVers(buffer_, table_);
}

std::string Workbook::SheetName(int sheet) const {
  BSTR name = nullptr;
  XLGetNameSheet(buffer_, table_, static_cast<int16_t>(sheet), &name);
  return TakeText(name);
}

bool Workbook::IsWorksheet(int sheet) const {
  uint16_t unused = 0;
  return XLGetSheetSize(buffer_, table_, static_cast<int16_t>(sheet), &unused, &unused, &unused, &unused) ==
         0;
}

Sheet Workbook::ReadSheet(int sheet) const {
  uint16_t first_row = 1, last_row = 0, first_column = 1, last_column = 0;
  const auto number = static_cast<int16_t>(sheet);
  Check(XLGetSheetSize(buffer_, table_, number, &first_row, &last_row, &first_column, &last_column),
        "sheet " + std::to_string(sheet) + " is no worksheet");
  Sheet read;
  if (last_row < first_row || last_column < first_column) return read;  // an empty sheet
  read.first_row = first_row;
  read.first_column = first_column;
  const size_t rows = size_t{last_row} - first_row + 1;
  const size_t columns = size_t{last_column} - first_column + 1;
  read.rows.assign(rows, std::vector<Cell>(columns));
  read.xfs.assign(rows, std::vector<int>(columns, -1));
  ReadValues(sheet, &read);
  ReadFormats(sheet, &read);
  return read;
}

// Read twice, into an array for texts and one for VARIANTs: between them they take everything on every
// platform.
void Workbook::ReadValues(int sheet, Sheet* into) const {
  const auto last_row = static_cast<LONG>(into->first_row + into->rows.size() - 1);
  const auto last_column = static_cast<LONG>(into->first_column + into->rows[0].size() - 1);
  Array texts = MakeCells(VT_BSTR, static_cast<ULONG>(last_row), static_cast<ULONG>(last_column));
  Array values = MakeCells(VT_VARIANT, static_cast<ULONG>(last_row), static_cast<ULONG>(last_column));
  for (const Array* array : {&texts, &values}) {
    SAFEARRAY* cells = array->get();
    Check(XLGetVariantData(&cells, buffer_, table_, static_cast<int16_t>(sheet)), "the cells can't be read");
  }
  for (LONG row = into->first_row; row <= last_row; ++row) {
    for (LONG column = into->first_column; column <= last_column; ++column) {
      LONG index[2] = {row, column};
      BSTR text = nullptr;
      VARIANT value;
      VariantInit(&value);
      SafeArrayGetElement(texts.get(), index, &text);
      SafeArrayGetElement(values.get(), index, &value);
      Cell cell = CellOfText(TakeText(text));
      Cell other = CellOfVariant(&value);
      if (cell.kind == Cell::Kind::kEmpty) cell = other;
      into->rows[static_cast<size_t>(row - into->first_row)]
                [static_cast<size_t>(column - into->first_column)] = cell;
    }
  }
}

void Workbook::ReadFormats(int sheet, Sheet* into) const {
  const size_t rows = into->xfs.size();
  const size_t columns = into->xfs[0].size();
  Array formats = MakeCells(VT_I4, static_cast<ULONG>(into->first_row + rows - 1),
                            static_cast<ULONG>(into->first_column + columns - 1));
  for (size_t i = 0; i < rows * columns; ++i) {
    LONG index[2] = {static_cast<LONG>(into->first_row + i / columns),
                     static_cast<LONG>(into->first_column + i % columns)};
    LONG none = -1;
    SafeArrayPutElement(formats.get(), index, &none);
  }
  SAFEARRAY* cells = formats.get();
  Check(XLGetCellData(&cells, buffer_, table_, static_cast<int16_t>(sheet)), "the formats can't be read");
  for (size_t i = 0; i < rows * columns; ++i) {
    LONG index[2] = {static_cast<LONG>(into->first_row + i / columns),
                     static_cast<LONG>(into->first_column + i % columns)};
    LONG xf = -1;
    SafeArrayGetElement(formats.get(), index, &xf);
    into->xfs[i / columns][i % columns] = static_cast<int16_t>(xf);  // the low 16 bits are the index
  }
}

// The bytes of each record of the workbook, in reading order, header and patch records included.
std::vector<std::vector<uint8_t>> Workbook::Records() const {
  const auto room = static_cast<ULONG>(std::min<uint32_t>(size_ / 4 + 1, kListedAtMost));
  Array offsets = Checked(SafeArrayCreateVector(VT_I4, 1, room));
  Array types = Checked(SafeArrayCreateVector(VT_I2, 1, room));
  Array images = Checked(SafeArrayCreateVector(VT_BSTR, 1, room));
  Array lengths = Checked(SafeArrayCreateVector(VT_I2, 1, room));
  SAFEARRAY* arrays[] = {offsets.get(), types.get(), images.get(), lengths.get()};
  int32_t count = 0;
  Check(
      XLGetList(buffer_, static_cast<int32_t>(size_), &count, &arrays[0], &arrays[1], &arrays[2], &arrays[3]),
      "the records can't be listed");
  std::vector<std::vector<uint8_t>> records;
  for (LONG i = 1; i <= std::min<LONG>(count, kListedAtMost); ++i) {
    BSTR image = nullptr;
    if (SafeArrayGetElement(images.get(), &i, &image) != S_OK || image == nullptr) continue;
    const auto* bytes = reinterpret_cast<const uint8_t*>(image);
    records.emplace_back(bytes, bytes + SysStringByteLen(image));
    SysFreeString(image);
  }
  return records;
}

Patches Workbook::CountPatches() const {
  Patches found;
  for (const auto& record : Records()) {
    // The listing's type codes have only the low byte, which ordinary records share: the record itself tells.
    if (record.size() < 2 || record[1] != kPatchTypeHigh) continue;
    found.detours += record[0] == kDetour;
    found.resumes += record[0] == kResume;
    found.slacks += record[0] == kSlack;
    found.ends += record[0] == kBufEnd;
  }
  return found;
}

// A sheet is what stands between a BOF and its EOF; the first such substream is that of the workbook itself,
// and a chart in a sheet is one within another.
std::vector<Formula> Workbook::Formulas(int sheet) const {
  std::vector<Formula> found;
  int depth = 0, substream = -1;
  for (const auto& record : Records()) {
    if (record.size() < 2 || (record[1] & 0x10) != 0) continue;  // chart and patch records
    if (record[0] == kBof && depth++ == 0) ++substream;
    if (record[0] == kEof) --depth;
    if (record[0] != kFormula || depth != 1 || substream != sheet || record.size() < kFormulaTokens) continue;
    const auto word = [&](size_t at) { return record[at] + 256 * record[at + 1]; };
    const size_t end = std::min(record.size(), kFormulaTokens + static_cast<size_t>(word(kFormulaLength)));
    found.push_back({word(kFormulaRow) + 1,
                     word(kFormulaColumn) + 1,
                     {record.begin() + kFormulaTokens, record.begin() + static_cast<std::ptrdiff_t>(end)}});
  }
  return found;
}

void Workbook::InsertRow(int sheet, int row) {
  Check(XLInsertRow(&buffer_, table_, &size_, static_cast<int16_t>(sheet), static_cast<int16_t>(row)),
        "the row can't be inserted");
}

void Workbook::Bind(int id) {
  Check(XLInsertReference(&buffer_, table_, &size_, static_cast<uint32_t>(id)),
        "the workbook can't be bound");
}

bool Workbook::Put(int sheet, int row, int column, VARIANT* value) {
  const int result = XLChangeCellValue(&buffer_, table_, &size_, static_cast<int16_t>(sheet),
                                       static_cast<int16_t>(row), static_cast<int16_t>(column), value);
  VariantClear(value);
  if (result != kNoSuchCell) Check(result, "the cell can't be changed");
  return result == 0;
}

bool Workbook::PutNumber(int sheet, int row, int column, double number) {
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_R8;
  value.dblVal = number;
  return Put(sheet, row, column, &value);
}

bool Workbook::PutText(int sheet, int row, int column, const std::string& text) {
  std::vector<OLECHAR> units;
  // The library writes every text in the layout of generation 5, in which the first character follows the
  // length. Generation 6 has a byte of flags there: a leading zero stands for it ("8-bit, plain"), or the
  // first character of the text would be lost to readers. The length counts the zero, so that it is one too
  // large.
  if (Generation() == 6) units.push_back(0);
  for (char c : text) units.push_back(static_cast<unsigned char>(c));
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocStringLen(units.data(), static_cast<UINT>(units.size()));
  return Put(sheet, row, column, &value);
}

bool Workbook::PutNothing(int sheet, int row, int column) {
  VARIANT value;
  VariantInit(&value);
  return Put(sheet, row, column, &value);
}

bool Workbook::PutFormat(int sheet, int row, int column, int xf) {
  const int result =
      XLChangeCellXF(&buffer_, table_, &size_, static_cast<int16_t>(sheet), static_cast<int16_t>(row),
                     static_cast<int16_t>(column), static_cast<uint16_t>(xf));
  if (result != kNoSuchCell) Check(result, "the cell can't be formatted");
  return result == 0;
}

void Workbook::Save(const std::filesystem::path& path) {
  // A save releases the table, since the sheets have moved: locate them anew.
  Check(XLSaveFile(path.string().c_str(), &buffer_, &table_, &size_), path.string() + " can't be saved");
  Check(XLLocateSheets(buffer_, &table_, size_), "the saved sheets can't be located");
}

int CreateReference(const std::filesystem::path& file) {
  const int id = XLCreateReference(file.string().c_str());
  if (id < 1) throw Failure("no reference can be made in " + file.string(), id);
  return id;
}

int BoundTo(const std::filesystem::path& path) {
  const int id = XLGetReference(path.string().c_str());
  if (id < 0) throw Failure("the binding of " + path.string() + " can't be read", id);
  return id;
}

}  // namespace report
