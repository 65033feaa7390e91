// Chart search: the checks that all readers of a chart begin with, how far they look, and where the chart is.
//
// A chart is no object here: it is a run of records in a sheet, from a CHART up to the EOF of its substream.
//
//   RECORD       TEST          MEANING
//   CHART        chart, 0x02   counted; the n-th is where chart n begins
//   EOF          plain, 0x0A   the first behind that CHART is where the chart ends, and isn't visited
//
// Nothing is noted between calls: every call searches from the sheet's BOF.
#pragma once

#include <cstdint>

#include "query/extent_walk.h"

namespace tolvenar {

// Results of the readers of a chart, in the order of the checks.
constexpr int16_t kChartRead = 0;
constexpr int16_t kChartNoSheets = 1;
constexpr int16_t kChartBadSheet = 2;
constexpr int16_t kChartNoCharts = 3;
constexpr int16_t kChartNotOneDimension = 4;
constexpr int16_t kChartArrayDoesNotFit = 5;
constexpr int16_t kChartBadNumber = 6;
constexpr int16_t kChartNoTable = 7;
constexpr int16_t kChartNoBuffer = 8;
constexpr int16_t kChartNotFound = 9;
constexpr int16_t kChartNoMemory = 10;
constexpr int16_t kChartUnbalanced = 100;

// What a reader is asked for. Sheet and chart are 1-based.
struct ChartQuery {
  uint32_t buffer;
  uint32_t table;
  int16_t sheet;
  int16_t chart;
};

// Number of charts of a sheet: of the CHART records from its BOF up to its EOF, nested or not. A chart sheet
// (BOF type 0x20) gives 1 at once, whatever it holds. A sheet that begins where the next one does has none.
// RESULT: the count; below 0, in the order of the checks: -1 null table (or one that is no live block), -2
// sheet below 1 or above the count, -3 null buffer, -4 the BOF is of workbook globals, -5 of a Visual Basic
// module, -6 of a macro sheet, -7 of a workspace. The low 16 bits are the answer; the rest repeats their sign.
int32_t XLGetNumCharts(uint32_t buffer, uint32_t table, int16_t sheet);

// The first checks of a reader. RESULT: 0, and *count is the number of charts of the sheet; 1 the table is null
// or has no sheets; 2 sheet above the count and below 1 at once, which takes a negative count; 3
// XLGetNumCharts gave a negative number.
int16_t CheckChartSheet(const ChartQuery& query, int16_t* count);

// The checks behind those of a reader's arrays. RESULT: 0. 6, 7 and 8 (chart above the count and below 1 at
// once; null table; null buffer) stay in the ladder and can't be reached: codes 1 and 3 come first.
int16_t CheckChartNumber(const ChartQuery& query, int16_t count);

// Where a reader looks in a sheet that passed the checks, `count` being its number of charts. The end is the
// next sheet's BOF less 4, or, where the number of the sheet equals the number of its charts, that BOF itself
// (of the last sheet: its EOF). The comparison is with the number of charts and not of sheets, on purpose. So
// the last sheet mostly ends 4 bytes in front of its EOF, where no record begins: its walk ends at the BUFEND.
SheetExtent ChartSearchExtent(const ChartQuery& query, int16_t count);

// Finds chart `chart` in `sheet`. `visit` is called with the offset of every record up to the chart's end, and
// with the number of CHART records in front of it. Returns false, with *found spoilt, when there is no such
// chart or it has no EOF in front of the sheet's end.
template <typename Visit>
bool FindChart(const Block& block, SheetExtent sheet, int16_t chart, SheetExtent* found, Visit visit) {
  int32_t charts = 0;
  bool begun = false;
  for (Walk walk = StartWalk(block, sheet.begin); InExtent(walk, sheet.end); Step(&walk)) {
    if (begun && IsPlain(block, walk.at, kLowEof)) {
      found->end = walk.at;
      return true;
    }
    visit(walk.at, charts);
    if (begun || !IsChart(block, walk.at, kLowChart)) continue;
    begun = ++charts == chart;
    found->begin = walk.at;
  }
  return false;
}

inline bool FindChart(const Block& block, SheetExtent sheet, int16_t chart, SheetExtent* found) {
  return FindChart(block, sheet, chart, found, [](uint32_t, int32_t) {});
}

}  // namespace tolvenar
