// Series cells: which AI records count, how their tokens become packed cells, and in which order.
#include "chart/series_cells.h"

#include "chart/series_tokens.h"
#include "support/chart_fixture.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class SeriesCells : public ChartTest {
 protected:
  int16_t Read(int16_t chart = 1) { return XLGetGraphData(cells_.Ref(), buffer_, table_, 1, chart); }
  // The items of a series up to the first empty one.
  std::vector<int64_t> Items(LONG series) {
    std::vector<int64_t> items;
    for (LONG item = 1; item <= 12 && cells_.NumberAt(series, item) != 0; ++item)
      items.push_back(static_cast<uint32_t>(cells_.NumberAt(series, item)));
    return items;
  }
  // A chart of one series with these tokens as its values.
  void LoadValues(const Bytes& tokens) {
    ChartBuilder book = OneChart();
    LoadChart(book.Chart().Begin().Series(1).Begin().Ai(1, tokens).End().End());
  }

  TestArray cells_{VT_I4, 1, 3, 1, 12};
};

using Expected = std::vector<int64_t>;

// Sheet, row's low byte, row's high byte, column, from the lowest byte on, plus 1.
constexpr struct {
  uint32_t sheet, row, column, packed;
} kPacked[] = {{0, 0, 0, 0x00000001},     {1, 2, 3, 0x03000202},        {0x102, 0x1234, 0x56, 0x56123403},
               {0xFF, 0, 0, 0x00000100},  {0, 0x3FFF, 255, 0xFF3FFF01}, {0xFF, 0xFF, 0, 0x00010000},
               {0, 0xC005, 0, 0x00000501}};

TEST_F(SeriesCells, PackedCell_IsFourBytesAndOne) {
  for (const auto& row : kPacked)
    EXPECT_EQ(PackedCell(row.sheet, row.row, row.column), row.packed) << std::hex << row.packed;
}

TEST_F(SeriesCells, Area_ComesCellByCell_ColumnsFastest) {
  LoadValues(Area3d(0, 0, {1, 2, 0, 1}));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x00000101, 0x01000101, 0x00000201, 0x01000201}));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SeriesCells, Area_SheetsAreOutermost) {
  LoadValues(Area3d(2, 3, {7, 8, 4, 4}));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x04000703, 0x04000803, 0x04000704, 0x04000804}));
}

TEST_F(SeriesCells, RowFlags_AreMaskedOff) {
  LoadValues(Area3d(0, 0, {0xC001, 0x8002, 3, 3}) + Ref3d(0, 0xC123, 9));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x03000101, 0x03000201, 0x09012301}));
}

TEST_F(SeriesCells, Reference_GivesOneCellASheet) {
  LoadValues(Ref3d(1, 3, 0x0204, 5));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x05020402, 0x05020403, 0x05020404}));
}

TEST_F(SeriesCells, DeletedSheet_KeepsItsLowByte) {
  LoadValues(Ref3d(0xFFFF, 0xFFFF, 1, 2));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x02000200}));
}

TEST_F(SeriesCells, EndsTheWrongWayRound_GiveNothing) {
  LoadValues(Ref3d(3, 2, 1, 1) + Area3d(0, 0, {5, 4, 0, 0}) + Area3d(0, 0, {4, 4, 1, 0}) + Ref3d(0, 9, 0));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x00000901}));
}

TEST_F(SeriesCells, OtherClassesOfTheTokens_AreSteppedOver) {
  for (uint8_t id : {uint8_t{0x5A}, uint8_t{0x7A}}) {
    Bytes other = Ref3d(0, 1, 1);
    other[0] = id;
    LoadValues(other + Ref3d(0, 2, 2));
    EXPECT_EQ(Read(), 0);
    EXPECT_EQ(Items(1), (Expected{0x02000201})) << int{id};
    MEMORYFREEALL();
  }
}

TEST_F(SeriesCells, Items_RunOnThroughTheTokensOfAnAi) {
  // ptgMemFunc in front, a union operator behind.
  LoadValues(Bytes{0x29, 0x25, 0} + Ref3d(0, 1, 1) + Area3d(0, 0, {2, 3, 1, 1}) + Bytes{0x10});
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x01000101, 0x01000201, 0x01000301}));
}

TEST_F(SeriesCells, VariableToken_CountsOneByte_UnknownTwo) {
  // A text token of variable size: its own bytes are then taken for tokens.
  LoadValues(Bytes{0x17} + Ref3d(0, 1, 1));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x01000101}));
  MEMORYFREEALL();
  LoadValues(Bytes{0x18, 0x17} + Ref3d(0, 2, 1) + Bytes{0xFF, 0x3A} + Ref3d(0, 3, 1));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x01000201, 0x01000301}));
}

TEST_F(SeriesCells, OnlyKindOneDirectlyInASeries) {
  ChartBuilder book = OneChart();
  const Bytes cell = Ref3d(0, 1, 1);
  book.Chart().Begin().Ai(1, cell).Series(1).Begin().Ai(0, cell).Ai(2, cell).Low(0x06).Begin();
  LoadChart(book.Ai(1, cell).End().End().Ai(1, cell).Low(0x25).Begin().Ai(1, cell).End().End());
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), Expected{});
}

// Charts keep the values that they show as cells: NUMBER records, of SERIES' low byte.
TEST_F(SeriesCells, PlainRecordsOfTheSameLowBytes_AreNotTaken) {
  const Bytes tokens = Ref3d(0, 9, 9);
  ChartBuilder book = OneChart();
  book.Chart().Begin().Record(0x0203, Bytes(14)).Series(1).Begin().Ai(1, Ref3d(0, 1, 1));
  book.Record(0x0051, Bytes{1, 2, 0, 0, 0, 0} + U16(static_cast<uint16_t>(tokens.size())) + tokens);
  LoadChart(book.End().End());
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x01000101}));
  EXPECT_EQ(Items(2), Expected{});
}

TEST_F(SeriesCells, SeriesCountFromOne_AndAnAiBeginsAnew) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().Ai(0, {}).Ai(1, Ref3d(0, 1, 0)).End();
  book.Series(1).Begin().Ai(1, Area3d(0, 0, {1, 2, 1, 1})).Ai(1, Ref3d(0, 8, 1)).End();
  LoadChart(book.Series(1).Begin().End().End());
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x00000101}));
  EXPECT_EQ(Items(2), (Expected{0x01000801, 0x01000201}));
  EXPECT_EQ(Items(3), Expected{});
}

TEST_F(SeriesCells, SeriesWithoutBegin_MakesTheBlockAroundItASeries) {
  ChartBuilder book = OneChart();
  LoadChart(book.Chart().Begin().Series(1).Ai(1, Ref3d(0, 1, 1)).End());
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x01000101}));
}

TEST_F(SeriesCells, SeriesWithNothingOpen_BecomesTheDepth) {
  ChartBuilder book = OneChart();
  book.Chart().Series(1).Ai(1, Ref3d(0, 1, 1));
  for (int i = 0; i < 13; ++i) book.End();
  LoadChart(book);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), Expected{});
}

TEST_F(SeriesCells, SecondChart) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().Ai(1, Ref3d(0, 1, 1)).End().End().Close().Open();
  LoadChart(book.Chart().Begin().Series(1).Begin().Ai(1, Ref3d(0, 2, 1)).End().End());
  EXPECT_EQ(Read(2), 0);
  EXPECT_EQ(Items(1), (Expected{0x01000201}));
}

TEST_F(SeriesCells, ExtraEnd_IsOneHundred_AndItsBlockStays) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().Ai(1, Ref3d(0, 1, 1)).End().End().End();
  LoadChart(book.Series(1).Begin().Ai(1, Ref3d(0, 2, 1)).End());
  EXPECT_EQ(Read(), 100);
  EXPECT_EQ(Items(1), (Expected{0x01000101}));
  EXPECT_EQ(Items(2), Expected{});
  EXPECT_EQ(LiveBlocks(), 3u);
  EXPECT_EQ(BytesInUse(), size_ + MEMORYSIZE(table_) + 120);
  for (int calls = 0; calls < 6; ++calls) EXPECT_EQ(Read(), 100);
  EXPECT_EQ(Read(), 10);
}

TEST_F(SeriesCells, NotFound_LeavesArrayAndPool) {
  LoadValues(Ref3d(0, 1, 1));
  cells_.SetNumber(1, 1, 77);
  EXPECT_EQ(Read(2), 9);
  EXPECT_EQ(Items(1), (Expected{77}));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SeriesCells, ElementsOutsideTheArray_AreLost) {
  ChartBuilder book = OneChart();
  book.Chart().Begin();
  for (int i = 0; i < 4; ++i) book.Series(1).Begin().Ai(1, Area3d(0, 0, {0, 99, 0, 0})).End();
  LoadChart(book.End());
  TestArray from_two(VT_I4, 2, 3, 99, 100);
  EXPECT_EQ(XLGetGraphData(from_two.Ref(), buffer_, table_, 1, 1), 0);
  EXPECT_EQ(from_two.NumberAt(2, 99), 0x6201);
  EXPECT_EQ(from_two.NumberAt(3, 100), 0x6301);
}

TEST_F(SeriesCells, ArrayOfOneElement_TakesTheFirstCell) {
  LoadValues(Area3d(0, 0, {5, 9, 1, 1}));
  TestArray one(VT_I4, 1, 1, 1, 1);
  EXPECT_EQ(XLGetGraphData(one.Ref(), buffer_, table_, 1, 1), 0);
  EXPECT_EQ(one.NumberAt(1, 1), 0x01000501);
}

TEST_F(SeriesCells, HugeAreas_EndWithTheArray) {
  Bytes tokens;
  for (int i = 0; i < 3000; ++i) tokens = tokens + Area3d(0, 0xFFFF, {0, 0x3FFF, 0, 255});
  LoadValues(tokens);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1).size(), 12u);
  EXPECT_EQ(cells_.NumberAt(1, 12), 0x0B000001);
}

// Rows or columns the wrong way round leave nothing to write. Going through the sheets and rows of these for want of
// a cell would take hours.
TEST_F(SeriesCells, HugeAreasWithoutCells_AreNotGoneThrough) {
  Bytes tokens;
  for (int i = 0; i < 1500; ++i) tokens = tokens + Area3d(0, 0xFFFF, {0, 0x3FFF, 5, 4});
  for (int i = 0; i < 1500; ++i) tokens = tokens + Area3d(0, 0xFFFF, {9, 8, 0, 255});
  LoadValues(tokens + Ref3d(0, 7, 1));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x01000701}));
}

TEST_F(SeriesCells, ValuesToldAgain_Overwrite) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin();
  for (uint16_t ai = 0; ai < 9; ++ai) book.Ai(1, Area3d(0, 0, {ai, 99, 1, 1}));
  LoadChart(book.End().End());
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1)[0], 0x01000801);
  EXPECT_EQ(Items(1)[11], 0x01001301);
}

// A million puts and twice the array's elements, and no more. Here 1000 values are told 2000 times.
TEST_F(SeriesCells, ValuesToldWithoutEnd_EndWithTheBudget) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin();
  for (uint16_t ai = 0; ai < 2000; ++ai) {
    const auto column = static_cast<uint8_t>(ai);
    book.Ai(1, Area3d(0, 0, {0, 999, column, column}));
  }
  LoadChart(book.End().End());
  TestArray line(VT_I4, 1, 1, 1, 1000);
  EXPECT_EQ(XLGetGraphData(line.Ref(), buffer_, table_, 1, 1), 0);
  EXPECT_EQ(line.NumberAt(1, 1), 0x1A000001);  // of the 1051st
  EXPECT_EQ(line.NumberAt(1, 576), 0x1A023F01);
  EXPECT_EQ(line.NumberAt(1, 577), 0x19024001);
}

TEST_F(SeriesCells, WhatStandsBehindTheFormula_IsNoPartOfIt) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().Low(0x51, Bytes{1, 2, 0, 0, 0, 0, 1, 0, 0x03} + Ref3d(0, 1, 1));
  LoadChart(book.Low(0x51, Bytes{1, 2, 0, 0, 0, 0, 0, 0} + Ref3d(0, 1, 1)).End().End());
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), Expected{});
}

// Two million values: each series tells all of its own once.
TEST_F(SeriesCells, LargeAreas_ArePutWhole) {
  constexpr LONG kSeries = 255, kValues = 8000;
  ChartBuilder book = OneChart();
  book.Chart().Begin();
  for (int i = 0; i < kSeries; ++i) book.Series(1).Begin().Ai(1, Area3d(0, 0, {0, kValues - 1, 3, 3})).End();
  LoadChart(book.End());
  TestArray all(VT_I4, 1, kSeries, 1, kValues);
  EXPECT_EQ(XLGetGraphData(all.Ref(), buffer_, table_, 1, 1), 0);
  EXPECT_EQ(all.NumberAt(1, kValues), 0x031F3F01);
  EXPECT_EQ(all.NumberAt(kSeries, 1), 0x03000001);
  EXPECT_EQ(all.NumberAt(kSeries, kValues), 0x031F3F01);
}

// A million and a half tokens, and as many of other kinds of data.
TEST_F(SeriesCells, FormulasOfManyTokens_ArePutWhole) {
  constexpr LONG kSeries = 255, kValues = 4000;
  Bytes tokens;
  for (uint16_t row = 0; row < kValues; ++row)
    tokens = tokens + Ref3d(0, row, 3) + (row == 0 ? Bytes{} : Bytes{0x10});
  tokens.resize(60000);  // 3158 references, the last of them cut
  ChartBuilder book = OneChart();
  book.Chart().Begin();
  for (int i = 0; i < kSeries; ++i) book.Series(1).Begin().Ai(0, tokens).Ai(1, tokens).Ai(2, tokens).End();
  LoadChart(book.End());
  TestArray all(VT_I4, 1, kSeries, 1, kValues);
  EXPECT_EQ(XLGetGraphData(all.Ref(), buffer_, table_, 1, 1), 0);
  for (LONG series : {1, 2, 254, 255}) {
    EXPECT_EQ(all.NumberAt(series, 1), 0x03000001) << series;
    EXPECT_EQ(all.NumberAt(series, 3000), 0x030BB701) << series;
  }
}

TEST_F(SeriesCells, ArrayOfOtherShape_TakesNothing) {
  LoadValues(Ref3d(0, 1, 1));
  TestArray line(VT_I4, 1, 3);
  EXPECT_EQ(XLGetGraphData(line.Ref(), buffer_, table_, 1, 1), 0);
  EXPECT_EQ(Numbers(line, 3), (std::vector<int64_t>{0, 0, 0}));
  SAFEARRAYBOUND bounds[3] = {{3, 1}, {3, 1}, {3, 1}};
  SAFEARRAY* cube = SafeArrayCreate(VT_I4, 3, bounds);
  EXPECT_EQ(XLGetGraphData(&cube, buffer_, table_, 1, 1), 0);
  EXPECT_EQ(SafeArrayDestroy(cube), S_OK);
}

TEST_F(SeriesCells, TokenOfBiff8_TakesWhatStandsBehindIt) {
  // 7 bytes of a BIFF8 reference; the fields of BIFF5 lie in the record behind: header and payload.
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().Ai(1, {0x3A, 0, 0, 9, 0, 1, 0});
  LoadChart(book.Low(0x45, U16(5) + U16(5) + U16(0x0304) + Bytes{6}).End().End());
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Items(1), (Expected{0x06030406}));
}

// Its sheets, row and column lie in the EOF behind the two ENDs, and in the header of the record behind that.
TEST_F(SeriesCells, LastByteOfAFormula_MayBeAToken) {
  LoadValues({0x03, 0x3A});
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(cells_.NumberAt(1, 1), 0x00000A01);
}

TEST_F(SeriesCells, TokensThatRunPastTheBlock_End) {
  LoadValues(Ref3d(0, 1, 1));
  const uint32_t extent = Stream().extent;
  for (uint32_t room : {12u, 13u, 24u, 29u, 30u}) {
    // The record is laid at the very end of the block, and claims all that a formula can have.
    const uint32_t at = extent - room;
    const Bytes record = Bytes{0x51, 0x10, 0, 0, 1, 0, 0, 0, 0, 0, 0xFF, 0xFF} + Ref3d(0, 1, 1);
    CopyIn(Stream(), at, record.data(), static_cast<uint32_t>(record.size()));
    Effort effort = EffortFor(Stream());
    int areas = 0;
    ForEachCellArea(Stream(), at, &effort, [&](const CellArea&) { ++areas; });
    EXPECT_EQ(areas, room > 12 ? 1 : 0) << room;
  }
}

}  // namespace
