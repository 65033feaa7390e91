// The XF indices of a new sheet's columns, as a caller hands them over: one u16 a column. Beyond their count,
// and where there are none, a column's XF is 0.
#pragma once

#include <cstdint>

namespace tolvenar {

struct ColumnXfs {
  const uint16_t* values;
  uint32_t count;
};

// Those of an address alone, whose count is trusted.
inline ColumnXfs TrustedXfs(const uint16_t* values) {
  return {values, values != nullptr ? UINT32_MAX : 0};
}

inline uint16_t XfOf(const ColumnXfs& xfs, uint32_t column) {
  return column < xfs.count ? xfs.values[column] : uint16_t{0};
}

}  // namespace tolvenar
