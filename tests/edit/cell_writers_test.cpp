// The writers of single cells: the bytes they make, and the pool and the buffer after each failure.
#include "edit/cell_writers.h"

#include <string>

#include "edit/sheet_edit_fixture.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::kVersions;
using testing::OwnedBstr;
using testing::StreamBuilder;

class CellWritersTest : public testing::SheetEditTest {
 protected:
  // A sheet with nothing but a SLACK of `length` bytes to write into.
  void OpenSlack(uint8_t version, uint16_t length) {
    StreamBuilder book = Sheet(version).Slack(length);
    slack_ = book.Last();
    Open(book);
  }

  int16_t Blank() { return WriteBlankCell(&buffer_, &size_, slack_, 4, 2, 0x0123); }
  int16_t Integer(int32_t value) { return WriteIntegerCell(&buffer_, &size_, slack_, 4, 2, 0x0123, value); }
  int16_t Float(float value) { return WriteFloatCell(&buffer_, &size_, slack_, 4, 2, 0x0123, value); }
  int16_t Double(uint64_t bytes) { return WriteDoubleCell(&buffer_, &size_, slack_, 4, 2, 0x0123, bytes); }
  int16_t Label(BSTR text) { return WriteLabelCell(&buffer_, &size_, slack_, 4, 2, 0x0123, text); }

  uint32_t slack_ = 0;
};

TEST_F(CellWritersTest, Blank_HasRowColumnAndXf) {
  OpenSlack(6, 6);
  EXPECT_EQ(Blank(), kWriteDone);
  EXPECT_EQ(Cells(), (Bytes{0x01, 0x02, 6, 0, 3, 0, 1, 0, 0x23, 0x01}));
  EXPECT_EQ(size_, opened_.size());
  EXPECT_EQ(LiveBlocks(), live_);
}

TEST_F(CellWritersTest, Integer_BecomesADouble) {
  OpenSlack(6, 14);
  EXPECT_EQ(Integer(-2), kWriteDone);
  EXPECT_EQ(Cells(), (Bytes{0x03, 0x02, 14, 0, 3, 0, 1, 0, 0x23, 0x01, 0, 0, 0, 0, 0, 0, 0x00, 0xC0}));
  EXPECT_EQ(LiveBlocks(), live_);
}

TEST_F(CellWritersTest, Float_IsWidened) {
  OpenSlack(5, 14);
  EXPECT_EQ(Float(0.1f), kWriteDone);
  EXPECT_EQ(Cells(),
            (Bytes{0x03, 0x02, 14, 0, 3, 0, 1, 0, 0x23, 0x01, 0, 0, 0, 0xA0, 0x99, 0x99, 0xB9, 0x3F}));
}

TEST_F(CellWritersTest, Double_IsStoredByteForByte) {
  OpenSlack(6, 14);
  EXPECT_EQ(Double(0x7FF0000000000001), kWriteDone);  // no number at all
  EXPECT_EQ(Cells(), (Bytes{0x03, 0x02, 14, 0, 3, 0, 1, 0, 0x23, 0x01, 1, 0, 0, 0, 0, 0, 0xF0, 0x7F}));
}

TEST_F(CellWritersTest, Label_HasTheLowBytesAndNoOptionByteInBothGenerations) {
  for (uint8_t version : kVersions) {
    OpenSlack(version, 11);
    const OwnedBstr text(u"A\u0142\u20AC");
    EXPECT_EQ(Label(text.Get()), kWriteDone);
    EXPECT_EQ(Cells(), (Bytes{0x04, 0x02, 11, 0, 3, 0, 1, 0, 0x23, 0x01, 3, 0, 'A', 0x42, 0xAC}));
    EXPECT_EQ(LiveBlocks(), live_);
    MEMORYFREEALL();
  }
}

TEST_F(CellWritersTest, EmptyLabel_HasNoText) {
  OpenSlack(6, 8);
  const OwnedBstr text(u"");
  EXPECT_EQ(Label(text.Get()), kWriteDone);
  EXPECT_EQ(Cells(), (Bytes{0x04, 0x02, 8, 0, 3, 0, 1, 0, 0x23, 0x01, 0, 0}));
}

TEST_F(CellWritersTest, LabelWithAnOddByteLength_HasItsWholeUnits) {
  OpenSlack(6, 9);
  BSTR text = SysAllocStringByteLen("a\0b", 3);
  EXPECT_EQ(Label(text), kWriteDone);
  EXPECT_EQ(Cells(), (Bytes{0x04, 0x02, 9, 0, 3, 0, 1, 0, 0x23, 0x01, 1, 0, 'a'}));
  SysFreeString(text);
}

TEST_F(CellWritersTest, LabelOfTextWithZeroUnits_KeepsThem) {
  OpenSlack(6, 11);
  const OwnedBstr text(std::u16string(u"a\0b", 3));
  EXPECT_EQ(Label(text.Get()), kWriteDone);
  EXPECT_EQ(Cells(), (Bytes{0x04, 0x02, 11, 0, 3, 0, 1, 0, 0x23, 0x01, 3, 0, 'a', 0, 'b'}));
}

TEST_F(CellWritersTest, LabelWithoutText_Gives1AndChangesNothing) {
  OpenSlack(6, 8);
  EXPECT_EQ(Label(nullptr), kLabelNullText);
  ExpectUntouched();
}

TEST_F(CellWritersTest, LongestLabel_IsWritten) {
  OpenSlack(6, 8);
  const OwnedBstr text(std::u16string(32755, u'x'));
  EXPECT_EQ(Label(text.Get()), kWriteDone);
  const Bytes cells = Cells();
  EXPECT_EQ(cells.size(), 32767u);
  EXPECT_EQ(Bytes(cells.begin(), cells.begin() + 13),
            (Bytes{0x04, 0x02, 0xFB, 0x7F, 3, 0, 1, 0, 0x23, 0x01, 0xF3, 0x7F, 'x'}));
  EXPECT_EQ(LiveBlocks(), live_);
}

TEST_F(CellWritersTest, LongerLabels_Give4WithTheScratchBlockLeft) {
  // 65524 and 65536 units are lengths whose records would be 0 and 12 bytes long in 16 bits.
  for (size_t units : {size_t{32756}, size_t{65523}, size_t{65524}, size_t{65536}, size_t{70000}}) {
    SCOPED_TRACE(units);
    OpenSlack(6, 8);
    const OwnedBstr text(std::u16string(units, u'x'));
    EXPECT_EQ(Label(text.Get()), kLabelPatchFailed);
    EXPECT_EQ(Contents(), opened_);
    EXPECT_EQ(LiveBlocks(), live_ + 1);
    MEMORYFREEALL();
  }
}

TEST_F(CellWritersTest, LargeSlack_IsUsedFromItsStart) {
  OpenSlack(6, 30);
  EXPECT_EQ(Blank(), kWriteDone);
  const Bytes all = Contents();
  EXPECT_EQ(Bytes(all.begin() + slack_ + 10, all.begin() + slack_ + 14), (Bytes{0xFD, 0xFE, 20, 0}));
  EXPECT_EQ(size_, opened_.size());
}

TEST_F(CellWritersTest, SmallSlack_IsLeftByADetour) {
  OpenSlack(6, 6);
  EXPECT_EQ(Integer(1), kWriteDone);
  EXPECT_EQ(size_, opened_.size() + 18 + 10 + 8);
  EXPECT_EQ(Cells(), (Bytes{0x03, 0x02, 14, 0, 3, 0, 1, 0, 0x23, 0x01, 0, 0, 0, 0, 0, 0, 0xF0, 0x3F}));
}

TEST_F(CellWritersTest, NoBlockForTheRecord_LeavesAllAsItWas) {
  OpenSlack(6, 30);
  const OwnedBstr text(u"a");
  TakeBlocksUntil(9);
  live_ = 9;
  EXPECT_EQ(Blank(), kWriteNoMemory);
  EXPECT_EQ(Integer(1), kWriteNoMemory);
  EXPECT_EQ(Float(1), kWriteNoMemory);
  EXPECT_EQ(Double(1), kWriteNoMemory);
  EXPECT_EQ(Label(text.Get()), kLabelNoMemory);
  ExpectUntouched();
}

// The buffer fills its slot and has one slot to move to: the scratch block takes it. The patch fails, and the
// buffer goes with it.
class GrowthFailsTest : public CellWritersTest {
 protected:
  void SetUp() override {
    CellWritersTest::SetUp();
    StreamBuilder book = Sheet(6).Row(0);
    slack_ = book.Last();
    OpenFull(book);
    TakeBlocksUntil(8);
  }

  void ExpectBufferLostAndScratchLeft() const {
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(size_, 256u);
    EXPECT_EQ(LiveBlocks(), 8u);
  }
};

TEST_F(GrowthFailsTest, Blank) {
  EXPECT_EQ(Blank(), kWritePatchFailed);
  ExpectBufferLostAndScratchLeft();
}

TEST_F(GrowthFailsTest, Integer) {
  EXPECT_EQ(Integer(1), kWritePatchFailed);
  ExpectBufferLostAndScratchLeft();
}

TEST_F(GrowthFailsTest, Float) {
  EXPECT_EQ(Float(1), kWritePatchFailed);
  ExpectBufferLostAndScratchLeft();
}

TEST_F(GrowthFailsTest, Double) {
  EXPECT_EQ(Double(1), kWritePatchFailed);
  ExpectBufferLostAndScratchLeft();
}

TEST_F(GrowthFailsTest, Label) {
  const OwnedBstr text(u"a");
  EXPECT_EQ(Label(text.Get()), kLabelPatchFailed);
  ExpectBufferLostAndScratchLeft();
}

TEST_F(CellWritersTest, BufferThatCanGrow_Moves) {
  StreamBuilder book = Sheet(6).Row(0);
  slack_ = book.Last();
  OpenFull(book);
  const uint32_t before = buffer_;
  TakeBlocksUntil(7);
  EXPECT_EQ(Blank(), kWriteDone);
  EXPECT_NE(buffer_, before);
  EXPECT_EQ(size_, 256u + 10 + 20 + 8);
  EXPECT_EQ(Cells(), StreamBuilder().Blank(3, 1, 0x0123).Row(0).Stream());
  EXPECT_EQ(LiveBlocks(), 7u);
}

}  // namespace
}  // namespace tolvenar
