// Any bytes as a file on disk: it is opened, listed and read, a stream in it is replaced, and the rest of it comes out as it went in; then
// a workbook is opened from it and saved into it. A change that fails leaves the file as it was, to the byte.
//
//   the input   D0 ...: the file as it stands, since no other first byte can be opened
//               any other first byte: choices, which build a whole file and then damage it where it hurts
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "foundation/memory_pool.h"
#include "fuzz_support.h"
#include "platform/portable/storage_state.h"
#include "support/compound_builder.h"
#include "support/temp_file.h"

namespace platform = tolvenar::platform;

using tolvenar::fuzz::Choices;
using tolvenar::fuzz::Require;
using tolvenar::testing::Bytes;
using tolvenar::testing::CompoundBuilder;
using tolvenar::testing::CompoundImage;

namespace {

constexpr const OLECHAR* kReplaced = u"book";

std::u16string Wide(const std::string& path) {
  return std::u16string(path.begin(), path.end());
}

// ---- Files ----

// Streams on both sides of the cutoff, in the root and in a storage, one of them a workbook.
CompoundBuilder ChosenFile(Choices* choices) {
  CompoundBuilder file(choices->Byte() % 4 == 0 ? 4 : 3);
  const Bytes workbook = tolvenar::fuzz::StreamOf(choices);
  file.AddStream(choices->Byte() % 2 == 0 ? "Workbook" : "Book", workbook);
  const uint32_t streams = choices->Below(4);
  const uint32_t folder = file.AddStorage("folder");
  file.Stamp(folder, 3);
  for (uint32_t i = 0; i < streams; ++i) {
    const size_t size = choices->Byte() % 2 == 0 ? choices->Byte() : 4096 + choices->Word() % 3000;
    file.AddStream("stream " + std::to_string(i), tolvenar::testing::Pattern(size, i),
                   i % 2 == 0 ? 0 : folder);
  }
  return file;
}

// The place of one of the fields that a reader follows: table entries, directory links, starts and sizes, the header.
size_t ChosenField(const CompoundImage& image, Choices* choices) {
  const uint32_t sectors = static_cast<uint32_t>(image.bytes.size() / image.sector_size);
  const uint32_t pick = choices->Byte();
  switch (choices->Below(5)) {
    case 0:
      return image.TableAt(pick % sectors);
    case 1:
      return image.mini_table.empty() ? 60 : image.MiniTableAt(pick % 64);
    case 2:
      return image.EntryAt(pick % (static_cast<uint32_t>(image.directory.size()) * image.sector_size /
                                   platform::kEntryBytes)) +
             64 + 4 * choices->Below(16);
    case 3:
      return 24 + 4 * (pick % 14);
    default:
      return (pick * 256u + choices->Byte()) % image.bytes.size();
  }
}

Bytes DamagedFile(Choices* choices) {
  CompoundImage image = ChosenFile(choices).Build();
  const uint32_t damages = choices->Below(6);
  for (uint32_t i = 0; i < damages; ++i) {
    const size_t at = ChosenField(image, choices);
    const uint8_t kind = choices->Byte();
    const uint32_t value = kind < 128   ? choices->Byte()
                           : kind < 160 ? 0xFFFFFFF8u + kind % 8
                                        : choices->Long();
    if (at + 4 <= image.bytes.size()) image.PutU32(at, value);
  }
  if (choices->Byte() % 8 == 7) image.bytes.resize(image.bytes.size() * choices->Byte() / 256);
  return image.bytes;
}

// ---- What a file holds ----

// A member with its storage's place, as one run of bytes: what must come out as it went in.
using Member = Bytes;

struct Listing {
  std::vector<Member> members;
  bool whole = true;
};

HRESULT ContentsOf(platform::Storage* storage, platform::Node* node, Bytes* bytes) {
  const HRESULT located = platform::LocateNode(storage, node);
  if (located != S_OK) return located;
  bytes->resize(node->size);
  return platform::ReadExtents(storage->target.file, node->extents, 0, bytes->data(), node->size);
}

// Name, type and the fields that only a member's owner understands.
Bytes Identity(const platform::Node& node) {
  const uint8_t* entry = node.entry.data();
  const platform::Name name = platform::NodeName(node);
  Bytes bytes(name.units, name.units + 2 * name.count);
  bytes.push_back(entry[platform::kEntryType]);
  bytes.insert(bytes.end(), entry + platform::kEntryChild + 4, entry + platform::kEntryStart);
  return bytes;
}

// All members but node `leave_out`.
Listing List(platform::Storage* storage, uint32_t leave_out) {
  Listing listing;
  std::vector<platform::Node>& nodes = storage->directory.nodes;
  for (uint32_t i = 0; i < nodes.size(); ++i) {
    if (i == leave_out) continue;
    Member member;
    for (uint32_t up = i; up != 0; up = nodes[up].parent) {
      const Bytes identity = Identity(nodes[up]);
      member.insert(member.end(), identity.begin(), identity.end());
    }
    if (platform::NodeType(nodes[i]) == platform::kTypeStream) {
      Bytes bytes;
      if (nodes[i].size > storage->reader.size || ContentsOf(storage, &nodes[i], &bytes) != S_OK)
        listing.whole = false;
      member.insert(member.end(), bytes.begin(), bytes.end());
    }
    listing.members.push_back(member);
  }
  std::sort(listing.members.begin(), listing.members.end());
  return listing;
}

uint32_t FindReplaced(platform::Storage* storage) {
  uint8_t units[8];
  for (size_t i = 0; i < 4; ++i) {
    units[2 * i] = static_cast<uint8_t>(kReplaced[i]);
    units[2 * i + 1] = 0;
  }
  return platform::FindMember(storage->directory, {units, 4});
}

// ---- The rounds ----

// Reads the stream in pieces, as far as it can be read.
Bytes ReadStream(platform::Storage* storage, const OLECHAR* name) {
  platform::Stream* stream = nullptr;
  if (platform::StorageOpenStream(storage, name, platform::kModeExclusive, &stream) != S_OK) return {};
  Bytes bytes;
  uint8_t piece[1000];
  uint32_t moved = 0;
  do {
    if (platform::StreamRead(stream, piece, sizeof piece, &moved) != S_OK) break;
    bytes.insert(bytes.end(), piece, piece + moved);
  } while (moved == sizeof piece);
  platform::StreamRelease(stream);
  return bytes;
}

bool Replace(platform::Storage* storage, const Bytes& contents) {
  platform::Stream* stream = nullptr;
  if (platform::StorageCreateStream(storage, kReplaced, platform::kModeReplace, &stream) != S_OK)
    return false;
  uint32_t moved = 0;
  const HRESULT result =
      platform::StreamWrite(stream, contents.data(), static_cast<uint32_t>(contents.size()), &moved);
  platform::StreamRelease(stream);
  return result == S_OK && platform::StorageCommit(storage, 0) == S_OK;
}

void ReplaceStream(const std::string& path, const Bytes& before) {
  platform::Storage* storage = nullptr;
  if (platform::StorageOpen(Wide(path).c_str(), platform::kModeExclusive, &storage) != S_OK) return;
  ReadStream(storage, u"Workbook");
  const Listing kept = List(storage, FindReplaced(storage));
  const Bytes contents = tolvenar::testing::Pattern(before.size() % 6000);
  const bool replaced = Replace(storage, contents);
  platform::StorageRelease(storage);
  if (!replaced) {
    Require(tolvenar::testing::FileBytes(path) == before, "a change that failed leaves the file alone");
    return;
  }
  Require(kept.whole, "only a whole file is written");
  Require(platform::StorageOpen(Wide(path).c_str(), platform::kModeExclusive, &storage) == S_OK,
          "a file that was written can be opened");
  Require(ReadStream(storage, kReplaced) == contents, "a stream that was put can be read");
  const Listing after = List(storage, FindReplaced(storage));
  platform::StorageRelease(storage);
  Require(after.whole && after.members == kept.members, "what was not replaced is kept");
}

void SaveWorkbook(const std::string& path) {
  uint32_t buffer = 0, size = 0, table = 0;
  if (::XLOpenFile(path.c_str(), &buffer, &size) != 0) return;
  const Bytes before = tolvenar::testing::FileBytes(path);
  if (::XLLocateSheets(buffer, &table, size) != 0) return;
  if (::XLSaveFile(path.c_str(), &buffer, &table, &size) != 0) {
    Require(tolvenar::testing::FileBytes(path) == before, "a save that failed leaves the file alone");
    return;
  }
  ::XLFreeHandle(&buffer);
  Require(::XLOpenFile(path.c_str(), &buffer, &size) == 0, "a workbook that was saved can be opened");
  Require(::XLLocateSheets(buffer, &table, size) == 0, "a workbook that was saved has its sheets");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ::MEMORYFREEALL();
  const std::string path = tolvenar::fuzz::ScratchPath("any.xls");
  Choices choices(data, size);
  const bool as_it_stands = size != 0 && data[0] == platform::kSignature[0];
  const Bytes file = as_it_stands ? choices.Rest() : DamagedFile(&choices);
  tolvenar::testing::PutFile(path, file);
  SaveWorkbook(path);
  tolvenar::testing::PutFile(path, file);
  ReplaceStream(path, file);
  ::XLGetReference(path.c_str());
  Require(
      std::distance(std::filesystem::directory_iterator(std::filesystem::path(path).parent_path()), {}) == 1,
      "nothing is left beside the file");
  return 0;
}
