// MemoryPool: set-up, first fit and release. The slots and the invariants stand in memory_pool.h.
#include "foundation/memory_pool.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <new>

#include "platform/heap.h"

namespace tolvenar {

namespace {

// Sorted, so that the first fit is the smallest free slot that fits. The last two are alike on purpose: a
// workbook in one of them can be saved into the other.
constexpr std::array<int32_t, kSlotCount> kCapacities = {256,     512,     1024,      33000,    100000,
                                                         1000000, 1500000, 105000000, 105000000};

// The constructor only clears it, when the library is loaded; the destructor gives the slots back when the
// process exits.
struct MemoryPool {
  std::unique_ptr<uint32_t[]> liveBlocks;
  std::unique_ptr<uint32_t[]> usedSizes;
  int32_t slotCount = 0;
  uint32_t freeSlots = 0;
  uint32_t bytesInUse = 0;
  std::unique_ptr<uint32_t[]> slotBases;  // null: the pool is unset
  std::unique_ptr<int32_t[]> slotCapacities;
  int32_t tableLength = 0;

  ~MemoryPool() { MEMORYFREEALL(); }
};

MemoryPool pool;

constexpr size_t kNoSlot = SIZE_MAX;

// Set-up and release loop over the length of the tables, searches over the count of slots.
size_t TableLength() {
  return static_cast<size_t>(pool.tableLength);
}

size_t SearchedSlots() {
  return static_cast<size_t>(pool.slotCount);
}

// Back to unset, tables and counters; the slots themselves are the caller's business.
void ForgetTables() {
  pool.slotBases.reset();
  pool.slotCapacities.reset();
  pool.liveBlocks.reset();
  pool.usedSizes.reset();
  pool.slotCount = 0;
  pool.tableLength = 0;
  pool.freeSlots = 0;
  pool.bytesInUse = 0;
}

bool MakeTables() {
  constexpr size_t n = kSlotCount;
  pool.slotBases.reset(new (std::nothrow) uint32_t[n]());
  pool.slotCapacities.reset(new (std::nothrow) int32_t[n]());
  pool.liveBlocks.reset(new (std::nothrow) uint32_t[n]());
  pool.usedSizes.reset(new (std::nothrow) uint32_t[n]());
  return pool.slotBases && pool.slotCapacities && pool.liveBlocks && pool.usedSizes;
}

// Takes the nine slots. When one can't be had, those already taken stay lost to the process, on purpose, and
// the pool is unset again: the next MEMORYALLOC tries it all anew.
bool SetUp() {
  if (pool.slotBases) return true;
  bool complete = MakeTables();
  pool.tableLength = pool.slotCount = kSlotCount;
  pool.freeSlots = kSlotCount;
  for (size_t i = 0; complete && i < TableLength(); ++i) {
    pool.slotCapacities[i] = kCapacities[i];
    uint8_t* base = platform::TakeSlot(static_cast<uint32_t>(pool.slotCapacities[i]));
    pool.slotBases[i] = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(base));
    complete = base != nullptr;
  }
  if (!complete) ForgetTables();
  return complete;
}

// Index of the slot that holds the live block `handle`, or kNoSlot.
size_t SlotOf(uint32_t handle) {
  if (handle == 0 || !pool.slotBases) return kNoSlot;
  for (size_t i = 0; i < SearchedSlots(); ++i) {
    if (pool.liveBlocks[i] == handle) return i;
  }
  return kNoSlot;
}

// What a variable holds; a null variable holds 0.
uint32_t Value(const uint32_t* handle) {
  return handle != nullptr ? *handle : 0;
}

// First free slot from index `from` on that holds `size` bytes, or kNoSlot.
size_t FirstFit(size_t from, int32_t size) {
  for (size_t i = from; i < SearchedSlots(); ++i) {
    if (pool.liveBlocks[i] == 0 && pool.slotCapacities[i] >= size) return i;
  }
  return kNoSlot;
}

int32_t Release(uint32_t* handle, bool clear_used_size) {
  const size_t slot = SlotOf(Value(handle));
  if (slot == kNoSlot) return 0;
  pool.liveBlocks[slot] = 0;
  pool.bytesInUse -= pool.usedSizes[slot];
  if (clear_used_size) pool.usedSizes[slot] = 0;
  ++pool.freeSlots;
  *handle = 0;
  return 1;
}

// The bytes of a block and how many of `count` there are in its slot.
struct Span {
  uint8_t* bytes;
  int32_t count;
};

Span SpanOf(uint32_t handle, int32_t count) {
  const size_t slot = SlotOf(handle);
  if (slot == kNoSlot) return {nullptr, 0};
  return {BlockBytes(handle), std::min(count, pool.slotCapacities[slot])};
}

}  // namespace

uint32_t MEMORYALLOC(int32_t size) {
  const uint32_t base = AllocateForOverwrite(size);
  if (base != 0 && size > 0) std::memset(BlockBytes(base), 0, static_cast<size_t>(size));
  return base;
}

uint32_t AllocateForOverwrite(int32_t size) {
  if (!SetUp() || pool.freeSlots == 0) return 0;
  const size_t slot = FirstFit(0, size);
  if (slot == kNoSlot) return 0;
  const uint32_t base = pool.slotBases[slot];
  pool.liveBlocks[slot] = base;
  pool.usedSizes[slot] = static_cast<uint32_t>(size);
  pool.bytesInUse += static_cast<uint32_t>(size);
  --pool.freeSlots;
  return base;
}

bool PoolCanGive(int32_t size) {
  return SetUp() && pool.freeSlots != 0 && FirstFit(0, size) != kNoSlot;
}

uint32_t MEMORYREALLOC(uint32_t handle, int32_t new_size) {
  const size_t slot = SlotOf(handle);
  if (slot == kNoSlot) return 0;
  const bool fits = new_size <= pool.slotCapacities[slot];
  const size_t target = fits ? slot : FirstFit(slot + 1, new_size);
  if (target == kNoSlot) return 0;

  pool.bytesInUse += static_cast<uint32_t>(new_size) - pool.usedSizes[slot];
  if (target != slot) {
    // The whole slot travels, whatever lies behind the used bytes; the bytes behind it are as earlier tenants
    // left them.
    std::memcpy(BlockBytes(pool.slotBases[target]), BlockBytes(handle),
                static_cast<size_t>(pool.slotCapacities[slot]));
    pool.liveBlocks[target] = pool.slotBases[target];
    pool.liveBlocks[slot] = 0;
    pool.usedSizes[slot] = 0;
  }
  pool.usedSizes[target] = static_cast<uint32_t>(new_size);
  return pool.liveBlocks[target];
}

int32_t MEMORYFREE(uint32_t* handle) {
  return Release(handle, false);
}

int32_t MEMORYREMOVE(uint32_t* handle) {
  return Release(handle, true);
}

int32_t MEMORYISHANDLE(uint32_t handle) {
  const size_t slot = SlotOf(handle);
  return slot == kNoSlot ? 0 : static_cast<int32_t>(slot) + 1;
}

void MEMORYFREEALL() {
  if (!pool.slotBases) return;
  for (size_t i = 0; i < TableLength(); ++i) {
    platform::GiveSlot(BlockBytes(pool.slotBases[i]), static_cast<uint32_t>(pool.slotCapacities[i]));
  }
  ForgetTables();
}

uint32_t MEMORYHANDLES(uint32_t* bytes_in_use, uint32_t /*ignored*/) {
  if (bytes_in_use != nullptr) *bytes_in_use = pool.bytesInUse;
  return static_cast<uint32_t>(pool.slotCount) - pool.freeSlots;
}

uint32_t MEMORYSIZE(uint32_t handle) {
  const size_t slot = SlotOf(handle);
  return slot == kNoSlot ? 0 : pool.usedSizes[slot];
}

uint32_t MEMORYALLOCSIZE(uint32_t handle) {
  const size_t slot = SlotOf(handle);
  return slot == kNoSlot ? 0 : static_cast<uint32_t>(pool.slotCapacities[slot]);
}

int32_t MEMORYSET(const uint32_t* handle, int32_t count) {
  constexpr int32_t kPatternLength = 255;
  const Span span = SpanOf(Value(handle), count);
  if (count < 1 || span.bytes == nullptr) return 0;
  for (int32_t i = 0; i < span.count; ++i) span.bytes[i] = static_cast<uint8_t>(i % kPatternLength);
  return count;
}

int32_t MEMORYSET1(const uint32_t* handle, int32_t count, uint8_t value) {
  const Span span = SpanOf(Value(handle), count);
  if (count < 1 || span.bytes == nullptr) return 0;
  std::memset(span.bytes, value, static_cast<size_t>(span.count));
  return count;
}

uint32_t MEMORYGET(const uint32_t* handle, int32_t size, int32_t index) {
  if (index < 0 || index >= size)
    return 0;  // a negative index is not rejected as such: it lies outside the slot
  const Span span = SpanOf(Value(handle), size);
  return index < span.count ? span.bytes[index] : 0;
}

}  // namespace tolvenar
