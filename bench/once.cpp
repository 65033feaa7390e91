// One piece of work, some times over, in a process of its own: what the time and the memory of a whole process are measured on, and what
// other programs are compared with. Each repetition works on a fresh copy of the input and prints its seconds.
//
//   bench_once make FOLDER                        saves the workbooks that are measured on in the folder
//   bench_once JOB INPUT OUTPUT WARM_UPS REPEATS  JOB: R1 R2 R3 E1 E2 I1 W1 W2; a W job needs no input
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>

#include "jobs.h"
#include "measure_clock.h"

namespace {

using namespace bench;

constexpr int kRows = 65000;
constexpr int kTextRows = 5000;
constexpr int kMixedRows = 10000;
constexpr int kChanges = 1000;

int MakeFiles(const std::string& folder) {
  const struct {
    const char* name;
    Kind kind;
    int rows;
  } files[] = {{"numbers.xls", Kind::kNumbers, kRows},
               {"integers.xls", Kind::kIntegers, kRows},
               {"texts.xls", Kind::kTexts, kTextRows},
               {"mixed.xls", Kind::kMixed, kMixedRows}};
  for (const auto& file : files) {
    Book book = MakeBook(file.kind, file.rows);
    const std::string path = folder + "/" + file.name;
    std::filesystem::remove(path);
    Save(&book, path);
    Release(&book);
  }
  return 0;
}

using Job = std::function<void(const std::string& path)>;

Job JobNamed(const std::string& name) {
  if (name[0] == 'R') return [](const std::string& path) { ReadFile(path); };
  if (name == "E1") return ChangeOne;
  if (name == "E2") return [](const std::string& path) { ChangeMany(path, kMixedRows, kChanges); };
  if (name == "I1") return [](const std::string& path) { InsertRow(path, kRows); };
  const auto values = std::make_shared<Values>(name == "W1" ? Values::Numbers(kRows) : Values::Texts(kRows));
  return [values](const std::string& path) { WriteBook(path, *values); };
}

// Reads work on the input itself, changes on a copy of it, writes on nothing.
int Run(const std::string& name, const std::string& input, const std::string& output, int warm_ups,
        int repeats) {
  const Job job = JobNamed(name);
  const bool reads = name[0] == 'R';
  for (int i = -warm_ups; i < repeats; ++i) {
    std::filesystem::remove(output);
    if (name[0] == 'E' || name[0] == 'I') std::filesystem::copy_file(input, output);
    const double cpu = Now(Clock::kCpu);
    const double seconds = SecondsOf(Clock::kWall, [&] { job(reads ? input : output); });
    if (i >= 0) std::printf("%.6f %.6f\n", seconds, Now(Clock::kCpu) - cpu);
  }
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  if (count == 3 && std::strcmp(arguments[1], "make") == 0) return MakeFiles(arguments[2]);
  if (count == 6)
    return Run(arguments[1], arguments[2], arguments[3], std::atoi(arguments[4]), std::atoi(arguments[5]));
  std::fprintf(stderr, "usage: bench_once make FOLDER | JOB INPUT OUTPUT WARM_UPS REPEATS\n");
  return 2;
}
