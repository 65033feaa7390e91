// The plan of a file, and the one pass that writes it.
#include "platform/portable/compound_writer.h"

#include <algorithm>
#include <cstring>

#include "platform/bytes.h"
#include "platform/portable/file_io.h"

namespace tolvenar::platform {

namespace {

uint64_t UnitsFor(uint64_t bytes, uint64_t unit) {
  return (bytes + unit - 1) / unit;
}

bool IsStream(const Node& node) {
  return NodeType(node) == kTypeStream;
}

bool IsMini(const Node& node) {
  return IsStream(node) && node.size < kMiniCutoff;
}

// A file written from front to back through a buffer. After a failure nothing more is written.
class Output {
 public:
  explicit Output(int file) : file_(file) { buffer_.reserve(kBufferSize); }

  uint64_t position() const { return at_ + buffer_.size(); }

  void Bytes(const uint8_t* bytes, uint64_t count) {
    if (count > kBufferSize - buffer_.size()) Flush();
    if (count <= kBufferSize) {
      buffer_.insert(buffer_.end(), bytes, bytes + count);
      return;
    }
    if (result_ == S_OK) result_ = WriteAt(file_, at_, bytes, count);
    at_ += count;
  }

  void U32(uint32_t value) {
    uint8_t bytes[4];
    WriteU32(bytes, value);
    Bytes(bytes, sizeof bytes);
  }

  void FillTo(uint64_t end, uint8_t value) {
    while (position() < end) {
      if (buffer_.size() == kBufferSize) Flush();
      const uint64_t part = std::min<uint64_t>(end - position(), kBufferSize - buffer_.size());
      buffer_.insert(buffer_.end(), static_cast<size_t>(part), value);
    }
  }

  void FillUnit(uint64_t unit, uint8_t value) { FillTo(UnitsFor(position(), unit) * unit, value); }

  // Copies what `extents` describe in `from`.
  void Copy(int from, const std::vector<Extent>& extents, uint64_t size) {
    for (uint64_t done = 0; done < size && result_ == S_OK;) {
      const uint64_t part = std::min<uint64_t>(size - done, kBufferSize);
      if (part > kBufferSize - buffer_.size()) Flush();
      const size_t filled = buffer_.size();
      buffer_.resize(filled + static_cast<size_t>(part));
      Fail(ReadExtents(from, extents, done, buffer_.data() + filled, part));
      done += part;
    }
  }

  void Fail(HRESULT result) {
    if (result_ == S_OK) result_ = result;
  }

  HRESULT Finish() {
    Flush();
    return result_;
  }

 private:
  static constexpr size_t kBufferSize = 1u << 18;

  void Flush() {
    if (result_ == S_OK) result_ = WriteAt(file_, at_, buffer_.data(), buffer_.size());
    at_ += buffer_.size();
    buffer_.clear();
  }

  int file_;
  uint64_t at_ = 0;
  std::vector<uint8_t> buffer_;
  HRESULT result_ = S_OK;
};

class Writer {
 public:
  Writer(int to, int from, const Plan& plan, Directory* directory)
      : output_(to),
        from_(from),
        plan_(plan),
        directory_(directory),
        order_(EntryOrder(*directory)),
        links_(LinkEntries(*directory, order_)),
        starts_(order_.size(), kEndOfChain),
        size_(1u << plan.sector_shift) {
    first_table_ = plan.long_list;
    first_directory_ = first_table_ + plan.table;
    first_mini_table_ = first_directory_ + plan.directory;
    first_mini_stream_ = first_mini_table_ + plan.mini_table;
    first_stream_ = first_mini_stream_ + plan.mini_stream;
    AssignStarts();
  }

  HRESULT Write() {
    Header();
    LongList();
    Table();
    DirectoryEntries();
    MiniTable();
    Contents(true);
    output_.FillUnit(size_, 0);
    Contents(false);
    if (output_.position() != plan_.file_size) output_.Fail(kStgWriteFault);
    const HRESULT result = output_.Finish();
    if (result == S_OK) Settle();
    return result;
  }

 private:
  Node& NodeAt(size_t entry) { return directory_->nodes[order_[entry]]; }

  void AssignStarts() {
    uint32_t mini = 0;
    uint32_t sector = first_stream_;
    if (plan_.mini_sectors != 0) starts_[0] = first_mini_stream_;
    for (size_t i = 1; i < order_.size(); ++i) {
      const Node& node = NodeAt(i);
      if (!IsStream(node) || node.size == 0) continue;
      starts_[i] = IsMini(node) ? mini : sector;
      if (IsMini(node)) mini += static_cast<uint32_t>(UnitsFor(node.size, kMiniSectorSize));
      if (!IsMini(node)) sector += static_cast<uint32_t>(UnitsFor(node.size, size_));
    }
  }

  void Header() {
    uint8_t header[kFileHeaderSize] = {};
    const bool large = plan_.sector_shift == kLargeSectorShift;
    std::memcpy(header, kSignature, sizeof kSignature);
    WriteU16(header + kHeaderMinor, kMinorVersion);
    WriteU16(header + kHeaderMajor, large ? 4 : 3);
    WriteU16(header + kHeaderByteOrder, kByteOrder);
    WriteU16(header + kHeaderSectorShift, static_cast<uint16_t>(plan_.sector_shift));
    WriteU16(header + kHeaderMiniShift, kMiniSectorShift);
    WriteU32(header + kHeaderDirectorySectors, large ? plan_.directory : 0);
    WriteU32(header + kHeaderTableSectors, plan_.table);
    WriteU32(header + kHeaderFirstDirectory, first_directory_);
    WriteU32(header + kHeaderCutoff, kMiniCutoff);
    WriteU32(header + kHeaderFirstMiniTable, plan_.mini_table != 0 ? first_mini_table_ : kEndOfChain);
    WriteU32(header + kHeaderMiniTableSectors, plan_.mini_table);
    WriteU32(header + kHeaderFirstLongList, plan_.long_list != 0 ? 0 : kEndOfChain);
    WriteU32(header + kHeaderLongListSectors, plan_.long_list);
    for (uint32_t i = 0; i < kHeaderListEntries; ++i) {
      WriteU32(header + kHeaderList + 4 * i, i < plan_.table ? first_table_ + i : kFreeSector);
    }
    output_.Bytes(header, sizeof header);
    output_.FillUnit(size_, 0);
  }

  void LongList() {
    const uint32_t per_sector = size_ / 4 - 1;
    uint32_t listed = kHeaderListEntries;
    for (uint32_t sector = 0; sector < plan_.long_list; ++sector) {
      for (uint32_t i = 0; i < per_sector; ++i, ++listed) {
        output_.U32(listed < plan_.table ? first_table_ + listed : kFreeSector);
      }
      output_.U32(sector + 1 < plan_.long_list ? sector + 1 : kEndOfChain);
    }
  }

  void Marks(uint32_t count, uint32_t mark) {
    for (uint32_t i = 0; i < count; ++i) output_.U32(mark);
  }

  // A chain of `count` sectors that lie side by side.
  void Chain(uint32_t start, uint64_t count) {
    for (uint64_t i = 1; i < count; ++i) output_.U32(static_cast<uint32_t>(start + i));
    if (count != 0) output_.U32(kEndOfChain);
  }

  void Table() {
    Marks(plan_.long_list, kLongListSector);
    Marks(plan_.table, kTableSector);
    Chain(first_directory_, plan_.directory);
    Chain(first_mini_table_, plan_.mini_table);
    Chain(first_mini_stream_, plan_.mini_stream);
    for (size_t i = 1; i < order_.size(); ++i) {
      const Node& node = NodeAt(i);
      if (IsStream(node) && !IsMini(node)) Chain(starts_[i], UnitsFor(node.size, size_));
    }
    output_.FillUnit(size_, 0xFF);
  }

  void MiniTable() {
    for (size_t i = 1; i < order_.size(); ++i) {
      const Node& node = NodeAt(i);
      if (IsMini(node)) Chain(starts_[i], UnitsFor(node.size, kMiniSectorSize));
    }
    output_.FillUnit(size_, 0xFF);
  }

  void DirectoryEntries() {
    for (size_t i = 0; i < order_.size(); ++i) {
      std::array<uint8_t, kEntryBytes> entry = NodeAt(i).entry;
      Tie(i, entry.data());
      output_.Bytes(entry.data(), entry.size());
    }
    uint8_t unused[kEntryBytes] = {};
    WriteU32(unused + kEntryLeft, kNoEntry);
    WriteU32(unused + kEntryRight, kNoEntry);
    WriteU32(unused + kEntryChild, kNoEntry);
    while (output_.position() % size_ != 0) output_.Bytes(unused, sizeof unused);
  }

  // The fields that tie entry `i` into this file. A storage has neither a first sector nor a size.
  void Tie(size_t i, uint8_t* entry) {
    const Node& node = NodeAt(i);
    const bool storage = NodeType(node) == kTypeStorage;
    const uint64_t mini_size = static_cast<uint64_t>(plan_.mini_sectors) * kMiniSectorSize;
    entry[kEntryColour] = links_[i].colour;
    WriteU32(entry + kEntryLeft, links_[i].left);
    WriteU32(entry + kEntryRight, links_[i].right);
    WriteU32(entry + kEntryChild, links_[i].child);
    WriteU32(entry + kEntryStart, storage ? 0 : starts_[i]);
    WriteU64(entry + kEntrySize, i == 0 ? mini_size : storage ? 0 : node.size);
  }

  void Contents(bool mini) {
    for (size_t i = 1; i < order_.size(); ++i) {
      const Node& node = NodeAt(i);
      if (!IsStream(node) || IsMini(node) != mini) continue;
      if (node.in_memory) {
        output_.Bytes(NodeBytes(node), node.size);
      } else {
        output_.Copy(from_, node.extents, node.size);
      }
      output_.FillUnit(mini ? kMiniSectorSize : size_, 0);
    }
  }

  // The file is written: the nodes are at home in it from now on.
  void Settle() {
    for (size_t i = 1; i < order_.size(); ++i) {
      Node& node = NodeAt(i);
      if (!IsStream(node)) continue;
      const uint64_t mini_at =
          (static_cast<uint64_t>(first_mini_stream_) + 1) * size_ + uint64_t{starts_[i]} * kMiniSectorSize;
      const uint64_t file_at = IsMini(node) ? mini_at : (static_cast<uint64_t>(starts_[i]) + 1) * size_;
      node.extents.resize(node.size != 0 ? 1 : 0);
      if (node.size != 0) node.extents[0] = {0, file_at, node.size};
      node.located = true;
      node.in_memory = false;
      node.lent = nullptr;
      std::vector<uint8_t>().swap(node.bytes);
    }
  }

  Output output_;
  const int from_;
  const Plan& plan_;
  Directory* directory_;
  const std::vector<uint32_t> order_;
  const std::vector<Link> links_;
  std::vector<uint32_t> starts_;
  const uint32_t size_;
  uint32_t first_table_ = 0;
  uint32_t first_directory_ = 0;
  uint32_t first_mini_table_ = 0;
  uint32_t first_mini_stream_ = 0;
  uint32_t first_stream_ = 0;
};

// Sectors of the table and of its long list, for a file with `body` other sectors. Each adds to what the
// table must cover.
void PlanTable(uint64_t body, uint64_t sector_size, Plan* plan) {
  const uint64_t per_sector = sector_size / 4;
  uint64_t table = 0;
  uint64_t list = 0;
  for (;;) {
    const uint64_t needed = UnitsFor(body + table + list, per_sector);
    const uint64_t needed_list =
        needed > kHeaderListEntries ? UnitsFor(needed - kHeaderListEntries, per_sector - 1) : 0;
    if (needed == table && needed_list == list) break;
    table = needed;
    list = needed_list;
  }
  plan->table = static_cast<uint32_t>(table);
  plan->long_list = static_cast<uint32_t>(list);
}

}  // namespace

HRESULT PlanCompound(const Directory& directory, uint32_t sector_shift, Plan* plan) {
  const uint64_t size = uint64_t{1} << sector_shift;
  *plan = Plan();
  plan->sector_shift = sector_shift;
  uint64_t entries = 0;
  uint64_t mini_sectors = 0;
  for (const Node& node : directory.nodes) {
    if (!node.live) continue;
    ++entries;
    if (!IsStream(node)) continue;
    if (node.size > kFileSizeLimit) return kStgMediumFull;
    if (IsMini(node)) mini_sectors += UnitsFor(node.size, kMiniSectorSize);
    if (!IsMini(node)) plan->streams += UnitsFor(node.size, size);
  }
  const uint64_t directory_sectors = UnitsFor(entries * kEntryBytes, size);
  const uint64_t mini_table = UnitsFor(mini_sectors * 4, size);
  const uint64_t mini_stream = UnitsFor(mini_sectors * kMiniSectorSize, size);
  const uint64_t body = directory_sectors + mini_table + mini_stream + plan->streams;
  if (body > kFileSizeLimit / size) return kStgMediumFull;
  PlanTable(body, size, plan);
  plan->mini_sectors = static_cast<uint32_t>(mini_sectors);
  plan->directory = static_cast<uint32_t>(directory_sectors);
  plan->mini_table = static_cast<uint32_t>(mini_table);
  plan->mini_stream = static_cast<uint32_t>(mini_stream);
  plan->file_size = (1 + plan->long_list + plan->table + body) * size;
  return plan->file_size <= kFileSizeLimit ? S_OK : kStgMediumFull;
}

HRESULT WriteCompound(int to, int from, const Plan& plan, Directory* directory) {
  return Writer(to, from, plan, directory).Write();
}

}  // namespace tolvenar::platform
