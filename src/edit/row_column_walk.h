// Rows and columns: the walk that all six operations share, and what they do to single records on it.
//
// The walk begins on the sheet's BOF with depth 0; a BOF adds 1, an EOF takes 1 off, and a record is handled
// only at depth exactly 1, so that nested substreams are left alone. It ends at the sheet's EOF, by exact
// equality of offsets, or behind it when the EOF has been displaced, and at the BUFEND of a stream that its table
// doesn't fit.
//
// A run of cells that is split on the way makes the walk go on from the offset that the splitter gives, and
// then step off that offset:
//
//   | MULRK, left piece | MULRK, right piece | next | one more ...
//                                            ^ the splitter's offset; it is stepped off, so `next` is never
//                                            handled, on purpose
//
// A splitter that fails gives 0. The walk then goes on from the start of the buffer, stepping off offset 0,
// with its depth as it was: it comes through the globals and the sheets in front, and changes what it meets
// there at depth 1. That takes an exhausted pool, and is so on purpose. It ends, because a run whose pieces
// could not be built has become SLACK. A run that is still there would be met for ever: at that one the walk
// ends, as if its limit had been reached.
#pragma once

#include <cstdint>

#include "edit/formula_adjustment.h"
#include "foundation/memory_pool.h"
#include "query/extent_walk.h"

namespace tolvenar {

struct EditWalk {
  Walk walk;
  uint32_t end = 0;
  int32_t depth = 0;
  uint64_t stepsLeft = 0;  // of all rounds
};

// At failed splits a walk starts anew. All its rounds together make at most so many steps, and so many more for
// each record that the buffer has room for: an edit takes no longer than a constant times the buffer's size.
constexpr uint64_t kSomeSteps = 1000000;
constexpr uint64_t kMaxRounds = 64;

inline EditWalk StartEditWalk(uint32_t buffer, const SheetExtent& extent) {
  const uint64_t records = MEMORYSIZE(buffer) / kHeaderSize;
  return {StartWalk(OpenBlock(buffer), extent.begin), extent.end, 0, kSomeSteps + kMaxRounds * records};
}

// The walker's loop is
//   for (EditWalk edit = StartEditWalk(...); InSheet(edit); NextInSheet(&edit)) {
//     if (!IsSheetRecord(&edit)) continue;
//     ... handle the record at edit.walk.at
//   }
inline bool InSheet(const EditWalk& edit) {
  return InExtent(edit.walk, edit.end);
}

// Counts the depth, once for each record met. True when the record is to be handled.
bool IsSheetRecord(EditWalk* edit);

inline void NextInSheet(EditWalk* edit) {
  if (!InSheet(*edit)) return;
  Step(&edit->walk);
  // The EOF may have gone into a patch area along with a short SLACK in front of it: the way back then leads
  // behind its place, and that is the next sheet.
  if (edit->walk.at == edit->end + kEofSize) edit->walk.ended = true;
}

// Goes on behind a split run: `place` is what the splitter gave. The caller's NextInSheet then steps off it.
void GoOnBehindSplit(EditWalk* edit, uint32_t buffer, int32_t place);

// A caller's row or column as records hold it, in 16 bits.
inline int16_t ZeroBased(int16_t position) {
  return static_cast<int16_t>(position - 1);
}

// Adds `step` to the u16 at `at`, in 16 bits.
void AddToU16(const Block& block, uint32_t at, int16_t step);

// Adds `step` to the word at `at` when it is at least `from`.
void MoveFrom(const Block& block, uint32_t at, int16_t from, int16_t step);

// Adjusts the formula of an ARRAY, FORMULA or SHRFMLA record; any other record is left. The formula is confined
// to its record's payload: read by BIFF5's layout, the fields of a BIFF8 formula can lie behind it, and there they
// read as zero and are not written. The records around it stay whole.
void AdjustFormulaOfRecord(const Block& block, uint32_t at, int16_t position, AdjustMode mode);

}  // namespace tolvenar
