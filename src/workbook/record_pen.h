// RecordPen: writes the fields of a record one behind the other into a new pool block, in the order in which
// the builders' tables list them.
//
//   RecordPen pen = StartRecord(kTypeBlank, kBlankSize, size);
//   WriteFields(&pen, row, column, xf);               each field in the width of its type
//   return pen.block;
//
// Invariants: (1) The pen never leaves the slot of its block, and writes nothing when the pool gave none. (2)
// The block is as large as the record says, and zero where nothing was written.
#pragma once

#include <cstdint>
#include <cstring>

#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"

namespace tolvenar {

struct RecordPen {
  uint32_t block = 0;  // 0: the pool refused
  Block room;
  uint32_t at = 0;  // where the next field goes
};

// Writes `count` bytes and moves on.
inline void WriteBytes(RecordPen* pen, const void* bytes, uint32_t count) {
  CopyIn(pen->room, pen->at, static_cast<const uint8_t*>(bytes), count);
  pen->at += count;
}

inline void WriteField(RecordPen* pen, uint8_t value) {
  WriteBytes(pen, &value, sizeof value);
}
inline void WriteField(RecordPen* pen, uint16_t value) {
  WriteBytes(pen, &value, sizeof value);
}
inline void WriteField(RecordPen* pen, uint32_t value) {
  WriteBytes(pen, &value, sizeof value);
}
inline void WriteField(RecordPen* pen, double value) {
  WriteBytes(pen, &value, sizeof value);
}

template <typename... Fields>
void WriteFields(RecordPen* pen, Fields... fields) {
  (WriteField(pen, fields), ...);
}

// Takes a block of `total` bytes and writes the header of a record whose payload is `length` bytes, which is
// not everywhere the rest of the block.
inline RecordPen StartRecordOfLength(uint16_t type, uint16_t length, uint32_t total) {
  RecordPen pen;
  pen.block = MEMORYALLOC(static_cast<int32_t>(total));
  pen.room = OpenBlock(pen.block);
  WriteFields(&pen, type, length);
  return pen;
}

// The same for a record that fills its block, and *size becomes `total`, also when the pool refuses.
inline RecordPen StartRecord(uint16_t type, uint32_t total, uint32_t* size) {
  *size = total;
  return StartRecordOfLength(type, static_cast<uint16_t>(total - kHeaderSize), total);
}

}  // namespace tolvenar
