// Position values: arrays stored in tables and read back, among patches and in a compacted reference.
#include "reference/table_positions.h"

#include "reference/graph_object.h"
#include "reference/reference_states.h"
#include "reference/reference_table.h"
#include "reference/table_array.h"
#include "support/test_array.h"

namespace tolvenar::testing {
namespace {

using Values = std::vector<uint32_t>;

class TablePositionsTest : public RefStateTest {
 protected:
  // Table 1 of these sizes, and a table behind it.
  void MakeTable(const GridCell& sizes) {
    sizes_ = sizes;
    const auto u16 = [&](uint32_t k) { return static_cast<uint16_t>(sizes[k]); };
    ASSERT_EQ(XLRCreateTable(&buffer_, &size_, u16(0), u16(1), u16(2), u16(3)), 1);
    ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 9, 9, 9, 9), 2);
    Settle();
  }

  int16_t Fill(const Values& values) {
    TableArray array(sizes_);
    if (!values.empty()) array.SetAll(values);
    return XLRFillTable(&buffer_, &size_, array.Ref(), 1);
  }
  // What comes back into an array that holds `before` everywhere.
  Values Read(uint32_t before = 0) {
    TableArray array(sizes_);
    array.SetAll(Values(static_cast<size_t>(VolumeOf(sizes_)), before));
    EXPECT_EQ(XLRGetRefTable(buffer_, 1, array.Ref()), 0);
    return array.All();
  }
  // What the objects are with these records in table 1.
  std::string With(const Bytes& content) const {
    const auto u16 = [&](uint32_t k) { return static_cast<uint16_t>(sizes_[k]); };
    return Hex(TableHeadOf(1, u16(0), u16(1), u16(2), u16(3)) + content + kTableEnd) +
           Hex(TableHeadOf(2, 9, 9, 9, 9) + kTableEnd);
  }

  GridCell sizes_ = {};
};
TOLVENAR_BOTH_STATES(TablePositionsTest);

TEST_P(TablePositionsTest, AnArrayOfZeroesStoresNothing) {
  MakeTable({2, 3, 2, 1});
  const Bytes before = Image();
  EXPECT_EQ(Fill(Values(12)), 0);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(TablePositionsTest, TheOnlyValueIsACellWithItsIndex) {
  MakeTable({2, 2, 1, 1});
  EXPECT_EQ(Fill({0, 77, 0, 0}), 0);
  EXPECT_EQ(Objects(), With(CellPosition(1, 77)));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(TablePositionsTest, ABoxComesBackWhole) {
  MakeTable({3, 2, 1, 1});
  const Values values = {0x100, 0x200, 0x300, 0x101, 0x201, 0x301};
  EXPECT_EQ(Fill(values), 0);
  EXPECT_EQ(Objects(), With(BoxPosition(7, 0, 0x100, 2, 3, 0)));
  EXPECT_EQ(Read(), values);
  Compact();
  EXPECT_EQ(Read(), values);
}

TEST_P(TablePositionsTest, TheRecordWrittenLastStandsFirst) {
  MakeTable({2, 2, 1, 1});
  EXPECT_EQ(Fill({1, 2, 257, 999}), 0);
  EXPECT_EQ(Objects(), With(CellPosition(3, 999) + CellPosition(2, 257) + BoxPosition(11, 0, 1, 2, 1, 0)));
  // 257 is lost. 999 lands on the first element, to which the box, read after it, gives its own value.
  EXPECT_EQ(Read(5), (Values{1, 2, 5, 5}));
}

TEST_P(TablePositionsTest, TheScanGoesAlongTheLastDimensionFirst) {
  MakeTable({2, 2, 1, 1});
  EXPECT_EQ(Fill({10, 20, 30, 40}), 0);
  EXPECT_EQ(Objects(),
            With(CellPosition(3, 40) + CellPosition(1, 20) + CellPosition(2, 30) + CellPosition(0, 10)));
}

TEST_P(TablePositionsTest, ACellAloneLandsOnePlaceLowerOrIsLost) {
  MakeTable({2, 2, 2, 2});
  Values values(16);
  values[15] = 77;  // (2, 2, 2, 2)
  values[7] = 50;   // (2, 2, 2, 1)
  EXPECT_EQ(Fill(values), 0);
  Values expected(16, 5);
  expected[0] = 77;
  EXPECT_EQ(Read(5), expected);
}

TEST_P(TablePositionsTest, ASecondFillAddsToTheFirst) {
  MakeTable({2, 1, 1, 1});
  EXPECT_EQ(Fill({1, 2}), 0);
  EXPECT_EQ(Fill({8, 9}), 0);
  EXPECT_EQ(Objects(), With(BoxPosition(1, 0, 1, 2, 0, 0) + BoxPosition(1, 0, 8, 2, 0, 0)));
  EXPECT_EQ(Read(), (Values{8, 9}));
}

TEST_P(TablePositionsTest, CellsBehindTheWidthOfACountAreLost) {
  MakeTable({300, 1, 1, 1});
  Values values(300);
  for (uint32_t i = 0; i < 300; ++i) values[i] = 1 + i;
  EXPECT_EQ(Fill(values), 0);
  EXPECT_EQ(Objects(), With(BoxPosition(1, 0, 1, 44, 0, 0)));
  for (uint32_t i = 44; i < 300; ++i) values[i] = 0;
  EXPECT_EQ(Read(), values);
}

TEST_P(TablePositionsTest, TheCountOfTheMiddleStepIsReadWhole) {
  MakeTable({1, 1, 300, 1});
  Values values(300);
  for (uint32_t i = 0; i < 300; ++i) values[i] = 7 + 256 * i;
  EXPECT_EQ(Fill(values), 0);
  EXPECT_EQ(Objects(), With(BoxPosition(15, 0, 7, 0, 300, 0)));
  EXPECT_EQ(Read(), values);
}

// Rows that advance by 1 and by 2^24 in turn, and a first column that advances by 256: each row looks like the side of a huge box, and is alone.
TEST_P(TablePositionsTest, RowsThatLookLikeSidesOfHugeBoxesAreStoredOneByOne) {
  constexpr int32_t kSide = 400;
  MakeTable({kSide, kSide, 1, 1});
  Values values(kSide * kSide);
  Bytes content;
  for (uint32_t b = 0; b < kSide; ++b) {
    const bool odd = b % 2 != 0;
    for (uint32_t a = 0; a < kSide; ++a) values[b * kSide + a] = 16 + 256 * b + (odd ? a << 24 : a);
    const bool last = b == kSide - 1;
    const uint8_t code = static_cast<uint8_t>((odd ? 25 : 1) + (last ? 0 : 10));
    const uint8_t count = static_cast<uint8_t>(kSide);
    content =
        BoxPosition(code, b * kSide, 16 + 256 * b, odd ? 0 : count, last ? 0 : 1, odd ? count : 0) + content;
  }
  EXPECT_EQ(Fill(values), 0);
  EXPECT_EQ(Objects(), With(content));
}

TEST_P(TablePositionsTest, TextsAndNeighboursStay) {
  MakeTable({2, 1, 1, 1});
  ASSERT_EQ(XLRTextToTable(&buffer_, &size_, 1, {1, 1, 1, 1}, "abc"), 0);
  EXPECT_EQ(Fill({1, 2}), 0);
  EXPECT_EQ(Objects(), With(CellText(1, "abc") + BoxPosition(1, 0, 1, 2, 0, 0)));
  EXPECT_EQ(XLRTextToTable(&buffer_, &size_, 2, {1, 1, 1, 1}, "abc"), 0);
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  EXPECT_EQ(Objects(), Hex(TableHeadOf(2, 9, 9, 9, 9) + CellText(1, "abc") + kTableEnd));
}

TEST_P(TablePositionsTest, ElementsOfOtherWidthsAreTakenAndGiven) {
  MakeTable({2, 1, 1, 1});
  TableArray narrow(sizes_, VT_I2);
  narrow.Set(1, 1, 1, 1, 0xFFFF);
  narrow.Set(2, 1, 1, 1, 0x8000);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, narrow.Ref(), 1), 0);
  EXPECT_EQ(Objects(), With(CellPosition(1, 0x8000) + CellPosition(0, 0xFFFF)));
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 2, 1, 1, 1), 1);
  EXPECT_EQ(Fill({0x12345, 0x12346}), 0);
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, narrow.Ref()), 0);
  EXPECT_EQ(narrow.At(1, 1, 1, 1), 0x2345u);
  EXPECT_EQ(narrow.At(2, 1, 1, 1), 0x2346u);
}

TEST_P(TablePositionsTest, ArraysOfTextGiveAndTakeNothing) {
  MakeTable({2, 1, 1, 1});
  TableArray texts(sizes_, VT_BSTR);
  TableArray variants(sizes_, VT_VARIANT);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, texts.Ref(), 1), 0);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, variants.Ref(), 1), 0);
  EXPECT_EQ(Objects(), With({}));
  EXPECT_EQ(Fill({1, 2}), 0);
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, texts.Ref()), 0);
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, variants.Ref()), 0);
}

TEST_P(TablePositionsTest, TheArrayMustHaveTheTablesShape) {
  MakeTable({2, 3, 4, 5});
  const Bytes before = Image();
  TestArray matrix(VT_I4, 1, 2, 1, 3);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, matrix.Ref(), 1), -3);
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, matrix.Ref()), -3);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, nullptr, 1), -3);
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, nullptr), -3);
  for (const GridCell& sizes : {GridCell{1, 3, 4, 5}, {2, 4, 4, 5}, {2, 3, 3, 5}, {2, 3, 4, 6}}) {
    TableArray array(sizes);
    EXPECT_EQ(XLRFillTable(&buffer_, &size_, array.Ref(), 1), -4);
    EXPECT_EQ(XLRGetRefTable(buffer_, 1, array.Ref()), -4);
  }
  TableArray from0({3, 4, 5, 6}, VT_I4, 0);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, from0.Ref(), 1), -4);
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, from0.Ref()), -4);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(TablePositionsTest, ATableWithoutCellsTakesAnArrayWithoutElements) {
  MakeTable({2, 0, 4, 5});
  EXPECT_EQ(Fill({}), 0);
  EXPECT_EQ(Objects(), With({}));
  TableArray array(sizes_);
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, array.Ref()), 0);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(TablePositionsTest, WithoutABufferATableOrAHeadNothingIsDone) {
  MakeTable({2, 1, 1, 1});
  uint32_t none = 0;
  TableArray array(sizes_);
  EXPECT_EQ(XLRFillTable(&none, &size_, array.Ref(), 1), -1);
  EXPECT_EQ(XLRFillTable(nullptr, &size_, array.Ref(), 1), -1);
  EXPECT_EQ(XLRFillTable(&buffer_, nullptr, array.Ref(), 1), -1);
  EXPECT_EQ(XLRGetRefTable(0, 1, array.Ref()), -1);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, array.Ref(), 3), -997);
  EXPECT_EQ(XLRGetRefTable(buffer_, 3, array.Ref()), -997);
  RepointRefEntry(buffer_, 1, kKindTable, static_cast<uint32_t>(FindRefEntry(buffer_, 2, kKindTable)));
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, nullptr, 1), -2);  // before the array is looked at
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, nullptr), -2);
}

TEST_P(TablePositionsTest, EveryBlockThatIsMissingHasItsCode) {
  MakeTable({2, 1, 1, 1});
  const Bytes before = Image();
  LeaveFree(0);
  EXPECT_EQ(Fill({1, 2}), -8);  // none for the copy
  EXPECT_EQ(LiveBlocks(), 9u);
  EXPECT_EQ(Image(), before);
  MEMORYFREEALL();
  Load(before);
  LeaveFree(1);
  EXPECT_EQ(Fill({1, 2}), -10);  // none for the mask
  EXPECT_EQ(Fill({1, 7}), -10);  // none for the record
  EXPECT_EQ(LiveBlocks(), 8u);
  EXPECT_EQ(BlockContents(buffer_, static_cast<uint32_t>(before.size())), before);
}

TEST_P(TablePositionsTest, AFailedPatchFreesTheBufferAndTheCopy) {
  for (const Values& values : {Values{1, 2}, Values{1, 7}}) {
    SetUp();
    MakeTable({2, 1, 1, 1});
    FillSlot();
    LeaveFree(2);
    EXPECT_EQ(Fill(values), -10);
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(LiveBlocks(), 6u);
  }
}

TEST_P(TablePositionsTest, AnArrayLargerThanAnyBlockIsRefused) {
  MakeTable({3000, 3000, 3, 1});
  TableArray array(sizes_, VT_UI1);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, array.Ref(), 1), -8);
  XLRDeleteTable(buffer_, 1);
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 0x7FFF, 0x7FFF, 3, 1), 1);
  TableArray huge({0x7FFF, 0x7FFF, 3, 1}, VT_UI1);  // its bytes wrap in 32 bits
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, huge.Ref(), 1), *huge.Ref() != nullptr ? -8 : -3);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(TablePositionsTest, ValuesInFrontOfTheHeadDontCount) {
  MakeTable({2, 2, 2, 2});
  Values values(16);
  values[15] = 77;
  values[0] = 1;
  values[1] = 2;
  ASSERT_EQ(Fill(values), 0);
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 2, 2, 2, 2), 3);
  RepointRefEntry(buffer_, 3, kKindTable, static_cast<uint32_t>(FindRefEntry(buffer_, 1, kKindTable)));
  TableArray array(sizes_);
  EXPECT_EQ(XLRGetRefTable(buffer_, 3, array.Ref()), 0);
  EXPECT_EQ(array.All(), Values(16));
  array.Set(1, 1, 1, 1, 9);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, array.Ref(), 3), 0);
  EXPECT_EQ(Objects(), With(CellPosition(15, 77) + BoxPosition(1, 0, 1, 2, 0, 0)) +
                           Hex(TableHeadOf(3, 2, 2, 2, 2) + CellPosition(0, 9) + kTableEnd));
}

// Records that this library doesn't make.
class OddPositionsTest : public RefContentsTest {
 protected:
  // What a table of these sizes with this content puts into an array of 5s.
  Values ReadOf(const Bytes& content, const GridCell& sizes) {
    const auto u16 = [&](uint32_t k) { return static_cast<uint16_t>(sizes[k]); };
    const Bytes object = TableHeadOf(1, u16(0), u16(1), u16(2), u16(3)) + content + kTableEnd;
    MEMORYFREE(&buffer_);
    Load(RefRecord(0xFF, static_cast<uint32_t>(8 + object.size())) + object + RefRecord(0xDA, 0) +
         RefRecord(0xDB, 0) + Entry(1, 1, 8) + RefRecord(0xFE, 0));
    TableArray array(sizes);
    array.SetAll(Values(static_cast<size_t>(VolumeOf(sizes)), 5));
    EXPECT_EQ(XLRGetRefTable(buffer_, 1, array.Ref()), 0);
    return array.All();
  }
};

TEST_F(OddPositionsTest, ABoxOfHugeCountsPutsOnlyWhatTheArrayHas) {
  const Bytes box = BoxPosition(1 + 10 + 75, 0, 1, 255, 65535, 255);
  Bytes content;
  for (int i = 0; i < 1000; ++i) content = content + box;
  EXPECT_EQ(ReadOf(content, {2, 2, 1, 1}), (Values{1, 2, 257, 258}));
}

// Filled more often than anyone fills a table: what is left out are whole boxes at the end of the walk.
TEST_F(OddPositionsTest, BoxesThatCoverALargeArrayMoreThan64TimesOverAreLeftOut) {
  constexpr int kBoxes = 70;
  const GridCell sizes = {255, 4200, 1, 1};
  Bytes content;
  for (uint32_t i = 1; i <= kBoxes; ++i) content = content + BoxPosition(1 + 10, 0, i, 255, 4200, 0);
  const Values values = ReadOf(content, sizes);
  EXPECT_EQ(values[0], 64u);
  EXPECT_EQ(values[255 * 4200 - 1], 64u + 254 + 256 * 4199);
}

TEST_F(OddPositionsTest, ABoxThatBeginsInsideIsCutAtTheEnd) {
  EXPECT_EQ(ReadOf(BoxPosition(1, 1, 10, 255, 0, 0), {3, 2, 1, 1}), (Values{5, 10, 11, 5, 5, 5}));
}

TEST_F(OddPositionsTest, ANegativeIndexIsSplitBySignedDivision) {
  // -2 in sizes (3, 2, 1, 1): a is -2, the rest 0. The box begins two places in front of the array.
  EXPECT_EQ(ReadOf(BoxPosition(1, 0xFFFFFFFE, 10, 5, 0, 0), {3, 2, 1, 1}), (Values{12, 13, 14, 5, 5, 5}));
  EXPECT_EQ(ReadOf(CellPosition(0xFFFFFFFE, 10), {3, 2, 1, 1}), Values(6, 5));
  // -5 in sizes (3, 2, 1, 1): a is -2, b is -1.
  EXPECT_EQ(ReadOf(BoxPosition(1 + 10, 0xFFFFFFFB, 10, 5, 2, 0), {3, 2, 1, 1}),
            (Values{268, 269, 270, 5, 5, 5}));
}

TEST_F(OddPositionsTest, AnIndexBehindTheLastCellComesRoundInTheFourthDimension) {
  EXPECT_EQ(ReadOf(BoxPosition(1, 16 + 15, 10, 2, 0, 0), {2, 2, 2, 2})[15], 10u);
}

TEST_F(OddPositionsTest, ABoxWithoutACountAlongADimensionIsPassedOver) {
  const GridCell sizes = {2, 2, 1, 1};
  EXPECT_EQ(ReadOf(BoxPosition(1, 0, 10, 0, 0, 0), sizes), Values(4, 5));
  EXPECT_EQ(ReadOf(BoxPosition(1 + 10, 0, 10, 2, 0, 0), sizes), Values(4, 5));
  EXPECT_EQ(ReadOf(BoxPosition(0, 0, 10, 9, 9, 9), sizes), (Values{10, 5, 5, 5}));  // a box of one cell
}

TEST_F(OddPositionsTest, OfTwoDigitsForOneDimensionTheHigherCounts) {
  EXPECT_EQ(ReadOf(BoxPosition(1 + 5, 0, 10, 1, 3, 0), {3, 1, 1, 1}), (Values{10, 266, 522}));
}

TEST_F(OddPositionsTest, ATableWithoutCellsDividesByNothing) {
  for (const GridCell& sizes : {GridCell{0, 1, 1, 1}, {1, 0, 1, 1}, {1, 1, 0, 1}, {1, 1, 1, 0}}) {
    const Bytes content = CellPosition(0x80000000, 1) + BoxPosition(1, 3, 1, 2, 0, 0);
    EXPECT_EQ(ReadOf(content, sizes), Values{});
  }
}

TEST_F(OddPositionsTest, ATableWithoutAnEndEndsWithTheDirectory) {
  const Bytes object = TableHeadOf(1, 2, 1, 1, 1) + BoxPosition(1, 0, 10, 2, 0, 0);
  const Bytes front = RefRecord(0xFF, static_cast<uint32_t>(8 + object.size())) + object +
                      RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(1, 1, 8);
  Load(front + RefRecord(0xFE, 0));
  TableArray array({2, 1, 1, 1});
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, array.Ref()), 0);
  EXPECT_EQ(array.All(), (Values{10, 11}));
  array.SetAll({20, 21});
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, array.Ref(), 1), 0);
  EXPECT_EQ(Hex(WalkedStream(buffer_)), Hex(front + BoxPosition(1, 0, 20, 2, 0, 0) + RefRecord(0xFE, 0)));
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, array.Ref()), 0);
  EXPECT_EQ(array.All(), (Values{20, 21}));
}

TEST_F(OddPositionsTest, TheFirstOfTwoHeadsThatDiffersFromTheArrayEndsTheReading) {
  const Bytes second = TableHeadOf(1, 2, 1, 1, 1);
  const Bytes object = TableHeadOf(1, 1, 1, 1, 1) + CellPosition(0, 1) + second + kTableEnd;
  Load(RefRecord(0xFF, static_cast<uint32_t>(8 + object.size())) + object + RefRecord(0xDA, 0) +
       RefRecord(0xDB, 0) + Entry(1, 1, 8) + RefRecord(0xFE, 0));
  TableArray one({1, 1, 1, 1});
  TableArray two({2, 1, 1, 1});
  EXPECT_EQ(XLRGetRefTable(buffer_, 1, one.Ref()), -4);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, one.Ref(), 1), -4);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, two.Ref(), 1), 0);  // the last head counts
}

}  // namespace
}  // namespace tolvenar::testing
