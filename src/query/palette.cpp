// Palette: the standard colours as data, and the two readers.
#include "query/palette.h"

#include "platform/array_put.h"
#include "query/array_element.h"
#include "query/extent_walk.h"
#include "query/format_catalogue.h"

namespace tolvenar {

namespace {

// Blue, green, red, as the element's hexadecimal number reads.
// clang-format off
constexpr uint32_t kStandardPalette[kStandardColours] = {
    0x000000, 0xFFFFFF, 0x0000FF, 0x00FF00,  // 0
    0xFF0000, 0x00FFFF, 0xFF00FF, 0xFFFF00,  // 4
    0x000080, 0x008000, 0x800000, 0x008080,  // 8
    0x800080, 0x808000, 0xC0C0C0, 0x808080,  // 12
    0xFF8080, 0x602080, 0xC0FFFF, 0xE0E0A0,  // 16
    0x800060, 0x8080FF, 0xC08000, 0xFFC0C0,  // 20
    0x800000, 0xFF00FF, 0x00FFFF, 0xFFFF00,  // 24
    0x800080, 0x000080, 0x800000, 0xFF0000,  // 28
    0xFFCC00, 0xFFFF69, 0xCCFFCC, 0x99FFFF,  // 32
    0xF0CAA6, 0xCC99CC, 0xFF99CC, 0xE3E3E3,  // 36
    0xFF6633, 0xCCCC33, 0x339933, 0x339999,  // 40
    0x336699, 0x666699, 0x996666, 0x969696,  // 44
    0xCC3333, 0x666633, 0x003300, 0x003333,  // 48
    0x003366, 0x663399, 0x993333, 0x424242,  // 52
};
// clang-format on

void PutColour(SAFEARRAY* array, LONG index, uint32_t colour) {
  platform::PutBytes(array, &index, &colour, sizeof colour);
}

}  // namespace

int16_t XLGetColorData(SAFEARRAY** colours, uint32_t buffer, uint32_t table) {
  const uint16_t count = XLGetNumFormatItems(buffer, table, kKindPalette);
  if (count == 0) return kItemsNone;
  SAFEARRAY* array = ArrayAt(colours);
  const int16_t check = CheckItemArray(array, count);
  if (check != kItemsRead) return check;
  // These two stay in the ladder though the first check comes before them, on purpose.
  if (table == 0) return kItemsNoTable;
  if (buffer == 0) return kItemsNoBuffer;

  const Block block = OpenBlock(buffer);
  const Block entries = OpenBlock(table);
  const uint32_t end = GlobalsEnd(entries);
  Walk walk = StartWalk(block, TableEntry(entries, kTableGlobalsBegin));
  while (InExtent(walk, end) && !IsOfKind(block, walk.at, kKindPalette)) Step(&walk);
  for (uint32_t i = 0; i < count; ++i) {
    PutColour(array, static_cast<LONG>(i), U32At(block, walk.at + kPaletteColours + i * kPaletteColour));
  }
  return kItemsRead;
}

int16_t XLGetStandardPalette(SAFEARRAY** colours) {
  SAFEARRAY* array = ArrayAt(colours);
  const int16_t check = CheckItemArray(array, kStandardColours);
  if (check != kItemsRead) return check;
  for (LONG i = 0; i < kStandardColours; ++i) PutColour(array, i, kStandardPalette[i]);
  return kItemsRead;
}

}  // namespace tolvenar
