// XLRFillTable and XLRGetRefTable: the position values of a table, from an array and back into one. Between the two they stand in the table
// as TABLEBLOCK and TABLECELL records, which table_box.h makes.
//
// Invariant: an array is touched only when it has the table's shape: 4 dimensions, dimension k from 1 to Dk.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

constexpr int16_t kFillNoCopy = -8;
constexpr int16_t kFillNotEncoded = -10;

// Stores the elements that are not 0, taken as 32 bits, in front of the end of table `table`. What the table held before stays, on purpose.
// RESULT: 0. -1 no buffer; -997 no such table; -2 its head was not met; -3, -4 the array's dimensions, its bounds; -8 no pool block for
// a copy of the values (also for more cells than a block can have bytes), -10 none for a box or for its mask, or a failed patch: the
// boxes before it are stored; a buffer that can't grow has been freed and *buffer is 0. No block stays taken.
int16_t XLRFillTable(uint32_t* buffer, uint32_t* size, SAFEARRAY** array, uint16_t table);

// Puts the stored values into the array; elements without one keep what they hold. A cell that stands alone lands one place lower in each
// dimension than it was taken from, on purpose; where that is outside the array it is lost. What a damaged box has outside the array is
// passed over, so that a record takes no more time than the array has elements.
// RESULT: 0. -1 no buffer; -997 no such table; -2 its head was not met; -3, -4 the array's dimensions, its bounds: nothing was put.
int16_t XLRGetRefTable(uint32_t buffer, uint16_t table, SAFEARRAY** array);

}  // namespace tolvenar
