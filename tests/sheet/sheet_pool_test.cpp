// New sheets and the nine blocks of the pool: which slot each block takes, with k blocks taken by others, and
// what stays live after which failure.
#include "foundation/memory_pool.h"
#include "sheet/sheet_append.h"
#include "sheet/sheet_fixture.h"
#include "sheet/staged_sheet.h"
#include "sheet/variant_sheet.h"

namespace tolvenar::testing {
namespace {

class SheetPoolTest : public SheetTest {
 protected:
  // A fresh BIFF5 book in exactly that slot, all slots but the listed ones taken by others.
  void BookInSlot(int slot, std::initializer_list<int> free_slots) {
    uint32_t handles[kSlotCount];
    for (uint32_t& handle : handles) handle = MEMORYALLOC(1);
    MEMORYFREE(&handles[slot - 1]);
    BiffVersion = 5;
    // Without room for records the book comes out empty: it is filled from a copy.
    buffer = MEMORYALLOC(4096);
    ASSERT_EQ(MEMORYISHANDLE(buffer), slot);
    for (int other : free_slots) MEMORYFREE(&handles[other - 1]);
    const Bytes book = EmptyBook();
    size = static_cast<uint32_t>(book.size());
    CopyIn(OpenBlock(buffer), 0, book.data(), size);
    foreign = LiveBlocks() - 1;
  }

  static Bytes EmptyBook() {
    StreamBuilder book;
    book.Bof(5).Record(0x003D, Bytes(18)).Record(0x0042, Bytes(kFiller)).Eof();
    return book.Stream();
  }
  static constexpr uint32_t kFiller = 1150;  // too large a book for the three small slots
  static constexpr uint32_t kBookSize = 12 + 22 + 4 + kFiller + 4;
  static constexpr uint32_t kOpen = kBookSize + 16;  // where a sheet of a name of four characters begins

  uint32_t foreign = 0;
};

struct TakenBlocks {
  uint32_t taken;
  int book_slot;   // 0: the book can't be made
  int16_t result;  // of the append
  int final_slot;
};

// With k blocks taken the book lies in the first slot of 33000 bytes and more behind them, the new buffer in
// the next, the records in the first one free, the table and the refreshed buffer where the old one was and
// behind.
constexpr TakenBlocks kTakenBlocks[] = {{0, 4, 1, 4},  {1, 4, 1, 4}, {2, 4, 1, 4}, {3, 4, 1, 6},
                                        {4, 5, 1, 7},  {5, 6, 1, 8}, {6, 7, 1, 9}, {7, 8, -4, 8},
                                        {8, 9, -4, 9}, {9, 0, 0, 0}};

TEST_F(SheetPoolTest, EachNumberOfBlocksTaken) {
  for (const TakenBlocks& row : kTakenBlocks) {
    MEMORYFREEALL();
    for (uint32_t i = 0; i < row.taken; ++i) MEMORYALLOC(1);
    const int16_t made = XLCreateEmptyBook(&buffer, &size, 5);
    EXPECT_EQ(made, row.book_slot != 0 ? 0 : -1) << row.taken;
    if (made != 0) continue;
    EXPECT_EQ(MEMORYISHANDLE(buffer), row.book_slot) << row.taken;
    EXPECT_EQ(XLAppendSheet(&buffer, &size, "Data", 2, 2), row.result) << row.taken;
    EXPECT_EQ(MEMORYISHANDLE(buffer), row.final_slot) << row.taken;
    EXPECT_EQ(LiveBlocks(), row.taken + 1) << row.taken;
    if (row.result == 1) ExpectWholeWorkbook(1);
  }
}

TEST_F(SheetPoolTest, EachNumberOfBlocksTaken_FromArrays) {
  constexpr int16_t kResults[] = {1, 1, 1, 1, 1, -4, -4, -5, -5};
  for (uint32_t taken = 0; taken < std::size(kResults); ++taken) {
    MEMORYFREEALL();
    for (uint32_t i = 0; i < taken; ++i) MEMORYALLOC(1);
    ASSERT_EQ(XLCreateEmptyBook(&buffer, &size, 5), 0);
    EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 2, 2, nullptr, nullptr), kResults[taken])
        << taken;
    EXPECT_EQ(LiveBlocks(), taken + 1) << taken;
    EXPECT_NE(MEMORYISHANDLE(buffer), 0) << taken;
  }
}

// 64 cells take 256 and 1024 bytes, which fit the slots 1 and 3 to the byte; 65 cells do not. What is missing
// behind them is the new buffer.
TEST_F(SheetPoolTest, FromArrays_FourAndSixteenBytesACell) {
  BookInSlot(4, {1, 3});
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 64, 1, nullptr, nullptr), -4);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 65, 1, nullptr, nullptr), -5);
  MEMORYFREEALL();
  BookInSlot(4, {1, 2});
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 64, 1, nullptr, nullptr), -5);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 33, 1, nullptr, nullptr), -5);
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 32, 1, nullptr, nullptr), -4);
  EXPECT_EQ(size, kBookSize);
  EXPECT_EQ(LiveBlocks(), foreign + 1);
}

TEST_F(SheetPoolTest, EachNumberOfBlocksTaken_InStages) {
  // Three templates beside the buffer: with six taken one of them is missing, the buffer is released.
  for (uint32_t taken = 0; taken < 9; ++taken) {
    MEMORYFREEALL();
    for (uint32_t i = 0; i < taken; ++i) MEMORYALLOC(1);
    ASSERT_EQ(XLCreateEmptyBook(&buffer, &size, 5), 0);
    const int16_t spliced = AppendVariantSheet1(&buffer, &size, "Data");
    EXPECT_EQ(spliced, taken < 7 ? 1 : -2) << taken;
    EXPECT_EQ(LiveBlocks(), taken + 1) << taken;
    if (spliced < 0) continue;
    uint32_t position = 0;
    EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, 1, &position), 0) << taken;
    EXPECT_EQ(LiveBlocks(), taken + 1) << taken;
    const VARIANT value = {};
    const bool enough = taken < 6;
    EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 1, 1, &value, nullptr), enough ? 0 : -2);
    EXPECT_EQ(buffer != 0, enough) << taken;
    EXPECT_EQ(LiveBlocks(), enough ? taken + 1 : taken) << taken;
  }
}

TEST_F(SheetPoolTest, AppendVariantSheet1_NoBlock_SizeIsSetBufferStands) {
  BookInSlot(4, {1});
  const uint32_t before = buffer;
  EXPECT_EQ(AppendVariantSheet1(&buffer, &size, "Data"), -2);
  EXPECT_EQ(buffer, before);
  EXPECT_EQ(size, kBookSize + 16);
  EXPECT_EQ(LiveBlocks(), foreign + 1);
}

TEST_F(SheetPoolTest, BodyCantGrow_Minus5_NewBufferReleasedAndStillNamed) {
  BookInSlot(5, {1, 4});
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Data", 1, 2000), -5);
  EXPECT_NE(buffer, 0u);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 0) << "slot 4's block, released by the append that failed";
  EXPECT_EQ(size, kOpen);
  EXPECT_EQ(LiveBlocks(), foreign + 1) << "the old buffer";
}

TEST_F(SheetPoolTest, BodyCantGrow_OfAFullSheet) {
  BookInSlot(5, {1, 4});
  EXPECT_EQ(XLAppendFullSheet(&buffer, &size, "Data", 100, 30, nullptr), -5);
  EXPECT_EQ(LiveBlocks(), foreign + 1);
}

TEST_F(SheetPoolTest, NullValueBehindAGrowth_Minus5_TheMovedBlockIsLost) {
  BookInSlot(6, {1, 4, 5});
  std::vector<const VARIANT*> cells(4000, nullptr);
  VARIANT null_value = {};
  null_value.vt = VT_NULL;
  cells.back() = &null_value;
  EXPECT_EQ(XLAppendVariantSheet(&buffer, &size, "Data", 4000, 1, cells.data(), nullptr), -5);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 0) << "names slot 4, where the sheet began";
  EXPECT_EQ(LiveBlocks(), foreign + 2) << "the old buffer, and the new one in slot 5";
}

// The body ends so close to the slot's end that only the BUFEND does not fit any more.
TEST_F(SheetPoolTest, BufEndCantGrow_Minus2_BufferIsZero) {
  const uint32_t around = kHeadBiff5 + kDimensionsBytes + kTailBiff5;
  const uint32_t fixed = kBookSize + 12 + around;
  const uint32_t rows = (32998 - fixed) / kRowBytes - 1;
  const std::string name(32998 - fixed - rows * kRowBytes, 'x');
  BookInSlot(5, {1, 4});
  EXPECT_EQ(XLAppendSheet(&buffer, &size, name.c_str(), 1, static_cast<int16_t>(rows)), -2);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(size, 32998u);
  EXPECT_EQ(LiveBlocks(), foreign + 1) << "the old buffer";
}

TEST_F(SheetPoolTest, BufEndGrows_TheSheetIsWholeAllTheSame) {
  const uint32_t around = kHeadBiff5 + kDimensionsBytes + kTailBiff5;
  const uint32_t fixed = kBookSize + 12 + around;
  const uint32_t rows = (32998 - fixed) / kRowBytes - 1;
  const std::string name(32998 - fixed - rows * kRowBytes, 'x');
  for (const bool full : {false, true}) {
    MEMORYFREEALL();
    BookInSlot(5, {1, 4, 6, 7});
    const int16_t count = static_cast<int16_t>(rows);
    EXPECT_EQ(full ? XLAppendFullSheet(&buffer, &size, name.c_str(), 0, count, nullptr)
                   : XLAppendSheet(&buffer, &size, name.c_str(), 0, count),
              1);
    EXPECT_EQ(size, 32998u + 4);
    ExpectWholeWorkbook(1);
  }
}

TEST_F(SheetPoolTest, RefreshHasNoBlock_Minus7_TableReleased) {
  BookInSlot(4, {1, 5});
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Data", 1, 2000), -7);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 5);
  EXPECT_EQ(size, kOpen + kHeadBiff5 + kDimensionsBytes + 40000 + kTailBiff5);
  EXPECT_EQ(LiveBlocks(), foreign + 1) << "the new buffer";
}

// What the refresh would have replaced is still there to be seen.
TEST_F(SheetPoolTest, BufEndBehindTheSize_AFullSheetsHasNoHighByte) {
  const auto last = [this] { return Hex(BlockContents(buffer, size + 4)).substr(3 * size); };
  BookInSlot(4, {1, 5});
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Data", 1, 2000), -7);
  EXPECT_EQ(last(), "F8 FE 00 00 ");
  MEMORYFREEALL();
  BookInSlot(4, {1, 5});
  EXPECT_EQ(XLAppendFullSheet(&buffer, &size, "Data", 0, 2000, nullptr), -7);
  EXPECT_EQ(last(), "F8 00 00 00 ");
  MEMORYFREEALL();
  BookInSlot(4, {1, 5});
  EXPECT_EQ(XLAppendVariantSheet(&buffer, &size, "Data", 0, 2000, nullptr, nullptr), -7);
  EXPECT_EQ(last(), "F8 FE 00 00 ");
  MEMORYFREEALL();
  BookInSlot(4, {1, 2, 3, 5});
  EXPECT_EQ(XLAppendVariantSheetVB(&buffer, &size, "Data", 0, 2000, nullptr, nullptr), -7);
  EXPECT_EQ(last(), "F8 FE 00 00 ");
}

TEST_F(SheetPoolTest, LocateFails_Minus8_BufferIsZero) {
  StreamBuilder book;  // a BOUNDSHEET behind the first run leads nowhere
  book.Bof(5)
      .Record(0x0085, U32(0) + Bytes(8))
      .Record(0x0042, U16(1))
      .Record(0x0085, U32(0x7FFFFFF0) + Bytes(4));
  buffer = book.Eof().Load(&size);
  BiffVersion = 5;
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Data", 0, 0), -8);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

class StagedPoolTest : public SheetPoolTest {
 protected:
  // A buffer of 33000 bytes that can't grow, spliced, its end at `at`; the slots 1 to 3 are free.
  void FullBuffer(uint32_t at) {
    BookInSlot(5, {1, 2, 3, 4});
    ASSERT_EQ(AppendVariantSheet1(&buffer, &size, "Data"), 1);
    ASSERT_EQ(MEMORYISHANDLE(buffer), 4);
    MEMORYALLOC(50000);  // slot 5 again
    foreign = LiveBlocks() - 1;
    size = position = at;
  }

  void ExpectReleased() {
    EXPECT_EQ(buffer, 0u);
    EXPECT_EQ(LiveBlocks(), foreign);
  }

  uint32_t position = 0;
};

TEST_F(StagedPoolTest, Sheet1CantGrow) {
  FullBuffer(32990);
  EXPECT_EQ(CreateVariantSheet1(&buffer, &size, &position), -2);
  EXPECT_EQ(position, 32990u);
  ExpectReleased();
}

TEST_F(StagedPoolTest, Sheet1A_NoRoomForTheRows) {
  FullBuffer(kOpen);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, 2000, &position), -2);
  ExpectReleased();
}

TEST_F(StagedPoolTest, Sheet1A_HeadCantGrow) {
  FullBuffer(32900);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, 1, &position), -2);
  ExpectReleased();
}

// Without any block the head comes out empty without a word; the ROW's template is the first that counts.
TEST_F(StagedPoolTest, Sheet1A_RowTemplateIsMissing) {
  FullBuffer(kOpen);
  while (MEMORYALLOC(1) != 0) ++foreign;
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, 5, &position), -2);
  EXPECT_EQ(size, kOpen) << "nothing was reserved yet";
  EXPECT_EQ(position, kOpen);
  ExpectReleased();
}

TEST_F(StagedPoolTest, Sheet2_RowTemplateIsMissing) {
  FullBuffer(kOpen);
  while (MEMORYALLOC(1) != 0) ++foreign;
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 1, 5, nullptr, nullptr), -2);
  EXPECT_EQ(size, kOpen);
  ExpectReleased();
}

// The templates are asked for before the counts are looked at.
TEST_F(StagedPoolTest, TemplatesAreMissing_AlsoWhenThereIsNothingToWrite) {
  FullBuffer(kOpen);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 0, 0, nullptr, nullptr), -2);
  EXPECT_EQ(position, kOpen + kDimensionsBytes + kRowBytes);
  ExpectReleased();
  MEMORYFREEALL();
  FullBuffer(kOpen);
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 0, 0, nullptr, nullptr), -2);
  ExpectReleased();
}

TEST_F(StagedPoolTest, Sheet2_DimensionsCantGrow) {
  FullBuffer(32990);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 1, 1, nullptr, nullptr), -2);
  EXPECT_EQ(position, 32990u);
  ExpectReleased();
}

TEST_F(StagedPoolTest, Sheet2_ReservationCantBeHad) {
  FullBuffer(kOpen);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 1, 5000, nullptr, nullptr), -2);
  ExpectReleased();
}

TEST_F(StagedPoolTest, Sheet2_RowsDontFit) {
  FullBuffer(kOpen);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 1, 1700, nullptr, nullptr), -2);
  ExpectReleased();
}

TEST_F(StagedPoolTest, Sheet2_LabelShellIsMissing) {
  FullBuffer(kOpen);
  EXPECT_EQ(CreateVariantSheet2(&buffer, &size, &position, 1, 1, nullptr, nullptr), -2)
      << "no slot for 32767 bytes";
  ExpectReleased();
}

TEST_F(StagedPoolTest, Sheet2A_CellsCantGrow_TemplatesReleased) {
  TakeAllSlotsBut({1, 2, 3, 4, 5});
  NewBook(5);
  ASSERT_EQ(AppendVariantSheet1(&buffer, &size, "Data"), 1);
  ASSERT_EQ(MEMORYISHANDLE(buffer), 5);
  foreign = LiveBlocks() - 1;
  ASSERT_EQ(CreateVariantSheet1A(&buffer, &size, 1, 1, &position), 0);
  const uint32_t first = position;
  EXPECT_EQ(CreateVariantSheet2A(&buffer, &size, &position, 0, 0, 10, 1000, nullptr, nullptr), -2);
  EXPECT_EQ(position, first + (100000 - 1 - first) / 10 * 10);
  ExpectReleased();
}

TEST_F(StagedPoolTest, Sheet3CantGrow) {
  FullBuffer(32990);
  EXPECT_EQ(CreateVariantSheet3(&buffer, &size, &position), -2);
  EXPECT_EQ(size, 32990u);
  ExpectReleased();
}

TEST_F(StagedPoolTest, AppendSheet2_BufEndCantGrow_Minus2) {
  FullBuffer(32998);
  EXPECT_EQ(AppendVariantSheet2(&buffer, &size, 1), -2);
  ExpectReleased();
}

TEST_F(StagedPoolTest, AppendSheet2_NoSheetAtTheOffset_Minus8) {
  FullBuffer(kOpen);
  EXPECT_EQ(AppendVariantSheet2(&buffer, &size, 1), -8);
  ExpectReleased();
}

TEST_F(StagedPoolTest, AppendSheet2_NoBlockForTheRefresh_Minus7) {
  FullBuffer(kOpen);
  EXPECT_EQ(CreateVariantSheet1A(&buffer, &size, 1, 100, &position), 0);
  EXPECT_EQ(CreateVariantSheet3(&buffer, &size, &position), 0);
  EXPECT_EQ(AppendVariantSheet2(&buffer, &size, 1), -7);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 4);
  EXPECT_EQ(size, position) << "in front of the BUFEND";
  EXPECT_EQ(Hex(BlockContents(buffer, size + 4)).substr(3 * size), "F8 FE 00 00 ");
  EXPECT_EQ(LiveBlocks(), foreign + 1) << "the table is released";
}

}  // namespace
}  // namespace tolvenar::testing
