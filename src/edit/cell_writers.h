// Writers of single cells: each builds one cell record in a scratch block and patches it into the walk.
//
//   OFFSET  SIZE  FIELD                RECORD  TYPE    LENGTH  SIZE    BODY BEHIND THE XF
//        0     2  type                 BLANK   0x0201  6       10
//        2     2  length               NUMBER  0x0203  14      18      IEEE double
//        4     2  row, 0-based         LABEL   0x0204  n + 8   n + 12  n u16, n bytes of text
//        6     2  column, 0-based
//        8     2  XF index
//
// Invariants: (1) Every number becomes a NUMBER; nothing here makes an RK. (2) The LABEL has no option byte
// in either generation, on purpose. (3) The scratch block is released on success only, on purpose: a writer
// whose patch fails leaves it live in the pool. (4) Rows and columns come in 1-based and are stored minus 1.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Results of WriteBlankCell and of the three writers of numbers.
constexpr int16_t kWriteDone = 0;
constexpr int16_t kWriteNoMemory = 1;  // no scratch block; nothing changed
// The patch failed: the scratch block stays live; when the buffer could not grow it is released and *buffer
// is 0.
constexpr int16_t kWritePatchFailed = 3;

// Results of WriteLabelCell, which counts them otherwise.
constexpr int16_t kLabelNullText = 1;
constexpr int16_t kLabelNoMemory = 3;
// As kWritePatchFailed. Also a text of more than 32755 units, whose record a patch can't count: the buffer is
// then as it was, and the scratch block stays live all the same.
constexpr int16_t kLabelPatchFailed = 4;

// Each puts a new cell record into the walk before the record at `offset`, or into its room when that is
// SLACK large enough. On success *buffer may have moved and *size has grown by what the patch laid down.
int16_t WriteBlankCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                       uint16_t xf);
int16_t WriteIntegerCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                         uint16_t xf, int32_t value);
int16_t WriteFloatCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                       uint16_t xf, float value);

// The double comes as its 8 bytes, so that bytes which are no number arrive as they are.
int16_t WriteDoubleCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                        uint16_t xf, uint64_t bytes);

// The text becomes the low bytes of its units, with no code page. `text` is read only and may be null.
int16_t WriteLabelCell(uint32_t* buffer, uint32_t* size, uint32_t offset, int16_t row, int16_t column,
                       uint16_t xf, BSTR text);

}  // namespace tolvenar
