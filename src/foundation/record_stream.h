// Record stream: the one gate from an offset to a byte, the one walk and the one patch.
//
//   A record                                    The private records (type high byte 0xFE), in memory only
//   OFFSET  SIZE  FIELD                         DETOUR  FF FE 04 00, target u32   the walk goes on at the target
//        0     1  type, low byte                RESUME  FA FE 04 00, return u32   the walk goes on at the return offset
//        1     1  type, high byte               SLACK   FD FE, n, n bytes         free room, walked over
//        2     2  n, length of the payload      BUFEND  F8 FE 00 00               the stream ends
//        4     n  payload
//
// A RecordBuffer is a pool block: the main stream from offset 0, ended by a BUFEND, then patch areas. Nothing in it is ever moved: a
// change is a patch at the end that the walk reaches by a DETOUR and leaves by a RESUME. Positions are byte offsets from the base.
//
// Invariants, and this file alone keeps them:
// (1) No read or write leaves the block. A read that is not wholly inside gives zero, such a write does nothing.
// (2) Every walk ends: after more steps than the block has room for records, or once it comes by an offset again, it has `ended`.
// (3) Offsets stay good across a patch; addresses do not, so a Block is opened anew after whatever may grow the buffer.
#pragma once

#include <cstdint>

#include "platform/bytes.h"
#include "platform/prediction.h"

namespace tolvenar {

// Fields of every record, from its first byte.
constexpr uint32_t kRecordTypeLow = 0;
constexpr uint32_t kRecordTypeHigh = 1;
constexpr uint32_t kRecordLength = 2;
constexpr uint32_t kTypeSize = 2;
constexpr uint32_t kHeaderSize = 4;

// Bit of the type's high byte that tells the chart and private records from all others.
constexpr uint8_t kChartBit = 0x10;

// Low bytes of the private types, their common high byte, and their fields.
constexpr uint8_t kPrivateHigh = 0xFE;
constexpr uint8_t kLowDetour = 0xFF;
constexpr uint8_t kLowResume = 0xFA;
constexpr uint8_t kLowSlack = 0xFD;
constexpr uint8_t kLowBufEnd = 0xF8;
constexpr uint32_t kJumpTarget = kHeaderSize;    // u32, absolute offset
constexpr uint32_t kJumpSize = kHeaderSize + 4;  // a whole DETOUR or RESUME
constexpr uint32_t kBufEndSize = kHeaderSize;

// A pool block as its readers see it: base and extent, which is the capacity of its slot.
struct Block {
  uint8_t* base = nullptr;
  uint32_t extent = 0;
};

// The block behind a handle. A value that is no live block gives the empty block, in which every read is zero.
Block OpenBlock(uint32_t handle);

// The gate: the address of bytes at .. at + n - 1, or null when they are not all inside the block. (Compared by subtraction: a sum
// could wrap.)
inline uint8_t* At(const Block& block, uint32_t at, uint32_t n) {
  return n <= block.extent && at <= block.extent - n ? block.base + at : nullptr;
}

inline uint8_t U8At(const Block& block, uint32_t at) {
  const uint8_t* p = At(block, at, 1);
  return p != nullptr ? *p : uint8_t{0};
}

inline uint16_t U16At(const Block& block, uint32_t at) {
  const uint8_t* p = At(block, at, 2);
  return p != nullptr ? ReadU16(p) : uint16_t{0};
}

inline int16_t I16At(const Block& block, uint32_t at) {
  return static_cast<int16_t>(U16At(block, at));
}

inline uint32_t U32At(const Block& block, uint32_t at) {
  const uint8_t* p = At(block, at, 4);
  return p != nullptr ? ReadU32(p) : 0;
}

inline double F64At(const Block& block, uint32_t at) {
  const uint8_t* p = At(block, at, 8);
  return p != nullptr ? ReadF64(p) : 0.0;
}

inline void PutU8(const Block& block, uint32_t at, uint8_t value) {
  if (uint8_t* p = At(block, at, 1)) *p = value;
}

inline void PutU16(const Block& block, uint32_t at, uint16_t value) {
  if (uint8_t* p = At(block, at, 2)) WriteU16(p, value);
}

inline void PutU32(const Block& block, uint32_t at, uint32_t value) {
  if (uint8_t* p = At(block, at, 4)) WriteU32(p, value);
}

// The payload of the record at `at` as a block of its own, which ends where the block does: for readers and writers that must not reach
// the record's neighbours. Offsets in it count from the payload's first byte.
Block PayloadOf(const Block& block, uint32_t at);

// How many of the n bytes at `at` are inside the block.
uint32_t BytesInside(const Block& block, uint32_t at, uint32_t n);

// Copies n bytes at `at` out of the block; those behind it come out as zero. `to` has room for n bytes.
void CopyOut(const Block& block, uint32_t at, uint8_t* to, uint32_t n);

// Copies n bytes into the block at `at`; those that would fall behind it are dropped. The source may lie in the block.
void CopyIn(const Block& block, uint32_t at, const uint8_t* from, uint32_t n);

// Record tests on the record at `at`.
// Plain: low byte equal, chart bit clear. It catches every type with that low byte and that bit clear, on purpose.
inline bool IsPlain(const Block& block, uint32_t at, uint8_t low) {
  if (const uint8_t* p = At(block, at, kTypeSize)) return (ReadU16(p) & (kChartBit << 8 | 0xFF)) == low;
  return U8At(block, at) == low;
}

// Chart: low byte equal, chart bit set; no stricter, on purpose.
inline bool IsChart(const Block& block, uint32_t at, uint8_t low) {
  return U8At(block, at) == low && (U8At(block, at + kRecordTypeHigh) & kChartBit) != 0;
}

// Private: low byte equal, high byte exactly 0xFE.
inline bool IsPrivate(const Block& block, uint32_t at, uint8_t low) {
  const uint8_t* p = At(block, at, kTypeSize);
  return p != nullptr && ReadU16(p) == (kPrivateHigh << 8 | low);
}

inline bool IsJump(const Block& block, uint32_t at) {
  return IsPrivate(block, at, kLowDetour) || IsPrivate(block, at, kLowResume);
}

// Payload length of the record at `at`.
inline uint16_t LengthAt(const Block& block, uint32_t at) {
  return U16At(block, at + kRecordLength);
}

// Offset of the record that follows the one at `at` in the walk: the target of a DETOUR or RESUME, else the next record's place. It does
// not stop at a BUFEND, which is a record of length 0 to it.
inline uint32_t NextRecord(const Block& block, uint32_t at) {
  const uint8_t* p = At(block, at, kHeaderSize);
  if (p == nullptr) return at + kHeaderSize + LengthAt(block, at);
  if (p[kRecordTypeHigh] == kPrivateHigh &&
      (p[kRecordTypeLow] == kLowDetour || p[kRecordTypeLow] == kLowResume)) {
    return U32At(block, at + kJumpTarget);
  }
  return at + kHeaderSize + ReadU16(p + kRecordLength);
}

// A walk: where it is, and the budget that makes it end. A walker's loop is
//   for (Walk walk = StartWalk(block, from); walk.at < limit && !walk.ended; Step(&walk)) { ... examine walk.at ... }
// or, where the walk stops at exactly one offset, with `walk.at != end`. A walk that has `ended` counts as one at its limit.
struct Walk {
  Block block;
  uint32_t at = 0;
  bool ended = false;
  uint32_t stepsLeft = 0;   // records that the block has room for behind this lap
  uint32_t marked = 0;      // an offset visited earlier; meeting it again is a ring
  uint32_t lapLeft = 0;     // steps until the mark moves on; 0: the budget is used up
  uint32_t lapLength = 1;   // doubles each time
  uint32_t lastLength = 0;  // payload of the record stepped over last: what the next one is expected to have
};

// Moves the mark to where the walk is, and begins the next lap.
inline void BeginLap(Walk* walk) {
  walk->marked = walk->at;
  walk->lapLeft = walk->stepsLeft < walk->lapLength ? walk->stepsLeft : walk->lapLength;
  walk->stepsLeft -= walk->lapLeft;
}

inline Walk StartWalk(const Block& block, uint32_t from) {
  Walk walk;
  walk.block = block;
  walk.at = from;
  walk.stepsLeft = block.extent / kHeaderSize;
  BeginLap(&walk);
  return walk;
}

// `length`, sooner: where the next record stands is told by a length that has to be loaded first, and the place of the record behind
// it by the next load, so that a walk waits for every one of them. Most records are as long as the one before them, or follow each other in
// a pattern that the processor learns. So the walk goes on with the last length, and compares the loaded one: a branch that is predicted and
// waits for nothing. The compiler must not see that both ways lead to the same number.
inline uint32_t ExpectLength(uint32_t* last_length, uint32_t length) {
  uint32_t expected = Unrelated(*last_length);
  if (length != *last_length) expected = Unrelated(length);
  *last_length = expected;
  return expected;
}

// What NextRecord gives for the record that the walk is at.
inline uint32_t NextInWalk(Walk* walk) {
  const uint8_t* p = At(walk->block, walk->at, kHeaderSize);
  if (p == nullptr || p[kRecordTypeHigh] == kPrivateHigh) return NextRecord(walk->block, walk->at);
  return walk->at + kHeaderSize + ExpectLength(&walk->lastLength, ReadU16(p + kRecordLength));
}

// A step has been made: has it led into a ring, is the lap over?
inline void CountStep(Walk* walk) {
  if (walk->at == walk->marked) walk->ended = true;
  if (--walk->lapLeft == 0) {
    walk->lapLength *= 2;
    BeginLap(walk);
  }
}

// Goes on to the next record. A ring is noticed within three turns; the budget ends what is no ring and no stream either.
inline void Step(Walk* walk) {
  if (walk->lapLeft == 0) {
    walk->ended = true;
    return;
  }
  walk->at = NextInWalk(walk);
  CountStep(walk);
}

// How many times GoOver goes over `bytes` bytes with `records` records: what is looked at beyond that would be looked at in vain.
inline uint32_t TimesToGoOver(const Walk& walk, uint32_t bytes, uint32_t records) {
  const uint32_t before_mark = walk.marked > walk.at ? (walk.marked - walk.at - 1) / bytes : UINT32_MAX;
  const uint32_t in_lap = walk.lapLeft == 0 ? 0 : (walk.lapLeft - 1) / records;
  return before_mark < in_lap ? before_mark : in_lap;
}

// Goes over `records` records of together `bytes` bytes, which the caller knows to follow each other and to be no jumps, as so many steps
// would. False, with nothing done, when one of these steps would have had more to do than to go on.
inline bool GoOver(Walk* walk, uint32_t bytes, uint32_t records) {
  const bool comes_by_mark = walk->marked > walk->at && walk->marked - walk->at <= bytes;
  if (walk->ended || walk->lapLeft <= records || comes_by_mark) return false;
  walk->at += bytes;
  walk->lapLeft -= records;
  return true;
}

// Bytes of a record that PassOver has in the block before it asks about it: the header, and the row and column of a cell.
constexpr uint32_t kPassOverSees = kHeaderSize + 4;

// Goes on, as steps would, over records that a walker has nothing to do with, and stands where the first other one stands, or the first
// at `bound` or beyond, or where only a step can tell what is next: it may stop at any record, and the walker must look at that one
// itself. `skips` gets the address of a record, of which kPassOverSees bytes can be read; it is never asked about private records,
// which are all stopped at.
template <typename Skips>
inline void PassOver(Walk* walk, uint32_t bound, Skips skips) {
  const Block block = walk->block;
  if (walk->ended || block.extent < kPassOverSees) return;
  const uint32_t behind_last = block.extent - kPassOverSees + 1;
  const uint32_t end = bound < behind_last ? bound : behind_last;
  // What changes with each record, in registers.
  uint32_t at = walk->at;
  uint32_t lap_left = walk->lapLeft;
  uint32_t last_length = walk->lastLength;
  uint32_t marked = walk->marked;
  while (at < end && lap_left != 0) {
    const uint8_t* record = block.base + at;
    if (record[kRecordTypeHigh] == kPrivateHigh || !skips(record)) break;
    at += kHeaderSize + ExpectLength(&last_length, ReadU16(record + kRecordLength));
    if (at == marked || lap_left == 1) {
      walk->at = at;
      walk->lapLeft = lap_left;
      CountStep(walk);
      if (walk->ended) return;
      lap_left = walk->lapLeft;
      marked = walk->marked;
    } else {
      --lap_left;
    }
  }
  walk->at = at;
  walk->lapLeft = lap_left;
  walk->lastLength = last_length;
}

// From the record that the walk is at over it and those behind it that are of its type and length, as a column of numbers is; up to `bound`,
// and perhaps not over the last ones. It is none of the private records.
void PassSame(Walk* walk, uint32_t bound);

// As PassOver, for a walker to whom records of one type and length are all the same: `skips` is asked about some of them. Where many follow
// each other, several are looked at at once, as none has to be waited for to know where the next one is.
template <typename Skips>
inline void PassOverAlike(Walk* walk, uint32_t bound, Skips skips) {
  constexpr uint32_t kManyAlike = 8;
  uint32_t alike = 0;
  do {
    uint32_t header = 0;
    alike = 0;
    PassOver(walk, bound, [&header, &alike, skips](const uint8_t* record) {
      alike = ReadU32(record) == header ? alike + 1 : 0;
      header = ReadU32(record);
      return alike < kManyAlike && skips(record);
    });
    if (alike == kManyAlike) PassSame(walk, bound);
  } while (alike == kManyAlike);
}

// 1 when the record after the one at `at`, past any DETOUR and RESUME, has the low byte 0xDB and the chart bit set; else 0. A SLACK in
// that place is not passed over: the answer is then 0.
int32_t IsFollowedBy10DB(uint32_t buffer, uint32_t at);

// Writes the header of a private record of that low byte, whose payload has `length` bytes.
void PutPrivateHeader(const Block& block, uint32_t at, uint8_t low, uint16_t length);

// Turns the record at `at` into SLACK of the same length: only its two type bytes change.
void MarkRecordSlack(const Block& block, uint32_t at);

// Results of PatchRecord.
constexpr int16_t kPatchDone = 0;
constexpr int16_t kPatchNoBuffer = 1;  // null buffer; also a place or a length that no patch can be laid at
constexpr int16_t kPatchNoMemory = 2;

// Puts `count` bytes, one or more whole records, into the walk directly before the record at `at`; into its room when that is SLACK
// large enough. `count` is taken as a signed 16-bit value.
// REQUIRES: `bytes` lies outside the buffer's block; `at` lies on a record.
// RESULT 0: done, also for a count of 0 (tested first, nothing changes); *buffer may have moved and *size has grown by what was laid
// down. 1: *buffer is 0; nothing changed. 2: the pool can't give the larger block; the buffer is released and *buffer is 0.
// Harmless where nothing is prescribed: an `at` outside the stream, a count that is negative in 16 bits, and a displaced record of more
// than 32767 bytes give 1 and change nothing. At the BUFEND that ends an unpatched buffer there is no successor to displace: the
// patch area begins behind the room of the DETOUR, and the walk meets the patch, then the BUFEND.
int16_t PatchRecord(uint32_t* buffer, const uint8_t* bytes, uint32_t at, uint32_t count, uint32_t* size);

// Appends `count` bytes of the pool block `source` at the write offset `at` of a buffer under construction and releases the source.
// A buffer whose capacity would not exceed at + count (signed) first grows by 32767 bytes beyond its capacity, once, and *size by as
// much. Returns the write offset behind the new bytes; `at` itself for a null source, with nothing changed; -1 when the buffer can't
// grow: the buffer is released, *buffer is 0, and the source is released.
int32_t AppendBytes(uint32_t* buffer, uint32_t* size, uint32_t at, uint32_t source, uint32_t count);

// The same for the loops that append many small records: *capacity is the caller's and is renewed after growing; the source is plain
// bytes, neither tested for null nor released. Returns the write offset behind the new bytes, or -1 as above.
int32_t AppendBytesTracked(uint32_t* buffer, uint32_t* size, int32_t at, const uint8_t* bytes, uint32_t count,
                           int32_t* capacity);

// Writes `id` in decimal into the 8 bytes at `name`, filled up with blanks and without a terminator. An id has at most 8 characters;
// of a longer one the first 8 are kept.
void StreamNameFromId(uint8_t* name, int32_t id);

// The decimal number that a name begins with; 0 when it begins with none. Reading stops at the first character that is no digit, or
// after 8 characters.
int32_t ParseStreamId(const char* name);

}  // namespace tolvenar
