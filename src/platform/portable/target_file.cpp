// Locks, the staged file, and the step that puts it in place.
#include "platform/portable/target_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#if defined(__linux__)
#include <sys/xattr.h>
#endif

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "platform/portable/file_io.h"

namespace tolvenar::platform {

namespace {

// A name can be given to another file between opening and locking it. Each time that happens the way is gone
// again, this often.
constexpr int kAttempts = 100;
constexpr int kLinkLimit = 40;
constexpr size_t kNameLimit = 255;
constexpr char kStageEnd[] = ".tolvenar";

#if defined(O_PATH)
constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
#else
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
#endif
// Without O_NONBLOCK a pipe put under the name in the meantime could hold the process up.
constexpr int kFileFlags = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;

// The name under which a new version of `name` is staged. A name too long to be lengthened is told by a hash
// of it.
std::string StageName(const std::string& name) {
  if (name.size() + sizeof kStageEnd <= kNameLimit) return "." + name + kStageEnd;
  uint64_t hash = 0xCBF29CE484222325u;
  for (const char byte : name) hash = (hash ^ static_cast<uint8_t>(byte)) * 0x100000001B3u;
  char text[2 * sizeof hash + 1];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
  return std::string(".") + text + kStageEnd;
}

// Follows `path` while it names a symbolic link, so that a link is not replaced but what it leads to. The
// link of a file that doesn't exist yet leads to where it is to be made.
HRESULT FollowLinks(std::string* path) {
  for (int hops = 0; hops < kLinkLimit; ++hops) {
    struct stat status;
    if (lstat(path->c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return S_OK;
    char link[4096];
    const ssize_t length = readlink(path->c_str(), link, sizeof link);
    if (length <= 0 || static_cast<size_t>(length) == sizeof link) return kStgPathNotFound;
    const size_t slash = path->rfind('/');
    const bool absolute = link[0] == '/';
    path->resize(absolute || slash == std::string::npos ? 0 : slash + 1);
    path->append(link, static_cast<size_t>(length));
  }
  return kStgPathNotFound;
}

// Splits `path` into an open folder and a name in it.
HRESULT OpenFolder(const std::string& path, TargetFile* target) {
  std::string whole = path;
  const HRESULT result = FollowLinks(&whole);
  if (result != S_OK) return result;
  const size_t slash = whole.rfind('/');
  target->name = slash == std::string::npos ? whole : whole.substr(slash + 1);
  if (target->name.empty()) return kStgPathNotFound;
  const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : whole.substr(0, slash);
  target->stage_name = StageName(target->name);
  target->folder = open(folder.c_str(), kFolderFlags);
  if (target->folder >= 0) return S_OK;
  const HRESULT error = ResultOfError(errno, kStgPathNotFound);
  return error == kStgFileNotFound ? kStgPathNotFound : error;
}

bool SameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// True when `name` in `folder` still is the file open as `file`.
bool NameHolds(int folder, const std::string& name, int file) {
  struct stat named;
  struct stat opened;
  return fstatat(folder, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 && fstat(file, &opened) == 0 &&
         SameFile(named, opened);
}

// RESULT: S_OK: nothing has the target's name; kStgFileAlreadyExists; another: nothing ever can, a name too
// long for the file system among it.
HRESULT CheckNameFree(const TargetFile& target) {
  struct stat status;
  if (fstatat(target.folder, target.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    return kStgFileAlreadyExists;
  }
  return errno == ENOENT ? S_OK : ResultOfError(errno, kStgAccessDenied);
}

// RESULT: S_OK; kStgShareViolation: somebody else holds it; kStgLockViolation: it can't be locked at all.
HRESULT Lock(int file) {
  while (flock(file, LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    return errno == EWOULDBLOCK ? kStgShareViolation : kStgLockViolation;
  }
  return S_OK;
}

// True when another program holds a record lock on the file, the other kind of lock there is: office programs
// lock what they have open in this way. Asked for before the file is locked here: over a network both kinds
// can be one, and the own lock would be in the way.
bool IsRecordLocked(int file) {
#if defined(F_OFD_GETLK)
  constexpr int kAsk = F_OFD_GETLK;
#else
  constexpr int kAsk = F_GETLK;
#endif
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return fcntl(file, kAsk, &lock) == 0 && lock.l_type != F_UNLCK;
}

// Opens and locks the target, S_FALSE when the name has moved on to another file in the meantime.
HRESULT TryLockTarget(TargetFile* target) {
  struct stat status;
  if (fstatat(target->folder, target->name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return ResultOfError(errno, kStgAccessDenied);
  }
  if (!S_ISREG(status.st_mode)) return kStgAccessDenied;
  target->file = openat(target->folder, target->name.c_str(), O_RDWR | kFileFlags);
  if (target->file < 0) return ResultOfError(errno, kStgAccessDenied);
  if (fstat(target->file, &status) != 0 || !S_ISREG(status.st_mode)) return kStgAccessDenied;
  if (IsRecordLocked(target->file)) return kStgShareViolation;
  const HRESULT result = Lock(target->file);
  if (result != S_OK) return result;
  return NameHolds(target->folder, target->name, target->file) ? S_OK : S_FALSE;
}

// Removes a staged file that nobody holds. RESULT: S_OK: the name is free; kStgShareViolation: it is held;
// another.
HRESULT RemoveStale(const TargetFile& target) {
  const char* name = target.stage_name.c_str();
  // Some file systems lock only what is open for writing.
  int stale = openat(target.folder, name, O_RDWR | kFileFlags);
  if (stale < 0 && errno == EACCES) stale = openat(target.folder, name, O_RDONLY | kFileFlags);
  if (stale < 0 && errno == ENOENT) return S_OK;
  // Under this name, what can't be opened can only be left over by another user, if the target is held.
  HRESULT result = stale >= 0 ? Lock(stale) : target.file >= 0 ? S_OK : kStgAccessDenied;
  // A process that died between giving the file its name and taking the staged name away leaves the target
  // under both.
  if (target.file >= 0 && NameHolds(target.folder, target.stage_name, target.file)) result = S_OK;
  const bool mine = stale < 0 || NameHolds(target.folder, target.stage_name, stale);
  if (result == S_OK && mine && unlinkat(target.folder, name, 0) != 0 && errno != ENOENT) {
    result = ResultOfError(errno, kStgAccessDenied);
  }
  CloseFile(&stale);
  return result;
}

// Removes the staged file `stage`, unless its name has gone to another.
void UnlinkStage(const TargetFile& target, int stage) {
  if (!NameHolds(target.folder, target.stage_name, stage)) return;
  unlinkat(target.folder, target.stage_name.c_str(), 0);
}

// Copies what else the system holds about a file, access lists among it, as far as it lets.
void CopyAttributes(int from, int to) {
#if defined(__linux__)
  char names[4096];
  const ssize_t size = flistxattr(from, names, sizeof names);
  for (ssize_t at = 0; at < size;) {
    const char* name = names + at;
    char value[4096];
    const ssize_t length = fgetxattr(from, name, value, sizeof value);
    if (length >= 0 && fsetxattr(to, name, value, static_cast<size_t>(length), 0) != 0) errno = 0;
    at += static_cast<ssize_t>(std::strlen(name)) + 1;
  }
#else
  static_cast<void>(from);
  static_cast<void>(to);
#endif
}

// Gives the new file the owner and the mode of the one that it replaces. A user who may not give files away
// keeps the new one, with as much of the rest as can be had: a save that changes the owner is better than
// none.
void TakeOwnerAndMode(int file, int stage) {
  struct stat status;
  struct stat own;
  if (fstat(file, &status) != 0 || fstat(stage, &own) != 0) return;
  const bool same = status.st_uid == own.st_uid && status.st_gid == own.st_gid;
  const bool given = same || fchown(stage, status.st_uid, status.st_gid) == 0;
  if (!given && fchown(stage, static_cast<uid_t>(-1), status.st_gid) != 0) errno = 0;
  CopyAttributes(file, stage);
  const mode_t mask = given ? 07777 : 0777;
  if (fchmod(stage, status.st_mode & mask) != 0) errno = 0;
}

// Brings what was written to disk.
HRESULT SyncFile(int file) {
  while (fsync(file) != 0) {
    if (errno != EINTR) return ResultOfError(errno, kStgWriteFault);
  }
  return S_OK;
}

// Writes zeros where the system can't take room without writing.
HRESULT WriteZeros(int file, uint64_t from, uint64_t to) {
  const std::vector<uint8_t> zeros(static_cast<size_t>(std::min<uint64_t>(to - from, 1u << 18)));
  HRESULT result = S_OK;
  for (uint64_t at = from; at < to && result == S_OK; at += zeros.size()) {
    result = WriteAt(file, at, zeros.data(), std::min<uint64_t>(to - at, zeros.size()));
  }
  return result;
}

HRESULT TakeRoom(int file, uint64_t from, uint64_t to) {
  // Beyond this limit the system would not fail but send a signal that ends the process.
  struct rlimit limit;
  if (getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY && to > limit.rlim_cur) {
    return kStgMediumFull;
  }
#if defined(__linux__)
  int error;
  do {
    error = posix_fallocate(file, static_cast<off_t>(from), static_cast<off_t>(to - from));
  } while (error == EINTR);
  if (error == 0) return S_OK;
  if (error != EINVAL && error != EOPNOTSUPP && error != ENOSYS) return ResultOfError(error, kStgWriteFault);
#endif
  return WriteZeros(file, from, to);
}

// Gives the staged file the target's name. Where a target exists it is replaced; where none did, one that has
// come up since is not.
HRESULT MoveIntoPlace(const TargetFile& target) {
  const char* from = target.stage_name.c_str();
  const char* to = target.name.c_str();
  if (target.file >= 0) {
    return renameat(target.folder, from, target.folder, to) == 0 ? S_OK
                                                                 : ResultOfError(errno, kStgWriteFault);
  }
#if defined(RENAME_NOREPLACE)
  if (renameat2(target.folder, from, target.folder, to, RENAME_NOREPLACE) == 0) return S_OK;
  if (errno != EINVAL && errno != ENOSYS) return ResultOfError(errno, kStgWriteFault);
#endif
  if (linkat(target.folder, from, target.folder, to, 0) == 0) {
    unlinkat(target.folder, from, 0);
    return S_OK;
  }
  if (errno != EPERM && errno != EOPNOTSUPP) return ResultOfError(errno, kStgWriteFault);
  // A file system with neither: what is left is to look first.
  if (const HRESULT result = CheckNameFree(target); result != S_OK) return result;
  return renameat(target.folder, from, target.folder, to) == 0 ? S_OK : ResultOfError(errno, kStgWriteFault);
}

// A folder that may be written but not read can't be opened for this; the file system then orders the rename
// by itself.
HRESULT SyncFolder(int folder) {
  int readable = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (readable < 0) return S_OK;
  const bool failed = fsync(readable) != 0 && errno == EIO;
  CloseFile(&readable);
  return failed ? kStgWriteFault : S_OK;
}

}  // namespace

HRESULT LockTarget(const std::string& path, TargetFile* target) {
  HRESULT result = OpenFolder(path, target);
  for (int attempt = 0; attempt < kAttempts && result == S_OK; ++attempt) {
    result = TryLockTarget(target);
    if (result == S_OK) {
      RemoveStale(*target);
      return S_OK;
    }
    CloseFile(&target->file);
    if (result == S_FALSE) result = S_OK;
  }
  ReleaseTarget(target);
  return result == S_OK ? kStgShareViolation : result;
}

HRESULT ClaimTarget(const std::string& path, TargetFile* target) {
  HRESULT result = OpenFolder(path, target);
  if (result == S_OK) result = CheckNameFree(*target);
  if (result == S_OK) result = OpenStage(target);
  // It may have come up between the look and the claim.
  if (result == S_OK) result = CheckNameFree(*target);
  if (result != S_OK) ReleaseTarget(target);
  return result;
}

HRESULT OpenStage(TargetFile* target) {
  if (target->stage >= 0) return S_OK;
  // Nobody else may read what will replace a file that is kept from them.
  const mode_t mode = target->file >= 0 ? S_IRUSR | S_IWUSR : 0666;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const HRESULT stale = RemoveStale(*target);
    if (stale != S_OK) return stale;
    int stage =
        openat(target->folder, target->stage_name.c_str(), O_RDWR | O_CREAT | O_EXCL | kFileFlags, mode);
    if (stage < 0 && errno == EEXIST) continue;
    if (stage < 0) {
      const HRESULT error = ResultOfError(errno, kStgAccessDenied);
      return error == kStgFileNotFound ? kStgPathNotFound : error;
    }
    // Between making and locking it, somebody may take it for left over and remove it.
    const HRESULT locked = Lock(stage);
    if (locked == S_OK && NameHolds(target->folder, target->stage_name, stage)) {
      if (target->file >= 0) TakeOwnerAndMode(target->file, stage);
      target->stage = stage;
      target->reserved = 0;
      return S_OK;
    }
    if (locked == kStgLockViolation) UnlinkStage(*target, stage);
    CloseFile(&stage);
    if (locked == kStgLockViolation) return locked;
  }
  return kStgShareViolation;
}

HRESULT ReserveStage(TargetFile* target, uint64_t size) {
  const HRESULT result = OpenStage(target);
  if (result != S_OK || size <= target->reserved) return result;
  const HRESULT room = TakeRoom(target->stage, target->reserved, size);
  if (room == S_OK) target->reserved = size;
  return room;
}

HRESULT CommitStage(TargetFile* target, uint64_t size) {
  if (ftruncate(target->stage, static_cast<off_t>(size)) != 0) return ResultOfError(errno, kStgWriteFault);
  HRESULT result = SyncFile(target->stage);
  if (result == S_OK) result = MoveIntoPlace(*target);
  if (result != S_OK) return result;
  CloseFile(&target->file);
  target->file = target->stage;
  target->stage = -1;
  target->reserved = 0;
  return SyncFolder(target->folder);
}

void DropStage(TargetFile* target) {
  if (target->stage < 0) return;
  UnlinkStage(*target, target->stage);
  CloseFile(&target->stage);
  target->reserved = 0;
}

void ReleaseTarget(TargetFile* target) {
  DropStage(target);
  CloseFile(&target->file);
  CloseFile(&target->folder);
}

}  // namespace tolvenar::platform
