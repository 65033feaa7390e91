// The walk over records, against a bare chase of their headers; the compaction of a buffer with more or fewer patches, against a copy.
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>

#include "floors.h"
#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"
#include "jobs.h"
#include "measure.h"
#include "tolvenar/tolvenar.h"

namespace bench {
namespace {

constexpr int kRepeats = 25;

void WalkRecords(benchmark::State& state) {
  Book book = MakeBook(Kind::kNumbers, static_cast<int>(state.range(0)));
  const tolvenar::Block block = tolvenar::OpenBlock(book.buffer);
  const uint32_t end = book.size - tolvenar::kBufEndSize;
  uint32_t walked = 0;
  uint32_t chased = 0;
  Measure(
      state, Clock::kCpu,
      [&] {
        walked = 0;
        for (tolvenar::Walk walk = tolvenar::StartWalk(block, 0); !walk.ended && walk.at < end;
             tolvenar::Step(&walk))
          ++walked;
      },
      [&] { chased = ChaseHeaders(block.base, 0, end); });
  Require(walked == chased, "the walk has missed records");
  Release(&book);
}

// Lays `count` patches of one BLANK each, each before another NUMBER, all over the stream and in no order.
void Patch(Book* book, uint32_t count) {
  std::vector<uint32_t> numbers;
  const tolvenar::Block block = tolvenar::OpenBlock(book->buffer);
  for (tolvenar::Walk walk = tolvenar::StartWalk(block, 0); !walk.ended && walk.at < book->size - 1;
       tolvenar::Step(&walk)) {
    if (tolvenar::IsPlain(block, walk.at, 0x03)) numbers.push_back(walk.at);
  }
  constexpr uint64_t kStride = 1000003;  // a prime, larger than any number of patches here
  const uint8_t blank[] = {0x01, 0x02, 6, 0, 0, 0, 0, 0, 15, 0};
  for (uint32_t i = 0; i < count; ++i) {
    const uint64_t place = i * kStride % count * (numbers.size() / count);
    Require(tolvenar::PatchRecord(&book->buffer, blank, numbers[static_cast<size_t>(place)], sizeof blank,
                                  &book->size) == 0,
            "a patch can't be laid");
  }
}

// A refresh makes the buffer compact, so each one starts from a copy of the patched buffer.
void Compaction(benchmark::State& state) {
  constexpr int kRows = 65000;
  Book book = MakeBook(Kind::kNumbers, kRows);
  if (state.range(0) != 0) Patch(&book, static_cast<uint32_t>(state.range(0)));
  const uint8_t* bytes = tolvenar::OpenBlock(book.buffer).base;
  const std::vector<uint8_t> patched(bytes, bytes + book.size);
  const tolvenar::Block table = tolvenar::OpenBlock(book.table);
  const std::vector<uint8_t> entries(table.base, table.base + table.extent);
  std::vector<uint8_t> copy(patched);
  const auto prepare = [&] {
    ::XLFreeHandle(&book.buffer);
    book.size = static_cast<uint32_t>(patched.size());
    book.buffer = ::MEMORYALLOC(static_cast<int32_t>(book.size));
    std::memcpy(tolvenar::BlockBytes(book.buffer), patched.data(), patched.size());
    std::memcpy(table.base, entries.data(), entries.size());
  };
  Measure(
      state, Clock::kCpu,
      [&] {
        Require(::XLRefreshHandles(&book.buffer, book.table, &book.size) == 0,
                "the buffer can't be refreshed");
      },
      [&] { CopyBytes(patched, &copy); }, prepare, [] {});
  Release(&book);
}

// Bytes of this process that are in memory.
double ResidentBytes() {
  std::ifstream file("/proc/self/statm");
  double total = 0;
  double resident = 0;
  file >> total >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// What the nine slots, 213 million bytes together, cost while one small block is all that is taken of them.
void UntouchedPool(benchmark::State& state) {
  double most = 0;
  for (auto _ : state) {
    ::MEMORYFREEALL();
    const double before = ResidentBytes();
    uint32_t block = ::MEMORYALLOC(200);
    most = std::max(most, ResidentBytes() - before);
    ::MEMORYFREE(&block);
    state.SetIterationTime(1);
  }
  state.counters["resident"] = most;
}

void Repeated(benchmark::internal::Benchmark* benchmark) {
  benchmark->UseManualTime()->Iterations(kRepeats)->Unit(benchmark::kMillisecond);
}

BENCHMARK(UntouchedPool)->Name("untouched pool")->Apply(Repeated);
BENCHMARK(WalkRecords)->Name("walk")->Arg(650)->Arg(6500)->Arg(65000)->Apply(Repeated);
BENCHMARK(Compaction)->Name("compaction")->Arg(0)->Arg(1000)->Arg(100000)->Apply(Repeated);

}  // namespace
}  // namespace bench

BENCHMARK_MAIN();
