// Bounds and stores of the merge of sets.
#include "reference/set_merge.h"

namespace tolvenar {

int16_t CheckSetRange(const SetRange& range, int32_t lowest, int32_t highest) {
  if (range.first > range.max || range.first < 1) return kSetWrongFirst;
  if (range.last > range.max || range.last < 1) return kSetWrongLast;
  if (range.first > range.last) return kSetWrongOrder;
  if (range.Number() < lowest || range.Number() > highest) return kSetWrongNumber;
  return 0;
}

bool MergeBounds::MergeRun(int32_t f, int32_t l) {
  const bool touches = (lo <= f && f <= hi + 1) || (lo - 1 <= l && l <= hi) || (f < lo && l > hi);
  if (!touches) return false;
  lo = std::min(lo, f);
  hi = std::max(hi, l);
  lowest = std::min(lowest, lo);
  return true;
}

bool MakeRoom(uint32_t* store, const MergeBounds& looked, uint32_t width) {
  const uint32_t needed = static_cast<uint32_t>(looked.hi - looked.lowest + 1) * width;
  if (MEMORYALLOCSIZE(*store) >= needed) return true;
  const uint32_t moved = MEMORYREALLOC(*store, static_cast<int32_t>(needed));
  if (moved == 0) return false;
  *store = moved;
  return true;
}

SetStore FillStore(uint32_t store, int32_t lowest, uint32_t width, SAFEARRAY* array, const SetRange& range) {
  const SetStore filled{OpenBlock(store), lowest, width};
  for (LONG item = range.first; item <= range.last; ++item) {
    uint32_t value = 0;
    platform::GetBytes(array, &item, &value, width);
    CopyIn(filled.block, filled.PlaceOf(item), reinterpret_cast<const uint8_t*>(&value), width);
  }
  return filled;
}

}  // namespace tolvenar
