// Run effort: what keeps a get of a set short on a damaged reference.
//
// A run says how many items it has, and its record need not hold them; a run of text references never does. In a damaged graph each of many
// short records can claim all the items that an array has. So the runs of one get share a budget of items, and what is beyond it is left
// out. It is more than a set can use: a save leaves an item in no more than one run, and an array has at most 32767 items.
#pragma once

#include <algorithm>
#include <cstdint>

namespace tolvenar {

constexpr int32_t kMostRunItems = 512 * INT16_MAX;

struct RunEffort {
  int32_t left = kMostRunItems;
};

// The items of a run f to l that are put into an array of 1 to n: empty when `last` is below `first`.
struct RunItems {
  int32_t first;
  int32_t last;
};

// Those that the array has and the budget allows, which is spent. An index outside the array is left out, as it would be refused.
inline RunItems ItemsToPut(RunEffort* effort, int32_t f, int32_t l, int32_t n) {
  RunItems items = {std::max(f, 1), std::min(l, n)};
  if (items.last < items.first) return items;
  items.last = std::min(items.last, items.first + effort->left - 1);
  effort->left -= items.last - items.first + 1;
  return items;
}

}  // namespace tolvenar
