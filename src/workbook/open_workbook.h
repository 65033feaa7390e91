// Bringing a workbook into memory and taking it out again.
//
//   the stream in the file    records ... EOF of the last sheet | filler
//   the RecordBuffer          records ... EOF of the last sheet | BUFEND
//
// Invariants: (1) Nothing of a file stays open beyond the call; the buffer is then independent of it. (2)
// BiffVersion changes only when a workbook stream has opened.
#pragma once

#include <cstdint>

namespace tolvenar {

// Opens the workbook at `path`: its stream "Workbook" (BiffVersion becomes 6), else "book", which finds `Book`
// (it becomes 5). Reads it in one call, cuts what stands behind the EOF of the last substream and puts a
// BUFEND in the last 4 bytes. *buffer is the caller's, to be released with XLFreeHandle; *size is its size in
// bytes. What a null out pointer can't take is released.
//
// RESULT                                          *buffer        *size
//   0  opened                                     the buffer     its size
//   2  the cut failed: the last EOF claims a      stale, the     where the cut would have ended
//      payload that no slot can hold              block is freed
//   5  no pool block for the stream               0              stream size + 4
//   6  the read failed or was short               0              stream size + 4
// 101  the compound file can't be opened          0              untouched
// 102  neither stream is in it                    0              untouched
// 103  the stream is empty, of 2 GiB or more, or  0              what was read
//      its size can't be had
// 104  closing the stream failed                  live, not cut and without BUFEND
// 105  closing the file failed                    live, not cut and without BUFEND
int16_t XLOpenFile(const char* path, uint32_t* buffer, uint32_t* size);

// Releases a RecordBuffer or a SheetTable: MEMORYFREE under another name.
// RESULT: 1, and *handle is 0; 0, with nothing changed.
uint32_t XLFreeHandle(uint32_t* handle);

}  // namespace tolvenar
