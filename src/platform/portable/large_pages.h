// Large pages for what is filled at once: the first touch of each small page costs more than the copy into it.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>

namespace tolvenar::platform {

constexpr size_t kSmallPage =
    4096;  // or a multiple of it: a hint for a part of a page is refused and changes nothing

// Asks the system, where it knows such a thing, for large pages behind the `size` bytes at `start`, of which nothing has been touched yet. A
// hint: no memory is used up before it is touched, and nothing depends on the answer.
inline void AskForLargePages(void* start, size_t size) {
#if defined(MADV_HUGEPAGE)
  const uintptr_t begin = (reinterpret_cast<uintptr_t>(start) + kSmallPage - 1) / kSmallPage * kSmallPage;
  const uintptr_t end = (reinterpret_cast<uintptr_t>(start) + size) / kSmallPage * kSmallPage;
  if (begin < end) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
  static_cast<void>(start);
  static_cast<void>(size);
#endif
}

}  // namespace tolvenar::platform
