// The entries of a directory, ordered for lookups: what a pass over all objects of a reference needs, so that it doesn't walk the directory
// anew for each of them.
//
// Invariants: (1) Where there is an index, a lookup gives what the walk over the directory gives: of several entries of one object the first.
// (2) That holds while nothing but offsets in entries changes. A directory in which an offset could be part of anything else (records that lie
// over one another, entries too short for their fields) gets no index, and neither does a small one.
#pragma once

#include <cstdint>
#include <memory>

#include "foundation/record_stream.h"

namespace tolvenar {

struct IndexedEntry {
  uint32_t key;    // kind word, id
  uint32_t order;  // in the walk
  uint32_t at;
};

struct EntryIndex {
  std::unique_ptr<IndexedEntry[]> entries;
  uint32_t count = 0;
};

// Makes the index of a buffer's directory. False, and there is none: the directory is small, or not valid, or as said above; or
// there is no memory.
bool MakeEntryIndex(uint32_t buffer, EntryIndex* index);

// Gives the object's entry another offset; nothing happens without one.
void RepointIndexed(const EntryIndex& index, const Block& block, uint16_t id, uint16_t kind_word,
                    uint32_t offset);

}  // namespace tolvenar
