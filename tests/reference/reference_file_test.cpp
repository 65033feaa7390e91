// ReferenceFile: "Contents" byte for byte, ids, streams, and every result that a file or the pool can bring about.
#include "reference/reference_file.h"

#include "reference/reference_contents.h"
#include "reference/reference_fixture.h"
#include "support/allocation_faults.h"
#include "support/temp_file.h"
#include "support/workbook_file.h"
#include "workbook/stm_file.h"

namespace tolvenar::testing {
namespace {

// "Contents" with these ids, as `count` of them.
Bytes Contents(std::initializer_list<uint32_t> ids, uint32_t count) {
  Bytes bytes = RefRecord(0xFF, count);
  for (const uint32_t id : ids) bytes = bytes + RefRecord(0xFD, id);
  return bytes + RefRecord(0xFE, 0);
}
Bytes Contents(std::initializer_list<uint32_t> ids) {
  return Contents(ids, static_cast<uint32_t>(ids.size()));
}

class ReferenceFileTest : public ReferenceTest {
 protected:
  void SetUp() override {
    ReferenceTest::SetUp();
    path_ = folder_.File("references.ref");
    Start(Contents({}));
  }
  void Start(const Bytes& contents) { ASSERT_TRUE(WriteWorkbook(path_, "Contents", contents)); }
  int32_t CreateOne() { return XLCreateReference(path_.c_str()); }
  int16_t Delete(uint32_t id) { return XLDeleteReference(path_.c_str(), id); }
  int16_t Read(int32_t id) { return XLReadReference(path_.c_str(), &buffer_, &size_, id); }
  int16_t Save(int32_t id) { return XLSaveReference(path_.c_str(), &buffer_, &size_, id); }
  // The file as it was, and a pool with so many blocks free.
  void FillBut(uint32_t free, const Bytes& file) {
    PutFile(path_, file);
    MEMORYFREEALL();
    while (LiveBlocks() < 9 - free) ASSERT_NE(MEMORYALLOC(1), 0u);
  }
  std::string Listed() const { return Hex(ReadStream(path_, "Contents").value_or(Bytes{})); }
  bool HasStream(const std::string& name) const { return ReadStream(path_, name).has_value(); }

  TempFolder folder_;
  std::string path_;
};

TEST_F(ReferenceFileTest, TheFirstIdIs1) {
  EXPECT_EQ(CreateOne(), 1);
  EXPECT_EQ(ReadStream(path_, "Contents"), (Bytes{0xFF, 0x10, 4, 0, 1,    0,    0, 0, 0xFD, 0x10, 4, 0,
                                                  1,    0,    0, 0, 0xFE, 0x10, 4, 0, 0,    0,    0, 0}));
  EXPECT_EQ(ReadStream(path_, "1       "), kNewStream);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, AFreedIdComesBackLast) {
  for (int32_t id = 1; id <= 3; ++id) ASSERT_EQ(CreateOne(), id);
  EXPECT_EQ(Delete(2), 0);
  EXPECT_EQ(Listed(), Hex(Contents({1, 3})));
  EXPECT_FALSE(HasStream("2       "));
  EXPECT_EQ(CreateOne(), 2);
  EXPECT_EQ(Listed(), Hex(Contents({1, 3, 2})));
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, TheLowestFreeIdIsFoundWithoutMemoryForAllOfThem) {
  for (const bool without_memory : {false, true}) {
    for (const uint32_t free : {40000u, 0x8000u, 0x8001u}) {
      Bytes contents = RefRecord(0xFF, 70000);
      for (uint32_t id = 70000; id >= 1; --id) {
        const Bytes record = RefRecord(0xFD, id == free ? 3 : id);
        contents.insert(contents.end(), record.begin(), record.end());
      }
      Load(contents + RefRecord(0xFE, 0));
      int32_t id = 0;
      {
        const AllocationFault fault(without_memory ? 0 : 99);
        EXPECT_EQ(AddNewId(&buffer_, &size_, &id), 0);
        EXPECT_EQ(fault.fired(), without_memory);
      }
      EXPECT_EQ(id, static_cast<int32_t>(free));
      MEMORYFREE(&buffer_);
    }
  }
}

TEST_F(ReferenceFileTest, AListThatFillsItsBlockTakesOneMoreId) {
  Bytes contents = RefRecord(0xFF, 64);  // 256 bytes, the smallest block
  for (uint32_t id = 1; id <= 64; ++id) contents = contents + RefRecord(0xFD, id);
  Start(contents + RefRecord(0xFE, 0));
  EXPECT_EQ(CreateOne(), 65);
  contents[4] = 65;
  EXPECT_EQ(Listed(), Hex(contents + RefRecord(0xFD, 65) + RefRecord(0xFE, 0)));
}

TEST_F(ReferenceFileTest, AnIdDirectlyBehindThoseThatAreLookedAtIsOfNoAccount) {
  for (uint32_t id = 15; id <= 18; ++id) {  // of a directory with one id, those up to 16 are
    Start(Contents({id}));
    EXPECT_EQ(CreateOne(), 1) << id;
  }
}

TEST_F(ReferenceFileTest, TheSecondHeaderOfANewFileGoesAtTheFirstRewrite) {
  std::filesystem::remove(path_);
  StmFFile file;
  ASSERT_EQ(MakeReferenceFile(&file, path_.c_str()), 0);
  ASSERT_EQ(file.Close(), 0);
  EXPECT_EQ(Listed(), Hex(RefRecord(0xFF, 0) + RefRecord(0xFF, 0) + RefRecord(0xFE, 0)));
  EXPECT_EQ(CreateOne(), 1);
  EXPECT_EQ(Listed(), Hex(Contents({1})));
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, AMissingFileIsRefusedAndNotMade) {
  EXPECT_EQ(XLCreateReference(nullptr), -1);
  const std::string missing = folder_.File("missing.ref");
  EXPECT_EQ(XLCreateReference(missing.c_str()), -3);
  EXPECT_EQ(XLDeleteReference(missing.c_str(), 1), -3);
  EXPECT_EQ(XLReadReference(missing.c_str(), &buffer_, &size_, 1), 101);
  EXPECT_EQ(folder_.Count(), 1u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, AFileWithoutContentsOrWithEmptyOnesIsRefused) {
  Start({});
  EXPECT_EQ(CreateOne(), -12);
  EXPECT_EQ(Delete(1), -12);
  ASSERT_TRUE(WriteWorkbook(path_, "Other", {1}));
  EXPECT_EQ(CreateOne(), -11);
  EXPECT_EQ(Delete(1), -11);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, AStreamLeftBehindIsNotOverwrittenAndItsIdStaysListed) {
  ASSERT_TRUE(AddStream(path_, "1       ", {7}));
  EXPECT_EQ(CreateOne(), -24);
  EXPECT_EQ(Listed(), Hex(Contents({1})));
  EXPECT_EQ(ReadStream(path_, "1       "), Bytes{7});
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, DeletingWhatHasNoStreamLeavesTheFileAsItWas) {
  ASSERT_EQ(CreateOne(), 1);
  const Bytes before = FileBytes(path_);
  EXPECT_EQ(Delete(9), -24);
  EXPECT_EQ(FileBytes(path_), before);
  EXPECT_EQ(LiveBlocks(), 1u);
  EXPECT_EQ(BytesInUse(), 16u);  // the new image
}

TEST_F(ReferenceFileTest, DeletingAnUnlistedStreamDropsTheLastListedId) {
  ASSERT_EQ(CreateOne(), 1);
  ASSERT_EQ(CreateOne(), 2);
  ASSERT_TRUE(AddStream(path_, "9       ", {7}));
  EXPECT_EQ(Delete(9), 0);
  EXPECT_EQ(Listed(), Hex(Contents({1})));
  EXPECT_TRUE(HasStream("2       "));
  EXPECT_FALSE(HasStream("9       "));
}

TEST_F(ReferenceFileTest, TheCountRulesWhereTheWalkFoundOtherIds) {
  Start(Contents({1, 2, 3}, 1));  // more ids than counted: the new one is none of them
  EXPECT_EQ(CreateOne(), 4);
  EXPECT_EQ(Listed(), Hex(Contents({1, 4})));
  Start(Contents({1}, 3));
  EXPECT_EQ(CreateOne(), 2);
  EXPECT_EQ(Listed(), Hex(Contents({1, 0, 0, 2})));
  Start(Contents({1, 2}, 0));
  EXPECT_EQ(CreateOne(), 1);
  EXPECT_EQ(Listed(), Hex(Contents({1})));
}

TEST_F(ReferenceFileTest, TheCountRulesInADeletionToo) {
  const struct {
    Bytes before, after;
  } cases[] = {{Contents({9, 2, 3}, 2), Contents({2})},           // more ids than counted
               {Contents({1, 2, 3}, 2), Contents({1})},           // and none of them is the one
               {Contents({1}, 3), Contents({1, 0})},              // fewer
               {Contents({1, 9, 9, 3}), Contents({1, 3, 0})},     // all that are the one go
               {Contents({9, 1}, 0xFFFFFFFF), Contents({}, 0)}};  // below 0: as none
  for (const auto& one : cases) {
    Start(one.before);
    ASSERT_TRUE(AddStream(path_, "9       ", {7}));
    EXPECT_EQ(Delete(9), 0);
    EXPECT_EQ(Listed(), Hex(one.after));
    EXPECT_EQ(LiveBlocks(), 0u);
  }
}

TEST_F(ReferenceFileTest, RecordsThatAreNoIdsArePassedOver) {
  const Bytes other = {0x12, 0x10, 4, 0, 3, 0, 0, 0};
  Start(RefRecord(0xFF, 2) + other + RefRecord(0xFD, 1) + other + Bytes{0xFD, 0x00, 4, 0, 4, 0, 0, 0} +
        RefRecord(0xFD, 2) + RefRecord(0xFE, 0) + RefRecord(0xFD, 3));
  EXPECT_EQ(CreateOne(), 3);
  EXPECT_EQ(Listed(), Hex(Contents({1, 2, 3})));
}

TEST_F(ReferenceFileTest, DeletingFromNoListLeavesNoList) {
  ASSERT_TRUE(AddStream(path_, "9       ", {7}));
  EXPECT_EQ(Delete(9), 0);
  EXPECT_EQ(Listed(), Hex(Contents({})));
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, OneFreeBlockIsEnoughForASave) {
  Load(kNewStream);
  ASSERT_EQ(CreateTable(1), 0);
  while (LiveBlocks() < 8) ASSERT_NE(MEMORYALLOC(1), 0u);
  EXPECT_EQ(Save(1), 0);
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(ReferenceFileTest, NoNameIsAFileThatCantBeOpened) {
  EXPECT_EQ(XLDeleteReference(nullptr, 1), -3);
  EXPECT_EQ(XLReadReference(nullptr, &buffer_, &size_, 1), 101);
  Load(kNewStream);
  EXPECT_EQ(XLSaveReference(nullptr, &buffer_, &size_, 1), 101);
  EXPECT_EQ(BytesInUse(), 36u + 8u);
}

TEST_F(ReferenceFileTest, UntilASaveIsDoneTheLastFourBytesAreZero) {
  // The last record takes the write offset back into bytes that were laid down.
  const Bytes wide = Bytes{0xE5, 0x10, 0xFC, 0x7F} + Bytes(0x7FFC, 9);
  Load(RefRecord(0xFF, 0) + wide + Bytes{0xE5, 0x10, 0x00, 0x80} + Bytes(0x8000, 7));
  EXPECT_EQ(XLSaveReference(folder_.File("missing.ref").c_str(), &buffer_, &size_, 1), 101);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)),
            Hex(RefRecord(0xFF, 0) + Bytes{0xE5, 0x10, 0xFC, 0x7F, 0, 0, 0, 0}));
}

TEST_F(ReferenceFileTest, ACountThatNoPoolCanHoldIsRefusedWithTheImageHeld) {
  Start(Contents({1}, 0x7FFFFFFF));
  EXPECT_EQ(CreateOne(), -16);
  EXPECT_EQ(Delete(1), -16);
  EXPECT_EQ(LiveBlocks(), 2u);
  EXPECT_EQ(Listed(), Hex(Contents({1}, 0x7FFFFFFF)));
  Start(Contents({1}, 0xFFFFFFFF));  // below 0: as none
  EXPECT_EQ(CreateOne(), 1);
  EXPECT_EQ(Listed(), Hex(Contents({1})));
}

TEST_F(ReferenceFileTest, ContentsWithoutAnEndOrInACircleAreReadToTheirEnd) {
  Start(RefRecord(0xFF, 1) + RefRecord(0xFD, 1));
  EXPECT_EQ(CreateOne(), 2);
  EXPECT_EQ(Listed(), Hex(Contents({1, 2})));
  Start(RefRecord(0xFF, 1) + RefRecord(0xFD, 1) + Bytes{0xFF, 0xFE, 4, 0, 8, 0, 0, 0});
  EXPECT_EQ(CreateOne(), 2);
  EXPECT_EQ(Listed(), Hex(Contents({1, 2})));
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, AReadBufferHoldsTheStreamAndABufEnd) {
  ASSERT_EQ(CreateOne(), 1);
  EXPECT_EQ(Read(1), 0);
  EXPECT_EQ(size_, 36u);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(kNewStream + Bytes{0xF8, 0xFE, 0, 0}));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(ReferenceFileTest, ReadingTellsWhatIsMissing) {
  buffer_ = 5;
  EXPECT_EQ(Read(1), 102);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(BytesInUse(), 8u);  // the name
  MEMORYFREEALL();
  ASSERT_TRUE(AddStream(path_, "1       ", {}));
  EXPECT_EQ(Read(1), 103);
  EXPECT_EQ(size_, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, AFailedReadClearsTheBufferAndKeepsTheSizeUntilTheStreamIsOpen) {
  const Bytes file = FileBytes(path_);
  for (const int32_t result : {101, 102, -10}) {
    FillBut(result == -10 ? 0 : 9, file);
    buffer_ = 5;
    size_ = 77;
    const std::string path = result == 101 ? folder_.File("missing.ref") : path_;
    EXPECT_EQ(XLReadReference(path.c_str(), &buffer_, &size_, 1), result);
    EXPECT_EQ(buffer_, 0u) << result;
    EXPECT_EQ(size_, 77u) << result;
  }
}

TEST_F(ReferenceFileTest, AReferenceThatNoFreeSlotHoldsIsToldWithItsSize) {
  ASSERT_TRUE(AddStream(path_, "1       ", Bytes(1000)));
  uint32_t small = MEMORYALLOC(1);
  while (LiveBlocks() < 9) ASSERT_NE(MEMORYALLOC(1), 0u);
  MEMORYFREE(&small);  // for the name
  buffer_ = 5;
  EXPECT_EQ(Read(1), 5);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(size_, 1004u);
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(ReferenceFileTest, AFileThatIsOpenElsewhereCantBeOpened) {
  ASSERT_EQ(CreateOne(), 1);
  StmFFile elsewhere;
  ASSERT_EQ(elsewhere.Open(path_.c_str()), kStmDone);
  EXPECT_EQ(CreateOne(), -3);
  EXPECT_EQ(Delete(1), -3);
  EXPECT_EQ(Read(1), 101);
  Load(kNewStream);
  EXPECT_EQ(Save(1), 101);
  elsewhere.Abandon();
  EXPECT_EQ(Save(1), 0);
}

TEST_F(ReferenceFileTest, ReadingIntoNothingLeavesNothing) {
  ASSERT_EQ(CreateOne(), 1);
  EXPECT_EQ(XLReadReference(path_.c_str(), nullptr, nullptr, 1), 0);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFileTest, ASavedBufferIsCompactAndTwoSavesAreAlike) {
  ASSERT_EQ(CreateOne(), 1);
  ASSERT_EQ(Read(1), 0);
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(CreateTable(2), 0);
  ASSERT_EQ(Put(1, kKindTable, Value(1, 5)), 0);
  ASSERT_EQ(Save(1), 0);
  const Bytes expected = RefRecord(0xFF, 60) + TableHead(1) + Value(1, 5) + kTableEnd + TableHead(2) +
                         kTableEnd + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(1, 1, 8) +
                         Entry(1, 2, 42) + RefRecord(0xFE, 0);
  EXPECT_EQ(Hex(ReadStream(path_, "1       ").value_or(Bytes{})), Hex(expected));
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)), Hex(expected + Bytes{0xF8, 0xFE, 0, 0}));
  ASSERT_EQ(Save(1), 0);
  EXPECT_EQ(Hex(ReadStream(path_, "1       ").value_or(Bytes{})), Hex(expected));
  EXPECT_EQ(Listed(), Hex(Contents({1})));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(ReferenceFileTest, ASavedReferenceCanBeEditedAndSavedAgain) {
  ASSERT_EQ(CreateOne(), 1);
  ASSERT_EQ(Read(1), 0);
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(CreateGraph(1), 0);
  for (uint32_t round = 1; round <= 3; ++round) {
    ASSERT_EQ(Save(1), 0);
    MEMORYFREE(&buffer_);
    ASSERT_EQ(Read(1), 0);
    ASSERT_EQ(Put(1, kKindTable, Value(round, 5)), 0);
    ASSERT_EQ(Put(1, kKindGraph, Value(round, 5)), 0);
    EXPECT_EQ(Find(1, kKindTable).values, round);
    EXPECT_EQ(Find(1, kKindGraph).values, round);
  }
}

TEST_F(ReferenceFileTest, ASaveLeavesNothingOfWhatWasDeleted) {
  ASSERT_EQ(CreateOne(), 1);
  ASSERT_EQ(Read(1), 0);
  ASSERT_EQ(CreateTable(1), 0);
  ASSERT_EQ(CreateGraph(1), 0);
  const uint32_t head = NextRecord(Stream(), static_cast<uint32_t>(FindRefEntry(buffer_, 1, kKindTable)));
  MarkRecordSlack(Stream(), head);
  MarkRecordSlack(Stream(), NextRecord(Stream(), head));
  RetireRefEntry(buffer_, 1, kKindTable);
  ASSERT_EQ(Save(1), 0);
  EXPECT_EQ(Hex(ReadStream(path_, "1       ").value_or(Bytes{})),
            Hex(RefRecord(0xFF, 20) + GraphHead(1) + kGraphEnd + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) +
                Entry(2, 1, 8) + RefRecord(0xFE, 0)));
}

TEST_F(ReferenceFileTest, WhatAnEarlierTenantLeftBehindContentsIsNotRead) {
  const Bytes left = Contents({1, 2, 3});
  uint32_t tenant = MEMORYALLOC(static_cast<int32_t>(left.size()));
  CopyIn(OpenBlock(tenant), 0, left.data(), static_cast<uint32_t>(left.size()));
  MEMORYFREE(&tenant);
  Start(RefRecord(0xFF, 1) + RefRecord(0xFD, 1));
  EXPECT_EQ(CreateOne(), 2);
  EXPECT_EQ(Listed(), Hex(Contents({1, 2})));
}

TEST_F(ReferenceFileTest, ASaveUnderAnUnlistedIdMakesAStreamAlone) {
  Load(kNewStream);
  EXPECT_EQ(Save(7), 0);
  EXPECT_EQ(ReadStream(path_, "7       "), kNewStream);
  EXPECT_EQ(Listed(), Hex(Contents({})));
}

TEST_F(ReferenceFileTest, ASaveThatCantOpenTheFileKeepsTheCompactBufferAndTheName) {
  EXPECT_EQ(Save(1), 2);
  Load(kNewStream);
  ASSERT_EQ(CreateTable(1), 0);
  EXPECT_EQ(XLSaveReference(folder_.File("missing.ref").c_str(), &buffer_, &size_, 1), 101);
  EXPECT_EQ(size_, 66u);
  EXPECT_EQ(BytesInUse(), 66u + 8u);
  ASSERT_EQ(Save(1), 0);  // once more, elsewhere
  EXPECT_EQ(ReadStream(path_, "1       ")->size(), 62u);
}

TEST_F(ReferenceFileTest, AFullPoolIsToldAndLeavesTheFileWhole) {
  ASSERT_EQ(CreateOne(), 1);
  const Bytes before = FileBytes(path_);
  // What each call says with so many blocks free, and how many are live behind it.
  const struct {
    uint32_t free;
    int32_t create, remove, read;
    uint32_t after_create, after_remove, after_read;
  } cases[] = {{0, -13, -13, -10, 9, 9, 9}, {1, -16, -16, 0, 9, 9, 9}, {2, 2, 0, 0, 7, 7, 8}};
  for (const auto& one : cases) {
    FillBut(one.free, before);
    EXPECT_EQ(CreateOne(), one.create) << one.free;
    EXPECT_EQ(LiveBlocks(), one.after_create) << one.free;
    EXPECT_EQ(FileBytes(path_) == before, one.create < 0) << one.free;
    FillBut(one.free, before);
    EXPECT_EQ(Delete(1), one.remove) << one.free;
    EXPECT_EQ(LiveBlocks(), one.after_remove) << one.free;
    EXPECT_EQ(FileBytes(path_) == before, one.remove < 0) << one.free;
    FillBut(one.free, before);
    EXPECT_EQ(Read(1), one.read) << one.free;
    EXPECT_EQ(LiveBlocks(), one.after_read) << one.free;
  }
}

TEST_F(ReferenceFileTest, ListsThatHaveNoSlotAreToldWithTheBlocksHeld) {
  Start(Contents({1}, 26000000));  // the list has room in the last slots, and the image of it in none
  EXPECT_EQ(CreateOne(), -18);
  EXPECT_EQ(LiveBlocks(), 1u);
  EXPECT_EQ(BytesInUse(), 26000001u * 4);
  MEMORYFREEALL();
  EXPECT_EQ(Delete(1), -18);
  EXPECT_EQ(BytesInUse(), 26000000u * 4);
}

TEST_F(ReferenceFileTest, ASaveWithoutABlockForTheCopyChangesNothing) {
  ASSERT_EQ(CreateOne(), 1);
  const Bytes before = FileBytes(path_);
  ASSERT_EQ(Read(1), 0);
  while (LiveBlocks() < 9) MEMORYALLOC(1);
  EXPECT_EQ(Save(1), 4);
  EXPECT_EQ(U16At(Stream(), 32), 0xFEF8);
  EXPECT_EQ(FileBytes(path_), before);
}

TEST_F(ReferenceFileTest, EverySpoiltByteOfContentsEndsWithACode) {
  const Bytes good = Contents({1, 2});
  for (size_t at = 0; at < good.size(); ++at) {
    for (const uint8_t spoilt : Bytes{0x00, 0x7F, 0xFA, 0xFE, 0xFF}) {
      MEMORYFREEALL();
      Bytes bad = good;
      bad[at] = spoilt;
      ASSERT_TRUE(WriteWorkbook(path_, "Contents", bad));
      EXPECT_NE(CreateOne(), 0) << at;
      Delete(2);
      EXPECT_LE(LiveBlocks(), 2u) << at;
    }
  }
}

}  // namespace
}  // namespace tolvenar::testing
