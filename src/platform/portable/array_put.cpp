// The array puts off Windows, straight onto the library's own arrays: a put of a text that the array takes
// over allocates nothing.
#include "platform/array_put.h"

#include <cstring>

#include "platform/portable/safe_array.h"

namespace tolvenar::platform {

namespace {

constexpr uint32_t kMaxPlainSize = 8;

// Hands `text` over to the element at `indices`. After a failure it is still the caller's.
HRESULT GiveText(SAFEARRAY* array, const LONG* indices, BSTR text) {
  if (array == nullptr || indices == nullptr) return E_INVALIDARG;
  if (array->type != VT_BSTR && array->type != VT_VARIANT) return DISP_E_TYPEMISMATCH;
  uint8_t* at = ElementAt(array, indices);
  if (at == nullptr) return DISP_E_BADINDEX;
  if (array->type == VT_BSTR) {
    ReplaceBstr(AsBstr(at), text);
    return S_OK;
  }
  VARIANT value = {};
  value.vt = VT_BSTR;
  value.bstrVal = text;
  return ReplaceVariant(AsVariant(at), value);
}

}  // namespace

HRESULT PutOwnedBstr(SAFEARRAY* array, LONG* indices, BSTR text) {
  const HRESULT result = GiveText(array, indices, text);
  if (FAILED(result)) SysFreeString(text);
  return result;
}

HRESULT PutOwnedBstrVariant(SAFEARRAY* array, LONG* indices, BSTR text) {
  return PutOwnedBstr(array, indices, text);
}

HRESULT PutVariant(SAFEARRAY* array, LONG* indices, const VARIANT* value) {
  if (array == nullptr || indices == nullptr || value == nullptr) return E_INVALIDARG;
  const bool as_text = array->type == VT_BSTR && value->vt == VT_BSTR;
  if (array->type != VT_VARIANT && !as_text) return DISP_E_TYPEMISMATCH;
  uint8_t* at = ElementAt(array, indices);
  if (at == nullptr) return DISP_E_BADINDEX;
  return as_text ? CopyIntoBstr(AsBstr(at), value->bstrVal) : CopyIntoVariant(AsVariant(at), *value);
}

HRESULT PutBytes(SAFEARRAY* array, LONG* indices, const void* bytes, uint32_t count) {
  if (array == nullptr || indices == nullptr || bytes == nullptr) return E_INVALIDARG;
  if (array->type == VT_BSTR || array->type == VT_VARIANT) return DISP_E_TYPEMISMATCH;
  uint8_t* at = ElementAt(array, indices);
  if (at == nullptr) return DISP_E_BADINDEX;
  uint8_t wide[kMaxPlainSize] = {};
  std::memcpy(wide, bytes, count < kMaxPlainSize ? count : kMaxPlainSize);
  std::memcpy(at, wide, array->element_size);
  return S_OK;
}

}  // namespace tolvenar::platform
