// The steps that the storage and the stream calls have in common.
#include "platform/portable/storage_state.h"

#include "platform/portable/compound_writer.h"

namespace tolvenar::platform {

HRESULT LocateNode(Storage* storage, Node* node) {
  if (node->located || node->in_memory) return S_OK;
  HRESULT result = S_OK;
  if (node->size < kMiniCutoff && node->size != 0) {
    const Node& root = storage->directory.nodes[0];
    result = PrepareMiniStream(&storage->reader, NodeStart(root), root.size);
  }
  if (result == S_OK) result = LocateStream(storage->reader, NodeStart(*node), node->size, &node->extents);
  node->located = result == S_OK;
  return result;
}

HRESULT PrepareChange(Storage* storage, uint32_t leave_out) {
  if (storage->failure != S_OK) return storage->failure;
  uint64_t kept = 0;
  for (uint32_t i = 1; i < storage->directory.nodes.size() && !storage->checked; ++i) {
    Node& node = storage->directory.nodes[i];
    if (!node.live || i == leave_out || NodeType(node) != kTypeStream || node.in_memory) continue;
    const HRESULT result = LocateNode(storage, &node);
    if (result != S_OK) return result;
    // Streams that share sectors could claim many times the file; no honest file holds more than itself.
    kept += node.size;
    if (kept > storage->reader.size) return kStgDocFileCorrupt;
  }
  const HRESULT staged = OpenStage(&storage->target);
  if (staged != S_OK && staged != kStgMediumFull) return staged;
  storage->checked = true;
  return S_OK;
}

HRESULT ReserveForCommit(Storage* storage) {
  if (storage->reserved) return S_OK;
  Plan plan;
  HRESULT result = PlanCompound(storage->directory, storage->sector_shift, &plan);
  if (result == S_OK) result = ReserveStage(&storage->target, plan.file_size);
  storage->reserved = result == S_OK;
  return result;
}

HRESULT FailStorage(Storage* storage, HRESULT result) {
  storage->failure = result;
  DropStage(&storage->target);
  return result;
}

void DetachStreams(Storage* storage, bool all) {
  Stream** link = &storage->streams;
  while (*link != nullptr) {
    Stream* stream = *link;
    if (!all && storage->directory.nodes[stream->node].live) {
      link = &stream->next;
      continue;
    }
    *link = stream->next;
    stream->next = nullptr;
    stream->storage = nullptr;
  }
}

}  // namespace tolvenar::platform
