// Cell formats: the XF index of each cell of a worksheet, put into a two-dimensional array of the
// caller's.
//
//   LOW                                              RECORD                                          XF AT
//   0x01 0x05 0x06 0x04 0x03 0x7E 0xD6               BLANK BOOLERR FORMULA LABEL NUMBER RK RSTRING   8
//   0xFC                                             whatever has SST's type                         8
//   0xBD                                             MULRK, cell i                                   8 + 6i
//   0xBE                                             MULBLANK, cell i                                8 + 2i
//
// LABELSST (0xFD) is not among them, on purpose, and SST's 0xFC is: the cells that hold shared strings
// leave their elements as the caller set them, though the reader of values fills them.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Puts the XF indices of sheet `sheet` (1-based) into *cells, first index the row, second the column,
// both 1-based: 16-bit integers, with zeros above them in wider elements.
// RESULT as CheckCellRead; with anything but 0 nothing has been put. An element that the array refuses is
// passed over.
int16_t XLGetCellData(SAFEARRAY** cells, uint32_t buffer, uint32_t table, int16_t sheet);

}  // namespace tolvenar
