// Byte text: the two forms of BSTR, numbers as text, and variants from raw bytes.
#include "query/byte_text.h"

#include <cstring>

#include "foundation/memory_pool.h"
#include "query/number_text.h"

namespace tolvenar {

namespace {

// Bytes that FillVariant copies for a type.
size_t WidthOf(VARTYPE type) {
  switch (type) {
    case VT_UI1:
      return sizeof(uint8_t);
    case VT_I2:
    case VT_BOOL:
      return sizeof(uint16_t);
    case VT_I4:
    case VT_R4:
    case VT_ERROR:
      return sizeof(uint32_t);
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      return sizeof(uint64_t);
    case VT_BSTR:
    case VT_BYREF | VT_BSTR:
      return sizeof(BSTR);
    default:
      return 0;
  }
}

}  // namespace

BSTR ByteBstr(const void* bytes, int32_t n) {
  if (n < 0) return nullptr;
  return SysAllocStringByteLen(static_cast<const char*>(bytes), static_cast<UINT>(n));
}

BSTR ByteBstr(const Block& block, uint32_t at, int32_t n) {
  if (n < 0) return nullptr;
  const uint32_t count = static_cast<uint32_t>(n);
  if (const uint8_t* bytes = At(block, at, count)) return ByteBstr(bytes, n);
  const BSTR text = SysAllocStringByteLen(nullptr, count);
  if (text != nullptr) CopyOut(block, at, reinterpret_cast<uint8_t*>(text), count);
  return text;
}

BSTR PackedBstr(const Block& block, uint32_t at, uint32_t n) {
  const BSTR text = SysAllocStringLen(nullptr, n);
  if (text == nullptr) return nullptr;
  uint8_t* bytes = reinterpret_cast<uint8_t*>(text);
  CopyOut(block, at, bytes, n);
  std::memset(bytes + n, 0, n);
  return text;
}

BSTR NumberBstr(double value) {
  char text[kNumberTextRoom];
  return ByteBstr(text, static_cast<int32_t>(WriteNumber(text, value) - text));
}

void FillVariant(VARIANT* variant, VARTYPE type, const void* value) {
  VariantInit(variant);
  variant->vt = type;
  variant->llVal = 0;
  std::memcpy(&variant->llVal, value, WidthOf(type));
}

bool PoolHasRoom(int32_t size) {
  return PoolCanGive(size);
}

}  // namespace tolvenar
