// The two clocks of all measurements. kCpu counts the processor time of this process, which others on the machine hardly change; kWall the
// time that passes, for what waits for a disk.
#pragma once

#include <ctime>

namespace bench {

enum class Clock { kCpu, kWall };

inline double Now(Clock clock) {
  timespec now = {};
  clock_gettime(clock == Clock::kCpu ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <typename Work>
double SecondsOf(Clock clock, const Work& work) {
  const double begin = Now(clock);
  work();
  return Now(clock) - begin;
}

}  // namespace bench
