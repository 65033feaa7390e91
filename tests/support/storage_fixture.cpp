// Files in a folder of the test's own, and the storage calls as tests use them.
#include "support/storage_fixture.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>

namespace tolvenar::testing {

std::u16string Widen(const std::string& text) {
  std::u16string wide;
  for (const char byte : text) wide.push_back(static_cast<char16_t>(static_cast<signed char>(byte)));
  return wide;
}

namespace {

// The platform's wide type: char16_t, on Windows wchar_t, of the same width.
const OLECHAR* Wide(const std::u16string& text) {
  return reinterpret_cast<const OLECHAR*>(text.c_str());
}

}  // namespace

Bytes ReadFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in) << path;
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteFile(const std::filesystem::path& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  EXPECT_TRUE(out.flush()) << path;
}

HRESULT OpenFile::Create(const std::string& path, uint32_t mode) {
  Release();
  return platform::StorageCreate(Wide(Widen(path)), mode, &storage);
}

HRESULT OpenFile::Open(const std::string& path) {
  Release();
  return platform::StorageOpen(Wide(Widen(path)), platform::kModeExclusive, &storage);
}

HRESULT OpenFile::Put(const std::string& name, const Bytes& bytes) {
  platform::Stream* stream = nullptr;
  HRESULT result = platform::StorageCreateStream(storage, Wide(Widen(name)), platform::kModeReplace, &stream);
  if (result != S_OK) return result;
  uint32_t moved = 0;
  result = platform::StreamWrite(stream, bytes.data(), static_cast<uint32_t>(bytes.size()), &moved);
  if (result == S_OK) {
    EXPECT_EQ(moved, bytes.size());
  }
  if (result == S_OK) result = platform::StreamCommit(stream, 0);
  platform::StreamRelease(stream);
  return result;
}

HRESULT OpenFile::Get(const std::string& name, Bytes* bytes) {
  platform::Stream* stream = nullptr;
  HRESULT result = platform::StorageOpenStream(storage, Wide(Widen(name)), platform::kModeExclusive, &stream);
  if (result != S_OK) return result;
  // A damaged stream may claim 4 GiB; what is really there in a test is no more than this.
  constexpr uint64_t kMost = 64u << 20;
  uint64_t size = 0;
  result = platform::StreamSize(stream, &size);
  size = std::min(size, kMost);
  bytes->assign(static_cast<size_t>(size), 0xCD);
  uint32_t moved = 0;
  if (result == S_OK)
    result = platform::StreamRead(stream, bytes->data(), static_cast<uint32_t>(size), &moved);
  if (result == S_OK) {
    EXPECT_EQ(moved, size);
  }
  platform::StreamRelease(stream);
  return result;
}

HRESULT OpenFile::Destroy(const std::string& name) {
  return platform::StorageDestroyElement(storage, Wide(Widen(name)));
}

void OpenFile::Release() {
  if (storage != nullptr) platform::StorageRelease(storage);
  storage = nullptr;
}

void StorageTest::SetUp() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string name = info->name();
  std::replace(name.begin(), name.end(), '/', '_');  // the number of a parameter stands behind one
  const bool there = std::filesystem::is_directory(base_);
  folder_ = (there ? base_ : std::filesystem::temp_directory_path()) /
            ("tolvenar_" + name + "_" + std::to_string(now));
  ASSERT_TRUE(std::filesystem::create_directories(folder_));
}

void StorageTest::TearDown() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::string StorageTest::Make(const std::string& name, const std::map<std::string, Bytes>& streams) const {
  OpenFile file;
  EXPECT_EQ(file.Create(Path(name)), S_OK);
  for (const auto& [stream, bytes] : streams) EXPECT_EQ(file.Put(stream, bytes), S_OK);
  EXPECT_EQ(file.Commit(), S_OK);
  return Path(name);
}

std::vector<std::string> StorageTest::Listing() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

Bytes StreamOf(const std::string& path, const std::string& name) {
  OpenFile file;
  EXPECT_EQ(file.Open(path), S_OK) << path;
  Bytes bytes;
  if (file.storage != nullptr) {
    EXPECT_EQ(file.Get(name, &bytes), S_OK) << name;
  }
  return bytes;
}

HRESULT Save(const std::string& path, const std::string& name, const Bytes& bytes) {
  OpenFile file;
  HRESULT result = file.Open(path);
  if (result == S_OK) result = file.Put(name, bytes);
  return result == S_OK ? file.Commit() : result;
}

}  // namespace tolvenar::testing
