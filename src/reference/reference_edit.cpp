// Changes of a ReferenceBuffer: the patch that keeps the directory true, records put into objects, new objects.
#include "foundation/memory_pool.h"
#include "reference/reference_directory.h"

namespace tolvenar {

namespace {

// What an entry says of its object.
struct HeadName {
  uint16_t kind_word = 0;  // 0: no head
  uint16_t id = 0;

  bool operator==(const HeadName& other) const { return kind_word == other.kind_word && id == other.id; }
};

// What the entry of the object whose head stands at `at` says of it.
HeadName HeadAt(const Block& block, uint32_t at) {
  if (IsChart(block, at, kLowTableHead)) return {kKindTable, U16At(block, at + kObjectId)};
  if (IsChart(block, at, kLowGraphHead)) return {kKindGraph, U16At(block, at + kObjectId)};
  if (!IsChart(block, at, kLowEditHead)) return {};
  const uint32_t number = U8At(block, at + kEditNumber);
  return {static_cast<uint16_t>(number * kKindNumberUnit + kKindEdit), U16At(block, at + kEditId)};
}

// True when the first record at `at`, past the jumps, is a head of that name.
bool LeadsToHead(const Block& block, uint32_t at, uint32_t size, const HeadName& name) {
  Walk walk = StartWalk(block, at);
  while (!walk.ended && IsJump(block, walk.at)) Step(&walk);
  return !walk.ended && walk.at < size && HeadAt(block, walk.at) == name;
}

// Tells whoever pointed to the record at `from` that it has gone to `to`: the REFHEADER and every entry that has this offset. A head of
// which no entry knew, as that of a chart edit after a compaction, is made known to the first entry of its name, unless that leads to
// such a head already: two chart edits may have the same number and id, and a deleted one leaves its head behind.
void FollowRecord(uint32_t buffer, uint32_t size, uint32_t from, uint32_t to) {
  const Block block = OpenBlock(buffer);
  if (U32At(block, kRefHeaderMark) == from) PutU32(block, kRefHeaderMark, to);
  uint32_t mark = 0;
  if (!FindDirectory(buffer, &mark)) return;
  const HeadName head = HeadAt(block, to);
  bool known = head.kind_word == 0;
  uint32_t named = kNoRecord;  // the first entry of that name
  for (Walk walk = StartWalk(block, mark); !walk.ended && !IsChart(block, walk.at, kLowRefEnd); Step(&walk)) {
    if (!IsChart(block, walk.at, kLowRefEntry)) continue;
    const HeadName name = {U16At(block, walk.at + kRefEntryKindWord), U16At(block, walk.at + kRefEntryId)};
    if (name == head && named == kNoRecord) named = walk.at;
    if (U32At(block, walk.at + kRefEntryOffset) != from) continue;
    PutU32(block, walk.at + kRefEntryOffset, to);
    known = known || name == head;
  }
  if (known || named == kNoRecord) return;
  if (LeadsToHead(block, U32At(block, named + kRefEntryOffset), size, head)) return;
  PutU32(block, named + kRefEntryOffset, to);
}

// Patches `count` bytes in by way of a pool block, which is released.
int16_t PatchByBlock(uint32_t* buffer, uint32_t* size, const uint8_t* bytes, uint32_t at, uint32_t count) {
  uint32_t scratch = MEMORYALLOC(static_cast<int32_t>(count));
  if (scratch == 0) return kRefNoBlock;
  CopyIn(OpenBlock(scratch), 0, bytes, count);
  const int16_t patched = PatchReference(buffer, BlockBytes(scratch), at, count, size);
  MEMORYFREE(&scratch);
  return patched == kPatchDone ? kRefDone : kRefNotPatched;
}

// Enters the object in front of REFEND.
int16_t AddEntry(uint32_t* buffer, uint32_t* size, uint32_t mark, uint16_t id, uint16_t kind_word) {
  const Block block = OpenBlock(*buffer);
  Walk walk = StartWalk(block, mark);
  while (!walk.ended && !IsChart(block, walk.at, kLowRefEnd)) Step(&walk);
  if (walk.ended) return kRefMarkLost;  // a directory without an end
  uint8_t entry[kRefEntrySize] = {};
  WriteU16(entry + kRecordTypeLow, ReferenceType(kLowRefEntry));
  WriteU16(entry + kRecordLength, kRefEntrySize - kHeaderSize);
  WriteU16(entry + kRefEntryKindWord, kind_word);
  WriteU16(entry + kRefEntryId, id);
  WriteU32(entry + kRefEntryOffset, mark);
  return PatchByBlock(buffer, size, entry, walk.at, sizeof entry);
}

// Lays a new REFMARK between the live one and REFDIR, and makes it the live one.
int16_t RenewMark(uint32_t* buffer, uint32_t* size, uint32_t mark) {
  const uint32_t behind = NextRecord(OpenBlock(*buffer), mark);
  uint8_t bytes[kRefRecordSize];
  PutRefRecord({bytes, sizeof bytes}, 0, kLowRefMark, 0);
  const int16_t patched = PatchByBlock(buffer, size, bytes, behind, sizeof bytes);
  if (patched != kRefDone) return patched;
  const Block block = OpenBlock(*buffer);
  Walk walk = StartWalk(block, behind);
  for (; !walk.ended && !IsChart(block, walk.at, kLowRefEnd); Step(&walk)) {
    if (!IsChart(block, walk.at, kLowRefMark) || IsFollowedBy10DB(*buffer, walk.at) == 0) continue;
    PutU32(block, kRefHeaderMark, walk.at);
    return kRefDone;
  }
  return kRefMarkLost;
}

}  // namespace

int16_t PatchReference(uint32_t* buffer, const uint8_t* bytes, uint32_t at, uint32_t count, uint32_t* size) {
  const uint32_t first = kHeaderSize + LengthAt(OpenBlock(*buffer), at);  // bytes of the record at `at`
  const uint32_t size_before = *size;
  const int16_t result = PatchRecord(buffer, bytes, at, count, size);
  if (result != kPatchDone || *size == size_before || first >= kJumpSize) return result;
  // The record behind it went along: patch, record, its successor.
  const uint32_t moved = U32At(OpenBlock(*buffer), at + kJumpTarget) + (count & 0xFFFFu) + first;
  FollowRecord(*buffer, *size, at + first, moved);
  return result;
}

int16_t PutObjectRecord(uint32_t* buffer, uint32_t* size, uint32_t noted, uint32_t end, uint32_t* record,
                        uint32_t count) {
  const bool replaces = noted != kNoRecord;
  const uint16_t type = U16At(OpenBlock(*buffer), noted);
  if (replaces) MarkRecordSlack(OpenBlock(*buffer), noted);
  int16_t patched = PatchReference(buffer, BlockBytes(*record), replaces ? noted : end, count, size);
  if (replaces && patched != kPatchDone && *buffer != 0) {
    // A short record in front of one of nearly 32767 bytes: the two are more than a detour displaces. Only the place is lost.
    patched = PatchReference(buffer, BlockBytes(*record), end, count, size);
    if (patched != kPatchDone && *buffer != 0) PutU16(OpenBlock(*buffer), noted + kRecordTypeLow, type);
  }
  MEMORYFREE(record);
  if (patched == kPatchDone) return kRefDone;
  return replaces ? kRefNotReplaced : kRefNotAppended;
}

uint16_t LowestFreeRefId(uint32_t buffer, uint16_t kind) {
  uint32_t mark = 0;
  if (!FindDirectory(buffer, &mark)) return 0;
  constexpr uint32_t kIds = 0x10000;
  const Block block = OpenBlock(buffer);
  uint8_t taken[kIds / 8] = {};  // a bit for each id: the directory is walked once
  for (Walk walk = StartWalk(block, mark); !walk.ended && !IsChart(block, walk.at, kLowRefEnd); Step(&walk)) {
    if (!IsChart(block, walk.at, kLowRefEntry)) continue;
    if (U16At(block, walk.at + kRefEntryKindWord) != kind) continue;
    const uint16_t id = U16At(block, walk.at + kRefEntryId);
    taken[id / 8] = static_cast<uint8_t>(taken[id / 8] | (1u << (id % 8)));
  }
  for (uint32_t id = 1; id < kIds; ++id) {
    if ((taken[id / 8] & (1u << (id % 8))) == 0) return static_cast<uint16_t>(id);
  }
  return 0;
}

int16_t CreateRefObject(uint32_t* buffer, uint32_t* size, uint16_t id, uint16_t kind_word,
                        const uint8_t* head_and_end, uint32_t count) {
  if (*buffer == 0) return kRefNoBuffer;
  uint32_t mark = 0;
  if (!FindDirectory(*buffer, &mark)) return kRefNoValidDir;
  int16_t result = AddEntry(buffer, size, mark, id, kind_word);
  if (result == kRefDone) result = RenewMark(buffer, size, mark);
  if (result == kRefDone) result = PatchByBlock(buffer, size, head_and_end, mark, count);
  return result;
}

}  // namespace tolvenar
