// XLRCreateGraph, XLRDeleteGraph, XLRUpdateGraph, XLRUpdateGraphTable, XLRTableByGraph.
#include "reference/graph_object.h"

#include "foundation/memory_pool.h"
#include "reference/reference_delete.h"

namespace tolvenar {

namespace {

bool IsLink(const Block& block, uint32_t at, uint16_t link) {
  return IsChart(block, at, kLowGraphTable) && U8At(block, at + kGraphTableLink) == link;
}

int16_t AddLink(uint32_t* buffer, uint32_t* size, uint32_t end, uint16_t table, uint16_t link) {
  uint32_t record = MEMORYALLOC(kGraphTableSize);
  if (record == 0) return kGraphNoRecord;
  const Block block = OpenBlock(record);
  PutU16(block, kRecordTypeLow, ReferenceType(kLowGraphTable));
  PutU16(block, kRecordLength, kGraphTableSize - kHeaderSize);
  PutU8(block, kGraphTableLink, static_cast<uint8_t>(link));
  PutU16(block, kGraphTableLinked, table);
  return PutObjectRecord(buffer, size, kNoRecord, end, &record, kGraphTableSize);
}

}  // namespace

int16_t XLRCreateGraph(uint32_t* buffer, uint32_t* size, uint16_t table) {
  if (buffer == nullptr || size == nullptr) return kRefNoBuffer;
  const uint16_t id = LowestFreeRefId(*buffer, kKindGraph);
  uint8_t bytes[kGraphHeadSize + kObjectEndSize] = {};
  WriteU16(bytes + kRecordTypeLow, ReferenceType(kLowGraphHead));
  WriteU16(bytes + kRecordLength, kGraphHeadSize - kHeaderSize);
  WriteU16(bytes + kObjectId, id);
  WriteU16(bytes + kGraphTableId, table);
  WriteU16(bytes + kGraphHeadSize + kRecordTypeLow, ReferenceType(kLowGraphEnd));
  const int16_t made = CreateRefObject(buffer, size, id, kKindGraph, bytes, sizeof bytes);
  return made == kRefDone ? static_cast<int16_t>(id) : made;
}

int16_t XLRDeleteGraph(uint32_t buffer, uint16_t graph) {
  return DeleteRefObject(buffer, graph, kKindGraph);
}

int16_t XLRUpdateGraph(uint32_t buffer, uint16_t graph, uint16_t table) {
  if (buffer == 0) return kRefNoBuffer;
  ObjectWalk object;
  const int16_t found = StartObject(buffer, graph, kKindGraph, &object);
  if (found != kRefDone) return found;
  for (; !object.ended; StepObject(&object)) {
    if (!object.seen) continue;
    PutU16(object.walk.block, object.walk.at + kGraphTableId, table);
    return kRefDone;
  }
  return kGraphNotMet;
}

int16_t XLRUpdateGraphTable(uint32_t* buffer, uint32_t* size, uint16_t graph, uint16_t table, uint16_t link) {
  if (buffer == nullptr || size == nullptr || *buffer == 0) return kRefNoBuffer;
  ObjectWalk object;
  const int16_t found = StartObject(*buffer, graph, kKindGraph, &object);
  if (found != kRefDone) return found;
  const Block block = object.walk.block;
  uint32_t noted = kNoRecord;
  for (; !object.ended; StepObject(&object)) {
    if (object.seen && IsLink(block, object.walk.at, link)) noted = object.walk.at;
  }
  if (!object.seen) return kRefHeadNotMet;
  if (noted == kNoRecord) {
    return table != 0 ? AddLink(buffer, size, object.walk.at, table, link) : kRefDone;
  }
  if (table != 0) {
    PutU16(block, noted + kGraphTableLinked, table);
  } else {
    MarkRecordSlack(block, noted);
  }
  return kRefDone;
}

int16_t XLRTableByGraph(uint32_t buffer, uint16_t graph, uint16_t link) {
  if (buffer == 0) return kRefNoBuffer;
  const int32_t from = FindRefEntry(buffer, graph, kKindGraph);
  if (from < 1) return kRefNoObject;
  const Block block = OpenBlock(buffer);
  bool seen = false;
  for (Walk walk = StartWalk(block, static_cast<uint32_t>(from)); !walk.ended; Step(&walk)) {
    if (IsChart(block, walk.at, kLowRefEnd)) break;
    if (IsChart(block, walk.at, kLowGraphHead) && U16At(block, walk.at + kObjectId) == graph) {
      seen = true;
      if (link == 0) return I16At(block, walk.at + kGraphTableId);
    }
    // No test for GRAPHEND, on purpose: a later graph may answer.
    if (seen && IsLink(block, walk.at, link)) return I16At(block, walk.at + kGraphTableLinked);
  }
  return seen ? int16_t{0} : kRefHeadNotMet;
}

}  // namespace tolvenar
