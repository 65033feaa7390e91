// Chart titles: which TEXT records qualify, where each part goes, and who owns the texts.
#include "chart/chart_titles.h"

#include "support/chart_fixture.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class ChartTitles : public ChartTest {
 protected:
  void TearDown() override {
    for (BSTR text : {title_, axis_one_, axis_two_}) SysFreeString(text);
    ChartTest::TearDown();
  }
  int16_t Read(int16_t chart = 1) {
    return XLGetTitleData(buffer_, table_, 1, chart,
                          {&title_, &axis_one_, &axis_two_, &title_font_, &axis_font_, &colour_});
  }
  // "title|axis one|axis two|title font|axis font|colour"
  std::string All() const {
    return BytesOf(title_) + "|" + BytesOf(axis_one_) + "|" + BytesOf(axis_two_) + "|" +
           std::to_string(title_font_) + "|" + std::to_string(axis_font_) + "|" + std::to_string(colour_);
  }
  static ChartBuilder Titles() {
    ChartBuilder book = OneChart();
    book.Chart().Begin();
    return book;
  }
  std::string ReadChart(ChartBuilder& book) {
    LoadChart(book.End());
    EXPECT_EQ(Read(), 0);
    EXPECT_EQ(LiveBlocks(), 2u);
    return All();
  }

  BSTR title_ = nullptr;
  BSTR axis_one_ = nullptr;
  BSTR axis_two_ = nullptr;
  uint16_t title_font_ = 901;
  uint16_t axis_font_ = 902;
  uint32_t colour_ = 903;
};

TEST_F(ChartTitles, NoTitles_LeaveAllOutputs) {
  ChartBuilder book = Titles();
  EXPECT_EQ(ReadChart(book), "(none)|(none)|(none)|901|902|903");
}

TEST_F(ChartTitles, TitleAndBothAxes) {
  ChartBuilder book = Titles();
  book.TextRecord(11).Begin().FontX(5).SeriesText("Sales").ObjectLink(1).End();
  book.TextRecord(12).Begin().FontX(6).ObjectLink(2).SeriesText("Month").End();
  book.TextRecord(13).Begin().ObjectLink(3).SeriesText("EUR").End();
  EXPECT_EQ(ReadChart(book), "Sales|Month|EUR|5|6|13");
}

TEST_F(ChartTitles, ColourOfTheLastThatQualifiesStays) {
  ChartBuilder book = Titles();
  book.TextRecord(11).Begin().ObjectLink(2).FontX(7).SeriesText("a").End();
  book.TextRecord(12).Begin().ObjectLink(4).FontX(8).SeriesText("b").End();
  EXPECT_EQ(ReadChart(book), "(none)|a|(none)|901|7|11");
}

TEST_F(ChartTitles, AxesShareTheirFont_ATextWithoutOneKeepsIt) {
  ChartBuilder book = Titles();
  book.TextRecord(1).Begin().ObjectLink(2).FontX(7).SeriesText("a").End();
  book.TextRecord(2).Begin().ObjectLink(3).FontX(8).SeriesText("b").End();
  book.TextRecord(3).Begin().ObjectLink(1).SeriesText("c").End();
  EXPECT_EQ(ReadChart(book), "c|a|b|901|8|3");
}

constexpr struct {
  const char* label;
  uint8_t kind, high;
  bool qualifies;
} kLinks[] = {{"none", 0, 0, false},          {"title", 1, 0, true},  {"axis two", 3, 0, true},
              {"series", 4, 0, false},        {"255", 255, 0, false}, {"title, high byte", 1, 1, false},
              {"3, high byte", 3, 128, false}};

TEST_F(ChartTitles, LinkKinds) {
  for (const auto& row : kLinks) {
    colour_ = 903;
    ChartBuilder book = Titles();
    LoadChart(book.TextRecord(5).Begin().ObjectLink(row.kind, row.high).SeriesText("a").End().End());
    EXPECT_EQ(Read(), 0);
    EXPECT_EQ(colour_, row.qualifies ? 5u : 903u) << row.label;
    SysFreeString(title_);
    SysFreeString(axis_two_);
    title_ = axis_two_ = nullptr;
    MEMORYFREEALL();
  }
}

TEST_F(ChartTitles, WithoutLinkOrText_NothingIsTaken) {
  ChartBuilder book = Titles();
  book.TextRecord(1).Begin().FontX(5).SeriesText("a").End();
  book.TextRecord(2).Begin().FontX(5).ObjectLink(1).End();
  EXPECT_EQ(ReadChart(book), "(none)|(none)|(none)|901|902|903");
}

TEST_F(ChartTitles, OnlyRecordsDirectlyInTheBlock_TheFirstOfEach) {
  ChartBuilder book = Titles();
  book.TextRecord(1).Begin().Low(0x32).Begin().FontX(9).ObjectLink(3).SeriesText("deep").End();
  book.FontX(5).FontX(6).ObjectLink(1).ObjectLink(2).SeriesText("one").SeriesText("two").End();
  EXPECT_EQ(ReadChart(book), "one|(none)|(none)|5|902|1");
}

TEST_F(ChartTitles, PlainRecordsOfTheSameLowBytes_AreNotTaken) {
  ChartBuilder book = Titles();
  book.Record(0x0025, Bytes(12)).Begin().ObjectLink(1).SeriesText("a").End();
  book.TextRecord(1).Begin().Record(0x0027, Bytes{1, 0}).SeriesText("b").Record(0x0026, U16(3)).End();
  book.TextRecord(2).Begin().ObjectLink(2).Record(0x0026, U16(3)).Record(0x000D, Bytes{0, 0, 1, 'p'});
  EXPECT_EQ(ReadChart(book.SeriesText("c").End()), "(none)|c|(none)|901|902|2");
}

TEST_F(ChartTitles, RecordBehindTheText_CountsAsItsBegin_WhateverItIs) {
  ChartBuilder book = Titles();
  book.TextRecord(1).ObjectLink(2).ObjectLink(1).SeriesText("a").End();
  EXPECT_EQ(ReadChart(book), "a|(none)|(none)|901|902|1");
}

TEST_F(ChartTitles, TextIsItsBytes_WithoutConversion) {
  ChartBuilder book = Titles();
  book.TextRecord(1).Begin().ObjectLink(1).SeriesText(std::string("\0S\xFC", 3)).End();
  EXPECT_EQ(ReadChart(book), std::string("\0S\xFC|(none)|(none)|901|902|1", 27));
}

TEST_F(ChartTitles, LaterTextsReplaceEarlierOnes_WhichAreReleased) {
  ChartBuilder book = Titles();
  for (const char* text : {"one", "two", "three"})
    book.TextRecord(1).Begin().ObjectLink(1).SeriesText(text).End();
  EXPECT_EQ(ReadChart(book), "three|(none)|(none)|901|902|1");
}

TEST_F(ChartTitles, TheCallersOwnText_IsNotReleased) {
  const BSTR before = SysAllocStringByteLen("mine", 4);
  title_ = before;
  ChartBuilder book = Titles();
  book.TextRecord(1).Begin().ObjectLink(1).SeriesText("one").End();
  EXPECT_EQ(ReadChart(book), "one|(none)|(none)|901|902|1");
  EXPECT_EQ(BytesOf(before), "mine");
  SysFreeString(before);
}

TEST_F(ChartTitles, SecondChart_AndNoneOfTheFirst) {
  ChartBuilder book = Titles();
  book.TextRecord(1).Begin().ObjectLink(1).SeriesText("one").End().End().Close().Open().Chart().Begin();
  LoadChart(book.TextRecord(2).Begin().ObjectLink(2).SeriesText("two").End().End());
  EXPECT_EQ(Read(2), 0);
  EXPECT_EQ(All(), "(none)|two|(none)|901|902|2");
  EXPECT_EQ(Read(3), 9);
  EXPECT_EQ(All(), "(none)|two|(none)|901|902|2");
}

TEST_F(ChartTitles, UnbalancedEnds_AreNoMatterHere) {
  ChartBuilder book = Titles();
  book.End().End().End().TextRecord(1).Begin().ObjectLink(1).SeriesText("a").End();
  EXPECT_EQ(ReadChart(book), "a|(none)|(none)|901|902|1");
}

TEST_F(ChartTitles, WithoutAPoolBlock_NothingOfTheTextIsGiven) {
  ChartBuilder book = Titles();
  LoadChart(book.TextRecord(1).Begin().ObjectLink(1).FontX(3).SeriesText("a").End().End());
  FillPool(9);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(All(), "(none)|(none)|(none)|901|902|903");
  EXPECT_EQ(LiveBlocks(), 9u);
}

}  // namespace
