// A record as a builder made it: its bytes, with the block released again.
#pragma once

#include <gtest/gtest.h>

#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"
#include "support/stream_builder.h"
#include "workbook/biff_version.h"

namespace tolvenar::testing {

// The bytes of a block that a builder gave, as hexadecimal text; the block's size must be what it reported.
inline std::string Made(uint32_t block, uint32_t size) {
  EXPECT_NE(block, 0u);
  EXPECT_EQ(MEMORYSIZE(block), size);
  const std::string bytes = Hex(BlockContents(block, size));
  MEMORYFREE(&block);
  return bytes;
}

// Sets the generation for the length of a test.
class Generation {
 public:
  explicit Generation(int32_t version) : before_(BiffVersion) { BiffVersion = version; }
  ~Generation() { BiffVersion = before_; }
  Generation(const Generation&) = delete;
  Generation& operator=(const Generation&) = delete;

 private:
  int32_t before_;
};

// Takes a block in each slot but the ones listed, so that the pool has just those left.
inline void TakeAllSlotsBut(std::initializer_list<int> free_slots) {
  uint32_t handles[kSlotCount];
  for (uint32_t& handle : handles) handle = MEMORYALLOC(1);
  for (int slot : free_slots) MEMORYFREE(&handles[slot - 1]);
}

}  // namespace tolvenar::testing
