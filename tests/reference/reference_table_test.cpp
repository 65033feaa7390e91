// Tables: ids, deletion, and the text and value of a cell, among patches and in a compacted reference.
#include "reference/reference_table.h"

#include "reference/graph_object.h"
#include "reference/reference_file.h"
#include "reference/reference_index.h"
#include "reference/reference_states.h"
#include "reference/table_array.h"
#include "reference/table_positions.h"
#include "support/temp_file.h"
#include "support/test_array.h"
#include "support/workbook_file.h"

namespace tolvenar::testing {
namespace {

const std::string kOtherTable = Hex(TableHeadOf(2, 1, 1, 1, 1) + kTableEnd);

class ReferenceTableTest : public RefStateTest {
 protected:
  // Tables 1 (2 x 3 x 4 x 5) and 2.
  void SetUp() override {
    RefStateTest::SetUp();
    ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 2, 3, 4, 5), 1);
    ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 2);
    Settle();
  }

  int16_t PutText(int16_t table, const TableCoordinates& cell, const char* text) {
    return XLRTextToTable(&buffer_, &size_, table, cell, text);
  }
  int16_t PutValue(int16_t table, const TableCoordinates& cell, uint32_t low, uint32_t high = 0) {
    return XLRValueToTable(&buffer_, &size_, table, cell, low, high);
  }
  // The text of a cell, or the result in brackets.
  std::string TextOf(uint16_t table, const TableCoordinates& cell) {
    BSTR text = nullptr;
    const int16_t result = XLRGetTableText(buffer_, table, &text, cell);
    const std::string bytes = result == 0 ? BytesOf(text) : "[" + std::to_string(result) + "]";
    SysFreeString(text);
    return bytes;
  }
  int16_t ValueOf(uint16_t table, const TableCoordinates& cell, uint64_t* value) {
    return XLRGetTableValue(buffer_, table, value, cell);
  }
  // What the objects are with these records in table 1.
  static std::string WithTable1(const Bytes& content) {
    return Hex(TableHeadOf(1, 2, 3, 4, 5) + content + kTableEnd) + kOtherTable;
  }
};
TOLVENAR_BOTH_STATES(ReferenceTableTest);

TEST_P(ReferenceTableTest, CreationGivesTheLowestFreeId) {
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 7, 7, 7, 7), 1);
  EXPECT_EQ(XLRGetNumItems(buffer_, 1), 2);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 0, 0x8000, 0xFFFF, 9), 3);
  EXPECT_EQ(Objects(), kOtherTable + Hex(TableHeadOf(1, 7, 7, 7, 7) + kTableEnd) +
                           Hex(TableHeadOf(3, 0, 0x8000, 0xFFFF, 9) + kTableEnd));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(ReferenceTableTest, TablesAndGraphsHaveTheirOwnIds) {
  EXPECT_EQ(XLRCreateGraph(&buffer_, &size_, 1), 1);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 3);
  EXPECT_EQ(XLRCreateGraph(&buffer_, &size_, 1), 2);
}

TEST_P(ReferenceTableTest, TextStandsLastInItsTable) {
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), 0);
  EXPECT_EQ(PutText(1, {2, 3, 4, 5}, "z"), 0);
  EXPECT_EQ(Objects(), WithTable1(CellText(1, "abc") + CellText(120, "z")));
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "abc");
  EXPECT_EQ(TextOf(1, {2, 3, 4, 5}), "z");
  EXPECT_EQ(TextOf(2, {1, 1, 1, 1}), "[-200]");
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(ReferenceTableTest, TextReplacesTextInItsPlace) {
  ASSERT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), 0);
  ASSERT_EQ(PutText(1, {2, 1, 1, 1}, "def"), 0);
  const uint32_t size = size_;
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "xyz"), 0);
  EXPECT_EQ(size_, size);  // the freed room fits
  EXPECT_EQ(Objects(), WithTable1(CellText(1, "xyz") + CellText(2, "def")));
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "longer"), 0);
  EXPECT_EQ(Objects(), WithTable1(CellText(1, "longer") + CellText(2, "def")));
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, ""), 0);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "");
  EXPECT_EQ(PutText(1, {2, 1, 1, 1}, nullptr), 0);
  EXPECT_EQ(Objects(), WithTable1(CellText(1, "") + CellText(2, "")));
}

TEST_P(ReferenceTableTest, TextsThatJustFitABlockAreKept) {
  for (const size_t record : {256u, 512u, 1024u}) {
    for (size_t length = record - 16; length < record; ++length) {
      const std::string text = std::string(length - 1, 'a') + 'z';
      EXPECT_EQ(PutText(1, {1, 1, 1, 1}, text.c_str()), 0);
      EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), text);
    }
  }
}

TEST_P(ReferenceTableTest, TextIsKeptByteForByte) {
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "\x01\x7F\x80\xFF"), 0);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "\x01\x7F\x80\xFF");
}

TEST_P(ReferenceTableTest, NegativeIdDeletesTheText) {
  ASSERT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), 0);
  const uint32_t size = size_;
  EXPECT_EQ(PutText(-1, {1, 1, 1, 1}, "ignored"), 0);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "[-200]");
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Objects(), WithTable1({}));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(ReferenceTableTest, NegativeIdStoresTheTextOfACellThatHasNone) {
  EXPECT_EQ(PutText(-1, {1, 1, 1, 1}, "abc"), 0);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "abc");
  EXPECT_EQ(PutValue(-1, {1, 1, 1, 1}, 5, 6), 0);
  EXPECT_EQ(Objects(), WithTable1(CellText(1, "abc") + CellValue(1, 5, 6)));
}

TEST_P(ReferenceTableTest, CoordinateAboveItsDimensionChangesNothing) {
  const Bytes before = Image();
  uint64_t value = 7;
  for (const TableCoordinates& cell :
       {TableCoordinates{3, 1, 1, 1}, {1, 4, 1, 1}, {1, 1, 5, 1}, {1, 1, 1, 6}, {0x7FFF, 1, 1, 1}}) {
    EXPECT_EQ(PutText(1, cell, "abc"), -100);
    EXPECT_EQ(PutText(-1, cell, "abc"), -100);
    EXPECT_EQ(PutValue(1, cell, 1), -100);
    EXPECT_EQ(TextOf(1, cell), "[-100]");
    EXPECT_EQ(ValueOf(1, cell, &value), -100);
  }
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(value, 7u);
}

TEST_P(ReferenceTableTest, CoordinateBelow1IsAnotherCellsNumber) {
  EXPECT_EQ(PutText(1, {0, 2, 1, 1}, "abc"), 0);  // (0, 2): 2 - 1, which is (2, 1)
  EXPECT_EQ(TextOf(1, {2, 1, 1, 1}), "abc");
  EXPECT_EQ(PutText(1, {0, 1, 1, 1}, "zero"), 0);
  EXPECT_EQ(PutText(1, {0xFFFF, 1, 1, 1}, "below"), 0);
  EXPECT_EQ(Objects(), WithTable1(CellText(2, "abc") + CellText(0, "zero") + CellText(0xFFFFFFFF, "below")));
  EXPECT_EQ(TextOf(1, {0xFFFF, 1, 1, 1}), "below");
}

TEST_P(ReferenceTableTest, OnlyTheLow16BitsOfACoordinateCount) {
  EXPECT_EQ(PutText(1, {0xABCD0002, 0x10003, 0x10004, 0x10005}, "abc"), 0);
  EXPECT_EQ(TextOf(1, {2, 3, 4, 5}), "abc");
  EXPECT_EQ(TextOf(1, {0x20002, 3, 4, 5}), "abc");
  EXPECT_EQ(PutText(1, {0x18000, 1, 1, 1}, "lowest"), 0);  // -32768, whose cell counts on from 32767
  EXPECT_EQ(Objects(), WithTable1(CellText(120, "abc") + CellText(0x8000, "lowest")));
}

TEST_P(ReferenceTableTest, ValueIsEightBytesWithTheLowHalfFirst) {
  EXPECT_EQ(PutValue(1, {2, 2, 1, 1}, 0x11223344, 0x55667788), 0);
  EXPECT_EQ(Objects(), WithTable1(CellValue(4, 0x11223344, 0x55667788)));
  uint64_t value = 0;
  EXPECT_EQ(ValueOf(1, {2, 2, 1, 1}, &value), 0);
  EXPECT_EQ(value, 0x5566778811223344u);
  EXPECT_EQ(ValueOf(1, {1, 2, 1, 1}, &value), -200);
  EXPECT_EQ(value, 0x5566778811223344u);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(ReferenceTableTest, ValueIsReplacedAndDeleted) {
  ASSERT_EQ(PutValue(1, {1, 1, 1, 1}, 1), 0);
  ASSERT_EQ(PutText(1, {1, 1, 1, 1}, "text"), 0);
  const uint32_t size = size_;
  EXPECT_EQ(PutValue(1, {1, 1, 1, 1}, 2, 3), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Objects(), WithTable1(CellValue(1, 2, 3) + CellText(1, "text")));
  EXPECT_EQ(PutValue(-1, {1, 1, 1, 1}, 9), 0);
  EXPECT_EQ(Objects(), WithTable1(CellText(1, "text")));
}

TEST_P(ReferenceTableTest, CellsOfOneNumberInTwoTablesAreApart) {
  EXPECT_EQ(PutText(2, {1, 1, 1, 1}, "two"), 0);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "[-200]");
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "one"), 0);
  EXPECT_EQ(TextOf(2, {1, 1, 1, 1}), "two");
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "one");
  Compact();
  EXPECT_EQ(TextOf(2, {1, 1, 1, 1}), "two");
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "one");
}

TEST_P(ReferenceTableTest, DeletionLeavesNothingOfTheTable) {
  ASSERT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), 0);
  ASSERT_EQ(PutText(2, {1, 1, 1, 1}, "two"), 0);
  ASSERT_EQ(PutValue(1, {1, 1, 1, 1}, 5), 0);
  const uint32_t size = size_;
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Objects(), Hex(TableHeadOf(2, 1, 1, 1, 1) + CellText(1, "two") + kTableEnd));
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "[-997]");
  EXPECT_EQ(TextOf(2, {1, 1, 1, 1}), "two");
  EXPECT_EQ(XLRGetNumItems(buffer_, 1), 1);
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), -997);
}

TEST_P(ReferenceTableTest, DeletionAfterACompactionOfPatchesKeepsTheNeighbours) {
  ASSERT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), 0);
  Compact();
  ASSERT_EQ(PutText(1, {2, 1, 1, 1}, "behind"), 0);
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  EXPECT_EQ(Objects(), kOtherTable);
  EXPECT_EQ(PutText(2, {1, 1, 1, 1}, "two"), 0);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 1);
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "one"), 0);
  Compact();
  EXPECT_EQ(Objects(), Hex(TableHeadOf(2, 1, 1, 1, 1) + CellText(1, "two") + kTableEnd +
                           TableHeadOf(1, 1, 1, 1, 1) + CellText(1, "one") + kTableEnd));
}

TEST_P(ReferenceTableTest, WithoutABufferNothingIsDone) {
  uint32_t none = 0;
  uint64_t value = 7;
  BSTR text = nullptr;
  EXPECT_EQ(XLRCreateTable(&none, &size_, 1, 1, 1, 1), -1);
  EXPECT_EQ(XLRCreateTable(nullptr, &size_, 1, 1, 1, 1), -1);
  EXPECT_EQ(XLRCreateTable(&buffer_, nullptr, 1, 1, 1, 1), -1);
  EXPECT_EQ(XLRDeleteTable(0, 1), -1);
  EXPECT_EQ(XLRTextToTable(&none, &size_, 1, {1, 1, 1, 1}, "abc"), -1);
  EXPECT_EQ(XLRTextToTable(nullptr, &size_, 1, {1, 1, 1, 1}, "abc"), -1);
  EXPECT_EQ(XLRTextToTable(&buffer_, nullptr, 1, {1, 1, 1, 1}, "abc"), -1);
  EXPECT_EQ(XLRValueToTable(&none, &size_, 1, {1, 1, 1, 1}, 1, 2), -1);
  EXPECT_EQ(XLRGetTableText(0, 1, &text, {1, 1, 1, 1}), -1);
  EXPECT_EQ(XLRGetTableValue(0, 1, &value, {1, 1, 1, 1}), -1);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(value, 7u);
}

TEST_P(ReferenceTableTest, AnOutVariableThatIsMissingIsNotWritten) {
  ASSERT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), 0);
  ASSERT_EQ(PutValue(1, {1, 1, 1, 1}, 1), 0);
  EXPECT_EQ(XLRGetTableText(buffer_, 1, nullptr, {1, 1, 1, 1}), 0);
  EXPECT_EQ(XLRGetTableValue(buffer_, 1, nullptr, {1, 1, 1, 1}), 0);
  EXPECT_EQ(XLRGetTableText(buffer_, 1, nullptr, {2, 1, 1, 1}), -200);
}

TEST_P(ReferenceTableTest, ATableThatIsNotListedIsNoObject) {
  const Bytes before = Image();
  uint64_t value = 7;
  for (const int16_t id : {int16_t{0}, int16_t{3}, int16_t{-3}, int16_t{-32768}, int16_t{32767}}) {
    EXPECT_EQ(PutText(id, {1, 1, 1, 1}, "abc"), -997) << id;
    EXPECT_EQ(PutValue(id, {1, 1, 1, 1}, 1), -997) << id;
  }
  EXPECT_EQ(TextOf(3, {1, 1, 1, 1}), "[-997]");
  EXPECT_EQ(ValueOf(3, {1, 1, 1, 1}, &value), -997);
  EXPECT_EQ(XLRDeleteTable(buffer_, 3), -997);
  EXPECT_EQ(Image(), before);
}

TEST_P(ReferenceTableTest, ABufferWithoutADirectoryHasNoObjects) {
  PutU32(Stream(), kRefHeaderMark, 0);
  uint64_t value = 7;
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), -999);
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), -997);
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), -997);
  EXPECT_EQ(PutValue(1, {1, 1, 1, 1}, 1), -997);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "[-997]");
  EXPECT_EQ(ValueOf(1, {1, 1, 1, 1}, &value), -997);
}

TEST_P(ReferenceTableTest, AHeadThatIsNotMetIsToldAfterTheEntryIsGone) {
  RepointRefEntry(buffer_, 1, kKindTable, static_cast<uint32_t>(FindRefEntry(buffer_, 2, kKindTable)));
  uint64_t value = 7;
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), -2);
  EXPECT_EQ(PutValue(1, {1, 1, 1, 1}, 1), -2);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "[-2]");
  EXPECT_EQ(ValueOf(1, {1, 1, 1, 1}, &value), -2);
  const std::string before = Objects();
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), -2);
  EXPECT_EQ(Objects(), before);
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), -997);
}

TEST_P(ReferenceTableTest, AnEntryThatPointsTooEarlyPassesOverTheTableThere) {
  ASSERT_EQ(PutText(1, {1, 1, 1, 1}, "one"), 0);
  RepointRefEntry(buffer_, 2, kKindTable, static_cast<uint32_t>(FindRefEntry(buffer_, 1, kKindTable)));
  EXPECT_EQ(TextOf(2, {1, 1, 1, 1}), "[-200]");  // the other table's text does not count
  EXPECT_EQ(PutText(2, {1, 1, 1, 1}, "two"), 0);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "one");
  EXPECT_EQ(TextOf(2, {1, 1, 1, 1}), "two");
  EXPECT_EQ(XLRDeleteTable(buffer_, 2), 0);
  EXPECT_EQ(Objects(), Hex(TableHeadOf(1, 2, 3, 4, 5) + CellText(1, "one") + kTableEnd));
}

TEST_P(ReferenceTableTest, ATextInFrontOfTheHeadDoesNotCountWhateverItsCell) {
  ASSERT_EQ(PutText(1, {0, 1, 1, 1}, "number 0"), 0);
  RepointRefEntry(buffer_, 2, kKindTable, static_cast<uint32_t>(FindRefEntry(buffer_, 1, kKindTable)));
  EXPECT_EQ(TextOf(2, {0, 1, 1, 1}), "[-200]");
  EXPECT_EQ(PutText(2, {0, 1, 1, 1}, "two"), 0);
  EXPECT_EQ(TextOf(1, {0, 1, 1, 1}), "number 0");
}

TEST_P(ReferenceTableTest, WithAFullPoolNothingChanges) {
  ASSERT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), 0);
  ASSERT_EQ(PutValue(1, {1, 1, 1, 1}, 1), 0);
  const Bytes before = Image();
  LeaveFree(0);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), -2);
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "def"), -4);
  EXPECT_EQ(PutText(-1, {1, 1, 1, 1}, "def"), -4);  // a deletion takes a block as well
  EXPECT_EQ(PutText(1, {2, 1, 1, 1}, "def"), -4);
  EXPECT_EQ(PutValue(1, {1, 1, 1, 1}, 2), -4);
  EXPECT_EQ(PutValue(1, {2, 1, 1, 1}, 2), -4);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_P(ReferenceTableTest, AFailedPatchFreesTheBufferAndTheRecord) {
  for (const bool replace : {false, true}) {
    SetUp();
    ASSERT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), 0);
    FillSlot();
    LeaveFree(1);
    EXPECT_EQ(PutText(1, {replace ? 1u : 2u, 1, 1, 1}, "longer"), replace ? -6 : -5);
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(LiveBlocks(), 7u);
  }
}

TEST_P(ReferenceTableTest, AFailedPatchOfAValueFreesTheBufferAndTheRecord) {
  FillSlot();
  LeaveFree(1);
  EXPECT_EQ(PutValue(1, {1, 1, 1, 1}, 5), -5);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 7u);
}

TEST_P(ReferenceTableTest, ACreationThatCantGrowTheBufferFreesIt) {
  FillSlot();
  LeaveFree(1);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), -4);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 7u);
}

TEST_P(ReferenceTableTest, ADirectoryWithoutAnEndGetsNoTable) {
  const uint32_t mark = U32At(Stream(), kRefHeaderMark);
  Walk walk = StartWalk(Stream(), mark);
  while (!IsChart(Stream(), walk.at, kLowRefEnd)) Step(&walk);
  PutU16(Stream(), walk.at, 0xFEFF);  // where REFEND stood: a jump to itself
  PutU32(Stream(), walk.at + kJumpTarget, walk.at);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), -998);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(ReferenceTableTest, TheLongestTextHas32757Bytes) {
  const std::string longest(32757, 'x');
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, longest.c_str()), 0);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), longest);
  const Bytes before = Image();
  for (const size_t length : {32758u, 32768u, 65525u, 65526u, 65535u, 65536u, 65539u, 131072u}) {
    EXPECT_EQ(PutText(1, {1, 1, 1, 1}, std::string(length, 'y').c_str()), -4) << length;
    EXPECT_EQ(PutText(1, {2, 1, 1, 1}, std::string(length, 'y').c_str()), -4) << length;
  }
  EXPECT_EQ(PutText(-1, {1, 1, 1, 1}, std::string(32758, 'y').c_str()), -4);  // nothing is deleted either
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 1u);
}

// A new reference, byte for byte.
class TableBytesTest : public RefContentsTest {};

TEST_F(TableBytesTest, ATableAndATextStandInTheirPatchAreas) {
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 2, 3, 4, 5), 1);
  ASSERT_EQ(XLRTextToTable(&buffer_, &size_, 1, {2, 1, 1, 1}, "abc"), 0);
  const Bytes expected = {0xFF, 0x10, 4,  0, 64,   0,    0, 0,                      // 0: REFHEADER
                          0xFF, 0xFE, 4,  0, 88,   0,    0, 0,                      // 8: to the table
                          0xFF, 0xFE, 4,  0, 64,   0,    0, 0,                      // 16: to the mark
                          0xFF, 0xFE, 4,  0, 36,   0,    0, 0, 0xF8, 0xFE, 0,   0,  // 24: to the entry
                          0xDC, 0x10, 8,  0, 1,    0,    1, 0, 8,    0,    0,   0,  // 36: REFENTRY
                          0xFE, 0x10, 4,  0, 0,    0,    0, 0, 0xFA, 0xFE, 4,   0,   32,  0, 0, 0,  // REFEND
                          0xDA, 0x10, 4,  0, 0,    0,    0, 0,  // 64: live REFMARK
                          0xDB, 0x10, 4,  0, 0,    0,    0, 0, 0xFA, 0xFE, 4,   0,   24,  0, 0, 0,  // REFDIR
                          0xDF, 0x10, 10, 0, 1,    0,    2, 0, 3,    0,    4,   0,   5,   0,  // 88: TABLEHEAD
                          0xFF, 0xFE, 4,  0, 122,  0,    0, 0, 0,    0,    0,   0,         // 102: to the text
                          0xFA, 0xFE, 4,  0, 16,   0,    0, 0,                             // 114: RESUME
                          0xD5, 0x10, 9,  0, 2,    0,    0, 0, 3,    0,    'a', 'b', 'c',  // 122: TABLETEXT
                          0xE0, 0x10, 0,  0, 0xDA, 0x10, 4, 0, 0,    0,    0,   0,  // TABLEEND, old mark
                          0xFA, 0xFE, 4,  0, 114,  0,    0, 0};
  EXPECT_EQ(Hex(Image()), Hex(expected));
}

TEST_F(TableBytesTest, ADeletedTableLeavesTheMarkBehindItAndTheJumps) {
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 2, 3, 4, 5), 1);
  ASSERT_EQ(XLRTextToTable(&buffer_, &size_, 1, {2, 1, 1, 1}, "abc"), 0);
  Bytes expected = Image();
  for (const uint32_t at : {36u, 88u, 122u, 135u}) {  // entry, head, text, end
    expected[at] = kLowSlack;
    expected[at + 1] = kPrivateHigh;
  }
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  EXPECT_EQ(Hex(Image()), Hex(expected));
}

TEST_F(TableBytesTest, ATableComesBackFromAFile) {
  TempFolder folder;
  const std::string path = folder.File("references.ref");
  ASSERT_TRUE(WriteWorkbook(path, "Contents", RefRecord(0xFF, 0) + RefRecord(0xFE, 0)));
  ASSERT_EQ(XLCreateReference(path.c_str()), 1);
  MEMORYFREE(&buffer_);
  ASSERT_EQ(XLReadReference(path.c_str(), &buffer_, &size_, 1), 0);
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 1);
  ASSERT_EQ(XLRValueToTable(&buffer_, &size_, 1, {1, 1, 1, 1}, 1, 2), 0);
  ASSERT_EQ(XLSaveReference(path.c_str(), &buffer_, &size_, 1), 0);
  MEMORYFREE(&buffer_);
  ASSERT_EQ(XLReadReference(path.c_str(), &buffer_, &size_, 1), 0);
  ASSERT_EQ(XLRTextToTable(&buffer_, &size_, 1, {1, 1, 1, 1}, "abc"), 0);
  EXPECT_EQ(Objects(), Hex(TableHeadOf(1, 1, 1, 1, 1) + CellValue(1, 1, 2) + CellText(1, "abc") + kTableEnd));
}

// Streams that this library doesn't make.
class OddTableTest : public ReferenceTableTest {
 protected:
  void SetUp() override { RefStateTest::SetUp(); }

  // The offset of the entry of an id.
  uint32_t FindEntryOf(uint16_t id) {
    Walk walk = StartWalk(Stream(), U32At(Stream(), kRefHeaderMark));
    while (!IsChart(Stream(), walk.at, kLowRefEntry) || U16At(Stream(), walk.at + kRefEntryId) != id)
      Step(&walk);
    return walk.at;
  }

  // A compacted stream whose table 1 has this content.
  void LoadTable(const Bytes& content, uint16_t d1 = 2) {
    const Bytes object = TableHeadOf(1, d1, 3, 4, 5) + content + kTableEnd;
    Load(RefRecord(0xFF, static_cast<uint32_t>(8 + object.size())) + object + RefRecord(0xDA, 0) +
         RefRecord(0xDB, 0) + Entry(1, 1, 8) + RefRecord(0xFE, 0));
  }
};
INSTANTIATE_TEST_SUITE_P(All, OddTableTest, ::testing::Values(RefState::kCompacted), RefStateName);

TEST_P(OddTableTest, OfTwoRecordsTheFirstIsReadAndTheLastReplaced) {
  LoadTable(CellText(1, "first") + CellValue(1, 1, 1) + CellText(1, "other") + CellValue(1, 2, 2));
  uint64_t value = 0;
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "first");
  EXPECT_EQ(ValueOf(1, {1, 1, 1, 1}, &value), 0);
  EXPECT_EQ(value, 0x100000001u);
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "third"), 0);
  EXPECT_EQ(PutValue(-1, {1, 1, 1, 1}, 0), 0);
  EXPECT_EQ(Objects(), Hex(TableHeadOf(1, 2, 3, 4, 5) + CellText(1, "first") + CellValue(1, 1, 1) +
                           CellText(1, "third") + kTableEnd));
}

TEST_P(OddTableTest, TheIds0AndMinus32768Delete) {
  for (const auto& [id, listed] : {std::pair{int16_t{0}, uint16_t{0}}, {int16_t{-32768}, uint16_t{0x8000}}}) {
    LoadTable(CellText(1, "abc"));
    PutU16(Stream(), 8 + kObjectId, listed);
    PutU16(Stream(), FindEntryOf(1) + kRefEntryId, listed);
    EXPECT_EQ(PutText(id, {1, 1, 1, 1}, "def"), 0);
    EXPECT_EQ(TextOf(listed, {1, 1, 1, 1}), "[-200]");
    MEMORYFREE(&buffer_);
  }
}

TEST_P(OddTableTest, AllBitsOfTheIdInAHeadCount) {
  const Bytes first = TableHeadOf(1, 2, 3, 4, 5) + CellText(1, "one") + kTableEnd;
  const Bytes second = TableHeadOf(0x101, 2, 3, 4, 5) + CellText(1, "two") + kTableEnd;
  Load(RefRecord(0xFF, static_cast<uint32_t>(8 + first.size() + second.size())) + first + second +
       RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(1, 1, 8) + Entry(1, 0x101, 8) + RefRecord(0xFE, 0));
  EXPECT_EQ(TextOf(0x101, {1, 1, 1, 1}), "two");  // its entry leads to the table before it
  EXPECT_EQ(XLRDeleteTable(buffer_, 0x101), 0);
  EXPECT_EQ(Objects(), Hex(first));
}

TEST_P(OddTableTest, ATableThatLeadsOutOfTheStreamTakesNothing) {
  MEMORYFREE(&buffer_);
  LoadTable(Bytes{0xFF, 0xFE, 4, 0} + U32(0x7FFFFFF0));
  const Bytes before = Image();
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), -5);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "[-200]");
  TableArray array({2, 3, 4, 5});
  array.Set(1, 1, 1, 1, 1);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, array.Ref(), 1), -10);  // a cell alone
  array.Set(2, 1, 1, 1, 2);
  EXPECT_EQ(XLRFillTable(&buffer_, &size_, array.Ref(), 1), -10);  // a box
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(OddTableTest, AnEntryWithANumberKeepsNoId) {
  Load(RefRecord(0xFF, 8) + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(0x101, 1, 8) + Entry(2, 2, 8) +
       Entry(1, 3, 8) + RefRecord(0xFE, 0));
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 1);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 2);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 4);
}

TEST_P(OddTableTest, AnEntryThatPointsToTheHeaderIsNoObject) {
  LoadTable(CellText(1, "abc"));
  RepointRefEntry(buffer_, 1, kKindTable, 0);
  const Bytes before = Image();
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "def"), -997);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "[-997]");
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), -997);
  EXPECT_EQ(Image(), before);
}

TEST_P(OddTableTest, ADamagedLengthIsReadInsideTheBlock) {
  LoadTable(CellText(1, "abc"));
  PutU16(Stream(), 8 + kTableHeadSize + kTableTextLength, 0xFFFF);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "");
  PutU16(Stream(), 8 + kTableHeadSize + kTableTextLength, 0x7FFF);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}).size(), MEMORYALLOCSIZE(buffer_) - (8 + kTableHeadSize + kTableText));
}

TEST_P(OddTableTest, WithoutTheChartBitARecordIsNoneOfATable) {
  const Bytes front = {0xDF, 0x00, 10, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0};
  const Bytes text = {0xD5, 0x00, 7, 0, 1, 0, 0, 0, 1, 0, 'x'};
  const Bytes end = {0xE0, 0x00, 0, 0};
  const Bytes table = TableHeadOf(1, 2, 3, 4, 5) + text + end + CellText(1, "abc");
  const Bytes object = front + table + kTableEnd;
  Load(RefRecord(0xFF, static_cast<uint32_t>(8 + object.size())) + object + RefRecord(0xDA, 0) +
       RefRecord(0xDB, 0) + Entry(1, 1, 8) + RefRecord(0xFE, 0));
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "abc");
  EXPECT_EQ(PutText(1, {2, 1, 1, 1}, "d"), 0);
  EXPECT_EQ(Objects(), Hex(front + table + CellText(2, "d") + kTableEnd));
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  EXPECT_EQ(Objects(), Hex(front));
}

TEST_P(OddTableTest, AllBitsOfACellsNumberCount) {
  const Bytes object = TableHeadOf(1, 256, 256, 2, 1) + CellText(65537, "far") + CellText(1, "near");
  Load(RefRecord(0xFF, static_cast<uint32_t>(8 + object.size() + 4)) + object + kTableEnd +
       RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(1, 1, 8) + RefRecord(0xFE, 0));
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "near");
  EXPECT_EQ(TextOf(1, {1, 1, 2, 1}), "far");
}

TEST_P(OddTableTest, ADeletionWithoutAnEndStopsInFrontOfRefEnd) {
  LoadTable({});
  PutU8(Stream(), 8 + kTableHeadSize, 0x77);
  Bytes expected = Image();
  for (const uint32_t at : {8u, 22u, 26u, 34u, 42u}) {  // head, the former end, mark, REFDIR, entry
    expected[at] = kLowSlack;
    expected[at + 1] = kPrivateHigh;
  }
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  EXPECT_EQ(Hex(Image()), Hex(expected));
}

TEST_P(OddTableTest, ANegativeDimensionHasNoCell) {
  LoadTable({}, 0xFFFF);
  EXPECT_EQ(PutText(1, {1, 1, 1, 1}, "abc"), -100);
  EXPECT_EQ(PutText(1, {0xFFFF, 1, 1, 1}, "abc"), 0);
}

TEST_P(OddTableTest, ATableWithoutAnEndEndsWithTheDirectory) {
  LoadTable(CellText(1, "abc"));
  PutU8(Stream(), 8 + kTableHeadSize + 13, 0x77);  // TABLEEND becomes an unknown record
  EXPECT_EQ(TextOf(1, {2, 1, 1, 1}), "[-200]");
  EXPECT_EQ(PutText(1, {2, 1, 1, 1}, "def"), 0);
  EXPECT_EQ(TextOf(1, {2, 1, 1, 1}), "def");
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  EXPECT_EQ(TextOf(1, {1, 1, 1, 1}), "[-997]");
}

TEST_P(OddTableTest, WhenAllIdsAreTakenTheNextIs0) {
  Bytes entries;
  for (uint32_t id = 1; id <= 0xFFFF; ++id) {
    const Bytes entry = Entry(1, static_cast<uint16_t>(id), 8);
    entries.insert(entries.end(), entry.begin(), entry.end());
  }
  Load(RefRecord(0xFF, 8) + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + entries + RefRecord(0xFE, 0));
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 0);
  RetireRefEntry(buffer_, 0x8001, kKindTable);
  EXPECT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), static_cast<int16_t>(0x8001));
}

}  // namespace
}  // namespace tolvenar::testing
