// Rows and columns: the checks that all six operations open with.
//
//   ORDER  CHECK                                          RESULT
//   1      XLGetNumSheets gives 0                         1
//   2      sheet above the count and below 1 at once      2
//   3      XLGetSheetSize does not give 0                 3
//   4      the operation's own position check             4
//   5      the table is null                              7, can't be reached
//   6      *buffer is 0                                   8, can't be reached
//
// Invariant: nothing is changed here.
#pragma once

#include <cstdint>

#include "workbook/sheet_table.h"

namespace tolvenar {

// The used range, 1-based and inclusive.
struct SheetBounds {
  int16_t firstRow;
  int16_t lastRow;
  int16_t firstColumn;
  int16_t lastColumn;
};

// What an operation works on.
struct SheetScope {
  SheetBounds bounds;
  SheetExtent extent;
};

// A position check: true when the operation refuses `position`.
using PositionCheck = bool (*)(const SheetBounds& bounds, int16_t position);

bool IsInsideRows(const SheetBounds& bounds, int16_t position);
bool IsInsideColumns(const SheetBounds& bounds, int16_t position);
// True for an inverted range only, on purpose: any position passes on a normal sheet.
bool IsOutsideInvertedRows(const SheetBounds& bounds, int16_t position);
bool IsOutsideInvertedColumns(const SheetBounds& bounds, int16_t position);

// Runs the ladder. RESULT 0: *scope is filled in. Else one of the codes above. A null `buffer` counts as a
// variable holding 0. A sheet without DIMENSIONS has the bounds of an empty range, rows and columns 1 to 0.
int16_t CheckSheetEdit(const uint32_t* buffer, uint32_t table, int16_t sheet, int16_t position,
                       PositionCheck refuses, SheetScope* scope);

}  // namespace tolvenar
