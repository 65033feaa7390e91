// Pool slots: low, zeroed, writable to the last spare byte, and a crash behind it.
#include "platform/heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace tolvenar::platform {
namespace {

constexpr uint32_t kCapacities[] = {1, 256, 4088, 4089, 33000, 105000000};

TEST(Heap, SlotLiesInTheLow4GiB) {
  for (const uint32_t capacity : kCapacities) {
    uint8_t* base = TakeSlot(capacity);
    ASSERT_NE(base, nullptr) << capacity;
    EXPECT_LE(reinterpret_cast<uintptr_t>(base) + capacity + kSlotSpare - 1, UINT32_MAX) << capacity;
    GiveSlot(base, capacity);
  }
}

TEST(Heap, SlotIsZeroedToItsLastSpareByte) {
  for (const uint32_t capacity : kCapacities) {
    uint8_t* base = TakeSlot(capacity);
    ASSERT_NE(base, nullptr) << capacity;
    EXPECT_TRUE(std::all_of(base, base + capacity + kSlotSpare, [](uint8_t byte) { return byte == 0; }))
        << capacity;
    GiveSlot(base, capacity);
  }
}

TEST(Heap, SlotTakenAgainIsZeroedAgain) {
  uint8_t* first = TakeSlot(33000);
  ASSERT_NE(first, nullptr);
  std::memset(first, 0xCC, 33000 + kSlotSpare);
  GiveSlot(first, 33000);
  uint8_t* again = TakeSlot(33000);
  ASSERT_NE(again, nullptr);
  EXPECT_TRUE(std::all_of(again, again + 33000 + kSlotSpare, [](uint8_t byte) { return byte == 0; }));
  GiveSlot(again, 33000);
}

TEST(Heap, SlotHoldsWhatIsWrittenAllTheWay) {
  uint8_t* base = TakeSlot(33000);
  ASSERT_NE(base, nullptr);
  for (uint32_t i = 0; i < 33000 + kSlotSpare; ++i) base[i] = static_cast<uint8_t>(i * 7);
  for (uint32_t i = 0; i < 33000 + kSlotSpare; ++i) ASSERT_EQ(base[i], static_cast<uint8_t>(i * 7)) << i;
  GiveSlot(base, 33000);
}

TEST(Heap, SlotsAreApart) {
  uint8_t* one = TakeSlot(256);
  uint8_t* two = TakeSlot(256);
  ASSERT_NE(one, nullptr);
  ASSERT_NE(two, nullptr);
  std::memset(one, 1, 256 + kSlotSpare);
  std::memset(two, 2, 256 + kSlotSpare);
  EXPECT_EQ(one[0], 1);
  EXPECT_EQ(one[256 + kSlotSpare - 1], 1);
  GiveSlot(one, 256);
  EXPECT_EQ(two[0], 2);
  GiveSlot(two, 256);
}

TEST(Heap, GiveSlot_TakesNull) {
  GiveSlot(nullptr, 256);
  SUCCEED();
}

TEST(Heap, TakeSlot_MoreThanThereIsGivesNull) {
  uint8_t* first = TakeSlot(0xF0000000u);
  uint8_t* second = TakeSlot(0xF0000000u);
  EXPECT_TRUE(first == nullptr || second == nullptr);
  GiveSlot(first, 0xF0000000u);
  GiveSlot(second, 0xF0000000u);
}

// On Windows a slot is a block of the process heap, with no page of its own behind it.
TEST(HeapDeathTest, FirstByteBehindTheSpareBytesFaults) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const uint32_t capacity : {256u, 4088u, 33000u}) {
    uint8_t* base = TakeSlot(capacity);
    ASSERT_NE(base, nullptr);
    volatile uint8_t* behind = base + capacity + kSlotSpare;
    EXPECT_DEATH(*behind = 1, "") << capacity;
    GiveSlot(base, capacity);
  }
}

}  // namespace
}  // namespace tolvenar::platform
