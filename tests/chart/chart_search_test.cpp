// Chart search: how charts are counted, the checks in front of the readers, and where a sheet ends for them.
#include "chart/chart_search.h"

#include "chart/chart_properties.h"
#include "chart/chart_titles.h"
#include "chart/series_cells.h"
#include "chart/series_details.h"
#include "support/chart_fixture.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

// The four readers, by name, with arrays that fit.
class Readers {
 public:
  std::vector<int16_t> All(uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart) {
    return {XLGetGraphData(cells_.Ref(), buffer, table, sheet, chart),
            XLGetSetData(buffer, table, sheet, chart,
                         {names_.Ref(), one_.Ref(), one_.Ref(), one_.Ref(), one_.Ref(), 1, 1}),
            XLGetTitleData(buffer, table, sheet, chart, {}),
            XLGetChartData(properties_.Ref(), buffer, table, sheet, chart)};
  }

 private:
  TestArray cells_{VT_I4, 1, 1, 1, 1};
  TestArray names_{VT_BSTR, 1, 1};
  TestArray one_{VT_I4, 1, 1};
  TestArray properties_{VT_I4, 1, 21};
};

class ChartSearch : public ChartTest {
 protected:
  std::vector<int16_t> ReadAll(int16_t sheet, int16_t chart) {
    const std::vector<int16_t> results = Readers().All(buffer_, table_, sheet, chart);
    EXPECT_EQ(LiveBlocks(), 2u);
    return results;
  }
  // A sheet with this many charts, each of them closed.
  static ChartBuilder& AddSheet(ChartBuilder& book, int charts) {
    book.Worksheet();
    for (int i = 0; i < charts; ++i) book.Open().Chart().Begin().End().Close();
    return book.EndSheet();
  }
};

std::vector<int16_t> Four(int16_t result) {
  return std::vector<int16_t>(4, result);
}

TEST_F(ChartSearch, SheetWithoutCharts_CountsNone_AndHasNoFirst) {
  ChartBuilder book;
  Load(AddSheet(book, 0));
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 0);
  EXPECT_EQ(ReadAll(1, 1), Four(9));
}

TEST_F(ChartSearch, EveryChartRecordCounts_NestedOrNot) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Chart().End().Close().Low(0x02).Record(0x1102).Record(0x0002).EndSheet();
  Load(book);
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 4);
}

TEST_F(ChartSearch, ChartSheet_CountsOne_WithoutAnyChartRecord) {
  ChartBuilder book;
  book.Bof(kChart).EndSheet();
  Load(book);
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 1);
  book = ChartBuilder();
  book.Bof(0x0120).Chart().Chart().EndSheet();
  MEMORYFREEALL();
  Load(book);
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 1);
}

constexpr struct {
  const char* label;
  uint16_t substream;
  int32_t count;
} kKinds[] = {{"globals", 0x0005, -4},     {"globals, high byte", 0x0105, -4}, {"module", 0x0006, -5},
              {"macro sheet", 0x0040, -6}, {"workspace", 0x0100, -7},          {"no workspace", 0x0200, 2},
              {"type 0", 0x0000, 2},       {"worksheet", 0x0010, 2},           {"chart sheet", 0x0020, 1}};

TEST_F(ChartSearch, TheKindOfSheetDecidesFirst) {
  for (const auto& kind : kKinds) {
    ChartBuilder book;
    book.Bof(kind.substream).Low(0x02).Low(0x02).EndSheet();
    Load(book);
    EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), kind.count) << kind.label;
    if (kind.count < 0) {
      EXPECT_EQ(ReadAll(1, 1), Four(3)) << kind.label;
    }
    MEMORYFREEALL();
  }
}

TEST_F(ChartSearch, LastSheet_IsCountedUpToItsEof) {
  ChartBuilder book;
  book.Worksheet().Low(0x02).Close().Low(0x02).Low(0x02).Close();
  Load(book);
  PutTableEntry(Table(), 3, book.Last() - 3 * kEofSize);
  ASSERT_TRUE(IsPlain(Stream(), TableEntry(Table(), 3), kLowEof));
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 1);
}

TEST_F(ChartSearch, CountIsSixteenBits_Signed) {
  for (uint32_t charts : {0x7FFFu, 0x8000u, 0x10001u}) {
    ChartBuilder book;
    book.Worksheet();
    for (uint32_t i = 0; i < charts; ++i) book.Low(0x02);
    Load(book.EndSheet());
    EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), static_cast<int16_t>(charts)) << charts;
    if (charts == 0x8000) {
      EXPECT_EQ(ReadAll(1, 1), Four(3));
    }
    MEMORYFREEALL();
  }
}

TEST_F(ChartSearch, CountsLadder) {
  ChartBuilder book;
  Load(AddSheet(book, 2));
  EXPECT_EQ(XLGetNumCharts(0, 0, 5), -1);
  EXPECT_EQ(XLGetNumCharts(buffer_, buffer_ + 4, 1), -1);
  EXPECT_EQ(XLGetNumCharts(0, table_, 2), -2);
  EXPECT_EQ(XLGetNumCharts(0, table_, 0), -2);
  EXPECT_EQ(XLGetNumCharts(0, table_, -1), -2);
  EXPECT_EQ(XLGetNumCharts(0, table_, 1), -3);
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 2);
  EXPECT_EQ(XLGetNumCharts(buffer_ + 4, table_, 1), 0);
}

TEST_F(ChartSearch, ReadersLadder) {
  ChartBuilder book;
  Load(AddSheet(book, 1));
  Readers readers;
  EXPECT_EQ(readers.All(0, 0, 7, 7), Four(1));
  EXPECT_EQ(readers.All(0, table_, 0, 7), Four(3));
  EXPECT_EQ(readers.All(0, table_, 2, 7), Four(3));
  EXPECT_EQ(readers.All(0, table_, 1, 7), Four(3));
  for (int16_t chart : {int16_t{-32768}, int16_t{-1}, int16_t{0}, int16_t{2}, int16_t{32767}})
    EXPECT_EQ(ReadAll(1, chart), Four(9)) << chart;
  EXPECT_EQ(ReadAll(1, 1), Four(0));
  EXPECT_EQ(readers.All(buffer_ + 4, table_, 1, 1), Four(9));
}

TEST_F(ChartSearch, NegativeCountOfSheets_LetsTheSecondCheckThrough) {
  ChartBuilder book;
  Load(AddSheet(book, 1));
  PutTableEntry(Table(), 0, 0xFFF0);
  EXPECT_EQ(ReadAll(-3, 1), Four(2));
  EXPECT_EQ(ReadAll(1, 1), Four(3));
}

TEST_F(ChartSearch, EmptySheet_HasNoCharts) {
  ChartBuilder book;
  Load(AddSheet(book, 2));
  PutTableEntry(Table(), 3, TableEntry(Table(), 2));
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 0);
  EXPECT_EQ(ReadAll(1, 1), Four(9));
  // Nothing lies in front of an EOF directly behind the sheet's begin either.
  PutTableEntry(Table(), 3, TableEntry(Table(), 2) + kEofSize);
  EXPECT_EQ(ReadAll(1, 1), Four(9));
}

// The offsets of two BOUNDSHEETs may be the same: what stands there belongs to the second of them.
TEST_F(ChartSearch, EmptySheetInFrontOfOthers_HasNoCharts_ThoughTheyHave) {
  ChartBuilder book({"One", "Two"});
  AddSheet(AddSheet(book, 0), 2);
  Load(book);
  PutTableEntry(Table(), 2, TableEntry(Table(), 3));
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 0);
  EXPECT_EQ(ReadAll(1, 1), Four(9));
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 2), 2);
  EXPECT_EQ(ReadAll(2, 1), Four(0));
  // One of nothing but an EOF is as empty.
  PutTableEntry(Table(), 2, TableEntry(Table(), 3) - kEofSize);
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 0);
  EXPECT_EQ(ReadAll(1, 1), Four(9));
}

// A chart sheet counts as one chart, so that only that of sheet 1 is searched up to the next BOF; and its EOF is the
// chart's. The END in front of it is 4 bytes, as short as the EOF: a search that ends there ends one record early.
TEST_F(ChartSearch, ChartSheets_AreFoundByTheirPlace) {
  ChartBuilder book({"One", "Two", "Three"});
  for (int sheet = 1; sheet <= 3; ++sheet)
    book.Bof(kChart).Chart().Begin().End().Record(0x023E, Bytes(10)).Close();
  Load(book);
  EXPECT_EQ(ReadAll(1, 1), Four(0));
  EXPECT_EQ(ReadAll(2, 1), Four(9));
  EXPECT_EQ(ReadAll(3, 1), Four(0));
  MEMORYFREEALL();
  book = ChartBuilder({"One", "Two", "Three"});
  for (int sheet = 1; sheet <= 3; ++sheet) book.Bof(kChart).Chart().Begin().End().Close();
  Load(book);
  EXPECT_EQ(ReadAll(1, 1), Four(0));
  EXPECT_EQ(ReadAll(2, 1), Four(9));
  EXPECT_EQ(ReadAll(3, 1), Four(9));
}

TEST_F(ChartSearch, ChartSheetThatIsAlone_IsNotFound) {
  ChartBuilder book;
  Load(book.Bof(kChart).Chart().Begin().End().EndSheet());
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 1);
  EXPECT_EQ(ReadAll(1, 1), Four(9));
}

TEST_F(ChartSearch, UnclosedChart_IsNone) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().End().Record(0x023E, Bytes(10)).Record(0x100A, Bytes(12));
  book.Stream().Eof();
  book.Stream().Eof();
  Load(book);
  const uint32_t end = TableEntry(Table(), 3);
  PutTableEntry(Table(), 3, end - kEofSize);
  ASSERT_TRUE(IsPlain(Stream(), end - kEofSize, kLowEof));
  EXPECT_EQ(ReadAll(1, 1), Four(9));
  PutTableEntry(Table(), 3, end);
  EXPECT_EQ(ReadAll(1, 1), Four(0));
}

// Three sheets, the second of which has no EOF of its own for its last chart; the searches may or may not reach
// that of the sheet.
TEST_F(ChartSearch, SheetWhoseNumberIsThatOfItsCharts_IsSearchedUpToTheNextBof) {
  for (int charts : {1, 2, 3}) {
    ChartBuilder book({"One", "Two", "Three"});
    AddSheet(book, 0).Worksheet();
    for (int i = 1; i < charts; ++i) book.Open().Chart().Close();
    book.Chart().EndSheet();
    AddSheet(book, 0);
    Load(book);
    EXPECT_EQ(XLGetNumCharts(buffer_, table_, 2), charts);
    EXPECT_EQ(ReadAll(2, static_cast<int16_t>(charts)), Four(charts == 2 ? 0 : 9)) << charts;
    MEMORYFREEALL();
  }
}

TEST_F(ChartSearch, LastSheet_IsSearchedUpToItsEofOnlyWhenItsNumberIsThatOfItsCharts) {
  for (int charts : {1, 2}) {
    ChartBuilder book;
    book.Worksheet();
    for (int i = 1; i < charts; ++i) book.Open().Chart().Close();
    Load(book.Chart().EndSheet());
    EXPECT_EQ(ReadAll(1, static_cast<int16_t>(charts)), Four(charts == 1 ? 9 : 0)) << charts;
    MEMORYFREEALL();
  }
}

TEST_F(ChartSearch, LastSheetThatIsSearchedTooFar_EndsAtTheBufEnd) {
  ChartBuilder book;
  AddSheet(book, 2);
  book.Stream().BufEnd();
  book.Chart().Begin().End().Close();
  Load(book);
  EXPECT_EQ(ReadAll(1, 2), Four(0));
  EXPECT_EQ(ReadAll(1, 3), Four(9));
}

TEST_F(ChartSearch, LastSheetThatIsSearchedTooShort_EndsAtARecordWithoutPayload) {
  ChartBuilder book;
  book.Worksheet().Open().Chart().Close().Chart().Begin().End().Close();
  Load(book);
  // The END is the record 4 bytes in front of the EOF: there the search stops, since 2 charts are not 1 sheet.
  EXPECT_EQ(ReadAll(1, 1), Four(0));
  EXPECT_EQ(ReadAll(1, 2), Four(9));
}

TEST_F(ChartSearch, PlainRecordOfTheSameLowByte_BeginsNoChart) {
  ChartBuilder book = OneChart();
  LoadChart(book.Record(0x0002, Bytes(7)).Chart().Begin().End());
  EXPECT_EQ(ReadAll(1, 1), Four(0));
  EXPECT_EQ(ReadAll(1, 2), Four(9));
}

TEST_F(ChartSearch, ChartsAreCountedThroughAPatch) {
  ChartBuilder book;
  Load(AddSheet(book, 1));
  const Bytes patch = {0x02, 0x10, 0, 0, 0x0A, 0, 0, 0};
  const uint32_t bof = TableEntry(Table(), 2);
  const uint32_t at = NextRecord(Stream(), bof);
  ASSERT_EQ(PatchRecord(&buffer_, patch.data(), at, 8, &size_), 0);
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 2);
  EXPECT_EQ(ReadAll(1, 1), Four(0));
  EXPECT_EQ(ReadAll(1, 2), Four(0));
  EXPECT_EQ(ReadAll(1, 3), Four(9));
}

TEST_F(ChartSearch, FullPool_IsTenForTheReadersThatNeedABlock) {
  ChartBuilder book;
  Load(AddSheet(book, 1));
  FillPool(9);
  EXPECT_EQ(XLGetNumCharts(buffer_, table_, 1), 1);
  EXPECT_EQ(Readers().All(buffer_, table_, 1, 1), (std::vector<int16_t>{10, 10, 0, 10}));
  // The stacks are asked for in front of the search, the table of groups behind it.
  EXPECT_EQ(Readers().All(buffer_, table_, 1, 2), (std::vector<int16_t>{10, 9, 9, 10}));
  EXPECT_EQ(LiveBlocks(), 9u);
}

// Elements that are no 32-bit integers, or no texts, take nothing; and the texts of the call are released.
TEST_F(ChartSearch, ArraysOfOtherTypes_AreLeftAlone) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(2).Begin().Ai(1, Ref3d(0, 1, 1)).SeriesText("a").Low(0x45, U16(0)).End();
  book.Series(1).Begin().Ai256(Ref3d(0, 3, 3)).AreaFormat(1, 2, 1).End();
  LoadChart(book.Low(0x14).Low(0x18).Low(0x19).End());
  for (VARTYPE type : {VARTYPE{VT_BSTR}, VARTYPE{VT_VARIANT}}) {
    TestArray cells(type, 1, 2, 1, 3), numbers(type, 1, 2), names(VT_I4, 1, 2), properties(type, 1, 21);
    EXPECT_EQ(XLGetGraphData(cells.Ref(), buffer_, table_, 1, 1), 0);
    EXPECT_EQ(XLGetSetData(buffer_, table_, 1, 1,
                           {names.Ref(), numbers.Ref(), numbers.Ref(), numbers.Ref(), numbers.Ref(), 2, 2}),
              0);
    EXPECT_EQ(XLGetChartData(properties.Ref(), buffer_, table_, 1, 1), 0);
    for (LONG i : {1, 2}) EXPECT_EQ(numbers.TextAt(i), "(none)");
    EXPECT_EQ(cells.TextAt(1, 1), "(none)");
    EXPECT_EQ(properties.TextAt(5), "(none)");
    EXPECT_EQ(names.NumberAt(1), 0);
    EXPECT_EQ(LiveBlocks(), 2u);
  }
}

TEST_F(ChartSearch, NullArraysAndOutputs_AreHarmless) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(2).Begin().Ai(1, Ref3d(0, 1, 1)).SeriesText("a").End();
  book.TextRecord(1).Begin().ObjectLink(1).SeriesText("b").FontX(1).End().End();
  LoadChart(book);
  SAFEARRAY* none = nullptr;
  for (SAFEARRAY** array : {static_cast<SAFEARRAY**>(nullptr), &none}) {
    EXPECT_EQ(XLGetGraphData(array, buffer_, table_, 1, 1), 0);
    EXPECT_EQ(XLGetChartData(array, buffer_, table_, 1, 1), 0);
    EXPECT_EQ(XLGetSetData(buffer_, table_, 1, 1, {array, array, array, array, array, 1, 1}), 4);
  }
  EXPECT_EQ(XLGetTitleData(buffer_, table_, 1, 1, {}), 0);
  EXPECT_EQ(LiveBlocks(), 2u);
}

}  // namespace
