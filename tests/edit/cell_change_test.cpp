// XLChangeCellValue: what each change leaves in the walk, every result, and the state
// behind each failure.
#include "edit/cell_change.h"

#include <limits>
#include <string>

#include "edit/sheet_edit_fixture.h"
#include "foundation/memory_pool.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::kVersions;
using testing::OwnedBstr;
using testing::StreamBuilder;
using testing::Types;
using testing::U16;
using testing::operator+;

using Stream = StreamBuilder;

VARIANT Empty() {
  VARIANT value;
  VariantInit(&value);
  return value;
}

VARIANT OfType(uint16_t type) {
  VARIANT value = Empty();
  value.vt = type;
  return value;
}

VARIANT Real(double number) {
  VARIANT value = OfType(VT_R8);
  value.dblVal = number;
  return value;
}

VARIANT Date(double number) {
  VARIANT value = OfType(VT_DATE);
  value.date = number;
  return value;
}

VARIANT TextValue(const OwnedBstr& text) {
  VARIANT value = OfType(VT_BSTR);
  value.bstrVal = text.Get();
  return value;
}

VARIANT TextReference(BSTR* text) {
  VARIANT value = OfType(static_cast<uint16_t>(VT_BSTR | VT_BYREF));
  value.pbstrVal = text;
  return value;
}

class CellChangeTest : public testing::SheetEditTest {
 protected:
  int16_t Change(int16_t row, int16_t column, const VARIANT& value) {
    return XLChangeCellValue(&buffer_, table_, &size_, 1, row, column, &value);
  }

  // The cells are these, and every scratch block has been released.
  void ExpectCells(const Stream& cells) const {
    EXPECT_EQ(testing::Hex(Cells()), testing::Hex(cells.Stream()));
    EXPECT_EQ(LiveBlocks(), live_);
  }

  static Stream RkRun() { return Stream().MulRk(0, 1, {{21, 0x11}, {22, 0x22}, {23, 0x33}, {24, 0x44}}); }
  static Stream BlankRun() { return Stream().MulBlank(0, 1, {21, 22, 23, 24}); }
};

// ---- The value: what each type of VARIANT becomes ----

struct ValueCase {
  const char* label;
  VARIANT value;
  Stream cell;
};

VARIANT Short(int16_t number) {
  VARIANT value = OfType(VT_I2);
  value.iVal = number;
  return value;
}

VARIANT Long(int32_t number) {
  VARIANT value = OfType(VT_I4);
  value.lVal = number;
  return value;
}

VARIANT Single(float number) {
  VARIANT value = OfType(VT_R4);
  value.fltVal = number;
  return value;
}

VARIANT Currency(int64_t ten_thousandths) {
  VARIANT value = OfType(VT_CY);
  value.cyVal.int64 = ten_thousandths;
  return value;
}

class CellValueTest : public CellChangeTest {
 protected:
  // Changes a NUMBER with XF 17, and a cell that is not there, in both generations.
  void Check(const char* label, const VARIANT& value, const Stream& changed, const Stream& created) {
    for (uint8_t version : kVersions) {
      SCOPED_TRACE(label);
      Open(Sheet(version).Row(0).Number(0, 2, 17, 9.0));
      EXPECT_EQ(Change(1, 3, value), kChangeDone);
      ExpectCells(Stream().Row(0).Raw(changed.Stream()));
      EXPECT_EQ(Change(1, 2, value), kChangeDone);
      ExpectCells(Stream().Row(0).Raw(created.Stream()).Raw(changed.Stream()));
      MEMORYFREEALL();
    }
  }

  void CheckNumber(const char* label, const VARIANT& value, double number) {
    Check(label, value, Stream().Number(0, 2, 17, number), Stream().Number(0, 1, 15, number));
  }
};

TEST_F(CellValueTest, Numbers_BecomeNumberRecords) {
  CheckNumber("short", Short(-32768), -32768.0);
  CheckNumber("long", Long(-2147483647), -2147483647.0);
  CheckNumber("float", Single(0.5f), 0.5);
  CheckNumber("float that is no short fraction", Single(0.1f), static_cast<double>(0.1f));
  CheckNumber("double", Real(-1.0e300), -1.0e300);
}

TEST_F(CellValueTest, Currency_IsStoredAsIfItsBytesWereADouble) {
  CheckNumber("currency", Currency(0x3FF8000000000000), 1.5);
}

TEST_F(CellValueTest, Date_LosesItsTimeOfDay) {
  CheckNumber("positive", Date(1.75), 1.0);
  CheckNumber("negative", Date(-1.75), -1.0);
  CheckNumber("between", Date(-0.5), 0.0);
  CheckNumber("largest", Date(2147483647.9), 2147483647.0);
  CheckNumber("smallest", Date(-2147483648.9), -2147483648.0);
}

TEST_F(CellValueTest, DateOutside32Bits_BecomesTheSmallestInteger) {
  CheckNumber("too large", Date(2147483648.0), -2147483648.0);
  CheckNumber("too small", Date(-2147483649.0), -2147483648.0);
  CheckNumber("infinite", Date(std::numeric_limits<double>::infinity()), -2147483648.0);
  CheckNumber("no number", Date(std::numeric_limits<double>::quiet_NaN()), -2147483648.0);
}

TEST_F(CellValueTest, Empty_BecomesABlank) {
  Check("empty", Empty(), Stream().Blank(0, 2, 17), Stream().Blank(0, 1, 15));
}

TEST_F(CellValueTest, Text_BecomesALabelOfTheLowBytes) {
  const OwnedBstr text(u"a\u0142\u20AC");
  const Stream changed = Stream().Label(0, 2, 17, "a\x42\xAC");
  const Stream created = Stream().Label(0, 1, 15, "a\x42\xAC");
  Check("text", TextValue(text), changed, created);
  BSTR referenced = text.Get();
  Check("reference", TextReference(&referenced), changed, created);
}

TEST_F(CellValueTest, TypesThatAreNotServed_RemoveTheCell) {
  for (uint16_t type : Types{9, 10, 11, 12, 13, 14, 16, 17, 18, 19, 20, 22, 0x4005, 0x4000, 0x2008, 0xFFFF}) {
    SCOPED_TRACE(type);
    Open(Sheet(6).Row(0).Number(0, 2, 17, 9.0).Raw(Stream().MulRk(0, 3, {{18, 6}, {19, 7}}).Stream()));
    EXPECT_EQ(Change(1, 3, OfType(type)), kChangeDone);
    EXPECT_EQ(Change(1, 4, OfType(type)), kChangeDone);
    EXPECT_EQ(Change(1, 1, OfType(type)), kChangeDone);  // absent: nothing to remove
    ExpectCells(Stream().Row(0).Rk(0, 4, 19, 7));
    EXPECT_EQ(size_, opened_.size());
    MEMORYFREEALL();
  }
}

TEST_F(CellValueTest, TypesThatAreNotServed_SplitARunOfBlanks) {
  Open(Sheet(6).Row(0).MulBlank(0, 1, {21, 22, 23, 24}));
  EXPECT_EQ(Change(1, 4, OfType(11)), kChangeDone);
  ExpectCells(Stream().Row(0).MulBlank(0, 1, {21, 22}).Blank(0, 3, 24));
}

// ---- The place ----

TEST_F(CellChangeTest, EachSingleKind_IsReplacedAndKeepsItsXf) {
  for (uint16_t type : Types{0x0205, 0x0006, 0x0201, 0x027E, 0x0204, 0x0207, 0x00D6, 0x0203}) {
    SCOPED_TRACE(type);
    Open(Sheet(6).Row(0).Record(type, U16(0) + U16(3) + U16(33) + Bytes(6)));
    EXPECT_EQ(Change(1, 4, Real(2.5)), kChangeDone);
    ExpectCells(Stream().Row(0).Number(0, 3, 33, 2.5));
    MEMORYFREEALL();
  }
}

TEST_F(CellChangeTest, AbsentCell_GoesInFrontOfTheNextOne) {
  Open(Sheet(6).Row(0).Row(1).Number(0, 2, 17, 9.0).Number(1, 0, 17, 8.0));
  EXPECT_EQ(Change(1, 1, Real(1.0)), kChangeDone);
  EXPECT_EQ(Change(1, 5, Real(2.0)), kChangeDone);
  EXPECT_EQ(Change(2, 20, Real(3.0)), kChangeDone);
  ExpectCells(Stream()
                  .Row(0)
                  .Row(1)
                  .Number(0, 0, 15, 1.0)
                  .Number(0, 2, 17, 9.0)
                  .Number(0, 4, 15, 2.0)
                  .Number(1, 0, 17, 8.0)
                  .Number(1, 19, 15, 3.0));
}

TEST_F(CellChangeTest, RowWithoutRowRecord_Gives1EvenWithCells) {
  Open(Sheet(6).Number(0, 0, 15, 1.0));
  EXPECT_EQ(Change(1, 1, Real(2.0)), kChangeNoCell);
  ExpectUntouched();
}

TEST_F(CellChangeTest, OnePastTheDimensions_Gives1) {
  for (uint8_t version : kVersions) {
    Open(Sheet(version).Row(0).Row(10).Number(0, 0, 15, 1.0));
    EXPECT_EQ(Change(1, 21, Real(2.0)), kChangeNoCell);
    EXPECT_EQ(Change(11, 1, Real(2.0)), kChangeNoCell);
    ExpectUntouched();
    MEMORYFREEALL();
  }
}

TEST_F(CellChangeTest, LabelSst_CountsAsAbsentAndStays) {
  Open(Sheet(6).Row(0).LabelSst(0, 1, 17, 3).Number(0, 2, 18, 9.0));
  EXPECT_EQ(Change(1, 2, Real(1.0)), kChangeDone);
  ExpectCells(Stream().Row(0).LabelSst(0, 1, 17, 3).Number(0, 1, 15, 1.0).Number(0, 2, 18, 9.0));
}

TEST_F(CellChangeTest, StringBehindAReplacedFormula_Stays) {
  const Bytes words = U16(0) + U16(0) + U16(0);
  Open(Sheet(6).Row(0).Formula(0, 1, 17, Bytes(8)).Record(0x0207, words));
  EXPECT_EQ(Change(1, 2, Real(1.0)), kChangeDone);
  ExpectCells(Stream().Row(0).Number(0, 1, 17, 1.0).Record(0x0207, words));
}

TEST_F(CellChangeTest, StringWords_AreTakenForAPosition) {
  Open(Sheet(6).Row(0).Row(1).Formula(0, 1, 17, Bytes(8)).Record(0x0207, U16(0) + U16(5) + U16(44)));
  EXPECT_EQ(Change(1, 6, Real(1.0)), kChangeDone);
  ExpectCells(Stream().Row(0).Row(1).Formula(0, 1, 17, Bytes(8)).Number(0, 5, 44, 1.0));
}

TEST_F(CellChangeTest, NothingButTheCellChanges) {
  StreamBuilder book =
      Sheet(6).Row(0).Record(0x020B, Bytes(16)).Number(0, 2, 17, 9.0).Record(0x00D7, Bytes(8));
  Open(book);
  EXPECT_EQ(Change(1, 4, Real(1.0)), kChangeDone);
  ExpectCells(Stream()
                  .Row(0)
                  .Record(0x020B, Bytes(16))
                  .Number(0, 2, 17, 9.0)
                  .Number(0, 3, 15, 1.0)
                  .Record(0x00D7, Bytes(8)));
}

TEST_F(CellChangeTest, SameSizedRecord_IsReplacedInPlace) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 2, 17, 9.0);
  Open(book);
  EXPECT_EQ(Change(1, 3, Real(1.0)), kChangeDone);
  PutU8(OpenBlock(buffer_), book.Last() + kNumberSize - 1, 0x40);  // 1.0 and 9.0 differ in two bytes
  PutU8(OpenBlock(buffer_), book.Last() + kNumberSize - 2, 0x22);
  ExpectUntouched();
}

TEST_F(CellChangeTest, ShorterRecord_LeavesTheRestAsRoom) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 2, 17, 9.0);
  Open(book);
  EXPECT_EQ(Change(1, 3, Empty()), kChangeDone);
  EXPECT_EQ(size_, opened_.size());
  EXPECT_EQ(U32At(OpenBlock(buffer_), book.Last() + kBlankSize), 0x0004FEFDu);
  EXPECT_EQ(Change(1, 3, Real(4.0)), kChangeDone);  // 10 bytes are too few for it by now
  ExpectCells(Stream().Row(0).Number(0, 2, 17, 4.0));
}

TEST_F(CellChangeTest, ManyChangesOfOneCell_LeaveOneCell) {
  Open(Sheet(6).Row(0).Blank(0, 2, 17).Number(0, 3, 18, 1.0));
  for (int i = 0; i < 200; ++i) {
    const OwnedBstr text(std::u16string(static_cast<size_t>(i % 7), u'x'));
    EXPECT_EQ(Change(1, 3, i % 3 == 0 ? TextValue(text) : Real(i)), kChangeDone);
  }
  EXPECT_EQ(Change(1, 3, Real(5.0)), kChangeDone);
  ExpectCells(Stream().Row(0).Number(0, 2, 17, 5.0).Number(0, 3, 18, 1.0));
}

// ---- Runs ----

TEST_F(CellChangeTest, CellOfAMulRk_IsReplacedBetweenThePieces) {
  const Stream want[] = {
      Stream().Number(0, 1, 21, 5.0).MulRk(0, 2, {{22, 0x22}, {23, 0x33}, {24, 0x44}}),
      Stream().Rk(0, 1, 21, 0x11).Number(0, 2, 22, 5.0).MulRk(0, 3, {{23, 0x33}, {24, 0x44}}),
      Stream().MulRk(0, 1, {{21, 0x11}, {22, 0x22}}).Number(0, 3, 23, 5.0).Rk(0, 4, 24, 0x44),
      Stream().MulRk(0, 1, {{21, 0x11}, {22, 0x22}, {23, 0x33}}).Number(0, 4, 24, 5.0),
  };
  for (int16_t i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    Open(Sheet(6).Row(0).Raw(RkRun().Stream()).Number(0, 5, 16, 6.0));
    EXPECT_EQ(Change(1, static_cast<int16_t>(2 + i), Real(5.0)), kChangeDone);
    ExpectCells(Stream().Row(0).Raw(want[i].Stream()).Number(0, 5, 16, 6.0));
    MEMORYFREEALL();
  }
}

TEST_F(CellChangeTest, CellOfAMulBlank_IsReplacedBetweenThePieces) {
  const Stream want[] = {
      Stream().Number(0, 1, 21, 5.0).MulBlank(0, 2, {22, 23, 24}),
      Stream().Blank(0, 1, 21).Number(0, 2, 22, 5.0).MulBlank(0, 3, {23, 24}),
      Stream().MulBlank(0, 1, {21, 22}).Number(0, 3, 23, 5.0).Blank(0, 3, 24),  // one column short, on
                                                                                // purpose
      Stream().MulBlank(0, 1, {21, 22, 23}).Number(0, 4, 24, 5.0),
  };
  for (int16_t i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    Open(Sheet(5).Row(0).Raw(BlankRun().Stream()).Number(0, 5, 16, 6.0));
    EXPECT_EQ(Change(1, static_cast<int16_t>(2 + i), Real(5.0)), kChangeDone);
    ExpectCells(Stream().Row(0).Raw(want[i].Stream()).Number(0, 5, 16, 6.0));
    MEMORYFREEALL();
  }
}

TEST_F(CellChangeTest, EmptyInAMulRk_LeavesABlankBetweenThePieces) {
  Open(Sheet(6).Row(0).Raw(RkRun().Stream()));
  EXPECT_EQ(Change(1, 3, Empty()), kChangeDone);
  ExpectCells(Stream().Row(0).Rk(0, 1, 21, 0x11).Blank(0, 2, 22).MulRk(0, 3, {{23, 0x33}, {24, 0x44}}));
}

TEST_F(CellChangeTest, EmptyInAMulBlank_RemovesTheWholeRun) {
  StreamBuilder book = Sheet(6).Row(0);
  const uint32_t run = book.Here();
  Open(book.Raw(BlankRun().Stream()).Number(0, 5, 16, 6.0));
  EXPECT_EQ(Change(1, 3, Empty()), kChangeDone);
  ExpectCells(Stream().Row(0).Number(0, 5, 16, 6.0));
  EXPECT_EQ(U32At(OpenBlock(buffer_), run), 0x000EFEFDu);  // its length stays
  EXPECT_EQ(size_, opened_.size());
}

TEST_F(CellChangeTest, AllCellsOfAMulRk_CanBeChangedOneByOne) {
  Open(Sheet(6).Row(0).Raw(RkRun().Stream()));
  for (int16_t column : testing::Columns{4, 2, 5, 3}) EXPECT_EQ(Change(1, column, Real(column)), kChangeDone);
  ExpectCells(Stream()
                  .Row(0)
                  .Number(0, 1, 21, 2.0)
                  .Number(0, 2, 22, 3.0)
                  .Number(0, 3, 23, 4.0)
                  .Number(0, 4, 24, 5.0));
}

// ---- Results and what they leave ----

TEST_F(CellChangeTest, WithoutTableSheetOrBuffer_Gives1) {
  Open(Sheet(6).Row(0).Number(0, 0, 15, 1.0));
  const VARIANT value = Real(2.0);
  uint32_t null = 0;
  EXPECT_EQ(XLChangeCellValue(&buffer_, 0, &size_, 1, 1, 1, &value), kChangeNoCell);
  EXPECT_EQ(XLChangeCellValue(&buffer_, table_, &size_, 2, 1, 1, &value), kChangeNoCell);
  EXPECT_EQ(XLChangeCellValue(&buffer_, table_, &size_, 0, 1, 1, &value), kChangeNoCell);
  EXPECT_EQ(XLChangeCellValue(&null, table_, &size_, 1, 1, 1, &value), kChangeNoCell);
  EXPECT_EQ(XLChangeCellValue(nullptr, table_, &size_, 1, 1, 1, &value), kChangeNoCell);
  EXPECT_EQ(XLChangeCellValue(&buffer_, table_, nullptr, 1, 1, 1, &value), kChangeNoCell);
  ExpectUntouched();
}

TEST_F(CellChangeTest, Null_Gives2AndOnlyWhereTheCellCanExist) {
  Open(Sheet(6).Row(0).Number(0, 0, 15, 1.0).Raw(RkRun().Stream()));
  EXPECT_EQ(Change(1, 1, OfType(VT_NULL)), kChangeNullValue);
  EXPECT_EQ(Change(1, 2, OfType(VT_NULL)), kChangeNullValue);
  EXPECT_EQ(Change(1, 9, OfType(VT_NULL)), kChangeNullValue);
  EXPECT_EQ(Change(2, 1, OfType(VT_NULL)), kChangeNoCell);
  EXPECT_EQ(XLChangeCellValue(&buffer_, table_, &size_, 1, 1, 1, nullptr), kChangeNullValue);
  EXPECT_EQ(XLChangeCellValue(&buffer_, table_, &size_, 1, 2, 1, nullptr), kChangeNoCell);
  ExpectUntouched();
}

TEST_F(CellChangeTest, NullText_Gives12AndTheCellIsGone) {
  BSTR null_text = nullptr;
  const VARIANT no_reference = TextReference(nullptr);
  const VARIANT null_behind = TextReference(&null_text);
  VARIANT null_value = OfType(VT_BSTR);
  null_value.bstrVal = nullptr;
  for (const VARIANT& value : {null_value, no_reference, null_behind}) {
    Open(Sheet(6).Row(0).Number(0, 0, 15, 1.0).Raw(RkRun().Stream()));
    EXPECT_EQ(Change(1, 1, value), kChangeLabel);
    EXPECT_EQ(Change(1, 5, value), kChangeLabel);
    ExpectCells(Stream().Row(0).MulRk(0, 1, {{21, 0x11}, {22, 0x22}, {23, 0x33}}));
    MEMORYFREEALL();
  }
}

TEST_F(CellChangeTest, TextTooLongForARecord_Gives12WithTheScratchBlockLeft) {
  Open(Sheet(6).Row(0).Number(0, 0, 15, 1.0));
  const OwnedBstr text(std::u16string(32756, u'x'));
  EXPECT_EQ(Change(1, 1, TextValue(text)), kChangeLabel);
  EXPECT_EQ(Cells(), Stream().Row(0).Stream());
  EXPECT_NE(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), live_ + 1);
}

// Each type with its own result when its record can't be written.
struct FailureCase {
  const char* label;
  VARIANT value;
  int16_t result;
};

std::vector<FailureCase> FailureCases(const OwnedBstr& text) {
  return {{"empty", Empty(), 6},         {"short", Short(1), 8},       {"long", Long(1), 8},
          {"date", Date(1.0), 8},        {"float", Single(1.0f), 10},  {"double", Real(1.0), 13},
          {"currency", Currency(1), 13}, {"text", TextValue(text), 12}};
}

TEST_F(CellChangeTest, NoBlockForTheRecord_GivesTheTypesResultAndTheCellIsGone) {
  const OwnedBstr text(u"abc");
  for (const FailureCase& c : FailureCases(text)) {
    SCOPED_TRACE(c.label);
    OpenFull(Sheet(6).Row(0).Number(0, 0, 15, 1.0));
    TakeBlocksUntil(9);
    EXPECT_EQ(Change(1, 2, c.value), c.result);  // an absent cell: nothing changes
    EXPECT_EQ(Contents(), opened_);
    EXPECT_EQ(Change(1, 1, c.value), c.result);
    EXPECT_EQ(Cells(), Stream().Row(0).Stream());
    EXPECT_EQ(LiveBlocks(), 9u);
    MEMORYFREEALL();
  }
}

TEST_F(CellChangeTest, NoRoomForTheRecord_GivesTheTypesResultAndTheBufferIsGone) {
  const OwnedBstr text(u"abc");
  for (const FailureCase& c : FailureCases(text)) {
    SCOPED_TRACE(c.label);
    OpenFull(Sheet(6).Row(0).Number(0, 0, 15, 1.0));
    TakeBlocksUntil(8);
    EXPECT_EQ(Change(1, 2, c.value), c.result);
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(LiveBlocks(), 8u);  // the buffer's block less, the scratch block more
    MEMORYFREEALL();
  }
}

TEST_F(CellChangeTest, RecordThatFitsItsRoom_NeedsNoGrowth) {
  OpenFull(Sheet(6).Row(0).Number(0, 0, 15, 1.0));
  TakeBlocksUntil(8);
  EXPECT_EQ(Change(1, 1, Real(2.0)), kChangeDone);
  EXPECT_EQ(Cells(), Stream().Row(0).Number(0, 0, 15, 2.0).Stream());
  EXPECT_EQ(LiveBlocks(), 8u);
}

// A change in a run, with `taken` blocks live beforehand and a buffer that has to move.
struct ExhaustedCase {
  uint32_t taken;
  bool done;
  bool buffer_left;
  uint32_t live;
};
constexpr ExhaustedCase kExhaustedCases[] = {
    {9, false, true, 9},   // no block for the copy of the run
    {8, false, true, 8},   // for the left piece
    {7, false, true, 7},   // for the right piece
    {6, false, false, 8},  // the right piece does not fit, and the buffer can't move
    {5, true, true, 5},   {4, true, true, 4}, {3, true, true, 3}, {2, true, true, 2},
};

TEST_F(CellChangeTest, MulRkThatCanNotBeSplit_Gives4AndIsGone) {
  for (const ExhaustedCase& c : kExhaustedCases) {
    SCOPED_TRACE(c.taken);
    OpenFull(Sheet(6).Row(0).Raw(RkRun().Stream()));
    TakeBlocksUntil(c.taken);
    EXPECT_EQ(Change(1, 3, Real(5.0)), c.done ? kChangeDone : kChangeMulRk);
    EXPECT_EQ(buffer_ != 0, c.buffer_left);
    EXPECT_EQ(LiveBlocks(), c.live);
    if (!c.done && c.buffer_left) {
      EXPECT_EQ(Cells(), Stream().Row(0).Stream());
    }
    MEMORYFREEALL();
  }
}

TEST_F(CellChangeTest, MulBlankThatCanNotBeSplit_Gives5AndIsGone) {
  for (const ExhaustedCase& c : kExhaustedCases) {
    SCOPED_TRACE(c.taken);
    OpenFull(Sheet(6).Row(0).Raw(BlankRun().Stream()));
    TakeBlocksUntil(c.taken);
    EXPECT_EQ(Change(1, 3, Real(5.0)), c.done ? kChangeDone : kChangeMulBlank);
    EXPECT_EQ(buffer_ != 0, c.buffer_left);
    EXPECT_EQ(LiveBlocks(), c.live);
    if (!c.done && c.buffer_left) {
      EXPECT_EQ(Cells(), Stream().Row(0).Stream());
    }
    MEMORYFREEALL();
  }
}

}  // namespace
}  // namespace tolvenar
