// XLCreateReference, XLDeleteReference, XLReadReference, XLSaveReference.
#include "reference/reference_file.h"

#include "foundation/memory_pool.h"
#include "reference/compact_reference.h"
#include "reference/reference_contents.h"
#include "reference/reference_name.h"
#include "reference/reference_records.h"
#include "reference/stream_transfer.h"
#include "workbook/buffer_end.h"
#include "workbook/stm_file.h"

namespace tolvenar {

namespace {

constexpr int16_t kDone = 0;
constexpr int16_t kNoPath = -1;
constexpr int16_t kFileNotOpened = -3;
constexpr int16_t kFileNotMade = -4;
constexpr int16_t kContentsNotCreated = -5;
constexpr int16_t kNoRecordBlock = -6;
constexpr int16_t kRecordNotWritten = -8;
constexpr int16_t kLastNotWritten = -9;
constexpr int16_t kContentsNotClosed = -10;
constexpr int16_t kNoNameBlock = -22;
constexpr int16_t kStreamRefused = -24;
constexpr int16_t kHeaderNotWritten = -25;
constexpr int16_t kEndNotWritten = -26;
constexpr int16_t kFileNotClosed = -27;

constexpr int16_t kNoBuffer = 2;
constexpr int16_t kNoBlock = 5;
constexpr int16_t kNotMoved = 6;
constexpr int16_t kReadNoNameBlock = -10;
constexpr int16_t kNoFile = 101;
constexpr int16_t kNoStream = 102;
constexpr int16_t kEmptyStream = 103;
constexpr int16_t kStreamNotMade = 103;
constexpr int16_t kStreamNotClosed = 104;
constexpr int16_t kStoreNotClosed = 105;

// What the platform says of a missing file. StmFFile::Open says kStmNotOpen of every failure, so that this is never met and a missing file
// is refused, on purpose: a mistyped name makes no file.
constexpr int32_t kStmFileNotFound = StmResult(0x80030002);

// A record that is written to a new stream, and the code when that fails.
struct NewRecord {
  uint8_t low;
  uint32_t field;
  int16_t failure;
};

// The second header is passed over by every reader, and goes when an id is added.
constexpr NewRecord kFirstContents[] = {
    {kLowRefHeader, 0, kRecordNotWritten},
    {kLowRefHeader, 0, kRecordNotWritten},
    {kLowRefEnd, 0, kLastNotWritten},
};
constexpr NewRecord kNewReference[] = {
    {kLowRefHeader, kRefRecordSize, kHeaderNotWritten},  // the REFMARK follows
    {kLowRefMark, 0, kRecordNotWritten},
    {kLowRefDir, 0, kRecordNotWritten},
    {kLowRefEnd, 0, kEndNotWritten},
};

// Writes the records one by one through the first 8 bytes of a pool block.
template <size_t N>
int16_t WriteRecords(StmFItem* item, uint32_t scratch, const NewRecord (&records)[N]) {
  const Block block = OpenBlock(scratch);
  for (const NewRecord& record : records) {
    PutRefRecord(block, 0, record.low, record.field);
    if (!WriteWhole(item, scratch, kRefRecordSize)) return record.failure;
  }
  return kDone;
}

int16_t OpenOrMake(StmFFile* file, const char* path) {
  const int32_t opened = file->Open(path);
  if (opened == kStmFileNotFound) return MakeReferenceFile(file, path);
  return opened == kStmDone ? kDone : kFileNotOpened;
}

int16_t PutNewReference(StmFFile* file, int32_t id) {
  uint32_t name = MakeReferenceName(id);
  if (name == 0) return kNoNameBlock;
  StmFItemHolder stream;
  int16_t result = kStreamRefused;
  if (file->CreateStream(ReferenceName(name).text, &stream.item, false) == kStmDone) {
    result = WriteRecords(stream.item, name, kNewReference);
    if (result == kDone) stream.item->Close();
  }
  MEMORYFREE(&name);
  return result;
}

int16_t CreateReference(StmFFile* file, const char* path, int32_t* id) {
  uint32_t image = 0;
  uint32_t size = 0;
  int16_t result = OpenOrMake(file, path);
  if (result == kDone) result = ReadContents(file, &image, &size);
  if (result == kDone) result = AddNewId(&image, &size, id);
  if (result == kDone) result = WriteContents(file, &image, size);
  if (result == kDone) result = PutNewReference(file, *id);
  if (result == kDone && file->Close() != kStmDone) result = kFileNotClosed;
  return result;
}

// Removes the reference's stream. Nothing of "Contents" has been changed by then.
int16_t DeleteStreamOf(StmFFile* file, uint32_t id) {
  uint32_t name = MakeReferenceName(static_cast<int32_t>(id));
  if (name == 0) return kNoNameBlock;
  const int32_t deleted = file->DeleteStream(ReferenceName(name).text);
  MEMORYFREE(&name);
  return deleted == kStmDone ? kDone : kStreamRefused;
}

int16_t DeleteReference(StmFFile* file, const char* path, uint32_t id) {
  if (file->Open(path) != kStmDone) return kFileNotOpened;
  uint32_t image = 0;
  uint32_t size = 0;
  int16_t result = ReadContents(file, &image, &size);
  if (result == kDone) result = DropId(&image, &size, id);
  if (result == kDone) result = DeleteStreamOf(file, id);
  if (result == kDone) result = WriteContents(file, &image, size);
  if (result == kDone && file->Close() != kStmDone) result = kFileNotClosed;
  return result;
}

// Opens the reference's stream. At 102 the name's block stays allocated, on purpose.
int16_t OpenReference(StmFFile* file, StmFItem** item, const char* path, int32_t id) {
  if (file->Open(path) != kStmDone) return kNoFile;
  uint32_t name = MakeReferenceName(id);
  if (name == 0) return kReadNoNameBlock;
  if (file->OpenStream(ReferenceName(name).text, item) != kStmDone) return kNoStream;
  MEMORYFREE(&name);
  return kDone;
}

int16_t ReadReference(const char* path, uint32_t* buffer, uint32_t* size, int32_t id) {
  *buffer = 0;
  StmFFile file;
  StmFItemHolder stream;
  const int16_t opened = OpenReference(&file, &stream.item, path, id);
  if (opened != kDone) return opened;
  *size = stream.item->GetSize();
  if (static_cast<int32_t>(*size) <= 0) return kEmptyStream;
  *size += kBufEndSize;
  *buffer = *size > INT32_MAX ? 0 : MEMORYALLOC(static_cast<int32_t>(*size));
  if (*buffer == 0) return kNoBlock;
  if (!ReadWhole(stream.item, *buffer, *size - kBufEndSize)) {
    MEMORYFREE(buffer);
    return kNotMoved;
  }
  if (stream.item->Close() != kStmDone) return kStreamNotClosed;
  if (file.Close() != kStmDone) return kStoreNotClosed;
  PutBufEnd(*buffer, *size);
  return kDone;
}

// Writes the compact buffer. At 101 and 103 the name's block stays allocated, on purpose.
int16_t WriteReference(StmFFile* file, const char* path, uint32_t* buffer, uint32_t size, int32_t id) {
  uint32_t name = MakeReferenceName(id);
  if (name == 0) return kNoNameBlock;
  if (file->Open(path) != kStmDone) return kNoFile;
  StmFItemHolder stream;
  if (file->CreateStream(ReferenceName(name).text, &stream.item, true) != kStmDone) return kStreamNotMade;
  MEMORYFREE(&name);
  if (!WriteWhole(stream.item, *buffer, size - kBufEndSize)) {
    MEMORYFREE(buffer);
    return kNotMoved;
  }
  if (stream.item->Close() != kStmDone) return kStreamNotClosed;
  return file->Close() != kStmDone ? kStoreNotClosed : kDone;
}

}  // namespace

int16_t MakeReferenceFile(StmFFile* file, const char* path) {
  if (file->Create(path, true) != kStmDone) return kFileNotMade;
  StmFItemHolder stream;
  if (file->CreateStream(kContentsStream, &stream.item, false) != kStmDone) return kContentsNotCreated;
  constexpr int32_t kScratchSize = 16;
  uint32_t scratch = MEMORYALLOC(kScratchSize);
  if (scratch == 0) return kNoRecordBlock;
  const int16_t written = WriteRecords(stream.item, scratch, kFirstContents);
  MEMORYFREE(&scratch);
  if (written != kDone) return written;
  return stream.item->Close() != kStmDone ? kContentsNotClosed : kDone;
}

int32_t XLCreateReference(const char* path) {
  if (path == nullptr) return kNoPath;
  StmFFile file;
  int32_t id = 0;
  const int16_t result = CreateReference(&file, path, &id);
  if (result == kStreamRefused) {
    file.Close();  // "Contents" keeps the id, on purpose
  } else if (result != kDone) {
    file.Abandon();
  }
  return result == kDone ? id : result;
}

int16_t XLDeleteReference(const char* path, uint32_t id) {
  StmFFile file;
  const int16_t result = DeleteReference(&file, path, id);
  if (result != kDone) file.Abandon();
  return result;
}

int16_t XLReadReference(const char* path, uint32_t* buffer, uint32_t* size, int32_t id) {
  uint32_t unwanted_buffer = 0;
  uint32_t unwanted_size = 0;
  if (buffer == nullptr) buffer = &unwanted_buffer;
  if (size == nullptr) size = &unwanted_size;
  const int16_t result = ReadReference(path, buffer, size, id);
  MEMORYFREE(&unwanted_buffer);
  return result;
}

int16_t XLSaveReference(const char* path, uint32_t* buffer, uint32_t* size, int32_t id) {
  if (buffer == nullptr || MEMORYISHANDLE(*buffer) == 0) return kNoBuffer;
  uint32_t no_size = 0;
  if (size == nullptr) size = &no_size;
  const int16_t compacted = CompactReference(buffer, size);
  if (compacted != kReferenceCompacted) return compacted;
  StmFFile file;
  const int16_t result = WriteReference(&file, path, buffer, *size, id);
  if (result != kDone) {
    file.Abandon();
  } else {
    PutBufEnd(*buffer, *size);
  }
  return result;
}

}  // namespace tolvenar
