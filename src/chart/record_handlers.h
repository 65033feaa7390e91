// Record handlers: what each record of a chart says about the chart's properties.
#pragma once

#include <cstdint>

#include "chart/chart_context.h"
#include "chart/chart_effort.h"
#include "tolvenar/automation.h"

namespace tolvenar {

// Indices of the property array; chart_properties.h tells what stands there.
constexpr LONG kPropertyCategories = 1;
constexpr LONG kPropertySeriesCount = 2;
constexpr LONG kPropertyCircular = 3;
constexpr LONG kPropertyVariant = 4;
constexpr LONG kPropertyFamily = 5;
constexpr LONG kPropertyStacked = 6;
constexpr LONG kPropertyStacking = 7;
constexpr LONG kPropertyBackground = 8;
constexpr LONG kPropertyLabels = 9;
constexpr LONG kPropertyBars = 10;
constexpr LONG kPropertyLeft = 11;
constexpr LONG kPropertyTop = 12;
constexpr LONG kPropertyWidth = 13;
constexpr LONG kPropertyHeight = 14;
constexpr LONG kPropertyChartFont = 15;
constexpr LONG kPropertyLegendFont = 16;
constexpr LONG kPropertyOtherFont = 17;
constexpr LONG kPropertyLegendPlace = 18;
constexpr LONG kPropertyLegend = 19;
constexpr LONG kPropertyLine = 20;
constexpr LONG kPropertyObject = 21;

// A chart while it is read: its stream, the contexts around the record at work, the caller's array.
struct ChartReading {
  Block block;
  Block cells;
  SAFEARRAY* properties;
  Effort effort;
};

// A property: 0 where the array has none. Puts that fail are passed over.
int32_t Property(const ChartReading& reading, LONG index);
void PutProperty(const ChartReading& reading, LONG index, int32_t value);

// Gives the record at `at` to the handler of its low byte, if it has the chart bit and a handler.
void HandleChartRecord(ChartReading* reading, uint32_t at);

// The OBJ at `at`, which stands in the sheet and not in the chart: place and id, when it is the object of a chart.
void HandleObject(const ChartReading& reading, uint32_t at);

}  // namespace tolvenar
