// Series details: a walk over the chart, and in it one over the block of each series.
#include "chart/series_details.h"

#include <cstring>
#include <initializer_list>

#include "chart/chart_block.h"
#include "chart/chart_search.h"
#include "chart/series_tokens.h"
#include "foundation/memory_pool.h"
#include "platform/array_get.h"
#include "platform/array_put.h"
#include "query/array_element.h"
#include "query/byte_text.h"

namespace tolvenar {

namespace {

constexpr uint32_t kGroupSize = 2;
constexpr uint16_t kGroupWithoutType = 0xFFFF;
constexpr uint8_t kSolidPattern = 1;
constexpr char kLostName[] = "#REF!";
constexpr uint8_t kLostNameLength = sizeof kLostName - 1;

// What a chart type makes of its group.
struct GroupKind {
  uint8_t low;
  uint16_t kind;
};
constexpr GroupKind kGroupKinds[] = {
    {kLowArea, 0}, {kLowBar, 0},     {kLowPie, 0},   {kLowSurface, 0},
    {kLowLine, 1}, {kLowScatter, 1}, {kLowRadar, 1}, {kLowRadarArea, 1},
};

// The chart groups' kinds: u16 each.
struct GroupTable {
  Block entries;
  uint32_t count;
};

// The first record of each kind in a series' block.
struct SeriesRecords {
  uint32_t ai = kNoRecord;
  uint32_t text = kNoRecord;
  uint32_t group = kNoRecord;
  uint32_t area = kNoRecord;
};

int16_t CheckArray(SAFEARRAY** array, int16_t last) {
  SAFEARRAY* named = ArrayAt(array);
  if (SafeArrayGetDim(named) != 1) return kChartNotOneDimension;
  return platform::HasBounds(named, 1, 1, last) ? kChartRead : kChartArrayDoesNotFit;
}

int16_t CheckArrays(const SeriesArrays& arrays) {
  for (SAFEARRAY** array : {arrays.names, arrays.references, arrays.groups, arrays.colours}) {
    const int16_t check = CheckArray(array, arrays.seriesCount);
    if (check != kChartRead) return check;
  }
  return CheckArray(arrays.spare, arrays.spareCount);
}

void PutNumber(SAFEARRAY** array, LONG index, uint32_t number) {
  platform::PutBytes(ArrayAt(array), &index, &number, sizeof number);
}

SeriesRecords RecordsOfSeries(const Block& block, uint32_t series, Effort* effort) {
  SeriesRecords found;
  ForEachInBlockOf(block, series, effort, [&](uint32_t at, int32_t depth) {
    if (IsChart(block, at, kLowAreaFormat)) NoteFirst(&found.area, at);
    if (depth != 1) return;
    // The low byte of the length stands for the kind, on purpose.
    if (IsChart(block, at, kLowAi) && U8At(block, at + kRecordLength) == 0) NoteFirst(&found.ai, at);
    if (IsChart(block, at, kLowSeriesText)) NoteFirst(&found.text, at);
    if (IsChart(block, at, kLowSerToCrt)) NoteFirst(&found.group, at);
  });
  return found;
}

// Whether the series has a name in its SERIESTEXT at `at`.
bool HasName(const Block& block, uint32_t at) {
  if (at == kNoRecord) return false;
  if (U8At(block, at + kSeriesTextLength) != kLostNameLength) return true;
  char text[kLostNameLength];
  CopyOut(block, at + kSeriesTextText, reinterpret_cast<uint8_t*>(text), kLostNameLength);
  return std::memcmp(text, kLostName, kLostNameLength) != 0;
}

// Puts the name at `at`. False when there is no room for its text.
bool PutName(const SeriesArrays& arrays, const Block& block, uint32_t at, LONG series) {
  const uint8_t length = U8At(block, at + kSeriesTextLength);
  if (!PoolHasRoom(length)) return false;
  const BSTR text = ByteBstr(block, at + kSeriesTextText, length);
  if (text == nullptr) return false;
  platform::PutOwnedBstr(ArrayAt(arrays.names), &series, text);
  return true;
}

// Puts the first cell of each reference in the AI's formula, so that the last one stays. The walk steps by
// ChartTokenSize as it stands, on purpose: back by 1 or 2 at a token of variable size or an unknown one. It ends when
// it comes in front of the formula, and when it has made more steps than the formula has bytes: it goes in a ring
// then.
void PutNameCell(const SeriesArrays& arrays, const Block& block, uint32_t at, LONG series, Effort* effort) {
  const uint32_t tokens = at + kAiTokens;
  const int32_t length = U16At(block, at + kAiLength);
  int32_t offset = 0;
  for (int32_t left = length; left > 0 && offset >= 0 && offset < length && Spend(effort); --left) {
    const uint32_t token = tokens + static_cast<uint32_t>(offset);
    CellArea area;
    if (ReadCellArea(block, token, &area))
      PutNumber(arrays.references, series, PackedCell(area.firstSheet, area.firstRow, area.firstColumn));
    offset += ChartTokenSize(U8At(block, token));
  }
}

void PutColour(const SeriesArrays& arrays, const Block& block, uint32_t at, LONG series) {
  const bool solid =
      U8At(block, at + kAreaPattern) == kSolidPattern && U8At(block, at + kAreaPatternHigh) == 0;
  PutNumber(arrays.colours, series, U32At(block, at + (solid ? kAreaForeground : kAreaBackground)));
}

void FillSeriesDetails(const SeriesArrays& arrays, const Block& block, uint32_t at, LONG series,
                       Effort* effort) {
  const SeriesRecords records = RecordsOfSeries(block, at, effort);
  if (HasName(block, records.text)) {
    if (!PutName(arrays, block, records.text, series)) return;
  } else if (records.ai != kNoRecord) {
    PutNameCell(arrays, block, records.ai, series, effort);
  }
  if (records.group != kNoRecord)
    PutNumber(arrays.groups, series, U16At(block, records.group + kSerToCrtGroup));
  if (records.area != kNoRecord) PutColour(arrays, block, records.area, series);
}

// The first chart type of a group decides.
void NoteGroupKind(const GroupTable& groups, const Block& block, uint32_t at, uint32_t group) {
  for (const GroupKind& row : kGroupKinds) {
    if (!IsChart(block, at, row.low)) continue;
    if (U16At(groups.entries, group * kGroupSize) == kGroupWithoutType)
      PutU16(groups.entries, group * kGroupSize, row.kind);
  }
}

void ReadSeries(const SeriesArrays& arrays, const Block& block, SheetExtent chart, const GroupTable& groups) {
  Effort effort = EffortFor(block);
  uint32_t begun = 0;  // groups
  LONG series = 0;
  ForEachRecord(block, chart.begin, chart.end, [&](uint32_t at) {
    if (IsChart(block, at, kLowChartFormat)) {
      PutU16(groups.entries, begun++ * kGroupSize, kGroupWithoutType);
    } else if (IsChart(block, at, kLowSeries)) {
      FillSeriesDetails(arrays, block, at, ++series, &effort);
    } else if (begun != 0) {
      NoteGroupKind(groups, block, at, begun - 1);
    }
  });
}

void ReplaceGroupsByKinds(const SeriesArrays& arrays, const GroupTable& groups) {
  for (LONG series = 1; series <= arrays.seriesCount; ++series) {
    uint32_t group = 0;
    platform::GetBytes(ArrayAt(arrays.groups), &series, &group, sizeof group);
    // The number may be anything; one behind the table reads as nothing.
    const uint16_t kind = group < groups.count ? U16At(groups.entries, group * kGroupSize) : uint16_t{0};
    PutNumber(arrays.groups, series, kind);
  }
}

}  // namespace

int16_t XLGetSetData(uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart,
                     const SeriesArrays& arrays) {
  const ChartQuery query = {buffer, table, sheet, chart};
  int16_t count = 0;
  int16_t check = CheckChartSheet(query, &count);
  if (check == kChartRead) check = CheckArrays(arrays);
  if (check == kChartRead) check = CheckChartNumber(query, count);
  if (check != kChartRead) return check;

  const Block block = OpenBlock(buffer);
  SheetExtent found = {};
  uint32_t groups = 0;
  const auto count_groups = [&](uint32_t at, int32_t charts) {
    groups += charts == chart && IsChart(block, at, kLowChartFormat) ? 1 : 0;
  };
  if (!FindChart(block, ChartSearchExtent(query, count), chart, &found, count_groups)) return kChartNotFound;
  uint32_t kinds = MEMORYALLOC(static_cast<int32_t>(groups * kGroupSize));
  if (kinds == 0) return kChartNoMemory;
  const GroupTable group_table = {{BlockBytes(kinds), groups * kGroupSize}, groups};
  ReadSeries(arrays, block, found, group_table);
  ReplaceGroupsByKinds(arrays, group_table);
  MEMORYFREE(&kinds);
  return kChartRead;
}

}  // namespace tolvenar
