// Where a cell is: the walk from a sheet's BOF to the record that holds a cell, or to the place where it
// would stand.
//
//   Cell record                            Run of cells (MULRK, MULBLANK)
//   OFFSET  SIZE  FIELD                        OFFSET     SIZE  FIELD
//        4     2  row, 0-based                      4        2  row, 0-based
//        6     2  column, 0-based                   6        2  first column
//        8     2  XF index                          8  6n or 2n  cells: XF (MULRK: and RK value, 4 bytes)
//                                          length + 2        2  last column
//
// Invariants: (1) Callers' rows and columns are 1-based, those of records 0-based; all of them are compared
// as signed 16-bit values. (2) Exactly ten kinds of record are cells here. LABELSST is none of them, on
// purpose: an edit at its place takes the cell for absent. STRING is one, on purpose, though it has no
// position: the first two words of its payload are read as row and column.
#pragma once

#include <cstdint>

#include "edit/cell_kinds.h"
#include "foundation/biff_records.h"
#include "workbook/sheet_table.h"

namespace tolvenar {

// The shape of the record at `at`, by the plain test on the ten cell kinds.
CellShape ShapeOfCell(const Block& block, uint32_t at);

// Where the last column of the run at `at` stands, and what stands there, 0-based.
inline uint32_t LastColumnOffset(const Block& block, uint32_t at) {
  return at + LengthAt(block, at) + kRunLastColumnFromEnd;
}
inline int16_t LastColumnOfRun(const Block& block, uint32_t at) {
  return I16At(block, LastColumnOffset(block, at));
}

// The checks that every search of a sheet begins with. True, with the extent in *extent, when the table is
// not null and has the sheet (1-based) and the buffer is not null.
bool SheetForEdit(uint32_t buffer, uint32_t table, int16_t sheet, SheetExtent* extent);

// Finds the cell at `row`, `column` (1-based) of `sheet` (1-based).
// RESULT above 0: the offset of the record that holds the cell, one of the ten kinds. Below 0: there is no
// such cell; minus the offset of the record before which it belongs. 0: it can't exist: no table, sheet or
// buffer, outside DIMENSIONS, or no ROW record for its row in front of that row's cells. Cells in a nested
// substream count, on purpose, but for NUMBER, which counts only in the sheet itself. A walk that goes round
// in a circle, or comes to a BUFEND, ends as at the sheet's end. When BiffVersion is neither generation there is
// no layout to read a DIMENSIONS by, and it bounds nothing.
int32_t FindCell(uint32_t buffer, uint32_t table, int16_t sheet, int16_t row, int16_t column);

// XF index of the cell at `column` (caller's, 1-based) in the record at `at`: of a run, that of the run's
// cell in this column. A column outside the run reads what stands at its place, zero behind the block.
uint16_t GetCellXF(const Block& block, uint32_t at, int16_t column);

}  // namespace tolvenar
