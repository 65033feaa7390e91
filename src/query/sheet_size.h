// Sheet size: what kind of sheet it is, and the used range of a worksheet.
//
//   BOF at +6, +7   KIND                       DIMENSIONS (low byte 0x00, plain test)   BIFF5   BIFF8
//   0x05, any       5  workbook globals        first row, u16                           4       4 of 32 bits
//   0x06, any       6  Visual Basic module     row past the last, u16                   6       8 of 32 bits
//   0x20, any       9  chart                   first column, u16                        8       12
//   0x40, any       7  macro sheet             column past the last, u16                10      14
//   0x00, 0x01      8  workspace
//   other           0  worksheet
#pragma once

#include <cstdint>

namespace tolvenar {

// Gives the used range of sheet `sheet` (1-based): *first_row and *first_col the stored 0-based values
// plus 1 in 16 bits, *last_row and *last_col the stored past-the-end values as they stand, which makes
// all four 1-based and inclusive. The first DIMENSIONS of the sheet counts, wherever it stands. A null
// out pointer is not written.
// RESULT, in the order of the checks: 1 null table (or one that is no live block). 2 sheet below 1 or
// above the count. 3 null buffer. 5, 6, 7, 8, 9 by the table above. 0 a worksheet. Outputs are written
// with 0 only, and only when a DIMENSIONS was found while BiffVersion is 5 or 6.
int16_t XLGetSheetSize(uint32_t buffer, uint32_t table, int16_t sheet, uint16_t* first_row,
                       uint16_t* last_row, uint16_t* first_col, uint16_t* last_col);

}  // namespace tolvenar
