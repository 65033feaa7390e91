// Compound files on Windows: the system's own storage, in direct mode. Every function is the system's call of
// that name; no file lies between the library and the disk, so what was written stands in the file before it
// is committed.
#include "platform/storage.h"

#include <windows.h>

#include <ole2.h>

namespace tolvenar::platform {

namespace {

static_assert(kModeExclusive == (STGM_DIRECT | STGM_READWRITE | STGM_SHARE_EXCLUSIVE));
static_assert(kModeReplace == (kModeExclusive | STGM_CREATE));

constexpr DWORD kReserved = 0;

}  // namespace

HRESULT StorageCreate(const OLECHAR* path, uint32_t mode, Storage** out) {
  *out = nullptr;
  return StgCreateDocfile(path, mode, kReserved, out);
}

HRESULT StorageOpen(const OLECHAR* path, uint32_t mode, Storage** out) {
  *out = nullptr;
  IStorage* const no_priority = nullptr;
  SNB const no_exclusion = nullptr;
  return StgOpenStorage(path, no_priority, mode, no_exclusion, kReserved, out);
}

HRESULT StorageOpenStream(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out) {
  *out = nullptr;
  return storage->OpenStream(name, nullptr, mode, kReserved, out);
}

HRESULT StorageCreateStream(Storage* storage, const OLECHAR* name, uint32_t mode, Stream** out) {
  *out = nullptr;
  return storage->CreateStream(name, mode, kReserved, kReserved, out);
}

HRESULT StorageDestroyElement(Storage* storage, const OLECHAR* name) {
  return storage->DestroyElement(name);
}

HRESULT StorageCommit(Storage* storage, uint32_t flags) {
  return storage->Commit(flags);
}

void StorageRelease(Storage* storage) {
  storage->Release();
}

HRESULT StreamRead(Stream* stream, void* bytes, uint32_t count, uint32_t* moved) {
  ULONG done = 0;
  const HRESULT result = stream->Read(bytes, count, &done);
  if (moved != nullptr) *moved = done;
  return result;
}

// Nothing may be written from nowhere, which the system refuses.
HRESULT StreamWrite(Stream* stream, const void* bytes, uint32_t count, uint32_t* moved) {
  ULONG done = 0;
  const HRESULT result = count == 0 ? S_OK : stream->Write(bytes, count, &done);
  if (moved != nullptr) *moved = done;
  return result;
}

HRESULT StreamWriteLent(Stream* stream, const void* bytes, uint32_t count, uint32_t* moved) {
  return StreamWrite(stream, bytes, count, moved);
}

HRESULT StreamSize(Stream* stream, uint64_t* size) {
  STATSTG statistics = {};
  const HRESULT result = stream->Stat(&statistics, STATFLAG_NONAME);
  if (SUCCEEDED(result)) *size = statistics.cbSize.QuadPart;
  return result;
}

HRESULT StreamCommit(Stream* stream, uint32_t flags) {
  return stream->Commit(flags);
}

void StreamRelease(Stream* stream) {
  stream->Release();
}

}  // namespace tolvenar::platform
