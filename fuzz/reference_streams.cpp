// Any bytes as a reference, and as the directory of a file of references: what is made, put, looked up, saved and read there comes to an
// end and stays inside its blocks. The first half of the input is a run of choices, the rest the stream.
#include <array>
#include <filesystem>
#include <iterator>

#include "foundation/memory_pool.h"
#include "reference/reference_directory.h"
#include "reference_calls.h"
#include "support/workbook_file.h"

using tolvenar::fuzz::CallObjectExport;
using tolvenar::fuzz::Choices;
using tolvenar::fuzz::Reference;
using tolvenar::fuzz::Require;
using tolvenar::testing::Bytes;

namespace {

constexpr int kMostCalls = 40;
constexpr int32_t kStoredId = 7;

uint16_t ChosenKind(Choices* choices) {
  const uint8_t kind = choices->Byte();
  return kind < 200 ? static_cast<uint16_t>(kind % 4) : static_cast<uint16_t>(choices->Word());
}

uint16_t ChosenId(Choices* choices) {
  return static_cast<uint16_t>(choices->Below(6));
}

// ---- Objects, as the exports on them find, walk, make and change them ----

void MakeObject(Reference* reference, Choices* choices) {
  std::array<uint8_t, tolvenar::kTableHeadSize + tolvenar::kObjectEndSize> head_and_end = {
      tolvenar::kLowTableHead, 0x10, tolvenar::kTableHeadSize - tolvenar::kHeaderSize};
  const uint16_t id = ChosenId(choices);
  tolvenar::WriteU16(head_and_end.data() + tolvenar::kObjectId, id);
  tolvenar::WriteU16(head_and_end.data() + tolvenar::kTableHeadSize,
                     tolvenar::ReferenceType(tolvenar::kLowTableEnd));
  tolvenar::CreateRefObject(&reference->buffer, &reference->size, id, ChosenKind(choices),
                            head_and_end.data(), static_cast<uint32_t>(head_and_end.size()));
}

void PutRecord(Reference* reference, Choices* choices) {
  tolvenar::ObjectWalk object;
  const uint16_t id = ChosenId(choices);
  if (tolvenar::StartObject(reference->buffer, id, ChosenKind(choices), &object) != tolvenar::kRefDone)
    return;
  const bool replaces = choices->Byte() % 2 != 0;
  uint32_t noted = tolvenar::kNoRecord;
  for (; !object.ended; tolvenar::StepObject(&object)) {
    if (replaces && tolvenar::IsChart(object.walk.block, object.walk.at, tolvenar::kLowTableValue))
      noted = object.walk.at;
  }
  if (!object.seen || object.lost) return;
  uint32_t record = ::MEMORYALLOC(tolvenar::kTableValueSize);
  if (record == 0) return;
  uint8_t* bytes = tolvenar::BlockBytes(record);
  tolvenar::WriteU16(bytes, tolvenar::ReferenceType(tolvenar::kLowTableValue));
  tolvenar::WriteU16(bytes + tolvenar::kRecordLength, tolvenar::kTableValueSize - tolvenar::kHeaderSize);
  tolvenar::PutObjectRecord(&reference->buffer, &reference->size, noted, object.walk.at, &record,
                            tolvenar::kTableValueSize);
}

void LookUp(Reference* reference, Choices* choices) {
  const uint16_t id = ChosenId(choices), kind = ChosenKind(choices);
  tolvenar::FindRefEntry(reference->buffer, id, kind);
  tolvenar::LowestFreeRefId(reference->buffer, static_cast<uint16_t>(kind & 0xFF));
  if (choices->Byte() % 4 == 0) tolvenar::RetireRefEntry(reference->buffer, id, kind);
}

// ---- The reference as a whole, and its file ----

void Compact(Reference* reference, Choices*) {
  ::XLRefreshReference(&reference->buffer, &reference->size);
}

void SaveAndRead(Reference* reference, Choices*) {
  const char* path = reference->file.c_str();
  if (::XLSaveReference(path, &reference->buffer, &reference->size, kStoredId) != 0) return;
  uint32_t buffer = 0, size = 0;
  const int16_t read = ::XLReadReference(path, &buffer, &size, kStoredId);
  Require(read == 0 || tolvenar::fuzz::LiveBlocks() >= 8, "a reference that was saved can be read");
  if (read == 0) Require(size == reference->size, "a reference has the size that it was saved with");
  ::XLDestroyFString(&buffer);
}

void CreateAndDelete(Reference* reference, Choices* choices) {
  const char* path = reference->file.c_str();
  const int32_t id = ::XLCreateReference(path);
  if (id <= 0) return;
  uint32_t buffer = 0, size = 0;
  if (::XLReadReference(path, &buffer, &size, id) == 0) {
    ::XLDestroyFString(&reference->buffer);
    reference->buffer = buffer;
    reference->size = size;
  }
  if (choices->Byte() % 2 == 0) ::XLDeleteReference(path, static_cast<uint32_t>(id));
}

void DeleteAny(Reference* reference, Choices* choices) {
  ::XLDeleteReference(reference->file.c_str(), choices->Below(10));
}

// The pool is short of a block from now on.
void TakeBlock(Reference*, Choices* choices) {
  ::MEMORYALLOC(static_cast<int32_t>(choices->Word()));
}

// The list.
constexpr void (*kCalls[])(Reference*, Choices*) = {
    CallObjectExport, CallObjectExport, CallObjectExport, CallObjectExport, CallObjectExport,
    CallObjectExport, MakeObject,       PutRecord,        LookUp,           Compact,
    SaveAndRead,      CreateAndDelete,  DeleteAny,        TakeBlock};

// A file of references whose directory is the stream, and so is one of its references. The count in the directory's head rules, however
// few ids there are, and a file grows with it: it is kept small here, or negative.
bool MakeFile(const std::string& path, const Bytes& stream) {
  constexpr size_t kCountHigh = tolvenar::kRefField + 1;  // all but its low byte
  std::filesystem::remove(path);
  Bytes contents = stream;
  for (size_t at = kCountHigh; at < kCountHigh + 3 && at < contents.size(); ++at)
    contents[at] = static_cast<uint8_t>(at == kCountHigh + 2 ? contents[at] & 0x80 : 0);
  return tolvenar::testing::WriteWorkbook(path, "Contents", contents) &&
         tolvenar::testing::AddStream(path, "7       ", stream);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ::MEMORYFREEALL();
  const tolvenar::fuzz::Halves input = tolvenar::fuzz::SplitInput(data, size);
  Choices choices(input.choices.data(), input.choices.size());
  Reference reference;
  reference.file = tolvenar::fuzz::ScratchPath("references.ref");
  if (choices.Byte() % 4 == 0) {
    Require(MakeFile(reference.file, input.stream), "a file can be made");
    ::XLReadReference(reference.file.c_str(), &reference.buffer, &reference.size, kStoredId);
    Require(reference.buffer != 0, "a stream that is there can be read");
  } else {
    std::filesystem::remove(reference.file);
    reference.size = static_cast<uint32_t>(input.stream.size());
    reference.buffer = ::MEMORYALLOC(static_cast<int32_t>(reference.size));
    std::copy(input.stream.begin(), input.stream.end(), tolvenar::BlockBytes(reference.buffer));
  }
  for (int i = 0; i < kMostCalls && !choices.Done(); ++i) {
    kCalls[choices.Byte() % std::size(kCalls)](&reference, &choices);
  }
  return 0;
}
