// Reading a compound file: its header, its sector tables, and where in the file the bytes of a chain lie.
//
// A chain is turned once into extents, runs of bytes that lie together in the file, so that reading a stream
// that was written in one go is one read. The tables are taken into memory when the file is opened (4 bytes
// for a sector), the contents of streams are not.
//
// Invariants: (1) No chain is followed further than its bytes need, and none comes by a sector twice: a loop
// is damage. What hangs on a chain behind the last byte needed is not looked at. (2) Every extent handed out
// for a stream lies inside the file; the last sector of the file may be cut short as long as no byte asked
// for is missing. (3) The memory taken is bounded by the size of the file.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/storage.h"

namespace tolvenar::platform {

// Bytes at .. at + size - 1 of a stream lie at file_at in the file.
struct Extent {
  uint64_t at = 0;
  uint64_t file_at = 0;
  uint64_t size = 0;
};

// A compound file open for reading. `file` is borrowed.
struct CompoundReader {
  int file = -1;
  uint64_t size = 0;
  uint32_t sector_shift = 0;
  uint32_t sector_count = 0;  // the last one may be cut short
  uint32_t first_directory = 0;
  uint32_t first_mini_table = 0;
  std::vector<uint32_t> table;
  bool mini_ready = false;
  std::vector<uint32_t> mini_table;
  std::vector<Extent> mini_stream;  // may reach behind the end of the file: it is only a map
};

// Reads the header and the sector table of `file`.
// RESULT: S_OK; kStgFileAlreadyExists: no compound file (the system's own result for that);
// kStgDocFileCorrupt; kStgReadFault.
HRESULT OpenReader(int file, CompoundReader* reader);

// Reads the sectors of the directory into *bytes, whole entries only.
HRESULT ReadDirectory(const CompoundReader& reader, std::vector<uint8_t>* bytes);

// Reads the mini sector table and lays out the mini stream, which the root entry says begins at sector
// `root_start` and holds `root_size` bytes. Does nothing when it was done before.
HRESULT PrepareMiniStream(CompoundReader* reader, uint32_t root_start, uint64_t root_size);

// Stores in *extents where the `size` bytes of the chain from `start` lie. A size below the cutoff means mini
// sectors, for which PrepareMiniStream must have succeeded. RESULT: S_OK; kStgDocFileCorrupt, and *extents is
// of no use.
HRESULT LocateStream(const CompoundReader& reader, uint32_t start, uint64_t size,
                     std::vector<Extent>* extents);

// Reads bytes at .. at + count - 1 of what `extents` describe, all of which must be there. RESULT: S_OK;
// kStgReadFault.
HRESULT ReadExtents(int file, const std::vector<Extent>& extents, uint64_t at, void* bytes, uint64_t count);

}  // namespace tolvenar::platform
