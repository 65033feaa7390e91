// XLDeleteRow and XLDeleteCol: the records of the row or column become SLACK, everything beyond moves back by
// one, and formulas follow.
#include "edit/find_cell.h"
#include "edit/row_column_checks.h"
#include "edit/row_column_edit.h"
#include "edit/row_column_walk.h"
#include "edit/run_splitters.h"

namespace tolvenar {

namespace {

// DIMENSIONS, by both operations: shrinks only when the position lies beyond the last row, and in the BIFF8
// field of the row count in either generation. Inverted as it is, and for a column too, on purpose.
void ShrinkDimensions(const Block& block, uint32_t at, const SheetBounds& bounds, int16_t position) {
  if (position > bounds.lastRow) AddToU16(block, at + kDimensionsBiff8.pastRow, -1);
}

// A record with a row or column number at `field`: erased when it is `p`, then moved back when it is at least
// `p`, the erased one too.
void EraseOrMoveBack(const Block& block, uint32_t at, uint32_t field, int16_t p) {
  if (I16At(block, at + field) == p) MarkRecordSlack(block, at);
  MoveFrom(block, at + field, p, -1);
}

// One record of XLDeleteRow; `row` is the one that goes, 1-based. A formula is adjusted first, then erased.
void MoveRecordUp(const Block& block, uint32_t at, const SheetBounds& bounds, int16_t row) {
  if (IsPlain(block, at, kLowDimensions)) return ShrinkDimensions(block, at, bounds, row);
  const int16_t p = ZeroBased(row);
  if (IsPlain(block, at, kLowRow)) return EraseOrMoveBack(block, at, kRowNumber, p);
  AdjustFormulaOfRecord(block, at, p, AdjustMode::kRowDeleted);
  if (ShapeOfCell(block, at) != CellShape::kNoCell) EraseOrMoveBack(block, at, kCellRow, p);
}

// A run of cells on the way of XLDeleteCol; `column` is the one that goes, 1-based. A run that begins in it
// loses no cell, on purpose: it only moves, and from column 0 to 0xFFFF if it must.
void CloseColumnInRun(EditWalk* edit, uint32_t* buffer, uint32_t* size, CellShape shape, int16_t column) {
  const Block& block = edit->walk.block;
  const uint32_t at = edit->walk.at;
  const int16_t p = ZeroBased(column);
  const int16_t first = I16At(block, at + kCellColumn);
  const int16_t last = LastColumnOfRun(block, at);
  if (first < p && p <= last) {
    const auto split = shape == CellShape::kMulRk ? SplitMulRkForDelete : SplitMulBlankForDelete;
    const int32_t place = split(buffer, size, at, column);
    GoOnBehindSplit(edit, *buffer, place);
  } else if (first >= p) {
    PutU16(block, at + kCellColumn, static_cast<uint16_t>(first - 1));
    PutU16(block, LastColumnOffset(block, at), static_cast<uint16_t>(last - 1));
  }
}

// Any other record of XLDeleteCol. A formula is adjusted first, then erased.
void MoveRecordLeft(const Block& block, uint32_t at, CellShape shape, const SheetBounds& bounds,
                    int16_t column) {
  if (IsPlain(block, at, kLowDimensions)) return ShrinkDimensions(block, at, bounds, column);
  // Every ROW, wherever the position lies, on purpose.
  if (IsPlain(block, at, kLowRow)) return AddToU16(block, at + kRowPastColumn, -1);
  const int16_t p = ZeroBased(column);
  AdjustFormulaOfRecord(block, at, p, AdjustMode::kColumnDeleted);
  if (shape == CellShape::kSingle) EraseOrMoveBack(block, at, kCellColumn, p);
}

}  // namespace

int16_t XLDeleteRow(uint32_t* buffer, uint32_t table, uint32_t* /*size*/, int16_t sheet, int16_t position) {
  SheetScope scope;
  if (const int16_t refused = CheckSheetEdit(buffer, table, sheet, position, IsOutsideInvertedRows, &scope))
    return refused;
  for (EditWalk edit = StartEditWalk(*buffer, scope.extent); InSheet(edit); NextInSheet(&edit)) {
    if (IsSheetRecord(&edit)) MoveRecordUp(edit.walk.block, edit.walk.at, scope.bounds, position);
  }
  return kEditDone;
}

int16_t XLDeleteCol(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position) {
  SheetScope scope;
  // The column is compared with the bounds of the rows, on purpose.
  if (const int16_t refused = CheckSheetEdit(buffer, table, sheet, position, IsOutsideInvertedRows, &scope))
    return refused;
  if (size == nullptr) return kEditNoBuffer;
  for (EditWalk edit = StartEditWalk(*buffer, scope.extent); InSheet(edit); NextInSheet(&edit)) {
    if (!IsSheetRecord(&edit)) continue;
    const CellShape shape = ShapeOfCell(edit.walk.block, edit.walk.at);
    if (shape == CellShape::kMulRk || shape == CellShape::kMulBlank) {
      CloseColumnInRun(&edit, buffer, size, shape, position);
    } else {
      MoveRecordLeft(edit.walk.block, edit.walk.at, shape, scope.bounds, position);
    }
  }
  return kEditDone;
}

}  // namespace tolvenar
