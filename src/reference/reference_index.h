// XLRGetNumItems and XLRGetIndices: the directory by kind (1 tables, 2 graphs, 3 chart edits).
//
// The kind of an entry is the signed remainder of its kind word by 256, on purpose: a chart edit with a number above 128 is of no kind 3.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// RESULT: how many objects of the kind are entered, in 16 bits; -1 no buffer, or no valid directory.
int16_t XLRGetNumItems(uint32_t buffer, int16_t kind);

// Puts an element into each of two arrays, with the bounds 1 to count (16 bits), for every object of the kind. Both come from the stream's
// header and not from the entry, on purpose: the first array gets the bytes from offset 5 on, as many as its elements have (up to 8),
// the second the 16 bits at offset 6. So all elements of an array are alike. Elements behind the last match keep what they hold.
// RESULT: 0. -1 no buffer; -3, -4 the dimensions, the bounds of the first array, then of the second; -1 no valid directory.
int16_t XLRGetIndices(uint32_t buffer, SAFEARRAY** first, SAFEARRAY** second, uint32_t count, uint32_t kind);

}  // namespace tolvenar
