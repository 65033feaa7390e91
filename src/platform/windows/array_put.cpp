// The array puts on Windows: all end in the system's SafeArrayPutElement, unless the array's elements could
// not take the shape safely.
//
// The system reads what it is handed by the type of the elements alone. A BSTR handed to anything but text
// would be read as a value of that type, a value or bytes handed to text as a BSTR, and anything at all
// handed to interfaces or records as one of those.
#include "platform/array_put.h"

#include <cstring>

namespace tolvenar::platform {

namespace {

constexpr USHORT kOwningElements = FADF_BSTR | FADF_VARIANT | FADF_UNKNOWN | FADF_DISPATCH | FADF_RECORD;
constexpr uint32_t kMaxPlainSize = 8;

bool IsText(const SAFEARRAY* array) {
  return (array->fFeatures & kOwningElements) == FADF_BSTR;
}

bool IsVariants(const SAFEARRAY* array) {
  return (array->fFeatures & kOwningElements) == FADF_VARIANT;
}

// Elements that are nothing but bytes, at most as many as a VARIANT has.
bool IsPlain(const SAFEARRAY* array) {
  return (array->fFeatures & kOwningElements) == 0 && array->cbElements <= sizeof(VARIANT);
}

}  // namespace

HRESULT PutOwnedBstr(SAFEARRAY* array, LONG* indices, BSTR text) {
  HRESULT result = E_INVALIDARG;
  if (array != nullptr && indices != nullptr) {
    result = IsText(array) ? SafeArrayPutElement(array, indices, text) : DISP_E_TYPEMISMATCH;
  }
  SysFreeString(text);
  return result;
}

// Plain elements take the first bytes of the VARIANT, on purpose: so does the system.
HRESULT PutVariant(SAFEARRAY* array, LONG* indices, const VARIANT* value) {
  if (array == nullptr || indices == nullptr || value == nullptr) return E_INVALIDARG;
  if (!IsVariants(array) && !IsPlain(array)) return DISP_E_TYPEMISMATCH;
  return SafeArrayPutElement(array, indices, const_cast<VARIANT*>(value));
}

HRESULT PutOwnedBstrVariant(SAFEARRAY* array, LONG* indices, BSTR text) {
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_BSTR;
  value.bstrVal = text;
  const HRESULT result = PutVariant(array, indices, &value);
  SysFreeString(text);
  return result;
}

HRESULT PutBytes(SAFEARRAY* array, LONG* indices, const void* bytes, uint32_t count) {
  if (array == nullptr || indices == nullptr || bytes == nullptr) return E_INVALIDARG;
  if (!IsPlain(array)) return DISP_E_TYPEMISMATCH;
  uint8_t wide[sizeof(VARIANT)] = {};
  std::memcpy(wide, bytes, count < kMaxPlainSize ? count : kMaxPlainSize);
  return SafeArrayPutElement(array, indices, wide);
}

}  // namespace tolvenar::platform
