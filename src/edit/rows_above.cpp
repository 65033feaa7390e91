// PassRowsAbove. Where a row begins, its records are expected where those of the rows before it stood (row_layouts.h), and whole rows are
// passed at once. Whatever is not as expected is walked over record by record, and learned.
//
// Invariant: a record that is passed because it is as expected is one that the slow way would pass, since its type, its length and its row are
// compared. None of them is private or of the chart kind, since such a record is not learned.
#include "edit/rows_above.h"

#include <algorithm>
#include <array>

#include "edit/cell_kinds.h"
#include "query/extent_walk.h"

namespace tolvenar {

namespace {

using Place = RowsAbove::Place;

// What a record on the way is to a search in the sheet itself, by its low byte.
enum class Way : uint8_t { kSkip, kStop, kRow, kCell };

constexpr std::array<Way, 256> WaysByLowByte() {
  std::array<Way, 256> ways{};
  for (const auto& kind : kCellKinds) ways[kind.low] = Way::kCell;
  for (const uint8_t low : {kLowBof, kLowEof, kLowDimensions}) ways[low] = Way::kStop;
  ways[kLowRow] = Way::kRow;
  return ways;
}
constexpr std::array<Way, 256> kWays = WaysByLowByte();

constexpr uint32_t kRowsWorthLearning = 3;
constexpr uint32_t kShortestPause = 64;  // bytes: less than a row
constexpr uint32_t kPauseGrowth = 4;
constexpr uint32_t kLongestPause = 65536;

// Is there a private record, which says nothing about a cell, and which only a step gets over?
bool StandsAtPrivate(const Walk& walk, uint32_t end) {
  return InExtent(walk, end) && U8At(walk.block, walk.at + kRecordTypeHigh) == kPrivateHigh;
}

// How many times `bytes` bytes with `records` records can be passed at once from where the walk is: in the block, up to the sheet's end,
// as far as GoOver goes. The walk stands at a record of which kPassOverSees bytes are in the block, and not at the end.
uint32_t TimesAtOnce(const Walk& walk, uint32_t end, uint32_t bytes, uint32_t records) {
  const uint32_t inside = (walk.block.extent - kPassOverSees - walk.at) / bytes;
  const uint32_t before_end = walk.at < end ? (end - walk.at) / bytes : UINT32_MAX;
  return std::min({inside, before_end, TimesToGoOver(walk, bytes, records)});
}

// The wanted row as rows are compared with it: those with the sign bit are never passed at once.
uint32_t LimitOf(const RowsAbove& passing) {
  return passing.wanted > 0 ? static_cast<uint32_t>(passing.wanted) : 0;
}

// From the first record of a row over as many rows as are wholly as expected; how many.
uint32_t PassWholeRows(Walk* walk, RowsAbove* passing, uint32_t* last_cell) {
  RowLayouts& layouts = passing->layouts;
  const uint32_t most = TimesAtOnce(*walk, passing->end, layouts.span, layouts.count);
  const RowRun run = CountRows(layouts, walk->block.base + walk->at, most, LimitOf(*passing));
  if (run.rows == 0 || !GoOver(walk, run.bytes, run.records)) return 0;
  layouts.recent = run.forks ? layouts.forked : layouts.plain;
  const RowLayout& had = layouts.places[layouts.recent];
  const uint32_t last = had.records[had.count - 1].lastCell;
  if (last != kNoCellYet) *last_cell = walk->at - had.span + last;
  return run.rows;
}

// At the first record of a row that is not wholly as expected: over those that are, and how many. They count as learned.
uint32_t PassBeginOfRow(Walk* walk, RowsAbove* passing, uint32_t* last_cell) {
  RowLayouts& layouts = passing->layouts;
  const uint32_t at = walk->at;
  if (layouts.count == 0 || passing->row >= passing->wanted || !InExtent(*walk, passing->end) ||
      TimesAtOnce(*walk, passing->end, layouts.span, layouts.count) == 0)
    return 0;
  const RowLayout& layout = layouts.places[layouts.recent];
  const uint32_t count = CountBegin(layouts, walk->block.base + at, static_cast<int16_t>(passing->row));
  if (count == 0 || count == layout.count || !GoOver(walk, layout.records[count].offset, count)) return 0;
  const uint32_t last = layout.records[count - 1].lastCell;
  if (last != kNoCellYet) *last_cell = at + last;
  return count;
}

// Where the last row was no guide to the next ones, it will hardly be one to those behind them: the longer that goes on, the longer are the
// stretches in which nothing is expected and nothing learned. One odd row in between costs none.
void WeighRows(const Walk& walk, uint32_t rows, RowsAbove* passing) {
  if (rows >= kRowsWorthLearning) {
    passing->misses = 0;
    passing->pause /= kPauseGrowth;
  } else if (passing->misses++ != 0) {
    passing->misses = 0;
    passing->pause = std::clamp(passing->pause * kPauseGrowth, kShortestPause, kLongestPause);
    passing->pausedUntil = walk.at + passing->pause;
  }
}

// At the first record of a row.
void PassNextRows(Walk* walk, RowsAbove* passing, uint32_t* last_cell) {
  ExpectDraft(&passing->layouts);
  if (passing->layouts.count != 0) WeighRows(*walk, PassWholeRows(walk, passing, last_cell), passing);
  passing->row = I16At(walk->block, walk->at + kCellRow);
  const uint32_t begun = PassBeginOfRow(walk, passing, last_cell);
  if (!StandsAtPrivate(*walk, passing->end)) BeginDraft(&passing->layouts, begun);
}

// Is the record one that says nothing about the wanted row?
bool IsOnTheWay(const uint8_t* record, Way way, int16_t wanted) {
  if (way == Way::kCell) return ReadI16(record + kCellRow) < wanted;
  return way == Way::kSkip || (way == Way::kRow && ReadI16(record + kRowNumber) != wanted);
}

// Up to the end of a pause.
void PassPause(Walk* walk, RowsAbove* passing, uint32_t* last_cell) {
  if (walk->at >= passing->pausedUntil) return;
  const uint8_t* base = walk->block.base;
  const uint8_t* cell = nullptr;
  const uint8_t* last = nullptr;
  const auto skips = [&cell, &last, wanted = passing->wanted,
                      end = base + passing->end](const uint8_t* record) {
    if (record == end) return false;
    if ((record[kRecordTypeHigh] & kChartBit) != 0) return true;
    const Way way = kWays[record[kRecordTypeLow]];
    if (!IsOnTheWay(record, way, wanted)) return false;
    last = record;
    if (way == Way::kCell) cell = record;
    return true;
  };
  PassOver(walk, passing->pausedUntil, skips);
  passing->layouts.learning = false;
  if (cell != nullptr) *last_cell = static_cast<uint32_t>(cell - base);
  if (last != nullptr) passing->row = ReadI16(last + kCellRow);
}

// A row with a patch in it is not learned, and a patch mostly has a record or two: nothing is expected in its first bytes. Behind it, or behind
// the room that one has left, it is worth looking again.
void StepOverPrivate(Walk* walk, RowsAbove* passing) {
  const bool enters_patch = U8At(walk->block, walk->at + kRecordTypeLow) == kLowDetour;
  Step(walk);
  passing->layouts.learning = false;
  passing->misses = 0;
  passing->pausedUntil = enters_patch ? walk->at + kShortestPause : 0;
}

// From a ROW that is not the wanted one: over it, and over those behind it that have its length.
void PassRowRecords(Walk* walk, const RowsAbove& passing) {
  const uint8_t* record = walk->block.base + walk->at;
  const uint32_t header = ReadU32(record);
  const uint32_t stride = kHeaderSize + ReadU16(record + kRecordLength);
  const uint32_t most = TimesAtOnce(*walk, passing.end, stride, 1);
  uint32_t count = 0;
  while (count < most && ReadU32(record) == header && ReadI16(record + kRowNumber) != passing.wanted) {
    record += stride;
    ++count;
  }
  if (count == 0 || !GoOver(walk, count * stride, count)) Step(walk);
}

// Is the record at `record` the first of several ROWs of one length?
bool BeginsRowRecords(const Block& block, const uint8_t* record) {
  const uint32_t stride = kHeaderSize + ReadU16(record + kRecordLength);
  const uint8_t* next = At(block, static_cast<uint32_t>(record - block.base) + stride, kHeaderSize);
  return next != nullptr && ReadU32(next) == ReadU32(record);
}

// The slow way: is the record one to be passed? What is, is learned. At the first record of another row, and at ROWs, there may be a
// quicker way: passing->place tells it.
bool PassesOne(RowsAbove* passing, const Block& block, const uint8_t* record, uint32_t* last_cell) {
  if ((record[kRecordTypeHigh] & kChartBit) != 0) {
    passing->layouts.learning = false;
    return true;
  }
  const Way way = kWays[record[kRecordTypeLow]];
  const int16_t row = ReadI16(record + kCellRow);
  if (!IsOnTheWay(record, way, passing->wanted)) return false;
  if (way == Way::kRow && BeginsRowRecords(block, record)) {
    passing->layouts.learning = false;
    passing->place = Place::kOnTheWay;
    return false;
  }
  if (row != passing->row) {
    passing->place = Place::kNextRow;
    return false;
  }
  Learn(&passing->layouts, record, way == Way::kCell);
  if (way == Way::kCell) *last_cell = static_cast<uint32_t>(record - block.base);
  return true;
}

}  // namespace

void PassRowsAbove(Walk* walk, RowsAbove* passing, uint32_t* last_cell) {
  const Block block = walk->block;
  const uint8_t* end = block.base + passing->end;
  passing->layouts.learning = false;
  do {
    PassPause(walk, passing, last_cell);
    passing->place = Place::kElsewhere;
    PassOver(walk, UINT32_MAX, [passing, &block, end, last_cell](const uint8_t* record) {
      return record != end && PassesOne(passing, block, record, last_cell);
    });
    if (passing->place == Place::kOnTheWay) PassRowRecords(walk, *passing);
    if (passing->place == Place::kNextRow) PassNextRows(walk, passing, last_cell);
    if (passing->place == Place::kElsewhere && StandsAtPrivate(*walk, passing->end)) {
      passing->place = Place::kOnTheWay;
      StepOverPrivate(walk, passing);
    }
  } while (passing->place != Place::kElsewhere);
}

}  // namespace tolvenar
