// XLRCreateChartEdit, XLRDeleteChartEdit, XLRUpdateChartEdit, XLRGraphByChartEdit.
#include "reference/chart_edit.h"

#include "reference/reference_delete.h"

namespace tolvenar {

namespace {

// What XLRGraphByChartEdit gives: it lies across the two fields.
constexpr uint32_t kEditAnswer = kEditId + 1;

// The number itself, not the number less 1 that the head holds, on purpose.
bool HasNumber(const Block& block, uint32_t head, uint16_t number) {
  return U8At(block, head + kEditNumber) == number;
}

// Finds the head with that number and id behind the entry. Result: kRefDone; kRefNoBuffer; kRefNoObject; kRefHeadNotMet.
int16_t FindEditHead(uint32_t buffer, uint16_t number, uint16_t id, uint32_t* head) {
  if (buffer == 0) return kRefNoBuffer;
  const int32_t from = FindRefEntry(buffer, id, EditKindWord(number));
  if (from < 1) return kRefNoObject;
  const Block block = OpenBlock(buffer);
  for (Walk walk = StartWalk(block, static_cast<uint32_t>(from)); !walk.ended; Step(&walk)) {
    if (IsChart(block, walk.at, kLowRefEnd)) break;
    if (!IsChart(block, walk.at, kLowEditHead) || !HasNumber(block, walk.at, number)) continue;
    if (U16At(block, walk.at + kEditId) != id) continue;
    *head = walk.at;
    return kRefDone;
  }
  return kRefHeadNotMet;
}

}  // namespace

int16_t XLRCreateChartEdit(uint32_t* buffer, uint32_t* size, uint8_t number, uint16_t id, uint16_t graph) {
  if (buffer == nullptr || size == nullptr) return kRefNoBuffer;
  uint8_t bytes[kEditHeadSize + kObjectEndSize] = {};
  WriteU16(bytes + kRecordTypeLow, ReferenceType(kLowEditHead));
  WriteU16(bytes + kRecordLength, kEditHeadSize - kHeaderSize);
  bytes[kEditNumber] = static_cast<uint8_t>(number - 1);  // 255 for 0
  WriteU16(bytes + kEditId, id);
  WriteU16(bytes + kEditGraph, graph);
  WriteU16(bytes + kEditHeadSize + kRecordTypeLow, ReferenceType(kLowEditEnd));
  return CreateRefObject(buffer, size, id, EditKindWord(number), bytes, sizeof bytes);
}

int16_t XLRDeleteChartEdit(uint32_t buffer, uint16_t number, uint32_t id) {
  return DeleteListedObject(buffer, static_cast<uint16_t>(id), EditKindWord(number),
                            {kLowEditHead, kLowEditEnd, HasNumber, number});
}

int16_t XLRUpdateChartEdit(uint32_t buffer, uint16_t number, uint16_t id, uint16_t graph) {
  uint32_t head = kNoRecord;
  const int16_t found = FindEditHead(buffer, number, id, &head);
  if (found == kRefDone) PutU16(OpenBlock(buffer), head + kEditGraph, graph);
  return found == kRefHeadNotMet ? kEditNotMet : found;
}

int16_t XLRGraphByChartEdit(uint32_t buffer, uint16_t number, uint16_t id) {
  uint32_t head = kNoRecord;
  const int16_t found = FindEditHead(buffer, number, id, &head);
  return found == kRefDone ? I16At(OpenBlock(buffer), head + kEditAnswer) : found;
}

}  // namespace tolvenar
