// Arrays as Automation hosts know them, on the layout of safe_array.h.
#include "platform/portable/safe_array.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/portable/duplicate.h"
#include "platform/portable/large_pages.h"

using tolvenar::platform::AsBstr;
using tolvenar::platform::AsVariant;
using tolvenar::platform::ElementAt;

namespace {

constexpr uint32_t kMaxLocks = 0xFFFF;
constexpr uint64_t kMaxBytes = UINT32_MAX;

// Bytes of an element, or 0 for a type that arrays don't have.
uint32_t ElementSize(VARTYPE type) {
  switch (type) {
    case VT_UI1:
      return 1;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      return 2;
    case VT_I4:
    case VT_UI4:
    case VT_R4:
    case VT_ERROR:
      return 4;
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      return 8;
    case VT_BSTR:
      return sizeof(BSTR);
    case VT_VARIANT:
      return sizeof(VARIANT);
    default:
      return 0;
  }
}

bool UpperIsLong(const SAFEARRAYBOUND& bound) {
  return int64_t{bound.lLbound} + bound.cElements - 1 <= INT32_MAX;
}

// Sets the count of elements from the bounds. False when a bound or the size in bytes is too large.
bool CountElements(SAFEARRAY* array) {
  uint64_t count = 1;
  for (uint32_t d = 0; d < array->dimensions; ++d) {
    if (!UpperIsLong(array->bounds[d])) return false;
    count *= array->bounds[d].cElements;
    if (count > kMaxBytes / array->element_size) return false;
  }
  array->count = static_cast<size_t>(count);
  return true;
}

constexpr size_t kPagesOfItsOwn = 4u << 20;

size_t DataSize(const SAFEARRAY& array) {
  return (array.count == 0 ? 1 : array.count) * array.element_size;
}

// Zeroed by the system itself, so that the pages of a huge array cost nothing before they are used. A large one has pages of its own: the C
// library then has no reason to return, with them, those of the texts, which the next array will want again.
bool TakeData(SAFEARRAY* array) {
  const size_t size = DataSize(*array);
  if (size < kPagesOfItsOwn) {
    array->data = static_cast<uint8_t*>(std::calloc(1, size));
  } else {
    array->data = tolvenar::platform::TakePages(size);
  }
  return array->data != nullptr;
}

void GiveData(SAFEARRAY* array) {
  const size_t size = DataSize(*array);
  if (size < kPagesOfItsOwn) {
    std::free(array->data);
  } else {
    tolvenar::platform::GivePages(array->data, size);
  }
}

// Calls release(i) for each element. Dimension 1 varies fastest in memory; here it varies slowest: a table is filled row by row, and the
// C library takes texts back fastest in the order in which it gave them.
template <typename ReleaseOne>
void ForEachByRow(const SAFEARRAY& array, ReleaseOne release) {
  const size_t rows = array.count == 0 ? 0 : array.bounds[0].cElements;
  for (size_t row = 0; row < rows; ++row) {
    for (size_t i = row; i < array.count; i += rows) release(i);
  }
}

void ReleaseElements(SAFEARRAY* array) {
  if (array->type == VT_BSTR) {
    const BSTR* elements = AsBstr(array->data);
    ForEachByRow(*array, [elements](size_t i) { SysFreeString(elements[i]); });
  } else if (array->type == VT_VARIANT) {
    VARIANT* elements = AsVariant(array->data);
    ForEachByRow(*array, [elements](size_t i) {
      if (elements[i].vt != VT_EMPTY) VariantClear(&elements[i]);
    });
  }
}

void Release(SAFEARRAY* array) {
  ReleaseElements(array);
  GiveData(array);
  delete array;
}

// Copies all elements between arrays of the same type and bounds; those of `to` are zeroed before.
HRESULT CopyElements(SAFEARRAY* from, SAFEARRAY* to) {
  using namespace tolvenar::platform;
  for (size_t i = 0; i < from->count; ++i) {
    if (from->type == VT_BSTR) {
      if (!DuplicateBstr(AsBstr(from->data)[i], &AsBstr(to->data)[i])) return E_OUTOFMEMORY;
    } else if (from->type == VT_VARIANT) {
      const HRESULT result = DuplicateVariant(AsVariant(from->data)[i], &AsVariant(to->data)[i]);
      if (FAILED(result)) return result;
    }
  }
  if (from->type != VT_BSTR && from->type != VT_VARIANT) {
    std::memcpy(to->data, from->data, from->count * from->element_size);
  }
  return S_OK;
}

}  // namespace

namespace tolvenar::platform {

HRESULT CopyIntoBstr(BSTR* element, BSTR text) {
  BSTR copy;
  if (!DuplicateBstr(text, &copy)) return E_OUTOFMEMORY;
  ReplaceBstr(element, copy);
  return S_OK;
}

HRESULT CopyIntoVariant(VARIANT* element, const VARIANT& value) {
  if (element == &value) return S_OK;
  VARIANT copy;
  HRESULT result = DuplicateVariant(value, &copy);
  if (FAILED(result)) return result;
  result = ReplaceVariant(element, copy);
  if (FAILED(result)) VariantClear(&copy);
  return result;
}

HRESULT DuplicateArray(SAFEARRAY* array, SAFEARRAY** copy) {
  *copy = nullptr;
  if (array == nullptr) return S_OK;
  SAFEARRAY* made = SafeArrayCreate(array->type, array->dimensions, array->bounds);
  if (made == nullptr) return E_OUTOFMEMORY;
  const HRESULT result = CopyElements(array, made);
  if (FAILED(result)) {
    Release(made);
    return result;
  }
  *copy = made;
  return S_OK;
}

}  // namespace tolvenar::platform

extern "C" {

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
  const uint32_t size = ElementSize(type);
  if (size == 0 || dimensions == 0 || dimensions > kMaxDimensions || bounds == nullptr) return nullptr;
  SAFEARRAY* array = new (std::nothrow) SAFEARRAY{};
  if (array == nullptr) return nullptr;
  array->type = type;
  array->element_size = size;
  array->dimensions = dimensions;
  std::memcpy(array->bounds, bounds, dimensions * sizeof *bounds);
  if (CountElements(array) && TakeData(array)) return array;
  delete array;
  return nullptr;
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lower, ULONG count) {
  SAFEARRAYBOUND bound = {count, lower};
  return SafeArrayCreate(type, 1, &bound);
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
  if (array == nullptr) return S_OK;
  if (array->locks != 0) return DISP_E_ARRAYISLOCKED;
  Release(array);
  return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* array) {
  return array == nullptr ? 0 : array->dimensions;
}

UINT SafeArrayGetElemsize(SAFEARRAY* array) {
  return array == nullptr ? 0 : array->element_size;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* lower) {
  if (array == nullptr || lower == nullptr) return E_INVALIDARG;
  if (dimension == 0 || dimension > array->dimensions) return DISP_E_BADINDEX;
  *lower = array->bounds[dimension - 1].lLbound;
  return S_OK;
}

// The upper bound of a dimension without elements is one less than the lower one.
HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* upper) {
  if (array == nullptr || upper == nullptr) return E_INVALIDARG;
  if (dimension == 0 || dimension > array->dimensions) return DISP_E_BADINDEX;
  const SAFEARRAYBOUND& bound = array->bounds[dimension - 1];
  *upper = static_cast<LONG>(static_cast<ULONG>(bound.lLbound) + bound.cElements - 1);
  return S_OK;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
  if (array == nullptr || type == nullptr) return E_INVALIDARG;
  *type = array->type;
  return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* element) {
  if (array == nullptr || indices == nullptr || element == nullptr) return E_INVALIDARG;
  uint8_t* at = ElementAt(array, indices);
  if (at == nullptr) return DISP_E_BADINDEX;
  if (array->type == VT_BSTR) {
    return tolvenar::platform::DuplicateBstr(*AsBstr(at), static_cast<BSTR*>(element)) ? S_OK : E_OUTOFMEMORY;
  }
  if (array->type == VT_VARIANT) {
    return tolvenar::platform::DuplicateVariant(*AsVariant(at), static_cast<VARIANT*>(element));
  }
  std::memcpy(element, at, array->element_size);
  return S_OK;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* element) {
  if (array == nullptr || indices == nullptr) return E_INVALIDARG;
  if (element == nullptr && array->type != VT_BSTR) return E_INVALIDARG;
  uint8_t* at = ElementAt(array, indices);
  if (at == nullptr) return DISP_E_BADINDEX;
  if (array->type == VT_BSTR) return tolvenar::platform::CopyIntoBstr(AsBstr(at), static_cast<BSTR>(element));
  if (array->type == VT_VARIANT) {
    return tolvenar::platform::CopyIntoVariant(AsVariant(at), *static_cast<const VARIANT*>(element));
  }
  std::memmove(at, element, array->element_size);
  return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY* array) {
  if (array == nullptr) return E_INVALIDARG;
  if (array->locks == kMaxLocks) return E_UNEXPECTED;
  ++array->locks;
  return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* array) {
  if (array == nullptr) return E_INVALIDARG;
  if (array->locks == 0) return E_UNEXPECTED;
  --array->locks;
  return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
  if (array == nullptr || data == nullptr) return E_INVALIDARG;
  const HRESULT result = SafeArrayLock(array);
  if (SUCCEEDED(result)) *data = array->data;
  return result;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
  return SafeArrayUnlock(array);
}

}  // extern "C"
