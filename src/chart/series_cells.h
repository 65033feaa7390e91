// Series cells: which cells of the workbook the values of a chart's series are.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Puts each cell that the values of a series refer to into element (series, item) of `cells`, a two-dimensional
// array of 32-bit integers, as a packed cell (series_tokens.h). Series count from 1 in the order of the chart's
// SERIES records, items from 1 for each AI of values (kind 1) directly in a series' block: sheets outermost, then
// rows, then columns.
//   sheet, chart  1-based
// RESULT: 1, 2, 3, 6, 7, 8 as the checks of chart_search.h; 10 no pool block; 9 no such chart, or it is not closed;
// 100 an END came with nothing open, and then the work block of 120 bytes stays live, on purpose; 0 done. An element
// that the array refuses is passed over; one that nothing is put into, and all of them at 9 and below, stay. Values that
// a damaged series tells again overwrite those before them, up to a million puts and twice the array's elements.
int16_t XLGetGraphData(SAFEARRAY** cells, uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart);

}  // namespace tolvenar
