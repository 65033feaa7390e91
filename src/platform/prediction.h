// Two hints to the processor that change no result; where the compiler has no means for one, it does nothing.
#pragma once

#include <cstdint>

namespace tolvenar {

// A value whose origin the compiler does not see, so that it can't turn a branch that the processor would predict into arithmetic that waits
// for the value it depends on.
inline uint32_t Unrelated(uint32_t value) {
#if defined(__GNUC__)
  __asm__ volatile("" : "+r"(value));
#endif
  return value;
}

// Has the memory at `address`, which need not be there, brought into the cache for a read that will follow.
inline void FetchAhead(const void* address) {
#if defined(__GNUC__)
  __builtin_prefetch(address);
#else
  static_cast<void>(address);
#endif
}

}  // namespace tolvenar
