// What an open Storage and an open Stream are, off Windows.
//
// Invariants: (1) Contents that were changed are in memory whole; all others are read from the target when
// they are asked for. (2) With `failure` set the storage has failed for good: it is never committed, and the
// staged file is gone. (3) Every open Stream is in its storage's list. A stream whose element was destroyed
// or whose storage was released has no storage any more, and only waits for its own release. (4) A node has
// one Stream at most.
#pragma once

#include <cstdint>

#include "platform/portable/compound_directory.h"
#include "platform/portable/compound_reader.h"
#include "platform/portable/target_file.h"
#include "platform/storage.h"

namespace tolvenar::platform {

struct Stream {
  Storage* storage = nullptr;
  Stream* next = nullptr;
  uint32_t node = 0;
  uint64_t position = 0;
};

struct Storage {
  TargetFile target;
  CompoundReader reader;
  Directory directory;
  uint32_t sector_shift = kSmallSectorShift;
  Stream* streams = nullptr;
  bool changed = false;
  bool reserved = false;  // the room taken on the disk is enough for what is changed so far
  bool checked = false;   // everything that will be kept was found whole
  HRESULT failure = S_OK;
};

// Makes sure that the extents of the node's contents are known. RESULT: S_OK; kStgDocFileCorrupt;
// kStgReadFault.
HRESULT LocateNode(Storage* storage, Node* node);

// To be called before the first change: everything that a commit will have to copy must be whole, and there
// must be a staged file. A node that is about to be destroyed or overwritten can be left out (kNoEntry:
// none). A full disk is no failure here: the write that follows tells it. RESULT: S_OK; kStgDocFileCorrupt,
// kStgReadFault; kStgAccessDenied and others: nothing can be staged beside the target.
HRESULT PrepareChange(Storage* storage, uint32_t leave_out);

// Takes the room on the disk that the commit will need for the whole file, with all that is changed so far.
// RESULT: S_OK; kStgMediumFull; another.
HRESULT ReserveForCommit(Storage* storage);

// Marks the storage as failed with `result`, and gives the disk room back. Returns `result`.
HRESULT FailStorage(Storage* storage, HRESULT result);

// Cuts off every open stream whose node is no longer live; all of them when `all` is set.
void DetachStreams(Storage* storage, bool all);

}  // namespace tolvenar::platform
