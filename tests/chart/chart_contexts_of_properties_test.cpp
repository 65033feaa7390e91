// Chart properties that depend on where a record stands: contexts, objects, counts.
#include "chart/chart_properties.h"
#include "chart/record_handlers.h"
#include "support/chart_fixture.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class ContextProperties : public ChartTest {
 protected:
  int64_t Property(LONG index) { return static_cast<int32_t>(properties_.NumberAt(index)); }
  int16_t Read(int16_t chart = 1) { return XLGetChartData(properties_.Ref(), buffer_, table_, 1, chart); }
  // Reads a chart of these records into a new array of zeros.
  void ReadChart(ChartBuilder& records, int16_t result = 0) {
    LoadChart(records);
    Fill(properties_, 21, 0);
    EXPECT_EQ(Read(), result);
  }

  TestArray properties_{VT_I4, 1, 21};
};

TEST_F(ContextProperties, Background_IsThatOfAnAreaFormatDirectlyInTheChart) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Low(0x32).Begin().AreaFormat(3, 4, 1).End();
  ReadChart(book.AreaFormat(5, 0xFFC0C0C0, 0).Low(0x1D, Bytes(18)).Begin().AreaFormat(7, 8, 1).End().End());
  EXPECT_EQ(static_cast<uint32_t>(Property(8)), 0xFFC0C0C0u);
}

TEST_F(ContextProperties, Background_OutsideTheChartsBlock_IsNone) {
  ChartBuilder book = OneChart();
  ReadChart(book.Chart().AreaFormat(1, 2, 1).Begin().End().AreaFormat(3, 4, 1));
  EXPECT_EQ(Property(8), 0);
}

TEST_F(ContextProperties, FontsByTheBlockAroundTheirText) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().TextRecord(0).Begin().FontX(5).End();
  book.Low(0x15, Bytes(20)).Begin().TextRecord(0).Begin().FontX(0xFFFE).End().End();
  ReadChart(book.Low(0x32).Begin().TextRecord(0).Begin().FontX(7).End().End().End());
  EXPECT_EQ(Property(15), 5);
  EXPECT_EQ(Property(16), -2);
  EXPECT_EQ(Property(17), 7);
}

TEST_F(ContextProperties, FontWithNothingAround_IsAnyOther) {
  ChartBuilder book = OneChart();
  ReadChart(book.Chart().FontX(3).Begin().FontX(4).End());
  EXPECT_EQ(Property(15), 0);
  EXPECT_EQ(Property(16), 0);
  EXPECT_EQ(Property(17), 4);
}

// At depth 5 or 7 the cell below the first open one would be the depth; it never is: the depth is 1 there.
TEST_F(ContextProperties, ChartInsideAChartBlock_IsAContextOfItsOwn) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Chart(7, 8).Begin().AreaFormat(1, 2, 1).End().FontX(6).End();
  ReadChart(book);
  EXPECT_EQ(Property(13), 140);
  EXPECT_EQ(Property(8), 2);
  EXPECT_EQ(Property(17), 6);
}

constexpr struct {
  const char* label;
  uint8_t low;
  bool context;
} kOwners[] = {{"3D", 0x3A, true},     {"AREA", 0x1A, true},      {"CHART", 0x02, true},
               {"LEGEND", 0x15, true}, {"LINE", 0x18, true},      {"SCATTER", 0x1B, true},
               {"BAR", 0x17, true},    {"PIE", 0x19, true},       {"RADAR", 0x3E, true},
               {"SERIES", 0x03, true}, {"RADARAREA", 0x40, true}, {"SURFACE", 0x3F, true},
               {"TEXT", 0x25, false},  {"AXIS", 0x1D, false},     {"AREAFORMAT", 0x0A, false}};

// The context is seen by a CHART block around it: with a looser BEGIN behind it, which opens no cell, a record
// overwrites the context of the block that it stands in, so that an AREAFORMAT no longer stands in a CHART.
TEST_F(ContextProperties, LooserBegin_SetsTheContextOfTheBlockAround) {
  for (const auto& owner : kOwners) {
    ChartBuilder book = OneChart();
    book.Chart().Begin().Low(owner.low, Bytes(24)).Record(0x1133).AreaFormat(1, 2, 1).End();
    ReadChart(book);
    const bool still_chart = !owner.context || owner.low == 0x02;
    EXPECT_EQ(Property(8), still_chart ? 2 : 0) << owner.label;
    MEMORYFREEALL();
  }
}

// The value that each handler leaves in the cell of its BEGIN. Only 5, 7 and 13 are ever read.
TEST_F(ContextProperties, EveryOwnerHasItsContext) {
  constexpr struct {
    uint8_t low;
    uint16_t context;
  } rows[] = {{0x3A, 3},      {0x1A, 4},      {0x02, 5},      {0x15, 7},      {0x18, 8},      {0x1B, 8},
              {0x17, 9},      {0x19, 10},     {0x3E, 11},     {0x40, 11},     {0x3F, 12},     {0x03, 13},
              {0x1D, 0xFFFF}, {0x25, 0xFFFF}, {0x0A, 0xFFFF}, {0x0C, 0xFFFF}, {0x26, 0xFFFF}, {0x51, 0xFFFF}};
  for (const auto& row : rows) {
    uint32_t size = 0;
    const uint32_t stream =
        StreamBuilder().Record(static_cast<uint16_t>(0x1000 | row.low)).Record(0x1033).Load(&size);
    ChartReading reading = {OpenBlock(stream), ContextCells(NewContextStack()), properties_.Get(), {100}};
    PushContext(reading.cells);
    HandleChartRecord(&reading, 0);
    EXPECT_EQ(CurrentContext(reading.cells), row.context) << int{row.low};
    EXPECT_EQ(Depth(reading.cells), 1u);
    MEMORYFREEALL();
  }
}

TEST_F(ContextProperties, RecordWithoutBegin_LeavesTheContextAround) {
  for (const auto& owner : kOwners) {
    ChartBuilder book = OneChart();
    book.Chart().Begin().Low(owner.low, Bytes(24)).AreaFormat(1, 2, 1).End();
    ReadChart(book);
    EXPECT_EQ(Property(8), 2) << owner.label;
    MEMORYFREEALL();
  }
}

TEST_F(ContextProperties, Axis_HasAContextOnlyWhenTheHighByteOfItsLengthIsOne) {
  for (uint16_t length : {uint16_t{18}, uint16_t{0x0100}, uint16_t{0x01FF}, uint16_t{0x0200}}) {
    ChartBuilder book = OneChart();
    book.Chart().Begin().Low(0x1D, Bytes(length)).Record(0x1133).AreaFormat(1, 2, 1).End();
    ReadChart(book);
    EXPECT_EQ(Property(8), (length >> 8) == 1 ? 0 : 2) << length;
    MEMORYFREEALL();
  }
}

TEST_F(ContextProperties, LongAxisWithoutBegin_LeavesTheContextAround) {
  ChartBuilder book = OneChart();
  ReadChart(book.Chart().Begin().Low(0x1D, Bytes(0x100)).AreaFormat(1, 2, 1).End());
  EXPECT_EQ(Property(8), 2);
}

TEST_F(ContextProperties, LongAxis_HasContextSix) {
  uint32_t size = 0;
  const uint32_t stream = StreamBuilder().Record(0x101D, Bytes(0x100)).Record(0x1033).Load(&size);
  ChartReading reading = {OpenBlock(stream), ContextCells(NewContextStack()), properties_.Get(), {100}};
  PushContext(reading.cells);
  HandleChartRecord(&reading, 0);
  EXPECT_EQ(CurrentContext(reading.cells), 6);
}

TEST_F(ContextProperties, LooserBeginBehindTheFirstChart_BecomesTheDepth) {
  ChartBuilder book = OneChart();
  book.Chart().Record(0x1133).End().End().End().End().End();
  ReadChart(book, 0);
  MEMORYFREEALL();
  book = OneChart();
  book.Chart().Record(0x1133).End().End().End().End().End().End();
  ReadChart(book, 100);
}

TEST_F(ContextProperties, SeriesAndTheirCategories) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(5).Begin().End().Series(9).Begin().End();
  ReadChart(book.Series(0x8000).Begin().End().End());
  EXPECT_EQ(Property(1), 9);
  EXPECT_EQ(Property(2), 3);
}

TEST_F(ContextProperties, CategoriesAreSixteenBits) {
  ChartBuilder book = OneChart();
  const Bytes categories_and_values = U16(1) + U16(1) + U16(0x1234) + U16(0x2000);
  ReadChart(book.Chart().Begin().Low(0x03, categories_and_values).Begin().End().Series(0x1233).End());
  EXPECT_EQ(Property(1), 0x1234);
}

TEST_F(ContextProperties, CellsOfTheValues_CountWhereTheyAreMore) {
  ChartBuilder book = OneChart();
  book.Chart()
      .Begin()
      .Series(5)
      .Begin()
      .Ai(1, Area3d(0, 0, {0xC001, 0x8004, 2, 3}) + Ref3d(4, 6, 1, 1))
      .End();
  ReadChart(book.Series(9).Begin().Ai(0, Area3d(0, 0, {1, 99, 1, 1})).Ai(1, {}).End().End());
  EXPECT_EQ(Property(1), 4 * 2 + 3);
  EXPECT_EQ(Property(2), 2);
}

TEST_F(ContextProperties, CellsAreCountedInSixteenBits_AndBackwardsAreasTakeAway) {
  ChartBuilder book = OneChart();
  const Bytes many = Area3d(0, 0, {0, 0x3FFF, 0, 3});  // 65536: none
  book.Chart().Begin().Series(1).Begin().Ai(1,
                                            many + Area3d(0, 0, {0, 9, 0, 0}) + Area3d(0, 0, {5, 1, 0, 0}));
  ReadChart(book.End().Series(1).Begin().Ai(1, Area3d(0, 0, {0, 0x3FFF, 0, 1})).End().End());
  EXPECT_EQ(Property(1), 10 - 3);  // and 32768 of the second series is negative
}

TEST_F(ContextProperties, NegativeCountOfCells_IsNotNoted) {
  ChartBuilder book = OneChart();
  const Bytes cells = Area3d(0, 0, {0, 0x3FFF, 0, 1}) + Ref3d(0, 6, 0, 0);  // 32768 and 7
  ReadChart(book.Chart().Begin().Series(0).Begin().Ai(1, cells).End().End());
  EXPECT_EQ(Property(1), 0);
}

TEST_F(ContextProperties, CellsAreSteppedLikeThoseOfTheGraph) {
  ChartBuilder book = OneChart();
  const Bytes tokens =
      Bytes{0x29, 0x24, 0} + Ref3d(0, 1, 1) + Bytes{0x17} + Ref3d(0, 1, 1) + Bytes{0xFF, 0x3A};
  ReadChart(book.Chart().Begin().Series(0).Begin().Ai(1, tokens + Ref3d(0, 1, 1) + Bytes{0x10}).End().End());
  EXPECT_EQ(Property(1), 3);
}

TEST_F(ContextProperties, ValuesOutsideASeries_AreNotCounted) {
  ChartBuilder book = OneChart();
  const Bytes cells = Area3d(0, 0, {1, 50, 1, 1});
  book.Chart().Begin().Ai(1, cells).Series(2).Ai(1, cells).Series(3).Begin().Low(0x06).Begin();
  ReadChart(book.Ai(1, cells).End().End().End());
  EXPECT_EQ(Property(1), 3);
}

TEST_F(ContextProperties, ObjectInFrontOfTheChart_TheLastOfAChartDecides) {
  ChartBuilder book;
  book.Worksheet().Obj(5, 1, 10, 11).Obj(5, 2, 20, 21).Obj(6, 3, 30, 31).Record(0x105D, Bytes(20, 5)).Open();
  ReadChart(book.Chart().Obj(5, 4, 40, 41));
  EXPECT_EQ(Property(11), 21);
  EXPECT_EQ(Property(12), 22);
  EXPECT_EQ(Property(21), 3);
}

TEST_F(ContextProperties, ObjectOfTheSecondChart_StandsBehindTheFirstOnesChart) {
  ChartBuilder book;
  book.Worksheet().Obj(5, 1, 10, 11).Open().Chart().Close().Obj(5, 2, 0xFFFF, 0x7FFF).Open().Chart().Close();
  Load(book.Obj(5, 3, 30, 31).EndSheet());
  EXPECT_EQ(Read(2), 0);
  EXPECT_EQ(Property(11), 0);
  EXPECT_EQ(Property(12), 32768);
  EXPECT_EQ(Property(21), 3);
  EXPECT_EQ(Read(1), 0);
  EXPECT_EQ(Property(11), 11);
  EXPECT_EQ(Property(21), 2);
}

TEST_F(ContextProperties, ObjectOfTheFirstChart_IsNoneOfTheSecond) {
  ChartBuilder book;
  book.Worksheet().Obj(5, 1, 10, 11).Open().Chart().Close().Open().Chart().Close();
  Load(book.EndSheet());
  EXPECT_EQ(Read(2), 0);
  EXPECT_EQ(Property(11), 0);
  EXPECT_EQ(Property(21), 0);
}

TEST_F(ContextProperties, KindOfTheObject_IsAByte) {
  ChartBuilder book;
  ReadChart(book.Worksheet().Obj(0x0105, 2, 20, 21).Open().Chart());
  EXPECT_EQ(Property(11), 21);
}

TEST_F(ContextProperties, FieldsOfTheObject_AreSigned) {
  ChartBuilder book;
  ReadChart(book.Worksheet().Obj(5, 0x8000, 0xFFFE, 0x80FF).Open().Chart());
  EXPECT_EQ(Property(11), -1);
  EXPECT_EQ(Property(12), -32512);
  EXPECT_EQ(Property(21), -32767);
}

TEST_F(ContextProperties, ChartThatIsNotThere_MayStillLeaveAnObject) {
  ChartBuilder book = OneChart();
  Load(book.Chart().Close().Obj(5, 2, 20, 21).EndSheet());
  EXPECT_EQ(Read(2), 9);
  EXPECT_EQ(Property(11), 21);
  EXPECT_EQ(Read(3), 9);
  EXPECT_EQ(Property(13), 0);
  EXPECT_EQ(LiveBlocks(), 2u);
}

// The first plain record of low byte 0x0A ends the chart, whatever its length, and in the middle of a block too.
TEST_F(ContextProperties, ChartEndsInFrontOfItsEof) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().Record(0x0A0A, Bytes(6)).Series(2).End().Low(0x19);
  ReadChart(book.End());
  EXPECT_EQ(Property(1), 1);
  EXPECT_EQ(Property(2), 1);
  EXPECT_EQ(Property(3), 0);
}

TEST_F(ContextProperties, ExtraEnd_KeepsWhatWasRead_WithoutTheCounts_AndItsBlockStays) {
  ChartBuilder book = OneChart();
  ReadChart(book.Chart().Series(7).Low(0x19).End().Low(0x18), 100);
  EXPECT_EQ(Property(5), 2);
  EXPECT_EQ(Property(20), 0);
  EXPECT_EQ(Property(1), 0);
  EXPECT_EQ(Property(2), 0);
  EXPECT_EQ(LiveBlocks(), 3u);
}

TEST_F(ContextProperties, StackThatReachesTheCounters_OverwritesThem) {
  const struct {
    int depth;
    int64_t series, categories;
  } rows[] = {{57, 1, 4}, {58, 0, 4}, {59, 0, 0}, {60, 0, 0}, {500, 0, 0}};
  for (const auto& row : rows) {
    ChartBuilder book = OneChart();
    book.Chart().Series(4);
    for (int i = 0; i < row.depth; ++i) book.Begin();
    for (int i = 0; i < row.depth; ++i) book.End();
    ReadChart(book);
    EXPECT_EQ(Property(2), row.series) << row.depth;
    EXPECT_EQ(Property(1), row.categories) << row.depth;
    EXPECT_EQ(LiveBlocks(), 2u);
    MEMORYFREEALL();
  }
}

TEST_F(ContextProperties, NothingBehindTheStackIsTouched) {
  ChartBuilder book = OneChart();
  book.Chart();
  for (int i = 0; i < 300; ++i) book.Low(0x19, Bytes(1)).Begin();
  book.FontX(1).AreaFormat(1, 2, 1);
  for (int i = 0; i < 300; ++i) book.End();
  // The stack takes the first slot: a pattern that an earlier block left there stays behind its 120 bytes.
  uint32_t earlier = MEMORYALLOC(256);
  ASSERT_EQ(MEMORYSET1(&earlier, 256, 0xEE), 256);
  const Block slot = OpenBlock(earlier);
  LoadChart(book);
  MEMORYFREE(&earlier);
  EXPECT_EQ(Read(), 0);
  for (uint32_t at = 120; at < 256; ++at) EXPECT_EQ(slot.base[at], 0xEE) << at;
}

}  // namespace
