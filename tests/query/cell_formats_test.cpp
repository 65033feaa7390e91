// Cell formats: which records give an XF, and where it is read.
#include "query/cell_formats.h"

#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class CellFormats : public BookTest {
 protected:
  void LoadAndRead(const StreamBuilder& stream, int32_t version = kBiff8) {
    for (LONG row = 1; row <= 4; ++row) {
      for (LONG column = 1; column <= 4; ++column) formats_.SetNumber(row, column, -1);
    }
    Load(stream, version);
    EXPECT_EQ(XLGetCellData(formats_.Ref(), buffer_, table_, 1), 0);
    EXPECT_EQ(LiveBlocks(), 2u);
  }
  std::vector<int> Row(LONG row) {
    std::vector<int> xfs;
    for (LONG column = 1; column <= 4; ++column)
      xfs.push_back(static_cast<int16_t>(formats_.NumberAt(row, column)));
    return xfs;
  }

  TestArray formats_{VT_I2, 1, 4, 1, 4};
};

TEST_F(CellFormats, EveryKindOfCell_InBothGenerations) {
  for (uint8_t version : {uint8_t{5}, uint8_t{6}}) {
    StreamBuilder stream =
        OneSheet(version).Blank(0, 0, 21).BoolErr(0, 1, 22, 0, 0).Formula(0, 2, 23, F64(1));
    stream.Label(0, 3, 24, "x")
        .Number(1, 0, 25, 1)
        .Rk(1, 1, 26, 6)
        .Record(0x00D6, U16(1) + U16(2) + U16(27) + U16(0));
    LoadAndRead(stream.Record(0x00FC, U16(1) + U16(3) + U16(28)).Eof(), version);
    EXPECT_EQ(Row(1), (std::vector<int>{21, 22, 23, 24}));
    EXPECT_EQ(Row(2), (std::vector<int>{25, 26, 27, 28}));
    EXPECT_EQ(Row(3), (std::vector<int>{-1, -1, -1, -1}));
    MEMORYFREEALL();
  }
}

TEST_F(CellFormats, SharedStringCells_AreLeftAlone) {
  LoadAndRead(OneSheet().LabelSst(0, 0, 21, 0).Number(0, 1, 22, 1).Eof());
  EXPECT_EQ(Row(1), (std::vector<int>{-1, 22, -1, -1}));
}

TEST_F(CellFormats, Runs) {
  LoadAndRead(OneSheet().MulRk(0, 0, {{31, 6}, {32, 6}, {33, 6}}).MulBlank(1, 1, {41, 42, 43}).Eof());
  EXPECT_EQ(Row(1), (std::vector<int>{31, 32, 33, -1}));
  EXPECT_EQ(Row(2), (std::vector<int>{-1, 41, 42, 43}));
}

TEST_F(CellFormats, RunsWithFirstAboveLast_PutNothing) {
  const Bytes rk = U16(0) + U16(2) + U16(31) + U32(6) + U16(1);
  LoadAndRead(OneSheet().Record(0x00BD, rk).Record(0x00BE, U16(0) + U16(1) + U16(31) + U16(0)).Eof());
  EXPECT_EQ(Row(1), (std::vector<int>{-1, -1, -1, -1}));
}

TEST_F(CellFormats, RunsBeyondTheArray_FillWhatThereIs) {
  LoadAndRead(OneSheet().Record(0x00BE, U16(0) + U16(2) + U16(31) + U16(32) + U16(0xFFFF)).Eof());
  EXPECT_EQ(Row(1), (std::vector<int>{-1, -1, 31, 32}));
}

TEST_F(CellFormats, ChartRecordsAndEmbeddedSubstreams_ArePassedOver) {
  StreamBuilder stream = OneSheet().Record(0x1003, U16(0) + U16(0) + U16(31)).Bof(6, kChart).Blank(0, 1, 32);
  LoadAndRead(stream.Eof().Record(0x0003, U16(0) + U16(2) + U16(33)).Eof());
  EXPECT_EQ(Row(1), (std::vector<int>{-1, -1, 33, -1}));
}

TEST_F(CellFormats, XfsAbove32767_KeepTheir16Bits_AndWiderElementsGetZerosAbove) {
  Load(OneSheet().Blank(0, 0, 0xFFFE).Eof());
  TestArray wide(VT_I4, 1, 4, 1, 4), bytes(VT_UI1, 1, 4, 1, 4);
  wide.SetNumber(1, 1, -1);
  EXPECT_EQ(XLGetCellData(wide.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(static_cast<int32_t>(wide.NumberAt(1, 1)), 0xFFFE);
  EXPECT_EQ(XLGetCellData(bytes.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(bytes.NumberAt(1, 1) & 0xFF, 0xFE);
}

TEST_F(CellFormats, ArraysOfText_TakeNone) {
  Load(OneSheet().Blank(0, 0, 21).Eof());
  TestArray texts(VT_BSTR, 1, 4, 1, 4), variants(VT_VARIANT, 1, 4, 1, 4);
  EXPECT_EQ(XLGetCellData(texts.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(XLGetCellData(variants.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(texts.TextAt(1, 1), "(none)");
  EXPECT_EQ(variants.TypeAt(1, 1), VT_EMPTY);
}

TEST_F(CellFormats, CellsOutsideTheArray_AreRefused) {
  LoadAndRead(OneSheet().Blank(0x8000, 0, 21).Blank(9, 9, 22).Blank(3, 3, 23).Eof());
  EXPECT_EQ(Row(4), (std::vector<int>{-1, -1, -1, 23}));
}

}  // namespace
