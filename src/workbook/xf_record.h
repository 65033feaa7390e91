// MakeXfRecord: an XF from its sixteen values.
//
//   OFFSET  SIZE  FIELD
//        0     4  E0 00 10 00: a length of 16 in BIFF8 too, on purpose
//        4     2  font
//        6     2  number format
//        8     2  1
//       10     2  bits 0-2 horizontal, 4-6 vertical alignment, 8-9 orientation; 0x0400 format above 0, 0x0800
//                 font above 0, 0x1000 always, 0x2000 border styles add up to anything but 0, 0x4000 fill
//                 pattern above 0 or background not 1
//       12     2  pattern above 0: bits 0-6 pattern colour, 7-12 background; else bits 0-6 background, 0x2000
//       14     2  bits 0-5 fill pattern if above 0, 6-8 bottom style, from 9 bottom colour
//       16     2  bits 0-2 top style, 3-5 left style, 6-8 right style, from 9 top colour
//       18     2  bits 0-6 left colour, 7-13 right colour
//       20     4  BIFF8 only: zero. The layout is BIFF5's in both generations, on purpose.
//
// Colours come as palette numbers from 0 and are stored plus 8, which is where a workbook's palette begins; a
// border's colour is stored only when its style is above 0.
#pragma once

#include <cstdint>

namespace tolvenar {

struct XfValues {
  int16_t font;
  int16_t format;
  int16_t horizontal;
  int16_t vertical;
  int16_t orientation;
  int16_t fill_pattern;
  int16_t pattern_colour;  // foreground
  int16_t background;
  int16_t bottom_style;
  int16_t top_style;
  int16_t left_style;
  int16_t right_style;
  int16_t bottom_colour;
  int16_t top_colour;
  int16_t left_colour;
  int16_t right_colour;
};

// Makes the XF: a pool block of 20 bytes, 24 in BIFF8, the caller's, its size in *size. 0 when the pool
// refuses: *size is then untouched.
uint32_t MakeXfRecord(uint32_t* size, const XfValues& values);

}  // namespace tolvenar
