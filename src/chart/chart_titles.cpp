// Chart titles: a walk over the chart, and in it one over the block of each TEXT.
#include "chart/chart_titles.h"

#include "chart/chart_block.h"
#include "chart/chart_search.h"
#include "query/byte_text.h"

namespace tolvenar {

namespace {

constexpr uint8_t kLinkTitle = 1;  // the two axes are 2 and 3
constexpr uint8_t kLinkAxisTwo = 3;

// The first record of each kind in a TEXT's block.
struct TextRecords {
  uint32_t text = kNoRecord;
  uint32_t link = kNoRecord;
  uint32_t font = kNoRecord;
};

// A place for a text, and the text that this call has put there.
struct TextPlace {
  BSTR* to;
  BSTR made;
};

struct Titles {
  TextPlace places[kLinkAxisTwo];  // by link less 1
  const TitleOutputs* outputs;
};

template <typename Value>
void Give(Value* to, Value value) {
  if (to != nullptr) *to = value;
}

TextRecords RecordsOfText(const Block& block, uint32_t text, Effort* effort) {
  TextRecords found;
  ForEachInBlockOf(block, text, effort, [&](uint32_t at, int32_t depth) {
    if (depth != 1) return;
    if (IsChart(block, at, kLowSeriesText)) NoteFirst(&found.text, at);
    if (IsChart(block, at, kLowObjectLink)) NoteFirst(&found.link, at);
    if (IsChart(block, at, kLowFontX)) NoteFirst(&found.font, at);
  });
  return found;
}

// What the text belongs to; 0 when that is nothing that has a place here.
uint8_t LinkOf(const Block& block, const TextRecords& records) {
  if (records.link == kNoRecord || records.text == kNoRecord) return 0;
  const uint8_t link = U8At(block, records.link + kObjectLinkKind);
  return link <= kLinkAxisTwo && U8At(block, records.link + kObjectLinkKindHigh) == 0 ? link : uint8_t{0};
}

// Puts the text of the SERIESTEXT at `at` into its place. False when there is no room for it.
bool PutText(TextPlace* place, const Block& block, uint32_t at) {
  const uint8_t length = U8At(block, at + kSeriesTextLength);
  if (!PoolHasRoom(length)) return false;
  const BSTR text = ByteBstr(block, at + kSeriesTextText, length);
  if (text == nullptr) return false;
  SysFreeString(place->made);
  place->made = text;
  if (place->to != nullptr) *place->to = text;
  return true;
}

void ReadTitleText(Titles* titles, const Block& block, uint32_t at, Effort* effort) {
  const TextRecords records = RecordsOfText(block, at, effort);
  const uint8_t link = LinkOf(block, records);
  if (link == 0 || !PutText(&titles->places[link - 1], block, records.text)) return;
  const TitleOutputs& outputs = *titles->outputs;
  if (records.font != kNoRecord)
    Give(link == kLinkTitle ? outputs.titleFont : outputs.axisFont, U16At(block, records.font + kFontXFont));
  Give(outputs.colour, U32At(block, at + kTextColour));
}

}  // namespace

int16_t XLGetTitleData(uint32_t buffer, uint32_t table, int16_t sheet, int16_t chart,
                       const TitleOutputs& outputs) {
  const ChartQuery query = {buffer, table, sheet, chart};
  int16_t count = 0;
  int16_t check = CheckChartSheet(query, &count);
  if (check == kChartRead) check = CheckChartNumber(query, count);
  if (check != kChartRead) return check;
  const Block block = OpenBlock(buffer);
  SheetExtent found = {};
  if (!FindChart(block, ChartSearchExtent(query, count), chart, &found)) return kChartNotFound;

  Titles titles = {{{outputs.title, nullptr}, {outputs.axisOne, nullptr}, {outputs.axisTwo, nullptr}},
                   &outputs};
  Effort effort = EffortFor(block);
  ForEachRecord(block, found.begin, found.end, [&](uint32_t at) {
    if (IsChart(block, at, kLowText)) ReadTitleText(&titles, block, at, &effort);
  });
  for (const TextPlace& place : titles.places) {
    if (place.to == nullptr) SysFreeString(place.made);
  }
  return kChartRead;
}

}  // namespace tolvenar
