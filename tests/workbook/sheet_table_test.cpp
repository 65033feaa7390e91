// XLLocateSheets: the table it makes, each result with what it releases, and streams that lead nowhere.
#include "workbook/sheet_table.h"

#include <gtest/gtest.h>

#include "foundation/memory_pool.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/table_entries.h"
#include "workbook/two_sheets.h"

namespace tolvenar::testing {
namespace {

using Entries = std::vector<int32_t>;

class SheetTableTest : public PoolTest {
 protected:
  // Loads the stream and locates its sheets.
  int16_t Locate(const StreamBuilder& stream) {
    buffer = stream.Load(&size);
    return XLLocateSheets(buffer, &table, size);
  }

  uint32_t buffer = 0;
  uint32_t table = 0xDEAD;
  uint32_t size = 0;
};

TEST_F(SheetTableTest, TwoSheets_TableHoldsCountZeroBofsAndTheLastEof) {
  EXPECT_EQ(Locate(TwoSheets::Builder()), 0);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 136, 180}));
  EXPECT_EQ(MEMORYSIZE(table), 20u);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SheetTableTest, BufferIsOnlyRead) {
  const Bytes before = TwoSheets::Builder().Stream();
  Locate(TwoSheets::Builder());
  EXPECT_EQ(BlockContents(buffer, TwoSheets::kSize), before);
}

TEST_F(SheetTableTest, NestedBofInTheLastSheet_ItsEofDoesNotCloseTheSheet) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Bof(6, kChart).Bof(6, kChart).Eof().Eof();
  const uint32_t closing = book.Here();
  EXPECT_EQ(Locate(book.Eof()), 0);
  EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 39, static_cast<int32_t>(closing)}));
}

TEST_F(SheetTableTest, NoBoundSheet_EntryTwoIsTheFirstEof) {
  EXPECT_EQ(Locate(StreamBuilder().Bof(6).Record(0x0042, U16(1200)).Eof()), 0);
  EXPECT_EQ(TableEntries(table, 3), (Entries{0, 0, 26}));
  EXPECT_EQ(MEMORYSIZE(table), 12u);
}

TEST_F(SheetTableTest, EmptyGlobals_BofAndEofOnly) {
  EXPECT_EQ(Locate(StreamBuilder().Bof(6).Eof()), 0);
  EXPECT_EQ(TableEntries(table, 3), (Entries{0, 0, 20}));
}

TEST_F(SheetTableTest, BoundSheetIsFoundByItsLowByte_WhateverTheHighByteButTheChartBit) {
  StreamBuilder book;
  book.Bof(6).Record(0x0285, U32(41)).Record(0x1085, U32(99)).Record(0xEF85, U32(41)).Eof();
  while (book.Here() < 41) book.Raw({0});
  EXPECT_EQ(Locate(book.Raw(StreamBuilder().Bof(6, kWorksheet).Eof().Stream())), 12);
  book = StreamBuilder().Bof(6).Record(0x0285, U32(48)).Record(0x1085, U32(99)).Record(0xEF85, U32(48)).Eof();
  EXPECT_EQ(Locate(book.Bof(6, kWorksheet).Eof()), 0);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 48, 48, 68}));
}

TEST_F(SheetTableTest, ChartEofAndChartBofAreNoEofAndBof) {
  StreamBuilder book;
  book.Bof(6).Record(0x100A).Sheet("One").Eof();
  book.Bof(6, kWorksheet).Record(0x1009, Bytes(4)).Record(0x100A).Eof();
  EXPECT_EQ(Locate(book), 0);
  EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 43, 75}));
}

TEST_F(SheetTableTest, BoundSheetBehindTheGlobalsIsNotCounted) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Record(0x0085, U32(7)).Eof();
  EXPECT_EQ(Locate(book), 0);
  EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 39, 67}));
}

TEST_F(SheetTableTest, BoundSheetInAPatchArea_IsReadInWalkingOrder) {
  uint32_t handle = TwoSheets::Builder().Load(&size);
  StreamBuilder sheet;
  sheet.Record(0x0085, U32(TwoSheets::kOne) + Bytes(8));
  const Bytes record = sheet.Stream();
  ASSERT_EQ(PatchRecord(&handle, record.data(), TwoSheets::kBoundSheetTwo, 16, &size), 0);
  EXPECT_EQ(XLLocateSheets(handle, &table, size), 0);
  EXPECT_EQ(TableEntries(table, 6), (Entries{3, 0, 54, 54, 136, 180}));
}

TEST_F(SheetTableTest, SixtyOneSheetsFitTheFirstSlot_SixtyTwoTakeTheSecond) {
  for (int sheets : {61, 62}) {
    MEMORYFREEALL();
    const uint32_t small = MEMORYALLOC(1);
    StreamBuilder book;
    book.Bof(6);
    for (int i = 0; i < sheets; ++i) book.Record(0x0085, U32(0));
    uint32_t first = small;
    buffer = book.Eof().Load(&size);
    MEMORYFREE(&first);
    EXPECT_EQ(XLLocateSheets(buffer, &table, size), 0);
    EXPECT_EQ(MEMORYISHANDLE(table), sheets == 61 ? 1 : 2);
  }
}

TEST_F(SheetTableTest, CountIsKeptAsASigned16BitValue) {
  StreamBuilder book;
  book.Bof(6);
  for (int i = 0; i < 65537; ++i) book.Record(0x0085, U32(0));
  EXPECT_EQ(Locate(book.Eof()), 0);
  EXPECT_EQ(TableEntries(table, 2), (Entries{1, 0}));
  EXPECT_EQ(MEMORYSIZE(table), 16u);
}

TEST_F(SheetTableTest, CountBelow0_FindsNoRoomForItsLastEntries_AndNothingElseIsWritten) {
  StreamBuilder book;
  book.Bof(6);
  for (int i = 0; i < 32768; ++i) book.Record(0x0085, U32(7));
  const uint32_t beside = MEMORYALLOC(512);
  EXPECT_EQ(Locate(book.Eof()), 0);
  EXPECT_EQ(TableEntries(table, 4), (Entries{-32768, 0, 7, 7}));
  EXPECT_EQ(MEMORYISHANDLE(table), 1);
  EXPECT_EQ(BlockContents(beside, 512), Bytes(512));
}

TEST_F(SheetTableTest, NullTable_IsNotWritten) {
  buffer = TwoSheets::Builder().Load(&size);
  EXPECT_EQ(XLLocateSheets(buffer, nullptr, size), 0);
  EXPECT_EQ(LiveBlocks(), 1u);
}

// All results of XLLocateSheets.

TEST_F(SheetTableTest, Result1_NoLiveBlock_TableIsZeroed) {
  EXPECT_EQ(XLLocateSheets(0, &table, 100), 1);
  EXPECT_EQ(table, 0u);
  table = 0xDEAD;
  EXPECT_EQ(XLLocateSheets(0x1234, &table, 100), 1);
  EXPECT_EQ(table, 0u);
}

TEST_F(SheetTableTest, Result1_PointerIntoABlock) {
  buffer = TwoSheets::Builder().Load(&size);
  EXPECT_EQ(XLLocateSheets(buffer + 4, &table, size - 4), 1);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(SheetTableTest, Result9_NoEof_BufferIsReleasedAndTheCallersVariableStands) {
  EXPECT_EQ(Locate(StreamBuilder().Bof(6).Sheet("One")), 9);
  EXPECT_EQ(table, 0u);
  EXPECT_NE(buffer, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(SheetTableTest, Result9_SizeWithoutARecord) {
  for (uint32_t short_size : {0u, 1u}) {
    buffer = TwoSheets::Builder().Load(&size);
    EXPECT_EQ(XLLocateSheets(buffer, &table, short_size), 9) << short_size;
    EXPECT_EQ(LiveBlocks(), 0u);
  }
}

TEST_F(SheetTableTest, Result9_LimitThatIsNegative) {
  for (uint32_t large_size : {0x80000001u, 0xFFFFFFFFu}) {
    buffer = TwoSheets::Builder().Load(&size);
    EXPECT_EQ(XLLocateSheets(buffer, &table, large_size), 9) << large_size;
    EXPECT_EQ(LiveBlocks(), 0u);
  }
  buffer = TwoSheets::Builder().Load(&size);
  EXPECT_EQ(XLLocateSheets(buffer, &table, 0x80000000u), 0);
}

TEST_F(SheetTableTest, Result9_EofAtTheLimitIsNotSeen) {
  buffer = StreamBuilder().Bof(6).Eof().Load(&size);
  EXPECT_EQ(XLLocateSheets(buffer, &table, 21), 9);  // the limit is 20, where the EOF stands
  buffer = StreamBuilder().Bof(6).Eof().Load(&size);
  EXPECT_EQ(XLLocateSheets(buffer, &table, 22), 0);
}

TEST_F(SheetTableTest, Result11_NoBlockForTheTable_BufferIsReleased) {
  buffer = TwoSheets::Builder().Load(&size);
  while (MEMORYALLOC(1) != 0) continue;
  EXPECT_EQ(XLLocateSheets(buffer, &table, size), 11);
  EXPECT_EQ(table, 0u);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 0);
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(SheetTableTest, Result12_LastSheetIsNotClosed_BufferAndTableAreReleased) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Number(0, 0, 15, 1.5);
  EXPECT_EQ(Locate(book), 12);
  EXPECT_EQ(table, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(SheetTableTest, Result12_NestedSubstreamTakesTheOnlyEof) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Bof(6, kChart).Eof();
  EXPECT_EQ(Locate(book), 12);
}

TEST_F(SheetTableTest, Result12_BofOffsetOutsideTheBlock) {
  for (uint32_t offset : {0x00000400u, 0x06422C40u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF0u}) {
    StreamBuilder book;
    book.Bof(6).Record(0x0085, U32(offset)).Eof().Bof(6, kWorksheet).Eof();
    const int16_t result = Locate(book);
    EXPECT_EQ(result, 12) << offset;
    EXPECT_EQ(LiveBlocks(), 0u);
  }
}

TEST_F(SheetTableTest, Exhaustion_EachNumberOfBlocksTaken) {
  for (int taken = 0; taken <= 8; ++taken) {
    MEMORYFREEALL();
    buffer = TwoSheets::Builder().Load(&size);
    for (int i = 0; i < taken; ++i) MEMORYALLOC(1);
    const bool fits = taken < 8;
    EXPECT_EQ(XLLocateSheets(buffer, &table, size), fits ? 0 : 11) << taken;
    EXPECT_EQ(LiveBlocks(), static_cast<uint32_t>(fits ? taken + 2 : taken));
  }
}

// Streams that go in circles.

TEST_F(SheetTableTest, DetourRings_EndAtTheLimit) {
  EXPECT_EQ(Locate(StreamBuilder().Detour(0).Eof()), 9) << "names itself";
  EXPECT_EQ(Locate(StreamBuilder().Detour(8).Detour(0).Eof()), 9) << "ring of two";
  EXPECT_EQ(Locate(StreamBuilder().Bof(6).Sheet("One").Detour(0).Eof()), 9) << "ring over records";
  EXPECT_EQ(Locate(StreamBuilder().Detour(0xFFFFFFF0).Eof()), 9) << "far";
}

TEST_F(SheetTableTest, DetourRingInTheLastSheet_IsNotClosed) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Detour(59).Eof();
  EXPECT_EQ(Locate(book), 12);
  EXPECT_EQ(LiveBlocks(), 0u);
}

// Extents.

TEST_F(SheetTableTest, ExtentOfSheet_EndsAtItsEof) {
  ASSERT_EQ(Locate(TwoSheets::Builder()), 0);
  const SheetExtent one = ExtentOfSheet(OpenBlock(table), 1);
  const SheetExtent two = ExtentOfSheet(OpenBlock(table), 2);
  EXPECT_EQ(one.begin, 54u);
  EXPECT_EQ(one.end, 132u);
  EXPECT_EQ(two.begin, 136u);
  EXPECT_EQ(two.end, 180u);
  EXPECT_EQ(GlobalsEnd(OpenBlock(table)), 50u);
}

}  // namespace
}  // namespace tolvenar::testing
