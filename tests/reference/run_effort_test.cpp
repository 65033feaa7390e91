// Run effort: which items of a run are put, and the end of the budget, in itself and in the getters of sets.
#include "reference/run_effort.h"

#include "reference/number_fixture.h"
#include "reference/text_reference_fixture.h"

namespace tolvenar::testing {
namespace {

constexpr int kRunsInBudget = 512;  // that claim an array full of 32767 items

std::pair<int32_t, int32_t> Put(RunEffort* effort, int32_t f, int32_t l, int32_t n) {
  const RunItems items = ItemsToPut(effort, f, l, n);
  return {items.first, items.last};
}

TEST(RunEffortTest, ItemsOutsideTheArray_AreLeftOut) {
  RunEffort effort;
  EXPECT_EQ(Put(&effort, 2, 4, 5), std::pair(2, 4));
  EXPECT_EQ(Put(&effort, -3, 4, 5), std::pair(1, 4));
  EXPECT_EQ(Put(&effort, 1, 9, 5), std::pair(1, 5));
  EXPECT_EQ(effort.left, kMostRunItems - 3 - 4 - 5);
}

TEST(RunEffortTest, ARunWithoutItemsInTheArray_CostsNothing) {
  RunEffort effort;
  for (const auto& [f, l] : {std::pair{6, 9}, {-4, 0}, {4, 3}, {32767, -32768}}) {
    const RunItems items = ItemsToPut(&effort, f, l, 5);
    EXPECT_LT(items.last, items.first) << f;
  }
  EXPECT_EQ(effort.left, kMostRunItems);
}

TEST(RunEffortTest, WhatIsBeyondTheBudget_IsLeftOut) {
  RunEffort effort{4};
  EXPECT_EQ(Put(&effort, 1, 3, 9), std::pair(1, 3));
  EXPECT_EQ(Put(&effort, 5, 9, 9), std::pair(5, 5));
  EXPECT_EQ(Put(&effort, 1, 9, 9), std::pair(1, 0));
  EXPECT_EQ(effort.left, 0);
}

class NumberEffortTest : public NumberSetsTest {};
class ReferenceEffortTest : public TextReferenceTest {};

TEST_P(NumberEffortTest, RunsThatClaimAllItemsOverAndOver_EndTheGet) {
  Bytes runs;
  for (int i = 1; i < kRunsInBudget; ++i) runs = runs + Run(kInts, 1, 1, 32767, {10});
  PutRecords(runs + Run(kInts, 1, 1, 32767, {99}) + Run(kInts, 1, 1, 32767, {55}) + Single(kInts, 1, 2, 66));
  const Values got = Got(kInts, 1, 32767);
  EXPECT_EQ(got[0], 99u);  // of the last run in the budget
  EXPECT_EQ(got[1], 66u);  // singles are always put
  EXPECT_EQ(Got(kLongs, 1, 32767)[0] & 0xFFFF, 99u);
  EXPECT_EQ(Got(kInts, 1, 5)[0], 55u);
}

TEST_P(ReferenceEffortTest, RunsThatClaimAllItemsOverAndOver_EndTheGet) {
  Bytes runs;
  for (int i = 1; i < kRunsInBudget; ++i) runs = runs + Run(1, 1, 1, 32767, 10);
  PutRecords(runs + Run(1, 1, 1, 32767, 99) + Run(1, 1, 1, 32767, 55) + Single(1, 2, 66, 6));
  const Pairs got = Got(1, 32767);
  EXPECT_EQ(got[0], (std::pair{99u, 0u}));
  EXPECT_EQ(got[1], (std::pair{66u, 6u}));
  EXPECT_EQ(Got(1, 5)[0], (std::pair{55u, 0u}));
}

TOLVENAR_IN_BOTH_STATES(NumberEffortTest);
TOLVENAR_IN_BOTH_STATES(ReferenceEffortTest);

}  // namespace
}  // namespace tolvenar::testing
