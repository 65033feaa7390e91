// The calls on a file: create, open, its members, commit, release.
#include "platform/storage.h"

#include <algorithm>
#include <new>
#include <string>

#include "platform/portable/compound_writer.h"
#include "platform/portable/guarded.h"
#include "platform/portable/storage_state.h"

namespace tolvenar::platform {

namespace {

// A file that was taken for a new one can have been created before it is claimed, or be gone before it is
// opened. Each time that happens the other way is tried, this often.
constexpr int kAttempts = 10;

// The 8-bit path in a wide one: the low byte of each unit, so that bytes that were widened come back as they
// were.
bool NarrowPath(const OLECHAR* path, std::string* narrow) {
  for (; *path != 0; ++path) {
    const char byte = static_cast<char>(*path & 0xFF);
    if (byte == 0) return false;
    narrow->push_back(byte);
  }
  return true;
}

// The units of a member's name as the directory holds them. One unit more than a name can have is kept, so
// that it shows.
struct WideName {
  uint8_t units[2 * (kNameUnits + 1)];
  Name name;
};

Name NameOf(const OLECHAR* text, WideName* wide) {
  uint32_t count = 0;
  while (text[count] != 0 && count <= kNameUnits) {
    wide->units[2 * count] = static_cast<uint8_t>(text[count] & 0xFF);
    wide->units[2 * count + 1] = static_cast<uint8_t>(text[count] >> 8);
    ++count;
  }
  wide->name = {wide->units, count};
  return wide->name;
}

HRESULT LoadStorage(Storage* storage) {
  HRESULT result = OpenReader(storage->target.file, &storage->reader);
  std::vector<uint8_t> entries;
  if (result == S_OK) result = ReadDirectory(storage->reader, &entries);
  if (result != S_OK) return result;
  storage->sector_shift = storage->reader.sector_shift;
  return LoadDirectory(entries, storage->sector_shift == kLargeSectorShift, &storage->directory);
}

HRESULT CreateAt(const std::string& path, uint32_t mode, Storage* storage) {
  storage->directory = NewDirectory();
  storage->changed = true;
  HRESULT result = ClaimTarget(path, &storage->target);
  for (int attempt = 0; attempt < kAttempts && mode == kModeReplace && result == kStgFileAlreadyExists;
       ++attempt) {
    result = LockTarget(path, &storage->target);
    if (result == S_OK) {
      result = OpenStage(&storage->target);
      break;
    }
    if (result == kStgFileNotFound) result = ClaimTarget(path, &storage->target);
  }
  return result;
}

// Makes a Storage, has `fill` set it up, and hands it out if that worked.
template <typename Fill>
HRESULT MakeStorage(const OLECHAR* path, Storage** out, const Fill& fill) {
  if (out == nullptr) return kStgInvalidPointer;
  *out = nullptr;
  if (path == nullptr) return kStgInvalidPointer;
  Storage* storage = new (std::nothrow) Storage;
  if (storage == nullptr) return kStgInsufficientMemory;
  const HRESULT result = Guarded([&] {
    std::string narrow;
    return NarrowPath(path, &narrow) ? fill(narrow, storage) : kStgInvalidName;
  });
  if (result == S_OK) {
    *out = storage;
  } else {
    StorageRelease(storage);
  }
  return result;
}

HRESULT OpenNode(Storage* storage, uint32_t node, Stream** out) {
  Stream* stream = new (std::nothrow) Stream;
  if (stream == nullptr) return kStgInsufficientMemory;
  stream->storage = storage;
  stream->node = node;
  stream->next = storage->streams;
  storage->streams = stream;
  storage->directory.nodes[node].open = true;
  *out = stream;
  return S_OK;
}

HRESULT CreateStreamNode(Storage* storage, const Name& name, uint32_t mode, Stream** out) {
  const uint32_t there = FindMember(storage->directory, name);
  if (there != kNoEntry && mode != kModeReplace) return kStgFileAlreadyExists;
  if (there != kNoEntry && storage->directory.nodes[there].open) return kStgAccessDenied;
  HRESULT result = PrepareChange(storage, there);
  if (result != S_OK) return result;
  storage->changed = true;
  storage->reserved = false;
  if (there != kNoEntry) RemoveNode(&storage->directory, there);
  DetachStreams(storage, false);
  result = Guarded([&] { return OpenNode(storage, AddStream(&storage->directory, name), out); });
  // The old stream is gone and there is no new one: that must not reach the disk.
  return result == S_OK ? S_OK : FailStorage(storage, result);
}

HRESULT CommitChanges(Storage* storage) {
  Plan plan;
  HRESULT result = PlanCompound(storage->directory, storage->sector_shift, &plan);
  TargetFile* target = &storage->target;
  if (result == S_OK) result = ReserveStage(target, plan.file_size);
  if (result == S_OK) result = WriteCompound(target->stage, target->file, plan, &storage->directory);
  if (result == S_OK) result = CommitStage(target, plan.file_size);
  if (result != S_OK) return result;
  // All contents are located now, in the new file; the tables of the old one are of no use any more.
  storage->reader = CompoundReader();
  storage->reader.size = plan.file_size;
  storage->changed = false;
  storage->reserved = false;
  return S_OK;
}

}  // namespace

HRESULT StorageCreate(const OLECHAR* path, uint32_t mode, Storage** out) {
  return MakeStorage(path, out, [&](const std::string& narrow, Storage* storage) {
    return CreateAt(narrow, mode, storage);
  });
}

HRESULT StorageOpen(const OLECHAR* path, uint32_t, Storage** out) {
  return MakeStorage(path, out, [](const std::string& narrow, Storage* storage) {
    const HRESULT result = LockTarget(narrow, &storage->target);
    return result == S_OK ? LoadStorage(storage) : result;
  });
}

HRESULT StorageOpenStream(Storage* storage, const OLECHAR* name, uint32_t, Stream** out) {
  if (out == nullptr) return kStgInvalidPointer;
  *out = nullptr;
  if (storage == nullptr || name == nullptr) return kStgInvalidPointer;
  if (storage->failure != S_OK) return storage->failure;
  WideName wide;
  const uint32_t there = FindMember(storage->directory, NameOf(name, &wide));
  if (there == kNoEntry || NodeType(storage->directory.nodes[there]) != kTypeStream) return kStgFileNotFound;
  if (storage->directory.nodes[there].open) return kStgAccessDenied;
  return OpenNode(storage, there, out);
}

HRESULT StorageCreateStream(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out) {
  if (out == nullptr) return kStgInvalidPointer;
  *out = nullptr;
  if (storage == nullptr || name == nullptr) return kStgInvalidPointer;
  if (storage->failure != S_OK) return storage->failure;
  WideName wide;
  if (!IsGoodName(NameOf(name, &wide))) return kStgInvalidName;
  return Guarded([&] { return CreateStreamNode(storage, wide.name, mode, out); });
}

HRESULT StorageDestroyElement(Storage* storage, const OLECHAR* name) {
  if (storage == nullptr || name == nullptr) return kStgInvalidPointer;
  if (storage->failure != S_OK) return storage->failure;
  WideName wide;
  const uint32_t there = FindMember(storage->directory, NameOf(name, &wide));
  if (there == kNoEntry) return kStgFileNotFound;
  const HRESULT result = Guarded([&] { return PrepareChange(storage, there); });
  if (result != S_OK) return result;
  storage->changed = true;
  storage->reserved = false;
  RemoveNode(&storage->directory, there);
  DetachStreams(storage, false);
  return S_OK;
}

HRESULT StorageCommit(Storage* storage, uint32_t) {
  if (storage == nullptr) return kStgInvalidPointer;
  if (storage->failure != S_OK) return storage->failure;
  if (!storage->changed) return S_OK;
  const HRESULT result = Guarded([&] { return CommitChanges(storage); });
  return result == S_OK ? S_OK : FailStorage(storage, result);
}

void StorageRelease(Storage* storage) {
  if (storage == nullptr) return;
  DetachStreams(storage, true);
  ReleaseTarget(&storage->target);
  delete storage;
}

}  // namespace tolvenar::platform
