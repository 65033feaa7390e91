// Any bytes at all as a workbook's stream: whatever they are, locating the sheets and every reader come to an
// end, stay inside the block, and give back the pool blocks that they took. Then the same after a refresh.
#include "reading.h"

using tolvenar::fuzz::Book;
using tolvenar::fuzz::LiveBlocks;
using tolvenar::fuzz::Require;
using tolvenar::testing::Bytes;
using tolvenar::testing::operator+;

namespace {

constexpr int32_t kColumnsEitherSide = 65536;

// With a stride of 0 a matrix of one row, reaching as far to both sides as a column can, covers every cell
// that any stream can hold.
void GiveFormats(const Book& book) {
  static int16_t matrix[2 * kColumnsEitherSide] = {3};
  for (int16_t sheet = 1; sheet <= 2; ++sheet)
    ::ChangeFormat(book.buffer, book.table, sheet, matrix + kColumnsEitherSide, 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ::MEMORYFREEALL();
  static const Bytes kBufEnd = {0xF8, 0xFE, 0, 0};
  Book book = tolvenar::fuzz::OpenStream(Bytes(data, data + size) + kBufEnd);
  if (book.table == 0) {
    Require(LiveBlocks() == 0, "a stream that is refused leaves no block");
    return 0;
  }
  tolvenar::fuzz::ReadEverything(book);
  GiveFormats(book);
  Require(LiveBlocks() == 2, "the readers give back what they took");
  ::XLDeleteDBCells(book.buffer, book.size);
  if (::XLRefreshHandles(&book.buffer, book.table, &book.size) == 0) tolvenar::fuzz::ReadEverything(book);
  Require(LiveBlocks() == 2, "a refresh gives back what it took");
  const uint32_t left = tolvenar::fuzz::ReadStyles(book) + tolvenar::fuzz::ReadCharts(book);
  Require(LiveBlocks() == 2 + left, "no more blocks stay live than are named");
  return 0;
}
