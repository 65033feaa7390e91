// StmFFile: a compound file and the list of its open streams. Fields, invariants and results stand in
// stm_file.h.
#include "workbook/stm_file.h"

#include <cstring>
#include <new>

#include "platform/path.h"
#include "workbook/narrow_to_wide.h"

namespace tolvenar {

namespace {

constexpr char kFileTag[kStmTagSize] = {'S', 't', 'm', 'F', 'F', 'i', 'l', 'e'};

void Reset(StmFFile* file) {
  std::memcpy(file->tag, kFileTag, kStmTagSize);
  std::memset(file->reserved, 0, kStmReservedSize);
  file->storage = nullptr;
  file->itemCount = 0;
  file->firstItem = nullptr;
  file->lastItem = nullptr;
  file->pendingName = nullptr;
}

// The checks that open a file operation on an open file.
int32_t CheckOpen(const StmFFile& file) {
  if (!file.IsValid()) return kStmBadTag;
  return file.storage == nullptr ? kStmNotOpen : kStmDone;
}

// The same for Create and Open, which need a closed one and reset it.
int32_t PrepareFile(StmFFile* file) {
  if (!file->IsValid()) return kStmBadTag;
  if (file->storage != nullptr) return kStmAlreadyOpen;
  Reset(file);
  return kStmDone;
}

// Makes *item ready to receive a stream: an item of this call's own when there is none yet.
int32_t PrepareItem(const StmFFile& file, StmFItem** item, bool* made) {
  if (const int32_t result = CheckOpen(file); result != kStmDone) return result;
  if (item == nullptr) return kStmNullArgument;
  if (*item == nullptr) {
    *item = new (std::nothrow) StmFItem;
    if (*item == nullptr) return kStmNoMemory;
    *made = true;
  }
  if (!(*item)->IsValid()) return kStmBadTag;
  (*item)->Reset();
  return kStmDone;
}

// Undoes PrepareItem after a stream could not be opened or created.
int32_t DropItem(StmFItem** item, bool made, int32_t result) {
  (*item)->stream = nullptr;
  if (made) {
    delete *item;
    *item = nullptr;
  }
  return result;
}

}  // namespace

StmFFile::StmFFile() {
  Reset(this);
}

StmFFile::~StmFFile() {
  if (pendingName != nullptr) SysFreeString(pendingName);
  if (storage == nullptr) return;
  Close();
  if (storage != nullptr) platform::StorageRelease(storage);  // its lock must not outlive the object
}

bool StmFFile::IsValid() const {
  return platform::IsReadable(this, kStmTagSize) && std::memcmp(tag, kFileTag, kStmTagSize) == 0;
}

int32_t StmFFile::Create(const char* path, bool replace) {
  if (const int32_t result = PrepareFile(this); result != kStmDone) return result;
  const WideName wide = NarrowToWide(path);
  if (wide == nullptr) return kStmNoMemory;
  const uint32_t mode = replace ? platform::kModeReplace : platform::kModeExclusive;
  if (platform::StorageCreate(wide.get(), mode, &storage) >= 0) return kStmDone;
  storage = nullptr;
  return kStmNoMemory;  // whatever the platform says, on purpose
}

int32_t StmFFile::Open(const char* path) {
  if (const int32_t result = PrepareFile(this); result != kStmDone) return result;
  const WideName wide = NarrowToWide(path);
  if (wide == nullptr) return kStmNoMemory;
  if (platform::StorageOpen(wide.get(), platform::kModeExclusive, &storage) >= 0) return kStmDone;
  storage = nullptr;
  return kStmNotOpen;
}

int32_t StmFFile::OpenStream(const char* name, StmFItem** item) {
  bool made = false;
  if (const int32_t result = PrepareItem(*this, item, &made); result != kStmDone) return result;
  const WideName wide = NarrowToWide(name);
  if (wide == nullptr) return DropItem(item, made, kStmOpenStreamNoName);
  const int32_t result =
      platform::StorageOpenStream(storage, wide.get(), platform::kModeExclusive, &(*item)->stream);
  if (result != kStmDone) return DropItem(item, made, result);  // only 0 is a success here
  return AddItem(*item);
}

int32_t StmFFile::CreateStream(const char* name, StmFItem** item, bool replace) {
  bool made = false;
  if (const int32_t result = PrepareItem(*this, item, &made); result != kStmDone) return result;
  const WideName wide = NarrowToWide(name);
  if (wide == nullptr) return DropItem(item, made, kStmNoMemory);
  const uint32_t mode = replace ? platform::kModeReplace : platform::kModeExclusive;
  const int32_t result = platform::StorageCreateStream(storage, wide.get(), mode, &(*item)->stream);
  if (result < 0) return DropItem(item, made, result);
  return AddItem(*item);
}

int32_t StmFFile::DeleteStream(const char* name) {
  if (const int32_t result = CheckOpen(*this); result != kStmDone) return result;
  const WideName wide = NarrowToWide(name);
  if (wide == nullptr) return kStmNoMemory;
  platform::Stream* found = nullptr;
  const int32_t result = platform::StorageOpenStream(storage, wide.get(), platform::kModeExclusive, &found);
  if (result < 0) return result;
  platform::StreamRelease(found);
  return platform::StorageDestroyElement(storage, wide.get());
}

int32_t StmFFile::Close() {
  if (const int32_t result = CheckOpen(*this); result != kStmDone) return result;
  while (lastItem != nullptr) {
    if (firstItem == nullptr) return kStmBadList;
    const int32_t closed = firstItem->Close();
    if (closed != kStmDone) return closed | kStmItemStaysOpen;
  }
  const int32_t committed = platform::StorageCommit(storage, 0);
  platform::StorageRelease(storage);
  storage = nullptr;
  if (committed < 0) return committed;
  return itemCount != 0 ? kStmBadList : kStmDone;
}

void StmFFile::Abandon() {
  if (CheckOpen(*this) != kStmDone) return;
  while (firstItem != nullptr && firstItem->stream != nullptr) {
    StmFItem* const item = firstItem;
    platform::StreamRelease(item->stream);
    item->stream = nullptr;
    RemoveItem(item);
  }
  platform::StorageRelease(storage);
  storage = nullptr;
}

int32_t StmFFile::AddItem(StmFItem* item) {
  if (item == nullptr) return kStmNullArgument;
  if ((firstItem == nullptr) != (lastItem == nullptr)) return kStmBadList;
  item->previous = lastItem;
  item->next = nullptr;  // its links may be those of a list that it was removed from
  (lastItem == nullptr ? firstItem : lastItem->next) = item;
  lastItem = item;
  item->owner = this;
  ++itemCount;
  return kStmDone;
}

int32_t StmFFile::RemoveItem(StmFItem* item) {
  if (firstItem == nullptr && lastItem == nullptr) return kStmBadList;
  if (item == nullptr) return kStmNullArgument;
  if (item->previous != nullptr) item->previous->next = item->next;
  if (item->next != nullptr) item->next->previous = item->previous;
  if (firstItem == item) firstItem = item->next;
  if (lastItem == item) lastItem = item->previous;
  --itemCount;
  return kStmDone;
}

}  // namespace tolvenar
