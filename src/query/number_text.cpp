// Number text: the short ways, and the long one. They stand in number_text.h.
#include "query/number_text.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

namespace tolvenar {

namespace {

constexpr int kDecimals = 6;
constexpr uint32_t kMillion = 1000000;
constexpr uint32_t kThousand = 1000;

// A double: sign, exponent, 52 bits of the significand whose leading 1 isn't stored.
constexpr int kStoredBits = 52;
constexpr int kExponentMask = 0x7FF;
constexpr int kExponentBias = 1023 + kStoredBits;  // of a significand taken as an integer
constexpr uint64_t kLeadingBit = uint64_t{1} << kStoredBits;

// |value| as significand * 2^exponent.
struct Parts {
  uint64_t significand;
  int exponent;
  bool negative;
};

Parts PartsOf(double value) {
  const uint64_t bits = std::bit_cast<uint64_t>(value);
  return {(bits & (kLeadingBit - 1)) | kLeadingBit,
          static_cast<int>(bits >> kStoredBits & kExponentMask) - kExponentBias, bits >> 63 != 0};
}

// The digits of 0 to 99, two of each.
struct PairTable {
  char digits[200];
};
constexpr PairTable MakePairs() {
  PairTable table{};
  for (int i = 0; i < 100; ++i) {
    table.digits[2 * i] = static_cast<char>('0' + i / 10);
    table.digits[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return table;
}
constexpr PairTable kPairs = MakePairs();

char* WritePair(char* text, uint32_t pair) {
  std::memcpy(text, kPairs.digits + 2 * pair, 2);
  return text + 2;
}

// What is below ten thousand, as most numbers are, in two pairs of which the leading zeros go.
char* WriteDigits(char* text, uint64_t whole) {
  constexpr int kMostDigits = 20;
  constexpr uint32_t kShort = 10000;
  if (whole >= kShort) return std::to_chars(text, text + kMostDigits, whole).ptr;
  const uint32_t number = static_cast<uint32_t>(whole);
  char digits[4];
  WritePair(WritePair(digits, number / 100), number % 100);
  const uint32_t zeros = (number < 1000 ? 1u : 0u) + (number < 100 ? 1u : 0u) + (number < 10 ? 1u : 0u);
  for (uint32_t i = zeros; i < sizeof digits; ++i) *text++ = digits[i];
  return text;
}

// The point and six decimals of `millionths`, which are below a million.
char* WriteDecimals(char* text, uint32_t millionths) {
  *text++ = '.';
  text = WritePair(text, millionths / 10000);
  text = WritePair(text, millionths / 100 % 100);
  return WritePair(text, millionths % 100);
}

char* WriteInteger(char* text, uint64_t whole, bool negative) {
  constexpr char kZeros[] = ".000000";
  if (negative) *text++ = '-';
  text = WriteDigits(text, whole);
  std::memcpy(text, kZeros, sizeof kZeros - 1);
  return text + (sizeof kZeros - 1);
}

// significand / 2^shift, the shift from 1 to 53.
char* WriteFraction(char* text, const Parts& parts, int shift) {
  const uint64_t mask = (uint64_t{1} << shift) - 1;
  uint64_t whole = parts.significand >> shift;
  const uint64_t upper = (parts.significand & mask) * kThousand;
  const uint64_t lower = (upper & mask) * kThousand;
  uint32_t millionths = static_cast<uint32_t>((upper >> shift) * kThousand + (lower >> shift));
  const uint64_t left = lower & mask;
  const uint64_t half = uint64_t{1} << (shift - 1);
  if (left > half || (left == half && millionths % 2 != 0)) ++millionths;
  if (millionths == kMillion) {
    millionths = 0;
    ++whole;
  }
  if (parts.negative) *text++ = '-';
  return WriteDecimals(WriteDigits(text, whole), millionths);
}

}  // namespace

char* WriteNumber(char* text, double value) {
  const Parts parts = PartsOf(value);
  if (value == 0) return WriteInteger(text, 0, parts.negative);
  const int shift = -parts.exponent;
  if (shift >= 1 && shift <= kStoredBits + 1) {
    const uint64_t fraction = parts.significand & ((uint64_t{1} << shift) - 1);
    if (fraction != 0) return WriteFraction(text, parts, shift);
    return WriteInteger(text, parts.significand >> shift, parts.negative);
  }
  constexpr int kSpareBits = 63 - kStoredBits - 1;
  if (shift <= 0 && shift >= -kSpareBits)
    return WriteInteger(text, parts.significand << -shift, parts.negative);
  return std::to_chars(text, text + kNumberTextRoom, value, std::chars_format::fixed, kDecimals).ptr;
}

}  // namespace tolvenar
