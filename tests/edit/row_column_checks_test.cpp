// Rows and columns: the checks that all six operations open with, in their order; on each of them nothing has
// changed.
#include "row_column_fixture.h"

namespace tolvenar {
namespace {

using namespace testing;

class RowColumnChecks : public RowColumnTest {
 protected:
  // Used range: rows 3 to 6, columns 2 to 5, as the caller counts.
  void LoadUsual() {
    Load(EndSheet(Book().Dimensions(2, 6, 1, 5).Row(2).Row(5).Number(2, 1, 15, 1.0)));
    before_ = Image();
  }
  void ExpectUnchanged(const char* name) {
    EXPECT_EQ(Image(), before_) << name;
    EXPECT_EQ(LiveBlocks(), 2u) << name;
  }
  Bytes before_;
};

TEST_F(RowColumnChecks, NullTable_Gives1) {
  LoadUsual();
  for (const NamedEdit& edit : kAllEdits) {
    EXPECT_EQ(edit.call(&buffer_, 0, &size_, 1, 1), 1) << edit.name;
    ExpectUnchanged(edit.name);
  }
}

TEST_F(RowColumnChecks, TableWithoutSheets_Gives1_BeforeTheBufferIsLookedAt) {
  LoadUsual();
  PutTableEntry(OpenBlock(table_), 0, 0);
  for (const NamedEdit& edit : kAllEdits) {
    EXPECT_EQ(Run(edit.call, 1), 1) << edit.name;
    EXPECT_EQ(edit.call(nullptr, table_, nullptr, 1, 1), 1) << edit.name;
    ExpectUnchanged(edit.name);
  }
}

TEST_F(RowColumnChecks, SheetAboveANegativeCountAndBelowOne_Gives2) {
  LoadUsual();
  PutTableEntry(OpenBlock(table_), 0, 0xFFFB);
  for (const NamedEdit& edit : kAllEdits) {
    EXPECT_EQ(Run(edit.call, 1, -3), 2) << edit.name;
    EXPECT_EQ(Run(edit.call, 1, 0), 2) << edit.name;
    EXPECT_EQ(Run(edit.call, 1, -5), 3) << edit.name << ": not above the count";
    EXPECT_EQ(Run(edit.call, 1, 1), 3) << edit.name << ": not below 1";
    ExpectUnchanged(edit.name);
  }
}

TEST_F(RowColumnChecks, BadSheetNumber_Gives3) {
  LoadUsual();
  for (const NamedEdit& edit : kAllEdits) {
    for (int16_t sheet : {int16_t{0}, int16_t{2}, int16_t{-1}, int16_t{32767}, int16_t{-32768}}) {
      EXPECT_EQ(Run(edit.call, 4, sheet), 3) << edit.name << " " << sheet;
    }
    ExpectUnchanged(edit.name);
  }
}

TEST_F(RowColumnChecks, NullBuffer_Gives3) {
  LoadUsual();
  uint32_t null = 0;
  for (const NamedEdit& edit : kAllEdits) {
    EXPECT_EQ(edit.call(&null, table_, &size_, 1, 4), 3) << edit.name;
    EXPECT_EQ(edit.call(nullptr, table_, &size_, 1, 4), 3) << edit.name;
    ExpectUnchanged(edit.name);
  }
}

TEST_F(RowColumnChecks, SheetThatIsNoWorksheet_Gives3) {
  for (uint16_t kind : {kChart, kVisualBasic, kMacroSheet, kWorkspace, kGlobals}) {
    Load(StreamBuilder().Bof(6).Sheet("Data").Eof().Bof(6, kind).Dimensions(2, 6, 1, 5).Row(2).Eof());
    const Bytes before = Image();
    for (const NamedEdit& edit : kAllEdits) {
      EXPECT_EQ(Run(edit.call, 9), 3) << edit.name << " " << kind;
      EXPECT_EQ(Image(), before) << edit.name;
    }
    MEMORYFREE(&buffer_);
    MEMORYFREE(&table_);
  }
}

TEST_F(RowColumnChecks, Add_InsideTheUsedRange_Gives4) {
  LoadUsual();
  for (int16_t row : {int16_t{3}, int16_t{4}, int16_t{6}}) EXPECT_EQ(Run(XLAddRow, row), 4) << row;
  for (int16_t column : {int16_t{2}, int16_t{4}, int16_t{5}}) EXPECT_EQ(Run(XLAddCol, column), 4) << column;
  ExpectUnchanged("add");
}

TEST_F(RowColumnChecks, Add_OfAnInvertedRange_NeverGives4) {
  Load(EndSheet(Book().Dimensions(5, 2, 5, 2).Row(2)));
  EXPECT_EQ(Run(XLAddRow, 4), 9);
  EXPECT_EQ(Run(XLAddCol, 4), 0);
}

TEST_F(RowColumnChecks, InsertAndDelete_OfANormalRange_TakeAnyPosition) {
  for (int16_t position :
       {int16_t{-32768}, int16_t{-1}, int16_t{0}, int16_t{1}, int16_t{4}, int16_t{7}, int16_t{32767}}) {
    for (EditCall edit : {XLInsertRow, XLInsertCol, XLDeleteRow, XLDeleteCol}) {
      LoadUsual();
      EXPECT_EQ(Run(edit, position), 0) << position;
      MEMORYFREE(&buffer_);
      MEMORYFREE(&table_);
    }
  }
}

// Rows 6 to 2 and columns 12 to 8: positions between the two are refused, the ends are not.
TEST_F(RowColumnChecks, InsertAndDelete_InsideAnInvertedRange_Give4) {
  Load(EndSheet(Book().Dimensions(5, 2, 11, 8)));
  const Bytes before = Image();
  for (int16_t row : {int16_t{3}, int16_t{5}}) {
    EXPECT_EQ(Run(XLInsertRow, row), 4) << row;
    EXPECT_EQ(Run(XLDeleteRow, row), 4) << row;
  }
  for (int16_t column : {int16_t{9}, int16_t{11}}) EXPECT_EQ(Run(XLInsertCol, column), 4) << column;
  EXPECT_EQ(Image(), before);
  for (int16_t row : {int16_t{2}, int16_t{6}}) EXPECT_EQ(Run(XLDeleteRow, row), 0) << row;
  for (int16_t column : {int16_t{8}, int16_t{12}}) EXPECT_EQ(Run(XLInsertCol, column), 0) << column;
}

TEST_F(RowColumnChecks, DeleteCol_ComparesTheColumnWithTheRowBounds) {
  Load(EndSheet(Book().Dimensions(5, 2, 11, 8)));
  EXPECT_EQ(Run(XLDeleteCol, 4), 4);
  EXPECT_EQ(Run(XLDeleteCol, 9), 0);
}

TEST_F(RowColumnChecks, BoundsCompareAsSigned) {
  // The past row 0x8000 is below the first one.
  Load(EndSheet(Book().Dimensions(2, 0x8000, 0, 4)));
  EXPECT_EQ(Run(XLInsertRow, 2), 4);
  EXPECT_EQ(Run(XLInsertRow, -32767), 4);
  EXPECT_EQ(Run(XLInsertRow, 3), 0);
}

TEST_F(RowColumnChecks, NullSize_WhereItIsUsed_Gives8) {
  LoadUsual();
  EXPECT_EQ(XLAddRow(&buffer_, table_, nullptr, 1, 4), 4);  // the position comes first
  EXPECT_EQ(XLAddRow(&buffer_, table_, nullptr, 1, 7), 8);
  for (EditCall edit : {XLInsertRow, XLInsertCol, XLDeleteCol})
    EXPECT_EQ(edit(&buffer_, table_, nullptr, 1, 4), 8);
  ExpectUnchanged("null size");
  EXPECT_EQ(XLAddCol(&buffer_, table_, nullptr, 1, 7), 0);
  EXPECT_EQ(XLDeleteRow(&buffer_, table_, nullptr, 1, 4), 0);
}

TEST_F(RowColumnChecks, SheetWithoutDimensions_HasAnEmptyRange) {
  Load(EndSheet(Book().Row(2).Number(2, 1, 15, 1.0)));
  const Bytes before = Image();
  for (int16_t row : {int16_t{0}, int16_t{1}, int16_t{4}}) EXPECT_EQ(Run(XLAddRow, row), 9) << row;
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(Run(XLAddCol, 7), 0);
  EXPECT_EQ(Run(XLInsertRow, 1), 0);
  EXPECT_EQ(Run(XLInsertCol, 1), 0);
  EXPECT_READS_AS(EndSheet(Book().Row(3, 0, 8).Number(3, 2, 15, 1.0)));
  EXPECT_EQ(Run(XLDeleteRow, 1), 0);
  EXPECT_EQ(Run(XLDeleteCol, 1), 0);
  EXPECT_READS_AS(EndSheet(Book().Row(2, 0, 7).Number(2, 1, 15, 1.0)));
}

TEST_F(RowColumnChecks, EmptySheet_IsDone_ButForXLAddRow) {
  for (const NamedEdit& edit : kAllEdits) {
    LoadUsual();
    // The sheet's BOF as its own end.
    PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, TableEntry(OpenBlock(table_), kTableFirstSheet));
    EXPECT_EQ(Run(edit.call, 9), edit.call == XLAddRow ? 9 : 0) << edit.name;
    ExpectUnchanged(edit.name);
    MEMORYFREE(&buffer_);
    MEMORYFREE(&table_);
  }
}

}  // namespace
}  // namespace tolvenar
