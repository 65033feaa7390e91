// How the fuzzers open, read and build workbooks.
#include "fuzz_support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"

namespace tolvenar::fuzz {

using testing::Bytes;
using testing::operator+;
using testing::StreamBuilder;

namespace {

constexpr int16_t kSheetsRead = 4;
constexpr ULONG kRecordsListed = 64;
constexpr int16_t kChartsRead = 2;
constexpr ULONG kProperties = 21;
constexpr int16_t kSeriesRead = 3;
constexpr int16_t kUnbalanced = 100;
constexpr int16_t kItemsNotOneDimension = 4;
constexpr int16_t kItemsArrayDoesNotFit = 5;
constexpr int16_t kItemsNoBlock = 8;
constexpr uint16_t kTypeWindow2 = 0x023E;

// An array of the fuzzers' size that is given back at the end of its block.
class Cells {
 public:
  explicit Cells(VARTYPE type) {
    SAFEARRAYBOUND bounds[2] = {{kRows, 1}, {kColumns, 1}};
    array_ = SafeArrayCreate(type, 2, bounds);
  }
  Cells(VARTYPE type, ULONG count) : array_(SafeArrayCreateVector(type, 1, count)) {}
  Cells(VARTYPE type, SAFEARRAYBOUND bound) : array_(SafeArrayCreate(type, 1, &bound)) {}
  Cells(const Cells&) = delete;
  Cells& operator=(const Cells&) = delete;
  ~Cells() { SafeArrayDestroy(array_); }
  SAFEARRAY** get() { return &array_; }

 private:
  SAFEARRAY* array_;
};

// What a decoder makes of an item block, whatever it holds.
void DecodeItem(uint32_t item) {
  static constexpr int16_t(TOLVENAR_CALL * kDecoders[])(uint32_t) = {
      XLFontSize, XLFontColor, XLFontBoldness, XLFontItalic,   XLFontStrikeOut, XLFontUnderline, XLXFFont,
      XLXFFormat, XLXFLocked,  XLXFHidden,     XLXFHAlignment, XLXFVAlignment,  XLXFRotation};
  for (const auto decoder : kDecoders) decoder(item);
  uint16_t out[6];
  XLXFBorderStyle(item, &out[0], &out[1], &out[2], &out[3], &out[4]);
  XLXFColors(item, &out[0], &out[1], &out[2], &out[3], &out[4], &out[5]);
  for (const auto decoder : {XLFontName, XLFormatString}) {
    BSTR text = nullptr;
    decoder(item, &text);
    SysFreeString(text);
  }
}

// The item blocks are the caller's. Where there are more XFs than blocks, the list of formats stays behind as well.
void ReadStyles(const Book& book) {
  for (int16_t kind = 0; kind <= 3; ++kind) {
    const uint16_t count = XLGetNumFormatItems(book.buffer, book.table, kind);
    Cells items(VT_I4, SAFEARRAYBOUND{count, 0});
    uint32_t list = NextBlock(2 * XLGetNumFormatItems(book.buffer, book.table, 2));
    const int16_t result = XLGetFormatData(items.get(), book.buffer, book.table, kind);
    Require(result != kItemsNotOneDimension && result != kItemsArrayDoesNotFit,
            "an array of as many items fits");
    if (kind == 3) XLGetColorData(items.get(), book.buffer, book.table);
    for (LONG i = 0; i < LONG{count} && kind < 3; ++i) {
      uint32_t item = 0;
      SafeArrayGetElement(*items.get(), &i, &item);
      if (MEMORYISHANDLE(item) == 0) continue;
      DecodeItem(item);
      MEMORYFREE(&item);
    }
    if (kind == 0 && result == kItemsNoBlock) MEMORYFREE(&list);
  }
  Cells palette(VT_I4, SAFEARRAYBOUND{56, 0});
  XLGetStandardPalette(palette.get());
}

void ReadCatalogue(const Book& book) {
  Cells offsets(VT_I4, kRecordsListed), types(VT_I2, kRecordsListed), images(VT_BSTR, kRecordsListed),
      lengths(VT_I2, kRecordsListed);
  int32_t count = 0;
  XLGetList(book.buffer, static_cast<int32_t>(book.size), &count, offsets.get(), types.get(), images.get(),
            lengths.get());
  XLGetNumVers(book.buffer, book.table);
  XLNumStrBucket(book.buffer, book.table);
  XLNumStrExt(book.buffer, book.table);
  ReadStyles(book);
}

void ReadSizes(const Book& book, int16_t sheet, const uint16_t range[4]) {
  for (const uint16_t last : {range[1], range[3]}) {
    const SAFEARRAYBOUND bound = {last, 1};
    Cells sizes(VT_I2, bound);
    XLGetRowHeight(sizes.get(), book.buffer, book.table, sheet);
    XLGetColWidth(sizes.get(), book.buffer, book.table, sheet);
  }
  XLGetMagnification(book.buffer, book.table, sheet);
}

void ReadSheet(const Book& book, int16_t sheet) {
  uint16_t range[4] = {};
  BSTR name = nullptr;
  XLGetNameSheet(book.buffer, book.table, sheet, &name);
  SysFreeString(name);
  XLGetSheetParam(book.buffer, book.table, sheet, 0, 0, 0, 0);
  XLGetSheetSize(book.buffer, book.table, sheet, &range[0], &range[1], &range[2], &range[3]);
  ReadSizes(book, sheet, range);
  for (VARTYPE type : {VT_VARIANT, VT_BSTR, VT_R8}) {
    Cells values(type);
    XLGetVariantData(values.get(), book.buffer, book.table, sheet);
  }
  for (VARTYPE type : {VT_I2, VT_I4, VT_VARIANT}) {
    Cells formats(type);
    XLGetCellData(formats.get(), book.buffer, book.table, sheet);
  }
}

uint32_t ReadChart(const Book& book, int16_t sheet, int16_t chart) {
  Cells cells(VT_I4), properties(VT_I4, kProperties), names(VT_BSTR, kSeriesRead);
  Cells references(VT_I4, kSeriesRead), groups(VT_I4, kSeriesRead), colours(VT_I4, kSeriesRead);
  BSTR texts[3] = {};
  uint16_t fonts[2] = {};
  uint32_t colour = 0;
  uint32_t left = 0;
  for (const int16_t result : {XLGetGraphData(cells.get(), book.buffer, book.table, sheet, chart),
                               XLGetChartData(properties.get(), book.buffer, book.table, sheet, chart)}) {
    left += result == kUnbalanced ? 1 : 0;
  }
  XLGetSetData(book.buffer, book.table, sheet, chart, names.get(), references.get(), names.get(),
               groups.get(), colours.get(), kSeriesRead, kSeriesRead);
  XLGetTitleData(book.buffer, book.table, sheet, chart, &texts[0], &texts[1], &texts[2], &fonts[0], &fonts[1],
                 &colour);
  for (const BSTR text : texts) SysFreeString(text);
  return left;
}

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

Bytes ChosenText(Choices* choices) {
  Bytes text(choices->Below(20));
  for (uint8_t& byte : text) byte = choices->Byte();
  return text;
}

// One cell, or a run of three, at a column and those behind it. Returns how many columns it takes.
uint16_t AddCell(StreamBuilder* builder, Choices* choices, uint8_t version, uint16_t row, uint16_t column) {
  const auto xf = static_cast<uint16_t>(choices->Below(32));
  const Bytes text = ChosenText(choices);
  const std::string_view view(reinterpret_cast<const char*>(text.data()), text.size());
  switch (choices->Below(9)) {
    case 0:
      return 1;
    case 1:
      builder->Number(row, column, xf, choices->Word());
      return 1;
    case 2:
      builder->Rk(row, column, xf, choices->Word());
      return 1;
    case 3:
      builder->Blank(row, column, xf);
      return 1;
    case 4:
      version == kBiff8 ? builder->LabelBiff8(row, column, xf, view) : builder->Label(row, column, xf, view);
      return 1;
    case 5:
      builder->BoolErr(row, column, xf, choices->Byte(), choices->Byte() & 1);
      return 1;
    case 6:
      builder->Formula(row, column, xf, testing::F64(choices->Word()));
      return 1;
    case 7:
      builder->MulRk(row, column, {{xf, choices->Word()}, {xf, 6}, {15, choices->Word()}});
      return 3;
    default:
      builder->MulBlank(row, column, {xf, 15, 16});
      return 3;
  }
}

}  // namespace

void Require(bool condition, const char* what_ought_to_be) {
  if (condition) return;
  std::fprintf(stderr, "This ought to be so, and is not: %s\n", what_ought_to_be);
  std::abort();
}

Book OpenStream(const Bytes& stream) {
  Book book;
  book.size = static_cast<uint32_t>(stream.size());
  book.buffer = MEMORYALLOC(static_cast<int32_t>(book.size));
  if (book.buffer == 0) return {};
  std::copy(stream.begin(), stream.end(), BlockBytes(book.buffer));
  if (::XLLocateSheets(book.buffer, &book.table, book.size) != 0) return {};
  ::XLGetNumVers(book.buffer, book.table);
  return book;
}

uint32_t NextBlock(int32_t size) {
  uint32_t block = MEMORYALLOC(size);
  const uint32_t handle = block;
  MEMORYFREE(&block);
  return handle;
}

int16_t LookUp(Book* book, Choices* choices) {
  static constexpr const char* kTexts[] = {"0.0", "Arial", "", "a text that is longer than most"};
  const char* text = kTexts[choices->Below(4)];
  const uint16_t flags = choices->Byte();
  const auto font = static_cast<int16_t>(choices->Below(8));
  switch (choices->Below(4)) {
    case 0:
      return XLGetFont(&book->buffer, book->table, &book->size, text, font, 200, 400, flags & 3, 0,
                       flags >> 7);
    case 1:
      return XLGetFormat(&book->buffer, book->table, &book->size, text);
    case 2:
      return XLGetXFInd(&book->buffer, book->table, &book->size, static_cast<uint16_t>(choices->Below(8)), 0,
                        flags & 3, flags >> 7, font, 2, 0, 7);
    default:
      return XLGetXFIndFull(&book->buffer, book->table, &book->size, font, 0, flags & 1, flags >> 7, 0, 2, 0,
                            1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
  }
}

int16_t ChangeSize(Book* book, Choices* choices, int16_t sheet, int16_t position) {
  const uint16_t size = choices->Word();
  if (choices->Byte() % 2 == 0)
    return XLChangeRowHeight(&book->buffer, book->table, &book->size, sheet, position, size);
  constexpr int16_t kNoColInfo = -20;
  constexpr int32_t kColInfoSize = 15;
  uint32_t left = NextBlock(kColInfoSize);
  const int16_t result = XLChangeColWidth(&book->buffer, book->table, &book->size, sheet, position, size);
  if (result == kNoColInfo) MEMORYFREE(&left);
  return result;
}

void ReadEverything(const Book& book) {
  ReadCatalogue(book);
  for (int16_t sheet = 0; sheet <= kSheetsRead; ++sheet) ReadSheet(book, sheet);
}

uint32_t ReadCharts(const Book& book) {
  uint32_t left = 0;
  for (int16_t sheet = 0; sheet <= kSheetsRead; ++sheet) {
    XLGetNumCharts(book.buffer, book.table, sheet);
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

Bytes ComparableStream(const Book& book) {
  Bytes stream = testing::WalkedStream(book.buffer);
  for (size_t at = 0; at + kHeaderSize <= stream.size();
       at += kHeaderSize + ReadU16(&stream[at + kRecordLength])) {
    const bool bound_sheet = stream[at] == kLowBoundSheet && (stream[at + 1] & kChartBit) == 0;
    if (bound_sheet && at + kBoundSheetBof + 4 <= stream.size()) WriteU32(&stream[at + kBoundSheetBof], 0);
  }
  return stream;
}

void AddStyles(StreamBuilder* builder) {
  builder->Record(0x0031,
                  testing::U16(200) + Bytes{0, 0, 8, 0} + testing::U16(400) + Bytes(8) + Bytes{1, 'A'});
  builder->Record(0x041E, testing::U16(164) + Bytes{3, '0', '.', '0'});
  builder->Record(0x00E0, Bytes(16)).Record(0x0043, Bytes(12)).Record(0x0293, Bytes(4));
  builder->Record(0x0092, testing::U16(2) + Bytes(8));
}

Bytes StreamOf(Choices* choices) {
  static constexpr const char* kNames[] = {"One", "Two", "Three"};
  StreamBuilder builder;
  const uint32_t sheets = 1 + choices->Below(3);
  const uint8_t version = choices->Byte() % 2 == 0 ? kBiff8 : kBiff5;
  builder.Bof(version);
  AddStyles(&builder);
  for (uint32_t i = 0; i < sheets; ++i) builder.Sheet(kNames[i]);
  builder.Eof();
  for (uint32_t i = 0; i < sheets; ++i) {
    builder.Bof(version, testing::kWorksheet)
        .Record(0x0225, Bytes{0, 0, 0xFF, 0})
        .Record(0x0055, Bytes{8, 0});
    builder.Record(0x007D, testing::U16(1) + testing::U16(1) + testing::U16(2560) + Bytes(5));
    builder.Dimensions(0, kRows, 0, kColumns);
    for (uint16_t row = 0; row < kRows; ++row) {
      const uint8_t kind = choices->Byte();
      if (kind % 4 != 3) builder.Row(row);
      uint16_t column = 0;
      while (kind % 4 != 2 && column + 3 <= kColumns)
        column = static_cast<uint16_t>(column + AddCell(&builder, choices, version, row, column));
    }
    // As in every real sheet the cells are not the last. A cell that is put directly before the EOF is met by
    // the walk, but the readers stop in front of it until the next refresh.
    builder.Record(kTypeWindow2, Bytes(10)).Eof();
  }
  return builder.BufEnd().Stream();
}

}  // namespace tolvenar::fuzz
