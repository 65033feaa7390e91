// SheetTable: built from the BOUNDSHEET records of the globals and the EOF of the last sheet.
#include "workbook/sheet_table.h"

#include "foundation/memory_pool.h"

namespace tolvenar {

namespace {

constexpr int16_t kLocated = 0;
constexpr int16_t kNoBuffer = 1;
constexpr int16_t kNoEof = 9;
constexpr int16_t kNoTable = 11;
constexpr int16_t kLastSheetOpen = 12;

// Offset of the first EOF, the end of the globals; `limit` or beyond when there is none.
uint32_t FindGlobalsEof(const Block& block, uint32_t limit) {
  Walk walk = StartWalk(block, 0);
  while (walk.at < limit && !IsPlain(block, walk.at, kLowEof)) {
    Step(&walk);
    if (walk.ended) return limit;
  }
  return walk.at;
}

// Calls `visit` with the offset of each BOUNDSHEET in the walk up to the globals EOF.
template <typename Visit>
void ForEachBoundSheet(const Block& block, uint32_t eof, Visit visit) {
  for (Walk walk = StartWalk(block, 0); walk.at != eof && !walk.ended; Step(&walk)) {
    if (IsPlain(block, walk.at, kLowBoundSheet)) visit(walk.at);
  }
}

// Offset of the EOF that closes the substream whose BOF stands at `bof`; `limit` or beyond when none does.
uint32_t FindClosingEof(const Block& block, uint32_t bof, uint32_t limit) {
  Walk walk = StartWalk(block, bof);
  int32_t depth = 1;
  for (Step(&walk); walk.at < limit && !walk.ended; Step(&walk)) {
    PassOverAlike(&walk, limit, IsInsideSubstream);
    if (walk.at >= limit || walk.ended) break;
    if (IsPlain(block, walk.at, kLowBof)) ++depth;
    if (IsPlain(block, walk.at, kLowEof)) --depth;
    if (depth == 0) return walk.at;
  }
  return limit;
}

int16_t Fail(int16_t result, uint32_t* table) {
  MEMORYFREE(table);
  return result;
}

}  // namespace

int16_t MakeSheetTable(uint32_t buffer, uint32_t* table, uint32_t size, WithoutSheets without_sheets) {
  *table = 0;
  const Block block = OpenBlock(buffer);
  const int32_t limit = static_cast<int32_t>(size - 1);
  if (limit <= 0) return Fail(kNoEof, table);
  const uint32_t end = static_cast<uint32_t>(limit);
  const uint32_t eof = FindGlobalsEof(block, end);
  if (eof >= end) return Fail(kNoEof, table);

  int16_t count = 0;  // 16 bits, as the queries read it
  ForEachBoundSheet(block, eof, [&](uint32_t) { count = static_cast<int16_t>(count + 1); });
  *table = MEMORYALLOC(count * static_cast<int32_t>(kTableEntrySize) +
                       static_cast<int32_t>(kTableExtraEntries * kTableEntrySize));
  if (*table == 0) return Fail(kNoTable, table);
  const Block entries = OpenBlock(*table);
  PutTableEntry(entries, 0, static_cast<uint32_t>(static_cast<int32_t>(count)));
  PutTableEntry(entries, kTableGlobalsBegin, 0);
  uint32_t entry = kTableFirstSheet;
  ForEachBoundSheet(block, eof,
                    [&](uint32_t at) { PutTableEntry(entries, entry++, U32At(block, at + kBoundSheetBof)); });

  if (count == 0 && without_sheets == WithoutSheets::kBehindEof) {
    PutTableEntry(entries, kTableFirstSheet, eof + kEofSize);
    return kLocated;
  }
  const uint32_t last = TableEntry(entries, static_cast<uint32_t>(count + 1));
  const uint32_t closing = FindClosingEof(block, last, end);
  if (closing >= end) return Fail(kLastSheetOpen, table);
  PutTableEntry(entries, static_cast<uint32_t>(count + 2), closing);
  return kLocated;
}

SheetExtent ExtentOfSheet(const Block& table, int16_t sheet) {
  const uint32_t entry = static_cast<uint32_t>(sheet) + 1;
  const bool last = sheet == TableCount(table);
  return {TableEntry(table, entry), TableEntry(table, entry + 1) - (last ? 0 : kEofSize)};
}

int16_t XLLocateSheets(uint32_t buffer, uint32_t* table, uint32_t size) {
  uint32_t unwanted = 0;
  if (table == nullptr) table = &unwanted;
  *table = 0;
  if (MEMORYISHANDLE(buffer) == 0) return kNoBuffer;
  const int16_t result = MakeSheetTable(buffer, table, size, WithoutSheets::kClosingEof);
  if (result != kLocated) MEMORYFREE(&buffer);
  MEMORYFREE(&unwanted);
  return result;
}

}  // namespace tolvenar
