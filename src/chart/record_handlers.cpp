// Record handlers: the table of them, and each.
#include "chart/record_handlers.h"

#include "chart/series_tokens.h"
#include "platform/array_get.h"
#include "platform/array_put.h"

namespace tolvenar {

namespace {

// Codes of properties.
constexpr int32_t kFamily3d = 3;
constexpr int32_t kFamilyRound = 2;  // PIE; also BAR where property 3 is set
constexpr int32_t kFamilyRadar = 1;
constexpr int32_t kFamilyFlat = 0;
constexpr int32_t kVariantStep = 2;  // property 4 is below it, or it has been raised by it
constexpr int32_t kStackingOn = 2;
constexpr int32_t kBarsLying = 4;
constexpr int32_t kBarsStanding = 1;
constexpr int32_t kUnitsAPoint = 20;

// Bits and values in records.
constexpr uint8_t kStackedBit = 0x02;     // of AREA, LINE, SURFACE, SCATTER
constexpr uint8_t kBarStackedBit = 0x04;  // of BAR
constexpr uint8_t kBarLyingBit = 0x01;
constexpr uint8_t kVariantBit = 0x01;  // of SURFACE, SCATTER
constexpr uint8_t kRadarLabelBit = 0x01;
constexpr uint8_t kLabelBit = 0x10;
constexpr uint8_t kLegendPlaceNoted = 2;
constexpr uint8_t kAxisLengthHigh = 1;
constexpr uint8_t kObjectIsChart = 5;

bool HasBit(const ChartReading& reading, uint32_t at, uint8_t bit) {
  return (U8At(reading.block, at) & bit) != 0;
}

bool IsOdd(int32_t value) {
  return (value & 1) != 0;
}

void PutStacked(const ChartReading& reading, bool stacked) {
  PutProperty(reading, kPropertyStacked, stacked ? 1 : 0);
  if (stacked) PutProperty(reading, kPropertyStacking, kStackingOn);
}

// Raises property 4 by 2 where it is below 2, or takes that back.
void MoveVariant(const ChartReading& reading, bool raised) {
  int32_t x = Property(reading, kPropertyVariant);
  if (raised && x < kVariantStep) {
    x += kVariantStep;
  } else if (!raised && x >= kVariantStep) {
    x -= kVariantStep;
  }
  PutProperty(reading, kPropertyVariant, x);
}

// Makes property 9 odd, or even.
int32_t WithOddness(int32_t x, bool odd) {
  if (IsOdd(x) == odd) return x;
  return odd ? x + 1 : x - 1;
}

// Property 9 of a chart that is not round: pairs of codes, without the label and with it.
int32_t LabelledCode(int32_t x, bool labelled) {
  constexpr struct {
    int32_t without;
    int32_t with;
  } kPairs[] = {{0, 2}, {3, 1}, {5, 4}, {7, 6}};
  for (const auto& pair : kPairs) {
    if (x == (labelled ? pair.without : pair.with)) return labelled ? pair.with : pair.without;
  }
  return x;
}

// If the count, taken as a signed 16-bit value, is the largest so far, it is noted.
void NoteCategories(const ChartReading& reading, int16_t count) {
  if (count > ContextCell(reading.cells, kContextCategories))
    PutContextCell(reading.cells, kContextCategories, static_cast<uint16_t>(count));
}

void Handle3d(ChartReading* reading, uint32_t /*at*/) {
  if (Property(*reading, kPropertyCircular) == 0) PutProperty(*reading, kPropertyFamily, kFamily3d);
}

void HandleArea(ChartReading* reading, uint32_t at) {
  PutStacked(*reading, HasBit(*reading, at + kAreaFlags, kStackedBit));
}

void HandleAreaFormat(ChartReading* reading, uint32_t at) {
  if (CurrentContext(reading->cells) != kContextChart) return;
  PutProperty(*reading, kPropertyBackground,
              static_cast<int32_t>(U32At(reading->block, at + kAreaBackground)));
}

void HandleAttachedLabel(ChartReading* reading, uint32_t at) {
  const bool round = Property(*reading, kPropertyCircular) == 1;
  const bool labelled = HasBit(*reading, at + kAttachedLabelFlags, kLabelBit);
  const int32_t x = Property(*reading, kPropertyLabels);
  PutProperty(*reading, kPropertyLabels, round ? WithOddness(x, labelled) : LabelledCode(x, labelled));
}

// The high byte of an axis' length is held against 1, on purpose: hardly any axis has a context. Nothing reads it.
void HandleAxis(ChartReading* reading, uint32_t at) {
  const bool owns = IsChart(reading->block, NextRecord(reading->block, at), kLowBegin);
  if (owns && U8At(reading->block, at + kRecordLength + 1) == kAxisLengthHigh)
    SetContext(reading->cells, kContextAxis);
}

void HandleBar(ChartReading* reading, uint32_t at) {
  const bool lying = HasBit(*reading, at + kBarFlags, kBarLyingBit);
  PutProperty(*reading, kPropertyBars, lying ? kBarsLying : kBarsStanding);
  PutStacked(*reading, HasBit(*reading, at + kBarFlags, kBarStackedBit));
  const int32_t family = Property(*reading, kPropertyFamily);
  if (Property(*reading, kPropertyCircular) != 0) {
    if (IsOdd(family)) PutProperty(*reading, kPropertyFamily, kFamilyRound);
  } else if (family == kFamilyRadar) {
    PutProperty(*reading, kPropertyFamily, kFamilyFlat);
  }
}

void HandleChart(ChartReading* reading, uint32_t at) {
  PutProperty(*reading, kPropertyWidth, I16At(reading->block, at + kChartWidth) * kUnitsAPoint);
  PutProperty(*reading, kPropertyHeight, I16At(reading->block, at + kChartHeight) * kUnitsAPoint);
}

void HandleFontX(ChartReading* reading, uint32_t at) {
  const uint16_t outer = OuterContext(reading->cells);
  const LONG index = outer == kContextChart    ? kPropertyChartFont
                     : outer == kContextLegend ? kPropertyLegendFont
                                               : kPropertyOtherFont;
  PutProperty(*reading, index, I16At(reading->block, at + kFontXFont));
}

void HandleLegend(ChartReading* reading, uint32_t at) {
  PutProperty(*reading, kPropertyLegend, 1);
  if (U8At(reading->block, at + kLegendPlace) == kLegendPlaceNoted)
    PutProperty(*reading, kPropertyLegendPlace, 1);
}

void HandleLine(ChartReading* reading, uint32_t at) {
  PutStacked(*reading, HasBit(*reading, at + kLineFlags, kStackedBit));
  PutProperty(*reading, kPropertyFamily, kFamilyFlat);
  PutProperty(*reading, kPropertyLine, 1);
}

void HandlePie(ChartReading* reading, uint32_t /*at*/) {
  MoveVariant(*reading, true);
  PutProperty(*reading, kPropertyFamily, kFamilyRound);
  PutProperty(*reading, kPropertyCircular, 1);
}

void HandleRadar(ChartReading* reading, uint32_t at) {
  MoveVariant(*reading, false);
  PutProperty(*reading, kPropertyFamily, kFamilyRadar);
  PutProperty(*reading, kPropertyCircular, 1);
  const bool labelled = HasBit(*reading, at + kRadarFlags, kRadarLabelBit);
  PutProperty(*reading, kPropertyLabels, WithOddness(Property(*reading, kPropertyLabels), labelled));
}

void HandleSurface(ChartReading* reading, uint32_t at) {
  MoveVariant(*reading, HasBit(*reading, at + kSurfaceFlags, kVariantBit));
  PutStacked(*reading, HasBit(*reading, at + kSurfaceFlags, kStackedBit));
}

void HandleScatter(ChartReading* reading, uint32_t at) {
  MoveVariant(*reading, HasBit(*reading, at + kScatterFlags, kVariantBit));
  PutStacked(*reading, HasBit(*reading, at + kScatterFlags, kStackedBit));
  PutProperty(*reading, kPropertyFamily, kFamilyFlat);
}

void HandleSeries(ChartReading* reading, uint32_t at) {
  const uint32_t series = ContextCell(reading->cells, kContextSeriesCount);
  PutContextCell(reading->cells, kContextSeriesCount, static_cast<uint16_t>(series + 1));
  NoteCategories(*reading, I16At(reading->block, at + kSeriesCategories));
}

// The cells of a series' values. Their number is taken in 16 bits, and an area whose ends are the wrong way round
// takes cells off it.
void HandleAi(ChartReading* reading, uint32_t at) {
  if (CurrentContext(reading->cells) != kContextSeries) return;
  if (U8At(reading->block, at + kAiKind) != kAiKindValues) return;
  uint32_t count = 0;
  ForEachCellArea(reading->block, at, &reading->effort, [&](const CellArea& area) {
    count += (area.lastRow - area.firstRow + 1) * (area.lastColumn - area.firstColumn + 1) *
             (area.lastSheet - area.firstSheet + 1);
  });
  NoteCategories(*reading, static_cast<int16_t>(count));
}

constexpr uint16_t kNoContext = 0;

// The records, the context that each sets where it owns a BEGIN, and its handler. (An END is the walk's own.)
constexpr struct {
  uint8_t low;
  uint16_t context;
  void (*handle)(ChartReading* reading, uint32_t at);
} kHandlers[] = {
    {kLow3d, kContext3d, Handle3d},
    {kLowArea, kContextArea, HandleArea},
    {kLowAreaFormat, kNoContext, HandleAreaFormat},
    {kLowAttachedLabel, kNoContext, HandleAttachedLabel},
    {kLowAxis, kNoContext, HandleAxis},
    {kLowBar, kContextBar, HandleBar},
    {kLowChart, kContextChart, HandleChart},
    {kLowFontX, kNoContext, HandleFontX},
    {kLowLegend, kContextLegend, HandleLegend},
    {kLowLine, kContextLine, HandleLine},
    {kLowPie, kContextPie, HandlePie},
    {kLowRadar, kContextRadar, HandleRadar},
    {kLowRadarArea, kContextRadar, HandleRadar},
    {kLowSurface, kContextSurface, HandleSurface},
    {kLowScatter, kContextLine, HandleScatter},
    {kLowSeries, kContextSeries, HandleSeries},
    {kLowAi, kNoContext, HandleAi},
};

}  // namespace

int32_t Property(const ChartReading& reading, LONG index) {
  int32_t value = 0;
  platform::GetBytes(reading.properties, &index, &value, sizeof value);
  return value;
}

void PutProperty(const ChartReading& reading, LONG index, int32_t value) {
  platform::PutBytes(reading.properties, &index, &value, sizeof value);
}

void HandleChartRecord(ChartReading* reading, uint32_t at) {
  for (const auto& row : kHandlers) {
    if (!IsChart(reading->block, at, row.low)) continue;
    // The chart test, which is looser than what opens a cell, on purpose.
    const bool owns = IsChart(reading->block, NextRecord(reading->block, at), kLowBegin);
    if (owns && row.context != kNoContext) SetContext(reading->cells, row.context);
    row.handle(reading, at);
    return;
  }
}

void HandleObject(const ChartReading& reading, uint32_t at) {
  if (U8At(reading.block, at + kObjKind) != kObjectIsChart) return;
  PutProperty(reading, kPropertyLeft, I16At(reading.block, at + kObjLeft) + 1);
  PutProperty(reading, kPropertyObject, I16At(reading.block, at + kObjId) + 1);
  PutProperty(reading, kPropertyTop, I16At(reading.block, at + kObjTop) + 1);
}

}  // namespace tolvenar
