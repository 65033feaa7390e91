// A test with one workbook in the pool: its buffer and its SheetTable.
#pragma once

#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/biff_version.h"
#include "workbook/sheet_table.h"

namespace tolvenar::testing {

class BookTest : public PoolTest {
 protected:
  // Loads the stream and locates its sheets, as a host would; BiffVersion is then `version`.
  void Load(const StreamBuilder& stream, int32_t version = kBiff8) {
    BiffVersion = version;
    buffer_ = stream.Load(&size_);
    ASSERT_NE(buffer_, 0u);
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
  }

  // Takes blocks of a byte each until `count` are live.
  static void FillPool(uint32_t count) {
    while (LiveBlocks() < count) ASSERT_NE(MEMORYALLOC(1), 0u);
  }

  Block Stream() const { return OpenBlock(buffer_); }
  Block Table() const { return OpenBlock(table_); }

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
  uint32_t table_ = 0;
};

// BIFF8 globals with one sheet, and the sheet up to its first cell: a DIMENSIONS of 4 rows and 4 columns.
inline StreamBuilder OneSheet(uint8_t version = kBiff8) {
  return StreamBuilder().Bof(version).Sheet("Data").Eof().Bof(version, kWorksheet).Dimensions(0, 4, 0, 4);
}

}  // namespace tolvenar::testing
