// Format catalogue: the style tables of the globals, counted and copied out.
//
//   KIND  ITEMS            LOW BYTE      COUNT
//      0  XF               0xE0, 0x43    the records
//      1  FONT             0x31          the records, plus 1 when there is one: font 4 does not exist
//      2  FORMAT           0x1E          the records, plus the built-in formats
//      3  palette entries  0x92          what the last PALETTE says
//
//   An item block
//   OFFSET  SIZE  FIELD
//        0     2  n, length of the payload
//        2     n  payload: of a XF in BIFF5's order, with the format's place in the list of formats for its
//                 index; of a FONT as it stands; of a FORMAT what stands behind the u8 length of BIFF5, so
//                 that in BIFF8 the length's high byte and the flags lead the text
//
// Every item takes a whole pool block, so that a call can hand out no more of them than blocks are free.
// Hosts with larger tables read the records themselves, as XLGetList gives them.
#pragma once

#include <cstdint>

#include "foundation/biff_records.h"
#include "tolvenar/automation.h"

namespace tolvenar {

constexpr int16_t kKindXf = 0;
constexpr int16_t kKindFont = 1;
constexpr int16_t kKindFormat = 2;
constexpr int16_t kKindPalette = 3;

constexpr uint32_t kItemLength = 0;   // u16
constexpr uint32_t kItemPayload = 2;  // from here on

// Font 4 does not exist: the fifth FONT is number 5.
constexpr int32_t kMissingFont = 4;

// True when the record at `at` is of `kind`.
inline bool IsOfKind(const Block& block, uint32_t at, int16_t kind) {
  switch (kind) {
    case kKindXf:
      return IsPlain(block, at, kLowXf) || IsPlain(block, at, kLowXfOld);
    case kKindFont:
      return IsPlain(block, at, kLowFont);
    case kKindFormat:
      return IsPlain(block, at, kLowFormat);
    case kKindPalette:
      return IsPlain(block, at, kLowPalette);
    default:
      return false;
  }
}

// Number of items of `kind`, in 16 bits. 0 for an unknown kind, a null buffer, and a table that is null or no
// live block.
uint16_t XLGetNumFormatItems(uint32_t buffer, uint32_t table, int16_t kind);

// Codes of the readers of the style tables, in the order of the checks.
constexpr int16_t kItemsRead = 0;
constexpr int16_t kItemsNone = 1;
constexpr int16_t kItemsNoFormatList = 21;
constexpr int16_t kItemsNotOneDimension = 4;
constexpr int16_t kItemsArrayDoesNotFit = 5;
constexpr int16_t kItemsNoTable = 6;    // can't be reached: kItemsNone comes first
constexpr int16_t kItemsNoBuffer = 11;  // likewise
constexpr int16_t kItemsNoBlock = 8;
constexpr int16_t kItemsNoBuiltinBlock = 10;

// Whether `array` has one dimension, from 0 to `count` - 1. RESULT 0, 4 or 5 as above.
int16_t CheckItemArray(SAFEARRAY* array, int32_t count);

// Makes an item block of each item of `kind` and puts its handle, 32 bits, into *items, which must reach from
// 0 to XLGetNumFormatItems - 1. The blocks are the caller's, to be released with MEMORYFREE. Element 4 of the
// fonts stays as it was. The texts of FORMAT records are softened for display: "?" becomes "0", "*" a blank,
// "_" and what follows it blanks, unless a backslash stands before; those of the built-in formats, which come
// last, are not. Palette entries make no items: only the array is checked (see XLGetColorData).
// RESULT, in the order of the checks: 1 no items. 21 XFs only: no pool block for the list of formats. 4 the
// array has not one dimension. 5 it is not 0 .. count - 1. 6, 11: can't be reached. 8 no pool block for an
// item, 10 none for a built-in format: the elements put so far stand, their blocks are live. 0 done. At 4, 5
// and 8 the list of formats stays live, on purpose. A put that the array refuses is not told; its block is
// released, since nobody would know of it.
int16_t XLGetFormatData(SAFEARRAY** items, uint32_t buffer, uint32_t table, int16_t kind);

}  // namespace tolvenar
