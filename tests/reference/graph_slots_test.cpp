// Slots of a graph: texts, doubles, fonts, texts of sets; what is stored byte for byte, what comes back, and every result.
#include "reference/graph_slots.h"

#include <cstring>

#include "reference/graph_fixture.h"
#include "support/allocation_faults.h"

namespace tolvenar::testing {
namespace {

class GraphSlotsTest : public GraphTest {
 protected:
  int16_t Save(const char* text, uint16_t slot = 1) { return XLRSaveText(&buffer_, &size_, 1, text, slot); }

  // The text of a slot; "(same)" when the variable stays as it was.
  std::string TextOf(uint16_t slot) {
    BSTR const before = SysAllocStringByteLen("(same)", 6);
    BSTR text = before;
    EXPECT_EQ(XLRGetText(buffer_, 1, &text, slot), 0);
    return Taken(before, text);
  }
  std::string SetTextOf(uint16_t index, uint16_t set) {
    BSTR const before = SysAllocStringByteLen("(same)", 6);
    BSTR text = before;
    EXPECT_EQ(XLRGetSetText(buffer_, 1, index, &text, set), 0);
    return Taken(before, text);
  }
  static std::string Taken(BSTR before, BSTR text) {
    const std::string bytes = BytesOf(text);
    if (text != before) SysFreeString(text);
    SysFreeString(before);
    return bytes;
  }
};

TEST_P(GraphSlotsTest, AText_IsStoredLastInTheGraphAndComesBack) {
  EXPECT_EQ(Save("Sales"), 0);
  ExpectContent(Bytes{0xE5, 0x10, 7, 0, 5, 0, 'S', 'a', 'l', 'e', 's'});
  EXPECT_EQ(Save("ab", 2), 0);
  ExpectContent(Bytes{0xE5, 0x10, 7, 0, 5, 0, 'S', 'a', 'l', 'e', 's'} +
                Bytes{0xE6, 0x10, 4, 0, 2, 0, 'a', 'b'});
  EXPECT_EQ(TextOf(1), "Sales");
  EXPECT_EQ(TextOf(2), "ab");
  Compact();
  EXPECT_EQ(TextOf(1), "Sales");
  EXPECT_EQ(TextOf(2), "ab");
}

TEST_P(GraphSlotsTest, ANullText_IsAnEmptyOne) {
  EXPECT_EQ(Save(nullptr), 0);
  ExpectContent({0xE5, 0x10, 2, 0, 0, 0});
  EXPECT_EQ(TextOf(1), "");
}

TEST_P(GraphSlotsTest, EachTextSlot_HasItsType) {
  const Bytes types = {0xE5, 0xE6, 0xE7, 0xF4, 0xF5, 0xF6, 0xF7};
  for (uint16_t slot = 1; slot <= 7; ++slot) {
    NewReference();
    const char text[] = {static_cast<char>('0' + slot), '\0'};
    EXPECT_EQ(Save(text, slot), 0);
    ExpectContent(GraphRecord(types[slot - 1u], U16(1) + Text(text)));
    EXPECT_EQ(TextOf(slot), text);
  }
}

TEST_P(GraphSlotsTest, AnEmptySlot_LeavesTheVariable) {
  EXPECT_EQ(Save("one", 1), 0);
  for (const uint16_t slot : Unsigned{2, 7, 0, 8, 0x101, 0xFFFF}) EXPECT_EQ(TextOf(slot), "(same)") << slot;
}

TEST_P(GraphSlotsTest, ASlotThatIsNone_AddsARecordThatNothingReads) {
  const Bytes record = {0xFD, 0x00, 3, 0, 1, 0, 'x'};
  EXPECT_EQ(Save("x", 0), 0);
  EXPECT_EQ(Save("x", 8), 0);
  ExpectContent(record + record);
  EXPECT_EQ(Save("x", 0), 0);  // it is never found to be replaced
  ExpectContent(record + record + record);
  Compact();
  ExpectContent(record + record + record);
  EXPECT_EQ(TextOf(0), "(same)");
}

TEST_P(GraphSlotsTest, ATextOfTheSameLength_TakesTheRoomOfTheOld) {
  EXPECT_EQ(Save("Sales"), 0);
  const uint32_t size = size_;
  EXPECT_EQ(Save("Costs"), 0);
  EXPECT_EQ(Save("Costs"), 0);
  EXPECT_EQ(size_, size);
  ExpectContent(Bytes{0xE5, 0x10, 7, 0, 5, 0} + Text("Costs"));
}

TEST_P(GraphSlotsTest, ALongerText_GrowsTheBufferAndLeavesSlack) {
  EXPECT_EQ(Save("Sales"), 0);
  EXPECT_EQ(Save("second", 2), 0);
  Compact();
  const uint32_t at = kFirstHead + 8, size = size_;
  EXPECT_EQ(Save("All sales"), 0);
  // A DETOUR where the record was; the patch, the SLACK that the record left, and the RESUME behind it.
  EXPECT_EQ(Hex(BlockContents(buffer_, at + 8)).substr(at * 3), Hex(Bytes{0xFF, 0xFE, 4, 0} + U32(size)));
  const Bytes area = GraphRecord(0xE5, U16(9) + Text("All sales")) + Bytes{0xFD, 0xFE, 7, 0, 5, 0} +
                     Text("Sales") + Bytes{0xFA, 0xFE, 4, 0} + U32(at + 11);
  EXPECT_EQ(Hex(Image()), Hex(BlockContents(buffer_, size) + area));
  ExpectContent(GraphRecord(0xE5, U16(9) + Text("All sales")) + GraphRecord(0xE6, U16(6) + Text("second")));
}

// A record of less than 8 bytes in front of the longest one: a detour in its place would have to displace both.
TEST_P(GraphSlotsTest, AShortTextInFrontOfTheLongestOne_IsReplacedAtTheEnd) {
  const std::string longest(32761, 'x');
  EXPECT_EQ(Save("", 1), 0);
  EXPECT_EQ(Save(longest.c_str(), 2), 0);
  EXPECT_EQ(XLRSaveDouble(&buffer_, &size_, 1, 1, 2, 1), 0);
  Compact();
  EXPECT_EQ(Save("Sales", 1), 0);
  EXPECT_EQ(TextOf(1), "Sales");
  EXPECT_EQ(TextOf(2), longest);
  ExpectContent(GraphRecord(0xE6, U16(32761) + Text(longest)) + GraphRecord(0xE4, U32(1) + U32(2)) +
                GraphRecord(0xE5, U16(5) + Text("Sales")));
  Compact();
  EXPECT_EQ(TextOf(1), "Sales");
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(GraphSlotsTest, WhereNoPatchCanBeLaidAtAll_TheOldTextStays) {
  EXPECT_EQ(Save("", 1), 0);
  EXPECT_EQ(Save(std::string(32761, 'x').c_str(), 2), 0);
  Compact();
  const uint32_t behind_end = Find(1, kKindGraph).end + kHeaderSize;
  PutU16(Stream(), behind_end + kRecordLength, 0x8000);  // of the next head: no detour displaces that either
  const Bytes image = Image();
  EXPECT_EQ(Save("Sales", 1), -6);
  EXPECT_EQ(Save("new", 3), -5);
  EXPECT_EQ(Image(), image);
  EXPECT_EQ(TextOf(1), "");
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(GraphSlotsTest, OfTwoRecordsOfASlot_TheLastWinsAndIsReplaced) {
  PutRecords(GraphRecord(0xE5, U16(1) + Text("a")) + GraphRecord(0xE5, U16(1) + Text("b")));
  EXPECT_EQ(TextOf(1), "b");
  EXPECT_EQ(Save("c"), 0);
  ExpectContent(GraphRecord(0xE5, U16(1) + Text("a")) + GraphRecord(0xE5, U16(1) + Text("c")));
}

TEST_P(GraphSlotsTest, ARecordOfTheOtherGraph_IsNotLookedAt) {
  ASSERT_EQ(Put(2, kKindGraph, GraphRecord(0xE5, U16(1) + Text("z"))), 0);
  EXPECT_EQ(TextOf(1), "(same)");
  EXPECT_EQ(Save("a"), 0);
  EXPECT_EQ(TextOf(1), "a");
  BSTR text = nullptr;
  EXPECT_EQ(XLRGetText(buffer_, 2, &text, 1), 0);
  EXPECT_EQ(BytesOf(text), "z");
  SysFreeString(text);
}

TEST_P(GraphSlotsTest, AStoredLengthThatIsNegative_ComesOutAsNull) {
  PutRecords(GraphRecord(0xE5, U16(0x8000) + Text("a")));
  EXPECT_EQ(TextOf(1), "(none)");
}

TEST_P(GraphSlotsTest, AStoredLengthBeyondTheBlock_EndsInZeros) {
  PutRecords(GraphRecord(0xE5, U16(32767) + Text("abc")));
  const std::string text = TextOf(1);
  ASSERT_EQ(text.size(), 32767u);
  EXPECT_EQ(text.substr(0, 3), "abc");
  EXPECT_EQ(text.back(), '\0');
}

TEST_P(GraphSlotsTest, WithoutMemoryForAText_NullComesOut) {
  EXPECT_EQ(Save("Sales"), 0);
  BSTR text = nullptr;
  int16_t result = -1;
  bool fired = false;
  {
    AllocationFault fault(0);
    result = XLRGetText(buffer_, 1, &text, 1);
    fired = fault.fired();
  }
  EXPECT_EQ(result, 0);
  EXPECT_EQ(text == nullptr, fired);  // where the system makes the texts, no request of ours can fail
  SysFreeString(text);
}

TEST_P(GraphSlotsTest, TheLongestText_FillsARecordOf32767Bytes) {
  const std::string longest(32761, 'x');
  EXPECT_EQ(Save(longest.c_str()), 0);
  EXPECT_EQ(Content().size(), 32767u);
  EXPECT_EQ(TextOf(1), longest);
  EXPECT_EQ(Save("short"), 0);
  EXPECT_EQ(TextOf(1), "short");
  const std::string item(32759, 'y');
  EXPECT_EQ(XLRSaveSetText(&buffer_, &size_, 1, 3, item.c_str(), 1), 0);
  EXPECT_EQ(SetTextOf(3, 1), item);
  Compact();
  EXPECT_EQ(SetTextOf(3, 1), item);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(GraphSlotsTest, ATextThatNoRecordHolds_IsRefusedAndNothingChanges) {
  EXPECT_EQ(Save("Sales"), 0);
  const Bytes image = Image();
  for (const size_t length : {size_t{32762}, size_t{65530}, size_t{65536}, size_t{70000}}) {
    EXPECT_EQ(Save(std::string(length, 'x').c_str()), -4) << length;
  }
  EXPECT_EQ(XLRSaveSetText(&buffer_, &size_, 1, 3, std::string(32760, 'x').c_str(), 1), -4);
  EXPECT_EQ(Image(), image);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(GraphSlotsTest, ADouble_IsStoredLowHalfFirst) {
  EXPECT_EQ(XLRSaveDouble(&buffer_, &size_, 1, 0x44332211, 0x88776655, 1), 0);
  ExpectContent({0xE4, 0x10, 8, 0, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88});
  const double value = 0.15625;
  uint32_t halves[2];
  std::memcpy(halves, &value, sizeof halves);
  const uint32_t size = size_;
  EXPECT_EQ(XLRSaveDouble(&buffer_, &size_, 1, halves[0], halves[1], 1), 0);
  EXPECT_EQ(size_, size);
  double got = 0;
  EXPECT_EQ(XLRGetDouble(buffer_, 1, &got, 1), 0);
  EXPECT_EQ(got, value);
  for (const uint16_t slot : Unsigned{2, 3, 0, 4}) EXPECT_EQ(XLRGetDouble(buffer_, 1, &got, slot), 0);
  EXPECT_EQ(got, value);
  EXPECT_EQ(XLRGetDouble(buffer_, 1, nullptr, 1), 0);
}

TEST_P(GraphSlotsTest, EachDoubleSlot_HasItsType) {
  Bytes expected;
  for (const auto& [slot, low] : {std::pair{1, 0xE4}, {2, 0xE8}, {3, 0xEA}}) {
    EXPECT_EQ(XLRSaveDouble(&buffer_, &size_, 1, 7, static_cast<uint32_t>(slot), static_cast<int16_t>(slot)),
              0);
    expected = expected + GraphRecord(static_cast<uint8_t>(low), U32(7) + U32(static_cast<uint32_t>(slot)));
  }
  for (const int16_t slot : Signed{0, 4, -1}) {
    EXPECT_EQ(XLRSaveDouble(&buffer_, &size_, 1, 1, 2, slot), 0);
    expected = expected + Bytes{0xFD, 0x00, 8, 0} + U32(1) + U32(2);
  }
  ExpectContent(expected);
}

TEST_P(GraphSlotsTest, AFont_IsFourValuesInTheirOrder) {
  EXPECT_EQ(XLRSaveFont(&buffer_, &size_, 1, 0x0102, 0x0304, 0x0506, 0xFFFE, 1), 0);
  ExpectContent({0xDD, 0x10, 8, 0, 2, 1, 4, 3, 6, 5, 0xFE, 0xFF});
  uint16_t a = 0, b = 0, c = 0, d = 0;
  EXPECT_EQ(XLRGetFont(buffer_, 1, &a, &b, &c, &d, 1), 0);
  EXPECT_EQ(std::tie(a, b, c, d), std::make_tuple(0x0102, 0x0304, 0x0506, 0xFFFE));
  a = 7;
  for (const uint16_t slot : Unsigned{2, 0, 6}) EXPECT_EQ(XLRGetFont(buffer_, 1, &a, &b, &c, &d, slot), 0);
  EXPECT_EQ(a, 7);
  EXPECT_EQ(XLRGetFont(buffer_, 1, nullptr, &b, nullptr, nullptr, 1), 0);
  EXPECT_EQ(b, 0x0304);
}

TEST_P(GraphSlotsTest, EachFontSlot_HasItsType) {
  const Bytes types = {0xDD, 0xDE, 0xF1, 0xF2, 0xF3};
  Bytes expected;
  for (uint16_t slot = 1; slot <= 5; ++slot) {
    EXPECT_EQ(XLRSaveFont(&buffer_, &size_, 1, slot, 2, 3, 4, slot), 0);
    expected = expected + GraphRecord(types[slot - 1u], U16(slot) + U16(2) + U16(3) + U16(4));
  }
  EXPECT_EQ(XLRSaveFont(&buffer_, &size_, 1, 1, 2, 3, 4, 6), 0);
  ExpectContent(expected + Bytes{0xFD, 0x00, 8, 0, 1, 0, 2, 0, 3, 0, 4, 0});
}

TEST_P(GraphSlotsTest, ASetText_IsReplacedByItsIndexOnly) {
  EXPECT_EQ(XLRSaveSetText(&buffer_, &size_, 1, 3, "three", 1), 0);
  EXPECT_EQ(XLRSaveSetText(&buffer_, &size_, 1, 0x103, "other", 1), 0);
  EXPECT_EQ(XLRSaveSetText(&buffer_, &size_, 1, 3, "THREE", 1), 0);
  ExpectContent(Bytes{0xEB, 0x10, 9, 0, 3, 0, 5, 0, 'T', 'H', 'R', 'E', 'E'} +
                Bytes{0xEB, 0x10, 9, 0, 3, 1, 5, 0, 'o', 't', 'h', 'e', 'r'});
  EXPECT_EQ(SetTextOf(3, 1), "THREE");
  EXPECT_EQ(SetTextOf(0x103, 1), "other");
  EXPECT_EQ(SetTextOf(4, 1), "(same)");
  EXPECT_EQ(SetTextOf(3, 2), "(same)");
}

TEST_P(GraphSlotsTest, EachSetOfTexts_HasItsType) {
  const Bytes types = {0xEB, 0xEC, 0xED, 0xEE};
  Bytes expected;
  for (uint16_t set = 1; set <= 4; ++set) {
    EXPECT_EQ(XLRSaveSetText(&buffer_, &size_, 1, 0, nullptr, set), 0);
    expected = expected + GraphRecord(types[set - 1u], U16(0) + U16(0));
    EXPECT_EQ(SetTextOf(0, set), "");
  }
  for (const uint16_t set : Unsigned{0, 5}) {
    EXPECT_EQ(XLRSaveSetText(&buffer_, &size_, 1, 9, "x", set), 0);
    EXPECT_EQ(SetTextOf(9, set), "(same)");
  }
  const Bytes none = Bytes{0xFD, 0x00, 5, 0, 9, 0, 1, 0, 'x'};
  ExpectContent(expected + none + none);
}

TEST_P(GraphSlotsTest, ASetText_LeavesATextReferenceOfItsIndex) {
  const Bytes reference = GraphRecord(0xD2, Bytes{1} + U16(3) + U32(77) + U32(0));
  PutRecords(reference);
  EXPECT_EQ(XLRSaveSetText(&buffer_, &size_, 1, 3, "x", 1), 0);
  ExpectContent(reference + GraphRecord(0xEB, U16(3) + U16(1) + Text("x")));
}

// All results of the savers and getters.

struct Call {
  const char* label;
  int16_t (*run)(uint32_t* buffer, uint32_t* size, uint16_t graph);
};
constexpr Call kSavers[] = {
    {"text", [](uint32_t* b, uint32_t* s, uint16_t g) { return XLRSaveText(b, s, g, "some text", 1); }},
    {"double", [](uint32_t* b, uint32_t* s, uint16_t g) { return XLRSaveDouble(b, s, g, 1, 2, 1); }},
    {"font", [](uint32_t* b, uint32_t* s, uint16_t g) { return XLRSaveFont(b, s, g, 1, 2, 3, 4, 1); }},
    {"set text",
     [](uint32_t* b, uint32_t* s, uint16_t g) { return XLRSaveSetText(b, s, g, 5, "some text", 1); }}};
constexpr Call kGetters[] = {
    {"text", [](uint32_t* b, uint32_t*, uint16_t g) { return XLRGetText(*b, g, nullptr, 1); }},
    {"double", [](uint32_t* b, uint32_t*, uint16_t g) { return XLRGetDouble(*b, g, nullptr, 1); }},
    {"font", [](uint32_t* b, uint32_t*,
                uint16_t g) { return XLRGetFont(*b, g, nullptr, nullptr, nullptr, nullptr, 1); }},
    {"set text", [](uint32_t* b, uint32_t*, uint16_t g) { return XLRGetSetText(*b, g, 5, nullptr, 1); }}};

TEST_P(GraphSlotsTest, NoBuffer_ComesFirst) {
  uint32_t none = 0;
  for (const Call& saver : kSavers) {
    EXPECT_EQ(saver.run(&none, &size_, 9), -1) << saver.label;
    EXPECT_EQ(saver.run(nullptr, &size_, 1), -1) << saver.label;
    EXPECT_EQ(saver.run(&buffer_, nullptr, 1), -1) << saver.label;
  }
  for (const Call& getter : kGetters) EXPECT_EQ(getter.run(&none, nullptr, 9), -1) << getter.label;
}

TEST_P(GraphSlotsTest, AGraphThatIsNotListed_ComesNext) {
  LoseHead();
  LeaveFree(0);
  uint32_t stale = buffer_ + 4;
  for (const Call& saver : kSavers) {
    EXPECT_EQ(saver.run(&buffer_, &size_, 3), -997) << saver.label;
    EXPECT_EQ(saver.run(&stale, &size_, 1), -997) << saver.label;
    EXPECT_EQ(saver.run(&buffer_, &size_, 1), -2) << saver.label;  // before the block, of which there is none
  }
  for (const Call& getter : kGetters) {
    EXPECT_EQ(getter.run(&buffer_, nullptr, 3), -997) << getter.label;
    EXPECT_EQ(getter.run(&stale, nullptr, 1), -997) << getter.label;
    EXPECT_EQ(getter.run(&buffer_, nullptr, 1), -2) << getter.label;
  }
}

TEST_P(GraphSlotsTest, WithoutABlockForTheRecord_NothingChanges) {
  for (const Call& saver : kSavers) EXPECT_EQ(saver.run(&buffer_, &size_, 1), 0) << saver.label;
  const Bytes image = Image();
  LeaveFree(0);
  for (const Call& saver : kSavers) EXPECT_EQ(saver.run(&buffer_, &size_, 1), -4) << saver.label;
  EXPECT_EQ(Image(), image);
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_P(GraphSlotsTest, AFailedPatchAtTheEnd_ReleasesTheBuffer) {
  for (const Call& saver : kSavers) {
    NewReference();
    Cram();
    EXPECT_EQ(saver.run(&buffer_, &size_, 1), -5) << saver.label;
    ExpectGone();
  }
}

TEST_P(GraphSlotsTest, AFailedPatchOfALongerRecord_ReleasesTheBuffer) {
  for (const bool of_a_set : {false, true}) {
    NewReference();
    EXPECT_EQ(Save("short"), 0);
    EXPECT_EQ(XLRSaveSetText(&buffer_, &size_, 1, 5, "short", 1), 0);
    Cram();
    const Call& saver = kSavers[of_a_set ? 3 : 0];
    EXPECT_EQ(saver.run(&buffer_, &size_, 1), -6) << saver.label;
    ExpectGone();
  }
}

TOLVENAR_IN_BOTH_STATES(GraphSlotsTest);

}  // namespace
}  // namespace tolvenar::testing
