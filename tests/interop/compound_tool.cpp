// Drives the compound-file layer from the command line, so that independent programs can try what it wrote
// and it can try what they wrote.
//
//   compound_tool create FILE NAME=SOURCE ...   makes FILE with streams NAME, each with the bytes of the file SOURCE
//   compound_tool put FILE NAME=SOURCE ...      makes or replaces streams in FILE
//   compound_tool get FILE NAME                 writes the stream's bytes to standard output
//   compound_tool destroy FILE NAME ...         removes streams or storages from FILE
//
// Exits with 0, or with 1 and the failing call's result on standard error.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/storage.h"

namespace {

using tolvenar::platform::Storage;
using tolvenar::platform::Stream;
namespace platform = tolvenar::platform;

std::u16string Widen(const std::string& text) {
  std::u16string wide;
  for (const char byte : text) wide.push_back(static_cast<char16_t>(static_cast<signed char>(byte)));
  return wide;
}

[[noreturn]] void Fail(const char* what, HRESULT result) {
  std::fprintf(stderr, "compound_tool: %s: %08X\n", what, static_cast<unsigned>(result));
  std::exit(1);
}

void Check(const char* what, HRESULT result) {
  if (result != S_OK) Fail(what, result);
}

std::vector<char> FileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) Fail(path.c_str(), E_FAIL);
  return std::vector<char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

Storage* Open(const std::string& path) {
  Storage* storage = nullptr;
  Check("open", platform::StorageOpen(Widen(path).c_str(), platform::kModeExclusive, &storage));
  return storage;
}

void Put(Storage* storage, const std::string& argument) {
  const size_t equals = argument.find('=');
  if (equals == std::string::npos) Fail("NAME=SOURCE expected", E_INVALIDARG);
  const std::vector<char> bytes = FileBytes(argument.substr(equals + 1));
  const std::u16string name = Widen(argument.substr(0, equals));
  Stream* stream = nullptr;
  Check("create stream",
        platform::StorageCreateStream(storage, name.c_str(), platform::kModeReplace, &stream));
  uint32_t moved = 0;
  Check("write", platform::StreamWrite(stream, bytes.data(), static_cast<uint32_t>(bytes.size()), &moved));
  platform::StreamRelease(stream);
}

void Get(Storage* storage, const std::string& name) {
  Stream* stream = nullptr;
  Check("open stream",
        platform::StorageOpenStream(storage, Widen(name).c_str(), platform::kModeExclusive, &stream));
  uint64_t size = 0;
  Check("size", platform::StreamSize(stream, &size));
  std::vector<char> bytes(static_cast<size_t>(size));
  uint32_t moved = 0;
  Check("read", platform::StreamRead(stream, bytes.data(), static_cast<uint32_t>(size), &moved));
  std::fwrite(bytes.data(), 1, moved, stdout);
  platform::StreamRelease(stream);
}

}  // namespace

int main(int count, char** arguments) {
  const std::vector<std::string> words(arguments, arguments + count);
  if (words.size() < 3) Fail("a command and a file expected", E_INVALIDARG);
  Storage* storage = nullptr;
  if (words[1] == "create") {
    Check("create", platform::StorageCreate(Widen(words[2]).c_str(), platform::kModeExclusive, &storage));
  } else {
    storage = Open(words[2]);
  }
  for (size_t i = 3; i < words.size(); ++i) {
    if (words[1] == "create" || words[1] == "put") Put(storage, words[i]);
    if (words[1] == "get") Get(storage, words[i]);
    if (words[1] == "destroy")
      Check("destroy", platform::StorageDestroyElement(storage, Widen(words[i]).c_str()));
  }
  Check("commit", platform::StorageCommit(storage, 0));
  platform::StorageRelease(storage);
  return 0;
}
