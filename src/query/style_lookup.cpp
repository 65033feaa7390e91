// Style lookup: one walk that the four lookups share, and the records they add. The rules stand in
// style_lookup.h.
#include "query/style_lookup.h"

#include <algorithm>
#include <cstring>

#include "foundation/memory_pool.h"
#include "query/extent_walk.h"
#include "query/format_catalogue.h"
#include "workbook/globals_patch.h"
#include "workbook/record_pen.h"

namespace tolvenar {

namespace {

// Index of the new FONT: the one behind the last, and one more for the font that does not exist.
constexpr int32_t kNewFontStep = 2;

// The free format indices: from the first down to the last, which is taken in any case.
constexpr uint16_t kFirstFreeFormat = 254;
constexpr uint16_t kLastFreeFormat = 16;
constexpr uint32_t kListEntry = 2;

constexpr uint8_t kFontCharset = 0x44;

// The workbook of a lookup.
struct Book {
  uint32_t* buffer;
  uint32_t* size;
  uint32_t table;
};

// What the walk came to: a match, or the place of a new record.
struct Search {
  bool found;
  int32_t index;  // of the item met last
  uint32_t at;
};

struct NarrowText {
  const uint8_t* bytes;
  uint32_t length;
};

// The text, cut where even the size of a pool block could not tell its length.
NarrowText TextFor(const char* text) {
  constexpr size_t kLongest = INT32_MAX - kFontName;
  return {reinterpret_cast<const uint8_t*>(text),
          static_cast<uint32_t>(std::min(std::strlen(text), kLongest))};
}

uint32_t BufferOf(const Book& book) {
  return book.buffer != nullptr && book.size != nullptr ? *book.buffer : 0;
}

// The null checks that every lookup has. 0 when it can go on.
int16_t CheckBook(const Book& book) {
  if (OpenBlock(book.table).extent == 0) return kLookupNoTable;
  return BufferOf(book) == 0 ? kLookupNoBuffer : int16_t{0};
}

// Walks over the items of `kind`; `matches(at, index)` is asked for each until it says yes.
template <typename Matches>
Search FindItem(const Book& book, int16_t kind, Matches matches) {
  const Block block = OpenBlock(*book.buffer);
  const Block entries = OpenBlock(book.table);
  const uint32_t end = GlobalsEnd(entries);
  int32_t index = -1;
  Walk walk = StartWalk(block, TableEntry(entries, kTableGlobalsBegin));
  for (; InExtent(walk, end); Step(&walk)) {
    if (IsOfKind(block, walk.at, kind)) {
      ++index;
      if (matches(block, walk.at, index)) return {true, index, walk.at};
    } else if (index >= 0 && U8At(block, walk.at + kRecordTypeHigh) != kPrivateHigh) {
      break;
    }
  }
  return {false, index, walk.at};
}

// Patches the record of a block in. On success the block is released, and the result is `index` in 16 bits.
int16_t AddItem(const Book& book, uint32_t record, uint32_t total, uint32_t at, int32_t index) {
  // PatchRecord takes a count in signed 16 bits: of a larger one it would lay down the beginning of a record.
  if (total > INT16_MAX) return kLookupPatchFailed;
  if (PatchGlobals(book.buffer, book.table, book.size, BlockBytes(record), at, total) != kPatchDone)
    return kLookupPatchFailed;
  MEMORYFREE(&record);
  return static_cast<int16_t>(index);
}

bool IsText(const Block& block, uint32_t at, const NarrowText& text) {
  for (uint32_t i = 0; i < text.length; ++i) {
    if (U8At(block, at + i) != text.bytes[i]) return false;
  }
  return true;
}

// Whether a flag of a record is as asked for: 1 set, 0 clear; any other value is never met.
bool IsFlag(const Block& block, uint32_t at, uint8_t flag, uint16_t asked) {
  const bool set = (U8At(block, at) & flag) != 0;
  return set ? asked == 1 : asked == 0;
}

uint16_t Flag(uint16_t asked, uint8_t flag) {
  return asked != 0 ? flag : uint8_t{0};
}

bool IsFont(const Block& block, uint32_t at, const FontValues& font, const NarrowText& name) {
  return U16At(block, at + kFontHeight) == font.height &&
         static_cast<int16_t>(I16At(block, at + kFontColour) - kFirstPaletteColour) == font.colour &&
         U16At(block, at + kFontBoldness) == font.boldness &&
         U8At(block, at + kFontUnderline) == font.underline &&
         IsFlag(block, at + kFontFlags, kFontItalic, font.italic) &&
         IsFlag(block, at + kFontFlags, kFontStrikeOut, font.strikeout) &&
         U8At(block, at + kFontNameLength) == static_cast<uint8_t>(name.length) &&
         IsText(block, at + kFontName, name);
}

RecordPen MakeFont(uint32_t* total, const FontValues& font, const NarrowText& name) {
  RecordPen pen = StartRecord(kTypeFont, kFontName + name.length, total);
  const uint16_t flags =
      static_cast<uint16_t>(Flag(font.italic, kFontItalic) | Flag(font.strikeout, kFontStrikeOut));
  WriteFields(&pen, font.height, flags, static_cast<uint16_t>(font.colour + kFirstPaletteColour),
              font.boldness, uint16_t{0}, static_cast<uint8_t>(font.underline), uint16_t{0}, kFontCharset,
              static_cast<uint8_t>(name.length));
  WriteBytes(&pen, name.bytes, name.length);
  return pen;
}

bool IsListed(const Block& list, uint32_t count, uint16_t format) {
  for (uint32_t entry = 0; entry < count; ++entry) {
    if (U16At(list, entry * kListEntry) == format) return true;
  }
  return false;
}

uint16_t FreeFormat(const Block& list, uint32_t count) {
  uint16_t format = kFirstFreeFormat;
  while (format > kLastFreeFormat && IsListed(list, count, format)) --format;
  return format;
}

int16_t AddFormat(const Book& book, const NarrowText& text, uint32_t at, uint16_t format) {
  uint32_t total = 0;
  RecordPen pen = StartRecord(kTypeFormat, kFormatText + text.length, &total);
  if (pen.block == 0) return kLookupNoBlock;
  WriteFields(&pen, format, static_cast<uint8_t>(text.length));
  WriteBytes(&pen, text.bytes, text.length);
  return AddItem(book, pen.block, total, at, format);
}

// Four bits each, in 32 bits that wrap, of which the low 16 count.
uint16_t AlignmentOf(const XfIndValues& xf) {
  const uint32_t high = static_cast<uint32_t>(xf.rotation) * 16 + static_cast<uint32_t>(xf.vertical);
  return static_cast<uint16_t>(high * 16 + static_cast<uint32_t>(xf.horizontal));
}

uint16_t OptionsOf(uint16_t locked, uint16_t hidden) {
  return static_cast<uint16_t>(Flag(locked, kXfLocked) | Flag(hidden, kXfHidden));
}

}  // namespace

int16_t XLGetFont(uint32_t* buffer, uint32_t table, uint32_t* size, const char* name,
                  const FontValues& font) {
  if (name == nullptr) return kLookupNoText;
  const Book book = {buffer, size, table};
  if (const int16_t check = CheckBook(book)) return check;
  const NarrowText wanted = TextFor(name);
  const Search search = FindItem(book, kKindFont, [&](const Block& block, uint32_t at, int32_t) {
    return IsFont(block, at, font, wanted);
  });
  if (search.found)
    return static_cast<int16_t>(search.index < kMissingFont ? search.index : search.index + 1);
  uint32_t total = 0;
  const RecordPen pen = MakeFont(&total, font, wanted);
  if (pen.block == 0) return kLookupNoBlock;
  return AddItem(book, pen.block, total, search.at, search.index + kNewFontStep);
}

int16_t XLGetFormat(uint32_t* buffer, uint32_t table, uint32_t* size, const char* text) {
  const Book book = {buffer, size, table};
  if (text == nullptr) return kLookupNoText;
  const uint32_t count = XLGetNumFormatItems(BufferOf(book), table, kKindFormat);
  if (count == 0) return kLookupNoText;
  uint32_t list = MEMORYALLOC(static_cast<int32_t>(count * kListEntry));
  if (list == 0) return kLookupNoList;
  // A null table or buffer had no items; the check stays in its place, on purpose.
  if (const int16_t check = CheckBook(book)) return check;

  const Block used = OpenBlock(list);
  const NarrowText wanted = TextFor(text);
  const Search search = FindItem(book, kKindFormat, [&](const Block& block, uint32_t at, int32_t index) {
    PutU16(used, static_cast<uint32_t>(index) * kListEntry, U16At(block, at + kFormatIndex));
    return U8At(block, at + kFormatLength) == static_cast<uint8_t>(wanted.length) &&
           IsText(block, at + kFormatText, wanted);
  });
  const uint16_t format =
      search.found ? U16At(OpenBlock(*buffer), search.at + kFormatIndex) : FreeFormat(used, count);
  MEMORYFREE(&list);
  return search.found ? static_cast<int16_t>(format) : AddFormat(book, wanted, search.at, format);
}

int16_t XLGetXFInd(uint32_t* buffer, uint32_t table, uint32_t* size, const XfIndValues& xf) {
  const Book book = {buffer, size, table};
  if (const int16_t check = CheckBook(book)) return check;
  const uint16_t alignment = AlignmentOf(xf);
  const Search search = FindItem(book, kKindXf, [&](const Block& block, uint32_t at, int32_t) {
    return U16At(block, at + kXfFont) == xf.font && U16At(block, at + kXfFormat) == xf.format &&
           IsFlag(block, at + kXfOptions, kXfLocked, xf.locked) &&
           IsFlag(block, at + kXfOptions, kXfHidden, xf.hidden) &&
           U16At(block, at + kXfAlignment) == alignment && U16At(block, at + kXfColours) == xf.colours;
  });
  if (search.found) return static_cast<int16_t>(search.index);
  uint32_t total = 0;
  RecordPen pen = StartRecord(kTypeXf, kXfSizeBiff5, &total);
  if (pen.block == 0) return kLookupNoBlock;
  WriteFields(&pen, xf.font, xf.format, OptionsOf(xf.locked, xf.hidden), alignment, xf.colours);
  return AddItem(book, pen.block, total, search.at, search.index + 1);
}

int16_t XLGetXFIndFull(uint32_t* buffer, uint32_t table, uint32_t* size, const XfValues& values,
                       uint16_t locked, uint16_t hidden) {
  const Book book = {buffer, size, table};
  if (const int16_t check = CheckBook(book)) return check;
  uint32_t total = 0;
  uint32_t candidate = MakeXfRecord(&total, values);
  if (candidate == 0) return kLookupNoXf;
  const NarrowText image = {BlockBytes(candidate), total};
  const Search search = FindItem(
      book, kKindXf, [&](const Block& block, uint32_t at, int32_t) { return IsText(block, at, image); });
  if (search.found) {
    MEMORYFREE(&candidate);
    return static_cast<int16_t>(search.index);
  }
  // Only now: the comparison runs with an options word of 1, on purpose.
  PutU16(OpenBlock(candidate), kXfOptions, OptionsOf(locked, hidden));
  return AddItem(book, candidate, total, search.at, search.index + 1);
}

}  // namespace tolvenar
