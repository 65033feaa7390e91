// Sheet size: the ladder of checks, the kinds of sheets, and the range in both generations.
#include "query/sheet_size.h"

#include "support/book_fixture.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class SheetSize : public BookTest {
 protected:
  int16_t Measure(int16_t sheet = 1) {
    return XLGetSheetSize(buffer_, table_, sheet, &first_row_, &last_row_, &first_col_, &last_col_);
  }
  std::vector<int> Range() const { return {first_row_, last_row_, first_col_, last_col_}; }

  uint16_t first_row_ = 901;
  uint16_t last_row_ = 902;
  uint16_t first_col_ = 903;
  uint16_t last_col_ = 904;
};

const std::vector<int> kUntouched = {901, 902, 903, 904};

StreamBuilder Globals(uint8_t version = 6) {
  return StreamBuilder().Bof(version).Sheet("S").Eof();
}

TEST_F(SheetSize, Range_IsOneBasedAndInclusive_InBothGenerations) {
  for (uint8_t version : {uint8_t{5}, uint8_t{6}}) {
    Load(Globals(version).Bof(version, kWorksheet).Dimensions(2, 10, 1, 7).Eof(), version);
    EXPECT_EQ(Measure(), 0);
    EXPECT_EQ(Range(), (std::vector<int>{3, 10, 2, 7})) << int{version};
    MEMORYFREEALL();
  }
}

TEST_F(SheetSize, Version6_ReadsTheLowHalvesOf32BitRows) {
  Load(Globals()
           .Bof(6, kWorksheet)
           .Record(0x0200, U32(0x00010005) + U32(0x00020009) + U16(3) + U16(4) + U16(0))
           .Eof());
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(Range(), (std::vector<int>{6, 9, 4, 4}));
}

TEST_F(SheetSize, FirstRowAndColumn_AreIncrementedIn16Bits) {
  Load(Globals().Bof(6, kWorksheet).Dimensions(0xFFFF, 0xFFFF, 0x7FFF, 0x8000).Eof());
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(Range(), (std::vector<int>{0, 0xFFFF, 0x8000, 0x8000}));
}

TEST_F(SheetSize, TheFirstRecordOfThatLowByteCounts_AChartRecordDoesNot) {
  const Bytes first = U16(1) + U16(2) + U16(3) + U16(4) + U16(0);
  Load(Globals(5)
           .Bof(5, kWorksheet)
           .Record(0x1000, Bytes(10))
           .Record(0x0100, first)
           .Dimensions(9, 9, 9, 9)
           .Eof(),
       5);
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(Range(), (std::vector<int>{2, 2, 4, 4}));
}

TEST_F(SheetSize, NoDimensions_LeavesTheOutputs) {
  Load(Globals().Bof(6, kWorksheet).Number(0, 0, 15, 1).Eof());
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(Range(), kUntouched);
}

TEST_F(SheetSize, DimensionsInAnEmbeddedSubstream_CountAsWell) {
  Load(Globals().Bof(6, kWorksheet).Bof(6, kChart).Dimensions(4, 5, 6, 7).Eof().Dimensions(0, 1, 0, 1).Eof());
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(Range(), (std::vector<int>{5, 5, 7, 7}));
}

TEST_F(SheetSize, UnknownGeneration_LeavesTheOutputs) {
  for (int32_t version : {0, 4, 7}) {
    Load(OneSheet().Eof(), version);
    EXPECT_EQ(Measure(), 0);
    EXPECT_EQ(Range(), kUntouched);
    MEMORYFREEALL();
  }
}

TEST_F(SheetSize, NextSheetsDimensions_AreNotReached) {
  Load(StreamBuilder()
           .Bof(6)
           .Sheet("A")
           .Sheet("B")
           .Eof()
           .Bof(6, kWorksheet)
           .Eof()
           .Bof(6, kWorksheet)
           .Dimensions(0, 5, 0, 6)
           .Eof());
  EXPECT_EQ(Measure(1), 0);
  EXPECT_EQ(Range(), kUntouched);
  EXPECT_EQ(Measure(2), 0);
  EXPECT_EQ(Range(), (std::vector<int>{1, 5, 1, 6}));
}

TEST_F(SheetSize, PatchedDimensions_AreFoundThroughTheDetour) {
  Load(Globals(5).Bof(5, kWorksheet).Number(0, 0, 15, 1).Eof(), 5);
  const Bytes patch = {0, 2, 10, 0, 1, 0, 6, 0, 2, 0, 8, 0, 0, 0};
  const uint32_t at = TableEntry(Table(), kTableFirstSheet) + 12;
  ASSERT_EQ(PatchRecord(&buffer_, patch.data(), at, 14, &size_), 0);
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(Range(), (std::vector<int>{2, 6, 3, 8}));
}

TEST_F(SheetSize, KindsOfSheets) {
  const struct {
    uint16_t substream;
    int result;
  } kinds[] = {{0x0005, 5}, {0x7705, 5}, {0x0006, 6}, {0x0120, 9}, {0x0020, 9}, {0x0040, 7}, {0xFF40, 7},
               {0x0100, 8}, {0x0010, 0}, {0x0000, 0}, {0x0200, 0}, {0x0110, 0}, {0x0041, 0}};
  for (const auto& kind : kinds) {
    Load(Globals().Bof(6, kind.substream).Dimensions(0, 1, 0, 1).Eof());
    first_row_ = 901;
    EXPECT_EQ(Measure(), kind.result) << kind.substream;
    EXPECT_EQ(first_row_, kind.result == 0 ? 1 : 901);
    MEMORYFREEALL();
  }
}

TEST_F(SheetSize, ChecksInTheirOrder) {
  Load(OneSheet().Eof());
  const uint32_t buffer = buffer_, table = table_;
  buffer_ = table_ = 0;
  EXPECT_EQ(Measure(9), 1);
  table_ = table;
  EXPECT_EQ(Measure(9), 2);
  EXPECT_EQ(Measure(2), 2);
  EXPECT_EQ(Measure(0), 2);
  EXPECT_EQ(Measure(-32768), 2);
  EXPECT_EQ(Measure(1), 3);
  EXPECT_EQ(Range(), kUntouched);
  buffer_ = buffer;
  EXPECT_EQ(Measure(1), 0);
}

TEST_F(SheetSize, NegativeCount_HasNoSheets) {
  Load(OneSheet().Eof());
  PutTableEntry(Table(), 0, 0xFFFE);
  for (int sheet : {-3, -2, 0, 1}) EXPECT_EQ(Measure(static_cast<int16_t>(sheet)), 2);
}

TEST_F(SheetSize, EmptyExtent) {
  Load(OneSheet().Eof());
  PutTableEntry(Table(), kTableFirstSheet + 1, TableEntry(Table(), kTableFirstSheet));
  EXPECT_EQ(Measure(), 0);
  EXPECT_EQ(Range(), kUntouched);
}

TEST_F(SheetSize, NullOutputs_AreNotWritten) {
  Load(OneSheet().Eof());
  EXPECT_EQ(XLGetSheetSize(buffer_, table_, 1, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(XLGetSheetSize(buffer_, table_, 1, nullptr, &last_row_, nullptr, nullptr), 0);
  EXPECT_EQ(last_row_, 4);
}

TEST_F(SheetSize, RingsInTheSheet_End) {
  Load(Globals().Bof(6, kWorksheet).Record(0x0042).Record(0x0043, Bytes(8)).Dimensions(0, 1, 0, 1).Eof());
  const uint32_t bof = TableEntry(Table(), kTableFirstSheet);
  const uint32_t at = bof + 24;
  PutU16(Stream(), at, 0xFEFF);
  for (uint32_t target : {bof, at, at - 4, 0x40000001u}) {
    PutU32(Stream(), at + kJumpTarget, target);
    EXPECT_EQ(Measure(), 0) << target;
  }
}

TEST_F(SheetSize, StaleHandles) {
  Load(OneSheet().Eof());
  uint32_t block = buffer_;
  MEMORYFREE(&block);
  EXPECT_EQ(Measure(), 0);  // reads as a sheet of zeros, a worksheet
  block = table_;
  MEMORYFREE(&block);
  EXPECT_EQ(Measure(), 1);
}

}  // namespace
