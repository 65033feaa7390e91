// A new ROW record. The layout stands in new_row.h.
#include "edit/new_row.h"

#include "edit/row_column_edit.h"
#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"

namespace tolvenar {

bool MakeNewRow(uint32_t buffer, uint32_t source, NewRow* made) {
  made->block = MEMORYALLOC(kRowSize);
  if (made->block == 0) return false;
  uint8_t* record = BlockBytes(made->block);
  WriteU16(record + kRecordTypeLow, kTypeRow);
  WriteU16(record + kRecordLength, kRowSize - kHeaderSize);
  CopyOut(OpenBlock(buffer), source + kRowFirstColumn, record + kRowFirstColumn, kRowSize - kRowFirstColumn);
  return true;
}

int16_t PatchNewRow(uint32_t* buffer, uint32_t* size, uint32_t place, int16_t row, const NewRow& made) {
  uint8_t* record = BlockBytes(made.block);
  WriteU16(record + kRowNumber, static_cast<uint16_t>(row));
  if (PatchRecord(buffer, record, place, kRowSize, size) != kPatchDone) return kEditPatchFailed;
  return *buffer != 0 ? kEditDone : kEditBufferLost;
}

void ReleaseNewRow(NewRow* made) {
  MEMORYFREE(&made->block);
}

}  // namespace tolvenar
