// Format catalogue: one walk over the globals to count, one to copy.
#include "query/format_catalogue.h"

#include <cstring>

#include "foundation/memory_pool.h"
#include "platform/array_put.h"
#include "query/array_element.h"
#include "query/builtin_formats.h"
#include "query/extent_walk.h"

namespace tolvenar {

namespace {

// XF payloads: shorter ones are of the older form, and the one of that form which has a width of its own.
constexpr int32_t kXfPayload = 16;
constexpr int32_t kXfOldPayload = 14;
constexpr int32_t kWidened = 2;  // bytes by which the older form grows

// Payload offsets in an item block.
constexpr uint32_t kItemXfFont = kItemPayload;
constexpr uint32_t kItemXfFormat = kItemPayload + 2;
constexpr uint32_t kItemXfRest = kItemPayload + 4;

// Bytes of a FORMAT's payload in front of its text.
constexpr int32_t kFormatFixed = kFormatText - kHeaderSize;

constexpr uint32_t kListEntry = 2;

// The list of formats: their indices, in a pool block, in the order of the items of kind 2.
struct FormatList {
  uint32_t handle = 0;
  uint32_t count = 0;
};

struct Target {
  SAFEARRAY* array;
  FormatList formats;
};

template <typename Visit>
void ForEachGlobalRecord(const Block& block, const Block& entries, Visit visit) {
  ForEachRecord(block, TableEntry(entries, kTableGlobalsBegin), GlobalsEnd(entries), visit);
}

void PutItem(SAFEARRAY* array, LONG index, uint32_t item) {
  if (FAILED(platform::PutBytes(array, &index, &item, sizeof item))) MEMORYFREE(&item);
}

void FillFormatList(const Block& block, const Block& entries, const FormatList& list) {
  const Block room = OpenBlock(list.handle);
  uint32_t filled = 0;
  ForEachGlobalRecord(block, entries, [&](uint32_t at) {
    if (!IsOfKind(block, at, kKindFormat)) return;
    PutU16(room, filled * kListEntry, U16At(block, at + kFormatIndex));
    ++filled;
  });
  const auto builtin = BuiltinFormats();
  uint32_t entry = list.count - static_cast<uint32_t>(builtin.size());
  for (const BuiltinFormat& format : builtin) {
    PutU16(room, entry * kListEntry, format.index);
    ++entry;
  }
}

// The place of a format index in the list, from 1 on; 0 when it is not there.
uint16_t PlaceInList(const FormatList& list, uint16_t index) {
  const Block room = OpenBlock(list.handle);
  for (uint32_t entry = 0; entry < list.count; ++entry) {
    if (U16At(room, entry * kListEntry) == index) return static_cast<uint16_t>(entry + 1);
  }
  return 0;
}

// Softens a format's text. A character that a backslash precedes keeps its place, by the text as softened so
// far: a backslash that has become a blank protects nothing.
void SoftenText(uint8_t* text, int32_t n) {
  for (int32_t i = 0; i < n; ++i) {
    if (i > 0 && text[i - 1] == '\\') continue;
    if (text[i] == '?') {
      text[i] = '0';
    } else if (text[i] == '*') {
      text[i] = ' ';
    } else if (text[i] == '_') {
      text[i] = ' ';
      if (i + 1 < n) text[i + 1] = ' ';
    }
  }
}

// The makers of the items: a block of the record at `at`, or 0 when the pool refuses.

uint32_t MakeFormatItem(const Block& block, uint32_t at) {
  const int32_t n = LengthAt(block, at) - kFormatFixed;
  const uint32_t item = MEMORYALLOC(n + static_cast<int32_t>(kItemPayload));
  const Block room = OpenBlock(item);
  if (n > 0) {
    // The length that a record can state fits the slot that took n + 2.
    uint8_t* text = At(room, kItemPayload, static_cast<uint32_t>(n));
    if (text == nullptr) return item;
    CopyOut(block, at + kFormatText, text, static_cast<uint32_t>(n));
    SoftenText(text, n);
  }
  PutU16(room, kItemLength, static_cast<uint16_t>(n));
  return item;
}

uint32_t MakePlainItem(const Block& block, uint32_t at) {
  const uint32_t n = LengthAt(block, at);
  const uint32_t item = MEMORYALLOC(static_cast<int32_t>(n + kItemPayload));
  const Block room = OpenBlock(item);
  PutU16(room, kItemLength, static_cast<uint16_t>(n));
  if (uint8_t* payload = At(room, kItemPayload, n)) CopyOut(block, at + kHeaderSize, payload, n);
  return item;
}

// The older form, font and format widened from one byte each. Its length is stated as the record has it, but
// for the form of 14 bytes, which is stated as it now is.
uint32_t MakeOldXfItem(const Block& block, uint32_t at) {
  const int32_t n = LengthAt(block, at);
  const uint32_t item = MEMORYALLOC(n + kWidened + static_cast<int32_t>(kItemPayload));
  const Block room = OpenBlock(item);
  PutU16(room, kItemLength, static_cast<uint16_t>(n == kXfOldPayload ? kXfPayload : n));
  PutU16(room, kItemXfFont, U8At(block, at + kXfFont));
  PutU16(room, kItemXfFormat, U8At(block, at + kXfOldFormat));
  if (n <= kWidened) return item;
  const uint32_t rest = static_cast<uint32_t>(n - kWidened);
  if (uint8_t* payload = At(room, kItemXfRest, rest)) CopyOut(block, at + kXfOldRest, payload, rest);
  return item;
}

uint32_t MakeXfItem(const Block& block, uint32_t at, const FormatList& formats) {
  const uint16_t n = LengthAt(block, at);
  const uint32_t item = n < kXfPayload ? MakeOldXfItem(block, at) : MakePlainItem(block, at);
  const Block room = OpenBlock(item);
  if (U16At(room, kItemLength) == n) {
    PutU16(room, kItemXfFormat, PlaceInList(formats, U16At(room, kItemXfFormat)));
  } else {
    // The form of 14 bytes gets its font plus 1 for a format, in 8 bits, on purpose.
    PutU8(room, kItemXfFormat, static_cast<uint8_t>(U8At(room, kItemXfFont) + 1));
  }
  return item;
}

uint32_t MakeItem(const Block& block, uint32_t at, int16_t kind, const FormatList& formats) {
  if (kind == kKindXf) return MakeXfItem(block, at, formats);
  return kind == kKindFormat ? MakeFormatItem(block, at) : MakePlainItem(block, at);
}

int16_t PutRecordItems(const Block& block, const Block& entries, int16_t kind, const Target& target) {
  LONG index = 0;
  const uint32_t end = GlobalsEnd(entries);
  for (Walk walk = StartWalk(block, TableEntry(entries, kTableGlobalsBegin)); InExtent(walk, end);
       Step(&walk)) {
    if (!IsOfKind(block, walk.at, kind)) continue;
    if (kind == kKindFont && index == kMissingFont) ++index;
    const uint32_t item = MakeItem(block, walk.at, kind, target.formats);
    if (item == 0) return kItemsNoBlock;
    PutItem(target.array, index, item);
    ++index;
  }
  return kItemsRead;
}

int16_t PutBuiltinItems(SAFEARRAY* array, uint16_t count) {
  const auto builtin = BuiltinFormats();
  LONG index = static_cast<LONG>(count) - static_cast<LONG>(builtin.size());
  for (const BuiltinFormat& format : builtin) {
    const uint32_t n = static_cast<uint32_t>(std::strlen(format.text));
    const uint32_t item = MEMORYALLOC(static_cast<int32_t>(n + kItemPayload));
    if (item == 0) return kItemsNoBuiltinBlock;
    const Block room = OpenBlock(item);
    PutU16(room, kItemLength, static_cast<uint16_t>(n));
    CopyIn(room, kItemPayload, reinterpret_cast<const uint8_t*>(format.text), n);
    PutItem(array, index, item);
    ++index;
  }
  return kItemsRead;
}

}  // namespace

uint16_t XLGetNumFormatItems(uint32_t buffer, uint32_t table, int16_t kind) {
  const Block entries = OpenBlock(table);
  if (entries.extent == 0 || buffer == 0) return 0;
  const Block block = OpenBlock(buffer);
  uint32_t count = 0;
  ForEachGlobalRecord(block, entries, [&](uint32_t at) {
    if (!IsOfKind(block, at, kind)) return;
    count = kind == kKindPalette ? U16At(block, at + kPaletteCount) : count + 1;
  });
  if (kind == kKindFont && count > 0) ++count;
  if (kind == kKindFormat) count += static_cast<uint32_t>(BuiltinFormats().size());
  return static_cast<uint16_t>(count);
}

int16_t CheckItemArray(SAFEARRAY* array, int32_t count) {
  if (SafeArrayGetDim(array) != 1) return kItemsNotOneDimension;
  return platform::HasBounds(array, 1, 0, count - 1) ? kItemsRead : kItemsArrayDoesNotFit;
}

int16_t XLGetFormatData(SAFEARRAY** items, uint32_t buffer, uint32_t table, int16_t kind) {
  const uint16_t count = XLGetNumFormatItems(buffer, table, kind);
  if (count == 0) return kItemsNone;
  Target target = {ArrayAt(items), {}};
  if (kind == kKindXf) {
    target.formats.count = XLGetNumFormatItems(buffer, table, kKindFormat);
    target.formats.handle = MEMORYALLOC(static_cast<int32_t>(target.formats.count * kListEntry));
    if (target.formats.handle == 0) return kItemsNoFormatList;
  }
  const int16_t check = CheckItemArray(target.array, count);
  if (check != kItemsRead) return check;
  // These two stay in the ladder though the first check comes before them, on purpose.
  if (table == 0) return kItemsNoTable;
  if (buffer == 0) return kItemsNoBuffer;
  if (kind == kKindPalette) return kItemsRead;

  const Block block = OpenBlock(buffer);
  const Block entries = OpenBlock(table);
  if (kind == kKindXf) FillFormatList(block, entries, target.formats);
  int16_t result = PutRecordItems(block, entries, kind, target);
  if (result == kItemsRead && kind == kKindFormat) result = PutBuiltinItems(target.array, count);
  if (result == kItemsRead) MEMORYFREE(&target.formats.handle);
  return result;
}

}  // namespace tolvenar
