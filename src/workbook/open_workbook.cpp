// XLOpenFile: read the stream, cut it behind its last substream, end it.
#include "workbook/open_workbook.h"

#include <cstring>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "workbook/biff_version.h"
#include "workbook/buffer_end.h"
#include "workbook/stm_file.h"

namespace tolvenar {

namespace {

constexpr int16_t kOpened = 0;
constexpr int16_t kCutFailed = 2;
constexpr int16_t kNoBlock = 5;
constexpr int16_t kReadFailed = 6;
constexpr int16_t kNoFile = 101;
constexpr int16_t kNoStream = 102;
constexpr int16_t kEmptyStream = 103;
constexpr int16_t kStreamNotClosed = 104;
constexpr int16_t kFileNotClosed = 105;

// Opens the workbook stream, of either generation, and sets BiffVersion by the one that was there.
bool OpenWorkbookStream(StmFFile* file, StmFItem** item) {
  struct Generation {
    const char* stream;
    int32_t version;
  };
  // "book" in lower case finds `Book`: stream names compare without regard to case.
  constexpr Generation kGenerations[] = {{"Workbook", kBiff8}, {"book", kBiff5}};
  for (const Generation& generation : kGenerations) {
    if (file->OpenStream(generation.stream, item) != kStmDone) continue;
    BiffVersion = generation.version;
    return true;
  }
  return false;
}

// A block that really has room for `size` bytes, which are not zeroed, as the stream fills them: from 2 GiB on
// the pool would take the size for a negative one, which fits every slot.
uint32_t AllocateWhole(uint32_t size) {
  return size > INT32_MAX ? 0 : AllocateForOverwrite(static_cast<int32_t>(size));
}

bool ReadWhole(StmFItem* item, uint32_t buffer, uint32_t count) {
  uint32_t moved = 0;
  return item->Read(BlockBytes(buffer), count, &moved) == kStmDone && moved == count;
}

// Everything that needs the file. The destructors close what is still open, the stream first.
int16_t ReadStream(const char* path, uint32_t* buffer, uint32_t* size) {
  StmFFile file;
  if (file.Open(path) != kStmDone) return kNoFile;
  StmFItemHolder stream;
  if (!OpenWorkbookStream(&file, &stream.item)) return kNoStream;
  *size = stream.item->GetSize();
  if (static_cast<int32_t>(*size) <= 0) return kEmptyStream;
  *size += kBufEndSize;
  *buffer = AllocateWhole(*size);
  if (*buffer == 0) return kNoBlock;
  std::memset(BlockBytes(*buffer) + *size - kBufEndSize, 0, kBufEndSize);
  if (!ReadWhole(stream.item, *buffer, *size - kBufEndSize)) {
    MEMORYFREE(buffer);
    return kReadFailed;
  }
  if (stream.item->Close() != kStmDone) return kStreamNotClosed;
  if (file.Close() != kStmDone) return kFileNotClosed;
  return kOpened;
}

// True when the stream goes on behind an EOF with the record at `at`. Behind the end of the buffer there is
// none, whatever an earlier tenant left in the slot.
bool GoesOn(const Block& block, uint32_t at, uint32_t size) {
  return at < size && (IsPlain(block, at, kLowBof) || IsPlain(block, at, kLowObj));
}

// Finds the offset behind the EOF that closes the last substream. The last 5 bytes (BUFEND's 4 and one more)
// are not examined, on purpose: a stream may end there without a cut.
bool FindCut(const Block& block, uint32_t size, uint32_t* cut) {
  const uint32_t limit = size - (kBufEndSize + 1);
  int32_t depth = 0;
  for (Walk walk = StartWalk(block, 0); walk.at < limit && !walk.ended; Step(&walk)) {
    PassOverAlike(&walk, limit, IsInsideSubstream);
    if (walk.at >= limit || walk.ended) break;
    if (IsPlain(block, walk.at, kLowBof)) ++depth;
    if (!IsPlain(block, walk.at, kLowEof)) continue;
    --depth;
    const uint32_t behind = NextRecord(block, walk.at);
    if (depth > 0 || GoesOn(block, behind, size)) continue;
    *cut = behind;
    return true;
  }
  return false;
}

// Cuts the buffer to end behind `cut`. An EOF that claims a payload can put the cut behind the old end: what
// is added is zero, lest an earlier tenant's bytes get into this workbook. False when the block can't be had:
// it is freed, and *buffer still names it.
bool CutAt(uint32_t cut, uint32_t* buffer, uint32_t* size) {
  const uint32_t old_size = *size;
  *size = cut + kBufEndSize;
  const uint32_t moved = MEMORYREALLOC(*buffer, static_cast<int32_t>(*size));
  if (moved == 0) {
    uint32_t block = *buffer;
    MEMORYFREE(&block);
    return false;
  }
  *buffer = moved;
  const Block block = OpenBlock(moved);
  for (uint32_t at = old_size; at < *size; ++at) PutU8(block, at, 0);
  return true;
}

int16_t OpenWorkbook(const char* path, uint32_t* buffer, uint32_t* size) {
  *buffer = 0;
  if (const int16_t result = ReadStream(path, buffer, size); result != kOpened) return result;
  uint32_t cut = 0;
  if (FindCut(OpenBlock(*buffer), *size, &cut) && !CutAt(cut, buffer, size)) return kCutFailed;
  PutBufEnd(*buffer, *size);
  return kOpened;
}

}  // namespace

int16_t XLOpenFile(const char* path, uint32_t* buffer, uint32_t* size) {
  uint32_t unwanted_buffer = 0;
  uint32_t unwanted_size = 0;
  if (buffer == nullptr) buffer = &unwanted_buffer;
  if (size == nullptr) size = &unwanted_size;
  const int16_t result = OpenWorkbook(path, buffer, size);
  MEMORYFREE(&unwanted_buffer);
  return result;
}

uint32_t XLFreeHandle(uint32_t* handle) {
  return handle == nullptr ? 0 : static_cast<uint32_t>(MEMORYFREE(handle));
}

}  // namespace tolvenar
