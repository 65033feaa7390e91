// Item decoders: each field, the null block, and the texts with their generation's prefix.
#include "query/item_decoders.h"

#include <utility>

#include "foundation/biff_records.h"
#include "support/made_record.h"
#include "support/pool_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class ItemDecoders : public PoolTest {
 protected:
  static uint32_t Item(const Bytes& payload) {
    const uint32_t block = MEMORYALLOC(static_cast<int32_t>(payload.size() + 2));
    PutU16(OpenBlock(block), 0, static_cast<uint16_t>(payload.size()));
    CopyIn(OpenBlock(block), 2, payload.data(), static_cast<uint32_t>(payload.size()));
    return block;
  }
  static uint32_t Font(uint8_t flags, std::string_view name = "Arial") {
    return Item(U16(200) + Bytes{flags, 0} + U16(8) + U16(700) + U16(0) + Bytes{0x21, 0, 0, 0} +
                Bytes{static_cast<uint8_t>(name.size())} + Text(name));
  }
  static uint32_t Xf(uint16_t alignment, uint16_t colours, uint16_t fill, uint16_t borders, uint16_t sides,
                     uint8_t options = 0) {
    return Item(U16(6) + U16(0xFFFE) + Bytes{options, 0} + U16(alignment) + U16(colours) + U16(fill) +
                U16(borders) + U16(sides));
  }
  static std::string TextOf(int16_t (*decoder)(uint32_t, BSTR*), uint32_t item) {
    BSTR text = nullptr;
    EXPECT_EQ(decoder(item, &text), 0);
    const std::string bytes = BytesOf(text);
    SysFreeString(text);
    return bytes;
  }
};

using Decoder = int16_t (*)(uint32_t);

TEST_F(ItemDecoders, NullBlock_GivesMinusOne_AndWritesNothing) {
  for (Decoder decoder :
       {XLFontSize, XLFontColor, XLFontBoldness, XLFontItalic, XLFontStrikeOut, XLFontUnderline, XLXFFont,
        XLXFFormat, XLXFLocked, XLXFHidden, XLXFHAlignment, XLXFVAlignment, XLXFRotation}) {
    EXPECT_EQ(decoder(0), -1);
  }
  uint16_t a = 7;
  BSTR text = nullptr;
  EXPECT_EQ(XLXFBorderStyle(0, &a, &a, &a, &a, &a), -1);
  EXPECT_EQ(XLXFColors(0, &a, &a, &a, &a, &a, &a), -1);
  EXPECT_EQ(XLFontName(0, &text), -1);
  EXPECT_EQ(XLFormatString(0, &text), -1);
  EXPECT_EQ(a, 7);
  EXPECT_EQ(text, nullptr);
}

TEST_F(ItemDecoders, Font) {
  const uint32_t font = Font(0x02);
  EXPECT_EQ(XLFontSize(font), 200);
  EXPECT_EQ(XLXFFont(font), 200);
  EXPECT_EQ(XLFontColor(font), 0);
  EXPECT_EQ(XLFontBoldness(font), 700);
  EXPECT_EQ(XLFontUnderline(font), 0x21);
  EXPECT_EQ(XLFontItalic(font), 1);
  EXPECT_EQ(XLFontStrikeOut(font), 0);
  const uint32_t struck = Font(0xF8);
  EXPECT_EQ(XLFontItalic(struck), 0);
  EXPECT_EQ(XLFontStrikeOut(struck), 1);
}

TEST_F(ItemDecoders, FontColour_BelowThePalette_IsNegative) {
  EXPECT_EQ(XLFontColor(Item(U16(0) + U16(0) + U16(7))), -1);
  EXPECT_EQ(XLFontColor(Item(U16(0) + U16(0) + U16(0x7FFF))), 0x7FF7);
  EXPECT_EQ(XLFontColor(Item(U16(0) + U16(0) + U16(0x8000))), 0x7FF8);
}

TEST_F(ItemDecoders, Xf) {
  const uint32_t xf = Xf(0x02A5, 0, 0, 0, 0, 0xFD);
  EXPECT_EQ(XLXFFont(xf), 6);
  EXPECT_EQ(XLFontSize(xf), 6);
  EXPECT_EQ(XLXFFormat(xf), -2);
  EXPECT_EQ(XLXFLocked(xf), 1);
  EXPECT_EQ(XLXFHidden(xf), 0);
  EXPECT_EQ(XLXFHAlignment(xf), 5);
  EXPECT_EQ(XLXFVAlignment(xf), 2);
  EXPECT_EQ(XLXFRotation(xf), 2);
  EXPECT_EQ(XLXFHidden(Xf(0, 0, 0, 0, 0, 0x02)), 1);
  EXPECT_EQ(XLXFLocked(Xf(0, 0, 0, 0, 0, 0x02)), 0);
}

TEST_F(ItemDecoders, BorderStyles_TopTakesSevenBits) {
  uint16_t fill = 7, top = 7, bottom = 7, left = 7, right = 7;
  // Fill 0x21, bottom 5; top 3, left 6, right 5.
  const uint32_t xf = Xf(0, 0, 0x21 | 5 << 6 | 0x3F << 9, 3 | 6 << 3 | 5 << 6 | 0x7F << 9, 0xFFFF);
  EXPECT_EQ(XLXFBorderStyle(xf, &fill, &top, &bottom, &left, &right), 0);
  EXPECT_EQ(fill, 0x21);
  EXPECT_EQ(bottom, 5);
  EXPECT_EQ(top, 3 | 6 << 3 | 1 << 6);
  EXPECT_EQ(left, 6);
  EXPECT_EQ(right, 5);
  EXPECT_EQ(XLXFBorderStyle(xf, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}

TEST_F(ItemDecoders, Colours_OfOnePlainColour_ComeBackInTheSecondPlace) {
  uint16_t c1 = 7, c2 = 7, top = 7, bottom = 7, left = 7, right = 7;
  EXPECT_EQ(XLXFColors(Xf(0, 0x0009, 0, 0, 0), &c1, &c2, &top, &bottom, &left, &right), 0);
  EXPECT_EQ(c1, 0);
  EXPECT_EQ(c2, 1);
  for (uint16_t unset : {top, bottom, left, right}) EXPECT_EQ(unset, 0xFFF8);
}

TEST_F(ItemDecoders, Colours_OfAPatternAndFourBorders) {
  uint16_t c1 = 7, c2 = 7, top = 7, bottom = 7, left = 7, right = 7;
  const uint32_t xf = Xf(0, 0xE000 | 10 | 12 << 7, 21 << 9 | 0x1FF, 64 << 9 | 0x1FF, 0xC000 | 14 | 15 << 7);
  EXPECT_EQ(XLXFColors(xf, &c1, &c2, &top, &bottom, &left, &right), 0);
  EXPECT_EQ(c1, 2);
  EXPECT_EQ(c2, 4);
  EXPECT_EQ(top, 56);
  EXPECT_EQ(bottom, 13);
  EXPECT_EQ(left, 6);
  EXPECT_EQ(right, 7);
  EXPECT_EQ(XLXFColors(xf, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}

TEST_F(ItemDecoders, FontName) {
  EXPECT_EQ(TextOf(XLFontName, Font(0)), "Arial");
  EXPECT_EQ(TextOf(XLFontName, Font(0, "")), "");
  EXPECT_EQ(XLFontName(Font(0), nullptr), 0);
  EXPECT_EQ(LiveBlocks(), 3u);
}

TEST_F(ItemDecoders, FormatString_OfEachGeneration) {
  const Generation biff5(kBiff5);
  EXPECT_EQ(TextOf(XLFormatString, Item(Text("0.00"))), "0.00");
  const Generation biff8(kBiff8);
  EXPECT_EQ(TextOf(XLFormatString, Item(Bytes{0, 0} + Text("0.00"))), "0.00");
  EXPECT_EQ(TextOf(XLFormatString, Item(Text("General"))), "neral");
  const Generation unset(0);
  EXPECT_EQ(TextOf(XLFormatString, Item(Text("0.00"))), "0.00");
  EXPECT_EQ(LiveBlocks(), 4u);
}

TEST_F(ItemDecoders, FormatString_OfBiff8_WrapsAroundBelowTwoBytes) {
  const Generation biff8(kBiff8);
  EXPECT_EQ(TextOf(XLFormatString, Item({})).size(), 254u);
  EXPECT_EQ(TextOf(XLFormatString, Item(Bytes{1})).size(), 255u);
  EXPECT_EQ(TextOf(XLFormatString, Item(Bytes{1, 2})), "");
}

TEST_F(ItemDecoders, FormatString_TakesTheLowByteOfTheLength) {
  const Generation biff5(kBiff5);
  EXPECT_EQ(TextOf(XLFormatString, Item(Bytes(258, 'x'))), "xx");
}

TEST_F(ItemDecoders, Texts_WithoutAPoolBlock_GiveMinusFour) {
  const uint32_t font = Font(0);
  while (LiveBlocks() < 9) ASSERT_NE(MEMORYALLOC(1), 0u);
  BSTR text = nullptr;
  EXPECT_EQ(XLFontName(font, &text), -4);
  EXPECT_EQ(XLFormatString(font, &text), -4);
  EXPECT_EQ(text, nullptr);
}

}  // namespace
