// Floors, without the library. What they are stands in floors.h.
#include "floors.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>

#include "books.h"

namespace bench {

uint32_t ChaseHeaders(const uint8_t* stream, uint32_t from, uint32_t to) {
  uint32_t records = 0;
  for (uint32_t at = from; at < to; ++records) {
    uint16_t length;
    std::memcpy(&length, stream + at + 2, sizeof length);
    at += 4u + length;
  }
  return records;
}

size_t NumbersToChars(const std::vector<double>& numbers) {
  char text[400];
  size_t count = 0;
  for (const double number : numbers) {
    const auto end = std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, 6).ptr;
    count += static_cast<size_t>(end - text);
    benchmark::DoNotOptimize(text);
  }
  return count;
}

void CopyTexts(const std::vector<std::string>& texts, std::vector<void*>* copies) {
  for (const std::string& text : texts) {
    void* copy = std::malloc(text.size());
    std::memcpy(copy, text.data(), text.size());
    copies->push_back(copy);
  }
}

void FreeCopies(std::vector<void*>* copies) {
  for (void* copy : *copies) std::free(copy);
  copies->clear();
}

void ReadWhole(const std::string& path, std::vector<uint8_t>* bytes) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  size_t done = 0;
  while (file >= 0 && done < bytes->size()) {
    const ssize_t got = read(file, bytes->data() + done, bytes->size() - done);
    if (got <= 0) break;
    done += static_cast<size_t>(got);
  }
  Require(done == bytes->size(), "the file can't be read");
  close(file);
}

void CopyBytes(const std::vector<uint8_t>& bytes, std::vector<uint8_t>* copy) {
  std::memcpy(copy->data(), bytes.data(), bytes.size());
  benchmark::DoNotOptimize(copy->data());
  benchmark::ClobberMemory();
}

void WriteAndSync(const std::string& path, const std::vector<uint8_t>& bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  size_t done = 0;
  while (file >= 0 && done < bytes.size()) {
    const ssize_t put = write(file, bytes.data() + done, bytes.size() - done);
    if (put <= 0) break;
    done += static_cast<size_t>(put);
  }
  Require(done == bytes.size() && fsync(file) == 0, "the file can't be written");
  close(file);
}

}  // namespace bench
