// The directory of an open compound file: a tree of storages and streams, and what is known of each stream's
// bytes.
//
// Nodes are kept with their 128 bytes as the file had them, so that class ids, state bits and times come
// through a commit as they were. Only the fields that tie an entry into the file (siblings, child, colour,
// first sector, size) are made anew.
//
// Invariants: (1) nodes[0] is the root. A node's parent stands before it. (2) A live node has a live parent.
// (3) A dead node's place is taken by the next node that is made. (4) The order of an existing directory is
// not trusted: a name is looked for among all members.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/portable/compound_format.h"
#include "platform/portable/compound_name.h"
#include "platform/portable/compound_reader.h"

namespace tolvenar::platform {

struct Node {
  std::array<uint8_t, kEntryBytes> entry = {};
  uint32_t parent = 0;
  bool live = true;
  bool open = false;       // a Stream for it exists
  bool located = false;    // `extents` are known
  bool in_memory = false;  // the contents are NodeBytes, else they lie at `extents`
  uint64_t size = 0;
  std::vector<Extent> extents;
  std::vector<uint8_t> bytes;
  const uint8_t* lent = nullptr;  // the contents while they are still their writer's; then `bytes` is empty
};

// Contents that are in memory.
inline const uint8_t* NodeBytes(const Node& node) {
  return node.lent != nullptr ? node.lent : node.bytes.data();
}

struct Directory {
  std::vector<Node> nodes;
};

// How an entry hangs in the tree of its storage. Ids are places in the directory as it will be written.
struct Link {
  uint32_t left = kNoEntry;
  uint32_t right = kNoEntry;
  uint32_t child = kNoEntry;
  uint8_t colour = kBlack;
};

uint8_t NodeType(const Node& node);
Name NodeName(const Node& node);
uint32_t NodeStart(const Node& node);

// A directory with nothing but a root.
Directory NewDirectory();

// Builds the tree out of the directory's sectors. `large` tells a version 4 file, whose sizes have 8 bytes
// that count. RESULT: S_OK; kStgDocFileCorrupt: no root, an id out of range, an entry reached twice, or one
// that is neither storage nor stream.
HRESULT LoadDirectory(const std::vector<uint8_t>& entries, bool large, Directory* directory);

// Index of the root's live member `name`, or kNoEntry.
uint32_t FindMember(const Directory& directory, const Name& name);

// Makes an empty stream `name` in the root, and returns its index. REQUIRES: the name is good and not taken.
uint32_t AddStream(Directory* directory, const Name& name);

// Takes node `index` out of the tree with all that is in it. Indices of other nodes stay good.
void RemoveNode(Directory* directory, uint32_t index);

// The live nodes in the order in which their entries will be written: the root, then the members of each
// storage by name.
std::vector<uint32_t> EntryOrder(const Directory& directory);

// The links of the entries in `order`: for each storage a balanced red-black tree over its members.
std::vector<Link> LinkEntries(const Directory& directory, const std::vector<uint32_t>& order);

}  // namespace tolvenar::platform
