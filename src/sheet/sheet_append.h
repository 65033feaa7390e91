// Adding a worksheet to a workbook in memory, in one call: splice, body, BUFEND, and the whole stream laid
// out anew.
//
// A result above 0 is the number of the new sheet, counted from 1. What the steps hold when one fails:
//
//   RESULT  STEP                          THE CALLER'S BUFFER, AND WHAT STAYS LIVE
//     -8    the patches can't be folded   as it was
//     -7    likewise
//     -4    no buffer or no pool block    as it was
//     -5    the body                      names the new buffer as it was before the body, even if a growth
//                                         has moved the block or its failure released it; the old one is live
//     -2    the BUFEND                    0, the new one is released; the old one is live
//     -8    XLLocateSheets                0, both are released
//     -7    XLRefreshHandles              names the new one, not refreshed; the old one is released
//
// Nothing is rolled back: from the body on, the old buffer's WINDOW1 and WINDOW2 have been changed. Every
// SheetTable of before is stale after a success. A null pointer by reference counts as a variable holding 0.
#pragma once

#include <cstdint>

#include "foundation/memory_pool.h"
#include "foundation/record_stream.h"
#include "sheet/sheet_splice.h"

namespace tolvenar {

// Adds an empty worksheet that states a used range of `rows` rows and `columns` columns, plus one each.
// `name`: 8-bit, zero-terminated; null or empty gives "Sheet" and the number.
int16_t XLAppendSheet(uint32_t* buffer, uint32_t* size, const char* name, int16_t columns, int16_t rows);

// The same with a LABEL in each cell, of XF 0: `texts` holds rows x columns 8-bit texts row by row. A text
// must have twice its length in readable bytes (see MakeLabelRecord). A null text, or a null array, makes
// labels without text.
int16_t XLAppendFullSheet(uint32_t* buffer, uint32_t* size, const char* name, int16_t columns, int16_t rows,
                          const char* const* texts);

// The bodies of the two, appended at *size. Result: 0, *buffer and *size are renewed; -2 an append failed:
// both variables are as they were before, though the block is released.
int16_t AppendWorksheetBody(uint32_t* buffer, uint32_t* size, int16_t columns, int16_t rows);
int16_t AppendFullWorksheetBody(uint32_t* buffer, uint32_t* size, int16_t columns, int16_t rows,
                                const char* const* texts);

// The last steps, from a whole body on: locates the sheets and lays the stream out anew. Result: 0, *buffer
// and *size are renewed; -8, *buffer is 0; -7, *buffer is not refreshed.
int16_t FinishSheet(uint32_t* buffer, uint32_t* size);

// Writes a BUFEND, its type's high byte `high`, behind the end. *size stays the end in front of it, on
// purpose: the refresh that follows sets it. Result: 0; -2: the buffer is released and *buffer is 0.
int16_t CloseStream(uint32_t* buffer, uint32_t size, uint8_t high);

// The steps around a body, a function of (uint32_t* buffer, uint32_t* size) that gives 0 when it has appended
// the sheet's records. `high` as above.
template <typename Body>
int16_t AppendSheetWith(uint32_t* buffer, uint32_t* size, const char* name, uint8_t high, Body body) {
  Splice splice = SpliceSheet(buffer, size, name);
  if (splice.failure != 0) return splice.failure;
  *buffer = splice.new_buffer;
  *size = splice.size;
  if (body(buffer, size) != 0) return kBodyFailed;
  const int16_t closed = CloseStream(buffer, *size, high);
  if (closed != 0) return closed;
  MEMORYFREE(&splice.old_buffer);
  const int16_t finished = FinishSheet(buffer, size);
  return finished != 0 ? finished : static_cast<int16_t>(splice.number);
}

}  // namespace tolvenar
