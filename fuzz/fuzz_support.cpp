// How the fuzzers open and build workbooks.
#include "fuzz_support.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"
#include "support/temp_file.h"

namespace tolvenar::fuzz {

using testing::Bytes;
using testing::operator+;
using testing::StreamBuilder;

namespace {

constexpr uint16_t kTypeWindow2 = 0x023E;

Bytes ChosenText(Choices* choices) {
  Bytes text(choices->Below(20));
  for (uint8_t& byte : text) byte = choices->Byte();
  return text;
}

// One cell, or a run of three, at a column and those behind it. Returns how many columns it takes.
uint16_t AddCell(StreamBuilder* builder, Choices* choices, uint8_t version, uint16_t row, uint16_t column) {
  const auto xf = static_cast<uint16_t>(choices->Below(32));
  const Bytes text = ChosenText(choices);
  const std::string_view view(reinterpret_cast<const char*>(text.data()), text.size());
  switch (choices->Below(9)) {
    case 0:
      return 1;
    case 1:
      builder->Number(row, column, xf, choices->Word());
      return 1;
    case 2:
      builder->Rk(row, column, xf, choices->Word());
      return 1;
    case 3:
      builder->Blank(row, column, xf);
      return 1;
    case 4:
      version == kBiff8 ? builder->LabelBiff8(row, column, xf, view) : builder->Label(row, column, xf, view);
      return 1;
    case 5:
      builder->BoolErr(row, column, xf, choices->Byte(), choices->Byte() & 1);
      return 1;
    case 6:
      builder->Formula(row, column, xf, testing::F64(choices->Word()));
      return 1;
    case 7:
      builder->MulRk(row, column, {{xf, choices->Word()}, {xf, 6}, {15, choices->Word()}});
      return 3;
    default:
      builder->MulBlank(row, column, {xf, 15, 16});
      return 3;
  }
}

constexpr size_t kHalfUnit = 4;
const Bytes kBufEnd = {0xF8, 0xFE, 0, 0};

}  // namespace

void Require(bool condition, const char* what_ought_to_be) {
  if (condition) return;
  std::fprintf(stderr, "This ought to be so, and is not: %s\n", what_ought_to_be);
  std::abort();
}

uint32_t LiveBlocks() {
  uint32_t bytes = 0;
  return ::MEMORYHANDLES(&bytes, 0);
}

Book OpenStream(const Bytes& stream) {
  Book book;
  book.size = static_cast<uint32_t>(stream.size());
  book.buffer = MEMORYALLOC(static_cast<int32_t>(book.size));
  if (book.buffer == 0) return {};
  std::copy(stream.begin(), stream.end(), BlockBytes(book.buffer));
  if (::XLLocateSheets(book.buffer, &book.table, book.size) != 0) return {};
  ::XLGetNumVers(book.buffer, book.table);
  return book;
}

Bytes Choices::Take(size_t count) {
  const size_t taken = std::min(count, size_ - std::min(at_, size_));
  const Bytes bytes(data_ + at_, data_ + at_ + taken);
  at_ += taken;
  return bytes;
}

Halves SplitInput(const uint8_t* data, size_t size) {
  if (size == 0) return {{}, kBufEnd};
  Choices input(data, size);
  const size_t first = input.Byte() * kHalfUnit;
  Bytes choices = input.Take(first);
  return {choices, input.Rest() + kBufEnd};
}

Bytes JoinInput(Bytes choices, const Bytes& stream) {
  const size_t units = std::min<size_t>((choices.size() + kHalfUnit - 1) / kHalfUnit, UINT8_MAX);
  choices.resize(units * kHalfUnit);
  return Bytes{static_cast<uint8_t>(units)} + choices + stream;
}

Bytes ComparableStream(const Book& book) {
  Bytes stream = testing::WalkedStream(book.buffer);
  for (size_t at = 0; at + kHeaderSize <= stream.size();
       at += kHeaderSize + ReadU16(&stream[at + kRecordLength])) {
    const bool bound_sheet = stream[at] == kLowBoundSheet && (stream[at + 1] & kChartBit) == 0;
    if (bound_sheet && at + kBoundSheetBof + 4 <= stream.size()) WriteU32(&stream[at + kBoundSheetBof], 0);
  }
  return stream;
}

Bytes StreamOf(Choices* choices) {
  static constexpr const char* kNames[] = {"One", "Two", "Three"};
  StreamBuilder builder;
  const uint32_t sheets = 1 + choices->Below(3);
  const uint8_t version = choices->Byte() % 2 == 0 ? kBiff8 : kBiff5;
  builder.Bof(version);
  for (uint32_t i = 0; i < sheets; ++i) builder.Sheet(kNames[i]);
  builder.Eof();
  for (uint32_t i = 0; i < sheets; ++i) {
    builder.Bof(version, testing::kWorksheet).Dimensions(0, kRows, 0, kColumns);
    for (uint16_t row = 0; row < kRows; ++row) {
      const uint8_t kind = choices->Byte();
      if (kind % 4 != 3) builder.Row(row);
      uint16_t column = 0;
      while (kind % 4 != 2 && column + 3 <= kColumns)
        column = static_cast<uint16_t>(column + AddCell(&builder, choices, version, row, column));
    }
    // As in every real sheet the cells are not the last. A cell that is put directly before the EOF is met by
    // the walk, but the readers stop in front of it until the next refresh.
    builder.Record(kTypeWindow2, Bytes(10)).Eof();
  }
  return builder.BufEnd().Stream();
}

std::string ScratchPath(const char* name) {
  static const testing::TempFolder folder;
  return folder.File(name);
}

}  // namespace tolvenar::fuzz
