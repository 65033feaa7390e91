// Sets of text references of a graph, sets 1 to 4: items of two position values that stand in the place of the text of the same set and index.
//
//   TEXTREF      header, set u8, index i16, first u32, second u32 (0: none)
//   TEXTREFRUN   header, set u8, step code u8, f i16, n i16, base u32     item f + k has base + k x step and no second value
//   step codes   1: 1, 2: 256, 3: 0x1000000
//
// A save merges its items with the stored ones that touch them (set_merge.h) and lays them down by the greedy pass of text_reference_runs.h.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// The step of a step code; 0 for a code that is none.
constexpr uint32_t TextRefStep(uint8_t code) {
  constexpr uint32_t kSteps[] = {0, 1, 0x100, 0x1000000};
  return code < sizeof kSteps / sizeof *kSteps ? kSteps[code] : 0;
}

// Stores items `first` to `last`, whose first values are in one array and whose second values in the other; of each element the first 4 bytes
// count. The texts of the set in that range go, also when `set` is negative: then nothing is stored, the single items in the range go, and the
// runs that touch it, with all their items. A `set` of 0 is let through, and ends in 0 with nothing stored.
//
// On purpose the record blocks of a save stay allocated but for the last: one save of two records leaves one block behind, and a long one, of
// some ten items, runs out of pool blocks and ends in -4, with its first records written. Only MEMORYFREEALL gets the blocks back.
//
// Result, in this order: 0, also when the merge leaves nothing to store (lo above hi); -10 first above max or below 1; -11 last likewise; -12
// first above last; -13 the absolute value of the set is above 4; -3 an array is not of one dimension; -4 its bounds are not first and last;
// -14 no pool block for a working store, and at the second one's failure the first stays allocated; -16 no buffer; -997 no such graph in
// the directory; -2 its head was not met, and both stores stay allocated; -4 no pool block for a record; -5 the patch at the end of the graph
// failed: the buffer is released and *buffer is 0.
int16_t XLRSaveTextRef(uint32_t* buffer, uint32_t* size, uint16_t graph, int16_t first, int16_t last,
                       int16_t max, SAFEARRAY** firsts, SAFEARRAY** seconds, int16_t set);

// Puts the stored items at their indices into the two arrays, both of 1 to n; other elements stay. How much many overlapping runs of a damaged
// graph can claim has an end (run_effort.h).
// Result, in this order: 0; -3 an array is not of one dimension; -4 its bounds are not 1 and n; -1 no buffer; -997; -2.
int16_t XLRGetTextRef(uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY** firsts, SAFEARRAY** seconds,
                      uint16_t set);

}  // namespace tolvenar
