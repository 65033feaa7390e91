// CompactReference and XLRefreshReference: what is kept, dropped and renewed.
#include "reference/compact_reference.h"

#include "reference/reference_fixture.h"
#include "support/allocation_faults.h"

namespace tolvenar::testing {
namespace {

using CompactReferenceTest = ReferenceTest;

const Bytes kBufEnd = {0xF8, 0xFE, 0, 0};

TEST_F(CompactReferenceTest, ANewStreamIsItsOwnCompactForm) {
  Load(kNewStream);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(kNewStream + kBufEnd));
  EXPECT_EQ(MEMORYSIZE(buffer_), 36u);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(CompactReferenceTest, ObjectsComeBackToBackWithOneMarkAndTheirEntriesRenewed) {
  Load(kNewStream);
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(CreateGraph(1), 0);
  ASSERT_EQ(CreateTable(2), 0);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 5)), 0);
  const Bytes expected = RefRecord(0xFF, 8 + 34 + 12 + 18) + TableHead(1) + Value(1, 5) + kTableEnd +
                         GraphHead(1) + kGraphEnd + TableHead(2) + kTableEnd + RefRecord(0xDA, 0) +
                         RefRecord(0xDB, 0) + Entry(1, 1, 8) + Entry(2, 1, 42) + Entry(1, 2, 54) +
                         RefRecord(0xFE, 0);
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
    EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(expected + kBufEnd)) << round;
  }
}

TEST_F(CompactReferenceTest, AChartEditsEntryKeepsItsOffset) {
  Load(kNewStream);
  ASSERT_EQ(CreateTable(1), 0);
  const uint32_t mark = U32At(Stream(), 4);
  ASSERT_EQ(Create(4, EditKindWord(1), EditHead(0, 4) + kEditEnd), 0);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(FindRefEntry(buffer_, 4, EditKindWord(1)), static_cast<int32_t>(mark));
}

TEST_F(CompactReferenceTest, OfTwoEntriesOfOneNameTheFirstIsRenewed) {
  const Bytes table = TableHead(1) + kTableEnd;
  Load(RefRecord(0xFF, 12 + 18) + Bytes{0xFD, 0xFE, 0, 0} + table + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) +
       Entry(1, 1, 77) + Entry(1, 1, 78) + Entry(2, 1, 79) + RefRecord(0xFE, 0));
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)),
            Hex(RefRecord(0xFF, 8 + 18) + table + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(1, 1, 8) +
                Entry(1, 1, 78) + Entry(2, 1, 79) + RefRecord(0xFE, 0) + kBufEnd));
}

TEST_F(CompactReferenceTest, AHeadThatIsNotListedRenewsNoOther) {
  const Bytes tables = TableHead(2) + kTableEnd + TableHead(1) + kTableEnd + GraphHead(2) + kGraphEnd;
  const Bytes tail = RefRecord(0xDA, 0) + RefRecord(0xDB, 0);
  const uint32_t mark = 8 + 18 + 18 + 12;
  Load(RefRecord(0xFF, mark) + tables + tail + Entry(1, 2, 77) + Entry(2, 1, 78) + RefRecord(0xFE, 0));
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(RefRecord(0xFF, mark) + tables + tail + Entry(1, 2, 8) +
                                                    Entry(2, 1, 78) + RefRecord(0xFE, 0) + kBufEnd));
}

TEST_F(CompactReferenceTest, WithoutAValidDirectoryNoEntryIsRenewed) {
  const Bytes rest = TableHead(1) + kTableEnd + RefRecord(0xDB, 0) + Entry(1, 1, 77) + RefRecord(0xFE, 0);
  Load(RefRecord(0xFF, 26) + rest);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(RefRecord(0xFF, 26) + rest + kBufEnd));
}

TEST_F(CompactReferenceTest, ARecordOfANegativeLengthTakesTheWriteOffsetBack) {
  Bytes long_one = Bytes{0xE5, 0x10, 0x00, 0x80} + Bytes(0x8000, 7);  // -32764 bytes
  const Bytes front = RefRecord(0xFF, 0) + Bytes{0xE5, 0x10, 0xFC, 0x7F} + Bytes(0x7FFC, 9);
  const Bytes tail = RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + RefRecord(0xFE, 0);
  Load(front + long_one + tail);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  const uint32_t at = 8 + 0x8000 - (0x8000 - 4);
  EXPECT_EQ(size_, at + 24 + 4);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)),
            Hex(RefRecord(0xFF, at) + Bytes{0xE5, 0x10, 0xFC, 0x7F} + tail + kBufEnd));
}

TEST_F(CompactReferenceTest, WithoutMemoryForAnIndexTheEntriesAreRenewedAlike) {
  for (const bool without_memory : {false, true}) {
    MEMORYFREEALL();
    Load(kNewStream);
    ASSERT_EQ(CreateTable(1), 0);
    ASSERT_EQ(CreateGraph(1), 0);
    const AllocationFault fault(without_memory ? 0 : 99);
    ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
    EXPECT_EQ(fault.fired(), without_memory);
    EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), 8);
    EXPECT_EQ(FindRefEntry(buffer_, 1, kKindGraph), 26);
  }
}

TEST_F(CompactReferenceTest, WithoutTheChartBitThereIsNoHeadNoMarkAndNoEntry) {
  const Bytes objects = TableHead(1) + kTableEnd + GraphHead(1) + kGraphEnd;
  const Bytes plain =
      Bytes{0xDF, 0, 4, 0, 1, 0, 0, 0} + Bytes{0xFC, 0, 4, 0, 1, 0, 0, 0} + Bytes{0xDA, 0, 4, 0, 0, 0, 0, 0};
  const Bytes no_entry = Bytes{0xDC, 0x00, 8, 0, 1, 0, 1, 0, 77, 0, 0, 0};
  const uint32_t mark = 8 + 30 + 24;
  const Bytes tail = RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + no_entry;
  Load(RefRecord(0xFF, mark) + objects + plain + tail + Entry(1, 1, 78) + Entry(2, 1, 79) +
       RefRecord(0xFE, 0));
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)),
            Hex(RefRecord(0xFF, mark) + objects + plain + tail + Entry(1, 1, 8) + Entry(2, 1, 26) +
                RefRecord(0xFE, 0) + kBufEnd));
}

TEST_F(CompactReferenceTest, ARingOfJumpsAloneIsRefused) {
  Load(RefRecord(0xFF, 8) + Bytes{0xFF, 0xFE, 4, 0, 16, 0, 0, 0} + Bytes{0xFA, 0xFE, 4, 0, 8, 0, 0, 0});
  const Bytes before = BlockContents(buffer_, size_);
  EXPECT_EQ(XLRefreshReference(&buffer_, &size_), 6);
  EXPECT_EQ(BlockContents(buffer_, size_), before);
}

TEST_F(CompactReferenceTest, ASizeThatIsMissingOrTooLargeIsRefused) {
  Load(kNewStream);
  const uint32_t old = buffer_;
  EXPECT_EQ(XLRefreshReference(&buffer_, nullptr), 6);
  for (const uint32_t size : {105000001u, 0x80000000u, 0xFFFFFFFFu}) {
    size_ = size;
    EXPECT_EQ(XLRefreshReference(&buffer_, &size_), 4) << size;
    EXPECT_EQ(size_, size);
  }
  EXPECT_EQ(buffer_, old);
  EXPECT_EQ(Hex(BlockContents(buffer_, 36)), Hex(kNewStream + kBufEnd));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(CompactReferenceTest, RetiredRecordsGo) {
  Load(kNewStream);
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 5)), 0);
  MarkRecordSlack(Stream(), Find(1, kKindTable).value);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  const Bytes expected = RefRecord(0xFF, 26) + TableHead(1) + kTableEnd + RefRecord(0xDA, 0) +
                         RefRecord(0xDB, 0) + Entry(1, 1, 8) + RefRecord(0xFE, 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(expected + kBufEnd));
}

TEST_F(CompactReferenceTest, OnlyTheHighByteFEMakesAPatchRecord) {
  const Bytes head = RefRecord(0xFF, 0);
  const Bytes kept = Bytes{0xFD, 0x00, 1, 0, 9} + Bytes{0xFA, 0x10, 1, 0, 8} + Bytes{0xF8, 0x10, 0, 0};
  const Bytes tail = RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + RefRecord(0xFE, 0);
  Load(head + kept + Bytes{0xFD, 0xFE, 1, 0, 7} + tail);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(RefRecord(0xFF, 22) + kept + tail + kBufEnd));
}

// A directory too large to be walked for every object is looked up by an index, and comes out just as by the walk.
TEST_F(CompactReferenceTest, ALargeDirectoryIsRenewedLikeASmallOne) {
  constexpr uint16_t kObjects = 200;
  Bytes objects, entries;
  for (uint16_t id = kObjects; id >= 1; --id) {
    objects = objects + (id % 2 == 0 ? TableHead(id) + kTableEnd : GraphHead(id) + kGraphEnd);
    // Behind the entry of an object stands a second one, which is never met.
    entries = entries + Entry(id % 2 == 0 ? kKindTable : kKindGraph, id, 1) +
              Entry(id % 2 == 0 ? kKindTable : kKindGraph, id, 2);
  }
  const uint32_t mark = 8 + static_cast<uint32_t>(objects.size());
  Load(RefRecord(0xFF, mark) + objects + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + entries +
       RefRecord(0xFE, 0));
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  for (uint16_t id = 1; id <= kObjects; ++id) {
    const int32_t at = FindRefEntry(buffer_, id, id % 2 == 0 ? kKindTable : kKindGraph);
    ASSERT_GT(at, 2);
    EXPECT_TRUE(IsChart(Stream(), static_cast<uint32_t>(at), id % 2 == 0 ? kLowTableHead : kLowGraphHead));
    EXPECT_EQ(U16At(Stream(), static_cast<uint32_t>(at) + kObjectId), id);
  }
  EXPECT_EQ(U32At(Stream(), size_ - 4 - 8 - 12 + kRefEntryOffset), 2u);
}

TEST_F(CompactReferenceTest, RefusesNoBufferAndAFullPool) {
  EXPECT_EQ(XLRefreshReference(nullptr, &size_), 2);
  EXPECT_EQ(XLRefreshReference(&buffer_, &size_), 2);
  Load(kNewStream);
  while (LiveBlocks() < 9) ASSERT_NE(MEMORYALLOC(1), 0u);
  EXPECT_EQ(XLRefreshReference(&buffer_, &size_), 4);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(kNewStream + kBufEnd));
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_F(CompactReferenceTest, ARingIsRefusedAndTheOldBufferStays) {
  Load(RefRecord(0xFF, 8) + Bytes{0xD4, 0x10, 0, 0} + Bytes{0xFF, 0xFE, 4, 0, 8, 0, 0, 0});
  const uint32_t old = buffer_;
  EXPECT_EQ(XLRefreshReference(&buffer_, &size_), 6);
  EXPECT_EQ(buffer_, old);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(CompactReferenceTest, AWalkThatLeavesTheBlockIsRefused) {
  Load(RefRecord(0xFF, 0) + Bytes{0xE5, 0x10, 0x00, 0x10});
  size_ = 0x2000;
  const uint32_t old = buffer_;
  EXPECT_EQ(XLRefreshReference(&buffer_, &size_), 6);
  EXPECT_EQ(buffer_, old);
  EXPECT_EQ(size_, 0x2000u);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(CompactReferenceTest, ALastRecordThatClaimsMoreThanThereIsIsRefused) {
  Load(RefRecord(0xFF, 0) + Bytes{0xE5, 0x10, 0x00, 0x10});
  const Bytes before = BlockContents(buffer_, size_);
  EXPECT_EQ(XLRefreshReference(&buffer_, &size_), 6);
  EXPECT_EQ(BlockContents(buffer_, size_), before);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(CompactReferenceTest, AnEmptyBufferIsRefused) {
  Load({});
  EXPECT_EQ(XLRefreshReference(&buffer_, &size_), 6);
  EXPECT_EQ(XLRefreshReference(&buffer_, nullptr), 6);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(CompactReferenceTest, ABufferThatStillLacksItsBufEndIsCompactedAlike) {
  Load(kNewStream);
  PutU32(Stream(), size_ - 4, 0);
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  const Bytes expected = RefRecord(0xFF, 26) + TableHead(1) + kTableEnd + RefRecord(0xDA, 0) +
                         RefRecord(0xDB, 0) + Entry(1, 1, 8) + RefRecord(0xFE, 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(expected + kBufEnd));
}

TEST_F(CompactReferenceTest, ABufferThatFillsItsSlotWithoutABufEndGetsOneInALargerSlot) {
  const Bytes tail = RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + RefRecord(0xFE, 0);
  const Bytes stream =
      RefRecord(0xFF, 8 + 220) + Bytes{0xE5, 0x10, 216, 0} + Bytes(216, 9) + tail + kTableEnd;
  ASSERT_EQ(stream.size(), 256u);
  buffer_ = MEMORYALLOC(256);
  size_ = 256;
  CopyIn(Stream(), 0, stream.data(), size_);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(size_, 260u);
  EXPECT_EQ(MEMORYALLOCSIZE(buffer_), 512u);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(stream + kBufEnd));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(CompactReferenceTest, ACopyThatFindsNoLargerSlotForItsBufEndIsFreed) {
  uint32_t slots[8];
  for (uint32_t& slot : slots) slot = MEMORYALLOC(1);
  const Bytes tail = RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + RefRecord(0xFE, 0);
  const Bytes stream = RefRecord(0xFF, 8 + 480) + Bytes{0xE5, 0x10, 0xDC, 0x01} + Bytes(476, 9) + tail;
  ASSERT_EQ(stream.size(), 512u);
  Load(stream);
  size_ = 512;            // the last four bytes are not of the stream
  MEMORYFREE(&slots[1]);  // 512 bytes: the copy fills it
  const uint32_t old = buffer_;
  EXPECT_EQ(XLRefreshReference(&buffer_, &size_), 6);
  EXPECT_EQ(buffer_, old);
  EXPECT_EQ(size_, 512u);
  EXPECT_EQ(Hex(BlockContents(buffer_, 512)), Hex(stream));
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(CompactReferenceTest, ABufEndAtTheEndOfItsSlotEndsTheWalk) {
  const Bytes stream = RefRecord(0xFF, 0) + Bytes{0xE5, 0x10, 236, 0} + Bytes(236, 9) + kTableEnd;
  Load(stream);
  ASSERT_EQ(MEMORYALLOCSIZE(buffer_), size_);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(stream + kBufEnd));
}

TEST_F(CompactReferenceTest, RecordsAreTakenBelowTheSizeLessOne) {
  for (const uint32_t beyond : {0u, 1u, 2u}) {
    MEMORYFREEALL();
    Load(RefRecord(0xFF, 0) + kTableEnd + kGraphEnd);
    size_ = 12 + beyond;  // the last record stands at 12
    ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
    EXPECT_EQ(size_, 12u + (beyond == 2 ? 4 : 0) + 4) << beyond;
  }
}

TEST_F(CompactReferenceTest, ARecordThatTheSizeCutsIsCopiedWhole) {
  const Bytes wide = Bytes{0xE5, 0x10, 100, 0} + Bytes(100, 9);
  Load(RefRecord(0xFF, 0) + wide);
  size_ = 12;
  const uint32_t old = buffer_;
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_NE(buffer_, old);
  EXPECT_EQ(size_, 8u + 104 + 4);
}

TEST_F(CompactReferenceTest, DestroyFStringReleasesWhatIsThere) {
  EXPECT_EQ(XLDestroyFString(nullptr), -1);
  uint32_t handle = MEMORYALLOC(8);
  EXPECT_EQ(XLDestroyFString(&handle), 0);
  EXPECT_EQ(handle, 0u);
  EXPECT_EQ(XLDestroyFString(&handle), 0);
  EXPECT_EQ(LiveBlocks(), 0u);
}

}  // namespace
}  // namespace tolvenar::testing
