// Sets of ints and longs: every result with the blocks that are live afterwards, and items beyond the maximum that is stated.
#include "reference/number_fixture.h"

namespace tolvenar::testing {
namespace {

class NumberResultsTest : public NumberSetsTest {
 protected:
  // A save whose array is as given.
  int16_t Call(const NumberSet& kind, int16_t first, int16_t last, int16_t max, SAFEARRAY** array,
               int16_t set, uint16_t graph = 1) {
    return kind.save(&buffer_, &size_, graph, first, last, max, array, set);
  }
};

TEST_P(NumberResultsTest, TheChecksOfTheRange_ComeInTheirOrder) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    const struct {
      int16_t first, last, max, set, result;
    } kCases[] = {{0, 9, 5, 9, -10}, {-1, 0, 5, 9, -10}, {6, 9, 5, 9, -10},  {1, 0, 0, 1, -10},
                  {1, 6, 5, 9, -11}, {1, 0, 5, 9, -11},  {3, -3, 5, 9, -11}, {3, 2, 5, 9, -12},
                  {2, 3, 5, 3, -13}, {2, 3, 5, 0, -13},  {2, 3, 5, -3, -13}, {2, 3, 5, -32768, -13},
                  {2, 3, 5, 1, -3},  {2, 3, 5, -2, -3}};
    for (const auto& c : kCases) {
      EXPECT_EQ(Call(kind, c.first, c.last, c.max, nullptr, c.set), c.result)
          << kind.label << " " << c.first << " " << c.last << " " << c.set;
    }
  }
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(NumberResultsTest, TheArray_ComesNext) {
  TestArray fits(VT_I4, 2, 3), early(VT_I4, 1, 3), late(VT_I4, 2, 4), wide(VT_I4, 2, 3, 1, 1);
  buffer_ = 0;
  LeaveFree(0);
  for (const NumberSet& kind : {kInts, kLongs}) {
    EXPECT_EQ(Call(kind, 2, 3, 5, wide.Ref(), 1), -3);
    EXPECT_EQ(Call(kind, 2, 3, 5, early.Ref(), 1), -4);
    EXPECT_EQ(Call(kind, 2, 3, 5, late.Ref(), -1), -4);
    EXPECT_EQ(Call(kind, 2, 3, 5, fits.Ref(), 1), -14);
  }
}

TEST_P(NumberResultsTest, TheStore_ComesBeforeTheBuffer) {
  TestArray array(VT_I4, 2, 3);
  for (const NumberSet& kind : {kInts, kLongs}) {
    uint32_t none = 0;
    EXPECT_EQ(kind.save(&none, &size_, 9, 2, 3, 5, array.Ref(), 1), -16);
    EXPECT_EQ(kind.save(nullptr, &size_, 9, 2, 3, 5, array.Ref(), -1), -16);
    EXPECT_EQ(kind.save(&buffer_, nullptr, 9, 2, 3, 5, array.Ref(), 1), -16);
    EXPECT_EQ(Call(kind, 2, 3, 5, array.Ref(), 1, 9), -997);
    EXPECT_EQ(Call(kind, 2, 3, 5, array.Ref(), -1, 9), -997);
  }
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(NumberResultsTest, WithoutTheHead_TheStoreStaysAllocated) {
  LoseHead();
  const Bytes image = Image();
  uint32_t left = 0, bytes = BytesInUse();
  for (const NumberSet& kind : {kInts, kLongs}) {
    for (const int set : {1, -1}) {
      EXPECT_EQ(Save(kind, set, 2, {2, 3}, 5), -2);
      EXPECT_EQ(LiveBlocks(), 1 + ++left);
      EXPECT_EQ(BytesInUse(), bytes += 10);  // 2 bytes an item were asked for, of longs too
    }
  }
  EXPECT_EQ(Image(), image);
}

TEST_P(NumberResultsTest, WithOneBlock_TheRecordFindsNone) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    const Bytes away = Single(kind, 1, 9, 9);
    PutRecords(Single(kind, 1, 2, 2) + away);
    LeaveFree(1);
    EXPECT_EQ(Save(kind, 1, 2, {92, 93}), -4);
    EXPECT_EQ(LiveBlocks(), 8u);
    EXPECT_EQ(Hex(Content()), Hex(away));  // what was merged is gone
    EXPECT_EQ(TakeOut(kind, 1, 9, 9), 0);  // which needs the one
    EXPECT_EQ(Hex(Content()), "");
    EXPECT_EQ(LiveBlocks(), 8u);
    LeaveFree(0);
    EXPECT_EQ(Save(kind, 1, 2, {92, 93}), -14);
  }
}

TEST_P(NumberResultsTest, AFailedPatch_ReleasesTheBuffer) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    Cram();
    EXPECT_EQ(Save(kind, 1, 2, {92, 93}), -5);
    ExpectGone();
  }
}

TEST_P(NumberResultsTest, AGetter_LooksAtTheArrayFirst) {
  TestArray flat(VT_I4, 1, 5), wide(VT_I4, 1, 5, 1, 1), from_0(VT_I4, 0, 4);
  for (const NumberSet& kind : {kInts, kLongs}) {
    EXPECT_EQ(kind.get(0, 9, 5, wide.Ref(), 1), -3);
    EXPECT_EQ(kind.get(0, 9, 5, nullptr, 1), -3);
    EXPECT_EQ(kind.get(0, 9, 4, flat.Ref(), 1), -4);
    EXPECT_EQ(kind.get(0, 9, 5, from_0.Ref(), 1), -4);
    EXPECT_EQ(kind.get(0, 9, 5, flat.Ref(), 1), -1);
    EXPECT_EQ(kind.get(buffer_, 9, 5, flat.Ref(), 1), -997);
  }
  LoseHead();
  for (const NumberSet& kind : {kInts, kLongs}) EXPECT_EQ(kind.get(buffer_, 1, 5, flat.Ref(), 1), -2);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(NumberResultsTest, ARunBeyondTheMaximum_StaysWhole) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    EXPECT_EQ(Save(kind, 1, 3, {3, 4, 5, 6}, 6), 0);
    EXPECT_EQ(Save(kind, 1, 2, {92}, 2), 0);  // a maximum of 2 by now
    ExpectContent(Run(kind, 1, 2, 6, {92, 3, 4, 5, 6}));
  }
}

// Values from `first` on, each its own.
Values Many(uint32_t first, uint32_t count) {
  Values values;
  for (uint32_t i = 0; i < count; ++i) values.push_back((first + i) * 3 % 0x10000);
  return values;
}

TEST_P(NumberResultsTest, ARunFarBeyondTheStoresSlot_StaysWhole) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    NewReference();
    EXPECT_EQ(Save(kind, 1, 3, Many(3, 500), 600), 0);
    EXPECT_EQ(Save(kind, 1, 1, {3, 6}, 2), 0);  // the store is asked for with 4 bytes
    ExpectContent(Run(kind, 1, 1, 502, Many(1, 502)));
  }
}

TEST_P(NumberResultsTest, LongsAtEachEdgeOfASlot_HaveTheirRoom) {
  // Maxima whose request of 2 bytes an item just fits a slot, or just doesn't.
  for (const int16_t max : Signed{64, 65, 128, 129, 256, 257, 512, 513, 8189}) {
    NewReference();
    EXPECT_EQ(Save(kLongs, 1, 1, Many(1, static_cast<uint32_t>(max)), max), 0) << max;
    ExpectContent(Run(kLongs, 1, 1, max, Many(1, static_cast<uint32_t>(max))));
  }
}

TEST_P(NumberResultsTest, AStoreThatJustFitsItsSlot_StaysInIt) {
  buffer_ = MEMORYREALLOC(buffer_, 50000);  // slot 5
  for (int slot = 6; slot <= 9; ++slot) ASSERT_NE(MEMORYALLOC(100001), 0u);
  ASSERT_NE(MEMORYALLOC(1), 0u);
  ASSERT_NE(MEMORYALLOC(257), 0u);
  EXPECT_EQ(Save(kLongs, 1, 1, Many(1, 256), 512), 0);  // 1024 bytes in slot 3; slot 4 is left for the record
  EXPECT_EQ(Hex(Content()), Hex(Run(kLongs, 1, 1, 256, Many(1, 256))));
  EXPECT_EQ(LiveBlocks(), 7u);
}

TEST_P(NumberResultsTest, ARecordAtTheEndOfItsSlot_StaysInIt) {
  for (const auto& [kind, count] : {std::pair{kInts, 123u}, {kLongs, 61u}}) {
    NewReference();
    buffer_ = MEMORYREALLOC(buffer_, 50000);
    EXPECT_EQ(Save(kind, 1, 1, Many(1, count), 300),
              0);  // the store is in slot 3, and the record in slot 1 or 2
    ExpectContent(Run(kind, 1, 1, static_cast<int>(count), Many(1, count)));
  }
}

TEST_P(NumberResultsTest, WithoutASlotForTheMergedItems_NothingChanges) {
  EXPECT_EQ(Save(kLongs, 1, 3, Many(3, 500), 600), 0);
  const Bytes image = Image();
  buffer_ = MEMORYREALLOC(buffer_, 2000);
  for (int slot = 5; slot <= 9; ++slot) ASSERT_NE(MEMORYALLOC(33001), 0u);
  EXPECT_EQ(Save(kLongs, 1, 2, {6}, 2), -14);  // three small slots are free
  EXPECT_EQ(Image(), image);
  EXPECT_EQ(LiveBlocks(), 6u);
  EXPECT_EQ(TakeOut(kLongs, 1, 2, 2), 0);  // which has no use for the room
  EXPECT_EQ(Hex(Content()), "");
}

TEST_P(NumberResultsTest, TheLongestRuns_FillARecordOf32767Bytes) {
  for (const auto& [kind, most] : {std::pair{kInts, 16379}, {kLongs, 8189}}) {
    NewReference();
    const uint32_t count = static_cast<uint32_t>(most);
    EXPECT_EQ(Save(kind, 1, 2, Many(2, count), 32767), 0);
    EXPECT_EQ(Content().size(), 9u + count * kind.width);
    Compact();
    ExpectContent(Run(kind, 1, 2, most + 1, Many(2, count)));
    const Bytes image = Image();
    EXPECT_EQ(Save(kind, 1, 1, {1}, 32767), -5);  // one item more
    EXPECT_EQ(Image(), image);
    EXPECT_EQ(Save(kind, 2, 1, Many(1, count + 1), 32767), -5);
    EXPECT_EQ(Save(kind, 2, 1, Many(1, 32767), 32767), -5);
    EXPECT_EQ(Image(), image);
    EXPECT_EQ(LiveBlocks(), 1u);
  }
}

TEST_P(NumberResultsTest, DamagedBounds_NeverLeadOutOfTheStore) {
  for (const NumberSet& kind : {kInts, kLongs}) {
    for (const auto& [f, l] :
         {std::pair{-32768, 32767}, {-32768, 1}, {-5, 4}, {0, 1}, {3, 32767}, {32767, 2}, {2, -32768}}) {
      for (const int set : {1, -1, 2, -2}) {
        NewReference();
        PutRecords(Run(kind, std::abs(set), f, l, {1, 2, 3}) + Single(kind, std::abs(set), 0, 9) +
                   Single(kind, std::abs(set), 0x8000, 9));
        const int16_t result = Save(kind, set, 1, {91, 92, 93}, 3);
        EXPECT_TRUE(result == 0 || result == -5) << f << " " << l << " " << result;
        EXPECT_EQ(LiveBlocks(), 1u);
      }
    }
  }
}

TEST_P(NumberResultsTest, AnItem0BelowTheRange_IsTakenAlong) {
  PutRecords(Single(kInts, 1, 0, 100) + Single(kInts, 1, 0xFFFF, 99));
  EXPECT_EQ(Save(kInts, 1, 1, {1}), 0);
  ExpectContent(Run(kInts, 1, -1, 1, {99, 100, 1}));
  EXPECT_EQ(Got(kInts, 1, 2), (Values{1, 7}));
  EXPECT_EQ(Save(kInts, 1, 2, {2}), 0);
  ExpectContent(Run(kInts, 1, -1, 2, {99, 100, 1, 2}));
}

TOLVENAR_IN_BOTH_STATES(NumberResultsTest);

}  // namespace
}  // namespace tolvenar::testing
