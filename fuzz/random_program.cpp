// Any bytes as a workbook, and a program of edits, appends, structural edits, style lookups and saves on it: every call comes to an end
// and stays inside its blocks, and what was saved can be opened. The first half of the input is the program, the rest the stream.
#include <filesystem>

#include "book_program.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr int kMostCalls = 40;
  ::MEMORYFREEALL();
  const tolvenar::fuzz::Halves input = tolvenar::fuzz::SplitInput(data, size);
  tolvenar::fuzz::Choices choices(input.choices.data(), input.choices.size());
  const std::string path = tolvenar::fuzz::ScratchPath("program.xls");
  std::filesystem::remove(path);
  tolvenar::fuzz::Book book = tolvenar::fuzz::OpenStream(input.stream);
  tolvenar::fuzz::RunProgram(&book, &choices, kMostCalls, path);
  return 0;
}
