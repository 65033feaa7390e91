// The patch into the globals, and what it tells the SheetTable and the BOUNDSHEETs.
#include "workbook/globals_patch.h"

#include <algorithm>

#include "workbook/sheet_table.h"

namespace tolvenar {

namespace {

// Tells the table, and the BOUNDSHEETs, where a sheet's BOF or the closing EOF has gone.
void MoveSheet(uint32_t buffer, uint32_t table, uint32_t from, uint32_t to) {
  const Block entries = OpenBlock(table);
  const uint32_t count = static_cast<uint32_t>(std::max<int32_t>(TableCount(entries), 0));
  for (uint32_t entry = kTableFirstSheet; entry <= count + kTableFirstSheet; ++entry) {
    if (TableEntry(entries, entry) == from) PutTableEntry(entries, entry, to);
  }
  const Block block = OpenBlock(buffer);
  Walk walk = StartWalk(block, TableEntry(entries, kTableGlobalsBegin));
  for (; !walk.ended && !IsPlain(block, walk.at, kLowEof); Step(&walk)) {
    if (!IsPlain(block, walk.at, kLowBoundSheet)) continue;
    if (U32At(block, walk.at + kBoundSheetBof) == from) PutU32(block, walk.at + kBoundSheetBof, to);
  }
}

// PatchRecord, and then the table and the BOUNDSHEETs follow what a detour has displaced: the record at `at` and, when that is shorter than
// a DETOUR, the one behind it, which came to stand as far behind the first as before.
int16_t PatchAndMove(uint32_t* buffer, uint32_t table, uint32_t* size, const uint8_t* record, uint32_t at,
                     uint32_t count) {
  const uint32_t first = kHeaderSize + LengthAt(OpenBlock(*buffer), at);
  const uint32_t size_before = *size;
  const int16_t patched = PatchRecord(buffer, record, at, count, size);
  if (patched != kPatchDone || *size == size_before) return patched;  // failed, or it had room in a SLACK
  const uint32_t moved = U32At(OpenBlock(*buffer), at + kJumpTarget) + count;
  MoveSheet(*buffer, table, at, moved);
  if (first < kJumpSize) MoveSheet(*buffer, table, at + first, moved + first);
  return patched;
}

}  // namespace

// When the record at `at` is shorter than a DETOUR and the EOF of the globals stands behind it, the patch would displace the EOF and leave the
// first sheet's BOF where it is, and the EOF would no longer stand 4 bytes in front of it. So an empty SLACK is patched in at the EOF first: EOF
// and BOF move together, and what stands behind the short record is the DETOUR to them.
int16_t PatchGlobals(uint32_t* buffer, uint32_t table, uint32_t* size, const uint8_t* record, uint32_t at,
                     uint32_t count) {
  const uint32_t first = kHeaderSize + LengthAt(OpenBlock(*buffer), at);
  const uint32_t eof = at + first;
  if (first < kJumpSize && IsPlain(OpenBlock(*buffer), eof, kLowEof)) {
    constexpr uint8_t kEmptySlack[kHeaderSize] = {kLowSlack, kPrivateHigh, 0, 0};
    const int16_t moved = PatchAndMove(buffer, table, size, kEmptySlack, eof, sizeof kEmptySlack);
    if (moved != kPatchDone) return moved;
  }
  return PatchAndMove(buffer, table, size, record, at, count);
}

}  // namespace tolvenar
