// The file behind a storage: found, locked, and replaced in one step by a file staged beside it.
//
//   target   the path with its symbolic links followed: a folder and a name in it. The file under that name
//            is what is replaced.
//   lock     flock on the file, held until it is released or the process ends. Whoever holds it holds the
//            name: after locking, the name is checked to be still that of the locked file. The staged file is
//            locked before it takes the name. A file with another program's record lock on it is not taken.
//   stage    the file ".<name>.tolvenar" in the same folder, locked as well. For a file that is being created
//            it is also the claim on the name. One that nobody holds is left over from a process that died,
//            and is removed by the next one that comes by.
//
// Invariants: (1) The target is never written to. Until CommitStage its bytes and its name are as they were,
// and afterwards the name belongs to the whole new file. (2) Once ReserveStage has succeeded, writing that
// many bytes needs no more room on the disk.
#pragma once

#include <cstdint>
#include <string>

#include "platform/storage.h"

namespace tolvenar::platform {

struct TargetFile {
  int folder = -1;
  int file = -1;   // the locked target; -1 while it does not exist
  int stage = -1;  // the locked staged file
  uint64_t reserved = 0;
  std::string name;
  std::string stage_name;
};

// Locks the existing file at `path` (8-bit) for reading and writing.
// RESULT: S_OK; kStgFileNotFound, kStgPathNotFound; kStgAccessDenied: no regular file, or one that this user
// may not write, which is the system's to say: it lets root write what has no right to write on it;
// kStgShareViolation: open elsewhere; kStgLockViolation: on a file system that has no locks. On failure
// *target holds nothing.
HRESULT LockTarget(const std::string& path, TargetFile* target);

// Claims the name `path` for a file that does not exist yet. The name stays free until CommitStage.
// RESULT: S_OK; kStgFileAlreadyExists; kStgPathNotFound, kStgAccessDenied: no such folder, or no file can be
// made in it; kStgShareViolation: being created elsewhere. On failure *target holds nothing.
HRESULT ClaimTarget(const std::string& path, TargetFile* target);

// Makes the staged file, unless it is there. RESULT: S_OK, or why it can't be made.
HRESULT OpenStage(TargetFile* target);

// Takes room on the disk for `size` bytes of the staged file, and opens it first if need be. RESULT: S_OK;
// kStgMediumFull; another.
HRESULT ReserveStage(TargetFile* target, uint64_t size);

// Puts the staged file, cut or grown to `size` bytes, in place of the target: durably, and in one step. It is
// then the target, locked as before, and there is no staged file. On failure the target is as it was, with
// one exception: kStgWriteFault may also say that the new file is in place, but that the folder would not be
// brought to disk.
HRESULT CommitStage(TargetFile* target, uint64_t size);

// Removes the staged file, if there is one.
void DropStage(TargetFile* target);

// Drops the stage and lets go of the file.
void ReleaseTarget(TargetFile* target);

}  // namespace tolvenar::platform
