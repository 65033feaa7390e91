// One measurement: the work and its floor by turns, so that what else the machine does weighs on both alike; medians of both and their
// ratio as counters of the benchmark.
//
//   COUNTER   MEANING
//   work      median time of the work, seconds
//   floor     median time of the floor, seconds
//   ratio     work / floor
//   samples   how many times each was run
//
// kCpu counts the processor time of this process, which others on the machine hardly change; kWall the time that passes, for what waits
// for a disk.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <vector>

namespace bench {

enum class Clock { kCpu, kWall };

inline double Now(Clock clock) {
  timespec now = {};
  clock_gettime(clock == Clock::kCpu ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

inline double Median(std::vector<double> samples) {
  if (samples.empty()) return 0;
  const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  return *middle;
}

template <typename Work>
double SecondsOf(Clock clock, const Work& work) {
  const double begin = Now(clock);
  work();
  return Now(clock) - begin;
}

// `prepare` is called before each of the two and `clean` behind each, neither is counted.
template <typename Work, typename Floor, typename Prepare, typename Clean>
void Measure(benchmark::State& state, Clock clock, const Work& work, const Floor& floor,
             const Prepare& prepare, const Clean& clean) {
  std::vector<double> works;
  std::vector<double> floors;
  for (auto _ : state) {
    prepare();
    works.push_back(SecondsOf(clock, work));
    clean();
    state.SetIterationTime(works.back());
    prepare();
    floors.push_back(SecondsOf(clock, floor));
    clean();
  }
  state.counters["work"] = Median(works);
  state.counters["floor"] = Median(floors);
  state.counters["ratio"] = Median(works) / Median(floors);
  state.counters["samples"] = static_cast<double>(works.size());
}

template <typename Work, typename Floor>
void Measure(benchmark::State& state, Clock clock, const Work& work, const Floor& floor) {
  Measure(
      state, clock, work, floor, [] {}, [] {});
}

}  // namespace bench
