// XLSaveFile and DebugSaveFile on real files. What becomes of a save when the storage fails is tried in
// tests/workbook_faults.
#include "workbook/save_workbook.h"

#include <gtest/gtest.h>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "support/temp_file.h"
#include "support/workbook_file.h"
#include "workbook/biff_version.h"
#include "workbook/open_workbook.h"
#include "workbook/sheet_table.h"
#include "workbook/stm_file.h"
#include "workbook/table_entries.h"
#include "workbook/two_sheets.h"

namespace tolvenar::testing {
namespace {

using Entries = std::vector<int32_t>;

const Bytes kBufEnd = {0xF8, 0xFE, 0x00, 0x00};

class SaveWorkbookTest : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    BiffVersion = 6;
    path = folder.File("book.xls");
    buffer = TwoSheets::Builder().Load(&size);
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  }

  int16_t Save() { return XLSaveFile(path.c_str(), &buffer, &table, &size); }

  void Patch(uint32_t at, const Bytes& bytes) {
    ASSERT_EQ(PatchRecord(&buffer, bytes.data(), at, static_cast<uint32_t>(bytes.size()), &size), 0);
  }

  TempFolder folder;
  std::string path;
  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
};

const Bytes kNote = {0x42, 0x00, 0x02, 0x00, 0xB0, 0x04};

// The two sheets with the note in front of the first BOUNDSHEET.
Bytes WithNoteInTheGlobals() {
  StreamBuilder book;
  book.Bof(6).Raw(kNote).Sheet("One").Sheet("Two").Eof();
  book.Bof(6, kWorksheet).Record(0x020B, Bytes(16)).Number(0, 0, 15, 1.5).Record(0x00D7, Bytes(16)).Eof();
  book.Bof(6, kWorksheet).Bof(6, kChart).Eof().Eof();
  return book.Stream();
}

TEST_F(SaveWorkbookTest, NewFile_HoldsTheStream_TableIsReleased) {
  const uint32_t before = buffer;
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(ReadStream(path, "Workbook"), TwoSheets::Builder().Stream());
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(TwoSheets::Builder().Stream() + kBufEnd));
  EXPECT_NE(buffer, before);
  EXPECT_EQ(MEMORYISHANDLE(before), 0);
  EXPECT_EQ(size, 188u);
  EXPECT_EQ(table, 0u);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(SaveWorkbookTest, OnlyTheFileStandsInTheFolder) {
  ASSERT_EQ(Save(), 0);
  EXPECT_EQ(folder.Count(), 1u);
}

TEST_F(SaveWorkbookTest, ExistingFile_KeepsItsOtherStreams) {
  ASSERT_TRUE(WriteWorkbook(path, "Notes", {7, 8, 9}));
  ASSERT_TRUE(AddStream(path, "Workbook", Bytes(5000, 0x55)));
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(ReadStream(path, "Workbook"), TwoSheets::Builder().Stream());
  EXPECT_EQ(ReadStream(path, "Notes"), (Bytes{7, 8, 9}));
  EXPECT_EQ(ReadStream(path, "Book"), std::nullopt);
}

TEST_F(SaveWorkbookTest, Version5_WritesBook_AndSoDoesAnyVersionBut6) {
  for (int32_t version : {5, 0, 7}) {
    BiffVersion = version;
    path = folder.File("book" + std::to_string(version));
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
    EXPECT_EQ(Save(), 0);
    EXPECT_EQ(ReadStream(path, "Book"), TwoSheets::Builder().Stream());
    EXPECT_EQ(ReadStream(path, "Workbook"), std::nullopt);
  }
}

TEST_F(SaveWorkbookTest, OpenThenSave_IsByteIdentical) {
  ASSERT_EQ(Save(), 0);
  const Bytes before = *ReadStream(path, "Workbook");
  MEMORYFREEALL();
  ASSERT_EQ(XLOpenFile(path.c_str(), &buffer, &size), 0);
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(ReadStream(path, "Workbook"), before);
}

TEST_F(SaveWorkbookTest, PatchInTheGlobals_StandsAtItsPlace_BoundSheetsFollow) {
  Patch(TwoSheets::kBoundSheetOne, kNote);
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(Hex(*ReadStream(path, "Workbook")), Hex(WithNoteInTheGlobals()));
}

TEST_F(SaveWorkbookTest, RecordReplacedThroughADetour_DeadBytesAreNotWritten) {
  MarkRecordSlack(OpenBlock(buffer), TwoSheets::kNumber);
  Patch(TwoSheets::kNumber, StreamBuilder().Label(0, 0, 15, "a longer text").Stream());
  EXPECT_EQ(Save(), 0);
  StreamBuilder expected;
  expected.Bof(6).Sheet("One").Sheet("Two").Eof();
  expected.Bof(6, kWorksheet).Record(0x020B, Bytes(16)).Label(0, 0, 15, "a longer text");
  expected.Record(0x00D7, Bytes(16)).Eof().Bof(6, kWorksheet).Bof(6, kChart).Eof().Eof();
  EXPECT_EQ(Hex(*ReadStream(path, "Workbook")), Hex(expected.Stream()));
}

TEST_F(SaveWorkbookTest, SlackBeforeTheFirstSheet_ReducesAllOffsetsByItsSize) {
  MEMORYFREEALL();
  StreamBuilder book;
  book.Bof(6).Slack(30).Sheet("One").Sheet("Two").Eof();
  book.Bof(6, kWorksheet).Eof().Bof(6, kWorksheet).Eof();
  buffer = book.Load(&size);
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 88, 112, 132}));
  EXPECT_EQ(Save(), 0);
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 78, 98}));
}

TEST_F(SaveWorkbookTest, RecordOfMoreThan32767Bytes_IsWrittenWhole) {
  MEMORYFREEALL();
  StreamBuilder book;
  book.Bof(6).Sheet("One").Eof().Bof(6, kWorksheet).Record(0x0042, Bytes(0xFFFA, 0x11)).Eof();
  buffer = book.Load(&size);
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(ReadStream(path, "Workbook"), book.Stream());
}

TEST_F(SaveWorkbookTest, WorkGoesOnAfterASave) {
  ASSERT_EQ(Save(), 0);
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  Patch(TwoSheets::kBoundSheetOne, kNote);
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(Hex(*ReadStream(path, "Workbook")), Hex(WithNoteInTheGlobals()));
}

TEST_F(SaveWorkbookTest, BetweenTheTwoLargestSlots) {
  MEMORYFREEALL();
  const Bytes stream = TwoSheets::Builder().Stream() + kBufEnd;
  size = 1500001;
  buffer = MEMORYALLOC(static_cast<int32_t>(size));
  CopyIn(OpenBlock(buffer), 0, stream.data(), static_cast<uint32_t>(stream.size()));
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 9);
  EXPECT_EQ(ReadStream(path, "Workbook"), TwoSheets::Builder().Stream());
}

// All results of XLSaveFile that a file can bring about.

TEST_F(SaveWorkbookTest, Result2_NoBuffer) {
  uint32_t none = 0;
  uint32_t no_table = 0;
  EXPECT_EQ(XLSaveFile(path.c_str(), &none, &no_table, &size), 2);
  EXPECT_EQ(XLSaveFile(path.c_str(), nullptr, &table, &size), 2);
  none = 0x1234;
  EXPECT_EQ(XLSaveFile(path.c_str(), &none, &table, &size), 2);
  EXPECT_EQ(LiveBlocks(), 2u);
  EXPECT_EQ(folder.Count(), 0u);
}

TEST_F(SaveWorkbookTest, Result3_NoTable) {
  uint32_t none = 0;
  EXPECT_EQ(XLSaveFile(path.c_str(), &buffer, &none, &size), 3);
  EXPECT_EQ(XLSaveFile(path.c_str(), &buffer, nullptr, &size), 3);
  EXPECT_EQ(LiveBlocks(), 2u);
  EXPECT_EQ(size, 188u);
  EXPECT_EQ(folder.Count(), 0u);
}

TEST_F(SaveWorkbookTest, Result4_Exhaustion_EachNumberOfBlocksTaken) {
  for (int taken = 0; taken <= 7; ++taken) {
    const bool fits = taken < 7;
    const uint32_t before = buffer;
    EXPECT_EQ(Save(), fits ? 0 : 4) << taken;
    EXPECT_EQ(buffer == before, !fits);
    EXPECT_EQ(LiveBlocks(), static_cast<uint32_t>(taken + (fits ? 1 : 2)));
    if (fits) {
      ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
    }
    MEMORYALLOC(1);
  }
  EXPECT_NE(table, 0u);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 136, 180}));
}

TEST_F(SaveWorkbookTest, Result12_BufferUnchanged_TableOverwritten_FileUntouched) {
  MarkRecordSlack(OpenBlock(buffer), TwoSheets::kIndex);
  MarkRecordSlack(OpenBlock(buffer), TwoSheets::kTwoEof);
  const uint32_t handle = buffer;
  const Bytes before = BlockContents(buffer, size);
  EXPECT_EQ(Save(), 12);
  EXPECT_EQ(buffer, handle);
  EXPECT_EQ(BlockContents(buffer, size), before);
  EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 54, 116, 180}));
  EXPECT_EQ(LiveBlocks(), 2u);
  EXPECT_EQ(folder.Count(), 0u);
}

TEST_F(SaveWorkbookTest, Result6_TheCopyCantBeCut_BufferUnchanged) {
  MEMORYFREEALL();
  buffer = StreamBuilder().Bof(6).Eof().Raw({0x42, 0x00, 0xFF, 0x7F}).Load(&size);
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  const uint32_t handle = buffer;
  EXPECT_EQ(Save(), 6);
  EXPECT_EQ(buffer, handle);
  EXPECT_EQ(size, 32u);
  EXPECT_NE(table, 0u);
  EXPECT_EQ(LiveBlocks(), 2u);
}

// What 101, 102 and 111 leave: a compact buffer without BUFEND, and a table that fits it.
class RefusedSaveTest : public SaveWorkbookTest {
 protected:
  void SetUp() override {
    SaveWorkbookTest::SetUp();
    Patch(TwoSheets::kBoundSheetOne, kNote);
  }

  void ExpectCompactWithoutBufEnd() {
    EXPECT_EQ(size, 194u);
    EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(WithNoteInTheGlobals() + Bytes(4)));
    EXPECT_EQ(TableEntries(table, 5), (Entries{2, 0, 60, 142, 186}));
    EXPECT_EQ(LiveBlocks(), 2u);
  }
};

TEST_F(RefusedSaveTest, Result101_TheFileIsNoCompoundFile) {
  PutFile(path, {1, 2, 3});
  EXPECT_EQ(Save(), 101);
  ExpectCompactWithoutBufEnd();
  EXPECT_EQ(FileBytes(path), (Bytes{1, 2, 3}));
}

TEST_F(RefusedSaveTest, Result101_TheFileIsOpenElsewhere) {
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", {1, 2, 3}));
  {
    StmFFile elsewhere;
    ASSERT_EQ(elsewhere.Open(path.c_str()), 0);
    EXPECT_EQ(Save(), 101);
  }
  ExpectCompactWithoutBufEnd();
  EXPECT_EQ(ReadStream(path, "Workbook"), (Bytes{1, 2, 3}));
}

TEST_F(RefusedSaveTest, Result101_ThePathIsAFolder) {
  path = folder.File("");
  EXPECT_EQ(Save(), 101);
  ExpectCompactWithoutBufEnd();
}

TEST_F(RefusedSaveTest, Result102_TheFileHasOnlyTheOtherGeneration) {
  ASSERT_TRUE(WriteWorkbook(path, "Book", {1, 2, 3}));
  const Bytes before = FileBytes(path);
  EXPECT_EQ(Save(), 102);
  ExpectCompactWithoutBufEnd();
  EXPECT_EQ(FileBytes(path), before);
}

TEST_F(RefusedSaveTest, Result111_NoSuchFolder) {
  path = folder.File("no/book.xls");
  EXPECT_EQ(Save(), 111);
  ExpectCompactWithoutBufEnd();
  EXPECT_EQ(folder.Count(), 0u);
}

TEST_F(RefusedSaveTest, Result111_NullPath) {
  EXPECT_EQ(XLSaveFile(nullptr, &buffer, &table, &size), 111);
  ExpectCompactWithoutBufEnd();
}

TEST_F(RefusedSaveTest, SecondSave_CopiesTheFourZerosIntoTheStream) {
  path = folder.File("no/book.xls");
  ASSERT_EQ(Save(), 111);
  path = folder.File("book.xls");
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(Hex(*ReadStream(path, "Workbook")), Hex(WithNoteInTheGlobals() + Bytes(4)));
  EXPECT_EQ(size, 198u);
  EXPECT_EQ(Hex(BlockContents(buffer, size)), Hex(WithNoteInTheGlobals() + Bytes(4) + kBufEnd));
}

TEST_F(RefusedSaveTest, EditsBetweenARefusedSaveAndTheNext_AreSavedOnce) {
  path = folder.File("no/book.xls");
  ASSERT_EQ(Save(), 111);
  Patch(100, kNote);  // in front of the NUMBER: from here on the walk goes round
  path = folder.File("book.xls");
  EXPECT_EQ(Save(), 0);
  StreamBuilder expected;
  expected.Bof(6).Raw(kNote).Sheet("One").Sheet("Two").Eof();
  expected.Bof(6, kWorksheet).Record(0x020B, Bytes(16)).Raw(kNote).Number(0, 0, 15, 1.5);
  expected.Record(0x00D7, Bytes(16)).Eof().Bof(6, kWorksheet).Bof(6, kChart).Eof().Eof();
  EXPECT_EQ(Hex(*ReadStream(path, "Workbook")), Hex(expected.Stream() + Bytes(4)));
}

// DebugSaveFile.

TEST_F(SaveWorkbookTest, DebugSave_CountsInANewFile_WhateverTheVersion) {
  BiffVersion = 5;
  EXPECT_EQ(DebugSaveFile(path.c_str(), 3), 0);
  EXPECT_EQ(ReadStream(path, "Workbook"), (Bytes{1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0}));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SaveWorkbookTest, DebugSave_ReplacesTheStreamAndKeepsTheOthers) {
  ASSERT_TRUE(WriteWorkbook(path, "Notes", {7, 8, 9}));
  ASSERT_TRUE(AddStream(path, "Workbook", Bytes(100)));
  EXPECT_EQ(DebugSaveFile(path.c_str(), 1), 0);
  EXPECT_EQ(ReadStream(path, "Workbook"), (Bytes{1, 0, 0, 0}));
  EXPECT_EQ(ReadStream(path, "Notes"), (Bytes{7, 8, 9}));
}

TEST_F(SaveWorkbookTest, DebugSave_CountOf0_WritesAnEmptyStream) {
  EXPECT_EQ(DebugSaveFile(path.c_str(), 0), 0);
  EXPECT_EQ(ReadStream(path, "Workbook"), Bytes());
}

TEST_F(SaveWorkbookTest, DebugSave_Takes_NoPoolBlock) {
  while (MEMORYALLOC(1) != 0) continue;
  EXPECT_EQ(DebugSaveFile(path.c_str(), 100000), 0);
  EXPECT_EQ(ReadStream(path, "Workbook")->size(), 400000u);
}

TEST_F(SaveWorkbookTest, DebugSave_Result102) {
  ASSERT_TRUE(WriteWorkbook(path, "Book", {1, 2, 3}));
  const Bytes before = FileBytes(path);
  EXPECT_EQ(DebugSaveFile(path.c_str(), 3), 102) << "no such stream";
  EXPECT_EQ(FileBytes(path), before);
  PutFile(path, {1, 2, 3});
  EXPECT_EQ(DebugSaveFile(path.c_str(), 3), 102) << "no compound file";
  EXPECT_EQ(DebugSaveFile(folder.File("no/book.xls").c_str(), 3), 102) << "no folder";
  EXPECT_EQ(DebugSaveFile(nullptr, 3), 102) << "no path";
}

TEST_F(SaveWorkbookTest, DebugSave_Result6_NegativeCount) {
  EXPECT_EQ(DebugSaveFile(path.c_str(), -1), 6);
  EXPECT_EQ(DebugSaveFile(path.c_str(), INT32_MIN), 6);
  EXPECT_EQ(folder.Count(), 0u);
}

}  // namespace
}  // namespace tolvenar::testing
