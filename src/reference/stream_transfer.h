// Whole transfers between a pool block and an open stream: what is not moved whole counts as failed.
#pragma once

#include <cstdint>

#include "foundation/memory_pool.h"
#include "workbook/stm_file.h"

namespace tolvenar {

// Reads the first `count` bytes of the stream into the block, which has room for them. False for a failed or a short read.
inline bool ReadWhole(StmFItem* item, uint32_t block, uint32_t count) {
  uint32_t moved = 0;
  return item->Read(BlockBytes(block), count, &moved) == kStmDone && moved == count;
}

// Writes the block's first `count` bytes at the stream's position. False for a failed or a short write.
inline bool WriteWhole(StmFItem* item, uint32_t block, uint32_t count) {
  uint32_t moved = 0;
  return item->Write(BlockBytes(block), count, &moved) == kStmDone && moved == count;
}

}  // namespace tolvenar
