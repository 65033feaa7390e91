// The calls that are measured on costly workbooks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tolvenar::testing {

struct HostileBook {
  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
  std::string path;  // of a file that may be made
};

struct HostileCall {
  const char* name;
  void (*run)(HostileBook*);
};

// Every kind of call on a workbook, on its first sheet.
std::vector<HostileCall> HostileCalls();

}  // namespace tolvenar::testing
