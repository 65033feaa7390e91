// ChangeFormat: the XF of each cell record from a matrix.
#include "edit/change_format.h"

#include "edit/sheet_edit_fixture.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::kChart;
using testing::kFiller;
using testing::kVersions;
using testing::StreamBuilder;
using testing::Types;
using testing::U16;
using testing::WalkedStream;
using testing::operator+;

constexpr int32_t kRows = 10;
constexpr int32_t kColumns = 20;

class ChangeFormatTest : public testing::SheetEditTest {
 protected:
  ChangeFormatTest() : matrix_(kRows * kColumns) {
    for (int32_t i = 0; i < kRows * kColumns; ++i)
      matrix_[static_cast<size_t>(i)] = static_cast<int16_t>(100 + i);
  }

  uint32_t Change(int16_t sheet = 1) {
    return ChangeFormat(buffer_, table_, sheet, matrix_.data(), kColumns);
  }

  std::vector<int16_t> matrix_;  // 100 + row x 20 + column
};

TEST_F(ChangeFormatTest, WithoutTableSheetOrBuffer_Gives0) {
  Open(Sheet(6).Row(0).Number(0, 0, 15, 1.5));
  EXPECT_EQ(ChangeFormat(buffer_, 0, 1, matrix_.data(), kColumns), 0u);
  EXPECT_EQ(Change(0), 0u);
  EXPECT_EQ(Change(2), 0u);
  EXPECT_EQ(Change(-1), 0u);
  EXPECT_EQ(ChangeFormat(0, table_, 1, matrix_.data(), kColumns), 0u);
  ExpectUntouched();
}

TEST_F(ChangeFormatTest, SheetWithoutCells_Gives1AndChangesNothing) {
  Open(Sheet(6).Row(0).LabelSst(0, 1, 15, 3));
  EXPECT_EQ(Change(), 1u);
  ExpectUntouched();
}

TEST_F(ChangeFormatTest, EachCell_TakesItsEntryOfTheMatrix) {
  for (uint8_t version : kVersions) {
    Open(Sheet(version)
             .Row(0)
             .Row(2)
             .Number(0, 0, 15, 1.5)
             .Label(0, 3, 15, "ab")
             .Blank(2, 1, 15)
             .Rk(2, 19, 15, 6));
    EXPECT_EQ(Change(), 1u);
    EXPECT_EQ(Cells(), StreamBuilder()
                           .Row(0)
                           .Row(2)
                           .Number(0, 0, 100, 1.5)
                           .Label(0, 3, 103, "ab")
                           .Blank(2, 1, 141)
                           .Rk(2, 19, 159, 6)
                           .Stream());
    EXPECT_EQ(LiveBlocks(), live_);
    MEMORYFREEALL();
  }
}

TEST_F(ChangeFormatTest, AllTenKinds_AreStamped) {
  for (uint16_t type :
       Types{0x0205, 0x0006, 0x0201, 0x027E, 0x0204, 0x00BD, 0x00BE, 0x0207, 0x00D6, 0x0203}) {
    SCOPED_TRACE(type);
    StreamBuilder book = Sheet(6).Record(type, U16(1) + U16(2) + U16(15) + Bytes(8));
    Open(book);
    EXPECT_EQ(Change(), 1u);
    EXPECT_EQ(Cells(), StreamBuilder().Record(type, U16(1) + U16(2) + U16(122) + Bytes(8)).Stream());
    MEMORYFREEALL();
  }
}

TEST_F(ChangeFormatTest, SheetOfABofAndAnEof_Gives1) {
  BiffVersion = kBiff8;
  OpenAsItIs(StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, testing::kWorksheet).Eof());
  EXPECT_EQ(Change(), 1u);
  ExpectUntouched();
}

TEST_F(ChangeFormatTest, OtherKinds_AreNotStamped) {
  for (uint16_t type : Types{0x00FD, 0x1203, 0x1006, 0x10BD, 0xFEBE, 0x0002, 0x00BC, 0x0208}) {
    SCOPED_TRACE(type);
    Open(Sheet(6).Record(type, U16(1) + U16(2) + U16(15) + Bytes(8)));
    EXPECT_EQ(Change(), 1u);
    ExpectUntouched();
    MEMORYFREEALL();
  }
}

TEST_F(ChangeFormatTest, NegativeEntry_KeepsTheFormat) {
  matrix_[1] = -1;
  matrix_[2] = -32768;
  matrix_[3] = 0;
  Open(Sheet(6).Blank(0, 1, 15).Blank(0, 2, 16).Blank(0, 3, 17));
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(Cells(), StreamBuilder().Blank(0, 1, 15).Blank(0, 2, 16).Blank(0, 3, 0).Stream());
}

TEST_F(ChangeFormatTest, Run_HasOnlyItsFirstCellStamped) {
  Open(Sheet(6).MulRk(0, 2, {{15, 6}, {16, 7}}).MulBlank(1, 4, {17, 18}));
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(Cells(), StreamBuilder().MulRk(0, 2, {{102, 6}, {16, 7}}).MulBlank(1, 4, {124, 18}).Stream());
}

TEST_F(ChangeFormatTest, CellsOfANestedSubstream_AreLeftAlone) {
  Open(Sheet(6).Bof(6, kChart).Blank(0, 1, 15).Number(0, 2, 15, 1.0).Eof().Blank(0, 3, 15));
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(
      Cells(),
      StreamBuilder().Bof(6, kChart).Blank(0, 1, 15).Number(0, 2, 15, 1.0).Eof().Blank(0, 3, 103).Stream());
}

TEST_F(ChangeFormatTest, SubstreamInASubstream_IsNested) {
  const auto sheet = [](uint16_t xf) {
    StreamBuilder cells = StreamBuilder().Bof(6, kChart).Bof(6, kChart).Eof().Blank(0, 1, 15).Eof();
    return cells.Blank(0, 3, xf);
  };
  Open(Sheet(6).Raw(sheet(15).Stream()));
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(Cells(), sheet(103).Stream());
}

TEST_F(ChangeFormatTest, OtherSheets_AreLeftAlone) {
  BiffVersion = kBiff8;
  StreamBuilder book = StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof();
  book.Bof(6, testing::kWorksheet).Blank(0, 1, 15).Eof().Bof(6, testing::kWorksheet).Blank(0, 1, 15).Eof();
  OpenAsItIs(book);
  EXPECT_EQ(Change(2), 1u);
  EXPECT_EQ(WalkedStream(buffer_, TableEntry(OpenBlock(table_), 2)), StreamBuilder()
                                                                         .Bof(6, testing::kWorksheet)
                                                                         .Blank(0, 1, 15)
                                                                         .Eof()
                                                                         .Bof(6, testing::kWorksheet)
                                                                         .Blank(0, 1, 101)
                                                                         .Eof()
                                                                         .Stream());
}

TEST_F(ChangeFormatTest, WalkStopsExactlyAtTheEndOfTheTable) {
  StreamBuilder book = Sheet(6).Blank(0, 1, 15).Blank(0, 2, 15);
  Open(book);
  PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, book.Last());
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(Cells(), StreamBuilder().Blank(0, 1, 101).Blank(0, 2, 15).Stream());
}

TEST_F(ChangeFormatTest, WalkStopsAtTheSheetsEofEvenWhenItIsNotTheLimit) {
  BiffVersion = kBiff8;
  StreamBuilder book = StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof();
  book.Bof(6, testing::kWorksheet).Blank(0, 1, 15).Eof().Bof(6, testing::kWorksheet).Blank(0, 2, 15);
  const uint32_t other = book.Last();
  OpenAsItIs(book.Eof());
  PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, 0x7FFFFFFF);
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(U16At(OpenBlock(buffer_), other + kCellXf), 15);
}

TEST_F(ChangeFormatTest, WalkFollowsADetour) {
  StreamBuilder book = Sheet(6);
  const uint32_t detour = book.Here();
  book.Raw(kFiller).Blank(0, 1, 15).Raw(testing::kWindow2).Eof().BufEnd().Blank(0, 2, 15);
  const uint32_t patch = book.Last();
  OpenAsItIs(book.Resume(detour + kJumpSize));
  LayDetour(detour, patch);
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(Cells(), StreamBuilder().Blank(0, 2, 102).Blank(0, 1, 101).Stream());
}

TEST_F(ChangeFormatTest, WalkStopsAtABufEnd) {
  StreamBuilder book = Sheet(6).Blank(0, 1, 15).Raw(kFiller);
  const uint32_t end = book.Here() - kJumpSize;
  book.Blank(0, 2, 15);
  Open(book);
  PutU16(OpenBlock(buffer_), end, 0xFEF8);
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(U16At(OpenBlock(buffer_), end - kBlankSize + kCellXf), 101);
  EXPECT_EQ(U16At(OpenBlock(buffer_), book.Last() + kCellXf), 15);
}

TEST_F(ChangeFormatTest, RowAndColumn_AreSigned) {
  Open(Sheet(6).Blank(1, 0xFFFF, 15).Blank(0xFFFF, 21, 15));
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(Cells(), StreamBuilder().Blank(1, 0xFFFF, 119).Blank(0xFFFF, 21, 101).Stream());
}

TEST_F(ChangeFormatTest, EntryInFrontOfTheMatrix_KeepsTheFormat) {
  Open(Sheet(6).Blank(0xFFFF, 19, 15).Blank(0, 0xFFFF, 15).Blank(0x8000, 0x8000, 15));
  EXPECT_EQ(Change(), 1u);
  ExpectUntouched();
}

TEST_F(ChangeFormatTest, NullMatrix_StampsNothing) {
  Open(Sheet(6).Blank(0, 1, 15));
  EXPECT_EQ(ChangeFormat(buffer_, table_, 1, nullptr, kColumns), 1u);
  ExpectUntouched();
}

TEST_F(ChangeFormatTest, StrideOfZero_TakesTheColumnsEntryForEveryRow) {
  Open(Sheet(6).Blank(0, 1, 15).Blank(7, 1, 15));
  EXPECT_EQ(ChangeFormat(buffer_, table_, 1, matrix_.data(), 0), 1u);
  EXPECT_EQ(Cells(), StreamBuilder().Blank(0, 1, 101).Blank(7, 1, 101).Stream());
}

TEST_F(ChangeFormatTest, RingInTheStream_EndsTheWalk) {
  StreamBuilder book = Sheet(6).Blank(0, 1, 15);
  Open(book.Raw(kFiller));
  LayDetour(book.Here() - kJumpSize, book.Last());
  EXPECT_EQ(Change(), 1u);
  EXPECT_EQ(U16At(OpenBlock(buffer_), book.Last() + kCellXf), 101);
}

}  // namespace
}  // namespace tolvenar
