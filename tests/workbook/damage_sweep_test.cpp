// Damage sweep: every prefix of a small workbook, and every byte of it spoilt, through everything that walks
// a whole buffer. Behind a slot lies an inaccessible page, so a step outside the block is a crash here; a
// walk that does not end is a timeout.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "foundation/memory_pool.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/compaction.h"
#include "workbook/refresh.h"
#include "workbook/sheet_table.h"
#include "workbook/two_sheets.h"

namespace tolvenar::testing {
namespace {

// A buffer in use, `size` bytes, its table made before the damage was done.
struct Book {
  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
};

struct Reader {
  const char* label;
  std::function<void(Book*)> run;
};

void RunCompaction(Book* book, LengthField lengths) {
  uint32_t copy = 0;
  uint32_t copy_size = 0;
  const Bytes before = BlockContents(book->buffer, book->size);
  const int16_t result = Compact(book->buffer, book->table, book->size, lengths, &copy, &copy_size);
  EXPECT_EQ(BlockContents(book->buffer, book->size), before);
  EXPECT_EQ(result == 0, copy != 0);
  if (copy != 0) {
    EXPECT_LE(copy_size, MEMORYALLOCSIZE(copy));
  }
}

const Reader kAllReaders[] = {
    {"XLLocateSheets",
     [](Book* book) {
       uint32_t table = 0;
       const int16_t result = XLLocateSheets(book->buffer, &table, book->size);
       EXPECT_EQ(result == 0, table != 0);
       EXPECT_EQ(result == 0, MEMORYISHANDLE(book->buffer) != 0);
     }},
    {"XLRefreshHandles",
     [](Book* book) {
       XLRefreshHandles(&book->buffer, book->table, &book->size);
       EXPECT_NE(MEMORYISHANDLE(book->buffer), 0);
     }},
    {"XLDeleteDBCells", [](Book* book) { EXPECT_EQ(XLDeleteDBCells(book->buffer, book->size), 0); }},
    {"compaction of a save", [](Book* book) { RunCompaction(book, LengthField::kUnsigned); }},
    {"compaction of a refresh", [](Book* book) { RunCompaction(book, LengthField::kSigned); }},
};

class DamageSweepTest : public PoolTest {
 protected:
  // The two sheets with a patch in the globals and one in a sheet; its walk has jumps to spoil.
  static Bytes PatchedBook() {
    MEMORYFREEALL();
    const Bytes note = StreamBuilder().Record(0x0042, U16(1200)).Stream();
    uint32_t size = 0;
    uint32_t buffer = TwoSheets::Builder().Load(&size);
    PatchRecord(&buffer, note.data(), TwoSheets::kBoundSheetTwo, 6, &size);
    PatchRecord(&buffer, note.data(), TwoSheets::kNumber, 6, &size);
    return BlockContents(buffer, size);
  }

  // Loads the first `size` bytes so that the slot ends as soon behind them as it can.
  static Book Load(const Bytes& bytes, uint32_t size) {
    MEMORYFREEALL();
    Book book;
    book.size = size;
    book.buffer = MEMORYALLOC(static_cast<int32_t>(bytes.size()));
    std::memcpy(BlockBytes(book.buffer), bytes.data(), size);
    const uint32_t entries[] = {2, 0, TwoSheets::kOne, TwoSheets::kTwo, TwoSheets::kTwoEof};
    book.table = MEMORYALLOC(sizeof entries);
    std::memcpy(BlockBytes(book.table), entries, sizeof entries);
    return book;
  }

  static void RunAll(const Bytes& bytes, uint32_t size) {
    for (const Reader& reader : kAllReaders) {
      SCOPED_TRACE(reader.label);
      Book book = Load(bytes, size);
      reader.run(&book);
    }
  }
};

TEST_F(DamageSweepTest, EveryPrefix) {
  const Bytes book = PatchedBook();
  for (uint32_t n = 0; n <= book.size(); ++n) RunAll(book, n);
}

TEST_F(DamageSweepTest, EveryByteSpoilt) {
  const Bytes book = PatchedBook();
  const uint32_t size = static_cast<uint32_t>(book.size());
  for (uint32_t at = 0; at < size; ++at) {
    for (uint8_t value : Bytes{0x00, 0x7F, 0x80, 0xFF, 0x0A, 0x09, 0xFE}) {
      Bytes spoilt = book;
      spoilt[at] = value;
      SCOPED_TRACE(at);
      RunAll(spoilt, size);
    }
  }
}

TEST_F(DamageSweepTest, EveryBitSpoilt) {
  const Bytes book = PatchedBook();
  const uint32_t size = static_cast<uint32_t>(book.size());
  for (uint32_t bit = 0; bit < size * 8; ++bit) {
    Bytes spoilt = book;
    spoilt[bit / 8] = static_cast<uint8_t>(spoilt[bit / 8] ^ (1u << bit % 8));
    SCOPED_TRACE(bit);
    RunAll(spoilt, size);
  }
}

TEST_F(DamageSweepTest, SizeThatIsNotTheBuffers) {
  const Bytes book = PatchedBook();
  for (uint32_t size : {0x200u, 0x80E8u, 0x06422C40u, 0x06422C41u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    for (const Reader& reader : {kAllReaders[0], kAllReaders[1], kAllReaders[2]}) {
      SCOPED_TRACE(reader.label);
      Book whole = Load(book, static_cast<uint32_t>(book.size()));
      whole.size = size;
      if (reader.run) reader.run(&whole);
    }
  }
}

TEST_F(DamageSweepTest, EveryTableEntrySpoilt) {
  const Bytes bytes = PatchedBook();
  for (uint32_t entry = 0; entry < 8; ++entry) {
    for (uint32_t value :
         {0u, 1u, 53u, 0x7FFFu, 0x06422C3Fu, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFCu, 0xFFFFFFFFu}) {
      for (const Reader& reader : kAllReaders) {
        Book book = Load(bytes, static_cast<uint32_t>(bytes.size()));
        PutTableEntry(OpenBlock(book.table), entry, value);
        reader.run(&book);
      }
    }
  }
}

TEST_F(DamageSweepTest, DetoursEverywhere_ToItselfBackAndFar) {
  const Bytes book = PatchedBook();
  const uint32_t size = static_cast<uint32_t>(book.size());
  for (uint32_t at = 0; at + 8 <= size; ++at) {
    for (uint32_t target : {at, 0u, at / 2, size - 4, size + 4, 0x06422C3Cu, 0xFFFFFFF8u}) {
      Bytes spoilt = book;
      const Bytes detour = StreamBuilder().Detour(target).Stream();
      std::memcpy(spoilt.data() + at, detour.data(), detour.size());
      SCOPED_TRACE(at);
      RunAll(spoilt, size);
    }
  }
}

}  // namespace
}  // namespace tolvenar::testing
