// SheetTable: where the sheets of a RecordBuffer begin and end, so that a query goes straight to a sheet. A pool block of i32 entries:
//
//   ENTRY               CONTENT
//   0                   count of BOUNDSHEET records in the globals
//   1                   0, the offset of the globals BOF
//   2 .. count + 1      offset of each sheet's BOF, in the order of the BOUNDSHEETs
//   count + 2           offset of the EOF that closes the last sheet
//
// Invariant: an entry is read and written through the gate of record_stream.h; one outside the block reads as 0. A table that is no live
// block thus has no sheets.
#pragma once

#include <cstdint>

#include "foundation/biff_records.h"

namespace tolvenar {

constexpr uint32_t kTableEntrySize = 4;
constexpr uint32_t kTableGlobalsBegin = 1;  // entry of the globals BOF
constexpr uint32_t kTableFirstSheet = 2;    // entry of the first sheet
constexpr uint32_t kTableExtraEntries = 3;  // entries beside the sheets'

inline uint32_t TableEntry(const Block& table, uint32_t entry) {
  return U32At(table, entry * kTableEntrySize);
}

inline void PutTableEntry(const Block& table, uint32_t entry, uint32_t value) {
  PutU32(table, entry * kTableEntrySize, value);
}

// Count of sheets: the low 16 bits of entry 0, signed.
inline int16_t TableCount(const Block& table) {
  return static_cast<int16_t>(TableEntry(table, 0));
}

// Where the globals end for a query: the first sheet's BOF less 4, the offset of the globals EOF.
inline uint32_t GlobalsEnd(const Block& table) {
  return TableEntry(table, kTableFirstSheet) - kEofSize;
}

// Extent of sheet `sheet` (1-based, trusted): from its BOF to its EOF, where a walk stops at exact equality. The last sheet's end is its
// entry as it stands, any other's the next BOF less 4.
struct SheetExtent {
  uint32_t begin;
  uint32_t end;
};
SheetExtent ExtentOfSheet(const Block& table, int16_t sheet);

// Makes the SheetTable of `buffer` (`size` bytes). *table is the caller's, to be released with XLFreeHandle;
// a table that a null `table` can't take is released.
// RESULT: 0 made; 1 the buffer is no live pool block; 9 no EOF in the stream, or a size of 1 or less; 11 no
// pool block for the table; 12 the last sheet is not closed below the limit. On failure *table is 0; at 9, 11
// and 12 the buffer has been released, and the
// caller's own variable still names it, on purpose.
int16_t XLLocateSheets(uint32_t buffer, uint32_t* table, uint32_t size);

}  // namespace tolvenar
