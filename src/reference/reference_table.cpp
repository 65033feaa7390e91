// XLRCreateTable, XLRDeleteTable, XLRTextToTable, XLRValueToTable, XLRGetTableText, XLRGetTableValue.
#include "reference/reference_table.h"

#include <algorithm>
#include <cstring>

#include "foundation/memory_pool.h"
#include "reference/reference_delete.h"
#include "reference/table_object.h"

namespace tolvenar {

namespace {

// Which of a cell's records a search takes.
enum class Wanted { kFirst, kLast };

struct CellSearch {
  uint32_t number = 0;          // of the cell, in its records
  uint32_t record = kNoRecord;  // the cell's record
  uint32_t end = 0;             // where the table ends
};

GridCell IndexOf(const TableCoordinates& cell) {
  const auto narrow = [](uint32_t c) { return int32_t{static_cast<int16_t>(c)}; };
  return {narrow(cell.c1), narrow(cell.c2), narrow(cell.c3), narrow(cell.c4)};
}

// Numbers the cell by the sizes in the head. There is no lower test, on purpose: a coordinate below 1 is some other cell's number.
bool NumberCell(const Block& block, uint32_t head, const GridCell& cell, uint32_t* number) {
  const GridCell sizes = TableSizesAt(block, head);
  const auto narrow = [](int32_t value) { return static_cast<int16_t>(value); };
  const auto below = [&](uint32_t k) { return narrow(cell[k] - 1); };
  *number = 1 + LinearCellIndex(below(0), below(1), below(2), below(3), narrow(sizes[0]), narrow(sizes[1]),
                                narrow(sizes[2]), narrow(sizes[3]));
  for (uint32_t k = 0; k < kGridDimensions; ++k) {
    if (cell[k] > sizes[k]) return false;
  }
  return true;
}

// Looks for the cell's record of this low byte: the first one, or through the whole table for the last.
int16_t FindCellRecord(uint32_t buffer, uint16_t table, const TableCoordinates& coordinates, uint8_t low,
                       Wanted wanted, CellSearch* search) {
  const GridCell cell = IndexOf(coordinates);
  ObjectWalk object;
  const int16_t found = StartObject(buffer, table, kKindTable, &object);
  if (found != kRefDone) return found;
  for (; !object.ended; StepObject(&object)) {
    const Block& block = object.walk.block;
    if (AtObjectHead(object) && !NumberCell(block, object.walk.at, cell, &search->number)) {
      return kTableOutside;
    }
    if (!AtObjectRecord(object, low)) continue;
    if (U32At(block, object.walk.at + kTableCellNumber) != search->number) continue;
    search->record = object.walk.at;
    if (wanted == Wanted::kFirst) return kRefDone;
  }
  search->end = object.walk.at;
  return object.seen ? kRefDone : kRefHeadNotMet;
}

// What a cell's record holds behind the cell number.
struct CellContent {
  uint8_t low;    // of the record's type
  bool counted;   // whether the length stands in front
  size_t length;  // of the bytes
  const void* bytes;
};

// Takes a pool block for the cell's record and builds it; its bytes in *count. Returns 0 when there is no block, or the record would be too
// long for one: its size counts in 16 bits with a sign.
uint32_t MakeRecord(uint32_t number, const CellContent& content, uint32_t* count) {
  const uint32_t before = content.counted ? kTableText : kTableValue;
  if (content.length > static_cast<size_t>(INT16_MAX) - before) return 0;
  const uint32_t length = static_cast<uint32_t>(content.length);
  *count = before + length;
  const uint32_t record = MEMORYALLOC(static_cast<int32_t>(*count));
  const Block block = OpenBlock(record);
  PutU16(block, kRecordTypeLow, ReferenceType(content.low));
  PutU16(block, kRecordLength, static_cast<uint16_t>(*count - kHeaderSize));
  PutU32(block, kTableCellNumber, number);
  if (content.counted) PutU16(block, kTableTextLength, static_cast<uint16_t>(length));
  CopyIn(block, before, static_cast<const uint8_t*>(content.bytes), length);
  return record;
}

int16_t SaveCell(uint32_t* buffer, uint32_t* size, int16_t table, const TableCoordinates& cell,
                 const CellContent& content) {
  if (!HasBuffer(buffer, size)) return kRefNoBuffer;
  const uint16_t id = static_cast<uint16_t>(table < 0 ? -int32_t{table} : table);
  CellSearch search;
  const int16_t found = FindCellRecord(*buffer, id, cell, content.low, Wanted::kLast, &search);
  if (found != kRefDone) return found;
  uint32_t count = 0;
  uint32_t record = MakeRecord(search.number, content, &count);
  if (record == 0) return kTableNoRecord;
  // A deletion takes the block too, and stores what it has for a cell that has nothing, on purpose.
  if (table < 1 && search.record != kNoRecord) {
    MarkRecordSlack(OpenBlock(*buffer), search.record);
    MEMORYFREE(&record);
    return kRefDone;
  }
  return PutObjectRecord(buffer, size, search.record, search.end, &record, count);
}

int16_t FindContent(uint32_t buffer, uint16_t table, const TableCoordinates& cell, uint8_t low,
                    uint32_t* record) {
  if (buffer == 0) return kRefNoBuffer;
  CellSearch search;
  const int16_t found = FindCellRecord(buffer, table, cell, low, Wanted::kFirst, &search);
  *record = search.record;
  return found == kRefDone && search.record == kNoRecord ? kTableCellEmpty : found;
}

}  // namespace

int16_t XLRCreateTable(uint32_t* buffer, uint32_t* size, uint16_t d1, uint16_t d2, uint16_t d3, uint16_t d4) {
  if (buffer == nullptr || size == nullptr) return kRefNoBuffer;
  const uint16_t sizes[kGridDimensions] = {d1, d2, d3, d4};
  const uint16_t id = LowestFreeRefId(*buffer, kKindTable);
  uint8_t bytes[kTableHeadSize + kObjectEndSize] = {};
  WriteU16(bytes + kRecordTypeLow, ReferenceType(kLowTableHead));
  WriteU16(bytes + kRecordLength, kTableHeadSize - kHeaderSize);
  WriteU16(bytes + kObjectId, id);
  for (uint32_t k = 0; k < kGridDimensions; ++k) WriteU16(bytes + kTableDimensions + 2 * k, sizes[k]);
  WriteU16(bytes + kTableHeadSize + kRecordTypeLow, ReferenceType(kLowTableEnd));
  const int16_t made = CreateRefObject(buffer, size, id, kKindTable, bytes, sizeof bytes);
  return made == kRefDone ? static_cast<int16_t>(id) : made;
}

int16_t XLRDeleteTable(uint32_t buffer, uint16_t table) {
  return DeleteRefObject(buffer, table, kKindTable);
}

int16_t XLRTextToTable(uint32_t* buffer, uint32_t* size, int16_t table, const TableCoordinates& cell,
                       const char* text) {
  const size_t length = text != nullptr ? std::strlen(text) : 0;
  return SaveCell(buffer, size, table, cell, {kLowTableText, true, length, text});
}

int16_t XLRValueToTable(uint32_t* buffer, uint32_t* size, int16_t table, const TableCoordinates& cell,
                        uint32_t low, uint32_t high) {
  uint8_t value[2 * sizeof(uint32_t)];
  WriteU32(value, low);
  WriteU32(value + sizeof low, high);
  return SaveCell(buffer, size, table, cell, {kLowTableValue, false, sizeof value, value});
}

int16_t XLRGetTableText(uint32_t buffer, uint16_t table, BSTR* text, const TableCoordinates& cell) {
  uint32_t record = kNoRecord;
  const int16_t found = FindContent(buffer, table, cell, kLowTableText, &record);
  if (found != kRefDone || text == nullptr) return found;
  const Block block = OpenBlock(buffer);
  const int32_t length = std::max<int32_t>(I16At(block, record + kTableTextLength), 0);
  const uint32_t inside = BytesInside(block, record + kTableText, static_cast<uint32_t>(length));
  const uint8_t* bytes = At(block, record + kTableText, inside);
  *text = SysAllocStringByteLen(reinterpret_cast<const char*>(bytes), inside);
  return kRefDone;
}

int16_t XLRGetTableValue(uint32_t buffer, uint16_t table, void* value, const TableCoordinates& cell) {
  uint32_t record = kNoRecord;
  const int16_t found = FindContent(buffer, table, cell, kLowTableValue, &record);
  if (found != kRefDone || value == nullptr) return found;
  CopyOut(OpenBlock(buffer), record + kTableValue, static_cast<uint8_t*>(value), 2 * sizeof(uint32_t));
  return kRefDone;
}

}  // namespace tolvenar
