// The storage fails: each call once, one after the other, under each export that uses it; and each result
// that only a failing storage brings about. The disk then holds the old file or the new one, nothing stays
// open, and the blocks held are as stated.
#include <gtest/gtest.h>

#include "foundation/memory_pool.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/biff_version.h"
#include "workbook/open_workbook.h"
#include "workbook/save_workbook.h"
#include "workbook/sheet_table.h"
#include "workbook/stm_file.h"
#include "workbook/two_sheets.h"
#include "workbook_faults/fake_disk.h"

namespace tolvenar::testing {
namespace {

constexpr char kPath[] = "book.xls";
constexpr int32_t kFault = static_cast<int32_t>(0x80031234u);
const Bytes kOld = {1, 2, 3};
const Bytes kBufEnd = {0xF8, 0xFE, 0x00, 0x00};

class StorageFaultsTest : public PoolTest {
 protected:
  void SetUp() override { Start(true); }

  // A fresh disk, with the old workbook on it or without, and the two sheets in memory.
  void Start(bool exists) {
    MEMORYFREEALL();
    FakeDisk().Reset();
    if (exists) {
      FakeDisk().Put(kPath, "Workbook", kOld);
      FakeDisk().Put(kPath, "Notes", {7});
    }
    BiffVersion = 6;
    buffer = TwoSheets::Builder().Load(&size);
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  }

  int16_t Save() { return XLSaveFile(kPath, &buffer, &table, &size); }

  // Nothing is left open, and on the disk stands what stood there before.
  void ExpectOldDisk(bool exists) {
    EXPECT_EQ(FakeDisk().open_storages, 0);
    EXPECT_EQ(FakeDisk().open_streams, 0);
    EXPECT_EQ(FakeDisk().files.size(), exists ? 1u : 0u);
    if (exists) {
      EXPECT_EQ(FakeDisk().Read(kPath, "Workbook"), kOld);
      EXPECT_EQ(FakeDisk().Read(kPath, "Notes"), Bytes{7});
    }
  }

  // The buffer is compact, without a BUFEND, and still the caller's.
  void ExpectCompact(uint32_t live_blocks) {
    EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(TwoSheets::Builder().Stream() + Bytes(4)));
    EXPECT_EQ(LiveBlocks(), live_blocks);
  }

  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
};

// Results of XLSaveFile.

TEST_F(StorageFaultsTest, Save101_TheExistingFileCantBeOpened) {
  FakeDisk().FailNext("open");
  EXPECT_EQ(Save(), 101);
  ExpectOldDisk(true);
  ExpectCompact(2);
}

TEST_F(StorageFaultsTest, Save102_TheOldStreamCantBeDeleted) {
  for (const char* call : {"open stream", "destroy"}) {
    Start(true);
    FakeDisk().FailNext(call);
    EXPECT_EQ(Save(), 102) << call;
    ExpectOldDisk(true);
    ExpectCompact(2);
    EXPECT_NE(table, 0u);
  }
}

TEST_F(StorageFaultsTest, Save111_TheNewFileCantBeCreated) {
  Start(false);
  FakeDisk().FailNext("create");
  EXPECT_EQ(Save(), 111);
  ExpectOldDisk(false);
  ExpectCompact(2);
}

TEST_F(StorageFaultsTest, Save111_TheFileAppearsBetweenTheTestAndTheOpening) {
  FakeDisk().exists_lies = true;
  EXPECT_EQ(Save(), 111);
  ExpectOldDisk(true);
  ExpectCompact(2);
}

TEST_F(StorageFaultsTest, Save103_TheStreamCantBeCreated_OldFileStays) {
  for (bool exists : {true, false}) {
    Start(exists);
    FakeDisk().FailNext("create stream");
    EXPECT_EQ(Save(), 103);
    ExpectOldDisk(exists);
    ExpectCompact(1);
    EXPECT_EQ(table, 0u);
  }
}

TEST_F(StorageFaultsTest, Save6_FailedOrShortWrite_BlockIsFreedAndBeginsWith0_OldFileStays) {
  for (bool exists : {true, false}) {
    for (bool shorten : {true, false}) {
      Start(exists);
      const uint32_t before = buffer;
      shorten ? FakeDisk().ShortenNext("write") : FakeDisk().FailNext("write");
      EXPECT_EQ(Save(), 6);
      ExpectOldDisk(exists);
      EXPECT_EQ(table, 0u);
      EXPECT_EQ(LiveBlocks(), 0u);
      EXPECT_NE(buffer, 0u);
      EXPECT_NE(buffer, before);
      EXPECT_EQ(size, 188u);
      EXPECT_EQ(BlockBytes(buffer)[0], 0);
      EXPECT_EQ(BlockBytes(buffer)[1], 0x08);
    }
  }
}

TEST_F(StorageFaultsTest, Save105_TheCommitFails_OldFileStaysAndNo0IsAnswered) {
  for (bool exists : {true, false}) {
    Start(exists);
    FakeDisk().FailNext("commit");
    EXPECT_EQ(Save(), 105);
    ExpectOldDisk(exists);
    ExpectCompact(1);
    EXPECT_EQ(table, 0u);
  }
}

TEST_F(StorageFaultsTest, Save_CommitOfTheStreamIsOfNoAccount) {
  FakeDisk().FailNext("commit stream");
  EXPECT_EQ(Save(), 0);
  EXPECT_TRUE(FakeDisk().fired);
  EXPECT_EQ(FakeDisk().Read(kPath, "Workbook"), TwoSheets::Builder().Stream());
}

TEST_F(StorageFaultsTest, Save_EachCallFailsOnce_TheDiskHoldsTheOldFileOrTheNewOne) {
  for (bool exists : {true, false}) {
    for (int k = 0;; ++k) {
      Start(exists);
      FakeDisk().FailCall(k);
      const int16_t result = Save();
      if (result == 0) {
        EXPECT_EQ(FakeDisk().Read(kPath, "Workbook"), TwoSheets::Builder().Stream()) << k;
        EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(TwoSheets::Builder().Stream() + kBufEnd));
        EXPECT_EQ(FakeDisk().open_storages, 0);
      } else {
        ExpectOldDisk(exists);
      }
      EXPECT_EQ(LiveBlocks(), result == 6 ? 0u : table != 0 ? 2u : 1u) << k;
      if (!FakeDisk().fired) break;
    }
  }
}

TEST_F(StorageFaultsTest, SaveAgainAfterEachFailure_Works) {
  for (const char* call : {"open", "destroy", "create stream", "commit"}) {
    Start(true);
    FakeDisk().FailNext(call);
    ASSERT_NE(Save(), 0) << call;
    if (table == 0) {
      ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
    }
    EXPECT_EQ(Save(), 0) << call;
    EXPECT_EQ(FakeDisk().Read(kPath, "Workbook"), TwoSheets::Builder().Stream() + Bytes(4)) << call;
  }
}

// Results of DebugSaveFile.

TEST_F(StorageFaultsTest, DebugSave_EachFailure) {
  const struct {
    const char* call;
    bool exists;
    int16_t want;
  } kCases[] = {{"open", true, 102},    {"open stream", true, 102},   {"destroy", true, 102},
                {"create", false, 102}, {"create stream", true, 103}, {"create stream", false, 103},
                {"write", true, 6},     {"write", false, 6},          {"commit", true, 105},
                {"commit", false, 105}};
  for (const auto& row : kCases) {
    Start(row.exists);
    FakeDisk().FailNext(row.call);
    EXPECT_EQ(DebugSaveFile(kPath, 3), row.want) << row.call;
    EXPECT_TRUE(FakeDisk().fired) << row.call;
    ExpectOldDisk(row.exists);
    EXPECT_EQ(LiveBlocks(), 2u);
  }
}

TEST_F(StorageFaultsTest, DebugSave_ShortWrite) {
  FakeDisk().ShortenNext("write");
  EXPECT_EQ(DebugSaveFile(kPath, 3), 6);
  ExpectOldDisk(true);
}

// Results of XLOpenFile.

class OpenFaultsTest : public StorageFaultsTest {
 protected:
  void SetUp() override {
    Start(true);
    FakeDisk().Put(kPath, "Workbook", TwoSheets::Builder().Stream());
    MEMORYFREEALL();
    buffer = size = 0xDEAD;
  }

  int16_t Open() {
    const int16_t result = XLOpenFile(kPath, &buffer, &size);
    EXPECT_EQ(FakeDisk().open_storages, 0);
    EXPECT_EQ(FakeDisk().open_streams, 0);
    return result;
  }
};

TEST_F(OpenFaultsTest, Open6_FailedOrShortRead_BlockIsFreedAndTheVariable0) {
  FakeDisk().FailNext("read");
  EXPECT_EQ(Open(), 6);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
  buffer = 0xDEAD;
  FakeDisk().ShortenNext("read");
  EXPECT_EQ(Open(), 6);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(OpenFaultsTest, Open103_TheSizeCantBeHad) {
  FakeDisk().FailNext("size");
  EXPECT_EQ(Open(), 103);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(size, 0u);
}

TEST_F(OpenFaultsTest, Open103_SizesThatAreNotAbove0AsSignedValues) {
  const struct {
    uint64_t reported;
    uint32_t want;
  } kCases[] = {{0x80000000u, 0x80000000u}, {0xFFFFFFFFu, 0xFFFFFFFFu}, {0x100000000u, 0}, {0x100000010u, 0}};
  for (const auto& row : kCases) {
    FakeDisk().size_reported = row.reported;
    EXPECT_EQ(Open(), 103) << row.reported;
    EXPECT_EQ(size, row.want);
    EXPECT_EQ(buffer, 0u);
  }
}

TEST_F(OpenFaultsTest, Open5_SizesThatNoSlotHolds) {
  for (uint32_t reported : {104999997u, 0x7FFFFFFBu, 0x7FFFFFFCu, 0x7FFFFFFFu}) {
    FakeDisk().size_reported = reported;
    EXPECT_EQ(Open(), 5) << reported;
    EXPECT_EQ(size, reported + 4);
    EXPECT_EQ(buffer, 0u);
    EXPECT_EQ(LiveBlocks(), 0u);
  }
}

TEST_F(OpenFaultsTest, Open105_ClosingTheFileFails_BlockIsLiveAndLacksItsBufEnd) {
  FakeDisk().Put(kPath, "Workbook", TwoSheets::Builder().Stream() + Bytes(9, 0xCC));
  FakeDisk().FailNext("commit");
  EXPECT_EQ(Open(), 105);
  EXPECT_EQ(size, 197u);
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(TwoSheets::Builder().Stream() + Bytes(9, 0xCC) + Bytes(4)));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(OpenFaultsTest, Open_EachCallFailsOnce_NothingStaysOpen) {
  const Bytes before = *FakeDisk().Read(kPath, "Workbook");
  for (int k = 0;; ++k) {
    MEMORYFREEALL();
    FakeDisk().FailCall(k);
    const int16_t result = Open();
    EXPECT_EQ(LiveBlocks(), result == 0 || result == 105 ? 1u : 0u) << k;
    EXPECT_EQ(FakeDisk().Read(kPath, "Workbook"), before);
    if (!FakeDisk().fired) break;
  }
}

// Results of the wrappers.

TEST_F(StorageFaultsTest, PlatformFailuresAreHandedOn) {
  StmFFile file;
  StmFItem* item = nullptr;
  ASSERT_EQ(file.Open(kPath), 0);
  FakeDisk().FailNext("open stream");
  EXPECT_EQ(file.OpenStream("Workbook", &item), kFault);
  FakeDisk().FailNext("create stream");
  EXPECT_EQ(file.CreateStream("New", &item, false), kFault);
  FakeDisk().FailNext("open stream");
  EXPECT_EQ(file.DeleteStream("Workbook"), kFault);
  FakeDisk().FailNext("destroy");
  EXPECT_EQ(file.DeleteStream("Workbook"), kFault);
  EXPECT_EQ(item, nullptr);
  EXPECT_EQ(FakeDisk().open_streams, 0);
}

TEST_F(StorageFaultsTest, SuccessOtherThan0_IsNoneForAnOpenedStreamAndOneForACreatedOne_OnPurpose) {
  StmFFile file;
  StmFItemHolder stream;
  ASSERT_EQ(file.Open(kPath), 0);
  FakeDisk().success = 1;
  EXPECT_EQ(file.OpenStream("Workbook", &stream.item), 1);
  EXPECT_EQ(stream.item, nullptr);
  EXPECT_EQ(file.itemCount, 0);
  StmFItem own;
  StmFItem* mine = &own;
  EXPECT_EQ(file.OpenStream("Workbook", &mine), 1);
  EXPECT_EQ(own.stream, nullptr);
  EXPECT_EQ(file.CreateStream("New", &stream.item, false), 0);
  EXPECT_EQ(file.firstItem, stream.item);
  EXPECT_EQ(file.itemCount, 1);
}

TEST_F(StorageFaultsTest, TransferFailuresAreHandedOn_AndLeaveTheOutValueAlone) {
  StmFFile file;
  StmFItemHolder stream;
  uint8_t bytes[4] = {};
  uint32_t moved = 99;
  ASSERT_EQ(file.Open(kPath), 0);
  ASSERT_EQ(file.OpenStream("Workbook", &stream.item), 0);
  FakeDisk().FailNext("read");
  EXPECT_EQ(stream.item->Read(bytes, 4, &moved), kFault);
  EXPECT_EQ(stream.item->requested, 4u);
  FakeDisk().FailNext("write");
  EXPECT_EQ(stream.item->Write(bytes, 3, &moved), kFault);
  FakeDisk().FailNext("size");
  EXPECT_EQ(stream.item->QuerySize(&moved), kFault);
  FakeDisk().FailNext("size");
  EXPECT_EQ(stream.item->GetSize(), 0u);
  EXPECT_EQ(moved, 99u);
}

TEST_F(StorageFaultsTest, QuerySize_OfMoreThan32Bits) {
  StmFFile file;
  StmFItemHolder stream;
  uint32_t size_read = 99;
  ASSERT_EQ(file.Open(kPath), 0);
  ASSERT_EQ(file.OpenStream("Workbook", &stream.item), 0);
  FakeDisk().size_reported = 0xFFFFFFFFu;
  EXPECT_EQ(stream.item->QuerySize(&size_read), 0);
  EXPECT_EQ(size_read, 0xFFFFFFFFu);
  FakeDisk().size_reported = 0x100000000u;
  size_read = 99;
  EXPECT_EQ(stream.item->QuerySize(&size_read), static_cast<int32_t>(0x80000F0Au));
  EXPECT_EQ(size_read, 99u);
  EXPECT_EQ(stream.item->GetSize(), 0u);
}

TEST_F(StorageFaultsTest, Close_TellsAFailedCommit_AndHasReleasedEverything) {
  StmFFile file;
  ASSERT_EQ(file.Open(kPath), 0);
  FakeDisk().FailNext("commit");
  EXPECT_EQ(file.Close(), kFault);
  EXPECT_EQ(file.storage, nullptr);
  EXPECT_EQ(FakeDisk().open_storages, 0);
}

}  // namespace
}  // namespace tolvenar::testing
