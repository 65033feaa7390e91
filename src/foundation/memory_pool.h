// MemoryPool: all working memory of the library and every buffer it hands out. Nine slots of fixed capacity; a request takes a whole
// slot, so at most nine blocks are live in the process at any moment.
//
//   SLOT  CAPACITY      SLOT  CAPACITY      SLOT  CAPACITY
//      1       256         4     33000         7    1500000
//      2       512         5    100000         8  105000000
//      3      1024         6   1000000         9  105000000
//
// Invariants while the pool is set up: (1) slotCount - freeSlots is the number of non-null entries of liveBlocks. (2) A usedSizes
// entry means something only while its liveBlocks entry is non-null. (3) A handle is the base of its slot; it fits 32 bits.
// Only MEMORYALLOC sets the pool up; every other operation takes an unset pool for one without live blocks.
// Not thread-safe: the library is called from one thread at a time.
#pragma once

#include <cstdint>

namespace tolvenar {

constexpr int32_t kSlotCount = 9;

// Takes the first free slot, from slot 1 on, whose capacity is not below `size` (bytes, signed: a negative size fits every slot).
// The first `size` bytes are zeroed, the rest of the slot keeps what was there. Returns the handle, the caller's to release with
// MEMORYFREE; 0 when no free slot is large enough or the pool can't be set up.
uint32_t MEMORYALLOC(int32_t size);

// The same without zeroing: for a caller that writes all of the `size` bytes before anyone reads one of them.
uint32_t AllocateForOverwrite(int32_t size);

// True when MEMORYALLOC would give a block of `size` bytes now.
bool PoolCanGive(int32_t size);

// Resizes a block. In place when its slot holds `new_size`, and then bytes added are not zeroed; else it moves to the first free slot
// above its own that does, with the whole capacity of the old slot. Returns the handle, which may have changed; 0 when the
// handle is no live block or no slot above qualifies: the block is then untouched and still live.
uint32_t MEMORYREALLOC(uint32_t handle, int32_t new_size);

// Releases the block that *handle names and zeroes *handle. Returns 1; or 0, with nothing changed, when it is 0 or no live block.
// The slot's used size stays noted.
int32_t MEMORYFREE(uint32_t* handle);

// The same, and clears the slot's used size as well.
int32_t MEMORYREMOVE(uint32_t* handle);

// Slot number, 1 to 9, of a live block; 0 for anything else.
int32_t MEMORYISHANDLE(uint32_t handle);

// Gives all nine slots back to the system. Every handle is dead after it.
void MEMORYFREEALL();

// Returns the number of live blocks and stores the sum of their requested sizes in *bytes_in_use (unless that is null). The second
// argument is ignored.
uint32_t MEMORYHANDLES(uint32_t* bytes_in_use, uint32_t ignored);

// Requested size of a live block, 0 for anything else.
uint32_t MEMORYSIZE(uint32_t handle);

// Capacity of a live block's slot, 0 for anything else.
uint32_t MEMORYALLOCSIZE(uint32_t handle);

// Fills bytes 0 to count - 1 with index modulo 255 (the value 255 never occurs, on purpose). Returns count, 0 when count is below 1
// or the handle is no live block. What would lie behind the slot is not written.
int32_t MEMORYSET(const uint32_t* handle, int32_t count);

// The same with one value.
int32_t MEMORYSET1(const uint32_t* handle, int32_t count, uint8_t value);

// The byte at `index` when index is below `size` (signed), else 0. What lies outside the slot reads as 0.
uint32_t MEMORYGET(const uint32_t* handle, int32_t size, int32_t index);

// The block's bytes: a handle widened to an address. For blocks that the caller has just made and knows the size of.
inline uint8_t* BlockBytes(uint32_t handle) {
  return reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(handle));
}

}  // namespace tolvenar
