// Cell values: one helper a record, and the walk that calls them.
#include "query/cell_values.h"

#include <bit>

#include "platform/array_put.h"
#include "query/byte_text.h"
#include "query/cell_reading.h"
#include "query/extent_walk.h"
#include "query/shared_strings.h"
#include "workbook/biff_version.h"

namespace tolvenar {

namespace {

// The texts of cells that hold no text. All have five bytes: hence the blank.
constexpr char kTextError[] = "ERROR";
constexpr char kTextFalse[] = "FALSE";
constexpr char kTextTrue[] = " TRUE";
constexpr int32_t kFixedTextLength = 5;
static_assert(sizeof kTextError == kFixedTextLength + 1 && sizeof kTextFalse == sizeof kTextError &&
              sizeof kTextTrue == sizeof kTextError);

constexpr uint16_t kNoNumber = 0xFFFF;  // in kFormulaResultTag
constexpr uint8_t kResultText = 0;
constexpr uint8_t kResultBoolean = 1;
constexpr uint8_t kResultError = 2;

constexpr uint32_t kRkTimes100 = 0x1;
constexpr uint32_t kRkInteger = 0x2;
constexpr uint32_t kRkNumberBits = 0xFFFFFFFC;

// One read of one sheet.
struct CellReader {
  Block block;
  uint32_t buffer;
  uint32_t table;
  SAFEARRAY* array;
  ColumnRange columns;
  SharedStringReader strings;
};

// The two shapes of a text.
void PutText(const CellReader& reader, uint32_t at, BSTR text) {
  Element element = ElementOf(reader.block, at);
  platform::PutOwnedBstr(reader.array, element.index, text);
}

void PutTextVariant(const CellReader& reader, uint32_t at, BSTR text) {
  Element element = ElementOf(reader.block, at);
  platform::PutOwnedBstrVariant(reader.array, element.index, text);
}

void PutBoolErr(const CellReader& reader, uint32_t at) {
  const char* text = kTextTrue;
  if (U8At(reader.block, at + kBoolErrIsError) == 1) {
    text = kTextError;
  } else if (U8At(reader.block, at + kBoolErrValue) == 0) {
    text = kTextFalse;
  }
  PutTextVariant(reader, at, ByteBstr(text, kFixedTextLength));
}

void PutFormulaNumber(const CellReader& reader, uint32_t at) {
  uint8_t result[sizeof(double)];
  CopyOut(reader.block, at + kFormulaResult, result, sizeof result);
  VARIANT number;
  FillVariant(&number, VT_R8, result);
  Element element = ElementOf(reader.block, at);
  platform::PutVariant(reader.array, element.index, &number);
}

// The text of a formula is the whole payload of the STRING record that follows it, so that the count (and
// BIFF8's flags) lead the text, on purpose. The record is told by its low byte alone. When another one
// follows, a jump included, the cell is left alone.
void PutFormulaString(const CellReader& reader, uint32_t at) {
  const uint32_t next = NextRecord(reader.block, at);
  if (U8At(reader.block, next) != kLowString) return;
  const int32_t length = LengthAt(reader.block, next);
  if (!PoolHasRoom(length)) return;
  PutTextVariant(reader, at, ByteBstr(reader.block, next + kHeaderSize, length));
}

void PutFormula(const CellReader& reader, uint32_t at) {
  if (U16At(reader.block, at + kFormulaResultTag) != kNoNumber) return PutFormulaNumber(reader, at);
  const uint8_t kind = U8At(reader.block, at + kFormulaResultKind);
  if (kind == kResultText) return PutFormulaString(reader, at);
  if (kind != kResultError && kind != kResultBoolean) return;
  if (!PoolHasRoom(kFixedTextLength)) return;
  // A true result reads "FALSE" too: its value byte is not looked at, on purpose.
  PutTextVariant(reader, at, ByteBstr(kind == kResultError ? kTextError : kTextFalse, kFixedTextLength));
}

// BIFF8's flag byte is skipped and not looked at, on purpose: of a two-byte label the first cch bytes
// come out as they stand. In neither generation the text is cch zeros.
void PutLabel(const CellReader& reader, uint32_t at) {
  const uint16_t length = U16At(reader.block, at + kLabelLength);
  if (!PoolHasRoom(length + 1)) return;
  const bool known = BiffVersion == kBiff5 || BiffVersion == kBiff8;
  const uint32_t text = at + (BiffVersion == kBiff8 ? kLabelTextBiff8 : kLabelText);
  PutText(reader, at, PackedBstr(known ? reader.block : Block{}, text, length));
}

void PutRString(const CellReader& reader, uint32_t at) {
  const int32_t length = U16At(reader.block, at + kLabelLength);
  if (!PoolHasRoom(length)) return;
  PutTextVariant(reader, at, ByteBstr(reader.block, at + kLabelText, length));
}

// The table of strings is looked for at the first cell that needs it; its place can't change within a
// read.
void PutLabelSst(CellReader* reader, uint32_t at) {
  SharedStringReader& strings = reader->strings;
  if (strings.block.extent == 0) {
    strings.block = reader->block;
    // Sign-extended from 16 bits, on purpose.
    strings.sst = static_cast<uint32_t>(static_cast<int32_t>(XLNumStrExt(reader->buffer, reader->table)));
  }
  PutSharedString(&strings, I16At(reader->block, at + kLabelSstIndex), reader->array, at);
}

void PutMulRk(const CellReader& reader, uint32_t at) {
  ForEachRunCell(reader.block, at, reader.columns, [&](Element element, uint32_t i) {
    const uint32_t rk = U32At(reader.block, at + kMulRkFirstRk + kMulRkCell * i);
    platform::PutOwnedBstr(reader.array, element.index, NumberBstr(RkNumber(rk)));
  });
}

void PutCell(CellReader* reader, uint32_t at) {
  const Block& block = reader->block;
  if ((U8At(block, at + kRecordTypeHigh) & kChartBit) != 0) return;
  switch (U8At(block, at)) {
    case kLowBoolErr:
      return PutBoolErr(*reader, at);
    case kLowFormula:
      return PutFormula(*reader, at);
    case kLowLabel:
      return PutLabel(*reader, at);
    case kLowLabelSst:
      return PutLabelSst(reader, at);
    case kLowMulRk:
      return PutMulRk(*reader, at);
    case kLowNumber:
      return PutText(*reader, at, NumberBstr(F64At(block, at + kNumberValue)));
    case kLowRk:
      return PutText(*reader, at, NumberBstr(RkNumber(U32At(block, at + kRkValue))));
    case kLowRString:
      return PutRString(*reader, at);
    default:
      return;
  }
}

}  // namespace

double RkNumber(uint32_t rk) {
  const double number = (rk & kRkInteger) != 0
                            ? static_cast<double>(static_cast<int32_t>(rk) >> 2)
                            : std::bit_cast<double>(static_cast<uint64_t>(rk & kRkNumberBits) << 32);
  return (rk & kRkTimes100) != 0 ? number * 0.01 : number;
}

int16_t XLGetVariantData(SAFEARRAY** cells, uint32_t buffer, uint32_t table, int16_t sheet) {
  SAFEARRAY* array = ArrayAt(cells);
  const int16_t check = CheckCellRead(array, buffer, table, sheet);
  if (check != kCellsRead) return check;
  CellReader reader = {OpenBlock(buffer), buffer, table, array, ColumnsOf(array), {}};
  ForEachSheetRecord(reader.block, ExtentOfSheet(OpenBlock(table), sheet),
                     [&](uint32_t at) { PutCell(&reader, at); });
  return kCellsRead;
}

int16_t XLSGetVariantData(uint32_t /*unused*/, SAFEARRAY** cells) {
  SAFEARRAY* array = ArrayAt(cells);
  void* data = nullptr;
  if (array != nullptr && SUCCEEDED(SafeArrayAccessData(array, &data))) SafeArrayUnaccessData(array);
  return 0;
}

}  // namespace tolvenar
