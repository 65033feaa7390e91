// The property values of a graph: one record GRAPHPROPS of 128 values of 32 bits, item 1 first.
//
// A record is taken for GRAPHPROPS by the chart test, which a RESUME passes as well, on purpose. A RESUME lies in a graph in which a record
// was replaced by a longer one; it goes when the reference is compacted.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Stores the 128 elements of *array, of which the first 4 bytes count. A RESUME that is the last to pass the test is taken for the record to
// replace: its jump back is lost, and the walk goes on at the place behind it, on purpose.
// Result, in this order: 0; -1 no buffer; -997 no such graph in the directory; -2 its head was not met; -3 the array is not of one dimension;
// -4 its bounds are not 1 and 128; -8 no pool block for the copy of the array; -4 none for the record; -5, -6 the patch at the graph's end,
// in place of the old record failed: the buffer is released and *buffer is 0.
int16_t XLRSaveProperties(uint32_t* buffer, uint32_t* size, SAFEARRAY** array, uint16_t graph);

// Puts the values of the last record that passes the test into *array. Of a RESUME that is what lies behind its header, on purpose.
// Result, in this order: 0, also without a record; -3; -4 the bounds; -1; -997; -2.
int16_t XLRGetProperties(uint32_t buffer, SAFEARRAY** array, uint16_t graph);

}  // namespace tolvenar
