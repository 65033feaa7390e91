// XLRCreateGraph, XLRDeleteGraph, XLRUpdateGraph, XLRUpdateGraphTable, XLRTableByGraph.
#include "reference/graph_object.h"

#include "reference/graph_visit.h"
#include "reference/reference_delete.h"

namespace tolvenar {

namespace {

bool IsLink(const Block& block, uint32_t at, uint16_t link) {
  return IsChart(block, at, kLowGraphTable) && U8At(block, at + kGraphTableLink) == link;
}

int16_t AddLink(uint32_t* buffer, uint32_t* size, uint32_t end, uint16_t table, uint16_t link) {
  uint32_t record = NewGraphRecord(ReferenceType(kLowGraphTable), kGraphTableSize);
  if (record == 0) return kRefNoRecord;
  PutU8(OpenBlock(record), kGraphTableLink, static_cast<uint8_t>(link));
  PutU16(OpenBlock(record), kGraphTableLinked, table);
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
  if (!HasBuffer(buffer, size)) return kRefNoBuffer;
  NotedRecord place;
  const int16_t found = NoteLast(*buffer, graph, &place,
                                 [link](const Block& block, uint32_t at) { return IsLink(block, at, link); });
  if (found != kRefDone) return found;
  if (place.noted == kNoRecord) {
    return table != 0 ? AddLink(buffer, size, place.end, table, link) : kRefDone;
  }
  if (table != 0) {
    PutU16(OpenBlock(*buffer), place.noted + kGraphTableLinked, table);
  } else {
    MarkRecordSlack(OpenBlock(*buffer), place.noted);
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
