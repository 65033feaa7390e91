// A new workbook in memory, with no file behind it and no sheet in it: the globals alone.
//
//   BIFF5   1168 bytes   63 records     BOF at 0, the first record behind it at 12
//   BIFF8   1382 bytes   65 records     BOF at 0, the first record behind it at 20
//
// Invariants: (1) The buffer has no BUFEND: it ends with the globals EOF. (2) What the factory does not serve
// leaves nothing, so that one list makes both generations.
#pragma once

#include <cstdint>

namespace tolvenar {

// The selector that makes a BIFF8 workbook; every other value makes BIFF5.
constexpr int32_t kSelectBiff8 = 8;

// Makes an empty book and sets BiffVersion to its generation, for all that follows. Result: 0 made: *buffer
// is the caller's, *size the offset behind its EOF; -1 no pool block for the buffer: nothing has changed,
// BiffVersion either; -2 an append failed: the buffer is released, *buffer and *size are unchanged. A record
// for which the pool has no block is silently missing.
int16_t XLCreateEmptyBook(uint32_t* buffer, uint32_t* size, int32_t selector);

// Makes the SheetTable of a new book, as XLLocateSheets does, but takes any buffer except 0, and where there
// is no BOUNDSHEET entry 2 is the offset behind the globals EOF, which is the size of a fresh book. Result: 0
// made, *table is the caller's; 1 the buffer is 0; 9 no EOF below the limit; 11 no pool block for the table;
// 12 the last sheet has no EOF below the limit. On failure *table is 0; at 9, 11 and 12 the buffer has been
// released, and the caller's own variable still names it.
int16_t XLEmptyBookLocateSheets(uint32_t buffer, uint32_t* table, int32_t size);

}  // namespace tolvenar
