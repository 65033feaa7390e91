// TempFolder: a folder of a test's own, gone with everything in it when the test ends.
//
//   TempFolder folder;
//   const std::string path = folder.File("book.xls");   nothing is there yet
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace tolvenar::testing {

class TempFolder {
 public:
  // The folder is made in `base`, if there is such a folder, and otherwise where temporary files go.
  explicit TempFolder(const std::filesystem::path& base = {}) {
    const bool there = std::filesystem::is_directory(base);
    std::random_device random;
    do {
      path_ =
          (there ? base : std::filesystem::temp_directory_path()) / ("tolvenar_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  // The path of `name` in the folder, as the library takes paths.
  std::string File(const std::string& name) const { return (path_ / name).string(); }

  // How many files are in the folder.
  size_t Count() const {
    size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(path_)) ++count;
    return count;
  }

 private:
  std::filesystem::path path_;
};

// The whole file at `path`; empty when there is none.
inline std::vector<uint8_t> FileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// Makes the file at `path` hold just `bytes`.
inline void PutFile(const std::string& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace tolvenar::testing
