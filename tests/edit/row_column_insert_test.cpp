// XLInsertRow and XLInsertCol: what moves, what stays, what is split.
#include <algorithm>

#include "row_column_fixture.h"
#include "support/formula_builder.h"

namespace tolvenar {
namespace {

using namespace testing;
using namespace testing::formula;

class InsertRowTest : public RowColumnTest {};

TEST_F(InsertRowTest, CellsAtAndBeyondMove_TheNewRowIsEmptyAndInherits) {
  const Bytes looks = U16(1) + U16(5) + Bytes(10, 0xA4);
  Load(EndSheet(Book()
                    .Dimensions(0, 3, 0, 5)
                    .Row(0)
                    .Record(0x0208, U16(1) + looks)
                    .Row(2)
                    .Number(0, 0, 15, 1.0)
                    .Number(1, 0, 15, 2.0)
                    .Number(2, 0, 15, 3.0)));
  EXPECT_EQ(Run(XLInsertRow, 2), 0);
  EXPECT_READS_AS(EndSheet(Book()
                               .Dimensions(0, 4, 0, 5)
                               .Row(0)
                               .Record(0x0208, U16(1) + looks)
                               .Record(0x0208, U16(2) + looks)
                               .Row(3)
                               .Number(0, 0, 15, 1.0)
                               .Number(2, 0, 15, 2.0)
                               .Number(3, 0, 15, 3.0)));
  EXPECT_EQ(LiveBlocks(), 2u);
}

// One record of each kind in row `row`, column `column`.
StreamBuilder& AllCells(StreamBuilder& stream, uint16_t row, uint16_t column) {
  stream.BoolErr(row, column, 15, 1, 0)
      .Formula(row, column, 15, Bytes(8))
      .Blank(row, column, 15)
      .Rk(row, column, 15, 6);
  stream.Label(row, column, 15, "ab")
      .Number(row, column, 15, 1.5)
      .Record(0x0207, U16(row) + U16(column) + Bytes(3));
  return stream.Record(0x00D6, U16(row) + U16(column) + U16(15) + U16(1) + Bytes{'a', 0});
}

TEST_F(InsertRowTest, AllTenKindsOfCellMove) {
  StreamBuilder before = Book().Dimensions(0, 4, 0, 5), after = Book().Dimensions(0, 5, 0, 5);
  AllCells(before, 2, 1).MulRk(2, 2, {{15, 6}, {15, 10}}).MulBlank(2, 4, {15, 16});
  AllCells(after, 3, 1).MulRk(3, 2, {{15, 6}, {15, 10}}).MulBlank(3, 4, {15, 16});
  Load(EndSheet(before));
  EXPECT_EQ(Run(XLInsertRow, 3), 0);
  EXPECT_READS_AS(EndSheet(after));
}

TEST_F(InsertRowTest, CellsAboveStay) {
  StreamBuilder before = Book().Dimensions(0, 4, 0, 5), after = Book().Dimensions(0, 5, 0, 5);
  Load(EndSheet(AllCells(before, 1, 1)));
  EXPECT_EQ(Run(XLInsertRow, 3), 0);
  EXPECT_READS_AS(EndSheet(AllCells(after, 1, 1)));
}

TEST_F(InsertRowTest, LabelSstAndOtherRecords_KeepTheirPlace) {
  const auto rest = [](StreamBuilder stream) {
    stream.LabelSst(2, 1, 15, 0).Record(0x007D, U16(0) + U16(5) + Bytes(8));
    return EndSheet(
        stream.Record(0x00E5, U16(1) + U16(2) + U16(3) + U16(0) + U16(1)).Record(0x1204, U16(2) + Bytes(4)));
  };
  Load(rest(Book().Dimensions(0, 3, 0, 5)));
  for (EditCall edit : {XLInsertRow, XLInsertCol}) EXPECT_EQ(Run(edit, 1), 0);
  EXPECT_READS_AS(rest(Book().Dimensions(0, 4, 0, 6)));
  for (EditCall edit : {XLDeleteRow, XLDeleteCol}) EXPECT_EQ(Run(edit, 1), 0);
  EXPECT_EQ(Run(XLAddRow, 9), 9);
  EXPECT_EQ(Run(XLAddCol, 9), 0);
  EXPECT_READS_AS(rest(Book().Dimensions(0, 9, 0, 9)));
}

TEST_F(InsertRowTest, AtLastRowPlusOne_StillRaisesTheLastRow_AndMakesNoRow) {
  Load(EndSheet(Book().Dimensions(0, 3, 0, 5).Row(0).Row(2).Number(2, 0, 15, 1.0)));
  const uint32_t size = size_;
  EXPECT_EQ(Run(XLInsertRow, 4), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 4, 0, 5).Row(0).Row(2).Number(2, 0, 15, 1.0)));
  EXPECT_EQ(Run(XLInsertRow, 1000), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 5, 0, 5).Row(0).Row(2).Number(2, 0, 15, 1.0)));
  EXPECT_EQ(size_, size);
}

TEST_F(InsertRowTest, RowWithoutRowRecord_MovesAndNeedsNoBlock) {
  Load(EndSheet(Book().Dimensions(0, 3, 0, 5).Row(0).Number(1, 0, 15, 1.0).Row(2)));
  while (MEMORYALLOC(1) != 0) {
  }
  EXPECT_EQ(Run(XLInsertRow, 2), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 4, 0, 5).Row(0).Number(2, 0, 15, 1.0).Row(3)));
}

TEST_F(InsertRowTest, TwoRowsOfTheSameNumber_TheLastIsDisplaced) {
  Load(EndSheet(Book().Dimensions(0, 3, 0, 5).Row(1, 1, 1).Row(1, 2, 2).Number(1, 0, 15, 1.0)));
  EXPECT_EQ(Run(XLInsertRow, 2), 0);
  EXPECT_READS_AS(
      EndSheet(Book().Dimensions(0, 4, 0, 5).Row(2, 1, 1).Row(1, 2, 2).Row(2, 2, 2).Number(2, 0, 15, 1.0)));
}

TEST_F(InsertRowTest, Biff5_RaisesTheFieldOfItsOwnDimensions) {
  Load(EndSheet(Book(5).Dimensions(0, 3, 0, 5).Row(1)), kBiff5);
  EXPECT_EQ(Run(XLInsertRow, 2), 0);
  EXPECT_READS_AS(EndSheet(Book(5).Dimensions(0, 4, 0, 5).Row(1).Row(2)));
}

TEST_F(InsertRowTest, RowsCompareAsSigned) {
  Load(EndSheet(Book().Dimensions(0, 3, 0, 5).Number(0x8000, 0, 15, 1.0).Number(0x7FFF, 0, 15, 1.0)));
  EXPECT_EQ(Run(XLInsertRow, 1), 0);
  EXPECT_READS_AS(
      EndSheet(Book().Dimensions(0, 4, 0, 5).Number(0x8000, 0, 15, 1.0).Number(0x8000, 0, 15, 1.0)));
}

TEST_F(InsertRowTest, NestedSubstreamsAreLeftAlone) {
  const auto chart = [](StreamBuilder stream) {
    stream.Bof(6, kChart)
        .Dimensions(0, 9, 0, 9)
        .Row(1)
        .Number(1, 1, 15, 1.0)
        .MulRk(1, 0, {{15, 6}, {15, 6}, {15, 6}});
    return EndSheet(stream.Formula(1, 1, 15, Bytes(8), Ref(5, 5)).Eof());
  };
  Load(chart(Book().Dimensions(0, 3, 0, 5)));
  for (const NamedEdit& edit : kAllEdits) {
    const int16_t result = Run(edit.call, edit.call == XLAddRow || edit.call == XLAddCol ? 99 : 2);
    EXPECT_EQ(result, edit.call == XLAddRow ? 9 : 0) << edit.name;
  }
  // AddRow: 99 rows. AddCol: 99 columns. InsertRow and InsertCol: one more. DeleteRow, DeleteCol: none, the
  // positions lie inside.
  EXPECT_READS_AS(chart(Book().Dimensions(0, 100, 0, 100)));
}

TEST_F(InsertRowTest, OtherSheetsAreLeftAlone) {
  const auto book = [](uint16_t past, uint16_t row) {
    StreamBuilder stream = StreamBuilder().Bof(6).Sheet("A").Sheet("B").Sheet("C").Eof();
    EndSheet(stream.Bof(6, kWorksheet).Dimensions(0, 3, 0, 5).Row(1).Number(1, 0, 15, 1.0));
    EndSheet(stream.Bof(6, kWorksheet).Dimensions(0, past, 0, 5).Number(row, 0, 15, 1.0));
    return EndSheet(stream.Bof(6, kWorksheet).Dimensions(0, 3, 0, 5).Row(1).Number(1, 0, 15, 1.0));
  };
  Load(book(3, 1));
  EXPECT_EQ(Run(XLInsertRow, 2, 2), 0);
  EXPECT_READS_AS(book(4, 2));
}

TEST_F(InsertRowTest, FormulasFollow_InAllThreeRecords) {
  const auto sheet = [](uint16_t past, uint16_t row, uint16_t to) {
    StreamBuilder stream = Book().Dimensions(0, past, 0, 5).Formula(row, 1, 15, Bytes(8), Ref(to, 1));
    stream.Record(0x0221, ArrayPayload(Ref(to, 1))).Record(0x04BC, SharedPayload(Area(1, to, 1, 2, 0x2D)));
    return EndSheet(stream);
  };
  Load(sheet(6, 3, 9));
  EXPECT_EQ(Run(XLInsertRow, 3), 0);
  EXPECT_READS_AS(sheet(7, 4, 10));
}

TEST_F(InsertRowTest, NoBlockForTheRow_Gives3_AfterEverythingHasMoved) {
  Load(EndSheet(Book().Dimensions(0, 3, 0, 5).Row(1).Number(1, 0, 15, 1.0)));
  while (MEMORYALLOC(1) != 0) {
  }
  EXPECT_EQ(Run(XLInsertRow, 2), 3);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 4, 0, 5).Row(2).Number(2, 0, 15, 1.0)));
}

TEST_F(InsertRowTest, RowTooLongToDisplace_Gives10_AfterEverythingHasMoved) {
  const auto sheet = [](uint16_t past, uint16_t row) {
    return Book()
        .Dimensions(0, past, 0, 5)
        .Record(0x0208, U16(row) + Bytes(32762, 0xA4))
        .Number(row, 0, 15, 1.0);
  };
  Load(EndSheet(sheet(3, 1)));
  const uint32_t size = size_;
  EXPECT_EQ(Run(XLInsertRow, 2), 10);
  EXPECT_READS_AS(EndSheet(sheet(4, 2)));
  EXPECT_EQ(size_, size);
  EXPECT_EQ(LiveBlocks(), 3u);  // the block of the ROW has stayed
}

TEST_F(InsertRowTest, BufferThatCanNotGrow_Gives10_ReleasesIt_AndKeepsTheRowsBlock) {
  StreamBuilder stream = Book().Dimensions(0, 3, 0, 5).Row(1);
  while (stream.Here() < 220) stream.Blank(1, 0, 15);
  Load(EndSheet(stream), kBiff8, true);
  ASSERT_EQ(MEMORYISHANDLE(buffer_), 1);
  while (LiveBlocks() < 8) MEMORYALLOC(1);
  EXPECT_EQ(Run(XLInsertRow, 2), 10);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 8u);  // the buffer is gone, the block of the ROW has stayed
}

class InsertColTest : public RowColumnTest {};

TEST_F(InsertColTest, CellsAtAndBeyondMove_EveryRowGrows) {
  Load(EndSheet(Book()
                    .Dimensions(0, 3, 0, 5)
                    .Row(0, 0, 5)
                    .Row(2, 0, 1)
                    .Number(0, 0, 15, 1.0)
                    .Number(0, 1, 15, 2.0)
                    .Number(2, 4, 15, 3.0)));
  EXPECT_EQ(Run(XLInsertCol, 2), 0);
  EXPECT_READS_AS(EndSheet(Book()
                               .Dimensions(0, 3, 0, 6)
                               .Row(0, 0, 6)
                               .Row(2, 0, 2)
                               .Number(0, 0, 15, 1.0)
                               .Number(0, 2, 15, 2.0)
                               .Number(2, 5, 15, 3.0)));
}

TEST_F(InsertColTest, ColumnFarBeyond_StillGrowsDimensionsAndRows) {
  Load(EndSheet(Book().Dimensions(0, 3, 0, 5).Row(0, 0, 5).Number(0, 0, 15, 1.0)));
  EXPECT_EQ(Run(XLInsertCol, 200), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 3, 0, 6).Row(0, 0, 6).Number(0, 0, 15, 1.0)));
}

TEST_F(InsertColTest, Biff5_RaisesTheFieldOfItsOwnDimensions) {
  Load(EndSheet(Book(5).Dimensions(0, 3, 0, 5).Row(0, 0, 5)), kBiff5);
  EXPECT_EQ(Run(XLInsertCol, 1), 0);
  EXPECT_READS_AS(EndSheet(Book(5).Dimensions(0, 3, 0, 6).Row(0, 0, 6)));
}

TEST_F(InsertColTest, AllSingleKindsOfCellMove) {
  StreamBuilder before = Book().Dimensions(0, 4, 0, 5), after = Book().Dimensions(0, 4, 0, 6);
  Load(EndSheet(AllCells(before, 1, 2)));
  EXPECT_EQ(Run(XLInsertCol, 3), 0);
  EXPECT_READS_AS(EndSheet(AllCells(after, 1, 3)));
}

TEST_F(InsertColTest, RunAtOrBeyond_MovesInPlace_RunInFrontStays) {
  const auto sheet = [](uint16_t past, uint16_t by) {
    StreamBuilder stream = Book().Dimensions(0, 1, 0, past).MulRk(0, 0, {{1, 6}, {2, 10}});
    stream.MulRk(0, static_cast<uint16_t>(2 + by), {{3, 6}, {4, 10}})
        .MulBlank(0, static_cast<uint16_t>(4 + by), {5, 6, 7});
    return EndSheet(stream);
  };
  Load(sheet(7, 0));
  const uint32_t size = size_;
  EXPECT_EQ(Run(XLInsertCol, 3), 0);
  EXPECT_READS_AS(sheet(8, 1));
  EXPECT_EQ(size_, size);
}

TEST_F(InsertColTest, InsideAMulRk_MakesTwo) {
  Load(EndSheet(
      Book().Dimensions(0, 1, 0, 4).MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}, {4, 18}}).Number(0, 4, 15, 1.0)));
  EXPECT_EQ(Run(XLInsertCol, 3), 0);
  EXPECT_READS_AS(EndSheet(Book()
                               .Dimensions(0, 1, 0, 5)
                               .MulRk(0, 0, {{1, 6}, {2, 10}})
                               .MulRk(0, 3, {{3, 14}, {4, 18}})
                               .Number(0, 5, 15, 1.0)));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(InsertColTest, AtTheSecondCellOfAMulRk_LeavesALoneRk) {
  Load(EndSheet(Book().Dimensions(0, 1, 0, 3).MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}})));
  EXPECT_EQ(Run(XLInsertCol, 2), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 1, 0, 4).Rk(0, 0, 1, 6).MulRk(0, 2, {{2, 10}, {3, 14}})));
}

TEST_F(InsertColTest, InsideAMulBlank_MakesTwo) {
  Load(EndSheet(Book().Dimensions(0, 1, 0, 4).MulBlank(0, 0, {1, 2, 3, 4}).Number(0, 4, 15, 1.0)));
  EXPECT_EQ(Run(XLInsertCol, 3), 0);
  EXPECT_READS_AS(EndSheet(
      Book().Dimensions(0, 1, 0, 5).MulBlank(0, 0, {1, 2}).MulBlank(0, 3, {3, 4}).Number(0, 5, 15, 1.0)));
}

TEST_F(InsertColTest, AtTheLastCellOfAMulRk_TheCellIsMadeOfTheSixBytesBehindIt) {
  // XF: the run's last-column word, 3. Value: what the slot of the scratch copy held behind the body, here
  // zeros or leftovers.
  Load(EndSheet(
      Book().Dimensions(0, 1, 0, 4).MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}, {4, 18}}).Number(0, 4, 15, 1.0)));
  EXPECT_EQ(Run(XLInsertCol, 4), 0);
  Bytes walked = Walked();
  StreamBuilder after = Book().Dimensions(0, 1, 0, 5).MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}});
  const uint32_t value = after.Here() + kRkValue;
  ASSERT_GE(walked.size(), value + 4);
  std::fill_n(walked.begin() + value, 4, uint8_t{0});
  EXPECT_EQ(Hex(walked), Hex(EndSheet(after.Rk(0, 4, 3, 0).Number(0, 5, 15, 1.0)).Stream()));
}

TEST_F(InsertColTest, AtTheLastCellOfAMulBlank_TheCellIsALongBlank) {
  Load(EndSheet(Book().Dimensions(0, 1, 0, 4).MulBlank(0, 0, {1, 2, 3, 4}).Number(0, 4, 15, 1.0)));
  EXPECT_EQ(Run(XLInsertCol, 4), 0);
  EXPECT_READS_AS(EndSheet(Book()
                               .Dimensions(0, 1, 0, 5)
                               .MulBlank(0, 0, {1, 2, 3})
                               .Record(0x0201, U16(0) + U16(4) + U16(4) + U32(0))
                               .Number(0, 5, 15, 1.0)));
}

TEST_F(InsertColTest, RunsOfManyRows_AreAllSplit) {
  StreamBuilder before = Book().Dimensions(0, 200, 0, 4), after = Book().Dimensions(0, 200, 0, 5);
  for (uint16_t row = 0; row < 200; ++row) {
    before.MulRk(row, 0, {{1, 6}, {2, 10}, {3, 14}, {4, 18}}).Number(row, 4, 15, row);
    after.MulRk(row, 0, {{1, 6}, {2, 10}}).MulRk(row, 3, {{3, 14}, {4, 18}}).Number(row, 5, 15, row);
  }
  Load(EndSheet(before), kBiff8, true);
  EXPECT_EQ(Run(XLInsertCol, 3), 0);
  EXPECT_READS_AS(EndSheet(after));
}

TEST_F(InsertColTest, SplitThatMovesTheBuffer_GoesOnInTheNewOne) {
  StreamBuilder before = Book().Dimensions(0, 1, 0, 4), after = Book().Dimensions(0, 1, 0, 5);
  while (before.Here() < 180) before.Blank(0, 0, 15), after.Blank(0, 0, 15);
  before.MulRk(0, 1, {{1, 6}, {2, 10}, {3, 14}}).Number(0, 4, 15, 1.0);
  after.Rk(0, 1, 1, 6).MulRk(0, 3, {{2, 10}, {3, 14}}).Number(0, 5, 15, 1.0);
  Load(EndSheet(before), kBiff8, true);
  const uint32_t slot = static_cast<uint32_t>(MEMORYISHANDLE(buffer_));
  EXPECT_EQ(Run(XLInsertCol, 3), 0);
  EXPECT_GT(static_cast<uint32_t>(MEMORYISHANDLE(buffer_)), slot);
  EXPECT_READS_AS(EndSheet(after));
}

TEST_F(InsertColTest, RunAtTheVeryEndOfTheSheet_EndsThere) {
  const auto book = [](bool done) {
    StreamBuilder stream = StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof().Bof(6, kWorksheet);
    stream.Dimensions(0, 1, 0, done ? 5 : 4);
    if (done) stream.MulRk(0, 0, {{1, 6}, {2, 10}}).MulRk(0, 3, {{3, 14}, {4, 18}});
    if (!done) stream.MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}, {4, 18}});
    return EndSheet(stream.Eof().Bof(6, kWorksheet).Dimensions(0, 1, 0, 4).Number(0, 3, 15, 1.0));
  };
  Load(book(false));
  EXPECT_EQ(Run(XLInsertCol, 3), 0);
  const uint32_t from = TableEntry(OpenBlock(table_), kTableFirstSheet);
  const Bytes expected = book(true).Stream();
  EXPECT_EQ(Hex(WalkedStream(buffer_, from)), Hex(Bytes(expected.begin() + from, expected.end())));
}

// What is left of the run's room is shorter than a DETOUR, so the EOF goes with it into the patch area, and the way
// back leads to the BOF of the next sheet.
TEST_F(InsertColTest, RunDirectlyInFrontOfTheEof_LeavesTheNextSheetAlone) {
  const auto book = [](bool done) {
    StreamBuilder stream = StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof().Bof(6, kWorksheet);
    stream.Dimensions(0, 1, 0, done ? 3 : 2);
    if (done) stream.Blank(0, 0, 1).Record(0x0201, U16(0) + U16(2) + U16(2) + U32(0));
    if (!done) stream.MulBlank(0, 0, {1, 2});
    return EndSheet(stream.Eof().Bof(6, kWorksheet).Dimensions(0, 1, 0, 4).Row(0).Number(0, 3, 15, 1.0));
  };
  Load(book(false));
  EXPECT_EQ(Run(XLInsertCol, 2), 0);
  const uint32_t from = TableEntry(OpenBlock(table_), kTableFirstSheet);
  const Bytes expected = book(true).Stream();
  EXPECT_EQ(Hex(WalkedStream(buffer_, from)), Hex(Bytes(expected.begin() + from, expected.end())));
}

TEST_F(InsertColTest, FormulasFollow_InAllThreeRecords) {
  const auto sheet = [](uint16_t past, uint16_t column, uint8_t to) {
    StreamBuilder stream = Book().Dimensions(0, 9, 0, past).Formula(3, column, 15, Bytes(8), Ref(7, to));
    stream.Record(0x0221, ArrayPayload(Ref(7, to))).Record(0x04BC, SharedPayload(Area(1, 7, 1, to, 0x2D)));
    return EndSheet(stream);
  };
  Load(sheet(6, 3, 9));
  EXPECT_EQ(Run(XLInsertCol, 3), 0);
  EXPECT_READS_AS(sheet(7, 4, 10));
}

}  // namespace
}  // namespace tolvenar
