// XLAddRow and XLAddCol: the used range is extended beyond its bounds, and no cell moves.
#include "edit/new_row.h"
#include "edit/row_column_checks.h"
#include "edit/row_column_edit.h"
#include "edit/row_column_walk.h"
#include "workbook/biff_version.h"

namespace tolvenar {

namespace {

// What the search of XLAddRow looks for: the ROW to copy, and the record in front of which the copies go.
struct RowToCopy {
  bool found = false;
  uint32_t source = 0;
  uint32_t place = 0;
};

void WidenRows(const Block& block, uint32_t at, const SheetBounds& bounds, int16_t position) {
  const DimensionsFields* fields = FieldsOfDimensions();
  if (fields == nullptr) return;
  if (position < bounds.firstRow) PutU16(block, at + fields->firstRow, static_cast<uint16_t>(position - 1));
  if (position > bounds.lastRow) PutU16(block, at + fields->pastRow, static_cast<uint16_t>(position));
}

// The ROW at `at` as the one to copy: the first used one, with the copies in front of it, or the last used
// one, with the copies behind it.
RowToCopy ExamineRow(const Block& block, uint32_t at, const SheetBounds& bounds, int16_t position) {
  const int16_t row = I16At(block, at + kRowNumber);
  if (position < bounds.firstRow && row == static_cast<int16_t>(bounds.firstRow - 1)) return {true, at, at};
  if (position > bounds.lastRow && row == static_cast<int16_t>(bounds.lastRow - 1))
    return {true, at, NextRecord(block, at)};
  return {};
}

// Widens DIMENSIONS on the way. The search ends at the ROW that it looks for.
RowToCopy FindRowToCopy(uint32_t buffer, const SheetScope& scope, int16_t position) {
  RowToCopy row;
  for (EditWalk edit = StartEditWalk(buffer, scope.extent); InSheet(edit) && !row.found; NextInSheet(&edit)) {
    if (!IsSheetRecord(&edit)) continue;
    const Block& block = edit.walk.block;
    const uint32_t at = edit.walk.at;
    if (IsPlain(block, at, kLowDimensions)) WidenRows(block, at, scope.bounds, position);
    if (IsPlain(block, at, kLowRow)) row = ExamineRow(block, at, scope.bounds, position);
  }
  return row;
}

// First and last of the rows to make, 1-based. Below the first row the upper end comes from the last row and
// not from the first, on purpose: rows that have a ROW get another one.
struct RowRange {
  int32_t first;
  int32_t last;
};

RowRange RowsToMake(const SheetBounds& bounds, int16_t position) {
  if (position < bounds.firstRow) return {position, bounds.lastRow - 1};
  return {bounds.lastRow + 1, position};
}

}  // namespace

int16_t XLAddRow(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position) {
  SheetScope scope;
  if (const int16_t refused = CheckSheetEdit(buffer, table, sheet, position, IsInsideRows, &scope))
    return refused;
  if (size == nullptr) return kEditNoBuffer;
  const RowToCopy row = FindRowToCopy(*buffer, scope, position);
  if (!row.found) return kEditNoTemplate;
  const RowRange rows = RowsToMake(scope.bounds, position);
  NewRow made;
  if (!MakeNewRow(*buffer, row.source, &made)) return kEditNoRowBlock;
  // From the highest down, always in front of the same record: each falls in front of the one before it, and
  // the stream ascends.
  for (int32_t number = rows.last; number >= rows.first; --number) {
    const int16_t result = PatchNewRow(buffer, size, row.place, static_cast<int16_t>(number - 1), made);
    if (result != kEditDone) return result;
  }
  ReleaseNewRow(&made);
  return kEditDone;
}

int16_t XLAddCol(uint32_t* buffer, uint32_t table, uint32_t* /*size*/, int16_t sheet, int16_t position) {
  SheetScope scope;
  if (const int16_t refused = CheckSheetEdit(buffer, table, sheet, position, IsInsideColumns, &scope))
    return refused;
  const bool below = position < scope.bounds.firstColumn;
  const bool above = position > scope.bounds.lastColumn;
  const uint16_t first = static_cast<uint16_t>(position - 1);
  const uint16_t past = static_cast<uint16_t>(position);
  for (EditWalk edit = StartEditWalk(*buffer, scope.extent); InSheet(edit); NextInSheet(&edit)) {
    if (!IsSheetRecord(&edit)) continue;
    const Block& block = edit.walk.block;
    const uint32_t at = edit.walk.at;
    if (IsPlain(block, at, kLowDimensions)) {
      // The BIFF8 fields in either generation, on purpose: on a BIFF5 sheet they fall on other bytes.
      if (below) PutU16(block, at + kDimensionsBiff8.firstColumn, first);
      if (above) PutU16(block, at + kDimensionsBiff8.pastColumn, past);
    } else if (IsPlain(block, at, kLowRow)) {
      if (below) PutU16(block, at + kRowFirstColumn, first);
      if (above) PutU16(block, at + kRowPastColumn, past);
    }
  }
  return kEditDone;
}

}  // namespace tolvenar
