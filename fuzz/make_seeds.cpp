// Writes the seeds of the fuzzers, with the tests' own stream builder:  make_seeds FOLDER  (fuzz/corpus)
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz_support.h"
#include "support/chart_builder.h"

using tolvenar::testing::Bytes;
using tolvenar::testing::operator+;
using tolvenar::testing::StreamBuilder;

namespace {

void Write(const std::filesystem::path& path, const Bytes& bytes) {
  std::filesystem::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

StreamBuilder Globals(uint8_t version) {
  StreamBuilder builder;
  builder.Bof(version).Sheet("Data").Eof().Bof(version, tolvenar::testing::kWorksheet).Dimensions(0, 4, 0, 4);
  return builder;
}

Bytes AllCells(uint8_t version) {
  StreamBuilder builder = Globals(version);
  builder.Row(0).Number(0, 0, 15, 1.5).Rk(0, 1, 16, 6).Blank(0, 2, 17).Label(0, 3, 18, "text");
  builder.Row(1)
      .BoolErr(1, 0, 15, 1, 0)
      .BoolErr(1, 1, 15, 7, 1)
      .Formula(1, 2, 15, tolvenar::testing::F64(2.5));
  builder.Row(2).MulRk(2, 0, {{15, 6}, {16, 10}, {17, 0x3FF00000}}).Row(3).MulBlank(3, 0, {15, 16, 17});
  return builder.Eof().Stream();
}

Bytes SharedStrings() {
  const Bytes strings = tolvenar::testing::U32(2) + tolvenar::testing::U32(2) +
                        Bytes{3, 0, 0, 'o', 'n', 'e', 3, 0, 0, 't', 'w', 'o'};
  StreamBuilder builder;
  builder.Bof(6).Sheet("Data").Record(0x00FC, strings).Record(0x00FF, Bytes{8, 0}).Eof();
  builder.Bof(6, tolvenar::testing::kWorksheet)
      .Dimensions(0, 2, 0, 2)
      .Row(0)
      .LabelSst(0, 0, 15, 0)
      .LabelSst(0, 1, 15, 1);
  return builder.Eof().Stream();
}

// What the readers of styles and sizes take, and what lookups find and add to.
Bytes Styles(uint8_t version) {
  StreamBuilder builder;
  builder.Bof(version);
  tolvenar::fuzz::AddStyles(&builder);
  builder.Sheet("Data").Eof().Bof(version, tolvenar::testing::kWorksheet);
  builder.Record(0x0225, Bytes{0, 0, 0xFF, 0}).Record(0x0055, Bytes{8, 0});
  builder.Record(0x007D, Bytes{1, 0, 2, 0, 0, 10, 0, 0, 0, 0, 0}).Dimensions(0, 2, 0, 4).Row(1);
  return builder.Record(0x00A0, Bytes{3, 0, 4, 0}).Eof().Stream();
}

// A formula whose result is a text, in the record behind it; and a chart inside the sheet.
Bytes TextResultAndChart() {
  StreamBuilder builder = Globals(6);
  builder.Row(0)
      .Formula(0, 0, 15, Bytes{0, 0, 0, 0, 0, 0, 0xFF, 0xFF})
      .Record(0x0207, Bytes{2, 0, 0, 'o', 'k'});
  builder.Bof(6, tolvenar::testing::kChart).Record(0x1051, Bytes(8)).Number(0, 1, 15, 9).Eof();
  return builder.Number(0, 2, 15, 3).Eof().Stream();
}

// A chart with two series, a legend and a title, and one behind it that is a pie.
Bytes Charts() {
  tolvenar::testing::ChartBuilder book;
  book.Worksheet().Obj(5, 1, 1, 1).Open().Chart().Begin().Series(3).Begin().SeriesText("North");
  book.Ai(1, tolvenar::testing::Area3d(0, 0, {1, 3, 1, 1})).AreaFormat(1, 2, 1).Low(0x45, Bytes{0, 0}).End();
  book.Series(1).Begin().Ai256(tolvenar::testing::Ref3d(0, 1, 1)).End().Low(0x0C, Bytes{0x10, 0});
  book.Low(0x14).Begin().Low(0x17, Bytes(6)).Low(0x3A, Bytes(14)).Low(0x15, Bytes(20)).Begin().End().End();
  book.TextRecord(7).Begin().FontX(5).ObjectLink(1).SeriesText("Title").End().End().Close();
  book.Open().Chart().Begin().Low(0x19, Bytes(4)).Low(0x3E, Bytes(2)).Low(0x3F, Bytes(2)).End().Close();
  return book.EndSheet().Stream().Stream();
}

// Jumps that lead to themselves, to each other, backwards and out of the block.
Bytes Ring(uint32_t target) {
  StreamBuilder builder = Globals(6);
  builder.Detour(target).Slack(9).Number(0, 0, 15, 1).Resume(builder.Here() - 18);
  return builder.Eof().Stream();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_seeds FOLDER\n");
    return 2;
  }
  const std::filesystem::path any = std::filesystem::path(argv[1]) / "open_any_bytes";
  Write(any / "cells_biff5.bin", AllCells(5));
  Write(any / "cells_biff8.bin", AllCells(6));
  Write(any / "shared_strings.bin", SharedStrings());
  Write(any / "styles_biff5.bin", Styles(5));
  Write(any / "styles_biff8.bin", Styles(6));
  Write(any / "text_result_and_chart.bin", TextResultAndChart());
  Write(any / "charts.bin", Charts());
  Write(any / "detour_backwards.bin", Ring(0));
  Write(any / "detour_out_of_the_block.bin", Ring(0xFFFFFFF0u));
  Bytes choices;
  for (int i = 0; i < 600; ++i) choices.push_back(static_cast<uint8_t>(i * 37 + i / 7));
  Write(std::filesystem::path(argv[1]) / "edit_then_refresh" / "mixed_sheets.bin", choices);
  choices.resize(160);
  Write(std::filesystem::path(argv[1]) / "edit_then_refresh" / "few_edits.bin", choices);
  return 0;
}
