// New worksheets from VARIANTs in stages, for sheets that are filled slice by slice. The order is fixed, and
// nothing checks it:
//
//   AppendVariantSheet1       splice: the BOUNDSHEET stands, size is where the sheet's BOF goes
//   CreateVariantSheet1       skeleton up to DEFCOLWIDTH        or   CreateVariantSheet1A   and with it
//   CreateVariantSheet2       DIMENSIONS, ROWs, all cells                                   DIMENSIONS, ROWs
//                                                                    CreateVariantSheet2A   a slice of cells,
//                                                                                           as often as
//                                                                                           needed
//   CreateVariantSheet3       WINDOW2, SELECTION, EOF; size is true again
//   AppendVariantSheet2       BUFEND, and the whole stream laid out anew: only now a workbook again
//
// The caller holds the state between the calls: buffer, size, position. The position is the true end of the
// stream. The size is nominal while the sheet is open: each growth adds 32767 to it, the ROWs reserve room in
// it, and it overshoots, on purpose; CreateVariantSheet3 resets it.
//
// After every result but 0 (of AppendVariantSheet1: below 0) the workbook must be dropped. A stage that gives
// -2 has released the buffer and zeroed *buffer; the position is behind the last whole record. A null pointer
// by reference counts as a variable holding 0; a null array of cells as empty cells, a null `xf` as XF 0.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Splices the BOUNDSHEET of a new sheet in. Result: the number of the new sheet: *buffer is the new buffer,
// without a BUFEND, *size where the BOF goes, the old buffer is released. -2: no buffer, or no pool block for
// the new one or for the BOUNDSHEET: *buffer and its block are as they were, *size has been set to what the
// new buffer would have had. -2 also when the buffer's patches can't be folded away: *buffer and *size are as
// they were.
int16_t AppendVariantSheet1(uint32_t* buffer, uint32_t* size, const char* name);

// Opens the sheet at *size. Result: 0 or -2.
int16_t CreateVariantSheet1(uint32_t* buffer, uint32_t* size, uint32_t* position);

// Opens the sheet at *size and states its range: DIMENSIONS and one ROW for each row, at least one; a count
// above 65534 counts as 65534. Room for the ROWs is reserved. Result: 0 or -2.
int16_t CreateVariantSheet1A(uint32_t* buffer, uint32_t* size, int32_t columns, int32_t rows,
                             uint32_t* position);

// States the range and writes all cells, row by row; `cells` holds rows x columns VARIANTs, `xf` one XF a
// column. A VT_NULL is a blank. Result: 0 or -2. At least one ROW is written. The room for the ROWs is asked
// for with a figure so small that it mostly reserves nothing, on purpose; a ROW that would not fit grows the
// buffer as an append does.
int16_t CreateVariantSheet2(uint32_t* buffer, uint32_t* size, uint32_t* position, int16_t columns,
                            int16_t rows, const VARIANT* cells, const uint16_t* xf);

// Writes a slice of cells, column by column: the cell of slice row r and slice column c, cells[r x columns +
// c], goes to row first_row + r and column first_column + c (0-based) with the XF xf[c]. DIMENSIONS and ROWs
// stay as they are. Result: 0 or -2.
int16_t CreateVariantSheet2A(uint32_t* buffer, uint32_t* size, uint32_t* position, uint16_t first_column,
                             uint16_t first_row, uint16_t columns, uint16_t rows, const VARIANT* cells,
                             const uint16_t* xf);

// Closes the sheet: *size becomes the position behind its EOF. Result: 0 or -2.
int16_t CreateVariantSheet3(uint32_t* buffer, uint32_t* size, uint32_t* position);

// Finishes the workbook. Result: `number`, unchanged; -2 no BUFEND: released, *buffer is 0; -8 XLLocateSheets
// refused the stream: released, *buffer is 0; -7 XLRefreshHandles failed: *buffer is not refreshed.
int16_t AppendVariantSheet2(uint32_t* buffer, uint32_t* size, int16_t number);

// Writes a BUFEND at *size, which moves behind it. Result: 0; -2: the buffer is released, *buffer is 0 and
// *size is 0xFFFFFFFF.
int16_t AddZemblerRecord(uint32_t* buffer, uint32_t* size);

}  // namespace tolvenar
