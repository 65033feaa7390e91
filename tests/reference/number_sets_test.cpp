// Sets of ints and longs: what a save merges and writes, what comes back, and the oddities of both.
#include "reference/number_fixture.h"

namespace tolvenar::testing {
namespace {

class NumbersTest : public NumberSetsTest {};

TEST_P(NumbersTest, OneItem_IsASingleAndComesBackAlone) {
  EXPECT_EQ(Save(kInts, 1, 3, {0x1234}), 0);
  ExpectContent({0xE3, 0x10, 4, 0, 3, 0, 0x34, 0x12});
  EXPECT_EQ(Got(kInts, 1, 5), (Values{7, 7, 0x1234, 7, 7}));
  Compact();
  EXPECT_EQ(Save(kInts, 2, 4, {0xFFFE}), 0);
  ExpectContent(Bytes{0xE3, 0x10, 4, 0, 3, 0, 0x34, 0x12} + Bytes{0xE9, 0x10, 4, 0, 4, 0, 0xFE, 0xFF});
  EXPECT_EQ(Got(kInts, 2, 5), (Values{7, 7, 7, 0xFFFE, 7}));
}

TEST_P(NumbersTest, OneLong_IsASingleOfFourBytes) {
  EXPECT_EQ(Save(kLongs, 1, 3, {0x12345678}), 0);
  EXPECT_EQ(Save(kLongs, 2, 4, {0xFFFFFFFE}), 0);
  ExpectContent(Bytes{0xEF, 0x10, 6, 0, 3, 0, 0x78, 0x56, 0x34, 0x12} +
                Bytes{0xF0, 0x10, 6, 0, 4, 0, 0xFE, 0xFF, 0xFF, 0xFF});
  EXPECT_EQ(Got(kLongs, 1, 3), (Values{7, 7, 0x12345678}));
  EXPECT_EQ(Got(kLongs, 2, 4), (Values{7, 7, 7, 0xFFFFFFFE}));
}

TEST_P(NumbersTest, SeveralItems_AreARun) {
  EXPECT_EQ(Save(kInts, 2, 2, {11, 12, 13}), 0);
  ExpectContent({0xD8, 0x10, 11, 0, 2, 2, 0, 4, 0, 11, 0, 12, 0, 13, 0});
  EXPECT_EQ(Got(kInts, 2, 5), (Values{7, 11, 12, 13, 7}));
  EXPECT_EQ(Got(kInts, 1, 5), (Values{7, 7, 7, 7, 7}));
}

TEST_P(NumbersTest, SeveralLongs_AreARunThatDoesNotComeBack) {
  EXPECT_EQ(Save(kLongs, 1, 1, {0x11111111, 2, 3}), 0);
  ExpectContent({0xD9, 0x10, 17, 0, 1, 1, 0, 3, 0, 0x11, 0x11, 0x11, 0x11, 2, 0, 0, 0, 3, 0, 0, 0});
  EXPECT_EQ(Got(kLongs, 1, 4), (Values{7, 7, 7, 7}));
}

TEST_P(NumbersTest, ARunOfInts_IsReadAsLongsAcrossItsEnd) {
  const Bytes behind = Single(kInts, 2, 9, 0xABCD);
  PutRecords(Run(kInts, 1, 2, 3, {0x1111, 0x2222}) + behind);
  EXPECT_EQ(Got(kLongs, 1, 4), (Values{7, 0x22221111, 0x000410E9, 7}));
}

TEST_P(NumbersTest, ARunOfIntsAtTheEndOfTheBlock_IsReadAsZeros) {
  PutRecords(Run(kInts, 1, 1, 32767, {1, 2}));
  const Values values = Got(kLongs, 1, 32767);
  EXPECT_EQ(values[0], 0x00020001u);
  EXPECT_EQ(values[32766], 0u);  // far behind the block
  EXPECT_EQ(Got(kInts, 1, 32767)[1], 2u);
}

TEST_P(NumbersTest, AnItemBehindAStoredOne_BecomesARunWithIt) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    EXPECT_EQ(Save(kind, 1, 3, {33}), 0);
    EXPECT_EQ(Save(kind, 1, 4, {44}), 0);
    ExpectContent(Run(kind, 1, 3, 4, {33, 44}));
  }
}

TEST_P(NumbersTest, ASaveOverARun_KeepsTheStoredValues) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    EXPECT_EQ(Save(kind, 2, 3, {3, 4, 5, 6}), 0);
    EXPECT_EQ(Save(kind, 2, 2, {92, 93, 94}), 0);
    ExpectContent(Run(kind, 2, 2, 6, {92, 3, 4, 5, 6}));
  }
}

TEST_P(NumbersTest, RunsNextToTheRange_AreJoined) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    EXPECT_EQ(Save(kind, 1, 1, {1, 2}), 0);
    EXPECT_EQ(Save(kind, 1, 5, {5, 6}), 0);
    EXPECT_EQ(Save(kind, 1, 9, {9, 10}), 0);
    EXPECT_EQ(Save(kind, 1, 3, {3, 4}), 0);
    ExpectContent(Run(kind, 1, 9, 10, {9, 10}) + Run(kind, 1, 1, 6, {1, 2, 3, 4, 5, 6}));
    Compact();
    ExpectContent(Run(kind, 1, 9, 10, {9, 10}) + Run(kind, 1, 1, 6, {1, 2, 3, 4, 5, 6}));
  }
}

TEST_P(NumbersTest, ARunThatSpansTheRange_TakesAll) {
  EXPECT_EQ(Save(kInts, 1, 1, {1, 2, 3, 4, 5}), 0);
  EXPECT_EQ(Save(kInts, 1, 3, {93}), 0);
  ExpectContent(Run(kInts, 1, 1, 5, {1, 2, 3, 4, 5}));
}

TEST_P(NumbersTest, ARunThatDoesNotTouch_Stays) {
  EXPECT_EQ(Save(kInts, 1, 1, {1, 2}), 0);
  EXPECT_EQ(Save(kInts, 1, 6, {6, 7}), 0);
  EXPECT_EQ(Save(kInts, 1, 4, {4}), 0);
  ExpectContent(Run(kInts, 1, 1, 2, {1, 2}) + Run(kInts, 1, 6, 7, {6, 7}) + Single(kInts, 1, 4, 4));
}

TEST_P(NumbersTest, SinglesInTheRange_GiveWay) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    PutRecords(Single(kind, 1, 2, 2) + Single(kind, 1, 4, 4) + Single(kind, 1, 9, 9) + Single(kind, 2, 3, 3));
    EXPECT_EQ(Save(kind, 1, 2, {92, 93, 94}), 0);
    ExpectContent(Single(kind, 1, 9, 9) + Single(kind, 2, 3, 3) + Run(kind, 1, 2, 4, {92, 93, 94}));
  }
}

TEST_P(NumbersTest, SinglesBelow_AreTakenOneByOneInTheirOrder) {
  PutRecords(Single(kInts, 1, 3, 3) + Single(kInts, 1, 2, 2) + Single(kInts, 1, 1, 1));
  EXPECT_EQ(Save(kInts, 1, 4, {4}), 0);
  ExpectContent(Run(kInts, 1, 1, 4, {1, 2, 3, 4}));
  NewReference();
  PutRecords(Single(kInts, 1, 2, 2) + Single(kInts, 1, 3, 3));  // 2 comes by before 3 has moved the bound
  EXPECT_EQ(Save(kInts, 1, 4, {4}), 0);
  ExpectContent(Single(kInts, 1, 2, 2) + Run(kInts, 1, 3, 4, {3, 4}));
}

TEST_P(NumbersTest, ASingleAbove_TakesTheHighestPlaceAtTheCostOfTheLowest) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    PutRecords(Single(kind, 1, 6, 66));
    EXPECT_EQ(Save(kind, 1, 3, {3, 4, 5}), 0);
    ExpectContent(Run(kind, 1, 4, 5, {4, 66}));  // the single is gone, item 5 has its value, item 3 is lost
    NewReference();
    PutRecords(Single(kind, 1, 6, 66));
    EXPECT_EQ(Save(kind, 1, 4, {4, 5}), 0);
    ExpectContent(Single(kind, 1, 5, 66));
  }
}

TEST_P(NumbersTest, ASingleRightAboveOneItem_LeavesNothingToWrite) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    const Bytes other = Single(kind, 1, 9, 9);
    PutRecords(Single(kind, 1, 3, 3) + other);
    const uint32_t size = size_;
    EXPECT_EQ(Save(kind, 1, 2, {2}), 0);
    ExpectContent(other);
    EXPECT_EQ(size_, size);
  }
}

TEST_P(NumbersTest, ASingleNextToBothCrossedBounds_MovesThemThereAndBack) {
  // The first two at 3 raise the lower bound to 4; the third is right below it and right above item 2. So 2 touches nothing any more.
  PutRecords(Single(kInts, 1, 3, 31) + Single(kInts, 1, 3, 32) + Single(kInts, 1, 3, 33) +
             Single(kInts, 1, 2, 22));
  EXPECT_EQ(Save(kInts, 1, 2, {2}), 0);
  ExpectContent({});
}

TEST_P(NumbersTest, ARunOutOfTouchOfCrossedBounds_Stays) {
  // The singles raise the lower bound to 4, two above the upper one.
  const Bytes stay = Run(kInts, 1, 4, 5, {4, 5}) + Single(kInts, 2, 9, 9);
  PutRecords(Single(kInts, 1, 3, 31) + Single(kInts, 1, 3, 32) + stay);
  EXPECT_EQ(Save(kInts, 1, 2, {2}), 0);
  ExpectContent(stay);  // in its place
}

TEST_P(NumbersTest, ARunThatSpansCrossedBounds_IsTakenWhole) {
  PutRecords(Single(kInts, 1, 3, 31) + Single(kInts, 1, 3, 32) + Run(kInts, 1, 3, 5, {3, 4, 5}));
  EXPECT_EQ(Save(kInts, 1, 2, {2}), 0);
  ExpectContent(Run(kInts, 1, 3, 5, {3, 4, 5}));
}

TEST_P(NumbersTest, AfterTheBoundHasGoneUpAndDown_ARunsItemsAreStillThere) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    // The run brings the lower bound to 2, the singles at 7 to 3 and 4, the single at 3 back to 3.
    PutRecords(Run(kind, 1, 2, 6, {2, 3, 4, 5, 6}) + Single(kind, 1, 7, 71) + Single(kind, 1, 7, 72) +
               Single(kind, 1, 3, 33));
    EXPECT_EQ(Save(kind, 1, 4, {94, 95, 96}), 0);
    ExpectContent(Run(kind, 1, 3, 6, {33, 4, 5, 72}));
  }
}

TEST_P(NumbersTest, InSet1_TheRangeIsTheOneThatWasGiven) {
  // The run widens the bounds to 2 to 6; the single at 6 lies outside 4 to 5 all the same.
  PutRecords(Run(kInts, 1, 2, 6, {2, 3, 4, 5, 6}) + Single(kInts, 1, 6, 66) + Single(kInts, 1, 5, 55));
  EXPECT_EQ(Save(kInts, 1, 4, {94, 95}), 0);
  ExpectContent(Single(kInts, 1, 6, 66) + Run(kInts, 1, 2, 6, {2, 3, 4, 5, 6}));
}

TEST_P(NumbersTest, InSet2_TheRangeFollowsTheBounds) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    PutRecords(Single(kind, 2, 2, 22) + Run(kind, 2, 2, 6, {2, 3, 4, 5, 6}) + Single(kind, 2, 6, 66));
    EXPECT_EQ(Save(kind, 2, 4, {94, 95}), 0);  // the first single comes by while the bounds are still 4 to 5
    ExpectContent(Single(kind, 2, 2, 22) + Run(kind, 2, 2, 6, {2, 3, 4, 5, 6}));
  }
}

TEST_P(NumbersTest, InSet1_ASingleBelowTheRaisedBoundIsInTheRangeAndTaken) {
  // 6 raises the bound of 3 to 5 from 3 to 4; 3 lies in the range that was given and next to the bound: it comes back.
  PutRecords(Single(kInts, 1, 6, 66) + Single(kInts, 1, 3, 33));
  EXPECT_EQ(Save(kInts, 1, 3, {3, 4, 5}), 0);
  ExpectContent(Run(kInts, 1, 3, 5, {33, 4, 66}));
}

TEST_P(NumbersTest, ANegativeSet_TakesOutWhatTouches) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    const Bytes below = Single(kind, 1, 2, 2), above = Single(kind, 1, 5, 5);
    PutRecords(below + Single(kind, 1, 3, 3) + Single(kind, 1, 4, 4) + above);
    EXPECT_EQ(TakeOut(kind, 1, 3, 4), 0);
    ExpectContent(below + above);  // neighbours on either side stay
  }
}

TEST_P(NumbersTest, ANegativeSet_TakesOutWholeRuns) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    EXPECT_EQ(Save(kind, 1, 1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), 0);
    EXPECT_EQ(Save(kind, 2, 3, {3, 4}), 0);
    EXPECT_EQ(TakeOut(kind, 1, 3, 4), 0);
    ExpectContent(Run(kind, 2, 3, 4, {3, 4}));
  }
}

TEST_P(NumbersTest, ANegativeSet_WidensAtRuns) {
  // 1 to 2 is next to 3 to 4 only; 5 to 6 is next to the bound as 3 to 4 has left it.
  PutRecords(Run(kInts, 1, 1, 2, {1, 2}) + Run(kInts, 1, 3, 4, {3, 4}) + Run(kInts, 1, 5, 6, {5, 6}) +
             Run(kInts, 1, 8, 9, {8, 9}));
  EXPECT_EQ(TakeOut(kInts, 1, 4, 4), 0);
  ExpectContent(Run(kInts, 1, 1, 2, {1, 2}) + Run(kInts, 1, 8, 9, {8, 9}));
}

TEST_P(NumbersTest, ANegativeSet2_TakesSinglesInTheWidenedBounds) {
  for (const int set : {1, 2}) {
    NewReference();
    PutRecords(Run(kInts, set, 2, 6, {2, 3, 4, 5, 6}) + Single(kInts, set, 6, 66));
    EXPECT_EQ(TakeOut(kInts, set, 4, 4), 0);
    ExpectContent(set == 1 ? Single(kInts, 1, 6, 66) : Bytes{});
  }
}

TEST_P(NumbersTest, ToOverwrite_TheRangeIsTakenOutFirst) {
  EXPECT_EQ(Save(kInts, 1, 3, {3, 4, 5}), 0);
  EXPECT_EQ(TakeOut(kInts, 1, 3, 5), 0);
  EXPECT_EQ(Save(kInts, 1, 3, {93, 94, 95}), 0);
  EXPECT_EQ(Got(kInts, 1, 6), (Values{7, 7, 93, 94, 95, 7}));
  Compact();
  EXPECT_EQ(Got(kInts, 1, 6), (Values{7, 7, 93, 94, 95, 7}));
}

TEST_P(NumbersTest, ItemsOutsideTheArray_AreLeftOut) {
  PutRecords(Run(kInts, 1, 4, 9, {4, 5, 6, 7, 8, 9}) + Single(kInts, 1, 20, 20) + Single(kInts, 1, 0, 1) +
             Single(kInts, 1, 0xFFFF, 1) + Run(kInts, 1, -1, 2, {90, 91, 1, 2}));
  EXPECT_EQ(Got(kInts, 1, 5), (Values{1, 2, 7, 4, 5}));
}

TEST_P(NumbersTest, ARunWithFAboveL_HasNoItems) {
  PutRecords(Run(kInts, 1, 4, 3, {4, 5}));
  EXPECT_EQ(Got(kInts, 1, 5), (Values{7, 7, 7, 7, 7}));
  EXPECT_EQ(Save(kInts, 1, 4, {94}), 0);
  ExpectContent(Single(kInts, 1, 4, 94));
}

TEST_P(NumbersTest, ASetThatIsNone_HasNoSingles) {
  PutRecords(Single(kInts, 1, 1, 1) + Single(kInts, 2, 2, 2) + Run(kInts, 3, 3, 4, {3, 4}));
  EXPECT_EQ(Got(kInts, 3, 4), (Values{7, 7, 3, 4}));
  EXPECT_EQ(Got(kInts, 0, 4), (Values{7, 7, 7, 7}));
  EXPECT_EQ(Got(kInts, 0x103, 4), (Values{7, 7, 7, 7}));
}

TOLVENAR_IN_BOTH_STATES(NumbersTest);

}  // namespace
}  // namespace tolvenar::testing
