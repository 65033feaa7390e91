// XLAddRow and XLAddCol: the used range extended, by record and by field.
#include "row_column_fixture.h"

namespace tolvenar {
namespace {

using namespace testing;

// A ROW of the test's own: flags and height that no other row has.
Bytes RowLooks(uint16_t row, uint8_t look) {
  return U16(row) + U16(1) + U16(5) + Bytes(10, look);
}

class AddRowTest : public RowColumnTest {
 protected:
  // Rows 3 to 6 used, columns 2 to 5, ROWs for all of them but the fourth.
  static StreamBuilder Rows(uint16_t first, uint16_t past, uint8_t version = 6) {
    return Book(version)
        .Dimensions(first, past, 1, 5)
        .Record(0x0208, RowLooks(2, 0xA2))
        .Record(0x0208, RowLooks(3, 0xA3));
  }
  static StreamBuilder& Last(StreamBuilder& stream) {
    return stream.Record(0x0208, RowLooks(5, 0xA5)).Number(2, 1, 15, 1.0);
  }
};

TEST_F(AddRowTest, RowDirectlyBehindTheLast_IsACopyOfTheLast) {
  StreamBuilder before = Rows(2, 6), after = Rows(2, 7);
  Load(EndSheet(Last(before)));
  const uint32_t size = size_;
  EXPECT_EQ(Run(XLAddRow, 7), 0);
  after.Record(0x0208, RowLooks(5, 0xA5)).Record(0x0208, RowLooks(6, 0xA5)).Number(2, 1, 15, 1.0);
  EXPECT_READS_AS(EndSheet(after));
  EXPECT_EQ(size_, size + 20 + 18 + 8);  // the ROW, the displaced NUMBER, the RESUME
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(AddRowTest, RowsFarBehindTheLast_AscendInTheStream) {
  StreamBuilder before = Rows(2, 6), after = Rows(2, 9);
  Load(EndSheet(Last(before)));
  EXPECT_EQ(Run(XLAddRow, 9), 0);
  after.Record(0x0208, RowLooks(5, 0xA5));
  for (uint16_t row : {uint16_t{6}, uint16_t{7}, uint16_t{8}}) after.Record(0x0208, RowLooks(row, 0xA5));
  EXPECT_READS_AS(EndSheet(after.Number(2, 1, 15, 1.0)));
}

TEST_F(AddRowTest, NewRowHasItsOwnTypeAndLength) {
  // The template is a ROW by its low byte alone, and longer than 16 bytes.
  Load(EndSheet(Book()
                    .Dimensions(0, 1, 0, 1)
                    .Record(0x0008, RowLooks(0, 0xB0) + Bytes(6, 0xCC))
                    .Number(0, 0, 15, 1.0)));
  EXPECT_EQ(Run(XLAddRow, 2), 0);
  EXPECT_READS_AS(EndSheet(Book()
                               .Dimensions(0, 2, 0, 1)
                               .Record(0x0008, RowLooks(0, 0xB0) + Bytes(6, 0xCC))
                               .Record(0x0208, RowLooks(1, 0xB0))
                               .Number(0, 0, 15, 1.0)));
}

TEST_F(AddRowTest, RowBelowTheFirst_MakesRowsUpToLastMinusOne) {
  // From row 2 to row 5: the first row of the used range, 3, and rows 4 and 5 get another ROW.
  StreamBuilder before = Rows(2, 6);
  Load(EndSheet(Last(before)));
  EXPECT_EQ(Run(XLAddRow, 2), 0);
  StreamBuilder after = Book().Dimensions(1, 6, 1, 5);
  for (uint16_t row : {uint16_t{1}, uint16_t{2}, uint16_t{3}, uint16_t{4}})
    after.Record(0x0208, RowLooks(row, 0xA2));
  after.Record(0x0208, RowLooks(2, 0xA2)).Record(0x0208, RowLooks(3, 0xA3));
  EXPECT_READS_AS(EndSheet(Last(after)));
}

TEST_F(AddRowTest, PositionsBelowOne_AreRowsLikeOthers) {
  Load(EndSheet(Book().Dimensions(0, 2, 1, 5).Record(0x0208, RowLooks(0, 0xA0))));
  EXPECT_EQ(Run(XLAddRow, -1), 0);
  StreamBuilder after = Book().Dimensions(0xFFFE, 2, 1, 5);
  for (uint16_t row : {uint16_t{0xFFFE}, uint16_t{0xFFFF}, uint16_t{0}, uint16_t{0}})
    after.Record(0x0208, RowLooks(row, 0xA0));
  EXPECT_READS_AS(EndSheet(after));
}

TEST_F(AddRowTest, Biff5_ChangesTheFieldsOfItsOwnDimensions) {
  StreamBuilder above = Rows(2, 6, 5), above_after = Rows(2, 7, 5);
  Load(EndSheet(Last(above)), kBiff5);
  EXPECT_EQ(Run(XLAddRow, 7), 0);
  above_after.Record(0x0208, RowLooks(5, 0xA5)).Record(0x0208, RowLooks(6, 0xA5)).Number(2, 1, 15, 1.0);
  EXPECT_READS_AS(EndSheet(above_after));
}

TEST_F(AddRowTest, Biff5_BelowTheFirst_ChangesTheFirstRow) {
  Load(EndSheet(Book(5).Dimensions(2, 3, 1, 5).Record(0x0208, RowLooks(2, 0xA2))), kBiff5);
  EXPECT_EQ(Run(XLAddRow, 2), 0);
  EXPECT_READS_AS(EndSheet(
      Book(5).Dimensions(1, 3, 1, 5).Record(0x0208, RowLooks(1, 0xA2)).Record(0x0208, RowLooks(2, 0xA2))));
}

TEST_F(AddRowTest, WithoutTheTemplateRow_Gives9AndDimensionsStaysChanged) {
  Load(EndSheet(Book().Dimensions(2, 6, 1, 5).Row(3)));
  EXPECT_EQ(Run(XLAddRow, 8), 9);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(2, 8, 1, 5).Row(3)));
  EXPECT_EQ(Run(XLAddRow, 1), 9);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 8, 1, 5).Row(3)));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(AddRowTest, SheetWithAnEmptyRange_Gives9) {
  Load(EndSheet(Book().Dimensions(0, 0, 0, 0)));
  EXPECT_EQ(Run(XLAddRow, 1), 9);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 1, 0, 0)));
}

TEST_F(AddRowTest, DimensionsBehindTheRow_IsNotReached) {
  Load(EndSheet(Book().Row(0).Dimensions(0, 1, 0, 1)));
  EXPECT_EQ(Run(XLAddRow, 2), 0);
  EXPECT_READS_AS(EndSheet(Book().Row(0).Row(1).Dimensions(0, 1, 0, 1)));
}

TEST_F(AddRowTest, RowsOfANestedSubstream_AreLeftAlone) {
  const auto sheet = [](uint16_t past) {
    return Book().Dimensions(0, past, 0, 1).Bof(6, kChart).Row(0).Dimensions(0, 9, 0, 9).Eof();
  };
  Load(EndSheet(sheet(1)));
  EXPECT_EQ(Run(XLAddRow, 2), 9);
  EXPECT_READS_AS(EndSheet(sheet(2)));
}

TEST_F(AddRowTest, NeitherGeneration_KnowsNoRange) {
  StreamBuilder before = Rows(2, 6);
  Load(EndSheet(Last(before)), 0);
  const Bytes image = Image();
  EXPECT_EQ(Run(XLAddRow, 7), 9);
  EXPECT_EQ(Image(), image);
}

TEST_F(AddRowTest, NoBlockForTheRow_Gives3AndDimensionsStaysChanged) {
  Load(EndSheet(Book().Dimensions(0, 1, 0, 1).Row(0)));
  while (MEMORYALLOC(1) != 0) {
  }
  EXPECT_EQ(Run(XLAddRow, 2), 3);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 2, 0, 1).Row(0)));
  EXPECT_EQ(LiveBlocks(), 9u);
}

// A patch can displace 32767 bytes.
TEST_F(AddRowTest, RecordTooLongToDisplace_Gives10_AndDimensionsStaysChanged) {
  const auto sheet = [](uint16_t past, size_t length) {
    return Book().Dimensions(0, past, 0, 1).Row(0).Record(0x0042, Bytes(length));
  };
  Load(EndSheet(sheet(1, 32764)));
  const uint32_t size = size_, bytes = BytesInUse();
  EXPECT_EQ(Run(XLAddRow, 2), 10);
  EXPECT_EQ(BytesInUse(), bytes + 20);
  EXPECT_READS_AS(EndSheet(sheet(2, 32764)));
  EXPECT_EQ(size_, size);
  EXPECT_EQ(LiveBlocks(), 3u);  // the block of the ROW has stayed
  MEMORYFREEALL();
  Load(EndSheet(sheet(1, 32763)));
  EXPECT_EQ(Run(XLAddRow, 2), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 2, 0, 1).Row(0).Row(1).Record(0x0042, Bytes(32763))));
}

TEST_F(AddRowTest, BufferThatCanNotGrow_Gives10_ReleasesIt_AndKeepsTheRowsBlock) {
  Load(EndSheet(Book().Dimensions(0, 1, 0, 1).Row(0)), kBiff8, true);
  ASSERT_EQ(MEMORYISHANDLE(buffer_), 1);
  while (LiveBlocks() < 8) MEMORYALLOC(1);
  EXPECT_EQ(Run(XLAddRow, 30), 10);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 8u);  // the buffer is gone, the block of the ROW has stayed
}

class AddColTest : public RowColumnTest {};

TEST_F(AddColTest, ColumnAboveTheLast_WidensDimensionsAndEveryRow) {
  Load(EndSheet(Book().Dimensions(0, 9, 1, 5).Row(0, 1, 5).Row(1, 2, 3).Row(7, 0, 9).Number(0, 1, 15, 1.0)));
  const uint32_t size = size_;
  EXPECT_EQ(Run(XLAddCol, 8), 0);
  EXPECT_READS_AS(
      EndSheet(Book().Dimensions(0, 9, 1, 8).Row(0, 1, 8).Row(1, 2, 8).Row(7, 0, 8).Number(0, 1, 15, 1.0)));
  EXPECT_EQ(size_, size);
}

TEST_F(AddColTest, ColumnBelowTheFirst_WidensDimensionsAndEveryRow) {
  Load(EndSheet(Book().Dimensions(0, 1, 4, 6).Row(0, 4, 6).Row(1, 5, 6)));
  EXPECT_EQ(Run(XLAddCol, 2), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 1, 1, 6).Row(0, 1, 6).Row(1, 1, 6)));
}

TEST_F(AddColTest, Biff5_GetsTheOffsetsOfBiff8) {
  // A BIFF5 DIMENSIONS takes 14 bytes: its reserved word is at +12, and at +14 stands the type of the next
  // record, the ROW.
  Load(EndSheet(Book(5).Dimensions(0, 3, 4, 6).Record(0x0042, Bytes(2)).Row(0, 4, 6)), kBiff5);
  const uint32_t at = TableEntry(OpenBlock(table_), kTableFirstSheet) + 12;
  EXPECT_EQ(Run(XLAddCol, 2), 0);
  EXPECT_EQ(U16At(OpenBlock(buffer_), at + kDimensionsBiff5.firstColumn), 4);
  EXPECT_EQ(U16At(OpenBlock(buffer_), at + kDimensionsBiff8.firstColumn), 1);
  EXPECT_EQ(U16At(OpenBlock(buffer_), at + kDimensionsBiff8.pastColumn), 0x0042);
}

TEST_F(AddColTest, Biff5_AboveTheLast_WritesOverTheNextRecordsType) {
  Load(EndSheet(Book(5).Dimensions(0, 3, 4, 6).Record(0x0042, Bytes(2)).Row(0, 4, 6)), kBiff5);
  EXPECT_EQ(Run(XLAddCol, 0x43), 0);
  EXPECT_READS_AS(EndSheet(Book(5).Dimensions(0, 3, 4, 6).Record(0x0043, Bytes(2)).Row(0, 4, 0x43)));
}

TEST_F(AddColTest, NestedSubstream_IsLeftAlone) {
  const auto sheet = [](uint16_t past) {
    return Book()
        .Dimensions(0, 1, 0, past)
        .Bof(6, kChart)
        .Row(0, 0, 1)
        .Dimensions(0, 1, 0, 1)
        .Eof()
        .Row(0, 0, past);
  };
  Load(EndSheet(sheet(1)));
  EXPECT_EQ(Run(XLAddCol, 4), 0);
  EXPECT_READS_AS(EndSheet(sheet(4)));
}

TEST_F(AddColTest, TakesNoBlockOfThePool) {
  Load(EndSheet(Book().Dimensions(0, 1, 0, 1).Row(0, 0, 1)));
  while (MEMORYALLOC(1) != 0) {
  }
  EXPECT_EQ(Run(XLAddCol, 2), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 1, 0, 2).Row(0, 0, 2)));
}

}  // namespace
}  // namespace tolvenar
