// Chains are followed here and nowhere else.
#include "platform/portable/compound_reader.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>

#include "platform/bytes.h"
#include "platform/portable/compound_format.h"
#include "platform/portable/file_io.h"

namespace tolvenar::platform {

namespace {

// Sectors that a walk came by. Seeing one for the second time ends the walk as damaged. A walk of a few sectors, as every stream in the
// mini stream is one, doesn't pay for a mark on each sector of the file: a file can hold as many such streams as sectors.
class SeenSectors {
 public:
  // `most`: no walk that makes more steps than these.
  explicit SeenSectors(uint32_t count, uint64_t most = UINT64_MAX) : count_(count) {
    if (most > few_.size()) seen_.resize(count);
  }

  // True when `sector` exists and was not seen yet; it counts as seen from now on.
  bool Enter(uint32_t sector) {
    if (sector >= count_) return false;
    if (seen_.empty()) return EnterFew(sector);
    if (seen_[sector]) return false;
    seen_[sector] = true;
    return true;
  }

 private:
  bool EnterFew(uint32_t sector) {
    const auto end = few_.begin() + few_count_;
    if (std::find(few_.begin(), end, sector) != end || few_count_ == few_.size()) return false;
    few_[few_count_++] = sector;
    return true;
  }

  uint32_t count_;
  std::vector<bool> seen_;
  std::array<uint32_t, kMiniCutoff / kMiniSectorSize> few_;
  uint32_t few_count_ = 0;
};

// Units that `size` bytes take.
uint64_t UnitsOf(uint64_t size, uint64_t unit) {
  return size / unit + (size % unit != 0 ? 1 : 0);
}

uint32_t SectorSize(const CompoundReader& reader) {
  return 1u << reader.sector_shift;
}

uint64_t SectorOffset(const CompoundReader& reader, uint32_t sector) {
  return (static_cast<uint64_t>(sector) + 1) << reader.sector_shift;
}

// The entry behind `sector` in a table. A sector that the table doesn't reach has none and ends every walk.
uint32_t NextIn(const std::vector<uint32_t>& table, uint32_t sector) {
  return sector < table.size() ? table[sector] : kFreeSector;
}

// Adds bytes that follow on what is there already; runs that touch in the file become one.
void Append(std::vector<Extent>* extents, uint64_t file_at, uint64_t size) {
  if (!extents->empty()) {
    Extent& last = extents->back();
    if (last.file_at + last.size == file_at) {
      last.size += size;
      return;
    }
    extents->push_back({last.at + last.size, file_at, size});
    return;
  }
  extents->push_back({0, file_at, size});
}

// Extent that holds byte `at`, or the end.
std::vector<Extent>::const_iterator Find(const std::vector<Extent>& extents, uint64_t at) {
  auto after = std::upper_bound(extents.begin(), extents.end(), at,
                                [](uint64_t offset, const Extent& extent) { return offset < extent.at; });
  if (after == extents.begin()) return extents.end();
  --after;
  return at - after->at < after->size ? after : extents.end();
}

HRESULT WalkChain(const CompoundReader& reader, uint32_t start, uint64_t size, std::vector<Extent>* extents) {
  extents->clear();
  SeenSectors seen(reader.sector_count, UnitsOf(size, SectorSize(reader)));
  uint32_t sector = start;
  for (uint64_t at = 0; at < size; at += SectorSize(reader)) {
    if (!seen.Enter(sector)) return kStgDocFileCorrupt;
    Append(extents, SectorOffset(reader, sector), std::min<uint64_t>(SectorSize(reader), size - at));
    sector = NextIn(reader.table, sector);
  }
  return S_OK;
}

HRESULT WalkMiniChain(const CompoundReader& reader, uint32_t start, uint64_t size,
                      std::vector<Extent>* extents) {
  extents->clear();
  SeenSectors seen(static_cast<uint32_t>(reader.mini_table.size()), UnitsOf(size, kMiniSectorSize));
  uint32_t sector = start;
  for (uint64_t at = 0; at < size; at += kMiniSectorSize) {
    if (!seen.Enter(sector)) return kStgDocFileCorrupt;
    const uint64_t mini_at = static_cast<uint64_t>(sector) << kMiniSectorShift;
    const auto home = Find(reader.mini_stream, mini_at);
    if (home == reader.mini_stream.end()) return kStgDocFileCorrupt;
    const uint64_t into = mini_at - home->at;
    const uint64_t part = std::min<uint64_t>(kMiniSectorSize, size - at);
    if (part > home->size - into) return kStgDocFileCorrupt;
    Append(extents, home->file_at + into, part);
    sector = NextIn(reader.mini_table, sector);
  }
  return S_OK;
}

bool AllInside(const CompoundReader& reader, const std::vector<Extent>& extents) {
  return std::all_of(extents.begin(), extents.end(), [&](const Extent& extent) {
    return extent.size <= reader.size && extent.file_at <= reader.size - extent.size;
  });
}

// Reads whole sectors of u32s, those that lie together with one read. What the end of the file cuts off reads
// as free.
HRESULT ReadTableSectors(const CompoundReader& reader, const std::vector<Extent>& extents, uint64_t size,
                         std::vector<uint32_t>* table) {
  table->assign(static_cast<size_t>(size / sizeof(uint32_t)), kFreeSector);
  uint8_t* to = reinterpret_cast<uint8_t*>(table->data());
  for (const Extent& extent : extents) {
    bool failed = false;
    const uint64_t got = ReadAt(reader.file, extent.file_at, to + extent.at, extent.size, &failed);
    if (failed) return kStgReadFault;
    // Of an entry that is there in part the rest must not be guessed.
    const uint64_t whole = got / sizeof(uint32_t) * sizeof(uint32_t);
    std::fill(to + extent.at + whole, to + extent.at + got, uint8_t{0xFF});
  }
  return S_OK;
}

HRESULT ReadOneSector(const CompoundReader& reader, uint32_t sector, std::vector<uint32_t>* entries) {
  const std::vector<Extent> where = {{0, SectorOffset(reader, sector), SectorSize(reader)}};
  return ReadTableSectors(reader, where, SectorSize(reader), entries);
}

// The list of the sectors that hold the sector table, as far as the file's size asks for them.
class TableList {
 public:
  TableList(const CompoundReader& reader, uint64_t wanted)
      : reader_(reader), wanted_(wanted), seen_(reader.sector_count) {}

  HRESULT Gather(const uint8_t* header, std::vector<Extent>* extents) {
    wanted_ = std::min<uint64_t>(wanted_, ReadU32(header + kHeaderTableSectors));
    for (uint32_t i = 0; i < kHeaderListEntries && wanted_ != 0; ++i) {
      const HRESULT result = Take(ReadU32(header + kHeaderList + 4 * i), extents);
      if (result != S_OK) return result;
    }
    return wanted_ != 0 ? GatherLong(ReadU32(header + kHeaderFirstLongList), extents) : S_OK;
  }

 private:
  // A list can end before its count is reached. What the table then doesn't cover has no next sector.
  HRESULT Take(uint32_t sector, std::vector<Extent>* extents) {
    if (sector == kFreeSector) {
      wanted_ = 0;
      return S_OK;
    }
    if (!seen_.Enter(sector)) return kStgDocFileCorrupt;
    Append(extents, SectorOffset(reader_, sector), SectorSize(reader_));
    --wanted_;
    return S_OK;
  }

  HRESULT GatherLong(uint32_t sector, std::vector<Extent>* extents) {
    const uint32_t per_sector = SectorSize(reader_) / 4 - 1;
    std::vector<uint32_t> entries;
    while (wanted_ != 0) {
      if (!seen_.Enter(sector)) return kStgDocFileCorrupt;
      HRESULT result = ReadOneSector(reader_, sector, &entries);
      for (uint32_t i = 0; i < per_sector && wanted_ != 0 && result == S_OK; ++i)
        result = Take(entries[i], extents);
      if (result != S_OK) return result;
      sector = entries[per_sector];
    }
    // Nothing more is needed, but a list that leads back into itself is no list.
    return sector < reader_.sector_count && !seen_.Enter(sector) ? kStgDocFileCorrupt : S_OK;
  }

  const CompoundReader& reader_;
  uint64_t wanted_;
  SeenSectors seen_;
};

HRESULT ReadTable(const uint8_t* header, CompoundReader* reader) {
  const uint32_t per_sector = SectorSize(*reader) / 4;
  const uint64_t wanted = (static_cast<uint64_t>(reader->sector_count) + per_sector - 1) / per_sector;
  std::vector<Extent> extents;
  const HRESULT result = TableList(*reader, wanted).Gather(header, &extents);
  if (result != S_OK) return result;
  const uint64_t size = extents.empty() ? 0 : extents.back().at + extents.back().size;
  return ReadTableSectors(*reader, extents, size, &reader->table);
}

HRESULT CheckHeader(const uint8_t* header, CompoundReader* reader) {
  const uint32_t shift = ReadU16(header + kHeaderSectorShift);
  const bool known = (shift == kSmallSectorShift || shift == kLargeSectorShift) &&
                     ReadU16(header + kHeaderByteOrder) == kByteOrder &&
                     ReadU16(header + kHeaderMiniShift) == kMiniSectorShift &&
                     ReadU32(header + kHeaderCutoff) == kMiniCutoff;
  if (!known) return kStgDocFileCorrupt;
  reader->sector_shift = shift;
  const uint64_t first = SectorOffset(*reader, 0);
  const uint64_t body = reader->size > first ? reader->size - first : 0;
  const uint64_t sectors = (body + SectorSize(*reader) - 1) >> shift;
  reader->sector_count = static_cast<uint32_t>(std::min<uint64_t>(sectors, kLastSector));
  reader->first_directory = ReadU32(header + kHeaderFirstDirectory);
  // With a count of none the first sector is not to be trusted: there are writers that leave 0 there.
  const bool has_mini_table = ReadU32(header + kHeaderMiniTableSectors) != 0;
  reader->first_mini_table = has_mini_table ? ReadU32(header + kHeaderFirstMiniTable) : kEndOfChain;
  return S_OK;
}

// Where the sectors of a chain of unknown length lie. It must end as a chain ends.
HRESULT WalkToEnd(const CompoundReader& reader, uint32_t start, std::vector<Extent>* extents) {
  SeenSectors seen(reader.sector_count);
  for (uint32_t sector = start; sector != kEndOfChain; sector = NextIn(reader.table, sector)) {
    if (!seen.Enter(sector)) return kStgDocFileCorrupt;
    Append(extents, SectorOffset(reader, sector), SectorSize(reader));
  }
  return S_OK;
}

uint64_t TotalSize(const std::vector<Extent>& extents) {
  return extents.empty() ? 0 : extents.back().at + extents.back().size;
}

}  // namespace

HRESULT OpenReader(int file, CompoundReader* reader) {
  *reader = CompoundReader();
  reader->file = file;
  struct stat status;
  if (fstat(file, &status) != 0) return kStgReadFault;
  reader->size = static_cast<uint64_t>(status.st_size);
  uint8_t header[kFileHeaderSize] = {};
  bool failed = false;
  const uint64_t got = ReadAt(file, 0, header, sizeof header, &failed);
  if (failed) return kStgReadFault;
  if (got < sizeof kSignature || !std::equal(kSignature, kSignature + sizeof kSignature, header)) {
    return kStgFileAlreadyExists;
  }
  if (got < sizeof header) return kStgDocFileCorrupt;
  const HRESULT result = CheckHeader(header, reader);
  return result == S_OK ? ReadTable(header, reader) : result;
}

HRESULT ReadDirectory(const CompoundReader& reader, std::vector<uint8_t>* bytes) {
  std::vector<Extent> extents;
  const HRESULT result = WalkToEnd(reader, reader.first_directory, &extents);
  if (result != S_OK) return result;
  bytes->assign(static_cast<size_t>(TotalSize(extents)), 0);
  for (const Extent& extent : extents) {
    bool failed = false;
    uint8_t* to = bytes->data() + extent.at;
    const uint64_t got = ReadAt(reader.file, extent.file_at, to, extent.size, &failed);
    if (failed) return kStgReadFault;
    // An entry that the end of the file cuts through is not there: half of it could pass for a shorter
    // stream.
    std::fill(to + got / kEntryBytes * kEntryBytes, to + got, uint8_t{0});
  }
  return S_OK;
}

HRESULT PrepareMiniStream(CompoundReader* reader, uint32_t root_start, uint64_t root_size) {
  if (reader->mini_ready) return S_OK;
  std::vector<Extent> extents;
  HRESULT result = WalkToEnd(*reader, reader->first_mini_table, &extents);
  if (result != S_OK) return result;
  result = ReadTableSectors(*reader, extents, TotalSize(extents), &reader->mini_table);
  if (result != S_OK) return result;
  // The last mini sector may be in use though the size stops short of its end.
  const uint64_t rounded = (root_size + kMiniSectorSize - 1) / kMiniSectorSize * kMiniSectorSize;
  if (rounded < root_size) return kStgDocFileCorrupt;
  result = WalkChain(*reader, root_start, rounded, &reader->mini_stream);
  reader->mini_ready = result == S_OK;
  return result;
}

HRESULT LocateStream(const CompoundReader& reader, uint32_t start, uint64_t size,
                     std::vector<Extent>* extents) {
  if (size > reader.size) return kStgDocFileCorrupt;
  const HRESULT result = size < kMiniCutoff ? WalkMiniChain(reader, start, size, extents)
                                            : WalkChain(reader, start, size, extents);
  if (result != S_OK) return result;
  return AllInside(reader, *extents) ? S_OK : kStgDocFileCorrupt;
}

HRESULT ReadExtents(int file, const std::vector<Extent>& extents, uint64_t at, void* bytes, uint64_t count) {
  uint8_t* to = static_cast<uint8_t*>(bytes);
  while (count != 0) {
    const auto extent = Find(extents, at);
    if (extent == extents.end()) return kStgReadFault;
    const uint64_t into = at - extent->at;
    const uint64_t part = std::min(count, extent->size - into);
    bool failed = false;
    if (ReadAt(file, extent->file_at + into, to, part, &failed) != part) return kStgReadFault;
    at += part;
    to += part;
    count -= part;
  }
  return S_OK;
}

}  // namespace tolvenar::platform
