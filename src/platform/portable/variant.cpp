// Values as Automation hosts know them: which types there are, what each owns, and how it is released and
// copied.
//
//   TYPE                      OWNS
//   any | VT_BYREF            nothing
//   any | VT_ARRAY            the array
//   VT_BSTR                   the text
//   all others                nothing; the 16 bytes are the value
#include <cstddef>
#include <cstring>

#include "platform/portable/duplicate.h"
#include "tolvenar/automation.h"

static_assert(sizeof(VARIANT) == 16 && offsetof(VARIANT, llVal) == 8);

namespace {

constexpr VARTYPE kBaseType = 0x0FFF;
constexpr VARTYPE kModifiers = VT_ARRAY | VT_BYREF;
constexpr VARTYPE kUnusedType = 15;

bool IsVariantType(VARTYPE type) {
  const VARTYPE base = type & kBaseType;
  const VARTYPE modifiers = type & static_cast<VARTYPE>(~kBaseType);
  if (base > VT_UINT || base == kUnusedType || (modifiers & ~kModifiers) != 0) return false;
  // Nothing has no address and fills no array, and a value holds another one only by address or in an array.
  if (base == VT_EMPTY || base == VT_NULL) return modifiers == 0;
  return base != VT_VARIANT || modifiers != 0;
}

bool OwnsArray(VARTYPE type) {
  return (type & VT_ARRAY) != 0 && (type & VT_BYREF) == 0;
}

}  // namespace

namespace tolvenar::platform {

HRESULT DuplicateVariant(const VARIANT& from, VARIANT* copy) {
  VariantInit(copy);
  if (!IsVariantType(from.vt)) return DISP_E_BADVARTYPE;
  VARIANT made = from;
  if (from.vt == VT_BSTR) {
    if (!DuplicateBstr(from.bstrVal, &made.bstrVal)) return E_OUTOFMEMORY;
  } else if (OwnsArray(from.vt)) {
    const HRESULT result = DuplicateArray(from.parray, &made.parray);
    if (FAILED(result)) return result;
  }
  *copy = made;
  return S_OK;
}

}  // namespace tolvenar::platform

extern "C" {

// All 16 bytes: an empty initialiser would leave most of the union as it was.
void VariantInit(VARIANT* value) {
  if (value != nullptr) std::memset(value, 0, sizeof *value);
}

HRESULT VariantClear(VARIANT* value) {
  if (value == nullptr) return E_INVALIDARG;
  if (!IsVariantType(value->vt)) return DISP_E_BADVARTYPE;
  if (value->vt == VT_BSTR) {
    SysFreeString(value->bstrVal);
  } else if (OwnsArray(value->vt)) {
    const HRESULT result = SafeArrayDestroy(value->parray);
    if (FAILED(result)) return result;
  }
  value->vt = VT_EMPTY;
  return S_OK;
}

// The copy is made before *to is cleared, so that a value may be copied out of the array that *to owns.
HRESULT VariantCopy(VARIANT* to, const VARIANT* from) {
  if (to == nullptr || from == nullptr) return E_INVALIDARG;
  if (to == from) return S_OK;
  VARIANT copy;
  const HRESULT copied = tolvenar::platform::DuplicateVariant(*from, &copy);
  if (copied == DISP_E_BADVARTYPE) return copied;
  const HRESULT cleared = VariantClear(to);
  if (FAILED(cleared)) {
    VariantClear(&copy);
    return cleared;
  }
  if (FAILED(copied)) return copied;
  *to = copy;
  return S_OK;
}

}  // extern "C"
