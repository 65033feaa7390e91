// Deleting an object of a reference.
#include "reference/reference_delete.h"

namespace tolvenar {

namespace {

bool HasId(const Block& block, uint32_t head, uint16_t id) {
  return U16At(block, head + kObjectId) == id;
}

}  // namespace

int16_t DeleteListedObject(uint32_t buffer, uint16_t id, uint16_t kind_word, const DeletedObject& object) {
  if (buffer == 0) return kRefNoBuffer;
  const int32_t from = FindRefEntry(buffer, id, kind_word);
  if (from < 1) return kRefNoObject;
  RetireRefEntry(buffer, id, kind_word);
  const Block block = OpenBlock(buffer);
  bool seen = false;
  for (Walk walk = StartWalk(block, static_cast<uint32_t>(from)); !walk.ended; Step(&walk)) {
    if (IsChart(block, walk.at, kLowRefEnd)) break;
    const bool is_end = IsChart(block, walk.at, object.end);
    if (IsChart(block, walk.at, object.head) && object.is_sought(block, walk.at, object.key)) seen = true;
    if (seen && !IsJump(block, walk.at)) MarkRecordSlack(block, walk.at);
    if (seen && is_end) break;
  }
  return seen ? kRefDone : kRefHeadNotMet;
}

int16_t DeleteRefObject(uint32_t buffer, uint16_t id, uint16_t kind) {
  const bool is_table = kind == kKindTable;
  const uint8_t head = is_table ? kLowTableHead : kLowGraphHead;
  const uint8_t end = is_table ? kLowTableEnd : kLowGraphEnd;
  return DeleteListedObject(buffer, id, kind, {head, end, HasId, id});
}

}  // namespace tolvenar
