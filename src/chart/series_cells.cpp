// Series cells: a walk with contexts that takes the AI records of the series apart.
#include "chart/series_cells.h"

#include "chart/chart_context.h"
#include "chart/chart_search.h"
#include "chart/series_tokens.h"
#include "platform/array_put.h"
#include "query/array_element.h"

namespace tolvenar {

namespace {

constexpr UINT kSeriesDimension = 1;
constexpr UINT kItemDimension = 2;

// The caller's array, and the last item that it has room for: the areas of a damaged chart hold more cells than
// can be counted through, and what lies behind that item would be refused one by one. A damaged series also tells
// its values again and again: the puts of a call share a budget, of twice what a chart can use whose series tell
// theirs once, and what a small array needs for many.
struct CellArray {
  SAFEARRAY* array;
  LONG last;
  Effort puts;
};

constexpr uint64_t kPutsAnElement = 2;

CellArray CellArrayOf(SAFEARRAY** cells) {
  CellArray out = {ArrayAt(cells, kItemDimension), 0, {}};
  LONG series = 0;
  if (FAILED(SafeArrayGetUBound(out.array, kSeriesDimension, &series)) || series < 1) return out;
  if (FAILED(SafeArrayGetUBound(out.array, kItemDimension, &out.last)) || out.last < 1) return out;
  out.puts.left =
      kPutsAnElement * static_cast<uint64_t>(series) * static_cast<uint64_t>(out.last) + kLeastEffort;
  return out;
}

void PutCellArea(CellArray* out, const CellArea& area, LONG series, LONG* item) {
  // Not left to the loops: there would be turns of the outer ones, up to a thousand million, without a cell.
  if (area.firstRow > area.lastRow || area.firstColumn > area.lastColumn) return;
  for (uint32_t sheet = area.firstSheet; sheet <= area.lastSheet; ++sheet) {
    for (uint32_t row = area.firstRow; row <= area.lastRow; ++row) {
      for (uint32_t column = area.firstColumn; column <= area.lastColumn; ++column) {
        if (*item >= out->last || !Spend(&out->puts)) return;
        LONG index[kItemDimension] = {series, ++*item};
        const uint32_t cell = PackedCell(sheet, row, column);
        platform::PutBytes(out->array, index, &cell, sizeof cell);
      }
    }
  }
}

bool ReadSeriesCells(CellArray out, const Block& block, SheetExtent chart, const Block& cells) {
  Effort effort = EffortFor(block);
  LONG series = 0;
  return WalkContexts(block, chart, cells, [&](uint32_t at) {
    if (IsChart(block, at, kLowSeries)) {
      // Also where no BEGIN follows: then it is the block around the series that becomes one, on purpose.
      SetContext(cells, kContextSeries);
      ++series;
    } else if (IsChart(block, at, kLowAi) && U8At(block, at + kAiKind) == kAiKindValues &&
               CurrentContext(cells) == kContextSeries) {
      LONG item = 0;
      ForEachCellArea(block, at, &effort,
                      [&](const CellArea& area) { PutCellArea(&out, area, series, &item); });
    }
  });
}

}  // namespace

int16_t XLGetGraphData(SAFEARRAY** cells, uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart) {
  const ChartQuery query = {buffer, table, sheet, chart};
  int16_t count = 0;
  int16_t check = CheckChartSheet(query, &count);
  if (check == kChartRead) check = CheckChartNumber(query, count);
  if (check != kChartRead) return check;
  uint32_t stack = NewContextStack();
  if (stack == 0) return kChartNoMemory;
  const Block block = OpenBlock(buffer);
  SheetExtent found = {};
  if (!FindChart(block, ChartSearchExtent(query, count), chart, &found)) {
    MEMORYFREE(&stack);
    return kChartNotFound;
  }
  if (!ReadSeriesCells(CellArrayOf(cells), block, found, ContextCells(stack))) return kChartUnbalanced;
  MEMORYFREE(&stack);
  return kChartRead;
}

}  // namespace tolvenar
