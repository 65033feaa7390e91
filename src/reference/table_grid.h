// The grid of a table's cells, in four dimensions: places and the order in which cells are visited.
//
//   place of cell (a, b, c, d) in sizes (D1, D2, D3, D4)      ((d x D3 + c) x D2 + b) x D1 + a, modulo 2^32
//   order of a visit                                          a outermost, d innermost
//
// So the cells are not visited in the order of their places, on purpose: which boxes a table is encoded in depends on it.
#pragma once

#include <array>
#include <cstdint>

namespace tolvenar {

constexpr uint32_t kGridDimensions = 4;

// Coordinates, 0-based, or sizes; dimension 1 first. What comes from a record or a call has 16 signed bits.
using GridCell = std::array<int32_t, kGridDimensions>;

constexpr GridCell kGridOrigin = {0, 0, 0, 0};

// How far apart, in places, the neighbours along each dimension are.
using GridStrides = std::array<uint32_t, kGridDimensions>;

inline GridStrides StridesOf(const GridCell& sizes) {
  const auto wide = [&](uint32_t k) { return static_cast<uint32_t>(sizes[k]); };
  return {1, wide(0), wide(0) * wide(1), wide(0) * wide(1) * wide(2)};
}

inline uint32_t PlaceOf(const GridStrides& strides, const GridCell& cell) {
  uint32_t place = 0;
  for (uint32_t k = 0; k < kGridDimensions; ++k) place += static_cast<uint32_t>(cell[k]) * strides[k];
  return place;
}

// The number of cells; at most 2^60 for sizes of 16 bits. Negative sizes multiply like any number.
inline int64_t VolumeOf(const GridCell& sizes) {
  return int64_t{sizes[0]} * sizes[1] * sizes[2] * sizes[3];
}

// Calls visit(cell) for all cells with first[k] <= cell[k] < past[k], until it answers false. Answers whether it never did.
template <typename Visit>
bool VisitCells(const GridCell& first, const GridCell& past, Visit visit) {
  GridCell cell;
  for (cell[0] = first[0]; cell[0] < past[0]; ++cell[0]) {
    for (cell[1] = first[1]; cell[1] < past[1]; ++cell[1]) {
      for (cell[2] = first[2]; cell[2] < past[2]; ++cell[2]) {
        for (cell[3] = first[3]; cell[3] < past[3]; ++cell[3]) {
          if (!visit(cell)) return false;
        }
      }
    }
  }
  return true;
}

}  // namespace tolvenar
