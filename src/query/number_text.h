// Number text: a double as C's "%f" writes it, in fixed notation with six decimals, correctly rounded from its exact value (a tie goes to the
// even digit), without an exponent however large it is; "inf", "-inf", "nan", "-nan".
//
//   RANGE OF |value|            WAY
//   integers below 2^63         the digits, then six zeros
//   0.5 to below 2^53           whole part and fraction apart, in 64-bit integers; see below
//   all others                  std::to_chars
//
// A double of the middle range is m / 2^s, m below 2^53 and s from 1 to 53. Its fraction f / 2^s, f below 2^53, takes two steps of three
// decimals each: 1000 * f fits 64 bits, the bits from s on are the decimals, and those below are the fraction that is left.
#pragma once

#include <cstddef>
#include <limits>

namespace tolvenar {

// Sign, digits of the largest double, point and six decimals.
constexpr size_t kNumberTextRoom = 1 + std::numeric_limits<double>::max_exponent10 + 1 + 1 + 6;

// Writes the text of `value` to `text`, which has room for kNumberTextRoom characters and gets no terminator. Returns its end.
char* WriteNumber(char* text, double value);

}  // namespace tolvenar
