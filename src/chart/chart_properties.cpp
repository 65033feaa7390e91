// Chart properties: the search, which picks up the chart's object on the way, and the walk over the chart.
#include "chart/chart_properties.h"

#include "chart/chart_search.h"
#include "chart/record_handlers.h"
#include "query/array_element.h"

namespace tolvenar {

int16_t XLGetChartData(SAFEARRAY** properties, uint32_t buffer, uint32_t table, int16_t sheet,
                       int16_t chart) {
  const ChartQuery query = {buffer, table, sheet, chart};
  int16_t count = 0;
  int16_t check = CheckChartSheet(query, &count);
  if (check == kChartRead) check = CheckChartNumber(query, count);
  if (check != kChartRead) return check;
  uint32_t stack = NewContextStack();
  if (stack == 0) return kChartNoMemory;
  const Block block = OpenBlock(buffer);
  ChartReading reading = {block, ContextCells(stack), ArrayAt(properties, 1), EffortFor(block)};

  SheetExtent found = {};
  // The last such object in front of the chart's CHART decides.
  const auto take_object = [&](uint32_t at, int32_t charts) {
    if (charts == chart - 1 && IsPlain(block, at, kLowObj)) HandleObject(reading, at);
  };
  if (!FindChart(block, ChartSearchExtent(query, count), chart, &found, take_object)) {
    MEMORYFREE(&stack);
    return kChartNotFound;
  }
  const auto handle = [&](uint32_t at) { HandleChartRecord(&reading, at); };
  if (!WalkContexts(block, found, reading.cells, handle)) return kChartUnbalanced;
  PutProperty(reading, kPropertySeriesCount, ContextCell(reading.cells, kContextSeriesCount));
  PutProperty(reading, kPropertyCategories, ContextCell(reading.cells, kContextCategories));
  MEMORYFREE(&stack);
  return kChartRead;
}

}  // namespace tolvenar
