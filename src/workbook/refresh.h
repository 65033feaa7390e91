// Keeping a RecordBuffer in shape without a file: the compaction in memory, and the records that go stale
// when others move.
#pragma once

#include <cstdint>

namespace tolvenar {

// Does to the buffer what a save does, in memory: a new block without patch records replaces *buffer, *size
// is its size, the BOUNDSHEETs and the table's entries hold the new offsets, and a BUFEND takes the last 4
// bytes. Takes one more pool block of the buffer's size for the time of the call. A null pointer, and a
// handle that names no live block, count as 0.
// RESULT: 0 done; 2 *buffer is 0; 3 the table is 0; 4 no pool block for the copy; 12 the last sheet has no
// closing EOF; 6 the cut failed. With any result but 0 the buffer is unchanged; at 12 and 6 the table's entries
// have been overwritten and don't fit it, on purpose.
int16_t XLRefreshHandles(uint32_t* buffer, uint32_t table, uint32_t* size);

// Turns every INDEX and DBCELL of the walk into SLACK, as it does any record with these low bytes and the
// chart bit clear: the row offsets in them go stale when records move.
// RESULT: 0 done, also for a size of 1 or less; 1 the buffer is 0.
int16_t XLDeleteDBCells(uint32_t buffer, uint32_t size);

}  // namespace tolvenar
