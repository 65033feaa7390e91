// Takes a compound file apart without any of the library's code.
#include "support/compound_check.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tolvenar::testing {

namespace {

constexpr uint32_t kEnd = 0xFFFFFFFEu;
constexpr uint32_t kNone = 0xFFFFFFFFu;

// The system's storage puts a directory in order, but need not balance it, and Wine's closes the list of table sectors with a free one.
#if defined(_WIN32)
constexpr bool kStrict = false;
#else
constexpr bool kStrict = true;
#endif

class Checker {
 public:
  explicit Checker(const Bytes& file) : file_(file) {}

  std::map<std::string, CheckedEntry> Check() {
    CheckHeader();
    if (::testing::Test::HasFatalFailure() || file_.size() < 1024) return {};
    ReadTable();
    entries_ = Chain(U32(48));
    mini_table_ = Chain(U32(60));
    const size_t root_size = U32Of(entries_, 120);
    mini_stream_ = Sized(U32Of(entries_, 116), root_size);
    mini_used_.assign(root_size / 64, false);
    Storage("/", 0);
    CheckLeftovers();
    return found_;
  }

 private:
  uint32_t U32(size_t at) const { return U32Of(file_, at); }

  static uint32_t U32Of(const Bytes& bytes, size_t at) {
    uint32_t value = 0;
    for (size_t i = 4; i-- > 0;) value = value << 8 | (at + i < bytes.size() ? bytes[at + i] : 0u);
    return value;
  }

  void CheckHeader() {
    ASSERT_GE(file_.size(), 1024u);
    EXPECT_EQ(U32(0), 0xE011CFD0u);
    EXPECT_EQ(U32(4), 0xE11AB1A1u);
    const bool large = file_[26] == 4;
    EXPECT_TRUE(large || file_[26] == 3);
    size_ = large ? 4096 : 512;
    EXPECT_EQ(U32(28), large ? 0x000CFFFEu : 0x0009FFFEu);
    EXPECT_EQ(U32(32), 6u);
    EXPECT_EQ(U32(36), 0u);
    EXPECT_EQ(U32(56), 4096u);
    EXPECT_EQ(file_.size() % size_, 0u);
    if (!large) {
      EXPECT_EQ(U32(40), 0u);
    }
    used_.assign(file_.size() / size_ - 1, 0);
  }

  // Marks a sector as taken and returns where it lies.
  size_t Take(uint32_t sector) {
    if (sector >= used_.size()) {
      ADD_FAILURE() << "sector " << sector << " is not in the file";
      return 0;
    }
    EXPECT_EQ(used_[sector]++, 0) << "sector " << sector << " is taken twice";
    return (size_t{sector} + 1) * size_;
  }

  void TakeTableSector(uint32_t sector) {
    const size_t at = Take(sector);
    for (size_t i = 0; i < size_; i += 4) table_.push_back(U32(at + i));
    table_sectors_.push_back(sector);
  }

  static bool EndsList(uint32_t sector) { return sector == kEnd || (sector == kNone && !kStrict); }

  void ReadTable() {
    const uint32_t count = U32(44);
    for (uint32_t i = 0; i < 109; ++i) {
      if (i < count) {
        TakeTableSector(U32(76 + 4 * i));
      } else {
        EXPECT_EQ(U32(76 + 4 * i), kNone);
      }
    }
    uint32_t lists = 0;
    std::vector<uint32_t> list_sectors;
    for (uint32_t sector = U32(68); !EndsList(sector) && lists < used_.size(); ++lists) {
      const size_t at = Take(sector);
      list_sectors.push_back(sector);
      for (size_t i = 0; i + 4 < size_; i += 4) {
        if (table_sectors_.size() < count) {
          TakeTableSector(U32(at + i));
        } else {
          EXPECT_EQ(U32(at + i), kNone);
        }
      }
      sector = U32(at + size_ - 4);
    }
    EXPECT_EQ(lists, U32(72));
    EXPECT_EQ(table_sectors_.size(), count);
    for (uint32_t sector : table_sectors_) EXPECT_EQ(table_[sector], 0xFFFFFFFDu);
    for (uint32_t sector : list_sectors) EXPECT_EQ(table_[sector], 0xFFFFFFFCu);
  }

  Bytes Chain(uint32_t start) {
    Bytes bytes;
    for (uint32_t sector = start; sector != kEnd && bytes.size() < file_.size();) {
      const size_t at = Take(sector);
      bytes.insert(bytes.end(), file_.begin() + static_cast<std::ptrdiff_t>(at),
                   file_.begin() + static_cast<std::ptrdiff_t>(at + size_));
      sector = sector < table_.size() ? table_[sector] : kEnd;
    }
    return bytes;
  }

  // A chain for exactly `size` bytes.
  Bytes Sized(uint32_t start, size_t size) {
    if (size == 0) {
      EXPECT_EQ(start, kEnd);
      return {};
    }
    Bytes bytes = Chain(start);
    EXPECT_EQ(bytes.size(), (size + size_ - 1) / size_ * size_);
    bytes.resize(size);
    return bytes;
  }

  Bytes MiniChain(uint32_t start, size_t size) {
    Bytes bytes;
    uint32_t sector = start;
    while (sector != kEnd && bytes.size() < mini_stream_.size()) {
      if (sector >= mini_used_.size()) {
        ADD_FAILURE() << "mini sector " << sector << " is not in the mini stream";
        break;
      }
      EXPECT_FALSE(mini_used_[sector]) << "mini sector " << sector << " is taken twice";
      mini_used_[sector] = true;
      const auto at = mini_stream_.begin() + static_cast<std::ptrdiff_t>(sector) * 64;
      bytes.insert(bytes.end(), at, at + 64);
      sector = U32Of(mini_table_, size_t{sector} * 4);
    }
    EXPECT_EQ(bytes.size(), (size + 63) / 64 * 64);
    bytes.resize(size);
    return bytes;
  }

  std::u16string NameOf(uint32_t id) const {
    std::u16string name;
    const size_t bytes = U32Of(entries_, size_t{id} * 128 + 64) & 0xFFFF;
    for (size_t i = 0; i + 2 < bytes && i < 62; i += 2) {
      name.push_back(static_cast<char16_t>(U32Of(entries_, size_t{id} * 128 + i) & 0xFFFF));
    }
    return name;
  }

  // Length first, then upper case; the tests' names keep to ASCII, and to letters without case beyond it.
  static bool Before(std::u16string a, std::u16string b) {
    if (a.size() != b.size()) return a.size() < b.size();
    const auto fold = [](char16_t unit) {
      return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
    };
    std::transform(a.begin(), a.end(), a.begin(), fold);
    std::transform(b.begin(), b.end(), b.begin(), fold);
    return a < b;
  }

  // Visits a tree in order, and returns how many black nodes lie on each way down from `id`.
  int Tree(const std::string& path, uint32_t id, bool below_red, std::vector<uint32_t>* members) {
    if (id == kNone) return 1;
    if (size_t{id} * 128 >= entries_.size() || !ids_.insert({id, true}).second) {
      ADD_FAILURE() << "entry " << id << " is out of range or reached twice";
      return 0;
    }
    const size_t at = size_t{id} * 128;
    const bool red = entries_[at + 67] == 0;
    EXPECT_FALSE(red && below_red && kStrict) << path << ": red below red";
    const int left = Tree(path, U32Of(entries_, at + 68), red, members);
    members->push_back(id);
    const int right = Tree(path, U32Of(entries_, at + 72), red, members);
    if (kStrict) {
      EXPECT_EQ(left, right) << path << ": unequal numbers of black nodes";
    }
    return left + (red ? 0 : 1);
  }

  void Storage(const std::string& path, uint32_t id) {
    const size_t at = size_t{id} * 128;
    CheckedEntry entry{entries_[at + 66], Own(at), {}};
    EXPECT_EQ(entry.type, id == 0 ? 5 : 1);
    found_[path] = entry;
    ids_[id] = true;
    const uint32_t top = U32Of(entries_, at + 76);
    std::vector<uint32_t> members;
    Tree(path, top, false, &members);
    if (top != kNone && kStrict) {
      EXPECT_EQ(entries_[size_t{top} * 128 + 67], 1) << "a red top";
    }
    for (size_t i = 1; i < members.size(); ++i)
      EXPECT_TRUE(Before(NameOf(members[i - 1]), NameOf(members[i])));
    for (uint32_t member : members) Member(path == "/" ? path : path + "/", member);
  }

  void Member(const std::string& path, uint32_t id) {
    const size_t at = size_t{id} * 128;
    const std::u16string wide = NameOf(id);
    std::string name = path;
    for (const char16_t unit : wide) name.push_back(static_cast<char>(unit));
    if (entries_[at + 66] == 1) return Storage(name, id);
    EXPECT_EQ(entries_[at + 66], 2);
    EXPECT_EQ(U32Of(entries_, at + 76), kNone);
    EXPECT_EQ(U32Of(entries_, at + 124), 0u);
    const size_t size = U32Of(entries_, at + 120);
    const uint32_t start = U32Of(entries_, at + 116);
    const bool mini = size != 0 && size < 4096;
    found_[name] = {2, Own(at), mini ? MiniChain(start, size) : Sized(start, size)};
  }

  Bytes Own(size_t at) const {
    const auto from = entries_.begin() + static_cast<std::ptrdiff_t>(at);
    return Bytes(from + 80, from + 116);
  }

  void CheckLeftovers() {
    for (size_t i = 0; i < used_.size(); ++i) {
      EXPECT_EQ(used_[i] == 0, table_[i] == kNone) << "sector " << i;
    }
    for (size_t i = used_.size(); i < table_.size(); ++i) EXPECT_EQ(table_[i], kNone);
    for (uint32_t id = 0; size_t{id} * 128 < entries_.size(); ++id) {
      if (ids_.count(id) == 0) {
        EXPECT_EQ(entries_[size_t{id} * 128 + 66], 0) << "entry " << id << " hangs nowhere";
      }
    }
    if (file_[26] == 4) {
      EXPECT_EQ(U32(40), entries_.size() / size_);
    }
    EXPECT_EQ(U32(64), mini_table_.size() / size_);
  }

  const Bytes& file_;
  size_t size_ = 512;
  std::vector<int> used_;
  std::vector<uint32_t> table_;
  std::vector<uint32_t> table_sectors_;
  Bytes entries_;
  Bytes mini_table_;
  Bytes mini_stream_;
  std::vector<bool> mini_used_;
  std::map<uint32_t, bool> ids_;
  std::map<std::string, CheckedEntry> found_;
};

}  // namespace

std::map<std::string, CheckedEntry> CheckCompound(const Bytes& file) {
  return Checker(file).Check();
}

}  // namespace tolvenar::testing
