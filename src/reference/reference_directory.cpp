// The directory of a ReferenceBuffer: lookups and the object walk.
#include "reference/reference_directory.h"

namespace tolvenar {

namespace {

// Finds the entry of an object in a valid directory. False when there is none before REFEND.
bool FindEntry(uint32_t buffer, uint32_t mark, uint16_t id, uint16_t kind_word, uint32_t* entry) {
  const Block block = OpenBlock(buffer);
  for (Walk walk = StartWalk(block, mark); !walk.ended && !IsChart(block, walk.at, kLowRefEnd); Step(&walk)) {
    if (!IsChart(block, walk.at, kLowRefEntry)) continue;
    if (U16At(block, walk.at + kRefEntryId) != id) continue;
    if (U16At(block, walk.at + kRefEntryKindWord) != kind_word) continue;
    *entry = walk.at;
    return true;
  }
  return false;
}

bool FindEntry(uint32_t buffer, uint16_t id, uint16_t kind_word, uint32_t* entry) {
  uint32_t mark = 0;
  return FindDirectory(buffer, &mark) && FindEntry(buffer, mark, id, kind_word, entry);
}

// Judges the record that the walk has come to.
void JudgeRecord(ObjectWalk* object) {
  const Block& block = object->walk.block;
  const uint32_t at = object->walk.at;
  object->lost = object->walk.ended || At(block, at, kHeaderSize) == nullptr;
  if (!object->lost && AtObjectHead(*object)) object->seen = true;
  object->at_ref_end = !object->lost && IsChart(block, at, kLowRefEnd);
  object->ended = object->lost || object->at_ref_end || (object->seen && IsChart(block, at, object->end));
}

}  // namespace

bool FindDirectory(uint32_t buffer, uint32_t* mark) {
  const Block block = OpenBlock(buffer);
  const uint32_t at = U32At(block, kRefHeaderMark);  // whatever record stands there
  if (!IsChart(block, at, kLowRefMark) || IsFollowedBy10DB(buffer, at) == 0) return false;
  if (mark != nullptr) *mark = at;
  return true;
}

int32_t FindRefEntry(uint32_t buffer, uint16_t id, uint16_t kind_word) {
  uint32_t mark = 0;
  uint32_t entry = 0;
  if (!FindDirectory(buffer, &mark)) return kRefNoDirectory;
  if (!FindEntry(buffer, mark, id, kind_word, &entry)) return kRefNotListed;
  return static_cast<int32_t>(U32At(OpenBlock(buffer), entry + kRefEntryOffset));
}

void RepointRefEntry(uint32_t buffer, uint16_t id, uint16_t kind_word, uint32_t offset) {
  uint32_t entry = 0;
  if (FindEntry(buffer, id, kind_word, &entry)) PutU32(OpenBlock(buffer), entry + kRefEntryOffset, offset);
}

void RetireRefEntry(uint32_t buffer, uint16_t id, uint16_t kind_word) {
  uint32_t entry = 0;
  if (FindEntry(buffer, id, kind_word, &entry)) MarkRecordSlack(OpenBlock(buffer), entry);
}

uint32_t LinearCellIndex(int16_t a, int16_t b, int16_t c, int16_t d, int16_t d1, int16_t d2, int16_t d3,
                         int16_t /*d4*/) {
  // Signed values widened, then counted modulo 2^32.
  const auto wide = [](int16_t value) { return static_cast<uint32_t>(int32_t{value}); };
  return ((wide(d) * wide(d3) + wide(c)) * wide(d2) + wide(b)) * wide(d1) + wide(a);
}

int16_t StartObject(uint32_t buffer, uint16_t id, uint16_t kind_word, ObjectWalk* object) {
  const int32_t at = FindRefEntry(buffer, id, kind_word);
  if (at < 1) return kRefNoObject;
  *object = ObjectWalk{};
  object->walk = StartWalk(OpenBlock(buffer), static_cast<uint32_t>(at));
  object->head = kind_word == kKindTable ? kLowTableHead : kLowGraphHead;
  object->end = kind_word == kKindTable ? kLowTableEnd : kLowGraphEnd;
  object->id = id;
  JudgeRecord(object);
  return kRefDone;
}

void StepObject(ObjectWalk* object) {
  Step(&object->walk);
  JudgeRecord(object);
}

}  // namespace tolvenar
