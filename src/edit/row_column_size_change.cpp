// Row height and column width: the search for the record, and what is written.
#include "edit/row_column_size_change.h"

#include "edit/row_column_checks.h"
#include "edit/row_column_edit.h"
#include "edit/row_column_walk.h"
#include "foundation/memory_pool.h"
#include "workbook/record_builders.h"

namespace tolvenar {

namespace {

// The workbook that a new COLINFO goes into, and where.
struct Place {
  uint32_t* buffer;
  uint32_t* size;
  uint32_t at;
};

// Puts a new COLINFO in front of the record at the place. No input gets past the first line, on purpose: the
// rest is the shape of the operation.
int16_t PutColInfo(const Place& place, int16_t first, int16_t last, uint16_t width) {
  uint32_t record_size = 0;
  uint32_t record =
      MakeColInfoRecord(&record_size, static_cast<uint16_t>(first), static_cast<uint16_t>(last), width);
  if (record == 0) return kSizeNoColInfo;
  const int16_t patched = PatchRecord(place.buffer, BlockBytes(record), place.at, record_size, place.size);
  if (patched != kPatchDone) return kSizePatchFailed;
  MEMORYFREE(&record);
  return kEditDone;
}

// A COLINFO that does not stand for one column alone: it gives column `p` up, and new ones behind it take `p` and
// what is left. It changes first, so that it stays changed when the rest fails, on purpose.
int16_t SplitColInfo(const Block& block, const Place& found, int16_t p, uint16_t width) {
  const uint32_t at = found.at;
  const int16_t first = I16At(block, at + kColInfoFirst);
  const int16_t last = I16At(block, at + kColInfoLast);
  const uint16_t old_width = U16At(block, at + kColInfoWidth);
  const int16_t next = static_cast<int16_t>(p + 1);
  const Place behind = {found.buffer, found.size, at + LengthAt(block, at) + kHeaderSize};
  if (first == p) {
    PutU16(block, at + kColInfoLast, static_cast<uint16_t>(first));
    PutU16(block, at + kColInfoWidth, width);
    return PutColInfo(behind, next, last, old_width);
  }
  PutU16(block, at + kColInfoLast, static_cast<uint16_t>(p - 1));
  if (last != p) {
    const int16_t put = PutColInfo(behind, next, last, old_width);
    if (put != kEditDone) return put;
  }
  return PutColInfo(behind, p, p, width);
}

bool IsColInfoOf(const Block& block, uint32_t at, int16_t p) {
  return IsPlain(block, at, kLowColInfo) && I16At(block, at + kColInfoFirst) >= p &&
         I16At(block, at + kColInfoLast) <= p;
}

}  // namespace

int16_t XLChangeRowHeight(uint32_t* buffer, uint32_t table, uint32_t*, int16_t sheet, int16_t row,
                          uint16_t height) {
  SheetScope scope;
  const int16_t check = CheckSheetEdit(buffer, table, sheet, row, IsOutsideInvertedRows, &scope);
  if (check != kEditDone) return check;
  const int16_t p = ZeroBased(row);
  for (EditWalk edit = StartEditWalk(*buffer, scope.extent); InSheet(edit); NextInSheet(&edit)) {
    if (!IsSheetRecord(&edit)) continue;
    const Walk& walk = edit.walk;
    if (!IsPlain(walk.block, walk.at, kLowRow) || I16At(walk.block, walk.at + kRowNumber) != p) continue;
    PutU16(walk.block, walk.at + kRowHeight, height);
    break;
  }
  return kEditDone;
}

int16_t XLChangeColWidth(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t column,
                         uint16_t width) {
  SheetScope scope;
  // The column is compared with the rows, on purpose.
  const int16_t check = CheckSheetEdit(buffer, table, sheet, column, IsOutsideInvertedRows, &scope);
  if (check != kEditDone) return check;
  const int16_t p = ZeroBased(column);
  for (EditWalk edit = StartEditWalk(*buffer, scope.extent); InSheet(edit); NextInSheet(&edit)) {
    if (!IsSheetRecord(&edit)) continue;
    const Block& block = edit.walk.block;
    const uint32_t at = edit.walk.at;
    const Place place = {buffer, size, at};
    if (IsPlain(block, at, kLowDimensions)) return PutColInfo(place, p, p, width);
    if (!IsColInfoOf(block, at, p)) continue;
    if (U16At(block, at + kColInfoFirst) != U16At(block, at + kColInfoLast))
      return SplitColInfo(block, place, p, width);
    PutU16(block, at + kColInfoWidth, width);
    return kEditDone;
  }
  return kSizeNoDimensions;
}

}  // namespace tolvenar
