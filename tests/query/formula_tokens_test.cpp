// Sizes of formula tokens: both whole tables, the computed sizes and the extra data of the Mem tokens.
#include "query/formula_tokens.h"

#include "support/pool_fixture.h"
#include "support/stream_builder.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::operator+;

class FormulaTokens : public testing::PoolTest {
 protected:
  // Size of the token that begins these bytes; *remaining as the call leaves it.
  static uint16_t SizeOf(const Bytes& bytes, int16_t* remaining) {
    uint32_t handle = MEMORYALLOC(33000);
    const Block block = OpenBlock(handle);
    CopyIn(block, 0, bytes.data(), static_cast<uint32_t>(bytes.size()));
    const uint16_t size = FormulaTokenSize(block, 0, remaining);
    EXPECT_EQ(testing::BlockContents(handle, static_cast<uint32_t>(bytes.size())), bytes);
    MEMORYFREE(&handle);
    return size;
  }

  static uint16_t SizeOf(const Bytes& bytes) {
    int16_t remaining = 1000;
    const uint16_t size = SizeOf(bytes, &remaining);
    EXPECT_EQ(remaining, 1000);
    return size;
  }
};

// The table written as ranges, a second time and independently of the library's.
constexpr struct {
  uint8_t first;
  uint8_t last;
  uint16_t size;
} kRanges[] = {
    {0x00, 0x00, 1},  {0x01, 0x02, 5},  {0x03, 0x16, 1},  {0x17, 0x17, 2},  {0x18, 0x18, 1},
    {0x19, 0x19, 4},  {0x1A, 0x1B, 1},  {0x1C, 0x1D, 2},  {0x1E, 0x1E, 3},  {0x1F, 0x1F, 9},
    {0x20, 0x20, 4},  {0x21, 0x21, 3},  {0x22, 0x22, 4},  {0x23, 0x23, 15}, {0x24, 0x24, 4},
    {0x25, 0x25, 7},  {0x26, 0x28, 7},  {0x29, 0x29, 3},  {0x2A, 0x2A, 4},  {0x2B, 0x2B, 7},
    {0x2C, 0x2C, 4},  {0x2D, 0x2D, 7},  {0x2E, 0x2F, 3},  {0x30, 0x38, 1},  {0x39, 0x39, 25},
    {0x3A, 0x3A, 18}, {0x3B, 0x3B, 21}, {0x3C, 0x3C, 18}, {0x3D, 0x3D, 21}, {0x3E, 0x3F, 1},
    {0x40, 0x40, 4},  {0x41, 0x41, 3},  {0x42, 0x42, 4},  {0x43, 0x43, 15}, {0x44, 0x44, 4},
    {0x45, 0x45, 7},  {0x46, 0x48, 7},  {0x49, 0x49, 3},  {0x4A, 0x4A, 4},  {0x4B, 0x4B, 7},
    {0x4C, 0x4C, 4},  {0x4D, 0x4D, 7},  {0x4E, 0x4F, 3},  {0x50, 0x58, 1},  {0x59, 0x59, 25},
    {0x5A, 0x5A, 18}, {0x5B, 0x5B, 21}, {0x5C, 0x5C, 18}, {0x5D, 0x5D, 21}, {0x5E, 0x5F, 1},
    {0x60, 0x60, 4},  {0x61, 0x61, 3},  {0x62, 0x62, 4},  {0x63, 0x63, 15}, {0x64, 0x64, 4},
    {0x65, 0x65, 7},  {0x66, 0x68, 7},  {0x69, 0x69, 3},  {0x6A, 0x6A, 4},  {0x6B, 0x6B, 7},
    {0x6C, 0x6C, 4},  {0x6D, 0x6D, 7},  {0x6E, 0x6F, 3},  {0x70, 0x78, 1},  {0x79, 0x79, 25},
    {0x7A, 0x7A, 18}, {0x7B, 0x7B, 21}, {0x7C, 0x7C, 18}, {0x7D, 0x7D, 21}, {0x7E, 0xFF, 1},
};

TEST_F(FormulaTokens, EveryId_HasTheSizeOfItsRange) {
  int next = 0;
  for (const auto& range : kRanges) {
    ASSERT_EQ(range.first, next);
    for (int id = range.first; id <= range.last; ++id) {
      EXPECT_EQ(SizeOf({static_cast<uint8_t>(id), 0, 0, 0, 0, 0, 0}), range.size) << "id " << id;
    }
    next = range.last + 1;
  }
  EXPECT_EQ(next, 0x100);
}

// The rows in which the table for chart series differs; ranges of ids.
constexpr struct {
  uint8_t first;
  uint8_t last;
  int16_t size;
} kChartRanges[] = {
    {0x17, 0x17, -1}, {0x20, 0x20, -1}, {0x26, 0x26, -1}, {0x40, 0x40, -1}, {0x46, 0x46, -1},
    {0x60, 0x60, -1}, {0x66, 0x66, -1}, {0x00, 0x00, -2}, {0x7E, 0xFF, -2}, {0x18, 0x18, -2},
    {0x1A, 0x1B, -2}, {0x30, 0x38, -2}, {0x3E, 0x3F, -2}, {0x50, 0x58, -2}, {0x5E, 0x5F, -2},
    {0x70, 0x78, -2}, {0x27, 0x28, 7},  {0x47, 0x48, 7},  {0x67, 0x68, 7},  {0x29, 0x29, 3},
    {0x2E, 0x2F, 3},  {0x49, 0x49, 3},  {0x4E, 0x4F, 3},  {0x69, 0x69, 3},  {0x6E, 0x6F, 3},
};

TEST_F(FormulaTokens, ChartTokenSize_DiffersInItsOwnRowsAndAgreesInAllOthers) {
  int16_t expected[0x100];
  for (const auto& range : kRanges) {
    for (int id = range.first; id <= range.last; ++id) expected[id] = static_cast<int16_t>(range.size);
  }
  for (const auto& range : kChartRanges) {
    for (int id = range.first; id <= range.last; ++id) expected[id] = range.size;
  }
  for (int id = 0; id < 0x100; ++id) {
    EXPECT_EQ(ChartTokenSize(static_cast<uint8_t>(id)), expected[id]) << "id " << id;
  }
}

constexpr struct {
  uint8_t id;
  uint8_t base;
} kBases[] = {{0x00, 0x00}, {0x01, 0x01}, {0x1F, 0x1F}, {0x24, 0x24}, {0x44, 0x24},
              {0x64, 0x24}, {0x3A, 0x3A}, {0x5A, 0x3A}, {0x7A, 0x3A}, {0x7D, 0x3D},
              {0x80, 0x00}, {0x81, 0x01}, {0xA5, 0x25}, {0xC4, 0x24}, {0xFF, 0x3F}};

TEST_F(FormulaTokens, Base_DropsTheClass) {
  for (const auto& row : kBases) EXPECT_EQ(TokenBase(row.id), row.base) << "id " << int{row.id};
}

TEST_F(FormulaTokens, Text_TakesItsLengthByteAndTwo) {
  EXPECT_EQ(SizeOf({0x17, 0x00}), 2);
  EXPECT_EQ(SizeOf({0x17, 0x05}), 7);
  EXPECT_EQ(SizeOf({0x17, 0xFF}), 257);
}

TEST_F(FormulaTokens, MemTokens_TakeTheWordAtFiveOffTheRemaining) {
  for (int id : {0x26, 0x27, 0x28, 0x29, 0x2E, 0x2F, 0x46, 0x4E, 0x66, 0x6F}) {
    int16_t remaining = 100;
    SizeOf({static_cast<uint8_t>(id), 0, 0, 0, 0, 0x22, 0x00}, &remaining);
    EXPECT_EQ(remaining, 100 - 0x22) << "id " << id;
  }
}

TEST_F(FormulaTokens, ThreeByteMemToken_ReadsTheWordBehindItself) {
  int16_t remaining = 60;
  EXPECT_EQ(SizeOf({0x29, 0x04, 0x00, 0x24, 0x07, 0x0C, 0x00}, &remaining), 3);
  EXPECT_EQ(remaining, 48);
}

TEST_F(FormulaTokens, MemToken_SubtractsInSixteenBits) {
  int16_t remaining = 7;
  SizeOf({0x26, 0, 0, 0, 0, 0xFF, 0xFF}, &remaining);
  EXPECT_EQ(remaining, 8);
}

TEST_F(FormulaTokens, OtherTokens_LeaveTheRemaining) {
  int16_t remaining = 100;
  SizeOf({0x25, 9, 9, 9, 9, 9, 9}, &remaining);
  EXPECT_EQ(remaining, 100);
}

TEST_F(FormulaTokens, Array_StepsOverNumbersAndTexts) {
  const Bytes number = {0x01, 1, 2, 3, 4, 5, 6, 7, 8};
  const Bytes text = {0x02, 0x03, 'a', 'b', 'c'};
  EXPECT_EQ(SizeOf(Bytes{0x20, 0x01, 0x01, 0x00} + number), 4 + 9);
  EXPECT_EQ(SizeOf(Bytes{0x60, 0x01, 0x01, 0x00} + text), 4 + 5);
  const Bytes two = number + text;
  EXPECT_EQ(SizeOf(Bytes{0x40, 0x02, 0x01, 0x00} + two), 4 + 9 + 5);
  EXPECT_EQ(SizeOf(Bytes{0x40, 0x01, 0x02, 0x00} + two), 4 + 9 + 5);
}

TEST_F(FormulaTokens, Array_WithoutElements_IsItsHeader) {
  EXPECT_EQ(SizeOf({0x20, 0x03, 0x00, 0x00, 0x01}), 4);
}

TEST_F(FormulaTokens, Array_OfNoColumns_HasTwoHundredAndFiftySix) {
  EXPECT_EQ(SizeOf({0x20, 0x00, 0x01, 0x00}), 4 + 256 * 2);
}

TEST_F(FormulaTokens, Array_CountIsTakenInSixteenBits) {
  // 2 x 0x8001 keeps its low 16 bits: 2 elements. 1 x 0x8000 is below 1.
  EXPECT_EQ(SizeOf({0x20, 0x02, 0x01, 0x80}), 4 + 2 * 2);
  EXPECT_EQ(SizeOf({0x20, 0x01, 0x00, 0x80, 0x01}), 4);
}

TEST_F(FormulaTokens, Array_LargerThanSixteenBits_CountsAsTheLargest) {
  Bytes bytes(33000, 0x01);
  bytes[0] = 0x20;
  bytes[1] = 0x01;
  bytes[2] = 0xFF;
  bytes[3] = 0x7F;
  EXPECT_EQ(SizeOf(bytes), 0xFFFF);
}

TEST_F(FormulaTokens, TokenOutsideTheBlock_IsOneUnknownByte) {
  uint32_t handle = MEMORYALLOC(256);
  int16_t remaining = 5;
  EXPECT_EQ(FormulaTokenSize(OpenBlock(handle), 256, &remaining), 1);
  EXPECT_EQ(FormulaTokenSize(OpenBlock(handle), 0xFFFFFFFF, &remaining), 1);
  EXPECT_EQ(FormulaTokenSize(Block{}, 0, &remaining), 1);
  EXPECT_EQ(remaining, 5);
  MEMORYFREE(&handle);
}

TEST_F(FormulaTokens, TokenAtTheEndOfTheBlock_ReadsItsOperandsAsZero) {
  uint32_t handle = MEMORYALLOC(256);
  const Block block = OpenBlock(handle);
  int16_t remaining = 5;
  PutU8(block, 255, 0x17);
  EXPECT_EQ(FormulaTokenSize(block, 255, &remaining), 2);
  PutU8(block, 255, 0x26);
  EXPECT_EQ(FormulaTokenSize(block, 255, &remaining), 7);
  EXPECT_EQ(remaining, 5);
  MEMORYFREE(&handle);
}

TEST_F(FormulaTokens, ArrayThatRunsOutOfTheBlock_HasEmptyTextsThere) {
  uint32_t handle = MEMORYALLOC(256);
  const Block block = OpenBlock(handle);
  int16_t remaining = 5;
  PutU8(block, 250, 0x20);
  PutU8(block, 251, 1);
  for (uint16_t count : {uint16_t{1}, uint16_t{2}, uint16_t{5}}) {  // the first one fills the block
    PutU16(block, 252, count);
    EXPECT_EQ(FormulaTokenSize(block, 250, &remaining), 4 + 2 * count);
  }
  MEMORYFREE(&handle);
}

}  // namespace
}  // namespace tolvenar
