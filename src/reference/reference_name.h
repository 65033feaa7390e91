// The name of a reference's stream: made in a pool block of 8 bytes, handed on with a terminator.
#pragma once

#include <cstdint>

#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"

namespace tolvenar {

constexpr uint32_t kReferenceNameSize = 8;

// A pool block with the name of `id`; 0 when the pool has none.
inline uint32_t MakeReferenceName(int32_t id) {
  const uint32_t block = MEMORYALLOC(static_cast<int32_t>(kReferenceNameSize));
  if (block != 0) StreamNameFromId(BlockBytes(block), id);
  return block;
}

// The name in a block, zero-terminated.
struct ReferenceName {
  char text[kReferenceNameSize + 1];

  explicit ReferenceName(uint32_t block) : text{} {
    CopyOut(OpenBlock(block), 0, reinterpret_cast<uint8_t*>(text), kReferenceNameSize);
  }
};

}  // namespace tolvenar
