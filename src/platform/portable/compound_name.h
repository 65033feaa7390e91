// Names in a compound file: units of 16 bits, 1 to 31 of them, ordered and compared as the format wants it.
//
// The order: a shorter name comes before a longer one; names of one length are compared unit by unit, each
// folded to upper case. Two names are the same when neither comes before the other. Units are compared as
// they stand, with no regard to pairs of surrogates.
#pragma once

#include <cstdint>

namespace tolvenar::platform {

struct Name {
  const uint8_t* units = nullptr;  // little-endian, `count` units
  uint32_t count = 0;
};

// The upper-case form of `unit` when it has one of a single unit, else `unit`.
uint16_t FoldUnit(uint16_t unit);

// Negative, 0 or positive: `a` comes before, is the same as, or comes after `b`.
int CompareNames(const Name& a, const Name& b);

// True when `name` may be given to a new member of a storage: of 1 to 31 units, none of them / \ : or !.
bool IsGoodName(const Name& name);

}  // namespace tolvenar::platform
