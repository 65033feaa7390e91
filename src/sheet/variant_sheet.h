// New worksheets filled from VARIANTs in one call.
//
// The cells come as rows x columns addresses of VARIANTs, or as a SAFEARRAY of VARIANTs with one index from 0
// on, row by row in both cases. cell_value.h tells what becomes of each. Every cell takes the XF of its
// column. Results and what a failure leaves are those of sheet_append.h; -5 is also the answer to a VT_NULL
// among the cells.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Adds a sheet. A null address among the cells, and a null array, are empty cells; a null `xf` is XF 0.
int16_t XLAppendVariantSheet(uint32_t* buffer, uint32_t* size, const char* name, int16_t columns,
                             int16_t rows, const VARIANT* const* cells, const uint16_t* xf);

// The same from arrays, for which it takes two more pool blocks: 4 and 16 bytes a cell, released again in
// every case, as is the lock on the array of XFs. Without one of them the result is -5 and nothing has
// changed. An element that the array does not give is an empty cell, as are all elements of an array of
// anything but VARIANTs; beyond the end of the XFs, or where they are not 16 bits wide, the XF is 0. The
// copies of text that the elements give are not released, on purpose: they are lost to the process.
int16_t XLAppendVariantSheetVB(uint32_t* buffer, uint32_t* size, const char* name, int16_t columns,
                               int16_t rows, SAFEARRAY** cells, SAFEARRAY** xf);

// The body: the skeleton with a COUNTRY, and the cells row by row, appended at *size. Result: 0, *buffer and
// *size are renewed; 2 a cell is VT_NULL; -2 an append failed, the block is released. Both variables are then
// as they were before the call, even if a growth moved the buffer.
int16_t CreateVariantSheet(uint32_t* buffer, uint32_t* size, int16_t columns, int16_t rows,
                           const VARIANT* const* cells, const uint16_t* xf);

}  // namespace tolvenar
