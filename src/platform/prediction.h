// A value whose origin the compiler does not see, so that it can't turn a branch that the processor would predict into arithmetic that waits
// for the value it depends on. Where the compiler has no such means the value is returned as it is: the result is the same, only slower.
#pragma once

#include <cstdint>

namespace tolvenar {

inline uint32_t Unrelated(uint32_t value) {
#if defined(__GNUC__)
  __asm__ volatile("" : "+r"(value));
#endif
  return value;
}

}  // namespace tolvenar
