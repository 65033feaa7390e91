// ReferenceFile: a compound file of report bindings. Its root storage holds streams only:
//
//   STREAM                          CONTENT
//   Contents                        the ids: REFHEADER with their count, a REFID for each, REFEND; 8 bytes a record
//   8 characters, blank padded      one reference, whose id they are in decimal
//
// The ids stand in the order of their creation; the lowest free one is given next. A ReferenceBuffer is a pool block with a reference's
// stream and a BUFEND behind it, which its size counts and the file doesn't hold.
//
// Invariants: (1) The file is opened, exclusively, and closed again in each call. (2) A call that fails while it changes the file abandons
// it, so that the file on disk stays the old one; the one exception is told at XLCreateReference. (3) What "Contents" claims is kept within
// its size.
#pragma once

#include <cstdint>

namespace tolvenar {

// Enters a new, empty reference. Result: its id, above 0; or, with the file as it was and no blocks held unless said:
//   -1 no file name; -3 the file can't be opened, which is also said of one that doesn't exist
//   -4, -5, -6, -8, -9, -10 a new file: not created; no "Contents"; no pool block; first or second record not written; the last not
//   written; not closed
//   -11 no "Contents"; -12 it is empty; -13 no pool block for it; -15 it can't be read whole
//   -16 no pool block for the ids, the image of "Contents" stays allocated; -18 none for the new image, the list of ids stays allocated
//   -20 "Contents" can't be made anew; -21 it can't be written; -22 no pool block for the name
//   -24 the new stream can't be made, as when one of that name was left behind: the id is in "Contents" all the same, on purpose
//   -25, -8, -26 its first, a middle, its last record can't be written; -27 closing the file failed
int32_t XLCreateReference(const char* path);

// Removes reference `id`. Result: 0, or -3, -11, -12, -13, -15, -16, -18, -20, -21, -22, -24, -27 as above, with the file as it was.
// -24: there is no such stream. At -22 and -24 the new image of "Contents" stays allocated. Whether the id is listed is not looked at: with
// one that isn't, the last listed id falls out, on purpose.
int16_t XLDeleteReference(const char* path, uint32_t id);

// Reads reference `id` into a ReferenceBuffer, the caller's to release. Result: 0; with *buffer 0: 101 the file can't be opened, 102 there
// is no such stream (8 bytes stay allocated), 103 it is empty and *size says so, 5 no pool block for it, 6 it can't be read whole, -10 no
// pool block for the name; with a *buffer that lacks its BUFEND: 104, 105 closing the stream, the file failed.
int16_t XLReadReference(const char* path, uint32_t* buffer, uint32_t* size, int32_t id);

// Compacts the buffer and stores it as reference `id`, which need not be listed. Result: 0; 2 no buffer; 4, 6 as CompactReference, the old
// buffer stays. After that the buffer is the compact one, and what is reported is: -22 no pool block for the name; 101, 103 the file can't
// be opened, the stream not made (8 bytes stay allocated); 6 the write failed: the buffer is freed, *buffer is 0; 104, 105 closing the
// stream, the file failed. Until 0 is returned the buffer lacks its BUFEND. After a failure the file is as it was.
int16_t XLSaveReference(const char* path, uint32_t* buffer, uint32_t* size, int32_t id);

struct StmFFile;

// Makes a new file with an empty directory and leaves it open. Result: 0; -4, -5, -6, -8, -9, -10 as above.
int16_t MakeReferenceFile(StmFFile* file, const char* path);

}  // namespace tolvenar
