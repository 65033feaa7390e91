// Series details: the arrays' checks, what is taken of each series' block, and the kinds of groups.
#include "chart/series_details.h"

#include "support/chart_fixture.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

constexpr LONG kCount = 3;

class SeriesDetails : public ChartTest {
 protected:
  void SetUp() override {
    ChartTest::SetUp();
    for (LONG i = 1; i <= kCount; ++i) names_.SetText(i, 0, "unset");
    for (TestArray* array : {&references_, &colours_}) Fill(*array, kCount, -7);
  }
  int16_t Read(int16_t chart = 1) {
    return XLGetSetData(
        buffer_, table_, 1, chart,
        {names_.Ref(), references_.Ref(), spare_.Ref(), groups_.Ref(), colours_.Ref(), kCount, 2});
  }
  // A chart whose one series has this in its block.
  static ChartBuilder OneSeries() {
    ChartBuilder book = OneChart();
    book.Chart().Begin().Series(4).Begin();
    return book;
  }
  int16_t ReadSeries(ChartBuilder& book) {
    LoadChart(book.End().End());
    return Read();
  }
  int16_t ReadAndDrop(ChartBuilder& book) {
    const int16_t result = ReadSeries(book);
    MEMORYFREEALL();
    return result;
  }

  TestArray names_{VT_BSTR, 1, kCount};
  TestArray references_{VT_I4, 1, kCount};
  TestArray spare_{VT_R8, 1, 2};
  TestArray groups_{VT_I4, 1, kCount};
  TestArray colours_{VT_I4, 1, kCount};
};

using Expected = std::vector<int64_t>;

TEST_F(SeriesDetails, TellsAllOfASeries) {
  ChartBuilder book = OneSeries();
  book.SeriesText("North").Low(0x45, U16(0)).AreaFormat(0x112233, 0x445566, 1);
  book.End().Low(0x14).Begin().Low(0x18, U16(0)).End().End();
  LoadChart(book);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(names_.TextAt(1), "North");
  EXPECT_EQ(names_.TextAt(2), "unset");
  EXPECT_EQ(Numbers(references_, 3), (Expected{-7, -7, -7}));
  EXPECT_EQ(Numbers(colours_, 3), (Expected{0x112233, -7, -7}));
  EXPECT_EQ(Numbers(groups_, 3), (Expected{1, 1, 1}));
  EXPECT_EQ(LiveBlocks(), 2u);
}

// Each array in turn is made of another shape; the others in front of it fit, those behind it don't.
TEST_F(SeriesDetails, ShapesAreCheckedInTheOrderOfTheArrays) {
  ChartBuilder book = OneSeries();
  ReadSeries(book);
  TestArray square(VT_I4, 1, 3, 1, 1), from_zero(VT_I4, 0, 3), too_long(VT_I4, 1, 4), short_one(VT_I4, 1, 2);
  for (size_t bad = 0; bad < 5; ++bad) {
    SAFEARRAY** arrays[5] = {names_.Ref(), references_.Ref(), groups_.Ref(), colours_.Ref(), spare_.Ref()};
    const auto with = [&](SAFEARRAY** other, SAFEARRAY** behind) {
      for (size_t i = bad; i < 5; ++i) arrays[i] = i == bad ? other : behind;
      return XLGetSetData(buffer_, table_, 1, 9,
                          {arrays[0], arrays[1], arrays[4], arrays[2], arrays[3], kCount, 2});
    };
    EXPECT_EQ(with(square.Ref(), from_zero.Ref()), 4) << bad;
    EXPECT_EQ(with(nullptr, from_zero.Ref()), 4) << bad;
    EXPECT_EQ(with(from_zero.Ref(), square.Ref()), 5) << bad;
    EXPECT_EQ(with(too_long.Ref(), square.Ref()), 5) << bad;
    if (bad < 4) {
      EXPECT_EQ(with(short_one.Ref(), square.Ref()), 5) << bad;
    }
  }
  EXPECT_EQ(Read(9), 9);
}

TEST_F(SeriesDetails, ShapesComeBehindTheSheetAndInFrontOfTheChart) {
  ChartBuilder book = OneSeries();
  ReadSeries(book);
  const SeriesArrays none = {nullptr, nullptr, nullptr, nullptr, nullptr, 1, 1};
  EXPECT_EQ(XLGetSetData(buffer_, 0, 1, 1, none), 1);
  EXPECT_EQ(XLGetSetData(buffer_, table_, 2, 1, none), 3);
  EXPECT_EQ(XLGetSetData(buffer_, table_, 1, 9, none), 4);
}

TEST_F(SeriesDetails, CountOfZero) {
  ChartBuilder book = OneSeries();
  ReadSeries(book.SeriesText("a"));
  TestArray one(VT_I4, 1, 1), empty(VT_I4, 1, 0);
  const auto read = [&](TestArray& a, int16_t count) {
    return XLGetSetData(buffer_, table_, 1, 1, {a.Ref(), a.Ref(), a.Ref(), a.Ref(), a.Ref(), count, count});
  };
  EXPECT_EQ(read(one, 0), 5);
  EXPECT_EQ(read(one, -1), 5);
  EXPECT_EQ(read(empty, 0), 0);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SeriesDetails, Name_IsTheCountsBytes_WithoutConversion) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadAndDrop(book.SeriesText(std::string("a\0\xE9z", 4))), 0);
  EXPECT_EQ(names_.TextAt(1), std::string("a\0\xE9z", 4));
  book = OneSeries();
  EXPECT_EQ(ReadAndDrop(book.SeriesText("")), 0);
  EXPECT_EQ(names_.TextAt(1), "");
  book = OneSeries();
  EXPECT_EQ(ReadAndDrop(book.SeriesText(std::string(255, 'x'))), 0);
  EXPECT_EQ(names_.TextAt(1), std::string(255, 'x'));
}

TEST_F(SeriesDetails, NameLongerThanItsRecord_ReadsOnInTheStream) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadSeries(book.Low(0x0D, Bytes{0, 0, 6, 'a', 'b'})), 0);
  EXPECT_EQ(names_.TextAt(1), std::string("ab\x34\x10\0\0", 6));
}

TEST_F(SeriesDetails, LostName_CountsAsNone) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadAndDrop(book.SeriesText("#REF!").Ai256(Ref3d(1, 2, 3))), 0);
  EXPECT_EQ(names_.TextAt(1), "unset");
  EXPECT_EQ(Numbers(references_, 1), Expected{0x03000202});
  for (const char* name : {"#REF", "#REF!!", "#ref!", "#REF?"}) {
    book = OneSeries();
    EXPECT_EQ(ReadAndDrop(book.SeriesText(name)), 0);
    EXPECT_EQ(names_.TextAt(1), name);
  }
}

TEST_F(SeriesDetails, LostName_IsKnownByItsLengthToo) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadSeries(book.SeriesText("#REF").Low('!')), 0);
  EXPECT_EQ(names_.TextAt(1), "#REF");
}

TEST_F(SeriesDetails, LostNameInFront_HidesANameBehindIt) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadSeries(book.SeriesText("#REF!").SeriesText("good")), 0);
  EXPECT_EQ(names_.TextAt(1), "unset");
}

TEST_F(SeriesDetails, NameCell_IsTakenOnlyWithoutAName) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadSeries(book.Ai256(Ref3d(1, 2, 3)).SeriesText("a")), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{-7});
  EXPECT_EQ(names_.TextAt(1), "a");
}

TEST_F(SeriesDetails, NameCell_ComesFromAnAiWhoseLengthHasALowByteOfZero) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadAndDrop(book.Ai(0, Ref3d(1, 2, 3))), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{-7});
  book = OneSeries();
  EXPECT_EQ(
      ReadAndDrop(book.Ai(0, Ref3d(1, 9, 9)).Ai256(Area3d(2, 5, {0xC001, 7, 4, 6})).Ai256(Ref3d(1, 2, 3))),
      0);
  EXPECT_EQ(Numbers(references_, 1), Expected{0x04000103});
  // An AI without a payload: its formula is what stands behind it.
  book = OneSeries();
  EXPECT_EQ(ReadAndDrop(book.Low(0x51).Low(0x06, U16(0) + U16(18) + Ref3d(0, 8, 2))), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{0x02000801});
}

TEST_F(SeriesDetails, NameCell_NoTokens_GivesNothing) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadSeries(book.Ai256({})), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{-7});
}

TEST_F(SeriesDetails, NameCell_OfTheLastReferenceStays) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadSeries(book.Ai256(Bytes{0x29, 0x24, 0} + Ref3d(1, 2, 3) + Ref3d(0, 5, 6))), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{0x06000501});
}

TEST_F(SeriesDetails, NameCell_VariableTokenStepsBack) {
  // Back by 1 from the text token: 0x3B, the last byte of the token in front, is an area that begins there.
  Bytes tokens = Bytes{0x1E, 0, 0x3B, 0x17} + Bytes(19, 0);
  tokens[2 + 11] = 4;
  tokens[2 + 13] = 4;
  tokens[2 + 19] = 7;
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadSeries(book.Ai256(tokens)), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{0x07000005});
}

TEST_F(SeriesDetails, NameCell_UnknownTokenStepsBackByTwo_ARingEnds) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadAndDrop(book.Ai256(Bytes{0x1E, 0x3A, 0, 0x18} + Bytes(14, 0) + Bytes{9, 0x10})), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{0x09000001});
  book = OneSeries();
  EXPECT_EQ(ReadAndDrop(book.Ai256(Ref3d(0, 1, 3) + Bytes{0x17})), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{0x03000101});
}

TEST_F(SeriesDetails, NameCell_EveryByteOfTheFormulaMayBeAToken_AndNoneBehindIt) {
  ChartBuilder book = OneSeries();
  EXPECT_EQ(ReadAndDrop(book.Ai256(Bytes{0x03, 0x03, 0x03, 0x3A})), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{0x03030304});
  Fill(references_, kCount, -7);
  book = OneSeries();
  const Bytes behind = Bytes{7, 2, 0, 0, 0, 0, 3, 0, 0x1E, 0, 0, 0x3A};
  EXPECT_EQ(ReadAndDrop(book.Low(0x51, behind + Bytes(244))), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{-7});
  // In front of it neither: the number format's high byte would be two steps back.
  book = OneSeries();
  const Bytes before = Bytes{7, 2, 0, 0, 0, 0x3A, 9, 0, 0x17};
  EXPECT_EQ(ReadAndDrop(book.Low(0x51, before + Bytes(247))), 0);
  EXPECT_EQ(Numbers(references_, 1), Expected{-7});
}

TEST_F(SeriesDetails, NameCell_InFrontOfTheFirstToken_TheWalkEnds) {
  for (uint8_t id : {uint8_t{0x17}, uint8_t{0x00}, uint8_t{0xFF}}) {
    ChartBuilder book = OneSeries();
    EXPECT_EQ(ReadAndDrop(book.Ai256(Bytes{id} + Ref3d(0, 1, 1))), 0);
    EXPECT_EQ(Numbers(references_, 1), Expected{-7}) << int{id};
  }
}

TEST_F(SeriesDetails, DeeperRecords_AreNoneOfTheSeries_ButAnAreaFormatIs) {
  ChartBuilder book = OneSeries();
  book.Low(0x06).Begin().SeriesText("deep").Low(0x45, U16(9)).Ai256(Ref3d(0, 1, 1)).AreaFormat(1, 2, 1).End();
  EXPECT_EQ(ReadSeries(book.AreaFormat(3, 4, 1)), 0);
  EXPECT_EQ(names_.TextAt(1), "unset");
  EXPECT_EQ(Numbers(references_, 1), Expected{-7});
  EXPECT_EQ(Numbers(colours_, 1), Expected{1});
}

TEST_F(SeriesDetails, BlocksInTheSeries_AreKnownByTheBitOfTheirBeginAndEnd) {
  ChartBuilder book = OneSeries();
  book.Record(0x0033).Record(0x1133).SeriesText("deep").Record(0x0034).Record(0x1134).SeriesText("name");
  EXPECT_EQ(ReadAndDrop(book), 0);
  EXPECT_EQ(names_.TextAt(1), "name");
  book = OneSeries();
  EXPECT_EQ(ReadSeries(book.Record(0x3234).AreaFormat(1, 2, 1).Low(0x45, U16(3))), 0);
  EXPECT_EQ(Numbers(colours_, 1), Expected{-7});
}

TEST_F(SeriesDetails, FirstRecordOfEachKindCounts) {
  ChartBuilder book = OneSeries();
  book.SeriesText("one").SeriesText("two").Low(0x45, U16(1)).Low(0x45, U16(0));
  book.AreaFormat(5, 6, 1).AreaFormat(7, 8, 1).End().Low(0x14).Low(0x18).Low(0x14).Low(0x17).End();
  LoadChart(book);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(names_.TextAt(1), "one");
  EXPECT_EQ(Numbers(groups_, 2), (Expected{0, 1}));
  EXPECT_EQ(Numbers(colours_, 1), Expected{5});
}

constexpr struct {
  const char* label;
  uint8_t low, high;
  int64_t colour;
} kPatterns[] = {{"solid", 1, 0, 0x010203},
                 {"none", 0, 0, 0x040506},
                 {"other", 2, 0, 0x040506},
                 {"solid, high byte", 1, 1, 0x040506}};

TEST_F(SeriesDetails, Colour_IsTheForegroundOfASolidPattern) {
  for (const auto& row : kPatterns) {
    ChartBuilder book = OneSeries();
    EXPECT_EQ(ReadAndDrop(book.AreaFormat(0x010203, 0x040506, row.low, row.high)), 0);
    EXPECT_EQ(Numbers(colours_, 1), Expected{row.colour}) << row.label;
  }
}

TEST_F(SeriesDetails, PlainRecordsOfTheSameLowBytes_AreNotTaken) {
  ChartBuilder book = OneSeries();
  book.Record(0x000D, Bytes{0, 0, 1, 'x'}).Record(0x0045, U16(1)).Record(0x0051, Bytes(256));
  EXPECT_EQ(ReadSeries(book), 0);
  EXPECT_EQ(names_.TextAt(1), "unset");
  EXPECT_EQ(Numbers(references_, 1), Expected{-7});
}

// A chart has a HEADER, of CHARTFORMAT's low byte, and keeps its values as NUMBER records, of SERIES' low byte.
TEST_F(SeriesDetails, HeadersAndCells_AreNoGroupsAndNoSeries) {
  ChartBuilder book = OneChart();
  book.Chart().Record(0x0014, Bytes(4)).Begin().Record(0x0203, Bytes(14)).Series(1).Begin();
  book.SeriesText("a").Low(0x45, U16(0)).End().Low(0x14).Low(0x18).End();
  LoadChart(book);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(names_.TextAt(1), "a");
  EXPECT_EQ(Numbers(groups_, 1), Expected{1});
}

TEST_F(SeriesDetails, NumberOfTheGroup_IsAWholeWord) {
  ChartBuilder book = OneSeries();
  book.Low(0x45, U16(0x0100)).End().Low(0x14).Low(0x18).End();
  LoadChart(book);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(Numbers(groups_, 2), (Expected{0, 1}));
}

TEST_F(SeriesDetails, RecordBehindTheSeries_CountsAsItsBegin_WhateverItIs) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).SeriesText("begin").SeriesText("in").End();
  LoadChart(book);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(names_.TextAt(1), "in");
}

TEST_F(SeriesDetails, BlockThatIsNeverClosed_ReadsOnBehindTheChart) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().Close().SeriesText("behind").Record(0x1145, U16(0)).EndSheet();
  Load(book);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(names_.TextAt(1), "behind");
}

TEST_F(SeriesDetails, BlockThatIsNeverClosed_EndsAtTheBufEnd) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().Close().EndSheet();
  book.Stream().BufEnd();
  Load(book.SeriesText("behind"));
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(names_.TextAt(1), "unset");
}

// Each chart type as the first of a group, with another behind it that no longer counts.
TEST_F(SeriesDetails, KindsOfGroups) {
  const struct {
    uint8_t low;
    int64_t kind;
  } kinds[] = {{0x1A, 0}, {0x17, 0}, {0x19, 0}, {0x3F, 0},      {0x18, 1},
               {0x1B, 1}, {0x3E, 1}, {0x40, 1}, {0x15, 0xFFFF}, {0x02, 0xFFFF}};
  for (const auto& row : kinds) {
    ChartBuilder book = OneChart();
    book.Chart().Low(0x18).Low(0x17).Low(0x14).Record(static_cast<uint16_t>(row.low)).Low(row.low);
    if (row.kind != 0xFFFF) book.Low(0x17).Low(0x18);
    LoadChart(book);
    EXPECT_EQ(Read(), 0);
    EXPECT_EQ(Numbers(groups_, 1), Expected{row.kind}) << int{row.low};
    MEMORYFREEALL();
    Fill(groups_, kCount, 0);
  }
}

TEST_F(SeriesDetails, Groups_AreReplacedByTheirKinds_TheCallersOwnTooNumbersOutsideByZero) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().Low(0x45, U16(2)).End();
  book.Low(0x14).Low(0x18).Low(0x14).Low(0x1A).Low(0x14).End();
  LoadChart(book);
  const struct {
    int32_t before;
    int64_t after;
  } rows[] = {{0, 1},   {1, 0},          {2, 0xFFFF},    {3, 0},          {-1, 0},
              {127, 0}, {0x7FFFFFFF, 0}, {INT32_MIN, 0}, {0x40000000, 0}, {0x10000, 0}};
  for (const auto& row : rows) {
    groups_.SetNumber(2, 0, row.before);
    EXPECT_EQ(Read(), 0);
    EXPECT_EQ(Numbers(groups_, 2), (Expected{0xFFFF, row.after})) << row.before;
  }
}

TEST_F(SeriesDetails, GroupsOfOtherCharts_AreNotCounted) {
  ChartBuilder book = OneChart();
  book.Low(0x14).Chart().Low(0x14).Low(0x18).Close().Low(0x14).Open();
  LoadChart(book.Chart().Low(0x14).Low(0x1A));
  Fill(groups_, kCount, 1);
  EXPECT_EQ(Read(2), 0);
  EXPECT_EQ(Numbers(groups_, 1), Expected{0});
  Fill(groups_, kCount, 0);
  EXPECT_EQ(Read(1), 0);
  EXPECT_EQ(Numbers(groups_, 1), Expected{1});
}

TEST_F(SeriesDetails, ManySeries_TheArraysTakeTheirs) {
  ChartBuilder book = OneChart();
  book.Chart().Begin();
  for (const char* name : {"a", "b", "c", "d", "e"}) book.Series(1).Begin().SeriesText(name).End();
  LoadChart(book.End());
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(names_.TextAt(1) + names_.TextAt(2) + names_.TextAt(3), "abc");
}

TEST_F(SeriesDetails, NameWithoutAPoolBlock_LeavesTheRestOfItsSeries) {
  ChartBuilder book = OneChart();
  book.Chart().Begin().Series(1).Begin().SeriesText("a").AreaFormat(5, 6, 1).Low(0x45, U16(1)).End();
  book.Series(1).Begin().AreaFormat(7, 8, 1).Low(0x45, U16(1)).End().Low(0x14).Low(0x17).Low(0x14).Low(0x18);
  LoadChart(book.End());
  FillPool(8);  // the ninth is that of the groups
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(names_.TextAt(1), "unset");
  EXPECT_EQ(Numbers(colours_, 2), (Expected{-7, 7}));
  EXPECT_EQ(Numbers(groups_, 2), (Expected{0, 1}));
  EXPECT_EQ(LiveBlocks(), 8u);
}

// The smallest free slot has 512 bytes.
TEST_F(SeriesDetails, TableOfGroups_TakesTwoBytesAGroup) {
  for (int groups : {256, 257}) {
    ChartBuilder book = OneChart();
    book.Chart();
    for (int i = 0; i < groups; ++i) book.Low(0x14);
    LoadChart(book);
    uint32_t smallest = MEMORYALLOC(1);
    ASSERT_EQ(MEMORYALLOCSIZE(smallest), 512u);
    FillPool(9);
    MEMORYFREE(&smallest);
    EXPECT_EQ(Read(), groups == 256 ? 0 : 10);
    MEMORYFREEALL();
  }
}

TEST_F(SeriesDetails, TableOfGroups_IsOneBlock_EvenWithoutGroups) {
  ChartBuilder book = OneSeries();
  ReadSeries(book);
  FillPool(9);
  EXPECT_EQ(Read(), 10);
  EXPECT_EQ(Read(2), 9);
  EXPECT_EQ(LiveBlocks(), 9u);
}

}  // namespace
