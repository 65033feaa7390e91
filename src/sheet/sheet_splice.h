// The splice: a BOUNDSHEET for a new sheet goes into the globals of a new buffer, behind the run that is
// there, and everything behind it moves by its size.
//
//   old   BOF ... BOUNDSHEET  BOUNDSHEET  COUNTRY ... EOF | sheets | BUFEND
//                                       ^ p                        ^ n
//   new   BOF ... BOUNDSHEET  BOUNDSHEET  [the new one] COUNTRY ... EOF | sheets |    the new BOF goes here
//
// The run is the first of BOUNDSHEETs and PALETTEs that has a BOUNDSHEET in it. A PALETTE that stands apart, as in most workbooks, is
// passed over: behind it the new BOUNDSHEET would come before all others while its sheet comes last in the stream, and the next save
// after an edit could not match them.
//
// A stream with jumps can't be moved like that: the targets of DETOUR and RESUME are offsets that would have
// to follow, and its BUFEND stands in the middle. So the patches of such a buffer are folded away first, as
// XLRefreshHandles does, with a SheetTable of its own. A buffer without jumps is taken as it is, its SLACK
// with it, unless the new sheet comes before others.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Results of the appends.
constexpr int16_t kAppendFailed = -2;   // AppendBytes failed on a record or on the BUFEND
constexpr int16_t kNoNewBuffer = -4;    // there is no buffer whose sheet offsets could be shifted
constexpr int16_t kBodyFailed = -5;     // the sheet's body could not be built
constexpr int16_t kRefreshFailed = -7;  // XLRefreshHandles gave a nonzero result
constexpr int16_t kLocateFailed = -8;   // XLLocateSheets gave a nonzero result

// Where the BOUNDSHEET of a new sheet goes: the first record behind the first run of BOUNDSHEET and PALETTE
// records, however they are mixed, that has a BOUNDSHEET in it; where there is no BOUNDSHEET, behind the first PALETTEs; the globals EOF
// when there is neither; 0 for a size of 1 or less. Stores the
// number of the new sheet, the count of BOUNDSHEETs plus 1. Result: the offset; -1 for a null buffer, and the
// number is not written.
int32_t FindSheetInsertPoint(uint32_t buffer, uint32_t size, uint16_t* number);

// The name of a new sheet: `text`, and the BSTR that it stands in when it was made here (else null), to be
// released with SysFreeString.
struct SheetName {
  const char* text;
  BSTR made;
};

// `name` itself, unless it is null or its length is 0 in 16 bits; else "Sheet" and the number.
SheetName DefaultSheetName(const char* name, uint16_t number);

// Adds `delta` to the BOF offset in each BOUNDSHEET up to the first EOF. Result: 0; -1 for a null buffer.
int16_t ShiftSheetOffsets(uint32_t buffer, uint32_t delta);

// A spliced workbook. Both buffers are live.
struct Splice {
  int16_t failure;      // 0, or why there is no new buffer
  uint16_t number;      // of the new sheet
  uint32_t old_buffer;  // WINDOW1 and WINDOW2 in it have been changed
  uint32_t new_buffer;  // 0 after a failure
  uint32_t size;        // of the new buffer: where the sheet's BOF goes
};

// Makes the buffer with the new BOUNDSHEET, selects the new sheet in WINDOW1 and deselects all others in
// their WINDOW2. *buffer and *size are changed only where patches are folded away. Failures, after which the
// caller's buffer and every record in it stand as they were: -8, -7 the patches can't be folded; -4 no
// buffer, or no pool block for the new one or for the BOUNDSHEET. At -4 `size` is nevertheless the size that
// the new buffer would have had, with the old BUFEND.
Splice SpliceSheet(uint32_t* buffer, uint32_t* size, const char* name);

}  // namespace tolvenar
