// Row height and column width: the records that change, those that don't, and the block that stays.
#include "edit/row_column_size_change.h"

#include "row_column_fixture.h"

namespace tolvenar {
namespace {

using namespace testing;

class RowColumnSizeChange : public RowColumnTest {
 protected:
  static Bytes ColInfo(uint16_t first, uint16_t last, uint16_t width) {
    return U16(first) + U16(last) + U16(width) + U16(15) + U16(0x0200) + Bytes{0};
  }
  static Bytes RowOf(uint16_t row, uint16_t height) {
    return U16(row) + U16(0) + U16(4) + U16(height) + Bytes(8);
  }
  int16_t Height(int16_t row, uint16_t height, int16_t sheet = 1) {
    return XLChangeRowHeight(&buffer_, table_, &size_, sheet, row, height);
  }
  int16_t Width(int16_t column, uint16_t width, int16_t sheet = 1) {
    return XLChangeColWidth(&buffer_, table_, &size_, sheet, column, width);
  }
  // Loads a sheet of the COLINFO and a DIMENSIONS, changes column 3, which gives -20, and expects that COLINFO,
  // and in the block that is left behind the first and last column and the width of another.
  void ExpectRefused(const Bytes& before, const Bytes& after,
                     const Bytes& left = U16(2) + U16(2) + U16(777)) {
    Load(EndSheet(Book().Record(0x007D, before).Dimensions(0, 4, 0, 4)));
    uint32_t next = MEMORYALLOC(15);
    const uint32_t block = next;
    MEMORYFREE(&next);
    EXPECT_EQ(Width(3, 777), -20);
    EXPECT_EQ(Hex(BlockContents(block, 15)), Hex(Bytes{0x7D, 0, 11, 0} + left + Bytes{0, 0, 0, 2, 0}));
    EXPECT_READS_AS(EndSheet(Book().Record(0x007D, after).Dimensions(0, 4, 0, 4)));
    EXPECT_EQ(LiveBlocks(), 3u) << "the block of the COLINFO that was not given";
    MEMORYFREEALL();
  }
};

TEST_F(RowColumnSizeChange, Height_GoesIntoTheFirstRowOnly) {
  Load(EndSheet(Book().Dimensions(0, 4, 0, 4).Record(0x0208, RowOf(1, 255)).Record(0x0208, RowOf(1, 256))));
  EXPECT_EQ(Height(2, 0x8123), 0);
  StreamBuilder wanted = Book().Dimensions(0, 4, 0, 4).Record(0x0208, RowOf(1, 0x8123));
  EXPECT_READS_AS(EndSheet(wanted.Record(0x0208, RowOf(1, 256))));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(RowColumnSizeChange, Height_WithoutARow_ChangesNothing) {
  StreamBuilder stream = Book().Dimensions(0, 4, 0, 4).Record(0x1008, RowOf(2, 255));
  Load(EndSheet(stream.Bof(6, kChart).Record(0x0208, RowOf(2, 255)).Eof()));
  const Bytes before = Image();
  for (int16_t row : {int16_t{3}, int16_t{0}, int16_t{-1}, int16_t{32767}}) EXPECT_EQ(Height(row, 300), 0);
  EXPECT_EQ(Image(), before);
}

TEST_F(RowColumnSizeChange, Height_NeedsNoSize_AndReachesRow65536) {
  Load(EndSheet(Book().Dimensions(0, 4, 0, 4).Record(0x0208, RowOf(0xFFFF, 255))));
  EXPECT_EQ(XLChangeRowHeight(&buffer_, table_, nullptr, 1, 0, 300), 0);
  EXPECT_READS_AS(EndSheet(Book().Dimensions(0, 4, 0, 4).Record(0x0208, RowOf(0xFFFF, 300))));
}

TEST_F(RowColumnSizeChange, Width_GoesIntoTheColInfoOfExactlyTheColumn) {
  StreamBuilder stream = Book().Record(0x007D, ColInfo(0, 1, 100)).Record(0x007D, ColInfo(2, 2, 200));
  Load(EndSheet(stream.Record(0x007D, ColInfo(2, 2, 300)).Dimensions(0, 4, 0, 4)));
  EXPECT_EQ(Width(3, 777), 0);
  StreamBuilder wanted = Book().Record(0x007D, ColInfo(0, 1, 100)).Record(0x007D, ColInfo(2, 2, 777));
  EXPECT_READS_AS(EndSheet(wanted.Record(0x007D, ColInfo(2, 2, 300)).Dimensions(0, 4, 0, 4)));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(RowColumnSizeChange, Width_InsideAWiderColInfo_IsRefused_AndTheColInfoStays) {
  ExpectRefused(ColInfo(1, 3, 100), ColInfo(1, 3, 100));
  ExpectRefused(ColInfo(2, 3, 100), ColInfo(2, 3, 100));
  ExpectRefused(ColInfo(1, 2, 100), ColInfo(1, 2, 100));
}

TEST_F(RowColumnSizeChange, Width_WithoutAColInfo_IsRefused) {
  ExpectRefused(ColInfo(1, 1, 100), ColInfo(1, 1, 100));
  ExpectRefused(ColInfo(3, 3, 100), ColInfo(3, 3, 100));
}

TEST_F(RowColumnSizeChange, Width_OfAColInfoWithFirstAboveLast_IsRefused_AndTheColInfoChanges) {
  ExpectRefused(ColInfo(2, 1, 0x8123), ColInfo(2, 2, 777), U16(3) + U16(1) + U16(0x8123));
  ExpectRefused(ColInfo(3, 2, 0x8123), ColInfo(3, 1, 0x8123));
  ExpectRefused(ColInfo(4, 0, 0x8123), ColInfo(4, 1, 0x8123), U16(3) + U16(0) + U16(0x8123));
}

TEST_F(RowColumnSizeChange, Width_ColumnsCompareAsSigned) {
  ExpectRefused(ColInfo(0x8000, 0, 100), ColInfo(0x8000, 0, 100));
  ExpectRefused(ColInfo(4, 0xFFFF, 100), ColInfo(4, 1, 100), U16(3) + U16(0xFFFF) + U16(100));
  Load(EndSheet(Book().Record(0x007D, ColInfo(0xFFFF, 0xFFFF, 100)).Dimensions(0, 4, 0, 4)));
  EXPECT_EQ(Width(0, 777), 0);
  EXPECT_READS_AS(EndSheet(Book().Record(0x007D, ColInfo(0xFFFF, 0xFFFF, 777)).Dimensions(0, 4, 0, 4)));
}

TEST_F(RowColumnSizeChange, Width_SplitWithAFullPool_ChangesTheColInfoAllTheSame) {
  Load(EndSheet(Book().Record(0x007D, ColInfo(4, 0, 100)).Dimensions(0, 4, 0, 4)));
  while (LiveBlocks() < 9) ASSERT_NE(MEMORYALLOC(1), 0u);
  EXPECT_EQ(Width(3, 777), -20);
  EXPECT_READS_AS(EndSheet(Book().Record(0x007D, ColInfo(4, 1, 100)).Dimensions(0, 4, 0, 4)));
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_F(RowColumnSizeChange, Width_AtTheLastColumnOfARange_LastBelowFirst) {
  ExpectRefused(ColInfo(2, 0, 100), ColInfo(2, 2, 777), U16(3) + U16(0) + U16(100));
  ExpectRefused(ColInfo(7, 2, 100), ColInfo(7, 1, 100));
}

TEST_F(RowColumnSizeChange, Sizes_OfAnotherSheet_StayAsTheyAre) {
  const auto book = [](uint16_t height, uint16_t width) {
    StreamBuilder stream = StreamBuilder().Bof(5).Sheet("One").Sheet("Two").Eof();
    for (int sheet = 1; sheet <= 2; ++sheet) {
      stream.Bof(5, kWorksheet)
          .Record(0x027D, ColInfo(2, 2, sheet == 2 ? width : 100))
          .Dimensions(0, 4, 0, 4);
      EndSheet(stream.Record(0x0008, RowOf(2, sheet == 2 ? height : 255)));
    }
    return stream;
  };
  Load(book(255, 100), kBiff5);
  EXPECT_EQ(Height(3, 300, 2), 0);
  EXPECT_EQ(Width(3, 777, 2), 0);
  EXPECT_READS_AS(book(300, 777));
}

TEST_F(RowColumnSizeChange, Sizes_InAPatchArea_AreReached) {
  Load(EndSheet(
      Book().Record(0x007D, ColInfo(2, 2, 100)).Dimensions(0, 4, 0, 4).Record(0x0208, RowOf(1, 255))));
  const auto patch_in = [&](uint8_t before, uint16_t type, const Bytes& payload) {
    uint32_t at = TableEntry(OpenBlock(table_), kTableFirstSheet);
    while (!IsPlain(OpenBlock(buffer_), at, before)) at = NextRecord(OpenBlock(buffer_), at);
    const Bytes record = StreamBuilder().Record(type, payload).Stream();
    ASSERT_EQ(PatchRecord(&buffer_, record.data(), at, static_cast<uint32_t>(record.size()), &size_), 0);
  };
  patch_in(kLowRow, 0x0208, RowOf(0, 256));
  patch_in(kLowColInfo, 0x007D, ColInfo(1, 1, 200));
  const uint32_t before = size_;
  for (int16_t row : {int16_t{1}, int16_t{2}}) EXPECT_EQ(Height(row, 300), 0);
  for (int16_t column : {int16_t{2}, int16_t{3}}) EXPECT_EQ(Width(column, 777), 0);
  EXPECT_EQ(size_, before);
  StreamBuilder wanted = Book().Record(0x007D, ColInfo(1, 1, 777)).Record(0x007D, ColInfo(2, 2, 777));
  wanted.Dimensions(0, 4, 0, 4).Record(0x0208, RowOf(0, 300));
  EXPECT_READS_AS(EndSheet(wanted.Record(0x0208, RowOf(1, 300))));
}

TEST_F(RowColumnSizeChange, Width_RefusedWithAFullPool_TakesNoBlock) {
  Load(EndSheet(Book().Dimensions(0, 4, 0, 4)));
  while (LiveBlocks() < 9) ASSERT_NE(MEMORYALLOC(1), 0u);
  EXPECT_EQ(Width(3, 777), -20);
}

TEST_F(RowColumnSizeChange, Width_LeavesTheBlockItBuilt) {
  Load(EndSheet(Book().Dimensions(0, 4, 0, 4)));
  const uint32_t next = MEMORYALLOC(15);
  uint32_t freed = next;
  MEMORYFREE(&freed);
  EXPECT_EQ(Width(3, 777), -20);
  EXPECT_EQ(MEMORYSIZE(next), 15u);
  EXPECT_EQ(Hex(BlockContents(next, 15)), Hex(Bytes{0x7D, 0, 11, 0, 2, 0, 2, 0, 9, 3, 0, 0, 0, 2, 0}));
}

TEST_F(RowColumnSizeChange, Width_ColInfoBehindDimensionsOrNested_IsNotSeen) {
  StreamBuilder stream = Book().Bof(6, kChart).Record(0x007D, ColInfo(2, 2, 100)).Eof();
  Load(EndSheet(
      stream.Record(0x107D, ColInfo(2, 2, 100)).Dimensions(0, 4, 0, 4).Record(0x007D, ColInfo(2, 2, 1))));
  const Bytes before = Image();
  EXPECT_EQ(Width(3, 777), -20);
  EXPECT_EQ(Image(), before);
}

TEST_F(RowColumnSizeChange, Width_ChartRecordOfTheSameLowByte_IsNoDimensions) {
  StreamBuilder stream = Book().Record(0x1000, Bytes(10)).Record(0x007D, ColInfo(2, 2, 100));
  Load(EndSheet(stream.Dimensions(0, 4, 0, 4)));
  EXPECT_EQ(Width(3, 777), 0);
  StreamBuilder wanted = Book().Record(0x1000, Bytes(10)).Record(0x007D, ColInfo(2, 2, 777));
  EXPECT_READS_AS(EndSheet(wanted.Dimensions(0, 4, 0, 4)));
}

TEST_F(RowColumnSizeChange, Width_WithNeitherColInfoNorDimensions_GivesMinus22) {
  Load(EndSheet(Book().Record(0x007D, ColInfo(1, 1, 100))));
  EXPECT_EQ(Width(3, 777), -22);
  EXPECT_EQ(Width(2, 777), 0);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(RowColumnSizeChange, EmptySheet) {
  Load(
      EndSheet(Book().Record(0x007D, ColInfo(2, 2, 100)).Dimensions(0, 4, 0, 4).Record(0x0208, RowOf(2, 5))));
  PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, TableEntry(OpenBlock(table_), kTableFirstSheet));
  const Bytes before = Image();
  EXPECT_EQ(Height(3, 300), 0);
  EXPECT_EQ(Width(3, 777), -22);
  EXPECT_EQ(Image(), before);
}

TEST_F(RowColumnSizeChange, ChecksInTheirOrder) {
  StreamBuilder stream = Book().Record(0x007D, ColInfo(3, 3, 100)).Dimensions(5, 2, 0, 9);
  Load(EndSheet(stream.Record(0x0208, RowOf(3, 255))));
  const Bytes before = Image();
  const auto expect = [&](int16_t code, uint32_t* buffer, uint32_t table, int16_t sheet) {
    EXPECT_EQ(XLChangeRowHeight(buffer, table, &size_, sheet, 4, 300), code);
    EXPECT_EQ(XLChangeColWidth(buffer, table, &size_, sheet, 4, 300), code);
  };
  uint32_t none = 0;
  expect(1, &none, 0, 9);
  expect(3, &none, table_, 1);
  expect(3, nullptr, table_, 1);
  for (int16_t sheet : {int16_t{0}, int16_t{2}, int16_t{-1}}) expect(3, &buffer_, table_, sheet);
  // Rows 6 to 2: inside them the column is refused as well.
  expect(4, &buffer_, table_, 1);
  PutTableEntry(OpenBlock(table_), 0, 0xFFFE);
  expect(2, &buffer_, table_, -1);
  expect(3, &buffer_, table_, 1);
  EXPECT_EQ(Image(), before);
}

}  // namespace
}  // namespace tolvenar
