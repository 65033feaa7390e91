// LABEL records: from 8-bit text, from wide text, and the shell that is refilled cell by cell.
//
//   OFFSET  SIZE  FIELD
//        0     4  04 02, length u16
//        4     6  row, column, XF: u16
//       10     2  length of the text
//       12     e  an option byte, 0: e is 1 in BIFF8, else 0
//   12 + e     n  the text, one byte a character
//
// Wide text is narrowed by keeping each low byte. Text is cut where the record would not fit any more; what
// holds text of its own is told at the functions.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"
#include "tolvenar/automation.h"

namespace tolvenar {

// Sizes of a label are 16-bit values; the shell has the largest.
constexpr int32_t kLabelShellSize = INT16_MAX;

// A LABEL of 8-bit text, zero-terminated or null (empty), in a pool block of 2n + 12 bytes, which is the
// caller's; n is the text's length, and the same layout serves both generations, on purpose: 04 02, 2n + 8,
// row, column, XF, n, a zero byte at offset 12, and from offset 13 on 2n bytes taken from `text`, whatever
// they are. So the text must have 2n readable bytes, and what stands behind its zero goes into the record;
// where they can't be read they become zeros. The last byte lies one behind the record, in the slot's spare
// room. Stores 2n + 12 in *size; 0, with *size untouched, when the pool refuses.
uint32_t MakeLabelRecord(uint32_t* size, uint16_t row, uint16_t column, uint16_t xf, const char* text);

// A LABEL of wide text, zero-terminated, in a pool block of n + e + 12 bytes, which is the caller's. Gives 0,
// with *size and the pool untouched, for a null text; 0 with *size untouched when the pool refuses. A text
// whose record's size would be no positive 16-bit value is cut to the longest that has one.
uint32_t MakeLabelRecordWide(uint32_t* size, uint16_t row, uint16_t column, uint16_t xf, const OLECHAR* text);

// A shell for FillLabelRecord: a pool block of `size` bytes, at most 32767, which is the caller's, with a
// whole header and an empty text. 0 when the pool refuses.
uint32_t AllocLabelRecord(int32_t size, uint16_t row, uint16_t column, uint16_t xf);

// Refills a shell and stores the record's size in *size. `text` is wide and zero-terminated; null is one
// blank. The type bytes and the option byte stay. `shell` is the shell's block, its extent the size that it
// was made with: a text that does not fit is cut to fit.
void FillLabelRecord(const Block& shell, uint32_t* size, uint16_t row, uint16_t column, uint16_t xf,
                     const OLECHAR* text);

}  // namespace tolvenar
