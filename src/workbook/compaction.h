// Compaction: what a save and a refresh have in common. A patched buffer is folded into a plain one in a new
// block.
//
//   buffer   BOF DETOUR--. dead  NUMBER SLACK EOF BUFEND | patch, displaced record, RESUME
//                        '------------------------------->'                          '--> NUMBER
//   copy     BOF patch, displaced record, NUMBER EOF | 4 bytes for the BUFEND, zero
//
// The SheetTable's entries turn from offsets in the buffer into offsets in the copy while the BOFs go by, and
// the BOUNDSHEETs of the copy take them over by order alone. A BOF at any other offset, such as an embedded
// chart's, changes nothing; a sheet whose BOF a patch has displaced is not recognised, nor is any sheet
// behind it, on purpose.
//
// Invariants: (1) The old buffer is only read. (2) Adjacent records that are kept travel in one copy. (3)
// Each record is copied once, though the walk may go round: that of a buffer without a BUFEND does when it is
// patched (see ring.h). (4) Nothing is written behind the copy: a buffer that claims more than it has is not
// cut.
#pragma once

#include <cstdint>

namespace tolvenar {

// How the length field of a record counts: a save takes it as unsigned, a refresh as signed, on purpose. They
// differ from 32768 bytes on.
enum class LengthField { kUnsigned, kSigned };

constexpr int16_t kCompacted = 0;
constexpr int16_t kCompactNoBlock = 4;     // no pool block for the copy; nothing has changed
constexpr int16_t kCompactNotCut = 6;      // the copy can't be cut to its size; it is freed
constexpr int16_t kCompactNotClosed = 12;  // the last sheet has no closing EOF; the copy is freed

// Copies what the walk of `buffer` (`size` bytes) meets, but for the patch records, to a new block, and
// renews the entries of `table` and the BOUNDSHEETs of the copy.
// RESULT: 0: *copy is the caller's, *copy_size the bytes kept plus 4, the last 4 bytes are zero; or a code
// above, with *copy 0. The buffer is unchanged in every case; at 6 and 12 the table's contents have been
// overwritten and no longer fit it.
int16_t Compact(uint32_t buffer, uint32_t table, uint32_t size, LengthField lengths, uint32_t* copy,
                uint32_t* copy_size);

}  // namespace tolvenar
