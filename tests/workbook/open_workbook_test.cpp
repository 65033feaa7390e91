// XLOpenFile and XLFreeHandle: what is read, where it is cut, each result with the state of the out values.
#include "workbook/open_workbook.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "foundation/memory_pool.h"
#include "support/compound_builder.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "support/temp_file.h"
#include "support/workbook_file.h"
#include "workbook/biff_version.h"
#include "workbook/stm_file.h"
#include "workbook/two_sheets.h"

namespace tolvenar::testing {
namespace {

const Bytes kBufEnd = {0xF8, 0xFE, 0x00, 0x00};

class OpenWorkbookTest : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    BiffVersion = 0;
    path = folder.File("book.xls");
  }

  // Opens a file that holds the stream.
  int16_t Open(const Bytes& stream, const char* name = "Workbook") {
    EXPECT_TRUE(WriteWorkbook(path, name, stream));
    return XLOpenFile(path.c_str(), &buffer, &size);
  }

  // What is in the buffer after the stream was opened without failure.
  std::string Opened(const Bytes& stream) {
    MEMORYFREEALL();
    EXPECT_EQ(Open(stream), 0);
    return Hex(BlockContents(buffer, size));
  }

  TempFolder folder;
  std::string path;
  uint32_t buffer = 0xDEAD;
  uint32_t size = 0xBEEF;
};

StreamBuilder OneSheet() {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Number(0, 0, 15, 1.5).Eof();
  return book;
}

TEST_F(OpenWorkbookTest, ExactRecords_SizeIsTheStreamsPlus4) {
  EXPECT_EQ(Open(TwoSheets::Builder().Stream()), 0);
  EXPECT_EQ(size, 188u);
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(TwoSheets::Builder().Stream() + kBufEnd));
  EXPECT_EQ(MEMORYSIZE(buffer), 188u);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(OpenWorkbookTest, ZerosBehindTheLastEof_AreCutOff) {
  EXPECT_EQ(Opened(OneSheet().Stream() + Bytes(500)), Hex(OneSheet().Stream() + kBufEnd));
  EXPECT_EQ(MEMORYSIZE(buffer), size);
}

TEST_F(OpenWorkbookTest, AnyFillerBehindTheLastEof_IsCutOff) {
  EXPECT_EQ(Opened(OneSheet().Stream() + Bytes(37, 0xCC)), Hex(OneSheet().Stream() + kBufEnd));
  const Bytes chart_bof = {0x09, 0x10, 0x00, 0x00};  // the chart bit: no BOF
  EXPECT_EQ(Opened(OneSheet().Stream() + chart_bof), Hex(OneSheet().Stream() + kBufEnd));
}

TEST_F(OpenWorkbookTest, EofAtDepth0_FollowedByABof_TheWalkGoesOn) {
  StreamBuilder book = OneSheet();
  book.Bof(6, kChart).Eof();
  EXPECT_EQ(Opened(book.Stream() + Bytes(9)), Hex(book.Stream() + kBufEnd));
}

TEST_F(OpenWorkbookTest, EofFollowedByAnObj_TheWalkGoesOnEvenAtDepth0) {
  for (uint16_t type : {uint16_t{0x005D}, uint16_t{0x205D}}) {
    StreamBuilder book = OneSheet();
    book.Record(type, Bytes(3)).Record(0x00EC, Bytes(5)).Eof();
    EXPECT_EQ(Opened(book.Stream() + Bytes(9)), Hex(book.Stream() + kBufEnd));
  }
  EXPECT_EQ(Opened(OneSheet().Record(0x105D, Bytes(3)).Stream()), Hex(OneSheet().Stream() + kBufEnd));
}

TEST_F(OpenWorkbookTest, EofAtADepthAbove0_DoesNotEndTheStream) {
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Bof(6, kChart).Eof().Number(0, 0, 15, 1.5).Eof();
  EXPECT_EQ(Opened(book.Stream() + Bytes(9)), Hex(book.Stream() + kBufEnd));
}

TEST_F(OpenWorkbookTest, EofMoreThanBofs_DepthBelow0_EndsTheStream) {
  StreamBuilder book;
  book.Record(0x0042).Eof();
  EXPECT_EQ(Opened(book.Stream() + Bytes(20, 0xCC)), Hex(book.Stream() + kBufEnd));
}

TEST_F(OpenWorkbookTest, NoEof_NoCut) {
  const Bytes stream = StreamBuilder().Bof(6).Number(0, 0, 15, 1.5).Stream();
  EXPECT_EQ(Opened(stream), Hex(stream + kBufEnd));
}

TEST_F(OpenWorkbookTest, EofInTheLastByte_IsNotExamined_NoCut) {
  const Bytes one_byte = StreamBuilder().Bof(6).Stream() + Bytes{0x0A};
  EXPECT_EQ(Opened(one_byte), Hex(one_byte + kBufEnd));
  EXPECT_EQ(size, 25u);
}

TEST_F(OpenWorkbookTest, EofCutInHalf_IsCompletedByTheZerosBehindIt) {
  const Bytes half = StreamBuilder().Bof(6).Stream() + Bytes{0x0A, 0x00};
  EXPECT_EQ(Opened(half), Hex(half + Bytes{0, 0} + kBufEnd));
}

TEST_F(OpenWorkbookTest, EofThatClaimsAPayloadBehindTheEnd_IsFilledWithZeros) {
  uint32_t soiled = MEMORYALLOC(256);
  MEMORYSET1(&soiled, 256, 0x09);  // an earlier tenant's BOF behind the EOF: the stream doesn't go on with it
  MEMORYFREE(&soiled);
  const Bytes stream = StreamBuilder().Bof(6).Stream() + Bytes{0x0A, 0x00, 0x20, 0x00, 1, 2};
  EXPECT_EQ(Open(stream), 0);
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(stream + Bytes(30) + kBufEnd));
}

TEST_F(OpenWorkbookTest, EofThatClaimsJustTheRoomOfTheBufEnd_TheStreamEndsThere) {
  uint32_t soiled = MEMORYALLOC(256);
  MEMORYSET1(&soiled, 256, 0x09);
  MEMORYFREE(&soiled);
  const Bytes stream = StreamBuilder().Bof(6).Stream() + Bytes{0x0A, 0x00, 0x04, 0x00};
  EXPECT_EQ(Open(stream), 0);
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(stream + Bytes(4) + kBufEnd));
}

TEST_F(OpenWorkbookTest, OneByteStream) {
  EXPECT_EQ(Opened({0x0A}), Hex(Bytes{0x0A} + kBufEnd));
  EXPECT_EQ(size, 5u);
}

TEST_F(OpenWorkbookTest, DetourRingsInTheFile_EndTheScan) {
  EXPECT_EQ(Open(StreamBuilder().Detour(0).Stream()), 0);
  EXPECT_EQ(Open(StreamBuilder().Detour(8).Detour(0).Stream()), 0);
  EXPECT_EQ(Open(StreamBuilder().Bof(6).Detour(0xFFFFFFF0).Stream()), 0);
  EXPECT_EQ(LiveBlocks(), 3u);
}

// The generation.

TEST_F(OpenWorkbookTest, StreamBook_InAnyCase_IsVersion5) {
  for (const char* name : {"Book", "book", "BOOK"}) {
    BiffVersion = 0;
    EXPECT_EQ(Open(OneSheet().Stream(), name), 0);
    EXPECT_EQ(BiffVersion, 5) << name;
  }
}

TEST_F(OpenWorkbookTest, StreamWorkbook_IsVersion6) {
  for (const char* name : {"Workbook", "WORKBOOK"}) {
    BiffVersion = 0;
    EXPECT_EQ(Open(OneSheet().Stream(), name), 0);
    EXPECT_EQ(BiffVersion, 6) << name;
  }
}

TEST_F(OpenWorkbookTest, BothStreams_WorkbookIsRead) {
  ASSERT_TRUE(WriteWorkbook(path, "Book", {1, 2, 3}));
  ASSERT_TRUE(AddStream(path, "Workbook", OneSheet().Stream()));
  EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, &size), 0);
  EXPECT_EQ(BiffVersion, 6);
  EXPECT_EQ(BlockContents(buffer, 2), (Bytes{0x09, 0x08}));
}

TEST_F(OpenWorkbookTest, NothingOpened_VersionStays) {
  BiffVersion = 42;
  EXPECT_EQ(Open({1, 2}, "Other"), 102);
  EXPECT_EQ(XLOpenFile(folder.File("missing").c_str(), &buffer, &size), 101);
  EXPECT_EQ(BiffVersion, 42);
}

TEST_F(OpenWorkbookTest, EmptyStream_StillSetsTheVersion) {
  EXPECT_EQ(Open({}, "Book"), 103);
  EXPECT_EQ(BiffVersion, 5);
}

// The file.

TEST_F(OpenWorkbookTest, FileIsClosedAndUnchangedAfterwards) {
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", OneSheet().Stream()));
  const Bytes before = FileBytes(path);
  const auto an_hour_ago = std::filesystem::last_write_time(path) - std::chrono::hours(1);
  std::filesystem::last_write_time(path, an_hour_ago);
  EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, &size), 0);
  EXPECT_EQ(FileBytes(path), before);
  EXPECT_EQ(std::filesystem::last_write_time(path), an_hour_ago);
  EXPECT_EQ(folder.Count(), 1u);
  EXPECT_TRUE(std::filesystem::remove(path));
}

TEST_F(OpenWorkbookTest, PathWithBytesAbove0x7F) {
  path = folder.File("b\xC3\xBC\x63h.xls");
#if defined(_WIN32)
  GTEST_SKIP() << "the system takes the widened name, not the code page's";
#endif
  EXPECT_EQ(Open(OneSheet().Stream()), 0);
}

TEST_F(OpenWorkbookTest, TwoWorkbooksAtOnce) {
  uint32_t other = 0, other_size = 0;
  EXPECT_EQ(Open(OneSheet().Stream()), 0);
  EXPECT_EQ(XLOpenFile(path.c_str(), &other, &other_size), 0);
  EXPECT_NE(buffer, other);
  EXPECT_EQ(BlockContents(buffer, size), BlockContents(other, other_size));
}

TEST_F(OpenWorkbookTest, NullOutPointers_AreNotWritten_AndNothingIsKept) {
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", OneSheet().Stream()));
  EXPECT_EQ(XLOpenFile(path.c_str(), nullptr, &size), 0);
  EXPECT_EQ(LiveBlocks(), 0u);
  EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, nullptr), 0);
  EXPECT_EQ(LiveBlocks(), 1u);
}

// All results of XLOpenFile that a file can bring about.

TEST_F(OpenWorkbookTest, Result101_NoSuchFile) {
  EXPECT_EQ(XLOpenFile(folder.File("missing.xls").c_str(), &buffer, &size), 101);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(size, 0xBEEFu);
  EXPECT_EQ(XLOpenFile(nullptr, &buffer, &size), 101);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(OpenWorkbookTest, Result101_NoCompoundFile) {
  PutFile(path, OneSheet().Stream());
  EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, &size), 101);
  EXPECT_EQ(buffer, 0u);
}

TEST_F(OpenWorkbookTest, Result101_OpenElsewhere) {
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", OneSheet().Stream()));
  StmFFile elsewhere;
  ASSERT_EQ(elsewhere.Open(path.c_str()), 0);
  EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, &size), 101);
  EXPECT_EQ(elsewhere.Close(), 0);
  EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, &size), 0);
}

TEST_F(OpenWorkbookTest, Result102_NeitherStream) {
  EXPECT_EQ(Open({1, 2, 3}, "Contents"), 102);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(size, 0xBEEFu);
}

TEST_F(OpenWorkbookTest, Result103_EmptyStream) {
  EXPECT_EQ(Open({}), 103);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(size, 0u);
}

TEST_F(OpenWorkbookTest, Result5_NoPoolBlock_EachNumberOfBlocksTaken) {
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", OneSheet().Stream()));
  for (int taken = 0; taken <= 9; ++taken) {
    const bool fits = taken < 9;
    EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, &size), fits ? 0 : 5) << taken;
    EXPECT_EQ(LiveBlocks(), static_cast<uint32_t>(fits ? taken + 1 : 9));
    if (fits) MEMORYFREE(&buffer);
    MEMORYALLOC(1);
  }
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(size, OneSheet().Here() + 4);
}

TEST_F(OpenWorkbookTest, Result2_CutBehindEverySlot_BlockIsFreedAndTheVariableStale) {
  StreamBuilder book;
  book.Bof(6).Raw({0x0A, 0x00, 0xFF, 0xFF, 0, 0});
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", book.Stream()));
  while (MEMORYALLOC(1000) != 0) continue;  // slots 3 to 9; the stream gets slot 1
  EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, &size), 2);
  EXPECT_NE(buffer, 0u);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 0);
  EXPECT_EQ(size, 20u + 4 + 65535 + 4) << "stored before the cut is tried";
  EXPECT_EQ(LiveBlocks(), 7u);
}

#if !defined(_WIN32)

// A file whose stream claims another size than it has, at a place of its directory entry.
void ClaimSize(CompoundImage image, uint32_t low, uint32_t high, const std::string& path) {
  constexpr size_t kSizeField = 120;
  image.PutU32(image.EntryAt(1) + kSizeField, low);
  image.PutU32(image.EntryAt(1) + kSizeField + 4, high);
  PutFile(path, image.bytes);
}

TEST_F(OpenWorkbookTest, StreamThatClaimsMoreThanTheFile_IsThereAndFailsAtItsReading) {
  CompoundBuilder file;
  file.AddStream("Workbook", Bytes(5000));
  const struct {
    uint32_t claim;
    int16_t result;
    uint32_t size;
  } kClaims[] = {{100000, 6, 100004},         {104999996, 6, 105000000},     {104999997, 5, 105000001},
                 {0x7FFFFFFF, 5, 0x80000003}, {0x80000000, 103, 0x80000000}, {0xFFFFFFFF, 103, 0xFFFFFFFF}};
  for (const auto& claim : kClaims) {
    ClaimSize(file.Build(), claim.claim, 0, path);
    BiffVersion = 0;
    buffer = 0xDEAD;
    EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, &size), claim.result) << claim.claim;
    EXPECT_EQ(buffer, 0u);
    EXPECT_EQ(size, claim.size);
    EXPECT_EQ(BiffVersion, 6);
    EXPECT_EQ(LiveBlocks(), 0u);
  }
}

TEST_F(OpenWorkbookTest, Result103_SizeOfMoreThan32Bits) {
  CompoundBuilder file(4);
  file.AddStream("Workbook", OneSheet().Stream() + Bytes(5000));
  ClaimSize(file.Build(), 5000, 1, path);
  EXPECT_EQ(XLOpenFile(path.c_str(), &buffer, &size), 103);
  EXPECT_EQ(buffer, 0u);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(BiffVersion, 6);
}

#endif

// XLFreeHandle.

TEST_F(OpenWorkbookTest, FreeHandle_IsMemoryFree) {
  uint32_t handle = MEMORYALLOC(10);
  uint32_t copy = handle;
  EXPECT_EQ(XLFreeHandle(&handle), 1u);
  EXPECT_EQ(handle, 0u);
  EXPECT_EQ(XLFreeHandle(&handle), 0u);
  EXPECT_EQ(XLFreeHandle(&copy), 0u);
  EXPECT_NE(copy, 0u);
  EXPECT_EQ(XLFreeHandle(nullptr), 0u);
}

}  // namespace
}  // namespace tolvenar::testing
