// Makes seeds of the workbooks of a folder, for this machine alone:  corpus_seeds WORKBOOKS SEEDS
//
// Whole files are seeds of compound_file; streams, cut to what a fuzzer takes, those of the targets that work on one.
#include <cstdio>
#include <filesystem>

#include "foundation/memory_pool.h"
#include "fuzz_support.h"
#include "support/temp_file.h"

using tolvenar::testing::Bytes;

namespace {

constexpr size_t kLongestStream = 4000;
constexpr size_t kLongestFile = 9000;

void Write(const std::filesystem::path& path, const Bytes& bytes) {
  std::filesystem::create_directories(path.parent_path());
  tolvenar::testing::PutFile(path.string(), bytes);
}

// A short run of every kind of call.
Bytes Program() {
  Bytes program;
  for (int i = 0; i < 200; ++i) program.push_back(static_cast<uint8_t>(i * 29 + i / 24));
  return program;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: corpus_seeds WORKBOOKS SEEDS\n");
    return 2;
  }
  const std::filesystem::path seeds = argv[2];
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    if (entry.path().extension() != ".xls") continue;
    const std::string name = entry.path().filename().string();
    if (entry.file_size() <= kLongestFile) {
      Write(seeds / "compound_file" / name, tolvenar::testing::FileBytes(entry.path().string()));
    }
    // A copy is opened: nothing may happen to the folder.
    const std::string copy = tolvenar::fuzz::ScratchPath("copy.xls");
    tolvenar::testing::PutFile(copy, tolvenar::testing::FileBytes(entry.path().string()));
    uint32_t buffer = 0, size = 0;
    ::MEMORYFREEALL();
    if (::XLOpenFile(copy.c_str(), &buffer, &size) != 0) continue;
    Bytes stream = tolvenar::testing::BlockContents(buffer, size);
    stream.resize(std::min(stream.size(), kLongestStream));
    Write(seeds / "open_any_bytes" / name, stream);
    Write(seeds / "random_program" / name, tolvenar::fuzz::JoinInput(Program(), stream));
  }
  return 0;
}
