// MakeXfRecord: how the values share the record's words. The layout stands in xf_record.h.
#include "workbook/xf_record.h"

#include <initializer_list>

#include "foundation/biff_records.h"
#include "workbook/biff_version.h"
#include "workbook/record_pen.h"

namespace tolvenar {

namespace {

constexpr uint16_t kXfPayload = 16;
constexpr uint32_t kXfSizeBiff8 = kXfSizeBiff5 + 4;
constexpr uint16_t kXfCell = 1;

constexpr uint32_t kUsesFormat = 0x0400;
constexpr uint32_t kUsesFont = 0x0800;
constexpr uint32_t kUsesAlignment = 0x1000;
constexpr uint32_t kUsesBorders = 0x2000;
constexpr uint32_t kUsesFill = 0x4000;
constexpr int16_t kNoBackground = 1;
constexpr uint32_t kNoPattern = 0x2000;

// The low `bits` bits of a value, at bit `at` of a word.
uint32_t Bits(int32_t value, uint32_t bits, uint32_t at) {
  return (static_cast<uint32_t>(value) & ((1u << bits) - 1)) << at;
}

uint32_t Colour(int16_t number, uint32_t bits, uint32_t at) {
  return Bits(number + kFirstPaletteColour, bits, at);
}

// The colour of a border, which counts only when the border has a style.
uint32_t BorderColour(int16_t style, int16_t number, uint32_t at) {
  constexpr uint32_t kColourBits = 7;
  return style > 0 ? Colour(number, kColourBits, at) : 0;
}

uint32_t AlignmentWord(const XfValues& v) {
  uint32_t word = Bits(v.horizontal, 3, 0) | Bits(v.vertical, 3, 4) | Bits(v.orientation, 2, 8);
  word |= kUsesAlignment;
  if (v.format > 0) word |= kUsesFormat;
  if (v.font > 0) word |= kUsesFont;
  if (v.bottom_style + v.top_style + v.left_style + v.right_style != 0) word |= kUsesBorders;
  if (v.fill_pattern > 0 || v.background != kNoBackground) word |= kUsesFill;
  return word;
}

uint32_t ColourWord(const XfValues& v) {
  if (v.fill_pattern > 0) return Colour(v.background, 6, 7) | Colour(v.pattern_colour, 7, 0);
  return Colour(v.background, 7, 0) | kNoPattern;
}

uint32_t FillWord(const XfValues& v) {
  const uint32_t pattern = v.fill_pattern > 0 ? Bits(v.fill_pattern, 6, 0) : 0;
  return pattern | Bits(v.bottom_style, 3, 6) | BorderColour(v.bottom_style, v.bottom_colour, 9);
}

uint32_t BorderWord(const XfValues& v) {
  return Bits(v.top_style, 3, 0) | Bits(v.left_style, 3, 3) | Bits(v.right_style, 3, 6) |
         BorderColour(v.top_style, v.top_colour, 9);
}

uint32_t SideColourWord(const XfValues& v) {
  return BorderColour(v.left_style, v.left_colour, 0) | BorderColour(v.right_style, v.right_colour, 7);
}

}  // namespace

uint32_t MakeXfRecord(uint32_t* size, const XfValues& v) {
  const uint32_t total = BiffVersion == kBiff8 ? kXfSizeBiff8 : kXfSizeBiff5;
  RecordPen pen = StartRecordOfLength(kTypeXf, kXfPayload, total);
  if (pen.block == 0) return 0;
  *size = total;
  WriteFields(&pen, static_cast<uint16_t>(v.font), static_cast<uint16_t>(v.format), kXfCell);
  for (uint32_t word : {AlignmentWord(v), ColourWord(v), FillWord(v), BorderWord(v), SideColourWord(v)}) {
    WriteField(&pen, static_cast<uint16_t>(word));
  }
  return pen.block;
}

}  // namespace tolvenar
