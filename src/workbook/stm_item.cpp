// StmFItem: one open stream of a compound file. Fields, invariants and results stand in stm_file.h.
#include <cstring>

#include "platform/path.h"
#include "workbook/stm_file.h"

namespace tolvenar {

namespace {

constexpr char kItemTag[kStmTagSize] = {'S', 't', 'm', 'F', 'I', 't', 'e', 'm'};

// The checks that open every transfer and the close.
int32_t CheckOpen(const StmFItem& item) {
  if (!item.IsValid()) return kStmBadTag;
  if (item.stream == nullptr) return kStmNotOpen;
  return item.IsOwnerOpen() ? kStmDone : kStmOwnerClosed;
}

// A write by either of the platform's ways.
using WriteBytes = HRESULT (*)(platform::Stream*, const void*, uint32_t, uint32_t*);
int32_t Put(StmFItem* item, WriteBytes write, const void* buffer, uint32_t count, uint32_t* moved) {
  if (const int32_t result = CheckOpen(*item); result != kStmDone) return result;
  if (count == 0) return kStmDone;  // unlike a read of nothing, on purpose
  item->requested = count;
  const int32_t result = write(item->stream, buffer, count, &item->transferred);
  if (result < 0) return result;
  if (moved != nullptr) *moved = item->transferred;
  return kStmDone;
}

}  // namespace

StmFItem::StmFItem() {
  Reset();
}

StmFItem::~StmFItem() {
  if (stream != nullptr) Close();
}

bool StmFItem::IsValid() const {
  return platform::IsReadable(this, kStmTagSize) && std::memcmp(tag, kItemTag, kStmTagSize) == 0;
}

bool StmFItem::IsOwnerOpen() const {
  return owner != nullptr && owner->storage != nullptr;
}

void StmFItem::Reset() {
  std::memcpy(tag, kItemTag, kStmTagSize);
  std::memset(reserved, 0, kStmReservedSize);
  owner = nullptr;
  stream = nullptr;
  requested = 0;
  transferred = 0;
  std::memset(spare, 0, kStmReservedSize);
  previous = nullptr;
  next = nullptr;
}

int32_t StmFItem::Read(void* buffer, uint32_t count, uint32_t* moved) {
  if (const int32_t result = CheckOpen(*this); result != kStmDone) return result;
  if (buffer == nullptr) return kStmNullArgument;
  if (count == 0) return kStmEmptyRead;
  requested = count;
  const int32_t result = platform::StreamRead(stream, buffer, count, &transferred);
  if (result < 0) return result;
  if (moved != nullptr) *moved = transferred;
  return kStmDone;
}

int32_t StmFItem::Write(const void* buffer, uint32_t count, uint32_t* moved) {
  return Put(this, platform::StreamWrite, buffer, count, moved);
}

int32_t StmFItem::WriteLent(const void* buffer, uint32_t count, uint32_t* moved) {
  return Put(this, platform::StreamWriteLent, buffer, count, moved);
}

uint32_t StmFItem::GetSize() {
  uint32_t size = 0;
  QuerySize(&size);
  return size;
}

int32_t StmFItem::QuerySize(uint32_t* size) {
  if (size == nullptr) return kStmNullArgument;
  if (stream == nullptr) return kStmNotOpen;  // there is nothing that could be asked
  uint64_t wide = 0;
  const int32_t result = platform::StreamSize(stream, &wide);
  if (result < 0) return result;
  if (wide > UINT32_MAX) return kStmTooLarge;
  *size = static_cast<uint32_t>(wide);
  return kStmDone;
}

int32_t StmFItem::Close() {
  if (const int32_t result = CheckOpen(*this); result != kStmDone) return result;
  platform::StreamCommit(stream, 0);
  platform::StreamRelease(stream);
  stream = nullptr;
  return owner->RemoveItem(this);
}

}  // namespace tolvenar
