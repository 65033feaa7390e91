// Row and column sizes: heights, widths and the zoom of a sheet, as they are displayed.
//
//   RECORD            LOW   READ                                        GIVES
//   DEFAULTROWHEIGHT  0x25  height u16 at 6                             every row: the height
//   ROW               0x08  row i16 at 4, height u16 at 10              that row: the height plus 1
//   DEFCOLWIDTH       0x55  width u16 at 4, characters                  every column: width x 120
//   COLINFO           0x7D  first, last u16 at 4, 6; width i16 at 8     those columns: width x 120 / 256
//   SCL               0xA0  numerator, denominator i16 at 4, 6          the zoom
//
// Only a ROW's height is given plus 1 and the default is not, on purpose. Heights are twips; their high bit
// is not masked off. Widths are 120 units a character.
//
// Invariant: records act in the order of the stream, those of embedded substreams too, so a default that
// stands behind a ROW or COLINFO overwrites it.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Put the heights of all rows, the widths of all columns of sheet `sheet` (1-based) into the array, whose
// elements are 16-bit integers. It must reach from exactly 1 to exactly the last row or column of the used
// range, read as signed. A sheet without DIMENSIONS has no range to compare with: any array from 1 on
// passes, up to 32767, and its own end counts as the last row or column.
// RESULT, in the order of the checks: 1 the table is null or has no sheets. 2 sheet above the count and not
// above 0, which takes a negative count. 3 no such sheet, null buffer, or no worksheet. 4 the array has not
// one dimension. 5 it does not fit. 6, 7: can't be reached. 0 done. An element that the array refuses is
// passed over; one that no record speaks of stays as it was.
int16_t XLGetRowHeight(SAFEARRAY** heights, uint32_t buffer, uint32_t table, int16_t sheet);
int16_t XLGetColWidth(SAFEARRAY** widths, uint32_t buffer, uint32_t table, int16_t sheet);

// The zoom of sheet `sheet` as a ratio: that of its last SCL, by floating-point rules also where the
// denominator is 0; 1.0 without one. A chart sheet has a zoom too.
// RESULT below 0, in the order of the checks: -1.0 null table (or one that is no live block). -2.0 no such
// sheet. -3.0 null buffer. -5.0 globals, -6.0 Visual Basic module, -7.0 macro sheet, -8.0 workspace. A
// negative ratio can't be told from these.
double XLGetMagnification(uint32_t buffer, uint32_t table, int16_t sheet);

}  // namespace tolvenar
