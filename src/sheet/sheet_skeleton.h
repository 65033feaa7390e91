// The records of a new worksheet, without its cells.
//
//   BOF, INDEX (BIFF8), CALCMODE, CALCCOUNT, REFMODE, ITERATION, DELTA, SAVERECALC, PRINTHEADERS,
//   PRINTGRIDLINES, GRIDSET, GUTS, DEFAULTROWHEIGHT 255, [COUNTRY,] WSBOOL, HEADER, FOOTER, HCENTER, VCENTER,
//   SETUP, DEFCOLWIDTH 8                                                      AppendSheetHead
//   DIMENSIONS, a ROW of height 255 for each row                              AppendSheetRange
//   the cells
//   WINDOW2 with variant 6, SELECTION, EOF                                    AppendSheetTail
//
// DIMENSIONS and ROW state the used range one larger in each direction than what is asked for, on purpose:
// rows and columns go to their builders as the last ones, which these store plus one. Every function gives
// false when an append failed; the buffer is then released.
#pragma once

#include <cstdint>

#include "sheet/sheet_stream.h"

namespace tolvenar {

constexpr uint16_t kNewRowHeight = 255;

// Variant sheets have a COUNTRY record, others not.
enum class Country { kWithout, kWith };

bool AppendSheetHead(SheetStream* stream, Country country);

// Neither a ROW nor a column is made for a count of 0 or below.
bool AppendSheetRange(SheetStream* stream, int16_t columns, int16_t rows);

bool AppendSheetTail(SheetStream* stream);

}  // namespace tolvenar
