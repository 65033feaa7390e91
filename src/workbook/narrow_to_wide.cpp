// NarrowToWide: the rule stands in narrow_to_wide.h.
#include "workbook/narrow_to_wide.h"

#include <cstdint>
#include <cstring>
#include <new>

namespace tolvenar {

WideName NarrowToWide(const char* name) {
  if (name == nullptr) return nullptr;
  const uint16_t length = static_cast<uint16_t>(std::strlen(name));  // 16 bits, on purpose
  WideName wide(new (std::nothrow) OLECHAR[size_t{length} + 1]);
  if (wide == nullptr) return nullptr;
  for (size_t i = 0; i < length; ++i) {
    wide[i] = static_cast<OLECHAR>(static_cast<uint16_t>(static_cast<int8_t>(name[i])));  // extends the sign
  }
  wide[length] = 0;
  return wide;
}

}  // namespace tolvenar
