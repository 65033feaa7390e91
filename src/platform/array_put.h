// The three ways in which the library hands an element to a SAFEARRAY. Each put knows the shape it was given,
// so that an array of an element type that can't take that shape refuses it, as a failed put, instead of
// reading something else into it.
//
//   SHAPE                  SERVED BY ARRAYS OF            and also by arrays of
//   the BSTR itself        VT_BSTR                        VT_VARIANT, as a VT_BSTR value (1)
//   address of a VARIANT   VT_VARIANT                     VT_BSTR, a VT_BSTR value as its text (1); plain
//                                                         elements, as its first bytes (2)
//   address of bytes       plain elements, which are all
//                          but VT_BSTR and VT_VARIANT
//
//   (1) off Windows, so that there one array can take a whole mixed sheet
//   (2) on Windows, where the system takes them so
//
// Every put takes a null array, which refuses everything. `indices` holds one entry per dimension, dimension
// 1 first. Results are HRESULTs: S_OK, DISP_E_BADINDEX, DISP_E_TYPEMISMATCH, E_INVALIDARG for null pointers,
// E_OUTOFMEMORY; into VT_VARIANT also DISP_E_BADVARTYPE, and DISP_E_ARRAYISLOCKED where the old element holds
// a locked array. The old element stays after a failure.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar::platform {

// Puts `text`, which is no longer the caller's, whatever the result. Off Windows the array takes the BSTR
// over instead of copying it.
HRESULT PutOwnedBstr(SAFEARRAY* array, LONG* indices, BSTR text);

// Puts a copy of *value, which stays the caller's.
HRESULT PutVariant(SAFEARRAY* array, LONG* indices, const VARIANT* value);

// Puts a VT_BSTR value of `text`, which is no longer the caller's, whatever the result.
HRESULT PutOwnedBstrVariant(SAFEARRAY* array, LONG* indices, BSTR text);

// Puts an element from the `count` plain bytes at `bytes` (count up to 8). An element wider than that is
// filled up with zero bytes.
HRESULT PutBytes(SAFEARRAY* array, LONG* indices, const void* bytes, uint32_t count);

}  // namespace tolvenar::platform
