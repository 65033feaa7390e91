// Compaction against a model that goes record by record and looks for the last EOF when all is copied. The library lays runs of records
// down at once where the copy has much room, and notes the last EOF on the way: it must come to the same, whatever the stream.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

#include "foundation/memory_pool.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/compaction.h"
#include "workbook/sheet_table.h"
#include "workbook/table_entries.h"
#include "workbook/two_sheets.h"

namespace tolvenar::testing {
namespace {

using Entries = std::vector<int32_t>;

constexpr uint32_t kEntries = 64;        // of the slot that the table is in
constexpr uint32_t kBufferSlot = 512;    // bytes of the slot that the buffer is in
constexpr uint32_t kMostBytes = 100000;  // of the smaller slot that a copy is laid in

// What a compaction leaves.
struct Outcome {
  int16_t result = 0;
  Bytes copy;
  Entries table;

  bool operator==(const Outcome& other) const {
    return result == other.result && copy == other.copy && table == other.table;
  }
};

// Bytes as a walk sees them: zero where they end.
struct Image {
  Bytes bytes;

  uint32_t Get(uint32_t at, uint32_t n) const {
    uint32_t value = 0;
    if (at <= bytes.size() && n <= bytes.size() - at) std::memcpy(&value, bytes.data() + at, n);
    return value;
  }
  bool Plain(uint32_t at, uint32_t low) const { return Get(at, 1) == low && (Get(at + 1, 1) & 0x10) == 0; }
  bool Private(uint32_t at, uint32_t low) const { return Get(at, 1) == low && Get(at + 1, 1) == 0xFE; }
  bool Jump(uint32_t at) const { return Private(at, 0xFF) || Private(at, 0xFA); }
  uint32_t Next(uint32_t at) const { return Jump(at) ? Get(at + 4, 4) : at + 4 + Get(at + 2, 2); }
};

class Model {
 public:
  Model(const Bytes& bytes, const Entries& table, LengthField lengths)
      : from_{bytes}, copy_{Bytes(kMostBytes)}, table_(table), lengths_(lengths) {
    limit_ = bytes.empty() ? 0 : static_cast<uint32_t>(bytes.size()) - 1;
    from_.bytes.resize(kBufferSlot);
    table_.resize(kEntries);
  }

  // False where the model has no answer: the walk goes round, or more is kept than the copy has room for.
  bool Run(Outcome* outcome) {
    uint32_t count = 0;
    if (!CopyRecords() || !RepairBoundSheets(&count)) return false;
    uint32_t eof = 0;
    if (!FindLastEof(Entry(count + 1), &eof)) return false;
    const bool closed = eof < limit_;
    if (closed) SetEntry(count + 2, eof);
    outcome->result = closed ? 0 : 12;
    outcome->table = table_;
    if (closed) outcome->copy = Bytes(copy_.bytes.begin(), copy_.bytes.begin() + written_) + Bytes(4);
    return true;
  }

 private:
  uint32_t Entry(uint32_t i) const { return i < kEntries ? static_cast<uint32_t>(table_[i]) : 0; }
  void SetEntry(uint32_t i, uint32_t value) {
    if (i < kEntries) table_[i] = static_cast<int32_t>(value);
  }

  bool CopyRecords() {
    uint32_t sheets = 0;
    uint32_t steps = kBufferSlot / 4;
    for (uint32_t at = 0; at < limit_; at = from_.Next(at)) {
      if (steps-- == 0) return false;
      if (from_.Plain(at, 0x09) && at == Entry(sheets + 2)) {
        SetEntry(sheets + 2, static_cast<uint32_t>(written_));
        ++sheets;
      }
      if (from_.Private(at, 0xF8)) return true;
      if (from_.Jump(at) || from_.Private(at, 0xFD)) continue;
      const uint16_t length = static_cast<uint16_t>(from_.Get(at + 2, 2));
      if (!Keep(at, 4 + (lengths_ == LengthField::kSigned ? static_cast<int16_t>(length) : int32_t{length})))
        return false;
    }
    return true;
  }

  bool Keep(uint32_t at, int32_t count) {
    if (written_ + std::max(count, 0) > static_cast<int32_t>(kMostBytes) - 8) return false;
    for (int32_t i = 0; i < count; ++i) {
      const uint32_t byte = from_.Get(at + static_cast<uint32_t>(i), 1);
      copy_.bytes[static_cast<uint32_t>(written_ + i)] = static_cast<uint8_t>(byte);
    }
    written_ += count;
    return written_ >= 0;
  }

  bool RepairBoundSheets(uint32_t* count) {
    uint32_t steps = kMostBytes / 4;
    for (uint32_t at = Entry(1); static_cast<int32_t>(at) < static_cast<int32_t>(Entry(2) - 4);
         at = copy_.Next(at)) {
      if (steps-- == 0) return false;
      if (!copy_.Plain(at, 0x85)) continue;
      const uint32_t offset = Entry(*count + 2);
      if (at + 8 <= kMostBytes) std::memcpy(copy_.bytes.data() + at + 4, &offset, 4);
      ++*count;
    }
    return true;
  }

  bool FindLastEof(uint32_t bof, uint32_t* eof) const {
    uint32_t at = copy_.Next(bof);
    int depth = 1;
    bool at_end = false;
    for (uint32_t steps = kMostBytes / 4; at < limit_ && !at_end; at = copy_.Next(at)) {
      if (steps-- == 0) return false;
      if (copy_.Plain(at, 0x09)) ++depth;
      if (copy_.Plain(at, 0x0A)) --depth;
      if (depth == 0) break;
      at_end = copy_.Private(at, 0xF8);
    }
    *eof = at;
    return true;
  }

  Image from_;
  Image copy_;
  Entries table_;
  LengthField lengths_;
  uint32_t limit_ = 0;
  int32_t written_ = 0;
};

class CompactionModelTest : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    table_ = MEMORYALLOC(kEntries * 4);
    buffer_ = MEMORYALLOC(kBufferSlot);
    for (int i = 0; i < 2; ++i) MEMORYALLOC(1);
  }

  // Fills the table and the buffer, and leaves nothing behind in the block that the copy will get.
  void Load(const Bytes& bytes, const Entries& entries) const {
    std::memset(BlockBytes(table_), 0, kEntries * 4);
    std::memset(BlockBytes(buffer_), 0, kBufferSlot);
    std::copy(bytes.begin(), bytes.end(), BlockBytes(buffer_));
    std::memcpy(BlockBytes(table_), entries.data(), entries.size() * 4);
    uint32_t clean = MEMORYALLOC(kMostBytes);
    MEMORYFREE(&clean);
  }

  // Compacts into the slot of 100,000 bytes, in which every record is looked at, or into that of 1,000,000.
  Outcome Compacted(const Bytes& bytes, const Entries& entries, LengthField lengths, bool much_room) const {
    uint32_t smaller = much_room ? MEMORYALLOC(1) : 0;
    Load(bytes, entries);
    uint32_t copy = 0;
    uint32_t copy_size = 0;
    Outcome outcome;
    outcome.result =
        Compact(buffer_, table_, static_cast<uint32_t>(bytes.size()), lengths, &copy, &copy_size);
    if (copy != 0) outcome.copy = BlockContents(copy, copy_size);
    outcome.table = TableEntries(table_, kEntries);
    MEMORYFREE(&copy);
    MEMORYFREE(&smaller);
    return outcome;
  }

  // Expects both ways of the library to do what the model does. Counts the cases that the model has an answer to.
  void Compare(const Bytes& bytes, const Entries& entries) {
    for (const LengthField lengths : {LengthField::kUnsigned, LengthField::kSigned}) {
      Outcome expected;
      if (!Model(bytes, entries, lengths).Run(&expected)) continue;
      ++answered;
      for (const bool much_room : {false, true}) {
        const Outcome outcome = Compacted(bytes, entries, lengths, much_room);
        ASSERT_TRUE(outcome == expected)
            << "result " << outcome.result << ", expected " << expected.result
            << (much_room ? ", in runs" : "") << (lengths == LengthField::kSigned ? ", signed\n" : "\n")
            << Hex(bytes) << "\n"
            << Hex(outcome.copy) << "\n"
            << Hex(expected.copy);
      }
    }
  }

  // The two sheets with a patch in the globals and one in a sheet.
  static Bytes PatchedBook() {
    const Bytes note = StreamBuilder().Record(0x0042, U16(1200)).Stream();
    uint32_t size = 0;
    uint32_t buffer = TwoSheets::Builder().Load(&size);
    PatchRecord(&buffer, note.data(), TwoSheets::kBoundSheetTwo, 6, &size);
    PatchRecord(&buffer, note.data(), TwoSheets::kNumber, 6, &size);
    const Bytes book = BlockContents(buffer, size);
    MEMORYFREE(&buffer);
    return book;
  }

  const Entries kTable = {2, 0, TwoSheets::kOne, TwoSheets::kTwo, TwoSheets::kTwoEof};
  uint32_t table_ = 0;
  uint32_t buffer_ = 0;
  int answered = 0;
};

TEST_F(CompactionModelTest, EveryPrefix) {
  const Bytes book = PatchedBook();
  for (size_t n = 0; n <= book.size(); ++n) {
    Compare(Bytes(book.begin(), book.begin() + static_cast<ptrdiff_t>(n)), kTable);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(answered, 400);
}

TEST_F(CompactionModelTest, EveryByteSpoilt) {
  const Bytes book = PatchedBook();
  for (size_t at = 0; at < book.size(); ++at) {
    for (const uint8_t value :
         Bytes{0x00, 0x04, 0x09, 0x0A, 0x7F, 0x80, 0x85, 0xF8, 0xFA, 0xFC, 0xFD, 0xFE, 0xFF}) {
      Bytes spoilt = book;
      spoilt[at] = value;
      Compare(spoilt, kTable);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_GT(answered, 5000);
}

TEST_F(CompactionModelTest, EveryTableEntrySpoilt) {
  const Bytes book = PatchedBook();
  const int32_t offsets[] = {0,   1,   20,  35,  50,  53,  54,  55,  58, 59, 74,        94,
                             136, 140, 156, 176, 180, 184, 187, 188, -1, -4, 0x7FFFFFFF};
  for (size_t entry = 0; entry < 7; ++entry) {
    for (const int32_t offset : offsets) {
      Entries table = kTable;
      table.resize(7);
      table[entry] = offset;
      Compare(book, table);
      if (HasFatalFailure()) return;
    }
  }
  EXPECT_GT(answered, 250);
}

// Streams of any records, most of them such as mean something here, with a table that leads to some of their BOFs.
TEST_F(CompactionModelTest, AnyRecords) {
  std::mt19937 source(11);
  const auto random = [&source](size_t below) { return static_cast<uint32_t>(source() % below); };
  const uint16_t types[] = {0x0809, 0x0009, 0x1009, 0x000A, 0x000A, 0x100A, 0x0085,
                            0x0085, 0x0203, 0x0042, 0xFE09, 0xFEFD, 0xFEF8, 0xFEF0};
  for (int turn = 0; turn < 4000; ++turn) {
    StreamBuilder stream;
    Entries table = {0, 0};
    while (stream.Here() < 20 + random(400)) {
      const uint16_t type = types[random(std::size(types) - (random(8) == 0 ? 0 : 2))];
      if ((type & 0xFF) == 0x09 && random(4) != 0) table.push_back(static_cast<int32_t>(stream.Here()));
      stream.Record(type, Bytes(random(3) == 0 ? random(20) : 8, static_cast<uint8_t>(random(256))));
      if (random(60) == 0) stream.Detour(random(400)).Resume(random(400));
      if (random(60) == 0) stream.Raw(U16(0x0042) + U16(static_cast<uint16_t>(0xFFFF - random(40))));
    }
    if (random(2) == 0 && table.size() > 2) table.erase(table.begin() + 2);
    table.push_back(static_cast<int32_t>(stream.Here()));
    const Bytes bytes = stream.Stream();
    if (bytes.size() <= kBufferSlot && table.size() <= kEntries) Compare(bytes, table);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(answered, 4000);
}

// A sheet of 990,000 bytes, larger than many runs, with room between some of its cells or without.
class LargeSheetTest : public PoolTest {
 protected:
  static constexpr uint32_t kRecords = 50000;

  static StreamBuilder Book(bool with_slack) {
    StreamBuilder book = StreamBuilder().Bof(6).Sheet("One").Eof().Bof(6, kWorksheet);
    for (uint32_t i = 0; i < kRecords; ++i) {
      book.Number(static_cast<uint16_t>(i), static_cast<uint16_t>(i >> 8), 15, i);
      if (i % 10000 == 9999) book.Record(0x0042, Bytes(16000, static_cast<uint8_t>(i >> 4)));
      if (with_slack && (i % 7000 == 0 || i == kRecords - 1)) book.Slack(static_cast<uint16_t>(i % 5));
    }
    return book.Eof();
  }

  // A copy of the stream in the first free block that holds `room` bytes.
  static uint32_t Load(const StreamBuilder& book, int32_t room, uint32_t* size) {
    const Bytes bytes = book.Stream() + U32(0x0000FEF8);
    *size = static_cast<uint32_t>(bytes.size());
    const uint32_t buffer = MEMORYALLOC(room);
    std::memcpy(BlockBytes(buffer), bytes.data(), bytes.size());
    return buffer;
  }

  // Compacts a book with patches and without, and expects a plain one.
  static void ExpectPlain(uint32_t buffer, uint32_t size, int32_t slot) {
    uint32_t table = 0;
    ASSERT_EQ(MakeSheetTable(buffer, &table, size, WithoutSheets::kClosingEof), 0);
    uint32_t copy = 0;
    uint32_t copy_size = 0;
    ASSERT_EQ(Compact(buffer, table, size, LengthField::kUnsigned, &copy, &copy_size), 0);
    EXPECT_EQ(MEMORYISHANDLE(copy), slot);
    const Bytes plain = Book(false).Stream();
    EXPECT_TRUE(BlockContents(copy, copy_size) == plain + Bytes(4));
    EXPECT_EQ(TableEntries(table, 4), (Entries{1, 0, 39, static_cast<int32_t>(plain.size()) - 4}));
  }
};

TEST_F(LargeSheetTest, InALargerBlock_EveryByteArrives) {
  uint32_t size = 0;
  const uint32_t buffer = Load(Book(true), 1000000, &size);
  ASSERT_EQ(MEMORYISHANDLE(buffer), 6);
  ExpectPlain(buffer, size, 7);
}

// Behind the runs there is less room than the longest run might take: the rest goes record by record.
TEST_F(LargeSheetTest, InABlockThatItNearlyFills_EveryByteArrives) {
  uint32_t size = 0;
  const uint32_t buffer = Load(Book(true), 1000001, &size);
  ASSERT_EQ(MEMORYISHANDLE(buffer), 7);
  ExpectPlain(buffer, size, 6);
}

}  // namespace
}  // namespace tolvenar::testing
