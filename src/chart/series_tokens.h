// Series tokens: the cells that the formula of an AI refers to.
//
//   A token, always in BIFF5's layout, in BIFF8 too, on purpose
//   ptgRef3d   0x3A, 18 bytes   ptgArea3d  0x3B, 21 bytes
//   OFFSET  SIZE  FIELD         OFFSET  SIZE  FIELD
//       11     2  first sheet       11     2  first sheet
//       13     2  last sheet        13     2  last sheet
//       15     2  row word          15     2  first row word
//       17     1  column            17     2  last row word
//                                   19     1  first column
//                                   20     1  last column
//
// The two upper bits of a row word are flags. Only these two ids count, not their value and array forms. Fields
// are read through the gate and not confined to their record: a token of BIFF8, which is shorter, takes what
// stands behind it.
#pragma once

#include <cstdint>

#include "chart/chart_effort.h"
#include "foundation/biff_records.h"
#include "query/formula_tokens.h"

namespace tolvenar {

constexpr uint32_t kToken3dFirstSheet = 11;
constexpr uint32_t kToken3dLastSheet = 13;
constexpr uint32_t kTokenRef3dRow = 15;
constexpr uint32_t kTokenRef3dColumn = 17;
constexpr uint32_t kTokenArea3dFirstRow = 15;
constexpr uint32_t kTokenArea3dLastRow = 17;
constexpr uint32_t kTokenArea3dFirstColumn = 19;
constexpr uint32_t kTokenArea3dLastColumn = 20;
constexpr uint32_t kTokenRowBits = 0x3FFF;

// Cells of a workbook, 0-based, the ends inclusive.
struct CellArea {
  uint32_t firstSheet;
  uint32_t lastSheet;
  uint32_t firstRow;
  uint32_t lastRow;
  uint32_t firstColumn;
  uint32_t lastColumn;
};

// The cells of the token at `at`. False for a token that is neither of the two.
inline bool ReadCellArea(const Block& block, uint32_t at, CellArea* area) {
  const uint8_t id = U8At(block, at);
  if (id != kPtgRef3d && id != kPtgArea3d) return false;
  const bool one = id == kPtgRef3d;
  const auto row = [&](uint32_t field) { return U16At(block, at + field) & kTokenRowBits; };
  area->firstSheet = U16At(block, at + kToken3dFirstSheet);
  area->lastSheet = U16At(block, at + kToken3dLastSheet);
  area->firstRow = row(one ? kTokenRef3dRow : kTokenArea3dFirstRow);
  area->lastRow = row(one ? kTokenRef3dRow : kTokenArea3dLastRow);
  area->firstColumn = U8At(block, at + (one ? kTokenRef3dColumn : kTokenArea3dFirstColumn));
  area->lastColumn = U8At(block, at + (one ? kTokenRef3dColumn : kTokenArea3dLastColumn));
  return true;
}

// A cell as one number: sheet, row, row's high byte, column, each a byte from the lowest on; plus 1, so that 0
// can stand for none. Of a sheet's number the low byte is kept.
inline uint32_t PackedCell(uint32_t sheet, uint32_t row, uint32_t column) {
  return ((sheet & 0xFF) | (row & kTokenRowBits) << 8 | column << 24) + 1;
}

// Calls `visit` with each CellArea in the formula of the AI at `at`. The walk steps by the absolute value of
// ChartTokenSize, on purpose: a token of variable size counts 1 byte, an unknown one 2.
template <typename Visit>
void ForEachCellArea(const Block& block, uint32_t at, Effort* effort, Visit visit) {
  const uint32_t tokens = at + kAiTokens;
  const uint32_t length = U16At(block, at + kAiLength);
  uint32_t offset = 0;
  while (offset < length && Spend(effort)) {
    CellArea area;
    if (ReadCellArea(block, tokens + offset, &area)) visit(area);
    const int16_t size = ChartTokenSize(U8At(block, tokens + offset));
    offset += static_cast<uint32_t>(size < 0 ? -size : size);
  }
}

}  // namespace tolvenar
