// What the tests of rows and columns share: a book of one sheet, its table, the six operations by name, and
// what the walk reads after.
#pragma once

#include <gtest/gtest.h>

#include "edit/row_column_edit.h"
#include "foundation/biff_records.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/biff_version.h"
#include "workbook/sheet_table.h"

namespace tolvenar::testing {

// Globals with one sheet, and the sheet's BOF. The records follow, then EndSheet.
inline StreamBuilder Book(uint8_t version = 6) {
  return StreamBuilder().Bof(version).Sheet("Data").Eof().Bof(version, kWorksheet);
}
// The record that stands behind the cells in a real sheet, and the EOF.
inline StreamBuilder& EndSheet(StreamBuilder& stream) {
  return stream.Record(0x023E, Bytes(10)).Eof();
}
inline StreamBuilder& EndSheet(StreamBuilder&& stream) {
  return EndSheet(stream);
}

// ARRAY and SHRFMLA with their bounds and tokens.
inline Bytes ArrayPayload(const Bytes& tokens) {
  return U16(2) + U16(3) + Bytes{1, 2} + U16(0) + U32(0) + U16(static_cast<uint16_t>(tokens.size())) + tokens;
}
inline Bytes SharedPayload(const Bytes& tokens) {
  return U16(2) + U16(3) + Bytes{1, 2} + U16(0) + U16(static_cast<uint16_t>(tokens.size())) + tokens;
}

using EditCall = int16_t (*)(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t);

struct NamedEdit {
  const char* name;
  EditCall call;
};
constexpr NamedEdit kAllEdits[] = {
    {"XLAddRow", XLAddRow},       {"XLAddCol", XLAddCol},       {"XLInsertRow", XLInsertRow},
    {"XLInsertCol", XLInsertCol}, {"XLDeleteRow", XLDeleteRow}, {"XLDeleteCol", XLDeleteCol},
};

class RowColumnTest : public PoolTest {
 protected:
  void TearDown() override {
    BiffVersion = 0;
    PoolTest::TearDown();
  }

  // Loads the stream into a block with plenty of room, so that patches do not move it; or into a tight one.
  void Load(const StreamBuilder& stream, int32_t version = kBiff8, bool tight = false) {
    BiffVersion = version;
    buffer_ = stream.Load(&size_);
    if (!tight) buffer_ = MEMORYREALLOC(buffer_, 100000);
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
  }

  int16_t Run(EditCall edit, int16_t position, int16_t sheet = 1) {
    return edit(&buffer_, table_, &size_, sheet, position);
  }

  Bytes Image() const { return BlockContents(buffer_, size_); }
  Bytes Walked() const { return WalkedStream(buffer_); }

  uint32_t buffer_ = 0;
  uint32_t table_ = 0;
  uint32_t size_ = 0;
};

// The walk of the buffer reads as the stream.
#define EXPECT_READS_AS(stream) \
  EXPECT_EQ(::tolvenar::testing::Hex(Walked()), ::tolvenar::testing::Hex((stream).Stream()))

}  // namespace tolvenar::testing
