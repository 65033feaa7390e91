// Pool slots off Windows: pages of the low 4 GiB, laid out as heap.h draws them.
#include "platform/heap.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>

#include "platform/portable/large_pages.h"

namespace tolvenar::platform {

namespace {

constexpr uint32_t kLargeSlot = 16u << 20;  // a workbook is read and copied whole

size_t PageSize() {
  return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

// Bytes of the pages that a slot takes, without the inaccessible one.
size_t SlotPages(uint32_t capacity) {
  const size_t page = PageSize();
  return (capacity + kSlotSpare + page - 1) / page * page;
}

bool InLow4GiB(const void* address, size_t size) {
  return reinterpret_cast<uintptr_t>(address) + size - 1 <= UINT32_MAX;
}

#if !defined(MAP_32BIT)
#define MAP_32BIT 0
#endif
#if !defined(MAP_FIXED_NOREPLACE)
#define MAP_FIXED_NOREPLACE 0
#endif

constexpr int kMapFlags = MAP_PRIVATE | MAP_ANONYMOUS;

void* MapAt(uintptr_t hint, size_t size, int extra_flags) {
  void* got =
      mmap(reinterpret_cast<void*>(hint), size, PROT_READ | PROT_WRITE, kMapFlags | extra_flags, -1, 0);
  if (got == MAP_FAILED) return nullptr;
  if (InLow4GiB(got, size)) return got;
  munmap(got, size);
  return nullptr;
}

// Pages below 4 GiB: where the system has a flag for it by that, else by trying one place after another.
void* MapLow(size_t size) {
  if (MAP_32BIT != 0) {
    if (void* got = MapAt(0, size, MAP_32BIT)) return got;
  }
  constexpr uintptr_t kFirst = 0x10000000;
  constexpr uintptr_t kLast = 0xF0000000;
  constexpr uintptr_t kStride = 0x01000000;
  for (uintptr_t hint = kFirst; hint < kLast; hint += kStride) {
    if (void* got = MapAt(hint, size, MAP_FIXED_NOREPLACE)) return got;
  }
  return nullptr;
}

}  // namespace

uint8_t* TakeSlot(uint32_t capacity) {
  const size_t pages = SlotPages(capacity);
  void* start = MapLow(pages + PageSize());
  if (start == nullptr) return nullptr;
  uint8_t* guard = static_cast<uint8_t*>(start) + pages;
  mprotect(guard, PageSize(), PROT_NONE);
  if (capacity >= kLargeSlot) AskForLargePages(start, pages);
  return guard - kSlotSpare - capacity;
}

void GiveSlot(uint8_t* base, uint32_t capacity) {
  if (base == nullptr) return;
  const size_t pages = SlotPages(capacity);
  uint8_t* guard = base + capacity + kSlotSpare;
  munmap(guard - pages, pages + PageSize());
}

}  // namespace tolvenar::platform
