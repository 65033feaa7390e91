// R1, R2, R3: all cells of a workbook as texts, against the conversion or the copying of the same contents alone.
//
// "file" is the same from the opened file to the released array: what is compared with other programs. Files of an independent writer are
// measured when their folder is named by TOLVENAR_BENCH_FILES.
#include <cstdlib>

#include "floors.h"
#include "jobs.h"
#include "measure.h"

namespace bench {
namespace {

constexpr int kRepeats = 9;

// The sheets of a workbook read one after the other; the arrays, which are the host's, are made and released outside of the measurement.
class Reader {
 public:
  explicit Reader(const Book& book, int sheets) : book_(book), sheets_(sheets) {}

  void Prepare() {
    for (int sheet = 1; sheet <= sheets_; ++sheet)
      arrays_.push_back(ArrayFor(book_, static_cast<int16_t>(sheet)));
  }

  void Read() {
    for (size_t i = 0; i < arrays_.size(); ++i) ReadSheet(book_, static_cast<int16_t>(i + 1), arrays_[i]);
  }

  void Release() {
    read_ = 0;
    for (SAFEARRAY* cells : arrays_) {
      read_ += CountTexts(cells);
      SafeArrayDestroy(cells);
    }
    arrays_.clear();
  }

  // Cells of the last reading.
  int64_t read() const { return read_; }

 private:
  Book book_;
  int sheets_;
  int64_t read_ = 0;
  std::vector<SAFEARRAY*> arrays_;
};

std::vector<double> NumbersOf(Kind kind, int rows) {
  std::vector<double> numbers;
  for (int row = 0; row < rows; ++row) {
    for (int column = 0; column < kColumns; ++column)
      numbers.push_back(kind == Kind::kNumbers ? NumberAt(row, column) : IntegerAt(row, column));
  }
  return numbers;
}

void ReadNumbersOf(benchmark::State& state, const Book& book, Kind kind, int rows) {
  const std::vector<double> numbers = NumbersOf(kind, rows);
  Reader reader(book, SheetsOf(kind));
  int64_t read = 0;
  Measure(
      state, Clock::kCpu, [&] { reader.Read(); }, [&] { benchmark::DoNotOptimize(NumbersToChars(numbers)); },
      [&] { reader.Prepare(); },
      [&] {
        reader.Release();
        read = std::max(read, reader.read());
      });
  Require(read == int64_t{rows} * kColumns, "not every cell has been read");
}

void ReadTextsOf(benchmark::State& state, const Book& book, int rows) {
  const int cells = rows * kTextColumns;
  std::vector<std::string> texts;
  for (int i = 0; i < cells; ++i) texts.push_back(TextAt(i % std::max(1, cells / kCellsPerText)));
  std::vector<void*> copies;
  copies.reserve(texts.size());
  Reader reader(book, 1);
  int64_t read = 0;
  Measure(
      state, Clock::kCpu, [&] { reader.Read(); }, [&] { CopyTexts(texts, &copies); },
      [&] { reader.Prepare(); },
      [&] {
        reader.Release();
        read = std::max(read, reader.read());
        FreeCopies(&copies);
      });
  Require(read == cells, "not every cell has been read");
}

void ReadOwn(benchmark::State& state, Kind kind) {
  const int rows = static_cast<int>(state.range(0));
  Book book = MakeBook(kind, rows);
  if (kind == Kind::kTexts) {
    ReadTextsOf(state, book, rows);
  } else {
    ReadNumbersOf(state, book, kind, rows);
  }
  Release(&book);
}

// A file that another program wrote with the same contents.
void ReadForeign(benchmark::State& state, Kind kind, const char* name) {
  const char* folder = std::getenv("TOLVENAR_BENCH_FILES");
  if (folder == nullptr) return state.SkipWithError("TOLVENAR_BENCH_FILES names no folder");
  Book book = Open(std::string(folder) + "/" + name);
  ReadNumbersOf(state, book, kind, static_cast<int>(state.range(0)));
  Release(&book);
}

// From the file to the released arrays; the floor is the reading of the file alone.
void ReadWholeFile(benchmark::State& state, Kind kind) {
  const std::string path = FreshPath("read.xls");
  Book book = MakeBook(kind, static_cast<int>(state.range(0)));
  std::vector<uint8_t> bytes(book.size);
  Save(&book, path);
  Release(&book);
  Measure(
      state, Clock::kCpu, [&] { ReadFile(path); }, [&] { ReadWhole(path, &bytes); });
  FreshPath("read.xls");
}

void Sizes(benchmark::internal::Benchmark* benchmark, int largest) {
  benchmark->Arg(largest / 100)->Arg(largest / 10)->Arg(largest);
  benchmark->UseManualTime()->Iterations(kRepeats)->Unit(benchmark::kMillisecond);
}

void Rows(benchmark::internal::Benchmark* benchmark) {
  Sizes(benchmark, 65000);
}

void TextRows(benchmark::internal::Benchmark* benchmark) {
  Sizes(benchmark, 5000);
}

void Largest(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(65000)->UseManualTime()->Iterations(kRepeats)->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(ReadOwn, R1, Kind::kNumbers)->Name("R1")->Apply(Rows);
BENCHMARK_CAPTURE(ReadForeign, R1, Kind::kNumbers, "numbers_xlwt.xls")->Name("R1 of xlwt")->Apply(Largest);
BENCHMARK_CAPTURE(ReadWholeFile, R1, Kind::kNumbers)->Name("R1 from the file")->Apply(Rows);
BENCHMARK_CAPTURE(ReadOwn, R2, Kind::kIntegers)->Name("R2")->Apply(Rows);
BENCHMARK_CAPTURE(ReadForeign, R2, Kind::kIntegers, "integers_xlwt.xls")->Name("R2 of xlwt")->Apply(Largest);
BENCHMARK_CAPTURE(ReadWholeFile, R2, Kind::kIntegers)->Name("R2 from the file")->Apply(Rows);
BENCHMARK_CAPTURE(ReadOwn, R3, Kind::kTexts)->Name("R3")->Apply(TextRows);
BENCHMARK_CAPTURE(ReadWholeFile, R3, Kind::kTexts)->Name("R3 from the file")->Apply(TextRows);

}  // namespace
}  // namespace bench
