// Shared strings: where the table of them stands in the globals, and the reader of one string.
//
//   The SST record at S           A string at T
//   OFFSET  SIZE  FIELD           OFFSET   SIZE     FIELD
//        0     4  header          0        2        cch, characters, signed
//        4     4  total           2        1        flags: 0x01 wide (two bytes a character), 0x08 rich
//        8     4  unique          3        2        rich: run count, signed
//       12        strings         3 or 5   cch * w  characters, w = 1 or 2
//                                 behind   4 a run  rich: runs
//
// The table is read as one unbroken run of plain bytes: CONTINUE records are not recognised, nor are
// phonetic data.
//
// Invariants: (1) A string has no shape of its own: it is read as wide or rich as the string before it is
// flagged, and string 0 as neither. That is how this reader works, on purpose. (2) A string takes at
// least 3 bytes, unless its counts are negative, so one whose number is beyond what the block has room for
// counts as lying outside the block, where everything reads as an empty text. That bounds the walk too.
#pragma once

#include <cstdint>
#include <memory>

#include "foundation/record_stream.h"
#include "tolvenar/automation.h"

namespace tolvenar {

// First u16 of the payload of the last record in the globals, whatever its type: in BIFF8 that is EXTSST,
// and the value the number of strings per bucket. 0 for a null table or empty globals.
uint16_t XLNumStrBucket(uint32_t buffer, uint32_t table);

// Low 16 bits of the offset of the last SST record in the globals (low byte 0xFC, plain test). An SST at
// 32768 or beyond does not survive that, on purpose. With no such record it is the low 16 bits of the
// table's own address and means nothing; 0 for a null table.
int16_t XLNumStrExt(uint32_t buffer, uint32_t table);

// Puts the shared string *index into the array *cells (two dimensions, row and column) at the row and
// column of the record at `record_offset`, as the BSTR itself. `sst_offset` is the SST's, as XLNumStrExt
// gives it. *bucket, the strings per bucket, is not read: it could only choose between two ways to the
// same string, and so a bucket of 0 does no harm. A null `index` counts as 0. An index below 1 reads
// string 0.
// Nothing is put when the buffer is no live block, when the pool has no block for the text, or when the
// array refuses it or has more than two dimensions. A string of more characters than 16 signed bits hold puts an empty text.
void XLEXTLabel(uint32_t buffer, const int32_t* index, const int16_t* bucket, int32_t sst_offset,
                SAFEARRAY** cells, int32_t record_offset);

// Where a string stands, and the shape that it is read in.
struct StringPlace {
  uint32_t at;
  bool wide;
  bool rich;
};

// A reader of many strings of one table within one call: it remembers the place of every string that it
// has walked over, so that a sheet costs the table once and not once a cell. It must not outlive a change
// to the buffer.
struct SharedStringReader {
  Block block;
  uint32_t sst = 0;  // offset of the SST record
  // Those of strings 0 .. known - 1. Null as long as none was read, and when there is no memory for them.
  std::unique_ptr<StringPlace[]> places;
  uint32_t known = 0;
};

// Puts string `index` as XLEXTLabel does, with the same result to the byte.
void PutSharedString(SharedStringReader* reader, int16_t index, SAFEARRAY* array, uint32_t record_offset);

}  // namespace tolvenar
