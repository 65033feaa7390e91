// Rings: find an offset on the ring, measure the ring, then find where it begins.
#include "workbook/ring.h"

namespace tolvenar {

namespace {

// Steps from `at` back to itself; 0 when it isn't on a ring.
uint32_t RingLength(const Block& block, uint32_t at) {
  uint32_t next = NextRecord(block, at);
  for (uint32_t steps = 1; steps <= block.extent; ++steps) {
    if (next == at) return steps;
    next = NextRecord(block, next);
  }
  return 0;
}

// Steps from `from` to the first record of the ring of `length` records that it leads to: one walk is a whole
// ring ahead of the other, and they meet where the ring begins.
uint32_t StepsToRing(const Block& block, uint32_t from, uint32_t length) {
  uint32_t ahead = from;
  for (uint32_t i = 0; i < length; ++i) ahead = NextRecord(block, ahead);
  uint32_t steps = 0;
  for (uint32_t behind = from; behind != ahead; ++steps) {
    behind = NextRecord(block, behind);
    ahead = NextRecord(block, ahead);
  }
  return steps;
}

}  // namespace

uint32_t RecordsBeforeRing(const Block& block, uint32_t from) {
  Walk walk = StartWalk(block, from);
  while (!walk.ended) Step(&walk);
  const uint32_t length = RingLength(block, walk.at);
  return length == 0 ? 0 : StepsToRing(block, from, length) + length;
}

}  // namespace tolvenar
