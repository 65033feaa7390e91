// Palette: the colours of a workbook and the standard ones.
//
//   PALETTE               A colour, in the record and in an element
//   OFFSET  SIZE  FIELD   OFFSET  SIZE  FIELD
//        4     2  n            0     1  red
//        6    4n  colours      1     1  green
//                              2     1  blue
//                              3     1  0
//
// Any plain record of low byte 0x92 is a PALETTE, on purpose. In newer BIFF8 workbooks STYLEEXT (0x0892) is one, and its
// header reads as a count of 2194; a real palette has 56 colours at most.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

constexpr int32_t kStandardColours = 56;

// Puts the colours of the workbook into *colours, 32 bits each: the first PALETTE's, as many as the last one
// says (a workbook has one). An element that the array refuses is passed over.
// RESULT, in the order of the checks: 1 no palette. 4 the array has not one dimension. 5 it is not
// 0 .. count - 1. 6, 11: can't be reached. 0 done.
int16_t XLGetColorData(SAFEARRAY** colours, uint32_t buffer, uint32_t table);

// Puts the 56 standard colours into *colours, whatever the workbook.
// RESULT: 4 the array has not one dimension. 5 it is not 0 .. 55. 0 done.
int16_t XLGetStandardPalette(SAFEARRAY** colours);

}  // namespace tolvenar
