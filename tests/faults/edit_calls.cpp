// Calls: cells, rows and columns.
#include "faults/calls.h"
#include "foundation/biff_records.h"
#include "tolvenar/tolvenar.h"

namespace tolvenar::testing {

namespace {

using Prepare = void (*)(Ground&);
using Fill = void (*)(Variants&);
using RowColumnEdit = int16_t(TOLVENAR_CALL*)(uint32_t*, uint32_t, uint32_t*, int16_t, int16_t);

// XLChangeCellValue of one cell of the first sheet.
std::function<int32_t(Ground&)> Change(int16_t row, int16_t column, Fill fill) {
  return [row, column, fill](Ground& g) {
    fill(g.cells);
    return ::XLChangeCellValue(&g.buffer, g.table, &g.size, 1, row, column, g.cells.Data());
  };
}

// One of the six edits at a position of the first sheet.
std::function<int32_t(Ground&)> At(RowColumnEdit edit, int16_t position) {
  return [edit, position](Ground& g) { return edit(&g.buffer, g.table, &g.size, 1, position); };
}

int32_t Stamp(Ground& g) {
  const std::vector<int16_t> matrix(4 * 6, 3);
  return ::ChangeFormat(g.buffer, g.table, 1, matrix.data(), 6) != 0;
}

// Two runs too long for a patch to hold what is left of them.
void OpenWideRuns(Ground& g) {
  constexpr uint16_t kCells = 6000;
  StreamBuilder book;
  book.Bof(6)
      .Sheet("Data")
      .Eof()
      .Bof(6, kWorksheet)
      .Dimensions(0, 2, 0, kCells)
      .Row(0, 0, kCells)
      .Row(1, 0, kCells);
  for (uint16_t row = 0; row < 2; ++row) {
    book.Record(0x00BD, U16(row) + U16(0) + Bytes(6 * kCells) + U16(kCells - 1));
  }
  OpenStream(g, book.Eof(), kBiff8);
}

void Blank(Variants& value) {
  value.Empty();
}
void Integer(Variants& value) {
  value.I4(7);
}
void Single(Variants& value) {
  value.R4(7);
}
void Double(Variants& value) {
  value.R8(7);
}
void Label(Variants& value) {
  value.Text(OLESTR("seven"));
}

using enum Leaves;

// The cells: in row 1 a number and a text stand in columns 1 and 2 and nothing behind them; rows 2 and 3 are a run of numbers and
// one of blanks, in columns 1 to 5.
std::vector<Call> CellCalls() {
  const auto xf = [](int16_t column) {
    return [column](Ground& g) { return ::XLChangeCellXF(&g.buffer, g.table, &g.size, 1, 1, column, 4); };
  };
  // clang-format off
  return {
      {"XLChangeCellValue", "BlankOverNumber", OpenBook, Change(1, 1, Blank), {0}, {{6, kLive}}},
      {"XLChangeCellValue", "NewBlank", OpenBook, Change(1, 4, Blank), {0}, {{6, kLiveOrReleased}}},
      {"XLChangeCellValue", "NewInteger", OpenBook, Change(1, 4, Integer), {0}, {{8, kLiveOrReleased}}},
      {"XLChangeCellValue", "NewFloat", OpenBook, Change(1, 4, Single), {0}, {{10, kLiveOrReleased}}},
      {"XLChangeCellValue", "NewText", OpenBook, Change(1, 4, Label), {0}, {{12, kLiveOrReleased}}},
      {"XLChangeCellValue", "NewTextTight", OpenTightBook, Change(1, 4, Label), {0}, {{12, kLiveOrReleased}}},
      {"XLChangeCellValue", "NewDouble", OpenBook, Change(1, 4, Double), {0}, {{13, kLiveOrReleased}}},
      {"XLChangeCellValue", "FirstOfNumbers", OpenBook, Change(2, 1, Double), {0}, {{4, kLiveOrReleased}, {13, kLiveOrReleased}}},
      {"XLChangeCellValue", "InNumbers", OpenBook, Change(2, 3, Double), {0}, {{4, kLiveOrReleased}, {13, kLiveOrReleased}}},
      {"XLChangeCellValue", "FirstOfBlanks", OpenBook, Change(3, 1, Double), {0}, {{5, kLiveOrReleased}, {13, kLiveOrReleased}}},
      {"XLChangeCellValue", "InBlanks", OpenBook, Change(3, 3, Double), {0}, {{5, kLiveOrReleased}, {13, kLiveOrReleased}}},
      {"XLChangeCellXF", "New", OpenBook, xf(4), {0}, {{6, kLiveOrReleased}}},
      {"XLChangeCellXF", "Known", OpenBook, xf(1), {0}, {}},
      {"ChangeFormat", "", OpenBook, Stamp, {1}, {}},
  };
  // clang-format on
}

}  // namespace

std::vector<Call> EditCalls() {
  std::vector<Call> calls = CellCalls();
  const std::vector<Failure> row_failures = {{3, kLive}, {10, kReleased}};
  // The column edits don't look at what became of a split: they answer 0, and the buffer may be gone.
  // clang-format off
  const std::vector<Call> more = {
      {"XLAddRow", "", OpenBook, At(::XLAddRow, 6), {0}, row_failures},
      {"XLAddRow", "Tight", OpenTightBook, At(::XLAddRow, 6), {0}, row_failures},
      {"XLAddCol", "", OpenBook, At(::XLAddCol, 8), {0}, {}},
      {"XLInsertRow", "", OpenBook, At(::XLInsertRow, 2), {0}, row_failures},
      {"XLInsertCol", "", OpenBook, At(::XLInsertCol, 3), {0}, {}},
      {"XLInsertCol", "Second", OpenBook, At(::XLInsertCol, 2), {0}, {}},
      {"XLInsertCol", "Last", OpenTightBook, At(::XLInsertCol, 5), {0}, {}},
      {"XLInsertCol", "WideRuns", OpenWideRuns, At(::XLInsertCol, 3), {0}, {}},
      {"XLDeleteCol", "WideRuns", OpenWideRuns, At(::XLDeleteCol, 3), {0}, {}},
      {"XLDeleteRow", "", OpenBook, At(::XLDeleteRow, 2), {0}, {}},
      {"XLDeleteCol", "", OpenBook, At(::XLDeleteCol, 3), {0}, {}},
      {"XLDeleteCol", "Last", OpenTightBook, At(::XLDeleteCol, 5), {0}, {}},
  };
  // clang-format on
  calls.insert(calls.end(), more.begin(), more.end());
  return calls;
}

}  // namespace tolvenar::testing
