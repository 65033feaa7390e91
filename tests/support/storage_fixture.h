// A test with a folder of its own, and short words for what tests do with compound files.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>

#include "platform/storage.h"
#include "support/compound_builder.h"

namespace tolvenar::testing {

// Names and paths as the library hands them to the platform: each byte widened with its sign.
std::u16string Widen(const std::string& text);

Bytes ReadFile(const std::filesystem::path& path);
void WriteFile(const std::filesystem::path& path, const Bytes& bytes);

// An open file that is released at the end of its scope.
class OpenFile {
 public:
  OpenFile() = default;
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { Release(); }

  HRESULT Create(const std::string& path, uint32_t mode = platform::kModeExclusive);
  HRESULT Open(const std::string& path);
  HRESULT Put(const std::string& name, const Bytes& bytes);  // makes or replaces a stream
  HRESULT Get(const std::string& name, Bytes* bytes);
  HRESULT Destroy(const std::string& name);
  HRESULT Commit() { return platform::StorageCommit(storage, 0); }
  void Release();

  platform::Storage* storage = nullptr;
};

class StorageTest : public ::testing::Test {
 protected:
  // The folder is made in `base`, if there is such a folder, and otherwise where temporary files go.
  explicit StorageTest(const char* base = "") : base_(base) {}

  void SetUp() override;
  void TearDown() override;

  std::string Path(const std::string& name) const { return (folder_ / name).string(); }

  // Makes a file with `streams` and commits it.
  std::string Make(const std::string& name, const std::map<std::string, Bytes>& streams) const;

  // Names in the folder.
  std::vector<std::string> Listing() const;

  std::filesystem::path base_;
  std::filesystem::path folder_;
};

// The stream's bytes, by a file opened for this alone. Fails the test when they can't be had.
Bytes StreamOf(const std::string& path, const std::string& name);

// Opens the file, puts the stream, commits. The first result that is no success, or S_OK.
HRESULT Save(const std::string& path, const std::string& name, const Bytes& bytes);

}  // namespace tolvenar::testing
