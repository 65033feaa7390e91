// Items deleted out of a graph, one or all, by number and index.
#include "reference/delete_property.h"

#include "reference/graph_fixture.h"
#include "reference/graph_slots.h"

namespace tolvenar::testing {
namespace {

// A record of every type that a graph holds, with index 3 where it has one, in the order of the items; the rest has no number.
constexpr uint8_t kLows[] = {0xDD, 0xDE, 0xE3, 0xE4, 0xE5, 0xE6, 0xE7, 0xE8, 0xE9, 0xEA, 0xEB, 0xEC,
                             0xED, 0xEE, 0xEF, 0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5, 0xF6, 0xF7, 0xFA};
constexpr uint8_t kUnnumbered[] = {0xD1, 0xD2, 0xD6, 0xD7, 0xD8, 0xD9, 0xF9};

bool HasIndex(uint8_t low) {
  return low == 0xE3 || low == 0xE9 || (low >= 0xEB && low <= 0xF0);
}

class DeletePropertyTest : public GraphTest {
 protected:
  static Bytes Record(uint8_t low, uint16_t index) { return GraphRecord(low, U16(index) + Bytes(10, low)); }

  static Bytes AllBut(uint8_t left_out, uint16_t index = 3) {
    Bytes all;
    for (const uint8_t low : kLows) {
      if (low != left_out) all = all + Record(low, index);
    }
    for (const uint8_t low : kUnnumbered) all = all + Record(low, index);
    return all;
  }

  // Puts all of them into graph 1, and nothing that could be taken for properties.
  void PutAll() {
    PutRecords(AllBut(0));
    Compact();
  }
};

TEST_P(DeletePropertyTest, EachItem_IsTheRecordOfItsType) {
  for (uint16_t item = 1; item <= 24; ++item) {
    NewReference();
    PutAll();
    const uint32_t size = size_;
    EXPECT_EQ(XLRDeleteProperty(buffer_, 1, item, 3), 0);
    ExpectContent(AllBut(kLows[item - 1u]));
    EXPECT_EQ(size_, size);
  }
}

TEST_P(DeletePropertyTest, TheIndex_CountsForItemsOfSetsOnly) {
  for (uint16_t item = 1; item <= 24; ++item) {
    NewReference();
    PutAll();
    EXPECT_EQ(XLRDeleteProperty(buffer_, 1, item, 0x103), 0);
    ExpectContent(AllBut(HasIndex(kLows[item - 1u]) ? 0 : kLows[item - 1u]));
  }
}

TEST_P(DeletePropertyTest, AnItem_IsDeletedOnce) {
  PutRecords(Record(0xE5, 1) + Record(0xE3, 3) + Record(0xE5, 2) + Record(0xE3, 3));
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 5, 0), 0);
  ExpectContent(Record(0xE3, 3) + Record(0xE5, 2) + Record(0xE3, 3));
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 3, 3), 0);
  ExpectContent(Record(0xE5, 2) + Record(0xE3, 3));
}

TEST_P(DeletePropertyTest, Item0_TakesAllAndOfSetsThatIndex) {
  PutRecords(AllBut(0, 3) + AllBut(0, 4));
  Compact();
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 0, 3), 0);
  Bytes left;
  for (const uint8_t low : kUnnumbered) left = left + Record(low, 3);
  for (const uint8_t low : kLows) {
    if (HasIndex(low)) left = left + Record(low, 4);
  }
  for (const uint8_t low : kUnnumbered) left = left + Record(low, 4);
  ExpectContent(left);
}

TEST_P(DeletePropertyTest, Item5_RemovesTheFirstTextOnly) {
  for (uint16_t slot = 1; slot <= 7; ++slot) {
    ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "text", slot), 0);
  }
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 5, 0), 0);
  for (uint16_t slot = 1; slot <= 7; ++slot) {
    BSTR text = nullptr;
    EXPECT_EQ(XLRGetText(buffer_, 1, &text, slot), 0);
    EXPECT_EQ(BytesOf(text), slot == 1 ? "(none)" : "text") << slot;
    SysFreeString(text);
  }
}

TEST_P(DeletePropertyTest, WhatIsNotThere_IsNoFailure) {
  const Bytes image = Image();
  for (uint16_t item = 0; item <= 24; ++item) EXPECT_EQ(XLRDeleteProperty(buffer_, 1, item, 0), 0) << item;
  PutAll();
  const Bytes full = Image();
  for (const uint16_t item : Unsigned{25, 26, 255, 0x105, 0xFFFF}) {
    EXPECT_EQ(XLRDeleteProperty(buffer_, 1, item, 3), 0) << item;
  }
  EXPECT_EQ(Image(), full);
  EXPECT_NE(image, full);
}

TEST_P(DeletePropertyTest, TheOtherGraph_KeepsItsItems) {
  ASSERT_EQ(Put(2, kKindGraph, Record(0xE5, 1)), 0);
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 5, 0), 0);
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 0, 0), 0);
  const Bytes walked = WalkedStream(buffer_);
  EXPECT_NE(Hex(walked).find(Hex(Record(0xE5, 1))), std::string::npos);
}

TEST_P(DeletePropertyTest, RecordsInFrontOfTheHead_AreTestedToo) {
  // The entry of graph 2 leads to graph 1.
  PutRecords(Record(0xE5, 1) + Record(0xE5, 2));
  Compact();
  RepointRefEntry(buffer_, 2, kKindGraph, kFirstHead);
  EXPECT_EQ(XLRDeleteProperty(buffer_, 2, 5, 0), -2);  // it ends at the first, before the head has come by
  EXPECT_EQ(Hex(Content()), Hex(Record(0xE5, 2)));
  EXPECT_EQ(XLRDeleteProperty(buffer_, 2, 0, 0), 0);
  EXPECT_EQ(Hex(Content()), "");
}

TEST_P(DeletePropertyTest, Results_InTheirOrder) {
  EXPECT_EQ(XLRDeleteProperty(0, 9, 5, 0), -1);
  EXPECT_EQ(XLRDeleteProperty(buffer_, 9, 5, 0), -997);
  EXPECT_EQ(XLRDeleteProperty(buffer_ + 4, 1, 5, 0), -997);
  LoseHead();
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 5, 0), -2);
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 0, 0), -2);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TOLVENAR_IN_BOTH_STATES(DeletePropertyTest);

}  // namespace
}  // namespace tolvenar::testing
