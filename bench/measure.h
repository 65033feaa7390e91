// One measurement: the work and its floor by turns, so that what else the machine does weighs on both alike; medians of both and their
// ratio as counters of the benchmark.
//
//   COUNTER              MEANING
//   work, floor          median times of both, seconds
//   ratio                work / floor
//   work_cpu, floor_cpu  median processor times of both, seconds
//   samples              how many times each was run
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

#include "measure_clock.h"

namespace bench {

inline double Median(std::vector<double> samples) {
  if (samples.empty()) return 0;
  const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  return *middle;
}

// Times of one piece of work, by both clocks.
class Samples {
 public:
  template <typename Work>
  void Take(const Work& work) {
    const double cpu = Now(Clock::kCpu);
    const double wall = Now(Clock::kWall);
    work();
    wall_.push_back(Now(Clock::kWall) - wall);
    cpu_.push_back(Now(Clock::kCpu) - cpu);
  }

  const std::vector<double>& of(Clock clock) const { return clock == Clock::kCpu ? cpu_ : wall_; }

 private:
  std::vector<double> cpu_;
  std::vector<double> wall_;
};

// `prepare` is called before each of the two and `clean` behind each, neither is counted.
template <typename Work, typename Floor, typename Prepare, typename Clean>
void Measure(benchmark::State& state, Clock clock, const Work& work, const Floor& floor,
             const Prepare& prepare, const Clean& clean) {
  Samples works;
  Samples floors;
  for (auto _ : state) {
    prepare();
    works.Take(work);
    clean();
    state.SetIterationTime(works.of(clock).back());
    prepare();
    floors.Take(floor);
    clean();
  }
  state.counters["work"] = Median(works.of(clock));
  state.counters["floor"] = Median(floors.of(clock));
  state.counters["ratio"] = Median(works.of(clock)) / Median(floors.of(clock));
  state.counters["work_cpu"] = Median(works.of(Clock::kCpu));
  state.counters["floor_cpu"] = Median(floors.of(Clock::kCpu));
  state.counters["samples"] = static_cast<double>(works.of(clock).size());
}

template <typename Work, typename Floor>
void Measure(benchmark::State& state, Clock clock, const Work& work, const Floor& floor) {
  Measure(
      state, clock, work, floor, [] {}, [] {});
}

}  // namespace bench
