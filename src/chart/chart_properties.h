// Chart properties: what a chart is like, as a list of numbers in the caller's array.
//
//   INDEX   FROM                                              VALUE
//   1       SERIES, AI                                        the largest number of categories of a series
//   2       SERIES                                            the number of series
//   3       PIE, RADAR, RADARAREA                             1
//   4       PIE, RADAR, RADARAREA, SURFACE, SCATTER           raised or lowered by 2
//   5       3D, BAR, LINE, PIE, RADAR, RADARAREA, SCATTER     the family of the chart
//   6       AREA, BAR, LINE, SURFACE, SCATTER                 1 or 0: a flag of the type (stacked)
//   7       the same, only when property 6 becomes 1          2
//   8       AREAFORMAT directly in the chart's block          u32 at 8: the background colour
//   9       ATTACHEDLABEL, RADAR, RADARAREA                   a code that is moved by rules
//   10      BAR                                               4 or 1
//   11, 12  OBJ in front of the chart                         left column and top row, from 1
//   13, 14  CHART                                             width and height, 20 to a point
//   15, 16  FONTX in a text of the chart, of the legend       index of the font
//   17      FONTX elsewhere                                   the same
//   18      LEGEND                                            1 when its place is 2
//   19      LEGEND                                            1
//   20      LINE                                              1
//   21      OBJ in front of the chart                         id of the object, from 1
//
// Invariants: (1) A property that no record speaks of stays as the caller set it: nothing is cleared. (2) Handlers
// read what earlier ones left in the array, or the caller, and change it: the order of the records shapes the
// result, and a second call on the same array can move properties 4 and 9 further. All on purpose.
// What the codes in 4, 5 and 9 mean is the host's to know; the library only moves them.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Puts the properties of chart `chart` of sheet `sheet` (1-based) into `properties`, an array of one dimension and
// of 32-bit integers from 1 to 21 at least. An element that the array does not have is lost, and reads as 0.
// RESULT: 1, 2, 3, 6, 7, 8 as the checks of chart_search.h; 10 no pool block; 9 no such chart, or it is not closed:
// then properties 11, 12 and 21 may be written; 100 an END came with nothing open: what the records in front of it
// say is written, not properties 1 and 2, and the work block of 120 bytes stays live, on purpose; 0 done.
int16_t XLGetChartData(SAFEARRAY** properties, uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart);

}  // namespace tolvenar
