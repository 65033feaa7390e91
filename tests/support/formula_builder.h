// Formulas for tests: tokens by name, and one adjustment with guard bytes around the formula.
#pragma once

#include <gtest/gtest.h>

#include <ostream>

#include "edit/formula_adjustment.h"
#include "foundation/memory_pool.h"
#include "support/stream_builder.h"

namespace tolvenar::testing::formula {

constexpr AdjustMode kRowIn = AdjustMode::kRowInserted;
constexpr AdjustMode kRowDel = AdjustMode::kRowDeleted;
constexpr AdjustMode kColIn = AdjustMode::kColumnInserted;
constexpr AdjustMode kColDel = AdjustMode::kColumnDeleted;

// Tokens. Rows may carry flags in bits 15 and 14.
inline Bytes Ref(uint16_t row, uint8_t column, uint8_t id = 0x24) {
  return Bytes{id} + U16(row) + Bytes{column};
}
inline Bytes Area(uint16_t first_row, uint16_t last_row, uint8_t first_column, uint8_t last_column,
                  uint8_t id = 0x25) {
  return Bytes{id} + U16(first_row) + U16(last_row) + Bytes{first_column, last_column};
}
// The 14 bytes of a sheet reference; the flag byte that a ptgRef3d lends from it is the second.
inline Bytes SheetReference(uint8_t second = 0x00) {
  return Bytes{0x01, second, 0, 0, 0, 0, 0, 0, 0, 0, 0x02, 0, 0x02, 0};
}
inline Bytes Ref3d(uint16_t row, uint8_t column, uint8_t id = 0x3A, uint8_t second = 0x00) {
  return Bytes{id} + SheetReference(second) + U16(row) + Bytes{column};
}
inline Bytes Area3d(uint16_t first_row, uint16_t last_row, uint8_t first_column, uint8_t last_column,
                    uint8_t id = 0x3B) {
  return Bytes{id} + SheetReference() + U16(first_row) + U16(last_row) + Bytes{first_column, last_column};
}
inline Bytes Exp(uint16_t row, uint16_t column, uint8_t id = 0x01) {
  return Bytes{id} + U16(row) + U16(column);
}
inline Bytes Rect(uint16_t first_row, uint16_t last_row, uint8_t first_column, uint8_t last_column) {
  return U16(first_row) + U16(last_row) + Bytes{first_column, last_column};
}
// A ptgMemArea that declares `extra` bytes of the formula as its list.
inline Bytes MemArea(uint16_t extra) {
  return Bytes{0x26, 0, 0, 0, 0} + U16(extra);
}

constexpr uint32_t kPlace = 40;  // where the formula stands in its block
constexpr uint8_t kGuard = 0xEE;

struct Outcome {
  int16_t result;
  Bytes tokens;
  bool operator==(const Outcome&) const = default;
};

inline void PrintTo(const Outcome& outcome, std::ostream* os) {
  *os << outcome.result << ": " << Hex(outcome.tokens);
}

// Runs one adjustment with guard bytes all around the formula, which must stay.
inline Outcome Adjusted(const Bytes& tokens, int16_t length, int16_t position, AdjustMode mode) {
  uint32_t handle = MEMORYALLOC(1000000);
  const Block block = OpenBlock(handle);
  const uint32_t size = static_cast<uint32_t>(tokens.size());
  const uint32_t guarded = kPlace + size + kPlace;
  MEMORYSET1(&handle, static_cast<int32_t>(guarded), kGuard);
  CopyIn(block, kPlace, tokens.data(), size);
  Outcome outcome = {AdjustFormulaReferences(block, kPlace, length, position, mode), {}};
  const Bytes all = BlockContents(handle, guarded);
  outcome.tokens.assign(all.begin() + kPlace, all.begin() + kPlace + static_cast<int64_t>(size));
  for (uint32_t i = 0; i < kPlace; ++i) {
    EXPECT_EQ(all[i], kGuard) << "in front, " << i;
    EXPECT_EQ(all[kPlace + size + i], kGuard) << "behind, " << i;
  }
  MEMORYFREE(&handle);
  return outcome;
}

inline Outcome Adjusted(const Bytes& tokens, int16_t position, AdjustMode mode) {
  return Adjusted(tokens, static_cast<int16_t>(tokens.size()), position, mode);
}

}  // namespace tolvenar::testing::formula
