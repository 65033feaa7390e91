// Sheet catalogue: counts, generations and names.
#include "query/sheet_catalogue.h"

#include <algorithm>
#include <cstring>

#include "query/shared_strings.h"
#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class SheetCatalogue : public BookTest {
 protected:
  // The name as its bytes; "(untouched)" when it was not written.
  std::string NameOf(int16_t sheet, int16_t* length = nullptr) {
    static OLECHAR untouched[1] = {};
    BSTR name = untouched;
    const int16_t result = XLGetNameSheet(buffer_, table_, sheet, &name);
    if (length != nullptr) *length = result;
    if (name == untouched) return "(untouched)";
    const std::string bytes = BytesOf(name);
    SysFreeString(name);
    return bytes;
  }

  void LoadThreeSheets() {
    StreamBuilder stream;
    stream.Bof(6).Sheet("One").Sheet("Second").Sheet("3").Eof();
    for (int i = 0; i < 3; ++i) stream.Bof(6, kWorksheet).Eof();
    Load(stream);
  }
};

std::string Packed(const std::string& text) {
  return text + std::string(text.size(), '\0');
}

TEST_F(SheetCatalogue, NumSheets_IsTheLow16BitsOfTheFirstEntry) {
  EXPECT_EQ(XLGetNumSheets(0), 0);
  LoadThreeSheets();
  EXPECT_EQ(XLGetNumSheets(table_), 3);
  PutTableEntry(Table(), 0, 0x00058002);
  EXPECT_EQ(XLGetNumSheets(table_), -32766);
}

TEST_F(SheetCatalogue, StaleTable_HasNoSheets) {
  LoadThreeSheets();
  const uint32_t stale = table_;
  MEMORYFREE(&table_);
  EXPECT_EQ(XLGetNumSheets(stale), 0);
}

TEST_F(SheetCatalogue, VersInt_ReturnsItsArgument) {
  for (int16_t value : {int16_t{0}, int16_t{5}, int16_t{-1}, int16_t{32767}, int16_t{-32768}}) {
    EXPECT_EQ(XLVersInt(value), value);
  }
}

TEST_F(SheetCatalogue, NumVers_SetsTheGenerationOfTheGlobals) {
  for (uint8_t version : {uint8_t{5}, uint8_t{6}}) {
    Load(OneSheet(version).Eof(), 77);
    EXPECT_EQ(XLGetNumVers(buffer_, table_), version);
    EXPECT_EQ(BiffVersion, version);
    MEMORYFREEALL();
  }
}

TEST_F(SheetCatalogue, NumVers_TheLastBofInTheGlobalsWins_OfAnyTypeWithThatLowByte) {
  StreamBuilder stream;
  stream.Bof(6).Record(0x0009, {0, 0x02, 0, 0}).Record(0x1009, {0, 0x44, 0, 0}).Sheet("S").Eof();
  Load(stream.Bof(5, kWorksheet).Eof());
  EXPECT_EQ(XLGetNumVers(buffer_, table_), 2);
  EXPECT_EQ(BiffVersion, 2);
}

TEST_F(SheetCatalogue, NumVers_EmptyGlobals_LeaveTheGeneration) {
  Load(OneSheet().Eof(), 77);
  PutTableEntry(Table(), kTableFirstSheet, 4);
  EXPECT_EQ(XLGetNumVers(buffer_, table_), 77);
  EXPECT_EQ(BiffVersion, 77);
}

TEST_F(SheetCatalogue, NumVers_NullTableOrBuffer_LeavesTheGeneration) {
  Load(OneSheet(5).Eof(), 77);
  EXPECT_EQ(XLGetNumVers(buffer_, 0), 77);
  EXPECT_EQ(XLGetNumVers(0, table_), 77);
  EXPECT_EQ(XLGetNumVers(buffer_, 12345), 77);
  EXPECT_EQ(BiffVersion, 77);
}

TEST_F(SheetCatalogue, NumVers_ReturnsTheLow16Bits) {
  BiffVersion = 0x12345;
  EXPECT_EQ(XLGetNumVers(0, 0), 0x2345);
}

TEST_F(SheetCatalogue, NameSheet_GivesThePackedNameAndItsLength) {
  LoadThreeSheets();
  int16_t length = 0;
  EXPECT_EQ(NameOf(1, &length), Packed("One"));
  EXPECT_EQ(length, 3);
  EXPECT_EQ(NameOf(2, &length), Packed("Second"));
  EXPECT_EQ(length, 6);
  EXPECT_EQ(NameOf(3, &length), Packed("3"));
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SheetCatalogue, NameSheet_OneOrLess_IsTheFirst) {
  LoadThreeSheets();
  for (int sheet : {1, 0, -1, -32768}) EXPECT_EQ(NameOf(static_cast<int16_t>(sheet)), Packed("One")) << sheet;
}

TEST_F(SheetCatalogue, NameSheet_PastTheLast_ReadsWhereTheStrideLands) {
  LoadThreeSheets();
  // Behind the three entries: EOF 0A 00 00 00, BOF 09 08 10 00 00 06 10 00 ...: length at 10 is 0x10, the
  // name from 12 on.
  int16_t length = 0;
  const std::string name = NameOf(4, &length);
  EXPECT_EQ(length, 0x10);
  EXPECT_EQ(name.substr(0, 4), std::string("\xBB\x0D\xCC\x07", 4));
  NameOf(32767, &length);
  EXPECT_EQ(length, 0);
}

TEST_F(SheetCatalogue, NameSheet_BiffFiveNamesComeOutShifted) {
  StreamBuilder stream;
  stream.Bof(5).Record(0x0085, U32(0) + U16(0) + Bytes{4} + Text("Data")).Eof();
  const uint32_t bof = stream.Here();
  stream.Bof(5, kWorksheet).Eof();
  Bytes bytes = stream.Stream();
  WriteU32(bytes.data() + 12 + kBoundSheetBof, bof);
  Load(StreamBuilder().Raw(bytes), kBiff5);
  int16_t length = 0;
  EXPECT_EQ(NameOf(1, &length), Packed("ata\x0A"));
  EXPECT_EQ(length, 4);
}

TEST_F(SheetCatalogue, NameSheet_BiffFiveLaterEntriesAreMisplaced) {
  // The second entry is looked for a byte too far: its name's first byte is taken for the length, and the name
  // begins with its third.
  StreamBuilder stream;
  stream.Bof(5).Record(0x0085, U32(0) + U16(0) + Bytes{4} + Text("Data"));
  stream.Record(0x0085, U32(0) + U16(0) + Bytes{5} + Bytes{3} + Text("next")).Eof();
  const uint32_t bof = stream.Here();
  stream.Bof(5, kWorksheet).Eof();
  Bytes bytes = stream.Stream();
  WriteU32(bytes.data() + 12 + kBoundSheetBof, bof);
  WriteU32(bytes.data() + 27 + kBoundSheetBof, bof);
  Load(StreamBuilder().Raw(bytes), kBiff5);
  int16_t length = 0;
  EXPECT_EQ(NameOf(2, &length), Packed("ext"));
  EXPECT_EQ(length, 3);
}

TEST_F(SheetCatalogue, NameSheet_StridesByTheNamesLength_NotByTheRecords) {
  StreamBuilder stream;
  stream.Bof(6).Record(0x0085, U32(0) + U16(0) + Bytes{1, 0, 'A'} + Bytes(10) + Bytes{2, 0, 'x', 'y'});
  stream.Record(0x0085, U32(0) + U16(0) + Bytes{1, 0, 'B'}).Eof();
  const uint32_t bof = stream.Here();
  stream.Bof(6, kWorksheet).Eof();
  Bytes bytes = stream.Stream();
  for (uint32_t entry : {20u, 47u}) WriteU32(bytes.data() + entry + kBoundSheetBof, bof);
  Load(StreamBuilder().Raw(bytes));
  EXPECT_EQ(NameOf(1), Packed("A"));
  EXPECT_EQ(NameOf(2), Packed("xy"));
}

TEST_F(SheetCatalogue, NameSheet_FindsTheFirstEntryThroughADetour_ButFollowsNoneAfterIt) {
  Load(OneSheet().Eof());
  const uint32_t entry = StreamBuilder().Bof(6).Here();
  const Bytes patch = {0x85, 0, 9, 0, 0, 0, 0, 0, 0, 0, 1, 0, 'P'};
  ASSERT_EQ(PatchRecord(&buffer_, patch.data(), entry, static_cast<uint32_t>(patch.size()), &size_), 0);
  EXPECT_EQ(NameOf(1), Packed("P"));
  EXPECT_EQ(NameOf(2), Packed("Data"));  // the displaced entry lies behind the patch
}

TEST_F(SheetCatalogue, NameSheet_NoBoundSheet_GivesAnEmptyName) {
  Load(StreamBuilder().Bof(6).Eof());
  int16_t length = -1;
  EXPECT_EQ(NameOf(1, &length), "");
  EXPECT_EQ(length, 0);
}

TEST_F(SheetCatalogue, NameSheet_NoBoundSheet_SeesNothingOfAnEarlierTenantOfTheSlot) {
  LoadThreeSheets();
  MEMORYFREE(&buffer_);
  MEMORYFREE(&table_);
  Load(StreamBuilder().Bof(6).Eof());
  EXPECT_EQ(NameOf(1), "");
  EXPECT_EQ(XLGetNumVers(buffer_, table_), 6);
}

TEST_F(SheetCatalogue, NameSheet_GlobalsEndOfZero_GivesAnEmptyName) {
  LoadThreeSheets();
  PutTableEntry(Table(), kTableFirstSheet, 4);
  EXPECT_EQ(NameOf(1), "");
}

TEST_F(SheetCatalogue, NameSheet_ChartTypeIsNoBoundSheet) {
  StreamBuilder stream;
  stream.Bof(6).Record(0x1085, Bytes(20, 'x')).Record(0x0285, U32(0) + U16(0) + Bytes{1, 0, 'y'}).Eof();
  Load(stream.Bof(6, kWorksheet).Eof());
  PutTableEntry(Table(), kTableFirstSheet, 20 + 24 + 13 + 4);
  EXPECT_EQ(NameOf(1), Packed("y"));
}

TEST_F(SheetCatalogue, NameSheet_NullTableOrNullName) {
  LoadThreeSheets();
  EXPECT_EQ(XLGetNameSheet(buffer_, table_, 2, nullptr), 6);
  table_ = 0;
  int16_t length = -1;
  EXPECT_EQ(NameOf(1, &length), "(untouched)");
  EXPECT_EQ(length, 0);
}

TEST_F(SheetCatalogue, NameSheet_LongestName) {
  const std::string name(255, 'n');
  Load(StreamBuilder().Bof(6).Sheet(name).Eof().Bof(6, kWorksheet).Eof());
  int16_t length = 0;
  EXPECT_EQ(NameOf(1, &length), Packed(name));
  EXPECT_EQ(length, 255);
}

TEST_F(SheetCatalogue, SheetParam_OnlyTellsWhetherItCouldLook) {
  LoadThreeSheets();
  EXPECT_EQ(XLGetSheetParam(buffer_, 0, 1, 1, 2, 3, 4), 0u);
  EXPECT_NE(XLGetSheetParam(buffer_, table_, 1, 1, 2, 3, 4), 0u);
  EXPECT_NE(XLGetSheetParam(buffer_, table_, -5, 0, 0, 0, 0), 0u);
  EXPECT_NE(XLGetSheetParam(buffer_, table_, 32767, 0, 0, 0, 0), 0u);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SheetCatalogue, SheetsNameNum_NullBufferIsTestedFirst) {
  LoadThreeSheets();
  EXPECT_EQ(XLSheetsNameNum(0, 0, 0), 3);
  EXPECT_EQ(XLSheetsNameNum(0, table_, 0), 3);
  EXPECT_EQ(XLSheetsNameNum(buffer_, 0, 0), 0);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SheetCatalogue, SheetsNameNum_KeepsABlockForEverySheet) {
  LoadThreeSheets();
  const uint32_t bytes = BytesInUse();
  EXPECT_EQ(XLSheetsNameNum(buffer_, table_, 99), 0);
  EXPECT_EQ(LiveBlocks(), 5u);
  EXPECT_EQ(BytesInUse() - bytes, 4u + 7u + 2u);
}

TEST_F(SheetCatalogue, SheetsNameNum_EachBlockHoldsItsName) {
  MEMORYALLOC(1);
  LoadThreeSheets();
  std::vector<uint32_t> slots;
  for (int k = 0; k < 3; ++k) slots.push_back(MEMORYALLOC(1));
  for (uint32_t slot : slots) {
    std::memset(BlockBytes(slot), 0xCC, 16);
    uint32_t taken = slot;
    MEMORYFREE(&taken);
  }
  EXPECT_EQ(XLSheetsNameNum(buffer_, table_, 0), 0);
  EXPECT_EQ(BlockContents(slots[0], 5), (Bytes{'O', 'n', 'e', 0, 0xCC}));
  EXPECT_EQ(BlockContents(slots[1], 8), (Bytes{'S', 'e', 'c', 'o', 'n', 'd', 0, 0xCC}));
  EXPECT_EQ(BlockContents(slots[2], 3), (Bytes{'3', 0, 0xCC}));
  for (uint32_t slot : slots) EXPECT_NE(MEMORYISHANDLE(slot), 0);
}

// Two of the walks begin at offset 0 whatever the table's entry 1 says, the others where it says.
TEST_F(SheetCatalogue, WalksBeginAtOffsetZeroOrAtTheTablesEntryOne) {
  LoadThreeSheets();
  PutTableEntry(Table(), kTableGlobalsBegin, GlobalsEnd(Table()));
  EXPECT_EQ(NameOf(1), Packed("One"));
  BiffVersion = 77;
  EXPECT_EQ(XLGetNumVers(buffer_, table_), 6);
  EXPECT_EQ(XLNumStrBucket(buffer_, table_), 0);
  EXPECT_EQ(XLNumStrExt(buffer_, table_), static_cast<int16_t>(table_));
  const uint32_t bytes = BytesInUse();
  EXPECT_EQ(XLSheetsNameNum(buffer_, table_, 0), 0);
  EXPECT_EQ(BytesInUse() - bytes, 3u);  // three empty names
}

// The walk ends at the globals EOF's place, though a DETOUR stands there.
TEST_F(SheetCatalogue, APatchBeforeTheGlobalsEof_IsNotSeen) {
  Load(StreamBuilder().Bof(6).Record(0x0042, U16(1200)).Eof().Bof(6, kWorksheet).Eof());
  PutTableEntry(Table(), 0, 1);
  PutTableEntry(Table(), kTableFirstSheet, 30);
  const Bytes patch = {0x85, 0, 9, 0, 0, 0, 0, 0, 0, 0, 1, 0, 'P'};
  ASSERT_EQ(PatchRecord(&buffer_, patch.data(), 26, static_cast<uint32_t>(patch.size()), &size_), 0);
  EXPECT_EQ(NameOf(1), "");
  EXPECT_EQ(XLNumStrBucket(buffer_, table_), 1200);
}

TEST_F(SheetCatalogue, SheetsNameNum_FewFreeBlocks_EndsEarly) {
  for (uint32_t taken = 2; taken <= 9; ++taken) {
    LoadThreeSheets();
    FillPool(taken);
    EXPECT_EQ(XLSheetsNameNum(buffer_, table_, 0), 0);
    EXPECT_EQ(LiveBlocks(), std::min(taken + 3, 9u));
    MEMORYFREEALL();
  }
}

TEST_F(SheetCatalogue, FullPool_NamesNothing) {
  for (uint32_t taken = 2; taken <= 9; ++taken) {
    LoadThreeSheets();
    FillPool(taken);
    int16_t length = -1;
    EXPECT_EQ(NameOf(2, &length), taken < 9 ? Packed("Second") : "(untouched)") << taken;
    EXPECT_EQ(length, taken < 9 ? 6 : 0);
    EXPECT_EQ(XLGetSheetParam(buffer_, table_, 2, 0, 0, 0, 0) != 0, taken < 9);
    EXPECT_EQ(XLGetNumVers(buffer_, table_), 6);
    EXPECT_EQ(LiveBlocks(), taken);
    MEMORYFREEALL();
  }
}

TEST_F(SheetCatalogue, NegativeCount_TakesNoNames) {
  LoadThreeSheets();
  PutTableEntry(Table(), 0, 0xFFFF);
  EXPECT_EQ(XLSheetsNameNum(buffer_, table_, 0), 0);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SheetCatalogue, RingsInTheGlobals_End) {
  for (uint32_t target : {0u, 20u, 24u, 0xFFFFFFFCu}) {
    Load(StreamBuilder()
             .Bof(6)
             .Record(0x0042)
             .Record(0x0043, Bytes(8))
             .Sheet("S")
             .Eof()
             .Bof(6, kWorksheet)
             .Eof());
    const uint32_t at = 24;
    PutU16(Stream(), at, 0xFEFF);
    PutU32(Stream(), at + kJumpTarget, target);
    EXPECT_EQ(XLGetNumVers(buffer_, table_), 6) << target;
    EXPECT_EQ(NameOf(1), "") << target;
    EXPECT_NE(XLGetSheetParam(buffer_, table_, 1, 0, 0, 0, 0), 0u);
    EXPECT_EQ(XLSheetsNameNum(buffer_, table_, 0), 0);
    MEMORYFREEALL();
  }
}

}  // namespace
