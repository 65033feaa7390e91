// Rows and columns: the six operations that change the structure of one sheet.
//
//   OPERATION                  WHAT HAPPENS TO                    CELLS          FORMULAS     ROW RECORDS
//   XLAddRow, XLAddCol         the bounds of the used range       stay           stay         new ones / all
//   XLInsertRow, XLInsertCol   all at or beyond the position      move by +1     follow       one new / all
//   XLDeleteRow, XLDeleteCol   the row or column, and all beyond  go / move -1   follow       go / all
//
// All six are one walk over the sheet's records with 16-bit fields changed in place; new bytes come in by
// patches only. Records of the sheet itself change and no others: COLINFO, MERGECELLS, DBCELL, INDEX, NAME,
// the bounds of ARRAY and SHRFMLA, LABELSST cells and formulas on other sheets keep what they hold, on
// purpose. (XLDeleteDBCells removes the records whose offsets go stale.) Of the cells a STRING is one,
// although it has no position: the first two words of its payload move like a row and a column.
//
// Invariants: (1) Only records at nesting depth 1 are handled. (2) Rows and columns compare as signed 16-bit
// values. (3) Nothing is rolled back. (4) The SheetTable stays good: no record behind a patch moves. (That takes
// a record behind the cells and ROWs of the sheet, WINDOW2 at least, as worksheets have: in front of a bare EOF,
// which is shorter than a DETOUR, a patch displaces the BOF of the next sheet as well.)
#pragma once

#include <cstdint>

namespace tolvenar {

// Results of the six, in the order of the checks.
constexpr int16_t kEditDone = 0;
constexpr int16_t kEditNoSheets = 1;      // the table is null or has no sheets
constexpr int16_t kEditBadSheet = 2;      // only a table with a negative count gets here, on purpose
constexpr int16_t kEditNoWorksheet = 3;   // no such sheet, null buffer, or the sheet is no worksheet
constexpr int16_t kEditNoRowBlock = 3;    // XLAddRow, XLInsertRow: no pool block for the new ROW
constexpr int16_t kEditBadPosition = 4;   // refused by the position check of the operation
constexpr int16_t kEditNoTable = 7;       // can't be reached, since kEditNoSheets comes first
constexpr int16_t kEditNoBuffer = 8;      // only for a null `size`, since kEditNoWorksheet comes first
constexpr int16_t kEditNoTemplate = 9;    // XLAddRow: no ROW to copy, or an empty sheet
constexpr int16_t kEditPatchFailed = 10;  // XLAddRow, XLInsertRow
constexpr int16_t kEditBufferLost = 11;   // can't be reached, since kEditPatchFailed comes first

// All six:
//   buffer, size  the workbook; both may change where a patch is laid. A null `buffer` counts as a
//                 variable holding 0, a null `size` as no buffer where it is used
//   table         its SheetTable, read only
//   sheet         1-based
//   position      1-based row or column
// On 1 to 8 nothing has changed (3 of the new ROW aside). A sheet without DIMENSIONS counts as one with an
// empty range: no position is refused, and XLAddRow finds no ROW to copy.

// Widens the used range to `position`, which lies outside it (else 4), and makes the ROW records for it:
// copies of the first or the last used ROW. Above the last row: rows last + 1 to position. Below the first
// row: position to last - 1, on purpose, so that rows which have a ROW get another one. RESULT 9: that first
// or last ROW was not found. 3: no block. 10: a patch failed; the 20-byte block of the ROW stays live, and
// when the buffer could not grow it is released and *buffer is 0. At 9, 3 and 10 DIMENSIONS stays changed, at
// 10 the rows patched so far stay.
int16_t XLAddRow(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position);

// Widens the used range to `position`, which lies outside it (else 4), in DIMENSIONS and in every ROW of the
// sheet. In DIMENSIONS the fields are those of BIFF8 in both generations, on purpose. `size` is not used. No
// new record arises.
int16_t XLAddCol(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position);

// Opens a row: all at or beyond `position` moves down. The new ROW copies the looks of the one it displaces;
// without a ROW at the position none is made, and the result is 0: such a row then has the looks of any other
// without a ROW. DIMENSIONS grows by one row wherever the position lies. RESULT 4: an inverted range only. 3
// (no block), 10: everything has moved, the new ROW is missing; at 10 its block stays live, and when the
// buffer could not grow it is released and *buffer is 0.
int16_t XLInsertRow(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position);

// Opens a column: all at or beyond `position` moves right; a run of cells across it is split, and the record
// that follows a split run in the walk is passed over unchanged, on purpose. RESULT 4: an inverted range
// only. A run that can't be split for want of memory has no result of its own: see EditWalk.
int16_t XLInsertCol(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position);

// Takes a row away: its records become SLACK, all beyond moves up. DIMENSIONS shrinks only when the position
// lies beyond the last row, and then in the BIFF8 field in both generations; both on purpose. RESULT 4: an
// inverted range only. `size` is not used.
int16_t XLDeleteRow(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position);

// Takes a column away. A run that begins in it moves left and keeps all its cells; the column is compared
// with the rows of the used range, in the check and for DIMENSIONS, whose row count is what shrinks: all on
// purpose. RESULT 4: an inverted range of rows only. A run that can't be split: see EditWalk.
int16_t XLDeleteCol(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t position);

}  // namespace tolvenar
