// XLCreateEmptyBook and XLEmptyBookLocateSheets: the two books record by record, and every result.
#include "workbook/empty_book.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/biff_records.h"
#include "support/made_record.h"
#include "support/pool_fixture.h"
#include "workbook/default_records.h"
#include "workbook/table_entries.h"

namespace tolvenar::testing {
namespace {

using Types = std::vector<uint16_t>;
using testing::operator+;

class EmptyBookTest : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    BiffVersion = 0;
  }
  void TearDown() override {
    BiffVersion = 0;
    PoolTest::TearDown();
  }

  // Types of the records from `from` on, up to the size.
  Types RecordTypes() const {
    Types types;
    const Block block = OpenBlock(buffer);
    for (uint32_t at = 0; at < size; at = NextRecord(block, at)) types.push_back(U16At(block, at));
    return types;
  }

  uint32_t buffer = 0x1111;
  uint32_t table = 0x2222;
  uint32_t size = 0x3333;
};

Types Repeat(uint16_t type, size_t times) {
  return Types(times, type);
}

Types operator+(Types a, const Types& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST_F(EmptyBookTest, Biff5_AllButTheSelector8) {
  for (int32_t selector : {0, 5, 6, 7, 9, -8, 8 + 256}) {
    EXPECT_EQ(XLCreateEmptyBook(&buffer, &size, selector), 0);
    EXPECT_EQ(BiffVersion, 5) << selector;
    EXPECT_EQ(size, 1168u);
    EXPECT_EQ(Hex(BlockContents(buffer, 8)), "09 08 08 00 00 05 05 00 ");
    EXPECT_EQ(Hex(BlockContents(buffer, 1168)).substr(3 * 1164), "0A 00 00 00 ");
    MEMORYFREE(&buffer);
  }
}

TEST_F(EmptyBookTest, Biff8) {
  EXPECT_EQ(XLCreateEmptyBook(&buffer, &size, 8), 0);
  EXPECT_EQ(BiffVersion, 6);
  EXPECT_EQ(size, 1382u);
  EXPECT_EQ(Hex(BlockContents(buffer, 8)), "09 08 10 00 00 06 05 00 ");
  EXPECT_EQ(Hex(BlockContents(buffer, 1382)).substr(3 * 1378), "0A 00 00 00 ");
}

TEST_F(EmptyBookTest, Biff5_63RecordsInOrder) {
  XLCreateEmptyBook(&buffer, &size, 5);
  const Types expected = Types{0x0809, 0x00E1, 0x00C1, 0x00BF, 0x00A4, 0x00C0, 0x00E2, 0x005C, 0x0042, 0x009C,
                               0x0019, 0x0012, 0x0013, 0x003D, 0x0040, 0x008D, 0x0022, 0x000E, 0x00DA} +
                         Repeat(0x0031, 5) + Repeat(0x041E, 9) + Repeat(0x00E0, 22) + Repeat(0x0293, 6) +
                         Types{0x008C, 0x000A};
  EXPECT_EQ(RecordTypes(), expected);
  EXPECT_EQ(expected.size(), 63u);
}

TEST_F(EmptyBookTest, Biff8_65RecordsInOrder) {
  XLCreateEmptyBook(&buffer, &size, 8);
  const Types expected =
      Types{0x0809, 0x00E1, 0x00C1, 0x00E2, 0x005C, 0x0042, 0x0161, 0x013D, 0x009C, 0x0019, 0x0012,
            0x0013, 0x01AF, 0x01BC, 0x003D, 0x0040, 0x008D, 0x0022, 0x000E, 0x01B7, 0x00DA} +
      Repeat(0x0031, 4) + Repeat(0x041E, 9) + Repeat(0x00E0, 22) + Repeat(0x0293, 6) +
      Types{0x0160, 0x008C, 0x000A};
  EXPECT_EQ(RecordTypes(), expected);
  EXPECT_EQ(expected.size(), 65u);
}

TEST_F(EmptyBookTest, Biff8_InterfaceHdrAndItsPayloadMakeOneRecord) {
  XLCreateEmptyBook(&buffer, &size, 8);
  EXPECT_EQ(Hex(BlockContents(buffer, 32)).substr(3 * 20), "E1 00 02 00 B0 04 C1 00 02 00 00 00 ");
}

TEST_F(EmptyBookTest, Biff5_FirstRecordBehindTheBofStandsAt12) {
  XLCreateEmptyBook(&buffer, &size, 5);
  EXPECT_EQ(NextRecord(OpenBlock(buffer), 0), 12u);
}

TEST_F(EmptyBookTest, Biff5_FormatsByIndex) {
  XLCreateEmptyBook(&buffer, &size, 5);
  Types indices;
  const Block block = OpenBlock(buffer);
  for (uint32_t at = 0; at < size; at = NextRecord(block, at)) {
    if (U16At(block, at) == 0x041E) indices.push_back(U16At(block, at + 4));
  }
  EXPECT_EQ(indices, (Types{5, 6, 7, 8, 42, 41, 44, 43, 164}));
}

// Keys and last variants in the order of the book; those marked are BIFF5's alone.
struct Asked {
  int16_t key;
  uint32_t first;
  uint32_t last;
  bool biff5_only;
};
constexpr Asked kAsked[] = {{225, 0, 0, false}, {176, 0, 0, false}, {193, 0, 0, false}, {191, 0, 0, true},
                            {164, 0, 0, true},  {192, 0, 0, true},  {226, 0, 0, false}, {92, 0, 0, false},
                            {66, 0, 0, false},  {97, 0, 0, false},  {317, 0, 0, false}, {156, 0, 0, false},
                            {25, 0, 0, false},  {18, 0, 0, false},  {19, 0, 0, false},  {431, 0, 0, false},
                            {444, 0, 0, false}, {61, 0, 0, false},  {64, 0, 0, false},  {141, 0, 0, false},
                            {34, 0, 0, false},  {14, 0, 0, false},  {439, 0, 0, false}, {218, 0, 0, false},
                            {49, 0, 3, false},  {49, 4, 4, true},   {30, 0, 8, false},  {224, 0, 21, false},
                            {147, 0, 5, false}, {352, 0, 0, false}, {140, 0, 0, false}, {10, 0, 0, false}};

TEST_F(EmptyBookTest, EveryByteBehindTheBofIsTheFactorys) {
  for (int32_t selector : {5, 8}) {
    XLCreateEmptyBook(&buffer, &size, selector);
    const uint32_t first = selector == 8 ? 20 : 12;
    Bytes expected = BlockContents(buffer, first);
    for (const Asked& asked : kAsked) {
      if (asked.biff5_only && selector == 8) continue;
      for (uint32_t variant = asked.first; variant <= asked.last; ++variant) {
        uint32_t length = 0;
        uint32_t record = MakeDefaultRecord(&length, asked.key, variant);
        expected = expected + BlockContents(record, length);
        MEMORYFREE(&record);
      }
    }
    EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(expected));
    MEMORYFREE(&buffer);
  }
}

TEST_F(EmptyBookTest, NoBufEnd_ZerosUpToTheBytesAskedFor) {
  XLCreateEmptyBook(&buffer, &size, 8);
  EXPECT_EQ(MEMORYSIZE(buffer), 4096u);
  const Bytes rest = BlockContents(buffer, 4096);
  EXPECT_EQ(Bytes(rest.begin() + 1382, rest.end()), Bytes(4096 - 1382));
}

TEST_F(EmptyBookTest, TakesTheFourthSlot_OrALargerOne) {
  XLCreateEmptyBook(&buffer, &size, 5);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 4);
  EXPECT_EQ(LiveBlocks(), 1u);
  uint32_t second = 0;
  XLCreateEmptyBook(&second, &size, 8);
  EXPECT_EQ(MEMORYISHANDLE(second), 5);
}

TEST_F(EmptyBookTest, ResultMinus1_NoBlock_NothingChanges) {
  TakeAllSlotsBut({1, 2, 3});
  BiffVersion = 6;
  EXPECT_EQ(XLCreateEmptyBook(&buffer, &size, 5), -1);
  EXPECT_EQ(buffer, 0x1111u);
  EXPECT_EQ(size, 0x3333u);
  EXPECT_EQ(BiffVersion, 6);
  EXPECT_EQ(LiveBlocks(), 6u);
}

TEST_F(EmptyBookTest, LastFreeBlock_BookWithoutRecordsAndResultZero) {
  TakeAllSlotsBut({9});
  EXPECT_EQ(XLCreateEmptyBook(&buffer, &size, 5), 0);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 9);
}

TEST_F(EmptyBookTest, RecordsThatTheSmallSlotsCantHold_GoIntoLargerOnes) {
  TakeAllSlotsBut({8, 9});
  EXPECT_EQ(XLCreateEmptyBook(&buffer, &size, 8), 0);
  EXPECT_EQ(size, 1382u);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 8);
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(EmptyBookTest, NullOutVariables) {
  EXPECT_EQ(XLCreateEmptyBook(nullptr, nullptr, 5), 0);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(EmptyBookTest, Locate_FreshBook_EntryTwoIsTheSize) {
  XLCreateEmptyBook(&buffer, &size, 5);
  EXPECT_EQ(XLEmptyBookLocateSheets(buffer, &table, static_cast<int32_t>(size)), 0);
  EXPECT_EQ(TableEntries(table, 3), (std::vector<int32_t>{0, 0, 1168}));
  EXPECT_EQ(MEMORYSIZE(table), 12u);
  EXPECT_EQ(LiveBlocks(), 2u);
}

// The EOF of the BIFF5 book stands at 1164.
TEST_F(EmptyBookTest, Locate_EofIsLookedForBelowTheSizeLessOne) {
  XLCreateEmptyBook(&buffer, &size, 5);
  EXPECT_EQ(XLEmptyBookLocateSheets(buffer, &table, 1166), 0);
  EXPECT_EQ(TableEntries(table, 3), (std::vector<int32_t>{0, 0, 1168}));
  EXPECT_EQ(XLEmptyBookLocateSheets(buffer, &table, 1165), 9);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 0);
}

TEST_F(EmptyBookTest, Locate_WithSheets_AsXLLocateSheets) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Eof();
  buffer = book.Load(&size);
  EXPECT_EQ(XLEmptyBookLocateSheets(buffer, &table, static_cast<int32_t>(size)), 0);
  EXPECT_EQ(TableEntries(table, 4), (std::vector<int32_t>{1, 0, 39, 59}));
}

TEST_F(EmptyBookTest, Locate_Result1_NullBuffer) {
  EXPECT_EQ(XLEmptyBookLocateSheets(0, &table, 1168), 1);
  EXPECT_EQ(table, 0u);
}

TEST_F(EmptyBookTest, Locate_Result9_BufferIsReleased) {
  for (int32_t small : {1168, 1, 0, -5}) {
    buffer = MEMORYALLOC(4096);
    EXPECT_EQ(XLEmptyBookLocateSheets(buffer, &table, small), 9);
    EXPECT_EQ(table, 0u);
    EXPECT_NE(buffer, 0u);
    EXPECT_EQ(LiveBlocks(), 0u);
  }
}

TEST_F(EmptyBookTest, Locate_Result9_NoPoolBlock_IsTaken) {
  EXPECT_EQ(XLEmptyBookLocateSheets(0x12345678, &table, 1168), 9);
}

TEST_F(EmptyBookTest, Locate_Result11_BufferIsReleased) {
  XLCreateEmptyBook(&buffer, &size, 5);
  while (MEMORYALLOC(1) != 0) continue;
  EXPECT_EQ(XLEmptyBookLocateSheets(buffer, &table, static_cast<int32_t>(size)), 11);
  EXPECT_EQ(table, 0u);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 0);
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(EmptyBookTest, Locate_Result12_BufferAndTableAreReleased) {
  buffer = StreamBuilder().Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Load(&size);
  EXPECT_EQ(XLEmptyBookLocateSheets(buffer, &table, static_cast<int32_t>(size)), 12);
  EXPECT_EQ(table, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

}  // namespace
}  // namespace tolvenar::testing
