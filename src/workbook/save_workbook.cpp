// XLSaveFile: compact, replace the stream, end the buffer. DebugSaveFile: the same storage calls with a
// stream of numbers.
#include "workbook/save_workbook.h"

#include <memory>
#include <new>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "platform/path.h"
#include "workbook/biff_version.h"
#include "workbook/buffer_end.h"
#include "workbook/compaction.h"
#include "workbook/stm_file.h"

namespace tolvenar {

namespace {

constexpr int16_t kSaved = 0;
constexpr int16_t kNoBuffer = 2;
constexpr int16_t kNoTable = 3;
constexpr int16_t kWriteFailed = 6;
constexpr int16_t kNotOpened = 101;
constexpr int16_t kNotDeleted = 102;
constexpr int16_t kStreamNotCreated = 103;
constexpr int16_t kStreamNotClosed = 104;
constexpr int16_t kFileNotClosed = 105;
constexpr int16_t kFileNotCreated = 111;

constexpr char kWorkbookStream[] = "Workbook";
constexpr char kBookStream[] = "Book";

bool NamesBlock(const uint32_t* handle) {
  return handle != nullptr && MEMORYISHANDLE(*handle) != 0;
}

// Opens the file that exists at `path` and takes the stream `name` out of it, or creates one where none
// exists. A file without that stream is refused, on purpose: it is no workbook, or one of the other
// generation.
int16_t MakeRoom(StmFFile* file, const char* path, const char* name) {
  const bool exists = platform::PathExists(path);
  const int32_t opened = file->Open(path);  // tried in any case
  if (!exists) return file->Create(path, false) != kStmDone ? kFileNotCreated : kSaved;
  if (opened != kStmDone) return kNotOpened;
  return file->DeleteStream(name) != kStmDone ? kNotDeleted : kSaved;
}

// Creates the stream `name` with the `count` bytes at `bytes` and closes it and the file. The bytes go to the
// disk from where they are.
int16_t PutStream(StmFFile* file, const char* name, const uint8_t* bytes, uint32_t count) {
  StmFItemHolder stream;
  if (file->CreateStream(name, &stream.item, false) != kStmDone) return kStreamNotCreated;
  uint32_t moved = 0;
  if (stream.item->WriteLent(bytes, count, &moved) != kStmDone || moved != count) return kWriteFailed;
  if (stream.item->Close() < 0) return kStreamNotClosed;
  return file->Close() < 0 ? kFileNotClosed : kSaved;
}

// Releases the written-off block, whose variable goes stale, and makes its first byte 0.
void DropBuffer(uint32_t buffer) {
  const Block block = OpenBlock(buffer);
  MEMORYFREE(&buffer);
  PutU8(block, 0, 0);
}

// Writes the compact buffer to the file. The table is released once the old stream is out of the way,
// whatever comes of the rest.
int16_t WriteFile(const char* path, uint32_t buffer, uint32_t size, uint32_t* table) {
  StmFFile file;
  const char* const name = BiffVersion == kBiff8 ? kWorkbookStream : kBookStream;
  int16_t result = MakeRoom(&file, path, name);
  if (result == kSaved) {
    result = PutStream(&file, name, BlockBytes(buffer), size - kBufEndSize);
    if (result == kWriteFailed) DropBuffer(buffer);
    MEMORYFREE(table);
    *table = 0;
  }
  if (result != kSaved) file.Abandon();  // the destructor would commit a file that lacks its workbook
  return result;
}

}  // namespace

int16_t XLSaveFile(const char* path, uint32_t* buffer, uint32_t* table, uint32_t* size) {
  if (!NamesBlock(buffer)) return kNoBuffer;
  if (!NamesBlock(table)) return kNoTable;
  uint32_t no_size = 0;
  if (size == nullptr) size = &no_size;
  uint32_t copy = 0;
  uint32_t copy_size = 0;
  const int16_t compacted = Compact(*buffer, *table, *size, LengthField::kUnsigned, &copy, &copy_size);
  if (compacted != kCompacted) return compacted;
  MEMORYREMOVE(buffer);
  *buffer = copy;
  *size = copy_size;
  const int16_t result = WriteFile(path, copy, copy_size, table);
  if (result == kSaved) PutBufEnd(copy, copy_size);
  return result;
}

int16_t DebugSaveFile(const char* path, int32_t count) {
  constexpr int32_t kMaxCount = INT32_MAX / 2;  // their bytes can be counted in 32 bits
  if (count < 0 || count > kMaxCount) return kWriteFailed;
  const uint32_t bytes = static_cast<uint32_t>(count) * sizeof(int32_t);
  const std::unique_ptr<uint8_t[]> numbers(new (std::nothrow) uint8_t[bytes]());
  if (numbers == nullptr) return kWriteFailed;
  for (uint32_t i = 0; i < static_cast<uint32_t>(count); ++i) {
    WriteU32(numbers.get() + size_t{i} * sizeof(int32_t), i + 1);
  }
  StmFFile file;
  int16_t result = kNotDeleted;
  if (!platform::PathExists(path)) {
    if (file.Create(path, false) == kStmDone) result = kSaved;
  } else if (file.Open(path) == kStmDone && file.DeleteStream(kWorkbookStream) == kStmDone) {
    result = kSaved;
  }
  if (result == kSaved) result = PutStream(&file, kWorkbookStream, numbers.get(), bytes);
  if (result != kSaved) file.Abandon();
  return result;
}

}  // namespace tolvenar
