// Palette: the workbook's colours and the standard ones.
#include "query/palette.h"

#include "query/format_catalogue.h"
#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class Palette : public BookTest {
 protected:
  void LoadGlobals(StreamBuilder& globals) {
    Load(globals.Sheet("Data").Eof().Bof(6, kWorksheet).Dimensions(0, 4, 0, 4).Eof());
  }
};

TEST_F(Palette, Colours_HaveRedInTheLowByte) {
  StreamBuilder stream = StreamBuilder().Bof(6);
  LoadGlobals(stream.Record(0x0092, U16(2) + Bytes{0x11, 0x22, 0x33, 0, 0x44, 0x55, 0x66, 0x77}));
  TestArray colours(VT_I4, 0, 1);
  EXPECT_EQ(XLGetColorData(colours.Ref(), buffer_, table_), 0);
  EXPECT_EQ(colours.NumberAt(0), 0x332211);
  EXPECT_EQ(colours.NumberAt(1), 0x77665544);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(Palette, TwoPalettes_TheLastCounts_TheFirstColours) {
  StreamBuilder stream = StreamBuilder().Bof(6).Record(0x0092, U16(2) + U32(1) + U32(2));
  LoadGlobals(stream.Record(0x0092, U16(1) + U32(3)));
  TestArray colours(VT_I4, 0, 0);
  EXPECT_EQ(XLGetColorData(colours.Ref(), buffer_, table_), 0);
  EXPECT_EQ(colours.NumberAt(0), 1);
}

TEST_F(Palette, ChecksInTheirOrder) {
  StreamBuilder stream = StreamBuilder().Bof(6);
  LoadGlobals(stream.Record(0x0092, U16(2) + Bytes(8)));
  TestArray two(VT_I4, 0, 1, 0, 1), longer(VT_I4, 0, 2), from_one(VT_I4, 1, 2);
  EXPECT_EQ(XLGetColorData(two.Ref(), buffer_, 0), 1);
  EXPECT_EQ(XLGetColorData(two.Ref(), 0, table_), 1);
  EXPECT_EQ(XLGetColorData(two.Ref(), buffer_, table_), 4);
  EXPECT_EQ(XLGetColorData(nullptr, buffer_, table_), 4);
  EXPECT_EQ(XLGetColorData(longer.Ref(), buffer_, table_), 5);
  EXPECT_EQ(XLGetColorData(from_one.Ref(), buffer_, table_), 5);
  MEMORYFREEALL();
  StreamBuilder none = StreamBuilder().Bof(6);
  LoadGlobals(none);
  EXPECT_EQ(XLGetColorData(longer.Ref(), buffer_, table_), 1);
}

TEST_F(Palette, CountBeyondTheRecord_StaysInTheBlock) {
  StreamBuilder stream = StreamBuilder().Bof(6);
  LoadGlobals(stream.Record(0x0092, U16(0xFFFF) + U32(5)));
  TestArray colours(VT_I4, 0, 0xFFFE);
  EXPECT_EQ(XLGetColorData(colours.Ref(), buffer_, table_), 0);
  EXPECT_EQ(colours.NumberAt(0), 5);
  EXPECT_EQ(colours.NumberAt(0xFFFE), 0);
}

// Red, green, blue.
// clang-format off
constexpr uint8_t kStandard[56][3] = {
    {0x00, 0x00, 0x00}, {0xFF, 0xFF, 0xFF}, {0xFF, 0x00, 0x00}, {0x00, 0xFF, 0x00},  // 0
    {0x00, 0x00, 0xFF}, {0xFF, 0xFF, 0x00}, {0xFF, 0x00, 0xFF}, {0x00, 0xFF, 0xFF},  // 4
    {0x80, 0x00, 0x00}, {0x00, 0x80, 0x00}, {0x00, 0x00, 0x80}, {0x80, 0x80, 0x00},  // 8
    {0x80, 0x00, 0x80}, {0x00, 0x80, 0x80}, {0xC0, 0xC0, 0xC0}, {0x80, 0x80, 0x80},  // 12
    {0x80, 0x80, 0xFF}, {0x80, 0x20, 0x60}, {0xFF, 0xFF, 0xC0}, {0xA0, 0xE0, 0xE0},  // 16
    {0x60, 0x00, 0x80}, {0xFF, 0x80, 0x80}, {0x00, 0x80, 0xC0}, {0xC0, 0xC0, 0xFF},  // 20
    {0x00, 0x00, 0x80}, {0xFF, 0x00, 0xFF}, {0xFF, 0xFF, 0x00}, {0x00, 0xFF, 0xFF},  // 24
    {0x80, 0x00, 0x80}, {0x80, 0x00, 0x00}, {0x00, 0x00, 0x80}, {0x00, 0x00, 0xFF},  // 28
    {0x00, 0xCC, 0xFF}, {0x69, 0xFF, 0xFF}, {0xCC, 0xFF, 0xCC}, {0xFF, 0xFF, 0x99},  // 32
    {0xA6, 0xCA, 0xF0}, {0xCC, 0x99, 0xCC}, {0xCC, 0x99, 0xFF}, {0xE3, 0xE3, 0xE3},  // 36
    {0x33, 0x66, 0xFF}, {0x33, 0xCC, 0xCC}, {0x33, 0x99, 0x33}, {0x99, 0x99, 0x33},  // 40
    {0x99, 0x66, 0x33}, {0x99, 0x66, 0x66}, {0x66, 0x66, 0x99}, {0x96, 0x96, 0x96},  // 44
    {0x33, 0x33, 0xCC}, {0x33, 0x66, 0x66}, {0x00, 0x33, 0x00}, {0x33, 0x33, 0x00},  // 48
    {0x66, 0x33, 0x00}, {0x99, 0x33, 0x66}, {0x33, 0x33, 0x99}, {0x42, 0x42, 0x42},  // 52
};
// clang-format on

TEST_F(Palette, StandardColours_HaveRedInTheLowByte) {
  TestArray colours(VT_I4, 0, 55);
  for (LONG i = 0; i < 56; ++i) colours.SetNumber(i, 0, 0x77777777);
  EXPECT_EQ(XLGetStandardPalette(colours.Ref()), 0);
  for (LONG i = 0; i < 56; ++i) {
    const uint8_t* wanted = kStandard[i];
    EXPECT_EQ(colours.NumberAt(i), wanted[0] | wanted[1] << 8 | wanted[2] << 16) << i;
  }
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(Palette, LastPaletteWithoutColours_CountsAsNone) {
  StreamBuilder stream = StreamBuilder().Bof(6).Record(0x0092, U16(2) + U32(1) + U32(2));
  LoadGlobals(stream.Record(0x0092, U16(0)));
  TestArray colours(VT_I4, 0, 1);
  EXPECT_EQ(XLGetColorData(colours.Ref(), buffer_, table_), 1);
}

TEST_F(Palette, AnyTypeWithTheLowByte_IsAPalette_ButNoChartRecord) {
  StreamBuilder stream =
      StreamBuilder().Bof(6).Record(0x1092, U16(1) + U32(1)).Record(0x0292, U16(1) + U32(2));
  LoadGlobals(stream.Record(0x1092, U16(9)));
  TestArray colours(VT_I4, 0, 0);
  EXPECT_EQ(XLGetColorData(colours.Ref(), buffer_, table_), 0);
  EXPECT_EQ(colours.NumberAt(0), 2);
}

TEST_F(Palette, StyleExtBehindThePalette_TellsTheCount) {
  StreamBuilder stream = StreamBuilder().Bof(6).Record(0x0092, U16(1) + U32(5));
  LoadGlobals(stream.Record(0x0892, U16(0x0892) + Bytes(10)));
  EXPECT_EQ(XLGetNumFormatItems(buffer_, table_, 3), 2194);
  TestArray colours(VT_I4, 0, 2193);
  EXPECT_EQ(XLGetColorData(colours.Ref(), buffer_, table_), 0);
  EXPECT_EQ(colours.NumberAt(0), 5);
}

TEST_F(Palette, ColoursThatTheArrayRefuses_ArePassedOver) {
  StreamBuilder stream = StreamBuilder().Bof(6);
  LoadGlobals(stream.Record(0x0092, U16(1) + U32(5)));
  TestArray texts(VT_BSTR, 0, 0), all(VT_BSTR, 0, 55);
  EXPECT_EQ(XLGetColorData(texts.Ref(), buffer_, table_), 0);
  EXPECT_EQ(XLGetStandardPalette(all.Ref()), 0);
  EXPECT_EQ(all.TextAt(1), "(none)");
}

TEST_F(Palette, StandardColours_NeedAnArrayThatFits) {
  TestArray longer(VT_I4, 0, 56), from_one(VT_I4, 1, 55), two(VT_I4, 0, 55, 0, 0);
  EXPECT_EQ(XLGetStandardPalette(longer.Ref()), 5);
  EXPECT_EQ(XLGetStandardPalette(from_one.Ref()), 5);
  EXPECT_EQ(XLGetStandardPalette(two.Ref()), 4);
  EXPECT_EQ(XLGetStandardPalette(nullptr), 4);
}

}  // namespace
