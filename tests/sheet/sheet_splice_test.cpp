// The splice: where the new BOUNDSHEET goes, what it is called, and what else of the workbook it changes.
#include "sheet/sheet_splice.h"

#include "sheet/sheet_fixture.h"

namespace tolvenar::testing {
namespace {

class SheetSpliceTest : public SheetTest {
 protected:
  void Load(const StreamBuilder& stream) { buffer = stream.Load(&size); }

  uint16_t number = 0x7777;
};

StreamBuilder TwoSheetBook() {
  StreamBuilder book;
  book.Bof(5).Record(0x0042, U16(1252)).Sheet("One").Sheet("Two").Record(0x008C, U32(1)).Eof();
  book.Bof(5, kWorksheet).Eof().Bof(5, kWorksheet).Eof();
  return book;
}

TEST_F(SheetSpliceTest, InsertPoint_BehindTheRunOfBoundSheets) {
  Load(TwoSheetBook());
  EXPECT_EQ(FindSheetInsertPoint(buffer, size, &number), 12 + 6 + 15 + 15);
  EXPECT_EQ(number, 3u);
}

TEST_F(SheetSpliceTest, InsertPoint_PaletteBetweenBoundSheets_BehindTheWholeRun) {
  StreamBuilder book;
  book.Bof(5).Sheet("One").Record(0x0092, Bytes(2)).Sheet("Two").Record(0x0092, Bytes(2));
  const uint32_t behind = book.Here();
  Load(book.Record(0x008C, U32(1)).Sheet("Three").Eof());
  EXPECT_EQ(FindSheetInsertPoint(buffer, size, &number), static_cast<int32_t>(behind));
  EXPECT_EQ(number, 3u) << "a BOUNDSHEET behind the run is not counted";
}

TEST_F(SheetSpliceTest, InsertPoint_PaletteAlone_BehindItWithoutACount) {
  Load(StreamBuilder().Bof(5).Record(0x0092, Bytes(2)).Record(0x008C, U32(1)).Eof());
  EXPECT_EQ(FindSheetInsertPoint(buffer, size, &number), 12 + 6);
  EXPECT_EQ(number, 1u);
}

TEST_F(SheetSpliceTest, InsertPoint_PaletteApartFromTheBoundSheets_IsPassedOver) {
  StreamBuilder book;
  book.Bof(5).Record(0x0092, Bytes(2)).Record(0x0160, Bytes(2)).Sheet("One").Sheet("Two");
  const uint32_t behind = book.Here();
  Load(book.Record(0x008C, U32(1)).Eof());
  EXPECT_EQ(FindSheetInsertPoint(buffer, size, &number), static_cast<int32_t>(behind));
  EXPECT_EQ(number, 3u);
}

TEST_F(SheetSpliceTest, InsertPoint_NoBoundSheet_TheEof) {
  NewBook(5);
  EXPECT_EQ(FindSheetInsertPoint(buffer, size, &number), 1164);
  EXPECT_EQ(number, 1u);
}

TEST_F(SheetSpliceTest, InsertPoint_NoBoundSheetAndNoEof_TheLimit) {
  Load(StreamBuilder().Bof(5).Record(0x008C, U32(1)));
  EXPECT_EQ(FindSheetInsertPoint(buffer, size, &number), 24);
}

TEST_F(SheetSpliceTest, InsertPoint_LowBytesDecide) {
  Load(StreamBuilder().Bof(5).Record(0x0F85, Bytes(8)).Record(0x1092).Eof());
  EXPECT_EQ(FindSheetInsertPoint(buffer, size, &number), 24);
  EXPECT_EQ(number, 2u);
}

TEST_F(SheetSpliceTest, ChartRecordsOfTheSameLowBytes_AreNeitherSheetsNorTheEnd) {
  Load(StreamBuilder()
           .Bof(5)
           .Record(0x1085, U32(500))
           .Record(0x100A)
           .Sheet("One")
           .Record(0x1085, U32(500))
           .Eof());
  EXPECT_EQ(FindSheetInsertPoint(buffer, size, &number), 12 + 8 + 4 + 15);
  EXPECT_EQ(number, 2u);
  const uint32_t bof = U32At(OpenBlock(buffer), 24 + 4);
  EXPECT_EQ(ShiftSheetOffsets(buffer, 1000), 0);
  EXPECT_EQ(U32At(OpenBlock(buffer), 12 + 4), 500u);
  EXPECT_EQ(U32At(OpenBlock(buffer), 24 + 4), bof + 1000);
  EXPECT_EQ(U32At(OpenBlock(buffer), 39 + 4), 500u);
}

TEST_F(SheetSpliceTest, InsertPoint_SizeOfOneOrLess) {
  Load(TwoSheetBook());
  for (uint32_t small : {1u, 0u, 0x80000001u}) {
    number = 0;
    EXPECT_EQ(FindSheetInsertPoint(buffer, small, &number), 0);
    EXPECT_EQ(number, 1u);
  }
}

TEST_F(SheetSpliceTest, InsertPoint_NullBuffer_NumberIsNotWritten) {
  EXPECT_EQ(FindSheetInsertPoint(0, 100, &number), -1);
  EXPECT_EQ(number, 0x7777u);
}

TEST_F(SheetSpliceTest, Name_AGivenOneIsItself) {
  const char given[] = "Data";
  const SheetName name = DefaultSheetName(given, 7);
  EXPECT_EQ(name.text, given);
  EXPECT_EQ(name.made, nullptr);
}

TEST_F(SheetSpliceTest, Name_NullEmptyAnd65536Characters_TheDefaultOfTwelveBytes) {
  const std::string long_name(65536, 'x');
  for (const char* given : {static_cast<const char*>(nullptr), "", long_name.c_str()}) {
    const SheetName name = DefaultSheetName(given, 65535);
    EXPECT_STREQ(name.text, "Sheet65535");
    EXPECT_EQ(SysStringByteLen(name.made), 12u);
    SysFreeString(name.made);
  }
}

TEST_F(SheetSpliceTest, Shift_EveryBoundSheetUpToTheFirstEof) {
  StreamBuilder book = TwoSheetBook();
  Load(book.Raw(StreamBuilder().Record(0x0085, U32(500) + Bytes(4)).Stream()));
  const uint32_t behind = size - 4 - 12;
  EXPECT_EQ(ShiftSheetOffsets(buffer, 1000), 0);
  EXPECT_EQ(U32At(OpenBlock(buffer), 18 + 4), 1000u + 60);
  EXPECT_EQ(U32At(OpenBlock(buffer), 33 + 4), 1000u + 76);
  EXPECT_EQ(U32At(OpenBlock(buffer), behind + 4), 500u);
}

TEST_F(SheetSpliceTest, Shift_NullBuffer) {
  EXPECT_EQ(ShiftSheetOffsets(0, 1), -1);
}

TEST_F(SheetSpliceTest, Splice_BytesBeforeAndBehindAndSize) {
  Load(TwoSheetBook());
  const Bytes old = BlockContents(buffer, size);
  const uint32_t n = size - 4;
  const Splice splice = SpliceSheet(&buffer, &size, "New");
  ASSERT_EQ(splice.failure, 0);
  EXPECT_EQ(splice.number, 3u);
  EXPECT_EQ(splice.size, n + 15);
  EXPECT_EQ(splice.old_buffer, buffer);
  EXPECT_EQ(MEMORYSIZE(splice.new_buffer), n + 4 + 15 + 4) << "room for a BUFEND beside the old one";
  Bytes expected(old.begin(), old.begin() + 48);
  WriteU32(expected.data() + 22, 60 + 15);
  WriteU32(expected.data() + 37, 76 + 15);
  expected = expected + Bytes{0x85, 0, 11, 0} + U32(n + 15) + Bytes{0, 0, 3} + Text("New") + Bytes{0};
  expected = expected + Bytes(old.begin() + 48, old.begin() + n);
  EXPECT_EQ(Hex(BlockContents(splice.new_buffer, splice.size)), Hex(expected));
}

TEST_F(SheetSpliceTest, Splice_OnlyTheByteF8AtTheEndIsLookedAt) {
  Load(TwoSheetBook());
  const uint32_t end = size - 4;
  PutU8(OpenBlock(buffer), end + 1, 0x77);
  EXPECT_EQ(SpliceSheet(&buffer, &size, "New").size, end + 15);
  PutU8(OpenBlock(buffer), end, 0xF7);
  const Splice splice = SpliceSheet(&buffer, &size, "New");
  EXPECT_EQ(splice.size, end + 4 + 15) << "all bytes are kept";
  EXPECT_EQ(U8At(OpenBlock(splice.new_buffer), splice.size - 4), 0xF7);
}

// WINDOW1 and WINDOW2 of all shapes: type, and whether they are touched.
TEST_F(SheetSpliceTest, Splice_SelectsTheNewSheetInTheRecordsThatCount) {
  StreamBuilder book;
  book.Bof(5).Sheet("One").Record(0x003D, Bytes(18, 0xAA)).Record(0x103D, Bytes(18, 0xAA));
  book.Record(0x023D, Bytes(18, 0xAA)).Eof();
  book.Bof(5, kWorksheet).Record(0x023E, Bytes(10, 0xAA)).Record(0x003E, Bytes(10, 0xAA));
  Load(book.Record(0x103E, Bytes(10, 0xAA)).Eof());
  SpliceSheet(&buffer, &size, "New");
  Bytes window1(18, 0xAA);
  window1[10] = window1[12] = 1;
  EXPECT_EQ(Hex(RecordsOfType(0x003D).at(0).bytes).substr(12), Hex(window1));
  EXPECT_EQ(Hex(RecordsOfType(0x103D).at(0).bytes).substr(12), Hex(Bytes(18, 0xAA)));
  EXPECT_EQ(Hex(RecordsOfType(0x023D).at(0).bytes).substr(12), Hex(Bytes(18, 0xAA)));
  Bytes window2(10, 0xAA);
  window2[1] = 0;
  EXPECT_EQ(Hex(RecordsOfType(0x023E).at(0).bytes).substr(12), Hex(window2));
  EXPECT_EQ(Hex(RecordsOfType(0x003E).at(0).bytes).substr(12), Hex(window2));
  EXPECT_EQ(Hex(RecordsOfType(0x103E).at(0).bytes).substr(12), Hex(Bytes(10, 0xAA)));
}

TEST_F(SheetSpliceTest, Splice_WhatStandsBehindTheSizeIsNotTouched) {
  StreamBuilder book;
  book.Bof(5).Sheet("One").Eof().Bof(5, kWorksheet).Eof();
  const uint32_t end = book.Here();
  Load(book.Record(0x003D, Bytes(18, 0xAA)).Record(0x023E, Bytes(10, 0xAA)));
  size = end;
  const Bytes behind = BlockContents(buffer, end + 36);
  ASSERT_EQ(SpliceSheet(&buffer, &size, "New").failure, 0);
  EXPECT_EQ(Hex(BlockContents(buffer, end + 36)), Hex(behind));
}

TEST_F(SheetSpliceTest, Splice_NoPoolBlock_NothingChangesButTheSizeItReports) {
  Load(StreamBuilder().Bof(5).Sheet("One").Record(0x003D, Bytes(18, 0xAA)).Eof().Bof(5, kWorksheet).Eof());
  const Bytes before = BlockContents(buffer, size);
  const uint32_t size_before = size;
  while (MEMORYALLOC(1) != 0) continue;
  const Splice splice = SpliceSheet(&buffer, &size, "New");
  EXPECT_EQ(splice.failure, -4);
  EXPECT_EQ(splice.new_buffer, 0u);
  EXPECT_EQ(splice.size, size_before + 15);
  EXPECT_EQ(size, size_before);
  EXPECT_EQ(BlockContents(buffer, size), before);
}

TEST_F(SheetSpliceTest, Splice_NameOf40000Characters_StaysInside) {
  NewBook(5);
  const Splice splice = SpliceSheet(&buffer, &size, std::string(40000, 'x').c_str());
  EXPECT_EQ(splice.failure, 0);
  EXPECT_EQ(splice.size, kEmptyBiff5 + 32767);
}

}  // namespace
}  // namespace tolvenar::testing
