// XLAppendSheet and XLAppendFullSheet: the bytes of a new sheet and its place in the workbook.
#include "sheet/sheet_append.h"

#include "query/sheet_size.h"
#include "sheet/sheet_fixture.h"

namespace tolvenar::testing {
namespace {

class SheetAppendTest : public SheetTest {
 protected:
  // The records of a sheet up to its EOF, one a line.
  std::string SheetLines(int16_t sheet) {
    std::string lines;
    for (const FoundRecord& record : Records(BofOf(sheet))) {
      lines += Hex(record.bytes) + "\n";
      if (record.type == 0x000A) break;
    }
    return lines;
  }
};

constexpr const char* kSheetBiff5 =
    "09 08 08 00 00 05 10 00 6C 09 C9 07 \n"
    "0D 00 02 00 01 00 \n"
    "0C 00 02 00 64 00 \n"
    "0F 00 02 00 01 00 \n"
    "11 00 02 00 00 00 \n"
    "10 00 08 00 FC A9 F1 D2 4D 62 50 3F \n"
    "5F 00 02 00 01 00 \n"
    "2A 00 02 00 00 00 \n"
    "2B 00 02 00 01 00 \n"
    "82 00 02 00 01 00 \n"
    "80 00 08 00 00 00 00 00 00 00 00 00 \n"
    "25 02 04 00 00 00 FF 00 \n"
    "81 00 02 00 C1 04 \n"
    "14 00 03 00 02 26 41 \n"
    "15 00 08 00 07 50 61 67 65 20 26 50 \n"
    "83 00 02 00 00 00 \n"
    "84 00 02 00 00 00 \n"
    "A1 00 22 00 00 00 01 00 01 00 01 00 01 00 44 00 63 65 6E 74 00 00 00 00 00 00 E0 3F 00 00 00 00 00 00 "
    "E0 3F FA 12 \n"
    "55 00 02 00 08 00 \n"
    "00 02 0E 00 00 00 03 00 00 00 04 00 00 00 00 00 00 00 \n"
    "08 02 10 00 00 00 00 00 04 00 FF 00 00 00 F3 00 40 01 1D 02 \n"
    "08 02 10 00 01 00 00 00 04 00 FF 00 00 00 F3 00 40 01 1D 02 \n"
    "3E 02 0A 00 B6 06 00 00 00 00 00 00 00 00 \n"
    "1D 00 0F 00 03 00 00 00 00 00 00 01 00 00 00 00 00 00 00 \n"
    "0A 00 00 00 \n";

constexpr const char* kSheetBiff8 =
    "09 08 10 00 00 06 10 00 D3 10 CC 07 41 00 00 00 06 00 00 00 \n"
    "0B 02 14 00 00 00 00 00 00 00 00 00 03 00 00 00 32 0B 00 00 C0 0B 00 00 \n"
    "0D 00 02 00 01 00 \n"
    "0C 00 02 00 64 00 \n"
    "0F 00 02 00 01 00 \n"
    "11 00 02 00 00 00 \n"
    "10 00 08 00 FC A9 F1 D2 4D 62 50 3F \n"
    "5F 00 02 00 01 00 \n"
    "2A 00 02 00 00 00 \n"
    "2B 00 02 00 01 00 \n"
    "82 00 02 00 01 00 \n"
    "80 00 08 00 00 00 00 00 00 00 00 00 \n"
    "25 02 04 00 00 00 FF 00 \n"
    "81 00 02 00 C1 04 \n"
    "14 00 00 00 \n"
    "15 00 00 00 \n"
    "83 00 02 00 00 00 \n"
    "84 00 02 00 00 00 \n"
    "A1 00 22 00 00 00 01 00 01 00 01 00 01 00 44 00 63 65 6E 20 00 00 00 00 00 00 E0 3F 00 00 00 00 00 00 "
    "E0 3F FA 12 \n"
    "55 00 02 00 08 00 \n"
    "00 02 0E 00 00 00 00 00 03 00 00 00 00 00 04 00 00 00 \n"
    "08 02 10 00 00 00 00 00 04 00 FF 00 00 00 F3 00 40 01 1D 02 \n"
    "08 02 10 00 01 00 00 00 04 00 FF 00 00 00 F3 00 40 01 1D 02 \n"
    "3E 02 12 00 B6 06 00 00 00 00 40 00 00 00 00 00 00 00 00 00 00 00 \n"
    "1D 00 0F 00 03 00 00 00 00 00 00 01 00 00 00 00 00 00 00 \n"
    "0A 00 00 00 \n";

TEST_F(SheetAppendTest, Biff5_EveryRecordOfTheSheet) {
  NewBook(5);
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Data", 3, 2), 1);
  EXPECT_EQ(SheetLines(1), kSheetBiff5);
  EXPECT_EQ(size, kEmptyBiff5 + 16 + kHeadBiff5 + kDimensionsBytes + 2 * kRowBytes + kTailBiff5 + 4);
  ExpectWholeWorkbook(1);
}

TEST_F(SheetAppendTest, Biff8_EveryRecordOfTheSheet) {
  NewBook(8);
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Data", 3, 2), 1);
  EXPECT_EQ(SheetLines(1), kSheetBiff8);
  EXPECT_EQ(size, kEmptyBiff8 + 16 + kHeadBiff8 + kDimensionsBytes + 2 * kRowBytes + kTailBiff8 + 4);
  ExpectWholeWorkbook(1);
}

TEST_F(SheetAppendTest, GlobalsOfAFreshBook_StayAsTheyWereButForTheSheet) {
  NewBook(5);
  const std::vector<FoundRecord> before = Records();
  XLAppendSheet(&buffer, &size, "Data", 0, 0);
  const std::vector<FoundRecord> after = Records();
  for (size_t i = 0; i + 1 < before.size(); ++i) EXPECT_EQ(Hex(after[i].bytes), Hex(before[i].bytes)) << i;
  EXPECT_EQ(after[before.size() - 1].type, 0x0085);
  EXPECT_EQ(after[before.size()].type, 0x000A);
}

TEST_F(SheetAppendTest, ZeroAndNegativeCounts_NoRow_DimensionsSayOneMore) {
  for (int16_t count : {int16_t{0}, int16_t{-1}, int16_t{-32768}}) {
    NewBook(5);
    EXPECT_EQ(XLAppendSheet(&buffer, &size, "Data", count, count), 1);
    EXPECT_TRUE(RecordsOfType(0x0208).empty());
    EXPECT_EQ(Hex(RecordsOfType(0x0200).at(0).bytes),
              "00 02 0E 00 " + Hex(U16(0) + U16(static_cast<uint16_t>(count + 1)) + U16(0) +
                                   U16(static_cast<uint16_t>(count + 1)) + Bytes(6)));
    MEMORYFREE(&buffer);
  }
}

TEST_F(SheetAppendTest, RangeReadsBackOneLargerInEachDirection) {
  for (int32_t selector : {5, 8}) {
    NewBook(selector);
    ASSERT_EQ(XLAppendSheet(&buffer, &size, "Data", 3, 2), 1);
    uint32_t table = 0;
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
    uint16_t range[4] = {};
    EXPECT_EQ(XLGetSheetSize(buffer, table, 1, &range[0], &range[1], &range[2], &range[3]), 0);
    EXPECT_EQ(range[0], 1u);
    EXPECT_EQ(range[1], 3u);
    EXPECT_EQ(range[2], 1u);
    EXPECT_EQ(range[3], 4u);
    MEMORYFREEALL();
  }
}

TEST_F(SheetAppendTest, RowsOf32767_AllOfThem) {
  NewBook(5);
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Data", 1, 32767), 1);
  EXPECT_EQ(RecordsOfType(0x0208).size(), 32767u);
  EXPECT_EQ(U16At(OpenBlock(buffer), RecordsOfType(0x0208).back().at + 4), 32766u);
  ExpectWholeWorkbook(1);
}

TEST_F(SheetAppendTest, NullAndEmptyNames_CountOn) {
  NewBook(5);
  EXPECT_EQ(XLAppendSheet(&buffer, &size, nullptr, 0, 0), 1);
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "", 0, 0), 2);
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Own", 0, 0), 3);
  ASSERT_EQ(Sheets().size(), 3u);
  EXPECT_EQ(Sheets()[0].first, "Sheet1");
  EXPECT_EQ(Sheets()[1].first, "Sheet2");
  EXPECT_EQ(Sheets()[2].first, "Own");
  ExpectWholeWorkbook(3);
}

TEST_F(SheetAppendTest, EachNewSheetIsSelectedAndNoOtherButByItsDefault) {
  NewBook(5);
  for (int i = 0; i < 3; ++i) XLAppendSheet(&buffer, &size, nullptr, 0, 0);
  const Bytes window1 = RecordsOfType(0x003D).at(0).bytes;
  EXPECT_EQ(ReadU16(window1.data() + 14), 2u);
  EXPECT_EQ(ReadU16(window1.data() + 16), 2u);
  const std::vector<FoundRecord> window2 = RecordsOfType(0x023E);
  ASSERT_EQ(window2.size(), 3u);
  EXPECT_EQ(ReadU16(window2[0].bytes.data() + 4), 0x00B6u);
  EXPECT_EQ(ReadU16(window2[1].bytes.data() + 4), 0x00B6u);
  EXPECT_EQ(ReadU16(window2[2].bytes.data() + 4), 0x06B6u);
}

TEST_F(SheetAppendTest, HundredSheets) {
  NewBook(8);
  for (int16_t i = 1; i <= 100; ++i) ASSERT_EQ(XLAppendSheet(&buffer, &size, nullptr, 2, 2), i);
  ExpectWholeWorkbook(100);
  EXPECT_EQ(Sheets()[99].first, "Sheet100");
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(SheetAppendTest, PaletteBetweenBoundSheets_NewOneLandsBehindTheRun) {
  StreamBuilder book;
  book.Bof(5).Sheet("One").Record(0x0092, Bytes(2)).Sheet("Two").Record(0x008C, U32(1)).Eof();
  buffer = book.Bof(5, kWorksheet).Eof().Bof(5, kWorksheet).Eof().Load(&size);
  BiffVersion = 5;
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Own", 0, 0), 3);
  const std::vector<FoundRecord> records = Records();
  const uint16_t expected[] = {0x0809, 0x0085, 0x0092, 0x0085, 0x0085, 0x008C, 0x000A};
  for (size_t i = 0; i < std::size(expected); ++i) EXPECT_EQ(records[i].type, expected[i]) << i;
  ExpectWholeWorkbook(3);
}

// A workbook as many are: a record stands between the PALETTE and the BOUNDSHEETs.
StreamBuilder PaletteApart(uint16_t slack) {
  StreamBuilder book;
  book.Bof(5).Record(0x0092, Bytes(2)).Record(0x0160, U16(1)).Sheet("One").Sheet("Two").Eof();
  book.Bof(5, kWorksheet);
  if (slack != 0) book.Slack(slack);
  book.Number(0, 0, 15, 1.5).Eof().Bof(5, kWorksheet).Number(0, 0, 15, 2.5).Eof();
  return book;
}

TEST_F(SheetAppendTest, PaletteApartFromTheBoundSheets_NewSheetIsTheLast) {
  for (uint16_t slack : {uint16_t{0}, uint16_t{20}}) {
    buffer = PaletteApart(slack).Load(&size);
    BiffVersion = 5;
    EXPECT_EQ(XLAppendSheet(&buffer, &size, "Own", 0, 0), 3);
    EXPECT_EQ(XLAppendSheet(&buffer, &size, "Next", 0, 0), 4);
    ASSERT_EQ(Sheets().size(), 4u);
    EXPECT_EQ(Sheets()[2].first, "Own");
    EXPECT_EQ(Sheets()[3].first, "Next");
    EXPECT_EQ(Cells(1), "03 02 0E 00 00 00 00 00 0F 00 00 00 00 00 00 00 F8 3F \n") << slack;
    EXPECT_EQ(Cells(2), "03 02 0E 00 00 00 00 00 0F 00 00 00 00 00 00 00 04 40 \n") << slack;
    for (const auto& [name, bof] : Sheets()) EXPECT_EQ(U16At(OpenBlock(buffer), bof), 0x0809) << name;
    EXPECT_EQ(LiveBlocks(), 1u);
    MEMORYFREE(&buffer);
  }
}

// A BOUNDSHEET behind the run: the new sheet comes before it in the globals, and behind it in the stream.
TEST_F(SheetAppendTest, BoundSheetBehindTheRun_EverySheetIsFound) {
  for (uint16_t slack : {uint16_t{0}, uint16_t{20}}) {
    StreamBuilder book;
    book.Bof(5).Sheet("One").Record(0x008C, U32(1)).Sheet("Two").Eof().Bof(5, kWorksheet);
    if (slack != 0) book.Slack(slack);
    buffer = book.Number(0, 0, 15, 1.5).Eof().Bof(5, kWorksheet).Number(0, 0, 15, 2.5).Eof().Load(&size);
    BiffVersion = 5;
    EXPECT_EQ(XLAppendSheet(&buffer, &size, "Own", 0, 0), 2);
    ASSERT_EQ(Sheets().size(), 3u);
    EXPECT_EQ(Sheets()[1].first, "Own");
    EXPECT_EQ(Cells(1), "03 02 0E 00 00 00 00 00 0F 00 00 00 00 00 00 00 F8 3F \n") << slack;
    EXPECT_EQ(Cells(2), "");
    EXPECT_EQ(Cells(3), "03 02 0E 00 00 00 00 00 0F 00 00 00 00 00 00 00 04 40 \n") << slack;
    for (const auto& [name, bof] : Sheets()) EXPECT_EQ(U16At(OpenBlock(buffer), bof), 0x0809) << name;
    MEMORYFREE(&buffer);
  }
}

TEST_F(SheetAppendTest, BufferWithoutBufEnd_KeepsAllItsBytes) {
  StreamBuilder book;
  book.Bof(5).Sheet("One").Eof().Bof(5, kWorksheet).Eof();
  buffer = book.Load(&size);
  size -= 4;
  BiffVersion = 5;
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Own", 0, 0), 2);
  EXPECT_EQ(Sheets()[1].second, book.Here() + 15);
  ExpectWholeWorkbook(2);
}

TEST_F(SheetAppendTest, SlackWithoutJumps_IsCarriedAndThenFolded) {
  StreamBuilder book;
  book.Bof(5).Slack(20).Sheet("One").Eof().Bof(5, kWorksheet).Slack(7).Number(0, 0, 15, 1.5).Eof();
  buffer = book.Load(&size);
  BiffVersion = 5;
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "Own", 0, 0), 2);
  EXPECT_EQ(Sheets()[0].second, 12u + 15 + 15 + 4);
  EXPECT_EQ(Cells(1), "03 02 0E 00 00 00 00 00 0F 00 00 00 00 00 00 00 F8 3F \n");
  ExpectWholeWorkbook(2);
}

TEST_F(SheetAppendTest, Full_LabelsWithTheirDoubledText) {
  for (int32_t selector : {5, 8}) {
    NewBook(selector);
    const char* texts[] = {"ab\0cd", "", "x\0y", nullptr};
    EXPECT_EQ(XLAppendFullSheet(&buffer, &size, "Data", 2, 2, texts), 1);
    EXPECT_EQ(Cells(1),
              "04 02 0C 00 00 00 00 00 00 00 02 00 00 61 62 00 \n"
              "04 02 08 00 00 00 01 00 00 00 00 00 \n"
              "04 02 0A 00 01 00 00 00 00 00 01 00 00 78 \n"
              "04 02 08 00 01 00 01 00 00 00 00 00 \n");
    ExpectWholeWorkbook(1);
    MEMORYFREE(&buffer);
  }
}

TEST_F(SheetAppendTest, Full_IsTheEmptySheetWithTheCellsBehindTheRows) {
  NewBook(5);
  const char* texts[] = {"a\0b"};
  XLAppendFullSheet(&buffer, &size, "Data", 1, 1, texts);
  std::vector<uint16_t> types;
  for (const FoundRecord& record : Records(BofOf(1))) types.push_back(record.type);
  const std::vector<uint16_t> tail(types.end() - 6, types.end());
  EXPECT_EQ(tail, (std::vector<uint16_t>{0x0200, 0x0208, 0x0204, 0x023E, 0x001D, 0x000A}));
  EXPECT_TRUE(RecordsOfType(0x008C, BofOf(1)).empty()) << "no COUNTRY";
}

TEST_F(SheetAppendTest, Full_NullArray_LabelsWithoutText) {
  NewBook(5);
  EXPECT_EQ(XLAppendFullSheet(&buffer, &size, "Data", 1, 1, nullptr), 1);
  EXPECT_EQ(Cells(1), "04 02 08 00 00 00 00 00 00 00 00 00 \n");
}

TEST_F(SheetAppendTest, Full_GrowsThroughTheSlotsAndReadsBackWhole) {
  NewBook(5);
  const std::string text = std::string(40, 'x') + std::string(41, '\0');
  const std::vector<const char*> texts(100 * 300, text.c_str());
  EXPECT_EQ(XLAppendFullSheet(&buffer, &size, "Data", 100, 300, texts.data()), 1);
  EXPECT_EQ(RecordsOfType(0x0204).size(), 30000u);
  EXPECT_EQ(MEMORYISHANDLE(buffer), 9) << "from 8, where it was built, by way of the refresh";
  ExpectWholeWorkbook(1);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(SheetAppendTest, NullPointersAndNoBuffer_Minus4) {
  EXPECT_EQ(XLAppendSheet(nullptr, nullptr, nullptr, 1, 1), -4);
  EXPECT_EQ(XLAppendFullSheet(nullptr, nullptr, nullptr, 1, 1, nullptr), -4);
  size = 50;
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "x", 1, 1), -4);
  EXPECT_EQ(size, 50u);
  buffer = 0x12345678;
  EXPECT_EQ(XLAppendSheet(&buffer, &size, "x", 1, 1), -4);
  EXPECT_EQ(buffer, 0x12345678u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

}  // namespace
}  // namespace tolvenar::testing
