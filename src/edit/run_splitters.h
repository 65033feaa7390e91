// Run splitters: a MULRK or MULBLANK is taken out of the walk and replaced by the pieces to the left and to
// the right of one column.
//
//   MULRK     row u16, first column u16, n x (XF u16, RK 4 bytes), last column u16   6n + 10 bytes in all
//   MULBLANK  row u16, first column u16, n x (XF u16), last column u16               2n + 10 bytes in all
//
// What a split does to the bytes: a MULRK of columns 0 to 3, split at column 2 for a new value there. The run
// turns SLACK, the left piece takes its room from the start, the right piece what is left of it, or a DETOUR:
//
//   before   | MULRK 0..3, 34 bytes                      | next
//   then     | MULRK 0..1, 22 bytes | SLACK, 12 bytes    | next
//   after    | MULRK 0..1, 22 bytes | DETOUR to e | dead | next ... e: | RK 3 | SLACK | RESUME to next |
//                                   ^ place
//
// The new cell, put at the place, comes between the pieces in the walk: MULRK 0..1, new cell, RK 3, next.
//
// A left piece may not fit the run's own room either: a MULBLANK without its last cell is 2 bytes shorter
// than the run, too few for a SLACK header behind it. The place is then behind the piece in the patch area:
//
//   after    | DETOUR to e | dead | next ... e: | left piece | SLACK, the run | RESUME to next |
//                                                            ^ place
//
// Invariants: (1) Everything is built from a scratch copy of the run's body. (2) The scratch blocks are that
// copy and one for each piece there is. All are released on success and when one of them can't be had; none
// is, on purpose, after a failed patch or a negative count. (3) Once the counts are known to be good the run
// is SLACK, whatever happens after it.
#pragma once

#include <cstdint>

namespace tolvenar {

// All six: `offset` is that of the run, `column` the caller's, 1-based. *buffer may move, *size grows by what
// the patches lay down. RESULT: an offset, as told below; 0 on failure, and then
//   - *buffer is 0 or no live block, or there is no block for the copy of the body: nothing has changed;
//   - the column lies outside the run: nothing has changed, but the copy of the body stays live;
//   - there is no block for a piece: the run is SLACK;
//   - a patch failed: the run is SLACK, a left piece may stand, the scratch blocks stay live; when the buffer
//     could not grow it is released and *buffer is 0. A piece of more than 32767 bytes fails here too.

// For a new value in the column. Result: the place of the new cell, in front of the right piece.
// SplitMulBlankForChange differs in two points, on purpose: a right piece of one cell carries the column of
// the new cell and not its own; and without a left piece the place is the record behind the run, all of which
// stays SLACK.
int32_t SplitMulRkForChange(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);
int32_t SplitMulBlankForChange(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);

// For a new column: the cells from `column` on move right by one. Result: the record after the pieces.
// On purpose: in SplitMulRkForInsert a right piece of one cell takes XF and value one cell too far on, from
// the run's last-column word and the 4 bytes behind the body in the scratch copy (what earlier tenants of its
// slot left there; zero behind the slot). In SplitMulBlankForInsert a right piece of one cell is a BLANK of
// 14 bytes, 4 more than it needs; they are zero, as the scratch block is.
int32_t SplitMulRkForInsert(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);
int32_t SplitMulBlankForInsert(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);

// For a column taken away: the cell in `column` goes, those behind it move left by one. Result: the record
// after the pieces. In SplitMulBlankForDelete a right piece of one cell is a BLANK of 14 bytes, as above.
int32_t SplitMulRkForDelete(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);
int32_t SplitMulBlankForDelete(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);

}  // namespace tolvenar
