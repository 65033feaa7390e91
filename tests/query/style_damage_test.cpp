// Damage, for the style tables: a small workbook, cut at every place and with every byte spoilt, through every reader of fonts,
// formats, XFs, colours, heights and widths, through the decoders of what they give, and through the lookups. The buffer fills
// its slot to the last byte, so that a read behind it would hit the page that can't be read.
#include <cstring>
#include <iterator>

#include "query/format_catalogue.h"
#include "query/item_decoders.h"
#include "query/palette.h"
#include "query/row_column_sizes.h"
#include "query/style_lookup.h"
#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

constexpr uint32_t kSlot = 512;
constexpr uint8_t kSpoilt[] = {0x00, 0x7F, 0x80, 0xFF};

constexpr int16_t (*kDecoders[])(uint32_t) = {
    XLFontSize, XLFontColor, XLFontBoldness, XLFontItalic,   XLFontStrikeOut, XLFontUnderline, XLXFFont,
    XLXFFormat, XLXFLocked,  XLXFHidden,     XLXFHAlignment, XLXFVAlignment,  XLXFRotation};

class StyleDamage : public BookTest, public ::testing::WithParamInterface<int32_t> {
 protected:
  void SetUp() override {
    BookTest::SetUp();
    for (uint32_t& slot : slots_) slot = MEMORYALLOC(1);
    whole_ = Book(static_cast<uint8_t>(GetParam()));
    ASSERT_EQ(whole_.size(), kSlot);
    Restore(whole_);
    ASSERT_EQ(MEMORYALLOCSIZE(buffer_), kSlot);
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
    table_bytes_ = BlockContents(table_, MEMORYSIZE(table_));
    Release();
  }
  void TearDown() override {
    BiffVersion = 0;
    BookTest::TearDown();
  }

  static Bytes Book(uint8_t version);
  void ReadItems(int16_t kind);
  void ReadAll();
  void LookUpAll(const Bytes& stream, const Bytes& table);

  // Makes `stream` the buffer, in the slot that it fills.
  void Restore(const Bytes& stream) {
    Release();
    BiffVersion = GetParam();
    const uint32_t first = MEMORYALLOC(1);  // the slot below
    ASSERT_EQ(first, slots_[0]);
    buffer_ = MEMORYALLOC(kSlot);
    size_ = kSlot;
    std::memset(BlockBytes(buffer_), 0, kSlot);
    CopyIn(OpenBlock(buffer_), 0, stream.data(), static_cast<uint32_t>(stream.size()));
  }
  void RestoreBook(const Bytes& stream, const Bytes& table) {
    Restore(stream);
    table_ = MEMORYALLOC(static_cast<int32_t>(table.size()));
    CopyIn(OpenBlock(table_), 0, table.data(), static_cast<uint32_t>(table.size()));
  }
  // Releases all blocks but those of the book.
  void ReleaseOthers() {
    for (uint32_t slot : slots_) {
      uint32_t block = slot;
      if (slot != slots_[0] && slot != buffer_ && slot != table_) MEMORYFREE(&block);
    }
  }
  void Release() {
    buffer_ = table_ = 0;
    for (uint32_t slot : slots_) MEMORYFREE(&slot);
  }
  void Try(const Bytes& stream, const Bytes& table) {
    RestoreBook(stream, table);
    ReadAll();
    EXPECT_EQ(BlockContents(table_, static_cast<uint32_t>(table.size())), table);
    LookUpAll(stream, table);
  }

  uint32_t slots_[9] = {};
  Bytes whole_;
  Bytes table_bytes_;
};

Bytes StyleDamage::Book(uint8_t version) {
  StreamBuilder book;
  const Bytes font = U16(200) + U16(0) + U16(8) + U16(400) + U16(0) + Bytes{0, 0, 0, 0x44, 1, 'A'};
  book.Bof(version).Record(0x0031, font).Record(0x0031, font);
  book.Record(0x041E, U16(164) + Bytes{4, '_', '?', '\\', '*'}).Record(0x041E, U16(254) + Bytes{1, '0'});
  book.Record(0x00E0, U16(0) + U16(164) + Bytes(12)).Record(0x0043, Bytes{1, 2} + Bytes(12));
  book.Record(0x0293, Bytes(4)).Record(0x0092, U16(2) + Bytes(8)).Sheet("One").Eof();
  book.Bof(version, kWorksheet).Record(0x0225, U16(0) + U16(255)).Record(0x0055, U16(8));
  book.Record(0x007D, U16(1) + U16(2) + U16(256) + Bytes(5)).Dimensions(0, 4, 0, 4);
  book.Row(1).Record(0x00A0, U16(3) + U16(4));
  const uint32_t detour = book.Here();
  book.Detour(detour + 20).Record(0x0042, Bytes(8)).Row(2);
  book.Slack(static_cast<uint16_t>(kSlot - book.Here() - 12));
  return book.Eof().BufEnd().Stream();
}

void StyleDamage::ReadItems(int16_t kind) {
  const uint16_t count = XLGetNumFormatItems(buffer_, table_, kind);
  TestArray items(VT_I4, 0, count == 0 ? 0 : count - 1);
  XLGetFormatData(items.Ref(), buffer_, table_, kind);
  if (kind == kKindPalette) XLGetColorData(items.Ref(), buffer_, table_);
  for (LONG i = 0; i < 6 && i < count; ++i) {
    const uint32_t item = static_cast<uint32_t>(items.NumberAt(i));
    for (auto decoder : kDecoders) decoder(item);
    uint16_t out[6];
    XLXFBorderStyle(item, &out[0], &out[1], &out[2], &out[3], &out[4]);
    XLXFColors(item, &out[0], &out[1], &out[2], &out[3], &out[4], &out[5]);
    for (auto decoder : {XLFontName, XLFormatString}) {
      BSTR text = nullptr;
      decoder(item, &text);
      SysFreeString(text);
    }
  }
  ReleaseOthers();
}

void StyleDamage::ReadAll() {
  for (int16_t kind = 0; kind <= 3; ++kind) ReadItems(kind);
  TestArray sizes(VT_I2, 1, 4);
  for (int16_t sheet : {int16_t{1}, int16_t{2}, int16_t{32767}}) {
    XLGetRowHeight(sizes.Ref(), buffer_, table_, sheet);
    XLGetColWidth(sizes.Ref(), buffer_, table_, sheet);
    XLGetMagnification(buffer_, table_, sheet);
  }
  ASSERT_EQ(LiveBlocks(), 3u);
}

// Each on a fresh copy: a patch grows the buffer, and so moves it.
void StyleDamage::LookUpAll(const Bytes& stream, const Bytes& table) {
  for (int lookup = 0; lookup < 4; ++lookup) {
    RestoreBook(stream, table);
    for (int time = 0; time < 2; ++time) {
      if (lookup == 0) XLGetFont(&buffer_, table_, &size_, "B", {0, 200, 400, 0, 0, 0});
      if (lookup == 1) XLGetFormat(&buffer_, table_, &size_, "0.0");
      if (lookup == 2) XLGetXFInd(&buffer_, table_, &size_, {5, 6, 1, 0, 1, 2, 3, 7});
      if (lookup == 3)
        XLGetXFIndFull(&buffer_, table_, &size_, {5, 9, 0, 2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0}, 1, 0);
    }
    // The table stays, but for a BOF that has moved.
    EXPECT_EQ(MEMORYSIZE(table_), table.size()) << lookup;
    EXPECT_EQ(BlockContents(table_, kTableEntrySize), Bytes(table.begin(), table.begin() + kTableEntrySize))
        << lookup;
  }
}

TEST_P(StyleDamage, TheWholeBookReads) {
  RestoreBook(whole_, table_bytes_);
  EXPECT_EQ(XLGetNumFormatItems(buffer_, table_, kKindXf), 2);
  EXPECT_EQ(XLGetNumFormatItems(buffer_, table_, kKindFont), 3);
  TestArray sizes(VT_I2, 1, 4);
  EXPECT_EQ(XLGetRowHeight(sizes.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(sizes.NumberAt(3), 256);
  EXPECT_EQ(XLGetFormat(&buffer_, table_, &size_, "0.0"), 253);
  EXPECT_EQ(XLGetFormat(&buffer_, table_, &size_, "0.0"), 253);
  EXPECT_EQ(LiveBlocks(), 3u);
}

TEST_P(StyleDamage, EveryPrefix) {
  for (uint32_t n = 0; n <= kSlot; ++n) Try(Bytes(whole_.begin(), whole_.begin() + n), table_bytes_);
}

TEST_P(StyleDamage, EveryByte) {
  for (uint32_t at = 0; at < kSlot; ++at) {
    for (uint8_t value : kSpoilt) {
      Bytes stream = whole_;
      stream[at] = value;
      Try(stream, table_bytes_);
    }
  }
}

TEST_P(StyleDamage, EveryByteOfTheTable) {
  for (size_t at = 0; at < table_bytes_.size(); ++at) {
    for (uint8_t value : kSpoilt) {
      Bytes table = table_bytes_;
      table[at] = value;
      Try(whole_, table);
    }
  }
}

TEST_P(StyleDamage, AJumpFromEveryRecordToEveryPlace) {
  for (uint32_t at = 0; at + kJumpSize <= kSlot; at += 7) {
    for (uint32_t target = 0; target < kSlot + 16; target += 13) {
      Bytes stream = whole_;
      const Bytes jump = StreamBuilder().Detour(target).Stream();
      std::copy(jump.begin(), jump.end(), stream.begin() + at);
      Try(stream, table_bytes_);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Generations, StyleDamage, ::testing::Values(kBiff5, kBiff8));

}  // namespace
