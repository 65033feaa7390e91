// The quick part of a search for a cell: over the rows above the wanted one.
#pragma once

#include <cstdint>

#include "edit/row_layouts.h"

namespace tolvenar {

// A search that passes rows, and what it knows of them. It lives as long as the search, since records in between do not change how the
// next row is laid out.
struct RowsAbove {
  enum class Place : uint8_t { kElsewhere, kNextRow, kOnTheWay };

  uint32_t end = 0;    // of the sheet
  int16_t wanted = 0;  // row, 0-based and signed
  // Of the passing itself:
  Place place = Place::kElsewhere;  // where it stands, for the choice of the way on
  int32_t row = INT32_MIN;          // that is being passed
  uint32_t misses = 0;              // rows in a row that were not as expected
  uint32_t pause = 0;               // bytes of the last stretch without expectations
  uint32_t pausedUntil = 0;         // where it ends
  RowLayouts layouts;
};

// Goes on over what says nothing about a cell in the wanted row: cells of rows above it, ROWs of other rows, whatever is neither, and all
// with the chart bit. Stands at the first other record, at the sheet's end, or where only a step can tell what is next; it may stop at
// any record, and the walker must look at that one itself. The walk is in the sheet itself, not in a nested substream.
// *last_cell becomes the offset of the cell passed last, if one was.
void PassRowsAbove(Walk* walk, RowsAbove* passing, uint32_t* last_cell);

}  // namespace tolvenar
