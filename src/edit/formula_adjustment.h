// Formula adjustment: makes the references of one formula follow a row or column that was inserted or
// deleted. In place, without allocation; token sizes never change and nothing moves.
//
//   Fields of the tokens it touches, from the id byte        A rectangle of the list behind the tokens
//   TOKEN              ROW WORDS   FLAG BYTES   COLUMNS      OFFSET  SIZE  FIELD
//   ptgExp, ptgTbl     1           none         3 (u16)           0     2  first row
//   ptgRef, ptgRefN    1           2            3                 2     2  last row
//   ptgArea, ptgAreaN  1, 3        2, 4         5, 6              4     1  first column
//   ptgRef3d           15          2 (not 16)   17                5     1  last column
//   ptgArea3d          15, 17      16, 18       19, 20
//
// A row word holds the row in its low 14 bits and two flags in bits 15 and 14. The flags come back in bits 7
// and 6, on purpose. There is this one layout, BIFF5's, for both generations, on purpose: in a BIFF8 formula
// the fields of the 3d tokens, and of areas at its end, can lie behind the record that holds it; so a caller
// gives the record's payload as the block.
//
// Invariants: no byte outside the block is touched, whatever the formula claims; the walk makes at most
// `length` steps.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"

namespace tolvenar {

// What happened to the sheet. Modes below 2 are about rows, those from 2 on about columns; an even one
// inserts, an odd one deletes.
enum class AdjustMode : int16_t {
  kRowInserted = 0,
  kRowDeleted = 1,
  kColumnInserted = 2,
  kColumnDeleted = 3,
};

// Adjusts one formula in place.
//   tokens    offset in `block` of the first token
//   length    the formula's token length in bytes; below 1: nothing is done
//   position  the row or column, 0-based, that was inserted or deleted; compared as signed 16-bit values
// No token at or behind `length` is visited. The fields of the last one can lie behind it, and so can up to 5
// bytes of the last rectangle. A Mem token can claim more extra data than the formula has: the list of
// rectangles then begins as far in front of the tokens as it says. All of that stays inside the block.
// RESULT 1; 0 when a deleted row turned a reference, or a deleted row or column turned an area, into an error
// token. A reference that a deleted column turns into an error leaves 1, on purpose.
int16_t AdjustFormulaReferences(const Block& block, uint32_t tokens, int16_t length, int16_t position,
                                AdjustMode mode);

}  // namespace tolvenar
