// What the fuzzers share: a stream as an open workbook, a reader of choices from the fuzzer's bytes, well-formed workbooks made from
// choices, and a file of their own on disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

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

// Live blocks of the pool.
uint32_t LiveBlocks();

// Puts a stream into the pool, as XLOpenFile would leave it, and locates its sheets.
Book OpenStream(const testing::Bytes& stream);

// The walked stream without the one field that a refresh renews: where BOUNDSHEET says that its sheet begins.
testing::Bytes ComparableStream(const Book& book);

// The fuzzer's bytes as a run of choices. Behind their end every choice is 0.
class Choices {
 public:
  Choices(const uint8_t* data, size_t size) : data_(data), size_(size) {}
  bool Done() const { return at_ >= size_; }
  uint8_t Byte() { return Done() ? uint8_t{0} : data_[at_++]; }
  uint16_t Word() { return static_cast<uint16_t>(Byte() | Byte() << 8); }
  uint32_t Long() { return Word() | static_cast<uint32_t>(Word()) << 16; }
  uint32_t Below(uint32_t limit) { return Byte() % limit; }
  // Up to `count` of the bytes that are left.
  testing::Bytes Take(size_t count);
  testing::Bytes Rest() { return Take(size_); }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_ = 0;
};

// An input of two halves: its first byte tells how long the first one is, in units of four bytes.
struct Halves {
  testing::Bytes choices;
  testing::Bytes stream;  // the rest, with a BUFEND behind it
};
Halves SplitInput(const uint8_t* data, size_t size);
// The input that SplitInput would make these of.
testing::Bytes JoinInput(testing::Bytes choices, const testing::Bytes& stream);

// A well-formed workbook of one to three small sheets, its cells as the choices say.
testing::Bytes StreamOf(Choices* choices);

// Rows and columns of the sheets that StreamOf makes.
constexpr uint16_t kRows = 6;
constexpr uint16_t kColumns = 8;

// The path of a file in a folder of the process, gone with the folder when the process ends. TMPDIR says where; one in memory makes the
// fuzzers fast.
std::string ScratchPath(const char* name);

}  // namespace tolvenar::fuzz
