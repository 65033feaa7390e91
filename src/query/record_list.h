// Record list: every record of a buffer, laid out in four arrays.
//
//   ARRAY    ELEMENT i, for the i-th record of the walk (from 1)
//   offsets  its offset, 32 bits
//   types    its type code, 16 bits: the low byte, plus 256 when the high byte is exactly 0x10
//   images   its bytes, header included
//   lengths  its size in 16 bits, header included
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Lists the records of `buffer` (`size` bytes) in the order of the walk, the private ones included, up to
// the BUFEND or the end of the buffer. *count is their number. An element that an array refuses, and
// a null array or one of several dimensions, is passed over. An image is handed over as a BSTR that an array of VT_BSTR takes, and off
// Windows one of VT_VARIANT too. The element of a record whose size overflows 16 signed bits is an empty
// text.
// RESULT 0: done; also for a size of 1 or less, with a count of 0. 1: null buffer, or one that is no live
// block; *count is not touched. 10: the pool has no block for an image; the arrays and *count stand as
// far as they were filled.
int16_t XLGetList(uint32_t buffer, int32_t size, int32_t* count, SAFEARRAY** offsets, SAFEARRAY** types,
                  SAFEARRAY** images, SAFEARRAY** lengths);

}  // namespace tolvenar
