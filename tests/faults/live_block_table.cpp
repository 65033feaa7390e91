// Reading the document and the list of exports.
#include "faults/live_block_table.h"

#include <gtest/gtest.h>

#include <fstream>
#include <regex>

namespace tolvenar::testing {

std::vector<LiveBlockRow> LiveBlockTable() {
  static const std::regex row("\\| `(\\w+)` \\| (-?\\d+) \\| (\\d+)( for each \\w+)? \\| .+ \\|");
  std::vector<LiveBlockRow> rows;
  std::ifstream document(TOLVENAR_LIVE_BLOCKS);
  EXPECT_TRUE(document) << TOLVENAR_LIVE_BLOCKS;
  for (std::string line; std::getline(document, line);) {
    if (line.rfind("| `", 0) != 0) continue;
    std::smatch found;
    const bool read = std::regex_match(line, found, row);
    EXPECT_TRUE(read) << line;
    if (read) rows.push_back({found[1], std::stoi(found[2]), std::stoi(found[3]), found[4].matched});
  }
  return rows;
}

std::vector<std::string> ExportNames() {
  std::vector<std::string> names;
  std::ifstream list(TOLVENAR_EXPORT_LIST);
  EXPECT_TRUE(list) << TOLVENAR_EXPORT_LIST;
  for (std::string line; std::getline(list, line);) {
    if (line.rfind("  ", 0) == 0) names.push_back(line.substr(2, line.find_first_of(" \r", 2) - 2));
  }
  return names;
}

bool MayStay(const std::string& name, int32_t result, int lost) {
  if (lost == 0) return true;
  static const std::vector<LiveBlockRow> rows = LiveBlockTable();
  for (const LiveBlockRow& row : rows) {
    if (row.name != name || row.result != result) continue;
    if (row.for_each ? lost % row.blocks == 0 : lost == row.blocks) return true;
  }
  return false;
}

}  // namespace tolvenar::testing
