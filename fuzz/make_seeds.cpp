// Writes the seeds of the fuzzers, with the tests' own stream builder:  make_seeds FOLDER  (fuzz/corpus)
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz_support.h"
#include "support/chart_builder.h"
#include "support/compound_builder.h"

using tolvenar::fuzz::JoinInput;
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

// A formula whose result is a text, in the record behind it; and a chart inside the sheet.
Bytes TextResultAndChart() {
  StreamBuilder builder = Globals(6);
  builder.Row(0)
      .Formula(0, 0, 15, Bytes{0, 0, 0, 0, 0, 0, 0xFF, 0xFF})
      .Record(0x0207, Bytes{2, 0, 0, 'o', 'k'});
  builder.Bof(6, tolvenar::testing::kChart).Record(0x1051, Bytes(8)).Number(0, 1, 15, 9).Eof();
  return builder.Number(0, 2, 15, 3).Eof().Stream();
}

// Jumps that lead to themselves, to each other, backwards and out of the block.
Bytes Ring(uint32_t target) {
  StreamBuilder builder = Globals(6);
  builder.Detour(target).Slack(9).Number(0, 0, 15, 1).Resume(builder.Here() - 18);
  return builder.Eof().Stream();
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

// Globals with style tables: fonts, formats, XFs, a palette; and a sheet with rows, column widths and a zoom.
Bytes Styles(uint8_t version) {
  StreamBuilder builder;
  builder.Bof(version).Sheet("Data");
  for (int i = 0; i < 5; ++i) {
    builder.Record(0x0031,
                   Bytes{200, 0, 0, 0, 0xFF, 0x7F, 0x90, 1, 0, 0, 0, 0, 0, 0, 5, 'A', 'r', 'i', 'a', 'l'});
  }
  builder.Record(0x041E, Bytes{164, 0, 5, '0', '.', '0', '_', ' '});
  for (int i = 0; i < 3; ++i) builder.Record(0x00E0, Bytes(version == 5 ? 16 : 20, static_cast<uint8_t>(i)));
  builder.Record(0x0092, Bytes{2, 0} + Bytes(8, 0x33)).Eof().Bof(version, tolvenar::testing::kWorksheet);
  builder.Record(0x007D, Bytes{1, 0, 2, 0, 0, 9, 15, 0, 0, 0, 0, 0}).Dimensions(0, 3, 0, 4);
  builder.Row(0).Row(2).Number(0, 0, 1, 3.5).Record(0x000B, Bytes(16)).Record(0x00D7, Bytes(6));
  return builder.Record(0x00A0, Bytes{3, 0, 4, 0}).Eof().Stream();
}

Bytes Pattern(int size, int step = 0) {
  Bytes choices;
  for (int i = 0; i < size; ++i) choices.push_back(static_cast<uint8_t>(i * (37 + step) + i / 7));
  return choices;
}

void WriteChoices(const std::filesystem::path& seeds) {
  Write(seeds / "edit_then_refresh" / "mixed_sheets.bin", Pattern(600));
  Write(seeds / "edit_then_refresh" / "few_edits.bin", Pattern(160));
}

// A file as it stands; files built and damaged by choices.
void WriteFiles(const std::filesystem::path& folder) {
  for (const uint32_t version : {3u, 4u}) {
    tolvenar::testing::CompoundBuilder file(version);
    file.AddStream("Book", AllCells(5));
    file.AddStream("inner", tolvenar::testing::Pattern(100), file.AddStorage("folder"));
    if (version == 3) Write(folder / "whole_file.bin", file.Build().bytes);
    Write(folder / ("damaged_" + std::to_string(version) + ".bin"), Pattern(400, static_cast<int>(version)));
  }
}

// One formula record of each kind of token: length, position, offset of the tokens, the record.
void WriteFormulas(const std::filesystem::path& folder) {
  const Bytes references = {0x24, 3, 0xC0, 2, 0x25, 1, 0, 4, 0, 1, 2, 0x03, 0x44, 3, 0, 1, 0x01, 2, 0, 1, 0};
  const Bytes texts = {0x17, 2, 'a', 'b', 0x1E, 1, 0, 0x1F, 0, 0, 0, 0, 0, 0, 0, 0,
                       0x20, 2, 1,   0,   1,    0, 0, 0,    0, 0, 0, 0, 0, 2, 1, 'x'};
  const Bytes sheets =
      Bytes{0x3A} + Bytes(14, 1) + Bytes{3, 0, 2} + Bytes{0x3B} + Bytes(14, 1) + Bytes{1, 0, 4, 0, 1, 2};
  const Bytes extra = {0x26, 0, 0, 0, 0, 12, 0, 0x24, 3, 0, 2, 1, 0, 4, 0, 1, 2, 3, 0, 6, 0, 1, 2};
  int number = 0;
  for (const Bytes& tokens : {references, texts, sheets, extra}) {
    const uint16_t length = static_cast<uint16_t>(tokens.size());
    Write(folder / ("tokens_" + std::to_string(++number) + ".bin"),
          tolvenar::testing::U16(length) + tolvenar::testing::U16(2) + Bytes{0} + tokens);
  }
}

// A new reference, one with objects, and the directory of a file.
void WriteReferences(const std::filesystem::path& folder) {
  const Bytes head = {0xFF, 0x10, 4, 0, 8, 0, 0, 0}, mark = {0xDA, 0x10, 4, 0, 0, 0, 0, 0};
  const Bytes rest = {0xDB, 0x10, 4, 0, 0, 0, 0, 0, 0xFE, 0x10, 4, 0, 0, 0, 0, 0};
  const Bytes list = {0xFF, 0x10, 4, 0, 2,    0,    0, 0, 0xFD, 0x10, 4, 0,
                      1,    0,    0, 0, 0xFD, 0x10, 4, 0, 7,    0,    0, 0};
  Write(folder / "new_reference.bin", JoinInput(Bytes{1} + Pattern(300), head + mark + rest));
  Write(folder / "stored_reference.bin", JoinInput(Bytes{0} + Pattern(300, 5), head + mark + rest));
  Write(folder / "directory.bin",
        JoinInput(Bytes{0} + Pattern(200, 7), list + Bytes{0xFE, 0x10, 4, 0, 0, 0, 0, 0}));
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
  Write(any / "text_result_and_chart.bin", TextResultAndChart());
  Write(any / "charts.bin", Charts());
  Write(any / "detour_backwards.bin", Ring(0));
  Write(any / "detour_out_of_the_block.bin", Ring(0xFFFFFFF0u));
  Write(any / "styles_biff5.bin", Styles(5));
  Write(any / "styles_biff8.bin", Styles(6));
  WriteChoices(argv[1]);
  // Two sheets from arrays: the call's number, an empty name, a number, rows and columns.
  Write(std::filesystem::path(argv[1]) / "random_program" / "array_sheets.bin",
        JoinInput(Bytes{15, 0, 7, 0, 3, 3, 15, 0, 7, 0, 2, 4}, AllCells(6)));
  for (const uint8_t version : {uint8_t{5}, uint8_t{6}}) {
    const std::string name = "program_biff" + std::to_string(version == 6 ? 8 : 5) + ".bin";
    const std::filesystem::path programs = std::filesystem::path(argv[1]) / "random_program";
    Write(programs / name, JoinInput(Pattern(600), AllCells(version)));
    Write(programs / ("styles_" + name), JoinInput(Pattern(400, 3), Styles(version)));
  }
  WriteFiles(std::filesystem::path(argv[1]) / "compound_file");
  WriteFormulas(std::filesystem::path(argv[1]) / "formula_tokens");
  WriteReferences(std::filesystem::path(argv[1]) / "reference_streams");
  return 0;
}
