// FindCell: where a cell is, where it would be, and when it can't be. GetCellXF: the XF of a cell, also
// inside a run.
#include "edit/find_cell.h"

#include "edit/sheet_edit_fixture.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::Columns;
using testing::kChart;
using testing::kFiller;
using testing::kVersions;
using testing::kWorksheet;
using testing::StreamBuilder;
using testing::Types;
using testing::U16;
using testing::U32;
using testing::operator+;

class FindCellTest : public testing::SheetEditTest {
 protected:
  int32_t Find(int16_t row, int16_t column, int16_t sheet = 1) {
    return FindCell(buffer_, table_, sheet, row, column);
  }
};

int32_t Before(uint32_t at) {
  return -static_cast<int32_t>(at);
}

int32_t Found(uint32_t at) {
  return static_cast<int32_t>(at);
}

// A cell record of any kind: row, column, XF, and room behind them.
StreamBuilder& AddCell(StreamBuilder* book, uint16_t type, uint16_t row, uint16_t column) {
  return book->Record(type, U16(row) + U16(column) + U16(15) + Bytes(8));
}

TEST_F(FindCellTest, WithoutTableSheetOrBuffer_Gives0) {
  Open(Sheet(6).Row(0).Number(0, 0, 15, 1.5));
  EXPECT_GT(Find(1, 1), 0);
  EXPECT_EQ(FindCell(buffer_, 0, 1, 1, 1), 0);
  EXPECT_EQ(FindCell(buffer_, 0x1234, 1, 1, 1), 0);  // no live block: a table without sheets
  EXPECT_EQ(Find(1, 1, 0), 0);
  EXPECT_EQ(Find(1, 1, -1), 0);
  EXPECT_EQ(Find(1, 1, 2), 0);
  EXPECT_EQ(FindCell(0, table_, 1, 1, 1), 0);
  EXPECT_EQ(FindCell(0x1234, table_, 1, 1, 1), 0);  // no live block
}

TEST_F(FindCellTest, SheetWithoutRecords_Gives0) {
  BiffVersion = kBiff8;
  OpenAsItIs(StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, kWorksheet).Eof());
  EXPECT_EQ(Find(1, 1), 0);
}

TEST_F(FindCellTest, EachOfTheTenKinds_IsFoundByItsLowByte) {
  for (uint16_t type : Types{0x0205, 0x0006, 0x0406, 0x0201, 0x0001, 0x027E, 0x0204, 0x0004, 0x0207, 0x00D6,
                             0x0203, 0xEF03}) {
    SCOPED_TRACE(type);
    StreamBuilder book = Sheet(6).Row(0);
    AddCell(&book, type, 0, 3);
    Open(book);
    EXPECT_EQ(Find(1, 4), Found(book.Last()));
    MEMORYFREEALL();
  }
}

TEST_F(FindCellTest, OtherKinds_AreNoCells) {
  // LABELSST on purpose; the others for the bit that chart and private records have.
  for (uint16_t type : Types{0x00FD, 0x1203, 0x1006, 0x10BD, 0x0002, 0x00BC}) {
    SCOPED_TRACE(type);
    StreamBuilder book = Sheet(6).Row(0);
    AddCell(&book, type, 0, 3).Number(0, 5, 15, 1.0);
    Open(book);
    EXPECT_EQ(Find(1, 4), Before(book.Last()));
    MEMORYFREEALL();
  }
}

TEST_F(FindCellTest, AbsentCell_BelongsBeforeTheNextOneOfItsRow) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 1, 15, 1.0).Number(0, 4, 15, 2.0);
  Open(book);
  EXPECT_EQ(Find(1, 3), Before(book.Last()));
  EXPECT_EQ(Find(1, 1), Before(book.Last() - kNumberSize));
}

TEST_F(FindCellTest, AbsentCellBehindItsRow_BelongsBeforeTheFirstCellOfALaterRow) {
  StreamBuilder book =
      Sheet(6).Row(0).Row(1).Row(3).Number(0, 1, 15, 1.0).Number(1, 4, 15, 2.0).Number(3, 0, 15, 3.0);
  Open(book);
  EXPECT_EQ(Find(2, 6), Before(book.Last()));
  EXPECT_EQ(Find(1, 2), Found(book.Last() - 2 * kNumberSize));
}

TEST_F(FindCellTest, AbsentCellBehindAllCells_BelongsBeforeTheRecordAfterTheLastCell) {
  StreamBuilder book = Sheet(6).Row(0).Row(1).Number(0, 1, 15, 1.0).Number(1, 4, 15, 2.0);
  Open(book);
  EXPECT_EQ(Find(2, 6), Before(book.Here()));
}

TEST_F(FindCellTest, RowWithoutAnyCells_BelongsBeforeTheRecordAfterTheRow) {
  StreamBuilder book = Sheet(6).Row(0);
  const uint32_t behind = book.Here();
  Open(book.Row(1));
  EXPECT_EQ(Find(1, 6), Before(behind));
}

TEST_F(FindCellTest, CellsOfEarlierRows_MoveThePlaceOfAnAbsentCellBehindThem) {
  StreamBuilder book = Sheet(6).Row(0).Row(1).Number(0, 1, 15, 1.0).Number(0, 2, 15, 1.0);
  Open(book);
  EXPECT_EQ(Find(2, 1), Before(book.Here()));
}

TEST_F(FindCellTest, OtherRecordsInRowsAbove_AreNotTheLastPosition) {
  for (uint16_t type : Types{0x00FD, 0x1203, 0x10BD, 0xFE03, 0x0002}) {
    SCOPED_TRACE(type);
    StreamBuilder book = Sheet(6).Row(0).Row(1).Number(0, 1, 15, 1.0);
    const uint32_t behind = book.Here();
    Open(AddCell(&book, type, 0, 3));
    EXPECT_EQ(Find(2, 1), Before(behind));
    MEMORYFREEALL();
  }
}

TEST_F(FindCellTest, RowWithoutRowRecord_Gives0EvenWithCells) {
  Open(Sheet(6).Row(0).Number(0, 0, 15, 1.0).Number(1, 0, 15, 2.0).Number(2, 0, 15, 2.0));
  EXPECT_EQ(Find(2, 1), 0);
  EXPECT_EQ(Find(3, 1), 0);
  EXPECT_EQ(Find(4, 1), 0);
}

TEST_F(FindCellTest, RowRecordBehindItsCells_ComesTooLate) {
  Open(Sheet(6).Number(0, 0, 15, 1.0).Row(0).Number(0, 1, 15, 2.0));
  EXPECT_EQ(Find(1, 2), 0);
}

TEST_F(FindCellTest, CellOfALaterRowBeforeTheRowRecord_Gives0) {
  Open(Sheet(6).Number(4, 0, 15, 1.0).Row(0).Number(0, 1, 15, 2.0));
  EXPECT_EQ(Find(1, 2), 0);
}

TEST_F(FindCellTest, OutsideDimensions_Gives0InBothGenerations) {
  for (uint8_t version : kVersions) {
    SCOPED_TRACE(version);
    BiffVersion = version;
    StreamBuilder book =
        StreamBuilder().Bof(version).Sheet("Data").Eof().Bof(version, kWorksheet).Dimensions(1, 4, 2, 6);
    book.Row(0).Row(1).Row(3).Row(4).Number(1, 2, 15, 1.0).Number(3, 5, 15, 1.0);
    Open(book);
    EXPECT_GT(Find(2, 3), 0);
    EXPECT_GT(Find(4, 6), 0);
    EXPECT_EQ(Find(1, 3), 0);  // above the first row
    EXPECT_EQ(Find(5, 3), 0);  // one past the last row
    EXPECT_EQ(Find(2, 2), 0);  // left of the first column
    EXPECT_EQ(Find(2, 7), 0);  // one past the last column
    MEMORYFREEALL();
  }
}

TEST_F(FindCellTest, Dimensions_AreComparedAsSigned16BitValues) {
  struct Case {
    uint16_t first, past;
    bool inside;  // row 3 and column 3, caller's
  };
  for (const Case& c : {Case{0, 0x7FFF, true}, Case{0, 0x8000, false}, Case{0, 0xFFFF, false},
                        Case{0x7FFF, 10, true}, Case{0xFFFF, 10, true}, Case{0x7FFE, 0x7FFF, false}}) {
    for (uint8_t version : kVersions) {
      SCOPED_TRACE(uint32_t{c.first} * 0x10000 + c.past);
      BiffVersion = version;
      for (bool rows : {true, false}) {
        StreamBuilder book = StreamBuilder().Bof(version).Sheet("Data").Eof().Bof(version, kWorksheet);
        rows ? book.Dimensions(c.first, c.past, 0, 10) : book.Dimensions(0, 10, c.first, c.past);
        Open(book.Row(2).Number(2, 2, 15, 1.0));
        EXPECT_EQ(Find(3, 3), c.inside ? Found(book.Last()) : 0);
        MEMORYFREEALL();
      }
    }
  }
}

TEST_F(FindCellTest, DimensionsOfBiff8_HaveOnlyTheLowHalvesOfTheirRowsRead) {
  BiffVersion = kBiff8;
  StreamBuilder book = StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, kWorksheet);
  book.Record(0x0200, U32(0x00050001) + U32(0x00070003) + U16(0) + U16(10) + U16(0xFFFF));
  Open(book.Row(0).Row(1).Row(3).Number(1, 2, 15, 1.0));
  EXPECT_EQ(Find(2, 3), Found(book.Last()));
  EXPECT_EQ(Find(1, 3), 0);
  EXPECT_EQ(Find(4, 3), 0);
}

TEST_F(FindCellTest, SecondRowRecordOfARow_IsNotTheLastPosition) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 1, 15, 1.0);
  const uint32_t behind = book.Here();
  Open(book.Row(0));
  EXPECT_EQ(Find(1, 3), Before(behind));
}

TEST_F(FindCellTest, DimensionsOfANestedSubstream_BoundToo) {
  StreamBuilder book = Sheet(6).Row(0).Bof(6, kChart).Dimensions(0, 1, 0, 2).Eof().Number(0, 4, 15, 1.0);
  Open(book);
  EXPECT_EQ(Find(1, 5), 0);
  EXPECT_LT(Find(1, 2), 0);
}

TEST_F(FindCellTest, UnknownGeneration_HasNoBounds) {
  Open(Sheet(6).Row(40).Number(40, 50, 15, 1.0));
  EXPECT_EQ(Find(41, 51), 0);
  BiffVersion = 0;
  EXPECT_GT(Find(41, 51), 0);
}

TEST_F(FindCellTest, RowRecordOfANestedSubstream_DoesNotCount) {
  Open(Sheet(6).Bof(6, kChart).Row(0).Eof().Number(0, 1, 15, 1.0));
  EXPECT_EQ(Find(1, 2), 0);
}

TEST_F(FindCellTest, NumberOfANestedSubstream_DoesNotCount) {
  StreamBuilder book = Sheet(6).Row(0).Bof(6, kChart).Number(0, 1, 15, 1.0).Eof().Number(0, 1, 15, 2.0);
  Open(book);
  EXPECT_EQ(Find(1, 2), Found(book.Last()));
}

TEST_F(FindCellTest, NumberOfANestedSubstream_IsNotTheLastPosition) {
  StreamBuilder book = Sheet(6).Row(0).Row(1).Number(0, 1, 15, 1.0);
  const uint32_t behind = book.Here();
  Open(book.Bof(6, kChart).Number(0, 3, 15, 1.0).Eof());
  EXPECT_EQ(Find(1, 6), Before(behind));
  EXPECT_EQ(Find(2, 6), Before(behind));
}

TEST_F(FindCellTest, OtherCellOfANestedSubstream_IsTheLastPosition) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 1, 15, 1.0).Bof(6, kChart).Blank(0, 3, 15);
  const uint32_t behind = book.Here();
  Open(book.Eof());
  EXPECT_EQ(Find(1, 6), Before(behind));
}

TEST_F(FindCellTest, SubstreamInASubstream_IsNested) {
  StreamBuilder book = Sheet(6).Bof(6, kChart).Bof(6, kChart).Eof().Row(0).Number(0, 1, 15, 1.0).Eof();
  Open(book.Row(0).Number(0, 1, 15, 2.0));
  EXPECT_EQ(Find(1, 2), Found(book.Last()));
}

TEST_F(FindCellTest, OtherCellsOfANestedSubstream_Count) {
  for (uint16_t type : Types{0x0205, 0x0006, 0x0201, 0x027E, 0x0204, 0x0207, 0x00D6}) {
    SCOPED_TRACE(type);
    StreamBuilder book = Sheet(6).Row(0).Bof(6, kChart);
    AddCell(&book, type, 0, 1);
    const uint32_t nested = book.Last();
    Open(book.Eof().Number(0, 1, 15, 2.0));
    EXPECT_EQ(Find(1, 2), Found(nested));
    MEMORYFREEALL();
  }
}

TEST_F(FindCellTest, RunsOfANestedSubstream_Count) {
  StreamBuilder book = Sheet(6).Row(0).Bof(6, kChart).MulRk(0, 1, {{15, 0}, {16, 0}});
  const uint32_t mul_rk = book.Last();
  book.MulBlank(0, 3, {15, 16});
  const uint32_t mul_blank = book.Last();
  Open(book.Eof());
  EXPECT_EQ(Find(1, 3), Found(mul_rk));
  EXPECT_EQ(Find(1, 4), Found(mul_blank));
}

TEST_F(FindCellTest, Run_HoldsTheCellsFromItsFirstToItsLastColumn) {
  StreamBuilder book = Sheet(6).Row(0).MulRk(0, 2, {{15, 0}, {16, 0}, {17, 0}});
  const uint32_t mul_rk = book.Last();
  book.MulBlank(0, 7, {15, 16});
  const uint32_t mul_blank = book.Last();
  Open(book);
  EXPECT_EQ(Find(1, 2), Before(mul_rk));
  for (int16_t column : Columns{3, 4, 5}) EXPECT_EQ(Find(1, column), Found(mul_rk));
  EXPECT_EQ(Find(1, 6), Before(mul_blank));
  for (int16_t column : Columns{8, 9}) EXPECT_EQ(Find(1, column), Found(mul_blank));
  EXPECT_EQ(Find(1, 10), Before(book.Here()));
}

TEST_F(FindCellTest, StringRecord_StopsTheSearchAtAFalsePosition) {
  // The words of a STRING behind a FORMULA are its length and the first bytes of its text: here row 3, column
  // 0x6261.
  StreamBuilder book =
      Sheet(6).Row(0).Formula(0, 1, 15, Bytes(8)).Record(0x0207, U16(3) + testing::Text("ab"));
  const uint32_t string = book.Last();
  Open(book.Number(0, 2, 15, 1.0));
  EXPECT_EQ(Find(1, 3), Before(string));
}

TEST_F(FindCellTest, RowsAndColumns_CompareAsSigned16BitValues) {
  StreamBuilder book =
      Sheet(6).Row(0).Number(0x8000, 0, 15, 0.5).Number(0, 0xFFFF, 15, 1.0).Number(0, 2, 15, 2.0);
  Open(book);
  EXPECT_EQ(Find(1, 3), Found(book.Last()));
  EXPECT_EQ(Find(-32768, 1), 0);
  EXPECT_EQ(Find(1, -32768), 0);
}

TEST_F(FindCellTest, SearchStopsAtTheEndOfItsSheet) {
  StreamBuilder book = StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof();
  book.Bof(6, kWorksheet).Dimensions(0, 10, 0, 20).Row(0).Number(0, 0, 15, 1.0);
  const uint32_t end = book.Here();
  book.Eof().Bof(6, kWorksheet).Dimensions(0, 10, 0, 20).Row(0).Row(1).Number(1, 3, 15, 1.0).Eof();
  const uint32_t number = book.Here() - kEofSize - kNumberSize;
  BiffVersion = kBiff8;
  OpenAsItIs(book);
  EXPECT_EQ(Find(1, 4), Before(end));
  EXPECT_EQ(Find(2, 4), 0);
  EXPECT_EQ(Find(2, 4, 2), Found(number));
  EXPECT_EQ(Find(2, 5, 2), Before(number + kNumberSize));
}

TEST_F(FindCellTest, SearchStopsAtTheSheetsEofEvenWhenItIsNotTheLimit) {
  StreamBuilder book = StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof();
  book.Bof(6, kWorksheet).Row(0).Number(0, 0, 15, 1.0);
  const uint32_t eof = book.Here();
  book.Eof().Bof(6, kWorksheet).Row(1).Blank(0, 4, 15).Number(1, 3, 15, 1.0).Eof();
  BiffVersion = kBiff8;
  OpenAsItIs(book);
  PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, 0x7FFFFFFF);
  EXPECT_GT(Find(1, 1), 0);
  EXPECT_EQ(Find(1, 5), Before(eof));
  EXPECT_EQ(Find(2, 4), 0);
}

TEST_F(FindCellTest, SearchStopsExactlyAtTheEndOfTheTable) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 0, 15, 1.0).Number(0, 3, 15, 1.0);
  Open(book);
  PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, book.Last());
  EXPECT_EQ(Find(1, 1), Found(book.Last() - kNumberSize));
  EXPECT_EQ(Find(1, 4), Before(book.Last()));
}

TEST_F(FindCellTest, SearchStopsExactlyAtTheEndOfTheTable_InRowsAboveToo) {
  StreamBuilder book = Sheet(6).Row(0).Row(1).Number(0, 0, 15, 1.0).Number(0, 3, 15, 1.0);
  Open(book.Number(1, 0, 15, 1.0));
  const uint32_t end = book.Last() - kNumberSize;
  PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, end);
  EXPECT_EQ(Find(2, 1), Before(end));
}

TEST_F(FindCellTest, SearchFollowsADetour) {
  StreamBuilder book = Sheet(6).Row(0);
  const uint32_t detour = book.Here();
  book.Raw(kFiller).Raw(testing::kWindow2).Eof().BufEnd().Number(0, 0, 15, 1.0).Number(0, 5, 15, 1.0);
  const uint32_t number = book.Last();
  OpenAsItIs(book.Resume(detour + kJumpSize));
  LayDetour(detour, number - kNumberSize);
  EXPECT_EQ(Find(1, 6), Found(number));
  EXPECT_EQ(Find(1, 7), Before(number + kNumberSize));
}

TEST_F(FindCellTest, RingInTheStream_EndsTheSearchAsAtTheSheetsEnd) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 0, 15, 1.0);
  const uint32_t number = book.Last();
  Open(book.Raw(kFiller));
  LayDetour(number + kNumberSize, number);
  EXPECT_EQ(Find(1, 1), Found(number));
  EXPECT_EQ(Find(1, 2), Before(number + kNumberSize));
  EXPECT_EQ(Find(2, 1), 0);
}

TEST_F(FindCellTest, BufEnd_EndsTheSearchAsAtTheSheetsEnd) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 0, 15, 1.0).Raw(kFiller);
  const uint32_t end = book.Here() - kJumpSize;
  Open(book.Number(0, 3, 15, 1.0));
  PutU16(OpenBlock(buffer_), end, 0xFEF8);
  EXPECT_EQ(Find(1, 1), Found(end - kNumberSize));
  EXPECT_EQ(Find(1, 4), Before(end));
}

TEST_F(FindCellTest, NothingChanges) {
  Open(Sheet(6).Row(0).Number(0, 0, 15, 1.5));
  Find(1, 1);
  Find(1, 2);
  ExpectUntouched();
}

TEST_F(FindCellTest, GetCellXF_OfASingleCell_IsItsOwn) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 3, 0x8123, 1.5);
  Open(book);
  EXPECT_EQ(GetCellXF(OpenBlock(buffer_), book.Last(), 4), 0x8123);
  EXPECT_EQ(GetCellXF(OpenBlock(buffer_), book.Last(), 9), 0x8123);
}

TEST_F(FindCellTest, GetCellXF_OfARun_IsThatOfTheColumn) {
  StreamBuilder book = Sheet(6).Row(0).MulRk(0, 2, {{21, 0xFFFFFFFF}, {22, 0xFFFFFFFF}, {23, 0xFFFFFFFF}});
  const uint32_t mul_rk = book.Last();
  book.MulBlank(0, 7, {31, 32, 33});
  Open(book);
  const Block block = OpenBlock(buffer_);
  for (uint16_t i = 0; i < 3; ++i) {
    EXPECT_EQ(GetCellXF(block, mul_rk, static_cast<int16_t>(3 + i)), 21 + i);
    EXPECT_EQ(GetCellXF(block, book.Last(), static_cast<int16_t>(8 + i)), 31 + i);
  }
  EXPECT_EQ(GetCellXF(block, mul_rk, 32767), 0);  // far behind the block
}

}  // namespace
}  // namespace tolvenar
