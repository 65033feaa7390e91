// Compaction: what is copied, what is renewed, where it ends, and what a failure leaves.
#include "workbook/compaction.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "foundation/memory_pool.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/sheet_table.h"
#include "workbook/table_entries.h"
#include "workbook/two_sheets.h"

namespace tolvenar::testing {
namespace {

using Entries = std::vector<int32_t>;

class CompactionTest : public PoolTest {
 protected:
  // Loads the stream with the table that the test gives it.
  void Load(const StreamBuilder& stream, const Entries& entries) {
    buffer = stream.Load(&size);
    table = MEMORYALLOC(static_cast<int32_t>(entries.size() * 4));
    std::memcpy(BlockBytes(table), entries.data(), entries.size() * 4);
  }

  // Loads the two sheets with the table that belongs to them.
  void LoadTwoSheets() {
    buffer = TwoSheets::Builder().Load(&size);
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  }

  int16_t Run(LengthField lengths = LengthField::kUnsigned) {
    return Compact(buffer, table, size, lengths, &copy, &copy_size);
  }

  Bytes Copied() const { return BlockContents(copy, copy_size); }

  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
  uint32_t copy = 0;
  uint32_t copy_size = 0;
};

const Bytes kRoomForBufEnd = Bytes(4);

Bytes From(const Bytes& bytes, ptrdiff_t at) {
  return Bytes(bytes.begin() + at, bytes.end());
}

TEST_F(CompactionTest, PlainBuffer_ComesOutAsItWas_WithZerosForTheBufEnd) {
  LoadTwoSheets();
  const Bytes before = BlockContents(buffer, size);
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Copied(), TwoSheets::Builder().Stream() + kRoomForBufEnd);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 136, 180}));
  EXPECT_EQ(BlockContents(buffer, size), before);
  EXPECT_EQ(LiveBlocks(), 3u);
  EXPECT_EQ(MEMORYSIZE(copy), copy_size);
}

TEST_F(CompactionTest, SlackInTheGlobals_ShiftsEverySheet) {
  StreamBuilder book;
  book.Bof(6).Slack(6, 0xAA).Sheet("One").Sheet("Two").Slack(0).Eof();
  book.Bof(6, kWorksheet).Eof().Bof(6, kWorksheet).Slack(3).Eof();
  Load(book, {2, 0, 68, 92, 119});
  EXPECT_EQ(Run(), 0);
  StreamBuilder plain;
  plain.Bof(6).Sheet("One").Sheet("Two").Eof().Bof(6, kWorksheet).Eof().Bof(6, kWorksheet).Eof();
  EXPECT_EQ(Hex(Copied()), Hex(plain.Stream() + kRoomForBufEnd));
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 78, 98}));
}

TEST_F(CompactionTest, PatchStandsAtItsLogicalPlace_DeadBytesAreLeftBehind) {
  LoadTwoSheets();
  StreamBuilder text;
  text.Label(0, 1, 15, "new text");
  const Bytes record = text.Stream();
  MarkRecordSlack(OpenBlock(buffer), TwoSheets::kNumber);
  ASSERT_EQ(
      PatchRecord(&buffer, record.data(), TwoSheets::kNumber, static_cast<uint32_t>(record.size()), &size),
      0);
  EXPECT_EQ(Run(), 0);
  const Bytes walked = WalkedStream(buffer);
  const int32_t grown = static_cast<int32_t>(record.size()) - 18;
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 136 + grown, 180 + grown}));
  EXPECT_EQ(copy_size, walked.size() + 4);
  EXPECT_EQ(U32At(OpenBlock(copy), TwoSheets::kBoundSheetTwo + 4), static_cast<uint32_t>(136 + grown));
  EXPECT_EQ(Hex(From(Copied(), 54)), Hex(From(walked, 54) + kRoomForBufEnd));
}

TEST_F(CompactionTest, NestedBofAtNoTableOffset_ChangesNothing) {
  StreamBuilder book;
  book.Bof(6).Slack(0).Sheet("One").Eof().Bof(6, kWorksheet).Bof(6, kChart).Eof().Eof();
  Load(book, {1, 0, 43, 87});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 39, 83}));
}

TEST_F(CompactionTest, DisplacedBof_ItsEntryAndAllLaterOnesStayUnrepaired) {
  StreamBuilder book;
  book.Bof(6).Slack(22).Sheet("One").Sheet("Two").Eof();
  book.Bof(6, kWorksheet).Eof().Bof(6, kWorksheet).Number(0, 0, 15, 1.5).Eof();
  Load(book, {2, 0, 80, 104, 142});
  const Bytes note = StreamBuilder().Record(0x0042, U16(1200)).Stream();
  ASSERT_EQ(PatchRecord(&buffer, note.data(), 80, 6, &size), 0);  // in front of the first sheet's BOF
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 80, 104, 122}));  // the sheets stand at 60 and 84 now
  EXPECT_EQ(U32At(OpenBlock(copy), 24), 80u);
  EXPECT_EQ(U32At(OpenBlock(copy), 39), 104u);
  EXPECT_EQ(U16At(OpenBlock(copy), 54), 0x0042);
}

TEST_F(CompactionTest, BufferWithoutBufEnd_ItsFourZerosAreCopiedAsARecord) {
  LoadTwoSheets();
  PutU32(OpenBlock(buffer), size - 4, 0);
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Hex(Copied()), Hex(TwoSheets::Builder().Stream() + Bytes(4) + kRoomForBufEnd));
}

TEST_F(CompactionTest, BufferWithoutBufEnd_TheRoomForTheBufEndIsZeroThoughTheSlotWasUsedBefore) {
  LoadTwoSheets();
  PutU32(OpenBlock(buffer), size - 4, 0);
  for (int i = 0; i < 2; ++i) {
    uint32_t soiled = MEMORYALLOC(512);
    MEMORYSET1(&soiled, 512, 0xEE);
    MEMORYFREE(&soiled);
  }
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(U32At(OpenBlock(copy), copy_size - 4), 0u);
}

TEST_F(CompactionTest, RecordsBehindTheBufEnd_AreNotReached) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Eof().BufEnd().Number(0, 0, 0, 1.0).BufEnd();
  Load(book, {1, 0, 39, 59});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(copy_size, 67u);
}

TEST_F(CompactionTest, RecordAtTheLimit_IsNotReached) {
  Load(StreamBuilder().Bof(6).Eof().Record(0x0042, Bytes(2)), {0, 0, 20});
  size = 25;  // the limit is 24, where the last record stands
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Hex(Copied()), Hex(StreamBuilder().Bof(6).Eof().Stream() + kRoomForBufEnd));
}

TEST_F(CompactionTest, BoundSheetInThePlaceOfTheGlobalsEof_IsNotRepaired) {
  StreamBuilder book;
  book.Bof(6).Record(0x0085).Bof(6, kWorksheet).Eof().Eof();
  Load(book, {1, 0, 24, 77});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Hex(Copied()), Hex(BlockContents(buffer, size - 4) + kRoomForBufEnd));
  EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 48, 77}));
}

TEST_F(CompactionTest, BufEndMetByTheSearchForTheLastEof_EndsItBehindTheBufEnd) {
  StreamBuilder book;
  const Bytes records = {0x01, 0x00, 0x00, 0x00, 0xF8, 0xFE, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00};
  book.Bof(6).Record(0x0042, records);
  Load(book, {0, 24, 0});  // the globals begin inside a payload
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TableEntries(table, 3), (Entries{0, 24, 32}));
}

TEST_F(CompactionTest, PrivateHighByteWithAnotherLowByte_IsAnOrdinaryRecord) {
  StreamBuilder book;
  book.Bof(6).Record(0xFEF0, U16(7)).Record(0x10FD, U16(8)).Record(0xFDFF, U16(9)).Eof();
  Load(book, {0, 0, 38});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Hex(Copied()), Hex(book.Stream() + kRoomForBufEnd));
}

TEST_F(CompactionTest, NoBoundSheet_EntryTwoBecomesTheNewEof) {
  Load(StreamBuilder().Bof(6).Slack(10).Eof(), {0, 0, 34});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TableEntries(table, 3), (Entries{0, 0, 20}));
}

TEST_F(CompactionTest, MoreBoundSheetsThanSheets_TakeWhateverTheTableHolds) {
  StreamBuilder book;
  book.Bof(6).Record(0x0085, U32(1)).Record(0x0085, U32(2)).Eof().Bof(6, kWorksheet).Eof();
  Load(book, {1, 0, 40, 60, 77});
  EXPECT_EQ(Run(), 12);  // entry 3 is no BOF: the walk from it runs out
}

TEST_F(CompactionTest, SubstreamBehindTheLastSheet_IsNotTheLastSheets) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Eof().Bof(6, kChart).Eof();
  Load(book, {1, 0, 39, 59});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 39, 59}));
  EXPECT_EQ(Copied(), book.Stream() + kRoomForBufEnd);
}

TEST_F(CompactionTest, NoBoundSheet_NestedSubstreamDoesNotEndTheGlobals) {
  StreamBuilder book;
  book.Bof(6).Bof(6, kChart).Eof().Eof();
  Load(book, {0, 0, 40});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(TableEntries(table, 3), (Entries{0, 0, 44}));
}

TEST_F(CompactionTest, FirstSheetAtTheStart_NoBoundSheetStandsInFrontOfIt) {
  StreamBuilder book;
  book.Bof(6).Record(0x0085, U32(7)).Eof();
  Load(book, {1, 0, 0, 28});
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Copied(), book.Stream() + kRoomForBufEnd);
  EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 28, 28}));
}

TEST_F(CompactionTest, BoundSheetWhoseOffsetIsLaidOverTheSheet_TheSheetIsReadAsItIsThen) {
  StreamBuilder book;
  book.Bof(6).Record(0x0085, Bytes(1)).Bof(6, kWorksheet).Eof();
  Load(book, {1, 0, 25, 45});
  EXPECT_EQ(Run(), 12);  // the BOF has lost its length, and its payload's next record jumps over the EOF
}

// The length field.

TEST_F(CompactionTest, LongRecord_UnsignedCopiesItWhole_SignedTakesTheWriteOffsetBack) {
  StreamBuilder book;
  book.Bof(6).Eof().Number(1, 2, 15, 1.5).Record(0x0042, Bytes(0xFFFA, 0x11)).Number(3, 4, 15, 2.5);
  Load(book, {0, 0, 20});
  EXPECT_EQ(Run(LengthField::kUnsigned), 0);
  EXPECT_EQ(Copied(), book.Stream() + kRoomForBufEnd);
  MEMORYFREE(&copy);
  EXPECT_EQ(Run(LengthField::kSigned), 0);
  StreamBuilder expected;  // 0xFFFA + 4 is -2 to a signed count: the next record overwrites two bytes
  expected.Bof(6).Eof().Number(1, 2, 15, 1.5);
  Bytes bytes = expected.Stream();
  bytes.resize(bytes.size() - 2);
  EXPECT_EQ(Hex(Copied()), Hex(bytes + StreamBuilder().Number(3, 4, 15, 2.5).Stream() + kRoomForBufEnd));
}

TEST_F(CompactionTest, LongRecordInTheLastSheet_SignedLengthsLoseItsEof) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Number(1, 2, 15, 1.5);
  book.Record(0x0042, Bytes(0xFFFA, 0x11)).Number(3, 4, 15, 2.5);
  const int32_t eof = static_cast<int32_t>(book.Here());
  Load(book.Eof(), {1, 0, 39, eof});
  EXPECT_EQ(Run(LengthField::kUnsigned), 0);
  EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 39, eof}));
  EXPECT_EQ(Run(LengthField::kSigned), 12);  // a walk of the copy steps into the second NUMBER
}

// A copy in one of the largest slots is made in long runs.
TEST_F(CompactionTest, LongRecordInALargeSlot_SignedTakesTheWriteOffsetBack) {
  const Bytes head = StreamBuilder().Bof(6).Eof().Number(1, 2, 15, 1.5).Stream();
  const Bytes number = StreamBuilder().Number(3, 4, 15, 2.5).Stream();
  const Bytes stream = head + StreamBuilder().Record(0x0042, Bytes(0xFFFA, 0x11)).Stream() + number;
  Load(StreamBuilder().Raw(stream), {0, 0, 20});
  MEMORYFREE(&buffer);
  size = 1000001;
  buffer = MEMORYALLOC(static_cast<int32_t>(size));
  const Bytes ended = stream + StreamBuilder().BufEnd().Stream();
  CopyIn(OpenBlock(buffer), 0, ended.data(), static_cast<uint32_t>(ended.size()));
  EXPECT_EQ(Run(LengthField::kSigned), 0);
  EXPECT_EQ(Hex(Copied()), Hex(Bytes(head.begin(), head.end() - 2) + number + kRoomForBufEnd));
}

TEST_F(CompactionTest, RecordAtTheLimitOfALargeBuffer_IsNotReached) {
  StreamBuilder book;
  book.Bof(6).Eof();
  for (int i = 0; i < 32; ++i) book.Record(0x0042, Bytes(32000, 0x11));
  const uint32_t limit = book.Here();
  Load(book.Record(0x0042, Bytes(2)), {0, 0, 20});
  size = limit + 1;
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(copy_size, limit + 4);
}

TEST_F(CompactionTest, SignedLengthThatLeadsBelowTheBlock_Is6) {
  StreamBuilder book;
  book.Bof(6).Eof().Record(0x0042, Bytes(0x8000, 0x11));
  Load(book, {0, 0, 20});
  const Bytes before = BlockContents(buffer, size);
  EXPECT_EQ(Run(LengthField::kSigned), 6);
  EXPECT_EQ(BlockContents(buffer, size), before);
  EXPECT_EQ(LiveBlocks(), 2u);
}

// Failures.

TEST_F(CompactionTest, Result4_NoBlockForTheCopy_NothingHasChanged) {
  LoadTwoSheets();
  while (MEMORYALLOC(1) != 0) continue;
  EXPECT_EQ(Run(), 4);
  EXPECT_EQ(copy, 0u);
  EXPECT_EQ(LiveBlocks(), 9u);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 136, 180}));
}

TEST_F(CompactionTest, Result4_SizeBeyondEverySlot) {
  LoadTwoSheets();
  for (uint32_t huge : {105000001u, 0x80000000u, 0xFFFFFFFFu}) {
    size = huge;
    EXPECT_EQ(Run(), 4) << huge;
  }
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(CompactionTest, Result12_NoClosingEof_TableHoldsTheOffsetsOfTheLostCopy) {
  StreamBuilder book;
  book.Bof(6).Slack(6).Sheet("One").Eof().Bof(6, kWorksheet).Number(0, 0, 15, 1.0);
  Load(book, {1, 0, 49, 69});
  const Bytes before = BlockContents(buffer, size);
  EXPECT_EQ(Run(), 12);
  EXPECT_EQ(copy, 0u);
  EXPECT_EQ(LiveBlocks(), 2u);
  EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 39, 69}));
  EXPECT_EQ(BlockContents(buffer, size), before);
}

TEST_F(CompactionTest, Result12_WhatAnEarlierTenantLeftIsNoEof) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Number(0, 0, 15, 1.0).Slack(40);
  Load(book, {1, 0, 39, 77});
  for (int32_t slot : {256, 512, 1024}) {  // one of them takes the copy
    uint32_t soiled = MEMORYALLOC(slot);
    MEMORYSET1(&soiled, slot, 0x0A);
    MEMORYFREE(&soiled);
  }
  EXPECT_EQ(Run(), 12);
}

TEST_F(CompactionTest, Result12_SizeWithoutARecord_TableIsUntouched) {
  LoadTwoSheets();
  for (uint32_t small : {0u, 1u}) {
    size = small;
    EXPECT_EQ(Run(), 12);
    EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 136, 180}));
  }
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(CompactionTest, Result6_RecordThatClaimsMoreThanTheSlotHolds) {
  StreamBuilder book;
  book.Bof(6).Eof().Raw({0x42, 0x00, 0xFF, 0x7F});
  Load(book, {0, 0, 20});
  const Bytes before = BlockContents(buffer, size);
  EXPECT_EQ(Run(), 6);
  EXPECT_EQ(copy, 0u);
  EXPECT_EQ(LiveBlocks(), 2u);
  EXPECT_EQ(BlockContents(buffer, size), before);
}

TEST_F(CompactionTest, Result6_NoSlotForTheFourBytesThatABufferWithoutBufEndAdds) {
  StreamBuilder book;
  book.Bof(6).Eof().Record(0x0042, Bytes(512 - 24 - 4 - 4)).Record(0x0000);
  const Bytes stream = book.Stream();
  ASSERT_EQ(stream.size(), 512u);
  buffer = MEMORYALLOC(1024);
  std::memcpy(BlockBytes(buffer), stream.data(), 512);
  size = 512;
  table = MEMORYALLOC(12);
  for (int i = 0; i < 6; ++i) MEMORYALLOC(33000);  // all but the slot of 512 bytes is taken
  ASSERT_EQ(LiveBlocks(), 8u);
  EXPECT_EQ(Run(), 6);
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(CompactionTest, TheFourAddedBytes_MoveTheCopyToALargerSlotWhenThereIsOne) {
  StreamBuilder book;
  book.Bof(6).Eof().Record(0x0042, Bytes(512 - 24 - 4 - 4, 0x5A)).Record(0x0000);
  buffer = MEMORYALLOC(512);
  size = 512;
  std::memcpy(BlockBytes(buffer), book.Stream().data(), 512);
  table = MEMORYALLOC(12);
  uint32_t small = buffer;  // leaves the slot of 512 bytes to the copy
  buffer = MEMORYALLOC(1024);
  std::memcpy(BlockBytes(buffer), BlockBytes(small), 512);
  MEMORYFREE(&small);
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(MEMORYISHANDLE(copy), 4);
  EXPECT_EQ(Copied(), book.Stream() + kRoomForBufEnd);
}

// Streams that go in circles: the copy is never larger than its slot, and the call ends.

TEST_F(CompactionTest, DetourRings_End) {
  Load(StreamBuilder().Detour(0).Eof(), {0, 0, 8});
  EXPECT_EQ(Run(), 12) << "names itself";
  Load(StreamBuilder().Detour(8).Detour(0).Eof(), {0, 0, 16});
  EXPECT_EQ(Run(), 12) << "ring of two";
  Load(StreamBuilder().Bof(6).Detour(0xFFFFFFF0).Eof(), {0, 0, 16});
  EXPECT_EQ(Run(), 12) << "far";
  EXPECT_EQ(LiveBlocks(), 6u);
}

TEST_F(CompactionTest, RingOverRecords_EachIsCopiedOnce) {
  StreamBuilder ring;
  ring.Bof(6).Eof().Record(0x0042, Bytes(100)).Detour(0);
  Load(ring, {0, 0, 20});
  EXPECT_EQ(Run(), 0);
  const Bytes once = StreamBuilder().Bof(6).Eof().Record(0x0042, Bytes(100)).Stream();
  EXPECT_EQ(Hex(Copied()), Hex(once + kRoomForBufEnd));
}

TEST_F(CompactionTest, RingLargerThanTheCopyOnItsSecondRound_EachIsCopiedOnce) {
  StreamBuilder ring;
  ring.Bof(6).Record(0x0042, Bytes(200)).Eof().Detour(20);
  buffer = ring.Load(&size);
  ASSERT_EQ(MEMORYISHANDLE(buffer), 1);
  uint32_t first = buffer;
  buffer = MEMORYALLOC(512);
  CopyIn(OpenBlock(buffer), 0, BlockBytes(first), size);
  table = MEMORYALLOC(12);
  MEMORYFREE(&first);
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(MEMORYISHANDLE(copy), 1);
  const Bytes once = StreamBuilder().Bof(6).Record(0x0042, Bytes(200)).Eof().Stream();
  EXPECT_EQ(Hex(Copied()), Hex(once + kRoomForBufEnd));
}

TEST_F(CompactionTest, BufferWithoutBufEndThatWasPatched_EachRecordIsCopiedOnce) {
  LoadTwoSheets();
  PutU32(OpenBlock(buffer), size - 4, 0);
  const Bytes note = StreamBuilder().Record(0x0042, U16(1200)).Stream();
  ASSERT_EQ(PatchRecord(&buffer, note.data(), TwoSheets::kNumber, 6, &size), 0);
  ASSERT_EQ(PatchRecord(&buffer, note.data(), TwoSheets::kBoundSheetOne, 6, &size), 0);
  EXPECT_EQ(Run(), 0);
  StreamBuilder expected;
  expected.Bof(6).Record(0x0042, U16(1200)).Sheet("One").Sheet("Two").Eof().Bof(6, kWorksheet);
  expected.Record(0x020B, Bytes(16))
      .Record(0x0042, U16(1200))
      .Number(0, 0, 15, 1.5)
      .Record(0x00D7, Bytes(16));
  expected.Eof().Bof(6, kWorksheet).Bof(6, kChart).Eof().Eof().Record(0x0000);
  EXPECT_EQ(Hex(Copied()), Hex(expected.Stream() + kRoomForBufEnd));
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 60, 148, 192}));
}

// What is kept, record by record.
Bytes KeptByStepping(const Block& block, uint32_t limit) {
  Bytes kept;
  for (Walk walk = StartWalk(block, 0); walk.at < limit && !walk.ended; Step(&walk)) {
    const bool patch = IsJump(block, walk.at) || IsPrivate(block, walk.at, kLowSlack);
    if (IsPrivate(block, walk.at, kLowBufEnd)) break;
    const uint8_t* record = block.base + walk.at;
    if (!patch) kept.insert(kept.end(), record, record + kHeaderSize + LengthAt(block, walk.at));
  }
  return kept;
}

// A sheet so long that its records are looked at many at once: runs of one kind, and now and then another record.
class LongSheetTest : public CompactionTest {
 protected:
  uint32_t Random(uint32_t below) { return static_cast<uint32_t>(source_()) % below; }

  void AddRun(StreamBuilder* book, uint32_t count) {
    const uint16_t length = static_cast<uint16_t>(Random(4) * 6);
    const uint16_t type =
        static_cast<uint16_t>(Random(2) == 0 ? 0x0203 : 0xFE03);  // a private type that is none of the four
    for (uint32_t i = 0; i < count; ++i) book->Record(type, Bytes(length, static_cast<uint8_t>(i)));
  }

  void AddOther(StreamBuilder* book) {
    switch (Random(5)) {
      case 0:
        book->Slack(static_cast<uint16_t>(Random(30)));
        return;
      case 1:
        book->Detour(book->Here() + 16).Record(0x0203, Bytes(4));  // over a record
        return;
      case 2:
        book->Bof(6, kChart).Record(0x1002).Eof();
        return;
      case 3:
        book->Record(0x0204, Bytes(9));
        return;
      default:
        book->Record(0x0203, Bytes(Random(40)));
    }
  }

  StreamBuilder LongSheet() {
    StreamBuilder book;
    book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet);
    while (book.Here() < 130000) {
      AddRun(&book, 1 + Random(Random(3) == 0 ? 3000 : 20));
      AddOther(&book);
    }
    return book;
  }

  std::mt19937 source_{11};
};

TEST_F(LongSheetTest, ComesOutAsRecordByRecord) {
  for (int i = 0; i < 60; ++i) {
    const StreamBuilder book = LongSheet().Eof().BufEnd();
    buffer = book.Load(&size);
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
    const Bytes kept = KeptByStepping(OpenBlock(buffer), size - 1);
    ASSERT_EQ(Run(), 0);
    ASSERT_TRUE(Copied() == kept + kRoomForBufEnd) << "sheet " << i;
    MEMORYFREEALL();
  }
}

TEST_F(CompactionTest, StaleTable_IsSafe) {
  LoadTwoSheets();
  const uint32_t stale = table;
  MEMORYFREE(&table);
  table = stale;
  const Bytes before = BlockContents(buffer, size);
  Run();
  EXPECT_EQ(BlockContents(buffer, size), before);
}

}  // namespace
}  // namespace tolvenar::testing
