// Array elements: where a cell goes in the two-dimensional array of a caller.
//
//   INDEX  DIMENSION  FROM THE RECORD
//       0          1  row (u16, 0-based) read as signed, plus 1
//       1          2  column (u16, 0-based) read as signed, plus 1
//
// So a row of 32768 or more becomes an index that the array refuses, and the refusal is ignored.
#pragma once

#include "foundation/biff_records.h"
#include "platform/array_get.h"
#include "tolvenar/automation.h"

namespace tolvenar {

using platform::ArrayAt;

constexpr UINT kCellDimensions = 2;

struct Element {
  LONG index[kCellDimensions];
};

// The element of the cell record at `at`; of a run of cells, that of its first cell.
inline Element ElementOf(const Block& block, uint32_t at) {
  return {{I16At(block, at + kCellRow) + 1, I16At(block, at + kCellColumn) + 1}};
}

}  // namespace tolvenar
