// Exports of the chart queries: every argument arrives where it belongs. All values differ, so that two that have
// changed places show.
#include <gtest/gtest.h>

#include "support/chart_builder.h"
#include "support/pool_fixture.h"
#include "support/test_array.h"
#include "tolvenar/tolvenar.h"

namespace {

using namespace tolvenar::testing;

// A workbook whose first sheet has two charts, of which the second is asked for, and whose second has none.
class ChartExports : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    ChartBuilder book({"One", "Two"});
    book.Worksheet().Open().Chart().Begin().End().Close().Open().Chart(300, 200).Begin();
    book.Series(4).Begin().SeriesText("North").Ai(1, Ref3d(0, 1, 2)).Low(0x45, U16(0));
    book.AreaFormat(0x112233, 0x445566, 1).End().Series(7).Begin().Ai256(Ref3d(0, 8, 2)).End();
    book.Low(0x14).Begin().Low(0x18, U16(0)).End();
    book.TextRecord(11).Begin().FontX(5).ObjectLink(1).SeriesText("Sales").End();
    book.TextRecord(12).Begin().FontX(6).ObjectLink(2).SeriesText("Month").End();
    book.TextRecord(13).Begin().ObjectLink(3).SeriesText("EUR").End().End().Close().EndSheet();
    book.Worksheet().EndSheet();
    buffer_ = book.Stream().Load(&size_);
    ASSERT_EQ(::XLLocateSheets(buffer_, &table_, size_), 0);
  }

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
  uint32_t table_ = 0;
};

TEST_F(ChartExports, NumCharts_Arguments) {
  EXPECT_EQ(::XLGetNumCharts(buffer_, table_, 1), 2);
  EXPECT_EQ(::XLGetNumCharts(buffer_, table_, 2), 0);
}

TEST_F(ChartExports, GraphData_Arguments) {
  TestArray cells(VT_I4, 1, 2, 1, 1);
  EXPECT_EQ(::XLGetGraphData(cells.Ref(), buffer_, table_, 1, 2), 0);
  EXPECT_EQ(cells.NumberAt(1, 1), 0x02000101);
  EXPECT_EQ(::XLGetGraphData(cells.Ref(), buffer_, table_, 2, 1), 9);
}

TEST_F(ChartExports, SetData_Arguments) {
  TestArray names(VT_BSTR, 1, 2), references(VT_I4, 1, 2), spare(VT_R8, 1, 3), groups(VT_I4, 1, 2),
      colours(VT_I4, 1, 2);
  EXPECT_EQ(::XLGetSetData(buffer_, table_, 1, 2, names.Ref(), references.Ref(), spare.Ref(), groups.Ref(),
                           colours.Ref(), 2, 3),
            0);
  EXPECT_EQ(names.TextAt(1), "North");
  EXPECT_EQ(references.NumberAt(1), 0);
  EXPECT_EQ(references.NumberAt(2), 0x02000801);
  EXPECT_EQ(groups.NumberAt(1), 1);
  EXPECT_EQ(colours.NumberAt(1), 0x112233);
  EXPECT_EQ(colours.NumberAt(2), 0);
}

TEST_F(ChartExports, TitleData_Arguments) {
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

TEST_F(ChartExports, ChartData_Arguments) {
  TestArray properties(VT_I4, 1, 21);
  EXPECT_EQ(::XLGetChartData(properties.Ref(), buffer_, table_, 1, 2), 0);
  EXPECT_EQ(properties.NumberAt(1), 7);
  EXPECT_EQ(properties.NumberAt(2), 2);
  EXPECT_EQ(properties.NumberAt(13), 6000);
  EXPECT_EQ(::XLGetChartData(properties.Ref(), buffer_, table_, 2, 1), 9);
}

}  // namespace
