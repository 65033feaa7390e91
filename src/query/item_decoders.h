// Item decoders: one field each of an item block that XLGetFormatData handed out.
//
//   OFFSET  FONT                                    XF, BIFF5's order in both generations
//        0  length of the payload, u16              length of the payload, u16
//        2  height u16                              font u16
//        4  u8: bit 1 italic, bit 3 strikeout       format u16, its place in the list of formats
//        6  colour u16, stored plus 8               u8: bit 0 locked, bit 1 hidden
//        8  boldness u16                            u8: bits 0-2 horizontal, 4-5 vertical alignment
//        9                                          u8: bits 0-1 rotation
//       10                                          u16: bits 0-6 colour A, 7-12 colour B
//       12  underline u8                            u16: bits 0-5 fill, 6-8 bottom style, 9-15 bottom colour
//       14                                          u16: bits 0-2 top, 3-5 left, 6-8 right style, 9-15 top
//                                                   colour
//       16  length of the name u8, then the name    u16: bits 0-6 left, 7-13 right colour
//
// Invariants: (1) Nothing is changed. (2) Every decoder gives -1 for a null block, and then writes nothing. A
// block that is none of the pool's reads as zeros.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// The fields as they stand, colour less 8 in 16 bits. Which kind of item the block holds is not checked: size
// of a font and font of an XF are the same field.
int16_t XLFontSize(uint32_t block);
int16_t XLFontColor(uint32_t block);
int16_t XLFontBoldness(uint32_t block);
int16_t XLFontItalic(uint32_t block);
int16_t XLFontStrikeOut(uint32_t block);
int16_t XLFontUnderline(uint32_t block);
int16_t XLXFFont(uint32_t block);
int16_t XLXFFormat(uint32_t block);
int16_t XLXFLocked(uint32_t block);
int16_t XLXFHidden(uint32_t block);
int16_t XLXFHAlignment(uint32_t block);
int16_t XLXFVAlignment(uint32_t block);
int16_t XLXFRotation(uint32_t block);

// Gives the fill pattern and the border styles; a null out pointer is not written. *top has 7 bits, with the
// left style and the low bit of the right one above its own three, on purpose. RESULT 0; -1 null block.
int16_t XLXFBorderStyle(uint32_t block, uint16_t* fill, uint16_t* top, uint16_t* bottom, uint16_t* left,
                        uint16_t* right);

// Gives the colours as palette numbers, less 8 in 16 bits: one that is not set comes out as 0xFFF8. With a
// colour B, *colour1 is A and *colour2 is B; without one *colour1 is 0 and *colour2 is A. RESULT 0; -1 null
// block.
int16_t XLXFColors(uint32_t block, uint16_t* colour1, uint16_t* colour2, uint16_t* top, uint16_t* bottom,
                   uint16_t* left, uint16_t* right);

// Gives the name of a font: one byte a character. RESULT 0, *name is the caller's; -1 null block; -4 no pool
// block. A null `name` gets nothing.
int16_t XLFontName(uint32_t block, BSTR* name);

// Gives the text of a number format. Its length is the low byte of the payload's. In BIFF8 the two bytes in
// front of the text are passed over: they are the high byte of its length and its flags. The built-in formats
// have none, and lose their first two characters, on purpose; a payload of 0 or 1 bytes wraps around to 254 or
// 255. Any other generation counts as BIFF5. RESULT as XLFontName.
int16_t XLFormatString(uint32_t block, BSTR* text);

}  // namespace tolvenar
