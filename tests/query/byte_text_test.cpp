// Byte text: the two forms of BSTR, "%f", and variants from raw bytes.
#include "query/byte_text.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>

#include "support/pool_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

using ByteText = PoolTest;

std::string Taken(BSTR text) {
  const std::string bytes = BytesOf(text);
  SysFreeString(text);
  return bytes;
}

std::string ByC(double value) {
  char text[400];
  std::snprintf(text, sizeof text, "%f", value);
  return text;
}

uint32_t BlockWith(const char* text) {
  const uint32_t block = MEMORYALLOC(256);
  std::memset(BlockBytes(block), '.', 256);
  std::memcpy(BlockBytes(block), text, std::strlen(text));
  return block;
}

TEST_F(ByteText, ByteBstr_HoldsExactlyTheBytes) {
  EXPECT_EQ(Taken(ByteBstr("abcde", 5)), "abcde");
  EXPECT_EQ(Taken(ByteBstr("abcde", 3)), "abc");
  EXPECT_EQ(Taken(ByteBstr("", 0)), "");
}

TEST_F(ByteText, ByteBstr_NegativeLength_MakesNone) {
  EXPECT_EQ(ByteBstr("abc", -1), nullptr);
  EXPECT_EQ(ByteBstr(OpenBlock(BlockWith("abc")), 0, -32768), nullptr);
}

TEST_F(ByteText, ByteBstr_OfABlock_ReadsZerosBehindIt) {
  const Block block = OpenBlock(BlockWith("abcdef"));
  EXPECT_EQ(Taken(ByteBstr(block, 2, 3)), "cde");
  EXPECT_EQ(Taken(ByteBstr(block, 254, 4)), std::string("..\0\0", 4));
  EXPECT_EQ(Taken(ByteBstr(block, 0xFFFFFFF0u, 2)), std::string("\0\0", 2));
  EXPECT_EQ(Taken(ByteBstr(Block{}, 0, 2)), std::string("\0\0", 2));
}

TEST_F(ByteText, PackedBstr_HasAUnitPerCharacterAndTheTextInItsFirstHalf) {
  const BSTR text = PackedBstr(OpenBlock(BlockWith("abcdef")), 1, 3);
  EXPECT_EQ(SysStringLen(text), 3u);
  EXPECT_EQ(Taken(text), std::string("bcd\0\0\0", 6));
  EXPECT_EQ(Taken(PackedBstr(OpenBlock(BlockWith("")), 255, 2)), std::string(".\0\0\0", 4));
  EXPECT_EQ(Taken(PackedBstr(Block{}, 0, 0)), "");
}

TEST_F(ByteText, NumberBstr_WritesSixDecimals) {
  constexpr struct {
    double value;
    const char* text;
  } kCases[] = {{0.0, "0.000000"},
                {-0.0, "-0.000000"},
                {1.5, "1.500000"},
                {-2.25, "-2.250000"},
                {0.0078125, "0.007812"},
                {0.0234375, "0.023438"},
                {0.0000004, "0.000000"},
                {0.0000006, "0.000001"},
                {0.9999999, "1.000000"},
                {123456789, "123456789.000000"},
                {1e22, "10000000000000000000000.000000"}};
  for (const auto& row : kCases) EXPECT_EQ(Taken(NumberBstr(row.value)), row.text);
}

TEST_F(ByteText, NumberBstr_LargeNumbersHaveNoExponent) {
  const std::string text = Taken(NumberBstr(1e300));
  EXPECT_EQ(text.find('.'), 301u);
  EXPECT_EQ(text.size(), 308u);
  EXPECT_EQ(text, ByC(1e300));
  EXPECT_EQ(Taken(NumberBstr(-std::numeric_limits<double>::max())), ByC(-std::numeric_limits<double>::max()));
}

TEST_F(ByteText, NumberBstr_NoNumbersReadAsCPrintsThem) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(Taken(NumberBstr(inf)), "inf");
  EXPECT_EQ(Taken(NumberBstr(-inf)), "-inf");
  EXPECT_EQ(Taken(NumberBstr(nan)), "nan");
  EXPECT_EQ(Taken(NumberBstr(-nan)), "-nan");
  EXPECT_EQ(Taken(NumberBstr(std::bit_cast<double>(0x7FF0000000000001u))), "nan");
}

#if !defined(_WIN32)
TEST_F(ByteText, NumberBstr_GivesTheBytesOfC_ForAnyBits) {
  std::mt19937_64 bits(20240601);
  for (int i = 0; i < 20000; ++i) {
    const double any = std::bit_cast<double>(bits());
    ASSERT_EQ(Taken(NumberBstr(any)), ByC(any));
    const double moderate = static_cast<double>(static_cast<int64_t>(bits()) >> 20) / 128.0;
    ASSERT_EQ(Taken(NumberBstr(moderate)), ByC(moderate));
  }
}
#endif

TEST_F(ByteText, FillVariant_CopiesByTheWidthOfTheType) {
  const uint8_t value[8] = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x08};
  constexpr int64_t k64 = 0x0877665544332211;
  const int64_t pointer = sizeof(void*) == 8 ? k64 : 0x44332211;
  const struct {
    int type;
    int64_t want;
  } cases[] = {
      {VT_UI1, 0x11},         {VT_I2, 0x2211}, {VT_BOOL, 0x2211}, {VT_I4, 0x44332211}, {VT_R4, 0x44332211},
      {VT_ERROR, 0x44332211}, {VT_R8, k64},    {VT_CY, k64},      {VT_DATE, k64},      {VT_BSTR, pointer},
      {0x4008, pointer},      {VT_EMPTY, 0},   {VT_NULL, 0},      {VT_UI2, 0},         {VT_VARIANT, 0}};
  for (const auto& row : cases) {
    VARIANT variant;
    std::memset(&variant, 0xEE, sizeof variant);
    FillVariant(&variant, static_cast<VARTYPE>(row.type), value);
    EXPECT_EQ(variant.vt, row.type);
    EXPECT_EQ(variant.llVal, row.want) << "type " << row.type;
  }
}

TEST_F(ByteText, PoolHasRoom_TakesNothing) {
  EXPECT_TRUE(PoolHasRoom(0));
  EXPECT_TRUE(PoolHasRoom(-5));
  EXPECT_TRUE(PoolHasRoom(105000000));
  EXPECT_FALSE(PoolHasRoom(105000001));
  EXPECT_EQ(LiveBlocks(), 0u);
  while (MEMORYALLOC(1) != 0) continue;
  EXPECT_FALSE(PoolHasRoom(0));
  EXPECT_EQ(LiveBlocks(), 9u);
}

}  // namespace
