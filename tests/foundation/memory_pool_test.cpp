// The memory pool: which slot a block takes, what moves and what stays, and what an unset pool answers.
#include "foundation/memory_pool.h"

#include <array>
#include <cstring>
#include <vector>

#include "platform/heap.h"
#include "support/pool_fixture.h"

#if !defined(_WIN32)
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#endif

namespace tolvenar {
namespace {

constexpr std::array<uint32_t, 9> kCapacities = {256,     512,     1024,      33000,    100000,
                                                 1000000, 1500000, 105000000, 105000000};
constexpr int32_t kLargest = 105000000;

class MemoryPoolTest : public testing::PoolTest {
 protected:
  // Takes the first `count` slots, in order.
  static std::vector<uint32_t> TakeSlots(int count) {
    std::vector<uint32_t> handles;
    for (int i = 0; i < count; ++i) handles.push_back(MEMORYALLOC(1));
    return handles;
  }
};

TEST_F(MemoryPoolTest, AllocateForOverwrite_LeavesTheBytesAsTheyAre) {
  uint32_t first = MEMORYALLOC(20);
  MEMORYSET1(&first, 20, 0x5A);
  MEMORYFREE(&first);
  const uint32_t again = AllocateForOverwrite(10);
  EXPECT_EQ(MEMORYISHANDLE(again), 1);
  EXPECT_EQ(MEMORYSIZE(again), 10u);
  EXPECT_EQ(BlockBytes(again)[0], 0x5A);
  EXPECT_EQ(BlockBytes(again)[9], 0x5A);
}

TEST_F(MemoryPoolTest, PoolCanGive_TellsWhatMemoryAllocWouldDo) {
  EXPECT_TRUE(PoolCanGive(kLargest));
  EXPECT_FALSE(PoolCanGive(kLargest + 1));
  uint32_t bytes = 0;
  EXPECT_EQ(MEMORYHANDLES(&bytes, 0), 0u);
  TakeSlots(8);
  EXPECT_TRUE(PoolCanGive(kLargest));
  TakeSlots(1);
  EXPECT_FALSE(PoolCanGive(1));
}

TEST_F(MemoryPoolTest, TenOneByteBlocks_NineInSlotOrderThenNull) {
  for (int32_t slot = 1; slot <= kSlotCount; ++slot) {
    const uint32_t handle = MEMORYALLOC(1);
    ASSERT_NE(handle, 0u);
    EXPECT_EQ(MEMORYISHANDLE(handle), slot);
    EXPECT_EQ(MEMORYALLOCSIZE(handle), kCapacities[static_cast<size_t>(slot - 1)]);
  }
  EXPECT_EQ(MEMORYALLOC(1), 0u);
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_F(MemoryPoolTest, FourBlocksOf100Bytes_OccupySlots1To4) {
  for (int32_t slot = 1; slot <= 4; ++slot) EXPECT_EQ(MEMORYISHANDLE(MEMORYALLOC(100)), slot);
}

TEST_F(MemoryPoolTest, AboveTheLargestCapacity_TakesNothing) {
  EXPECT_EQ(MEMORYALLOC(kLargest + 1), 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(MemoryPoolTest, LargestSize_TakesSlot8Then9ThenFails) {
  EXPECT_EQ(MEMORYISHANDLE(MEMORYALLOC(kLargest)), 8);
  EXPECT_EQ(MEMORYISHANDLE(MEMORYALLOC(kLargest)), 9);
  EXPECT_EQ(MEMORYALLOC(kLargest), 0u);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(MemoryPoolTest, EveryCapacity_FitsItsOwnSlotExactly) {
  for (size_t i = 0; i < kCapacities.size(); ++i) {
    uint32_t handle = MEMORYALLOC(static_cast<int32_t>(kCapacities[i]));
    const int32_t want =
        i == 8 ? 8 : static_cast<int32_t>(i + 1);  // slots 8 and 9 are alike, the first fit takes 8
    EXPECT_EQ(MEMORYISHANDLE(handle), want);
    MEMORYFREE(&handle);
  }
}

TEST_F(MemoryPoolTest, Block257_TakesSlot2AndTellsBothSizes) {
  const uint32_t handle = MEMORYALLOC(257);
  EXPECT_EQ(MEMORYISHANDLE(handle), 2);
  EXPECT_EQ(MEMORYSIZE(handle), 257u);
  EXPECT_EQ(MEMORYALLOCSIZE(handle), 512u);
}

TEST_F(MemoryPoolTest, SmallRequest_TakesABigSlotWhenTheSmallOnesAreTaken) {
  TakeSlots(7);
  EXPECT_EQ(MEMORYISHANDLE(MEMORYALLOC(1)), 8);
}

TEST_F(MemoryPoolTest, ZeroBytes_TakesASlotAndAddsNothing) {
  const uint32_t handle = MEMORYALLOC(0);
  EXPECT_EQ(MEMORYISHANDLE(handle), 1);
  EXPECT_EQ(LiveBlocks(), 1u);
  EXPECT_EQ(BytesInUse(), 0u);
}

TEST_F(MemoryPoolTest, NegativeSize_FitsTheFirstFreeSlotAndZeroesNothing) {
  uint32_t handle = MEMORYALLOC(256);
  std::memset(BlockBytes(handle), 0xAA, 256);
  MEMORYFREE(&handle);
  handle = MEMORYALLOC(-1000);
  EXPECT_EQ(MEMORYISHANDLE(handle), 1);
  EXPECT_EQ(BlockBytes(handle)[0], 0xAA);
  MEMORYFREE(&handle);
  EXPECT_EQ(BytesInUse(), 0u);
}

TEST_F(MemoryPoolTest, Alloc_ZeroesTheRequestedBytesOnly) {
  uint32_t handle = MEMORYALLOC(256);
  std::memset(BlockBytes(handle), 0xAA, 256);
  MEMORYFREE(&handle);
  const uint32_t again = MEMORYALLOC(10);
  for (int i = 0; i < 256; ++i) ASSERT_EQ(BlockBytes(again)[i], i < 10 ? 0 : 0xAA) << "byte " << i;
}

TEST_F(MemoryPoolTest, FirstUse_AllSlotsAreZeroThroughout) {
  for (int32_t slot = 0; slot < 7; ++slot) {
    const uint32_t handle = MEMORYALLOC(0);
    const uint8_t* bytes = BlockBytes(handle);
    for (uint32_t i = 0; i < MEMORYALLOCSIZE(handle); ++i) ASSERT_EQ(bytes[i], 0);
  }
}

TEST_F(MemoryPoolTest, Realloc_WithinTheSlotKeepsTheHandleAndCounts) {
  const uint32_t handle = MEMORYALLOC(257);
  EXPECT_EQ(MEMORYREALLOC(handle, 512), handle);
  EXPECT_EQ(MEMORYSIZE(handle), 512u);
  EXPECT_EQ(BytesInUse(), 512u);
}

TEST_F(MemoryPoolTest, Realloc_GrowingInPlaceDoesNotZeroTheNewBytes) {
  const uint32_t handle = MEMORYALLOC(10);
  BlockBytes(handle)[100] = 0x77;
  EXPECT_EQ(MEMORYREALLOC(handle, 200), handle);
  EXPECT_EQ(BlockBytes(handle)[100], 0x77);
}

TEST_F(MemoryPoolTest, Realloc_BeyondTheSlotMovesUpWithTheWholeOldCapacity) {
  const uint32_t handle = MEMORYALLOC(257);
  for (int i = 0; i < 512; ++i) BlockBytes(handle)[i] = static_cast<uint8_t>(i * 7);
  const uint32_t moved = MEMORYREALLOC(handle, 513);
  EXPECT_EQ(MEMORYISHANDLE(moved), 3);
  EXPECT_EQ(MEMORYISHANDLE(handle), 0);
  EXPECT_EQ(MEMORYSIZE(moved), 513u);
  EXPECT_EQ(BytesInUse(), 513u);
  EXPECT_EQ(LiveBlocks(), 1u);
  for (int i = 0; i < 512; ++i) ASSERT_EQ(BlockBytes(moved)[i], static_cast<uint8_t>(i * 7)) << "byte " << i;
}

TEST_F(MemoryPoolTest, Realloc_LeavesTheBytesBehindTheOldCapacityAsTheyWere) {
  uint32_t tenant = MEMORYALLOC(1024);
  std::memset(BlockBytes(tenant), 0x55, 1024);
  MEMORYFREE(&tenant);
  const uint32_t small = MEMORYALLOC(512);
  EXPECT_EQ(MEMORYISHANDLE(small), 2);
  const uint32_t moved = MEMORYREALLOC(small, 1024);
  EXPECT_EQ(BlockBytes(moved)[511], 0);
  EXPECT_EQ(BlockBytes(moved)[512], 0x55);
}

TEST_F(MemoryPoolTest, Realloc_SearchesUpwardOnly) {
  std::vector<uint32_t> handles = TakeSlots(9);
  for (size_t i : {0u, 1u, 2u}) MEMORYFREE(&handles[i]);
  EXPECT_EQ(MEMORYREALLOC(handles[3], 33001), 0u);
  EXPECT_EQ(MEMORYISHANDLE(handles[3]), 4);
  EXPECT_EQ(MEMORYSIZE(handles[3]), 1u);
  EXPECT_EQ(LiveBlocks(), 6u);
}

TEST_F(MemoryPoolTest, Realloc_PassesOverTakenSlotsToTheFirstFreeOneThatIsLargeEnough) {
  std::vector<uint32_t> handles = TakeSlots(9);
  for (size_t i : {1u, 2u, 4u, 5u, 6u}) MEMORYFREE(&handles[i]);
  const uint32_t moved = MEMORYREALLOC(handles[0], 1025);
  EXPECT_EQ(MEMORYISHANDLE(moved), 5);  // 2 and 3 are free and too small, 4 is taken
  EXPECT_EQ(LiveBlocks(), 4u);
}

TEST_F(MemoryPoolTest, Realloc_ShrinkStaysInItsSlot) {
  const uint32_t handle = MEMORYALLOC(33000);
  EXPECT_EQ(MEMORYREALLOC(handle, 10), handle);
  EXPECT_EQ(MEMORYISHANDLE(handle), 4);
  EXPECT_EQ(MEMORYSIZE(handle), 10u);
  EXPECT_EQ(BytesInUse(), 10u);
}

TEST_F(MemoryPoolTest, Realloc_FromSlot8DoesNotGoTo9) {
  const uint32_t handle = MEMORYALLOC(kLargest);
  EXPECT_EQ(MEMORYREALLOC(handle, kLargest + 1), 0u);
  EXPECT_EQ(MEMORYISHANDLE(handle), 8);
}

TEST_F(MemoryPoolTest, Realloc_OfWhatIsNoLiveBlockGivesNull) {
  const uint32_t handle = MEMORYALLOC(1);
  EXPECT_EQ(MEMORYREALLOC(0, 10), 0u);
  EXPECT_EQ(MEMORYREALLOC(handle + 1, 10), 0u);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(MemoryPoolTest, Free_ReleasesAndZeroesTheVariable) {
  uint32_t handle = MEMORYALLOC(100);
  const uint32_t address = handle;
  EXPECT_EQ(MEMORYFREE(&handle), 1);
  EXPECT_EQ(handle, 0u);
  EXPECT_EQ(MEMORYISHANDLE(address), 0);
  EXPECT_EQ(MEMORYSIZE(address), 0u);
  EXPECT_EQ(MEMORYALLOCSIZE(address), 0u);
  EXPECT_EQ(BytesInUse(), 0u);
  EXPECT_EQ(MEMORYALLOC(100), address);
}

TEST_F(MemoryPoolTest, Free_OfZeroOrOfACopyOfAFreedHandleChangesNothing) {
  uint32_t zero = 0;
  EXPECT_EQ(MEMORYFREE(&zero), 0);
  uint32_t handle = MEMORYALLOC(1);
  uint32_t copy = handle;
  MEMORYFREE(&handle);
  const uint32_t before = copy;
  EXPECT_EQ(MEMORYFREE(&copy), 0);
  EXPECT_EQ(copy, before);
  EXPECT_EQ(MEMORYREMOVE(&copy), 0);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(MemoryPoolTest, Free_LeavesTheContentsStanding) {
  uint32_t handle = MEMORYALLOC(4);
  uint8_t* bytes = BlockBytes(handle);
  bytes[2] = 9;
  MEMORYFREE(&handle);
  EXPECT_EQ(bytes[2], 9);
}

TEST_F(MemoryPoolTest, Remove_ReleasesAndZeroesTheVariable) {
  uint32_t handle = MEMORYALLOC(100);
  EXPECT_EQ(MEMORYREMOVE(&handle), 1);
  EXPECT_EQ(handle, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
  EXPECT_EQ(BytesInUse(), 0u);
}

TEST_F(MemoryPoolTest, NullVariable_CountsAsOneThatHoldsZero) {
  EXPECT_EQ(MEMORYFREE(nullptr), 0);
  EXPECT_EQ(MEMORYREMOVE(nullptr), 0);
  EXPECT_EQ(MEMORYSET(nullptr, 4), 0);
  EXPECT_EQ(MEMORYSET1(nullptr, 4, 1), 0);
  EXPECT_EQ(MEMORYGET(nullptr, 4, 1), 0u);
  EXPECT_EQ(MEMORYHANDLES(nullptr, 0), 0u);
}

TEST_F(MemoryPoolTest, IsHandle_OnlyForTheBaseOfALiveBlock) {
  const uint32_t handle = MEMORYALLOC(100);
  EXPECT_EQ(MEMORYISHANDLE(handle), 1);
  EXPECT_EQ(MEMORYISHANDLE(handle + 4), 0);
  EXPECT_EQ(MEMORYISHANDLE(0), 0);
}

TEST_F(MemoryPoolTest, Handles_CountsBlocksAndRequestedBytes) {
  MEMORYALLOC(100);
  MEMORYALLOC(300);
  uint32_t bytes = 0;
  EXPECT_EQ(MEMORYHANDLES(&bytes, 0xFFFFFFFF), 2u);
  EXPECT_EQ(bytes, 400u);
}

TEST_F(MemoryPoolTest, UnsetPool_AnswersAsIfNoBlockWereLive) {
  uint32_t bytes = 77;
  uint32_t handle = 4096;
  EXPECT_EQ(MEMORYHANDLES(&bytes, 0), 0u);
  EXPECT_EQ(bytes, 0u);
  EXPECT_EQ(MEMORYREALLOC(handle, 1), 0u);
  EXPECT_EQ(MEMORYFREE(&handle), 0);
  EXPECT_EQ(MEMORYREMOVE(&handle), 0);
  EXPECT_EQ(handle, 4096u);
  EXPECT_EQ(MEMORYISHANDLE(handle), 0);
  EXPECT_EQ(MEMORYSIZE(handle), 0u);
  EXPECT_EQ(MEMORYALLOCSIZE(handle), 0u);
  EXPECT_EQ(MEMORYSET(&handle, 4), 0);
  EXPECT_EQ(MEMORYSET1(&handle, 4, 1), 0);
  EXPECT_EQ(MEMORYGET(&handle, 4, 0), 0u);
  MEMORYFREEALL();
}

TEST_F(MemoryPoolTest, FreeAll_EndsEveryHandleAndThePoolComesBack) {
  const uint32_t handle = MEMORYALLOC(100);
  MEMORYFREEALL();
  EXPECT_EQ(MEMORYISHANDLE(handle), 0);
  EXPECT_EQ(LiveBlocks(), 0u);
  EXPECT_EQ(BytesInUse(), 0u);
  EXPECT_EQ(MEMORYISHANDLE(MEMORYALLOC(1)), 1);
}

TEST_F(MemoryPoolTest, Set_WritesThePatternModulo255) {
  uint32_t handle = MEMORYALLOC(600);
  EXPECT_EQ(MEMORYSET(&handle, 520), 520);
  const uint8_t* bytes = BlockBytes(handle);
  EXPECT_EQ(bytes[0], 0);
  EXPECT_EQ(bytes[254], 254);
  EXPECT_EQ(bytes[255], 0);
  EXPECT_EQ(bytes[510], 0);
  EXPECT_EQ(bytes[519], 9);
  EXPECT_EQ(bytes[520], 0);
}

TEST_F(MemoryPoolTest, Set_CountBelowOneWritesNothing) {
  uint32_t handle = MEMORYALLOC(4);
  BlockBytes(handle)[0] = 5;
  for (int32_t count : {0, -1}) {
    EXPECT_EQ(MEMORYSET(&handle, count), 0);
    EXPECT_EQ(MEMORYSET1(&handle, count, 9), 0);
  }
  EXPECT_EQ(BlockBytes(handle)[0], 5);
}

TEST_F(MemoryPoolTest, Set1_WritesTheValueBehindTheRequestedSizeToo) {
  uint32_t handle = MEMORYALLOC(4);
  EXPECT_EQ(MEMORYSET1(&handle, 20, 0xEE), 20);
  EXPECT_EQ(BlockBytes(handle)[19], 0xEE);
  EXPECT_EQ(BlockBytes(handle)[20], 0);
}

TEST_F(MemoryPoolTest, Set_StopsAtTheEndOfTheSlot) {
  uint32_t handle = MEMORYALLOC(1);
  uint8_t* behind = BlockBytes(handle) + 256;
  EXPECT_EQ(MEMORYSET1(&handle, 100000, 0xEE), 100000);
  EXPECT_EQ(MEMORYSET(&handle, 100000), 100000);
  for (uint32_t i = 0; i < platform::kSlotSpare; ++i) EXPECT_EQ(behind[i], 0);
}

TEST_F(MemoryPoolTest, Get_GivesTheByteUnsigned) {
  uint32_t handle = MEMORYALLOC(4);
  BlockBytes(handle)[3] = 0xFE;
  EXPECT_EQ(MEMORYGET(&handle, 4, 3), 0xFEu);
}

TEST_F(MemoryPoolTest, Get_IndexNotBelowSizeGivesZero) {
  uint32_t handle = MEMORYALLOC(8);
  MEMORYSET1(&handle, 8, 0xFE);
  EXPECT_EQ(MEMORYGET(&handle, 4, 4), 0u);
  EXPECT_EQ(MEMORYGET(&handle, 4, 5), 0u);
}

TEST_F(MemoryPoolTest, Get_OutsideTheSlotReadsZero) {
  uint32_t handle = MEMORYALLOC(8);
  EXPECT_EQ(MEMORYGET(&handle, 1000000, 256), 0u);
  EXPECT_EQ(MEMORYGET(&handle, 4, -1), 0u);
}

TEST_F(MemoryPoolTest, Handles_FitIn32BitsWithTheWholeCapacity) {
  for (uint32_t handle : TakeSlots(9)) {
    EXPECT_LE(static_cast<uint64_t>(handle) + MEMORYALLOCSIZE(handle), 0x100000000ull);
  }
}

#if !defined(_WIN32)
// Address space in use, in bytes.
uint64_t AddressSpace() {
  uint64_t pages = 0;
  if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%lu", &pages) != 1) pages = 0;
    std::fclose(file);
  }
  return pages * static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

// In a process of its own: with room for slots 1 to 8 but not for 9, set-up fails and keeps what it took;
// with the limit lifted the next MEMORYALLOC sets all of the pool up. Exits with 0 when all of that was so. (The
// system's heap has no such limit to set.)
void SetUpUnderALimit() {
  rlimit old{};
  getrlimit(RLIMIT_AS, &old);
  const uint64_t before = AddressSpace();
  rlimit tight = old;
  tight.rlim_cur = before + 150000000;
  setrlimit(RLIMIT_AS, &tight);
  uint32_t bytes = 1;
  const bool failed = MEMORYALLOC(1) == 0 && MEMORYHANDLES(&bytes, 0) == 0 && bytes == 0;
  const bool kept = AddressSpace() - before > 105000000;
  setrlimit(RLIMIT_AS, &old);
  bool recovered = true;
  for (int32_t slot = 1; slot <= kSlotCount; ++slot) recovered &= MEMORYISHANDLE(MEMORYALLOC(1)) == slot;
  std::_Exit((failed ? 0 : 1) | (kept ? 0 : 2) | (recovered ? 0 : 4));
}

TEST_F(MemoryPoolTest, SetUp_ThatFailsKeepsTheBlocksAndIsTriedAgain) {
  EXPECT_EXIT(SetUpUnderALimit(), ::testing::ExitedWithCode(0), "");
}
#endif

}  // namespace
}  // namespace tolvenar
