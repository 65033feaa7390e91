// MakeXfRecord: each value in its place.
#include "workbook/xf_record.h"

#include <gtest/gtest.h>

#include "support/made_record.h"
#include "support/pool_fixture.h"

namespace tolvenar::testing {
namespace {

class XfRecordTest : public PoolTest {
 protected:
  void TearDown() override {
    BiffVersion = 0;
    PoolTest::TearDown();
  }

  // An XF of nothing: no fill, background 1, no borders.
  static XfValues Plain() {
    XfValues values = {};
    values.background = 1;
    return values;
  }

  static std::string XfOf(const XfValues& values) {
    uint32_t size = 0;
    const uint32_t record = MakeXfRecord(&size, values);
    return Made(record, size);
  }
};

struct XfCase {
  const char* label;
  int16_t XfValues::*field;
  int16_t value;
  const char* words;  // from offset 4 on
};

// The words of a plain XF are 0000 0000 0001 1000 2009 0000 0000 0000.
constexpr XfCase kXfCases[] = {
    {"font", &XfValues::font, 5, "05 00 00 00 01 00 00 18 09 20 00 00 00 00 00 00 "},
    {"negative font", &XfValues::font, -1, "FF FF 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
    {"format", &XfValues::format, 0xA4, "00 00 A4 00 01 00 00 14 09 20 00 00 00 00 00 00 "},
    {"horizontal", &XfValues::horizontal, 7, "00 00 00 00 01 00 07 10 09 20 00 00 00 00 00 00 "},
    {"horizontal cut", &XfValues::horizontal, 8, "00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
    {"vertical", &XfValues::vertical, 5, "00 00 00 00 01 00 50 10 09 20 00 00 00 00 00 00 "},
    {"orientation", &XfValues::orientation, 3, "00 00 00 00 01 00 00 13 09 20 00 00 00 00 00 00 "},
    {"vertical cut", &XfValues::vertical, 8, "00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
    {"orientation cut", &XfValues::orientation, 4, "00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
    {"fill cut", &XfValues::fill_pattern, 0x6A, "00 00 00 00 01 00 00 50 88 04 2A 00 00 00 00 00 "},
    {"background cut", &XfValues::background, 130, "00 00 00 00 01 00 00 50 0A 20 00 00 00 00 00 00 "},
    {"bottom style cut", &XfValues::bottom_style, 9, "00 00 00 00 01 00 00 30 09 20 40 10 00 00 00 00 "},
    {"top style cut", &XfValues::top_style, 9, "00 00 00 00 01 00 00 30 09 20 00 00 01 10 00 00 "},
    {"left style cut", &XfValues::left_style, 9, "00 00 00 00 01 00 00 30 09 20 00 00 08 00 08 00 "},
    {"right style cut", &XfValues::right_style, 9, "00 00 00 00 01 00 00 30 09 20 00 00 40 00 00 04 "},
    {"top colour alone", &XfValues::top_colour, 9, "00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
    {"right colour alone", &XfValues::right_colour, 9, "00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
    {"fill", &XfValues::fill_pattern, 0x2A, "00 00 00 00 01 00 00 50 88 04 2A 00 00 00 00 00 "},
    {"negative fill", &XfValues::fill_pattern, -1, "00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
    {"pattern colour alone", &XfValues::pattern_colour, 9,
     "00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
    {"background", &XfValues::background, 0, "00 00 00 00 01 00 00 50 08 20 00 00 00 00 00 00 "},
    {"background 55", &XfValues::background, 55, "00 00 00 00 01 00 00 50 3F 20 00 00 00 00 00 00 "},
    {"bottom style", &XfValues::bottom_style, 5, "00 00 00 00 01 00 00 30 09 20 40 11 00 00 00 00 "},
    {"top style", &XfValues::top_style, 5, "00 00 00 00 01 00 00 30 09 20 00 00 05 10 00 00 "},
    {"left style", &XfValues::left_style, 5, "00 00 00 00 01 00 00 30 09 20 00 00 28 00 08 00 "},
    {"right style", &XfValues::right_style, 5, "00 00 00 00 01 00 00 30 09 20 00 00 40 01 00 04 "},
    {"bottom colour alone", &XfValues::bottom_colour, 9, "00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
    {"left colour alone", &XfValues::left_colour, 9, "00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 "},
};

TEST_F(XfRecordTest, EachValueAlone) {
  BiffVersion = 5;
  for (const XfCase& row : kXfCases) {
    XfValues values = Plain();
    values.*row.field = row.value;
    EXPECT_EQ(XfOf(values), std::string("E0 00 10 00 ") + row.words) << row.label;
  }
}

TEST_F(XfRecordTest, NoFillAndBackgroundOne_NineWithBit13AndNoFillBit) {
  BiffVersion = 5;
  EXPECT_EQ(XfOf(Plain()), "E0 00 10 00 00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 ");
}

TEST_F(XfRecordTest, AllValues) {
  BiffVersion = 5;
  // Words: 7D75, bg 18 << 7 | 17, 01 | 2 << 6 | 28 << 9, 3 | 4 << 3 | 5 << 6 | 29 << 9, 30 | 31 << 7.
  const XfValues values = {1, 2, 5, 7, 1, 1, 9, 10, 2, 3, 4, 5, 20, 21, 22, 23};
  EXPECT_EQ(XfOf(values), "E0 00 10 00 01 00 02 00 01 00 75 7D 11 09 81 38 63 3B 9E 0F ");
}

TEST_F(XfRecordTest, ColoursOfAFill_AreCutToSixAndSevenBits) {
  BiffVersion = 5;
  XfValues values = Plain();
  values.fill_pattern = 1;
  values.background = 60;       // 68 in six bits is 4
  values.pattern_colour = 127;  // 135 in seven bits is 7
  EXPECT_EQ(XfOf(values), "E0 00 10 00 00 00 00 00 01 00 00 50 07 02 01 00 00 00 00 00 ");
}

TEST_F(XfRecordTest, BordersThatAddUpToNothing_LeaveTheirBitClear) {
  BiffVersion = 5;
  XfValues values = Plain();
  values.top_style = 1;
  values.left_style = -1;
  EXPECT_EQ(XfOf(values), "E0 00 10 00 00 00 00 00 01 00 00 10 09 20 00 00 39 10 00 00 ");
}

TEST_F(XfRecordTest, Biff8_FourZeroBytesMore_TheLengthFieldStillSays16) {
  BiffVersion = 6;
  EXPECT_EQ(XfOf(Plain()), "E0 00 10 00 00 00 00 00 01 00 00 10 09 20 00 00 00 00 00 00 00 00 00 00 ");
}

TEST_F(XfRecordTest, PoolRefuses_TheSizeIsUntouched) {
  TakeAllSlotsBut({});
  uint32_t size = 77;
  EXPECT_EQ(MakeXfRecord(&size, Plain()), 0u);
  EXPECT_EQ(size, 77u);
}

}  // namespace
}  // namespace tolvenar::testing
