// The directory of a ReferenceBuffer, and what all exports on its objects share: find an object, walk it, put a record into it, make a new
// one. The records are those of reference_records.h. Lookups and walks are in reference_directory.cpp, changes in reference_edit.cpp.
//
// Invariants: (1) A directory is valid when the u32 at offset 4 leads to a REFMARK whose next real record is REFDIR. (2) What stands in a
// REFENTRY or in the REFHEADER leads to its record after every PatchReference: a patch before a record of less than 8 bytes displaces the
// one behind it as well, and whoever pointed there is told its new place. PatchRecord alone doesn't; so this layer patches by
// PatchReference only.
#pragma once

#include <cstdint>

#include "reference/reference_records.h"

namespace tolvenar {

// Results of FindRefEntry that are no offset.
constexpr int32_t kRefNoDirectory = -1;
constexpr int32_t kRefNotListed = -2;

// Results that the exports share.
constexpr int16_t kRefDone = 0;
constexpr int16_t kRefNoBuffer = -1;
constexpr int16_t kRefHeadNotMet = -2;  // the walk ended and the head did not come by
constexpr int16_t kRefNoObject = -997;  // FindRefEntry found nothing
constexpr int16_t kRefMarkLost = -998;  // the new REFMARK was not met again
constexpr int16_t kRefNoValidDir = -999;
constexpr int16_t kRefNoBlock = -2;     // creation: no pool block
constexpr int16_t kRefNotPatched = -4;  // creation: a patch failed
constexpr int16_t kRefNotAppended = -5;
constexpr int16_t kRefNotReplaced = -6;

// True when an export has a buffer to work on. A missing size counts as a missing buffer.
inline bool HasBuffer(const uint32_t* buffer, const uint32_t* size) {
  return buffer != nullptr && size != nullptr && *buffer != 0;
}

// Offset that no record has.
constexpr uint32_t kNoRecord = 0;

// Kind word of chart edit `number`; a number of 0 wraps.
constexpr uint16_t EditKindWord(uint16_t number) {
  return static_cast<uint16_t>(kKindEdit + (number - 1) * kKindNumberUnit);
}

// True when the buffer has a valid directory; *mark (unless null) is then the offset of the live REFMARK.
bool FindDirectory(uint32_t buffer, uint32_t* mark);

// The object's offset as its entry has it; kRefNoDirectory; kRefNotListed when REFEND comes first.
int32_t FindRefEntry(uint32_t buffer, uint16_t id, uint16_t kind_word);

// Gives the object's entry another offset, or turns the entry into SLACK. Without a valid directory or such an entry nothing happens.
void RepointRefEntry(uint32_t buffer, uint16_t id, uint16_t kind_word, uint32_t offset);
void RetireRefEntry(uint32_t buffer, uint16_t id, uint16_t kind_word);

// Index of a cell by its 0-based coordinates: the first varies fastest, and D4 takes no part.
uint32_t LinearCellIndex(int16_t a, int16_t b, int16_t c, int16_t d, int16_t d1, int16_t d2, int16_t d3,
                         int16_t d4);

// A walk over one object:
//
//   ObjectWalk object;
//   const int16_t found = StartObject(buffer, id, kKindTable, &object);
//   if (found != kRefDone) return found;
//   for (; !object.ended; StepObject(&object)) { ... examine object.walk.at, with object.seen ... }
//   if (!object.seen) return kRefHeadNotMet;            object.walk.at is the object's end record
//
// `seen` says whether the head with the id has come by, this record included. The walk ends at REFEND, or at the object's end record once
// `seen`; neither is examined. A walk that comes round or out of the block ends with `lost`, and is then to be answered as at REFEND.
struct ObjectWalk {
  Walk walk;
  uint8_t head = 0;
  uint8_t end = 0;
  uint16_t id = 0;
  bool seen = false;
  bool ended = false;
  bool lost = false;
  bool at_ref_end = false;
};

// Starts the walk of a table or a graph. Result: kRefDone; kRefNoObject, whatever the cause.
int16_t StartObject(uint32_t buffer, uint16_t id, uint16_t kind_word, ObjectWalk* object);
void StepObject(ObjectWalk* object);

// True when the walk stands at the head that it looks for.
inline bool AtObjectHead(const ObjectWalk& object) {
  return IsChart(object.walk.block, object.walk.at, object.head) &&
         U16At(object.walk.block, object.walk.at + kObjectId) == object.id;
}

// True when the walk stands at a record of this low byte, inside the object.
inline bool AtObjectRecord(const ObjectWalk& object, uint8_t low) {
  return object.seen && IsChart(object.walk.block, object.walk.at, low);
}

// PatchRecord for reference streams: the same results and effects, and what pointed to a record that the patch displaced besides the one at
// `at` points to its new place: the REFHEADER of a live mark, the REFENTRY of an object, chart edits included. A displaced head to which no
// entry of its name led, as that of a chart edit after a compaction, is given to the first such entry.
int16_t PatchReference(uint32_t* buffer, const uint8_t* bytes, uint32_t at, uint32_t count, uint32_t* size);

// Puts the record in the scratch block *record (`count` bytes) into an object: in the place of the one at `noted`, or, with kNoRecord, in
// front of the object's end record at `end`. Where no patch can be laid at `noted` (two neighbours that are too long for a detour), it goes in
// front of `end` all the same, and the old record is gone. *record is released in every case. Result: kRefDone; kRefNotReplaced;
// kRefNotAppended: the buffer has been freed and *buffer is 0, or, in a damaged one, no patch could be laid and it is as it was.
int16_t PutObjectRecord(uint32_t* buffer, uint32_t* size, uint32_t noted, uint32_t end, uint32_t* record,
                        uint32_t count);

// The lowest id from 1 on that no entry of this kind (and number 0) has.
uint16_t LowestFreeRefId(uint32_t buffer, uint16_t kind);

// Makes an object from its head and end records, `count` bytes that lie outside the pool, and enters it as `id` of `kind_word`.
// Result: kRefDone; kRefNoBuffer; kRefNoValidDir; kRefNoBlock; kRefNotPatched: the buffer is gone and *buffer is 0; kRefMarkLost.
// On failure the entry and the new mark may already be in the buffer; nothing is taken back.
int16_t CreateRefObject(uint32_t* buffer, uint32_t* size, uint16_t id, uint16_t kind_word,
                        const uint8_t* head_and_end, uint32_t count);

}  // namespace tolvenar
