// Chart search: the number of charts, the checks, and the extent of a search.
#include "chart/chart_search.h"

#include "query/sheet_catalogue.h"

namespace tolvenar {

namespace {

constexpr int16_t kCountNoTable = -1;
constexpr int16_t kCountNoSheet = -2;
constexpr int16_t kCountNoBuffer = -3;

// What XLGetNumCharts says at once of a sheet of some kind, whatever it holds.
struct KindAnswer {
  uint8_t substream;
  bool high_byte_counts;  // the type's high byte has to be that of a workspace
  int16_t answer;
};
constexpr KindAnswer kKindAnswers[] = {
    {kSubstreamGlobals, false, -4},  {kSubstreamVisualBasic, false, -5}, {kSubstreamMacroSheet, false, -6},
    {kSubstreamWorkspace, true, -7}, {kSubstreamChart, false, 1},
};

const KindAnswer* AnswerByKind(const Block& block, uint32_t bof) {
  for (const KindAnswer& kind : kKindAnswers) {
    if (U8At(block, bof + kBofSubstream) != kind.substream) continue;
    if (!kind.high_byte_counts || U8At(block, bof + kBofSubstreamHigh) == kSubstreamWorkspaceHigh)
      return &kind;
  }
  return nullptr;
}

// A sheet up to the entry behind its own, less 4 unless its number is `whole`. A sheet without a byte stays
// without one: a walk would miss an end that lies in front of its begin.
SheetExtent ExtentUpTo(const Block& entries, int16_t sheet, int16_t whole) {
  const uint32_t entry = kTableFirstSheet + static_cast<uint32_t>(sheet) - 1;
  const uint32_t begin = TableEntry(entries, entry);
  const uint32_t end = TableEntry(entries, entry + 1);
  return {begin, sheet == whole || end == begin ? end : end - kEofSize};
}

}  // namespace

int32_t XLGetNumCharts(uint32_t buffer, uint32_t table, int16_t sheet) {
  const Block entries = OpenBlock(table);
  if (entries.extent == 0) return kCountNoTable;
  if (sheet > TableCount(entries) || sheet < 1) return kCountNoSheet;
  if (buffer == 0) return kCountNoBuffer;
  const Block block = OpenBlock(buffer);
  const SheetExtent extent = ExtentUpTo(entries, sheet, TableCount(entries));
  if (const KindAnswer* kind = AnswerByKind(block, extent.begin)) return kind->answer;
  uint32_t charts = 0;
  ForEachRecord(block, extent.begin, extent.end,
                [&](uint32_t at) { charts += IsChart(block, at, kLowChart) ? 1 : 0; });
  return static_cast<int16_t>(charts);
}

int16_t CheckChartSheet(const ChartQuery& query, int16_t* count) {
  const int16_t sheets = XLGetNumSheets(query.table);
  if (sheets == 0) return kChartNoSheets;
  // Both at once, on purpose: a sheet that is merely out of range comes out as 3.
  if (query.sheet > sheets && query.sheet < 1) return kChartBadSheet;
  *count = static_cast<int16_t>(XLGetNumCharts(query.buffer, query.table, query.sheet));
  return *count < 0 ? kChartNoCharts : kChartRead;
}

int16_t CheckChartNumber(const ChartQuery& query, int16_t count) {
  // Both at once, on purpose: a chart that is merely out of range comes out as 9.
  if (query.chart > count && query.chart < 1) return kChartBadNumber;
  if (query.table == 0) return kChartNoTable;
  if (query.buffer == 0) return kChartNoBuffer;
  return kChartRead;
}

SheetExtent ChartSearchExtent(const ChartQuery& query, int16_t count) {
  return ExtentUpTo(OpenBlock(query.table), query.sheet, count);
}

}  // namespace tolvenar
