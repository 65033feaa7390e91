// Style lookup: the index of a font, a number format or a cell format with given attributes; one that the
// workbook does not have is added behind the run of its kind, with a patch.
//
//   RECORD ADDED  BYTES FROM THE HEADER ON (integers little-endian), in BIFF5's layout in both generations
//   FONT          31 00, n + 15 u16, height u16, flags u16, colour + 8 u16, boldness u16, 0 u16, underline u8, 0,
//                 0, 44, n u8, n bytes of name
//   FORMAT        1E 04, n + 3 u16, index u16, n u8, n bytes of text
//   XF            E0 00 10 00, font, format, options, alignment, colours: u16; 6 zero bytes
//   XF, full      as xf_record.h has it
//
// The walk goes over the globals with the index of the item last met, from -1 on. It ends at the first record
// behind the run: of another kind, not private, with an item before it. There a new record goes, and items
// behind that are not seen. Where the globals end with the run, or have none, the new record goes in front of
// their EOF, and the BOF of the first sheet moves with the EOF: its entry in the SheetTable is led to the new place
// (globals_patch.h). So the sheet stays readable, and the next walk sees the new record.
//
// Invariants: (1) A found item changes nothing. (2) A lookup that fails creates nothing, but the record that
// could not be patched in stays live at -4, and when the buffer could not grow it is released and *buffer is
// 0. (3) The SheetTable stays good, and is not touched but for a BOF that moves. (4) A null `buffer` counts as a
// variable holding 0, a null `size` as no buffer. (5) A name or text too long for a record whose size is a positive
// 16-bit value can't be patched in: that gives -4, and the buffer stays.
#pragma once

#include <cstdint>

#include "workbook/xf_record.h"

namespace tolvenar {

constexpr int16_t kLookupNoText = -1;  // null name or text; no format items
constexpr int16_t kLookupNoBlock = -3;
constexpr int16_t kLookupPatchFailed = -4;
constexpr int16_t kLookupNoTable = -6;
constexpr int16_t kLookupNoBuffer = -11;
constexpr int16_t kLookupNoXf = -12;  // XLGetXFIndFull: no pool block for the XF
constexpr int16_t kLookupNoList = -21;

struct FontValues {
  int16_t colour;  // palette number, from 0
  uint16_t height;
  uint16_t boldness;
  uint16_t italic;     // 0, 1; any other value matches no FONT and makes an italic one
  uint16_t underline;  // of a FONT that is made, the low byte
  uint16_t strikeout;  // as italic
};

// Index of the font, 8-bit and zero-terminated `name`. The name compares by BIFF5's layout in both generations, on
// purpose. Font 4 does not exist: the fifth FONT is 5. A FONT that is made counts as one behind the hole also
// where there are fewer than four, on purpose: the next lookup of it then gives one less.
// RESULT below 0: -1 null name; -6 null table; -11 null buffer; -3 no pool block; -4 PatchRecord failed.
int16_t XLGetFont(uint32_t* buffer, uint32_t table, uint32_t* size, const char* name, const FontValues& font);

// Index of the number format, 8-bit and zero-terminated `text`, by BIFF5's layout in both generations. A new one gets
// the highest free index from 254 down; at 16 the search ends, and 16 is used.
// RESULT below 0: -1 null text, or no format items (null table or buffer); -21 no pool block for the list of
// indices; -6, -11: can't be reached; -4 PatchRecord failed; -3 no pool block.
int16_t XLGetFormat(uint32_t* buffer, uint32_t table, uint32_t* size, const char* text);

struct XfIndValues {
  uint16_t font;
  uint16_t format;
  uint16_t locked;  // 0, 1; any other value matches no XF and makes a locked one
  uint16_t hidden;  // likewise
  int16_t horizontal;
  int16_t vertical;
  int16_t rotation;
  uint16_t colours;
};

// Index of the XF. The three alignments share a word with 4 bits each, lowest the horizontal one, as the caller gives
// them: those are not the bit fields of the record, so that vertical alignment and rotation read back as they
// were given only in part. The rest of an XF does not count.
// RESULT below 0: -6 null table; -11 null buffer; -3 no pool block; -4 PatchRecord failed.
int16_t XLGetXFInd(uint32_t* buffer, uint32_t table, uint32_t* size, const XfIndValues& xf);

// Index of the XF that MakeXfRecord makes of the values. An XF matches only byte for byte, header included, and
// with an options word of 1, whatever locked and hidden say, on purpose. In BIFF8 the 24 bytes of the made
// record count: its own 20, and four zeros that the walk takes for an empty record behind it. So XFs from a file
// never match there, the run of XFs ends with the first one made, and that one is found only as long as no
// other has been added behind it.
// RESULT below 0: -6 null table; -11 null buffer; -12 no pool block; -4 PatchRecord failed.
int16_t XLGetXFIndFull(uint32_t* buffer, uint32_t table, uint32_t* size, const XfValues& values,
                       uint16_t locked, uint16_t hidden);

}  // namespace tolvenar
