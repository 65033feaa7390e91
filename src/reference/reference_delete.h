// Deleting an object: its entry is retired, and from its head to its end every record becomes SLACK but the jumps, without which the walk
// could not go on. What stands between objects stays until the next compaction, and nothing moves.
#pragma once

#include "reference/reference_directory.h"

namespace tolvenar {

// How an object is known while it is deleted.
struct DeletedObject {
  uint8_t head;  // low bytes of its first and last record
  uint8_t end;
  bool (*is_sought)(const Block&, uint32_t, uint16_t key);  // whether the head at an offset is the one
  uint16_t key;
};

// Retires the entry `id`, `kind_word` first and in any case, then the records.
// RESULT: 0. -1 no buffer; -997 no entry; -2 the head was not met.
int16_t DeleteListedObject(uint32_t buffer, uint16_t id, uint16_t kind_word, const DeletedObject& object);

// The same for a table or a graph, which are known by the id in their heads.
int16_t DeleteRefObject(uint32_t buffer, uint16_t id, uint16_t kind);

}  // namespace tolvenar
