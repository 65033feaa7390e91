// Damage: a small workbook, cut at every place and with every byte spoilt, through every reader of a stream.
// The table is the one of the whole workbook, and the buffer fills its slot to the last byte, so that a read
// behind it would hit the page that can't be read.
#include <cstring>

#include "query/cell_formats.h"
#include "query/cell_values.h"
#include "query/record_list.h"
#include "query/shared_strings.h"
#include "query/sheet_catalogue.h"
#include "query/sheet_size.h"
#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

constexpr uint32_t kSlot = 1024;

class Damage : public BookTest {
 protected:
  void SetUp() override {
    BookTest::SetUp();
    // The slots below 1024 are kept, so that the book lands in that one.
    MEMORYALLOC(1);
    MEMORYALLOC(1);
    Load(Book());
    ASSERT_EQ(size_, kSlot);
    ASSERT_EQ(MEMORYALLOCSIZE(buffer_), kSlot);
    whole_ = BlockContents(buffer_, kSlot);
  }

  static StreamBuilder Book();
  void ReadAll();
  void Restore(uint32_t size) {
    std::memset(BlockBytes(buffer_), 0, kSlot);
    std::memcpy(BlockBytes(buffer_), whole_.data(), size);
  }

  Bytes whole_;
  TestArray texts_{VT_BSTR, 1, 4, 1, 4};
  TestArray variants_{VT_VARIANT, 1, 4, 1, 4};
  TestArray formats_{VT_I2, 1, 4, 1, 4};
  TestArray offsets_{VT_I4, 1, 30};
  TestArray images_{VT_BSTR, 1, 30};
};

StreamBuilder Damage::Book() {
  StreamBuilder book;
  const Bytes strings =
      U16(2) + Bytes{1, 'a', 0, 'b', 0} + U16(1) + Bytes{8} + U16(1) + Bytes(5, 'c') + U16(1) + Bytes{0, 'd'};
  book.Bof(6).Record(0x0042, U16(1200)).Sheet("One").Sheet("Two").Record(0x00FC, U32(3) + U32(3) + strings);
  book.Record(0x00FF, U16(8) + Bytes(8)).Eof().Bof(6, kWorksheet).Dimensions(0, 4, 0, 4).Row(0);
  book.Number(0, 0, 15, 1.5)
      .Rk(0, 1, 15, 6)
      .MulRk(1, 0, {{15, 6}, {16, 10}})
      .LabelSst(2, 0, 15, 2)
      .LabelSst(2, 1, 15, 1);
  book.BoolErr(2, 2, 15, 1, 0)
      .Formula(3, 0, 15, F64(2))
      .LabelBiff8(3, 1, 15, "label")
      .MulBlank(3, 2, {15, 16});
  book.Formula(3, 3, 15, Bytes{0, 0, 0, 0, 0, 0, 0xFF, 0xFF}).Record(0x0207, Text("text")).Eof();
  book.Bof(6, kWorksheet)
      .Bof(6, kChart)
      .Eof()
      .Record(0x00D6, U16(0) + U16(0) + U16(15) + U16(2) + Text("rs"));
  const uint32_t detour = book.Here();
  book.Detour(detour + 20).Record(0x0042, Bytes(8)).Blank(0, 1, 15);
  book.Slack(static_cast<uint16_t>(kSlot - book.Here() - 12));
  return book.Eof().BufEnd();
}

void Damage::ReadAll() {
  int32_t count = 0;
  uint16_t range[4] = {};
  XLGetList(buffer_, static_cast<int32_t>(size_), &count, offsets_.Ref(), nullptr, images_.Ref(), nullptr);
  XLGetNumVers(buffer_, table_);
  BiffVersion = kBiff8;
  XLNumStrBucket(buffer_, table_);
  const int16_t sst = XLNumStrExt(buffer_, table_);
  for (int16_t sheet : {int16_t{1}, int16_t{2}, int16_t{32767}}) {
    BSTR name = nullptr;
    XLGetNameSheet(buffer_, table_, sheet, &name);
    SysFreeString(name);
    XLGetSheetParam(buffer_, table_, sheet, 0, 0, 0, 0);
    XLGetSheetSize(buffer_, table_, sheet, &range[0], &range[1], &range[2], &range[3]);
    XLGetVariantData(texts_.Ref(), buffer_, table_, sheet);
    XLGetVariantData(variants_.Ref(), buffer_, table_, sheet);
    XLGetCellData(formats_.Ref(), buffer_, table_, sheet);
  }
  const int32_t index = 40000;
  XLEXTLabel(buffer_, &index, nullptr, sst, texts_.Ref(), 200);
  ASSERT_EQ(LiveBlocks(), 4u);
}

TEST_F(Damage, TheWholeBookReads) {
  ReadAll();
  EXPECT_EQ(texts_.TextAt(1, 2), "1.000000");
  EXPECT_EQ(texts_.TextAt(3, 1).size(), 1u);
  EXPECT_EQ(variants_.TextAt(4, 4), "text");
  EXPECT_EQ(formats_.NumberAt(4, 4), 15);
}

TEST_F(Damage, EveryPrefix) {
  for (uint32_t n = 0; n <= kSlot; ++n) {
    Restore(n);
    ReadAll();
  }
}

TEST_F(Damage, EveryByte) {
  for (uint32_t at = 0; at < kSlot; ++at) {
    for (uint8_t value : {uint8_t{0x00}, uint8_t{0x7F}, uint8_t{0x80}, uint8_t{0xFF}}) {
      Restore(kSlot);
      BlockBytes(buffer_)[at] = value;
      ReadAll();
    }
  }
}

TEST_F(Damage, EveryByteOfTheTable) {
  const uint32_t size = MEMORYSIZE(table_);
  for (uint32_t at = 0; at < size; ++at) {
    for (uint8_t value : {uint8_t{0x00}, uint8_t{0x7F}, uint8_t{0x80}, uint8_t{0xFF}}) {
      uint8_t& byte = BlockBytes(table_)[at];
      const uint8_t before = byte;
      byte = value;
      ReadAll();
      byte = before;
    }
  }
}

TEST_F(Damage, AJumpFromEveryRecordToEveryPlace) {
  for (uint32_t at = 0; at + kJumpSize <= kSlot; at += 7) {
    for (uint32_t target = 0; target < kSlot + 16; target += 13) {
      Restore(kSlot);
      PutU16(Stream(), at, 0xFEFF);
      PutU32(Stream(), at + kJumpTarget, target);
      ReadAll();
    }
  }
}

}  // namespace
