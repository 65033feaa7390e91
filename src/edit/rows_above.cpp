// PassRowsAbove. The rows of a report are laid out alike: the same kinds of record in the same order, of the same lengths. So where a row
// begins, its records are expected at the distances that those of the row before it had. All of them can be looked at at once, where
// a walk from length to length looks at one after the other. Whatever is not as expected is walked over, and its layout is
// learned for the next row.
//
//   What is compared of a record                 Its key, a u64
//   OFFSET  SIZE  FIELD                          BITS    FIELD
//        0     2  type                            0 - 15  zero, so that the column doesn't count
//        2     2  n, length of the payload       16 - 31  type
//        4     2  row                            32 - 47  n
//        6     2  column, or anything else       48 - 63  row: added when a row is compared
//
// Invariants: (1) A record that is passed because it is as expected has the type, the length and the row that the slow way has judged or would
// judge: nothing is taken for granted. (2) The records of a layout follow each other without a gap, and none of them is private or of the chart
// kind, or the wanted row's ROW.
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
constexpr int kColumnBits = 16;
constexpr int kRowShift = 48;

// The key of the record, with its row.
uint64_t KeyOf(const uint8_t* record) {
  return ReadU64(record) << kColumnBits;
}

uint64_t RowInKey(int32_t row) {
  return uint64_t{static_cast<uint16_t>(row)} << kRowShift;
}

// Makes the record the layout's next one, and the last one so far; not so in a row that did not come by in one piece, which has no layout.
void Learn(RowsAbove* passing, const uint8_t* record, bool is_cell) {
  if (passing->learned >= RowLayout::kMostRecords) return;
  RowLayout& layout = passing->layout;
  const uint32_t i = passing->learned++;
  const uint32_t last_cell = i == 0 ? kNoneYet : layout.records[i - 1].lastCell;
  layout.records[i] = {KeyOf(record) - RowInKey(passing->row), passing->reached,
                       is_cell ? passing->reached : last_cell};
  passing->reached += kHeaderSize + ReadU16(record + kRecordLength);
  layout.count = passing->learned;
  layout.span = passing->reached;
}

// Is the row that begins at `first` as expected? One answer for all its records, so that none of them waits for the one before it.
// The layout's span and the first 8 bytes of a record behind it are in the block.
bool IsAsExpected(const RowLayout& layout, const uint8_t* first, int16_t row) {
  const uint64_t row_bits = RowInKey(row);
  uint64_t differences = 0;
  for (uint32_t i = 0; i < layout.count; ++i)
    differences |= KeyOf(first + layout.records[i].offset) ^ (layout.records[i].key + row_bits);
  return differences == 0;
}

// How many records from `first` on are as expected of a row that as a whole is not.
uint32_t CountAsExpected(const RowLayout& layout, const uint8_t* first, int16_t row) {
  const uint64_t row_bits = RowInKey(row);
  uint32_t i = 0;
  while (i < layout.count && KeyOf(first + layout.records[i].offset) == layout.records[i].key + row_bits) ++i;
  return i;
}

// How many times `bytes` bytes with `records` records can be passed at once from where the walk is: in the block, up to the sheet's end,
// within the walk's lap.
uint32_t TimesAtOnce(const Walk& walk, uint32_t end, uint32_t bytes, uint32_t records) {
  const uint32_t inside = (walk.block.extent - kPassOverSees - walk.at) / bytes;
  const uint32_t before_end = walk.at < end ? (end - walk.at) / bytes : UINT32_MAX;
  return std::min({inside, before_end, (walk.lapLeft - 1) / records});
}

// Rows that are wholly as expected, from the first record of one; how many.
uint32_t PassWholeRows(Walk* walk, const RowsAbove& passing, uint32_t* last_cell) {
  const RowLayout& layout = passing.layout;
  const uint32_t most = TimesAtOnce(*walk, passing.end, layout.span, layout.count);
  const uint8_t* first = walk->block.base + walk->at;
  uint32_t rows = 0;
  for (; rows < most; ++rows, first += layout.span) {
    const int16_t row = ReadI16(first + kCellRow);
    if (row >= passing.wanted || !IsAsExpected(layout, first, row)) break;
  }
  if (rows == 0 || !GoOver(walk, rows * layout.span, rows * layout.count)) return 0;
  const uint32_t last = layout.records[layout.count - 1].lastCell;
  if (last != kNoneYet) *last_cell = walk->at - layout.span + last;
  return rows;
}

// What is as expected at the beginning of a row that is not wholly so. It counts as learned.
void PassBeginOfRow(Walk* walk, RowsAbove* passing, uint32_t* last_cell) {
  const RowLayout& layout = passing->layout;
  const uint32_t at = walk->at;
  const int16_t row = I16At(walk->block, at + kCellRow);
  passing->row = row;
  passing->learned = 0;
  passing->reached = 0;
  if (layout.count == 0 || row >= passing->wanted ||
      TimesAtOnce(*walk, passing->end, layout.span, layout.count) == 0)
    return;
  const uint32_t passed = CountAsExpected(layout, walk->block.base + at, row);
  if (passed == 0 || passed == layout.count || !GoOver(walk, layout.records[passed].offset, passed)) return;
  passing->learned = passed;
  passing->reached = layout.records[passed].offset;
  const uint32_t last = layout.records[passed - 1].lastCell;
  if (last != kNoneYet) *last_cell = at + last;
}

// Where the last row was no guide to the next ones, it will hardly be one to those behind them: the longer that goes on, the longer are the
// stretches in which nothing is expected and nothing learned. One odd row in between costs none.
void WeighRows(const Walk& walk, uint32_t rows, RowsAbove* passing) {
  if (rows >= kRowsWorthLearning) {
    passing->misses = 0;
    passing->pause /= kPauseGrowth;
  } else if (passing->misses++ != 0) {
    passing->pause = std::clamp(passing->pause * kPauseGrowth, kShortestPause, kLongestPause);
    passing->pausedUntil = walk.at + passing->pause;
  }
}

// At the first record of a row.
void PassNextRows(Walk* walk, RowsAbove* passing, uint32_t* last_cell) {
  if (passing->layout.count != 0) WeighRows(*walk, PassWholeRows(walk, *passing, last_cell), passing);
  PassBeginOfRow(walk, passing, last_cell);
}

// Up to the end of a pause. The rest of the row that it ends in is not learned.
void PassPause(Walk* walk, RowsAbove* passing, uint32_t* last_cell) {
  if (walk->at >= passing->pausedUntil) return;
  const uint8_t* base = walk->block.base;
  const uint8_t* cell = nullptr;
  const auto skips = [&cell, wanted = passing->wanted, end = base + passing->end](const uint8_t* record) {
    if (record == end) return false;
    if ((record[kRecordTypeHigh] & kChartBit) != 0) return true;
    const Way way = kWays[record[kRecordTypeLow]];
    if (way == Way::kCell) {
      if (ReadI16(record + kCellRow) >= wanted) return false;
      cell = record;
      return true;
    }
    return way == Way::kSkip || (way == Way::kRow && ReadI16(record + kRowNumber) != wanted);
  };
  PassOver(walk, passing->pausedUntil, skips);
  if (cell != nullptr) *last_cell = static_cast<uint32_t>(cell - base);
  passing->layout.count = 0;
  passing->learned = kNotLearning;
  passing->row = I16At(walk->block, walk->at + kCellRow);
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
    passing->learned = kNotLearning;
    return true;
  }
  const Way way = kWays[record[kRecordTypeLow]];
  const int16_t row = ReadI16(record + kCellRow);
  if (way == Way::kStop || (way == Way::kCell && row >= passing->wanted) ||
      (way == Way::kRow && row == passing->wanted))
    return false;
  if (way == Way::kRow && BeginsRowRecords(block, record)) {
    passing->learned = kNotLearning;
    passing->place = Place::kRowRecord;
    return false;
  }
  if (row != passing->row) {
    passing->place = Place::kNextRow;
    return false;
  }
  Learn(passing, record, way == Way::kCell);
  if (way == Way::kCell) *last_cell = static_cast<uint32_t>(record - block.base);
  return true;
}

// A DETOUR and its like, which say nothing about a cell, and which only a step gets over.
bool StandsAtPrivate(const Walk& walk, uint32_t end) {
  return InExtent(walk, end) && U8At(walk.block, walk.at + kRecordTypeHigh) == kPrivateHigh;
}

}  // namespace

void PassRowsAbove(Walk* walk, RowsAbove* passing, uint32_t* last_cell) {
  const Block block = walk->block;
  const uint8_t* end = block.base + passing->end;
  passing->learned = kNotLearning;
  do {
    PassPause(walk, passing, last_cell);
    passing->place = Place::kElsewhere;
    PassOver(walk, UINT32_MAX, [passing, &block, end, last_cell](const uint8_t* record) {
      return record != end && PassesOne(passing, block, record, last_cell);
    });
    if (passing->place == Place::kRowRecord) PassRowRecords(walk, *passing);
    if (passing->place == Place::kNextRow) PassNextRows(walk, passing, last_cell);
    if (passing->place == Place::kElsewhere && StandsAtPrivate(*walk, passing->end)) {
      passing->learned = kNotLearning;
      passing->place = Place::kRowRecord;
      Step(walk);
    }
  } while (passing->place != Place::kElsewhere);
}

}  // namespace tolvenar
