// Exports of styles and sizes: every argument arrives where it belongs, every decoder is the one that it is called. All
// values differ, so that two that have changed places show.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "support/test_array.h"
#include "tolvenar/tolvenar.h"

namespace {

using namespace tolvenar::testing;

// A BIFF5 workbook with a font, a format and an XF, each with a record behind its run, and a sheet with sizes.
class StyleExports : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    StreamBuilder book = StreamBuilder().Bof(5).Record(0x0031, Bytes(15)).Record(0x0042, Bytes(4));
    book.Record(0x041E, Bytes{164, 0, 1, '0'}).Record(0x0042, Bytes(4)).Record(0x00E0, Bytes(16));
    book.Record(0x0092, U16(2) + U32(0x112233) + U32(0x445566)).Sheet("Data").Eof().Bof(5, kWorksheet);
    book.Record(0x007D, U16(2) + U16(2) + U16(512) + Bytes(5)).Dimensions(0, 4, 0, 3);
    book.Record(0x0208, U16(1) + Bytes(4) + U16(255) + Bytes(8)).Record(0x00A0, U16(3) + U16(4));
    buffer_ = book.Record(0x023E, Bytes(10)).Eof().Load(&size_);
    ASSERT_EQ(::XLLocateSheets(buffer_, &table_, size_), 0);
    ASSERT_EQ(::XLGetNumVers(buffer_, table_), 5);
  }
  // Expects that the walk meets a record of these bytes.
  void ExpectRecord(uint16_t type, const Bytes& payload) {
    const std::string record = Hex(StreamBuilder().Record(type, payload).Stream());
    EXPECT_NE(Hex(WalkedStream(buffer_)).find(record), std::string::npos) << record;
  }
  static uint32_t Item(const Bytes& payload) {
    const uint32_t block = ::MEMORYALLOC(static_cast<int32_t>(payload.size() + 2));
    uint8_t* bytes = reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(block));
    bytes[0] = static_cast<uint8_t>(payload.size());
    std::copy(payload.begin(), payload.end(), bytes + 2);
    return block;
  }

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
  uint32_t table_ = 0;
};

TEST_F(StyleExports, Font_Arguments) {
  EXPECT_EQ(::XLGetFont(&buffer_, table_, &size_, "One", 3, 240, 700, 1, 2, 0), 2);
  ExpectRecord(0x0031,
               U16(240) + U16(2) + U16(11) + U16(700) + U16(0) + Bytes{2, 0, 0, 0x44, 3, 'O', 'n', 'e'});
  EXPECT_EQ(::XLGetFont(&buffer_, table_, &size_, "Two", 4, 241, 701, 0, 1, 1), 3);
  ExpectRecord(0x0031,
               U16(241) + U16(8) + U16(12) + U16(701) + U16(0) + Bytes{1, 0, 0, 0x44, 3, 'T', 'w', 'o'});
}

TEST_F(StyleExports, Format_Arguments) {
  EXPECT_EQ(::XLGetFormat(&buffer_, table_, &size_, "0"), 164);
  EXPECT_EQ(::XLGetFormat(&buffer_, table_, &size_, "0.0"), 254);
  ExpectRecord(0x041E, Bytes{254, 0, 3, '0', '.', '0'});
}

TEST_F(StyleExports, XfInd_Arguments) {
  EXPECT_EQ(::XLGetXFInd(&buffer_, table_, &size_, 5, 6, 1, 0, 1, 2, 3, 7), 1);
  ExpectRecord(0x00E0, U16(5) + U16(6) + U16(1) + U16(0x0321) + U16(7) + Bytes(6));
  EXPECT_EQ(::XLGetXFInd(&buffer_, table_, &size_, 5, 6, 0, 1, 1, 2, 3, 7), 2);
  ExpectRecord(0x00E0, U16(5) + U16(6) + U16(2) + U16(0x0321) + U16(7) + Bytes(6));
}

TEST_F(StyleExports, FullXf_Arguments) {
  const auto look_up = [&](uint16_t locked, uint16_t hidden) {
    return ::XLGetXFIndFull(&buffer_, table_, &size_, 5, 9, locked, hidden, 1, 2, 3, 4, 6, 7, 1, 10, 2, 11, 3,
                            12, 4, 13);
  };
  // Background 12 and pattern colour 15; fill 6, bottom 1 in 18; top 2 in 19, left 3, right 4; left in 20, right in 21.
  const Bytes rest = U16(0x7F21) + U16(12 << 7 | 15) + U16(18 << 9 | 1 << 6 | 6) +
                     U16(19 << 9 | 4 << 6 | 3 << 3 | 2) + U16(21 << 7 | 20);
  EXPECT_EQ(look_up(0, 1), 1);
  ExpectRecord(0x00E0, U16(5) + U16(9) + U16(2) + rest);
  EXPECT_EQ(look_up(1, 0), 2);
  ExpectRecord(0x00E0, U16(5) + U16(9) + U16(1) + rest);
}

TEST_F(StyleExports, Decoders_OfAFont) {
  const uint32_t font =
      Item(U16(201) + Bytes{0x02, 0} + U16(11) + U16(700) + U16(0) + Bytes{33, 0, 0, 0, 1, 'A'});
  EXPECT_EQ(::XLFontSize(font), 201);
  EXPECT_EQ(::XLFontColor(font), 3);
  EXPECT_EQ(::XLFontBoldness(font), 700);
  EXPECT_EQ(::XLFontItalic(font), 1);
  EXPECT_EQ(::XLFontStrikeOut(font), 0);
  EXPECT_EQ(::XLFontUnderline(font), 33);
  BSTR name = nullptr;
  EXPECT_EQ(::XLFontName(font, &name), 0);
  EXPECT_EQ(BytesOf(name), "A");
  SysFreeString(name);
}

TEST_F(StyleExports, Decoders_OfAnXf) {
  const uint32_t xf =
      Item(U16(5) + U16(6) + Bytes{1, 0, 0x21, 3} + U16(12 << 7 | 15) + U16(18 << 9 | 1 << 6 | 6) +
           U16(19 << 9 | 4 << 6 | 3 << 3 | 2) + U16(21 << 7 | 20));
  EXPECT_EQ(::XLXFFont(xf), 5);
  EXPECT_EQ(::XLXFFormat(xf), 6);
  EXPECT_EQ(::XLXFLocked(xf), 1);
  EXPECT_EQ(::XLXFHidden(xf), 0);
  EXPECT_EQ(::XLXFHAlignment(xf), 1);
  EXPECT_EQ(::XLXFVAlignment(xf), 2);
  EXPECT_EQ(::XLXFRotation(xf), 3);
  uint16_t out[6] = {};
  EXPECT_EQ(::XLXFBorderStyle(xf, &out[0], &out[1], &out[2], &out[3], &out[4]), 0);
  EXPECT_EQ((std::vector<int>(out, out + 5)), (std::vector<int>{6, 2 | 3 << 3, 1, 3, 4}));
  EXPECT_EQ(::XLXFColors(xf, &out[0], &out[1], &out[2], &out[3], &out[4], &out[5]), 0);
  EXPECT_EQ((std::vector<int>(out, out + 6)), (std::vector<int>{7, 4, 11, 10, 12, 13}));
}

TEST_F(StyleExports, Decoder_OfAFormat) {
  BSTR text = nullptr;
  EXPECT_EQ(::XLFormatString(Item(Bytes{'0', '.', '0'}), &text), 0);
  EXPECT_EQ(BytesOf(text), "0.0");
  SysFreeString(text);
}

TEST_F(StyleExports, TablesOfStyles) {
  EXPECT_EQ(::XLGetNumFormatItems(buffer_, table_, 2), 18);
  TestArray fonts(VT_I4, 0, 1), colours(VT_I4, 0, 1), standard(VT_I4, 0, 55);
  EXPECT_EQ(::XLGetFormatData(fonts.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(::MEMORYSIZE(static_cast<uint32_t>(fonts.NumberAt(0))), 17u);
  EXPECT_EQ(::XLGetColorData(colours.Ref(), buffer_, table_), 0);
  EXPECT_EQ(colours.NumberAt(1), 0x445566);
  EXPECT_EQ(::XLGetStandardPalette(standard.Ref()), 0);
  EXPECT_EQ(standard.NumberAt(55), 0x424242);
}

TEST_F(StyleExports, Sizes_ReadAndChanged) {
  TestArray heights(VT_I2, 1, 4), widths(VT_I2, 1, 3);
  EXPECT_EQ(::XLChangeRowHeight(&buffer_, table_, &size_, 1, 2, 300), 0);
  EXPECT_EQ(::XLChangeColWidth(&buffer_, table_, &size_, 1, 3, 2560), 0);
  EXPECT_EQ(::XLGetRowHeight(heights.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(::XLGetColWidth(widths.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(heights.NumberAt(2), 301);
  EXPECT_EQ(widths.NumberAt(3), 1200);
  EXPECT_EQ(::XLGetMagnification(buffer_, table_, 1), 0.75);
}

}  // namespace
