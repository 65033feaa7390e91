// XLRefreshHandles and XLDeleteDBCells.
#include "workbook/refresh.h"

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "workbook/buffer_end.h"
#include "workbook/compaction.h"

namespace tolvenar {

namespace {

constexpr int16_t kDone = 0;
constexpr int16_t kDeleteNoBuffer = 1;
constexpr int16_t kNoBuffer = 2;
constexpr int16_t kNoTable = 3;

}  // namespace

int16_t XLRefreshHandles(uint32_t* buffer, uint32_t table, uint32_t* size) {
  if (buffer == nullptr || MEMORYISHANDLE(*buffer) == 0) return kNoBuffer;
  if (MEMORYISHANDLE(table) == 0) return kNoTable;
  uint32_t no_size = 0;
  if (size == nullptr) size = &no_size;
  uint32_t copy = 0;
  uint32_t copy_size = 0;
  const int16_t compacted = Compact(*buffer, table, *size, LengthField::kSigned, &copy, &copy_size);
  if (compacted != kCompacted) return compacted;
  MEMORYFREE(buffer);
  *buffer = copy;
  *size = copy_size;
  PutBufEnd(copy, copy_size);
  return kDone;
}

int16_t XLDeleteDBCells(uint32_t buffer, uint32_t size) {
  if (buffer == 0) return kDeleteNoBuffer;
  const int32_t limit = static_cast<int32_t>(size - 1);
  if (limit < 1) return kDone;
  const Block block = OpenBlock(buffer);
  for (Walk walk = StartWalk(block, 0); walk.at < static_cast<uint32_t>(limit) && !walk.ended; Step(&walk)) {
    if (IsPrivate(block, walk.at, kLowBufEnd)) break;
    if (IsPlain(block, walk.at, kLowIndex) || IsPlain(block, walk.at, kLowDbCell))
      MarkRecordSlack(block, walk.at);
  }
  return kDone;
}

}  // namespace tolvenar
