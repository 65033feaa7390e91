// The ten kinds of record that are cells to the cell editors, by the low byte of their type.
#pragma once

#include <array>
#include <cstdint>

#include "foundation/biff_records.h"

namespace tolvenar {

// What a record is to the cell editors.
enum class CellShape : uint8_t { kNoCell, kSingle, kMulRk, kMulBlank };

// LABELSST is not among them, and STRING is, both on purpose: find_cell.h says what follows from that.
constexpr struct {
  uint8_t low;
  CellShape shape;
} kCellKinds[] = {
    {kLowBoolErr, CellShape::kSingle},    {kLowFormula, CellShape::kSingle},
    {kLowBlank, CellShape::kSingle},      {kLowRk, CellShape::kSingle},
    {kLowLabel, CellShape::kSingle},      {kLowMulRk, CellShape::kMulRk},
    {kLowMulBlank, CellShape::kMulBlank}, {kLowString, CellShape::kSingle},
    {kLowRString, CellShape::kSingle},    {kLowNumber, CellShape::kSingle},
};
static_assert(std::size(kCellKinds) == 10);

constexpr std::array<CellShape, 256> ShapesByLowByte() {
  std::array<CellShape, 256> shapes{};
  for (const auto& kind : kCellKinds) shapes[kind.low] = kind.shape;
  return shapes;
}
constexpr std::array<CellShape, 256> kCellShapes = ShapesByLowByte();

}  // namespace tolvenar
