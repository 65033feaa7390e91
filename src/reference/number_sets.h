// Sets of numbers of a graph: 16-bit values ("ints") and 32-bit values ("longs"), each in sets 1 and 2, at indices from 1 to a maximum that
// the caller states.
//
//   SETINT     header, index i16, value u16        SETINTRUN    header, set u8, f i16, l i16, values f to l, u16 each
//   SETLONG    header, index i16, value u32        SETLONGRUN   the same with u32 values
//
// A save merges its items with the stored ones that touch them (set_merge.h) and lays down one record: a single, or a run.
//
// Results of the saves, in this order: 0; -10 first above max or below 1; -11 last likewise; -12 first above last; -13 the absolute value of
// the set isn't 1 or 2; -3 the array is not of one dimension; -4 its bounds are not first and last; -14 no pool block for the working store;
// -16 no buffer; -997 no such graph in the directory; -2 its head was not met, and the working store stays allocated; -4 no pool block for the
// record, and the merged records are gone; -5 the patch at the end of the graph failed: the buffer is released and *buffer is 0.
// Two failures leave everything as it was: -14 also when there is no slot for all items that the merge brings together, and -5 also when they
// are more than a record of 32767 bytes holds, 16379 ints or 8189 longs.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Stores items `first` to `last`; of the elements of *array the first 2 or 4 bytes count. With `set` negative nothing is stored: the singles in
// the range go, and the runs that touch it, with all their items. When the merge leaves nothing to store (lo above hi), nothing is
// written and the result is 0.
// The singles that lie in the range are, in set 1, those from `first` to `last`, and in set 2 those between the bounds that the merge has
// reached, on purpose.
int16_t XLRSaveSetInt(uint32_t* buffer, uint32_t* size, uint16_t graph, int16_t first, int16_t last,
                      int16_t max, SAFEARRAY** array, int16_t set);
int16_t XLRSaveSetLong(uint32_t* buffer, uint32_t* size, uint16_t graph, int16_t first, int16_t last,
                       int16_t max, SAFEARRAY** array, int16_t set);

// Puts the stored items at their indices into *array, of 1 to n; other elements stay. XLRGetSetLong looks for the runs of ints and takes 4 bytes
// per item from them, across the end of the record, on purpose: runs of longs don't come back. What lies behind the block comes as zero.
// How much many overlapping runs of a damaged graph can claim has an end (run_effort.h).
// Result, in this order: 0; -3 the array is not of one dimension; -4 its bounds are not 1 and n; -1 no buffer; -997; -2.
int16_t XLRGetSetInt(uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY** array, uint16_t set);
int16_t XLRGetSetLong(uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY** array, uint16_t set);

}  // namespace tolvenar
