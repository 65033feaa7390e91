// A test on a ReferenceBuffer, and records as they stand in one.
#pragma once

#include <optional>

#include "foundation/memory_pool.h"
#include "reference/compact_reference.h"
#include "reference/reference_binding.h"
#include "reference/reference_directory.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/buffer_end.h"

namespace tolvenar::testing {

const Bytes kNewStream = {0xFF, 0x10, 4, 0, 8, 0, 0, 0, 0xDA, 0x10, 4, 0, 0, 0, 0, 0,
                          0xDB, 0x10, 4, 0, 0, 0, 0, 0, 0xFE, 0x10, 4, 0, 0, 0, 0, 0};

// Records of one field, and objects of a head and an end.
inline Bytes RefRecord(uint8_t low, uint32_t field) {
  return Bytes{low, 0x10, 4, 0} + U32(field);
}
inline Bytes Entry(uint16_t kind_word, uint16_t id, uint32_t offset) {
  return Bytes{0xDC, 0x10, 8, 0} + U16(kind_word) + U16(id) + U32(offset);
}
inline Bytes TableHead(uint16_t id) {
  return Bytes{0xDF, 0x10, 10, 0} + U16(id) + Bytes{1, 0, 1, 0, 1, 0, 1, 0};
}
inline Bytes GraphHead(uint16_t id) {
  return Bytes{0xFC, 0x10, 4, 0} + U16(id) + U16(0);
}
inline Bytes EditHead(uint8_t number_less_1, uint16_t id) {
  return Bytes{0xFB, 0x10, 5, 0, number_less_1} + U16(id) + U16(7);
}
const Bytes kTableEnd = {0xE0, 0x10, 0, 0};
const Bytes kGraphEnd = {0xE2, 0x10, 0, 0};
const Bytes kEditEnd = {0xE1, 0x10, 0, 0};
inline Bytes Value(uint32_t cell, uint32_t low) {
  return Bytes{0xD4, 0x10, 12, 0} + U32(cell) + U32(low) + U32(0);
}

class ReferenceTest : public PoolTest {
 protected:
  void Load(const Bytes& stream) { buffer_ = StreamBuilder().Raw(stream).Load(&size_); }

  int16_t Create(uint16_t id, uint16_t kind_word, const Bytes& head_and_end) {
    return CreateRefObject(&buffer_, &size_, id, kind_word, head_and_end.data(),
                           static_cast<uint32_t>(head_and_end.size()));
  }
  int16_t CreateTable(uint16_t id) { return Create(id, kKindTable, TableHead(id) + kTableEnd); }
  int16_t CreateGraph(uint16_t id) { return Create(id, kKindGraph, GraphHead(id) + kGraphEnd); }

  // Walks table or graph `id`; its end's offset, and that of the last VALUE in it.
  struct Found {
    int16_t result = 0;
    bool seen = false;
    uint32_t end = 0;
    uint32_t value = kNoRecord;
    uint32_t values = 0;
  };
  Found Find(uint16_t id, uint16_t kind_word) const {
    Found found;
    ObjectWalk object;
    found.result = StartObject(buffer_, id, kind_word, &object);
    if (found.result != kRefDone) return found;
    for (; !object.ended; StepObject(&object)) {
      if (!IsChart(object.walk.block, object.walk.at, kLowTableValue)) continue;
      found.value = object.walk.at;
      ++found.values;
    }
    found.seen = object.seen;
    found.end = object.walk.at;
    return found;
  }

  // Appends a VALUE to an object, or replaces its last one.
  int16_t Put(uint16_t id, uint16_t kind_word, const Bytes& bytes, bool replace = false) {
    const Found found = Find(id, kind_word);
    if (found.result != kRefDone) return found.result;
    uint32_t record = MEMORYALLOC(static_cast<int32_t>(bytes.size()));
    CopyIn(OpenBlock(record), 0, bytes.data(), static_cast<uint32_t>(bytes.size()));
    const int16_t result = PutObjectRecord(&buffer_, &size_, replace ? found.value : kNoRecord, found.end,
                                           &record, static_cast<uint32_t>(bytes.size()));
    EXPECT_EQ(record, 0u);
    return result;
  }

  Block Stream() const { return OpenBlock(buffer_); }

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
};

}  // namespace tolvenar::testing
