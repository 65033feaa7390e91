// CompactReference and XLRefreshReference: what is kept, dropped and renewed.
#include "reference/compact_reference.h"

#include "reference/reference_fixture.h"

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
