// Row and column sizes: the ladder of checks, the units, the order of the stream, and the zoom.
#include "query/row_column_sizes.h"

#include <cmath>

#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

Bytes DefaultHeight(uint16_t height) {
  return U16(0) + U16(height);
}
Bytes RowPayload(uint16_t row, uint16_t height) {
  return U16(row) + U16(0) + U16(4) + U16(height) + Bytes(8);
}
Bytes ColInfo(uint16_t first, uint16_t last, uint16_t width) {
  return U16(first) + U16(last) + U16(width) + U16(0) + U16(0) + Bytes{0};
}

class RowColumnSizes : public BookTest {
 protected:
  RowColumnSizes() {
    for (LONG i = 1; i <= 4; ++i) sizes_.SetNumber(i, 0, 7);
  }
  std::vector<int> Values() {
    std::vector<int> values;
    for (LONG i = 1; i <= 4; ++i) values.push_back(static_cast<int16_t>(sizes_.NumberAt(i)));
    return values;
  }
  std::vector<int> Heights(StreamBuilder&& stream) {
    Load(stream.Eof());
    EXPECT_EQ(XLGetRowHeight(sizes_.Ref(), buffer_, table_, 1), 0);
    EXPECT_EQ(LiveBlocks(), 2u);
    return Values();
  }
  std::vector<int> Heights(StreamBuilder& stream) { return Heights(std::move(stream)); }
  std::vector<int> Widths(StreamBuilder&& stream) {
    Load(stream.Eof());
    EXPECT_EQ(XLGetColWidth(sizes_.Ref(), buffer_, table_, 1), 0);
    EXPECT_EQ(LiveBlocks(), 2u);
    return Values();
  }
  std::vector<int> Widths(StreamBuilder& stream) { return Widths(std::move(stream)); }
  double Zoom(StreamBuilder& stream, int16_t sheet = 1) {
    Load(stream.Eof());
    return XLGetMagnification(buffer_, table_, sheet);
  }
  void ExpectBoth(int16_t code, SAFEARRAY** array, uint32_t buffer, uint32_t table, int16_t sheet) {
    EXPECT_EQ(XLGetRowHeight(array, buffer, table, sheet), code);
    EXPECT_EQ(XLGetColWidth(array, buffer, table, sheet), code);
    EXPECT_EQ(Values(), (std::vector<int>{7, 7, 7, 7}));
  }

  TestArray sizes_{VT_I2, 1, 4};
};

using V = std::vector<int>;

TEST_F(RowColumnSizes, ChecksInTheirOrder) {
  Load(OneSheet().Record(0x0225, DefaultHeight(255)).Record(0x0055, U16(8)).Eof());
  TestArray two(VT_I2, 1, 4, 1, 4), from_zero(VT_I2, 0, 4), longer(VT_I2, 1, 5), shorter(VT_I2, 1, 3),
      from_two(VT_I2, 2, 4);
  SAFEARRAY* none = nullptr;
  ExpectBoth(1, two.Ref(), 0, 0, 9);
  ExpectBoth(3, two.Ref(), 0, table_, 1);
  for (int16_t sheet : {int16_t{0}, int16_t{2}, int16_t{-1}})
    ExpectBoth(3, two.Ref(), buffer_, table_, sheet);
  ExpectBoth(4, two.Ref(), buffer_, table_, 1);
  ExpectBoth(4, &none, buffer_, table_, 1);
  ExpectBoth(4, nullptr, buffer_, table_, 1);
  for (TestArray* array : {&from_zero, &from_two, &longer, &shorter})
    ExpectBoth(5, array->Ref(), buffer_, table_, 1);
  PutTableEntry(Table(), 0, 0xFFFE);
  ExpectBoth(2, sizes_.Ref(), buffer_, table_, -1);
  ExpectBoth(2, sizes_.Ref(), buffer_, table_, 0);
  ExpectBoth(3, sizes_.Ref(), buffer_, table_, -2);
  ExpectBoth(3, sizes_.Ref(), buffer_, table_, 1);
  PutTableEntry(Table(), 0, 0);
  ExpectBoth(1, sizes_.Ref(), buffer_, table_, 1);
}

TEST_F(RowColumnSizes, ChartSheet_HasNoHeights_ButAZoom) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("Chart").Eof().Bof(6, kChart).Dimensions(0, 4, 0, 4);
  EXPECT_EQ(Zoom(stream.Record(0x00A0, U16(3) + U16(4))), 0.75);
  ExpectBoth(3, sizes_.Ref(), buffer_, table_, 1);
}

TEST_F(RowColumnSizes, SheetThatSaysNothing_LeavesTheArrayAlone) {
  EXPECT_EQ(Heights(OneSheet()), (V{7, 7, 7, 7}));
  EXPECT_EQ(XLGetColWidth(sizes_.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(Values(), (V{7, 7, 7, 7}));
}

TEST_F(RowColumnSizes, HeightsAskForTheRows_WidthsForTheColumns) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, kWorksheet);
  Load(stream.Dimensions(0, 4, 0, 3).Eof());
  TestArray three(VT_I2, 1, 3);
  EXPECT_EQ(XLGetRowHeight(sizes_.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(XLGetRowHeight(three.Ref(), buffer_, table_, 1), 5);
  EXPECT_EQ(XLGetColWidth(sizes_.Ref(), buffer_, table_, 1), 5);
  EXPECT_EQ(XLGetColWidth(three.Ref(), buffer_, table_, 1), 0);
}

TEST_F(RowColumnSizes, EachSheetTellsItsOwn) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("One").Sheet("Two").Eof();
  for (uint16_t sheet : {uint16_t{1}, uint16_t{2}}) {
    stream.Bof(6, kWorksheet).Dimensions(0, 4, 0, 4).Record(0x0225, DefaultHeight(sheet));
    stream.Record(0x0055, U16(sheet)).Record(0x00A0, U16(sheet) + U16(4)).Eof();
  }
  Load(stream);
  for (int16_t sheet : {int16_t{1}, int16_t{2}}) {
    EXPECT_EQ(XLGetRowHeight(sizes_.Ref(), buffer_, table_, sheet), 0);
    EXPECT_EQ(Values(), V(4, sheet));
    EXPECT_EQ(XLGetColWidth(sizes_.Ref(), buffer_, table_, sheet), 0);
    EXPECT_EQ(Values(), V(4, sheet * 120));
    EXPECT_EQ(XLGetMagnification(buffer_, table_, sheet), sheet / 4.0);
  }
}

TEST_F(RowColumnSizes, RecordsOfAPatch_CountInTheirPlace) {
  Load(OneSheet().Record(0x0225, DefaultHeight(255)).Record(0x0208, RowPayload(1, 300)).Eof());
  uint32_t row = TableEntry(Table(), kTableFirstSheet);
  while (!IsPlain(Stream(), row, kLowRow)) row = NextRecord(Stream(), row);
  StreamBuilder patch = StreamBuilder().Record(0x0208, RowPayload(1, 400)).Record(0x0208, RowPayload(2, 500));
  patch.Record(0x007D, ColInfo(0, 0, 256)).Record(0x00A0, U16(3) + U16(4));
  ASSERT_EQ(PatchRecord(&buffer_, patch.Stream().data(), row, patch.Here(), &size_), 0);
  EXPECT_EQ(XLGetRowHeight(sizes_.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(Values(), (V{255, 301, 501, 255}));
  EXPECT_EQ(XLGetColWidth(sizes_.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(Values(), (V{120, 301, 501, 255}));
  EXPECT_EQ(XLGetMagnification(buffer_, table_, 1), 0.75);
}

TEST_F(RowColumnSizes, RowsHaveTheirHeightPlusOne_AndTheDefaultHasNot) {
  StreamBuilder stream = OneSheet().Record(0x0225, DefaultHeight(255)).Record(0x0208, RowPayload(1, 255));
  EXPECT_EQ(Heights(stream.Record(0x0208, RowPayload(2, 0x80FF))), (V{255, 256, -32512, 255}));
}

TEST_F(RowColumnSizes, DefaultHeight_IsThe16BitsBehindTheFlags) {
  EXPECT_EQ(Heights(OneSheet().Record(0x0225, U16(0x7777) + U16(0x8123))), (V(4, -0x7EDD)));
}

TEST_F(RowColumnSizes, LastRowOfARange_CanBe32767) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, kWorksheet);
  stream.Dimensions(0, 0x7FFF, 0, 0x7FFF)
      .Record(0x0225, DefaultHeight(255))
      .Record(0x0208, RowPayload(0x7FFE, 300));
  Load(stream.Record(0x0208, RowPayload(0x7FFF, 301)).Record(0x007D, ColInfo(0x7FFE, 0x7FFE, 256)).Eof());
  TestArray all(VT_I2, 1, 0x7FFF);
  EXPECT_EQ(XLGetRowHeight(all.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(all.NumberAt(0x7FFE), 255);
  EXPECT_EQ(all.NumberAt(0x7FFF), 301);
  EXPECT_EQ(XLGetColWidth(all.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(all.NumberAt(0x7FFF), 120);
}

TEST_F(RowColumnSizes, HighestHeight_WrapsIn16Bits) {
  EXPECT_EQ(Heights(OneSheet().Record(0x0208, RowPayload(0, 0xFFFF))), (V{0, 7, 7, 7}));
}

TEST_F(RowColumnSizes, RowsOutsideTheArray_AreDropped) {
  StreamBuilder stream =
      OneSheet().Record(0x0208, RowPayload(4, 300)).Record(0x0208, RowPayload(0xFFFF, 301));
  EXPECT_EQ(Heights(stream.Record(0x0208, RowPayload(3, 302))), (V{7, 7, 7, 303}));
}

TEST_F(RowColumnSizes, DefaultBehindARow_OverwritesIt) {
  StreamBuilder stream = OneSheet().Record(0x0208, RowPayload(1, 300)).Record(0x0225, DefaultHeight(240));
  EXPECT_EQ(Heights(stream), (V{240, 240, 240, 240}));
}

TEST_F(RowColumnSizes, EmbeddedSubstreams_Count_AndChartRecordsDoNot) {
  StreamBuilder stream = OneSheet().Bof(6, kChart).Record(0x0208, RowPayload(1, 300)).Eof();
  EXPECT_EQ(Heights(stream.Record(0x1008, RowPayload(2, 301))), (V{7, 301, 7, 7}));
}

TEST_F(RowColumnSizes, LastRowAbove32767_IsNegative_AndFitsNoArray) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, kWorksheet);
  Load(stream.Dimensions(0, 0x8000, 0, 0x8000).Eof());
  ExpectBoth(5, sizes_.Ref(), buffer_, table_, 1);
  TestArray all(VT_I2, 1, 0x8000);
  ExpectBoth(5, all.Ref(), buffer_, table_, 1);
}

TEST_F(RowColumnSizes, RangeThatEndsAtZero_TakesAnEmptyArray_AndWritesNothing) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, kWorksheet).Dimensions(0, 0, 0, 0);
  Load(stream.Record(0x0225, DefaultHeight(255)).Record(0x0055, U16(8)).Eof());
  TestArray none(VT_I2, 1, 0);
  ASSERT_NE(none.Get(), nullptr);
  ExpectBoth(0, none.Ref(), buffer_, table_, 1);
  ExpectBoth(5, sizes_.Ref(), buffer_, table_, 1);
}

TEST_F(RowColumnSizes, SheetWithoutDimensions_TakesAnyArrayFromOne) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, kWorksheet);
  EXPECT_EQ(Heights(stream.Record(0x0225, DefaultHeight(255))), (V{255, 255, 255, 255}));
  TestArray from_zero(VT_I2, 0, 4);
  EXPECT_EQ(XLGetRowHeight(from_zero.Ref(), buffer_, table_, 1), 5);
}

TEST_F(RowColumnSizes, DefaultWidth_Is120UnitsACharacter) {
  EXPECT_EQ(Widths(OneSheet().Record(0x0055, U16(8))), (V{960, 960, 960, 960}));
}

TEST_F(RowColumnSizes, DefaultWidth_Wraps) {
  // 600 x 120 = 72000.
  EXPECT_EQ(Widths(OneSheet().Record(0x0055, U16(600))), (V{6464, 6464, 6464, 6464}));
}

TEST_F(RowColumnSizes, ColInfoWidths) {
  StreamBuilder stream = OneSheet().Record(0x007D, ColInfo(0, 0, 256)).Record(0x007D, ColInfo(1, 1, 2560));
  stream.Record(0x007D, ColInfo(2, 2, 0xFFFF)).Record(0x007D, ColInfo(3, 3, 0x8000));
  EXPECT_EQ(Widths(stream), (V{120, 1200, 0, -15360}));
}

TEST_F(RowColumnSizes, ColInfoWidths_AreCutTowardZero) {
  StreamBuilder stream = OneSheet().Record(0x007D, ColInfo(0, 0, 2)).Record(0x007D, ColInfo(1, 1, 3));
  stream.Record(0x007D, ColInfo(2, 2, 0xFFFD)).Record(0x007D, ColInfo(3, 3, 0x7FFF));
  EXPECT_EQ(Widths(stream), (V{0, 1, -1, 15359}));
}

TEST_F(RowColumnSizes, DefaultWidthBehindAColInfo_OverwritesIt) {
  StreamBuilder stream = OneSheet().Record(0x007D, ColInfo(1, 2, 256)).Record(0x0055, U16(8));
  EXPECT_EQ(Widths(stream.Record(0x007D, ColInfo(3, 3, 512))), (V{960, 960, 960, 240}));
}

TEST_F(RowColumnSizes, WidthsAndZoom_OfEmbeddedSubstreams_Count_AndChartRecordsDoNot) {
  StreamBuilder stream =
      OneSheet().Bof(6, kChart).Record(0x027D, ColInfo(1, 1, 256)).Record(0x02A0, U16(3) + U16(4)).Eof();
  stream.Record(0x107D, ColInfo(2, 2, 256)).Record(0x1055, U16(8)).Record(0x10A0, U16(1) + U16(9));
  EXPECT_EQ(Widths(stream), (V{7, 120, 7, 7}));
  EXPECT_EQ(XLGetMagnification(buffer_, table_, 1), 0.75);
}

TEST_F(RowColumnSizes, ColInfoPastTheLastColumn_WritesWhatFits) {
  EXPECT_EQ(Widths(OneSheet().Record(0x007D, ColInfo(2, 0x7FFE, 256))), (V{7, 7, 120, 120}));
}

TEST_F(RowColumnSizes, ColInfo_FirstAboveLastAsSigned_WritesNothing) {
  StreamBuilder stream =
      OneSheet().Record(0x007D, ColInfo(2, 1, 256)).Record(0x007D, ColInfo(0, 0x7FFF, 256));
  EXPECT_EQ(Widths(stream), (V{7, 7, 7, 7}));
}

TEST_F(RowColumnSizes, ColInfo_FirstBelowZero_WritesFromTheFirstColumn) {
  EXPECT_EQ(Widths(OneSheet().Record(0x007D, ColInfo(0xFFFE, 1, 256))), (V{120, 120, 7, 7}));
}

TEST_F(RowColumnSizes, Zoom_LastScaleCounts_OneWithoutAny) {
  StreamBuilder none = OneSheet();
  EXPECT_EQ(Zoom(none), 1.0);
  MEMORYFREEALL();
  StreamBuilder two = OneSheet().Record(0x00A0, U16(3) + U16(4)).Record(0x00A0, U16(2) + U16(1));
  EXPECT_EQ(Zoom(two), 2.0);
}

TEST_F(RowColumnSizes, Zoom_ByZero_AndBelowZero_FollowsFloatingPoint) {
  StreamBuilder infinite = OneSheet().Record(0x00A0, U16(1) + U16(0));
  EXPECT_TRUE(std::isinf(Zoom(infinite)));
  MEMORYFREEALL();
  StreamBuilder negative = OneSheet().Record(0x00A0, U16(0xFFFF) + U16(2));
  EXPECT_EQ(Zoom(negative), -0.5);
  MEMORYFREEALL();
  StreamBuilder negative_below = OneSheet().Record(0x00A0, U16(1) + U16(0xFFFE));
  EXPECT_EQ(Zoom(negative_below), -0.5);
  MEMORYFREEALL();
  StreamBuilder neither = OneSheet().Record(0x00A0, U16(0) + U16(0));
  EXPECT_TRUE(std::isnan(Zoom(neither)));
}

TEST_F(RowColumnSizes, Zoom_OfAnEmptyExtent_IsOne) {
  Load(OneSheet().Record(0x00A0, U16(3) + U16(4)).Eof());
  PutTableEntry(Table(), kTableFirstSheet + 1, TableEntry(Table(), kTableFirstSheet));
  EXPECT_EQ(XLGetMagnification(buffer_, table_, 1), 1.0);
}

TEST_F(RowColumnSizes, Zoom_Failures) {
  Load(OneSheet().Eof());
  EXPECT_EQ(XLGetMagnification(0, 0, 9), -1.0);
  for (int16_t sheet : {int16_t{0}, int16_t{2}, int16_t{-1}})
    EXPECT_EQ(XLGetMagnification(0, table_, sheet), -2.0);
  EXPECT_EQ(XLGetMagnification(0, table_, 1), -3.0);
  const struct {
    uint16_t kind;
    double result;
  } kKinds[] = {{kGlobals, -5.0}, {kVisualBasic, -6.0}, {kMacroSheet, -7.0}, {kWorkspace, -8.0}};
  for (const auto& one : kKinds) {
    MEMORYFREEALL();
    StreamBuilder stream = StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, one.kind);
    EXPECT_EQ(Zoom(stream.Record(0x00A0, U16(3) + U16(4))), one.result);
  }
}

}  // namespace
