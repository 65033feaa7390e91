// Damage: a reference with everything that tables, graphs and chart edits have, in a buffer that fills its slot to the last byte, so that a
// read behind it would hit the page that can't be read. It is spoilt byte by byte, cut, and filled with random jumps; every export must
// come back and leave no block behind.
#include <random>

#include "reference/chart_edit.h"
#include "reference/graph_object.h"
#include "reference/reference_index.h"
#include "reference/reference_states.h"
#include "reference/reference_table.h"
#include "reference/table_array.h"
#include "reference/table_positions.h"
#include "support/test_array.h"

namespace tolvenar::testing {
namespace {

constexpr uint32_t kSlot = 1024;
constexpr uint16_t kIds[] = {1, 2};  // of the tables, of the graphs; the numbers of the chart edits
constexpr GridCell kSizes = {3, 2, 2, 2};

class ReferenceContentsDamage : public RefStateTest {
 protected:
  void SetUp() override {
    RefStateTest::SetUp();
    Make(0);
    ASSERT_LT(size_, kSlot);
    const uint32_t padding = kSlot - size_;
    RefStateTest::SetUp();
    Make(padding);
    ASSERT_EQ(size_, kSlot);
    whole_ = Image();
    ASSERT_TRUE(AllReadable());
    MEMORYFREEALL();
    for (int slot = 1; slot <= 2; ++slot) ASSERT_NE(MEMORYALLOC(1), 0u);  // so that the third has 1024 bytes
  }

  // Two tables, two graphs and two chart edits, with a text of `padding` bytes.
  void Make(uint32_t padding) {
    for (int i = 0; i < 2; ++i) {
      ASSERT_GT(XLRCreateTable(&buffer_, &size_, 3, 2, 2, 2), 0);
      ASSERT_GT(XLRCreateGraph(&buffer_, &size_, 1), 0);
    }
    for (const uint16_t number : kIds) {
      ASSERT_EQ(XLRCreateChartEdit(&buffer_, &size_, static_cast<uint8_t>(number), 4, 1), 0);
    }
    for (uint32_t i = 0; i < 24; ++i)
      array_.Set(1 + static_cast<LONG>(i % 3), 1 + static_cast<LONG>(i / 3 % 2), 1, 1, 9 + i % 5);
    ASSERT_EQ(XLRFillTable(&buffer_, &size_, array_.Ref(), 1), 0);
    ASSERT_EQ(XLRTextToTable(&buffer_, &size_, 1, {1, 1, 1, 1}, std::string(padding, 'x').c_str()), 0);
    ASSERT_EQ(XLRValueToTable(&buffer_, &size_, 1, {2, 2, 2, 2}, 1, 2), 0);
    ASSERT_EQ(XLRUpdateGraphTable(&buffer_, &size_, 1, 2, 3), 0);
    Settle();
  }

  bool AllReadable() {
    return XLRGetRefTable(buffer_, 1, array_.Ref()) == 0 && XLRGetNumItems(buffer_, 1) == 2 &&
           XLRTableByGraph(buffer_, 1, 3) == 2;
  }

  // The whole reference again, in a slot that it fills.
  void Restore() {
    MEMORYFREE(&buffer_);
    buffer_ = MEMORYALLOC(static_cast<int32_t>(kSlot));
    ASSERT_EQ(MEMORYALLOCSIZE(buffer_), kSlot);
    size_ = kSlot;
    CopyIn(Stream(), 0, whole_.data(), kSlot);
  }

  void ReadAll();
  void ChangeAll();
  void RunAll() {
    ReadAll();
    EXPECT_EQ(LiveBlocks(), 3u);
    ChangeAll();
    EXPECT_EQ(LiveBlocks(), buffer_ != 0 ? 3u : 2u);
  }

  Bytes whole_;
  TableArray array_{kSizes};
  TestArray first_{VT_R8, 1, 2};
  TestArray second_{VT_I4, 1, 2};
};
TOLVENAR_BOTH_STATES(ReferenceContentsDamage);

void ReferenceContentsDamage::ReadAll() {
  for (const uint16_t id : kIds) {
    BSTR text = nullptr;
    uint64_t value = 0;
    XLRGetTableText(buffer_, id, &text, {1, 1, 1, 1});
    SysFreeString(text);
    XLRGetTableValue(buffer_, id, &value, {2, 2, 2, 2});
    XLRGetRefTable(buffer_, id, array_.Ref());
    XLRTableByGraph(buffer_, id, 3);
    XLRGraphByChartEdit(buffer_, id, 4);
  }
  for (int16_t kind = 1; kind <= 3; ++kind) XLRGetNumItems(buffer_, kind);
  XLRGetIndices(buffer_, first_.Ref(), second_.Ref(), 2, 1);
}

// Once a change has lost the buffer, the others are told so.
void ReferenceContentsDamage::ChangeAll() {
  for (const uint16_t unsigned_id : kIds) {
    const int16_t id = static_cast<int16_t>(unsigned_id);
    XLRTextToTable(&buffer_, &size_, id, {1, 1, 1, 1}, "replaced");
    XLRValueToTable(&buffer_, &size_, id, {1, 1, 1, 1}, 3, 4);
    XLRTextToTable(&buffer_, &size_, static_cast<int16_t>(-id), {1, 1, 1, 1}, "");
    XLRFillTable(&buffer_, &size_, array_.Ref(), unsigned_id);
    XLRUpdateGraph(buffer_, unsigned_id, 7);
    XLRUpdateGraphTable(&buffer_, &size_, unsigned_id, 7, 4);
    XLRUpdateGraphTable(&buffer_, &size_, unsigned_id, 0, 3);
    XLRUpdateChartEdit(buffer_, unsigned_id, 4, 9);
  }
  XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1);
  XLRCreateGraph(&buffer_, &size_, 1);
  XLRCreateChartEdit(&buffer_, &size_, 3, 4, 1);
  for (const uint16_t id : kIds) {
    XLRDeleteTable(buffer_, id);
    XLRDeleteGraph(buffer_, id);
    XLRDeleteChartEdit(buffer_, id, 4);
  }
}

TEST_P(ReferenceContentsDamage, EveryByteEndsEveryExport) {
  for (uint32_t at = 0; at < kSlot && !HasFailure(); ++at) {
    for (const uint8_t spoilt : Bytes{0x00, 0x7F, 0xFA, 0xFE, 0xFF}) {
      Restore();
      PutU8(Stream(), at, spoilt);
      RunAll();
    }
  }
}

TEST_P(ReferenceContentsDamage, APrefixEndsEveryExport) {
  for (uint32_t n = 0; n < kSlot && !HasFailure(); n += 3) {
    Restore();
    std::fill(Stream().base + n, Stream().base + kSlot, uint8_t{0});
    RunAll();
  }
}

TEST_P(ReferenceContentsDamage, RandomBytesAndJumpsEndEveryExport) {
  std::mt19937 random(8102);
  const auto pick = [&](uint32_t n) { return static_cast<uint32_t>(random()) % n; };
  for (int round = 0; round < 1500 && !HasFailure(); ++round) {
    Restore();
    for (uint32_t spoilt = pick(6); spoilt != 0; --spoilt)
      PutU8(Stream(), pick(kSlot), static_cast<uint8_t>(pick(256)));
    for (uint32_t jumps = pick(4); jumps != 0; --jumps) {
      const uint32_t at = pick(kSlot - kJumpSize);
      PutU16(Stream(), at, pick(2) != 0 ? 0xFEFF : 0xFEFA);
      PutU16(Stream(), at + kRecordLength, kJumpSize - kHeaderSize);
      PutU32(Stream(), at + kJumpTarget, pick(kSlot + 16));
    }
    RunAll();
  }
}

// Entries that lead anywhere.
TEST_P(ReferenceContentsDamage, ObjectsThatAreEnteredAnywhereEndEveryExport) {
  for (uint32_t target = 0; target < kSlot + 16 && !HasFailure(); target += 3) {
    Restore();
    for (const uint16_t id : kIds) {
      RepointRefEntry(buffer_, id, kKindTable, target);
      RepointRefEntry(buffer_, id, kKindGraph, target);
      RepointRefEntry(buffer_, 4, EditKindWord(id), target);
    }
    RunAll();
  }
}

}  // namespace
}  // namespace tolvenar::testing
