// The readers, in lists: an export that is added goes into the list of its kind, and every fuzzer calls it.
#include "reading.h"

#include <vector>

namespace tolvenar::fuzz {

using testing::Bytes;
using testing::operator+;

namespace {

constexpr int16_t kSheetsRead = 4;
constexpr ULONG kRecordsListed = 64;
constexpr int32_t kPaletteColours = 56;
constexpr int16_t kChartsRead = 2;
constexpr ULONG kProperties = 21;
constexpr int16_t kSeriesRead = 3;

// An array of the fuzzers' size that is given back at the end of its block.
class Cells {
 public:
  explicit Cells(VARTYPE type) {
    SAFEARRAYBOUND bounds[2] = {{kRows, 1}, {kColumns, 1}};
    array_ = SafeArrayCreate(type, 2, bounds);
  }
  Cells(VARTYPE type, LONG first, ULONG count) : array_(SafeArrayCreateVector(type, first, count)) {}
  Cells(const Cells&) = delete;
  Cells& operator=(const Cells&) = delete;
  ~Cells() { SafeArrayDestroy(array_); }
  SAFEARRAY** get() { return &array_; }

 private:
  SAFEARRAY* array_;
};

void ReadRecordList(const Book& book) {
  Cells offsets(VT_I4, 1, kRecordsListed), types(VT_I2, 1, kRecordsListed),
      images(VT_BSTR, 1, kRecordsListed), lengths(VT_I2, 1, kRecordsListed);
  int32_t count = 0;
  ::XLGetList(book.buffer, static_cast<int32_t>(book.size), &count, offsets.get(), types.get(), images.get(),
              lengths.get());
}

void ReadGlobals(const Book& book) {
  ::XLGetNumVers(book.buffer, book.table);
  ::XLNumStrBucket(book.buffer, book.table);
  for (int16_t kind = -1; kind <= 4; ++kind) ::XLGetNumFormatItems(book.buffer, book.table, kind);
}

void ReadPalette(const Book& book) {
  const uint16_t count = ::XLGetNumFormatItems(book.buffer, book.table, 3);
  Cells colours(VT_I4, 0, count == 0 ? 1 : count), standard(VT_I4, 0, kPaletteColours);
  ::XLGetColorData(colours.get(), book.buffer, book.table);
  ::XLGetStandardPalette(standard.get());
}

// One string of the table by itself, wherever the table is said to be.
void ReadSharedString(const Book& book) {
  Cells values(VT_VARIANT);
  int32_t index = 3;
  int16_t bucket = 8;
  ::XLEXTLabel(book.buffer, &index, &bucket, ::XLNumStrExt(book.buffer, book.table), values.get(),
               static_cast<int32_t>(book.size / 2));
}

void ReadName(const Book& book, int16_t sheet) {
  BSTR name = nullptr;
  ::XLGetNameSheet(book.buffer, book.table, sheet, &name);
  SysFreeString(name);
  ::XLGetSheetParam(book.buffer, book.table, sheet, 0, 0, 0, 0);
}

void ReadCells(const Book& book, int16_t sheet) {
  for (VARTYPE type : {VT_VARIANT, VT_BSTR, VT_R8}) {
    Cells values(type);
    ::XLGetVariantData(values.get(), book.buffer, book.table, sheet);
  }
  for (VARTYPE type : {VT_I2, VT_I4, VT_VARIANT}) {
    Cells formats(type);
    ::XLGetCellData(formats.get(), book.buffer, book.table, sheet);
  }
}

void ReadSizes(const Book& book, int16_t sheet) {
  uint16_t range[4] = {};
  ::XLGetSheetSize(book.buffer, book.table, sheet, &range[0], &range[1], &range[2], &range[3]);
  ::XLGetMagnification(book.buffer, book.table, sheet);
  Cells heights(VT_I2, 1, range[1]), widths(VT_I2, 1, range[3]);
  ::XLGetRowHeight(heights.get(), book.buffer, book.table, sheet);
  ::XLGetColWidth(widths.get(), book.buffer, book.table, sheet);
}

// The lists.
constexpr void (*kBookReaders[])(const Book&) = {ReadRecordList, ReadGlobals, ReadPalette, ReadSharedString};
constexpr void (*kSheetReaders[])(const Book&, int16_t) = {ReadName, ReadCells, ReadSizes};

void AddValue(SAFEARRAY* cells, LONG row, LONG column, Bytes* to) {
  LONG index[2] = {row, column};
  VARIANT value;
  VariantInit(&value);
  SafeArrayGetElement(cells, index, &value);
  Bytes bytes = testing::U16(value.vt);
  if (value.vt == VT_BSTR && value.bstrVal != nullptr) {
    const auto* text = reinterpret_cast<const uint8_t*>(value.bstrVal);
    bytes.insert(bytes.end(), text, text + SysStringByteLen(value.bstrVal));
  }
  if (value.vt == VT_R8) bytes = bytes + testing::F64(value.dblVal);
  VariantClear(&value);
  *to = *to + bytes;
}

// Asks an item block everything that a FONT, an XF or a FORMAT can be asked: which one it is, is not checked.
void ReadItem(uint32_t block) {
  constexpr int16_t(TOLVENAR_CALL * kFields[])(uint32_t) = {
      ::XLFontSize,      ::XLFontColor,    ::XLFontBoldness, ::XLFontItalic, ::XLFontStrikeOut,
      ::XLFontUnderline, ::XLXFFont,       ::XLXFFormat,     ::XLXFLocked,   ::XLXFHidden,
      ::XLXFHAlignment,  ::XLXFVAlignment, ::XLXFRotation};
  for (const auto field : kFields) field(block);
  uint16_t values[6] = {};
  ::XLXFBorderStyle(block, &values[0], &values[1], &values[2], &values[3], &values[4]);
  ::XLXFColors(block, &values[0], &values[1], &values[2], &values[3], &values[4], &values[5]);
  for (const auto text_of : {::XLFontName, ::XLFormatString}) {
    BSTR text = nullptr;
    text_of(block, &text);
    SysFreeString(text);
  }
}

uint32_t ReadChart(const Book& book, int16_t sheet, int16_t chart) {
  constexpr int16_t kUnbalanced = 100;
  Cells cells(VT_I4), properties(VT_I4, 1, kProperties), names(VT_BSTR, 1, kSeriesRead);
  Cells references(VT_I4, 1, kSeriesRead), groups(VT_I4, 1, kSeriesRead), colours(VT_I4, 1, kSeriesRead);
  BSTR texts[3] = {};
  uint16_t fonts[2] = {};
  uint32_t colour = 0;
  uint32_t left = 0;
  for (const int16_t result : {::XLGetGraphData(cells.get(), book.buffer, book.table, sheet, chart),
                               ::XLGetChartData(properties.get(), book.buffer, book.table, sheet, chart)}) {
    left += result == kUnbalanced ? 1 : 0;
  }
  ::XLGetSetData(book.buffer, book.table, sheet, chart, names.get(), references.get(), names.get(),
                 groups.get(), colours.get(), kSeriesRead, kSeriesRead);
  ::XLGetTitleData(book.buffer, book.table, sheet, chart, &texts[0], &texts[1], &texts[2], &fonts[0],
                   &fonts[1], &colour);
  for (const BSTR text : texts) SysFreeString(text);
  return left;
}

}  // namespace

void ReadEverything(const Book& book) {
  for (const auto read : kBookReaders) read(book);
  for (int16_t sheet = 0; sheet <= kSheetsRead; ++sheet) {
    for (const auto read : kSheetReaders) read(book, sheet);
  }
}

uint32_t ReadStyles(const Book& book) {
  constexpr int16_t kNoBlockForItem = 8;
  uint32_t left = 0;
  for (int16_t kind = 0; kind <= 3; ++kind) {
    const uint16_t count = ::XLGetNumFormatItems(book.buffer, book.table, kind);
    Cells items(VT_I4, 0, count);
    const int16_t result = ::XLGetFormatData(items.get(), book.buffer, book.table, kind);
    for (LONG i = 0; i < count; ++i) {
      uint32_t block = 0;
      SafeArrayGetElement(*items.get(), &i, &block);
      if (block == 0) continue;
      ReadItem(block);
      ::XLDestroyFString(&block);
    }
    if (kind == 0 && result == kNoBlockForItem) ++left;
  }
  return left;
}

uint32_t ReadCharts(const Book& book) {
  uint32_t left = 0;
  for (int16_t sheet = 0; sheet <= kSheetsRead; ++sheet) {
    ::XLGetNumCharts(book.buffer, book.table, sheet);
    for (int16_t chart = 1; chart <= kChartsRead; ++chart) left += ReadChart(book, sheet, chart);
  }
  return left;
}

Bytes AllValues(const Book& book) {
  Bytes values;
  for (int16_t sheet = 1; sheet <= ::XLGetNumSheets(book.table); ++sheet) {
    Cells cells(VT_VARIANT);
    const int16_t result = ::XLGetVariantData(cells.get(), book.buffer, book.table, sheet);
    values = values + testing::U16(static_cast<uint16_t>(result));
    for (LONG i = 0; i < LONG{kRows} * kColumns; ++i)
      AddValue(*cells.get(), i / kColumns + 1, i % kColumns + 1, &values);
  }
  return values;
}

}  // namespace tolvenar::fuzz
