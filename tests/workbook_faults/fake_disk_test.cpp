// The storage functions of FakeDisk, and a test that they do what they are for.
#include "workbook_faults/fake_disk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "platform/path.h"
#include "platform/storage.h"

namespace tolvenar::testing {

namespace {

constexpr HRESULT kFault = static_cast<HRESULT>(0x80031234u);
constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80030002u);
constexpr HRESULT kExists = static_cast<HRESULT>(0x80030050u);

// What the library holds pointers to.
struct FakeFile {
  std::string path;
  Streams streams;
};

struct FakeStream {
  FakeFile* file;
  std::string name;
  size_t position = 0;
};

FakeFile* FileOf(platform::Storage* storage) {
  return reinterpret_cast<FakeFile*>(storage);
}
FakeStream* StreamOf(platform::Stream* stream) {
  return reinterpret_cast<FakeStream*>(stream);
}

std::string Narrow(const OLECHAR* text) {
  std::string narrow;
  for (; *text != 0; ++text) narrow.push_back(static_cast<char>(*text & 0xFF));
  return narrow;
}

std::string Lower(std::string name) {
  for (char& c : name) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return name;
}

std::string Mode(uint32_t mode) {
  char text[16];
  std::snprintf(text, sizeof text, " 0x%X", static_cast<unsigned>(mode));
  return text;
}

// A call that fails leaves this in its out value, which nobody may take for anything.
template <typename T>
void LeaveTrash(T** out) {
  *out = reinterpret_cast<T*>(&FakeDisk());
}

HRESULT HandOut(FakeFile* file, platform::Storage** out) {
  ++FakeDisk().open_storages;
  *out = reinterpret_cast<platform::Storage*>(file);
  return S_OK;
}

HRESULT HandOut(FakeFile* file, const std::string& name, platform::Stream** out) {
  ++FakeDisk().open_streams;
  *out = reinterpret_cast<platform::Stream*>(new FakeStream{file, name});
  return S_OK;
}

}  // namespace

Disk& FakeDisk() {
  static Disk disk;
  return disk;
}

void Disk::Reset() {
  *this = Disk();
}

void Disk::Put(const std::string& path, const std::string& name, const Bytes& bytes) {
  files[path][Lower(name)] = bytes;
}

std::optional<Bytes> Disk::Read(const std::string& path, const std::string& name) const {
  const auto file = files.find(path);
  if (file == files.end()) return std::nullopt;
  const auto stream = file->second.find(Lower(name));
  return stream == file->second.end() ? std::nullopt : std::optional<Bytes>(stream->second);
}

void Disk::Arm(int k, const std::string& call, bool shorten) {
  left_ = k;
  armed_ = call;
  shorten_ = shorten;
  fired = false;
}

Disk::Fate Disk::Note(const std::string& call, const std::string& arguments) {
  calls.push_back(call + arguments);
  if (left_ < 0 || (!armed_.empty() && armed_ != call) || left_-- != 0) return Fate::kServe;
  fired = true;
  return shorten_ ? Fate::kShort : Fate::kFail;
}

}  // namespace tolvenar::testing

namespace tolvenar::platform {

using namespace tolvenar::testing;

bool PathExists(const char* path) {
  return path != nullptr && !FakeDisk().exists_lies && FakeDisk().files.count(path) != 0;
}

bool IsReadable(const void* address, uint32_t) {
  return address != nullptr;
}

HRESULT StorageCreate(const OLECHAR* path, uint32_t mode, Storage** out) {
  LeaveTrash(out);
  if (FakeDisk().Note("create", Mode(mode)) != Disk::Fate::kServe) return kFault;
  if (mode == kModeExclusive && FakeDisk().files.count(Narrow(path)) != 0) return kExists;
  return HandOut(new FakeFile{Narrow(path), {}}, out);
}

HRESULT StorageOpen(const OLECHAR* path, uint32_t mode, Storage** out) {
  LeaveTrash(out);
  FakeDisk().last_path.assign(path, path + Narrow(path).size());
  if (FakeDisk().Note("open", Mode(mode)) != Disk::Fate::kServe) return kFault;
  const auto file = FakeDisk().files.find(Narrow(path));
  if (file == FakeDisk().files.end()) return kNotFound;
  return HandOut(new FakeFile{file->first, file->second}, out);
}

HRESULT StorageOpenStream(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out) {
  LeaveTrash(out);
  if (FakeDisk().Note("open stream", " " + Narrow(name) + Mode(mode)) != Disk::Fate::kServe) return kFault;
  const std::string lower = Lower(Narrow(name));
  if (FileOf(storage)->streams.count(lower) == 0) return kNotFound;
  if (FakeDisk().success == S_OK) return HandOut(FileOf(storage), lower, out);
  return FakeDisk().success;
}

HRESULT StorageCreateStream(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out) {
  LeaveTrash(out);
  if (FakeDisk().Note("create stream", " " + Narrow(name) + Mode(mode)) != Disk::Fate::kServe) return kFault;
  const std::string lower = Lower(Narrow(name));
  if (mode == kModeExclusive && FileOf(storage)->streams.count(lower) != 0) return kExists;
  FileOf(storage)->streams[lower].clear();
  HandOut(FileOf(storage), lower, out);
  return FakeDisk().success;
}

HRESULT StorageDestroyElement(Storage* storage, const OLECHAR* name) {
  if (FakeDisk().Note("destroy", " " + Narrow(name)) != Disk::Fate::kServe) return kFault;
  return FileOf(storage)->streams.erase(Lower(Narrow(name))) == 1 ? S_OK : kNotFound;
}

HRESULT StorageCommit(Storage* storage, uint32_t flags) {
  if (FakeDisk().Note("commit", Mode(flags)) != Disk::Fate::kServe) return kFault;
  FakeDisk().files[FileOf(storage)->path] = FileOf(storage)->streams;
  return S_OK;
}

void StorageRelease(Storage* storage) {
  --FakeDisk().open_storages;
  delete FileOf(storage);
}

HRESULT StreamRead(Stream* stream, void* bytes, uint32_t count, uint32_t* moved) {
  *moved = 0;
  const Disk::Fate fate = FakeDisk().Note("read", "");
  if (fate == Disk::Fate::kFail) return kFault;
  const Bytes& from = StreamOf(stream)->file->streams[StreamOf(stream)->name];
  const size_t left = from.size() - StreamOf(stream)->position;
  *moved = std::min(count, static_cast<uint32_t>(left));
  if (fate == Disk::Fate::kShort) --*moved;
  if (*moved != 0) std::memcpy(bytes, from.data() + StreamOf(stream)->position, *moved);
  StreamOf(stream)->position += *moved;
  return S_OK;
}

HRESULT StreamWrite(Stream* stream, const void* bytes, uint32_t count, uint32_t* moved) {
  *moved = 0;
  const Disk::Fate fate = FakeDisk().Note("write", "");
  if (fate == Disk::Fate::kFail) return kFault;
  *moved = fate == Disk::Fate::kShort ? count - 1 : count;
  const uint8_t* from = static_cast<const uint8_t*>(bytes);
  Bytes& to = StreamOf(stream)->file->streams[StreamOf(stream)->name];
  to.insert(to.end(), from, from + *moved);
  return S_OK;
}

HRESULT StreamWriteLent(Stream* stream, const void* bytes, uint32_t count, uint32_t* moved) {
  return StreamWrite(stream, bytes, count, moved);
}

HRESULT StreamSize(Stream* stream, uint64_t* size) {
  if (FakeDisk().Note("size", "") != Disk::Fate::kServe) return kFault;
  *size = StreamOf(stream)->file->streams[StreamOf(stream)->name].size();
  if (FakeDisk().size_reported != 0) *size = FakeDisk().size_reported;
  return S_OK;
}

HRESULT StreamCommit(Stream*, uint32_t flags) {
  return FakeDisk().Note("commit stream", Mode(flags)) == Disk::Fate::kServe ? S_OK : kFault;
}

void StreamRelease(Stream* stream) {
  --FakeDisk().open_streams;
  delete StreamOf(stream);
}

}  // namespace tolvenar::platform

namespace tolvenar::testing {
namespace {

TEST(FakeDiskTest, FailsTheCallItWasToldTo_Once) {
  FakeDisk().Reset();
  FakeDisk().FailCall(1);
  platform::Storage* storage = nullptr;
  const OLECHAR path[] = {'x', 0};
  ASSERT_EQ(platform::StorageCreate(path, platform::kModeExclusive, &storage), S_OK);
  EXPECT_LT(platform::StorageCommit(storage, 0), 0);
  EXPECT_TRUE(FakeDisk().fired);
  EXPECT_FALSE(platform::PathExists("x"));
  EXPECT_EQ(platform::StorageCommit(storage, 0), S_OK);
  EXPECT_TRUE(platform::PathExists("x"));
  platform::StorageRelease(storage);
  EXPECT_EQ(FakeDisk().open_storages, 0);
}

}  // namespace
}  // namespace tolvenar::testing
