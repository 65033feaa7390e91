// A table in the walk: its head, and its sizes.
#pragma once

#include "reference/reference_directory.h"
#include "reference/table_grid.h"

namespace tolvenar {

// True when the walk stands at the head that it looks for.
inline bool AtObjectHead(const ObjectWalk& object) {
  return IsChart(object.walk.block, object.walk.at, object.head) &&
         U16At(object.walk.block, object.walk.at + kObjectId) == object.id;
}

// True when the walk stands at a record of this low byte, inside the object.
inline bool AtObjectRecord(const ObjectWalk& object, uint8_t low) {
  return object.seen && IsChart(object.walk.block, object.walk.at, low);
}

// D1 to D4 of the TABLEHEAD at `head`, signed.
inline GridCell TableSizesAt(const Block& block, uint32_t head) {
  GridCell sizes;
  for (uint32_t k = 0; k < kGridDimensions; ++k) sizes[k] = I16At(block, head + kTableDimensions + 2 * k);
  return sizes;
}

}  // namespace tolvenar
