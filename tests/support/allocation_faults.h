// Failing the general allocator on purpose: while an AllocationFault lives, the k-th request that may fail
// without throwing (the only kind that the library makes) answers null, once.
//
//   AllocationFault fault(0);           the next such request fails
//   EXPECT_EQ(NarrowToWide("x"), nullptr);
//   EXPECT_TRUE(fault.fired());
#pragma once

namespace tolvenar::testing {

class AllocationFault {
 public:
  // `k` requests are served before the one that fails.
  explicit AllocationFault(int k);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;

  bool fired() const;
};

}  // namespace tolvenar::testing
