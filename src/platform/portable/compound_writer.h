// Writing a whole compound file, front to back.
//
//   header | long list | sector table | directory | mini sector table | mini stream | streams of 4096 bytes
//   and more
//
// Every part lies in one run of sectors, and so does every stream. The plan needs only the sizes of the
// streams, so the size of the file is known before a byte of it is written.
//
// Invariants: (1) A plan tells the size of the file that WriteCompound makes to the byte. (2) Nodes come out
// as they went in, apart from the fields that tie them into the file.
#pragma once

#include <cstdint>

#include "platform/portable/compound_directory.h"

namespace tolvenar::platform {

// How many sectors each part of a file takes.
struct Plan {
  uint32_t sector_shift = 0;
  uint32_t mini_sectors = 0;
  uint32_t long_list = 0;
  uint32_t table = 0;
  uint32_t directory = 0;
  uint32_t mini_table = 0;
  uint32_t mini_stream = 0;
  uint64_t streams = 0;
  uint64_t file_size = 0;
};

// Plans the file for the live nodes of `directory`, in sectors of 1 << sector_shift bytes.
// RESULT: S_OK; kStgMediumFull: the file would be larger than a file of this format may be here (2 GiB).
HRESULT PlanCompound(const Directory& directory, uint32_t sector_shift, Plan* plan);

// Writes the planned file to `to`, from offset 0. Contents that are not in memory are taken from `from`.
// RESULT: S_OK; a read or write failure. On success every stream's extents are those in the new file and no
// contents are in memory any more; on failure the nodes are as they were.
HRESULT WriteCompound(int to, int from, const Plan& plan, Directory* directory);

}  // namespace tolvenar::platform
