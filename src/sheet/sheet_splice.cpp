// The splice of a new sheet into the globals. The picture stands in sheet_splice.h.
#include "sheet/sheet_splice.h"

#include <charconv>
#include <cstring>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "workbook/record_builders.h"
#include "workbook/refresh.h"
#include "workbook/sheet_table.h"

namespace tolvenar {

namespace {

constexpr int16_t kShifted = 0;
constexpr int16_t kNoBuffer = -1;

// A walk has a limit only if it is above 0, signed; size - 1 is the limit.
uint32_t LimitOf(uint32_t size) {
  const int32_t limit = static_cast<int32_t>(size - 1);
  return limit > 0 ? static_cast<uint32_t>(limit) : 0;
}

// Whether every BOUNDSHEET of the globals stands in front of the place of a new one.
bool NewSheetComesLast(uint32_t buffer, uint32_t size) {
  uint16_t number = 0;
  FindSheetInsertPoint(buffer, size, &number);
  const Block block = OpenBlock(buffer);
  uint32_t count = 0;
  for (Walk walk = StartWalk(block, 0); !walk.ended && !IsPlain(block, walk.at, kLowEof); Step(&walk)) {
    if (IsPlain(block, walk.at, kLowBoundSheet)) ++count;
  }
  return count + 1 == number;
}

// Whether the patches of a buffer are in the way of a splice: always when there are jumps. SLACK alone is
// not, unless the new BOUNDSHEET comes before others: the refresh finds sheets in the order of their
// BOUNDSHEETs, meets the new sheet last, and would leave the offsets of those behind the SLACK as they were.
bool MustFold(uint32_t buffer, uint32_t size) {
  const Block block = OpenBlock(buffer);
  const uint32_t limit = LimitOf(size);
  bool slack = false;
  for (Walk walk = StartWalk(block, 0); walk.at < limit && !walk.ended; Step(&walk)) {
    if (IsPrivate(block, walk.at, kLowBufEnd)) break;
    if (IsJump(block, walk.at)) return true;
    if (IsPrivate(block, walk.at, kLowSlack)) slack = true;
  }
  return slack && !NewSheetComesLast(buffer, size);
}

// Folds the patches of a buffer away. Result: 0; -8, -7: the buffer stands as it was.
int16_t FoldPatches(uint32_t* buffer, uint32_t* size) {
  uint32_t table = 0;
  if (MakeSheetTable(*buffer, &table, *size, WithoutSheets::kClosingEof) != 0) return kLocateFailed;
  const int16_t refreshed = XLRefreshHandles(buffer, table, size);
  MEMORYFREE(&table);
  return refreshed == 0 ? int16_t{0} : kRefreshFailed;
}

// Makes the sheet of index `number` - 1 the selected and the first visible tab, and takes the high byte of
// the options, and with it the selection, from every sheet's WINDOW2.
void SelectNewSheet(const Block& block, uint32_t size, uint16_t number) {
  const uint8_t index = static_cast<uint8_t>(number - 1);  // the low bytes alone are written, on purpose
  const uint32_t limit = LimitOf(size);
  for (Walk walk = StartWalk(block, 0); walk.at < limit && !walk.ended; Step(&walk)) {
    // WINDOW1 by its whole high byte, unlike WINDOW2, on purpose.
    if (U8At(block, walk.at) == kLowWindow1 && U8At(block, walk.at + kRecordTypeHigh) == 0) {
      PutU8(block, walk.at + kWindow1ActiveTab, index);
      PutU8(block, walk.at + kWindow1FirstTab, index);
    }
    if (IsPlain(block, walk.at, kLowWindow2)) PutU8(block, walk.at + kWindow2OptionsHigh, 0);
  }
}

// The size of a BOUNDSHEET with that name, learnt by making one.
uint32_t SizeOfBoundSheet(uint32_t bof, const char* name) {
  uint32_t size = 0;
  uint32_t record = MakeBoundSheetRecord(&size, bof, name);
  MEMORYFREE(&record);
  return size;
}

// old[0, p), the BOUNDSHEET, old[p, n).
void CopyAround(const Block& from, const Block& to, uint32_t p, uint32_t n, const Block& bound_sheet) {
  CopyIn(to, 0, from.base, BytesInside(from, 0, p));
  CopyIn(to, p, bound_sheet.base, bound_sheet.extent);
  if (p < n) CopyIn(to, p + bound_sheet.extent, from.base + p, BytesInside(from, p, n - p));
}

// Steps from the known insertion point on: the new buffer, filled. 0 when a pool block is missing; nothing
// has changed then but `size`.
uint32_t MakeSplicedBuffer(const Block& from, uint32_t n, uint32_t p, const SheetName& name, Splice* splice) {
  const uint32_t b = SizeOfBoundSheet(n, name.text);
  uint32_t made = MEMORYALLOC(static_cast<int32_t>(b + n + kBufEndSize));
  splice->size = b + n;
  // Only that byte is compared, on purpose.
  const bool ends_with_buf_end = U8At(from, n - kBufEndSize) == kLowBufEnd;
  const uint32_t kept = ends_with_buf_end ? n - kBufEndSize : n;
  uint32_t bytes = 0;
  uint32_t bound_sheet = MakeBoundSheetRecord(&bytes, kept, name.text);
  if (made == 0 || bound_sheet == 0) {
    MEMORYFREE(&made);
    MEMORYFREE(&bound_sheet);
    return 0;
  }
  splice->size = b + kept;
  SelectNewSheet(from, kept, splice->number);
  CopyAround(from, OpenBlock(made), p, kept, {BlockBytes(bound_sheet), bytes});
  MEMORYFREE(&bound_sheet);
  ShiftSheetOffsets(made, b);
  return made;
}

}  // namespace

int32_t FindSheetInsertPoint(uint32_t buffer, uint32_t size, uint16_t* number) {
  if (buffer == 0) return kNoBuffer;
  *number = 1;
  const Block block = OpenBlock(buffer);
  const uint32_t limit = LimitOf(size);
  uint32_t behind_palette = 0;  // behind a run without a BOUNDSHEET
  bool seen = false;
  Walk walk = StartWalk(block, 0);
  for (; walk.at < limit && !walk.ended; Step(&walk)) {
    if (IsPlain(block, walk.at, kLowEof)) break;
    if (IsPlain(block, walk.at, kLowBoundSheet)) {
      ++*number;
      seen = true;
    } else if (IsPlain(block, walk.at, kLowPalette)) {
      seen = true;
    } else if (seen && *number > 1) {
      return static_cast<int32_t>(walk.at);
    } else if (seen) {
      if (behind_palette == 0) behind_palette = walk.at;
      seen = false;
    }
  }
  const bool palettes_only = *number == 1 && behind_palette != 0;
  return static_cast<int32_t>(palettes_only ? behind_palette : walk.at);
}

SheetName DefaultSheetName(const char* name, uint16_t number) {
  if (name != nullptr && static_cast<uint16_t>(std::strlen(name)) != 0) return {name, nullptr};
  constexpr size_t kBytes = 12;  // always, whatever the digits: "Sheet", up to five digits, zeros
  constexpr char kStem[] = "Sheet";
  char text[kBytes] = {};
  std::memcpy(text, kStem, sizeof kStem - 1);
  std::to_chars(text + sizeof kStem - 1, text + kBytes - 1, number);
  const BSTR made = SysAllocStringByteLen(text, kBytes);
  return {static_cast<const char*>(static_cast<const void*>(made)), made};
}

int16_t ShiftSheetOffsets(uint32_t buffer, uint32_t delta) {
  if (buffer == 0) return kNoBuffer;
  const Block block = OpenBlock(buffer);
  for (Walk walk = StartWalk(block, 0); !walk.ended && !IsPlain(block, walk.at, kLowEof); Step(&walk)) {
    if (!IsPlain(block, walk.at, kLowBoundSheet)) continue;
    PutU32(block, walk.at + kBoundSheetBof, U32At(block, walk.at + kBoundSheetBof) + delta);
  }
  return kShifted;
}

Splice SpliceSheet(uint32_t* buffer, uint32_t* size, const char* name) {
  Splice splice = {kNoNewBuffer, 0, 0, 0, *size};
  const bool live = MEMORYISHANDLE(*buffer) != 0;
  if (live && MustFold(*buffer, *size)) {
    const int16_t folded = FoldPatches(buffer, size);
    if (folded != 0) {
      splice.failure = folded;
      return splice;
    }
    splice.size = *size;
  }
  splice.old_buffer = *buffer;
  const int32_t insert_point = FindSheetInsertPoint(*buffer, *size, &splice.number);
  const SheetName sheet = DefaultSheetName(name, splice.number);
  if (live) {
    splice.new_buffer =
        MakeSplicedBuffer(OpenBlock(*buffer), *size, static_cast<uint32_t>(insert_point), sheet, &splice);
  } else {
    splice.size = SizeOfBoundSheet(*size, sheet.text) + *size;
  }
  SysFreeString(sheet.made);
  if (splice.new_buffer != 0) splice.failure = 0;
  return splice;
}

}  // namespace tolvenar
