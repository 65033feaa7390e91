// The calls on a stream: read, write, size, commit, release.
#include <algorithm>
#include <cstring>

#include "platform/portable/guarded.h"
#include "platform/portable/storage_state.h"

namespace tolvenar::platform {

namespace {

Node& NodeOf(const Stream* stream) {
  return stream->storage->directory.nodes[stream->node];
}

// What every call on a stream asks first.
HRESULT CheckStream(const Stream* stream) {
  if (stream == nullptr) return kStgInvalidPointer;
  return stream->storage == nullptr ? kStgReverted : stream->storage->failure;
}

HRESULT ReadContents(Stream* stream, void* bytes, uint32_t count, uint32_t* moved) {
  Node& node = NodeOf(stream);
  const uint64_t left = node.size - std::min(node.size, stream->position);
  const uint32_t part = static_cast<uint32_t>(std::min<uint64_t>(count, left));
  HRESULT result = LocateNode(stream->storage, &node);
  if (result != S_OK || part == 0) return result;
  if (node.in_memory) {
    std::memcpy(bytes, NodeBytes(node) + stream->position, part);
  } else {
    result = ReadExtents(stream->storage->target.file, node.extents, stream->position, bytes, part);
  }
  if (result != S_OK) return result;
  stream->position += part;
  *moved = part;
  return S_OK;
}

// Takes the contents into memory, where they can be changed.
HRESULT TakeContents(Storage* storage, Node* node) {
  if (node->lent != nullptr) {
    node->bytes.assign(node->lent, node->lent + node->size);
    node->lent = nullptr;
  }
  if (node->in_memory) return S_OK;
  HRESULT result = LocateNode(storage, node);
  if (result != S_OK) return result;
  node->bytes.resize(static_cast<size_t>(node->size));
  result = ReadExtents(storage->target.file, node->extents, 0, node->bytes.data(), node->size);
  node->in_memory = result == S_OK;
  return result;
}

// True when a stream of `after` bytes may take more room in the file than one of `before`.
bool TakesMoreRoom(uint64_t before, uint64_t after) {
  return before == 0 || (before - 1) / kMiniSectorSize != (after - 1) / kMiniSectorSize;
}

// Puts bytes over and behind the contents that are in memory.
void PutBytes(Node* node, size_t at, const uint8_t* from, uint32_t count) {
  const size_t over = std::min<size_t>(count, node->bytes.size() - at);
  if (over != 0) std::memcpy(node->bytes.data() + at, from, over);
  node->bytes.insert(node->bytes.end(), from + over, from + count);
}

enum class Source { kCopied, kLent };

HRESULT WriteContents(Stream* stream, const void* bytes, uint32_t count, Source source) {
  Storage* storage = stream->storage;
  HRESULT result = PrepareChange(storage, kNoEntry);
  Node& node = NodeOf(stream);
  if (result == S_OK) result = TakeContents(storage, &node);
  if (result != S_OK) return result;
  storage->changed = true;
  const bool empty = node.size == 0;
  const uint64_t end = stream->position + count;
  if (end > node.size) {
    if (TakesMoreRoom(node.size, end)) storage->reserved = false;
    node.size = end;
  }
  result = ReserveForCommit(storage);
  if (result != S_OK) return result;
  const uint8_t* from = static_cast<const uint8_t*>(bytes);
  if (empty && source == Source::kLent) {
    node.lent = from;
  } else {
    PutBytes(&node, static_cast<size_t>(stream->position), from, count);
  }
  stream->position = end;
  return S_OK;
}

// A write of either kind.
HRESULT Write(Stream* stream, const void* bytes, uint32_t count, uint32_t* moved, Source source) {
  if (moved != nullptr) *moved = 0;
  HRESULT result = CheckStream(stream);
  if (result == S_OK && bytes == nullptr && count != 0) result = kStgInvalidPointer;
  if (result != S_OK || count == 0) return result;
  result = Guarded([&] { return WriteContents(stream, bytes, count, source); });
  if (result != S_OK) return FailStorage(stream->storage, result);
  if (moved != nullptr) *moved = count;
  return S_OK;
}

}  // namespace

HRESULT StreamRead(Stream* stream, void* bytes, uint32_t count, uint32_t* moved) {
  uint32_t done = 0;
  HRESULT result = CheckStream(stream);
  if (result == S_OK && bytes == nullptr && count != 0) result = kStgInvalidPointer;
  if (result == S_OK) result = Guarded([&] { return ReadContents(stream, bytes, count, &done); });
  if (moved != nullptr) *moved = done;
  return result;
}

HRESULT StreamWrite(Stream* stream, const void* bytes, uint32_t count, uint32_t* moved) {
  return Write(stream, bytes, count, moved, Source::kCopied);
}

HRESULT StreamWriteLent(Stream* stream, const void* bytes, uint32_t count, uint32_t* moved) {
  return Write(stream, bytes, count, moved, Source::kLent);
}

HRESULT StreamSize(Stream* stream, uint64_t* size) {
  if (size == nullptr) return kStgInvalidPointer;
  const HRESULT result = CheckStream(stream);
  if (result == S_OK) *size = NodeOf(stream).size;
  return result;
}

HRESULT StreamCommit(Stream* stream, uint32_t) {
  return CheckStream(stream);
}

void StreamRelease(Stream* stream) {
  if (stream == nullptr) return;
  if (stream->storage != nullptr) {
    NodeOf(stream).open = false;
    Stream** link = &stream->storage->streams;
    while (*link != stream) link = &(*link)->next;
    *link = stream->next;
  }
  delete stream;
}

}  // namespace tolvenar::platform
