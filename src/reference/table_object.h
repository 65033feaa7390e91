// The sizes of a table, as its head has them.
#pragma once

#include "reference/reference_directory.h"
#include "reference/table_grid.h"

namespace tolvenar {

// D1 to D4 of the TABLEHEAD at `head`, signed.
inline GridCell TableSizesAt(const Block& block, uint32_t head) {
  GridCell sizes;
  for (uint32_t k = 0; k < kGridDimensions; ++k) sizes[k] = I16At(block, head + kTableDimensions + 2 * k);
  return sizes;
}

}  // namespace tolvenar
