// ChangeFormat: the XF index of every cell record of a sheet from a caller's matrix.
//
//   matrix   signed 16-bit XF indices; the entry of a cell stands at row x stride + column, both 0-based
//
// Invariants: (1) Only the u16 at the cell's XF changes; nothing grows, nothing moves. (2) Of a run only the
// first cell is stamped, from the entry of its first column, on purpose. (3) Unlike FindCell it leaves the
// cells of nested substreams alone, on purpose.
#pragma once

#include <cstdint>

namespace tolvenar {

// Stamps the cells of `sheet` (1-based). A negative entry leaves the cell's format as it is.
// REQUIRES: the matrix covers every cell of the sheet; it is not bounds-checked.
// RESULT 1: the walk ran, also over a sheet without cells. 0: null table or buffer, or no such sheet.
// Rows and columns are signed 16-bit values. Harmless where nothing is prescribed: a cell whose entry would lie
// in front of the matrix keeps its format; with a null matrix every cell does.
uint32_t ChangeFormat(uint32_t buffer, uint32_t table, int16_t sheet, const int16_t* matrix, int32_t stride);

}  // namespace tolvenar
