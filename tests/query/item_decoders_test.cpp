// Item decoders: each field, the null block, and the texts with their generation's prefix.
#include "query/item_decoders.h"

#include <iterator>
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

// Each decoder reads its own bits: all of them, and nothing beside.
constexpr struct {
  Decoder decoder;
  uint32_t offset;
  uint16_t bits;
  int16_t all;   // result with those bits alone
  int16_t none;  // result with all bits but those
} kFields[] = {
    {XLFontSize, 2, 0xFFFF, -1, 0},     {XLXFFont, 2, 0xFFFF, -1, 0},
    {XLXFFormat, 4, 0xFFFF, -1, 0},     {XLFontColor, 6, 0xFFFF, -9, -8},
    {XLFontBoldness, 8, 0xFFFF, -1, 0}, {XLFontItalic, 4, 0x0002, 1, 0},
    {XLFontStrikeOut, 4, 0x0008, 1, 0}, {XLFontUnderline, 12, 0x00FF, 255, 0},
    {XLXFLocked, 6, 0x0001, 1, 0},      {XLXFHidden, 6, 0x0002, 1, 0},
    {XLXFHAlignment, 8, 0x0007, 7, 0},  {XLXFVAlignment, 8, 0x0030, 3, 0},
    {XLXFRotation, 9, 0x0003, 3, 0},
};

TEST_F(ItemDecoders, EachReadsItsOwnBits_AndNoOthers) {
  const uint32_t block = MEMORYALLOC(64);
  const Block item = OpenBlock(block);
  for (const auto& field : kFields) {
    MEMORYSET1(&block, 64, 0);
    PutU16(item, field.offset, field.bits);
    EXPECT_EQ(field.decoder(block), field.all) << &field - kFields;
    MEMORYSET1(&block, 64, 0xFF);
    PutU16(item, field.offset, static_cast<uint16_t>(~field.bits));
    EXPECT_EQ(field.decoder(block), field.none) << &field - kFields;
  }
}

struct SplitField {
  uint32_t offset;
  uint16_t bits;
  uint16_t all;
};

TEST_F(ItemDecoders, BorderStyles_EachOfItsOwnBits_AndNoOthers) {
  constexpr SplitField kStyles[] = {
      {12, 0x003F, 0x3F}, {14, 0x007F, 0x7F}, {12, 0x01C0, 7}, {14, 0x0038, 7}, {14, 0x01C0, 7}};
  const uint32_t block = MEMORYALLOC(64);
  for (size_t i = 0; i < std::size(kStyles); ++i) {
    uint16_t given[5] = {9, 9, 9, 9, 9};
    MEMORYSET1(&block, 64, 0);
    PutU16(OpenBlock(block), kStyles[i].offset, kStyles[i].bits);
    EXPECT_EQ(XLXFBorderStyle(block, &given[0], &given[1], &given[2], &given[3], &given[4]), 0);
    EXPECT_EQ(given[i], kStyles[i].all) << i;
    MEMORYSET1(&block, 64, 0xFF);
    PutU16(OpenBlock(block), kStyles[i].offset, static_cast<uint16_t>(~kStyles[i].bits));
    EXPECT_EQ(XLXFBorderStyle(block, &given[0], &given[1], &given[2], &given[3], &given[4]), 0);
    EXPECT_EQ(given[i], 0) << i;
  }
}

TEST_F(ItemDecoders, Colours_EachOfItsOwnBits_AndNoOthers) {
  constexpr SplitField kColours[] = {{10, 0x007F, 119}, {10, 0x1F80, 55},  {14, 0xFE00, 119},
                                     {12, 0xFE00, 119}, {16, 0x007F, 119}, {16, 0x3F80, 119}};
  const uint32_t block = MEMORYALLOC(64);
  for (size_t i = 0; i < std::size(kColours); ++i) {
    uint16_t given[6] = {9, 9, 9, 9, 9, 9};
    const auto read = [&] {
      return XLXFColors(block, &given[0], &given[1], &given[2], &given[3], &given[4], &given[5]);
    };
    MEMORYSET1(&block, 64, 0);
    PutU16(OpenBlock(block), 10, 0x0080);  // a colour B, so that A is colour 1
    PutU16(OpenBlock(block), kColours[i].offset,
           static_cast<uint16_t>(kColours[i].bits | (i == 0 ? 0x0080 : 0)));
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(given[i], kColours[i].all) << i;
    MEMORYSET1(&block, 64, 0xFF);
    PutU16(OpenBlock(block), kColours[i].offset, static_cast<uint16_t>(~kColours[i].bits));
    EXPECT_EQ(read(), 0);
    // Without a colour B the one colour comes in its place: all bits of A.
    EXPECT_EQ(given[i], i == 1 ? 119 : 0xFFF8) << i;
  }
}

TEST_F(ItemDecoders, OneColour_IsColour2_WhateverStandsAboveIt) {
  uint16_t c1 = 7, c2 = 7;
  EXPECT_EQ(XLXFColors(Xf(0, 0xE000 | 0x7F, 0, 0, 0), &c1, &c2, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(c1, 0);
  EXPECT_EQ(c2, 119);
}

TEST_F(ItemDecoders, FontName) {
  EXPECT_EQ(TextOf(XLFontName, Font(0)), "Arial");
  EXPECT_EQ(TextOf(XLFontName, Font(0, "")), "");
  MEMORYFREEALL();
  EXPECT_EQ(TextOf(XLFontName, Font(0, std::string(255, 'n'))), std::string(255, 'n'));
  MEMORYFREEALL();
  EXPECT_EQ(TextOf(XLFontName, Font(0)), "Arial");
  EXPECT_EQ(XLFontName(Font(0), nullptr), 0);
  EXPECT_EQ(LiveBlocks(), 2u);
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

// In BIFF8 too the block is as long as the payload's length says.
TEST_F(ItemDecoders, Texts_NeedABlockOfTheirWholeLength) {
  const uint32_t name = Font(0, std::string(255, 'n'));
  const uint32_t format = Item(Bytes(255, 'x'));
  while (LiveBlocks() < 9) ASSERT_NE(MEMORYALLOC(1), 0u);
  BSTR text = nullptr;
  EXPECT_EQ(XLFontName(0, &text), -1);
  EXPECT_EQ(XLFontName(name, &text), -4);
  for (int32_t version : {kBiff5, kBiff8}) {
    const Generation generation(version);
    EXPECT_EQ(XLFormatString(format, &text), -4);
  }
  EXPECT_EQ(text, nullptr);
}

}  // namespace
