// What an array is made of, and the two moves that all puts are made of: find the element, replace what it
// owns.
//
// The elements lie in one zeroed run of count * element_size bytes, dimension 1 varying fastest:
//
//   position of (i1, i2, ... in) = (i1 - l1) + c1 * ((i2 - l2) + c2 * (... (in - ln)))
//
// Invariants: (1) the upper bound of every dimension is a LONG, so that an index is inside exactly if its
// distance from the lower bound, taken as 32 unsigned bits, is below the number of elements. (2) The size in
// bytes fits a u32. (3) `data` is never null.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tolvenar/automation.h"

constexpr uint32_t kMaxDimensions = 64;

struct tagSAFEARRAY {
  VARTYPE type;
  uint32_t element_size;
  uint32_t dimensions;
  uint32_t locks;
  size_t count;
  uint8_t* data;
  SAFEARRAYBOUND bounds[kMaxDimensions];  // dimension 1 first
};

namespace tolvenar::platform {

// The element at `indices`, one for each dimension, or null when one of them is out of bounds.
inline uint8_t* ElementAt(const SAFEARRAY* array, const LONG* indices) {
  size_t position = 0;
  size_t stride = array->element_size;
  for (uint32_t d = 0; d < array->dimensions; ++d) {
    const SAFEARRAYBOUND& bound = array->bounds[d];
    const uint32_t distance = static_cast<uint32_t>(indices[d]) - static_cast<uint32_t>(bound.lLbound);
    if (distance >= bound.cElements) return nullptr;
    position += distance * stride;
    stride *= bound.cElements;
  }
  return array->data + position;
}

// Elements of a VT_BSTR and of a VT_VARIANT array. The data is aligned for both.
inline BSTR* AsBstr(uint8_t* element) {
  return static_cast<BSTR*>(static_cast<void*>(element));
}
inline VARIANT* AsVariant(uint8_t* element) {
  return static_cast<VARIANT*>(static_cast<void*>(element));
}

// Makes `text` the element, which owns it from here on, and releases the old one.
inline void ReplaceBstr(BSTR* element, BSTR text) {
  if (*element != nullptr) SysFreeString(*element);
  *element = text;
}

// Makes `value` the element, which owns it from here on, and releases the old one; an old one of no known
// type owns nothing. Result: S_OK; DISP_E_ARRAYISLOCKED: the old one stays, and `value` is still the
// caller's.
inline HRESULT ReplaceVariant(VARIANT* element, const VARIANT& value) {
  if (element->vt != VT_EMPTY && VariantClear(element) == DISP_E_ARRAYISLOCKED) return DISP_E_ARRAYISLOCKED;
  *element = value;
  return S_OK;
}

// Puts a copy of `value` into the element. Results as SafeArrayPutElement's.
HRESULT CopyIntoVariant(VARIANT* element, const VARIANT& value);

// Puts a copy of `text` into the element. Result: S_OK; E_OUTOFMEMORY: the old one stays.
HRESULT CopyIntoBstr(BSTR* element, BSTR text);

}  // namespace tolvenar::platform
