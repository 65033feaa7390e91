// The system's own accounts: the clock of the process, and the peak of its resident memory, which can be reset.
#include "hostile/cost.h"

#include <malloc.h>

#include <ctime>
#include <fstream>
#include <string>

namespace tolvenar::testing {

namespace {

// A line of the process's status, in bytes. 0: there is none.
size_t StatusLine(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.compare(0, name.size(), name) == 0) return std::stoul(line.substr(name.size())) * 1024;
  }
  return 0;
}

bool ResetPeak() {
  std::ofstream reset("/proc/self/clear_refs");
  reset << "5" << std::flush;
  return reset.good();
}

}  // namespace

Cost CostOf(const std::function<void()>& call) {
  Cost cost;
  malloc_trim(0);  // what earlier calls gave back is not to be taken again unseen
  const bool measured = WhyNoMemory() == nullptr && ResetPeak();
  const size_t before = measured ? StatusLine("VmRSS:") : 0;
  const std::clock_t start = std::clock();
  call();
  cost.seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  const size_t peak = measured ? StatusLine("VmHWM:") : 0;
  cost.bytes = peak > before ? peak - before : 0;
  return cost;
}

const char* WhyNoMemory() {
#if defined(TOLVENAR_SANITIZED)
  return "the memory of the sanitizer would be measured";
#else
  static const bool measurable = ResetPeak() && StatusLine("VmHWM:") != 0;
  return measurable ? nullptr : "the system does not tell the peak of a process's memory";
#endif
}

}  // namespace tolvenar::testing
