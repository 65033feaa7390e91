// The array of a caller: the one that a variable names, its bounds, and an element of it as plain bytes, whatever the elements are.
#pragma once

#include <cstdint>
#include <cstring>

#include "tolvenar/automation.h"

namespace tolvenar::platform {

// The array that a caller's variable names; null, which refuses every element, when there is no variable.
inline SAFEARRAY* ArrayAt(SAFEARRAY** array) {
  return array != nullptr ? *array : nullptr;
}

// The same for elements of `dimensions` indices. An array of more dimensions would read indices that are not
// there: it counts as none.
inline SAFEARRAY* ArrayAt(SAFEARRAY** array, UINT dimensions) {
  SAFEARRAY* named = ArrayAt(array);
  return SafeArrayGetDim(named) <= dimensions ? named : nullptr;
}

// Whether a dimension of the array, counted from 1, runs from exactly `first` to exactly `last`.
inline bool HasBounds(SAFEARRAY* array, UINT dimension, LONG first, LONG last) {
  LONG lower = 0;
  LONG upper = 0;
  const bool told = SUCCEEDED(SafeArrayGetLBound(array, dimension, &lower)) &&
                    SUCCEEDED(SafeArrayGetUBound(array, dimension, &upper));
  return told && lower == first && upper == last;
}

// True for elements that are nothing but bytes, at most as many as a VARIANT has. Texts, values, interfaces and records would be handed out
// as copies that somebody has to release.
inline bool HasPlainElements(SAFEARRAY* array) {
  constexpr VARTYPE kOwning[] = {VT_BSTR, VT_VARIANT, VT_DISPATCH, VT_UNKNOWN, 36 /* VT_RECORD */};
  VARTYPE type = VT_EMPTY;
  SafeArrayGetVartype(array, &type);
  for (const VARTYPE owning : kOwning) {
    if (type == owning) return false;
  }
  return SafeArrayGetElemsize(array) <= sizeof(VARIANT);
}

// Stores the first `count` (up to 8) bytes of an element at `bytes`: zero bytes behind an element that is narrower, and zero bytes only for
// a null array, elements that are not plain, and an index outside the array. `indices` holds one entry per dimension, dimension 1 first.
inline void GetBytes(SAFEARRAY* array, LONG* indices, void* bytes, uint32_t count) {
  uint8_t element[sizeof(VARIANT)] = {};
  if (array != nullptr && HasPlainElements(array)) SafeArrayGetElement(array, indices, element);
  std::memcpy(bytes, element, count);
}

}  // namespace tolvenar::platform
