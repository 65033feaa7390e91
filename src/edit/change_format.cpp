// ChangeFormat: one walk over a sheet, one u16 a cell.
#include "edit/change_format.h"

#include <cstddef>

#include "edit/find_cell.h"
#include "query/extent_walk.h"

namespace tolvenar {

namespace {

struct Matrix {
  const int16_t* entries;
  int32_t stride;
};

// The matrix entry of the cell at `at`; negative when it would stand in front of the matrix. Row and column are
// signed: column -1 of row 1 is the last entry of row 0, on purpose.
int16_t EntryOfCell(const Matrix& matrix, const Block& block, uint32_t at) {
  constexpr int16_t kKeep = -1;
  const int16_t row = I16At(block, at + kCellRow);
  const int16_t column = I16At(block, at + kCellColumn);
  const int64_t entry = int64_t{row} * matrix.stride + column;
  if (matrix.entries == nullptr || entry < 0) return kKeep;
  return matrix.entries[static_cast<ptrdiff_t>(entry)];
}

void StampCell(const Matrix& matrix, const Block& block, uint32_t at) {
  const int16_t xf = EntryOfCell(matrix, block, at);
  if (xf >= 0) PutU16(block, at + kCellXf, static_cast<uint16_t>(xf));
}

}  // namespace

uint32_t ChangeFormat(uint32_t buffer, uint32_t table, int16_t sheet, const int16_t* matrix, int32_t stride) {
  SheetExtent extent;
  if (!SheetForEdit(buffer, table, sheet, &extent)) return 0;
  const Matrix formats = {matrix, stride};
  Walk walk = StartWalk(OpenBlock(buffer), extent.begin);
  int32_t depth = 1;
  for (Step(&walk); depth >= 1 && InExtent(walk, extent.end); Step(&walk)) {
    if (IsPlain(walk.block, walk.at, kLowBof)) ++depth;
    if (IsPlain(walk.block, walk.at, kLowEof)) --depth;
    if (depth == 1 && ShapeOfCell(walk.block, walk.at) != CellShape::kNoCell)
      StampCell(formats, walk.block, walk.at);
  }
  return 1;
}

}  // namespace tolvenar
