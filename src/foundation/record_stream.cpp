// Record stream: copies through the gate, patches and appends. The layout and the invariants stand in record_stream.h.
#include "foundation/record_stream.h"

#include <algorithm>
#include <charconv>

#include "foundation/memory_pool.h"

namespace tolvenar {

namespace {

constexpr uint8_t kLow10DB = 0xDB;
constexpr uint32_t kGrowth = 32767;
constexpr uint32_t kStreamNameSize = 8;
constexpr uint8_t kBlank = 0x20;

void PutJump(const Block& block, uint32_t at, uint8_t private_low, uint32_t target) {
  PutPrivateHeader(block, at, private_low, kJumpSize - kHeaderSize);
  PutU32(block, at + kJumpTarget, target);
}

// Lays the bytes into the SLACK at `at` when they fit it exactly, or leave at least a SLACK header behind them. At 1 to 3 bytes less than
// the whole room the bytes would fit, but no header behind them: they take the detour, on purpose.
bool FillSlack(const Block& block, const uint8_t* bytes, uint32_t at, int16_t n) {
  if (!IsPrivate(block, at, kLowSlack)) return false;
  const int16_t length = I16At(block, at + kRecordLength);
  if (length + static_cast<int32_t>(kHeaderSize) != n) {
    if (length < n) return false;
    PutPrivateHeader(block, at + static_cast<uint32_t>(n), kLowSlack, static_cast<uint16_t>(length - n));
  }
  CopyIn(block, at, bytes, static_cast<uint32_t>(n));
  return true;
}

// Bytes that a DETOUR at `at` displaces: the record there, and, when that is shorter than a DETOUR, the one that stands physically
// behind it, whatever its type. Lengths count as signed 16-bit values.
int32_t DisplacedLength(const Block& block, uint32_t at, uint32_t size) {
  constexpr int32_t kHeader = kHeaderSize;
  int32_t displaced = I16At(block, at + kRecordLength) + kHeader;
  if (displaced < 0 || displaced >= static_cast<int32_t>(kJumpSize)) return displaced;
  const uint32_t successor = at + static_cast<uint32_t>(displaced);
  // Behind the end of the stream there is no record, only room: it counts as an empty one.
  const int32_t length = successor < size ? I16At(block, successor + kRecordLength) : 0;
  return length < 0 ? length : displaced + length + kHeader;
}

// Takes the detour: patch, displaced bytes and RESUME at the end of the buffer, a DETOUR at `at`.
int16_t LayDetour(uint32_t* buffer, const uint8_t* bytes, uint32_t at, uint32_t n, uint32_t* size) {
  Block block = OpenBlock(*buffer);
  const int32_t displaced = DisplacedLength(block, at, *size);
  if (displaced < static_cast<int32_t>(kJumpSize) || displaced > INT16_MAX) return kPatchNoBuffer;
  const uint32_t d = static_cast<uint32_t>(displaced);
  const uint32_t area = std::max(*size, at + kJumpSize);
  const uint32_t end = area + n + d + kJumpSize;

  const uint32_t moved = MEMORYREALLOC(*buffer, static_cast<int32_t>(end));
  if (moved == 0) {
    MEMORYFREE(buffer);
    return kPatchNoMemory;
  }
  *buffer = moved;
  block = OpenBlock(moved);
  // The displaced bytes go first: a record at the end may claim more bytes than the stream has, and reach into the area itself.
  CopyIn(block, area + n, block.base + at, BytesInside(block, at, d));
  CopyIn(block, area, bytes, n);
  PutJump(block, area + n + d, kLowResume, at + d);
  PutJump(block, at, kLowDetour, area);
  *size = end;
  return kPatchDone;
}

// Grows a buffer under construction when at + count reaches its capacity. (Not below, on purpose: one byte always stays unused.)
// False when it can't: the buffer is released.
bool GrowFor(uint32_t* buffer, uint32_t* size, int32_t at, uint32_t count, int32_t capacity) {
  const int32_t behind = static_cast<int32_t>(static_cast<uint32_t>(at) + count);
  if (behind < capacity) return true;
  const uint32_t grown =
      MEMORYREALLOC(*buffer, static_cast<int32_t>(static_cast<uint32_t>(capacity) + kGrowth));
  if (grown == 0) {
    MEMORYFREE(buffer);
    *buffer = 0;
    return false;
  }
  *buffer = grown;
  *size += kGrowth;
  return true;
}

}  // namespace

Block OpenBlock(uint32_t handle) {
  const uint32_t capacity = MEMORYALLOCSIZE(handle);
  return capacity == 0 ? Block{} : Block{BlockBytes(handle), capacity};
}

Block PayloadOf(const Block& block, uint32_t at) {
  const uint32_t length = BytesInside(block, at + kHeaderSize, LengthAt(block, at));
  return length == 0 ? Block{} : Block{block.base + at + kHeaderSize, length};
}

uint32_t BytesInside(const Block& block, uint32_t at, uint32_t n) {
  return at >= block.extent ? 0 : std::min(n, block.extent - at);
}

void CopyOut(const Block& block, uint32_t at, uint8_t* to, uint32_t n) {
  const uint32_t inside = BytesInside(block, at, n);
  if (inside != 0) std::memcpy(to, block.base + at, inside);
  if (inside != n) std::memset(to + inside, 0, n - inside);
}

void CopyIn(const Block& block, uint32_t at, const uint8_t* from, uint32_t n) {
  const uint32_t inside = BytesInside(block, at, n);
  if (inside != 0) std::memmove(block.base + at, from, inside);
}

void PassSame(Walk* walk, uint32_t bound) {
  constexpr uint32_t kAtOnce = 8;
  const uint8_t* first = At(walk->block, walk->at, kHeaderSize);
  if (first == nullptr || walk->at >= bound) return;
  const uint32_t header = ReadU32(first);
  const uint32_t stride = kHeaderSize + ReadU16(first + kRecordLength);
  const uint32_t inside = (std::min(bound, walk->block.extent) - walk->at) / stride;
  const uint32_t most = std::min(inside, TimesToGoOver(*walk, stride, 1));
  uint32_t count = 0;
  uint32_t differences = 0;
  while (differences == 0 && count + kAtOnce <= most) {
    for (uint32_t i = 0; i < kAtOnce; ++i) differences |= ReadU32(first + (count + i) * stride) ^ header;
    if (differences == 0) count += kAtOnce;
  }
  GoOver(walk, count * stride, count);
}

int32_t IsFollowedBy10DB(uint32_t buffer, uint32_t at) {
  Walk walk = StartWalk(OpenBlock(buffer), at);
  Step(&walk);
  while (!walk.ended && IsJump(walk.block, walk.at)) Step(&walk);
  return !walk.ended && IsChart(walk.block, walk.at, kLow10DB) ? 1 : 0;
}

void PutPrivateHeader(const Block& block, uint32_t at, uint8_t low, uint16_t length) {
  PutU8(block, at + kRecordTypeLow, low);
  PutU8(block, at + kRecordTypeHigh, kPrivateHigh);
  PutU16(block, at + kRecordLength, length);
}

void MarkRecordSlack(const Block& block, uint32_t at) {
  PutU8(block, at + kRecordTypeLow, kLowSlack);
  PutU8(block, at + kRecordTypeHigh, kPrivateHigh);
}

int16_t PatchRecord(uint32_t* buffer, const uint8_t* bytes, uint32_t at, uint32_t count, uint32_t* size) {
  const int16_t n =
      static_cast<int16_t>(count);  // taken as 16 bits: that is what the length fields of a stream can say
  if (n == 0) return kPatchDone;
  if (*buffer == 0) return kPatchNoBuffer;
  const Block block = OpenBlock(*buffer);
  if (n < 0 || at >= *size || At(block, at, kHeaderSize) == nullptr) return kPatchNoBuffer;
  if (FillSlack(block, bytes, at, n)) return kPatchDone;
  return LayDetour(buffer, bytes, at, static_cast<uint32_t>(n), size);
}

int32_t AppendBytes(uint32_t* buffer, uint32_t* size, uint32_t at, uint32_t source, uint32_t count) {
  if (source == 0) return static_cast<int32_t>(at);
  const int32_t capacity = static_cast<int32_t>(MEMORYALLOCSIZE(*buffer));
  const bool grown = GrowFor(buffer, size, static_cast<int32_t>(at), count, capacity);
  if (!grown || *buffer == 0) {
    MEMORYFREE(&source);
    return -1;
  }
  const Block from = OpenBlock(source);
  CopyIn(OpenBlock(*buffer), at, from.base, BytesInside(from, 0, count));
  MEMORYFREE(&source);
  return static_cast<int32_t>(at + count);
}

int32_t AppendBytesTracked(uint32_t* buffer, uint32_t* size, int32_t at, const uint8_t* bytes, uint32_t count,
                           int32_t* capacity) {
  const uint32_t size_before = *size;
  if (!GrowFor(buffer, size, at, count, *capacity)) return -1;
  if (*size != size_before) *capacity = static_cast<int32_t>(MEMORYALLOCSIZE(*buffer));
  CopyIn(OpenBlock(*buffer), static_cast<uint32_t>(at), bytes, count);
  return static_cast<int32_t>(static_cast<uint32_t>(at) + count);
}

void StreamNameFromId(uint8_t* name, int32_t id) {
  char digits[12];
  const char* end = std::to_chars(digits, digits + sizeof digits, id).ptr;
  const uint32_t length = std::min<uint32_t>(static_cast<uint32_t>(end - digits), kStreamNameSize);
  std::memcpy(name, digits, length);
  std::memset(name + length, kBlank, kStreamNameSize - length);
}

int32_t ParseStreamId(const char* name) {
  const char* end = std::find(name, name + kStreamNameSize, '\0');
  int32_t id = 0;
  std::from_chars(name, end, id);
  return id;
}

}  // namespace tolvenar
