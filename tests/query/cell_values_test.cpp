// Cell values: what each record puts, in which shape, and which records are looked at.
#include "query/cell_values.h"

#include <limits>

#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

const Bytes kNoNumber = {0xFF, 0xFF};

Bytes Result(uint8_t kind, uint8_t value = 0) {
  return Bytes{kind, 0, value, 0, 0, 0} + kNoNumber;
}

class CellValues : public BookTest {
 protected:
  int16_t Read(int16_t sheet = 1) {
    result_ = XLGetVariantData(texts_.Ref(), buffer_, table_, sheet);
    return XLGetVariantData(variants_.Ref(), buffer_, table_, sheet);
  }
  void LoadAndRead(const StreamBuilder& stream, int32_t version = kBiff8) {
    Load(stream, version);
    EXPECT_EQ(Read(), 0);
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(LiveBlocks(), 2u);
  }

  int16_t result_ = -1;
  TestArray texts_{VT_BSTR, 1, 4, 1, 4};
  TestArray variants_{VT_VARIANT, 1, 4, 1, 4};
};

TEST_F(CellValues, Numbers_AreTextWithSixDecimals) {
  LoadAndRead(OneSheet().Number(0, 0, 15, 1.5).Number(3, 3, 15, -2).Rk(1, 2, 15, 0x3FF00000).Eof());
  EXPECT_EQ(texts_.TextAt(1, 1), "1.500000");
  EXPECT_EQ(texts_.TextAt(4, 4), "-2.000000");
  EXPECT_EQ(texts_.TextAt(2, 3), "1.000000");
  EXPECT_EQ(texts_.TextAt(2, 2), "(none)");
}

TEST_F(CellValues, LargeNumbers_HaveNoExponent) {
  LoadAndRead(
      OneSheet().Number(0, 0, 15, 1e300).Number(0, 1, 15, std::numeric_limits<double>::infinity()).Eof());
  EXPECT_EQ(texts_.TextAt(1, 1).find('.'), 301u);
  EXPECT_EQ(texts_.TextAt(1, 2), "inf");
}

TEST_F(CellValues, RkNumber_Decodes) {
  constexpr struct {
    const char* label;
    uint32_t rk;
    double want;
  } kCases[] = {{"zero times 0.01", 0x00000001, 0.0},
                {"float", 0x3FF00000, 1.0},
                {"integer", 0x00000006, 1.0},
                {"integer times 0.01", 0x00000193, 100 * 0.01},
                {"negative integer", 0xFFFFFFFE, -1.0},
                {"least integer", 0x80000002, -536870912.0},
                {"float times 0.01", 0x40590001, 1.0},
                {"lowest bits are not the number's", 0x3FF00004, 0x1.00004p0},
                {"negative integer times 0.01", 0xFFFFFFFF, -0.01}};
  for (const auto& row : kCases) EXPECT_DOUBLE_EQ(RkNumber(row.rk), row.want) << row.label;
}

TEST_F(CellValues, RkCells_PrintTheSame) {
  LoadAndRead(OneSheet()
                  .Rk(0, 0, 15, 0x3FF00000)
                  .Rk(0, 1, 15, 0x00000006)
                  .Rk(0, 2, 15, 0x00000193)
                  .Rk(0, 3, 15, 1)
                  .Eof());
  EXPECT_EQ(texts_.AllText().substr(0, 36), "1.000000|1.000000|1.000000|0.000000/");
}

TEST_F(CellValues, MulRk_PutsATextForEachCell) {
  LoadAndRead(OneSheet().MulRk(1, 1, {{15, 0x00000006}, {16, 0x0000000A}, {17, 0xFFFFFFFE}}).Eof());
  EXPECT_EQ(texts_.TextAt(2, 1), "(none)");
  EXPECT_EQ(texts_.TextAt(2, 2), "1.000000");
  EXPECT_EQ(texts_.TextAt(2, 3), "2.000000");
  EXPECT_EQ(texts_.TextAt(2, 4), "-1.000000");
}

TEST_F(CellValues, MulRk_FirstAboveLast_PutsNothing) {
  LoadAndRead(OneSheet().Record(0x00BD, U16(0) + U16(2) + U16(15) + U32(6) + U16(1)).Eof());
  EXPECT_EQ(texts_.AllText().find_first_of("0123456789"), std::string::npos);
}

TEST_F(CellValues, MulRk_BeyondTheArray_FillsWhatThereIs) {
  LoadAndRead(OneSheet().Record(0x00BD, U16(0) + U16(3) + U16(15) + U32(6) + U16(0xFFFF)).Eof());
  EXPECT_EQ(texts_.TextAt(1, 4), "1.000000");
  TestArray shifted(VT_BSTR, 0, 4, 1, 9);
  EXPECT_EQ(XLGetVariantData(shifted.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(shifted.TextAt(1, 4), "1.000000");
  EXPECT_NE(shifted.TextAt(1, 9), "(none)");
}

TEST_F(CellValues, MulRk_ArrayThatBeginsInsideTheRun_GetsItsOwnCells) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("S").Eof().Bof(6, kWorksheet).Dimensions(0, 1, 2, 3);
  Load(stream.MulRk(0, 0, {{15, 0x6}, {15, 0xA}, {15, 0xE}, {15, 0x12}}).Eof());
  TestArray cells(VT_BSTR, 1, 1, 3, 3);
  EXPECT_EQ(XLGetVariantData(cells.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(cells.TextAt(1, 3), "3.000000");
}

TEST_F(CellValues, MulRk_ColumnsAreUnsigned) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("S").Eof().Bof(6, kWorksheet).Dimensions(0, 1, 0, 1);
  Load(stream.MulRk(0, 0x8000, {{15, 0x6}}).Number(0, 0x8000, 15, 5).Eof());
  TestArray cells(VT_BSTR, 1, 1, -32767, 32769);
  EXPECT_EQ(XLGetVariantData(cells.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(cells.TextAt(1, 32769), "1.000000");
  EXPECT_EQ(cells.TextAt(1, -32767), "5.000000");
}

TEST_F(CellValues, BoolErr) {
  StreamBuilder stream =
      OneSheet().BoolErr(0, 0, 15, 1, 0).BoolErr(0, 1, 15, 0, 0).BoolErr(0, 2, 15, 0x2A, 0);
  LoadAndRead(stream.BoolErr(1, 0, 15, 0, 1).BoolErr(1, 1, 15, 1, 1).BoolErr(1, 2, 15, 0, 2).Eof());
  EXPECT_EQ(variants_.TextAt(1, 1), " TRUE");
  EXPECT_EQ(variants_.TextAt(1, 2), "FALSE");
  EXPECT_EQ(variants_.TextAt(1, 3), " TRUE");
  EXPECT_EQ(variants_.TextAt(2, 1), "ERROR");
  EXPECT_EQ(variants_.TextAt(2, 2), "ERROR");
  EXPECT_EQ(variants_.TextAt(2, 3), "FALSE");  // only a flag of exactly 1 is an error
}

TEST_F(CellValues, FormulaNumber_IsADouble) {
  StreamBuilder stream = OneSheet().Formula(0, 0, 15, F64(-1.25));
  stream.Formula(0, 1, 15, Bytes(6, 0xFF) + Bytes{0xFE, 0xFF});
  LoadAndRead(stream.Formula(0, 2, 15, Bytes(6) + Bytes{0xFF, 0x7F}).Eof());
  EXPECT_EQ(variants_.TypeAt(1, 1), VT_R8);
  EXPECT_EQ(variants_.DoubleAt(1, 1), -1.25);
  EXPECT_EQ(variants_.TypeAt(1, 2), VT_R8);  // only a tag of FF FF makes it no number
  EXPECT_EQ(variants_.TypeAt(1, 3), VT_R8);
}

// A NaN that signals would come out quiet, had it been taken for a number on its way.
TEST_F(CellValues, FormulaNumber_KeepsItsEightBytes) {
  LoadAndRead(OneSheet().Formula(0, 0, 15, Bytes{0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0xF1, 0x7F}).Eof());
  LONG indices[2] = {1, 1};
  VARIANT value = {};
  EXPECT_EQ(SafeArrayGetElement(variants_.Get(), indices, &value), S_OK);
  EXPECT_EQ(value.vt, VT_R8);
  EXPECT_EQ(value.llVal, 0x7FF1665544332211);
}

TEST_F(CellValues, FormulaErrorAndBoolean_EvenTrueReadsFalse) {
  StreamBuilder stream = OneSheet().Formula(0, 0, 15, Result(2, 7)).Formula(0, 1, 15, Result(1, 1));
  LoadAndRead(stream.Formula(0, 2, 15, Result(1, 0)).Eof());
  EXPECT_EQ(variants_.TextAt(1, 1), "ERROR");
  EXPECT_EQ(variants_.TextAt(1, 2), "FALSE");
  EXPECT_EQ(variants_.TextAt(1, 3), "FALSE");
}

TEST_F(CellValues, FormulaText_IsTheWholePayloadOfTheStringRecord) {
  StreamBuilder stream =
      OneSheet().Formula(0, 0, 15, Result(0)).Record(0x0207, U16(3) + Bytes{0} + Text("abc"));
  stream.Formula(0, 1, 15, Result(0)).Record(0x1007, Text("x")).Formula(0, 2, 15, Result(0)).Record(0x0207);
  LoadAndRead(stream.Eof());
  EXPECT_EQ(variants_.TextAt(1, 1), std::string("\x03\0\0abc", 6));
  EXPECT_EQ(variants_.TextAt(1, 2), "x");  // the high byte is not tested
  EXPECT_EQ(variants_.TextAt(1, 3), "");
}

TEST_F(CellValues, FormulaText_WithoutAStringRecordBehindIt_PutsNothing) {
  variants_.SetText(1, 1, "before");
  StreamBuilder stream = OneSheet().Formula(0, 0, 15, Result(0)).Slack(4).Record(0x0207, U16(1) + Text("a"));
  LoadAndRead(stream.Formula(0, 1, 15, Result(0)).Eof());
  EXPECT_EQ(variants_.TextAt(1, 1), "before");
  EXPECT_EQ(variants_.TypeAt(1, 2), VT_EMPTY);
}

TEST_F(CellValues, FormulaOfAnotherResultType_LeavesTheElement) {
  variants_.SetText(1, 1, "before");
  LoadAndRead(OneSheet().Formula(0, 0, 15, Result(3)).Formula(0, 1, 15, Result(0xFF)).Eof());
  EXPECT_EQ(variants_.TextAt(1, 1), "before");
  EXPECT_EQ(variants_.TypeAt(1, 2), VT_EMPTY);
}

TEST_F(CellValues, Label_IsPacked_InBothGenerations) {
  LoadAndRead(OneSheet(5).Label(0, 0, 15, "five").Eof(), kBiff5);
  EXPECT_EQ(texts_.TextAt(1, 1), std::string("five\0\0\0\0", 8));
  MEMORYFREEALL();
  LoadAndRead(OneSheet().LabelBiff8(0, 1, 15, "eight").Eof());
  EXPECT_EQ(texts_.TextAt(1, 2), std::string("eight\0\0\0\0\0", 10));
}

TEST_F(CellValues, TwoByteLabel_ArrivesInterleavedAndCut) {
  StreamBuilder stream =
      OneSheet().Record(0x0204, U16(0) + U16(0) + U16(15) + U16(3) + Bytes{1} + Text("a.b.c."));
  LoadAndRead(stream.Eof());
  EXPECT_EQ(texts_.TextAt(1, 1), std::string("a.b\0\0\0", 6));
}

TEST_F(CellValues, Label_InNoGeneration_IsZeros) {
  StreamBuilder stream =
      StreamBuilder().Bof(5).Sheet("S").Eof().Bof(5, kWorksheet).Label(0, 0, 15, "ab").Eof();
  LoadAndRead(stream, 0);
  EXPECT_EQ(texts_.TextAt(1, 1), std::string("\0\0\0\0", 4));
}

TEST_F(CellValues, Label_LongerThanItsRecord_ReadsOnAndStaysInTheBlock) {
  LoadAndRead(OneSheet(5).Record(0x0204, U16(0) + U16(0) + U16(15) + U16(0xFFFF) + Text("ab")).Eof(), kBiff5);
  EXPECT_EQ(texts_.TextAt(1, 1).size(), 2u * 0xFFFF);
  EXPECT_EQ(texts_.TextAt(1, 1).substr(0, 4), std::string("ab\x0A\0", 4));
}

TEST_F(CellValues, TypesAreToldByTheirLowByte_WithoutTheChartBit) {
  const Bytes label = U16(0) + U16(0) + U16(15) + U16(1) + Text("z");
  StreamBuilder stream = OneSheet(5).Record(0x1004, U16(3) + U16(3) + U16(15) + U16(1) + Text("n"));
  stream.Record(0x0004, label).Record(0x0104, U16(0) + U16(1) + U16(15) + U16(1) + Text("y"));
  LoadAndRead(stream.Eof(), kBiff5);
  EXPECT_EQ(texts_.TextAt(4, 4), "(none)");
  EXPECT_EQ(texts_.TextAt(1, 1), std::string("z\0", 2));
  EXPECT_EQ(texts_.TextAt(1, 2), std::string("y\0", 2));
}

TEST_F(CellValues, RString) {
  LoadAndRead(
      OneSheet(5).Record(0x00D6, U16(1) + U16(1) + U16(15) + U16(4) + Text("rich") + Bytes{1, 0, 5}).Eof(),
      kBiff5);
  EXPECT_EQ(variants_.TextAt(2, 2), "rich");
}

TEST_F(CellValues, BlanksPutNothing) {
  texts_.SetText(1, 1, "before");
  LoadAndRead(OneSheet().Blank(0, 0, 15).MulBlank(0, 1, {15, 16}).Eof());
  EXPECT_EQ(texts_.TextAt(1, 1), "before");
  EXPECT_EQ(texts_.TextAt(1, 2), "(none)");
}

TEST_F(CellValues, SharedStrings_AreReadFromTheTable) {
  const Bytes strings = U16(1) + Bytes{0, 'a'} + U16(2) + Bytes{0} + Text("bc");
  StreamBuilder stream = StreamBuilder().Bof(6).Record(0x00FC, U32(2) + U32(2) + strings).Sheet("S");
  stream.Record(0x00FF, U16(0)).Eof().Bof(6, kWorksheet).Dimensions(0, 4, 0, 4);
  stream.LabelSst(0, 0, 15, 1)
      .LabelSst(0, 1, 15, 0)
      .LabelSst(0, 2, 15, 0xFFFF8000)
      .LabelSst(0, 3, 15, 0x00010001);
  LoadAndRead(stream.Eof());  // 0x8000 is negative and reads string 0; only the low 16 bits count; a bucket
                              // of 0 does no harm
  EXPECT_EQ(texts_.AllText().substr(0, 9), "bc|a|a|bc");
}

TEST_F(CellValues, SharedStrings_BehindAnOffsetOf32767_AreOutOfReach) {
  StreamBuilder stream =
      StreamBuilder().Bof(6).Record(0x0042, Bytes(32744)).Record(0x00FC, Bytes(8) + U16(1) + Bytes{0, 'a'});
  LoadAndRead(stream.Sheet("S").Eof().Bof(6, kWorksheet).Dimensions(0, 1, 0, 1).LabelSst(0, 0, 15, 0).Eof());
  EXPECT_EQ(texts_.TextAt(1, 1), "");
}

TEST_F(CellValues, EmbeddedSubstreams_ArePassedOver) {
  StreamBuilder stream = OneSheet().Number(0, 0, 15, 1).Bof(6, kChart).Number(0, 1, 15, 2).Bof(6, kChart);
  LoadAndRead(stream.Number(0, 2, 15, 3).Eof().Number(0, 3, 15, 4).Eof().Number(1, 0, 15, 5).Eof());
  EXPECT_EQ(texts_.AllText().substr(0, 36), "1.000000|(none)|(none)|(none)/5.0000");
}

// What an embedded chart holds itself, an AREAFORMAT 0x100A among it, opens and closes nothing.
TEST_F(CellValues, ChartRecords_DoNotCountAsBofOrEof) {
  StreamBuilder stream = OneSheet().Record(0x1009).Number(0, 0, 15, 1).Bof(6, kChart).Record(0x100A);
  LoadAndRead(stream.Number(0, 1, 15, 2).Eof().Record(0x100A).Number(0, 2, 15, 3).Eof());
  EXPECT_EQ(texts_.AllText().substr(0, 32), "1.000000|(none)|3.000000|(none)/");
}

// Of a sheet that another one follows, an EOF ends nothing: its cells are those where one BOF more than EOFs has been passed.
TEST_F(CellValues, CellsOutsideAnySubstream_ArePassedOver) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof().Bof(6, kWorksheet);
  stream.Record(0x000A).Number(0, 0, 15, 1).Record(0x000A).Number(0, 1, 15, 2);
  stream.Record(0x0809, Bytes(16)).Number(0, 2, 15, 3).Record(0x0809, Bytes(16)).Number(0, 3, 15, 4).Eof();
  LoadAndRead(stream.Bof(6, kWorksheet).Eof());
  EXPECT_EQ(texts_.AllText().substr(0, 35), "(none)|(none)|(none)|4.000000/(none");
}

TEST_F(CellValues, RowsBeyond32767_AreRefused) {
  StreamBuilder stream = OneSheet().Number(0x8000, 0, 15, 1).Number(0xFFFF, 0, 15, 2).Number(9, 9, 15, 3);
  LoadAndRead(stream.Number(0, 0, 15, 4).Eof());
  EXPECT_EQ(texts_.TextAt(1, 1), "4.000000");
  TestArray cells(VT_BSTR, 0, 4, 1, 4);
  EXPECT_EQ(XLGetVariantData(cells.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(cells.TextAt(0, 1), "2.000000");  // 0xFFFF is row -1 + 1
}

TEST_F(CellValues, TheLastRecordOfACellWins_InWhateverOrder) {
  LoadAndRead(OneSheet().Number(3, 0, 15, 3).Number(0, 0, 15, 1).Number(3, 0, 15, 4).Eof());
  EXPECT_EQ(texts_.TextAt(1, 1), "1.000000");
  EXPECT_EQ(texts_.TextAt(4, 1), "4.000000");
}

TEST_F(CellValues, PatchedCells_AreReadInTheirPlace) {
  Load(OneSheet().Number(0, 0, 15, 1).Number(0, 1, 15, 2).Eof());
  const uint32_t at = TableEntry(Table(), kTableFirstSheet) + 20 + 18;
  const Bytes patch = {3, 2, 14, 0, 2, 0, 0, 0, 15, 0, 0, 0, 0, 0, 0, 0, 0x08, 0x40};
  MarkRecordSlack(Stream(), at);
  ASSERT_EQ(PatchRecord(&buffer_, patch.data(), at + 18, 18, &size_), 0);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(result_, 0);
  EXPECT_EQ(texts_.TextAt(1, 1), "(none)");
  EXPECT_EQ(texts_.TextAt(1, 2), "2.000000");
  EXPECT_EQ(texts_.TextAt(3, 1), "3.000000");
}

// The walk ends at exactly the place of the sheet's EOF, though a DETOUR stands there.
TEST_F(CellValues, APatchBeforeTheSheetsEof_IsNotSeen) {
  const Bytes patch = {3, 2, 14, 0, 0, 0, 1, 0, 15, 0, 0, 0, 0, 0, 0, 0, 0x08, 0x40};
  for (uint32_t sheets : {1u, 2u}) {
    StreamBuilder stream = StreamBuilder().Bof(6).Sheet("A");
    if (sheets == 2) stream.Sheet("B");
    stream.Eof().Bof(6, kWorksheet).Number(0, 0, 15, 1).Eof();
    const uint32_t eof = stream.Last();
    if (sheets == 2) stream.Bof(6, kWorksheet).Eof();
    Load(stream);
    ASSERT_EQ(PatchRecord(&buffer_, patch.data(), eof, 18, &size_), 0);
    EXPECT_EQ(Read(), 0);
    EXPECT_EQ(texts_.AllText().substr(0, 16), "1.000000|(none)|") << sheets;
    MEMORYFREEALL();
  }
}

// Once the sheets are located anew, the closing EOF lies in the patch area, and the BUFEND behind it.
TEST_F(CellValues, APatchBeforeTheLastEof_IsSeenByANewTable) {
  StreamBuilder stream = OneSheet().Number(0, 0, 15, 1).Eof();
  Load(stream);
  const Bytes patch = {3, 2, 14, 0, 0, 0, 1, 0, 15, 0, 0, 0, 0, 0, 0, 0, 0x08, 0x40};
  ASSERT_EQ(PatchRecord(&buffer_, patch.data(), stream.Last(), 18, &size_), 0);
  MEMORYFREE(&table_);
  ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
  EXPECT_EQ(Read(), 0);
  EXPECT_EQ(texts_.AllText().substr(0, 18), "1.000000|3.000000|");
}

TEST_F(CellValues, OfTwoSheets_OnlyTheOneAskedForIsRead) {
  StreamBuilder stream = StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof();
  stream.Bof(6, kWorksheet).Number(0, 0, 15, 1).Eof().Bof(6, kWorksheet).Number(0, 1, 15, 2).Eof();
  LoadAndRead(stream);
  EXPECT_EQ(texts_.AllText().substr(0, 16), "1.000000|(none)|");
  EXPECT_EQ(Read(2), 0);
  EXPECT_EQ(texts_.AllText().substr(0, 18), "1.000000|2.000000|");
}

#if !defined(_WIN32)
TEST_F(CellValues, OneArrayTakesAWholeMixedSheet) {
  StreamBuilder stream = OneSheet().Number(0, 0, 15, 1).BoolErr(0, 1, 15, 1, 0).Formula(0, 2, 15, F64(2.5));
  LoadAndRead(stream.LabelBiff8(0, 3, 15, "L").Eof());
  EXPECT_EQ(variants_.TextAt(1, 1), "1.000000");
  EXPECT_EQ(variants_.TextAt(1, 2), " TRUE");
  EXPECT_EQ(variants_.DoubleAt(1, 3), 2.5);
  EXPECT_EQ(variants_.TextAt(1, 4), std::string("L\0", 2));
  EXPECT_EQ(texts_.TextAt(1, 1), "1.000000");
  EXPECT_EQ(texts_.TextAt(1, 2), " TRUE");
}
#endif

TEST_F(CellValues, AnArrayOfNumbers_TakesNone) {
  Load(OneSheet().Number(0, 0, 15, 1).BoolErr(0, 1, 15, 1, 0).Eof());
  TestArray numbers(VT_I4, 1, 4, 1, 4);
  numbers.SetNumber(1, 1, 42);
  EXPECT_EQ(XLGetVariantData(numbers.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(numbers.NumberAt(1, 1), 42);
}

TEST_F(CellValues, XlsGetVariantData_AlwaysGivesZero) {
  SAFEARRAY* none = nullptr;
  EXPECT_EQ(XLSGetVariantData(1, texts_.Ref()), 0);
  EXPECT_EQ(XLSGetVariantData(0, &none), 0);
  EXPECT_EQ(XLSGetVariantData(0, nullptr), 0);
  void* data = nullptr;
  EXPECT_EQ(SafeArrayAccessData(texts_.Get(), &data), S_OK);
  EXPECT_EQ(SafeArrayUnaccessData(texts_.Get()), S_OK);
}

}  // namespace
