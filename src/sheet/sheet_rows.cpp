// A run of ROW records from one template.
#include "sheet/sheet_rows.h"

#include <cstring>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "sheet/sheet_skeleton.h"
#include "workbook/record_builders.h"

namespace tolvenar {

namespace {

constexpr uint32_t kReserve = 4096;

bool ReserveRows(SheetStream* stream, int32_t rows, RowRoom room) {
  const uint32_t row_bytes = static_cast<uint32_t>(rows) * kRowSize;
  stream->size += row_bytes + stream->at;
  const uint32_t capacity = MEMORYALLOCSIZE(stream->buffer);
  if (static_cast<int32_t>(stream->size) <= static_cast<int32_t>(capacity)) return true;
  const uint32_t wanted = (room == RowRoom::kWhole ? stream->size : stream->size - capacity) + kReserve;
  const uint32_t moved = MEMORYREALLOC(stream->buffer, static_cast<int32_t>(wanted));
  if (moved == 0) return false;
  stream->buffer = moved;
  return true;
}

// Where the room was not reserved, the buffer grows as AppendBytes would grow it.
bool CopyRow(SheetStream* stream, const uint8_t* row) {
  const Block block = OpenBlock(stream->buffer);
  if (uint8_t* to = At(block, stream->at, kRowSize)) {
    std::memcpy(to, row, kRowSize);
    stream->at += kRowSize;
    return true;
  }
  int32_t capacity = static_cast<int32_t>(block.extent);
  const int32_t behind = AppendBytesTracked(&stream->buffer, &stream->size, static_cast<int32_t>(stream->at),
                                            row, kRowSize, &capacity);
  if (behind < 0) return false;
  stream->at = static_cast<uint32_t>(behind);
  return true;
}

bool CopyRows(SheetStream* stream, uint8_t* row, int32_t rows) {
  if (!CopyRow(stream, row)) return false;
  for (int32_t r = 1; r < rows; ++r) {
    WriteU16(row + kRowNumber, static_cast<uint16_t>(r));
    if (!CopyRow(stream, row)) return false;
  }
  return true;
}

}  // namespace

bool AppendRows(SheetStream* stream, int32_t columns, int32_t rows, int32_t reserved_rows, RowRoom room) {
  uint32_t size = 0;
  uint32_t row = MakeRowRecord(&size, 0, 0, static_cast<uint32_t>(columns), kNewRowHeight);
  const bool copied =
      row != 0 && ReserveRows(stream, reserved_rows, room) && CopyRows(stream, BlockBytes(row), rows);
  MEMORYFREE(&row);
  if (!copied) MEMORYFREE(&stream->buffer);
  return copied;
}

}  // namespace tolvenar
