// The storage fails under the exports of reference files: each call once, one after the other, and each result that only a failing
// storage brings about. The disk then holds the old file or the new one, nothing stays open, and the blocks held are as stated.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "foundation/memory_pool.h"
#include "platform/bytes.h"
#include "reference/reference_binding.h"
#include "reference/reference_file.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/biff_version.h"
#include "workbook/stm_file.h"
#include "workbook_faults/fake_disk.h"

namespace tolvenar::testing {
namespace {

constexpr char kPath[] = "store.ref";
constexpr char kFirst[] = "1       ";
constexpr char kSecond[] = "2       ";

const Bytes kEnd = {0xFE, 0x10, 4, 0, 0, 0, 0, 0};
const Bytes kId1 = {0xFD, 0x10, 4, 0, 1, 0, 0, 0};
const Bytes kId2 = {0xFD, 0x10, 4, 0, 2, 0, 0, 0};
const Bytes kNone = Bytes{0xFF, 0x10, 4, 0, 0, 0, 0, 0} + kEnd;
const Bytes kOne = Bytes{0xFF, 0x10, 4, 0, 1, 0, 0, 0} + kId1 + kEnd;
const Bytes kTwo = Bytes{0xFF, 0x10, 4, 0, 2, 0, 0, 0} + kId1 + kId2 + kEnd;
const Bytes kNewStream = Bytes{0xFF, 0x10, 4, 0, 8, 0, 0, 0, 0xDA, 0x10, 4, 0, 0, 0, 0, 0} +
                         Bytes{0xDB, 0x10, 4, 0, 0, 0, 0, 0} + kEnd;
const Bytes kOldStream = {0xFF, 0x10, 4, 0, 9, 9, 9, 9};

class ReferenceFaultsTest : public PoolTest {
 protected:
  void SetUp() override { Start(); }

  // A fresh disk with one listed reference.
  void Start() {
    MEMORYFREEALL();
    FakeDisk().Reset();
    FakeDisk().Put(kPath, "Contents", kOne);
    FakeDisk().Put(kPath, kFirst, kOldStream);
  }

  void ExpectOldDisk(const std::string& where) {
    EXPECT_EQ(FakeDisk().open_storages, 0) << where;
    EXPECT_EQ(FakeDisk().open_streams, 0) << where;
    EXPECT_EQ(FakeDisk().Read(kPath, "Contents"), kOne) << where;
    EXPECT_EQ(FakeDisk().Read(kPath, kFirst), kOldStream) << where;
    EXPECT_FALSE(FakeDisk().Read(kPath, kSecond).has_value()) << where;
  }

  // What a call says when the call of that number, from 0 on, among those of that name fails. (Creations are told apart by order.)
  struct Case {
    const char* call;
    int32_t result;
    uint32_t live;
  };
};

TEST_F(ReferenceFaultsTest, Create_EachFirstFailureHasItsCode) {
  for (const Case& one : {Case{"open", -3, 0},
                          {"open stream", -11, 0},
                          {"size", -12, 0},
                          {"read", -15, 0},
                          {"create stream", -20, 0},
                          {"write", -21, 0},
                          {"commit", -27, 0}}) {
    Start();
    FakeDisk().FailNext(one.call);
    EXPECT_EQ(XLCreateReference(kPath), one.result) << one.call;
    EXPECT_EQ(LiveBlocks(), one.live) << one.call;
    ExpectOldDisk(one.call);
  }
}

TEST_F(ReferenceFaultsTest, Create_AnyFailingCallLeavesTheOldFileOrOneThatIsWhole) {
  for (int k = 0;; ++k) {
    Start();
    FakeDisk().FailCall(k);
    const int32_t result = XLCreateReference(kPath);
    EXPECT_EQ(LiveBlocks(), 0u) << k;
    if (result == 2) {
      EXPECT_EQ(FakeDisk().Read(kPath, "Contents"), kTwo) << k;
      EXPECT_EQ(FakeDisk().Read(kPath, kSecond), kNewStream) << k;
    } else if (result == -24) {  // the id is listed all the same
      EXPECT_EQ(FakeDisk().Read(kPath, "Contents"), kTwo) << k;
      EXPECT_FALSE(FakeDisk().Read(kPath, kSecond).has_value()) << k;
    } else {
      ExpectOldDisk(std::to_string(k));
    }
    if (!FakeDisk().fired) break;
  }
}

TEST_F(ReferenceFaultsTest, Create_TheWritesOfTheNewStreamHaveTheirCodes) {
  std::vector<int32_t> results;
  for (int k = 0;; ++k) {
    Start();
    FakeDisk().FailCall(k);
    const int32_t result = XLCreateReference(kPath);
    if (!FakeDisk().fired) break;
    if (FakeDisk().calls[static_cast<size_t>(k)] == "write") results.push_back(result);
  }
  EXPECT_EQ(results, (std::vector<int32_t>{-21, -25, -8, -8, -26}));
}

TEST_F(ReferenceFaultsTest, Delete_EachFirstFailureHasItsCodeAndLeavesTheOldFile) {
  for (const Case& one : {Case{"open", -3, 0},
                          {"open stream", -11, 0},
                          {"size", -12, 0},
                          {"read", -15, 0},
                          {"destroy", -24, 1},
                          {"create stream", -20, 0},
                          {"write", -21, 0},
                          {"commit", -27, 0}}) {
    Start();
    FakeDisk().FailNext(one.call);
    EXPECT_EQ(XLDeleteReference(kPath, 1), one.result) << one.call;
    EXPECT_EQ(LiveBlocks(), one.live) << one.call;
    ExpectOldDisk(one.call);
  }
}

TEST_F(ReferenceFaultsTest, Delete_AnyFailingCallLeavesTheOldFileOrTheNew) {
  for (int k = 0;; ++k) {
    Start();
    FakeDisk().FailCall(k);
    if (XLDeleteReference(kPath, 1) != 0) {
      ExpectOldDisk(std::to_string(k));
    } else {
      EXPECT_EQ(FakeDisk().Read(kPath, "Contents"), kNone) << k;
      EXPECT_FALSE(FakeDisk().Read(kPath, kFirst).has_value()) << k;
    }
    if (!FakeDisk().fired) break;
  }
}

TEST_F(ReferenceFaultsTest, ShortReadsAndWritesAreFailures) {
  FakeDisk().ShortenNext("read");
  EXPECT_EQ(XLCreateReference(kPath), -15);
  FakeDisk().ShortenNext("write");
  EXPECT_EQ(XLCreateReference(kPath), -21);
  FakeDisk().ShortenNext("write");
  EXPECT_EQ(XLDeleteReference(kPath, 1), -21);
  ExpectOldDisk("");
}

TEST_F(ReferenceFaultsTest, EveryShortWriteHasTheCodeOfAFailedOne) {
  // The writes of a create, one after the other: "Contents", and the four records of the new stream.
  const int32_t results[] = {-21, -25, -8, -8, -26};
  for (int write = 0; write < 5; ++write) {
    Start();
    FakeDisk().ShortenNext("write", write);
    EXPECT_EQ(XLCreateReference(kPath), results[write]) << write;
    EXPECT_EQ(LiveBlocks(), 0u) << write;
    ExpectOldDisk(std::to_string(write));
  }
}

TEST_F(ReferenceFaultsTest, ShortTransfersOfAReferenceAreFailures) {
  uint32_t buffer = 7;
  uint32_t size = 7;
  FakeDisk().ShortenNext("read");
  EXPECT_EQ(XLReadReference(kPath, &buffer, &size, 1), 6);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(size, kOldStream.size() + 4);
  EXPECT_EQ(LiveBlocks(), 0u);
  buffer = StreamBuilder().Raw(kNewStream).Load(&size);
  FakeDisk().ShortenNext("write");
  EXPECT_EQ(XLSaveReference(kPath, &buffer, &size, 1), 6);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
  ExpectOldDisk("");
  BiffVersion = 6;
  FakeDisk().Put(kPath, "Workbook", StreamBuilder().Bof(6).Eof().Stream());
  FakeDisk().ShortenNext("read");
  EXPECT_EQ(XLGetReference(kPath), -7);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceFaultsTest, AStreamOfNoUsableSizeIsToldByWhoeverReadsIt) {
  uint32_t buffer = 0;
  uint32_t size = 0;
  BiffVersion = 6;
  FakeDisk().Put(kPath, "Workbook", {1});
  const struct {
    uint64_t size;
    int32_t contents, read, workbook;
  } cases[] = {{0x7FFFFFFF, -13, 5, -5},
               {0x80000000, -12, 103, -4},
               {0xFFFFFFFF, -12, 103, -4},
               {0x100000000, -12, 103, -4}};
  for (const auto& one : cases) {
    FakeDisk().size_reported = one.size;
    EXPECT_EQ(XLCreateReference(kPath), one.contents) << one.size;
    EXPECT_EQ(XLDeleteReference(kPath, 1), one.contents) << one.size;
    EXPECT_EQ(XLReadReference(kPath, &buffer, &size, 1), one.read) << one.size;
    EXPECT_EQ(XLGetReference(kPath), one.workbook) << one.size;
    EXPECT_EQ(LiveBlocks(), 0u) << one.size;
    EXPECT_EQ(buffer, 0u) << one.size;
  }
}

TEST_F(ReferenceFaultsTest, Save_AnyFailingCallLeavesTheOldFileOrTheNew) {
  for (int k = 0;; ++k) {
    Start();
    uint32_t size = 0;
    uint32_t buffer = StreamBuilder().Raw(kNewStream).Load(&size);
    FakeDisk().FailCall(k);
    if (XLSaveReference(kPath, &buffer, &size, 1) != 0) {
      ExpectOldDisk(std::to_string(k));
    } else {
      EXPECT_EQ(FakeDisk().Read(kPath, kFirst), kNewStream) << k;
      EXPECT_EQ(FakeDisk().Read(kPath, "Contents"), kOne) << k;
    }
    if (!FakeDisk().fired) break;
  }
}

// The calls so far that open, make or destroy something.
std::string Openings() {
  std::string text;
  for (const std::string& call : FakeDisk().calls) {
    const std::string kind = call.substr(0, 4);
    if (kind == "open" || kind == "crea" || kind == "dest") text += call + "; ";
  }
  return text;
}

TEST_F(ReferenceFaultsTest, EachExportOpensWhatItNeedsOnceAndInItsOrder) {
  ASSERT_EQ(XLCreateReference(kPath), 2);
  EXPECT_EQ(
      Openings(),
      "open 0x12; open stream Contents 0x12; create stream Contents 0x1012; create stream 2        0x12; ");
  Start();
  ASSERT_EQ(XLDeleteReference(kPath, 1), 0);
  EXPECT_EQ(Openings(),
            "open 0x12; open stream Contents 0x12; open stream 1        0x12; destroy 1       ; create "
            "stream Contents 0x1012; ");
  Start();
  uint32_t size = 0;
  uint32_t buffer = StreamBuilder().Raw(kNewStream).Load(&size);
  ASSERT_EQ(XLSaveReference(kPath, &buffer, &size, 1), 0);
  EXPECT_EQ(Openings(), "open 0x12; create stream 1        0x1012; ");
  Start();
  StmFFile file;
  ASSERT_EQ(MakeReferenceFile(&file, "new.ref"), 0);
  EXPECT_EQ(Openings(), "create 0x1012; create stream Contents 0x12; ");
  file.Abandon();
}

TEST_F(ReferenceFaultsTest, DamagedContentsEndWithACode) {
  std::mt19937 random(7);
  for (int round = 0; round < 4000; ++round) {
    Start();
    Bytes bad = kTwo;
    for (uint32_t i = 0; i <= random() % 6; ++i) bad[random() % bad.size()] = static_cast<uint8_t>(random());
    // The count rules what is written, so that one of millions writes megabytes: it is small, or too large for any pool.
    bad[6] = 0;
    bad[7] = static_cast<uint8_t>(random() % 3 * 0x40);
    if (round % 4 == 0) bad.resize(1 + random() % bad.size());
    FakeDisk().Put(kPath, "Contents", bad);
    const int32_t id = XLCreateReference(kPath);
    ASSERT_TRUE(id > 0 || id == -16 || id == -18 || id == -24) << round << " " << id;
    ASSERT_EQ(LiveBlocks(), id == -16 || id == -18 ? 1u : 0u) << round;
    const int16_t deleted = XLDeleteReference(kPath, 1);
    ASSERT_TRUE(deleted == 0 || deleted == -16 || deleted == -18) << round << " " << deleted;
    if (id > 0 && deleted == 0) {  // what was written is in order, however it was read
      const Bytes now = FakeDisk().Read(kPath, "Contents").value();
      ASSERT_EQ(now.size(), 8u * ReadU32(now.data() + 4) + 16) << round;
    }
  }
}

TEST_F(ReferenceFaultsTest, Read_EachFirstFailureHasItsCode) {
  for (const Case& one : {Case{"open", 101, 0},
                          {"open stream", 102, 1},
                          {"size", 103, 0},
                          {"read", 6, 0},
                          {"commit", 105, 1}}) {
    Start();
    uint32_t buffer = 7;
    uint32_t size = 7;
    FakeDisk().FailNext(one.call);
    EXPECT_EQ(XLReadReference(kPath, &buffer, &size, 1), one.result) << one.call;
    EXPECT_EQ(LiveBlocks(), one.live) << one.call;
    EXPECT_EQ(buffer != 0, one.result == 105) << one.call;
    if (buffer != 0) {
      EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(kOldStream + Bytes(4)));
    }
    ExpectOldDisk(one.call);
  }
}

TEST_F(ReferenceFaultsTest, Save_EachFirstFailureHasItsCodeAndLeavesTheOldFile) {
  for (const Case& one :
       {Case{"open", 101, 2}, {"create stream", 103, 2}, {"write", 6, 0}, {"commit", 105, 1}}) {
    Start();
    uint32_t size = 0;
    uint32_t buffer = StreamBuilder().Raw(kNewStream).Load(&size);
    FakeDisk().FailNext(one.call);
    EXPECT_EQ(XLSaveReference(kPath, &buffer, &size, 1), one.result) << one.call;
    EXPECT_EQ(LiveBlocks(), one.live) << one.call;
    EXPECT_EQ(buffer == 0, one.result == 6) << one.call;
    ExpectOldDisk(one.call);
    if (buffer == 0) continue;
    EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(kNewStream + Bytes(4))) << one.call;
    EXPECT_EQ(XLSaveReference(kPath, &buffer, &size, 1), 0) << one.call;
    EXPECT_EQ(FakeDisk().Read(kPath, kFirst), kNewStream) << one.call;
  }
}

TEST_F(ReferenceFaultsTest, ANewFileHasACodeForEachStep) {
  for (const Case& one : {Case{"create", -4, 0}, {"create stream", -5, 0}, {"write", -8, 0}}) {
    Start();
    StmFFile file;
    FakeDisk().FailNext(one.call);
    EXPECT_EQ(MakeReferenceFile(&file, "new.ref"), one.result) << one.call;
    file.Abandon();
    EXPECT_EQ(LiveBlocks(), one.live) << one.call;
  }
  const int32_t results[] = {-8, -8, -9, 0};
  for (int write = 0; write < 4; ++write) {
    Start();
    StmFFile file;
    FakeDisk().ShortenNext("write", write);
    EXPECT_EQ(MakeReferenceFile(&file, "new.ref"), results[write]) << write;
    file.Abandon();
    EXPECT_EQ(LiveBlocks(), 0u) << write;
  }
  Start();
  while (LiveBlocks() < 9) ASSERT_NE(MEMORYALLOC(1), 0u);
  StmFFile file;
  EXPECT_EQ(MakeReferenceFile(&file, "new.ref"), -6);
  file.Abandon();
}

TEST_F(ReferenceFaultsTest, GetReference_EachFirstFailureHasItsCode) {
  BiffVersion = 6;
  for (const Case& one :
       {Case{"open", -2, 0}, {"open stream", -3, 0}, {"size", -4, 0}, {"read", -7, 0}, {"commit", -9, 1}}) {
    Start();
    FakeDisk().Put(kPath, "Workbook", StreamBuilder().Bof(6).Eof().Stream());
    FakeDisk().FailNext(one.call);
    EXPECT_EQ(XLGetReference(kPath), one.result) << one.call;
    EXPECT_EQ(LiveBlocks(), one.live) << one.call;
    ExpectOldDisk(one.call);
  }
}

}  // namespace
}  // namespace tolvenar::testing
