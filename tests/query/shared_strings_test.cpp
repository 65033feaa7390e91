// Shared strings: where the table is said to be, and the odd ways of its reader.
#include "query/shared_strings.h"

#include "support/book_fixture.h"
#include "support/test_array.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

constexpr uint32_t kSst = 20;  // behind a BIFF8 BOF

Bytes Plain(std::string_view text) {
  return U16(static_cast<uint16_t>(text.size())) + Bytes{0} + Text(text);
}

Bytes Wide(std::string_view text) {
  Bytes bytes = U16(static_cast<uint16_t>(text.size())) + Bytes{1};
  for (char c : text) bytes = bytes + Bytes{static_cast<uint8_t>(c), 0xEE};
  return bytes;
}

Bytes Rich(std::string_view text, uint16_t runs) {
  return U16(static_cast<uint16_t>(text.size())) + Bytes{8} + U16(runs) + Text(text) + Bytes(runs * 4u, 0xDD);
}

class SharedStrings : public BookTest {
 protected:
  // Globals with one SST at kSst, and a sheet whose first cell is a LABELSST at row 2, column 1 (0-based).
  void LoadStrings(const Bytes& strings, uint32_t index = 0) {
    StreamBuilder stream;
    stream.Bof(6)
        .Record(0x00FC, U32(9) + U32(9) + strings)
        .Sheet("S")
        .Record(0x00FF, U16(8) + Bytes(8))
        .Eof();
    stream.Bof(6, kWorksheet).Dimensions(0, 4, 0, 4).LabelSst(2, 1, 15, index);
    cell_ = stream.Last();
    Load(stream.Eof());
  }

  // The text put for that string, by a bucket size of 0; "before" when none was.
  std::string Read(int32_t index) {
    TestArray cells(VT_BSTR, 1, 4, 1, 4);
    cells.SetText(3, 2, "before");
    int16_t bucket = 0;
    XLEXTLabel(buffer_, &index, &bucket, kSst, cells.Ref(), static_cast<int32_t>(cell_));
    return cells.TextAt(3, 2);
  }

  uint32_t cell_ = 0;
};

TEST_F(SharedStrings, Bucket_IsTheFirstFieldOfTheLastGlobalsRecord) {
  LoadStrings(Plain("a"));
  EXPECT_EQ(XLNumStrBucket(buffer_, table_), 8);
}

TEST_F(SharedStrings, Bucket_TakesWhateverRecordIsLast) {
  Load(StreamBuilder().Bof(6).Sheet("S").Record(0x1234, U16(0xBEEF)).Eof().Bof(6, kWorksheet).Eof());
  EXPECT_EQ(XLNumStrBucket(buffer_, table_), 0xBEEF);
}

TEST_F(SharedStrings, Ext_IsTheOffsetOfTheLastSst) {
  LoadStrings(Plain("a"));
  EXPECT_EQ(XLNumStrExt(buffer_, table_), 20);
  MEMORYFREEALL();
  StreamBuilder stream;
  stream.Bof(6).Record(0x00FC, Bytes(8)).Record(0x03FC, Bytes(8)).Record(0x10FC, Bytes(8)).Sheet("S").Eof();
  Load(stream.Bof(6, kWorksheet).Eof());
  EXPECT_EQ(XLNumStrExt(buffer_, table_), 32);
}

TEST_F(SharedStrings, Ext_IsCutTo16Bits) {
  StreamBuilder stream;
  stream.Bof(6).Record(0x0042, Bytes(32744)).Record(0x00FC, Bytes(8)).Sheet("S").Eof();
  Load(stream.Bof(6, kWorksheet).Eof());
  EXPECT_EQ(XLNumStrExt(buffer_, table_), -32768);
  MEMORYFREEALL();
  stream = StreamBuilder().Bof(6).Record(0x0042, Bytes(65520)).Record(0x00FC, Bytes(8)).Sheet("S").Eof();
  Load(stream.Bof(6, kWorksheet).Eof());
  EXPECT_EQ(XLNumStrExt(buffer_, table_), 65544 - 65536);
}

TEST_F(SharedStrings, Ext_WithoutAnSst_IsTheTablesOwnAddress) {
  Load(StreamBuilder().Bof(6).Sheet("S").Eof().Bof(6, kWorksheet).Eof());
  EXPECT_EQ(XLNumStrExt(buffer_, table_), static_cast<int16_t>(table_));
}

TEST_F(SharedStrings, EmptyGlobals) {
  LoadStrings(Plain("a"));
  PutTableEntry(Table(), kTableFirstSheet, 4);
  EXPECT_EQ(XLNumStrBucket(buffer_, table_), 0);
  EXPECT_EQ(XLNumStrExt(buffer_, table_), static_cast<int16_t>(table_));
}

TEST_F(SharedStrings, NullTable_GivesZeros) {
  LoadStrings(Plain("a"));
  EXPECT_EQ(XLNumStrBucket(buffer_, 0), 0);
  EXPECT_EQ(XLNumStrExt(buffer_, 0), 0);
}

TEST_F(SharedStrings, PlainStrings) {
  LoadStrings(Plain("first") + Plain("") + Plain("third"));
  EXPECT_EQ(Read(0), "first");
  EXPECT_EQ(Read(1), "");
  EXPECT_EQ(Read(2), "third");
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SharedStrings, IndexBelowOne_ReadsStringZero) {
  LoadStrings(Plain("first") + Plain("second"));
  EXPECT_EQ(Read(-1), "first");
  EXPECT_EQ(Read(INT32_MIN), "first");
}

TEST_F(SharedStrings, StringZero_IsAlwaysTakenAs8Bit) {
  LoadStrings(Wide("AB") + Plain("x"));
  EXPECT_EQ(Read(0), "A\xEE");
  MEMORYFREEALL();
  LoadStrings(Rich("AB", 1));
  EXPECT_EQ(Read(0), std::string("\x01\0", 2));
}

TEST_F(SharedStrings, AString_ComesOutInTheShapeOfItsPredecessor) {
  // Read as wide: every second byte from the text on, for twice its length.
  LoadStrings(Wide("Q") + Plain("abcdefgh") + Plain("12345678"));
  EXPECT_EQ(Read(1).substr(0, 4), "aceg");
  EXPECT_EQ(Read(1).size(), 16u);
  EXPECT_EQ(Read(2), "12345678");
}

TEST_F(SharedStrings, WideAfterWide_KeepsLowBytesAndRunsOn) {
  LoadStrings(Wide("Q") + Wide("AB") + Plain("xyzw"));
  // "AB" by its low bytes, then two places further on: the third string's length and its text.
  EXPECT_EQ(Read(1), std::string("AB\x04\0", 4));
}

TEST_F(SharedStrings, RichAfterRich_ReadsFourBytesBehindTheFlags) {
  LoadStrings(Rich("Q", 1) + Rich("ABCD", 2) + Plain("x"));
  // Text at T + 5, read from two bytes on: "CD", then the runs.
  EXPECT_EQ(Read(1), "CD\xDD\xDD");
  EXPECT_EQ(Read(2).size(), 1u);
}

TEST_F(SharedStrings, WideAndRich_DoBoth) {
  Bytes both = U16(1) + Bytes{9} + U16(1) + Bytes{'Q', 0} + Bytes(4);
  LoadStrings(both + Bytes{2, 0, 9, 0, 0} + Text("..A.B.C.D.") + Bytes(8));
  EXPECT_EQ(Read(1), "ABCD");
}

TEST_F(SharedStrings, PhoneticFlag_IsNotRecognised) {
  LoadStrings(U16(1) + Bytes{4, 'a'} + Plain("bc"));
  EXPECT_EQ(Read(1), "bc");
}

TEST_F(SharedStrings, LengthsAreSigned) {
  // Passing a string of -6 characters leads 3 bytes back, into the SST's own fields.
  LoadStrings(U16(0xFFFA) + Bytes{0} + Plain("x"));
  PutU16(Stream(), kSst + 9, 2);  // at T = S + 9
  EXPECT_EQ(Read(1), std::string("\xFA\xFF", 2));
}

TEST_F(SharedStrings, NegativeLength_MakesNoText) {
  LoadStrings(U16(0x8000) + Bytes{0});
#if !defined(_WIN32)
  EXPECT_EQ(Read(0), "(none)");
#else
  Read(0);
#endif
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SharedStrings, WideLengthsDoubleIn16Bits) {
  LoadStrings(Wide("Q") + U16(0x8003) + Bytes{0} + Text("a.b.c.d.e.f."));
  EXPECT_EQ(Read(1), "abcdef");  // twice -32765 is 6
#if !defined(_WIN32)
  PutU16(Stream(), kSst + 12 + 5, 0x4000);
  EXPECT_EQ(Read(1), "(none)");  // twice 16384 is -32768
#endif
}

TEST_F(SharedStrings, RunCountsAreSigned) {
  // 3 + 3 + 2 - 4: string 1 begins at the second byte of the run count, and has 255 characters.
  LoadStrings(U16(3) + Bytes{8} + U16(0xFFFF) + Bytes{0, 'b', 'c'} + Plain("xyz"));
  EXPECT_EQ(Read(1).size(), 255u);
  EXPECT_EQ(Read(1).substr(0, 3), "xyz");
}

TEST_F(SharedStrings, BehindTheLastString_ReadsWhatStandsThere_AndFarBehindIt_Nothing) {
  LoadStrings(Plain("a"));
  EXPECT_EQ(Read(32767), "");
  EXPECT_EQ(Read(INT32_MAX), "");
}

TEST_F(SharedStrings, IndexAndBucketMayBeNull) {
  LoadStrings(Plain("first"));
  TestArray cells(VT_BSTR, 1, 4, 1, 4);
  XLEXTLabel(buffer_, nullptr, nullptr, kSst, cells.Ref(), static_cast<int32_t>(cell_));
  EXPECT_EQ(cells.TextAt(3, 2), "first");
}

TEST_F(SharedStrings, NothingToPutInto_IsHarmless) {
  LoadStrings(Plain("first"));
  SAFEARRAY* none = nullptr;
  TestArray small(VT_BSTR, 1, 2, 1, 1);
  XLEXTLabel(buffer_, nullptr, nullptr, kSst, nullptr, static_cast<int32_t>(cell_));
  XLEXTLabel(buffer_, nullptr, nullptr, kSst, &none, static_cast<int32_t>(cell_));
  XLEXTLabel(buffer_, nullptr, nullptr, kSst, small.Ref(), static_cast<int32_t>(cell_));
  EXPECT_EQ(small.AllText(), "(none)/(none)");
}

// The array is one of two dimensions; the sanitized build tells of an index read that isn't there.
TEST_F(SharedStrings, OneDimensionTakesTheRow_ThreeAreRefused) {
  LoadStrings(Plain("first"));
  TestArray rows(VT_BSTR, 1, 4);
  XLEXTLabel(buffer_, nullptr, nullptr, kSst, rows.Ref(), static_cast<int32_t>(cell_));
  EXPECT_EQ(rows.TextAt(3), "first");
  SAFEARRAYBOUND bounds[3] = {{4, 1}, {4, 1}, {9, 0}};
  SAFEARRAY* three = SafeArrayCreate(VT_BSTR, 3, bounds);
  XLEXTLabel(buffer_, nullptr, nullptr, kSst, &three, static_cast<int32_t>(cell_));
  SafeArrayDestroy(three);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(SharedStrings, NullBuffer_PutsNothing) {
  LoadStrings(Plain("first"));
  TestArray cells(VT_BSTR, 1, 2, 1, 1);
  XLEXTLabel(0, nullptr, nullptr, kSst, cells.Ref(), 0);
  EXPECT_EQ(cells.AllText(), "(none)/(none)");
}

TEST_F(SharedStrings, OffsetsOutsideTheBlock_ReadAsAnEmptyText) {
  LoadStrings(Plain("first"));
  TestArray cells(VT_BSTR, 1, 4, 1, 4);
  for (int32_t sst : {-32768, INT32_MAX, INT32_MIN, -12, -13}) {
    cells.SetText(1, 1, "before");
    XLEXTLabel(buffer_, nullptr, nullptr, sst, cells.Ref(), -32768);  // row 1, column 1 there
    EXPECT_NE(cells.TextAt(1, 1), "before") << sst;
  }
  EXPECT_EQ(cells.TextAt(3, 2), "(none)");
}

TEST_F(SharedStrings, RowAndColumnAreSigned) {
  LoadStrings(Plain("first"));
  PutU16(Stream(), cell_ + kCellRow, 0xFFFE);
  PutU16(Stream(), cell_ + kCellColumn, 0xFFFF);
  TestArray cells(VT_BSTR, -1, 0, 0, 0);
  XLEXTLabel(buffer_, nullptr, nullptr, kSst, cells.Ref(), static_cast<int32_t>(cell_));
  EXPECT_EQ(cells.AllText(), "first/(none)");
}

TEST_F(SharedStrings, FullPool_PutsNothing) {
  for (uint32_t taken = 2; taken <= 9; ++taken) {
    LoadStrings(Plain("first"));
    FillPool(taken);
    EXPECT_EQ(Read(0), taken < 9 ? "first" : "before") << taken;
    EXPECT_EQ(XLNumStrBucket(buffer_, table_), 8);
    EXPECT_EQ(XLNumStrExt(buffer_, table_), 20);
    EXPECT_EQ(LiveBlocks(), taken);
    MEMORYFREEALL();
  }
}

TEST_F(SharedStrings, AWideText_AsksThePoolForFourTimesItsLength) {
  uint32_t smallest = MEMORYALLOC(1);
  LoadStrings(Wide("Q") + Wide(std::string(65, 'w')));
  FillPool(9);
  MEMORYFREE(&smallest);
  EXPECT_EQ(Read(1), "before");  // 260 bytes, and only the slot of 256 is free
  PutU16(Stream(), kSst + 12 + 5, 64);
  EXPECT_EQ(Read(1).size(), 128u);
}

TEST_F(SharedStrings, APlainText_AsksThePoolForItsLength) {
  uint32_t smallest = MEMORYALLOC(1);
  LoadStrings(Plain(std::string(256, 'p')) + Plain(std::string(257, 'q')));
  FillPool(9);
  MEMORYFREE(&smallest);
  EXPECT_EQ(Read(0), std::string(256, 'p'));
  EXPECT_EQ(Read(1), "before");
}

// The reader that remembers places gives what the export gives, whatever the table holds and in whatever
// order it is asked.
TEST_F(SharedStrings, Reader_GivesTheSameBytesAsTheExport) {
  uint32_t seed = 12345;
  for (int round = 0; round < 30; ++round) {
    Bytes strings;
    for (int i = 0; i < 400; ++i) {
      seed = seed * 1664525u + 1013904223u;
      strings.push_back(static_cast<uint8_t>((seed >> 24) < 0x90 ? ((seed >> 16) & 7) : (seed >> 16)));
    }
    LoadStrings(strings);
    SharedStringReader reader = {Stream(), kSst, nullptr, 0};
    for (int index : {5, 0, 60, 3, -4, 59, 61, 32767, 200, 7}) {
      TestArray cells(VT_BSTR, 1, 4, 1, 4);
      cells.SetText(3, 2, "before");
      PutSharedString(&reader, static_cast<int16_t>(index), cells.Get(), cell_);
      ASSERT_EQ(cells.TextAt(3, 2), Read(index)) << round << " " << index;
    }
    MEMORYFREEALL();
  }
}

}  // namespace
