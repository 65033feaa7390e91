// Chart effort: what keeps a call on a damaged chart short.
//
// The readers of a chart walk inside a walk: over the block of each SERIES or TEXT, and over the tokens of each
// AI. Blocks that are never closed, and formulas that claim to be longer than their record, make these inner
// walks go over the same bytes again, each of them; a call would end, but not in anybody's lifetime. So all inner
// walks of one call share a budget.
//
// It is more than a sound chart can use. There a byte lies in one formula at most, and a token takes one; and it lies
// in one block of a SERIES or TEXT at most, for these don't lie in one another, and a record takes four. What is
// added lets a small damaged chart be walked to the end all the same.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"

namespace tolvenar {

struct Effort {
  uint64_t left = 0;  // steps, of records or of tokens
};

constexpr uint64_t kEffortPerByte = 2;
constexpr uint64_t kLeastEffort = 0x100000;

inline Effort EffortFor(const Block& block) {
  return {block.extent * kEffortPerByte + kLeastEffort};
}

// Takes one step. False when none is left.
inline bool Spend(Effort* effort) {
  if (effort->left == 0) return false;
  --effort->left;
  return true;
}

}  // namespace tolvenar
