// The table of docs/live-blocks.md: which blocks of the pool stay live behind a call though nobody holds them.
//
//   | `XLReadReference` | 102 | 1 | the name of the stream |
//   | `XLSheetsNameNum` | 0 | 1 for each sheet | the names |
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tolvenar::testing {

struct LiveBlockRow {
  std::string name;
  int32_t result;
  int blocks;
  bool for_each;  // that many for each thing that the call goes through
};

// The rows of the document, top down. A row that can't be read fails the test.
std::vector<LiveBlockRow> LiveBlockTable();

// The exports of the shared library, from its list.
std::vector<std::string> ExportNames();

// Whether a row says that `lost` blocks stay behind the result. None is always right.
bool MayStay(const std::string& name, int32_t result, int lost);

}  // namespace tolvenar::testing
