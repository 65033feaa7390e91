// Cell reading: what the readers of cells share: the checks before a walk, and the runs of cells.
//
//   A run (MULRK, MULBLANK) of n payload bytes at R
//   OFFSET   SIZE  FIELD
//       4       2  row
//       6       2  c0, first column
//       8       w  each cell: w = 6 (XF, RK) or 2 (XF)
//   2 + n       2  c1, last column
//
// Invariant: a run costs no more than the array has columns, whatever the record claims.
#pragma once

#include <cstdint>

#include "query/array_element.h"

namespace tolvenar {

// Results of the readers, in the order of the checks.
constexpr int16_t kCellsRead = 0;
constexpr int16_t kCellsNoSheets = 1;
constexpr int16_t kCellsBadCount = 2;
constexpr int16_t kCellsNoWorksheet = 3;
constexpr int16_t kCellsNotTwoDimensions = 4;
constexpr int16_t kCellsArrayTooSmall = 5;
constexpr int16_t kCellsNoTable = 7;
constexpr int16_t kCellsNoBuffer = 8;

// Whether the cells of sheet `sheet` can be read into `array`.
// RESULT 1: the table is null or has no sheets. 2: sheet above the count and not above 0, which takes a
// negative count. 3: no such sheet, null buffer, or no worksheet. 4: the array has not two dimensions, or
// is null. 5: it does not cover the used range, dimension 1 the rows and dimension 2 the columns, bounds
// and range compared as signed values; or its bounds can't be had. 7, 8: can't happen. 0: yes. A sheet
// without DIMENSIONS has no range to be covered: every array passes, and refuses the cells that it has no
// element for.
int16_t CheckCellRead(SAFEARRAY* array, uint32_t buffer, uint32_t table, int16_t sheet);

// The columns of an array: the bounds of its dimension 2.
struct ColumnRange {
  LONG first;
  LONG last;
};
ColumnRange ColumnsOf(SAFEARRAY* array);

// Calls `visit(element, i)` for each cell i (0 for the first) of the run at `at` that has an element
// within `columns`. Columns are unsigned here, unlike those of single cells. A run whose first column is
// above its last has no cells.
template <typename Visit>
void ForEachRunCell(const Block& block, uint32_t at, ColumnRange columns, Visit visit) {
  const LONG first = U16At(block, at + kCellColumn) + 1;
  const LONG last = U16At(block, at + kRunLastColumnFromEnd + LengthAt(block, at)) + 1;
  Element element = ElementOf(block, at);
  const LONG from = first < columns.first ? columns.first : first;
  const LONG to = last > columns.last ? columns.last : last;
  for (LONG column = from; column <= to; ++column) {
    element.index[1] = column;
    visit(element, static_cast<uint32_t>(column - first));
  }
}

}  // namespace tolvenar
