// FakeDisk: a storage layer of the tests' own, in memory, in the place of the platform's. It tells what it
// was asked for, fails a call of one's choice, and does nothing to save a caller that goes on after a
// failure: what is committed is on the disk.
//
//   FakeDisk().Put("book.xls", "Workbook", bytes);
//   FakeDisk().FailCall(3);                      the fourth call from here on fails
//   EXPECT_EQ(XLSaveFile("book.xls", ...), 103);
//   EXPECT_EQ(FakeDisk().Read("book.xls", "Workbook"), bytes);
//
// This program is linked with these instead of the platform's storage and paths; a path is the low bytes of
// its units.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/stream_builder.h"

namespace tolvenar::testing {

using Streams = std::map<std::string, Bytes>;  // by name in lower case

struct Disk {
  std::map<std::string, Streams> files;
  std::vector<std::string> calls;  // what was asked for, with its mode
  std::vector<uint16_t> last_path;
  uint64_t size_reported = 0;  // unless 0: what a stream's size is said to be
  int32_t success = 0;         // what opening (unless 0: without a stream) and creating a stream answer
  int open_storages = 0;
  int open_streams = 0;
  bool exists_lies = false;  // says that a path does not exist though it does
  bool fired = false;        // the fault has happened

  void Reset();
  void Put(const std::string& path, const std::string& name, const Bytes& bytes);
  std::optional<Bytes> Read(const std::string& path, const std::string& name) const;

  // Fails the call after `k` others, once.
  void FailCall(int k) { Arm(k, "", false); }
  // Fails the next call of that name.
  void FailNext(const std::string& call) { Arm(0, call, false); }
  // Has the next call of that name, after `k` others of it, move one byte less than was asked, without a failure.
  void ShortenNext(const std::string& call, int k = 0) { Arm(k, call, true); }

  // Used by the storage functions: notes a call, and tells whether it is to fail or to be short.
  enum class Fate { kServe, kFail, kShort };
  Fate Note(const std::string& call, const std::string& arguments);

 private:
  void Arm(int k, const std::string& call, bool shorten);

  int left_ = -1;
  std::string armed_;
  bool shorten_ = false;
};

Disk& FakeDisk();

}  // namespace tolvenar::testing
