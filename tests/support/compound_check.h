// A strict second opinion on a compound file: nothing is forgiven that the format doesn't allow.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "support/compound_builder.h"

namespace tolvenar::testing {

struct CheckedEntry {
  uint8_t type = 0;
  Bytes own;  // class id, state bits and times: the 36 bytes that only the entry's owner understands
  Bytes contents;
};

// Takes `file` apart and returns its entries by path ("/" is the root, "/a/b" a member of a). Every sector
// must belong to exactly one chain of exactly the length its bytes need, every tree must be in order and a
// red-black tree. Whatever is not so is a test failure.
std::map<std::string, CheckedEntry> CheckCompound(const Bytes& file);

}  // namespace tolvenar::testing
