// Writers of single cells: build, patch, release. The records stand in cell_writers.h.
#include "edit/cell_writers.h"

#include <bit>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"

namespace tolvenar {

namespace {

// Where a cell goes, and what all kinds of cell have.
struct Place {
  uint32_t* buffer;
  uint32_t* size;
  uint32_t offset;
  int16_t row;
  int16_t column;
  uint16_t xf;
};

// A cell record of `size` bytes in a scratch block, filled up to its XF. Returns its handle, or 0.
uint32_t MakeCell(const Place& place, uint16_t type, uint32_t size) {
  const uint32_t record = MEMORYALLOC(static_cast<int32_t>(size));
  if (record == 0) return 0;
  const Block block = OpenBlock(record);
  PutU16(block, kRecordTypeLow, type);
  PutU16(block, kRecordLength, static_cast<uint16_t>(size - kHeaderSize));
  PutU16(block, kCellRow, static_cast<uint16_t>(place.row - 1));
  PutU16(block, kCellColumn, static_cast<uint16_t>(place.column - 1));
  PutU16(block, kCellXf, place.xf);
  return record;
}

// Patches the record in and releases it. On failure it stays live, on purpose. A record longer than a patch
// can count fails here: the patch would count its low 16 bits only.
bool PatchCell(const Place& place, uint32_t record, uint32_t size) {
  if (size > INT16_MAX) return false;
  if (PatchRecord(place.buffer, BlockBytes(record), place.offset, size, place.size) != kPatchDone)
    return false;
  MEMORYFREE(&record);
  return true;
}

int16_t WriteNumber(const Place& place, uint64_t bytes) {
  const uint32_t record = MakeCell(place, kTypeNumber, kNumberSize);
  if (record == 0) return kWriteNoMemory;
  CopyIn(OpenBlock(record), kNumberValue, reinterpret_cast<const uint8_t*>(&bytes), sizeof bytes);
  return PatchCell(place, record, kNumberSize) ? kWriteDone : kWritePatchFailed;
}

}  // namespace

int16_t WriteBlankCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                       uint16_t xf) {
  const Place place = {buffer, size, offset, row, column, xf};
  const uint32_t record = MakeCell(place, kTypeBlank, kBlankSize);
  if (record == 0) return kWriteNoMemory;
  return PatchCell(place, record, kBlankSize) ? kWriteDone : kWritePatchFailed;
}

int16_t WriteIntegerCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                         uint16_t xf, int32_t value) {
  return WriteNumber({buffer, size, offset, row, column, xf},
                     std::bit_cast<uint64_t>(static_cast<double>(value)));
}

int16_t WriteFloatCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                       uint16_t xf, float value) {
  return WriteNumber({buffer, size, offset, row, column, xf},
                     std::bit_cast<uint64_t>(static_cast<double>(value)));
}

int16_t WriteDoubleCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                        uint16_t xf, uint64_t bytes) {
  return WriteNumber({buffer, size, offset, row, column, xf}, bytes);
}

int16_t WriteLabelCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                       uint16_t xf, BSTR text) {
  if (text == nullptr) return kLabelNullText;
  const Place place = {buffer, size, offset, row, column, xf};
  const uint32_t units = SysStringLen(text);
  const uint32_t record_size = kLabelFixed + units;
  const uint32_t record = MakeCell(place, kTypeLabel, record_size);
  if (record == 0) return kLabelNoMemory;
  const Block block = OpenBlock(record);
  PutU16(block, kLabelLength, static_cast<uint16_t>(units));
  for (uint32_t i = 0; i < units; ++i) PutU8(block, kLabelText + i, static_cast<uint8_t>(text[i]));
  return PatchCell(place, record, record_size) ? kWriteDone : kLabelPatchFailed;
}

}  // namespace tolvenar
