// The grid of a table's cells, in four dimensions: their places, and two orders to visit them in. Their position values stand in pool blocks,
// in the order of the places.
//
//   place of cell (a, b, c, d) in sizes (D1, D2, D3, D4)      ((d x D3 + c) x D2 + b) x D1 + a, modulo 2^32
//
// The cells become boxes in another order than that of their places, a outermost and d innermost, on purpose: which boxes a table is encoded
// in depends on it. Where the order plays no part, that of the places is the faster one.
#pragma once

#include <array>
#include <cstdint>

namespace tolvenar {

constexpr uint32_t kGridDimensions = 4;
constexpr uint32_t kPositionSize = 4;  // of a position value, in bytes

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

// Calls visit(cell) for all cells with first[k] <= cell[k] < past[k], dimension order[0] outermost, until it answers false. Answers
// whether it never did.
template <typename Visit>
bool VisitInOrder(const std::array<uint32_t, kGridDimensions>& order, const GridCell& first,
                  const GridCell& past, Visit visit) {
  const auto [o, p, q, r] = order;
  GridCell cell;
  for (cell[o] = first[o]; cell[o] < past[o]; ++cell[o]) {
    for (cell[p] = first[p]; cell[p] < past[p]; ++cell[p]) {
      for (cell[q] = first[q]; cell[q] < past[q]; ++cell[q]) {
        for (cell[r] = first[r]; cell[r] < past[r]; ++cell[r]) {
          if (!visit(cell)) return false;
        }
      }
    }
  }
  return true;
}

// The order in which cells become boxes: dimension 1 outermost.
template <typename Visit>
bool VisitCells(const GridCell& first, const GridCell& past, Visit visit) {
  return VisitInOrder({0, 1, 2, 3}, first, past, visit);
}

// The order of the places, which is that of memory: dimension 1 innermost.
template <typename Visit>
void VisitPlaces(const GridCell& first, const GridCell& past, Visit visit) {
  VisitInOrder({3, 2, 1, 0}, first, past, [&](const GridCell& cell) {
    visit(cell);
    return true;
  });
}

}  // namespace tolvenar
