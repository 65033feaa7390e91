// The directory of a ReferenceBuffer: lookups, walks, creation, and records put into objects before and after compactions.
#include "reference/reference_directory.h"

#include <ctime>

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

TEST_F(ReferenceDirectoryTest, WithoutTheChartBitARecordIsNoneOfTheDirectory) {
  const Bytes no_end = {0xFE, 0x00, 4, 0, 0, 0, 0, 0};
  const Bytes no_entry = {0xDC, 0x00, 8, 0, 1, 0, 1, 0, 77, 0, 0, 0};
  const Bytes rest = RefRecord(0xDB, 0) + no_entry + no_end + Entry(1, 1, 8);
  Load(RefRecord(0xFF, 8) + RefRecord(0xDA, 0) + rest + RefRecord(0xFE, 0) + Entry(1, 2, 8));
  EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), 8);
  EXPECT_EQ(FindRefEntry(buffer_, 2, kKindTable), -2);  // behind the end
  PutU8(Stream(), 9, 0x00);
  EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), -1);
  PutU16(Stream(), 8, 0x10D9);
  EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), -1);
}

TEST_F(ReferenceDirectoryTest, AnObjectAtOffset1IsWalkedAndNotMet) {
  Load(RefRecord(0xFF, 8) + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(1, 1, 1) + RefRecord(0xFE, 0));
  EXPECT_EQ(Find(1, kKindTable).result, kRefDone);
  EXPECT_FALSE(Find(1, kKindTable).seen);
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
  RetireRefEntry(buffer_, 0xFFFF, kKindGraph);
  EXPECT_EQ(LowestFreeRefId(buffer_, kKindGraph), 0xFFFF);
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

TEST_F(ReferenceDirectoryTest, ADisplacedObjectWhoseEntryWasWrongIsFoundAgain) {
  LoadThree();
  RepointRefEntry(buffer_, 1, kKindGraph, static_cast<uint32_t>(FindRefEntry(buffer_, 2, kKindTable)));
  RepointRefEntry(buffer_, 2, kKindTable, 8);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);  // displaces the head of table 2
  EXPECT_TRUE(IsChart(Stream(), static_cast<uint32_t>(FindRefEntry(buffer_, 2, kKindTable)), kLowTableHead));
  EXPECT_EQ(FindRefEntry(buffer_, 1, kKindGraph), FindRefEntry(buffer_, 2, kKindTable));  // it led there
  ASSERT_EQ(Put(2, kKindTable, Value(1, 1)), 0);                                          // that of the graph
  EXPECT_TRUE(IsChart(Stream(), static_cast<uint32_t>(FindRefEntry(buffer_, 1, kKindGraph)), kLowGraphHead));
}

TEST_F(ReferenceDirectoryTest, WhatStandsBehindARecordOfEightBytesIsNotDisplaced) {
  LoadThree();
  ASSERT_EQ(Put(1, kKindGraph, Bytes{0xD4, 0x10, 4, 0, 1, 2, 3, 4}), 0);
  const uint32_t behind = Find(1, kKindGraph).value + 8;
  RepointRefEntry(buffer_, 2, kKindTable, behind);
  ASSERT_EQ(Put(1, kKindGraph, Value(1, 1), true), 0);
  EXPECT_EQ(FindRefEntry(buffer_, 2, kKindTable), static_cast<int32_t>(behind));
}

TEST_F(ReferenceDirectoryTest, APatchThatTakesTheRoomOfAShortRecordDisplacesNothing) {
  LoadThree();
  ASSERT_EQ(Put(1, kKindGraph, Bytes{0xD4, 0x10, 2, 0, 1, 2}), 0);
  const uint32_t behind = Find(1, kKindGraph).value + 6;
  RepointRefEntry(buffer_, 2, kKindTable, behind);
  ASSERT_EQ(Put(1, kKindGraph, Bytes{0xD4, 0x10, 2, 0, 3, 4}, true), 0);
  EXPECT_EQ(FindRefEntry(buffer_, 2, kKindTable), static_cast<int32_t>(behind));
}

TEST_F(ReferenceDirectoryTest, WithoutAValidDirectoryAPatchTellsNoEntry) {
  Load(RefRecord(0xFF, 0) + kTableEnd + TableHead(2) + kTableEnd + Entry(1, 2, 12) + RefRecord(0xFE, 0));
  const Bytes value = Value(1, 1);
  ASSERT_EQ(PatchReference(&buffer_, value.data(), 8, static_cast<uint32_t>(value.size()), &size_), 0);
  EXPECT_EQ(U32At(Stream(), 30 + kRefEntryOffset), 12u);
}

TEST_F(ReferenceDirectoryTest, ADirectoryWithoutAnEndTakesNoObject) {
  Load(RefRecord(0xFF, 8) + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Bytes{0xFF, 0xFE, 4, 0, 8, 0, 0, 0});
  const Bytes before = BlockContents(buffer_, size_);
  EXPECT_EQ(CreateTable(1), -998);
  EXPECT_EQ(BlockContents(buffer_, size_), before);
  EXPECT_EQ(FindRefEntry(buffer_, 1, kKindTable), -2);
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

TEST_F(ReferenceDirectoryTest, OfTwoChartEditsOfOneNameEachKeepsItsOwnEntry) {
  ASSERT_EQ(Create(4, EditKindWord(1), EditHead(0, 4) + kEditEnd),
            0);  // stays true, being first in the stream
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(Create(4, EditKindWord(1), EditHead(0, 4) + kEditEnd), 0);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  ASSERT_EQ(FindRefEntry(buffer_, 4, EditKindWord(1)), 8);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);  // displaces the second, of whose place no entry knows
  EXPECT_EQ(FindRefEntry(buffer_, 4, EditKindWord(1)), 8);
}

TEST_F(ReferenceDirectoryTest, ARetiredEntryIsNotToldOfADisplacedChartEdit) {
  ASSERT_EQ(CreateTable(1), 0);
  for (int i = 0; i < 2; ++i) ASSERT_EQ(Create(4, EditKindWord(1), EditHead(0, 4) + kEditEnd), 0);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  RetireRefEntry(buffer_, 4, EditKindWord(1));
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);  // the entry that is left is the one that is told
  EXPECT_EQ(U32At(Stream(), static_cast<uint32_t>(FindRefEntry(buffer_, 4, EditKindWord(1)))), 0x000510FBu);
}

TEST_F(ReferenceDirectoryTest, OfTwoEntriesOfADisplacedChartEditTheFirstIsTold) {
  ASSERT_EQ(CreateTable(1), 0);
  for (int i = 0; i < 2; ++i) ASSERT_EQ(Create(4, EditKindWord(1), EditHead(0, 4) + kEditEnd), 0);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);
  EXPECT_EQ(U32At(Stream(), static_cast<uint32_t>(FindRefEntry(buffer_, 4, EditKindWord(1)))), 0x000510FBu);
}

TEST_F(ReferenceDirectoryTest, ADisplacedRecordThatIsNoHeadIsToldToNobody) {
  for (const Bytes& other : {Bytes{0xDF, 0, 4, 0, 5, 0, 0, 0}, Bytes{0xFC, 0, 4, 0, 5, 0, 0, 0},
                             Bytes{0xFB, 0, 5, 0, 0, 5, 0, 0, 0}}) {
    Load(RefRecord(0xFF, static_cast<uint32_t>(8 + 18 + other.size())) + TableHead(1) + kTableEnd + other +
         RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(1, 1, 8) + Entry(1, 5, 9999) + Entry(2, 5, 9999) +
         Entry(3, 5, 9999) + Entry(0, 0, 9999) + RefRecord(0xFE, 0));
    ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);
    for (const uint16_t kind : {uint16_t{0}, kKindTable, kKindGraph, kKindEdit}) {
      EXPECT_EQ(FindRefEntry(buffer_, kind == 0 ? 0 : 5, kind), 9999) << kind;
    }
    MEMORYFREE(&buffer_);
  }
}

TEST_F(ReferenceDirectoryTest, AHeadBehindTheBufferIsNotWhatAnEntryLeadsTo) {
  const Bytes edit = EditHead(0, 4) + kEditEnd;
  Load(RefRecord(0xFF, 8 + 18 + 13) + TableHead(1) + kTableEnd + edit + RefRecord(0xDA, 0) +
       RefRecord(0xDB, 0) + Entry(1, 1, 8) + Entry(3, 4, 200) + RefRecord(0xFE, 0));
  CopyIn(Stream(), 200, edit.data(), static_cast<uint32_t>(edit.size()));
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);
  ASSERT_LT(size_, 200u);
  EXPECT_NE(FindRefEntry(buffer_, 4, kKindEdit), 200);
}

TEST_F(ReferenceDirectoryTest, AnEntryThatLeadsToItsHeadByAJumpIsLeft) {
  const Bytes edit = EditHead(0, 4) + kEditEnd;
  const Bytes front = Bytes{0xFF, 0xFE, 4, 0, 118, 0, 0, 0} + TableHead(1) + kTableEnd + edit;
  const Bytes directory = RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(3, 4, 8) + Entry(1, 1, 16) +
                          Entry(3, 4, 9999) + RefRecord(0xFE, 0);
  const Bytes behind = Bytes{0xF8, 0xFE, 0, 0} + edit + Bytes{0xFA, 0xFE, 4, 0, 16, 0, 0, 0};
  Load(RefRecord(0xFF, 8 + 39) + front + directory + Bytes(118 - 8 - 39 - 60 - 4) + behind);
  ASSERT_EQ(U32At(Stream(), 118), 0x000510FBu);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);  // displaces the second head
  EXPECT_EQ(FindRefEntry(buffer_, 4, kKindEdit), 8);
}

TEST_F(ReferenceDirectoryTest, ADisplacedChartEditThatIsListedTwiceMovesInItsOwnEntryAlone) {
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  ASSERT_EQ(Create(4, EditKindWord(1), EditHead(0, 4) + kEditEnd), 0);
  ASSERT_EQ(Create(4, EditKindWord(1), EditHead(0, 4) + kEditEnd), 0);
  const int32_t first = FindRefEntry(buffer_, 4, EditKindWord(1));
  ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);  // the DETOUR to the first goes along
  const int32_t moved = FindRefEntry(buffer_, 4, EditKindWord(1));
  EXPECT_NE(moved, first);
  EXPECT_EQ(U32At(Stream(), static_cast<uint32_t>(moved)), 0x0004FEFFu);
  const uint32_t head = NextRecord(Stream(), static_cast<uint32_t>(moved));
  EXPECT_EQ(U32At(Stream(), head), 0x000510FBu);
}

TEST_F(ReferenceDirectoryTest, ACompactionOfManyObjectsWalksTheDirectoryOnce) {
  constexpr uint16_t kTables = 60000;
  Bytes stream = RefRecord(0xFF, 0);
  for (uint32_t id = 1; id <= kTables; ++id) {
    for (const Bytes& part : {TableHead(static_cast<uint16_t>(id)), kTableEnd}) {
      stream.insert(stream.end(), part.begin(), part.end());
    }
  }
  WriteU32(stream.data() + 4, static_cast<uint32_t>(stream.size()));
  for (const uint8_t low : {uint8_t{0xDA}, uint8_t{0xDB}}) stream = stream + RefRecord(low, 0);
  for (uint32_t id = kTables; id >= 1; --id) {
    const Bytes entry = Entry(1, static_cast<uint16_t>(id), 0xDDDDDDDD);
    stream.insert(stream.end(), entry.begin(), entry.end());
  }
  Load(stream + RefRecord(0xFE, 0));
  const std::clock_t start = std::clock();
  ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
  EXPECT_LT(std::clock() - start, 2 * CLOCKS_PER_SEC);  // it takes some milliseconds
  for (const uint16_t id : {uint16_t{1}, uint16_t{2}, uint16_t{30000}, kTables}) {
    EXPECT_EQ(FindRefEntry(buffer_, id, kKindTable), 8 + 18 * (id - 1)) << id;
  }
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

TEST_F(ReferenceDirectoryTest, CreationThatCantGrowTheBufferFreesItAtEachOfItsPatches) {
  // Room for no patch, for that of the entry, and for that and the mark's.
  for (const uint32_t room : {27u, 28u, 28u + 23, 28u + 24, 28u + 24 + 33}) {
    MEMORYFREEALL();
    uint32_t freed =
        MEMORYALLOC(1);  // slot 1, for the records; the buffer goes to slot 9, and nothing is above it
    for (int i = 0; i < 7; ++i) ASSERT_NE(MEMORYALLOC(1), 0u);
    Load(kNewStream);
    ASSERT_EQ(MEMORYISHANDLE(buffer_), 9);
    MEMORYFREE(&freed);
    size_ = 105000000 - room;
    EXPECT_EQ(CreateTable(1), -4) << room;
    EXPECT_EQ(buffer_, 0u) << room;
    EXPECT_EQ(LiveBlocks(), 7u) << room;
  }
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
