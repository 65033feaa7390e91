// Compound files made by hand, unlike those that the library writes: streams first and scattered, tables
// behind them, members hung one under the other instead of in a balanced tree, and version 4 as well as 3.
// Tests read them, and damage them at places they can name.
//
//   CompoundBuilder file(4);
//   const uint32_t folder = file.AddStorage("folder");
//   file.AddStream("inner", Pattern(100), folder);
//   CompoundImage image = file.Build();
//   image.PutU32(image.TableAt(image.chains[folder][0]), 0);
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace tolvenar::testing {

using Bytes = std::vector<uint8_t>;

// `size` bytes that differ from place to place and from seed to seed.
Bytes Pattern(size_t size, uint32_t seed = 1);

// A built file, and where its parts lie.
struct CompoundImage {
  Bytes bytes;
  uint32_t sector_size = 512;
  std::vector<uint32_t> table;      // sectors of the sector table
  std::vector<uint32_t> long_list;  // sectors that list those beyond 109
  std::vector<uint32_t> directory;
  std::vector<uint32_t> mini_table;
  std::map<uint32_t, std::vector<uint32_t>> chains;  // by entry; mini sectors for a stream below 4096 bytes

  size_t SectorAt(uint32_t sector) const { return (size_t{sector} + 1) * sector_size; }
  size_t TableAt(uint32_t sector) const;           // of the sector's entry in the sector table
  size_t MiniTableAt(uint32_t mini_sector) const;  // of the mini sector's entry in the mini sector table
  size_t EntryAt(uint32_t entry) const;            // of a directory entry
  void PutU32(size_t at, uint32_t value);
};

class CompoundBuilder {
 public:
  explicit CompoundBuilder(uint32_t version = 3);

  // Each returns the entry's number. `parent` is a storage's number; 0 is the root.
  uint32_t AddStream(const std::string& name, const Bytes& bytes, uint32_t parent = 0);
  uint32_t AddStorage(const std::string& name, uint32_t parent = 0);

  // Fills the fields of an entry that only its owner understands: class id, state bits, both times.
  void Stamp(uint32_t entry, uint8_t seed);

  // The last sector of the file ends with its last byte in use, if it holds a stream: nothing stands behind
  // it.
  CompoundImage Build() const;

 private:
  struct Entry {
    std::u16string name;
    uint8_t type;
    uint32_t parent;
    uint8_t stamp;
    Bytes bytes;
  };
  struct Layout;

  uint32_t Add(const std::string& name, uint8_t type, uint32_t parent, const Bytes& bytes);
  Bytes DirectoryBytes(const Layout& layout) const;
  void PlaceContents(Layout* layout) const;
  void PlaceTables(Layout* layout) const;

  uint32_t sector_size_;
  std::vector<Entry> entries_;
};

}  // namespace tolvenar::testing
