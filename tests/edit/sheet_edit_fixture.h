// A test on a book of one worksheet in a pool block, opened as a host would have it: buffer, size,
// SheetTable.
//
//   StreamBuilder sheet = Sheet(6);      globals, BOF and DIMENSIONS of the sheet (rows 0-9, columns 0-19)
//   sheet.Row(0).Number(0, 0, 15, 1.5);  the records under test
//   Open(sheet);                         closes it with a WINDOW2 and the EOF
//   ... the call ...
//   EXPECT_EQ(Cells(), ...);             the records between DIMENSIONS and WINDOW2, in the order of the walk
#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <vector>

#include "foundation/biff_records.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "tolvenar/automation.h"
#include "workbook/biff_version.h"
#include "workbook/sheet_table.h"

namespace tolvenar::testing {

inline const Bytes kWindow2 = {0x3E, 0x02, 0x06, 0x00, 1, 2, 3, 4, 5, 6};
inline const Bytes kEof = {0x0A, 0x00, 0x00, 0x00};

// A record without meaning, as long as a DETOUR.
inline const Bytes kFiller = {0x42, 0x00, 0x04, 0x00, 0, 0, 0, 0};

// Lists to loop over, without a cast for each value.
using Types = std::initializer_list<uint16_t>;
using Columns = std::initializer_list<int16_t>;
constexpr uint8_t kVersions[] = {5, 6};

// A BSTR that is released at the end of its block.
class OwnedBstr {
 public:
  explicit OwnedBstr(const std::u16string& units)
      : text_(SysAllocStringLen(reinterpret_cast<const OLECHAR*>(units.data()),
                                static_cast<UINT>(units.size()))) {}
  ~OwnedBstr() { SysFreeString(text_); }
  OwnedBstr(const OwnedBstr&) = delete;
  OwnedBstr& operator=(const OwnedBstr&) = delete;
  BSTR Get() const { return text_; }

 private:
  BSTR text_;
};

class SheetEditTest : public PoolTest {
 protected:
  void TearDown() override {
    BiffVersion = 0;
    PoolTest::TearDown();
  }

  static StreamBuilder Sheet(uint8_t version) {
    BiffVersion = version;
    StreamBuilder book;
    book.Bof(version).Sheet("Data").Eof().Bof(version, kWorksheet).Dimensions(0, 10, 0, 20);
    return book;
  }

  void Open(StreamBuilder book) { OpenAsItIs(book.Raw(kWindow2).Eof()); }

  // The same, padded until the buffer fills its slot of 256 bytes: any growth moves it.
  void OpenFull(StreamBuilder book) {
    constexpr uint32_t kSlot = 256;
    const uint32_t used = book.Raw(kWindow2).Here() + kHeaderSize + kEofSize + kBufEndSize;
    ASSERT_LE(used, kSlot);
    book.Record(0x0042, Bytes(kSlot - used));
    OpenAsItIs(book.Eof());
    ASSERT_EQ(size_, MEMORYALLOCSIZE(buffer_));
  }

  void OpenAsItIs(const StreamBuilder& book) {
    buffer_ = book.Load(&size_);
    ASSERT_NE(buffer_, 0u);
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
    opened_ = Contents();
    live_ = LiveBlocks();
  }

  // Overwrites the 8 bytes at `at` with a DETOUR.
  void LayDetour(uint32_t at, uint32_t target) const {
    const Bytes detour = StreamBuilder().Detour(target).Stream();
    CopyIn(OpenBlock(buffer_), at, detour.data(), kJumpSize);
  }

  Bytes Contents() const { return BlockContents(buffer_, size_); }

  // The records of sheet 1 between its DIMENSIONS and its WINDOW2.
  Bytes Cells() const {
    const Block block = OpenBlock(buffer_);
    const uint32_t bof = TableEntry(OpenBlock(table_), kTableFirstSheet);
    const Bytes stream = WalkedStream(buffer_, NextRecord(block, NextRecord(block, bof)));
    const auto end = std::search(stream.begin(), stream.end(), kWindow2.begin(), kWindow2.end());
    EXPECT_NE(end, stream.end());
    EXPECT_EQ(Bytes(stream.end() - kEofSize, stream.end()), kEof);
    return Bytes(stream.begin(), end);
  }

  // The buffer is as it was opened, and the pool holds what it held then.
  void ExpectUntouched() const {
    EXPECT_EQ(Contents(), opened_);
    EXPECT_EQ(LiveBlocks(), live_);
  }

  // Takes pool blocks until `count` are live in all. Blocks of 1 byte take the small slots first.
  static void TakeBlocksUntil(uint32_t count) {
    while (LiveBlocks() < count && MEMORYALLOC(1) != 0) {
    }
  }

  uint32_t buffer_ = 0;
  uint32_t table_ = 0;
  uint32_t size_ = 0;
  uint32_t live_ = 0;  // blocks when the book was opened
  Bytes opened_;       // the buffer when it was opened
};

}  // namespace tolvenar::testing
