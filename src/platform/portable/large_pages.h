// Large pages for what is filled at once: the first touch of each small page costs more than the copy into it.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>

namespace tolvenar::platform {

// Asks the system, where it knows such a thing, for large pages behind the `size` bytes at `start`, which begin a page and have not been
// touched. A hint: no memory is used up before it is touched, and nothing depends on the answer.
inline void AskForLargePages(void* start, size_t size) {
#if defined(MADV_HUGEPAGE)
  madvise(start, size, MADV_HUGEPAGE);
#else
  static_cast<void>(start);
  static_cast<void>(size);
#endif
}

// Zeroed pages for `size` bytes, large ones if possible; null when they can't be had.
inline uint8_t* TakePages(size_t size) {
  void* start = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (start == MAP_FAILED) return nullptr;
  AskForLargePages(start, size);
  return static_cast<uint8_t*>(start);
}

// Gives back what TakePages has given for `size` bytes; null is passed over.
inline void GivePages(uint8_t* start, size_t size) {
  if (start != nullptr) munmap(start, size);
}

}  // namespace tolvenar::platform
