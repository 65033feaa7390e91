// What a call costs: processor time, and memory at its peak.
#pragma once

#include <cstddef>
#include <functional>

namespace tolvenar::testing {

#if defined(__SANITIZE_ADDRESS__)
#define TOLVENAR_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TOLVENAR_SANITIZED 1
#endif
#endif

struct Cost {
  double seconds = 0;
  size_t bytes = 0;  // memory beyond what was there before, at its peak; 0 where it can't be measured
};

// Runs `call` once.
Cost CostOf(const std::function<void()>& call);

// Why memory can't be measured in this build or on this system; null when it can.
const char* WhyNoMemory();

}  // namespace tolvenar::testing
