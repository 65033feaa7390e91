// How fast the library opens, walks, reads, edits, refreshes and saves: through the exports, on a workbook
// that it makes for itself. The argument is the number of rows, each of ten cells; bytes per second count the
// workbook's stream.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"
#include "support/stream_builder.h"
#include "tolvenar/tolvenar.h"

namespace {

constexpr int kColumns = 10;

struct Book {
  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
};

void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "workbook_bench: %s\n", what);
  std::exit(1);
}

// Half numbers, a run of three RKs, a text: what a report is made of.
tolvenar::testing::Bytes StreamOf(uint16_t rows) {
  tolvenar::testing::StreamBuilder builder;
  builder.Bof(5).Sheet("Data").Eof().Bof(5, tolvenar::testing::kWorksheet).Dimensions(0, rows, 0, kColumns);
  for (uint16_t row = 0; row < rows; ++row) {
    builder.Row(row, 0, kColumns);
    for (uint16_t column = 0; column < 5; ++column) builder.Number(row, column, 15, row * 1.25 + column);
    builder.MulRk(row, 5, {{15, 6}, {16, 400001}, {17, 0x40590000}})
        .Rk(row, 8, 15, row * 4u + 2u)
        .Label(row, 9, 15, "a text of a report");
  }
  return builder.Record(0x023E, tolvenar::testing::Bytes(10)).Eof().BufEnd().Stream();
}

Book OpenFromStream(const tolvenar::testing::Bytes& stream) {
  ::MEMORYFREEALL();
  Book book;
  book.size = static_cast<uint32_t>(stream.size());
  book.buffer = ::MEMORYALLOC(static_cast<int32_t>(book.size));
  Require(book.buffer != 0, "the workbook is too large for the pool");
  std::copy(stream.begin(), stream.end(), tolvenar::BlockBytes(book.buffer));
  Require(::XLLocateSheets(book.buffer, &book.table, book.size) == 0, "the sheets can't be located");
  ::XLGetNumVers(book.buffer, book.table);
  return book;
}

Book BookOf(const benchmark::State& state) {
  return OpenFromStream(StreamOf(static_cast<uint16_t>(state.range(0))));
}

void CountBytes(benchmark::State& state, uint32_t size) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * size);
}

std::string PathInTemp(const char* name) {
  return (std::filesystem::temp_directory_path() / name).string();
}

void Walk(benchmark::State& state) {
  const Book book = BookOf(state);
  const tolvenar::Block block = tolvenar::OpenBlock(book.buffer);
  for (auto _ : state) {
    uint32_t records = 0;
    for (tolvenar::Walk walk = tolvenar::StartWalk(block, 0); !walk.ended && walk.at < book.size - 1;
         tolvenar::Step(&walk))
      ++records;
    benchmark::DoNotOptimize(records);
  }
  CountBytes(state, book.size);
}

void Open(benchmark::State& state) {
  const std::string path = PathInTemp("tolvenar_bench_open.xls");
  std::filesystem::remove(path);
  Book book = BookOf(state);
  Require(::XLSaveFile(path.c_str(), &book.buffer, &book.table, &book.size) == 0,
          "the workbook can't be saved");
  ::XLFreeHandle(&book.buffer);
  for (auto _ : state) {
    Require(::XLOpenFile(path.c_str(), &book.buffer, &book.size) == 0, "the workbook can't be opened");
    Require(::XLLocateSheets(book.buffer, &book.table, book.size) == 0, "the sheets can't be located");
    ::XLFreeHandle(&book.table);
    ::XLFreeHandle(&book.buffer);
  }
  CountBytes(state, book.size);
  std::filesystem::remove(path);
}

void Save(benchmark::State& state) {
  const std::string path = PathInTemp("tolvenar_bench_save.xls");
  Book book = BookOf(state);
  for (auto _ : state) {
    Require(::XLSaveFile(path.c_str(), &book.buffer, &book.table, &book.size) == 0,
            "the workbook can't be saved");
    Require(::XLLocateSheets(book.buffer, &book.table, book.size) == 0, "the sheets can't be located");
  }
  CountBytes(state, book.size);
  std::filesystem::remove(path);
}

void Refresh(benchmark::State& state) {
  Book book = BookOf(state);
  for (auto _ : state) Require(::XLRefreshHandles(&book.buffer, book.table, &book.size) == 0, "no refresh");
  CountBytes(state, book.size);
}

SAFEARRAY* CellsOf(const benchmark::State& state, VARTYPE type) {
  SAFEARRAYBOUND bounds[2] = {{static_cast<ULONG>(state.range(0)), 1}, {kColumns, 1}};
  return SafeArrayCreate(type, 2, bounds);
}

void ReadValues(benchmark::State& state) {
  const Book book = BookOf(state);
  for (auto _ : state) {
    SAFEARRAY* cells = CellsOf(state, VT_VARIANT);
    Require(::XLGetVariantData(&cells, book.buffer, book.table, 1) == 0, "the cells can't be read");
    SafeArrayDestroy(cells);
  }
  CountBytes(state, book.size);
}

void ReadFormats(benchmark::State& state) {
  const Book book = BookOf(state);
  for (auto _ : state) {
    SAFEARRAY* cells = CellsOf(state, VT_I4);
    Require(::XLGetCellData(&cells, book.buffer, book.table, 1) == 0, "the formats can't be read");
    SafeArrayDestroy(cells);
  }
  CountBytes(state, book.size);
}

// A number over a number in the middle of the sheet: the search for the cell is what it costs.
void ChangeCell(benchmark::State& state) {
  Book book = BookOf(state);
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_R8;
  for (auto _ : state) {
    value.dblVal += 1;
    const int16_t row = static_cast<int16_t>(state.range(0) / 2);
    Require(::XLChangeCellValue(&book.buffer, book.table, &book.size, 1, row, 3, &value) == 0,
            "the cell can't be changed");
  }
  CountBytes(state, book.size / 2);
}

BENCHMARK(Walk)->Arg(100)->Arg(20000);
BENCHMARK(Open)->Arg(100)->Arg(20000);
BENCHMARK(Save)->Arg(100)->Arg(20000);
BENCHMARK(Refresh)->Arg(100)->Arg(20000);
BENCHMARK(ReadValues)->Arg(100)->Arg(20000);
BENCHMARK(ReadFormats)->Arg(100)->Arg(20000);
BENCHMARK(ChangeCell)->Arg(100)->Arg(20000);

}  // namespace

BENCHMARK_MAIN();
