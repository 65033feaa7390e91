// Rows and columns: the ladder of checks. Its order stands in row_column_checks.h.
#include "edit/row_column_checks.h"

#include "edit/row_column_edit.h"
#include "query/sheet_catalogue.h"
#include "query/sheet_size.h"

namespace tolvenar {

bool IsInsideRows(const SheetBounds& bounds, int16_t position) {
  return bounds.firstRow <= position && position <= bounds.lastRow;
}

bool IsInsideColumns(const SheetBounds& bounds, int16_t position) {
  return bounds.firstColumn <= position && position <= bounds.lastColumn;
}

bool IsOutsideInvertedRows(const SheetBounds& bounds, int16_t position) {
  return position > bounds.lastRow && position < bounds.firstRow;
}

bool IsOutsideInvertedColumns(const SheetBounds& bounds, int16_t position) {
  return position > bounds.lastColumn && position < bounds.firstColumn;
}

int16_t CheckSheetEdit(const uint32_t* buffer, uint32_t table, int16_t sheet, int16_t position,
                       PositionCheck refuses, SheetScope* scope) {
  const int16_t count = XLGetNumSheets(table);
  if (count == 0) return kEditNoSheets;
  // Both at once, on purpose: a bad number is told by the next check.
  if (sheet > count && sheet < 1) return kEditBadSheet;

  const uint32_t handle = buffer != nullptr ? *buffer : 0;
  // Those of an empty range, which is what a sheet without DIMENSIONS has: XLGetSheetSize leaves them alone.
  uint16_t first_row = 1, last_row = 0, first_column = 1, last_column = 0;
  if (XLGetSheetSize(handle, table, sheet, &first_row, &last_row, &first_column, &last_column) != 0)
    return kEditNoWorksheet;
  scope->bounds = {static_cast<int16_t>(first_row), static_cast<int16_t>(last_row),
                   static_cast<int16_t>(first_column), static_cast<int16_t>(last_column)};
  if (refuses(scope->bounds, position)) return kEditBadPosition;

  if (table == 0) return kEditNoTable;
  if (handle == 0) return kEditNoBuffer;
  scope->extent = ExtentOfSheet(OpenBlock(table), sheet);
  return kEditDone;
}

}  // namespace tolvenar
