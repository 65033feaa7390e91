// The stamp in a workbook: put in, changed, found, removed, saved and read back.
#include "reference/reference_binding.h"

#include "support/book_fixture.h"
#include "support/temp_file.h"
#include "support/workbook_file.h"
#include "workbook/open_workbook.h"
#include "workbook/save_workbook.h"

namespace tolvenar::testing {
namespace {

constexpr uint16_t kFormat = 0x041E;
constexpr uint16_t kStyle = 0x0293;
const Bytes kCurrency = Bytes{5, 0, 1, 0, 0} + Text("#");

Bytes Stamp(const std::string& digits) {
  return Bytes{0x1E, 0x04, 32, 0, 255, 0, 29} + Text("\"Do not delete it!!!" + digits + "\"");
}

class ReferenceBindingTest : public BookTest {
 protected:
  static StreamBuilder WithFormats() {
    return StreamBuilder().Bof(6).Record(kFormat, kCurrency).Record(kStyle, Bytes(8)).Sheet("Data").Eof();
  }
  void LoadFormats() {
    StreamBuilder stream = WithFormats();
    Load(stream.Bof(6, kWorksheet).Dimensions(0, 1, 0, 1).Eof());
  }
  void LoadPlain() {
    Load(StreamBuilder()
             .Bof(6)
             .Sheet("One")
             .Sheet("Two")
             .Eof()
             .Bof(6, kWorksheet)
             .Number(0, 0, 15, 1.5)
             .Eof()
             .Bof(6, kWorksheet)
             .Number(0, 0, 15, 2.5)
             .Eof());
  }
  int16_t Insert(uint32_t id) { return XLInsertReference(&buffer_, table_, &size_, id); }
  int16_t Unbind() { return XLUnbindReference(buffer_, table_); }
  // How often the stamp stands in the stream that the walk meets.
  size_t Stamps(const std::string& digits) const {
    const std::string walked = Hex(WalkedStream(buffer_));
    const std::string stamp = Hex(Stamp(digits));
    size_t count = 0;
    for (size_t at = walked.find(stamp); at != std::string::npos; at = walked.find(stamp, at + 1)) ++count;
    return count;
  }

  TempFolder folder_;
};

TEST_F(ReferenceBindingTest, TheStampStandsDirectlyBehindTheLastFormat) {
  LoadFormats();
  const uint32_t size = size_;
  EXPECT_EQ(Insert(7), 0);
  StreamBuilder expected;
  expected.Bof(6).Record(kFormat, kCurrency).Raw(Stamp("7       ")).Record(kStyle, Bytes(8));
  const Bytes walked = WalkedStream(buffer_);
  EXPECT_EQ(Hex(Bytes(walked.begin(), walked.begin() + expected.Here())), Hex(expected.Stream()));
  EXPECT_EQ(size_, size + 36 + 12 + 8);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(ReferenceBindingTest, ASecondInsertChangesTheDigitsInPlace) {
  for (const bool formats : {true, false}) {
    MEMORYFREEALL();
    formats ? LoadFormats() : LoadPlain();
    ASSERT_EQ(Insert(7), 0);
    const uint32_t size = size_;
    EXPECT_EQ(Insert(12), 0);
    EXPECT_EQ(size_, size);
    EXPECT_EQ(Stamps("12      "), 1u);
    EXPECT_EQ(Stamps("7       "), 0u);
    EXPECT_EQ(LiveBlocks(), 2u);
  }
}

TEST_F(ReferenceBindingTest, UnbindingTakesTheStampOutOnce) {
  for (const bool formats : {true, false}) {
    MEMORYFREEALL();
    formats ? LoadFormats() : LoadPlain();
    EXPECT_EQ(Unbind(), -1);
    ASSERT_EQ(Insert(7), 0);
    EXPECT_EQ(Unbind(), 0);
    EXPECT_EQ(Stamps("7       "), 0u);
    EXPECT_EQ(Unbind(), -1);
  }
}

TEST_F(ReferenceBindingTest, AStampFitsTheRoomOfTheOldOne) {
  LoadFormats();
  ASSERT_EQ(Insert(7), 0);
  ASSERT_EQ(Unbind(), 0);
  const uint32_t size = size_;
  EXPECT_EQ(Insert(8), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Stamps("8       "), 1u);
}

TEST_F(ReferenceBindingTest, WithoutFormatsTheFirstSheetMovesWithItsEntry) {
  LoadPlain();
  const uint32_t bof = TableEntry(Table(), 2);
  const uint32_t size = size_;
  ASSERT_EQ(Insert(7), 0);
  EXPECT_EQ(U32At(Stream(), bof - 4), 0x0004FEFFu);
  EXPECT_EQ(TableEntry(Table(), 2), size + 36 + 4);
  EXPECT_TRUE(IsPlain(Stream(), TableEntry(Table(), 2), kLowBof));
  EXPECT_TRUE(IsPlain(Stream(), GlobalsEnd(Table()), kLowEof));
  uint32_t again = 0;
  ASSERT_EQ(XLLocateSheets(buffer_, &again, size_), 0);
  EXPECT_EQ(BlockContents(again, 20), BlockContents(table_, 20));
}

TEST_F(ReferenceBindingTest, TheSheetBehindTheGlobalsMovesWhicheverEntryItHas) {
  LoadPlain();
  // The BOUNDSHEETs name the sheets in another order than the stream has them.
  const uint32_t first = 20;
  const uint32_t second = NextRecord(Stream(), first);
  const uint32_t bof = U32At(Stream(), first + kBoundSheetBof);
  PutU32(Stream(), first + kBoundSheetBof, U32At(Stream(), second + kBoundSheetBof));
  PutU32(Stream(), second + kBoundSheetBof, bof);
  ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
  ASSERT_EQ(TableEntry(Table(), 3), bof);
  ASSERT_EQ(Insert(7), 0);
  EXPECT_TRUE(IsPlain(Stream(), TableEntry(Table(), 2), kLowBof));
  EXPECT_TRUE(IsPlain(Stream(), TableEntry(Table(), 3), kLowBof));
  EXPECT_EQ(U32At(Stream(), second + kBoundSheetBof), TableEntry(Table(), 3));
  EXPECT_EQ(Stamps("7       "), 1u);
}

// Globals whose run of FORMAT records is followed by one record of `payload` bytes, and then the EOF.
StreamBuilder ShortBehindFormats(uint32_t payload) {
  StreamBuilder stream;
  stream.Bof(6).Sheet("One").Sheet("Two").Record(kFormat, kCurrency).Record(0x0160, Bytes(payload)).Eof();
  stream.Bof(6, kWorksheet).Number(0, 0, 15, 1.5).Eof().Bof(6, kWorksheet).Number(0, 0, 15, 2.5).Eof();
  return stream;
}

TEST_F(ReferenceBindingTest, AShortRecordInFrontOfTheEofLeavesTheGlobalsTheirEnd) {
  for (uint32_t payload = 0; payload <= 5; ++payload) {
    MEMORYFREEALL();
    Load(ShortBehindFormats(payload));
    const uint32_t plain = size_;
    ASSERT_EQ(Insert(7), 0);
    if (payload >= 4) {  // there is room for the DETOUR
      EXPECT_EQ(size_, plain + 36 + 4 + payload + 8) << payload;
    }
    EXPECT_TRUE(IsPlain(Stream(), TableEntry(Table(), 2), kLowBof)) << payload;
    EXPECT_TRUE(IsPlain(Stream(), GlobalsEnd(Table()), kLowEof)) << payload;
    EXPECT_EQ(Stamps("7       "), 1u);
    const uint32_t size = size_;
    EXPECT_EQ(Insert(12), 0);
    EXPECT_EQ(Stamps("12      "), 1u);
    EXPECT_EQ(Unbind(), 0);
    EXPECT_EQ(Unbind(), -1);
    EXPECT_EQ(Insert(8), 0);
    EXPECT_EQ(size_, size);
    uint32_t again = 0;
    ASSERT_EQ(XLLocateSheets(buffer_, &again, size_), 0);
    EXPECT_EQ(BlockContents(again, 20), BlockContents(table_, 20)) << payload;
  }
}

TEST_F(ReferenceBindingTest, AShortRecordInFrontOfTheEofIsSavedBehindTheStamp) {
  const std::string path = folder_.File("book.xls");
  for (uint32_t payload = 0; payload <= 5; ++payload) {
    MEMORYFREEALL();
    Load(ShortBehindFormats(payload));
    const Bytes plain = ShortBehindFormats(payload).Stream();
    const uint32_t bof = TableEntry(Table(), 2);
    ASSERT_TRUE(WriteWorkbook(path, "Workbook", {1}));
    ASSERT_EQ(Insert(7), 0);
    ASSERT_EQ(XLSaveFile(path.c_str(), &buffer_, &table_, &size_), 0);
    EXPECT_EQ(XLGetReference(path.c_str()), 7);
    const Bytes saved = ReadStream(path, "Workbook").value_or(Bytes{});
    ASSERT_EQ(saved.size(), plain.size() + 36);
    EXPECT_EQ(Bytes(saved.begin() + bof + 36, saved.end()), Bytes(plain.begin() + bof, plain.end()));
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
    EXPECT_EQ(TableEntry(Table(), 2), bof + 36);
    ASSERT_EQ(Unbind(), 0);
    ASSERT_EQ(XLSaveFile(path.c_str(), &buffer_, &table_, &size_), 0);
    EXPECT_EQ(ReadStream(path, "Workbook"), plain);
  }
}

TEST_F(ReferenceBindingTest, ARecordInFrontOfTheEofOfAWorkbookWithoutSheetsIsKept) {
  for (uint32_t payload = 0; payload <= 5; ++payload) {
    MEMORYFREEALL();
    Load(StreamBuilder().Bof(6).Record(kFormat, kCurrency).Record(0x0160, Bytes(payload)).Eof());
    ASSERT_EQ(Insert(7), 0);
    StreamBuilder expected;
    expected.Bof(6).Record(kFormat, kCurrency).Raw(Stamp("7       "));
    expected.Record(0x0160, Bytes(payload)).Eof();
    EXPECT_EQ(Hex(WalkedStream(buffer_)), Hex(expected.Stream())) << payload;
    EXPECT_TRUE(IsPlain(Stream(), TableEntry(Table(), 2), kLowEof)) << payload;
    EXPECT_EQ(Insert(8), 0);
    EXPECT_EQ(Stamps("8       "), 1u) << payload;
  }
}

TEST_F(ReferenceBindingTest, AFailedPatchKeepsTheStampAndItsDigitsAllocated) {
  uint32_t low[2] = {MEMORYALLOC(1), MEMORYALLOC(1)};
  for (int slot = 3; slot <= 8; ++slot) ASSERT_NE(MEMORYALLOC(1), 0u);
  buffer_ = WithFormats().Load(&size_);
  ASSERT_EQ(MEMORYISHANDLE(buffer_), 9);
  MEMORYFREE(&low[0]);
  MEMORYFREE(&low[1]);
  table_ = MEMORYALLOC(12);  // slot 1; the digits take slot 2, and the stamp finds none
  EXPECT_EQ(Insert(7), 4);
  EXPECT_NE(buffer_, 0u);
  MEMORYFREEALL();
  buffer_ = WithFormats().Load(&size_);
  table_ = MEMORYALLOC(12);
  PutTableEntry(Table(), 2, size_);
  size_ = 300000000;  // no slot is so large
  EXPECT_EQ(Insert(7), 4);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 3u);  // the table, the digits, the stamp
  EXPECT_EQ(BytesInUse(), 12u + 8u + 36u);
}

TEST_F(ReferenceBindingTest, ASavedStampIsReadBackAndTheSheetsAreWhole) {
  const std::string path = folder_.File("book.xls");
  for (const bool formats : {true, false}) {
    MEMORYFREEALL();
    formats ? LoadFormats() : LoadPlain();
    ASSERT_TRUE(WriteWorkbook(path, "Workbook", {1}));
    ASSERT_EQ(Insert(7), 0);
    ASSERT_EQ(Insert(345), 0);
    ASSERT_EQ(XLSaveFile(path.c_str(), &buffer_, &table_, &size_), 0);
    EXPECT_EQ(XLGetReference(path.c_str()), 345);
    EXPECT_EQ(LiveBlocks(), 1u);
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
    for (uint32_t sheet = 2; sheet < 2 + TableEntry(Table(), 0); ++sheet) {
      EXPECT_TRUE(IsPlain(Stream(), TableEntry(Table(), sheet), kLowBof));
    }
    ASSERT_EQ(Unbind(), 0);
    ASSERT_EQ(XLSaveFile(path.c_str(), &buffer_, &table_, &size_), 0);
    EXPECT_EQ(XLGetReference(path.c_str()), 0);
  }
}

TEST_F(ReferenceBindingTest, AWorkbookWithoutSheetsIsStampedInFrontOfItsEof) {
  Load(StreamBuilder().Bof(6).Eof());
  ASSERT_EQ(Insert(7), 0);
  EXPECT_EQ(Hex(WalkedStream(buffer_)), Hex(StreamBuilder().Bof(6).Raw(Stamp("7       ")).Eof().Stream()));
  EXPECT_TRUE(IsPlain(Stream(), TableEntry(Table(), 2), kLowEof));
  EXPECT_EQ(Insert(8), 0);
  EXPECT_EQ(Stamps("8       "), 1u);
}

TEST_F(ReferenceBindingTest, RefusesWhatIsNotThere) {
  LoadFormats();
  uint32_t none = 0;
  EXPECT_EQ(XLInsertReference(&buffer_, 0, &size_, 1), 6);
  EXPECT_EQ(XLInsertReference(&none, 0, &size_, 1), 6);  // the table comes first
  EXPECT_EQ(XLUnbindReference(0, 0), 6);
  EXPECT_EQ(XLInsertReference(&none, table_, &size_, 1), 7);
  EXPECT_EQ(XLInsertReference(nullptr, table_, &size_, 1), 7);
  EXPECT_EQ(XLUnbindReference(buffer_, 0), 6);
  EXPECT_EQ(XLUnbindReference(0, table_), 7);
  EXPECT_EQ(XLUnbindReference(77, table_), -1);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(ReferenceBindingTest, AFullPoolIsToldWithTheBlocksHeld) {
  LoadFormats();
  const Bytes before = BlockContents(buffer_, size_);
  FillPool(8);
  EXPECT_EQ(Insert(7), 4);
  EXPECT_EQ(LiveBlocks(), 9u);  // the digits stay
  EXPECT_EQ(Insert(7), 4);
  EXPECT_EQ(BlockContents(buffer_, size_), before);
  EXPECT_EQ(XLInsertReference(&buffer_, 0, &size_, 1), 4);
}

TEST_F(ReferenceBindingTest, OnlyTheStartOfTheTextIsCompared) {
  StreamBuilder stream;
  stream.Bof(6).Record(0x001E, Bytes{9, 9, 29, '"', 'D'} + Bytes(27, ' ')).Sheet("A").Eof();
  Load(stream.Bof(6, kWorksheet).Eof());
  const uint32_t size = size_;
  EXPECT_EQ(Insert(5), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(U8At(Stream(), 16 + 4 + 27), '5');
}

TEST_F(ReferenceBindingTest, AFormatThatDiffersInOneOfTheThreeBytesIsNoStamp) {
  const std::string path = folder_.File("book.xls");
  for (const Bytes& start :
       {Bytes{28, '"', 'D'}, Bytes{29, '\'', 'D'}, Bytes{29, '"', 'E'}, Bytes{29, '"', 'D'}}) {
    MEMORYFREEALL();
    StreamBuilder stream;
    stream.Bof(6)
        .Record(kFormat, Bytes{9, 9} + start + Bytes(18, ' ') + Text("77") + Bytes(7, ' '))
        .Sheet("A")
        .Eof();
    Load(stream.Bof(6, kWorksheet).Eof());
    const bool stamp = start == Bytes{29, '"', 'D'};
    ASSERT_TRUE(WriteWorkbook(path, "Workbook", stream.Stream()));
    EXPECT_EQ(XLGetReference(path.c_str()), stamp ? 77 : 0);
    EXPECT_EQ(Unbind(), stamp ? 0 : -1);
  }
}

TEST_F(ReferenceBindingTest, ARecordWithTheChartBitIsNoFormatAndEndsTheRun) {
  const std::string path = folder_.File("book.xls");
  const Bytes stamp = Stamp("77      ");
  StreamBuilder stream;
  stream.Bof(6).Record(kFormat, kCurrency).Record(0x101E, Bytes(stamp.begin() + 4, stamp.end())).Raw(stamp);
  Load(stream.Eof());
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", stream.Stream()));
  EXPECT_EQ(XLGetReference(path.c_str()), 0);
  EXPECT_EQ(Unbind(), -1);
  ASSERT_EQ(Insert(5), 0);
  StreamBuilder expected;
  expected.Bof(6).Record(kFormat, kCurrency).Raw(Stamp("5       "));
  const Bytes walked = WalkedStream(buffer_);
  EXPECT_EQ(Hex(Bytes(walked.begin(), walked.begin() + expected.Here())), Hex(expected.Stream()));
}

TEST_F(ReferenceBindingTest, AnEmptyRangeHasNoStampAndTakesOneAtItsEnd) {
  LoadFormats();
  ASSERT_EQ(Insert(7), 0);
  PutTableEntry(Table(), 2, 4);  // the end is the start
  EXPECT_EQ(Unbind(), -1);
  ASSERT_EQ(Insert(8), 0);
  const Bytes walked = WalkedStream(buffer_);
  EXPECT_EQ(Hex(Bytes(walked.begin(), walked.begin() + 36)), Hex(Stamp("8       ")));
  EXPECT_EQ(Stamps("7       "), 1u);
}

TEST_F(ReferenceBindingTest, TheSearchBeginsWhereTheTableSays) {
  LoadFormats();
  ASSERT_EQ(Insert(7), 0);
  PutTableEntry(Table(), kTableGlobalsBegin, 20 + 10);  // the DETOUR to the stamp
  EXPECT_EQ(Insert(8), 0);
  EXPECT_EQ(Stamps("8       "), 1u);
  PutTableEntry(Table(), kTableGlobalsBegin, 20 + 10 + 12);  // the record behind it
  ASSERT_TRUE(IsPlain(Stream(), 42, kLowBoundSheet));
  EXPECT_EQ(Unbind(), -1);
}

TEST_F(ReferenceBindingTest, GlobalsInACircleTakeNoStamp) {
  const std::string path = folder_.File("book.xls");
  LoadPlain();
  PutU32(Stream(), 20, 0x0004FEFF);
  PutU32(Stream(), 24, 20);
  const Bytes before = BlockContents(buffer_, size_);
  EXPECT_EQ(Insert(7), 4);
  EXPECT_EQ(Unbind(), -1);
  EXPECT_EQ(BlockContents(buffer_, size_), before);
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", before));
  EXPECT_EQ(XLGetReference(path.c_str()), 0);
}

TEST_F(ReferenceBindingTest, TheStampIsTheSameInAWorkbookOfBiff5) {
  StreamBuilder stream;
  stream.Bof(5).Record(kFormat, kCurrency).Eof();
  Load(stream, kBiff5);
  EXPECT_EQ(Insert(12345678), 0);
  EXPECT_EQ(Stamps("12345678"), 1u);
}

TEST_F(ReferenceBindingTest, WhatAnEarlierTenantLeftBehindAFileIsNotRead) {
  const std::string path = folder_.File("book.xls");
  BiffVersion = 6;
  const Bytes bof = StreamBuilder().Bof(6).Stream();
  const Bytes left = bof + Stamp("7       ");
  uint32_t tenant = MEMORYALLOC(static_cast<int32_t>(left.size()));
  CopyIn(OpenBlock(tenant), 0, left.data(), static_cast<uint32_t>(left.size()));
  MEMORYFREE(&tenant);
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", bof));
  EXPECT_EQ(XLGetReference(path.c_str()), 0);
}

TEST_F(ReferenceBindingTest, BeforeAnyWorkbookThereIsNoStreamToRead) {
  const std::string path = folder_.File("book.xls");
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", StreamBuilder().Bof(6).Raw(Stamp("41      ")).Eof().Stream()));
  BiffVersion = 0;
  EXPECT_EQ(XLGetReference(path.c_str()), -3);
  BiffVersion = 6;
  EXPECT_EQ(XLGetReference(path.c_str()), 41);
}

TEST_F(ReferenceBindingTest, ReadingTellsWhatIsMissing) {
  const std::string path = folder_.File("book.xls");
  BiffVersion = 6;
  EXPECT_EQ(XLGetReference(path.c_str()), -2);
  ASSERT_TRUE(WriteWorkbook(path, "Book", StreamBuilder().Bof(5).Raw(Stamp("41      ")).Eof().Stream()));
  EXPECT_EQ(XLGetReference(path.c_str()), -3);
  BiffVersion = 0;
  EXPECT_EQ(XLGetReference(path.c_str()), -3);
  BiffVersion = 5;
  EXPECT_EQ(XLGetReference(path.c_str()), 41);
  FillPool(9);
  EXPECT_EQ(XLGetReference(path.c_str()), -5);
  MEMORYFREEALL();
  FillPool(8);
  EXPECT_EQ(XLGetReference(path.c_str()), -10);
  EXPECT_EQ(LiveBlocks(), 9u);  // the image stays
  MEMORYFREEALL();
  ASSERT_TRUE(WriteWorkbook(path, "Book", {}));
  EXPECT_EQ(XLGetReference(path.c_str()), -4);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceBindingTest, OnlyTheFirstRunOfAFileIsRead) {
  const std::string path = folder_.File("book.xls");
  BiffVersion = 6;
  StreamBuilder late = WithFormats();
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", late.Raw(Stamp("7       ")).Stream()));
  EXPECT_EQ(XLGetReference(path.c_str()), 0);
  ASSERT_TRUE(WriteWorkbook(path, "Workbook", StreamBuilder().Bof(6).Raw(Stamp("none    ")).Eof().Stream()));
  EXPECT_EQ(XLGetReference(path.c_str()), 0);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(ReferenceBindingTest, EverySpoiltByteEndsWithACode) {
  LoadPlain();
  const Bytes good = BlockContents(buffer_, size_);
  for (size_t at = 0; at < good.size(); ++at) {
    for (const uint8_t spoilt : Bytes{0x00, 0x0A, 0x1E, 0xFA, 0xFE, 0xFF}) {
      MEMORYFREEALL();
      LoadPlain();
      PutU8(Stream(), static_cast<uint32_t>(at), spoilt);
      const int16_t inserted = Insert(7);
      ASSERT_TRUE(inserted == 0 || inserted == 4) << at;
      if (buffer_ != 0) Unbind();
    }
  }
}

}  // namespace
}  // namespace tolvenar::testing
