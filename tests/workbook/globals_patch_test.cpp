// PatchGlobals: a patch in front of the EOF of the globals takes the first sheet's BOF along, and table and BOUNDSHEET follow it.
#include "workbook/globals_patch.h"

#include <gtest/gtest.h>

#include "foundation/memory_pool.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/sheet_table.h"
#include "workbook/table_entries.h"
#include "workbook/two_sheets.h"

namespace tolvenar::testing {
namespace {

using Entries = std::vector<int32_t>;

class GlobalsPatchTest : public PoolTest {
 protected:
  void Load(const StreamBuilder& book) {
    buffer_ = book.Load(&size_);
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
  }

  int16_t Patch(uint32_t at) {
    return PatchGlobals(&buffer_, table_, &size_, kNote.data(), at, static_cast<uint32_t>(kNote.size()));
  }

  uint32_t Offset(uint32_t bound_sheet) const { return U32At(OpenBlock(buffer_), bound_sheet + 4); }

  const Bytes kNote = StreamBuilder().Record(0x0042, U16(1200)).Stream();
  uint32_t buffer_ = 0;
  uint32_t table_ = 0;
  uint32_t size_ = 0;
};

TEST_F(GlobalsPatchTest, RecordAsLongAsADetour_MovesNoSheet) {
  Load(TwoSheets::Builder());
  EXPECT_EQ(Patch(TwoSheets::kBoundSheetTwo), 0);
  EXPECT_EQ(TableEntries(table_, 5), (Entries{2, 0, 54, 136, 180}));
  EXPECT_EQ(Offset(TwoSheets::kBoundSheetOne), 54u);
  EXPECT_EQ(size_, 188u + 6 + 15 + 8);
}

TEST_F(GlobalsPatchTest, EofOfTheGlobals_TakesTheFirstBofAlong) {
  Load(TwoSheets::Builder());
  const Bytes before = WalkedStream(buffer_);
  EXPECT_EQ(Patch(TwoSheets::kGlobalsEof), 0);
  EXPECT_EQ(TableEntries(table_, 5), (Entries{2, 0, 198, 136, 180}));  // 188, the patch, the EOF
  EXPECT_EQ(U32At(OpenBlock(buffer_), 194), 0x0000000Au);
  EXPECT_EQ(Offset(TwoSheets::kBoundSheetOne), 198u);
  EXPECT_EQ(Offset(TwoSheets::kBoundSheetTwo), 136u);
  Bytes expected(before.begin(), before.begin() + 50);
  expected = expected + kNote + Bytes(before.begin() + 50, before.end());
  expected[TwoSheets::kBoundSheetOne + 4] = 198;
  EXPECT_EQ(Hex(WalkedStream(buffer_)), Hex(expected));
}

TEST_F(GlobalsPatchTest, EofOfTheGlobals_Twice) {
  Load(TwoSheets::Builder());
  EXPECT_EQ(Patch(TwoSheets::kGlobalsEof), 0);
  EXPECT_EQ(Patch(194), 0);  // where the EOF stands now
  EXPECT_EQ(TableEntries(table_, 5), (Entries{2, 0, 226 + 10, 136, 180}));
  EXPECT_EQ(Offset(TwoSheets::kBoundSheetOne), 236u);
  EXPECT_EQ(U32At(OpenBlock(buffer_), 232), 0x0000000Au);
}

TEST_F(GlobalsPatchTest, ShortRecordInFrontOfTheEof_EofAndBofMoveTogether) {
  for (const uint16_t length : std::initializer_list<uint16_t>{0, 2, 3}) {
    MEMORYFREEALL();
    StreamBuilder book = StreamBuilder().Bof(6).Sheet("One").Record(0x0042, Bytes(length));
    Load(book.Eof().Bof(6, kWorksheet).Number(0, 0, 15, 1.5).Eof());
    const uint32_t end = size_;
    EXPECT_EQ(Patch(35), 0);
    EXPECT_EQ(TableEntry(OpenBlock(table_), 2), end + 8) << length;  // behind an empty SLACK and the EOF
    EXPECT_EQ(U32At(OpenBlock(buffer_), end), 0x0000FEFDu);
    EXPECT_EQ(U32At(OpenBlock(buffer_), end + 4), 0x0000000Au);
    EXPECT_EQ(Offset(20), end + 8);
    Bytes expected = StreamBuilder().Bof(6).Sheet("One").Raw(kNote).Record(0x0042, Bytes(length)).Stream();
    WriteU32(expected.data() + 24, end + 8);
    expected = expected + StreamBuilder().Eof().Bof(6, kWorksheet).Number(0, 0, 15, 1.5).Eof().Stream();
    EXPECT_EQ(Hex(WalkedStream(buffer_)), Hex(expected));
  }
}

TEST_F(GlobalsPatchTest, RecordOf8BytesInFrontOfTheEof_LeavesTheEofWhereItIs) {
  Load(StreamBuilder().Bof(6).Sheet("One").Record(0x0042, Bytes(4)).Eof().Bof(6, kWorksheet).Eof());
  const uint32_t size = size_;
  EXPECT_EQ(Patch(35), 0);
  EXPECT_EQ(size_, size + 6 + 8 + 8);
  EXPECT_EQ(TableEntries(table_, 4), (Entries{1, 0, 47, 67}));
}

TEST_F(GlobalsPatchTest, ShortRecordInFrontOfAnother_TakesThatAlong) {
  Load(StreamBuilder().Bof(6).Sheet("One").Record(0x0042).Record(0x0043).Eof().Bof(6, kWorksheet).Eof());
  const uint32_t size = size_;
  EXPECT_EQ(Patch(35), 0);
  EXPECT_EQ(size_, size + 6 + 8 + 8);
  EXPECT_EQ(TableEntries(table_, 4), (Entries{1, 0, 47, 67}));
}

TEST_F(GlobalsPatchTest, NoSheets_TheEntryOfTheClosingEofFollowsIt) {
  Load(StreamBuilder().Bof(6).Record(0x0042, Bytes(4)).Eof());
  ASSERT_EQ(TableEntries(table_, 3), (Entries{0, 0, 28}));
  EXPECT_EQ(Patch(28), 0);
  EXPECT_EQ(TableEntries(table_, 3), (Entries{0, 0, 36 + 6}));
}

TEST_F(GlobalsPatchTest, AtABofOfItsOwn_TheEntryFollowsIt) {
  Load(TwoSheets::Builder());
  EXPECT_EQ(Patch(TwoSheets::kTwo), 0);
  EXPECT_EQ(TableEntries(table_, 5), (Entries{2, 0, 54, 194, 180}));
  EXPECT_EQ(Offset(TwoSheets::kBoundSheetTwo), 194u);
  EXPECT_EQ(Offset(TwoSheets::kBoundSheetOne), 54u);
}

TEST_F(GlobalsPatchTest, EntriesBehindTheTablesEnd_AreLeftAlone) {
  Load(TwoSheets::Builder());
  PutTableEntry(OpenBlock(table_), 5, 54);
  EXPECT_EQ(Patch(TwoSheets::kGlobalsEof), 0);
  EXPECT_EQ(TableEntries(table_, 6), (Entries{2, 0, 198, 136, 180, 54}));
}

TEST_F(GlobalsPatchTest, NegativeCount_HasOneEntryAtMost) {
  Load(TwoSheets::Builder());
  PutTableEntry(OpenBlock(table_), 0, 0xFFFF);
  PutTableEntry(OpenBlock(table_), 3, 54);
  EXPECT_EQ(Patch(TwoSheets::kGlobalsEof), 0);
  EXPECT_EQ(TableEntries(table_, 4), (Entries{0xFFFF, 0, 198, 54}));
}

TEST_F(GlobalsPatchTest, RoomInASlack_MovesNothing) {
  Load(StreamBuilder().Bof(6).Sheet("One").Slack(8).Eof().Bof(6, kWorksheet).Eof());
  PutTableEntry(OpenBlock(table_), 3, 35);  // leads to the SLACK, as if that were what is moved
  const uint32_t size = size_;
  EXPECT_EQ(Patch(35), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(TableEntries(table_, 4), (Entries{1, 0, 51, 35}));
}

// The buffer has a slot of 256 bytes, and all others are taken.

TEST_F(GlobalsPatchTest, NoLargerBlock_Is2AndTheTableStays) {
  Load(TwoSheets::Builder());
  while (MEMORYALLOC(1) != 0) continue;
  size_ = 250;
  EXPECT_EQ(Patch(TwoSheets::kGlobalsEof), 2);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(TableEntries(table_, 5), (Entries{2, 0, 54, 136, 180}));
}

TEST_F(GlobalsPatchTest, NoLargerBlockForThePatchAtTheEof_Is2) {
  Load(StreamBuilder().Bof(6).Sheet("One").Record(0x0042).Eof().Bof(6, kWorksheet).Eof());
  while (MEMORYALLOC(1) != 0) continue;
  size_ = 230;
  EXPECT_EQ(Patch(35), 2);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(TableEntry(OpenBlock(table_), 2), 43u);
}

TEST_F(GlobalsPatchTest, NoLargerBlockForTheRecord_Is2) {
  Load(StreamBuilder().Bof(6).Sheet("One").Record(0x0042).Eof().Bof(6, kWorksheet).Eof());
  while (MEMORYALLOC(1) != 0) continue;
  size_ = 200;
  EXPECT_EQ(Patch(35), 2);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(TableEntry(OpenBlock(table_), 2), 208u);
}

}  // namespace
}  // namespace tolvenar::testing
