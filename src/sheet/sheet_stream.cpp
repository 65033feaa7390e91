// Appends to a sheet under construction.
#include "sheet/sheet_stream.h"

#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"
#include "workbook/default_records.h"

namespace tolvenar {

bool AppendRecord(SheetStream* stream, uint32_t record, uint32_t size) {
  const int32_t behind = AppendBytes(&stream->buffer, &stream->size, stream->at, record, size);
  if (behind < 0) return false;
  stream->at = static_cast<uint32_t>(behind);
  return true;
}

bool AppendDefault(SheetStream* stream, int16_t key, uint32_t variant) {
  uint32_t size = 0;
  const uint32_t record = MakeDefaultRecord(&size, key, variant);
  return AppendRecord(stream, record, size);
}

bool AppendBufEnd(SheetStream* stream, uint8_t high) {
  const uint32_t record = MEMORYALLOC(static_cast<int32_t>(kBufEndSize));
  const Block block = OpenBlock(record);
  PutU8(block, kRecordTypeLow, kLowBufEnd);
  PutU8(block, kRecordTypeHigh, high);
  return AppendRecord(stream, record, kBufEndSize);
}

}  // namespace tolvenar
