// LABEL records from 8-bit and wide text, and the shell that is refilled.
#include "workbook/label_record.h"

#include <gtest/gtest.h>

#include "support/made_record.h"
#include "support/pool_fixture.h"

namespace tolvenar::testing {
namespace {

using Wide = std::basic_string<OLECHAR>;

class LabelRecordTest : public PoolTest {
 protected:
  void TearDown() override {
    BiffVersion = 0;
    PoolTest::TearDown();
  }

  static Block Shell(uint32_t handle) { return {BlockBytes(handle), MEMORYSIZE(handle)}; }

  uint32_t size = 0xDEAD;
};

TEST_F(LabelRecordTest, Doubled_TakesTwiceTheLengthFromTheText_InBothGenerations) {
  const char text[] = "abc\0XYZ";
  for (int32_t version : {5, 6}) {
    BiffVersion = version;
    const uint32_t record = MakeLabelRecord(&size, 0x0102, 0x0304, 0x0506, text);
    EXPECT_EQ(U8At(OpenBlock(record), 18), 'Y') << "the last byte lies one behind the record";
    EXPECT_EQ(Made(record, size), "04 02 0E 00 02 01 04 03 06 05 03 00 00 61 62 63 00 58 ");
  }
}

TEST_F(LabelRecordTest, Doubled_NullAndEmptyText) {
  for (const char* text : {static_cast<const char*>(nullptr), ""}) {
    const uint32_t record = MakeLabelRecord(&size, 1, 2, 3, text);
    EXPECT_EQ(Made(record, size), "04 02 08 00 01 00 02 00 03 00 00 00 ");
  }
}

TEST_F(LabelRecordTest, Doubled_RecordAsLargeAsItsSlot_TheLastByteGoesIntoTheSpareRoom) {
  const std::string text(244, 'x');  // 2 * 122 + 12 = 256: "x" up to 122, then 122 more
  std::string half = text;
  half[122] = 0;
  const uint32_t record = MakeLabelRecord(&size, 0, 0, 0, half.c_str());
  EXPECT_EQ(size, 256u);
  EXPECT_EQ(MEMORYALLOCSIZE(record), 256u);
  EXPECT_EQ(BlockBytes(record)[255], 'x');
  EXPECT_EQ(BlockBytes(record)[256], 'x');
}

TEST_F(LabelRecordTest, Doubled_TextWithoutItsPromisedBytes_DoesNotFault) {
  const std::string text = "a text of the length that it has and not a byte more";
  const uint32_t record = MakeLabelRecord(&size, 0, 0, 0, text.c_str());
  EXPECT_EQ(size, 2 * text.size() + 12);
  EXPECT_EQ(BlockContents(record, size).at(13), 'a');
}

TEST_F(LabelRecordTest, WideBiff5) {
  BiffVersion = 5;
  const uint32_t record = MakeLabelRecordWide(&size, 0x0102, 0x0304, 0x0506, OLESTR("A\x0142Z"));
  EXPECT_EQ(Made(record, size), "04 02 0B 00 02 01 04 03 06 05 03 00 41 42 5A ");
}

TEST_F(LabelRecordTest, WideBiff8_OptionByteInFrontOfTheText) {
  BiffVersion = 6;
  const uint32_t record = MakeLabelRecordWide(&size, 0x0102, 0x0304, 0x0506, OLESTR("A\x0142Z"));
  EXPECT_EQ(Made(record, size), "04 02 0C 00 02 01 04 03 06 05 03 00 00 41 42 5A ");
}

TEST_F(LabelRecordTest, NoGeneration_NoOptionByte) {
  BiffVersion = 0;
  const uint32_t record = MakeLabelRecordWide(&size, 1, 2, 3, OLESTR("A"));
  EXPECT_EQ(Made(record, size), "04 02 09 00 01 00 02 00 03 00 01 00 41 ");
  const uint32_t shell = AllocLabelRecord(100, 0, 0, 0);
  FillLabelRecord(Shell(shell), &size, 1, 2, 3, OLESTR("A"));
  EXPECT_EQ(size, 13u);
  EXPECT_EQ(Hex(BlockContents(shell, 13)), "04 02 09 00 01 00 02 00 03 00 01 00 41 ");
}

TEST_F(LabelRecordTest, WideEmpty) {
  BiffVersion = 6;
  const uint32_t record = MakeLabelRecordWide(&size, 1, 2, 3, OLESTR(""));
  EXPECT_EQ(Made(record, size), "04 02 09 00 01 00 02 00 03 00 00 00 00 ");
}

TEST_F(LabelRecordTest, WideNull_GivesNullAndAllocatesNothing) {
  EXPECT_EQ(MakeLabelRecordWide(&size, 0, 0, 0, nullptr), 0u);
  EXPECT_EQ(size, 0xDEADu);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(LabelRecordTest, WideTooLong_IsCutToTheLongestRecord) {
  BiffVersion = 6;
  const uint32_t record = MakeLabelRecordWide(&size, 0, 0, 0, Wide(40000, u'x').c_str());
  EXPECT_EQ(size, 32767u);
  EXPECT_EQ(U16At(OpenBlock(record), 2), 32763u);
  EXPECT_EQ(U16At(OpenBlock(record), 10), 32754u);
}

TEST_F(LabelRecordTest, PoolRefuses_TheSizeIsUntouched) {
  TakeAllSlotsBut({});
  EXPECT_EQ(MakeLabelRecord(&size, 0, 0, 0, "x"), 0u);
  EXPECT_EQ(MakeLabelRecordWide(&size, 0, 0, 0, OLESTR("x")), 0u);
  EXPECT_EQ(AllocLabelRecord(100, 0, 0, 0), 0u);
  EXPECT_EQ(size, 0xDEADu);
}

TEST_F(LabelRecordTest, Shell_HeaderCellAndNoText) {
  for (int32_t version : {5, 6}) {
    BiffVersion = version;
    uint32_t shell = AllocLabelRecord(100, 0x0102, 0x0304, 0x0506);
    EXPECT_EQ(MEMORYSIZE(shell), 100u);
    EXPECT_EQ(Hex(BlockContents(shell, 14)), "04 02 60 00 02 01 04 03 06 05 00 00 00 00 ");
    MEMORYFREE(&shell);
  }
}

TEST_F(LabelRecordTest, Shell_IsAtMost32767Bytes) {
  const uint32_t shell = AllocLabelRecord(40000, 0, 0, 0);
  EXPECT_EQ(MEMORYSIZE(shell), 32767u);
  EXPECT_EQ(U16At(OpenBlock(shell), 2), 32763u) << "the length is that of the clamped size";
  EXPECT_EQ(MEMORYSIZE(AllocLabelRecord(32767, 0, 0, 0)), 32767u);
  EXPECT_EQ(MEMORYSIZE(AllocLabelRecord(32766, 0, 0, 0)), 32766u);
}

TEST_F(LabelRecordTest, FillBiff5) {
  BiffVersion = 5;
  const uint32_t shell = AllocLabelRecord(32767, 9, 9, 9);
  FillLabelRecord(Shell(shell), &size, 0x0102, 0x0304, 0x0506, OLESTR("A\x0142Z"));
  EXPECT_EQ(size, 15u);
  EXPECT_EQ(Hex(BlockContents(shell, 15)), "04 02 0B 00 02 01 04 03 06 05 03 00 41 42 5A ");
}

TEST_F(LabelRecordTest, FillBiff8_TypeAndOptionByteStay) {
  BiffVersion = 6;
  const uint32_t shell = AllocLabelRecord(32767, 9, 9, 9);
  BlockBytes(shell)[0] = 0x77;
  BlockBytes(shell)[12] = 0x55;
  FillLabelRecord(Shell(shell), &size, 0x0102, 0x0304, 0x0506, OLESTR("AZ"));
  EXPECT_EQ(size, 15u);
  EXPECT_EQ(Hex(BlockContents(shell, 15)), "77 02 0B 00 02 01 04 03 06 05 02 00 55 41 5A ");
}

TEST_F(LabelRecordTest, FillNull_IsOneBlank_FillEmpty_IsNone) {
  BiffVersion = 5;
  const uint32_t shell = AllocLabelRecord(32767, 0, 0, 0);
  FillLabelRecord(Shell(shell), &size, 1, 2, 3, nullptr);
  EXPECT_EQ(size, 13u);
  EXPECT_EQ(Hex(BlockContents(shell, 13)), "04 02 09 00 01 00 02 00 03 00 01 00 20 ");
  FillLabelRecord(Shell(shell), &size, 1, 2, 3, OLESTR(""));
  EXPECT_EQ(size, 12u);
  EXPECT_EQ(Hex(BlockContents(shell, 12)), "04 02 08 00 01 00 02 00 03 00 00 00 ");
}

TEST_F(LabelRecordTest, FillTooLong_IsCutToTheShell) {
  BiffVersion = 6;
  const uint32_t shell = AllocLabelRecord(32767, 0, 0, 0);
  MEMORYSET1(&shell, 33000, 0xEE);
  FillLabelRecord(Shell(shell), &size, 1, 2, 3, Wide(40000, u'x').c_str());
  EXPECT_EQ(size, 32767u);
  EXPECT_EQ(U16At(OpenBlock(shell), 10), 32754u);
  EXPECT_EQ(U8At(OpenBlock(shell), 32766), 'x');
  EXPECT_EQ(U8At(OpenBlock(shell), 32767), 0xEE);
}

TEST_F(LabelRecordTest, FillExactlyTheShell_IsNotCut) {
  BiffVersion = 5;
  const uint32_t shell = AllocLabelRecord(32767, 0, 0, 0);
  FillLabelRecord(Shell(shell), &size, 1, 2, 3, Wide(32755, u'x').c_str());
  EXPECT_EQ(size, 32767u);
  EXPECT_EQ(U16At(OpenBlock(shell), 10), 32755u);
}

}  // namespace
}  // namespace tolvenar::testing
