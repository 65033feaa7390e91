// A test on sets of text references: saves and gets of pairs of values.
#pragma once

#include <utility>
#include <vector>

#include "reference/graph_fixture.h"
#include "reference/text_references.h"

namespace tolvenar::testing {

using Pairs = std::vector<std::pair<uint32_t, uint32_t>>;

class TextReferenceTest : public GraphTest {
 protected:
  static constexpr int16_t kMax = 30;

  static Bytes Single(int set, int index, uint32_t first, uint32_t second = 0) {
    return GraphRecord(0xD2, Bytes{static_cast<uint8_t>(set)} + U16(static_cast<uint16_t>(index)) +
                                 U32(first) + U32(second));
  }
  static Bytes Run(int set, int step_code, int f, int n, uint32_t base) {
    return GraphRecord(0xD1, Bytes{static_cast<uint8_t>(set), static_cast<uint8_t>(step_code)} +
                                 U16(static_cast<uint16_t>(f)) + U16(static_cast<uint16_t>(n)) + U32(base));
  }
  static Bytes SetText(int set, int index) {
    return GraphRecord(static_cast<uint8_t>(0xEB + set - 1),
                       U16(static_cast<uint16_t>(index)) + U16(1) + Text("t"));
  }
  // Items whose first values go up by 1, without second values.
  static Pairs Ascending(uint32_t from, uint32_t count, uint32_t step = 1) {
    Pairs pairs;
    for (uint32_t i = 0; i < count; ++i) pairs.emplace_back(from + i * step, 0);
    return pairs;
  }

  int16_t Save(int set, int first, const Pairs& pairs, int16_t max = kMax) {
    const int last = first + static_cast<int>(pairs.size()) - 1;
    TestArray a(VT_I4, first, last), b(VT_I4, first, last);
    for (int item = first; item <= last; ++item) {
      const auto& [one, other] = pairs[static_cast<size_t>(item - first)];
      a.SetNumber(item, 0, static_cast<int32_t>(one));
      b.SetNumber(item, 0, static_cast<int32_t>(other));
    }
    return XLRSaveTextRef(&buffer_, &size_, 1, static_cast<int16_t>(first), static_cast<int16_t>(last), max,
                          a.Ref(), b.Ref(), static_cast<int16_t>(set));
  }
  int16_t TakeOut(int set, int first, int last) {
    return Save(-set, first, Pairs(static_cast<size_t>(last - first + 1), {0xDEAD, 0xBEEF}));
  }
  // Gets n items into arrays of 7s.
  Pairs Got(uint16_t set, int16_t n) {
    TestArray a(VT_I4, 1, n), b(VT_I4, 1, n);
    for (LONG item = 1; item <= n; ++item) {
      a.SetNumber(item, 0, 7);
      b.SetNumber(item, 0, 7);
    }
    EXPECT_EQ(XLRGetTextRef(buffer_, 1, n, a.Ref(), b.Ref(), set), 0);
    Pairs pairs;
    for (LONG item = 1; item <= n; ++item) {
      pairs.emplace_back(static_cast<uint32_t>(a.NumberAt(item)), static_cast<uint32_t>(b.NumberAt(item)));
    }
    return pairs;
  }
};

}  // namespace tolvenar::testing
