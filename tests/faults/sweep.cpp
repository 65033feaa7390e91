// The sweeps, and the one run that they are made of.
#include "faults/sweep.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "faults/fault_seam.h"
#include "faults/live_block_table.h"
#include "foundation/memory_pool.h"

namespace tolvenar::testing {

namespace {

constexpr int kMostRequests = 5000;

int LiveBlocks() {
  return static_cast<int>(MEMORYHANDLES(nullptr, 0));
}

// Takes `count` of the free blocks. False when there are not as many.
bool TakeBlocks(size_t count, bool largest) {
  std::vector<uint32_t> free;
  while (const uint32_t block = MEMORYALLOC(1)) free.push_back(block);
  if (free.size() < count) return false;
  if (largest) std::reverse(free.begin(), free.end());
  for (size_t i = count; i < free.size(); ++i) MEMORYFREE(&free[i]);
  return true;
}

// The caller's side before a call.
struct Before {
  explicit Before(const Ground& ground)
      : buffer(ground.buffer), size(ground.size), table(ground.table), bytes(BlockContents(buffer, size)) {}

  uint32_t buffer;
  uint32_t size;
  uint32_t table;
  Bytes bytes;
};

bool IsLive(uint32_t handle) {
  return MEMORYISHANDLE(handle) != 0;
}

bool IsKept(const Before& before, const Ground& after) {
  return after.buffer == before.buffer && (before.buffer == 0 || IsLive(after.buffer)) &&
         after.table == before.table && BlockContents(after.buffer, before.size) == before.bytes;
}

bool IsLeftAs(Leaves leaves, const Before& before, const Ground& after) {
  switch (leaves) {
    case Leaves::kNone:
      return after.buffer == 0;
    case Leaves::kUnchanged:
      return IsKept(before, after) && after.size == before.size;
    case Leaves::kKept:
      return IsKept(before, after);
    case Leaves::kLive:
      return IsLive(after.buffer);
    case Leaves::kReleased:
      return after.buffer == 0 && !IsLive(before.buffer);
    case Leaves::kStale:
      return after.buffer != 0 && !IsLive(after.buffer);
    case Leaves::kLiveOrReleased:
      return after.buffer == 0 ? !IsLive(before.buffer) : IsLive(after.buffer);
    case Leaves::kAny:
      return true;
  }
  return false;
}

// Holds a result against what the call may answer. Where nothing is said of the buffer the variable is not stale.
void CheckResult(const Call& call, int32_t result, const Before& before, const Ground& after) {
  for (const Failure& failure : call.failures) {
    if (failure.result != result) continue;
    EXPECT_TRUE(IsLeftAs(failure.leaves, before, after))
        << "after " << result << " the buffer is not as stated";
    return;
  }
  EXPECT_EQ(call.done.count(result), 1u) << result << " is no result of it here";
  EXPECT_TRUE(after.buffer == 0 || IsLive(after.buffer)) << "after " << result << " the buffer is stale";
}

}  // namespace

Outcome RunOnce(const Call& call, Ground* ground, int taken, int32_t* result) {
  const Before before(*ground);
  *result = call.run(*ground);
  CheckResult(call, *result, before, *ground);
  ground->Release();
  const int lost = std::max(LiveBlocks() - taken, 0);
  EXPECT_TRUE(MayStay(call.name, *result, lost))
      << "after " << *result << ", " << lost << " blocks stay live";
  return {call.name, *result, lost};
}

Outcomes RefuseEachRequest(const Call& call) {
  Outcomes outcomes;
  for (int k = 0; k < kMostRequests; ++k) {
    SCOPED_TRACE(call.name + " " + call.label + ", request " + std::to_string(k));
    Ground ground;
    call.prepare(ground);
    int32_t result = 0;
    const Fault fault(Fault::kPool, k);
    outcomes.insert(RunOnce(call, &ground, 0, &result));
    if (fault.fired()) continue;
    EXPECT_EQ(call.done.count(result), 1u) << result;
    return outcomes;
  }
  ADD_FAILURE() << call.name << " never comes to an end of its requests";
  return outcomes;
}

Outcomes TakeBlocksBefore(const Call& call, bool largest) {
  Outcomes outcomes;
  for (int taken = 0; taken <= kSlotCount; ++taken) {
    SCOPED_TRACE(call.name + " " + call.label + ", " + std::to_string(taken) + " blocks taken");
    Ground ground;
    call.prepare(ground);
    if (!TakeBlocks(static_cast<size_t>(taken), largest)) break;
    int32_t result = 0;
    outcomes.insert(RunOnce(call, &ground, taken, &result));
  }
  return outcomes;
}

bool RefuseEachSlot(const Call& call) {
  for (int k = 0; k <= kSlotCount; ++k) {
    SCOPED_TRACE(call.name + " " + call.label + ", slot " + std::to_string(k));
    Ground ground;
    call.prepare(ground);
    if (LiveBlocks() != 0) return false;
    MEMORYFREEALL();
    int32_t result = 0;
    {
      const Fault fault(Fault::kHeap, k);
      RunOnce(call, &ground, 0, &result);
      if (!fault.fired()) return k == kSlotCount;
    }
    EXPECT_EQ(LiveBlocks(), 0);
    GiveLostSlots();
    ground.buffer = ground.table = 0;
    RunOnce(call, &ground, 0, &result);  // the next call sets the pool up
    EXPECT_EQ(call.done.count(result), 1u) << result;
  }
  return false;
}

}  // namespace tolvenar::testing
