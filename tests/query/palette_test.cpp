// Palette: the workbook's colours and the standard ones.
#include "query/palette.h"

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

TEST_F(Palette, StandardColours) {
  TestArray colours(VT_I4, 0, 55);
  EXPECT_EQ(XLGetStandardPalette(colours.Ref()), 0);
  EXPECT_EQ(colours.NumberAt(0), 0x000000);
  EXPECT_EQ(colours.NumberAt(2), 0x0000FF);
  EXPECT_EQ(colours.NumberAt(17), 0x602080);
  EXPECT_EQ(colours.NumberAt(33), 0xFFFF69);
  EXPECT_EQ(colours.NumberAt(36), 0xF0CAA6);
  EXPECT_EQ(colours.NumberAt(48), 0xCC3333);
  EXPECT_EQ(colours.NumberAt(55), 0x424242);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(Palette, StandardColours_NeedAnArrayThatFits) {
  TestArray longer(VT_I4, 0, 56), from_one(VT_I4, 1, 55), two(VT_I4, 0, 55, 0, 0);
  EXPECT_EQ(XLGetStandardPalette(longer.Ref()), 5);
  EXPECT_EQ(XLGetStandardPalette(from_one.Ref()), 5);
  EXPECT_EQ(XLGetStandardPalette(two.Ref()), 4);
  EXPECT_EQ(XLGetStandardPalette(nullptr), 4);
}

}  // namespace
