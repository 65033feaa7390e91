// New records for graphs.
#include "reference/graph_visit.h"

#include "foundation/memory_pool.h"

namespace tolvenar {

uint32_t NewGraphRecord(uint16_t type, uint32_t count) {
  const uint32_t record = MEMORYALLOC(static_cast<int32_t>(count));
  const Block block = OpenBlock(record);
  PutU16(block, kRecordTypeLow, type);
  PutU16(block, kRecordLength, static_cast<uint16_t>(count - kHeaderSize));
  return record;
}

}  // namespace tolvenar
