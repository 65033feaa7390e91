// Gives kept inputs to a fuzz target, without a fuzzer:  PROGRAM FOLDER-OR-FILE ...   It fails as the target fails, by a crash; and when
// there is nothing to replay.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "support/temp_file.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

std::vector<std::filesystem::path> InputsOf(int count, char** arguments) {
  std::vector<std::filesystem::path> inputs;
  for (int i = 0; i < count; ++i) {
    if (!std::filesystem::is_directory(arguments[i])) {
      if (std::filesystem::exists(arguments[i])) inputs.push_back(arguments[i]);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(arguments[i]))
      inputs.push_back(entry.path());
  }
  std::sort(inputs.begin(), inputs.end());
  return inputs;
}

}  // namespace

int main(int argc, char** argv) {
  const auto inputs = InputsOf(argc - 1, argv + 1);
  for (const auto& input : inputs) {
    const auto bytes = tolvenar::testing::FileBytes(input.string());
    std::printf("%s\n", input.filename().string().c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  std::printf("%zu inputs replayed\n", inputs.size());
  return inputs.empty() ? 1 : 0;
}
