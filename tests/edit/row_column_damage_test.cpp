// Rows and columns without memory, in rings and on damaged streams: results as stated, every call ends,
// nothing outside the block.
#include "edit/row_column_size_change.h"
#include "row_column_fixture.h"
#include "support/formula_builder.h"

namespace tolvenar {
namespace {

using namespace testing;
using namespace testing::formula;

// The changes of sizes, called as the other operations are.
int16_t ChangeHeight(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t row) {
  return XLChangeRowHeight(buffer, table, size, sheet, row, 300);
}
int16_t ChangeWidth(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t column) {
  return XLChangeColWidth(buffer, table, size, sheet, column, 777);
}
constexpr NamedEdit kSizeChanges[] = {{"XLChangeRowHeight", ChangeHeight}, {"XLChangeColWidth", ChangeWidth}};

class RowColumnFaults : public RowColumnTest {
 protected:
  // Takes blocks until `free` are left.
  static void LeaveFree(uint32_t free) {
    while (LiveBlocks() < 9 - free && MEMORYALLOC(1) != 0) {
    }
  }
  // Runs all six and the changes of sizes at some positions, each on a fresh copy of the stream; they need only
  // end and leave the others' blocks alone.
  static void SweepStream(const Bytes& stream, const Bytes& table) {
    for (int16_t position : {int16_t{0}, int16_t{1}, int16_t{3}, int16_t{9}}) {
      for (const NamedEdit& edit : kAllEdits) RunOnCopy(stream, table, edit, position);
      for (const NamedEdit& edit : kSizeChanges) RunOnCopy(stream, table, edit, position);
    }
  }

 private:
  static uint32_t CopyOf(const Bytes& bytes) {
    const uint32_t block = MEMORYALLOC(static_cast<int32_t>(bytes.size()));
    CopyIn(OpenBlock(block), 0, bytes.data(), static_cast<uint32_t>(bytes.size()));
    return block;
  }

  static void RunOnCopy(const Bytes& stream, const Bytes& table, const NamedEdit& edit, int16_t position) {
    const Bytes others(300, 0x5A);
    uint32_t size = static_cast<uint32_t>(stream.size());
    uint32_t blocks[] = {CopyOf(stream), CopyOf(table), CopyOf(others)};
    edit.call(&blocks[0], blocks[1], &size, 1, position);
    EXPECT_EQ(BlockContents(blocks[1], static_cast<uint32_t>(table.size())), table) << edit.name;
    EXPECT_EQ(BlockContents(blocks[2], 300), others) << edit.name;
    for (uint32_t& block : blocks) MEMORYFREE(&block);
    // A split that failed in a patch has left its blocks, a width that was refused the one that it built.
    if (LiveBlocks() != 0) MEMORYFREEALL();
  }
};

// A sheet that makes every operation do all it can: a ROW at the position, runs across it, formulas.
StreamBuilder BusySheet() {
  StreamBuilder stream = Book().Record(0x007D, U16(0) + U16(0) + U16(256) + Bytes(5));
  stream.Record(0x007D, U16(4) + U16(1) + U16(512) + Bytes(5));
  stream.Dimensions(1, 4, 0, 6).Row(1, 0, 6).Row(2, 0, 6).Row(3, 0, 6);
  stream.MulRk(1, 0, {{1, 6}, {2, 10}, {3, 14}, {4, 18}})
      .Number(1, 4, 15, 1.0)
      .MulBlank(2, 0, {1, 2, 3, 4})
      .Label(2, 5, 15, "ab");
  stream.Formula(3, 0, 15, Bytes(8),
                 MemArea(6) + Ref(0xC002, 2) + Area(1, 3, 0, 4, 0x45) + Ref3d(2, 2) + Area3d(1, 3, 0, 4) +
                     Rect(1, 3, 0, 4));
  stream.Record(0x0207, U16(2) + Bytes{0, 'a', 'b'})
      .Record(0x0221, ArrayPayload(Bytes{0x20, 1, 1, 0, 2, 1, 'x'} + Ref(2, 2)));
  stream.Record(0x04BC, SharedPayload(Ref(2, 2, 0x4C) + Exp(2, 2))).LabelSst(3, 5, 15, 0);
  stream.Bof(6, kChart).Number(2, 2, 15, 1.0).Eof();
  return EndSheet(stream);
}

// With k blocks of the host's beside the buffer and its table. A new ROW takes one block, a split three.
constexpr struct {
  const char* name;
  EditCall call;
  int16_t position;
  int16_t withoutMemory;
} kFaultCases[] = {
    {"XLAddRow above", XLAddRow, 6, 3}, {"XLAddRow below", XLAddRow, 1, 3},
    {"XLAddCol", XLAddCol, 9, 0},       {"XLInsertRow", XLInsertRow, 3, 3},
    {"XLInsertCol", XLInsertCol, 3, 0}, {"XLDeleteRow", XLDeleteRow, 3, 0},
    {"XLDeleteCol", XLDeleteCol, 3, 0},
};

TEST_F(RowColumnFaults, PoolExhaustion_GivesTheStatedResults_AndHoldsTheBlocksItHeld) {
  for (const auto& row : kFaultCases) {
    for (uint32_t k = 0; k <= 9; ++k) {
      Load(BusySheet());
      for (uint32_t i = 0; i < k; ++i) MEMORYALLOC(1);
      const uint32_t live = LiveBlocks();
      EXPECT_EQ(Run(row.call, row.position), live == 9 ? row.withoutMemory : 0) << row.name << ", k " << k;
      EXPECT_EQ(LiveBlocks(), live) << row.name << ", k " << k;
      MEMORYFREEALL();
    }
  }
}

TEST_F(RowColumnFaults, WithThreeFreeBlocks_TheColumnEditsAreWhole) {
  for (EditCall edit : {XLInsertCol, XLDeleteCol}) {
    Load(BusySheet());
    EXPECT_EQ(Run(edit, 3), 0);
    const Bytes whole = Walked();
    MEMORYFREEALL();
    Load(BusySheet());
    LeaveFree(3);
    EXPECT_EQ(Run(edit, 3), 0);
    EXPECT_EQ(Hex(Walked()), Hex(whole));
    MEMORYFREEALL();
  }
}

// A NUMBER in the globals shows that the walk came by there; one behind the run shows how often it came to
// the end.
StreamBuilder SheetWithARun(uint16_t global, uint16_t past, uint16_t row_past, bool with_run,
                            uint16_t behind) {
  StreamBuilder stream = StreamBuilder().Bof(6).Number(0, global, 15, 0.5).Sheet("Data").Eof();
  stream.Bof(6, kWorksheet).Dimensions(0, 9, 0, past).Row(0, 0, row_past).Number(0, 0, 15, 1.0);
  if (with_run) stream.MulRk(0, 1, {{1, 6}, {2, 10}, {3, 14}});
  return EndSheet(stream.Number(0, behind, 15, 2.0));
}

TEST_F(RowColumnFaults, SplitWhosePiecesCanNotBeHad_LosesTheRun_AndTheWalkGoesOnFromTheStart) {
  for (uint32_t free : {1u, 2u}) {
    Load(SheetWithARun(8, 6, 6, true, 5));
    LeaveFree(free);
    EXPECT_EQ(Run(XLInsertCol, 3), 0);
    // In front of the run everything was met twice, behind it once; the globals once, at depth 1 as the walk
    // still took it for.
    EXPECT_READS_AS(SheetWithARun(9, 8, 8, false, 6));
    EXPECT_EQ(LiveBlocks(), 9 - free);
    MEMORYFREEALL();
  }
}

TEST_F(RowColumnFaults, DeleteCol_WhosePiecesCanNotBeHad_GoesOnFromTheStartAsWell) {
  Load(SheetWithARun(8, 6, 6, true, 5));
  LeaveFree(1);
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(SheetWithARun(7, 6, 4, false, 4));
}

TEST_F(RowColumnFaults, SplitWithoutAnyBlock_EndsTheWalkAtTheRun) {
  Load(SheetWithARun(8, 6, 6, true, 5));
  LeaveFree(0);
  EXPECT_EQ(Run(XLInsertCol, 3), 0);
  EXPECT_READS_AS(SheetWithARun(8, 7, 7, true, 5));
  EXPECT_EQ(Run(XLDeleteCol, 3), 0);
  EXPECT_READS_AS(SheetWithARun(8, 7, 6, true, 5));
}

TEST_F(RowColumnFaults, SplitThatCanNotGrowTheBuffer_LosesIt_AndGives0) {
  StreamBuilder stream = Book().Dimensions(0, 9, 0, 6);
  while (stream.Here() < 180) stream.Blank(0, 0, 15);
  Load(EndSheet(stream.MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}})), kBiff8, true);
  ASSERT_EQ(MEMORYISHANDLE(buffer_), 1);
  // Slot 1 is the buffer's: three blocks for the split are left, and none of them is free when the buffer
  // needs a larger one.
  LeaveFree(3);
  EXPECT_EQ(Run(XLInsertCol, 2), 0);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 8u);
}

// ---- Rings ----

Bytes TableOf(uint32_t begin, uint32_t end) {
  return U32(1) + U32(0) + U32(begin) + U32(end);
}

TEST_F(RowColumnFaults, JumpToItself_Ends) {
  BiffVersion = kBiff8;
  StreamBuilder stream = Book().Dimensions(0, 9, 0, 6).Row(0).MulRk(0, 0, {{1, 6}, {2, 10}, {3, 14}});
  stream.Detour(stream.Here());
  SweepStream(EndSheet(stream).BufEnd().Stream(), TableOf(40, stream.Last() - 4));
}

TEST_F(RowColumnFaults, RingOfTwo_Ends) {
  BiffVersion = kBiff8;
  StreamBuilder stream = Book().Dimensions(0, 9, 0, 6).Row(0);
  stream.Detour(stream.Here() + 8).Detour(stream.Here());
  SweepStream(EndSheet(stream).BufEnd().Stream(), TableOf(40, stream.Last() - 4));
}

TEST_F(RowColumnFaults, RingOfTheWholeSheet_Ends) {
  BiffVersion = kBiff8;
  StreamBuilder stream = Book();
  const uint32_t begin = stream.Last();
  stream.Dimensions(0, 9, 0, 6);
  for (uint16_t row = 0; row < 50; ++row)
    stream.Row(row).MulRk(row, 0, {{1, 6}, {2, 10}, {3, 14}, {4, 18}, {5, 22}});
  for (uint32_t target : {begin, begin + 20, 0u}) {
    StreamBuilder ring = stream;
    EndSheet(ring.Detour(target)).BufEnd();
    SweepStream(ring.Stream(), TableOf(begin, ring.Last() - 4));
  }
}

TEST_F(RowColumnFaults, TableThatDoesNotFit_EndsAtTheBufEnd) {
  Load(BusySheet());
  const uint32_t begin = TableEntry(OpenBlock(table_), kTableFirstSheet);
  const Bytes stream = Image();
  for (uint32_t end : {0u, begin + 1, size_, 0xFFFFFFFFu}) SweepStream(stream, TableOf(begin, end));
  for (uint32_t start : {0u, begin + 1, size_ - 1, size_, 0x7FFFFFFFu, 0xFFFFFFFFu})
    SweepStream(stream, TableOf(start, size_ - 8));
}

// ---- Damage ----

class RowColumnDamage : public RowColumnFaults, public ::testing::WithParamInterface<int32_t> {
 protected:
  void SetUp() override {
    RowColumnFaults::SetUp();
    Load(BusySheet(), GetParam());
    stream_ = Image();
    table_bytes_ = BlockContents(table_, 16);
    MEMORYFREEALL();
  }
  Bytes stream_;
  Bytes table_bytes_;
};

TEST_P(RowColumnDamage, EveryPrefix_EndsAndStaysInItsBlock) {
  for (size_t n = 0; n <= stream_.size(); ++n) {
    SweepStream(Bytes(stream_.begin(), stream_.begin() + static_cast<int64_t>(n)), table_bytes_);
  }
}

TEST_P(RowColumnDamage, EveryByteSetTo00_7F_80_FF_EndsAndStaysInItsBlock) {
  for (size_t i = 0; i < stream_.size(); ++i) {
    for (uint8_t value : {uint8_t{0x00}, uint8_t{0x7F}, uint8_t{0x80}, uint8_t{0xFF}}) {
      Bytes damaged = stream_;
      damaged[i] = value;
      SweepStream(damaged, table_bytes_);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Generations, RowColumnDamage, ::testing::Values(kBiff5, kBiff8, 0));

}  // namespace
}  // namespace tolvenar
