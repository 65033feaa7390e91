// The greedy pass that lays text references down as runs and singles.
//
// It opens a run at two items whose first values are one step apart and that have no second values. The run closes at its second item as soon as
// the third one does not go on or has no second value, on purpose: so every run has two items, and a long sequence becomes runs of two. When the
// third goes on and has a second value, the run is dropped with its two items, on purpose.
//
//   A      x, x + 1, x + 2, x + 3, x + 4         B  all 0
//   gives  run of x, x + 1; run of x + 2, x + 3; single x + 4
#pragma once

#include <cstdint>

#include "reference/set_merge.h"

namespace tolvenar {

// Items lo to hi of a set, A and B being their first and second values.
struct TextRefItems {
  int32_t lo;
  int32_t hi;
  SetStore first;
  SetStore second;

  uint32_t A(int32_t item) const { return U32At(first.block, first.PlaceOf(item)); }
  uint32_t B(int32_t item) const { return U32At(second.block, second.PlaceOf(item)); }
};

// The record of item i alone, in a pool block; 0 when there is none.
uint32_t NewTextRef(uint8_t set, const TextRefItems& items, int32_t i);

// Writes the items, record by record, in front of the record at `end`. With lo above hi nothing is written.
// All record blocks but the last stay allocated, on purpose. Result: 0; -4 no pool block for a record: those taken before all stay; -5 a
// patch failed: the buffer is released and *buffer is 0. What was written before a failure stays written.
int16_t PutTextRefItems(uint32_t* buffer, uint32_t* size, uint32_t end, uint8_t set,
                        const TextRefItems& items);

}  // namespace tolvenar
