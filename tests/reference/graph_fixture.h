// A test on graph 1 of a reference, in two states: just created, and compacted, in which the records stand back to back and a patch at the
// graph's end displaces its neighbour. Graph 2 and table 1 stand behind it.
#pragma once

#include <string>

#include "reference/reference_fixture.h"
#include "support/test_array.h"

namespace tolvenar::testing {

class GraphTest : public ReferenceTest, public ::testing::WithParamInterface<bool> {
 protected:
  static constexpr uint32_t kFirstHead = 8;  // graph 1 is the first object

  void SetUp() override {
    ReferenceTest::SetUp();
    NewReference();
  }

  // Starts over, with an unset pool.
  void NewReference() {
    MEMORYFREEALL();
    Load(kNewStream);
    ASSERT_EQ(CreateGraph(1), 0);
    ASSERT_EQ(CreateGraph(2), 0);
    ASSERT_EQ(CreateTable(1), 0);
    if (GetParam()) Compact();
  }

  void Compact() { ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0); }

  // Puts records into graph 1, behind those that are there.
  void PutRecords(const Bytes& records) { ASSERT_EQ(Put(1, kKindGraph, records), 0); }

  // The records between head and end of graph 1 as the walk meets them, patch records left out.
  Bytes Content() const {
    const Bytes walked = WalkedStream(buffer_);
    const Bytes head = GraphHead(1);
    size_t at = kFirstHead + head.size();
    if (walked.size() < at || !std::equal(head.begin(), head.end(), walked.begin() + kFirstHead)) return {};
    const size_t from = at;
    while (at + 4 <= walked.size() && !(walked[at] == 0xE2 && (walked[at + 1] & 0x10) != 0)) {
      at += 4u + walked[at + 2] + walked[at + 3] * 256u;
    }
    if (at > walked.size()) return {};
    return Bytes(walked.begin() + static_cast<ptrdiff_t>(from), walked.begin() + static_cast<ptrdiff_t>(at));
  }

  // Graph 1 holds exactly these records, its neighbours are found and have none, and no more blocks are taken than the buffer's and `left`.
  void ExpectContent(const Bytes& records, uint32_t left = 0) const {
    EXPECT_EQ(Hex(Content()), Hex(records));
    EXPECT_TRUE(Find(2, kKindGraph).seen);
    EXPECT_TRUE(Find(1, kKindTable).seen);
    EXPECT_EQ(LiveBlocks(), 1 + left);
  }

  // The whole block, as a call that must not change it is to leave it.
  Bytes Image() const { return BlockContents(buffer_, size_); }

  // Leads the entry of graph 1 behind its head, so that the walk doesn't meet it.
  void LoseHead() {
    RepointRefEntry(buffer_, 1, kKindGraph, static_cast<uint32_t>(FindRefEntry(buffer_, 2, kKindGraph)));
  }

  // Takes blocks until only `free` are left, the largest ones.
  void LeaveFree(uint32_t free) {
    while (LiveBlocks() + free < 9) ASSERT_NE(MEMORYALLOC(1), 0u);
  }

  // Puts the buffer where it has no room to grow, with the three smallest slots free: six blocks are live then.
  void Cram() {
    buffer_ = MEMORYREALLOC(buffer_, 2000);
    ASSERT_EQ(MEMORYISHANDLE(buffer_), 4);
    for (int slot = 5; slot <= 9; ++slot) ASSERT_NE(MEMORYALLOC(33001), 0u);
    size_ = 33000;
  }

  // A patch has failed: the buffer is gone, and no block is taken but the five others and `left`.
  void ExpectGone(uint32_t left = 0) const {
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(LiveBlocks(), 5 + left);
  }
};

inline std::string StateName(const ::testing::TestParamInfo<bool>& state) {
  return state.param ? "Compacted" : "JustCreated";
}

// The tests of a suite run in both states.
#define TOLVENAR_IN_BOTH_STATES(Suite) \
  INSTANTIATE_TEST_SUITE_P(References, Suite, ::testing::Bool(), ::tolvenar::testing::StateName)

// Lists of numbers as the exports take them.
using Unsigned = std::initializer_list<uint16_t>;
using Signed = std::initializer_list<int16_t>;

// A record: low byte of the type, and payload.
inline Bytes GraphRecord(uint8_t low, const Bytes& payload) {
  return Bytes{low, 0x10} + U16(static_cast<uint16_t>(payload.size())) + payload;
}

}  // namespace tolvenar::testing
