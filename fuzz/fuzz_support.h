// What the fuzzers share: a stream as an open workbook, the calls that read one, and a reader of choices from
// the fuzzer's bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "support/stream_builder.h"
#include "tolvenar/tolvenar.h"

namespace tolvenar::fuzz {

// The three values of an open workbook. All zero where it could not be opened.
struct Book {
  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
};

// Ends the program, with a finding, when what ought to be so is not.
void Require(bool condition, const char* what_ought_to_be);

// Puts a stream into the pool, as XLOpenFile would leave it, and locates its sheets.
Book OpenStream(const testing::Bytes& stream);

// Calls every export that reads, on every sheet, with arrays of the kinds that a host would give them.
void ReadEverything(const Book& book);

// Calls the exports that read charts, on every sheet. Returns how many pool blocks stay live, as an END too many
// has it.
uint32_t ReadCharts(const Book& book);

// The handle that the pool's next block of `size` bytes will have; 0 when it has none left.
uint32_t NextBlock(int32_t size);

// The values of all sheets as text, for comparing a workbook with itself.
testing::Bytes AllValues(const Book& book);

// The walked stream without the one field that a refresh renews: where BOUNDSHEET says that its sheet begins.
testing::Bytes ComparableStream(const Book& book);

// The fuzzer's bytes as a run of choices. Behind their end every choice is 0.
class Choices {
 public:
  Choices(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool Done() const { return at_ >= size_; }
  uint8_t Byte() { return Done() ? uint8_t{0} : data_[at_++]; }
  uint16_t Word() { return static_cast<uint16_t>(Byte() | Byte() << 8); }
  uint32_t Below(uint32_t limit) { return Byte() % limit; }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

// One of the four lookups, as the choices say. Returns its result.
int16_t LookUp(Book* book, Choices* choices);

// A new height of a row, or width of a column. The block that a refused width leaves behind is released. Returns its result.
int16_t ChangeSize(Book* book, Choices* choices, int16_t sheet, int16_t position);

// Adds fonts, formats and XFs to the globals, and what stands behind them in every real workbook: without it a record that a lookup
// adds would displace the first sheet.
void AddStyles(testing::StreamBuilder* builder);

// A well-formed workbook of one to three small sheets, its cells as the choices say.
testing::Bytes StreamOf(Choices* choices);

// Rows and columns of the sheets that StreamOf makes.
constexpr uint16_t kRows = 6;
constexpr uint16_t kColumns = 8;

}  // namespace tolvenar::fuzz
