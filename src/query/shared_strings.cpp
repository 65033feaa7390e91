// Shared strings: the walk over the strings, and the text of one.
#include "query/shared_strings.h"

#include <new>

#include "platform/array_put.h"
#include "query/array_element.h"
#include "query/byte_text.h"
#include "query/extent_walk.h"

namespace tolvenar {

namespace {

constexpr uint32_t kReachableStrings = INT16_MAX + 1;  // a cell's index is a signed 16-bit value

// The place of the string behind the one at `at`. Counts are signed, so a damaged table can lead
// backwards.
StringPlace NextString(const Block& block, uint32_t at) {
  const uint8_t flags = U8At(block, at + kSharedFlags);
  const bool wide = (flags & kSharedWide) != 0;
  const bool rich = (flags & kSharedRich) != 0;
  int32_t size = static_cast<int32_t>(kSharedText) + I16At(block, at + kSharedLength) * (wide ? 2 : 1);
  if (rich) size += 2 + static_cast<int32_t>(kSharedRun) * I16At(block, at + kSharedRunCount);
  return {at + static_cast<uint32_t>(size), wide, rich};
}

StringPlace FirstString(uint32_t sst) {
  return {sst + kSstFirstString, false, false};
}

// True for a string that the block has no room for.
bool LiesOutside(const Block& block, int32_t index) {
  return index > 0 && static_cast<uint32_t>(index) > block.extent / kSharedText;
}

StringPlace Outside(const Block& block) {
  return {block.extent, false, false};
}

StringPlace WalkToString(const Block& block, uint32_t sst, int32_t index) {
  if (LiesOutside(block, index)) return Outside(block);
  StringPlace place = FirstString(sst);
  for (int32_t i = 0; i < index; ++i) place = NextString(block, place.at);
  return place;
}

// Makes room for the places, once. Without memory the reader has none and walks anew for every string.
void PreparePlaces(SharedStringReader* reader) {
  if (reader->known != 0) return;
  reader->known = 1;
  reader->places.reset(new (std::nothrow) StringPlace[kReachableStrings]);
  if (reader->places) reader->places[0] = FirstString(reader->sst);
}

StringPlace RecallString(SharedStringReader* reader, int16_t index) {
  PreparePlaces(reader);
  if (!reader->places) return WalkToString(reader->block, reader->sst, index);
  if (LiesOutside(reader->block, index)) return Outside(reader->block);
  const uint32_t number = index < 0 ? 0 : static_cast<uint32_t>(index);
  for (; reader->known <= number; ++reader->known) {
    reader->places[reader->known] = NextString(reader->block, reader->places[reader->known - 1].at);
  }
  return reader->places[number];
}

// Every second byte from `text` on: the low bytes of n characters.
BSTR NarrowedBstr(const Block& block, uint32_t text, int16_t n) {
  if (n < 0) return nullptr;
  const uint32_t count = static_cast<uint32_t>(n);
  const BSTR narrow = SysAllocStringByteLen(nullptr, count);
  if (narrow == nullptr) return nullptr;
  uint8_t* bytes = reinterpret_cast<uint8_t*>(narrow);
  for (uint32_t i = 0; i < count; ++i) bytes[i] = U8At(block, text + 2 * i);
  return narrow;
}

// Puts the string at `place`. Its own flags are not looked at, on purpose: `place` says how it is read.
void PutString(const Block& block, const StringPlace& place, SAFEARRAY* array, uint32_t record) {
  const int16_t length = I16At(block, place.at + kSharedLength);
  // Twice the length of a wide string, in 16 bits. Its text thus runs on for as many characters behind
  // it, on purpose.
  const int16_t n = place.wide ? static_cast<int16_t>(2 * length) : length;
  if (!PoolHasRoom(place.wide ? 4 * length : length)) return;
  // A rich text is read 2 bytes behind where it begins, on purpose.
  const uint32_t text = place.at + (place.rich ? kSharedTextRich + 2 : kSharedText);
  Element element = ElementOf(block, record);
  platform::PutOwnedBstr(array, element.index,
                         place.wide ? NarrowedBstr(block, text, n) : ByteBstr(block, text, n));
}

}  // namespace

uint16_t XLNumStrBucket(uint32_t buffer, uint32_t table) {
  const Block entries = OpenBlock(table);
  const Block block = OpenBlock(buffer);
  uint16_t bucket = 0;
  if (entries.extent == 0) return bucket;
  ForEachRecord(block, TableEntry(entries, kTableGlobalsBegin), GlobalsEnd(entries),
                [&](uint32_t at) { bucket = U16At(block, at + kExtSstBucket); });
  return bucket;
}

int16_t XLNumStrExt(uint32_t buffer, uint32_t table) {
  const Block entries = OpenBlock(table);
  const Block block = OpenBlock(buffer);
  if (entries.extent == 0) return 0;
  uint32_t found = table;
  ForEachRecord(block, TableEntry(entries, kTableGlobalsBegin), GlobalsEnd(entries), [&](uint32_t at) {
    if (IsPlain(block, at, kLowSst)) found = at;
  });
  return static_cast<int16_t>(found);
}

void XLEXTLabel(uint32_t buffer, const int32_t* index, const int16_t* /*bucket*/, int32_t sst_offset,
                SAFEARRAY** cells, int32_t record_offset) {
  const Block block = OpenBlock(buffer);
  if (block.extent == 0) return;
  const StringPlace place =
      WalkToString(block, static_cast<uint32_t>(sst_offset), index != nullptr ? *index : 0);
  PutString(block, place, ArrayAt(cells, kCellDimensions), static_cast<uint32_t>(record_offset));
}

void PutSharedString(SharedStringReader* reader, int16_t index, SAFEARRAY* array, uint32_t record_offset) {
  PutString(reader->block, RecallString(reader, index), array, record_offset);
}

}  // namespace tolvenar
