// The merge of a save with the items of its set that are stored already, by the bounds lo and hi of what it will store.
//
//   stored record        touches when                                        then
//   single item x        it lies in the range; with a number above 0 also     goes; x = lo - 1: lo comes down to it and takes its value;
//                        x = lo - 1 and x = hi + 1                            x = hi + 1: item hi takes its value and lo goes up
//   run f to l           lo <= f <= hi + 1, lo - 1 <= l <= hi, or             goes; lo and hi widen to it, and all its values are taken, over
//                        f < lo and l > hi                                    those just given
//
// Items next to the high side are absorbed at the cost of the lowest item, on purpose: the range doesn't grow there, and lo can end above hi.
// Then nothing is left to store. A stored run outdoes what the caller gives, on purpose: to overwrite it, its range is taken out first, by a
// save with the number negated.
//
// A save walks its graph twice. The first time it only looks how far lo and hi will come: runs that were stored with a larger maximum, or that
// a damaged stream has, reach beyond the caller's. So a store has the room that it needs, or the call fails with everything as it was.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"
#include "reference/reference_array.h"

namespace tolvenar {

// Results of the saves of sets, in the order of the checks, besides those of reference_directory.h and reference_array.h.
constexpr int16_t kSetWrongFirst = -10;   // first above max or below 1
constexpr int16_t kSetWrongLast = -11;    // last likewise
constexpr int16_t kSetWrongOrder = -12;   // first above last
constexpr int16_t kSetWrongNumber = -13;  // no such set
constexpr int16_t kSetNoStore = -14;      // no pool block for a working store
constexpr int16_t kSetNoBuffer = -16;     // the buffer is 0; tested behind the others

// What all saves of a range are given.
struct SetRange {
  int32_t first;
  int32_t last;
  int32_t max;
  int32_t set;  // with its sign, which is a command: above 0 merges and stores, below 0 only takes out

  int32_t Number() const { return std::abs(set); }
  bool Stores() const { return set > 0; }
};

// Tests the range, and the number from `lowest` to `highest`. Result: 0 or a code from -10 to -13.
int16_t CheckSetRange(const SetRange& range, int32_t lowest, int32_t highest);

enum class MergePass { kLook, kMerge };

struct MergeBounds {
  explicit MergeBounds(const SetRange& range)
      : lo(range.first), hi(range.last), lowest(range.first), merges(range.Stores()) {}

  int32_t lo;
  int32_t hi;
  int32_t lowest;  // that lo has ever been
  bool merges;     // single items next to the bounds are absorbed

  // Merges single item `x`, of which `in_range` says whether it lies in the range. take(item) is to take its value for an item. True when the
  // record goes. The three tests follow one another, on purpose: each sees the bounds as the one before left them.
  template <class Take>
  bool MergeSingle(int32_t x, bool in_range, Take take) {
    bool goes = in_range;
    if (merges && x == lo - 1) {
      --lo;
      lowest = std::min(lowest, lo);
      take(lo);
      goes = true;
    }
    if (merges && x == hi + 1) {
      take(hi);
      ++lo;
      goes = true;
    }
    return goes;
  }

  // Widens to the run f to l. True when it touches, and so goes.
  bool MergeRun(int32_t f, int32_t l);
};

// The working store of a merge: items of `width` bytes from item `lowest` on, in a pool block. All access goes through the gate of the block.
struct SetStore {
  Block block;
  int32_t lowest = 0;
  uint32_t width = 0;

  uint32_t PlaceOf(int32_t item) const {
    return (static_cast<uint32_t>(item) - static_cast<uint32_t>(lowest)) * width;
  }
};

// Sees that the block *store, which was requested by the caller's maximum, has the room that the merge will use, and moves it to a larger slot
// if not. The request alone would be too small for items of 4 bytes and for runs beyond the maximum. False when there is no such slot:
// *store is as it was.
bool MakeRoom(uint32_t* store, const MergeBounds& looked, uint32_t width);

// The store, opened to hold items from `lowest` on, with those of the array in place that it has room for.
SetStore FillStore(uint32_t store, int32_t lowest, uint32_t width, SAFEARRAY* array, const SetRange& range);

}  // namespace tolvenar
