// Chart context: which blocks are open around a record of a chart. This is the walk that the readers of a chart
// share.
//
//   A context stack: a pool block of 60 u16 cells
//   CELL      CONTENT
//   0         the depth: how many BEGINs are open
//   1 .. 57   the context of each open BEGIN
//   58, 59    two counters of a reader; and contexts too, once the stack is that deep
//
// Context 0xFFFF is that of a BEGIN that no interesting record has opened. The cell of a BEGIN is opened one
// record early, while the record that owns the BEGIN is handled, so that this record can put its own context in.
//
// Invariants: (1) The depth is not bounded, on purpose: a stack deeper than its 60 cells counts on, cells that
// it has not are not written and read as 0. (2) With nothing open the current cell is cell 0, the depth itself,
// on purpose.
#pragma once

#include <cstdint>

#include "foundation/memory_pool.h"
#include "query/extent_walk.h"

namespace tolvenar {

constexpr uint32_t kContextCells = 60;
constexpr uint32_t kContextCellSize = 2;
constexpr uint32_t kContextBytes = kContextCells * kContextCellSize;
constexpr uint32_t kContextDepth = 0;
constexpr uint32_t kContextSeriesCount = 58;
constexpr uint32_t kContextCategories = 59;

// Contexts: the record that owns an open BEGIN.
constexpr uint16_t kContext3d = 3;
constexpr uint16_t kContextArea = 4;
constexpr uint16_t kContextChart = 5;
constexpr uint16_t kContextAxis = 6;
constexpr uint16_t kContextLegend = 7;
constexpr uint16_t kContextLine = 8;  // LINE and SCATTER
constexpr uint16_t kContextBar = 9;
constexpr uint16_t kContextPie = 10;
constexpr uint16_t kContextRadar = 11;  // RADAR and RADARAREA
constexpr uint16_t kContextSurface = 12;
constexpr uint16_t kContextSeries = 13;
constexpr uint16_t kContextOther = 0xFFFF;

// Takes a stack with nothing open from the pool, the caller's to release; 0 when there is no block.
inline uint32_t NewContextStack() {
  return MEMORYALLOC(static_cast<int32_t>(kContextBytes));
}

// Its cells: what the block's slot has beside them is not part of the stack.
inline Block ContextCells(uint32_t stack) {
  return {BlockBytes(stack), kContextBytes};
}

inline uint16_t ContextCell(const Block& cells, uint32_t cell) {
  return U16At(cells, cell * kContextCellSize);
}

inline void PutContextCell(const Block& cells, uint32_t cell, uint16_t value) {
  PutU16(cells, cell * kContextCellSize, value);
}

inline uint32_t Depth(const Block& cells) {
  return ContextCell(cells, kContextDepth);
}

inline uint16_t CurrentContext(const Block& cells) {
  return ContextCell(cells, Depth(cells));
}

// That of the block around the current one. With nothing open there is none: 0.
inline uint16_t OuterContext(const Block& cells) {
  return ContextCell(cells, Depth(cells) - 1);
}

inline void SetContext(const Block& cells, uint16_t context) {
  PutContextCell(cells, Depth(cells), context);
}

// Opens a cell.
inline void PushContext(const Block& cells) {
  const uint32_t depth = Depth(cells) + 1;
  PutContextCell(cells, kContextDepth, static_cast<uint16_t>(depth));
  PutContextCell(cells, depth, kContextOther);
}

// Clears the current cell and closes it. False when none is open.
inline bool PopContext(const Block& cells) {
  const uint32_t depth = Depth(cells);
  if (depth < 1) return false;
  PutContextCell(cells, depth, 0);
  PutContextCell(cells, kContextDepth, static_cast<uint16_t>(depth - 1));
  return true;
}

// Whether the record at `at` opens a cell: the high byte of a BEGIN is compared as a whole here.
inline bool OpensContext(const Block& block, uint32_t at) {
  return U8At(block, at) == kLowBegin && U8At(block, at + kRecordTypeHigh) == kChartHigh;
}

// Walks over a chart and calls `handle` with the offset of each record that is no END, the private ones too.
// In front of each record, ENDs too, the one behind it is looked at; a BEGIN there opens a cell. One that is
// behind a jump opens it at the jump, and its owner comes too early for it.
// Returns false at an END with nothing open.
template <typename Handle>
bool WalkContexts(const Block& block, SheetExtent chart, const Block& cells, Handle handle) {
  for (Walk walk = StartWalk(block, chart.begin); InExtent(walk, chart.end); Step(&walk)) {
    if (OpensContext(block, NextRecord(block, walk.at))) PushContext(cells);
    if (!IsChart(block, walk.at, kLowEnd)) {
      handle(walk.at);
    } else if (!PopContext(cells)) {
      return false;
    }
  }
  return true;
}

}  // namespace tolvenar
