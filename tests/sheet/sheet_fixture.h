// What the tests of new sheets share: a workbook in the caller's three variables, and a look at its records.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/biff_records.h"
#include "support/made_record.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/empty_book.h"
#include "workbook/sheet_table.h"
#include "workbook/table_entries.h"

namespace tolvenar::testing {

// Sizes of what stands around the cells of a new sheet.
constexpr uint32_t kHeadBiff5 = 173;  // BOF to DEFCOLWIDTH, without COUNTRY
constexpr uint32_t kHeadBiff8 = 194;
constexpr uint32_t kCountrySize = 8;
constexpr uint32_t kDimensionsBytes = 18;
constexpr uint32_t kRowBytes = 20;
constexpr uint32_t kTailBiff5 = 37;  // WINDOW2, SELECTION, EOF
constexpr uint32_t kTailBiff8 = 45;
constexpr uint32_t kEmptyBiff5 = 1168;
constexpr uint32_t kEmptyBiff8 = 1382;

// A record with its place.
struct FoundRecord {
  uint32_t at;
  uint16_t type;
  Bytes bytes;  // header included
};

class SheetTest : public PoolTest {
 protected:
  void TearDown() override {
    BiffVersion = 0;
    PoolTest::TearDown();
  }

  void NewBook(int32_t selector) { ASSERT_EQ(XLCreateEmptyBook(&buffer, &size, selector), 0); }

  // Records of the walk from `from` on, up to a BUFEND or the size; jumps and SLACK left out.
  std::vector<FoundRecord> Records(uint32_t from = 0) const {
    std::vector<FoundRecord> records;
    const Block block = OpenBlock(buffer);
    for (Walk walk = StartWalk(block, from); walk.at < size && !walk.ended; Step(&walk)) {
      if (IsPrivate(block, walk.at, kLowBufEnd)) break;
      if (IsJump(block, walk.at) || IsPrivate(block, walk.at, kLowSlack)) continue;
      Bytes bytes(kHeaderSize + LengthAt(block, walk.at));
      CopyOut(block, walk.at, bytes.data(), static_cast<uint32_t>(bytes.size()));
      records.push_back({walk.at, U16At(block, walk.at), bytes});
    }
    return records;
  }

  std::vector<FoundRecord> RecordsOfType(uint16_t type, uint32_t from = 0) const {
    std::vector<FoundRecord> matching;
    for (const FoundRecord& record : Records(from)) {
      if (record.type == type) matching.push_back(record);
    }
    return matching;
  }

  // Names and BOF offsets of the BOUNDSHEETs; the name from byte 11 on, as this library writes it.
  std::vector<std::pair<std::string, uint32_t>> Sheets() const {
    std::vector<std::pair<std::string, uint32_t>> sheets;
    for (const FoundRecord& record : RecordsOfType(0x0085)) {
      const size_t length = std::min<size_t>(record.bytes[10], record.bytes.size() - 11);
      sheets.emplace_back(std::string(record.bytes.data() + 11, record.bytes.data() + 11 + length),
                          ReadU32(record.bytes.data() + kBoundSheetBof));
    }
    return sheets;
  }

  // The cell records of a sheet, as hexadecimal text, one a line.
  std::string Cells(int16_t sheet) {
    std::string lines;
    for (const FoundRecord& record : Records(BofOf(sheet))) {
      const bool cell = record.type == 0x0201 || record.type == 0x0203 || record.type == 0x0204;
      if (cell) lines += Hex(record.bytes) + "\n";
      if (record.type == 0x000A) break;
    }
    return lines;
  }

  uint32_t BofOf(int16_t sheet) {
    return ReadU32(RecordsOfType(0x0085).at(static_cast<size_t>(sheet - 1)).bytes.data() + kBoundSheetBof);
  }

  // The bytes at the end of the buffer.
  std::string Last4() const { return Hex(BlockContents(buffer, size)).substr(3 * (size - 4)); }

  // Every BOUNDSHEET names a BOF, the stream ends with EOF and BUFEND, and the table can be made of it.
  void ExpectWholeWorkbook(size_t sheets) {
    ASSERT_EQ(Sheets().size(), sheets);
    for (const auto& [name, bof] : Sheets()) {
      EXPECT_EQ(U16At(OpenBlock(buffer), bof), 0x0809) << name;
    }
    EXPECT_EQ(Last4(), "F8 FE 00 00 ");
    uint32_t table = 0;
    ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
    EXPECT_EQ(TableEntry(OpenBlock(table), static_cast<uint32_t>(sheets) + 2), size - 8);
    MEMORYFREE(&table);
  }

  uint32_t buffer = 0;
  uint32_t size = 0;
};

}  // namespace tolvenar::testing
