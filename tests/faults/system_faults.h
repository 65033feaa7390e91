// System calls that fail: the n-th of a kind that the library makes, in one of the ways in which a system lets a program down. The linker
// leads the calls through the functions of system_faults.cpp (--wrap). Not for Windows, where the system's own storage makes them.
//
//   SystemFault fault(SystemCall::kFlush, {EIO}, 1);        the second fsync from here on fails
//
// Invariant: one SystemFault lives at a time; without one every call is served.
#pragma once

namespace tolvenar::testing {

enum class SystemCall {
  kOpen,    // open, openat: files and folders, those that are made among them
  kRead,    // pread
  kWrite,   // pwrite
  kLook,    // fstat, fstatat, lstat, access
  kLock,    // flock, fcntl
  kRoom,    // posix_fallocate
  kCut,     // ftruncate
  kFlush,   // fsync
  kName,    // renameat, renameat2, linkat
  kRemove,  // unlinkat
};

// How a call goes wrong: with an error; or, for an error of 0, by moving half of the bytes (kHalf) or none (kNothing).
struct Effect {
  enum Moves { kNothing, kHalf };

  int error = 0;
  bool for_good = false;  // all calls of the kind that follow, too
  Moves moves = kNothing;
};

class SystemFault {
 public:
  SystemFault(SystemCall kind, Effect effect, int n);
  ~SystemFault();
  SystemFault(const SystemFault&) = delete;
  SystemFault& operator=(const SystemFault&) = delete;

  bool fired() const;
};

}  // namespace tolvenar::testing
