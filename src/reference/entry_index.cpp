// The index: gathered in one walk, checked for records that overlap, sorted.
#include "reference/entry_index.h"

#include <algorithm>
#include <new>

#include "reference/reference_directory.h"

namespace tolvenar {

namespace {

// Up to so many records a directory is walked as quickly as an index is made.
constexpr uint32_t kSmallDirectory = 64;

// Bytes first .. last - 1 of the buffer, as a record has them.
struct Extent {
  uint32_t first;
  uint32_t last;
};

uint32_t KeyOf(uint16_t id, uint16_t kind_word) {
  return static_cast<uint32_t>(kind_word) << 16 | id;
}

// Calls `visit` with the offset of each record from the mark up to and with REFEND. False when there is no end.
template <typename Visit>
bool ForEachOfDirectory(const Block& block, uint32_t mark, Visit visit) {
  for (Walk walk = StartWalk(block, mark); !walk.ended && At(block, walk.at, kHeaderSize) != nullptr;
       Step(&walk)) {
    visit(walk.at);
    if (IsChart(block, walk.at, kLowRefEnd)) return true;
  }
  return false;
}

// True when no two of the extents have a byte in common. They come out sorted.
bool Disjoint(Extent* extents, uint32_t count) {
  std::sort(extents, extents + count, [](const Extent& a, const Extent& b) { return a.first < b.first; });
  for (uint32_t i = 1; i < count; ++i) {
    if (extents[i].first < extents[i - 1].last) return false;
  }
  return true;
}

// Gathers entries and extents of `records` records. False when an entry is too short for its fields.
bool Gather(const Block& block, uint32_t mark, EntryIndex* index, Extent* extents) {
  bool whole = true;
  uint32_t order = 0;
  extents[order++] = {0, kRefRecordSize};  // the header, which leads to the mark
  ForEachOfDirectory(block, mark, [&](uint32_t at) {
    const uint32_t size = kHeaderSize + LengthAt(block, at);
    extents[order] = {at, at + size};
    if (IsChart(block, at, kLowRefEntry)) {
      whole = whole && size >= kRefEntrySize;
      const uint32_t key = KeyOf(U16At(block, at + kRefEntryId), U16At(block, at + kRefEntryKindWord));
      index->entries[index->count++] = {key, order, at};
    }
    ++order;
  });
  return whole && Disjoint(extents, order);
}

}  // namespace

bool MakeEntryIndex(uint32_t buffer, EntryIndex* index) {
  const Block block = OpenBlock(buffer);
  uint32_t mark = 0;
  uint32_t records = 0;
  if (!FindDirectory(buffer, &mark)) return false;
  if (!ForEachOfDirectory(block, mark, [&](uint32_t) { ++records; }) || records <= kSmallDirectory)
    return false;
  const std::unique_ptr<Extent[]> extents(new (std::nothrow) Extent[records + 1]);
  index->entries.reset(new (std::nothrow) IndexedEntry[records]);
  if (!extents || !index->entries || !Gather(block, mark, index, extents.get())) return false;
  std::sort(index->entries.get(), index->entries.get() + index->count,
            [](const IndexedEntry& a, const IndexedEntry& b) {
              return a.key != b.key ? a.key < b.key : a.order < b.order;
            });
  return true;
}

void RepointIndexed(const EntryIndex& index, const Block& block, uint16_t id, uint16_t kind_word,
                    uint32_t offset) {
  const uint32_t key = KeyOf(id, kind_word);
  const IndexedEntry* const first = index.entries.get();
  const IndexedEntry* const end = first + index.count;
  const IndexedEntry* const entry = std::lower_bound(
      first, end, key, [](const IndexedEntry& one, uint32_t wanted) { return one.key < wanted; });
  if (entry != end && entry->key == key) PutU32(block, entry->at + kRefEntryOffset, offset);
}

}  // namespace tolvenar
