// Cell formats: the walk that puts them.
#include "query/cell_formats.h"

#include "platform/array_put.h"
#include "query/cell_reading.h"
#include "query/extent_walk.h"

namespace tolvenar {

namespace {

void PutXf(SAFEARRAY* array, Element element, uint16_t xf) {
  const uint32_t slot = xf;
  platform::PutBytes(array, element.index, &slot, sizeof slot);
}

// The XFs of a run whose cells take `width` bytes each.
void PutRunXfs(const Block& block, uint32_t at, uint32_t width, SAFEARRAY* array, ColumnRange columns) {
  ForEachRunCell(block, at, columns, [&](Element element, uint32_t i) {
    PutXf(array, element, U16At(block, at + kCellXf + width * i));
  });
}

void PutCellXf(const Block& block, uint32_t at, SAFEARRAY* array, ColumnRange columns) {
  if ((U8At(block, at + kRecordTypeHigh) & kChartBit) != 0) return;
  switch (U8At(block, at)) {
    case kLowMulRk:
      return PutRunXfs(block, at, kMulRkCell, array, columns);
    case kLowMulBlank:
      return PutRunXfs(block, at, kMulBlankCell, array, columns);
    case kLowBlank:
    case kLowBoolErr:
    case kLowFormula:
    case kLowLabel:
    case kLowSst:  // not kLowLabelSst, on purpose: the cells of shared strings get no XF
    case kLowNumber:
    case kLowRk:
    case kLowRString:
      return PutXf(array, ElementOf(block, at), U16At(block, at + kCellXf));
    default:
      return;
  }
}

}  // namespace

int16_t XLGetCellData(SAFEARRAY** cells, uint32_t buffer, uint32_t table, int16_t sheet) {
  SAFEARRAY* array = ArrayAt(cells);
  const int16_t check = CheckCellRead(array, buffer, table, sheet);
  if (check != kCellsRead) return check;
  const Block block = OpenBlock(buffer);
  const ColumnRange columns = ColumnsOf(array);
  ForEachSheetRecord(block, ExtentOfSheet(OpenBlock(table), sheet),
                     [&](uint32_t at) { PutCellXf(block, at, array, columns); });
  return kCellsRead;
}

}  // namespace tolvenar
