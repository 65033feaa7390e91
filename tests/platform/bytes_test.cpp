// Byte helpers: literal bytes in, literal values out, around the powers of two where a sign or a width would
// show.
#include "platform/bytes.h"

#include <gtest/gtest.h>

namespace tolvenar {
namespace {

TEST(Bytes, ReadU16_TakesTheLowByteFirst) {
  const uint8_t bytes[] = {0x34, 0x12};
  EXPECT_EQ(ReadU16(bytes), 0x1234);
}

TEST(Bytes, ReadI16_TakesBit15AsTheSign) {
  const uint8_t largest[] = {0xFF, 0x7F};
  const uint8_t smallest[] = {0x00, 0x80};
  const uint8_t minus_one[] = {0xFF, 0xFF};
  EXPECT_EQ(ReadI16(largest), 32767);
  EXPECT_EQ(ReadI16(smallest), -32768);
  EXPECT_EQ(ReadI16(minus_one), -1);
}

TEST(Bytes, ReadU32_TakesTheLowByteFirst) {
  const uint8_t bytes[] = {0x78, 0x56, 0x34, 0x92};
  EXPECT_EQ(ReadU32(bytes), 0x92345678u);
}

TEST(Bytes, ReadU64AndF64_ShareTheirBytes) {
  const uint8_t one[] = {0, 0, 0, 0, 0, 0, 0xF0, 0x3F};
  EXPECT_EQ(ReadU64(one), 0x3FF0000000000000u);
  EXPECT_EQ(ReadF64(one), 1.0);
}

TEST(Bytes, Writes_TouchTheirOwnBytesOnly) {
  uint8_t bytes[12] = {};
  WriteU16(bytes + 1, 0xBEEF);
  WriteU32(bytes + 5, 0x01020304);
  const uint8_t want[12] = {0, 0xEF, 0xBE, 0, 0, 4, 3, 2, 1, 0, 0, 0};
  EXPECT_EQ(std::memcmp(bytes, want, sizeof want), 0);
}

TEST(Bytes, WriteF64_LaysTheDoubleDownAsItIs) {
  uint8_t bytes[8];
  WriteF64(bytes, -2.0);
  const uint8_t want[8] = {0, 0, 0, 0, 0, 0, 0, 0xC0};
  EXPECT_EQ(std::memcmp(bytes, want, sizeof want), 0);
}

}  // namespace
}  // namespace tolvenar
