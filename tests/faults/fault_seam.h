// Faults between the library and what it stands on. The linker of this program leads the calls through the functions of fault_seam.cpp
// (--wrap), so that the library under test is the one that hosts get and knows nothing of it.
//
//   Fault fault(Fault::kPool, 2);               the third request for a pool block from here on is refused
//   EXPECT_EQ(XLRefreshHandles(...), 4);
//   EXPECT_TRUE(fault.fired());
//
// Invariants: (1) One Fault of each kind lives at a time. (2) Without one every call is served.
#pragma once

#include <cstdint>

namespace tolvenar::testing {

class Fault {
 public:
  enum Kind {
    kPool,          // MEMORYALLOC and MEMORYREALLOC, whoever calls them
    kHeap,          // the memory behind the pool
    kCommit,        // the commit of a compound file
    kCreateStream,  // the making of a stream in one
  };

  // Serves `k` calls of the kind and fails the next one, once.
  Fault(Kind kind, int k);
  ~Fault();
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;

  bool fired() const;

 private:
  Kind kind_;
};

// Gives back what the pool has lost to the process: slots taken in a set-up that then failed.
void GiveLostSlots();

// How many slots are taken from the system.
int TakenSlots();

}  // namespace tolvenar::testing
