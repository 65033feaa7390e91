// Exports of the queries: every argument arrives where it belongs. All values differ, so that two that have changed places show.
#include <gtest/gtest.h>

#include "support/chart_builder.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "support/test_array.h"
#include "tolvenar/tolvenar.h"

namespace {

using namespace tolvenar::testing;

class QueryExports : public PoolTest {
 protected:
  void Load(const StreamBuilder& book) {
    buffer_ = book.Load(&size_);
    ASSERT_EQ(::XLLocateSheets(buffer_, &table_, size_), 0);
    ::XLGetNumVers(buffer_, table_);
  }

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
  uint32_t table_ = 0;
};

TEST_F(QueryExports, List_Arrays) {
  Load(StreamBuilder().Bof(6).Record(0x1042, U16(7)).Eof());
  TestArray offsets(VT_I4, 1, 9), types(VT_I2, 1, 9), images(VT_BSTR, 1, 9), lengths(VT_I2, 1, 9);
  int32_t count = 0;
  EXPECT_EQ(::XLGetList(buffer_, static_cast<int32_t>(size_), &count, offsets.Ref(), types.Ref(),
                        images.Ref(), lengths.Ref()),
            0);
  EXPECT_EQ(count, 4);
  EXPECT_EQ(offsets.NumberAt(2), 20);
  EXPECT_EQ(types.NumberAt(2), 0x142);
  EXPECT_EQ(images.TextAt(2), std::string("\x42\x10\x02\0\x07\0", 6));
  EXPECT_EQ(lengths.NumberAt(2), 6);
}

TEST_F(QueryExports, SheetSize_Outputs) {
  Load(StreamBuilder().Bof(6).Sheet("A").Eof().Bof(6, kWorksheet).Dimensions(2, 9, 1, 5).Eof());
  uint16_t range[4] = {};
  EXPECT_EQ(::XLGetSheetSize(buffer_, table_, 1, &range[0], &range[1], &range[2], &range[3]), 0);
  EXPECT_EQ((std::vector<int>(range, range + 4)), (std::vector<int>{3, 9, 2, 5}));
}

TEST_F(QueryExports, SharedString_Arguments) {
  StreamBuilder book = StreamBuilder().Bof(6).Sheet("A");
  const uint32_t sst = book.Here();
  const Bytes strings = U16(1) + Bytes{0} + Text("x") + U16(2) + Bytes{0} + Text("yz");
  book.Record(0x00FC, U32(2) + U32(2) + strings).Record(0x00FF, U16(8)).Eof().Bof(6, kWorksheet);
  const uint32_t record = book.Here();
  Load(book.LabelSst(1, 2, 15, 1).Eof());
  TestArray cells(VT_BSTR, 1, 4, 1, 4);
  int32_t index = 1;
  int16_t bucket = 8;
  EXPECT_EQ(::XLNumStrExt(buffer_, table_), static_cast<int16_t>(sst));
  EXPECT_EQ(::XLNumStrBucket(buffer_, table_), 8);
  ::XLEXTLabel(buffer_, &index, &bucket, static_cast<int32_t>(sst), cells.Ref(),
               static_cast<int32_t>(record));
  EXPECT_EQ(cells.TextAt(2, 3), "yz");
}

// Two sheets, the first with two charts. The series of the second chart: one with a name, one with a reference.
class ChartExports : public QueryExports {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    ChartBuilder book({"Data", "More"});
    book.Worksheet().Open().Chart(301).Close().Open().Chart(302).Begin();
    book.Series(4).Begin().SeriesText("North").Low(0x45, U16(1)).AreaFormat(0x11, 0x22, 1).End();
    book.Series(4).Begin().Ai256(Ref3d(0, 3, 2)).Low(0x45, U16(0)).AreaFormat(0x33, 0x44, 1).End();
    book.Low(0x14).Begin().Low(0x18, U16(0)).End().Low(0x14).Begin().Low(0x17, Bytes(6)).End();
    book.TextRecord(11).Begin().FontX(5).SeriesText("Sales").ObjectLink(1).End();
    book.TextRecord(12).Begin().FontX(6).ObjectLink(2).SeriesText("Month").End();
    book.TextRecord(13).Begin().ObjectLink(3).SeriesText("EUR").End();
    book.End().Close().EndSheet().Worksheet().EndSheet();
    Load(book.Stream());
  }
};

TEST_F(ChartExports, SetData_Arrays) {
  TestArray names(VT_BSTR, 1, 2), references(VT_I4, 1, 2), spare(VT_I2, 1, 3), groups(VT_I4, 1, 2),
      colours(VT_I4, 1, 2);
  EXPECT_EQ(::XLGetSetData(buffer_, table_, 1, 2, names.Ref(), references.Ref(), spare.Ref(), groups.Ref(),
                           colours.Ref(), 2, 3),
            0);
  EXPECT_EQ(names.TextAt(1), "North");
  EXPECT_EQ(references.NumberAt(1), 0);
  EXPECT_NE(references.NumberAt(2), 0);
  EXPECT_EQ(groups.NumberAt(1), 0);  // a bar
  EXPECT_EQ(groups.NumberAt(2), 1);  // a line
  EXPECT_EQ(colours.NumberAt(1), 0x11);
  EXPECT_EQ(colours.NumberAt(2), 0x33);
  for (LONG i = 1; i <= 3; ++i) EXPECT_EQ(spare.NumberAt(i), 0);
}

TEST_F(ChartExports, TitleData_Outputs) {
  BSTR texts[3] = {};
  uint16_t fonts[2] = {};
  uint32_t colour = 0;
  EXPECT_EQ(
      ::XLGetTitleData(buffer_, table_, 1, 2, &texts[0], &texts[1], &texts[2], &fonts[0], &fonts[1], &colour),
      0);
  EXPECT_EQ(BytesOf(texts[0]), "Sales");
  EXPECT_EQ(BytesOf(texts[1]), "Month");
  EXPECT_EQ(BytesOf(texts[2]), "EUR");
  EXPECT_EQ(fonts[0], 5);
  EXPECT_EQ(fonts[1], 6);
  EXPECT_EQ(colour, 13u);
  for (BSTR text : texts) SysFreeString(text);
}

TEST_F(ChartExports, SheetAndChart) {
  TestArray properties(VT_I4, 1, 21), cells(VT_I4, 1, 2, 1, 9);
  EXPECT_EQ(::XLGetNumCharts(buffer_, table_, 1), 2);
  EXPECT_EQ(::XLGetChartData(properties.Ref(), buffer_, table_, 1, 2), 0);
  EXPECT_EQ(properties.NumberAt(13), 302 * 20);
  EXPECT_EQ(::XLGetChartData(properties.Ref(), buffer_, table_, 2, 1), 9);
  EXPECT_EQ(::XLGetGraphData(cells.Ref(), buffer_, table_, 1, 2), 0);
  EXPECT_EQ(::XLGetGraphData(cells.Ref(), buffer_, table_, 2, 1), 9);
}

}  // namespace
