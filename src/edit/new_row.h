// A new ROW record: made from another one, then patched into the walk as often as it is needed.
//
//   OFFSET  SIZE  FIELD               FROM
//        0     2  type                0x0208
//        2     2  length              16
//        4     2  row, 0-based        set for each patch
//        6    14  columns and looks   the same bytes of the ROW it is made from
//
// Invariant: the record lives in a pool block of 20 bytes that is released after the last patch; a patch that
// fails leaves it live, on purpose.
#pragma once

#include <cstdint>

namespace tolvenar {

struct NewRow {
  uint32_t block = 0;
};

// Makes the record from the ROW at `source`. False when no pool block can be had.
bool MakeNewRow(uint32_t buffer, uint32_t source, NewRow* made);

// Puts it into the walk in front of the record at `place`, as row `row` (0-based). RESULT 0; 10 the patch
// failed, and when the buffer could not grow it is released and *buffer is 0; 11 *buffer is 0 after a patch
// that succeeded, which can't be.
int16_t PatchNewRow(uint32_t* buffer, uint32_t* size, uint32_t place, int16_t row, const NewRow& made);

void ReleaseNewRow(NewRow* made);

}  // namespace tolvenar
