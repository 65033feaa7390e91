// Cell reading: the ladder of checks.
#include "query/cell_reading.h"

#include "query/sheet_catalogue.h"
#include "query/sheet_size.h"

namespace tolvenar {

namespace {

// True when dimension `dimension` of the array reaches from `first` or below to `last` or above.
bool Covers(SAFEARRAY* array, UINT dimension, uint16_t first, uint16_t last) {
  LONG lower = 0;
  LONG upper = 0;
  if (FAILED(SafeArrayGetLBound(array, dimension, &lower)) ||
      FAILED(SafeArrayGetUBound(array, dimension, &upper)))
    return false;
  return lower <= static_cast<int16_t>(first) && upper >= static_cast<int16_t>(last);
}

}  // namespace

int16_t CheckCellRead(SAFEARRAY* array, uint32_t buffer, uint32_t table, int16_t sheet) {
  const int16_t count = XLGetNumSheets(table);
  if (count == 0) return kCellsNoSheets;
  // Both at once, on purpose: a sheet that is merely out of range comes out as 3.
  if (sheet > count && !(sheet > 0)) return kCellsBadCount;
  // A range that every array covers, for a sheet that tells none.
  uint16_t first_row = static_cast<uint16_t>(INT16_MAX);
  uint16_t last_row = static_cast<uint16_t>(INT16_MIN);
  uint16_t first_col = first_row;
  uint16_t last_col = last_row;
  if (XLGetSheetSize(buffer, table, sheet, &first_row, &last_row, &first_col, &last_col) != 0)
    return kCellsNoWorksheet;
  if (SafeArrayGetDim(array) != kCellDimensions) return kCellsNotTwoDimensions;
  if (!Covers(array, 1, first_row, last_row) || !Covers(array, 2, first_col, last_col))
    return kCellsArrayTooSmall;
  // These two stay in the ladder though codes 1 and 3 come first, on purpose.
  if (table == 0) return kCellsNoTable;
  if (buffer == 0) return kCellsNoBuffer;
  return kCellsRead;
}

ColumnRange ColumnsOf(SAFEARRAY* array) {
  ColumnRange columns = {0, -1};
  SafeArrayGetLBound(array, 2, &columns.first);
  SafeArrayGetUBound(array, 2, &columns.last);
  return columns;
}

}  // namespace tolvenar
