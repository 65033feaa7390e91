// The builder numbers its sectors backwards, so that no two sectors of a stream follow one another in the
// file.
#include "support/compound_builder.h"

#include <algorithm>
#include <cstring>

namespace tolvenar::testing {

namespace {

constexpr uint32_t kEnd = 0xFFFFFFFEu;
constexpr uint32_t kFree = 0xFFFFFFFFu;
constexpr size_t kEntry = 128;

void Put(Bytes* bytes, size_t at, uint64_t value, size_t count) {
  for (size_t i = 0; i < count; ++i) (*bytes)[at + i] = static_cast<uint8_t>(value >> (8 * i));
}

size_t Count(size_t bytes, size_t unit) {
  return (bytes + unit - 1) / unit;
}

bool IsMini(const Bytes& bytes) {
  return !bytes.empty() && bytes.size() < 4096;
}

}  // namespace

// What Build knows while it works: the file's sectors, and the table with an entry for each.
struct CompoundBuilder::Layout {
  CompoundImage image;
  std::vector<uint32_t> next;
  std::vector<uint32_t> mini_next;
  std::map<uint32_t, uint32_t> starts;
  Bytes mini_stream;

  uint32_t NewSector() {
    next.push_back(kFree);
    image.bytes.resize(image.SectorAt(static_cast<uint32_t>(next.size())));
    return static_cast<uint32_t>(next.size() - 1);
  }

  // Lays `bytes` down in new sectors, the last first when `backwards`, and returns them in the chain's order.
  std::vector<uint32_t> Lay(const Bytes& bytes, bool backwards) {
    std::vector<uint32_t> sectors;
    for (size_t i = 0; i < Count(bytes.size(), image.sector_size); ++i) sectors.push_back(NewSector());
    if (backwards) std::reverse(sectors.begin(), sectors.end());
    for (size_t i = 0; i < sectors.size(); ++i) {
      const size_t from = i * image.sector_size;
      const size_t count = std::min<size_t>(image.sector_size, bytes.size() - from);
      std::memcpy(&image.bytes[image.SectorAt(sectors[i])], &bytes[from], count);
      next[sectors[i]] = i + 1 < sectors.size() ? sectors[i + 1] : kEnd;
    }
    return sectors;
  }
};

Bytes Pattern(size_t size, uint32_t seed) {
  Bytes bytes(size);
  uint32_t state = seed * 2654435761u + 1;
  for (uint8_t& byte : bytes) {
    state = state * 1664525u + 1013904223u;
    byte = static_cast<uint8_t>(state >> 24);
  }
  return bytes;
}

size_t CompoundImage::TableAt(uint32_t sector) const {
  const uint32_t per_sector = sector_size / 4;
  return SectorAt(table[sector / per_sector]) + 4 * (sector % per_sector);
}

size_t CompoundImage::MiniTableAt(uint32_t mini_sector) const {
  const uint32_t per_sector = sector_size / 4;
  return SectorAt(mini_table[mini_sector / per_sector]) + 4 * (mini_sector % per_sector);
}

size_t CompoundImage::EntryAt(uint32_t entry) const {
  const size_t per_sector = sector_size / kEntry;
  return SectorAt(directory[entry / per_sector]) + kEntry * (entry % per_sector);
}

void CompoundImage::PutU32(size_t at, uint32_t value) {
  Put(&bytes, at, value, 4);
}

CompoundBuilder::CompoundBuilder(uint32_t version) : sector_size_(version == 4 ? 4096 : 512) {
  Add("Root Entry", 5, 0, {});
}

uint32_t CompoundBuilder::Add(const std::string& name, uint8_t type, uint32_t parent, const Bytes& bytes) {
  entries_.push_back({std::u16string(name.begin(), name.end()), type, parent, 0, bytes});
  return static_cast<uint32_t>(entries_.size() - 1);
}

uint32_t CompoundBuilder::AddStream(const std::string& name, const Bytes& bytes, uint32_t parent) {
  return Add(name, 2, parent, bytes);
}

uint32_t CompoundBuilder::AddStorage(const std::string& name, uint32_t parent) {
  return Add(name, 1, parent, {});
}

void CompoundBuilder::Stamp(uint32_t entry, uint8_t seed) {
  entries_[entry].stamp = seed;
}

// Members of a storage hang one under the other, each to the right of the one before, in the order in which
// they were added.
Bytes CompoundBuilder::DirectoryBytes(const Layout& layout) const {
  Bytes bytes(Count(entries_.size() * kEntry, sector_size_) * sector_size_);
  std::map<uint32_t, size_t> hook;  // where the next member of a storage is hung
  for (uint32_t i = 0; i < entries_.size(); ++i) {
    const Entry& entry = entries_[i];
    const size_t at = i * kEntry;
    for (size_t unit = 0; unit < entry.name.size(); ++unit) Put(&bytes, at + 2 * unit, entry.name[unit], 2);
    Put(&bytes, at + 64, 2 * (entry.name.size() + 1), 2);
    bytes[at + 66] = entry.type;
    bytes[at + 67] = 1;
    for (const size_t link : {size_t{68}, size_t{72}, size_t{76}}) Put(&bytes, at + link, kFree, 4);
    for (size_t field = 80; field < 116 && entry.stamp != 0; ++field) {
      bytes[at + field] = static_cast<uint8_t>(entry.stamp + field);
    }
    const auto start = layout.starts.find(i);
    Put(&bytes, at + 116, start == layout.starts.end() ? kEnd : start->second, 4);
    Put(&bytes, at + 120, i == 0 ? layout.mini_stream.size() : entry.bytes.size(), 8);
    hook[i] = at + 76;
    if (i == 0) continue;
    Put(&bytes, hook[entry.parent], i, 4);
    hook[entry.parent] = at + 72;
  }
  return bytes;
}

void CompoundBuilder::PlaceContents(Layout* layout) const {
  for (uint32_t i = 0; i < entries_.size(); ++i) {
    const Bytes& bytes = entries_[i].bytes;
    std::vector<uint32_t>* chain = &layout->image.chains[i];
    if (IsMini(bytes)) {
      const uint32_t first = static_cast<uint32_t>(layout->mini_next.size());
      const uint32_t count = static_cast<uint32_t>(Count(bytes.size(), 64));
      for (uint32_t k = 0; k < count; ++k) {
        chain->push_back(first + k);
        layout->mini_next.push_back(k + 1 < count ? first + k + 1 : kEnd);
      }
      layout->mini_stream.insert(layout->mini_stream.end(), bytes.begin(), bytes.end());
      layout->mini_stream.resize(layout->mini_next.size() * 64);
    } else {
      *chain = layout->Lay(bytes, true);
    }
    if (!chain->empty()) layout->starts[i] = chain->front();
  }
  layout->image.chains[0] = layout->Lay(layout->mini_stream, true);
  if (!layout->mini_stream.empty()) layout->starts[0] = layout->image.chains[0].front();
}

// Appends the sector table and its list, and writes the header.
void CompoundBuilder::PlaceTables(Layout* layout) const {
  CompoundImage& image = layout->image;
  const size_t per_sector = sector_size_ / 4;
  size_t table_count = 0;
  size_t list_count = 0;
  while (table_count * per_sector < layout->next.size() + table_count + list_count) {
    ++table_count;
    list_count = table_count > 109 ? Count(table_count - 109, per_sector - 1) : 0;
  }
  for (size_t i = 0; i < list_count; ++i) image.long_list.push_back(layout->NewSector());
  for (size_t i = 0; i < table_count; ++i) image.table.push_back(layout->NewSector());
  for (uint32_t sector : image.long_list) layout->next[sector] = 0xFFFFFFFCu;
  for (uint32_t sector : image.table) layout->next[sector] = 0xFFFFFFFDu;
  for (uint32_t sector : image.table)
    std::fill_n(&image.bytes[image.SectorAt(sector)], sector_size_, uint8_t{0xFF});
  for (uint32_t i = 0; i < layout->next.size(); ++i) image.PutU32(image.TableAt(i), layout->next[i]);
  for (size_t i = 0; i < list_count; ++i) {
    const size_t at = image.SectorAt(image.long_list[i]);
    for (size_t k = 0; k + 1 < per_sector; ++k) {
      const size_t index = 109 + i * (per_sector - 1) + k;
      image.PutU32(at + 4 * k, index < table_count ? image.table[index] : kFree);
    }
    image.PutU32(at + 4 * (per_sector - 1), i + 1 < list_count ? image.long_list[i + 1] : kEnd);
  }
}

CompoundImage CompoundBuilder::Build() const {
  Layout layout;
  CompoundImage& image = layout.image;
  image.sector_size = sector_size_;
  image.bytes.resize(sector_size_);
  PlaceContents(&layout);
  Bytes mini_table(Count(layout.mini_next.size() * 4, sector_size_) * sector_size_, 0xFF);
  for (size_t i = 0; i < layout.mini_next.size(); ++i) Put(&mini_table, 4 * i, layout.mini_next[i], 4);
  image.mini_table = layout.Lay(mini_table, false);
  image.directory = layout.Lay(DirectoryBytes(layout), false);
  PlaceTables(&layout);
  const uint8_t head[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
  std::copy(std::begin(head), std::end(head), image.bytes.begin());
  const bool large = sector_size_ == 4096;
  const struct {
    size_t at, size;
    uint64_t value;
  } fields[] = {{24, 2, 0x3E},
                {26, 2, large ? 4u : 3u},
                {28, 2, 0xFFFE},
                {30, 2, large ? 12u : 9u},
                {32, 2, 6},
                {40, 4, large ? image.directory.size() : 0},
                {44, 4, image.table.size()},
                {48, 4, image.directory[0]},
                {56, 4, 4096},
                {60, 4, image.mini_table.empty() ? kEnd : image.mini_table[0]},
                {64, 4, image.mini_table.size()},
                {68, 4, image.long_list.empty() ? kEnd : image.long_list[0]},
                {72, 4, image.long_list.size()}};
  for (const auto& field : fields) Put(&image.bytes, field.at, field.value, field.size);
  for (size_t i = 0; i < 109; ++i) image.PutU32(76 + 4 * i, i < image.table.size() ? image.table[i] : kFree);
  return image;
}

}  // namespace tolvenar::testing
