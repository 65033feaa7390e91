// Item decoders: the fields by their places. The layout stands in item_decoders.h.
#include "query/item_decoders.h"

#include "foundation/biff_records.h"
#include "query/byte_text.h"
#include "query/format_catalogue.h"
#include "workbook/biff_version.h"

namespace tolvenar {

namespace {

constexpr int16_t kDecoded = 0;
constexpr int16_t kNoItem = -1;
constexpr int16_t kNoTextBlock = -4;

// Where the field at `offset` of a record stands in its item block.
constexpr uint32_t InItem(uint32_t offset) {
  return offset - kHeaderSize + kItemPayload;
}

// In BIFF8, what stands in front of a format's text.
constexpr uint32_t kFormatPrefix = 2;

constexpr uint32_t kRotationByte = kXfAlignment + 1;

// `width` bits of a word from bit `from` on.
constexpr uint32_t Bits(uint32_t word, uint32_t from, uint32_t width) {
  return (word >> from) & ((1u << width) - 1);
}

int16_t WordOf(uint32_t block, uint32_t offset) {
  return block != 0 ? I16At(OpenBlock(block), InItem(offset)) : kNoItem;
}

int16_t BitsOf(uint32_t block, uint32_t offset, uint32_t from, uint32_t width) {
  if (block == 0) return kNoItem;
  return static_cast<int16_t>(Bits(U8At(OpenBlock(block), InItem(offset)), from, width));
}

void Give(uint16_t* out, uint32_t value) {
  if (out != nullptr) *out = static_cast<uint16_t>(value);
}

void GiveColour(uint16_t* out, uint32_t stored) {
  Give(out, stored - static_cast<uint32_t>(kFirstPaletteColour));
}

// Gives `n` bytes at `at` as text. The text has to pass through a pool block of `room` bytes.
int16_t GiveText(BSTR* out, const Block& item, uint32_t at, uint8_t n, uint8_t room) {
  if (!PoolHasRoom(room)) return kNoTextBlock;
  if (out != nullptr) *out = ByteBstr(item, at, n);
  return kDecoded;
}

}  // namespace

int16_t XLFontSize(uint32_t block) {
  return WordOf(block, kFontHeight);
}

int16_t XLFontColor(uint32_t block) {
  if (block == 0) return kNoItem;
  return static_cast<int16_t>(WordOf(block, kFontColour) - kFirstPaletteColour);
}

int16_t XLFontBoldness(uint32_t block) {
  return WordOf(block, kFontBoldness);
}

int16_t XLFontItalic(uint32_t block) {
  return BitsOf(block, kFontFlags, 1, 1);
}

int16_t XLFontStrikeOut(uint32_t block) {
  return BitsOf(block, kFontFlags, 3, 1);
}

int16_t XLFontUnderline(uint32_t block) {
  return BitsOf(block, kFontUnderline, 0, 8);
}

int16_t XLXFFont(uint32_t block) {
  return WordOf(block, kXfFont);
}

int16_t XLXFFormat(uint32_t block) {
  return WordOf(block, kXfFormat);
}

int16_t XLXFLocked(uint32_t block) {
  return BitsOf(block, kXfOptions, 0, 1);
}

int16_t XLXFHidden(uint32_t block) {
  return BitsOf(block, kXfOptions, 1, 1);
}

int16_t XLXFHAlignment(uint32_t block) {
  return BitsOf(block, kXfAlignment, 0, 3);
}

int16_t XLXFVAlignment(uint32_t block) {
  return BitsOf(block, kXfAlignment, 4, 2);
}

int16_t XLXFRotation(uint32_t block) {
  return BitsOf(block, kRotationByte, 0, 2);
}

int16_t XLXFBorderStyle(uint32_t block, uint16_t* fill, uint16_t* top, uint16_t* bottom, uint16_t* left,
                        uint16_t* right) {
  if (block == 0) return kNoItem;
  const Block item = OpenBlock(block);
  const uint32_t fill_word = U16At(item, InItem(kXfFill));
  const uint32_t border_word = U16At(item, InItem(kXfBorders));
  Give(fill, Bits(fill_word, 0, 6));
  Give(top, Bits(border_word, 0, 7));  // seven bits, on purpose
  Give(bottom, Bits(fill_word, 6, 3));
  Give(left, Bits(border_word, 3, 3));
  Give(right, Bits(border_word, 6, 3));
  return kDecoded;
}

int16_t XLXFColors(uint32_t block, uint16_t* colour1, uint16_t* colour2, uint16_t* top, uint16_t* bottom,
                   uint16_t* left, uint16_t* right) {
  if (block == 0) return kNoItem;
  const Block item = OpenBlock(block);
  const uint32_t colours = U16At(item, InItem(kXfColours));
  const uint32_t a = Bits(colours, 0, 7);
  const uint32_t b = Bits(colours, 7, 6);
  if (b != 0) {
    GiveColour(colour1, a);
    GiveColour(colour2, b);
  } else {
    Give(colour1, 0);
    GiveColour(colour2, a);
  }
  const uint32_t sides = U16At(item, InItem(kXfSideColours));
  GiveColour(top, Bits(U16At(item, InItem(kXfBorders)), 9, 7));
  GiveColour(bottom, Bits(U16At(item, InItem(kXfFill)), 9, 7));
  GiveColour(left, Bits(sides, 0, 7));
  GiveColour(right, Bits(sides, 7, 7));
  return kDecoded;
}

int16_t XLFontName(uint32_t block, BSTR* name) {
  if (block == 0) return kNoItem;
  const Block item = OpenBlock(block);
  const uint8_t n = U8At(item, InItem(kFontNameLength));
  return GiveText(name, item, InItem(kFontName), n, n);
}

int16_t XLFormatString(uint32_t block, BSTR* text) {
  if (block == 0) return kNoItem;
  const Block item = OpenBlock(block);
  const uint8_t n = U8At(item, kItemLength);
  if (BiffVersion != kBiff8) return GiveText(text, item, kItemPayload, n, n);
  return GiveText(text, item, kItemPayload + kFormatPrefix, static_cast<uint8_t>(n - kFormatPrefix), n);
}

}  // namespace tolvenar
