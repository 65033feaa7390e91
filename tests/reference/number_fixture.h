// A test on sets of numbers: saves and gets of lists of values.
#pragma once

#include <vector>

#include "reference/graph_fixture.h"
#include "reference/number_sets.h"

namespace tolvenar::testing {

using SaveNumbers = int16_t (*)(uint32_t*, uint32_t*, uint16_t, int16_t, int16_t, int16_t, SAFEARRAY**,
                                int16_t);
using GetNumbers = int16_t (*)(uint32_t, uint16_t, int16_t, SAFEARRAY**, uint16_t);

// The two kinds of numbers.
struct NumberSet {
  const char* label;
  SaveNumbers save;
  GetNumbers get;
  VARTYPE type;
  uint32_t width;
  uint8_t singles[2];
  uint8_t run;
};
constexpr NumberSet kInts = {"ints", XLRSaveSetInt, XLRGetSetInt, VT_I2, 2, {0xE3, 0xE9}, 0xD8};
constexpr NumberSet kLongs = {"longs", XLRSaveSetLong, XLRGetSetLong, VT_I4, 4, {0xEF, 0xF0}, 0xD9};

using Values = std::vector<uint32_t>;

class NumberSetsTest : public GraphTest {
 protected:
  static constexpr int16_t kMax = 20;

  static Bytes Value(const NumberSet& kind, uint32_t value) {
    return kind.width == 2 ? U16(static_cast<uint16_t>(value)) : U32(value);
  }
  static Bytes Single(const NumberSet& kind, int set, int index, uint32_t value) {
    return GraphRecord(kind.singles[set - 1], U16(static_cast<uint16_t>(index)) + Value(kind, value));
  }
  static Bytes Run(const NumberSet& kind, int set, int f, int l, const Values& values) {
    Bytes payload =
        Bytes{static_cast<uint8_t>(set)} + U16(static_cast<uint16_t>(f)) + U16(static_cast<uint16_t>(l));
    for (const uint32_t value : values) payload = payload + Value(kind, value);
    return GraphRecord(kind.run, payload);
  }

  // Saves values from item `first` on.
  int16_t Save(const NumberSet& kind, int set, int first, const Values& values, int16_t max = kMax) {
    const int last = first + static_cast<int>(values.size()) - 1;
    TestArray array(kind.type, first, last);
    for (int item = first; item <= last; ++item) {
      array.SetNumber(item, 0, static_cast<int32_t>(values[static_cast<size_t>(item - first)]));
    }
    return kind.save(&buffer_, &size_, 1, static_cast<int16_t>(first), static_cast<int16_t>(last), max,
                     array.Ref(), static_cast<int16_t>(set));
  }
  // Takes a range out.
  int16_t TakeOut(const NumberSet& kind, int set, int first, int last) {
    return Save(kind, -set, first, Values(static_cast<size_t>(last - first + 1), 0xDEAD));
  }
  // Gets n items into an array of 7s.
  Values Got(const NumberSet& kind, uint16_t set, int16_t n) {
    TestArray array(kind.type, 1, n);
    for (LONG item = 1; item <= n; ++item) array.SetNumber(item, 0, 7);
    EXPECT_EQ(kind.get(buffer_, 1, n, array.Ref(), set), 0);
    Values values;
    for (LONG item = 1; item <= n; ++item) values.push_back(static_cast<uint32_t>(array.NumberAt(item)));
    return values;
  }
};

}  // namespace tolvenar::testing
