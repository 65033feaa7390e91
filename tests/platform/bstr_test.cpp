// Text: length in front, zero unit behind, zeros inside kept. What the system leaves open is tested where the
// text is the library's own.
#include <gtest/gtest.h>

#include <cstring>

#include "support/automation_values.h"

namespace tolvenar {
namespace {

using testing::TakeText;
using testing::Text;

const uint8_t* BytesOf(BSTR text) {
  return static_cast<const uint8_t*>(static_cast<const void*>(text));
}

uint32_t LengthInFront(BSTR text) {
  uint32_t length = 0;
  std::memcpy(&length, BytesOf(text) - 4, sizeof length);
  return length;
}

TEST(Bstr, SysAllocString_StopsAtTheFirstZero) {
  BSTR text = SysAllocString(OLESTR("ab\0cd"));
  EXPECT_EQ(SysStringLen(text), 2u);
  EXPECT_EQ(TakeText(text), OLESTR("ab"));
}

TEST(Bstr, SysAllocString_OfNullIsNull) {
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
}

TEST(Bstr, SysAllocString_OfEmptyTextIsNotNull) {
  BSTR text = SysAllocString(OLESTR(""));
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(SysStringByteLen(text), 0u);
  EXPECT_EQ(text[0], 0);
  SysFreeString(text);
}

TEST(Bstr, SysAllocStringLen_KeepsZerosInside) {
  BSTR text = SysAllocStringLen(OLESTR("ab\0cd"), 5);
  EXPECT_EQ(SysStringLen(text), 5u);
  EXPECT_EQ(text[5], 0);
  EXPECT_EQ(TakeText(text), Text(OLESTR("ab\0cd"), 5));
}

TEST(Bstr, SysAllocStringLen_OfNoUnitsIsEmptyText) {
  BSTR text = SysAllocStringLen(OLESTR("ab"), 0);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(SysStringLen(text), 0u);
  EXPECT_EQ(text[0], 0);
  SysFreeString(text);
}

TEST(Bstr, ByteLengthStandsInFrontOfTheText) {
  BSTR text = SysAllocStringLen(OLESTR("abc"), 3);
  EXPECT_EQ(LengthInFront(text), 6u);
  SysFreeString(text);
}

TEST(Bstr, UnitsAreLittleEndianWithAZeroUnitBehind) {
  const OLECHAR units[] = {0x0141, 0x0062};
  BSTR text = SysAllocStringLen(units, 2);
  const uint8_t expected[] = {0x41, 0x01, 0x62, 0x00, 0x00, 0x00};
  EXPECT_EQ(std::memcmp(text, expected, sizeof expected), 0);
  SysFreeString(text);
}

TEST(Bstr, SysAllocStringByteLen_KeepsAnOddLengthAndItsBytes) {
  BSTR text = SysAllocStringByteLen("a\0b", 3);
  EXPECT_EQ(SysStringByteLen(text), 3u);
  EXPECT_EQ(SysStringLen(text), 1u);
  EXPECT_EQ(LengthInFront(text), 3u);
  const uint8_t expected[] = {'a', 0, 'b', 0, 0};
  EXPECT_EQ(std::memcmp(text, expected, sizeof expected), 0);
  SysFreeString(text);
}

TEST(Bstr, SysAllocStringByteLen_EvenLengthHasAZeroUnitBehind) {
  BSTR text = SysAllocStringByteLen("abcd", 4);
  EXPECT_EQ(SysStringLen(text), 2u);
  EXPECT_EQ(text[2], 0);
  SysFreeString(text);
}

TEST(Bstr, LengthsOfNullAreZero) {
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  EXPECT_EQ(SysStringByteLen(nullptr), 0u);
}

TEST(Bstr, SysFreeString_TakesNull) {
  SysFreeString(nullptr);
  SUCCEED();
}

// The system leaves what it makes of a null source as it finds it; the library's own text is zeroed. How long
// a text the system still makes is its own affair too.

TEST(Bstr, SysAllocStringLen_OfNullIsZeroed) {
  SysFreeString(SysAllocStringLen(OLESTR("leftovers"), 9));
  BSTR text = SysAllocStringLen(nullptr, 9);
  EXPECT_EQ(SysStringLen(text), 9u);
  EXPECT_EQ(TakeText(text), Text(9, 0));
}

TEST(Bstr, SysAllocStringByteLen_OfNullIsZeroed) {
  BSTR text = SysAllocStringByteLen(nullptr, 7);
  EXPECT_EQ(SysStringByteLen(text), 7u);
  const uint8_t expected[10] = {};
  EXPECT_EQ(std::memcmp(text, expected, sizeof expected), 0);
  SysFreeString(text);
}

TEST(Bstr, OddLengthHasAWholeZeroUnitBehindItsLastUnit) {
  BSTR text = SysAllocStringByteLen("abc", 3);
  EXPECT_EQ(text[1], 'c');
  EXPECT_EQ(text[2], 0);
  SysFreeString(text);
}

TEST(Bstr, SysAllocStringLen_LengthsThatCannotBeHadAreNull) {
  for (const UINT units : {0x3FFFFFFFu + 1, 0x7FFFFFFFu, 0x80000000u, 0x80000001u, 0xFFFFFFFFu}) {
    EXPECT_EQ(SysAllocStringLen(nullptr, units), nullptr) << units;
    EXPECT_EQ(SysAllocStringLen(OLESTR("ab"), units), nullptr) << units;
  }
}

TEST(Bstr, SysAllocStringByteLen_LengthsThatCannotBeHadAreNull) {
  for (const UINT count : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFDu, 0xFFFFFFFFu}) {
    EXPECT_EQ(SysAllocStringByteLen(nullptr, count), nullptr) << count;
    EXPECT_EQ(SysAllocStringByteLen("ab", count), nullptr) << count;
  }
}

}  // namespace
}  // namespace tolvenar
