// Run splitters: a MULRK or MULBLANK is taken out of the walk and replaced by the pieces to the left and to
// the right of one column.
//
//   MULRK      row u16, first column u16, n x (XF u16, RK 4 bytes), last column u16      6n + 10 bytes with
//   the header MULBLANK   row u16, first column u16, n x (XF u16), last column u16                  2n + 10
//   bytes
//
// What a split does to the bytes, a MULRK of columns 0 to 3 split at record column 2 for a change as example.
// The run turns SLACK; the left piece takes the SLACK from its start; the right piece goes to what is left of
// it, or by a DETOUR when it does not fit:
//
//   before   | MULRK 0..3, 34 bytes                                  | next ...
//   after    | MULRK 0..1, 22 bytes        | SLACK, 12 bytes         | next ...
//                                          ^ place                            right piece: here, or patched
//                                          in | DETOUR e | dead, 4      | next ...        e: | RK 3 | SLACK,
//                                          12 | RESUME next |
//
// In the walk the new cell, put at the place, then stands between the pieces:   MULRK 0..1, new cell 2, RK 3,
// SLACK, next ... A left piece that does not fit the run's own room (a MULBLANK without its last cell is 2
// bytes too long for it) goes by a DETOUR as well; the place is then the SLACK that was carried along behind
// it, in the patch area.
//
// Invariants: (1) Everything is built from a scratch copy of the run's body. (2) Scratch blocks: the body's
// copy, and one for each piece there is. On success all are released. On a failed allocation too. On a failed
// patch or a negative count none is, on purpose. (3) From the moment the counts are known to be good the run
// is SLACK, whatever happens after it.
#pragma once

#include <cstdint>

namespace tolvenar {

// All six: `offset` is that of the run, `column` the caller's, 1-based. *buffer may move, *size grows by what
// the patches lay down. RESULT: an offset, see below. 0 on failure: *buffer is 0 or no live block (nothing
// changed); a scratch block can't be had; the column lies outside the run (nothing changed, the body's copy
// stays live); a patch failed (the scratch blocks stay live, a piece already placed stands; when the buffer
// could not grow it is released and *buffer is 0).

// For a new value in the column: pieces on both sides of it. Result: the place of the new cell, in front of
// the right piece. SplitMulBlankForChange differs in two points, on purpose: a right piece of one cell
// carries the column of the new cell and not its own; and without a left piece the place is the record behind
// the erased run, which stays SLACK as a whole.
int32_t SplitMulRkForChange(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);
int32_t SplitMulBlankForChange(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);

// For a new column: the cells from `column` on move right by one. Result: the record after the pieces.
// On purpose: in SplitMulRkForInsert a right piece of one cell takes XF and value one cell too far on, from
// the run's last-column word and the 4 bytes behind the body in the scratch copy (what earlier tenants of its
// slot left there). In SplitMulBlankForInsert a right piece of one cell is a BLANK of 14 bytes, 4 more than
// it needs; they are zero, as the scratch block is.
int32_t SplitMulRkForInsert(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);
int32_t SplitMulBlankForInsert(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);

// For a column taken away: the cell in `column` goes, those behind it move left by one. Result: the record
// after the pieces. In SplitMulBlankForDelete a right piece of one cell is a BLANK of 14 bytes, as above.
int32_t SplitMulRkForDelete(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);
int32_t SplitMulBlankForDelete(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t column);

}  // namespace tolvenar
