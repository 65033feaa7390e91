// Writing a workbook out.
//
//   the file   any other streams, untouched | "Workbook" or "Book": the compact records, without a BUFEND
//
// Invariants: (1) A file is committed only when its workbook stream has been written whole. A save that fails
// after the old stream was taken out abandons the file; off Windows, where nothing reaches the path before
// the commit, the old file then stands there as it was. (2) 0 is the answer only when the commit has told
// success.
#pragma once

#include <cstdint>

namespace tolvenar {

// Saves the workbook in *buffer (*size bytes): folds its patches away into a new block, which replaces
// *buffer, and writes it to the compound file at `path`, as its only stream when there is no such file, else
// in the place of its stream of BiffVersion's generation. Takes one more pool block of the buffer's size for
// the time of the call. A null pointer, and a handle that names no live block, count as 0.
//
// RESULT                                              *buffer, *size             *table
//   0  saved                                          compact, with BUFEND       released, 0
//   2  *buffer is 0                                   unchanged                  unchanged
//   3  *table is 0                                    unchanged                  unchanged
//   4  no pool block for the copy                     unchanged                  unchanged
//   6  the copy can't be cut to its size              unchanged                  contents overwritten
//  12  the last sheet has no closing EOF              unchanged                  contents overwritten
// 101  the existing file can't be opened              compact, no BUFEND         renewed, still the caller's
// 102  it has no such stream, or it can't be deleted  compact, no BUFEND         renewed, still the caller's
// 111  the new file can't be created                  compact, no BUFEND         renewed, still the caller's
// 103  the new stream can't be created                compact, no BUFEND         released, 0
//   6  the write failed or was short                  block freed, both stale    released, 0
// 104  closing the stream failed                      compact, no BUFEND         released, 0
// 105  closing the file failed, its commit included   compact, no BUFEND         released, 0
// With any result but 0 nothing has been committed. Without its BUFEND a buffer ends with an empty record of
// type 0, which a second save copies into the stream.
int16_t XLSaveFile(const char* path, uint32_t* buffer, uint32_t* table, uint32_t* size);

// Writes the numbers 1 to `count` as i32 into a stream "Workbook" of the compound file at `path`, whatever
// BiffVersion is, through the same calls as a save: into a new file, or in the place of that stream of an
// existing one. Takes no pool block.
// RESULT: 0 written; 102 the file can't be opened or created, or has no such stream; 103 the stream can't be
// created; 6 a failed or short write, or no memory for the numbers (also for a negative count); 104 closing
// the stream failed; 105 closing the file failed, its commit included. With any but 0 nothing has been
// committed.
int16_t DebugSaveFile(const char* path, int32_t count);

}  // namespace tolvenar
