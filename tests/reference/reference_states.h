// Tests on what a reference holds, each in two states of it: with its objects just made, among patches, and as it is read from a file. Also
// the records that stand in objects, and arrays of four dimensions.
//
//   class Tables : public RefStateTest { ... };
//   TEST_P(Tables, Something) { XLRCreateTable(...); Settle(); ... EXPECT_EQ(Objects(), Hex(TableHeadOf(1, 2, 1, 1, 1) + kTableEnd)); }
//   TOLVENAR_BOTH_STATES(Tables);
#pragma once

#include <string>
#include <vector>

#include "reference/reference_fixture.h"
#include "support/made_record.h"
#include "tolvenar/automation.h"

namespace tolvenar::testing {

enum class RefState { kFresh, kCompacted };

inline Bytes TableHeadOf(uint16_t id, uint16_t d1, uint16_t d2, uint16_t d3, uint16_t d4) {
  return Bytes{0xDF, 0x10, 10, 0} + U16(id) + U16(d1) + U16(d2) + U16(d3) + U16(d4);
}
inline Bytes CellText(uint32_t cell, const std::string& text) {
  const uint16_t length = static_cast<uint16_t>(text.size());
  return Bytes{0xD5, 0x10} + U16(static_cast<uint16_t>(length + 6)) + U32(cell) + U16(length) + Text(text);
}
inline Bytes CellValue(uint32_t cell, uint32_t low, uint32_t high) {
  return Bytes{0xD4, 0x10, 12, 0} + U32(cell) + U32(low) + U32(high);
}
inline Bytes CellPosition(uint32_t cell, uint32_t position) {
  return Bytes{0xF9, 0x10, 8, 0} + U32(cell) + U32(position);
}
inline Bytes BoxPosition(uint8_t axes, uint32_t first, uint32_t position, uint8_t a, uint16_t b, uint8_t c) {
  return Bytes{0xF8, 0x10, 13, 0, axes} + U32(first) + U32(position) + Bytes{a} + U16(b) + Bytes{c};
}
inline Bytes GraphHeadOf(uint16_t id, uint16_t table) {
  return Bytes{0xFC, 0x10, 4, 0} + U16(id) + U16(table);
}
inline Bytes GraphLink(uint8_t link, uint16_t table) {
  return Bytes{0xD6, 0x10, 3, 0, link} + U16(table);
}
inline Bytes EditHeadOf(uint8_t number_less_1, uint16_t id, uint16_t graph) {
  return Bytes{0xFB, 0x10, 5, 0, number_less_1} + U16(id) + U16(graph);
}

// A new reference in each test.
class RefContentsTest : public ReferenceTest {
 protected:
  void SetUp() override {
    ReferenceTest::SetUp();
    Load(kNewStream);
  }

  // Compacts the buffer, as a save and a read would give it.
  void Compact() {
    ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
    PutBufEnd(buffer_, size_);
  }

  // The objects that a walk meets, without the marks between them.
  std::string Objects() const {
    Bytes bytes;
    const Block block = Stream();
    const uint32_t live_mark = U32At(block, kRefHeaderMark);
    Walk walk = StartWalk(block, kRefRecordSize);
    for (; !walk.ended && walk.at != live_mark; Step(&walk)) {
      if (IsPrivate(block, walk.at, U8At(block, walk.at)) || IsChart(block, walk.at, kLowRefMark)) continue;
      Bytes record(kHeaderSize + LengthAt(block, walk.at));
      CopyOut(block, walk.at, record.data(), static_cast<uint32_t>(record.size()));
      bytes = bytes + record;
    }
    return walk.ended ? "(the walk does not come to the live mark)" : Hex(bytes);
  }

  // All of the buffer, to see that nothing changed.
  Bytes Image() const { return BlockContents(buffer_, size_); }

  // Takes blocks until this many slots are free, the largest ones. A last one that goes to a record leaves none for the buffer to grow into.
  void LeaveFree(uint32_t slots) {
    while (LiveBlocks() < kSlotCount - slots) ASSERT_NE(MEMORYALLOC(1), 0u);
  }

  // Says that the buffer fills its slot, so that a patch needs a larger one.
  void FillSlot() { size_ = MEMORYALLOCSIZE(buffer_) - kBufEndSize; }
};

class RefStateTest : public RefContentsTest, public ::testing::WithParamInterface<RefState> {
 protected:
  // Ends the preparation of a test.
  void Settle() {
    if (GetParam() == RefState::kCompacted) Compact();
  }
};

inline std::string RefStateName(const ::testing::TestParamInfo<RefState>& info) {
  return info.param == RefState::kFresh ? "Fresh" : "Compacted";
}

#define TOLVENAR_BOTH_STATES(suite)                                                               \
  INSTANTIATE_TEST_SUITE_P(All, suite, ::testing::Values(RefState::kFresh, RefState::kCompacted), \
                           RefStateName)

}  // namespace tolvenar::testing
