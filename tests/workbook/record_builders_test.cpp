// The small record builders, each byte in both generations, and what they do when the pool refuses.
#include "workbook/record_builders.h"

#include <gtest/gtest.h>

#include "support/made_record.h"
#include "support/pool_fixture.h"

namespace tolvenar::testing {
namespace {

class RecordBuildersTest : public PoolTest {
 protected:
  void TearDown() override {
    BiffVersion = 0;
    PoolTest::TearDown();
  }
  uint32_t size = 0xDEAD;
};

TEST_F(RecordBuildersTest, DefaultRowHeight) {
  const uint32_t record = MakeDefaultRowHeightRecord(&size, 0x1234);
  EXPECT_EQ(Made(record, size), "25 02 04 00 00 00 34 12 ");
}

TEST_F(RecordBuildersTest, DefColWidth) {
  const uint32_t record = MakeDefColWidthRecord(&size, 0x1234);
  EXPECT_EQ(Made(record, size), "55 00 02 00 34 12 ");
}

TEST_F(RecordBuildersTest, DimensionsBiff5_FourFieldsAndSixZeroBytes) {
  BiffVersion = 5;
  const uint32_t record = MakeDimensionsRecord(&size, 0x0102, 0x0304, 0x0506, 0x0708);
  EXPECT_EQ(Made(record, size), "00 02 0E 00 02 01 05 03 06 05 09 07 00 00 00 00 00 00 ");
}

TEST_F(RecordBuildersTest, DimensionsBiff8_RowsInTheLowHalves) {
  BiffVersion = 6;
  const uint32_t record = MakeDimensionsRecord(&size, 0x0102, 0x0304, 0x0506, 0x0708);
  EXPECT_EQ(Made(record, size), "00 02 0E 00 02 01 00 00 05 03 00 00 06 05 09 07 00 00 ");
}

TEST_F(RecordBuildersTest, Dimensions_LastRow65535_StoresZero) {
  BiffVersion = 6;
  const uint32_t record = MakeDimensionsRecord(&size, 0, 65535, 0, 0x1FFFF);
  EXPECT_EQ(Made(record, size), "00 02 0E 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ");
}

TEST_F(RecordBuildersTest, Dimensions_NoGeneration_HeaderOnly_ItsTwinTakesBiff5) {
  BiffVersion = 0;
  const uint32_t record = MakeDimensionsRecord(&size, 1, 2, 3, 4);
  EXPECT_EQ(Made(record, size), "00 02 0E 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 ");
  const uint32_t twin = MakeStagedDimensionsRecord(&size, 1, 2, 3, 4);
  EXPECT_EQ(Made(twin, size), "00 02 0E 00 01 00 03 00 03 00 05 00 00 00 00 00 00 00 ");
}

TEST_F(RecordBuildersTest, StagedDimensions_TheSameInBothGenerations) {
  for (int32_t version : {5, 6}) {
    BiffVersion = version;
    const uint32_t record = MakeDimensionsRecord(&size, 1, 2, 3, 4);
    const std::string bytes = Made(record, size);
    const uint32_t twin = MakeStagedDimensionsRecord(&size, 1, 2, 3, 4);
    EXPECT_EQ(Made(twin, size), bytes);
  }
}

TEST_F(RecordBuildersTest, Number_IsRoundedToSinglePrecision) {
  const uint32_t record = MakeNumberRecord(&size, 0x0102, 0x0304, 0x0506, 0.1f);
  EXPECT_EQ(Made(record, size), "03 02 0E 00 02 01 04 03 06 05 00 00 00 A0 99 99 B9 3F ");
}

TEST_F(RecordBuildersTest, Blank) {
  const uint32_t record = MakeBlankRecord(&size, 0x0102, 0x0304, 0x0506);
  EXPECT_EQ(Made(record, size), "01 02 06 00 02 01 04 03 06 05 ");
}

TEST_F(RecordBuildersTest, BofBiff5) {
  BiffVersion = 5;
  const uint32_t record = MakeBofRecord(&size, 16);
  EXPECT_EQ(Made(record, size), "09 08 08 00 00 05 10 00 6C 09 C9 07 ");
}

TEST_F(RecordBuildersTest, BofBiff8) {
  BiffVersion = 6;
  const uint32_t record = MakeBofRecord(&size, 5);
  EXPECT_EQ(Made(record, size), "09 08 10 00 00 06 05 00 D3 10 CC 07 41 00 00 00 06 00 00 00 ");
}

TEST_F(RecordBuildersTest, BoundSheet_OneByteToSpareBehindTheName_BothGenerations) {
  for (int32_t version : {5, 6}) {
    BiffVersion = version;
    const uint32_t record = MakeBoundSheetRecord(&size, 0x01020304, "Ab");
    EXPECT_EQ(Made(record, size), "85 00 0A 00 04 03 02 01 00 00 02 41 62 00 ");
  }
}

TEST_F(RecordBuildersTest, BoundSheet_NullAndEmptyName) {
  const uint32_t null_name = MakeBoundSheetRecord(&size, 1, nullptr);
  EXPECT_EQ(Made(null_name, size), "85 00 08 00 01 00 00 00 00 00 00 00 ");
  const uint32_t empty_name = MakeBoundSheetRecord(&size, 1, "");
  EXPECT_EQ(Made(empty_name, size), "85 00 08 00 01 00 00 00 00 00 00 00 ");
}

TEST_F(RecordBuildersTest, BoundSheet_LongName_LengthByteIsTheLowByte) {
  uint32_t record = MakeBoundSheetRecord(&size, 1, std::string(300, 'x').c_str());
  EXPECT_EQ(size, 312u);
  EXPECT_EQ(Hex(BlockContents(record, 12)), "85 00 34 01 01 00 00 00 00 00 2C 78 ");
  EXPECT_EQ(U8At(OpenBlock(record), 310), 'x');
  EXPECT_EQ(U8At(OpenBlock(record), 311), 0);
}

TEST_F(RecordBuildersTest, BoundSheet_NameOfMoreThan16Bits_CountsInTheLow16) {
  const uint32_t record = MakeBoundSheetRecord(&size, 1, std::string(65536 + 2, 'x').c_str());
  EXPECT_EQ(Made(record, size), "85 00 0A 00 01 00 00 00 00 00 02 78 78 00 ");
}

TEST_F(RecordBuildersTest, BoundSheet_NameTooLongForTheRecord_IsCut) {
  const uint32_t record = MakeBoundSheetRecord(&size, 1, std::string(40000, 'x').c_str());
  EXPECT_EQ(size, 32767u);
  EXPECT_EQ(U16At(OpenBlock(record), 2), 32763u);
}

TEST_F(RecordBuildersTest, ColInfo_IsMadeAndLost) {
  EXPECT_EQ(MakeColInfoRecord(&size, 0x0102, 0x0304, 0x0506), 0u);
  EXPECT_EQ(size, 15u);
  EXPECT_EQ(LiveBlocks(), 1u);
  EXPECT_EQ(MEMORYISHANDLE(MEMORYALLOC(256)), 2) << "slot 1 stays taken";
}

TEST_F(RecordBuildersTest, ColInfo_Bytes) {
  uint32_t probe = MEMORYALLOC(0);  // the first slot's address, to look at what is lost
  const uint32_t slot = probe;
  MEMORYFREE(&probe);
  MakeColInfoRecord(&size, 0x0102, 0x0304, 0x0506);
  EXPECT_EQ(Hex(BlockContents(slot, 15)), "7D 00 0B 00 02 01 04 03 06 05 00 00 00 02 00 ");
}

TEST_F(RecordBuildersTest, Row_LastColumnPlusOneIsCutTo16Bits) {
  const uint32_t record = MakeRowRecord(&size, 0x0102, 0x0304, 0x10506, 0x0708);
  EXPECT_EQ(Made(record, size), "08 02 10 00 02 01 04 03 07 05 08 07 00 00 F3 00 40 01 1D 02 ");
}

TEST_F(RecordBuildersTest, FillNumber_HeaderUntouched) {
  uint32_t record = MakeNumberRecord(&size, 1, 2, 3, 4.0f);
  BlockBytes(record)[0] = 0x77;
  FillNumberRecord(BlockBytes(record), 0x0A0B, 0x0C0D, 0x0E0F, -2.5f);
  EXPECT_EQ(Made(record, size), "77 02 0E 00 0B 0A 0D 0C 0F 0E 00 00 00 00 00 00 04 C0 ");
}

TEST_F(RecordBuildersTest, FillBlank_HeaderUntouched) {
  uint32_t record = MakeBlankRecord(&size, 1, 2, 3);
  BlockBytes(record)[0] = 0x77;
  FillBlankRecord(BlockBytes(record), 0x0A0B, 0x0C0D, 0x0E0F);
  EXPECT_EQ(Made(record, size), "77 02 06 00 0B 0A 0D 0C 0F 0E ");
}

TEST_F(RecordBuildersTest, PoolRefuses_NullButTheSizeIsStored) {
  BiffVersion = 6;
  TakeAllSlotsBut({});
  const auto expect_refused = [&](uint32_t record, uint32_t expected) {
    EXPECT_EQ(record, 0u);
    EXPECT_EQ(size, expected);
    size = 0xDEAD;
  };
  expect_refused(MakeDefaultRowHeightRecord(&size, 1), 8);
  expect_refused(MakeDefColWidthRecord(&size, 1), 6);
  expect_refused(MakeDimensionsRecord(&size, 0, 1, 0, 1), 18);
  expect_refused(MakeNumberRecord(&size, 0, 0, 0, 1.0f), 18);
  expect_refused(MakeBlankRecord(&size, 0, 0, 0), 10);
  expect_refused(MakeBofRecord(&size, 5), 20);
  expect_refused(MakeBoundSheetRecord(&size, 0, "Abc"), 15);
  expect_refused(MakeColInfoRecord(&size, 0, 0, 0), 15);
  expect_refused(MakeRowRecord(&size, 0, 0, 0, 0), 20);
  EXPECT_EQ(LiveBlocks(), 9u);
}

}  // namespace
}  // namespace tolvenar::testing
