// Row layouts: the learning, and the comparing, which is what a search spends its time on. A walk from length to length looks at one record
// after the other; here all records of a row are looked at at once, where those of an earlier row had their places.
//
//   What is compared of a record, as a u64
//   OFFSET  SIZE  FIELD                          BITS     COMPARED
//        0     2  type                            0 - 15  with the layout's
//        2     2  n, length of the payload       16 - 31  with the layout's
//        4     2  row                            32 - 47  with the limit
//        6     2  column, or anything else       48 - 63  not at all
#include "edit/row_layouts.h"

#include <algorithm>
#include <bit>

#include "foundation/biff_records.h"

namespace tolvenar {

namespace {

constexpr uint32_t kComparedAtOnce = 4;  // records
constexpr int kHeaderBits = 32;
constexpr uint64_t kAllButColumn = 0xFFFFFFFF0000FFFF;  // with the header in the upper half

// How many records two layouts have in common at their beginning.
uint32_t CountInCommon(const RowLayout& a, const RowLayout& b) {
  const uint32_t both = std::min(a.count, b.count);
  uint32_t i = 0;
  while (i < both && a.records[i].header == b.records[i].header) ++i;
  return i;
}

// Gives the layout's table `count` records by repeating its first one, so that rows of either layout are compared in equally many steps.
void FillUp(RowLayout* layout, uint32_t count) {
  for (uint32_t i = layout->count; i < count; ++i) layout->records[i] = layout->records[0];
}

bool HasCell(const RowLayout& layout) {
  return layout.records[layout.count - 1].lastCell != kNoCellYet;
}

// May the two be expected side by side? Rows of either cost as much as those of the longer one.
bool GoTogether(const RowLayout& a, const RowLayout& b) {
  return HasCell(a) == HasCell(b) && std::max(a.count, b.count) <= 2 * std::min(a.count, b.count);
}

// Of the two layouts either both have a cell or none has: the last cell of some rows is then in the last one of them.
void Expect(RowLayouts* layouts, uint32_t plain, uint32_t forked, uint32_t fork) {
  RowLayout& without = layouts->places[plain];
  RowLayout& with = layouts->places[forked];
  layouts->plain = plain;
  layouts->forked = forked;
  layouts->forkOffset = with.records[fork].offset;
  layouts->forkHeader = static_cast<uint32_t>(with.records[fork].header);
  const uint32_t longest = std::max(without.count, with.count);
  layouts->count = (longest + kComparedAtOnce - 1) / kComparedAtOnce * kComparedAtOnce;
  layouts->span = std::max(without.span, with.span);
  FillUp(&without, layouts->count);
  FillUp(&with, layouts->count);
}

// Has the row that begins at `first` the layout, of which `count` records are looked at, and is it above the row `limit`? One answer for
// all its records, so that none waits for the one before it: from the bits in which headers differ, and from those of all their rows
// together. No row is higher than the number that these make, and where the row is the same in all of them it is that number.
bool IsRowAbove(const RowLayout& layout, uint32_t count, const uint8_t* first, uint32_t limit) {
  uint64_t bits = 0;
  const RowLayout::Record* record = layout.records.data();
  for (const RowLayout::Record* end = record + count; record != end; record += kComparedAtOnce) {
    const uint64_t a = ReadU64(first + record[0].offset) ^ record[0].header;
    const uint64_t b = ReadU64(first + record[1].offset) ^ record[1].header;
    const uint64_t c = ReadU64(first + record[2].offset) ^ record[2].header;
    const uint64_t d = ReadU64(first + record[3].offset) ^ record[3].header;
    bits |= (a | b) | (c | d);
  }
  return (std::rotl(bits, kHeaderBits) & kAllButColumn) < limit;
}

RowRun CountRowsOfOne(const RowLayouts& layouts, const uint8_t* first, uint32_t most, uint32_t limit) {
  const RowLayout& layout = layouts.places[layouts.plain];
  uint32_t rows = 0;
  for (; rows < most && IsRowAbove(layout, layouts.count, first, limit); ++rows) first += layout.span;
  return {rows, rows * layout.count, rows * layout.span, false};
}

// Nothing tells in advance which layout the next row has, and a branch on it would be mispredicted every other time. So there is none: the
// way to the next row goes through a number.
RowRun CountRowsOfTwo(const RowLayouts& layouts, const uint8_t* first, uint32_t most, uint32_t limit) {
  const RowLayout& plain = layouts.places[layouts.plain];
  const RowLayout& forked = layouts.places[layouts.forked];
  const uint32_t more_bytes = forked.span - plain.span;
  RowRun run;
  uint32_t forks_met = 0;
  const uint8_t* at = first;
  for (; run.rows < most; ++run.rows) {
    const bool forks = ReadU32(at + layouts.forkOffset) == layouts.forkHeader;
    if (!IsRowAbove(forks ? forked : plain, layouts.count, at, limit)) break;
    const uint32_t all_or_none = uint32_t{0} - uint32_t{forks};
    at += plain.span + (all_or_none & more_bytes);
    forks_met += uint32_t{forks};
    run.forks = forks;
  }
  run.bytes = static_cast<uint32_t>(at - first);
  run.records = forks_met * forked.count + (run.rows - forks_met) * plain.count;
  return run;
}

}  // namespace

void BeginDraft(RowLayouts* layouts, uint32_t count) {
  const RowLayout& begun = layouts->places[layouts->recent];
  RowLayout& draft = layouts->places[layouts->draft];
  std::copy_n(begun.records.begin(), count, draft.records.begin());
  draft.count = count;
  draft.span = count == 0 ? 0 : begun.records[count].offset;
  layouts->learning = true;
}

void Learn(RowLayouts* layouts, const uint8_t* record, bool is_cell) {
  RowLayout& draft = layouts->places[layouts->draft];
  if (!layouts->learning || draft.count == RowLayout::kMostRecords) return;
  const uint32_t i = draft.count++;
  const uint32_t last_cell = i == 0 ? kNoCellYet : draft.records[i - 1].lastCell;
  draft.records[i] = {ReadU32(record), draft.span, is_cell ? draft.span : last_cell};
  draft.span += kHeaderSize + ReadU16(record + kRecordLength);
}

void ExpectDraft(RowLayouts* layouts) {
  const uint32_t made = layouts->draft;
  const uint32_t kept = layouts->count != 0 ? layouts->recent : made;
  const RowLayout& draft = layouts->places[made];
  const RowLayout& other = layouts->places[kept];
  if (!layouts->learning || draft.count == 0) return;
  const uint32_t fork = CountInCommon(draft, other);
  if (made == kept || !GoTogether(draft, other)) {
    Expect(layouts, made, made, 0);
  } else if (fork < draft.count) {
    Expect(layouts, kept, made, fork);
  } else if (fork < other.count) {
    Expect(layouts, made, kept, fork);
  } else {
    return;
  }
  layouts->recent = made;
  layouts->draft = 0;
  while (layouts->draft == layouts->plain || layouts->draft == layouts->forked) ++layouts->draft;
}

RowRun CountRows(const RowLayouts& layouts, const uint8_t* first, uint32_t most, uint32_t limit) {
  return layouts.plain == layouts.forked ? CountRowsOfOne(layouts, first, most, limit)
                                         : CountRowsOfTwo(layouts, first, most, limit);
}

uint32_t CountBegin(const RowLayouts& layouts, const uint8_t* first, int16_t row) {
  const RowLayout& layout = layouts.places[layouts.recent];
  const auto is_as_expected = [first, row](const RowLayout::Record& record) {
    const uint8_t* at = first + record.offset;
    return ReadU32(at) == record.header && ReadI16(at + kCellRow) == row;
  };
  uint32_t i = 0;
  while (i < layout.count && is_as_expected(layout.records[i])) ++i;
  return i;
}

}  // namespace tolvenar
