// Rows and columns: the walk and the changes to single records. The rules stand in row_column_walk.h.
#include "edit/row_column_walk.h"

#include <algorithm>

#include "edit/find_cell.h"

namespace tolvenar {

namespace {

constexpr struct {
  uint8_t low;
  uint32_t length;
  uint32_t tokens;
} kFormulaKinds[] = {
    {kLowFormula, kFormulaLength, kFormulaTokens},
    {kLowArray, kArrayFormulaLength, kArrayFormulaTokens},
    {kLowShrFmla, kSharedFormulaLength, kSharedFormulaTokens},
};

}  // namespace

bool IsSheetRecord(EditWalk* edit) {
  const Walk& walk = edit->walk;
  if (IsPlain(walk.block, walk.at, kLowBof)) ++edit->depth;
  if (IsPlain(walk.block, walk.at, kLowEof)) --edit->depth;
  return edit->depth == 1;
}

void GoOnBehindSplit(EditWalk* edit, uint32_t buffer, int32_t place) {
  Walk& walk = edit->walk;
  const uint32_t run = walk.at;
  walk.block = OpenBlock(buffer);
  if (place != 0) {
    walk.at = static_cast<uint32_t>(place);
    return;
  }
  const uint64_t steps = walk.block.extent / kHeaderSize - walk.stepsLeft + 1;  // of the round that ends here
  edit->stepsLeft -= std::min(edit->stepsLeft, steps);
  if (ShapeOfCell(walk.block, run) != CellShape::kNoCell || edit->stepsLeft == 0) {
    walk.ended = true;
  } else {
    walk = StartWalk(walk.block, 0);
  }
}

void AddToU16(const Block& block, uint32_t at, int16_t step) {
  PutU16(block, at, static_cast<uint16_t>(U16At(block, at) + step));
}

void MoveFrom(const Block& block, uint32_t at, int16_t from, int16_t step) {
  if (I16At(block, at) >= from) AddToU16(block, at, step);
}

void AdjustFormulaOfRecord(const Block& block, uint32_t at, int16_t position, AdjustMode mode) {
  for (const auto& kind : kFormulaKinds) {
    if (!IsPlain(block, at, kind.low)) continue;
    const Block payload = PayloadOf(block, at);
    AdjustFormulaReferences(payload, kind.tokens - kHeaderSize, I16At(payload, kind.length - kHeaderSize),
                            position, mode);
    return;
  }
}

}  // namespace tolvenar
