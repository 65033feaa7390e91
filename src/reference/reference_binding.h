// The stamp that ties a workbook to a reference: a hidden FORMAT record in its globals. And two small exports that hosts call beside it: the
// compaction of a reference in memory, and the release of a block.
//
//   OFFSET  SIZE  FIELD
//        0     2  type 0x041E
//        2     2  length, 32
//        4     2  format index, 255
//        6     1  characters, 29
//        7    29  "Do not delete it!!!<id>" with its quotes; the id in decimal, 8 characters, blank padded, at 27
//
// It is laid out as BIFF5 has it in workbooks of both generations, on purpose: no cell uses it. It stands directly behind the workbook's
// run of FORMAT records, or, where there is none, in front of the EOF of the globals.
//
// Invariants: (1) DETOUR and RESUME are passed over by the search, so that a stamp is found behind the patch that put it there; a SLACK
// ends the run. (2) A patch at the EOF of the globals displaces the first sheet's BOF, and the SheetTable is told its new place: the EOF
// still stands 4 bytes in front of it, also when a record of less than 8 bytes stands between the FORMAT run and it.
#pragma once

#include <cstdint>

namespace tolvenar {

// Stamps the workbook with `id`; a stamp that is there gets other digits. Result: 0; 4 no pool block or a failed patch: the blocks held, 8
// and 36 bytes, stay allocated, and after a failed patch *buffer is 0; 6 no table; 7 no buffer; 200 the buffer is gone after the patch. A
// workbook in which neither FORMAT records nor an end of the globals can be found gives 4 and is not changed.
int16_t XLInsertReference(uint32_t* buffer, uint32_t table, uint32_t* size, uint32_t id);

// Turns the stamp into SLACK. Result: 0; 6 no table; 7 no buffer; -1 no stamp.
int16_t XLUnbindReference(uint32_t buffer, uint32_t table);

// The id in the workbook file at `path`, from the stream of the current generation: that of the workbook opened last. Result: the id, 0
// without a stamp; -2 the file can't be opened; -3 the stream can't, also when there is no generation yet; -4 it is empty; -5 no pool block
// for it; -7 it can't be read whole; with the image still allocated: -8, -9 closing the stream, the file failed, -10 no pool block for the
// digits.
int32_t XLGetReference(const char* path);

// Compacts a ReferenceBuffer. Result: 0; 2 no buffer; 4, 6 as CompactReference: the old buffer stays.
int16_t XLRefreshReference(uint32_t* buffer, uint32_t* size);

// Releases a pool block and zeroes the variable. Result: 0, also when there was no live block; -1 for a null reference.
int16_t XLDestroyFString(uint32_t* handle);

}  // namespace tolvenar
