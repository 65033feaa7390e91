// NarrowToWide: the one way from an 8-bit path or stream name to the wide name that the storage calls take.
//
//   "Book"  42 6F 6F 6B           ->  0042 006F 006F 006B 0000
//   "\x80"  80                    ->  FF80 0000                     sign extension, no code page
#pragma once

#include <memory>

#include "tolvenar/automation.h"

namespace tolvenar {

// A zero-terminated wide name from the general allocator, so that it takes none of the pool's nine blocks.
using WideName = std::unique_ptr<OLECHAR[]>;

// Widens each byte of `name` (8-bit, zero-terminated) by sign extension, on purpose: a byte from 0x80 up
// becomes a unit from 0xFF80 up, and off Windows the platform takes the low byte of each unit, which gives
// the bytes back as they were. Only the low 16 bits of the name's length count, on purpose: a name of 65536 +
// n bytes is widened as far as its first n. Returns the name, the caller's; null when there is no memory for
// it or `name` is null.
WideName NarrowToWide(const char* name);

}  // namespace tolvenar
