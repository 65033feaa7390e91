// Series details: names, name cells, groups and colours of a chart's series.
//
//   RECORD, in a series' block   WHERE          GIVES
//   SERIESTEXT, chart 0x0D       directly in    the name: n bytes at 7, n the byte at 6
//   AI, chart 0x51               directly in    the cell of the name, where there is no SERIESTEXT
//   SERTOCRT, chart 0x45         directly in    the number of the group, from 0, at 4
//   AREAFORMAT, chart 0x0A       at any depth   the colour: at 4 for a solid pattern, else at 8
//
// The first of each counts. An AI is taken for that of the name by the byte at 2, the low byte of its length, being
// 0, and not by its kind at 4, on purpose: only an AI of 0, 256, 512 ... bytes is.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// The caller's arrays of one dimension, from 1 to the number of series (`spare`: to its own count).
struct SeriesArrays {
  SAFEARRAY** names;       // BSTR
  SAFEARRAY** references;  // 32-bit: packed cell of the name
  SAFEARRAY** spare;       // any: checked for its shape, never written
  SAFEARRAY** groups;      // 32-bit: in the end the kind of the series' chart group
  SAFEARRAY** colours;     // 32-bit
  int16_t seriesCount;
  int16_t spareCount;
};

// Puts what the chart tells of series i into element i of the arrays; what it doesn't tell stays as it is. In the
// end every element of `groups` is taken for a group's number and replaced by the group's kind: 0 area, bar, pie,
// surface; 1 line, scatter, radar, filled radar; 0xFFFF a group without a chart type; 0 for a number that is no
// group of the chart. So an element of a series without SERTOCRT has to be set by the caller. A name that is
// "#REF!" counts as none.
// RESULT, in the order of the checks: 1, 2, 3 as in chart_search.h; for names, references, groups, colours, spare:
// 4 it has not one dimension, 5 it does not reach from 1 to the count; 6, 7, 8; 9 no such chart, or it is not
// closed; 10 no pool block; 0 done. Arrays are written with 0 only. A series whose name finds no pool block or
// no memory is left at that.
int16_t XLGetSetData(uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart,
                     const SeriesArrays& arrays);

}  // namespace tolvenar
