// Pool slots on Windows: zeroed blocks of the process heap. Addresses are 32 bits wide there, so any block
// will do; there is no inaccessible page behind it.
#include "platform/heap.h"

#include <windows.h>

namespace tolvenar::platform {

static_assert(sizeof(void*) == sizeof(uint32_t), "a handle is the 32-bit address of a block");

uint8_t* TakeSlot(uint32_t capacity) {
  return static_cast<uint8_t*>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, SIZE_T{capacity} + kSlotSpare));
}

void GiveSlot(uint8_t* base, [[maybe_unused]] uint32_t capacity) {
  if (base != nullptr) HeapFree(GetProcessHeap(), 0, base);
}

}  // namespace tolvenar::platform
