// EntryIndex: where the entries of a directory stand, for one call that renews many of them. RepointRefEntry walks the directory each
// time, and a compaction that asked it for every object would take the square of their number.
//
// Invariants: (1) Of several entries with the same kind word and id the one that the walk meets first counts, as in every lookup. (2) An
// index holds as long as no record of its buffer moves or changes its type; the entries' own offsets may change.
#pragma once

#include <cstdint>
#include <memory>

namespace tolvenar {

class EntryIndex {
 public:
  // Walks the directory of `buffer`; without a valid one the index is empty.
  explicit EntryIndex(uint32_t buffer);

  // RepointRefEntry, with its effects and in less time. (Without memory for the index it is RepointRefEntry.)
  void Repoint(uint16_t id, uint16_t kind_word, uint32_t offset) const;

 private:
  struct Place {
    uint32_t name;   // kind word above id
    uint32_t order;  // in the walk
    uint32_t at;
  };

  void Fill(uint32_t mark);

  uint32_t buffer_;
  uint32_t count_ = 0;
  std::unique_ptr<Place[]> places_;  // by name, then by order
};

}  // namespace tolvenar
