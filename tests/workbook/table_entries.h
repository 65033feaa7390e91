// The entries of a SheetTable, for comparisons.
#pragma once

#include <vector>

#include "foundation/record_stream.h"

namespace tolvenar::testing {

inline std::vector<int32_t> TableEntries(uint32_t table, uint32_t count) {
  std::vector<int32_t> entries;
  for (uint32_t i = 0; i < count; ++i)
    entries.push_back(static_cast<int32_t>(U32At(OpenBlock(table), i * 4)));
  return entries;
}

}  // namespace tolvenar::testing
