// Compound files for tests: make one with given streams, look into one.
//
//   WriteWorkbook(path, "Workbook", StreamBuilder()...Stream());
//   AddStream(path, "Notes", {1, 2, 3});
//   EXPECT_EQ(ReadStream(path, "Notes"), (Bytes{1, 2, 3}));
#pragma once

#include <optional>
#include <string>

#include "support/stream_builder.h"

namespace tolvenar::testing {

// Makes a new compound file at `path`, in the place of any other, with the one stream `name`. False when it
// can't be done.
bool WriteWorkbook(const std::string& path, const std::string& name, const Bytes& bytes);

// Adds a stream to the compound file at `path`, or replaces it. False when it can't be done.
bool AddStream(const std::string& path, const std::string& name, const Bytes& bytes);

// The bytes of a stream; nothing when the file can't be opened or has no such stream.
std::optional<Bytes> ReadStream(const std::string& path, const std::string& name);

}  // namespace tolvenar::testing
