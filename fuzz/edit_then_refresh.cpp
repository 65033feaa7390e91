// A property: after any run of edits, a refresh changes neither the stream that a walk meets nor a value that
// a reader gives, and leaves no patch behind. The input says what the workbook holds and which cells are
// edited how.
#include "book_program.h"
#include "foundation/biff_records.h"
#include "reading.h"

using tolvenar::fuzz::Book;
using tolvenar::fuzz::Choices;
using tolvenar::fuzz::Require;
using tolvenar::testing::Bytes;
using tolvenar::testing::operator+;

namespace {

void EditOnce(Book* book, Choices* choices) {
  const auto sheet = static_cast<int16_t>(choices->Below(4));
  const auto row = static_cast<int16_t>(choices->Below(tolvenar::fuzz::kRows + 2));
  const auto column = static_cast<int16_t>(choices->Below(tolvenar::fuzz::kColumns + 2));
  if (choices->Byte() % 3 == 0) {
    XLChangeCellXF(&book->buffer, book->table, &book->size, sheet, row, column, choices->Word());
    return;
  }
  VARIANT value = tolvenar::fuzz::ChosenValue(choices);
  XLChangeCellValue(&book->buffer, book->table, &book->size, sheet, row, column, &value);
  VariantClear(&value);
}

void RequireNoPatches(const Book& book) {
  // The walk leaves patch records out, so a buffer that is its own walked stream, and a BUFEND, holds none.
  const Bytes walked = tolvenar::testing::WalkedStream(book.buffer);
  const Bytes buffer = tolvenar::testing::BlockContents(book.buffer, book.size);
  Require(buffer == walked + Bytes{0xF8, 0xFE, 0, 0}, "a refreshed buffer holds no patches");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  MEMORYFREEALL();
  Choices choices(data, size);
  Book book = tolvenar::fuzz::OpenStream(tolvenar::fuzz::StreamOf(&choices));
  Require(book.table != 0, "a well-formed workbook is opened");
  for (int edits = 0; edits < 64 && !choices.Done(); ++edits) EditOnce(&book, &choices);
  const Bytes stream = tolvenar::fuzz::ComparableStream(book);
  const Bytes values = tolvenar::fuzz::AllValues(book);
  Require(XLRefreshHandles(&book.buffer, book.table, &book.size) == 0, "a workbook can be refreshed");
  Require(tolvenar::fuzz::ComparableStream(book) == stream, "a refresh keeps the walked stream");
  // In BIFF8 the reader takes one byte from behind a text that was written, on purpose, and a refresh changes
  // what stands there.
  const bool comparable = XLGetNumVers(book.buffer, book.table) == tolvenar::kBiff5;
  Require(!comparable || tolvenar::fuzz::AllValues(book) == values, "a refresh keeps the values");
  RequireNoPatches(book);
  return 0;
}
