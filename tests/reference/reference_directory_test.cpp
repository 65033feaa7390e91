// The directory of a ReferenceBuffer: lookups, walks, creation, and records put into objects before and after compactions.
#include "reference/reference_directory.h"

#include "reference/reference_fixture.h"
#include "support/made_record.h"

namespace tolvenar::testing {
namespace {

class ReferenceDirectoryTest : public ReferenceTest {
 protected:
  void SetUp() override {
    ReferenceTest::SetUp();
    Load(kNewStream);
  }

  // Two tables and a graph, compacted.
  void LoadThree() {
    ASSERT_EQ(CreateTable(1), 0);
    ASSERT_EQ(CreateTable(2), 0);
    ASSERT_EQ(CreateGraph(1), 0);
    ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  }

  void ExpectAllFound(uint32_t values) {
    for (const auto& [id, kind] : {std::pair{1, kKindTable}, {2, kKindTable}, {1, kKindGraph}}) {
      const Found found = Find(static_cast<uint16_t>(id), kind);
      EXPECT_EQ(found.result, kRefDone) << id << " " << kind;
      EXPECT_TRUE(found.seen) << id << " " << kind;
      EXPECT_EQ(found.values, values) << id << " " << kind;
    }
  }
};

TEST_F(ReferenceDirectoryTest, ANewBufferListsNothing) {
  EXPECT_EQ(size_, 36u);
  EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), -2);
  EXPECT_EQ(Find(1, kKindTable).result, -997);
}

TEST_F(ReferenceDirectoryTest, AMarkThatIsNoneMakesTheDirectoryInvalid) {
  for (const uint32_t at : {0u, 16u, 24u, 32u, 0xFFFFFFF0u}) {
    PutU32(Stream(), 4, at);
    EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), -1) << at;
    EXPECT_EQ(Find(1, kKindTable).result, -997) << at;
    EXPECT_EQ(CreateTable(1), -999) << at;
  }
  EXPECT_EQ(size_, 36u);
}

TEST_F(ReferenceDirectoryTest, SlackBehindTheMarkMakesTheDirectoryInvalid) {
  Load(RefRecord(0xFF, 8) + RefRecord(0xDA, 0) + Bytes{0xFD, 0xFE, 0, 0} + RefRecord(0xDB, 0) +
       RefRecord(0xFE, 0));
  EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), -1);
}

TEST_F(ReferenceDirectoryTest, TheHeadersOwnTypeIsNotLookedAt) {
  PutU16(Stream(), 0, 0x1234);
  EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), -2);
}

TEST_F(ReferenceDirectoryTest, CreationWithoutABufferIsRefused) {
  uint32_t none = 0;
  EXPECT_EQ(CreateRefObject(&none, &size_, 1, kKindTable, kTableEnd.data(), 4), -1);
}

TEST_F(ReferenceDirectoryTest, ThreeObjectsStandEachInFrontOfTheMarkThatWasLive) {
  ASSERT_EQ(CreateTable(1), 0);
  const uint32_t second = U32At(Stream(), 4);
  ASSERT_EQ(CreateTable(2), 0);
  const uint32_t third = U32At(Stream(), 4);
  ASSERT_EQ(CreateGraph(1), 0);
  const Bytes mark = RefRecord(0xDA, 0);
  const Bytes expected = RefRecord(0xFF, U32At(Stream(), 4)) + TableHead(1) + kTableEnd + mark +
                         TableHead(2) + kTableEnd + mark + GraphHead(1) + kGraphEnd + mark + mark +
                         RefRecord(0xDB, 0) + Entry(1, 1, 8) + Entry(1, 2, second) + Entry(2, 1, third) +
                         RefRecord(0xFE, 0);
  EXPECT_EQ(Hex(WalkedStream(buffer_)), Hex(expected));
  EXPECT_EQ(LiveBlocks(), 1u);
  ExpectAllFound(0);
}

TEST_F(ReferenceDirectoryTest, ARetiredEntryIsSlackAndItsIdComesBack) {
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(CreateTable(2), 0);
  EXPECT_EQ(LowestFreeRefId(buffer_, kKindTable), 3);
  EXPECT_EQ(LowestFreeRefId(buffer_, kKindGraph), 1);
  RetireRefEntry(buffer_, 1, kKindTable);
  RetireRefEntry(buffer_, 9, kKindTable);
  EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), -2);
  EXPECT_GT(FindRefEntry(buffer_, 2, kKindTable), 0);
  EXPECT_EQ(LowestFreeRefId(buffer_, kKindTable), 1);
}

TEST_F(ReferenceDirectoryTest, NoIdIsFreeWhereAllAreTaken) {
  Bytes stream = kNewStream;
  stream.resize(stream.size() - 8);
  for (uint32_t id = 1; id <= 0xFFFF; ++id) {
    const Bytes entry = Entry(kKindGraph, static_cast<uint16_t>(id), 8);
    stream.insert(stream.end(), entry.begin(), entry.end());
  }
  Load(stream + RefRecord(0xFE, 0));
  EXPECT_EQ(LowestFreeRefId(buffer_, kKindGraph), 0);
  EXPECT_EQ(LowestFreeRefId(buffer_, kKindTable), 1);
}

TEST_F(ReferenceDirectoryTest, AnEntryIsFoundByIdAndWholeKindWord) {
  ASSERT_EQ(Create(4, EditKindWord(2), EditHead(1, 4) + kEditEnd), 0);
  EXPECT_EQ(EditKindWord(2), 0x103);
  EXPECT_EQ(EditKindWord(0), 0xFF03);
  EXPECT_EQ(FindRefEntry(buffer_, 4, EditKindWord(2)), 8);
  EXPECT_EQ(FindRefEntry(buffer_, 4, EditKindWord(1)), -2);
  EXPECT_EQ(FindRefEntry(buffer_, 5, EditKindWord(2)), -2);
  RepointRefEntry(buffer_, 4, EditKindWord(2), 0x1234);
  EXPECT_EQ(FindRefEntry(buffer_, 4, EditKindWord(2)), 0x1234);
}

TEST_F(ReferenceDirectoryTest, AnEntryThatPointsBehindItsObjectIsNotSeen) {
  LoadThree();
  RepointRefEntry(buffer_, 1, kKindTable, static_cast<uint32_t>(FindRefEntry(buffer_, 2, kKindTable)));
  EXPECT_EQ(Find(1, kKindTable).result, kRefDone);
  EXPECT_FALSE(Find(1, kKindTable).seen);
  RepointRefEntry(buffer_, 2, kKindTable, 8);  // the first table's end comes by before the head: passed over
  EXPECT_TRUE(Find(2, kKindTable).seen);
}

TEST_F(ReferenceDirectoryTest, TheFirstCoordinateVariesFastestAndTheFourthSizeTakesNoPart) {
  EXPECT_EQ(LinearCellIndex(0, 0, 0, 0, 2, 3, 4, 5), 0u);
  EXPECT_EQ(LinearCellIndex(1, 2, 3, 4, 2, 3, 4, 5), ((4u * 4 + 3) * 3 + 2) * 2 + 1);
  EXPECT_EQ(LinearCellIndex(1, 2, 3, 4, 2, 3, 4, 99), 119u);
  EXPECT_EQ(LinearCellIndex(-1, 0, 0, 0, 2, 3, 4, 5), 0xFFFFFFFFu);
}

TEST_F(ReferenceDirectoryTest, ARecordOfTheSameSizeTakesTheRoomOfTheOld) {
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 10)), 0);
  const uint32_t size = size_;
  ASSERT_EQ(Put(1, kKindTable, Value(1, 11), true), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Find(1, kKindTable).values, 1u);
  EXPECT_EQ(U32At(Stream(), Find(1, kKindTable).value + kTableValue), 11u);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(ReferenceDirectoryTest, ARecordIsAppendedLast) {
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 10)), 0);
  ASSERT_EQ(Put(1, kKindTable, Value(2, 20)), 0);
  EXPECT_EQ(Find(1, kKindTable).values, 2u);
  EXPECT_EQ(U32At(Stream(), Find(1, kKindTable).value), 0x000C10D4u);
  EXPECT_EQ(U32At(Stream(), Find(1, kKindTable).value + 4), 2u);
}

TEST_F(ReferenceDirectoryTest, AppendingAfterACompactionKeepsEveryObjectInReach) {
  LoadThree();
  for (uint32_t round = 1; round <= 3; ++round) {
    EXPECT_EQ(Put(1, kKindTable, Value(1, 1)), 0);  // displaces the head of table 2
    EXPECT_EQ(Put(2, kKindTable, Value(1, 1)), 0);  // that of the graph
    EXPECT_EQ(Put(1, kKindGraph, Value(1, 1)), 0);  // the live mark
    ExpectAllFound(round);
  }
  const Bytes walked = WalkedStream(buffer_);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_EQ(BlockContents(buffer_, size_).size(), walked.size() + 4);
  ExpectAllFound(3);
  EXPECT_EQ(Put(2, kKindTable, Value(1, 1)), 0);
  EXPECT_EQ(Find(2, kKindTable).values, 4u);
  EXPECT_EQ(CreateTable(3), 0);
  EXPECT_TRUE(Find(3, kKindTable).seen);
}

TEST_F(ReferenceDirectoryTest, ADisplacedChartEditIsFoundAtItsNewPlace) {
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(Create(4, EditKindWord(2), EditHead(1, 4) + kEditEnd), 0);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);
  const int32_t at = FindRefEntry(buffer_, 4, EditKindWord(2));
  ASSERT_GT(at, 0);
  EXPECT_EQ(U32At(Stream(), static_cast<uint32_t>(at)), 0x000510FBu);
  EXPECT_EQ(U16At(Stream(), static_cast<uint32_t>(at) + kEditId), 4);
}

TEST_F(ReferenceDirectoryTest, AnObjectMadeBehindACompactedOneStaysInReach) {
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  ASSERT_EQ(CreateTable(2), 0);                   // its entry points to the DETOUR right behind table 1
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);  // which goes along
  EXPECT_TRUE(Find(2, kKindTable).seen);
  ASSERT_EQ(Put(1, kKindTable, Value(2, 1)), 0);
  ASSERT_EQ(Put(2, kKindTable, Value(1, 1)), 0);
  EXPECT_EQ(Find(1, kKindTable).values, 2u);
  EXPECT_EQ(Find(2, kKindTable).values, 1u);
  ASSERT_EQ(CreateTable(3), 0);
  EXPECT_TRUE(Find(3, kKindTable).seen);
}

TEST_F(ReferenceDirectoryTest, AFailedPatchFreesTheBufferAndTheScratchBlock) {
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);
  const Bytes large = Bytes{0xD5, 0x10, 0x00, 0x7F} + Bytes(0x7F00);
  for (const bool replace : {false, true}) {
    MEMORYFREEALL();
    Load(kNewStream);
    ASSERT_EQ(CreateTable(1), 0);
    ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);
    for (int32_t slot_size : {512, 1024, 33000, 100000, 1000000, 1500000, 105000000}) MEMORYALLOC(slot_size);
    const uint32_t live = LiveBlocks();
    EXPECT_EQ(Put(1, kKindTable, large, replace), replace ? -6 : -5);
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(LiveBlocks(), live - 1);
  }
}

TEST_F(ReferenceDirectoryTest, CreationWithAFullPoolChangesNothing) {
  const Bytes before = BlockContents(buffer_, size_);
  while (LiveBlocks() < 9) ASSERT_NE(MEMORYALLOC(1), 0u);
  EXPECT_EQ(CreateTable(1), -2);
  EXPECT_EQ(BlockContents(buffer_, size_), before);
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_F(ReferenceDirectoryTest, CreationThatCantGrowTheBufferFreesIt) {
  TakeAllSlotsBut({});
  MEMORYFREEALL();
  const uint32_t scratch = MEMORYALLOC(1);  // slot 1; the buffer goes to slot 9 of which nothing is above
  for (int i = 0; i < 7; ++i) ASSERT_NE(MEMORYALLOC(1), 0u);
  Load(kNewStream);
  ASSERT_EQ(MEMORYISHANDLE(buffer_), 9);
  uint32_t freed = scratch;
  MEMORYFREE(&freed);
  size_ = 105000000 - 4;  // there is no room for a patch in its slot
  EXPECT_EQ(CreateTable(1), -4);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 7u);
}

TEST_F(ReferenceDirectoryTest, EverySpoiltByteEndsEveryOperation) {
  LoadThree();
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);
  const Bytes good = BlockContents(buffer_, size_);
  for (size_t at = 0; at < good.size(); ++at) {
    for (const uint8_t spoilt : Bytes{0x00, 0x10, 0x7F, 0xFA, 0xFE, 0xFF}) {
      MEMORYFREEALL();
      buffer_ = MEMORYALLOC(static_cast<int32_t>(good.size()));
      size_ = static_cast<uint32_t>(good.size());
      CopyIn(Stream(), 0, good.data(), size_);
      PutU8(Stream(), static_cast<uint32_t>(at), spoilt);
      Put(1, kKindTable, Value(1, 2));
      Put(2, kKindTable, Value(1, 2), true);
      if (buffer_ != 0) CreateTable(3);
      if (buffer_ != 0) XLRefreshReference(&buffer_, &size_);
      ASSERT_LE(LiveBlocks(), 1u) << at;
    }
  }
}

}  // namespace
}  // namespace tolvenar::testing
