// Row layouts: how the records of a row stand, as a search learns it from the rows that it passes.
//
// The rows of a report are laid out alike: the same kinds of record in the same order, of the same lengths. Where they are not, they mostly come
// in two kinds, as a column's values are an RK here and a NUMBER there. So two layouts are expected at a time, and told apart by the
// first record that only one of them has, the fork. A row that has neither is learned record by record, as a draft.
//
// Invariants: (1) What is counted as expected has the types and lengths of records that were judged one by one, follows without a gap, and is
// above the row of the limit: nothing is taken for granted. (2) The draft is never one of the two layouts that are expected.
#pragma once

#include <array>
#include <cstdint>

#include "foundation/record_stream.h"

namespace tolvenar {

struct RowLayout {
  struct Record {
    uint64_t header;    // type and length, as the lower half
    uint32_t offset;    // from the row's first record
    uint32_t lastCell;  // offset of the last cell among the records up to this one; kNoCellYet: there is none
  };
  static constexpr uint32_t kMostRecords = 256;  // of a longer row the first ones

  uint32_t count = 0;
  uint32_t span = 0;  // bytes of these records
  std::array<Record, kMostRecords> records;
};

constexpr uint32_t kNoCellYet = UINT32_MAX;

struct RowLayouts {
  bool learning = false;
  std::array<RowLayout, 3> places;
  uint32_t draft = 0;       // place of the layout that is being learned
  uint32_t recent = 0;      // place of the one that a row had last
  uint32_t forked = 0;      // place of the one that has a record which the other has not
  uint32_t plain = 0;       // place of the other; the same until a second one has been met
  uint32_t forkOffset = 0;  // of that record
  uint32_t forkHeader = 0;
  uint32_t count = 0;  // records that are compared of either, some twice; 0: nothing is expected
  uint32_t span = 0;   // bytes of the longer one
};

// Begins a draft with the first `count` records of the layout that a row had last, which has more of them when it is not 0.
void BeginDraft(RowLayouts* layouts, uint32_t count);

// Makes the record the draft's next one.
void Learn(RowLayouts* layouts, const uint8_t* record, bool is_cell);

// The row has come by in one piece: the draft, unless it is empty, is expected from now on, beside the layout that a row had last.
void ExpectDraft(RowLayouts* layouts);

// Rows that follow each other.
struct RowRun {
  uint32_t rows = 0;
  uint32_t records = 0;
  uint32_t bytes = 0;
  bool forks = false;  // the last one has the forked layout
};

// The rows from `first` on that are as expected and above the row `limit` (0-based; rows with the sign bit are not counted), at most
// `most`. REQUIRES: something is expected; as many spans and 8 bytes more can be read at `first`.
RowRun CountRows(const RowLayouts& layouts, const uint8_t* first, uint32_t most, uint32_t limit);

// How many records from `first` on, all of them of the row `row`, are those of the layout that a row had last. As above it can be read.
uint32_t CountBegin(const RowLayouts& layouts, const uint8_t* first, int16_t row);

}  // namespace tolvenar
