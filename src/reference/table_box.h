// EncodeTableBox: position values of a table turned into few records.
//
//   distance of two neighbours    1                      0x100                  0x1000000
//   digit of the axis code        lowest (x 1)           second (x 5)           third (x 25)
//   count in the record           u8                     u16                    u8
//
// A digit is the number of the dimension, 1 to 4, along which the values advance by that distance, 0 for none. A distance serves one
// dimension only, the first that shows it, so a box has at most three dimensions of more than one cell.
//
// Invariant: each call that succeeds writes one record and zeroes the cells that it stands for, the first of them included: a caller that
// calls it for every cell that is not 0 comes to an end.
#pragma once

#include <cstdint>

namespace tolvenar {

constexpr int16_t kBoxDone = 0;
constexpr int16_t kBoxNoMask = -1;
constexpr int16_t kBoxNoRecord = -3;
constexpr int16_t kBoxNotPatched = -5;
constexpr int16_t kBoxCellNotPatched = -6;

// Distances that position values advance by, in the order of the axis code's digits, and what each digit counts in it.
constexpr uint32_t kBoxStepCount = 3;
constexpr uint32_t kBoxSteps[kBoxStepCount] = {1, 0x100, 0x1000000};
constexpr uint32_t kBoxAxisUnits[kBoxStepCount] = {1, 5, 25};

// Writes, in front of the record at offset `at`, one record for the largest box of cells whose values advance evenly from cell
// (a, b, c, d), and zeroes these cells in `values`: a TABLECELL for a cell that stands alone, otherwise a TABLEBLOCK. Of boxes of one size
// that which reaches further along dimension 1, then 2, 3, 4, is taken.
//   values       pool block of D1 x D2 x D3 x D4 u32, in the order of LinearCellIndex; it stays the caller's
//   a b c d      0-based, inside the sizes; the value there is not 0
// RESULT: 0. With `values` as it was: -1 no pool block for the mask, which has 4 bytes for each cell of the remaining array; -3 none for the
// record; -5, -6 a TABLEBLOCK, a TABLECELL could not be patched in: a buffer that can't grow has been freed and *buffer is 0.
// A count above 255 is cut to its low 8 bits, while the whole box is zeroed, on purpose: such cells are lost.
// Position values count modulo 2^32, so that a 0 behind 0xFFFFFFFF goes into the box though it stands for no position, on purpose.
int16_t EncodeTableBox(uint32_t* buffer, uint32_t* size, uint32_t at, uint32_t values, int16_t a, int16_t b,
                       int16_t c, int16_t d, int16_t d1, int16_t d2, int16_t d3, int16_t d4);

}  // namespace tolvenar
