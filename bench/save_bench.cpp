// E1, E2, I1, W1, W2: from a file, or from a host's values, to a saved file, against the reading, copying and writing of as many bytes.
#include "floors.h"
#include "foundation/record_stream.h"
#include "jobs.h"
#include "measure.h"
#include "tolvenar/tolvenar.h"
#include "workbook/sheet_table.h"

namespace bench {
namespace {

constexpr int kRepeats = 9;
constexpr int kChanges = 1000;

// A saved workbook, and what its floors need: its stream, a file as long as it, room for a copy.
struct SavedBook {
  std::string path;
  std::string floorPath;
  std::vector<uint8_t> stream;
  std::vector<uint8_t> copy;
  uint32_t sheetBegin = 0;
  uint32_t sheetEnd = 0;
};

SavedBook SaveBook(Kind kind, int rows) {
  SavedBook saved;
  saved.path = FreshPath("saved.xls");
  saved.floorPath = FreshPath("floor.bin");
  Book book = MakeBook(kind, rows);
  Save(&book, saved.path);
  const tolvenar::SheetExtent sheet = tolvenar::ExtentOfSheet(tolvenar::OpenBlock(book.table), 1);
  saved.sheetBegin = sheet.begin;
  saved.sheetEnd = sheet.end;
  const uint8_t* bytes = tolvenar::OpenBlock(book.buffer).base;
  saved.stream.assign(bytes, bytes + book.size);
  saved.copy = saved.stream;
  Release(&book);
  WriteAndSync(saved.floorPath, saved.stream);
  return saved;
}

void RemoveFiles() {
  FreshPath("saved.xls");
  FreshPath("floor.bin");
}

void ReadCopyWrite(SavedBook* saved) {
  ReadWhole(saved->floorPath, &saved->stream);
  CopyBytes(saved->stream, &saved->copy);
  WriteAndSync(saved->floorPath, saved->copy);
}

void E1(benchmark::State& state) {
  SavedBook saved = SaveBook(Kind::kNumbers, static_cast<int>(state.range(0)));
  Measure(
      state, Clock::kWall, [&] { ChangeOne(saved.path); }, [&] { ReadCopyWrite(&saved); });
  RemoveFiles();
}

void I1(benchmark::State& state) {
  const int rows = static_cast<int>(state.range(0));
  SavedBook saved = SaveBook(Kind::kNumbers, rows);
  Measure(
      state, Clock::kWall, [&] { InsertRow(saved.path, rows); },
      [&] {
        benchmark::DoNotOptimize(ChaseHeaders(saved.stream.data(), saved.sheetBegin, saved.sheetEnd));
        ReadCopyWrite(&saved);
      });
  RemoveFiles();
}

// A thousand changes, at every size of the sheet: the walks are as long as it.
void E2(benchmark::State& state) {
  const int rows = static_cast<int>(state.range(0));
  SavedBook saved = SaveBook(Kind::kMixed, rows);
  // As many records as half of the sheet: the cells follow behind all rows, so half of the bytes would be fewer.
  const uint32_t records = ChaseHeaders(saved.stream.data(), saved.sheetBegin, saved.sheetEnd);
  uint32_t middle = saved.sheetBegin;
  for (uint32_t i = 0; i < records / 2; ++i)
    middle += 4u + static_cast<uint32_t>(saved.stream[middle + 2] | saved.stream[middle + 3] << 8);
  Measure(
      state, Clock::kWall, [&] { ChangeMany(saved.path, rows, kChanges); },
      [&] {
        for (int i = 0; i < kChanges; ++i)
          benchmark::DoNotOptimize(ChaseHeaders(saved.stream.data(), saved.sheetBegin, middle));
        ReadCopyWrite(&saved);
      });
  RemoveFiles();
}

void Write(benchmark::State& state, const Values& values) {
  const std::string path = FreshPath("saved.xls");
  const std::string floor_path = FreshPath("floor.bin");
  ::MEMORYFREEALL();
  const std::vector<uint8_t> bytes(WriteBook(path, values));
  std::vector<uint8_t> copy(bytes.size());
  Measure(
      state, Clock::kWall, [&] { WriteBook(path, values); },
      [&] {
        CopyBytes(bytes, &copy);
        WriteAndSync(floor_path, copy);
      },
      RemoveFiles, [] {});
  RemoveFiles();
}

void W1(benchmark::State& state) {
  Write(state, Values::Numbers(static_cast<int>(state.range(0))));
}

void W2(benchmark::State& state) {
  Write(state, Values::Texts(static_cast<int>(state.range(0))));
}

void Sizes(benchmark::internal::Benchmark* benchmark, int largest) {
  benchmark->Arg(largest / 100)->Arg(largest / 10)->Arg(largest);
  benchmark->UseManualTime()->Iterations(kRepeats)->Unit(benchmark::kMillisecond);
}

void Rows(benchmark::internal::Benchmark* benchmark) {
  Sizes(benchmark, 65000);
}

void MixedRows(benchmark::internal::Benchmark* benchmark) {
  Sizes(benchmark, 10000);
}

BENCHMARK(E1)->Apply(Rows);
BENCHMARK(E2)->Apply(MixedRows);
BENCHMARK(I1)->Apply(Rows);
BENCHMARK(W1)->Apply(Rows);
BENCHMARK(W2)->Apply(Rows);

}  // namespace
}  // namespace bench
