// Sheet catalogue: walks over the globals, and the stride over the BOUNDSHEET entries.
#include "query/sheet_catalogue.h"

#include "foundation/memory_pool.h"
#include "query/byte_text.h"
#include "query/extent_walk.h"
#include "workbook/biff_version.h"

namespace tolvenar {

namespace {

constexpr int16_t kNamesTaken = 0;
constexpr int16_t kNamesNoBuffer = 3;

// A sheet's name in the buffer.
struct SheetName {
  uint32_t at;
  uint8_t length;
};

// Offset of the first BOUNDSHEET in the globals, which begin at `begin`. False when there is none.
bool FindFirstEntry(const Block& block, uint32_t begin, uint32_t end, uint32_t* entry) {
  for (Walk walk = StartWalk(block, begin); InExtent(walk, end); Step(&walk)) {
    if (!IsPlain(block, walk.at, kLowBoundSheet)) continue;
    *entry = walk.at;
    return true;
  }
  return false;
}

// The name of sheet `sheet`; one of length 0 at offset 0 when the globals have no BOUNDSHEET.
SheetName FindName(const Block& block, uint32_t begin, uint32_t end, int16_t sheet) {
  uint32_t entry = 0;
  if (!FindFirstEntry(block, begin, end, &entry)) return {0, 0};
  for (int32_t k = 1; k < sheet; ++k) entry += kBoundSheetName + U8At(block, entry + kBoundSheetNameLength);
  return {entry + kBoundSheetName, U8At(block, entry + kBoundSheetNameLength)};
}

}  // namespace

int16_t XLGetNumSheets(uint32_t table) {
  return TableCount(OpenBlock(table));
}

uint16_t XLGetNumVers(uint32_t buffer, uint32_t table) {
  const Block entries = OpenBlock(table);
  const Block block = OpenBlock(buffer);
  if (entries.extent != 0) {
    ForEachRecord(block, 0, GlobalsEnd(entries), [&](uint32_t at) {
      if (IsPlain(block, at, kLowBof)) BiffVersion = U8At(block, at + kBofVersionHigh);
    });
  }
  return static_cast<uint16_t>(BiffVersion);
}

int16_t XLVersInt(int16_t version) {
  return version;
}

int16_t XLGetNameSheet(uint32_t buffer, uint32_t table, int16_t sheet, BSTR* name) {
  const Block entries = OpenBlock(table);
  if (entries.extent == 0) return 0;
  const Block block = OpenBlock(buffer);
  const SheetName found = FindName(block, 0, GlobalsEnd(entries), sheet);
  if (!PoolHasRoom(found.length + 1)) return 0;
  if (name != nullptr) *name = PackedBstr(block, found.at, found.length);
  return found.length;
}

uint32_t XLGetSheetParam(uint32_t buffer, uint32_t table, int16_t sheet, uint32_t /*unused1*/,
                         uint32_t /*unused2*/, uint32_t /*unused3*/, uint32_t /*unused4*/) {
  const Block entries = OpenBlock(table);
  if (entries.extent == 0) return 0;
  const uint32_t begin = TableEntry(entries, kTableGlobalsBegin);
  const SheetName found = FindName(OpenBlock(buffer), begin, GlobalsEnd(entries), sheet);
  return PoolHasRoom(found.length + 1) ? 1 : 0;
}

int16_t XLSheetsNameNum(uint32_t buffer, uint32_t table, uint32_t /*unused*/) {
  if (buffer == 0) return kNamesNoBuffer;
  const Block entries = OpenBlock(table);
  const Block block = OpenBlock(buffer);
  const uint32_t begin = TableEntry(entries, kTableGlobalsBegin);
  const int16_t count = TableCount(entries);
  for (int32_t k = 1; k <= count; ++k) {
    const SheetName found = FindName(block, begin, GlobalsEnd(entries), static_cast<int16_t>(k));
    const uint32_t copy = MEMORYALLOC(found.length + 1);
    if (copy == 0) return kNamesTaken;
    CopyOut(block, found.at, BlockBytes(copy), found.length);
  }
  return kNamesTaken;
}

}  // namespace tolvenar
