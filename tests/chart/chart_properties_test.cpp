// Chart properties: what each record does to the caller's array, in whole charts and handler by handler.
#include "chart/chart_properties.h"

#include <map>

#include "support/chart_fixture.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

constexpr LONG kProperties = 21;
using Values = std::map<int, int64_t>;  // index: value

class ChartProperties : public ChartTest {
 protected:
  int16_t Read(int16_t chart = 1) { return XLGetChartData(properties_.Ref(), buffer_, table_, 1, chart); }

  void Set(const Values& before) {
    for (LONG i = 1; i <= kProperties; ++i) properties_.SetNumber(i, 0, kUnset);
    for (const auto& [index, value] : before) properties_.SetNumber(index, 0, static_cast<int32_t>(value));
  }
  // What differs from kUnset.
  Values Changed() {
    Values changed;
    for (LONG i = 1; i <= kProperties; ++i) {
      const int64_t value = static_cast<int32_t>(properties_.NumberAt(i));
      if (value != kUnset) changed[i] = value;
    }
    return changed;
  }
  // Reads a chart of nothing but these records, without its CHART's own properties and the two counts.
  Values After(ChartBuilder& records, const Values& before) {
    LoadChart(records);
    Set(before);
    EXPECT_EQ(Read(), 0);
    EXPECT_EQ(LiveBlocks(), 2u);
    Values changed = Changed();
    for (int own : {1, 2, 13, 14}) changed.erase(own);
    MEMORYFREEALL();
    return changed;
  }
  // The same for one record with this payload.
  Values AfterRecord(uint8_t low, const Bytes& payload, const Values& before) {
    ChartBuilder book = OneChart();
    return After(book.Chart().Low(low, payload), before);
  }

  static constexpr int32_t kUnset = 1000;
  TestArray properties_{VT_I4, 1, kProperties};
};

TEST_F(ChartProperties, PieChart) {
  ChartBuilder book = OneChart();
  book.Obj(5, 3, 2, 7).Chart(300, 200).Begin().Series(5).Begin().Ai(1, Area3d(0, 0, {1, 5, 1, 1})).End();
  book.Low(0x14).Begin().Low(0x19, Bytes(4)).Low(0x15, Bytes(16) + Bytes{3}).Begin().End().End().End();
  LoadChart(book);
  Set({{3, 0}, {4, 0}, {5, 0}});
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Changed(), (Values{{1, 5},
                               {2, 1},
                               {3, 1},
                               {4, 2},
                               {5, 2},
                               {11, 3},
                               {12, 8},
                               {13, 6000},
                               {14, 4000},
                               {19, 1},
                               {21, 4}}));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(ChartProperties, NothingIsCleared_ASecondCallMovesFurther) {
  ChartBuilder book = OneChart();
  book.Chart().Low(0x19).Low(0x0C, U16(0x10)).Low(0x3E, U16(0)).Low(0x19);
  LoadChart(book);
  Set({{3, 0}, {4, -3}, {9, 1}});
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Changed(), (Values{{1, 0}, {2, 0}, {3, 1}, {4, 1}, {5, 2}, {9, 0}, {13, 6000}, {14, 4000}}));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Changed()[4], 3);
}

TEST_F(ChartProperties, LabelCode_MovesFurtherOnASecondCall) {
  ChartBuilder book = OneChart();
  LoadChart(book.Chart().Low(0x0C, U16(0x10)).Low(0x19));
  Set({{3, 0}, {4, 0}, {9, 0}});
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Changed()[9], 2);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Changed()[9], 3);  // by the PIE of the first call the chart is round now
}

TEST_F(ChartProperties, SizeTakesTheIntegerPart) {
  ChartBuilder book = OneChart();
  LoadChart(book.Chart(300, -3));
  Set({});
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Changed(), (Values{{1, 0}, {2, 0}, {13, 6000}, {14, -60}}));
}

TEST_F(ChartProperties, Size_IsNotCutToSixteenBits) {
  ChartBuilder book = OneChart();
  LoadChart(book.Chart(32767, -32768));
  Set({});
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Changed(), (Values{{1, 0}, {2, 0}, {13, 655340}, {14, -655360}}));
}

TEST_F(ChartProperties, Width_IsSigned) {
  ChartBuilder book = OneChart();
  LoadChart(book.Chart(-1, 0x1234));
  Set({});
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Changed(), (Values{{1, 0}, {2, 0}, {13, -20}, {14, 93200}}));
}

TEST_F(ChartProperties, ThreeD_SetsTheFamilyUnlessTheChartIsRound) {
  EXPECT_EQ(AfterRecord(0x3A, Bytes(14), {{3, 0}}), (Values{{3, 0}, {5, 3}}));
  EXPECT_EQ(AfterRecord(0x3A, Bytes(14), {{3, 1}}), (Values{{3, 1}}));
  EXPECT_EQ(AfterRecord(0x3A, Bytes(14), {{3, -1}}), (Values{{3, -1}}));
}

TEST_F(ChartProperties, ThreeD_InABarChart_TheBarBehindItLeavesTheFamily) {
  ChartBuilder book = OneChart();
  EXPECT_EQ(After(book.Chart().Low(0x3A).Low(0x17, Bytes(6)), {{3, 0}, {5, 1}}),
            (Values{{3, 0}, {5, 3}, {6, 0}, {10, 1}}));
  book = OneChart();
  EXPECT_EQ(After(book.Chart().Low(0x19).Low(0x3A), {{3, 0}, {4, 2}}), (Values{{3, 1}, {4, 2}, {5, 2}}));
}

TEST_F(ChartProperties, Area_TellsItsStacking) {
  EXPECT_EQ(AfterRecord(0x1A, U16(0x0002), {}), (Values{{6, 1}, {7, 2}}));
  EXPECT_EQ(AfterRecord(0x1A, U16(0x02FD), {{4, 5}}), (Values{{4, 5}, {6, 0}}));
}

constexpr struct {
  uint8_t flags;
  int32_t round, family;
  int64_t bars, stacked, after;
} kBars[] = {{0x00, 0, 0, 1, 0, 0}, {0x01, 0, 1, 4, 0, 0},  {0x04, 0, 2, 1, 1, 2}, {0xFF, 0, 3, 4, 1, 3},
             {0xFA, 1, 0, 1, 0, 0}, {0x05, 1, 1, 4, 1, 2},  {0x02, 1, 2, 1, 0, 2}, {0x00, 1, 3, 1, 0, 2},
             {0x00, 7, 5, 1, 0, 2}, {0x00, -1, -3, 1, 0, 2}};

TEST_F(ChartProperties, Bar) {
  for (const auto& row : kBars) {
    Values expected = {{3, row.round}, {5, row.after}, {6, row.stacked}, {10, row.bars}};
    if (row.stacked == 1) expected[7] = 2;
    EXPECT_EQ(AfterRecord(0x17, Bytes{0, 0, 0, 0, row.flags, 0}, {{3, row.round}, {5, row.family}}), expected)
        << int{row.flags} << ", " << row.round << ", " << row.family;
  }
}

TEST_F(ChartProperties, Line_ReadsTheLengthOfTheRecordBehindIt) {
  for (uint16_t length : {uint16_t{0}, uint16_t{2}, uint16_t{5}, uint16_t{6}, uint16_t{0x0200}}) {
    ChartBuilder book = OneChart();
    Values expected = {{5, 0}, {6, 0}, {20, 1}};
    if ((length & 2) != 0) expected[6] = 1;
    if ((length & 2) != 0) expected[7] = 2;
    EXPECT_EQ(After(book.Chart().Low(0x18, U16(0xFFFF)).Low(0x06, Bytes(length)), {}), expected) << length;
  }
}

TEST_F(ChartProperties, Pie_RaisesTheVariantOnce) {
  for (int32_t x : {-5, 0, 1})
    EXPECT_EQ(AfterRecord(0x19, {}, {{4, x}}), (Values{{3, 1}, {4, x + 2}, {5, 2}}));
  for (int32_t x : {2, 3, 9}) EXPECT_EQ(AfterRecord(0x19, {}, {{4, x}}), (Values{{3, 1}, {4, x}, {5, 2}}));
}

TEST_F(ChartProperties, Radar_LowersTheVariant_AndMakesTheLabelCodeOddOrEven) {
  for (uint8_t low : {uint8_t{0x3E}, uint8_t{0x40}}) {
    EXPECT_EQ(AfterRecord(low, U16(1), {{4, 3}, {9, 4}}), (Values{{3, 1}, {4, 1}, {5, 1}, {9, 5}}));
    EXPECT_EQ(AfterRecord(low, U16(1), {{4, 1}, {9, 5}}), (Values{{3, 1}, {4, 1}, {5, 1}, {9, 5}}));
    EXPECT_EQ(AfterRecord(low, U16(0xFFFE), {{4, 2}, {9, 5}}), (Values{{3, 1}, {4, 0}, {5, 1}, {9, 4}}));
    EXPECT_EQ(AfterRecord(low, U16(0), {{4, -1}, {9, 4}}), (Values{{3, 1}, {4, -1}, {5, 1}, {9, 4}}));
  }
}

constexpr struct {
  uint8_t flags;
  int32_t before;
  int64_t after, stacked;
} kVariants[] = {{0x00, 0, 0, 0}, {0x00, 1, 1, 0}, {0x00, 2, 0, 0}, {0x00, 5, 3, 0},
                 {0x01, 0, 2, 0}, {0x01, 1, 3, 0}, {0x01, 2, 2, 0}, {0x01, 5, 5, 0},
                 {0x02, 3, 1, 1}, {0x03, 0, 2, 1}, {0xFC, 2, 0, 0}, {0x01, -9, -7, 0}};

TEST_F(ChartProperties, Surface_AndScatter_MoveTheVariantByTheirFlag) {
  for (const auto& row : kVariants) {
    Values expected = {{4, row.after}, {6, row.stacked}};
    if (row.stacked == 1) expected[7] = 2;
    EXPECT_EQ(AfterRecord(0x3F, U16(row.flags), {{4, row.before}}), expected)
        << int{row.flags} << ", " << row.before;
    expected[5] = 0;
    EXPECT_EQ(AfterRecord(0x1B, U16(0xFFFF) + U16(0xFFFF) + U16(row.flags), {{4, row.before}}), expected)
        << int{row.flags} << ", " << row.before;
  }
}

TEST_F(ChartProperties, ScatterWithoutABody_ReadsThePayloadOfTheRecordBehindIt) {
  ChartBuilder book = OneChart();
  EXPECT_EQ(After(book.Chart().Low(0x1B).Low(0x06, Bytes{3}), {{4, 0}}),
            (Values{{4, 2}, {5, 0}, {6, 1}, {7, 2}}));
}

// Property 9 before and after, for the flag clear and set, in a round chart and another.
constexpr struct {
  int32_t x;
  int64_t round_clear, clear, round_set, set;
} kLabels[] = {{-1, -2, -1, -1, -1}, {0, 0, 0, 1, 2}, {1, 0, 3, 1, 1}, {2, 2, 0, 3, 2}, {3, 2, 3, 3, 1},
               {4, 4, 5, 5, 4},      {5, 4, 5, 5, 4}, {6, 6, 7, 7, 6}, {7, 6, 7, 7, 6}, {8, 8, 8, 9, 8}};

TEST_F(ChartProperties, AttachedLabel) {
  for (const auto& row : kLabels) {
    for (int32_t round : {0, 1, 2}) {
      const int64_t clear = round == 1 ? row.round_clear : row.clear;
      const int64_t set = round == 1 ? row.round_set : row.set;
      const Values before = {{3, round}, {9, row.x}};
      EXPECT_EQ(AfterRecord(0x0C, U16(0xFFEF), before), (Values{{3, round}, {9, clear}}))
          << row.x << ", " << round;
      EXPECT_EQ(AfterRecord(0x0C, U16(0x0010), before), (Values{{3, round}, {9, set}}))
          << row.x << ", " << round;
    }
  }
}

TEST_F(ChartProperties, Legend) {
  EXPECT_EQ(AfterRecord(0x15, Bytes(16) + Bytes{2}, {}), (Values{{18, 1}, {19, 1}}));
  for (uint8_t place : {uint8_t{0}, uint8_t{1}, uint8_t{3}})
    EXPECT_EQ(AfterRecord(0x15, Bytes(16) + Bytes{place}, {}), (Values{{19, 1}}));
}

TEST_F(ChartProperties, RecordsWithoutAHandler_AndPlainOnes_DoNothing) {
  ChartBuilder book = OneChart();
  book.Chart();
  for (uint16_t low = 0; low < 0x100; ++low) {
    if (low != 0x09 && low != 0x0A) book.Record(low, Bytes(20, 0xFF));
  }
  for (uint8_t low : {uint8_t{0x00}, uint8_t{0x04}, uint8_t{0x0B}, uint8_t{0x14}, uint8_t{0x1C},
                      uint8_t{0x41}, uint8_t{0xFF}})
    book.Low(low, Bytes(20, 0xFF));
  EXPECT_EQ(After(book, {}), Values{});
}

TEST_F(ChartProperties, ArrayOfFewerElements_LosesTheOthers_WhichReadAsZero) {
  ChartBuilder book = OneChart();
  LoadChart(book.Chart().Low(0x3A).Low(0x19));
  TestArray some(VT_I4, 4, 5);
  some.SetNumber(4, 0, 1);
  EXPECT_EQ(XLGetChartData(some.Ref(), buffer_, table_, 1, 1), 0);
  EXPECT_EQ(some.NumberAt(4), 3);
  EXPECT_EQ(some.NumberAt(5), 2);
  TestArray square(VT_I4, 1, 30, 1, 2);
  EXPECT_EQ(XLGetChartData(square.Ref(), buffer_, table_, 1, 1), 0);
  EXPECT_EQ(square.NumberAt(5, 1), 0);
}

}  // namespace
