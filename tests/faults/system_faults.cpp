// The wrapped system calls: __wrap_X is what the library calls for X, __real_X is X.
#if !defined(_WIN32)

#include "faults/system_faults.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>

namespace tolvenar::testing {
namespace {

constexpr int kNone = -1;

SystemCall armed = SystemCall::kOpen;
Effect way;
int calls_left = kNone;
bool has_fired = false;

// The effect for this call; null when it is to be served.
const Effect* EffectOn(SystemCall kind) {
  if (calls_left == kNone || kind != armed) return nullptr;
  if (has_fired) return way.for_good ? &way : nullptr;
  if (calls_left-- != 0) return nullptr;
  calls_left = 0;
  has_fired = true;
  return &way;
}

// True, and errno is set, when the call is to fail.
bool Fails(SystemCall kind) {
  const Effect* effect = EffectOn(kind);
  if (effect != nullptr) errno = effect->error;
  return effect != nullptr;
}

// The same for calls that move bytes: how many of `count` are to be asked of the system; -1 for a failure.
ssize_t BytesServed(SystemCall kind, size_t count) {
  const Effect* effect = EffectOn(kind);
  if (effect == nullptr) return static_cast<ssize_t>(count);
  errno = effect->error;
  if (effect->error != 0) return -1;
  return effect->moves == Effect::kHalf ? static_cast<ssize_t>((count + 1) / 2) : 0;
}

}  // namespace

SystemFault::SystemFault(SystemCall kind, Effect effect, int n) {
  armed = kind;
  way = effect;
  calls_left = n;
  has_fired = false;
}

SystemFault::~SystemFault() {
  calls_left = kNone;
}

bool SystemFault::fired() const {
  return has_fired;
}

}  // namespace tolvenar::testing

using tolvenar::testing::BytesServed;
using tolvenar::testing::EffectOn;
using tolvenar::testing::Fails;
using tolvenar::testing::SystemCall;

// A call that fails as a whole, with -1.
#define TOLVENAR_WRAP(name, kind, parameters, arguments) \
  int __real_##name parameters;                          \
  int __wrap_##name parameters;                          \
  int __wrap_##name parameters {                         \
    return Fails(kind) ? -1 : __real_##name arguments;   \
  }

extern "C" {

TOLVENAR_WRAP(fstat, SystemCall::kLook, (int file, struct stat* status), (file, status))
TOLVENAR_WRAP(lstat, SystemCall::kLook, (const char* path, struct stat* status), (path, status))
TOLVENAR_WRAP(fstatat, SystemCall::kLook, (int folder, const char* name, struct stat* status, int flags),
              (folder, name, status, flags))
TOLVENAR_WRAP(access, SystemCall::kLook, (const char* path, int mode), (path, mode))
TOLVENAR_WRAP(flock, SystemCall::kLock, (int file, int operation), (file, operation))
TOLVENAR_WRAP(ftruncate, SystemCall::kCut, (int file, off_t size), (file, size))
TOLVENAR_WRAP(fsync, SystemCall::kFlush, (int file), (file))
TOLVENAR_WRAP(renameat, SystemCall::kName, (int folder, const char* from, int to_folder, const char* to),
              (folder, from, to_folder, to))
TOLVENAR_WRAP(renameat2, SystemCall::kName,
              (int folder, const char* from, int to_folder, const char* to, unsigned flags),
              (folder, from, to_folder, to, flags))
TOLVENAR_WRAP(linkat, SystemCall::kName,
              (int folder, const char* from, int to_folder, const char* to, int flags),
              (folder, from, to_folder, to, flags))
TOLVENAR_WRAP(unlinkat, SystemCall::kRemove, (int folder, const char* name, int flags), (folder, name, flags))

// This one gives its error as its result.
int __real_posix_fallocate(int file, off_t from, off_t count);
int __wrap_posix_fallocate(int file, off_t from, off_t count);
int __wrap_posix_fallocate(int file, off_t from, off_t count) {
  const auto* effect = EffectOn(SystemCall::kRoom);
  return effect != nullptr ? effect->error : __real_posix_fallocate(file, from, count);
}

ssize_t __real_pread(int file, void* bytes, size_t count, off_t at);
ssize_t __wrap_pread(int file, void* bytes, size_t count, off_t at);
ssize_t __wrap_pread(int file, void* bytes, size_t count, off_t at) {
  const ssize_t served = BytesServed(SystemCall::kRead, count);
  return served <= 0 ? served : __real_pread(file, bytes, static_cast<size_t>(served), at);
}

ssize_t __real_pwrite(int file, const void* bytes, size_t count, off_t at);
ssize_t __wrap_pwrite(int file, const void* bytes, size_t count, off_t at);
ssize_t __wrap_pwrite(int file, const void* bytes, size_t count, off_t at) {
  const ssize_t served = BytesServed(SystemCall::kWrite, count);
  return served <= 0 ? served : __real_pwrite(file, bytes, static_cast<size_t>(served), at);
}

// Their last arguments are there for some flags and commands only, and one word wide.
int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = va_arg(rest, mode_t);
  va_end(rest);
  return Fails(SystemCall::kOpen) ? -1 : __real_open(path, flags, mode);
}

int __real_openat(int folder, const char* name, int flags, ...);
int __wrap_openat(int folder, const char* name, int flags, ...);
int __wrap_openat(int folder, const char* name, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = va_arg(rest, mode_t);
  va_end(rest);
  return Fails(SystemCall::kOpen) ? -1 : __real_openat(folder, name, flags, mode);
}

int __real_fcntl(int file, int command, ...);
int __wrap_fcntl(int file, int command, ...);
int __wrap_fcntl(int file, int command, ...) {
  va_list rest;
  va_start(rest, command);
  void* argument = va_arg(rest, void*);
  va_end(rest);
  return Fails(SystemCall::kLock) ? -1 : __real_fcntl(file, command, argument);
}

}  // extern "C"

#endif  // !_WIN32
