// CompactReference: copy what is kept, renew the directory on the way, cut.
#include "reference/compact_reference.h"

#include "foundation/memory_pool.h"
#include "reference/entry_index.h"
#include "reference/reference_directory.h"

namespace tolvenar {

namespace {

struct Copy {
  uint32_t buffer = 0;  // the old buffer
  Block from;
  Block to;
  int32_t written = 0;
  EntryIndex index;
  bool indexed = false;
};

bool HasRoom(const Copy& copy) {
  return copy.written >= 0 && static_cast<uint32_t>(copy.written) <= copy.to.extent;
}

// Copies the record at `at`. Its length counts as signed: one of 0x8000 or more copies nothing and takes the write offset back, on purpose.
void KeepRecord(Copy* copy, uint32_t at) {
  const int32_t count = I16At(copy->from, at + kRecordLength) + static_cast<int32_t>(kHeaderSize);
  if (count > 0) {
    const uint32_t inside = BytesInside(copy->from, at, static_cast<uint32_t>(count));
    CopyIn(copy->to, static_cast<uint32_t>(copy->written), copy->from.base + at, inside);
  }
  copy->written += count;
}

// Tells the entry of the object whose head is laid down now, where that is.
void RepointObject(Copy* copy, uint16_t id, uint16_t kind_word) {
  const uint32_t written = static_cast<uint32_t>(copy->written);
  if (copy->indexed) {
    RepointIndexed(copy->index, copy->from, id, kind_word, written);
  } else {
    RepointRefEntry(copy->buffer, id, kind_word, written);
  }
}

// Handles a record that is neither a patch record nor the end.
void HandleRecord(Copy* copy, uint32_t at) {
  const Block& from = copy->from;
  if (IsChart(from, at, kLowRefMark)) {
    if (IsFollowedBy10DB(copy->buffer, at) == 0) return;
    PutU32(copy->to, kRefHeaderMark, static_cast<uint32_t>(copy->written));
  } else if (IsChart(from, at, kLowTableHead)) {
    RepointObject(copy, U16At(from, at + kObjectId), kKindTable);
  } else if (IsChart(from, at, kLowGraphHead)) {
    RepointObject(copy, U16At(from, at + kObjectId), kKindGraph);
  }
  KeepRecord(copy, at);
}

// A BUFEND, or the four zero bytes where one has not been written yet.
bool IsStreamEnd(const Block& block, uint32_t at) {
  if (At(block, at, kHeaderSize) == nullptr) return false;
  return IsPrivate(block, at, kLowBufEnd) || U32At(block, at) == 0;
}

// False when the walk goes round or leaves the block, or what it meets has no room.
bool CopyRecords(Copy* copy, uint32_t limit) {
  const Block& from = copy->from;
  Walk walk = StartWalk(from, 0);
  for (; walk.at < limit && !IsStreamEnd(from, walk.at); Step(&walk)) {
    if (walk.ended || !HasRoom(*copy) || At(from, walk.at, kHeaderSize) == nullptr) return false;
    if (IsJump(from, walk.at) || IsPrivate(from, walk.at, kLowSlack)) continue;
    HandleRecord(copy, walk.at);
  }
  return !walk.ended && HasRoom(*copy);
}

}  // namespace

int16_t CompactReference(uint32_t* buffer, uint32_t* size) {
  // A size of 2 GiB or more would be a negative one to the pool, which fits every slot.
  uint32_t block = *size > INT32_MAX ? 0 : MEMORYALLOC(static_cast<int32_t>(*size));
  if (block == 0) return kReferenceNoBlock;
  Copy copy;
  copy.buffer = *buffer;
  copy.from = OpenBlock(*buffer);
  copy.to = OpenBlock(block);
  copy.indexed = MakeEntryIndex(*buffer, &copy.index);
  const bool copied = CopyRecords(&copy, *size == 0 ? 0 : *size - 1) && copy.written > 0;
  const int32_t cut_size = copy.written + static_cast<int32_t>(kBufEndSize);
  const uint32_t cut = copied ? MEMORYREALLOC(block, cut_size) : 0;
  if (cut == 0) {
    MEMORYFREE(&block);
    return kReferenceNotCut;
  }
  MEMORYFREE(buffer);
  *buffer = cut;
  *size = static_cast<uint32_t>(cut_size);
  PutU32(OpenBlock(cut), static_cast<uint32_t>(copy.written), 0);
  return kReferenceCompacted;
}

}  // namespace tolvenar
