// Calls: the charts of a sheet.
#include "faults/calls.h"
#include "foundation/biff_records.h"
#include "support/chart_builder.h"
#include "tolvenar/tolvenar.h"

namespace tolvenar::testing {

namespace {

// A chart of one series with a name, and a title.
ChartBuilder& OneChart(ChartBuilder& chart) {
  return chart.Worksheet()
      .Open()
      .Chart()
      .Begin()
      .Series(2)
      .Begin()
      .Ai(0, Bytes{})
      .SeriesText("name")
      .Ai(1, Ref3d(0, 2, 1))
      .End();
}

ChartBuilder& Title(ChartBuilder& chart) {
  return chart.TextRecord(0x112233).Begin().FontX(1).Ai(0, Bytes{}).SeriesText("title").ObjectLink(1).End();
}

void OpenChart(Ground& g) {
  ChartBuilder chart;
  Title(OneChart(chart)).End().Close().EndSheet();
  OpenStream(g, chart.Stream(), kBiff8);
}

// One END too many.
void OpenUnbalancedChart(Ground& g) {
  ChartBuilder chart;
  OneChart(chart).End().End().End().Close().EndSheet();
  OpenStream(g, chart.Stream(), kBiff8);
}

int32_t Cells(Ground& g) {
  g.array = std::make_unique<TestArray>(VT_I4, 1, 3, 1, 3);
  return ::XLGetGraphData(g.array->Ref(), g.buffer, g.table, 1, 1);
}

int32_t Properties(Ground& g) {
  g.array = std::make_unique<TestArray>(VT_I4, 1, 21);
  return ::XLGetChartData(g.array->Ref(), g.buffer, g.table, 1, 1);
}

int32_t Series(Ground& g) {
  TestArray names(VT_BSTR, 1, 1);
  TestArray references(VT_I4, 1, 1);
  TestArray spare(VT_I4, 1, 1);
  TestArray groups(VT_I4, 1, 1);
  TestArray colours(VT_I4, 1, 1);
  return ::XLGetSetData(g.buffer, g.table, 1, 1, names.Ref(), references.Ref(), spare.Ref(), groups.Ref(),
                        colours.Ref(), 1, 1);
}

int32_t Titles(Ground& g) {
  BSTR texts[3] = {};
  uint16_t fonts[2] = {};
  uint32_t colour = 0;
  const int32_t result =
      ::XLGetTitleData(g.buffer, g.table, 1, 1, texts, texts + 1, texts + 2, fonts, fonts + 1, &colour);
  for (BSTR text : texts) SysFreeString(text);
  return result;
}

using enum Leaves;

}  // namespace

std::vector<Call> ChartCalls() {
  const auto count = [](Ground& g) { return ::XLGetNumCharts(g.buffer, g.table, 1); };
  const std::vector<Failure> failures = {{10, kUnchanged}};
  // clang-format off
  return {
      {"XLGetNumCharts", "", OpenChart, count, {1}, {}},
      {"XLGetGraphData", "", OpenChart, Cells, {0}, failures},
      {"XLGetGraphData", "Unbalanced", OpenUnbalancedChart, Cells, {100}, failures},
      {"XLGetSetData", "", OpenChart, Series, {0}, failures},
      {"XLGetTitleData", "", OpenChart, Titles, {0}, failures},
      {"XLGetChartData", "", OpenChart, Properties, {0}, failures},
      {"XLGetChartData", "Unbalanced", OpenUnbalancedChart, Properties, {100}, failures},
  };
  // clang-format on
}

}  // namespace tolvenar::testing
