// Copies of what a VARIANT or an array can own. A null text and a null array have a copy: null.
#pragma once

#include "tolvenar/automation.h"

namespace tolvenar::platform {

// Stores a copy of `text`, byte for byte, in *copy. False when it can't be had: *copy is then null.
bool DuplicateBstr(BSTR text, BSTR* copy);

// Stores a copy of `array` and all it owns in *copy, without its locks. Result: S_OK; E_OUTOFMEMORY or
// DISP_E_BADVARTYPE: *copy is null.
HRESULT DuplicateArray(SAFEARRAY* array, SAFEARRAY** copy);

// Stores a copy of `from` and all it owns in *copy; what *copy held is not released. Result: S_OK;
// E_OUTOFMEMORY or DISP_E_BADVARTYPE: *copy is VT_EMPTY.
HRESULT DuplicateVariant(const VARIANT& from, VARIANT* copy);

}  // namespace tolvenar::platform
