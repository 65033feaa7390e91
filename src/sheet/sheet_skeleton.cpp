// The records of a new worksheet, without its cells.
#include "sheet/sheet_skeleton.h"

#include <cstddef>

#include "workbook/default_records.h"
#include "workbook/record_builders.h"

namespace tolvenar {

namespace {

constexpr uint16_t kNewColumnWidth = 8;
constexpr uint32_t kWindow2Variant = 6;

constexpr int16_t kBeforeRowHeight[] = {kKeyIndex,          kKeyCalcMode, kKeyCalcCount,  kKeyRefMode,
                                        kKeyIteration,      kKeyDelta,    kKeySaveRecalc, kKeyPrintHeaders,
                                        kKeyPrintGridlines, kKeyGridSet,  kKeyGuts};

constexpr int16_t kBehindRowHeight[] = {kKeyWsBool,  kKeyHeader,  kKeyFooter,
                                        kKeyHCenter, kKeyVCenter, kKeySetup};

template <size_t N>
bool AppendDefaults(SheetStream* stream, const int16_t (&keys)[N]) {
  for (int16_t key : keys) {
    if (!AppendDefault(stream, key)) return false;
  }
  return true;
}

bool AppendBof(SheetStream* stream) {
  uint32_t size = 0;
  const uint32_t record = MakeBofRecord(&size, kBofWorksheet);
  return AppendRecord(stream, record, size);
}

bool AppendRowHeight(SheetStream* stream) {
  uint32_t size = 0;
  const uint32_t record = MakeDefaultRowHeightRecord(&size, kNewRowHeight);
  return AppendRecord(stream, record, size);
}

bool AppendColumnWidth(SheetStream* stream) {
  uint32_t size = 0;
  const uint32_t record = MakeDefColWidthRecord(&size, kNewColumnWidth);
  return AppendRecord(stream, record, size);
}

bool AppendDimensions(SheetStream* stream, uint32_t columns, uint32_t rows) {
  uint32_t size = 0;
  const uint32_t record = MakeDimensionsRecord(&size, 0, rows, 0, columns);
  return AppendRecord(stream, record, size);
}

bool AppendRow(SheetStream* stream, int16_t row, uint32_t columns) {
  uint32_t size = 0;
  const uint32_t record = MakeRowRecord(&size, static_cast<uint16_t>(row), 0, columns, kNewRowHeight);
  return AppendRecord(stream, record, size);
}

}  // namespace

bool AppendSheetHead(SheetStream* stream, Country country) {
  return AppendBof(stream) && AppendDefaults(stream, kBeforeRowHeight) && AppendRowHeight(stream) &&
         (country == Country::kWithout || AppendDefault(stream, kKeyCountry)) &&
         AppendDefaults(stream, kBehindRowHeight) && AppendColumnWidth(stream);
}

bool AppendSheetRange(SheetStream* stream, int16_t columns, int16_t rows) {
  const uint32_t last_column = static_cast<uint32_t>(int32_t{columns});
  if (!AppendDimensions(stream, last_column, static_cast<uint32_t>(int32_t{rows}))) return false;
  for (int16_t row = 0; row < rows; ++row) {
    if (!AppendRow(stream, row, last_column)) return false;
  }
  return true;
}

bool AppendSheetTail(SheetStream* stream) {
  return AppendDefault(stream, kKeyWindow2, kWindow2Variant) && AppendDefault(stream, kKeySelection) &&
         AppendDefault(stream, kKeyEof);
}

}  // namespace tolvenar
