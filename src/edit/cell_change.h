// Changes of one cell in place: a new value, or a new XF index.
//
//   FOUND           A NEW VALUE                                     A NEW XF INDEX
//   single cell     turns SLACK, the new record takes its place     overwritten
//   cell of a run   the run is split, the new record goes between   overwritten, with that of the first cell
//   no cell         the new record goes in front of the next one    a BLANK goes in front of the next one
//
// Invariants: (1) Only cell records change. ROW, DIMENSIONS, INDEX and DBCELL are not updated, no text enters
// the shared strings, and a STRING, SHRFMLA or ARRAY behind a replaced FORMULA stays. (2) No edit is rolled
// back: the result says how far it got. (3) The SheetTable stays good where a sheet has records behind its cells,
// WINDOW2 at least, as worksheets do. A cell that is put in front of a bare EOF displaces that EOF, which is
// shorter than a DETOUR, and with it the BOF of the next sheet.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// XF index of a cell that was not there before: the default cell format.
constexpr uint16_t kDefaultCellXf = 15;

// Results of the two exports.
constexpr int16_t kChangeDone = 0;
constexpr int16_t kChangeNoCell = 1;     // the cell can't exist; nothing changed
constexpr int16_t kChangeNullValue = 2;  // VT_NULL; nothing changed
constexpr int16_t kChangeNoBuffer = 3;   // a check that can't fire: a null buffer has no cell
constexpr int16_t kChangeMulRk = 4;      // the MULRK could not be split, or its cell not be stamped
constexpr int16_t kChangeMulBlank = 5;   // the same of a MULBLANK
constexpr int16_t kChangeBlank = 6;      // the BLANK could not be written
constexpr int16_t kChangeInteger = 8;    // the NUMBER of an integer or a date could not be written
constexpr int16_t kChangeFloat = 10;     // the NUMBER of a float could not be written
constexpr int16_t kChangeLabel = 12;     // the LABEL could not be written, or there is no text
constexpr int16_t kChangeDouble = 13;    // the NUMBER of a double or a currency could not be written

// Gives the cell at `row`, `column` (1-based) of `sheet` (1-based) a new value; see tolvenar.h for the types.
// It keeps its XF; a new cell gets kDefaultCellXf. VT_EMPTY on a cell of a MULBLANK takes the whole run out,
// with all its formats, on purpose. VT_CY stores its 8 bytes as if they were a double, on purpose. VT_DATE
// loses the time of day; one outside 32 bits, or no number, becomes -2147483648, as the processor's own
// conversion has it. A type that is not served removes the cell, writes nothing and gives 0. From result 4 on
// the old cell is gone. Harmless where nothing is prescribed: a null `buffer` or `size` pointer gives 1, a
// null `value` counts as VT_NULL, a null reference to a BSTR as a null BSTR.
int16_t XLChangeCellValue(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t row,
                          int16_t column, const VARIANT* value);

// Gives the cell a new XF index; an absent one becomes a BLANK. The first cell of a run is always stamped
// along, on purpose.
int16_t XLChangeCellXF(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t row,
                       int16_t column, uint16_t xf);

// Writes the XF index of one cell (caller's column) of the run at `offset`. Result: `offset`; 0, with nothing
// changed, when the buffer is null or the column lies outside the run.
int32_t SetMulRkCellXF(uint32_t buffer, uint32_t offset, int16_t column, uint16_t xf);
int32_t SetMulBlankCellXF(uint32_t buffer, uint32_t offset, int16_t column, uint16_t xf);

}  // namespace tolvenar
