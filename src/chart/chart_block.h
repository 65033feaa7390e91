// Chart block: the records between the BEGIN and the END that a record owns. The readers that want a SERIES or a TEXT
// whole walk over its block, inside their walk over the chart.
#pragma once

#include <cstdint>

#include "chart/chart_effort.h"
#include "foundation/biff_records.h"

namespace tolvenar {

// The offset of a record that a block does not have.
constexpr uint32_t kNoRecord = 0xFFFFFFFF;

// Notes the record at `at`, unless one has been noted before.
inline void NoteFirst(uint32_t* noted, uint32_t at) {
  if (*noted == kNoRecord) *noted = at;
}

// Calls `visit` with the offset of each record in the block that `owner` owns, and with its depth there: 1, and 1
// more in each block inside. The record behind the owner is taken for the block's BEGIN unseen, on purpose. The
// walk ends where the block is closed, wherever the chart ends; a block that is never closed ends at the BUFEND.
template <typename Visit>
void ForEachInBlockOf(const Block& block, uint32_t owner, Effort* effort, Visit visit) {
  Walk walk = StartWalk(block, owner);
  Step(&walk);
  Step(&walk);
  int32_t depth = 1;
  while (!walk.ended && !IsPrivate(block, walk.at, kLowBufEnd) && Spend(effort)) {
    visit(walk.at, depth);
    if (IsChart(block, walk.at, kLowBegin)) ++depth;
    if (IsChart(block, walk.at, kLowEnd) && --depth == 0) return;
    Step(&walk);
  }
}

}  // namespace tolvenar
