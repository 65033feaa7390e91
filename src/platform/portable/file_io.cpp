// Whole reads and writes: an interrupted or partial call is taken up again where it stopped.
#include "platform/portable/file_io.h"

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace tolvenar::platform {

namespace {

// A single call moves at most this much; larger counts are refused or cut by some systems.
constexpr uint64_t kLargestCall = 1u << 30;

}  // namespace

HRESULT ResultOfError(int error, HRESULT otherwise) {
  switch (error) {
    case ENOENT:
      return kStgFileNotFound;
    case ENOTDIR:
    case ELOOP:
    case ENAMETOOLONG:
      return kStgPathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EBUSY:
    case ETXTBSY:
      return kStgAccessDenied;
    case EEXIST:
      return kStgFileAlreadyExists;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return kStgMediumFull;
    case ENOMEM:
    case EMFILE:
    case ENFILE:
      return kStgInsufficientMemory;
    default:
      return otherwise;
  }
}

uint64_t ReadAt(int file, uint64_t at, void* bytes, uint64_t count, bool* failed) {
  uint8_t* to = static_cast<uint8_t*>(bytes);
  uint64_t done = 0;
  while (done < count) {
    const size_t part = static_cast<size_t>(std::min(count - done, kLargestCall));
    const ssize_t got = pread(file, to + done, part, static_cast<off_t>(at + done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) *failed = true;
    if (got <= 0) break;
    done += static_cast<uint64_t>(got);
  }
  return done;
}

HRESULT WriteAt(int file, uint64_t at, const void* bytes, uint64_t count) {
  const uint8_t* from = static_cast<const uint8_t*>(bytes);
  uint64_t done = 0;
  while (done < count) {
    const size_t part = static_cast<size_t>(std::min(count - done, kLargestCall));
    const ssize_t put = pwrite(file, from + done, part, static_cast<off_t>(at + done));
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return ResultOfError(errno, kStgWriteFault);
    if (put == 0) return kStgWriteFault;
    done += static_cast<uint64_t>(put);
  }
  return S_OK;
}

void CloseFile(int* file) {
  if (*file >= 0) close(*file);
  *file = -1;
}

}  // namespace tolvenar::platform
