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

char* WriteDigits(char* text, uint64_t whole) {
  constexpr int kMostDigits = 20;
  return std::to_chars(text, text + kMostDigits, whole).ptr;
}

// The point and six decimals of `millionths`, which are below a million: three pairs of digits.
char* WriteDecimals(char* text, uint32_t millionths) {
  *text++ = '.';
  for (uint32_t unit = kMillion / 100; unit != 0; unit /= 100) {
    const uint32_t pair = millionths / unit % 100;
    *text++ = static_cast<char>('0' + pair / 10);
    *text++ = static_cast<char>('0' + pair % 10);
  }
  return text;
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
