// EntryIndex: one walk to count, one to fill, a sort, and a search for each entry.
#include "reference/entry_index.h"

#include <algorithm>
#include <new>

#include "reference/reference_directory.h"

namespace tolvenar {

namespace {

uint32_t NameOf(uint16_t id, uint16_t kind_word) {
  return static_cast<uint32_t>(kind_word) << 16 | id;
}

template <typename Visit>
void ForEachEntry(const Block& block, uint32_t mark, Visit visit) {
  for (Walk walk = StartWalk(block, mark); !walk.ended && !IsChart(block, walk.at, kLowRefEnd); Step(&walk)) {
    if (IsChart(block, walk.at, kLowRefEntry)) visit(walk.at);
  }
}

}  // namespace

EntryIndex::EntryIndex(uint32_t buffer) : buffer_(buffer) {
  uint32_t mark = 0;
  if (!FindDirectory(buffer, &mark)) return;
  ForEachEntry(OpenBlock(buffer), mark, [this](uint32_t) { ++count_; });
  places_.reset(new (std::nothrow) Place[count_]);
  if (places_ != nullptr) Fill(mark);
}

void EntryIndex::Fill(uint32_t mark) {
  const Block block = OpenBlock(buffer_);
  uint32_t order = 0;
  ForEachEntry(block, mark, [&](uint32_t at) {
    const uint32_t name = NameOf(U16At(block, at + kRefEntryId), U16At(block, at + kRefEntryKindWord));
    places_[order] = {name, order, at};
    ++order;
  });
  std::sort(places_.get(), places_.get() + count_, [](const Place& a, const Place& b) {
    return a.name != b.name ? a.name < b.name : a.order < b.order;
  });
}

void EntryIndex::Repoint(uint16_t id, uint16_t kind_word, uint32_t offset) const {
  if (count_ == 0) return;
  if (places_ == nullptr) {
    RepointRefEntry(buffer_, id, kind_word, offset);
    return;
  }
  const uint32_t name = NameOf(id, kind_word);
  const Place* const begin = places_.get();
  const Place* const end = begin + count_;
  const Place* const found = std::lower_bound(
      begin, end, name, [](const Place& place, uint32_t wanted) { return place.name < wanted; });
  if (found != end && found->name == name) PutU32(OpenBlock(buffer_), found->at + kRefEntryOffset, offset);
}

}  // namespace tolvenar
