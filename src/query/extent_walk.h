// Extent walk: how a query goes over the globals or over one sheet, from a known offset to exactly
// another.
//
//   EXTENT     BEGINS AT                  ENDS AT (that record is not visited)
//   globals    0, entry 1 of the table    entry 2 less 4: the globals EOF
//   a sheet    its BOF                    its EOF
//
// The walk ends when it comes to exactly that offset and looks at nothing else of the order of offsets,
// since a patch area lies behind every offset of the main stream. A table that doesn't fit its buffer
// makes the walk miss its end: then the BUFEND ends it, so that it never goes on into what an earlier
// tenant left in the slot; and where there is none, the walk's own budget does.
#pragma once

#include "workbook/sheet_table.h"

namespace tolvenar {

// True while the walk is in the extent that ends at `end`.
inline bool InExtent(const Walk& walk, uint32_t end) {
  return walk.at != end && !walk.ended && !IsPrivate(walk.block, walk.at, kLowBufEnd);
}

// Calls `visit` with the offset of each record from `begin` up to, not including, `end`; private records
// are visited as well.
template <typename Visit>
void ForEachRecord(const Block& block, uint32_t begin, uint32_t end, Visit visit) {
  for (Walk walk = StartWalk(block, begin); InExtent(walk, end); Step(&walk)) visit(walk.at);
}

// The same for the records of the sheet itself: those of substreams embedded in it (charts), and its BOFs
// and EOFs, are passed over.
template <typename Visit>
void ForEachSheetRecord(const Block& block, SheetExtent extent, Visit visit) {
  int32_t depth = 0;
  ForEachRecord(block, extent.begin, extent.end, [&](uint32_t at) {
    if (IsPlain(block, at, kLowBof)) {
      ++depth;
    } else if (IsPlain(block, at, kLowEof)) {
      --depth;
    } else if (depth == 1) {
      visit(at);
    }
  });
}

}  // namespace tolvenar
