// Format catalogue: counts, item blocks, softened texts, the translation of format indices, and what is left
// when the pool refuses.
#include "query/format_catalogue.h"

#include "support/book_fixture.h"
#include "support/made_record.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

// Globals with the style records, and a sheet.
class FormatCatalogue : public BookTest {
 protected:
  static StreamBuilder Styles(uint8_t version = 6) { return StreamBuilder().Bof(version); }
  void LoadStyles(StreamBuilder& stream, int32_t version) {
    stream.Sheet("Data").Eof().Bof(static_cast<uint8_t>(version), kWorksheet).Dimensions(0, 4, 0, 4).Eof();
    Load(stream, version);
  }
  uint16_t Count(int16_t kind) { return XLGetNumFormatItems(buffer_, table_, kind); }
  // The item in an element, and its bytes from the length on.
  static uint32_t Item(TestArray& items, LONG index) { return static_cast<uint32_t>(items.NumberAt(index)); }
  static std::string ImageOf(TestArray& items, LONG index) {
    return Trimmed(BlockContents(Item(items, index), U16At(OpenBlock(Item(items, index)), 0) + 2u));
  }
  // Fills every free slot up to 33000 bytes with "?", so that what an item leaves alone, or overruns, shows.
  static void SpoilFreeSlots() {
    for (int32_t size : {256, 512, 1024, 33000}) {
      uint32_t block = MEMORYALLOC(size);
      MEMORYSET1(&block, static_cast<int32_t>(MEMORYALLOCSIZE(block)), '?');
      MEMORYFREE(&block);
    }
  }
  static std::string Trimmed(const Bytes& bytes) {
    std::string text = Hex(bytes);
    text.pop_back();
    return text;
  }
  // Four bytes behind the `used` ones of a block.
  static Bytes Behind(uint32_t item, uint32_t used) {
    const Bytes all = BlockContents(item, used + 4);
    return Bytes(all.end() - 4, all.end());
  }
  // The softened form of a BIFF5 format's text.
  std::string Softened(std::string_view text) {
    MEMORYFREEALL();
    StreamBuilder stream = Styles(5);
    LoadStyles(stream.Record(0x041E, Format(164, text)), kBiff5);
    TestArray items(VT_I4, 0, 17);
    EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 2), 10);
    const Block item = OpenBlock(Item(items, 0));
    return std::string(reinterpret_cast<const char*>(item.base) + 2, U16At(item, 0));
  }
  static Bytes Format(uint16_t index, std::string_view text) {
    return U16(index) + Bytes{static_cast<uint8_t>(text.size())} + Text(text);
  }
  static Bytes Xf(uint16_t font, uint16_t format) { return U16(font) + U16(format) + Bytes(12, 0x5A); }
};

TEST_F(FormatCatalogue, Counts_OfEachKindInEachGeneration) {
  for (uint8_t version : {uint8_t{5}, uint8_t{6}}) {
    MEMORYFREEALL();
    StreamBuilder stream = Styles(version).Record(0x0031, Bytes(15)).Record(0x0231, Bytes(15));
    stream.Record(0x041E, Format(164, "0")).Record(0x00E0, Xf(0, 0)).Record(0x0043, Bytes(12));
    stream.Record(0x1031, Bytes(15)).Record(0x0092, U16(3) + Bytes(12)).Record(0x0092, U16(2) + Bytes(8));
    LoadStyles(stream, version);
    EXPECT_EQ(Count(kKindXf), 2);
    EXPECT_EQ(Count(kKindFont), 3);
    EXPECT_EQ(Count(kKindFormat), version == 5 ? 18 : 37);
    EXPECT_EQ(Count(kKindPalette), 2);
    EXPECT_EQ(Count(4), 0);
    EXPECT_EQ(Count(-1), 0);
    EXPECT_EQ(XLGetNumFormatItems(0, table_, 2), 0);
    EXPECT_EQ(XLGetNumFormatItems(buffer_, 0, 2), 0);
    EXPECT_EQ(LiveBlocks(), 2u);
  }
}

TEST_F(FormatCatalogue, Counts_GoByTheLowByte_InTheGlobalsAlone) {
  StreamBuilder stream = Styles();
  for (uint16_t low : {uint16_t{0xE0}, uint16_t{0x43}, uint16_t{0x31}, uint16_t{0x1E}, uint16_t{0x92}}) {
    stream.Record(static_cast<uint16_t>(0x1000 | low), U16(9) + Bytes(20));
    stream.Record(static_cast<uint16_t>(0xEF00 | low), U16(7) + Bytes(20));
  }
  stream.Sheet("Data").Eof().Bof(6, kWorksheet).Dimensions(0, 4, 0, 4);
  for (uint16_t type :
       {uint16_t{0x00E0}, uint16_t{0x0043}, uint16_t{0x0031}, uint16_t{0x041E}, uint16_t{0x92}})
    stream.Record(type, Bytes(20));
  Load(stream.Eof());
  EXPECT_EQ(Count(kKindXf), 2);
  EXPECT_EQ(Count(kKindFont), 2);
  EXPECT_EQ(Count(kKindFormat), 37);
  EXPECT_EQ(Count(kKindPalette), 7);
}

TEST_F(FormatCatalogue, EmptyGlobals_HaveTheBuiltinFormatsAlone) {
  for (int32_t version : {0, kBiff5, kBiff8}) {
    MEMORYFREEALL();
    StreamBuilder stream = Styles();
    LoadStyles(stream, kBiff8);
    BiffVersion = version;
    PutTableEntry(Table(), kTableFirstSheet, kEofSize);
    EXPECT_EQ(Count(kKindXf), 0);
    EXPECT_EQ(Count(kKindFont), 0);
    EXPECT_EQ(Count(kKindFormat), version == kBiff5 ? 17 : version == kBiff8 ? 36 : 0);
  }
}

TEST_F(FormatCatalogue, Data_WithoutItems_Gives1) {
  StreamBuilder stream = Styles();
  LoadStyles(stream, kBiff8);
  TestArray items(VT_I4, 0, 1);
  for (int16_t kind : {int16_t{0}, int16_t{1}, int16_t{3}, int16_t{4}})
    EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, kind), 1) << kind;
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, 0, 2), 1);
  EXPECT_EQ(XLGetFormatData(items.Ref(), 0, table_, 2), 1);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(FormatCatalogue, ArrayThatDoesNotFit_Gives4Or5_AndXfsLeaveTheFormatListBehind) {
  StreamBuilder stream = Styles().Record(0x0031, Bytes(15)).Record(0x00E0, Xf(0, 0)).Record(0x00E0, Xf(0, 0));
  LoadStyles(stream, kBiff8);
  TestArray two(VT_I4, 0, 1, 0, 1), from_one(VT_I4, 1, 1), longer(VT_I4, 0, 2);
  SAFEARRAY* none = nullptr;
  EXPECT_EQ(XLGetFormatData(two.Ref(), buffer_, table_, 1), 4);
  EXPECT_EQ(XLGetFormatData(&none, buffer_, table_, 1), 4);
  EXPECT_EQ(XLGetFormatData(nullptr, buffer_, table_, 1), 4);
  EXPECT_EQ(XLGetFormatData(from_one.Ref(), buffer_, table_, 1), 5);
  EXPECT_EQ(XLGetFormatData(longer.Ref(), buffer_, table_, 1), 5);
  EXPECT_EQ(LiveBlocks(), 2u);
  const uint32_t before = BytesInUse();
  EXPECT_EQ(XLGetFormatData(two.Ref(), buffer_, table_, 0), 4);
  EXPECT_EQ(LiveBlocks(), 3u);
  EXPECT_EQ(BytesInUse(), before + 2 * 36) << "two bytes a format";
  EXPECT_EQ(XLGetFormatData(longer.Ref(), buffer_, table_, 0), 5);
  EXPECT_EQ(LiveBlocks(), 4u);
}

TEST_F(FormatCatalogue, Fonts_PassOverElement4) {
  StreamBuilder stream = Styles();
  for (uint8_t i = 0; i < 6; ++i) stream.Record(0x0031, Bytes{i, 0, 0x77});
  LoadStyles(stream, kBiff8);
  TestArray items(VT_I4, 0, 6);
  items.SetNumber(4, 0, 77);
  EXPECT_EQ(Count(kKindFont), 7);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(ImageOf(items, 0), "03 00 00 00 77");
  EXPECT_EQ(MEMORYSIZE(Item(items, 0)), 5u);
  EXPECT_EQ(ImageOf(items, 3), "03 00 03 00 77");
  EXPECT_EQ(items.NumberAt(4), 77);
  EXPECT_EQ(ImageOf(items, 5), "03 00 04 00 77");
  EXPECT_EQ(ImageOf(items, 6), "03 00 05 00 77");
  EXPECT_EQ(LiveBlocks(), 8u);
}

TEST_F(FormatCatalogue, OneFont_HasAnElementThatIsNotTouched) {
  StreamBuilder stream = Styles().Record(0x0031, Bytes{1, 2});
  LoadStyles(stream, kBiff8);
  TestArray items(VT_I4, 0, 1);
  items.SetNumber(1, 0, 77);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(ImageOf(items, 0), "02 00 01 02");
  EXPECT_EQ(items.NumberAt(1), 77);
}

TEST_F(FormatCatalogue, Formats_AreSoftened) {
  EXPECT_EQ(Softened("#?*x"), "#0 x");
  EXPECT_EQ(Softened("?_)0"), "0  0");
  EXPECT_EQ(Softened("\\?\\*\\_)"), "\\?\\*\\_)");
  EXPECT_EQ(Softened("0_)"), "0  ");
  EXPECT_EQ(Softened("0_"), "0 ");
  EXPECT_EQ(Softened("_\\?"), "  0") << "a backslash that became a blank protects nothing";
  EXPECT_EQ(Softened("_?*"), "   ");
  EXPECT_EQ(Softened("?"), "0");
  EXPECT_EQ(Softened("*"), " ");
  EXPECT_EQ(Softened("_"), " ");
  EXPECT_EQ(Softened("\\\\?"), "\\\\?") << "the backslash in front is what counts, whatever is before it";
  EXPECT_EQ(Softened(""), "");
}

TEST_F(FormatCatalogue, Formats_OfBiff8_KeepTheHighByteAndTheFlags) {
  StreamBuilder stream = Styles().Record(0x041E, U16(164) + U16(2) + Bytes{0} + Text("0?"));
  LoadStyles(stream, kBiff8);
  TestArray items(VT_I4, 0, 36);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 2), 10);
  EXPECT_EQ(ImageOf(items, 0), "04 00 00 00 30 30");
}

TEST_F(FormatCatalogue, Formats_TakeTheirOwnBytes_AndNoneBehind) {
  for (std::string_view text : {"", "0", "0_", "?_"}) {
    MEMORYFREEALL();
    StreamBuilder stream = Styles(5).Record(0x041E, Format(164, text));
    LoadStyles(stream.Record(0x0042, Bytes(4, '?')), kBiff5);
    SpoilFreeSlots();
    TestArray items(VT_I4, 0, 17);
    EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 2), 10);
    const uint32_t used = static_cast<uint32_t>(text.size()) + 2;
    EXPECT_EQ(MEMORYSIZE(Item(items, 0)), used);
    EXPECT_EQ(Hex(Behind(Item(items, 0), used)), Hex(Bytes(4, '?'))) << text;
  }
}

TEST_F(FormatCatalogue, FormatShorterThanItsFields_HasALengthBelowZero) {
  for (uint16_t length = 0; length <= 3; ++length) {
    MEMORYFREEALL();
    StreamBuilder stream = Styles().Record(0x041E, Bytes(length, '?'));
    LoadStyles(stream, kBiff8);
    TestArray items(VT_I4, 0, 36);
    EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 2), 10);
    EXPECT_EQ(U16At(OpenBlock(Item(items, 0)), 0), static_cast<uint16_t>(length - 3));
    EXPECT_EQ(MEMORYSIZE(Item(items, 0)), static_cast<uint32_t>(length - 1));
    EXPECT_EQ(LiveBlocks(), 9u);
  }
}

TEST_F(FormatCatalogue, BuiltinFormats_FillTheEnd_AsFarAsThePoolReaches) {
  StreamBuilder stream = Styles(5);
  LoadStyles(stream, kBiff5);
  TestArray items(VT_I4, 0, 16);
  items.SetNumber(7, 0, 77);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 2), 10);
  EXPECT_EQ(ImageOf(items, 0), "01 00 30");
  EXPECT_EQ(ImageOf(items, 4), Trimmed(U16(14) + Text("#,##0 ;(#,##0)")));
  EXPECT_EQ(ImageOf(items, 6), Trimmed(U16(20) + Text("#,##0.00 ;(#,##0.00)")));
  EXPECT_EQ(MEMORYSIZE(Item(items, 6)), 22u);
  EXPECT_EQ(items.NumberAt(7), 77);
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_F(FormatCatalogue, Xfs_NameTheirFormatByItsPlaceInTheList) {
  StreamBuilder stream = Styles().Record(0x041E, Format(164, "0")).Record(0x041E, Format(5, "1"));
  stream.Record(0x00E0, Xf(6, 164))
      .Record(0x00E0, Xf(7, 5))
      .Record(0x00E0, Xf(8, 0))
      .Record(0x00E0, Xf(9, 49));
  LoadStyles(stream.Record(0x00E0, Xf(10, 30) + Bytes(4, 0x66)), kBiff8);
  TestArray items(VT_I4, 0, 4);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 0), 0);
  const std::string rest = " 5A 5A 5A 5A 5A 5A 5A 5A 5A 5A 5A 5A";
  EXPECT_EQ(ImageOf(items, 0), "10 00 06 00 01 00" + rest);
  EXPECT_EQ(ImageOf(items, 1), "10 00 07 00 02 00" + rest) << "the first that equals it";
  EXPECT_EQ(ImageOf(items, 2), "10 00 08 00 03 00" + rest);
  EXPECT_EQ(ImageOf(items, 3), "10 00 09 00 26 00" + rest);
  EXPECT_EQ(ImageOf(items, 4), "14 00 0A 00 00 00" + rest + " 66 66 66 66");
  EXPECT_EQ(LiveBlocks(), 7u) << "the format list is released";
}

TEST_F(FormatCatalogue, OlderXfs_AreWidened) {
  const Bytes rest12 = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  StreamBuilder stream = Styles(5).Record(0x0043, Bytes{0x07, 0x01} + rest12);
  stream.Record(0x0043, Bytes{0xFF, 0x01} + rest12);
  LoadStyles(stream.Record(0x0043, Bytes{0x07, 0x01, 0xA1, 0xA2, 0xA3, 0xA4}), kBiff5);
  TestArray items(VT_I4, 0, 2);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 0), 0);
  EXPECT_EQ(ImageOf(items, 0), "10 00 07 00 08 00 01 02 03 04 05 06 07 08 09 0A 0B 0C");
  EXPECT_EQ(ImageOf(items, 1), "10 00 FF 00 00 00 01 02 03 04 05 06 07 08 09 0A 0B 0C");
  EXPECT_EQ(ImageOf(items, 2), "06 00 07 00 02 00 A1 A2");
  EXPECT_EQ(Trimmed(BlockContents(Item(items, 2), 10)), "06 00 07 00 02 00 A1 A2 A3 A4");
}

TEST_F(FormatCatalogue, OlderXfs_OfOtherLengths_AreWidenedAndTranslated) {
  for (uint16_t length : {uint16_t{0}, uint16_t{1}, uint16_t{2}, uint16_t{3}, uint16_t{13}, uint16_t{15}}) {
    MEMORYFREEALL();
    // What a record too short for font and format lacks comes from the record behind it: 42, 00.
    Bytes payload = Bytes{0x07, 0x02} + Bytes(13, 0xA5);
    payload.resize(length);
    StreamBuilder stream = Styles(5).Record(0x00E0, payload);
    LoadStyles(stream.Record(0x0042, Bytes(4, '?')), kBiff5);
    SpoilFreeSlots();
    TestArray items(VT_I4, 0, 0);
    EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 0), 0);
    const Bytes font = {static_cast<uint8_t>(length > 0 ? 0x07 : 0x42), 0};
    const uint16_t place = length > 1 ? 3 : length == 1 ? 0 : 1;
    const Bytes rest(length > 2 ? length - 2u : 0u, 0xA5);
    const Bytes wanted = U16(length) + font + U16(place) + rest;
    const uint32_t used = static_cast<uint32_t>(wanted.size());
    EXPECT_EQ(MEMORYSIZE(Item(items, 0)), length + 4u);
    EXPECT_EQ(Hex(BlockContents(Item(items, 0), used)), Hex(wanted)) << length;
    EXPECT_EQ(Hex(Behind(Item(items, 0), used)), Hex(Bytes(4, '?'))) << length;
  }
}

TEST_F(FormatCatalogue, LengthTellsTheForm_AndTheTypeDoesNot) {
  StreamBuilder stream = Styles(5).Record(0x0043, Xf(6, 1));
  LoadStyles(stream.Record(0x00E0, Bytes{0x07, 0x01} + Bytes(12, 0x5A)), kBiff5);
  TestArray items(VT_I4, 0, 1);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 0), 0);
  const std::string rest = " 5A 5A 5A 5A 5A 5A 5A 5A 5A 5A 5A 5A";
  EXPECT_EQ(ImageOf(items, 0), "10 00 06 00 02 00" + rest);
  EXPECT_EQ(ImageOf(items, 1), "10 00 07 00 08 00" + rest);
  EXPECT_EQ(MEMORYSIZE(Item(items, 0)), 18u);
  EXPECT_EQ(MEMORYSIZE(Item(items, 1)), 18u);
}

TEST_F(FormatCatalogue, LongXfsAndHighFormatIndices_AreTranslatedToo) {
  StreamBuilder stream = Styles().Record(0x041E, Format(0xFFA4, "0")).Record(0x041E, Format(0x0105, "1"));
  stream.Record(0x00E0, U16(1) + U16(0xFFA4) + Bytes(0x110 - 4));
  LoadStyles(stream.Record(0x00E0, U16(2) + U16(0x0105) + Bytes(0x8010 - 4)), kBiff8);
  TestArray items(VT_I4, 0, 1);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 0), 0);
  EXPECT_EQ(Hex(BlockContents(Item(items, 0), 6)), Hex(Bytes{0x10, 0x01, 1, 0, 1, 0}));
  EXPECT_EQ(Hex(BlockContents(Item(items, 1), 6)), Hex(Bytes{0x10, 0x80, 2, 0, 2, 0}));
}

TEST_F(FormatCatalogue, HighFormatIndex_IsNotTakenForItsLowByte) {
  StreamBuilder stream = Styles().Record(0x041E, Format(0x0205, "0"));
  LoadStyles(stream.Record(0x00E0, Xf(1, 5)).Record(0x00E0, Xf(1, 0x0305)).Record(0x00E0, Xf(1, 0x3F3F)),
             kBiff8);
  SpoilFreeSlots();
  TestArray items(VT_I4, 0, 2);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 0), 0);
  EXPECT_EQ(U16At(OpenBlock(Item(items, 0)), 4), 7) << "the built-in format 5, behind the one record";
  EXPECT_EQ(U16At(OpenBlock(Item(items, 1)), 4), 0);
  EXPECT_EQ(U16At(OpenBlock(Item(items, 2)), 4), 0) << "what stands behind the list is no part of it";
}

TEST_F(FormatCatalogue, Xfs_WithoutRoomForTheFormatList_Give21) {
  StreamBuilder stream = Styles().Record(0x00E0, Xf(0, 0));
  LoadStyles(stream, kBiff8);
  TestArray items(VT_I4, 0, 0);
  FillPool(9);
  EXPECT_EQ(XLGetFormatData(nullptr, buffer_, table_, 0), 21);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 0), 21);
}

TEST_F(FormatCatalogue, MoreItemsThanBlocks_Gives8_AndWhatWasPutStands) {
  StreamBuilder stream = Styles();
  for (int i = 0; i < 8; ++i) stream.Record(0x00E0, Xf(static_cast<uint16_t>(i), 0));
  LoadStyles(stream, kBiff8);
  TestArray items(VT_I4, 0, 7);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 0), 8);
  EXPECT_EQ(U16At(OpenBlock(Item(items, 5)), 2), 5);
  EXPECT_EQ(items.NumberAt(6), 0);
  EXPECT_EQ(LiveBlocks(), 9u) << "two of the workbook, the format list, six items";
}

TEST_F(FormatCatalogue, MoreFontsOrFormatsThanBlocks_Gives8) {
  for (int16_t kind : {kKindFont, kKindFormat}) {
    MEMORYFREEALL();
    StreamBuilder stream = Styles(5);
    for (uint8_t i = 0; i < 8; ++i) stream.Record(kind == kKindFont ? 0x0031 : 0x041E, Bytes{i, 1, 0});
    LoadStyles(stream, kBiff5);
    TestArray items(VT_I4, 0, Count(kind) - 1);
    const LONG seventh = kind == kKindFont ? 7 : 6;
    EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, kind), 8);
    EXPECT_NE(items.NumberAt(seventh), 0);
    EXPECT_EQ(items.NumberAt(seventh + 1), 0);
    EXPECT_EQ(LiveBlocks(), 9u) << "two of the workbook, seven items";
  }
}

TEST_F(FormatCatalogue, ItemsBehindAPatch_AreCountedAndRead) {
  StreamBuilder stream = Styles();
  const uint32_t detour = stream.Here();
  stream.Record(0x0042, Bytes(4)).Record(0x0031, Bytes{2, 0});
  LoadStyles(stream, kBiff8);
  const Bytes patch = StreamBuilder().Record(0x0031, Bytes{1, 0}).Stream();
  ASSERT_EQ(PatchRecord(&buffer_, patch.data(), detour, static_cast<uint32_t>(patch.size()), &size_), 0);
  TestArray items(VT_I4, 0, 2);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(ImageOf(items, 0), "02 00 01 00");
  EXPECT_EQ(ImageOf(items, 1), "02 00 02 00");
}

TEST_F(FormatCatalogue, Palette_ChecksTheArray_AndMakesNothing) {
  StreamBuilder stream = Styles().Record(0x0092, U16(2) + Bytes(8, 9));
  LoadStyles(stream, kBiff8);
  TestArray items(VT_I4, 0, 1), longer(VT_I4, 0, 2);
  items.SetNumber(0, 0, 77);
  EXPECT_EQ(XLGetFormatData(items.Ref(), buffer_, table_, 3), 0);
  EXPECT_EQ(items.NumberAt(0), 77);
  EXPECT_EQ(XLGetFormatData(longer.Ref(), buffer_, table_, 3), 5);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(FormatCatalogue, ItemsThatTheArrayRefuses_AreReleased) {
  StreamBuilder stream = Styles().Record(0x0031, Bytes(15));
  LoadStyles(stream, kBiff8);
  TestArray texts(VT_BSTR, 0, 1);
  EXPECT_EQ(XLGetFormatData(texts.Ref(), buffer_, table_, 1), 0);
  EXPECT_EQ(LiveBlocks(), 2u);
  TestArray formats(VT_BSTR, 0, 35);
  EXPECT_EQ(XLGetFormatData(formats.Ref(), buffer_, table_, 2), 0) << "so that all 36 can be made";
  EXPECT_EQ(LiveBlocks(), 2u);
}

}  // namespace
