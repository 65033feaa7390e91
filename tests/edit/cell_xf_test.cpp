// XLChangeCellXF, and the stamping of one cell of a run.
#include "edit/cell_change.h"
#include "edit/sheet_edit_fixture.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::kVersions;
using testing::StreamBuilder;
using testing::Types;
using testing::U16;
using testing::operator+;

using Stream = StreamBuilder;

class CellXfTest : public testing::SheetEditTest {
 protected:
  int16_t ChangeXf(int16_t row, int16_t column, uint16_t xf) {
    return XLChangeCellXF(&buffer_, table_, &size_, 1, row, column, xf);
  }

  // The cells are these, and every scratch block has been released.
  void ExpectCells(const Stream& cells) const {
    EXPECT_EQ(testing::Hex(Cells()), testing::Hex(cells.Stream()));
    EXPECT_EQ(LiveBlocks(), live_);
  }

  static Stream RkRun() { return Stream().MulRk(0, 1, {{21, 0x11}, {22, 0x22}, {23, 0x33}, {24, 0x44}}); }
  static Stream BlankRun() { return Stream().MulBlank(0, 1, {21, 22, 23, 24}); }
};

TEST_F(CellXfTest, WithoutTableSheetOrBuffer_Gives1) {
  Open(Sheet(6).Row(0).Number(0, 0, 15, 1.0));
  uint32_t null = 0;
  EXPECT_EQ(XLChangeCellXF(&buffer_, 0, &size_, 1, 1, 1, 30), kChangeNoCell);
  EXPECT_EQ(XLChangeCellXF(&buffer_, table_, &size_, 2, 1, 1, 30), kChangeNoCell);
  EXPECT_EQ(XLChangeCellXF(&buffer_, table_, &size_, 0, 1, 1, 30), kChangeNoCell);
  EXPECT_EQ(XLChangeCellXF(&null, table_, &size_, 1, 1, 1, 30), kChangeNoCell);
  EXPECT_EQ(XLChangeCellXF(nullptr, table_, &size_, 1, 1, 1, 30), kChangeNoCell);
  EXPECT_EQ(XLChangeCellXF(&buffer_, table_, nullptr, 1, 1, 1, 30), kChangeNoCell);
  ExpectUntouched();
}

TEST_F(CellXfTest, CellThatCanNotExist_Gives1) {
  Open(Sheet(6).Row(0).Number(0, 0, 15, 1.0).Number(1, 0, 15, 1.0));
  EXPECT_EQ(ChangeXf(2, 1, 30), kChangeNoCell);   // no ROW record
  EXPECT_EQ(ChangeXf(1, 21, 30), kChangeNoCell);  // outside DIMENSIONS
  ExpectUntouched();
}

TEST_F(CellXfTest, EachSingleKindIsStampedInPlace) {
  for (uint16_t type : Types{0x0205, 0x0006, 0x0201, 0x027E, 0x0204, 0x0207, 0x00D6, 0x0203}) {
    SCOPED_TRACE(type);
    Open(Sheet(6).Row(0).Record(type, U16(0) + U16(3) + U16(33) + Bytes(6)));
    EXPECT_EQ(ChangeXf(1, 4, 0x8001), kChangeDone);
    ExpectCells(Stream().Row(0).Record(type, U16(0) + U16(3) + U16(0x8001) + Bytes(6)));
    EXPECT_EQ(size_, opened_.size());
    MEMORYFREEALL();
  }
}

TEST_F(CellXfTest, AbsentCellBecomesABlank) {
  for (uint8_t version : kVersions) {
    Open(Sheet(version).Row(0).Number(0, 3, 33, 1.0));
    EXPECT_EQ(ChangeXf(1, 3, 44), kChangeDone);
    EXPECT_EQ(ChangeXf(1, 9, 45), kChangeDone);
    ExpectCells(Stream().Row(0).Blank(0, 2, 44).Number(0, 3, 33, 1.0).Blank(0, 8, 45));
    MEMORYFREEALL();
  }
}

TEST_F(CellXfTest, LabelSst_CountsAsAbsentAndStays) {
  Open(Sheet(6).Row(0).LabelSst(0, 3, 33, 1));
  EXPECT_EQ(ChangeXf(1, 4, 44), kChangeDone);  // no cell behind the ROW: in front of what follows that
  ExpectCells(Stream().Row(0).Blank(0, 3, 44).LabelSst(0, 3, 33, 1));
}

TEST_F(CellXfTest, OfACellInAMulRkStampsTheFirstCellToo) {
  Open(Sheet(6).Row(0).Raw(RkRun().Stream()));
  EXPECT_EQ(ChangeXf(1, 4, 44), kChangeDone);
  ExpectCells(Stream().Row(0).MulRk(0, 1, {{44, 0x11}, {22, 0x22}, {44, 0x33}, {24, 0x44}}));
  EXPECT_EQ(ChangeXf(1, 2, 45), kChangeDone);
  ExpectCells(Stream().Row(0).MulRk(0, 1, {{45, 0x11}, {22, 0x22}, {44, 0x33}, {24, 0x44}}));
}

TEST_F(CellXfTest, OfACellInAMulBlankStampsTheFirstCellToo) {
  Open(Sheet(6).Row(0).Raw(BlankRun().Stream()));
  EXPECT_EQ(ChangeXf(1, 5, 44), kChangeDone);
  ExpectCells(Stream().Row(0).MulBlank(0, 1, {44, 22, 23, 44}));
}

// Column -32768 less 1 is column 32767 in the 16 bits of a search, and lies in no run for the stamping, which
// counts on. (A DIMENSIONS that is read would have ended the search.)
TEST_F(CellXfTest, ColumnThatTheStampingDoesNotFind_Gives4Or5_WithTheFirstCellStamped) {
  Open(Sheet(6).Row(0).Row(1).MulRk(0, 32766, {{21, 0x11}, {22, 0x22}}).MulBlank(1, 32766, {23, 24}));
  BiffVersion = 0;
  EXPECT_EQ(ChangeXf(1, -32768, 44), kChangeMulRk);
  EXPECT_EQ(ChangeXf(2, -32768, 45), kChangeMulBlank);
  ExpectCells(Stream().Row(0).Row(1).MulRk(0, 32766, {{44, 0x11}, {22, 0x22}}).MulBlank(1, 32766, {45, 24}));
}

TEST_F(CellXfTest, BlankThatCanNotBeWritten_Gives6) {
  OpenFull(Sheet(6).Row(0).Number(0, 0, 15, 1.0));
  TakeBlocksUntil(9);
  EXPECT_EQ(ChangeXf(1, 2, 44), kChangeBlank);
  EXPECT_EQ(Contents(), opened_);
  EXPECT_EQ(ChangeXf(1, 1, 44), kChangeDone);  // a cell that is there needs no block
  MEMORYFREEALL();
  OpenFull(Sheet(6).Row(0).Number(0, 0, 15, 1.0));
  TakeBlocksUntil(8);
  EXPECT_EQ(ChangeXf(1, 2, 44), kChangeBlank);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(CellXfTest, SetMulCellXf_InsideTheRun_GivesTheOffset) {
  StreamBuilder book = Sheet(6).Row(0);
  const uint32_t mul_rk = book.Here();
  const uint32_t mul_blank = mul_rk + static_cast<uint32_t>(RkRun().Stream().size());
  Open(book.Raw(RkRun().Stream()).Raw(BlankRun().Stream()));
  EXPECT_EQ(SetMulRkCellXF(buffer_, mul_rk, 2, 41), static_cast<int32_t>(mul_rk));
  EXPECT_EQ(SetMulRkCellXF(buffer_, mul_rk, 5, 42), static_cast<int32_t>(mul_rk));
  EXPECT_EQ(SetMulBlankCellXF(buffer_, mul_blank, 2, 43), static_cast<int32_t>(mul_blank));
  EXPECT_EQ(SetMulBlankCellXF(buffer_, mul_blank, 5, 44), static_cast<int32_t>(mul_blank));
  ExpectCells(Stream()
                  .Row(0)
                  .MulRk(0, 1, {{41, 0x11}, {22, 0x22}, {23, 0x33}, {42, 0x44}})
                  .MulBlank(0, 1, {43, 22, 23, 44}));
}

TEST_F(CellXfTest, SetMulCellXf_OutsideTheRunOrWithoutBuffer_Gives0) {
  StreamBuilder book = Sheet(6).Row(0);
  const uint32_t run = book.Here();
  Open(book.Raw(RkRun().Stream()));
  for (int16_t column : testing::Columns{1, 6, -5, 32767}) {
    EXPECT_EQ(SetMulRkCellXF(buffer_, run, column, 99), 0);
    EXPECT_EQ(SetMulBlankCellXF(buffer_, run, column, 99), 0);
  }
  for (int16_t column : testing::Columns{1, 2}) {
    EXPECT_EQ(SetMulRkCellXF(0, run, column, 99), 0);
    EXPECT_EQ(SetMulBlankCellXF(0, run, column, 99), 0);
  }
  ExpectUntouched();
}

}  // namespace
}  // namespace tolvenar
