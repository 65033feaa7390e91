// Sweeps: a call repeated with one more of its requests served each time, until all are; and with ever more of the pool taken before.
// Each run is held against what the call may answer, what then becomes of the buffer, and the blocks that may stay live.
#pragma once

#include <set>
#include <tuple>

#include "faults/calls.h"

namespace tolvenar::testing {

// Export, result, blocks that stayed live with nobody to hold them.
using Outcome = std::tuple<std::string, int32_t, int>;
using Outcomes = std::set<Outcome>;

// One run on prepared ground, of whose blocks `taken` are nobody's. Stores the result of the call in *result.
Outcome RunOnce(const Call& call, Ground* ground, int taken, int32_t* result);

// Refuses the first request for a block, then the second, and so on. Returns what was seen.
Outcomes RefuseEachRequest(const Call& call);

// Takes 0, 1, ... 9 blocks before the call, as far as its ground leaves that many: the smallest, or the largest.
Outcomes TakeBlocksBefore(const Call& call, bool largest);

// For a call that sets the pool up, as its ground takes no block: refuses the memory of the first slot, of the second, and so on.
// Returns whether it is such a call.
bool RefuseEachSlot(const Call& call);

}  // namespace tolvenar::testing
