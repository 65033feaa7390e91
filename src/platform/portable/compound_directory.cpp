// The directory's two ways: from the entries of a file to a tree of nodes, and from the nodes to balanced
// trees of entries.
#include "platform/portable/compound_directory.h"

#include <algorithm>
#include <cstring>

#include "platform/bytes.h"

namespace tolvenar::platform {

namespace {

constexpr uint32_t kRoot = 0;
constexpr uint8_t kRootName[] = {'R', 0, 'o', 0, 'o', 0, 't', 0, ' ', 0,
                                 'E', 0, 'n', 0, 't', 0, 'r', 0, 'y', 0};

// A name takes its units and a terminator, in bytes, and is counted so.
void SetName(Node* node, const Name& name) {
  std::memcpy(node->entry.data() + kEntryName, name.units, 2 * name.count);
  WriteU16(node->entry.data() + kEntryNameSize, static_cast<uint16_t>(2 * (name.count + 1)));
}

bool HasNameSize(const uint8_t* entry) {
  const uint32_t bytes = ReadU16(entry + kEntryNameSize);
  return bytes % 2 == 0 && bytes >= 2 && bytes <= 2 * (kNameUnits + 1);
}

Node NodeOfEntry(const uint8_t* entry, uint32_t parent, bool large) {
  Node node;
  std::memcpy(node.entry.data(), entry, kEntryBytes);
  node.parent = parent;
  // Version 3 writers are known to leave anything in the high half.
  node.size = large ? ReadU64(entry + kEntrySize) : ReadU32(entry + kEntrySize);
  return node;
}

// Walks the trees of the file with a stack of its own.
class Loader {
 public:
  Loader(const std::vector<uint8_t>& entries, bool large, Directory* directory)
      : entries_(entries), large_(large), directory_(directory), seen_(entries.size() / kEntryBytes) {}

  HRESULT Load() {
    if (seen_.empty() || Entry(0)[kEntryType] != kTypeRoot || !HasNameSize(Entry(0)))
      return kStgDocFileCorrupt;
    seen_[0] = true;
    directory_->nodes.push_back(NodeOfEntry(Entry(0), kRoot, large_));
    Push(ReadU32(Entry(0) + kEntryChild), kRoot);
    while (!waiting_.empty()) {
      const Waiting next = waiting_.back();
      waiting_.pop_back();
      if (!Visit(next)) return kStgDocFileCorrupt;
    }
    return S_OK;
  }

 private:
  struct Waiting {
    uint32_t id;
    uint32_t parent;
  };

  const uint8_t* Entry(uint32_t id) const { return entries_.data() + static_cast<size_t>(id) * kEntryBytes; }

  void Push(uint32_t id, uint32_t parent) {
    if (id != kNoEntry) waiting_.push_back({id, parent});
  }

  bool Visit(const Waiting& at) {
    if (at.id >= seen_.size() || seen_[at.id]) return false;
    seen_[at.id] = true;
    const uint8_t* entry = Entry(at.id);
    const uint8_t type = entry[kEntryType];
    if ((type != kTypeStorage && type != kTypeStream) || !HasNameSize(entry)) return false;
    const uint32_t index = static_cast<uint32_t>(directory_->nodes.size());
    directory_->nodes.push_back(NodeOfEntry(entry, at.parent, large_));
    Push(ReadU32(entry + kEntryRight), at.parent);
    Push(ReadU32(entry + kEntryLeft), at.parent);
    if (type == kTypeStorage) Push(ReadU32(entry + kEntryChild), index);
    return true;
  }

  const std::vector<uint8_t>& entries_;
  const bool large_;
  Directory* directory_;
  std::vector<bool> seen_;
  std::vector<Waiting> waiting_;
};

// Depth of the lowest level of a balanced tree of `count` nodes; the top has depth 0.
uint32_t LowestLevel(uint32_t count) {
  uint32_t level = 0;
  while (count > 1) {
    count /= 2;
    ++level;
  }
  return level;
}

// Links entries first .. last - 1 into a tree and returns its top. Every range is split in the middle, so
// that only the lowest level can have gaps. Its nodes are red when it has any, all others black: no red node
// has a red child, and the gaps are as many black nodes away from the top as the places below the red ones.
// The depth is the logarithm of the count.
uint32_t LinkRange(uint32_t first, uint32_t last, uint32_t levels_left, bool gaps, std::vector<Link>* links) {
  if (first == last) return kNoEntry;
  const uint32_t middle = first + (last - first) / 2;
  Link& link = (*links)[middle];
  link.colour = levels_left == 0 && gaps ? kRed : kBlack;
  const uint32_t below = levels_left == 0 ? 0 : levels_left - 1;
  link.left = LinkRange(first, middle, below, gaps, links);
  link.right = LinkRange(middle + 1, last, below, gaps, links);
  return middle;
}

uint32_t LinkMembers(uint32_t first, uint32_t last, std::vector<Link>* links) {
  const uint32_t count = last - first;
  const uint32_t lowest = LowestLevel(count);
  const bool full = count == (2u << lowest) - 1;
  return LinkRange(first, last, lowest, !full, links);
}

}  // namespace

uint8_t NodeType(const Node& node) {
  return node.entry[kEntryType];
}

Name NodeName(const Node& node) {
  const uint32_t bytes = ReadU16(node.entry.data() + kEntryNameSize);
  return {node.entry.data() + kEntryName, bytes / 2 - 1};
}

uint32_t NodeStart(const Node& node) {
  return ReadU32(node.entry.data() + kEntryStart);
}

Directory NewDirectory() {
  Directory directory;
  Node root;
  SetName(&root, {kRootName, sizeof kRootName / 2});
  root.entry[kEntryType] = kTypeRoot;
  directory.nodes.push_back(root);
  return directory;
}

HRESULT LoadDirectory(const std::vector<uint8_t>& entries, bool large, Directory* directory) {
  directory->nodes.clear();
  return Loader(entries, large, directory).Load();
}

uint32_t FindMember(const Directory& directory, const Name& name) {
  for (uint32_t i = kRoot + 1; i < directory.nodes.size(); ++i) {
    const Node& node = directory.nodes[i];
    if (node.live && node.parent == kRoot && CompareNames(NodeName(node), name) == 0) return i;
  }
  return kNoEntry;
}

uint32_t AddStream(Directory* directory, const Name& name) {
  Node node;
  SetName(&node, name);
  node.entry[kEntryType] = kTypeStream;
  node.located = true;
  node.in_memory = true;
  for (uint32_t i = kRoot + 1; i < directory->nodes.size(); ++i) {
    if (directory->nodes[i].live) continue;
    directory->nodes[i] = std::move(node);
    return i;
  }
  directory->nodes.push_back(std::move(node));
  return static_cast<uint32_t>(directory->nodes.size() - 1);
}

void RemoveNode(Directory* directory, uint32_t index) {
  directory->nodes[index].live = false;
  for (uint32_t i = index; i < directory->nodes.size(); ++i) {
    Node& node = directory->nodes[i];
    if (directory->nodes[node.parent].live && node.live) continue;
    node = Node();
    node.live = false;
  }
}

std::vector<uint32_t> EntryOrder(const Directory& directory) {
  const std::vector<Node>& nodes = directory.nodes;
  std::vector<uint32_t> order;
  for (uint32_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i].live) order.push_back(i);
  }
  std::sort(order.begin() + 1, order.end(), [&](uint32_t a, uint32_t b) {
    if (nodes[a].parent != nodes[b].parent) return nodes[a].parent < nodes[b].parent;
    const int by_name = CompareNames(NodeName(nodes[a]), NodeName(nodes[b]));
    return by_name != 0 ? by_name < 0 : a < b;
  });
  return order;
}

std::vector<Link> LinkEntries(const Directory& directory, const std::vector<uint32_t>& order) {
  std::vector<uint32_t> entry_of(directory.nodes.size(), kNoEntry);
  for (uint32_t id = 0; id < order.size(); ++id) entry_of[order[id]] = id;
  std::vector<Link> links(order.size());
  for (uint32_t first = 1; first < order.size();) {
    const uint32_t parent = directory.nodes[order[first]].parent;
    uint32_t last = first + 1;
    while (last < order.size() && directory.nodes[order[last]].parent == parent) ++last;
    links[entry_of[parent]].child = LinkMembers(first, last, &links);
    first = last;
  }
  return links;
}

}  // namespace tolvenar::platform
