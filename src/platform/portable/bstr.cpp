// Text as Automation hosts know it. A BSTR points at the text inside an allocation of the C library:
//
//   OFFSET  SIZE  FIELD
//        0     4  n, byte length of the text (u32)
//        4     n  text: what the BSTR points at
//    4 + n  2, 3  zeros: a zero unit behind the text, and behind the half unit that ends a text of odd length
//
// A length above kMaxBytes is refused, so no sum here can wrap.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/portable/duplicate.h"
#include "tolvenar/automation.h"

namespace {

constexpr size_t kPrefix = 4;
constexpr size_t kUnit = sizeof(OLECHAR);
constexpr size_t kMaxBytes = 0x7FFFFFFE;

// Where the allocation of a text starts.
uint8_t* BlockOf(BSTR text) {
  return static_cast<uint8_t*>(static_cast<void*>(text)) - kPrefix;
}

// Text of `count` bytes without its contents, or null. The zeros behind it stand.
BSTR NewText(size_t count) {
  if (count > kMaxBytes) return nullptr;
  const size_t padded = count + count % kUnit;
  uint8_t* block = static_cast<uint8_t*>(std::malloc(kPrefix + padded + kUnit));
  if (block == nullptr) return nullptr;
  const uint32_t length = static_cast<uint32_t>(count);
  std::memcpy(block, &length, sizeof length);
  // Both, as they are one and the same behind a text of even length.
  constexpr OLECHAR kZero = 0;
  std::memcpy(block + kPrefix + count, &kZero, kUnit);
  std::memcpy(block + kPrefix + padded, &kZero, kUnit);
  return static_cast<BSTR>(static_cast<void*>(block + kPrefix));
}

BSTR CopyBytes(const void* bytes, size_t count) {
  BSTR text = NewText(count);
  if (text == nullptr || count == 0) return text;
  if (bytes != nullptr) {
    std::memcpy(text, bytes, count);
  } else {
    std::memset(text, 0, count);
  }
  return text;
}

}  // namespace

extern "C" {

BSTR SysAllocString(const OLECHAR* text) {
  if (text == nullptr) return nullptr;
  size_t units = 0;
  while (text[units] != 0) ++units;
  return CopyBytes(text, units * kUnit);
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT units) {
  if (units > kMaxBytes / kUnit) return nullptr;
  return CopyBytes(text, units * kUnit);
}

BSTR SysAllocStringByteLen(const char* bytes, UINT count) {
  return CopyBytes(bytes, count);
}

void SysFreeString(BSTR text) {
  if (text != nullptr) std::free(BlockOf(text));
}

UINT SysStringByteLen(BSTR text) {
  if (text == nullptr) return 0;
  uint32_t length;
  std::memcpy(&length, BlockOf(text), sizeof length);
  return length;
}

UINT SysStringLen(BSTR text) {
  return SysStringByteLen(text) / static_cast<UINT>(kUnit);
}

}  // extern "C"

namespace tolvenar::platform {

bool DuplicateBstr(BSTR text, BSTR* copy) {
  *copy = text == nullptr ? nullptr : CopyBytes(text, SysStringByteLen(text));
  return *copy != nullptr || text == nullptr;
}

}  // namespace tolvenar::platform
