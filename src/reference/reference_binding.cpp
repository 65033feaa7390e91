// XLInsertReference, XLUnbindReference, XLGetReference, XLRefreshReference, XLDestroyFString.
#include "reference/reference_binding.h"

#include <algorithm>

#include "foundation/memory_pool.h"
#include "reference/compact_reference.h"
#include "reference/reference_name.h"
#include "reference/stream_transfer.h"
#include "workbook/biff_version.h"
#include "workbook/buffer_end.h"
#include "workbook/globals_patch.h"
#include "workbook/record_pen.h"
#include "workbook/sheet_table.h"
#include "workbook/stm_file.h"

namespace tolvenar {

namespace {

constexpr int16_t kDone = 0;
constexpr int16_t kNoBufferToCompact = 2;
constexpr int16_t kNotStamped = 4;
constexpr int16_t kNoTable = 6;
constexpr int16_t kNoBuffer = 7;
constexpr int16_t kBufferGone = 200;
constexpr int16_t kNoStamp = -1;

constexpr int32_t kFileNotOpened = -2;
constexpr int32_t kStreamNotOpened = -3;
constexpr int32_t kStreamEmpty = -4;
constexpr int32_t kNoImageBlock = -5;
constexpr int32_t kNotRead = -7;
constexpr int32_t kStreamNotClosed = -8;
constexpr int32_t kFileNotClosed = -9;
constexpr int32_t kNoDigitsBlock = -10;

constexpr uint8_t kLowFormat = 0x1E;
constexpr uint16_t kTypeFormat = 0x041E;
constexpr uint16_t kStampIndex = 255;
constexpr uint8_t kStampCharacters = 29;
constexpr char kStampText[] = "\"Do not delete it!!!";  // the id and a quote follow
constexpr uint8_t kStampQuote = '"';
constexpr uint32_t kFormatCount = 6;
constexpr uint32_t kFormatText = 7;
constexpr uint32_t kStampId = kFormatText + sizeof kStampText - 1;
constexpr uint32_t kStampSize = kStampId + kReferenceNameSize + 1;

bool IsFormat(const Block& block, uint32_t at) {
  return IsPlain(block, at, kLowFormat);
}

bool IsStamp(const Block& block, uint32_t at) {
  return IsFormat(block, at) && U8At(block, at + kFormatCount) == kStampCharacters &&
         U8At(block, at + kFormatText) == kStampQuote && U8At(block, at + kFormatText + 1) == 'D';
}

// Where the stamp is, or where it is to go; kNowhere when the walk found neither the run nor the end.
constexpr uint32_t kNowhere = UINT32_MAX;
struct StampSearch {
  bool found;
  uint32_t at;
};

StampSearch FindStamp(uint32_t buffer, uint32_t table) {
  const Block block = OpenBlock(buffer);
  const Block entries = OpenBlock(table);
  const uint32_t end = GlobalsEnd(entries);
  bool seen = false;
  Walk walk = StartWalk(block, TableEntry(entries, kTableGlobalsBegin));
  for (; walk.at != end && !walk.ended; Step(&walk)) {
    if (IsJump(block, walk.at)) continue;
    if (IsStamp(block, walk.at)) return {true, walk.at};
    if (!IsFormat(block, walk.at)) {
      // The EOF itself ends the globals of a table that doesn't lead to it, as that of a workbook without sheets.
      if (seen || IsPlain(block, walk.at, kLowEof)) return {false, walk.at};
    }
    seen = seen || IsFormat(block, walk.at);
  }
  return {false, walk.ended ? kNowhere : end};
}

// Builds the stamp in a new pool block, 0 when there is none.
uint32_t BuildStamp(uint32_t text) {
  uint32_t size = 0;
  RecordPen pen = StartRecord(kTypeFormat, kStampSize, &size);
  WriteFields(&pen, kStampIndex, kStampCharacters);
  WriteBytes(&pen, kStampText, sizeof kStampText - 1);
  WriteBytes(&pen, BlockBytes(text), kReferenceNameSize);
  WriteField(&pen, kStampQuote);
  return pen.block;
}

// The result of an insertion into a buffer and a table that are there. `text` is released but at 4 and 200.
int16_t InsertStamp(uint32_t* buffer, uint32_t table, uint32_t* size, uint32_t text) {
  const StampSearch search = FindStamp(*buffer, table);
  if (search.found) {
    CopyIn(OpenBlock(*buffer), search.at + kStampId, BlockBytes(text), kReferenceNameSize);
  } else {
    uint32_t stamp = BuildStamp(text);
    if (stamp == 0) return kNotStamped;
    if (PatchGlobals(buffer, table, size, BlockBytes(stamp), search.at, kStampSize) != kPatchDone)
      return kNotStamped;
    if (*buffer == 0) return kBufferGone;
    MEMORYFREE(&stamp);
  }
  MEMORYFREE(&text);
  return kDone;
}

// Reads the workbook stream into a pool block.
int32_t ReadImage(const char* path, uint32_t* image, uint32_t* size) {
  StmFFile file;
  StmFItemHolder stream;
  if (file.Open(path) != kStmDone) return kFileNotOpened;
  if (BiffVersion != kBiff5 && BiffVersion != kBiff8) return kStreamNotOpened;
  const char* const name = BiffVersion == kBiff5 ? "Book" : "workbook";
  if (file.OpenStream(name, &stream.item) != kStmDone) return kStreamNotOpened;
  *size = stream.item->GetSize();
  if (static_cast<int32_t>(*size) <= 0) return kStreamEmpty;
  *image = MEMORYALLOC(static_cast<int32_t>(*size));
  if (*image == 0) return kNoImageBlock;
  if (!ReadWhole(stream.item, *image, *size)) {
    MEMORYFREE(image);
    return kNotRead;
  }
  if (stream.item->Close() != kStmDone) return kStreamNotClosed;
  return file.Close() != kStmDone ? kFileNotClosed : kDone;
}

// Finds the stamp in the first run of FORMAT records of a plain stream.
StampSearch FindStampInImage(const Block& image) {
  bool seen = false;
  for (Walk walk = StartWalk(image, 0); walk.at < image.extent && !walk.ended; Step(&walk)) {
    if (IsStamp(image, walk.at)) return {true, walk.at};
    if (!IsFormat(image, walk.at) && seen) break;
    seen = seen || IsFormat(image, walk.at);
  }
  return {false, kNowhere};
}

}  // namespace

int16_t XLInsertReference(uint32_t* buffer, uint32_t table, uint32_t* size, uint32_t id) {
  uint32_t text = MakeReferenceName(static_cast<int32_t>(id));
  if (text == 0) return kNotStamped;
  const bool has_buffer = buffer != nullptr && *buffer != 0;
  if (table == 0 || !has_buffer) {
    MEMORYFREE(&text);
    return table == 0 ? kNoTable : kNoBuffer;
  }
  uint32_t no_size = 0;
  return InsertStamp(buffer, table, size == nullptr ? &no_size : size, text);
}

int16_t XLUnbindReference(uint32_t buffer, uint32_t table) {
  if (table == 0) return kNoTable;
  if (buffer == 0) return kNoBuffer;
  const StampSearch search = FindStamp(buffer, table);
  if (!search.found) return kNoStamp;
  MarkRecordSlack(OpenBlock(buffer), search.at);
  return kDone;
}

int32_t XLGetReference(const char* path) {
  uint32_t handle = 0;
  uint32_t size = 0;
  const int32_t read = ReadImage(path, &handle, &size);
  if (read != kDone) return read;
  Block image = OpenBlock(handle);
  image.extent = std::min(image.extent, size);  // the slot is larger, and holds what an earlier tenant left
  const StampSearch search = FindStampInImage(image);
  int32_t id = 0;
  if (search.found) {
    uint32_t digits = MEMORYALLOC(static_cast<int32_t>(kReferenceNameSize));
    if (digits == 0) return kNoDigitsBlock;
    CopyOut(image, search.at + kStampId, BlockBytes(digits), kReferenceNameSize);
    id = ParseStreamId(ReferenceName(digits).text);
    MEMORYFREE(&digits);
  }
  MEMORYFREE(&handle);
  return id;
}

int16_t XLRefreshReference(uint32_t* buffer, uint32_t* size) {
  if (buffer == nullptr || MEMORYISHANDLE(*buffer) == 0) return kNoBufferToCompact;
  uint32_t no_size = 0;
  if (size == nullptr) size = &no_size;
  const int16_t compacted = CompactReference(buffer, size);
  if (compacted == kReferenceCompacted) PutBufEnd(*buffer, *size);
  return compacted;
}

int16_t XLDestroyFString(uint32_t* handle) {
  if (handle == nullptr) return -1;
  MEMORYFREE(handle);
  return kDone;
}

}  // namespace tolvenar
