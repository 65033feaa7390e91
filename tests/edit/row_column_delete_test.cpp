// XLDeleteRow and XLDeleteCol: what goes, what moves back, what stays on purpose.
#include "row_column_fixture.h"
#include "support/formula_builder.h"

namespace tolvenar {
namespace {

using namespace testing;
using namespace testing::formula;

class DeleteRowTest : public RowColumnTest {};

TEST_F(DeleteRowTest, RecordsOfTheRowGo_AllBeyondMoveUp_DimensionsStays) {
  Load(EndSheet(Book()
                    .Dimensions(0, 3, 0, 5)
                    .Row(0)
                    .Row(1)
                    .Row(2)
                    .Number(0, 0, 15, 1.0)
                    .Number(1, 0, 15, 2.0)
                    .Number(2, 0, 15, 3.0)));
  const uint32_t size = size_;
  EXPECT_EQ(Run(XLDeleteRow, 2), 0);
  EXPECT_READS_AS(
      EndSheet(Book().Dimensions(0, 3, 0, 5).Row(0).Row(1).Number(0, 0, 15, 1.0).Number(1, 0, 15, 3.0)));
  EXPECT_EQ(size_, size);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(DeleteRowTest, ErasedRecord_KeepsLengthAndBody_WithItsRowOneLess) {
  StreamBuilder stream = Book().Dimensions(0, 3, 0, 5).Number(1, 4, 15, 2.0);
  const uint32_t at = stream.Last();
  Load(EndSheet(stream));
  EXPECT_EQ(Run(XLDeleteRow, 2), 0);
  const Bytes image = Image();
  const Bytes erased = U16(0xFEFD) + U16(14) + U16(0) + U16(4) + U16(15) + F64(2.0);
  EXPECT_EQ(Hex(Bytes(image.begin() + at, image.begin() + at + 18)), Hex(erased));
}

// One record of each of the ten kinds in a row.
StreamBuilder& AllCells(StreamBuilder& stream, uint16_t row) {
  stream.BoolErr(row, 0, 15, 1, 0)
      .Formula(row, 1, 15, Bytes(8))
      .Blank(row, 2, 15)
      .Rk(row, 3, 15, 6)
      .Label(row, 4, 15, "ab");
  stream.Number(row, 5, 15, 1.5)
      .Record(0x0207, U16(row) + Bytes(3))
      .Record(0x00D6, U16(row) + U16(1) + U16(15) + Bytes(4));
  return stream.MulRk(row, 6, {{15, 6}, {15, 10}}).MulBlank(row, 8, {15, 16});
}

TEST_F(DeleteRowTest, AllTenKindsOfCellGo) {
  StreamBuilder before = Book().Dimensions(0, 9, 0, 9);
  Load(EndSheet(AllCells(before, 4)));
  EXPECT_EQ(Run(XLDeleteRow, 5), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 9, 0, 9)));
}

TEST_F(DeleteRowTest, AllTenKindsOfCellMoveUp) {
  StreamBuilder before = Book().Dimensions(0, 9, 0, 9), after = Book().Dimensions(0, 9, 0, 9);
  Load(EndSheet(AllCells(before, 4)));
  EXPECT_EQ(Run(XLDeleteRow, 2), 0);
  EXPECT_READS_AS(EndSheet(AllCells(after, 3)));
}

TEST_F(DeleteRowTest, RowBeyondTheLast_ShrinksDimensions) {
  Load(EndSheet(Book().Dimensions(0, 3, 0, 5).Row(2)));
  EXPECT_EQ(Run(XLDeleteRow, 3), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 3, 0, 5)));
  EXPECT_EQ(Run(XLDeleteRow, 4), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 2, 0, 5)));
}

TEST_F(DeleteRowTest, Biff5_ShrinksTheFieldOfBiff8) {
  Load(EndSheet(Book(5).Dimensions(0, 3, 7, 9).Row(2)), kBiff5);
  EXPECT_EQ(Run(XLDeleteRow, 4), 0);
  EXPECT_READS_AS(EndSheet(Book(5).Dimensions(0, 3, 6, 9).Row(2)));
}

TEST_F(DeleteRowTest, FormulaInTheRow_IsAdjustedFirstThenErased) {
  StreamBuilder stream = Book().Dimensions(0, 9, 0, 5).Formula(4, 1, 15, Bytes(8), Ref(8, 1));
  const uint32_t at = stream.Last();
  Load(EndSheet(stream));
  EXPECT_EQ(Run(XLDeleteRow, 5), 0);
  const Bytes image = Image();
  EXPECT_EQ(U16At(OpenBlock(buffer_), at), 0xFEFD);
  EXPECT_EQ(Hex(Bytes(image.begin() + at + 26, image.begin() + at + 30)), Hex(Ref(7, 1)));
}

TEST_F(DeleteRowTest, FormulasFollow_InAllThreeRecords) {
  const auto sheet = [](uint16_t row, const Bytes& ref, uint16_t to) {
    StreamBuilder stream = Book().Dimensions(0, 20, 0, 5).Formula(row, 1, 15, Bytes(8), ref);
    stream.Record(0x0221, ArrayPayload(ref)).Record(0x04BC, SharedPayload(Area(1, to, 1, 2, 0x2D)));
    return EndSheet(stream);
  };
  Load(sheet(3, Ref(10, 1), 10));
  EXPECT_EQ(Run(XLDeleteRow, 3), 0);
  EXPECT_READS_AS(sheet(2, Ref(9, 1), 9));
  EXPECT_EQ(Run(XLDeleteRow, 9), 0);  // the row in front of the one referred to
  EXPECT_READS_AS(sheet(2, Ref(8, 1, 0x2A), 8));
}

TEST_F(DeleteRowTest, TakesNoBlockOfThePool) {
  Load(EndSheet(Book().Dimensions(0, 3, 0, 5).Row(1).MulRk(1, 0, {{15, 6}, {15, 10}})));
  while (MEMORYALLOC(1) != 0) {
  }
  EXPECT_EQ(Run(XLDeleteRow, 2), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 3, 0, 5)));
}

class DeleteColTest : public RowColumnTest {};

TEST_F(DeleteColTest, CellsOfTheColumnGo_AllBeyondMoveLeft_EveryRowShrinks) {
  Load(EndSheet(Book()
                    .Dimensions(0, 9, 0, 5)
                    .Row(0, 0, 5)
                    .Row(7, 0, 1)
                    .Number(0, 0, 15, 1.0)
                    .Number(0, 1, 15, 2.0)
                    .Number(0, 4, 15, 3.0)));
  EXPECT_EQ(Run(XLDeleteCol, 2), 0);
  EXPECT_READS_AS(EndSheet(
      Book().Dimensions(0, 9, 0, 5).Row(0, 0, 4).Row(7, 0, 0).Number(0, 0, 15, 1.0).Number(0, 3, 15, 3.0)));
}

TEST_F(DeleteColTest, ErasedCell_KeepsItsBody_WithItsColumnOneLess) {
  StreamBuilder stream = Book().Dimensions(0, 9, 0, 5).Number(1, 4, 15, 2.0);
  const uint32_t at = stream.Last();
  Load(EndSheet(stream));
  EXPECT_EQ(Run(XLDeleteCol, 5), 0);
  const Bytes image = Image();
  const Bytes erased = U16(0xFEFD) + U16(14) + U16(1) + U16(3) + U16(15) + F64(2.0);
  EXPECT_EQ(Hex(Bytes(image.begin() + at, image.begin() + at + 18)), Hex(erased));
}

TEST_F(DeleteColTest, ColumnBeyondTheLastRow_ShrinksTheRowsOfDimensions) {
  Load(EndSheet(Book().Dimensions(0, 3, 0, 9)));
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 3, 0, 9)));
  EXPECT_EQ(Run(XLDeleteCol, 4), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 2, 0, 9)));
}

TEST_F(DeleteColTest, Biff5_ShrinksTheFieldOfBiff8) {
  Load(EndSheet(Book(5).Dimensions(0, 3, 7, 9)), kBiff5);
  EXPECT_EQ(Run(XLDeleteCol, 8), 0);
  EXPECT_READS_AS(EndSheet(Book(5).Dimensions(0, 3, 6, 9)));
}

TEST_F(DeleteColTest, InsideAMulRk_TheCellGoesAndTheRestMoves) {
  Load(EndSheet(Book()
                    .Dimensions(0, 9, 0, 5)
                    .MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}, {4, 18}, {5, 22}})
                    .Number(0, 5, 15, 1.0)));
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(EndSheet(Book()
                               .Dimensions(0, 9, 0, 5)
                               .MulRk(0, 0, {{1, 6}, {2, 10}})
                               .MulRk(0, 2, {{4, 18}, {5, 22}})
                               .Number(0, 4, 15, 1.0)));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(DeleteColTest, LastCellOfAMulRk_LeavesTheLeftPiece) {
  Load(EndSheet(Book().Dimensions(0, 9, 0, 5).MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}}).Number(0, 3, 15, 1.0)));
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(
      EndSheet(Book().Dimensions(0, 9, 0, 5).MulRk(0, 0, {{1, 6}, {2, 10}}).Number(0, 2, 15, 1.0)));
}

TEST_F(DeleteColTest, RecordThatDirectlyFollowsASplitRun_IsPassedOver) {
  // Of three cells the middle one goes: two lone RKs fill the run's room exactly, so that the walk steps off
  // the NUMBER behind them.
  Load(EndSheet(Book()
                    .Dimensions(0, 9, 0, 5)
                    .MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}})
                    .Number(0, 3, 15, 1.0)
                    .Number(0, 4, 15, 2.0)));
  EXPECT_EQ(Run(XLDeleteCol, 2), 0);
  EXPECT_READS_AS(EndSheet(Book()
                               .Dimensions(0, 9, 0, 5)
                               .Rk(0, 0, 1, 6)
                               .Rk(0, 1, 3, 14)
                               .Number(0, 3, 15, 1.0)
                               .Number(0, 3, 15, 2.0)));
}

TEST_F(DeleteColTest, PassedOverRecordThatBeginsASubstream_IsNotCounted) {
  Load(EndSheet(Book()
                    .Dimensions(0, 9, 0, 5)
                    .MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}})
                    .Bof(6, kChart)
                    .Number(0, 4, 15, 2.0)
                    .Eof()
                    .Number(0, 4, 15, 3.0)));
  EXPECT_EQ(Run(XLDeleteCol, 2), 0);
  // Passing over is not looking: the chart's NUMBER counts as the sheet's, and behind its EOF nothing does.
  EXPECT_READS_AS(EndSheet(Book()
                               .Dimensions(0, 9, 0, 5)
                               .Rk(0, 0, 1, 6)
                               .Rk(0, 1, 3, 14)
                               .Bof(6, kChart)
                               .Number(0, 3, 15, 2.0)
                               .Eof()
                               .Number(0, 4, 15, 3.0)));
}

TEST_F(DeleteColTest, SplitRunAtTheVeryEndOfASheet_LeavesTheNextSheetAlone) {
  const auto book = [](bool done) {
    StreamBuilder stream =
        StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof().Bof(6, kWorksheet).Dimensions(0, 9, 0, 5);
    if (done) stream.Rk(0, 0, 1, 6).Rk(0, 1, 3, 14);
    if (!done) stream.MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}});
    return EndSheet(stream.Eof().Bof(6, kWorksheet).Dimensions(0, 9, 0, 5).Row(0).Number(0, 4, 15, 2.0));
  };
  Load(book(false));
  EXPECT_EQ(Run(XLDeleteCol, 2), 0);
  EXPECT_READS_AS(book(true));
}

TEST_F(DeleteColTest, LastCellOfAMulBlank_LeavesTheLeftPiece) {
  Load(EndSheet(Book().Dimensions(0, 9, 0, 5).MulBlank(0, 0, {1, 2, 3}).Number(0, 3, 15, 1.0)));
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 9, 0, 5).MulBlank(0, 0, {1, 2}).Number(0, 2, 15, 1.0)));
}

TEST_F(DeleteColTest, InsideAMulBlank_TheCellGoesAndTheRestMoves) {
  Load(EndSheet(Book().Dimensions(0, 9, 0, 5).MulBlank(0, 0, {1, 2, 3, 4, 5}).Number(0, 5, 15, 1.0)));
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(EndSheet(
      Book().Dimensions(0, 9, 0, 5).MulBlank(0, 0, {1, 2}).MulBlank(0, 2, {4, 5}).Number(0, 4, 15, 1.0)));
}

TEST_F(DeleteColTest, SecondLastCellOfAMulBlank_LeavesALongBlankOnTheRight) {
  Load(EndSheet(Book().Dimensions(0, 9, 0, 5).MulBlank(0, 0, {1, 2, 3, 4}).Number(0, 4, 15, 1.0)));
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(EndSheet(Book()
                               .Dimensions(0, 9, 0, 5)
                               .MulBlank(0, 0, {1, 2})
                               .Record(0x0201, U16(0) + U16(2) + U16(4) + U32(0))
                               .Number(0, 3, 15, 1.0)));
}

TEST_F(DeleteColTest, RunThatBeginsInTheColumn_KeepsAllItsCells) {
  Load(EndSheet(Book().Dimensions(0, 9, 0, 5).MulBlank(0, 2, {1, 2, 3}).MulRk(1, 2, {{1, 6}, {2, 10}})));
  const uint32_t size = size_;
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(
      EndSheet(Book().Dimensions(0, 9, 0, 5).MulBlank(0, 1, {1, 2, 3}).MulRk(1, 1, {{1, 6}, {2, 10}})));
  EXPECT_EQ(size_, size);
}

TEST_F(DeleteColTest, RunInFrontStays) {
  Load(EndSheet(Book().Dimensions(0, 9, 0, 5).MulBlank(0, 0, {1, 2, 3})));
  EXPECT_EQ(Run(XLDeleteCol, 4), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 9, 0, 5).MulBlank(0, 0, {1, 2, 3})));
}

TEST_F(DeleteColTest, FirstColumn_LeavesARunAtColumnFFFF) {
  StreamBuilder stream = Book().Dimensions(0, 9, 0, 5).MulRk(0, 0, {{1, 6}, {2, 10}});
  const uint32_t at = stream.Last();
  Load(EndSheet(stream));
  EXPECT_EQ(Run(XLDeleteCol, 1), 0);
  const Block block = OpenBlock(buffer_);
  EXPECT_EQ(U16At(block, at + kCellColumn), 0xFFFF);
  EXPECT_EQ(U16At(block, at + LengthAt(block, at) + kRunLastColumnFromEnd), 0);
}

TEST_F(DeleteColTest, FormulaInTheColumn_IsAdjustedFirstThenErased) {
  StreamBuilder stream = Book().Dimensions(0, 9, 0, 5).Formula(0, 4, 15, Bytes(8), Ref(8, 9));
  const uint32_t at = stream.Last();
  Load(EndSheet(stream));
  EXPECT_EQ(Run(XLDeleteCol, 5), 0);
  const Bytes image = Image();
  EXPECT_EQ(U16At(OpenBlock(buffer_), at), 0xFEFD);
  EXPECT_EQ(Hex(Bytes(image.begin() + at + 26, image.begin() + at + 30)), Hex(Ref(8, 8)));
}

TEST_F(DeleteColTest, FormulasFollow_InAllThreeRecords) {
  const auto sheet = [](uint16_t column, const Bytes& ref, uint8_t to) {
    StreamBuilder stream = Book().Dimensions(0, 20, 0, 5).Formula(1, column, 15, Bytes(8), ref);
    stream.Record(0x0221, ArrayPayload(ref)).Record(0x04BC, SharedPayload(Area(1, 2, 1, to, 0x2D)));
    return EndSheet(stream);
  };
  Load(sheet(3, Ref(1, 10), 10));
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(sheet(2, Ref(1, 9), 9));
  EXPECT_EQ(Run(XLDeleteCol, 10), 0);
  EXPECT_READS_AS(sheet(2, Ref(1, 9, 0x2A), 8));
}

}  // namespace
}  // namespace tolvenar
