// Failing the general allocator on purpose: while an AllocationFault lives, the k-th request that may fail
// without throwing (the only kind that the layers above the platform make) answers null, once. On request
// those that throw are counted and failed too, and all that come after the k-th. Beside that, how large
// requests are.
//
//   AllocationFault fault(0);           the next such request fails
//   EXPECT_EQ(NarrowToWide("x"), nullptr);
//   EXPECT_TRUE(fault.fired());
#pragma once

#include <cstddef>

namespace tolvenar::testing {

class AllocationFault {
 public:
  enum class Requests { kNothrow, kAll };
  enum class Lasting { kOnce, kForGood };

  // `k` requests are served before the one that fails.
  explicit AllocationFault(int k, Requests requests = Requests::kNothrow, Lasting lasting = Lasting::kOnce);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;

  bool fired() const;
};

// The most bytes that one request to the general allocator has asked for since ForgetRequests.
std::size_t LargestRequest();
void ForgetRequests();

}  // namespace tolvenar::testing
