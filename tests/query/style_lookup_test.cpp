// Style lookup: what is found, what is added and where, and what is left when it fails.
#include "query/style_lookup.h"
#include "query/format_catalogue.h"
#include "workbook/refresh.h"

#include <functional>

#include "foundation/biff_records.h"
#include "support/book_fixture.h"
#include "support/made_record.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

Bytes FontPayload(std::string_view name, uint8_t flags = 0, uint16_t height = 200) {
  return U16(height) + Bytes{flags, 0} + U16(8) + U16(400) + U16(0) + Bytes{0, 0, 0, 0x44} +
         Bytes{static_cast<uint8_t>(name.size())} + Text(name);
}
Bytes FormatPayload(uint16_t index, std::string_view text) {
  return U16(index) + Bytes{static_cast<uint8_t>(text.size())} + Text(text);
}
Bytes XfPayload(uint16_t font, uint16_t format, uint16_t options, uint16_t alignment, uint16_t colours) {
  return U16(font) + U16(format) + U16(options) + U16(alignment) + U16(colours) + Bytes(6);
}
StreamBuilder& CloseBook(StreamBuilder& globals, uint8_t version = 5) {
  return globals.Sheet("Data").Eof().Bof(version, kWorksheet).Dimensions(0, 4, 0, 4).Eof();
}

constexpr FontValues kPlain = {0, 200, 400, 0, 0, 0};

class StyleLookup : public BookTest {
 protected:
  static StreamBuilder Fonts(std::initializer_list<std::string_view> names) {
    StreamBuilder stream = StreamBuilder().Bof(5);
    for (std::string_view name : names) stream.Record(0x0031, FontPayload(name));
    return stream;
  }
  // Loads it with plenty of room, so that patches do not move it.
  void LoadBook(StreamBuilder& globals, int32_t version = kBiff5) {
    BiffVersion = version;
    buffer_ = CloseBook(globals, static_cast<uint8_t>(version)).Load(&size_);
    buffer_ = MEMORYREALLOC(buffer_, 100000);
    ASSERT_EQ(XLLocateSheets(buffer_, &table_, size_), 0);
  }
  void LoadBook(StreamBuilder&& globals, int32_t version = kBiff5) { LoadBook(globals, version); }
  // Takes every slot but one of `capacity` bytes.
  static void FreeOnly(uint32_t capacity) {
    uint32_t kept = 0;
    while (LiveBlocks() < 9) {
      const uint32_t block = MEMORYALLOC(1);
      if (kept == 0 && MEMORYALLOCSIZE(block) == capacity) kept = block;
    }
    ASSERT_EQ(MEMORYFREE(&kept), 1);
  }
  int16_t Font(const char* name, const FontValues& font = kPlain) {
    return XLGetFont(&buffer_, table_, &size_, name, font);
  }
  int16_t Format(const char* text) { return XLGetFormat(&buffer_, table_, &size_, text); }
  int16_t Xf(const XfIndValues& xf) { return XLGetXFInd(&buffer_, table_, &size_, xf); }
  int16_t FullXf(const XfValues& xf, uint16_t locked = 1, uint16_t hidden = 0) {
    return XLGetXFIndFull(&buffer_, table_, &size_, xf, locked, hidden);
  }
  Bytes Image() const { return BlockContents(buffer_, size_); }
  // What the walk reads, but for the sheets' offsets.
  void ExpectReadsAs(StreamBuilder& globals) {
    EXPECT_EQ(Hex(WithoutSheet(WalkedStream(buffer_))), Hex(WithoutSheet(CloseBook(globals).Stream())));
    EXPECT_EQ(LiveBlocks(), 2u);
  }
  void ExpectReadsAs(StreamBuilder&& globals) { ExpectReadsAs(globals); }
  static Bytes WithoutSheet(Bytes stream) {
    for (size_t i = 0; i + 8 < stream.size(); ++i) {
      if (stream[i] == 0x85 && stream[i + 1] == 0 && stream[i + 2] == 12) {
        for (size_t k = 4; k < 8; ++k) stream[i + k] = 0;
      }
    }
    return stream;
  }
};

TEST_F(StyleLookup, Font_IsFound_AndTheFifthIsFive) {
  LoadBook(Fonts({"A", "B", "C", "D", "E", "F"}));
  const Bytes before = Image();
  EXPECT_EQ(Font("A"), 0);
  EXPECT_EQ(Font("D"), 3);
  EXPECT_EQ(Font("E"), 5);
  EXPECT_EQ(Font("F"), 6);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(StyleLookup, Font_EachAttributeCounts) {
  const FontValues kOthers[] = {{1, 200, 400, 0, 0, 0}, {0, 201, 400, 0, 0, 0}, {0, 200, 401, 0, 0, 0},
                                {0, 200, 400, 1, 0, 0}, {0, 200, 400, 0, 1, 0}, {0, 200, 400, 0, 0, 1}};
  for (const FontValues& other : kOthers) {
    LoadBook(Fonts({"A", "B", "C", "D", "E"}));
    const uint32_t before = size_;
    EXPECT_EQ(Font("E", other), 6);
    EXPECT_GT(size_, before);
    const uint32_t after = size_;
    EXPECT_EQ(Font("E", other), 6) << "the second lookup adds nothing";
    EXPECT_EQ(size_, after);
    EXPECT_EQ(Font("EE"), 7);
    MEMORYFREEALL();
  }
}

TEST_F(StyleLookup, Font_IsAddedBehindTheRun_AlsoInAPatchedBuffer) {
  LoadBook(Fonts({"A", "B", "C", "D"}).Record(0x041E, FormatPayload(164, "0")).Record(0x0031, Bytes(15)));
  EXPECT_EQ(Font("Arial", {2, 240, 700, 1, 0x21, 1}), 5);
  EXPECT_EQ(Font("B2"), 6);
  EXPECT_EQ(Font("Arial", {2, 240, 700, 1, 0x21, 1}), 5);
  EXPECT_EQ(Font("B2"), 6);
  StreamBuilder wanted = Fonts({"A", "B", "C", "D"});
  wanted.Record(
      0x0031, U16(240) + U16(10) + U16(10) + U16(700) + U16(0) + Bytes{0x21, 0, 0, 0x44, 5} + Text("Arial"));
  wanted.Record(0x0031, FontPayload("B2")).Record(0x041E, FormatPayload(164, "0"));
  ExpectReadsAs(wanted.Record(0x0031, Bytes(15)));
}

TEST_F(StyleLookup, Font_Flags) {
  LoadBook(Fonts({"A"}));
  Font("I", {0, 200, 400, 1, 0, 0});
  Font("S", {0, 200, 400, 0, 0, 1});
  Font("N", kPlain);
  StreamBuilder wanted = Fonts({"A"}).Record(0x0031, FontPayload("I", 2)).Record(0x0031, FontPayload("S", 8));
  ExpectReadsAs(wanted.Record(0x0031, FontPayload("N")));
}

TEST_F(StyleLookup, Font_ItalicTwo_NeverMatches_AndIsMadeItalic) {
  StreamBuilder stream = StreamBuilder().Bof(5).Record(0x0031, FontPayload("A", 2));
  LoadBook(stream.Record(0x0031, FontPayload("A", 8)));
  EXPECT_EQ(Font("A", {0, 200, 400, 2, 0, 0}), 3);
  EXPECT_EQ(Font("A", {0, 200, 400, 2, 0, 0}), 4);
  EXPECT_EQ(Font("A", {0, 200, 400, 0, 0, 2}), 5);
  StreamBuilder wanted = StreamBuilder().Bof(5).Record(0x0031, FontPayload("A", 2));
  wanted.Record(0x0031, FontPayload("A", 8)).Record(0x0031, FontPayload("A", 2));
  ExpectReadsAs(wanted.Record(0x0031, FontPayload("A", 2)).Record(0x0031, FontPayload("A", 8)));
}

TEST_F(StyleLookup, Font_AddedToFewerThanFour_GivesOneTooMany_AndThenTheTrueIndex) {
  LoadBook(Fonts({"A"}));
  EXPECT_EQ(Font("B"), 2);
  EXPECT_EQ(Font("B"), 1);
}

TEST_F(StyleLookup, Font_IntoGlobalsWithoutOne_StandsBeforeTheirEnd_AndIsFoundAgain) {
  LoadBook(Fonts({}));
  EXPECT_EQ(Font("B"), 1);
  EXPECT_EQ(Font("B"), 0);
  StreamBuilder wanted = StreamBuilder().Bof(5).Sheet("Data");
  wanted.Record(0x0031, FontPayload("B")).Eof();
  wanted.Bof(5, kWorksheet).Dimensions(0, 4, 0, 4).Eof();
  EXPECT_EQ(Hex(WithoutSheet(WalkedStream(buffer_))), Hex(WithoutSheet(wanted.Stream())));
}

TEST_F(StyleLookup, Font_UnderlineBeyondAByte_NeverMatches_AndItsLowByteIsMade) {
  LoadBook(Fonts({"A"}));
  EXPECT_EQ(Font("A", {0, 200, 400, 0, 0x100, 0}), 2);
  ExpectReadsAs(Fonts({"A", "A"}));
}

TEST_F(StyleLookup, Font_ColourIsSignedIn16Bits) {
  StreamBuilder stream = StreamBuilder().Bof(5);
  LoadBook(stream.Record(0x0031, U16(200) + U16(0) + U16(0x7FFF) + U16(400) + U16(0) + Bytes{0, 0, 0, 0, 0}));
  EXPECT_EQ(Font("", {0x7FF7, 200, 400, 0, 0, 0}), 0);
}

TEST_F(StyleLookup, Font_EmptyName_Matches_AndALongOneIsFoundAgain) {
  LoadBook(Fonts({"", "A"}));
  EXPECT_EQ(Font(""), 0);
  const std::string name(300, 'x');
  EXPECT_EQ(Font(name.c_str()), 3);
  EXPECT_EQ(Font(name.c_str()), 2);
}

TEST_F(StyleLookup, Font_NamesWhoseLengthsShareALowByte_AreToldApart) {
  const std::string name(300, 'x');
  const std::string beginning = name.substr(0, 300 - 256);
  LoadBook(Fonts({"A", beginning}));
  EXPECT_EQ(Font(name.c_str()), 3);
  EXPECT_EQ(Font(name.c_str()), 2);
  EXPECT_EQ(Font(beginning.c_str()), 1);
}

TEST_F(StyleLookup, TextTooLongForARecord_GivesMinusFour_AndTheRecordStays) {
  LoadBook(Fonts({"A"}).Record(0x041E, FormatPayload(164, "0")).Record(0x00E0, Bytes(16)));
  const std::string longest(32767 - 19, 'x');
  EXPECT_EQ(Font(longest.c_str()), 2);
  const Bytes before = Image();
  uint32_t live = 2;
  for (size_t length : {size_t{32767 - 18}, size_t{65517}, size_t{70000}}) {
    const std::string text(length, 'y');
    EXPECT_EQ(Font(text.c_str()), -4) << length;
    EXPECT_EQ(LiveBlocks(), ++live);
  }
  MEMORYFREEALL();
  LoadBook(Fonts({"A"}).Record(0x041E, FormatPayload(164, "0")).Record(0x00E0, Bytes(16)));
  EXPECT_EQ(Format(std::string(70000, 'y').c_str()), -4);
  EXPECT_EQ(LiveBlocks(), 3u);
  EXPECT_EQ(Format(std::string(32767 - 7, 'y').c_str()), 254);
}

TEST_F(StyleLookup, Font_ComparesWholeFields_AndNoOthers) {
  const FontValues odd = {0x7FF8, 0xFFC8, 0x8190, 0, 0x21, 0};
  const Bytes payload = U16(0xFFC8) + Bytes{0xF5, 0xFF} + U16(0x8000) + U16(0x8190) + U16(0xFFFF) +
                        Bytes{0x21, 0xFF, 0xFF, 0xFF, 1, 'A'};
  LoadBook(StreamBuilder().Bof(5).Record(0x0231, payload).Record(0x0042, Bytes(8)));
  EXPECT_EQ(Font("A", odd), 0);
  FontValues lower = odd;
  lower.height = 0x00C8;
  EXPECT_EQ(Font("A", lower), 2);
  lower = odd;
  lower.boldness = 0x0190;
  EXPECT_EQ(Font("A", lower), 3);
  EXPECT_EQ(Font("B", odd), 4);
}

TEST_F(StyleLookup, Format_IsFoundByItsText) {
  StreamBuilder stream = StreamBuilder().Bof(5).Record(0x041E, FormatPayload(164, "0.0"));
  LoadBook(stream.Record(0x041E, FormatPayload(77, "0.00")).Record(0x041E, FormatPayload(78, "0.00")));
  const Bytes before = Image();
  EXPECT_EQ(Format("0.0"), 164);
  EXPECT_EQ(Format("0.00"), 77);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(StyleLookup, Format_IsNumberedFrom254Down_AndASecondLookupAddsNothing) {
  StreamBuilder stream = StreamBuilder().Bof(5).Record(0x041E, FormatPayload(164, "a"));
  LoadBook(stream.Record(0x041E, FormatPayload(254, "b")).Record(0x00E0, Bytes(16)));
  EXPECT_EQ(Format("0.000"), 253);
  EXPECT_EQ(Format("yy"), 252);
  const uint32_t size = size_;
  EXPECT_EQ(Format("0.000"), 253);
  EXPECT_EQ(Format("yy"), 252);
  EXPECT_EQ(size_, size);
  StreamBuilder wanted = StreamBuilder().Bof(5).Record(0x041E, FormatPayload(164, "a"));
  wanted.Record(0x041E, FormatPayload(254, "b")).Record(0x041E, FormatPayload(253, "0.000"));
  ExpectReadsAs(wanted.Record(0x041E, FormatPayload(252, "yy")).Record(0x00E0, Bytes(16)));
}

TEST_F(StyleLookup, Format_IndicesAreWholeWords) {
  StreamBuilder stream = StreamBuilder().Bof(5).Record(0x041E, FormatPayload(0x01FE, "a"));
  LoadBook(stream.Record(0x041E, FormatPayload(0x8001, "b")).Record(0x00E0, Bytes(16)));
  EXPECT_EQ(Format("a"), 0x01FE);
  EXPECT_EQ(Format("b"), -32767);
  EXPECT_EQ(Format("c"), 254) << "510 is not 254";
}

TEST_F(StyleLookup, Format_FirstOneCounts_AsTheOthersDo) {
  LoadBook(StreamBuilder().Bof(5).Record(0x041E, FormatPayload(254, "a")).Record(0x00E0, Bytes(16)));
  EXPECT_EQ(Format("b"), 253);
}

TEST_F(StyleLookup, Format_BehindTheList_NothingIsUsed) {
  LoadBook(StreamBuilder().Bof(5).Record(0x041E, FormatPayload(164, "a")).Record(0x00E0, Bytes(16)));
  uint32_t slot = MEMORYALLOC(512);
  for (uint32_t at = 0; at < 512; at += 2) PutU16(OpenBlock(slot), at, 254);
  MEMORYFREE(&slot);
  EXPECT_EQ(Format("b"), 254);
}

TEST_F(StyleLookup, Format_LongText_IsFoundAgain) {
  LoadBook(StreamBuilder().Bof(5).Record(0x041E, FormatPayload(164, "a")).Record(0x00E0, Bytes(16)));
  const std::string text(300, 'x');
  EXPECT_EQ(Format(text.c_str()), 254);
  EXPECT_EQ(Format(text.c_str()), 254);
  EXPECT_EQ(Format(text.substr(1).c_str()), 253);
}

TEST_F(StyleLookup, Format_BehindTheRun_IsNotTakenForUsed) {
  StreamBuilder stream =
      StreamBuilder().Bof(5).Record(0x041E, FormatPayload(164, "a")).Record(0x00E0, Bytes(16));
  LoadBook(stream.Record(0x041E, FormatPayload(254, "b")));
  EXPECT_EQ(Format("b"), 254);
}

// The list takes two bytes for each of 17 built-in formats and of the records.
TEST_F(StyleLookup, Format_ListTakesTwoBytesAnItem) {
  for (uint16_t records : {uint16_t{239}, uint16_t{240}}) {
    MEMORYFREEALL();
    StreamBuilder stream = StreamBuilder().Bof(5).Record(0x041E, FormatPayload(164, "a"));
    for (uint16_t i = 1; i < records; ++i) stream.Record(0x041E, FormatPayload(i, "x"));
    LoadBook(stream.Record(0x00E0, Bytes(16)));
    FreeOnly(512);
    EXPECT_EQ(Format("a"), records == 239 ? 164 : -21);
  }
}

TEST_F(StyleLookup, Format_WithoutABlockForItsRecord_GivesMinusThree) {
  LoadBook(StreamBuilder().Bof(5).Record(0x041E, FormatPayload(164, "a")).Record(0x00E0, Bytes(16)));
  FreeOnly(512);
  const Bytes before = Image();
  EXPECT_EQ(Format(std::string(506, 'x').c_str()), -3);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 8u) << "the list is released";
  EXPECT_EQ(Format(std::string(505, 'x').c_str()), 254);
}

TEST_F(StyleLookup, Format_AllTaken_EndsAt16_WhichIsUsedAnyway) {
  StreamBuilder stream = StreamBuilder().Bof(5).Record(0x041E, FormatPayload(16, "x"));
  for (uint16_t index = 18; index <= 254; ++index) stream.Record(0x041E, FormatPayload(index, "x"));
  LoadBook(stream);
  EXPECT_EQ(Format("a"), 17);
  EXPECT_EQ(Format("b"), 16);
  EXPECT_EQ(Format("c"), 16);
}

TEST_F(StyleLookup, Format_OfABiff8File_IsNotRecognised) {
  StreamBuilder stream = StreamBuilder().Bof(6).Record(0x041E, U16(164) + U16(1) + Bytes{0} + Text("0"));
  LoadBook(stream, kBiff8);
  EXPECT_EQ(Format("0"), 254);
  EXPECT_EQ(Format("0"), 254);
}

TEST_F(StyleLookup, XfInd_ComparesSixFields_AndNothingElse) {
  StreamBuilder stream = StreamBuilder().Bof(5).Record(0x00E0, XfPayload(5, 6, 1, 0x0321, 0x2041));
  LoadBook(stream.Record(0x0043, U16(5) + U16(6) + U16(0xFFFE) + U16(0x0321) + U16(0x2041) + Bytes(6, 9)));
  const Bytes before = Image();
  EXPECT_EQ(Xf({5, 6, 1, 0, 1, 2, 3, 0x2041}), 0);
  EXPECT_EQ(Xf({5, 6, 0, 1, 1, 2, 3, 0x2041}), 1);
  EXPECT_EQ(Xf({5, 6, 1, 0, 0x21, 0, 3, 0x2041}), 0) << "the word counts, not how it came about";
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(Xf({4, 6, 1, 0, 1, 2, 3, 0x2041}), 2);
  EXPECT_EQ(Xf({5, 7, 1, 0, 1, 2, 3, 0x2041}), 3);
  EXPECT_EQ(Xf({5, 6, 0, 0, 1, 2, 3, 0x2041}), 4);
  EXPECT_EQ(Xf({5, 6, 1, 1, 1, 2, 3, 0x2041}), 5);
  EXPECT_EQ(Xf({5, 6, 1, 0, 1, 2, 4, 0x2041}), 6);
  EXPECT_EQ(Xf({5, 6, 1, 0, 1, 2, 3, 0x2042}), 7);
  EXPECT_EQ(Xf({5, 6, 1, 0, 1, 2, 3, 0x2042}), 7);
}

TEST_F(StyleLookup, XfInd_ComparesWholeFields) {
  StreamBuilder stream = StreamBuilder().Bof(5).Record(0x00E0, XfPayload(0xFFF5, 0xFFF6, 2, 0xFFFF, 0xFFF7));
  LoadBook(stream.Record(0x00E0, XfPayload(0xFFF5, 0xFFF6, 0xFFFD, 0xFFFF, 0xFFF7)).Record(0x0293, Bytes(4)));
  const Bytes before = Image();
  EXPECT_EQ(Xf({0xFFF5, 0xFFF6, 0, 1, -1, 0, 0, 0xFFF7}), 0);
  EXPECT_EQ(Xf({0xFFF5, 0xFFF6, 1, 0, -1, 0, 0, 0xFFF7}), 1);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(Xf({0x00F5, 0xFFF6, 0, 1, -1, 0, 0, 0xFFF7}), 2);
  EXPECT_EQ(Xf({0xFFF5, 0x00F6, 0, 1, -1, 0, 0, 0xFFF7}), 3);
  EXPECT_EQ(Xf({0xFFF5, 0xFFF6, 0, 1, -1, 0, 0, 0x00F7}), 4);
  EXPECT_EQ(Xf({0xFFF5, 0xFFF6, 0, 1, 0xFF, 0, 0, 0xFFF7}), 5);
}

TEST_F(StyleLookup, Walk_StepsThroughPrivateRecords_AndEndsAtAnyOther) {
  for (const uint16_t between : {uint16_t{0xFEFD}, uint16_t{0xFE31}, uint16_t{0x1031}, uint16_t{0xFD42}}) {
    MEMORYFREEALL();
    StreamBuilder stream = StreamBuilder().Bof(5).Record(0x0042, Bytes(4)).Record(0x0031, FontPayload("A"));
    stream.Record(between, Bytes(8)).Record(0x0031, FontPayload("B"));
    LoadBook(stream.Record(0x0042, Bytes(8)));
    EXPECT_EQ(Font("B"), between >> 8 == 0xFE ? 1 : 2) << between;
  }
}

TEST_F(StyleLookup, Walk_BeginsWhereTheTableSays) {
  LoadBook(Fonts({"A", "B", "C"}));
  const uint32_t first = NextRecord(Stream(), 0);
  PutTableEntry(Table(), kTableGlobalsBegin, NextRecord(Stream(), first));
  EXPECT_EQ(Font("B"), 0);
  EXPECT_EQ(Font("A"), 3) << "the first one is not seen";
  ExpectReadsAs(Fonts({"A", "B", "C", "A"}));
}

// Four bytes in front of the first sheet's BOF: what stands there is not looked at, and a new record goes in front of it.
TEST_F(StyleLookup, Walk_EndsWhereTheTableSays) {
  LoadBook(Fonts({"A", "B", "C"}));
  const uint32_t second = NextRecord(Stream(), NextRecord(Stream(), 0));
  PutTableEntry(Table(), kTableFirstSheet, second + kEofSize);
  EXPECT_EQ(Font("A"), 0);
  EXPECT_EQ(Font("C"), 2);
  ExpectReadsAs(Fonts({"A", "C", "B", "C"}));
}

TEST_F(StyleLookup, XfInd_AddsTwentyBytes_InBothGenerations) {
  for (int32_t version : {kBiff5, kBiff8}) {
    const uint8_t generation = static_cast<uint8_t>(version);
    StreamBuilder stream = StreamBuilder().Bof(generation).Record(0x00E0, Bytes(16));
    LoadBook(stream.Record(0x0293, Bytes(4)), version);
    EXPECT_EQ(Xf({1, 2, 0, 3, -1, 0, 0, 7}), 1);
    StreamBuilder wanted = StreamBuilder().Bof(generation).Record(0x00E0, Bytes(16));
    wanted.Record(0x00E0, XfPayload(1, 2, 2, 0xFFFF, 7)).Record(0x0293, Bytes(4));
    EXPECT_EQ(Hex(WithoutSheet(WalkedStream(buffer_))),
              Hex(WithoutSheet(CloseBook(wanted, generation).Stream())));
    MEMORYFREEALL();
  }
}

TEST_F(StyleLookup, XfInd_LockedTwo_NeverMatches_AndIsMadeLocked) {
  LoadBook(StreamBuilder().Bof(5).Record(0x00E0, XfPayload(1, 2, 1, 0, 7)));
  EXPECT_EQ(Xf({1, 2, 2, 0, 0, 0, 0, 7}), 1);
  EXPECT_EQ(Xf({1, 2, 2, 2, 0, 0, 0, 7}), 2);
  StreamBuilder wanted = StreamBuilder().Bof(5).Record(0x00E0, XfPayload(1, 2, 1, 0, 7));
  ExpectReadsAs(wanted.Record(0x00E0, XfPayload(1, 2, 1, 0, 7)).Record(0x00E0, XfPayload(1, 2, 3, 0, 7)));
}

// Font 5, format 9, general alignment, on the automatic background.
constexpr XfValues kXf = {5, 9, 0, 2, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0};

Bytes MadeXf(uint16_t options) {
  return U16(5) + U16(9) + U16(options) + U16(0x1C20) + U16(0x2009) + Bytes(6);
}

TEST_F(StyleLookup, FullXf_FindsOptionsOfOne_WhateverLockedSays) {
  StreamBuilder stream = StreamBuilder().Bof(5).Record(0x00E0, MadeXf(3));
  LoadBook(stream.Record(0x00E0, MadeXf(1)));
  const Bytes before = Image();
  EXPECT_EQ(FullXf(kXf, 1, 0), 1);
  EXPECT_EQ(FullXf(kXf, 0, 0), 1);
  EXPECT_EQ(FullXf(kXf, 1, 1), 1);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(StyleLookup, FullXf_IsMadeWithItsOptions_AndFoundAgainOnlyWithOne) {
  LoadBook(StreamBuilder().Bof(5).Record(0x00E0, Bytes(16)));
  EXPECT_EQ(FullXf(kXf, 0, 0), 1);
  EXPECT_EQ(FullXf(kXf, 0, 5), 2);
  EXPECT_EQ(FullXf(kXf, 5, 5), 3);
  EXPECT_EQ(FullXf(kXf, 5, 0), 4);
  EXPECT_EQ(FullXf(kXf, 0, 0), 4);
  StreamBuilder wanted = StreamBuilder().Bof(5).Record(0x00E0, Bytes(16)).Record(0x00E0, MadeXf(0));
  wanted.Record(0x00E0, MadeXf(2)).Record(0x00E0, MadeXf(3)).Record(0x00E0, MadeXf(1));
  ExpectReadsAs(wanted);
}

TEST_F(StyleLookup, FullXf_OfBiff8_NeverMatchesAFiles_ButItsOwn) {
  StreamBuilder stream = StreamBuilder().Bof(6).Record(0x00E0, MadeXf(1) + Bytes(4));
  LoadBook(stream, kBiff8);
  EXPECT_EQ(FullXf(kXf), 1);
  const uint32_t size = size_;
  EXPECT_EQ(FullXf(kXf), 1);
  EXPECT_EQ(size_, size);
}

// The four bytes behind the first one made become a DETOUR to the second.
TEST_F(StyleLookup, FullXf_OfBiff8_IsFoundUntilAnotherIsAddedBehindIt) {
  StreamBuilder stream = StreamBuilder().Bof(6).Record(0x00E0, Bytes(20));
  LoadBook(stream.Record(0x0293, Bytes(4)), kBiff8);
  XfValues other = kXf;
  other.font = 6;
  EXPECT_EQ(FullXf(kXf), 1);
  EXPECT_EQ(FullXf(other), 2);
  EXPECT_EQ(FullXf(other), 2);
  EXPECT_EQ(FullXf(kXf), 3);
  EXPECT_EQ(LiveBlocks(), 2u);
}

// A record follows each run, as in a real workbook.
TEST_F(StyleLookup, SecondLookup_AddsNothing_InBothGenerations) {
  for (int32_t version : {kBiff5, kBiff8}) {
    MEMORYFREEALL();
    StreamBuilder stream =
        StreamBuilder().Bof(static_cast<uint8_t>(version)).Record(0x0031, FontPayload("A"));
    stream.Record(0x041E, FormatPayload(164, "0")).Record(0x00E0, Bytes(16));
    LoadBook(stream.Record(0x0293, Bytes(4)), version);
    EXPECT_EQ(Font("B"), 2);
    EXPECT_EQ(Format("0.0"), 254);
    EXPECT_EQ(Xf({5, 6, 1, 0, 1, 2, 3, 7}), 1);
    EXPECT_EQ(FullXf(kXf), 2);
    const Bytes once = Image();
    EXPECT_EQ(Font("B"), 1);
    EXPECT_EQ(Format("0.0"), 254);
    EXPECT_EQ(Xf({5, 6, 1, 0, 1, 2, 3, 7}), 1);
    EXPECT_EQ(FullXf(kXf), 2);
    EXPECT_EQ(Image(), once);
    EXPECT_EQ(LiveBlocks(), 2u);
  }
}

// The EOF of the globals is shorter than a DETOUR, and takes the BOF behind it along.
TEST_F(StyleLookup, RecordBeforeTheEndOfTheGlobals_MovesTheFirstSheetWithItsEntry) {
  LoadBook(StreamBuilder().Bof(5).Record(0x0031, FontPayload("A")));
  const uint32_t bof = TableEntry(Table(), kTableFirstSheet);
  EXPECT_EQ(Format("0.0"), 254);
  EXPECT_TRUE(IsPrivate(Stream(), bof - 4, kLowDetour));
  const uint32_t moved = TableEntry(Table(), kTableFirstSheet);
  EXPECT_NE(moved, bof);
  EXPECT_TRUE(IsPlain(Stream(), moved, kLowBof));
  EXPECT_TRUE(IsPlain(Stream(), moved - 4, kLowEof));
}

TEST_F(StyleLookup, RecordBeforeTheEndOfTheGlobals_IsFoundAgainAndSurvivesARefresh) {
  LoadBook(StreamBuilder().Bof(5).Record(0x0031, FontPayload("A")));
  EXPECT_EQ(Format("0.0"), 254);
  const Bytes once = Image();
  EXPECT_EQ(Format("0.0"), 254);
  EXPECT_EQ(Image(), once);
  EXPECT_EQ(Format("0.00"), 253);
  EXPECT_EQ(XLRefreshHandles(&buffer_, table_, &size_), 0);
  EXPECT_EQ(XLGetNumFormatItems(buffer_, table_, kKindFormat), 2 + 17);
  EXPECT_TRUE(IsPlain(Stream(), TableEntry(Table(), kTableFirstSheet), kLowBof));
}

// A record of less than 8 bytes in front of the EOF: EOF and BOF still move together.
TEST_F(StyleLookup, ShortRecordBeforeTheEndOfTheGlobals_MovesTheFirstSheetToo) {
  LoadBook(StreamBuilder().Bof(5).Record(0x041E, FormatPayload(164, "0")).Record(0x0042, Bytes(2)));
  EXPECT_EQ(Format("0.0"), 254);
  EXPECT_EQ(Format("0.0"), 254);
  const uint32_t moved = TableEntry(Table(), kTableFirstSheet);
  EXPECT_TRUE(IsPlain(Stream(), moved, kLowBof));
  EXPECT_EQ(XLRefreshHandles(&buffer_, table_, &size_), 0);
  EXPECT_EQ(XLGetNumFormatItems(buffer_, table_, kKindFormat), 2 + 17);
}

TEST_F(StyleLookup, NullArguments) {
  LoadBook(Fonts({"A"}));
  uint32_t none = 0;
  EXPECT_EQ(XLGetFont(&none, 0, &size_, nullptr, kPlain), -1);
  EXPECT_EQ(XLGetFont(&none, 0, &size_, "A", kPlain), -6);
  EXPECT_EQ(XLGetFont(&none, table_, &size_, "A", kPlain), -11);
  EXPECT_EQ(XLGetFont(nullptr, table_, &size_, "A", kPlain), -11);
  EXPECT_EQ(XLGetFont(&buffer_, table_, nullptr, "A", kPlain), -11);
  EXPECT_EQ(XLGetFormat(&buffer_, table_, &size_, nullptr), -1);
  EXPECT_EQ(XLGetFormat(&buffer_, 0, &size_, "0"), -1);
  EXPECT_EQ(XLGetFormat(&none, table_, &size_, "0"), -1);
  EXPECT_EQ(XLGetFormat(nullptr, table_, &size_, "0"), -1);
  EXPECT_EQ(XLGetFormat(&buffer_, table_, nullptr, "0"), -1);
  EXPECT_EQ(XLGetXFInd(&none, 0, &size_, {}), -6);
  EXPECT_EQ(XLGetXFInd(&none, table_, &size_, {}), -11);
  EXPECT_EQ(XLGetXFIndFull(&none, 0, &size_, kXf, 1, 0), -6);
  EXPECT_EQ(XLGetXFIndFull(&none, table_, &size_, kXf, 1, 0), -11);
  EXPECT_EQ(XLGetXFInd(&buffer_, table_, nullptr, {}), -11);
  EXPECT_EQ(XLGetXFIndFull(&buffer_, table_, nullptr, kXf, 1, 0), -11);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(StyleLookup, Format_WithoutAnyItems_GivesMinusOne) {
  LoadBook(Fonts({"A"}));
  BiffVersion = 0;
  EXPECT_EQ(Format("0"), -1);
}

TEST_F(StyleLookup, WithoutABlock_NothingIsCreated) {
  LoadBook(Fonts({"A"}));
  const Bytes before = Image();
  FillPool(9);
  EXPECT_EQ(Font("B"), -3);
  EXPECT_EQ(Font("A"), 0);
  EXPECT_EQ(Format("0"), -21);
  EXPECT_EQ(Xf({}), -3);
  EXPECT_EQ(FullXf(kXf), -12);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 9u);
}

// The buffer fills its slot, and no larger one is free.
TEST_F(StyleLookup, BufferThatCannotGrow_GivesMinusFour_AndTheRecordStays) {
  const std::function<int16_t()> kLookups[] = {[&] { return Font("B"); }, [&] { return Format("0"); },
                                               [&] { return Xf({}); }, [&] { return FullXf(kXf); }};
  for (const auto& lookup : kLookups) {
    TakeAllSlotsBut({1, 2, 3});
    StreamBuilder stream = StreamBuilder().Bof(5).Record(0x0031, FontPayload("A"));
    Load(CloseBook(stream.Record(0x00FF, Bytes(920))), kBiff5);
    ASSERT_EQ(MEMORYALLOCSIZE(buffer_), 1024u);
    ASSERT_GT(size_, 1000u);
    EXPECT_EQ(LiveBlocks(), 8u);
    EXPECT_EQ(lookup(), -4);
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(LiveBlocks(), 8u) << "the buffer is gone, the record is there";
    MEMORYFREEALL();
  }
}

}  // namespace
