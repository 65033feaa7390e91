// A property: after any run of edits, a refresh changes neither the stream that a walk meets nor a value that
// a reader gives, and leaves no patch behind. The input says what the workbook holds and which cells are
// edited how.
#include "foundation/biff_records.h"
#include "fuzz_support.h"

using tolvenar::fuzz::Book;
using tolvenar::fuzz::Choices;
using tolvenar::fuzz::Require;
using tolvenar::testing::Bytes;
using tolvenar::testing::operator+;

namespace {

VARIANT ChosenValue(Choices* choices) {
  static constexpr OLECHAR kText[] = u"a text that is longer than most";
  VARIANT value;
  VariantInit(&value);
  const uint8_t kind = choices->Byte();
  switch (kind % 5) {
    case 0:
      value.vt = VT_R8;
      value.dblVal = choices->Word();
      break;
    case 1:
      value.vt = VT_I2;
      value.iVal = static_cast<int16_t>(choices->Word());
      break;
    case 2:
      value.vt = VT_BSTR;
      value.bstrVal = SysAllocStringLen(kText, 1 + choices->Below(30));
      break;
    case 3:
      value.vt = VT_NULL;
      break;
    default:
      break;  // VT_EMPTY
  }
  if (kind == 255) value.vt = VT_I8;  // a type that removes the cell
  return value;
}

void EditOnce(Book* book, Choices* choices) {
  const auto sheet = static_cast<int16_t>(choices->Below(4));
  const auto row = static_cast<int16_t>(choices->Below(tolvenar::fuzz::kRows + 2));
  const auto column = static_cast<int16_t>(choices->Below(tolvenar::fuzz::kColumns + 2));
  const uint8_t kind = choices->Byte();
  if (kind % 3 == 0) {
    XLChangeCellXF(&book->buffer, book->table, &book->size, sheet, row, column, choices->Word());
    return;
  }
  if (kind % 16 == 1) {
    tolvenar::fuzz::LookUp(book, choices);
    return;
  }
  if (kind % 16 == 2) {
    tolvenar::fuzz::ChangeSize(book, choices, sheet, kind < 128 ? row : column);
    return;
  }
  VARIANT value = ChosenValue(choices);
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
