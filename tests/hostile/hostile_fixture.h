// What is held against a call on costly bytes: how its time grows from one size to ten times that size, and its memory.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "foundation/memory_pool.h"
#include "hostile/cost.h"
#include "platform/bytes.h"
#include "support/stream_builder.h"
#include "support/temp_file.h"
#include "tolvenar/tolvenar.h"

namespace tolvenar::testing {

// Under a sanitizer the input is small and its time is not compared: what it tells there is that nothing leaves its block.
#if defined(TOLVENAR_SANITIZED)
constexpr size_t kSmallSize = 30000;
constexpr bool kTimeIsCompared = false;
#else
constexpr size_t kSmallSize = 1600000;
constexpr bool kTimeIsCompared = true;
#endif

class HostileTest : public ::testing::Test {
 protected:
  static constexpr size_t kSmall = kSmallSize;  // in bytes
  static constexpr size_t kLarge = 10 * kSmall;
  static constexpr double kMostGrowth = 25;
  static constexpr double kShortest = 0.01;  // in seconds; what is over sooner is not compared
  static constexpr double kLongest = 4;      // for the large size
  static constexpr int kTries = 4;
  static constexpr size_t kMemoryFactor = 5;
  static constexpr size_t kMemoryBeside = 8u << 20;

  // Takes every page of the pool, so that its own memory is not held against a call.
  void SetUp() override {
    ::MEMORYFREEALL();
    for (size_t i = 0; i < slots_.size(); ++i) slots_[i] = ::MEMORYALLOC(kCapacities[i]);
    ReleaseAll();
  }
  void TearDown() override { ::MEMORYFREEALL(); }

  // Puts bytes into the pool, which has no other block then.
  uint32_t Load(const Bytes& bytes) {
    ReleaseAll();
    const uint32_t buffer = ::MEMORYALLOC(static_cast<int32_t>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), BlockBytes(buffer));
    return buffer;
  }

  // Holds the time of the large one against that of the small one, and its memory against its size in bytes. Measures anew while a bound on
  // time is not kept: other programs can only slow a call down.
  template <typename Small, typename Large>
  void ExpectGrowth(const std::string& name, size_t file, Small small, Large large) {
    Cost cost = {1e9, 0};
    double few = 0;
    double most = 0;
    for (int i = 0; i < kTries && cost.seconds > most; ++i) {
      few = small().seconds;
      const Cost again = large();
      cost = {std::min(cost.seconds, again.seconds), std::max(cost.bytes, again.bytes)};
      most = kTimeIsCompared ? std::min(kLongest, kMostGrowth * std::max(few, kShortest)) : kLongest;
    }
    std::printf("%-24s %8.1f ms %8.1f ms %8zu KB\n", name.c_str(), few * 1000, cost.seconds * 1000,
                cost.bytes / 1024);
    std::fflush(stdout);
    EXPECT_LE(cost.seconds, most) << name << ": " << few << " s for a tenth of it";
    EXPECT_LE(cost.bytes, kMemoryFactor * file + kMemoryBeside) << name;
  }

  TempFolder folder_;

 private:
  static constexpr std::array<int32_t, 9> kCapacities = {256,     512,     1024,      33000,    100000,
                                                         1000000, 1500000, 105000000, 105000000};

  void ReleaseAll() {
    for (uint32_t slot : slots_) ::MEMORYFREE(&slot);
  }

  std::array<uint32_t, 9> slots_ = {};
};

}  // namespace tolvenar::testing
