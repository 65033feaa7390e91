// Exports of the chart queries: forwards, and nothing but forwards.
#include "chart/chart_properties.h"
#include "chart/chart_search.h"
#include "chart/chart_titles.h"
#include "chart/series_cells.h"
#include "chart/series_details.h"
#include "tolvenar/tolvenar.h"

extern "C" {

int32_t TOLVENAR_CALL XLGetNumCharts(uint32_t buffer, uint32_t table, int16_t sheet) {
  return tolvenar::XLGetNumCharts(buffer, table, sheet);
}

int16_t TOLVENAR_CALL XLGetGraphData(SAFEARRAY** cells, uint32_t buffer, uint32_t table, int16_t sheet,
                                     int16_t chart) {
  return tolvenar::XLGetGraphData(cells, buffer, table, sheet, chart);
}

int16_t TOLVENAR_CALL XLGetSetData(uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart,
                                   SAFEARRAY** names, SAFEARRAY** references, SAFEARRAY** spare,
                                   SAFEARRAY** groups, SAFEARRAY** colours, int16_t seriesCount,
                                   int16_t spareCount) {
  return tolvenar::XLGetSetData(buffer, table, sheet, chart,
                                {names, references, spare, groups, colours, seriesCount, spareCount});
}

int16_t TOLVENAR_CALL XLGetTitleData(uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart,
                                     BSTR* title, BSTR* axisOne, BSTR* axisTwo, uint16_t* titleFont,
                                     uint16_t* axisFont, uint32_t* colour) {
  return tolvenar::XLGetTitleData(buffer, table, sheet, chart,
                                  {title, axisOne, axisTwo, titleFont, axisFont, colour});
}

int16_t TOLVENAR_CALL XLGetChartData(SAFEARRAY** properties, uint32_t buffer, uint32_t table, int16_t sheet,
                                     int16_t chart) {
  return tolvenar::XLGetChartData(properties, buffer, table, sheet, chart);
}

}  // extern "C"
