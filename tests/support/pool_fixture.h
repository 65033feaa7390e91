// A test that starts with an unset pool and leaves none behind.
#pragma once

#include <gtest/gtest.h>

#include "foundation/memory_pool.h"

namespace tolvenar::testing {

class PoolTest : public ::testing::Test {
 protected:
  void SetUp() override { MEMORYFREEALL(); }
  void TearDown() override { MEMORYFREEALL(); }

  static uint32_t LiveBlocks() {
    uint32_t bytes = 0;
    return MEMORYHANDLES(&bytes, 0);
  }

  static uint32_t BytesInUse() {
    uint32_t bytes = 0;
    MEMORYHANDLES(&bytes, 0);
    return bytes;
  }
};

}  // namespace tolvenar::testing
