// The pool refuses: each request of each export in turn, and all that it has no block for. The result is a stated one, the buffer is as
// stated, and no block stays live but those that docs/live-blocks.md names; each of these does.
#include <gtest/gtest.h>

#include "faults/fault_seam.h"
#include "faults/live_block_table.h"
#include "faults/sweep.h"
#include "support/pool_fixture.h"

namespace tolvenar::testing {

// How a failure message names a call.
void PrintTo(const Call& call, std::ostream* out) {
  *out << call.name << " " << call.label;
}

namespace {

class PoolFaults : public ::testing::TestWithParam<Call> {};

TEST_P(PoolFaults, ResultBufferAndLiveBlocksAreAsStated) {
  EXPECT_FALSE(RefuseEachRequest(GetParam()).empty());
  EXPECT_FALSE(TakeBlocksBefore(GetParam(), false).empty());
  EXPECT_FALSE(TakeBlocksBefore(GetParam(), true).empty());
}

INSTANTIATE_TEST_SUITE_P(Exports, PoolFaults, ::testing::ValuesIn(AllCalls()), [](const auto& call) {
  return call.param.name + (call.param.label.empty() ? "" : "_" + call.param.label);
});

using HeapFaults = PoolTest;

TEST_F(HeapFaults, SetUpThatFails_ResultIsAsStatedAndTheNextCallHasAPool) {
  int calls = 0;
  for (const Call& call : AllCalls()) calls += RefuseEachSlot(call) ? 1 : 0;
  EXPECT_GT(calls, 8) << "calls that set the pool up";
}

using LiveBlockRows = PoolTest;

// What all sweeps see of blocks that stay live.
const Outcomes& AllOutcomes() {
  static const Outcomes all = [] {
    Outcomes seen;
    for (const Call& call : AllCalls()) {
      seen.merge(RefuseEachRequest(call));
      seen.merge(TakeBlocksBefore(call, false));
      seen.merge(TakeBlocksBefore(call, true));
    }
    return seen;
  }();
  return all;
}

TEST_F(LiveBlockRows, EachRowOfTheDocumentComesAbout) {
  const std::vector<LiveBlockRow> rows = LiveBlockTable();
  EXPECT_GT(rows.size(), 20u);
  for (const LiveBlockRow& row : rows) {
    constexpr int kSheets = 2;
    const int blocks = row.for_each ? row.blocks * kSheets : row.blocks;
    EXPECT_EQ(AllOutcomes().count({row.name, row.result, blocks}), 1u)
        << row.name << " with " << row.result << " never leaves " << blocks << " blocks live";
  }
}

TEST_F(LiveBlockRows, EachExportIsCalled) {
  std::set<std::string> called;
  for (const Call& call : AllCalls()) called.insert(call.name);
  const std::vector<std::string> names = ExportNames();
  EXPECT_GT(names.size(), 90u);
  for (const std::string& name : names)
    EXPECT_EQ(called.count(name), 1u) << name << " is not among the calls";
}

TEST_F(LiveBlockRows, ARefusedRequestIsToldByTheFault) {
  const Fault fault(Fault::kPool, 1);
  uint32_t block = MEMORYALLOC(8);
  EXPECT_NE(block, 0u);
  EXPECT_EQ(MEMORYREALLOC(block, 16), 0u);
  EXPECT_TRUE(fault.fired());
  EXPECT_EQ(MEMORYREALLOC(block, 16), block);
}

TEST_F(LiveBlockRows, SlotsLostToAFailedSetUpCanBeGivenBack) {
  {
    const Fault fault(Fault::kHeap, 4);
    EXPECT_EQ(MEMORYALLOC(8), 0u);
    EXPECT_TRUE(fault.fired());
  }
  EXPECT_EQ(TakenSlots(), 4);
  GiveLostSlots();
  EXPECT_EQ(TakenSlots(), 0);
  EXPECT_NE(MEMORYALLOC(8), 0u);
  EXPECT_EQ(TakenSlots(), kSlotCount);
}

}  // namespace
}  // namespace tolvenar::testing
