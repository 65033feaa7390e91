// Numbers as text: the short ways give what std::to_chars gives, to the character, for every kind of number.
#include "query/number_text.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace tolvenar {
namespace {

std::string TextOf(double value) {
  char text[kNumberTextRoom];
  return {text, WriteNumber(text, value)};
}

std::string Expected(double value) {
  char text[kNumberTextRoom];
  return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6).ptr};
}

// Both signs of a value, and its neighbours.
void ExpectAround(double value) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double near : {value, std::nextafter(value, infinity), std::nextafter(value, -infinity)}) {
    EXPECT_EQ(TextOf(near), Expected(near)) << std::bit_cast<uint64_t>(near);
    EXPECT_EQ(TextOf(-near), Expected(-near)) << std::bit_cast<uint64_t>(near);
  }
}

TEST(NumberText, LiteralTexts) {
  EXPECT_EQ(TextOf(0), "0.000000");
  EXPECT_EQ(TextOf(-0.0), "-0.000000");
  EXPECT_EQ(TextOf(1.5), "1.500000");
  EXPECT_EQ(TextOf(-12345.6789), "-12345.678900");
  EXPECT_EQ(TextOf(0.9999999), "1.000000");
  EXPECT_EQ(TextOf(999.9999996), "1000.000000");
  EXPECT_EQ(TextOf(9007199254740993.0), "9007199254740992.000000");
}

// Exactly between two texts the even one is taken: 1/128 has seven decimals, the last of them a 5.
TEST(NumberText, TiesGoToTheEvenDigit) {
  EXPECT_EQ(TextOf(0.5 + 1.0 / 128), "0.507812");
  EXPECT_EQ(TextOf(0.5 + 3.0 / 128), "0.523438");
  EXPECT_EQ(TextOf(-7 - 1.0 / 128), "-7.007812");
}

TEST(NumberText, EdgesOfTheShortWays) {
  for (int exponent = -70; exponent <= 70; ++exponent) ExpectAround(std::ldexp(1.0, exponent));
  for (const double value : {0.5, 1.0, 1e15, 1e16, 9007199254740992.0, 9223372036854775807.0, 1e22})
    ExpectAround(value);
}

TEST(NumberText, EdgesOfTheDigits) {
  for (double ten = 1; ten < 1e18; ten *= 10) ExpectAround(ten);
}

TEST(NumberText, NotNumbers) {
  EXPECT_EQ(TextOf(std::numeric_limits<double>::infinity()), "inf");
  EXPECT_EQ(TextOf(-std::numeric_limits<double>::infinity()), "-inf");
  EXPECT_EQ(TextOf(std::bit_cast<double>(uint64_t{0x7FF8000000000000})), "nan");
  EXPECT_EQ(TextOf(std::bit_cast<double>(uint64_t{0xFFF8000000000000})), "-nan");
  ExpectAround(std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(TextOf(std::numeric_limits<double>::max()), Expected(std::numeric_limits<double>::max()));
}

// Any bits; and numbers as cells have them, whole and with some decimals, whose ties and carries bits alone would hardly meet.
TEST(NumberText, ManyNumbers) {
  std::mt19937_64 random(20240229);
  for (int i = 0; i < 200000; ++i) {
    const uint64_t bits = random();
    const double any = std::bit_cast<double>(bits);
    if (!std::isnan(any)) {
      ASSERT_EQ(TextOf(any), Expected(any)) << bits;
    }
    const int64_t whole = static_cast<int64_t>(bits >> (bits % 64)) / 2;
    const double scaled = static_cast<double>(whole) / std::ldexp(1.0, static_cast<int>(bits % 50));
    ASSERT_EQ(TextOf(scaled), Expected(scaled)) << bits;
    const double decimal = static_cast<double>(whole % 1000000000) / 1000.0 + 0.0000005;
    ASSERT_EQ(TextOf(decimal), Expected(decimal)) << bits;
  }
}

}  // namespace
}  // namespace tolvenar
