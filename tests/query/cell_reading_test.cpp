// Cell reading: the ladder of checks that the two readers share, and what a full pool leaves of a sheet.
#include "query/cell_reading.h"

#include "query/cell_formats.h"
#include "query/cell_values.h"
#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class CellReading : public BookTest {
 protected:
  // The result, which both readers must agree on.
  int16_t Check(SAFEARRAY** cells, int sheet = 1) {
    const int16_t values = XLGetVariantData(cells, buffer_, table_, static_cast<int16_t>(sheet));
    const int16_t formats = XLGetCellData(cells, buffer_, table_, static_cast<int16_t>(sheet));
    EXPECT_EQ(values, formats);
    return values;
  }
  int16_t Check(LONG first_row, LONG last_row, LONG first_column, LONG last_column) {
    TestArray cells(VT_VARIANT, first_row, last_row, first_column, last_column);
    return Check(cells.Ref());
  }

  TestArray cells_{VT_BSTR, 1, 4, 1, 4};
};

TEST_F(CellReading, NoTableOrNoSheets_GivesOne) {
  EXPECT_EQ(Check(cells_.Ref()), 1);
  Load(StreamBuilder().Bof(6).Eof());
  EXPECT_EQ(Check(cells_.Ref()), 1);
  EXPECT_EQ(Check(nullptr, -1), 1);
}

TEST_F(CellReading, NegativeCount_GivesTwoForASheetAboveItAndNotAboveZero) {
  Load(OneSheet().Eof());
  PutTableEntry(Table(), 0, 0xFFFB);  // -5
  EXPECT_EQ(Check(cells_.Ref(), -3), 2);
  EXPECT_EQ(Check(cells_.Ref(), 0), 2);
  EXPECT_EQ(Check(cells_.Ref(), -5), 3);
  EXPECT_EQ(Check(cells_.Ref(), 1), 3);
}

TEST_F(CellReading, SheetOutOfRange_GivesThree) {
  Load(OneSheet().Eof());
  for (int sheet : {0, 2, -1, 32767, -32768}) EXPECT_EQ(Check(cells_.Ref(), sheet), 3) << sheet;
}

TEST_F(CellReading, NullBuffer_GivesThree) {
  Load(OneSheet().Eof());
  buffer_ = 0;
  EXPECT_EQ(Check(cells_.Ref()), 3);
  EXPECT_EQ(Check(nullptr), 3);
}

TEST_F(CellReading, NoWorksheet_GivesThree) {
  for (uint16_t kind : {kGlobals, kVisualBasic, kChart, kMacroSheet, kWorkspace}) {
    Load(StreamBuilder()
             .Bof(6)
             .Sheet("C")
             .Eof()
             .Bof(6, kind)
             .Dimensions(0, 4, 0, 4)
             .Number(0, 0, 15, 1)
             .Eof());
    EXPECT_EQ(Check(cells_.Ref()), 3);
    EXPECT_EQ(cells_.TextAt(1, 1), "(none)");
    MEMORYFREEALL();
  }
}

TEST_F(CellReading, ArrayOfOtherThanTwoDimensions_GivesFour) {
  Load(OneSheet().Eof());
  TestArray one(VT_VARIANT, 1, 100);
  SAFEARRAYBOUND bounds[3] = {{4, 1}, {4, 1}, {4, 1}};
  SAFEARRAY* three = SafeArrayCreate(VT_VARIANT, 3, bounds);
  SAFEARRAY* none = nullptr;
  EXPECT_EQ(Check(one.Ref()), 4);
  EXPECT_EQ(Check(&three), 4);
  EXPECT_EQ(Check(&none), 4);
  EXPECT_EQ(Check(nullptr), 4);
  SafeArrayDestroy(three);
}

TEST_F(CellReading, ArrayThatDoesNotCoverTheRange_GivesFive) {
  Load(StreamBuilder().Bof(6).Sheet("S").Eof().Bof(6, kWorksheet).Dimensions(1, 4, 2, 5).Eof());
  EXPECT_EQ(Check(2, 4, 3, 5), 0);
  EXPECT_EQ(Check(1, 9, 1, 9), 0);
  EXPECT_EQ(Check(-5, 40, -7, 50), 0);
  EXPECT_EQ(Check(3, 4, 3, 5), 5);
  EXPECT_EQ(Check(2, 3, 3, 5), 5);
  EXPECT_EQ(Check(2, 4, 4, 5), 5);
  EXPECT_EQ(Check(2, 4, 3, 4), 5);
}

TEST_F(CellReading, AnArrayOneRowShort_ChangesNoElement) {
  Load(OneSheet().Number(0, 0, 15, 1).Eof());
  TestArray cells(VT_BSTR, 1, 3, 1, 4);
  EXPECT_EQ(Check(cells.Ref()), 5);
  EXPECT_EQ(cells.TextAt(1, 1), "(none)");
}

TEST_F(CellReading, TheRangeIsComparedAsSigned16Bits) {
  Load(StreamBuilder().Bof(6).Sheet("S").Eof().Bof(6, kWorksheet).Dimensions(0, 0x8000, 0, 4).Eof());
  EXPECT_EQ(Check(1, 1, 1, 4), 0);  // last row -32768
  MEMORYFREEALL();
  Load(StreamBuilder().Bof(6).Sheet("S").Eof().Bof(6, kWorksheet).Dimensions(0x8000, 1, 0, 4).Eof());
  EXPECT_EQ(Check(1, 1, 1, 4), 5);  // first row -32767
}

TEST_F(CellReading, WithoutDimensions_EveryArrayPasses) {
  Load(StreamBuilder()
           .Bof(6)
           .Sheet("S")
           .Eof()
           .Bof(6, kWorksheet)
           .Number(0, 0, 15, 1)
           .Number(6, 6, 15, 2)
           .Eof());
  EXPECT_EQ(Check(1, 1, 1, 1), 0);
  EXPECT_EQ(Check(-9, -8, 1000, 1001), 0);
  TestArray cells(VT_BSTR, 7, 7, 7, 7);
  EXPECT_EQ(XLGetVariantData(cells.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(cells.TextAt(7, 7), "2.000000");
}

TEST_F(CellReading, EmptyExtent_IsRead_AndHasNoCells) {
  Load(OneSheet().Number(0, 0, 15, 1).Eof());
  PutTableEntry(Table(), kTableFirstSheet + 1, TableEntry(Table(), kTableFirstSheet));
  EXPECT_EQ(Check(cells_.Ref()), 0);
  EXPECT_EQ(cells_.TextAt(1, 1), "(none)");
}

TEST_F(CellReading, RingsInTheSheet_End) {
  Load(OneSheet().Number(0, 0, 15, 1).Record(0x0042, Bytes(8)).Number(0, 1, 15, 2).Eof());
  const uint32_t bof = TableEntry(Table(), kTableFirstSheet);
  const uint32_t at = bof + 20 + 18 + 18;
  PutU16(Stream(), at, 0xFEFF);
  for (uint32_t target : {bof + 20, bof, at, 0u, 0x40000002u, 0xFFFFFFFFu}) {
    PutU32(Stream(), at + kJumpTarget, target);
    EXPECT_EQ(Check(cells_.Ref()), 0) << target;
  }
  EXPECT_EQ(cells_.TextAt(1, 1), "1.000000");
}

// A cell of each kind in row 1; a shared string and a formula's text among them.
StreamBuilder EveryKind() {
  StreamBuilder stream;
  stream.Bof(6).Record(0x00FC, Bytes(8) + U16(1) + Bytes{0, 's'}).Sheet("S").Record(0x00FF, U16(8)).Eof();
  stream.Bof(6, kWorksheet).Dimensions(0, 1, 0, 9).Number(0, 0, 15, 1).Rk(0, 1, 15, 6).MulRk(0, 2, {{15, 6}});
  stream.BoolErr(0, 3, 15, 0, 0).Formula(0, 4, 15, F64(2)).LabelBiff8(0, 5, 15, "l").LabelSst(0, 6, 15, 0);
  stream.Record(0x00D6, U16(0) + U16(7) + U16(15) + U16(1) + Text("r"));
  stream.Formula(0, 8, 15, Bytes{0, 0, 0, 0, 0, 0, 0xFF, 0xFF}).Record(0x0207, Text("t"));
  return stream.Formula(0, 8, 15, Bytes{3, 0, 0, 0, 0, 0, 0xFF, 0xFF}).Eof();
}

TEST_F(CellReading, FullPool_DropsTheCellsThatNeedABlock_AndOnlyThose) {
  for (uint32_t taken = 2; taken <= 9; ++taken) {
    Load(EveryKind());
    FillPool(taken);
    TestArray texts(VT_BSTR, 1, 1, 1, 9), variants(VT_VARIANT, 1, 1, 1, 9), formats(VT_I2, 1, 1, 1, 9);
    EXPECT_EQ(XLGetVariantData(texts.Ref(), buffer_, table_, 1), 0);
    EXPECT_EQ(XLGetVariantData(variants.Ref(), buffer_, table_, 1), 0);
    EXPECT_EQ(XLGetCellData(formats.Ref(), buffer_, table_, 1), 0);
    const bool full = taken == 9;
    for (LONG column : {1, 2, 3}) EXPECT_EQ(texts.TextAt(1, column), "1.000000");
    EXPECT_EQ(variants.TextAt(1, 4), "FALSE");
    EXPECT_EQ(variants.DoubleAt(1, 5), 2);
    EXPECT_EQ(texts.TextAt(1, 6), full ? "(none)" : std::string("l\0", 2));
    EXPECT_EQ(texts.TextAt(1, 7), full ? "(none)" : "s");
    EXPECT_EQ(variants.TextAt(1, 8), full ? "(none)" : "r");
    EXPECT_EQ(variants.TextAt(1, 9), full ? "(none)" : "t");
    EXPECT_EQ(formats.NumberAt(1, 6), 15);
    EXPECT_EQ(LiveBlocks(), taken);
    MEMORYFREEALL();
  }
}

TEST_F(CellReading, FullPool_DropsTheFixedTextsOfFormulas) {
  Load(OneSheet()
           .Formula(0, 0, 15, Bytes{2, 0, 7, 0, 0, 0, 0xFF, 0xFF})
           .Formula(0, 1, 15, Bytes{1, 0, 1, 0, 0, 0, 0xFF, 0xFF})
           .Eof());
  FillPool(9);
  TestArray variants(VT_VARIANT, 1, 4, 1, 4);
  EXPECT_EQ(XLGetVariantData(variants.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(variants.TypeAt(1, 1), VT_EMPTY);
  EXPECT_EQ(variants.TypeAt(1, 2), VT_EMPTY);
}

TEST_F(CellReading, Label_AsksThePoolForOneByteMoreThanItsText) {
  uint32_t smallest = MEMORYALLOC(1);
  Load(OneSheet(5).Label(0, 0, 15, std::string(255, 'a')).Label(0, 1, 15, std::string(256, 'b')).Eof(),
       kBiff5);
  FillPool(9);
  MEMORYFREE(&smallest);
  EXPECT_EQ(XLGetVariantData(cells_.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(cells_.TextAt(1, 1).size(), 510u);
  EXPECT_EQ(cells_.TextAt(1, 2), "(none)");
}

TEST_F(CellReading, RString_AsksThePoolForItsText) {
  uint32_t smallest = MEMORYALLOC(1);
  StreamBuilder stream = OneSheet(5).Record(0x00D6, U16(0) + U16(0) + U16(15) + U16(256) + Bytes(256, 'a'));
  Load(stream.Record(0x00D6, U16(0) + U16(1) + U16(15) + U16(257) + Bytes(257, 'b')).Eof(), kBiff5);
  FillPool(9);
  MEMORYFREE(&smallest);
  TestArray variants(VT_VARIANT, 1, 4, 1, 4);
  EXPECT_EQ(XLGetVariantData(variants.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(variants.TextAt(1, 1).size(), 256u);
  EXPECT_EQ(variants.TypeAt(1, 2), VT_EMPTY);
}

TEST_F(CellReading, FormulaText_AsksThePoolForItsWholePayload) {
  const Bytes text = {0, 0, 0, 0, 0, 0, 0xFF, 0xFF};
  uint32_t smallest = MEMORYALLOC(1);
  StreamBuilder stream = OneSheet().Formula(0, 0, 15, text).Record(0x0207, Bytes(256, 'a'));
  Load(stream.Formula(0, 1, 15, text).Record(0x0207, Bytes(257, 'b')).Eof());
  FillPool(9);
  MEMORYFREE(&smallest);
  TestArray variants(VT_VARIANT, 1, 4, 1, 4);
  EXPECT_EQ(XLGetVariantData(variants.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(variants.TextAt(1, 1).size(), 256u);
  EXPECT_EQ(variants.TypeAt(1, 2), VT_EMPTY);
}

}  // namespace
