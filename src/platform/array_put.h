// The three ways in which the library hands an element to a SAFEARRAY. Each put knows the shape it was given,
// so that an array of an element type that can't take that shape refuses it, as a failed put, instead of
// reading something else into it.
//
//   SHAPE                   SERVED BY ARRAYS OF                     off Windows also
//   the BSTR itself         VT_BSTR                                 VT_VARIANT: arrives as a VT_BSTR variant
//   address of a VARIANT    VT_VARIANT                              VT_BSTR: a VT_BSTR variant arrives as its
//   text address of bytes        all but VT_BSTR and VT_VARIANT
//
// So off Windows one array can take a whole mixed sheet. Every put takes a null array, which refuses
// everything. `indices` holds one entry per dimension, dimension 1 first. Results are HRESULTs: S_OK,
// DISP_E_BADINDEX, DISP_E_TYPEMISMATCH, E_INVALIDARG, E_OUTOFMEMORY.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar::platform {

// Puts `text` and releases it, whatever the result: an array of text takes the BSTR over instead of copying
// it.
HRESULT PutOwnedBstr(SAFEARRAY* array, LONG* indices, BSTR text);

// Puts a copy of *value, which stays the caller's.
HRESULT PutVariant(SAFEARRAY* array, LONG* indices, const VARIANT* value);

// Puts a VT_BSTR variant of `text` and releases `text`, whatever the result.
HRESULT PutOwnedBstrVariant(SAFEARRAY* array, LONG* indices, BSTR text);

// Puts an element from the `count` plain bytes at `bytes` (count up to 8). An element wider than that is
// filled up with zero bytes.
HRESULT PutBytes(SAFEARRAY* array, LONG* indices, const void* bytes, uint32_t count);

}  // namespace tolvenar::platform
