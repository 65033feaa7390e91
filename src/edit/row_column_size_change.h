// Row height and column width: a new size in the records of one sheet.
//
//   ROW                                COLINFO (low byte 0x7D)
//   OFFSET  SIZE  FIELD                OFFSET  SIZE  FIELD
//        4     2  row                       4     2  first column
//       10     2  height                    6     2  last column
//                                           8     2  width
//
// Sizes are taken and stored in the records' own units: twips, and 1/256 of a character.
//
// A height reaches the file only where the row has a ROW, a width only where a COLINFO stands for exactly that
// column: every other width ends with -20, since MakeColInfoRecord gives no record, on purpose.
//
// Invariants: (1) Records at nesting depth 1 only; rows and columns compare as signed 16-bit values. (2) Only the
// record found is changed. Nothing is rolled back.
#pragma once

#include <cstdint>

namespace tolvenar {

// Results beside those of row_column_edit.h.
constexpr int16_t kSizePatchFailed = -4;    // can't be reached: kSizeNoColInfo comes first
constexpr int16_t kSizeNoColInfo = -20;     // MakeColInfoRecord gave no record
constexpr int16_t kSizeNoDimensions = -22;  // neither a matching COLINFO nor DIMENSIONS; or an empty sheet

// Sets the height of row `row` (1-based) in its first ROW; its option flags stay. `size` is not used.
// RESULT 0: done, also without a ROW, and nothing has changed then. 1 no sheets. 2 can't fire but for a negative
// count. 3 no such sheet, null buffer, or no worksheet. 4 row above the last and below the first used one at
// once. 7, 8: can't be reached.
int16_t XLChangeRowHeight(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t row,
                          uint16_t height);

// Sets the width of column `column` (1-based). COLINFO records are looked for in front of DIMENSIONS; one matches
// whose first column is at or beyond the column and whose last is at or before it, on purpose: that of exactly
// this column, or one with its first column above its last. A wider one, though it covers the column, does not.
// RESULT 0: the COLINFO of exactly this column has the width. 1, 2, 3, 7, 8 as above; 4 compares the column
// with the used rows, on purpose. -22 as above. -20: every other case; the small block of
// MakeColInfoRecord stays live until the pool is cleared, and a COLINFO with its first column above its last
// has a new last column (and the width, when it begins with this column).
int16_t XLChangeColWidth(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t column,
                         uint16_t width);

}  // namespace tolvenar
