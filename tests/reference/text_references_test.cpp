// Sets of text references: merges, the greedy pass with the blocks that it leaves, what comes back, and every result.
#include "reference/text_reference_fixture.h"

namespace tolvenar::testing {
namespace {

class TextReferencesTest : public TextReferenceTest {};

TEST(TextRefStepTest, CodesThatAreNone_HaveNoStep) {
  EXPECT_EQ(TextRefStep(1), 1u);
  EXPECT_EQ(TextRefStep(2), 0x100u);
  EXPECT_EQ(TextRefStep(3), 0x1000000u);
  EXPECT_EQ(TextRefStep(0), 0u);
  EXPECT_EQ(TextRefStep(4), 0u);
  EXPECT_EQ(TextRefStep(255), 0u);
}

TEST_P(TextReferencesTest, OneItem_IsASingle) {
  EXPECT_EQ(Save(4, 3, {{0x11223344, 0x55667788}}), 0);
  ExpectContent({0xD2, 0x10, 11, 0, 4, 3, 0, 0x44, 0x33, 0x22, 0x11, 0x88, 0x77, 0x66, 0x55});
  EXPECT_EQ(Got(4, 4), (Pairs{{7, 7}, {7, 7}, {0x11223344, 0x55667788}, {7, 7}}));
  EXPECT_EQ(Got(1, 3), (Pairs{{7, 7}, {7, 7}, {7, 7}}));
}

TEST_P(TextReferencesTest, TwoItemsOneStepApart_AreARun) {
  EXPECT_EQ(Save(1, 3, Ascending(0xFF, 2)), 0);
  ExpectContent({0xD1, 0x10, 10, 0, 1, 1, 3, 0, 2, 0, 0xFF, 0, 0, 0});
  EXPECT_EQ(Got(1, 5), (Pairs{{7, 7}, {7, 7}, {0xFF, 0}, {0x100, 0}, {7, 7}}));
}

TEST_P(TextReferencesTest, EachStep_HasItsCode) {
  for (const auto& [code, step] : {std::pair{1, 1u}, {2, 0x100u}, {3, 0x1000000u}}) {
    NewReference();
    EXPECT_EQ(Save(2, 1, Ascending(0xFFFFFFFF, 2, step)), 0);  // which goes on at 0 like any number
    ExpectContent(Run(2, code, 1, 2, 0xFFFFFFFF));
    EXPECT_EQ(Got(2, 2), Ascending(0xFFFFFFFF, 2, step));
  }
}

TEST_P(TextReferencesTest, ALongSequence_BecomesRunsOfTwo) {
  // Each record goes in front of the graph's end as it stood: the one written last is met first. All blocks but the last stay.
  EXPECT_EQ(Save(1, 1, Ascending(50, 5)), 0);
  ExpectContent(Single(1, 5, 54) + Run(1, 1, 3, 2, 52) + Run(1, 1, 1, 2, 50), 2);
  EXPECT_EQ(Got(1, 5), Ascending(50, 5));
  Compact();
  EXPECT_EQ(Got(1, 5), Ascending(50, 5));
}

TEST_P(TextReferencesTest, ItemsWithoutAStep_AreSingles) {
  EXPECT_EQ(Save(1, 1, {{50, 0}, {52, 0}, {51, 0}}), 0);
  ExpectContent(Single(1, 3, 51) + Single(1, 2, 52) + Single(1, 1, 50), 2);
}

TEST_P(TextReferencesTest, ASecondValue_KeepsAnItemOutOfRuns) {
  EXPECT_EQ(Save(1, 1, {{50, 9}, {51, 0}, {52, 8}, {53, 0}, {54, 0}}), 0);
  ExpectContent(Run(1, 1, 4, 2, 53) + Single(1, 3, 52, 8) + Single(1, 2, 51) + Single(1, 1, 50, 9), 3);
  EXPECT_EQ(Got(1, 5), (Pairs{{50, 9}, {51, 0}, {52, 8}, {53, 0}, {54, 0}}));
}

TEST_P(TextReferencesTest, ARunBeforeAnItemThatGoesOnWithASecondValue_IsDropped) {
  EXPECT_EQ(Save(1, 1, {{50, 0}, {51, 0}, {52, 8}, {60, 0}}), 0);
  ExpectContent(Single(1, 4, 60) + Single(1, 3, 52, 8), 2);  // the dropped run's block stays as well
  EXPECT_EQ(Got(1, 4), (Pairs{{7, 7}, {7, 7}, {52, 8}, {60, 0}}));
}

TEST_P(TextReferencesTest, ARunBeforeAnItemThatDoesNotGoOn_IsWritten) {
  EXPECT_EQ(Save(1, 1, {{50, 0}, {51, 0}, {53, 8}}), 0);
  ExpectContent(Single(1, 3, 53, 8) + Run(1, 1, 1, 2, 50), 1);
}

TEST_P(TextReferencesTest, ADroppedRunAtTheEnd_LeavesNoBlockOfItsOwn) {
  EXPECT_EQ(Save(1, 1, {{50, 0}, {51, 0}, {52, 8}}), 0);
  ExpectContent(Single(1, 3, 52, 8), 1);
}

TEST_P(TextReferencesTest, WhatLiesBehindTheLastItemInTheStores_IsNotLookedAt) {
  buffer_ = MEMORYREALLOC(buffer_, 2000);
  uint32_t stores[] = {MEMORYALLOC(1), MEMORYALLOC(257)};  // the slots that the stores will have
  PutU32(OpenBlock(stores[0]), 8, 52);                     // as if the run of 50 and 51 went on
  PutU32(OpenBlock(stores[1]), 8, 9);                      // with a second value
  for (uint32_t& store : stores) MEMORYFREE(&store);
  EXPECT_EQ(Save(1, 1, Ascending(50, 2), 2), 0);
  ExpectContent(Run(1, 1, 1, 2, 50));
}

TEST_P(TextReferencesTest, ALongSet_EndsWhenTheBlocksRunOut) {
  // The buffer and two stores leave six blocks: six runs are written, the seventh record finds none.
  EXPECT_EQ(Save(1, 1, Ascending(50, 12)), 0);
  EXPECT_EQ(LiveBlocks(), 1u + 5);
  NewReference();
  EXPECT_EQ(Save(1, 1, Ascending(50, 13)), -4);
  Bytes written;
  for (int run = 5; run >= 0; --run)
    written = written + Run(1, 1, 1 + 2 * run, 2, 50 + 2u * static_cast<uint32_t>(run));
  ExpectContent(written, 6);
  EXPECT_EQ(Got(1, 12), Ascending(50, 12));
}

TEST_P(TextReferencesTest, LongSetsInPieces_AreStoredWhole) {
  for (uint32_t item = 1; item <= 19; item += 4) {  // a gap between them, or they would be merged
    EXPECT_EQ(Save(1, static_cast<int>(item), Ascending(item * 3, 2)), 0);
  }
  EXPECT_EQ(LiveBlocks(), 1u);
  EXPECT_EQ(Got(1, 18)[16], (std::pair{51u, 0u}));
}

TEST_P(TextReferencesTest, SinglesInTheRange_GiveWay) {
  for (int set = 1; set <= 4; ++set) {
    NewReference();
    const Bytes other = Single(set % 4 + 1, 3, 1), away = Single(set, 9, 9);
    PutRecords(Single(set, 3, 1) + other + away);
    EXPECT_EQ(Save(set, 3, {{60, 5}}), 0);
    ExpectContent(other + away + Single(set, 3, 60, 5));
  }
}

TEST_P(TextReferencesTest, InAllSets_TheRangeIsTheOneThatWasGiven) {
  for (int set = 1; set <= 4; ++set) {
    NewReference();
    PutRecords(Run(set, 1, 2, 2, 100) + Single(set, 2, 1, 1));
    EXPECT_EQ(Save(set, 3, {{60, 5}}), 0);
    ExpectContent(Single(set, 2, 1, 1) + Run(set, 1, 2, 2, 100));
  }
}

TEST_P(TextReferencesTest, ASingleBelow_IsTakenWithBothValues) {
  PutRecords(Single(1, 3, 33, 3));
  EXPECT_EQ(Save(1, 4, {{44, 4}}), 0);
  ExpectContent(Single(1, 4, 44, 4) + Single(1, 3, 33, 3), 1);
}

TEST_P(TextReferencesTest, ASingleAbove_TakesTheHighestPlaceWithBothValues) {
  PutRecords(Single(1, 5, 55, 5));
  EXPECT_EQ(Save(1, 2, {{22, 2}, {33, 3}, {44, 4}}), 0);
  ExpectContent(Single(1, 4, 55, 5) + Single(1, 3, 33, 3), 1);
}

TEST_P(TextReferencesTest, ASingleRightAboveOneItem_LeavesNothingToWrite) {
  PutRecords(Single(1, 5, 55, 5));
  EXPECT_EQ(Save(1, 4, {{44, 4}}), 0);
  ExpectContent({});
}

TEST_P(TextReferencesTest, ARunKeepsItsValues_AndItsItemsHaveNoSecond) {
  PutRecords(Run(1, 2, 3, 3, 0x100));
  EXPECT_EQ(Save(1, 2, {{5, 1}, {6, 1}}), 0);
  ExpectContent(Single(1, 5, 0x300) + Run(1, 2, 3, 2, 0x100) + Single(1, 2, 5, 1), 2);
}

TEST_P(TextReferencesTest, RunsOfOtherSetsAndOutOfTouch_Stay) {
  const Bytes stay = Run(2, 1, 3, 2, 9) + Run(1, 1, 6, 2, 9) + Run(1, 1, 1, 1, 9);
  PutRecords(stay);
  EXPECT_EQ(Save(1, 3, {{5, 1}, {6, 1}}), 0);
  ExpectContent(stay + Single(1, 4, 6, 1) + Single(1, 3, 5, 1), 1);
}

TEST_P(TextReferencesTest, TheTextsOfTheRange_GiveWay) {
  for (int set = 1; set <= 4; ++set) {
    NewReference();
    const Bytes stay = SetText(set, 2) + SetText(set % 4 + 1, 3) + SetText(set, 5);
    PutRecords(stay + SetText(set, 3) + SetText(set, 4));
    EXPECT_EQ(Save(set, 3, {{1, 1}, {2, 2}}), 0);
    ExpectContent(stay + Single(set, 4, 2, 2) + Single(set, 3, 1, 1), 1);
  }
}

TEST_P(TextReferencesTest, TheTexts_GoByTheRangeThatWasGiven) {
  PutRecords(Run(1, 1, 3, 3, 10) + SetText(1, 4) + SetText(1, 2));
  EXPECT_EQ(Save(1, 2, {{1, 1}}), 0);
  ExpectContent(SetText(1, 4) + Single(1, 5, 12) + Run(1, 1, 3, 2, 10) + Single(1, 2, 1, 1), 2);
}

TEST_P(TextReferencesTest, ANegativeSet_TakesOutTextsSinglesAndRuns) {
  const Bytes stay = Single(1, 2, 2) + Single(1, 5, 5) + SetText(1, 5) + Run(1, 1, 8, 2, 1) + Single(2, 3, 3);
  PutRecords(stay + Single(1, 3, 3) + SetText(1, 4) + Run(1, 1, 4, 3, 1));
  EXPECT_EQ(TakeOut(1, 3, 4), 0);
  ExpectContent(stay);
}

TEST_P(TextReferencesTest, Set0_IsLetThroughAndStoresNothing) {
  PutRecords(Single(1, 3, 3) + SetText(1, 3));
  EXPECT_EQ(Save(0, 3, {{1, 1}}), 0);
  ExpectContent(Single(1, 3, 3) + SetText(1, 3));
}

TEST_P(TextReferencesTest, ItemsOutsideTheArrays_AreLeftOut) {
  PutRecords(Run(1, 1, -1, 3, 10) + Run(1, 2, 3, 32767, 0x100) + Single(1, 9, 1, 1) + Single(1, 0, 1, 1));
  EXPECT_EQ(Got(1, 4), (Pairs{{12, 0}, {7, 7}, {0x100, 0}, {0x200, 0}}));
}

TEST_P(TextReferencesTest, ARunWithoutItemsOrStep_IsReadAsItStands) {
  PutRecords(Run(1, 1, 1, 0, 10) + Run(1, 1, 2, -5, 10) + Run(1, 9, 3, 2, 10));
  EXPECT_EQ(Got(1, 4), (Pairs{{7, 7}, {7, 7}, {10, 0}, {10, 0}}));
}

// All results.

TEST_P(TextReferencesTest, TheChecksOfTheRange_ComeInTheirOrder) {
  const struct {
    int16_t first, last, max, set, result;
  } kCases[] = {{0, 9, 5, 9, -10},      {6, 9, 5, 9, -10}, {1, 6, 5, 9, -11},  {1, 0, 5, 9, -11},
                {3, 2, 5, 9, -12},      {2, 3, 5, 5, -13}, {2, 3, 5, -5, -13}, {2, 3, 5, 4, -3},
                {2, 3, 5, -32768, -13}, {2, 3, 5, -4, -3}};
  for (const auto& c : kCases) {
    EXPECT_EQ(XLRSaveTextRef(&buffer_, &size_, 1, c.first, c.last, c.max, nullptr, nullptr, c.set), c.result)
        << c.first << " " << c.last << " " << c.set;
  }
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(TextReferencesTest, BothArrays_AreTestedNext) {
  TestArray fits(VT_I4, 2, 3), late(VT_I4, 2, 4), wide(VT_I4, 2, 3, 1, 1);
  uint32_t none = 0;
  const auto save = [&](TestArray& a, TestArray& b) {
    return XLRSaveTextRef(&none, &size_, 9, 2, 3, 5, a.Ref(), b.Ref(), 1);
  };
  EXPECT_EQ(save(wide, fits), -3);
  EXPECT_EQ(save(fits, wide), -3);
  EXPECT_EQ(save(late, wide), -3);  // the dimensions of both before the bounds of either
  EXPECT_EQ(save(late, fits), -4);
  EXPECT_EQ(save(fits, late), -4);
  EXPECT_EQ(save(fits, fits), -16);
  EXPECT_EQ(XLRSaveTextRef(nullptr, &size_, 9, 2, 3, 5, fits.Ref(), fits.Ref(), 1), -16);
  EXPECT_EQ(XLRSaveTextRef(&buffer_, &size_, 9, 2, 3, 5, fits.Ref(), fits.Ref(), 1), -997);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(TextReferencesTest, WithoutBlocksForTheStores_TheFirstStays) {
  LeaveFree(1);
  EXPECT_EQ(Save(1, 2, {{1, 1}}), -14);
  EXPECT_EQ(LiveBlocks(), 9u);  // the first store, which is there for good
  EXPECT_EQ(Save(1, 2, {{1, 1}}), -14);
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_P(TextReferencesTest, WithoutTheHead_BothStoresStayAllocated) {
  LoseHead();
  const uint32_t bytes = BytesInUse();
  EXPECT_EQ(Save(1, 2, {{1, 1}}, 5), -2);
  EXPECT_EQ(LiveBlocks(), 3u);
  EXPECT_EQ(BytesInUse(), bytes + 20);  // 2 bytes an item were asked for
  EXPECT_EQ(TakeOut(1, 2, 3), -2);
  EXPECT_EQ(LiveBlocks(), 5u);
}

TEST_P(TextReferencesTest, WithoutABlockForTheRecord_TheStoresAreReleased) {
  PutRecords(Single(1, 2, 2) + Single(1, 9, 9));
  LeaveFree(2);
  EXPECT_EQ(Save(1, 2, {{1, 1}}), -4);
  EXPECT_EQ(LiveBlocks(), 7u);
  EXPECT_EQ(Hex(Content()), Hex(Single(1, 9, 9)));
  EXPECT_EQ(TakeOut(1, 9, 9), 0);
  EXPECT_EQ(LiveBlocks(), 7u);
}

TEST_P(TextReferencesTest, AFailedPatch_ReleasesTheBufferAndTheStores) {
  Cram();
  EXPECT_EQ(Save(1, 2, {{1, 1}}), -5);
  ExpectGone();
  NewReference();
  Cram();
  EXPECT_EQ(Save(1, 2, Ascending(50, 4)), -5);
  ExpectGone();
}

TEST_P(TextReferencesTest, ForASingle_TheBufferCanGrowIntoTheSlotOfAStore) {
  buffer_ = MEMORYREALLOC(buffer_, 2000);
  size_ = 33000;  // slot 4, full
  for (int slot = 5; slot <= 7; ++slot) ASSERT_NE(MEMORYALLOC(33001), 0u);
  EXPECT_EQ(Save(1, 20000, {{5, 6}}, 20000), 0);  // stores of 40000 bytes take the slots 8 and 9
  EXPECT_EQ(MEMORYISHANDLE(buffer_), 8);
  EXPECT_EQ(Hex(Content()), Hex(Single(1, 20000, 5, 6)));
  EXPECT_EQ(LiveBlocks(), 4u);
}

TEST_P(TextReferencesTest, ForSeveralItems_TheStoresKeepTheirSlots) {
  buffer_ = MEMORYREALLOC(buffer_, 2000);
  size_ = 33000;
  for (int slot = 5; slot <= 7; ++slot) ASSERT_NE(MEMORYALLOC(33001), 0u);
  EXPECT_EQ(Save(1, 19999, {{5, 6}, {9, 9}}, 20000), -5);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 3u);
}

TEST_P(TextReferencesTest, AFailedPatchOfTheSecondRecord_LeavesTheBlockOfTheFirst) {
  const Bytes stream = Image();
  MEMORYFREEALL();
  uint32_t below[8];
  for (uint32_t& block : below) block = MEMORYALLOC(1);
  buffer_ = MEMORYALLOC(1);
  ASSERT_EQ(MEMORYISHANDLE(buffer_), 9);  // nothing is above it, and all below is free
  for (uint32_t& block : below) MEMORYFREE(&block);
  CopyIn(Stream(), 0, stream.data(), size_);
  size_ = 105000000 -
          40;  // room for a record of 15 bytes, what it displaces and the way back, and not for another
  EXPECT_EQ(Save(1, 2, {{1, 1}, {9, 9}}), -5);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(TextReferencesTest, AFailureAtTheSecondRecord_LeavesTheBlockOfTheFirst) {
  buffer_ = MEMORYREALLOC(buffer_, 2000);
  for (int slot = 5; slot <= 9; ++slot) ASSERT_NE(MEMORYALLOC(33001), 0u);
  uint32_t moved = MEMORYALLOC(1000);  // slot 3, given back: three small slots are free
  ASSERT_EQ(MEMORYISHANDLE(moved), 3);
  MEMORYFREE(&moved);
  EXPECT_EQ(Save(1, 2, {{1, 1}, {9, 9}}), -4);  // two stores and the first record take them
  EXPECT_EQ(LiveBlocks(), 7u);
  EXPECT_EQ(Hex(Content()), Hex(Single(1, 2, 1, 1)));
}

TEST_P(TextReferencesTest, AGetter_LooksAtTheArraysFirst) {
  TestArray fits(VT_I4, 1, 3), late(VT_I4, 1, 4), wide(VT_I4, 1, 3, 1, 1);
  EXPECT_EQ(XLRGetTextRef(0, 9, 3, wide.Ref(), fits.Ref(), 1), -3);
  EXPECT_EQ(XLRGetTextRef(0, 9, 3, late.Ref(), wide.Ref(), 1), -3);
  EXPECT_EQ(XLRGetTextRef(0, 9, 3, fits.Ref(), nullptr, 1), -3);
  EXPECT_EQ(XLRGetTextRef(0, 9, 3, late.Ref(), fits.Ref(), 1), -4);
  EXPECT_EQ(XLRGetTextRef(0, 9, 3, fits.Ref(), late.Ref(), 1), -4);
  EXPECT_EQ(XLRGetTextRef(0, 9, 3, fits.Ref(), fits.Ref(), 1), -1);
  EXPECT_EQ(XLRGetTextRef(buffer_, 9, 3, fits.Ref(), fits.Ref(), 1), -997);
  LoseHead();
  EXPECT_EQ(XLRGetTextRef(buffer_, 1, 3, fits.Ref(), fits.Ref(), 1), -2);
}

// Room.

TEST_P(TextReferencesTest, AtEachEdgeOfASlot_TheStoresHaveTheirRoom) {
  for (const int16_t max : Signed{64, 65, 128, 129, 256, 257, 513, 8251, 32767}) {
    NewReference();
    EXPECT_EQ(Save(1, max, {{1, 1}}, max), 0) << max;
    PutRecords(Run(1, 1, 1, max, 100));
    EXPECT_EQ(TakeOut(1, 1, 1), 0);
    ExpectContent(Single(1, max, 1, 1));  // the range was item 1 alone
    EXPECT_EQ(Save(1, 1, Ascending(500, static_cast<uint32_t>(max)), max), -4) << max;
    EXPECT_EQ(LiveBlocks(), 1u + 6);
  }
}

TEST_P(TextReferencesTest, ALongStoredRun_IsTakenAsFarAsTheBlocksGo) {
  PutRecords(Run(1, 1, 3, 5000, 10));
  EXPECT_EQ(Save(1, 2, {{1, 1}}, 2), -4);  // a maximum of 2, and a run far beyond it
  ExpectContent(Run(1, 1, 11, 2, 18) + Run(1, 1, 9, 2, 16) + Run(1, 1, 7, 2, 14) + Run(1, 1, 5, 2, 12) +
                    Run(1, 1, 3, 2, 10) + Single(1, 2, 1, 1),
                6);
}

TEST_P(TextReferencesTest, ManyLongRuns_EndQuickly) {
  Bytes runs;
  for (int i = 0; i < 2000; ++i) runs = runs + Run(1, 1, 1, 32767, 10);
  PutRecords(runs);
  EXPECT_EQ(Save(1, 2, {{1, 1}}, 2), -4);
  EXPECT_EQ(Got(1, 3), (Pairs{{10, 0}, {11, 0}, {12, 0}}));
}

TEST_P(TextReferencesTest, DamagedBounds_NeverLeadOutOfTheStores) {
  for (const auto& [f, n] :
       {std::pair{-32768, 32767}, {32767, 32767}, {-5, 8}, {0, 1}, {1, -32768}, {3, 32767}}) {
    for (const int set : {1, -1}) {
      NewReference();
      PutRecords(Run(1, 2, f, n, 5) + Single(1, 0, 1, 1) + Single(1, -32768, 1, 1));
      const int16_t result = Save(set, 2, {{1, 1}, {2, 2}}, 3);
      EXPECT_TRUE(result == 0 || (set > 0 && result == -4)) << f << " " << n << " " << result;
    }
  }
}

TOLVENAR_IN_BOTH_STATES(TextReferencesTest);

}  // namespace
}  // namespace tolvenar::testing
