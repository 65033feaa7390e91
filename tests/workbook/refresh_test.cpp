// XLRefreshHandles and XLDeleteDBCells.
#include "workbook/refresh.h"

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

const Bytes kBufEnd = {0xF8, 0xFE, 0x00, 0x00};

class RefreshTest : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    buffer = TwoSheets::Builder().Load(&size);
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  }

  void Patch(uint32_t at, const Bytes& bytes) {
    ASSERT_EQ(PatchRecord(&buffer, bytes.data(), at, static_cast<uint32_t>(bytes.size()), &size), 0);
  }

  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
};

TEST_F(RefreshTest, BufferWithoutPatches_ContentsAndTableStayAsTheyWere) {
  const uint32_t before = buffer;
  EXPECT_EQ(XLRefreshHandles(&buffer, table, &size), 0);
  EXPECT_NE(buffer, before);
  EXPECT_EQ(MEMORYISHANDLE(before), 0);
  EXPECT_EQ(size, 188u);
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(TwoSheets::Builder().Stream() + kBufEnd));
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 136, 180}));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(RefreshTest, DetourInTheGlobals_AllOffsetsFollow) {
  const Bytes note = StreamBuilder().Record(0x0042, U16(1200)).Stream();
  Patch(TwoSheets::kBoundSheetOne, note);
  EXPECT_EQ(XLRefreshHandles(&buffer, table, &size), 0);
  EXPECT_EQ(size, 194u);
  StreamBuilder expected;
  expected.Bof(6).Record(0x0042, U16(1200)).Sheet("One").Sheet("Two").Eof();
  expected.Bof(6, kWorksheet).Record(0x020B, Bytes(16)).Number(0, 0, 15, 1.5).Record(0x00D7, Bytes(16)).Eof();
  expected.Bof(6, kWorksheet).Bof(6, kChart).Eof().Eof();
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(expected.Stream() + kBufEnd));
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 60, 142, 186}));
}

TEST_F(RefreshTest, TableAgreesWithOneLocatedAnew) {
  Patch(TwoSheets::kNumber, StreamBuilder().Label(0, 1, 15, "text").Stream());
  Patch(TwoSheets::kBoundSheetTwo, StreamBuilder().Record(0x0042, U16(1252)).Stream());
  ASSERT_EQ(XLRefreshHandles(&buffer, table, &size), 0);
  uint32_t anew = 0;
  ASSERT_EQ(XLLocateSheets(buffer, &anew, size), 0);
  EXPECT_EQ(TableEntries(table, 5), TableEntries(anew, 5));
}

TEST_F(RefreshTest, TwiceIsAsOnce) {
  Patch(TwoSheets::kNumber, StreamBuilder().Label(0, 1, 15, "text").Stream());
  ASSERT_EQ(XLRefreshHandles(&buffer, table, &size), 0);
  const Bytes once = BlockContents(buffer, size);
  ASSERT_EQ(XLRefreshHandles(&buffer, table, &size), 0);
  EXPECT_EQ(BlockContents(buffer, size), once);
}

TEST_F(RefreshTest, RecordOf32768BytesOrMore_IsCountedAsNegative) {
  MEMORYFREEALL();
  StreamBuilder book;
  book.Bof(6).Eof().Number(1, 2, 15, 1.5).Record(0x0042, Bytes(0xFFFC, 0x11));  // -4 + 4: nothing is copied
  buffer = book.Load(&size);
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  EXPECT_EQ(XLRefreshHandles(&buffer, table, &size), 0);
  EXPECT_EQ(Hex(BlockContents(buffer, size)),
            Hex(StreamBuilder().Bof(6).Eof().Number(1, 2, 15, 1.5).Stream() + kBufEnd));
}

TEST_F(RefreshTest, BetweenTheTwoLargestSlots) {
  MEMORYFREEALL();
  StreamBuilder book = TwoSheets::Builder();
  buffer = MEMORYALLOC(1500001);
  ASSERT_EQ(MEMORYISHANDLE(buffer), 8);
  const Bytes stream = book.Stream() + kBufEnd;
  CopyIn(OpenBlock(buffer), 0, stream.data(), static_cast<uint32_t>(stream.size()));
  size = 1500001;
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  EXPECT_EQ(XLRefreshHandles(&buffer, table, &size), 0);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 9);
  EXPECT_EQ(size, 188u);
}

// All results of XLRefreshHandles.

TEST_F(RefreshTest, Result2_NoBuffer) {
  uint32_t none = 0;
  EXPECT_EQ(XLRefreshHandles(&none, 0, &size), 2);
  EXPECT_EQ(XLRefreshHandles(nullptr, table, &size), 2);
  none = 0x1234;
  EXPECT_EQ(XLRefreshHandles(&none, table, &size), 2);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(RefreshTest, Result3_NoTable) {
  const uint32_t before = buffer;
  EXPECT_EQ(XLRefreshHandles(&buffer, 0, &size), 3);
  EXPECT_EQ(XLRefreshHandles(&buffer, 0x1234, &size), 3);
  EXPECT_EQ(buffer, before);
  EXPECT_EQ(size, 188u);
}

TEST_F(RefreshTest, Result4_Exhaustion_EachNumberOfBlocksTaken) {
  for (int taken = 0; taken <= 7; ++taken) {
    const bool fits = taken < 7;
    const uint32_t before = buffer;
    EXPECT_EQ(XLRefreshHandles(&buffer, table, &size), fits ? 0 : 4) << taken;
    EXPECT_EQ(buffer == before, !fits);
    EXPECT_EQ(LiveBlocks(), static_cast<uint32_t>(2 + taken));
    MEMORYALLOC(1);
  }
}

TEST_F(RefreshTest, Result12_BufferUnchanged_TableOverwritten) {
  MarkRecordSlack(OpenBlock(buffer), TwoSheets::kIndex);
  MarkRecordSlack(OpenBlock(buffer), TwoSheets::kTwoEof);
  const uint32_t handle = buffer;
  const Bytes before = BlockContents(buffer, size);
  EXPECT_EQ(XLRefreshHandles(&buffer, table, &size), 12);
  EXPECT_EQ(buffer, handle);
  EXPECT_EQ(size, 188u);
  EXPECT_EQ(BlockContents(buffer, size), before);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 116, 180}));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(RefreshTest, Result6_BufferUnchanged) {
  MEMORYFREEALL();
  buffer = StreamBuilder().Bof(6).Eof().Raw({0x42, 0x00, 0xFF, 0x7F}).Load(&size);
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  const uint32_t handle = buffer;
  EXPECT_EQ(XLRefreshHandles(&buffer, table, &size), 6);
  EXPECT_EQ(buffer, handle);
  EXPECT_EQ(size, 32u);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(RefreshTest, NullSize_CountsAsZero) {
  EXPECT_EQ(XLRefreshHandles(&buffer, table, nullptr), 12);
  EXPECT_EQ(LiveBlocks(), 2u);
}

// XLDeleteDBCells.

TEST_F(RefreshTest, DeleteDBCells_IndexAndDbCellBecomeSlack_TheirBytesStay) {
  Bytes expected = BlockContents(buffer, size);
  expected[TwoSheets::kIndex] = expected[TwoSheets::kDbCell] = 0xFD;
  expected[TwoSheets::kIndex + 1] = expected[TwoSheets::kDbCell + 1] = 0xFE;
  EXPECT_EQ(XLDeleteDBCells(buffer, size), 0);
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(expected));
}

TEST_F(RefreshTest, DeleteDBCells_AnyTypeWithTheLowByteGoes_TheChartRecordsStay) {
  MEMORYFREEALL();
  StreamBuilder book;
  book.Bof(6).Record(0x000B).Record(0x200B).Record(0xEFD7).Record(0x100B).Record(0x10D7).Record(0xFE0B).Eof();
  buffer = book.Load(&size);
  EXPECT_EQ(XLDeleteDBCells(buffer, size), 0);
  StreamBuilder expected;
  expected.Bof(6).Slack(0).Slack(0).Slack(0).Record(0x100B).Record(0x10D7).Record(0xFE0B).Eof();
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(expected.Stream() + kBufEnd));
}

TEST_F(RefreshTest, DeleteDBCells_ReachesPatchAreas) {
  Patch(TwoSheets::kNumber, StreamBuilder().Record(0x00D7, Bytes(4)).Stream());
  EXPECT_EQ(XLDeleteDBCells(buffer, size), 0);
  EXPECT_TRUE(IsPrivate(OpenBlock(buffer), 188, kLowSlack));
}

TEST_F(RefreshTest, DeleteDBCells_StopsAtTheBufEnd) {
  MEMORYFREEALL();
  buffer = StreamBuilder().Record(0x00D7).BufEnd().Record(0x00D7).BufEnd().Load(&size);
  EXPECT_EQ(XLDeleteDBCells(buffer, size), 0);
  const StreamBuilder expected = StreamBuilder().Slack(0).BufEnd().Record(0x00D7).BufEnd();
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(expected.Stream()));
}

TEST_F(RefreshTest, DeleteDBCells_RecordAtTheLimitIsNotSeen) {
  EXPECT_EQ(XLDeleteDBCells(buffer, TwoSheets::kIndex + 1), 0);
  EXPECT_EQ(U8At(OpenBlock(buffer), TwoSheets::kIndex), 0x0B);
  EXPECT_EQ(XLDeleteDBCells(buffer, TwoSheets::kIndex + 2), 0);
  EXPECT_EQ(U8At(OpenBlock(buffer), TwoSheets::kIndex), 0xFD);
}

TEST_F(RefreshTest, DeleteDBCells_SizeOf2_IsTheFirstThatIsWalked) {
  const uint32_t index = StreamBuilder().Record(0x020B, Bytes(2)).Load(&size);
  for (const uint32_t none : {0u, 1u, 0x80000001u}) {  // less 1, as a signed number, they are below 1
    EXPECT_EQ(XLDeleteDBCells(index, none), 0);
    EXPECT_EQ(BlockContents(index, 2), (Bytes{0x0B, 0x02})) << none;
  }
  EXPECT_EQ(XLDeleteDBCells(index, 2), 0);
  EXPECT_EQ(BlockContents(index, 2), (Bytes{0xFD, 0xFE}));
}

TEST_F(RefreshTest, DeleteDBCells_Results) {
  EXPECT_EQ(XLDeleteDBCells(0, size), 1);
  EXPECT_EQ(XLDeleteDBCells(0, 0), 1);
  EXPECT_EQ(XLDeleteDBCells(buffer, 0), 0);
  EXPECT_EQ(XLDeleteDBCells(buffer, 1), 0);
  EXPECT_EQ(XLDeleteDBCells(0x1234, 100), 0);
}

TEST_F(RefreshTest, DeleteDBCells_Rings_End) {
  for (const StreamBuilder& ring :
       {StreamBuilder().Detour(0), StreamBuilder().Detour(8).Detour(0),
        StreamBuilder().Record(0x00D7).Detour(0), StreamBuilder().Detour(0xFFFFFFF0)}) {
    MEMORYFREEALL();
    buffer = ring.Load(&size);
    EXPECT_EQ(XLDeleteDBCells(buffer, size), 0);
  }
}

TEST_F(RefreshTest, DeletedDBCells_AreGoneAfterTheRefresh) {
  XLDeleteDBCells(buffer, size);
  ASSERT_EQ(XLRefreshHandles(&buffer, table, &size), 0);
  EXPECT_EQ(size, 148u);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 96, 140}));
}

}  // namespace
}  // namespace tolvenar::testing
