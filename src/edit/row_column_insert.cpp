// XLInsertRow and XLInsertCol: everything at or beyond the position moves by one, and formulas follow.
#include "edit/find_cell.h"
#include "edit/new_row.h"
#include "edit/row_column_checks.h"
#include "edit/row_column_edit.h"
#include "edit/row_column_walk.h"
#include "edit/run_splitters.h"
#include "workbook/biff_version.h"

namespace tolvenar {

namespace {

// The ROW that the new one displaces; of several, the last.
struct DisplacedRow {
  bool found = false;
  uint32_t at = 0;
};

// One record of XLInsertRow; `p` is the row, 0-based, that is opened.
void MoveRecordDown(const Block& block, uint32_t at, int16_t p, DisplacedRow* displaced) {
  if (IsPlain(block, at, kLowDimensions)) {
    if (const DimensionsFields* fields = FieldsOfDimensions()) AddToU16(block, at + fields->pastRow, 1);
    return;
  }
  if (IsPlain(block, at, kLowRow)) {
    if (I16At(block, at + kRowNumber) == p) *displaced = {true, at};
    MoveFrom(block, at + kRowNumber, p, 1);
    return;
  }
  if (ShapeOfCell(block, at) != CellShape::kNoCell) MoveFrom(block, at + kCellRow, p, 1);
  AdjustFormulaOfRecord(block, at, p, AdjustMode::kRowInserted);
}

// A run of cells on the way of XLInsertCol; `column` is the one that is opened, 1-based.
void OpenColumnInRun(EditWalk* edit, uint32_t* buffer, uint32_t* size, CellShape shape, int16_t column) {
  const Block& block = edit->walk.block;
  const uint32_t at = edit->walk.at;
  const int16_t p = ZeroBased(column);
  const int16_t first = I16At(block, at + kCellColumn);
  const int16_t last = LastColumnOfRun(block, at);
  if (first < p && p <= last) {
    const auto split = shape == CellShape::kMulRk ? SplitMulRkForInsert : SplitMulBlankForInsert;
    const int32_t place = split(buffer, size, at, column);
    GoOnBehindSplit(edit, *buffer, place);
  } else if (first >= p) {
    PutU16(block, at + kCellColumn, static_cast<uint16_t>(first + 1));
    PutU16(block, LastColumnOffset(block, at), static_cast<uint16_t>(last + 1));
  }
}

// Any other record of XLInsertCol.
void MoveRecordRight(const Block& block, uint32_t at, CellShape shape, int16_t p) {
  if (IsPlain(block, at, kLowDimensions)) {
    if (const DimensionsFields* fields = FieldsOfDimensions()) AddToU16(block, at + fields->pastColumn, 1);
    return;
  }
  // Every ROW, wherever the position lies, on purpose.
  if (IsPlain(block, at, kLowRow)) return AddToU16(block, at + kRowPastColumn, 1);
  if (shape == CellShape::kSingle) MoveFrom(block, at + kCellColumn, p, 1);
  AdjustFormulaOfRecord(block, at, p, AdjustMode::kColumnInserted);
}

}  // namespace

int16_t XLInsertRow(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position) {
  SheetScope scope;
  if (const int16_t refused = CheckSheetEdit(buffer, table, sheet, position, IsOutsideInvertedRows, &scope))
    return refused;
  if (size == nullptr) return kEditNoBuffer;
  const int16_t p = ZeroBased(position);
  DisplacedRow displaced;
  for (EditWalk edit = StartEditWalk(*buffer, scope.extent); InSheet(edit); NextInSheet(&edit)) {
    if (IsSheetRecord(&edit)) MoveRecordDown(edit.walk.block, edit.walk.at, p, &displaced);
  }
  if (!displaced.found) return kEditDone;
  NewRow made;
  if (!MakeNewRow(*buffer, displaced.at, &made)) return kEditNoRowBlock;
  const int16_t result = PatchNewRow(buffer, size, displaced.at, p, made);
  if (result == kEditDone) ReleaseNewRow(&made);
  return result;
}

int16_t XLInsertCol(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position) {
  SheetScope scope;
  if (const int16_t refused =
          CheckSheetEdit(buffer, table, sheet, position, IsOutsideInvertedColumns, &scope))
    return refused;
  if (size == nullptr) return kEditNoBuffer;
  for (EditWalk edit = StartEditWalk(*buffer, scope.extent); InSheet(edit); NextInSheet(&edit)) {
    if (!IsSheetRecord(&edit)) continue;
    const CellShape shape = ShapeOfCell(edit.walk.block, edit.walk.at);
    if (shape == CellShape::kMulRk || shape == CellShape::kMulBlank) {
      OpenColumnInRun(&edit, buffer, size, shape, position);
    } else {
      MoveRecordRight(edit.walk.block, edit.walk.at, shape, ZeroBased(position));
    }
  }
  return kEditDone;
}

}  // namespace tolvenar
