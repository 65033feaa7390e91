// Built-in formats: the number formats that no FORMAT record states, in the order in which a list of formats
// ends with them.
//
//   GENERATION  FORMATS  INDICES
//   BIFF5            17  0 to 16
//   BIFF8            36  0 to 22, 37 to 49
#pragma once

#include <cstdint>
#include <span>

namespace tolvenar {

struct BuiltinFormat {
  uint16_t index;  // as an XF names it
  const char* text;
};

// Those of the generation that BiffVersion names; none while it is neither.
std::span<const BuiltinFormat> BuiltinFormats();

}  // namespace tolvenar
