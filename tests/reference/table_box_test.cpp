// EncodeTableBox: which box it takes, what the record says, which cells are zeroed.
#include "reference/table_box.h"

#include <numeric>

#include "reference/reference_states.h"
#include "reference/reference_table.h"
#include "reference/table_grid.h"

namespace tolvenar::testing {
namespace {

constexpr uint32_t kStep256 = 0x100;
constexpr uint32_t kStep24 = 0x1000000;

class TableBoxTest : public RefContentsTest {
 protected:
  // Table 1 of these sizes, and its values in a block of their own.
  void LoadValues(const GridCell& sizes, const std::vector<uint32_t>& values) {
    sizes_ = sizes;
    const auto u16 = [&](uint32_t k) { return static_cast<uint16_t>(sizes[k]); };
    ASSERT_EQ(XLRCreateTable(&buffer_, &size_, u16(0), u16(1), u16(2), u16(3)), 1);
    end_ = Find(1, kKindTable).end;
    values_ = MEMORYALLOC(static_cast<int32_t>(4 * values.size()));
    ASSERT_EQ(values.size(), static_cast<size_t>(VolumeOf(sizes)));
    for (uint32_t i = 0; i < values.size(); ++i) PutU32(OpenBlock(values_), 4 * i, values[i]);
  }

  int16_t Encode(int16_t a = 0, int16_t b = 0, int16_t c = 0, int16_t d = 0) {
    const auto size = [&](uint32_t k) { return static_cast<int16_t>(sizes_[k]); };
    return EncodeTableBox(&buffer_, &size_, end_, values_, a, b, c, d, size(0), size(1), size(2), size(3));
  }

  // What is left of the values.
  std::vector<uint32_t> Left() const {
    std::vector<uint32_t> left(static_cast<size_t>(VolumeOf(sizes_)));
    for (uint32_t i = 0; i < left.size(); ++i) left[i] = U32At(OpenBlock(values_), 4 * i);
    return left;
  }

  // The records in the table.
  std::string Records() const {
    const std::string objects = Objects();
    const size_t head = 3 * kTableHeadSize;
    return objects.substr(head, objects.size() - head - 3 * kObjectEndSize);
  }

  GridCell sizes_ = {};
  uint32_t end_ = 0;  // where all records go
  uint32_t values_ = 0;
};

TEST_F(TableBoxTest, TwoDirectionsMakeOneBlock) {
  LoadValues({3, 2, 1, 1}, {0x100, 0x200, 0x300, 0x101, 0x201, 0x301});
  EXPECT_EQ(Encode(), 0);
  EXPECT_EQ(Records(), Hex({0xF8, 0x10, 13, 0, 7, 0, 0, 0, 0, 0x00, 0x01, 0, 0, 2, 3, 0, 0}));
  EXPECT_EQ(Left(), std::vector<uint32_t>(6));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(TableBoxTest, ACellAloneIsATableCell) {
  LoadValues({2, 1, 1, 1}, {0, 0x11223344});
  EXPECT_EQ(Encode(1), 0);
  EXPECT_EQ(Records(), Hex({0xF9, 0x10, 8, 0, 1, 0, 0, 0, 0x44, 0x33, 0x22, 0x11}));
  EXPECT_EQ(Left(), std::vector<uint32_t>(2));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(TableBoxTest, ADistanceOf2IsNoStep) {
  LoadValues({2, 1, 1, 1}, {5, 7});
  EXPECT_EQ(Encode(0), 0);
  EXPECT_EQ(Left(), (std::vector<uint32_t>{0, 7}));
  EXPECT_EQ(Encode(1), 0);
  EXPECT_EQ(Records(), Hex(CellPosition(1, 7) + CellPosition(0, 5)));  // the last one written stands first
}

TEST_F(TableBoxTest, OfTwoBoxesOfOneVolumeTheOneAlongTheFirstDimensionIsTaken) {
  LoadValues({2, 2, 1, 1}, {1, 2, 257, 999});
  EXPECT_EQ(Encode(), 0);
  EXPECT_EQ(Records(),
            Hex(BoxPosition(11, 0, 1, 2, 1, 0)));  // the other step stays in the code, with one cell
  EXPECT_EQ(Left(), (std::vector<uint32_t>{0, 0, 257, 999}));
}

TEST_F(TableBoxTest, TheLargerBoxWinsWhereverItReaches) {
  LoadValues({2, 3, 1, 1}, {1, 2, 257, 0, 513, 0});
  EXPECT_EQ(Encode(), 0);
  EXPECT_EQ(Records(), Hex(BoxPosition(11, 0, 1, 1, 3, 0)));
  EXPECT_EQ(Left(), (std::vector<uint32_t>{0, 2, 0, 0, 0, 0}));
}

TEST_F(TableBoxTest, ACellThatFitsBehindOneThatDoesNotIsLeft) {
  LoadValues({3, 3, 1, 1}, {1, 2, 3, 257, 999, 259, 513, 514, 515});
  EXPECT_EQ(Encode(), 0);
  EXPECT_EQ(Records(), Hex(BoxPosition(11, 0, 1, 3, 1, 0)));
  EXPECT_EQ(Left(), (std::vector<uint32_t>{0, 0, 0, 257, 999, 259, 513, 514, 515}));
}

// Steps by dimension, and the code and counts that a box of two cells along each gets.
constexpr struct {
  const char* label;
  std::array<uint32_t, 4> steps;
  uint8_t axes, a, b, c;
} kStepRows[] = {
    {"1", {1, 0, 0, 0}, 1, 2, 0, 0},
    {"256", {kStep256, 0, 0, 0}, 5, 0, 2, 0},
    {"24 bits", {kStep24, 0, 0, 0}, 25, 0, 0, 2},
    {"1 along 2", {0, 1, 0, 0}, 2, 2, 0, 0},
    {"256 along 2", {0, kStep256, 0, 0}, 10, 0, 2, 0},
    {"24 bits along 2", {0, kStep24, 0, 0}, 50, 0, 0, 2},
    {"1 along 3", {0, 0, 1, 0}, 3, 2, 0, 0},
    {"256 along 3", {0, 0, kStep256, 0}, 15, 0, 2, 0},
    {"24 bits along 3", {0, 0, kStep24, 0}, 75, 0, 0, 2},
    {"1 along 4", {0, 0, 0, 1}, 4, 2, 0, 0},
    {"256 along 4", {0, 0, 0, kStep256}, 20, 0, 2, 0},
    {"24 bits along 4", {0, 0, 0, kStep24}, 100, 0, 0, 2},
    {"three", {1, kStep256, kStep24, 0}, 1 + 10 + 75, 2, 2, 2},
    {"three, turned", {0, kStep24, 1, kStep256}, 50 + 3 + 20, 2, 2, 2},
};

TEST_F(TableBoxTest, EachStepHasItsDigitAndItsCount) {
  for (const auto& row : kStepRows) {
    SetUp();
    GridCell sizes;
    for (uint32_t k = 0; k < 4; ++k) sizes[k] = row.steps[k] != 0 ? 2 : 1;
    std::vector<uint32_t> values(static_cast<size_t>(VolumeOf(sizes)));
    const GridStrides strides = StridesOf(sizes);
    VisitCells(kGridOrigin, sizes, [&](const GridCell& cell) {
      values[PlaceOf(strides, cell)] = 9 + PlaceOf(row.steps, cell);
      return true;
    });
    LoadValues(sizes, values);
    EXPECT_EQ(Encode(), 0) << row.label;
    EXPECT_EQ(Records(), Hex(BoxPosition(row.axes, 0, 9, row.a, row.b, row.c))) << row.label;
    EXPECT_EQ(Left(), std::vector<uint32_t>(values.size())) << row.label;
  }
}

TEST_F(TableBoxTest, AStepServesTheFirstDimensionThatShowsItOnly) {
  LoadValues({2, 2, 2, 2}, {1, 2, 2, 3, 2, 3, 3, 4, 2, 3, 3, 4, 3, 4, 4, 5});
  EXPECT_EQ(Encode(), 0);
  EXPECT_EQ(Records(), Hex(BoxPosition(1, 0, 1, 2, 0, 0)));
  EXPECT_EQ(Left(), (std::vector<uint32_t>{0, 0, 2, 3, 2, 3, 3, 4, 2, 3, 3, 4, 3, 4, 4, 5}));
}

TEST_F(TableBoxTest, ABoxInTheMiddleHasItsCornersIndex) {
  LoadValues({3, 3, 1, 1}, {9, 9, 9, 9, 1, 2, 9, 257, 258});
  EXPECT_EQ(Encode(1, 1), 0);
  EXPECT_EQ(Records(), Hex(BoxPosition(11, 4, 1, 2, 2, 0)));
  EXPECT_EQ(Left(), (std::vector<uint32_t>{9, 9, 9, 9, 0, 0, 9, 0, 0}));
}

TEST_F(TableBoxTest, TheLastCellOfADimensionHasNoNeighbour) {
  LoadValues({2, 2, 1, 1},
             {7, 1, 2, 3});  // the value of (0, 1) comes behind that of (1, 0), but is no neighbour
  EXPECT_EQ(Encode(1, 0), 0);
  EXPECT_EQ(Records(), Hex(CellPosition(1, 1)));
}

TEST_F(TableBoxTest, CountsAreCutToTheWidthOfTheirFields) {
  std::vector<uint32_t> values(300);
  std::iota(values.begin(), values.end(), 1);
  LoadValues({300, 1, 1, 1}, values);
  EXPECT_EQ(Encode(), 0);
  EXPECT_EQ(Records(), Hex(BoxPosition(1, 0, 1, 44, 0, 0)));
  EXPECT_EQ(Left(), std::vector<uint32_t>(300));
}

TEST_F(TableBoxTest, ACountOf256CellsIsStoredAs0AndThatOfTheMiddleStepWhole) {
  std::vector<uint32_t> values(256);
  for (uint32_t i = 0; i < 256; ++i) values[i] = 1 + i * kStep24;
  LoadValues({256, 1, 1, 1}, values);
  EXPECT_EQ(Encode(), 0);
  EXPECT_EQ(Records(), Hex(BoxPosition(25, 0, 1, 0, 0, 0)));
  SetUp();
  for (uint32_t i = 0; i < 256; ++i) values[i] = 1 + i * kStep256;
  LoadValues({256, 1, 1, 1}, values);
  EXPECT_EQ(Encode(), 0);
  EXPECT_EQ(Records(), Hex(BoxPosition(5, 0, 1, 0, 256, 0)));
}

TEST_F(TableBoxTest, ValuesCountModulo32Bits) {
  LoadValues({2, 1, 1, 1}, {0xFFFFFFFF, 0});
  EXPECT_EQ(Encode(), 0);
  EXPECT_EQ(Records(), Hex(BoxPosition(1, 0, 0xFFFFFFFF, 2, 0, 0)));
}

TEST_F(TableBoxTest, WithoutABlockNothingIsZeroed) {
  LoadValues({2, 1, 1, 1}, {1, 2});
  const Bytes before = Image();
  LeaveFree(0);
  EXPECT_EQ(Encode(), -1);   // the mask
  EXPECT_EQ(Encode(1), -3);  // the record of a cell alone
  EXPECT_EQ(Left(), (std::vector<uint32_t>{1, 2}));
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_F(TableBoxTest, TheMaskNeedsABlockForTheWholeOfTheRemainingArray) {
  std::vector<uint32_t> values(64 * 8);
  values[0] = 1;
  values[1] = 2;
  values[64] = 257;
  LoadValues({64, 8, 1, 1}, values);
  uint32_t small = MEMORYALLOC(1);
  ASSERT_EQ(MEMORYALLOCSIZE(small), 512u);
  LeaveFree(0);
  MEMORYFREE(&small);  // has room for the four cells that matter, and not for all
  EXPECT_EQ(Encode(), -1);
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(TableBoxTest, AMaskLargerThanAnyBlockIsRefused) {
  sizes_ = {0x7FFF, 0x7FFF, 0x7FFF, 1};
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 0x7FFF, 0x7FFF, 0x7FFF, 1), 1);
  values_ = MEMORYALLOC(4 * 0x7FFF + 4);
  PutU32(OpenBlock(values_), 0, 1);
  PutU32(OpenBlock(values_), 4, 2);
  PutU32(OpenBlock(values_), 4 * 0x7FFF, 257);
  EXPECT_EQ(Encode(), -1);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(TableBoxTest, AFailedPatchZeroesNothingAndFreesTheBuffer) {
  for (const int16_t a : {int16_t{0}, int16_t{1}}) {
    SetUp();
    LoadValues({2, 1, 1, 1}, {1, 2});
    FillSlot();
    LeaveFree(1);
    EXPECT_EQ(Encode(a), a == 0 ? -5 : -6);
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(Left(), (std::vector<uint32_t>{1, 2}));
    EXPECT_EQ(LiveBlocks(), 7u);
  }
}

}  // namespace
}  // namespace tolvenar::testing
