// Flag vectors of a graph: a record SELVIS per set number.
//
//   OFFSET  SIZE       FIELD
//        4     1       set number, above 0
//        5     2       n, number of flags
//        7  n / 8 + 1  item i, from 0, is bit i mod 8 of byte i / 8. There is a spare byte of 0 when 8 divides n
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// One byte of eight flags: bit k is set when flags[k] isn't 0.
uint8_t PackBits(const uint16_t* flags);

// Bit k, from 0 to 7, of a byte.
uint16_t ExtractBit(uint8_t byte, uint32_t k);

// Stores the n elements of *array, 16 bits each, as flag vector `set`. A `set` that is not above 0 is tested like its absolute value, and then
// nothing is stored and nothing deleted, on purpose. Of a `set` above 255 the low byte is stored, and no record is found to be replaced.
// Result, in this order: 0; -1 no buffer; -997 no such graph in the directory; -2 its head was not met; -3 the array is not of one dimension;
// -4 its bounds are not 1 and n; -8 no pool block for the copy of the array; -4 none for the record; -5, -6 the patch at the graph's end, in
// place of the old record failed: the buffer is released and *buffer is 0.
int16_t XLRSaveSelVis(uint32_t* buffer, uint32_t* size, SAFEARRAY** array, uint16_t graph, int16_t n,
                      int16_t set);

// Puts n flags, 0 or 1, into *array. The n of the record isn't read: with a larger n the bits of what lies behind it follow, and zeros behind
// the block. Result, in this order: 0, also without a record; -3; -4 the bounds; -1; -997; -2.
int16_t XLRGetSelVis(uint32_t buffer, SAFEARRAY** array, uint16_t graph, int16_t n, uint16_t set);

}  // namespace tolvenar
