// The memory behind the pool: one zero-filled block per slot, in the low 4 GiB so that its address is a 32-bit handle.
//
//   ... | unused | capacity bytes | kSlotSpare bytes | inaccessible page |      (off Windows)
//
// Invariants: (1) a slot's base and everything in it fits a u32. (2) Off Windows the first byte behind the spare bytes faults, so
// that a mistake is a crash in a test and not a silent overwrite. (3) The spare bytes are there for the one record builder that
// writes a byte past its record; nothing else counts on them.
#pragma once

#include <cstdint>

namespace tolvenar::platform {

constexpr uint32_t kSlotSpare = 8;

// Takes a zero-filled block of `capacity` bytes from the system. Returns its base, or null when it can't be had.
uint8_t* TakeSlot(uint32_t capacity);

// Gives a block of TakeSlot back. `capacity` is the one it was taken with.
void GiveSlot(uint8_t* base, uint32_t capacity);

}  // namespace tolvenar::platform
