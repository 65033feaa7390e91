/* The public headers stand alone in C11: each is included first here or beside this, and twice. */
#include "tolvenar/tolvenar.h"

/* Again, in the other order. */
#include "tolvenar/automation.h"
#include "tolvenar/tolvenar.h"

#include <stddef.h>

_Static_assert(sizeof(VARIANT) == 16, "a VARIANT is 16 bytes");
_Static_assert(sizeof(OLECHAR) == 2, "text has units of 16 bits");
_Static_assert(sizeof(VARIANT_BOOL) == 2 && sizeof(HRESULT) == 4, "the types have their widths");

/* The numbers that hosts know. */
_Static_assert(VT_EMPTY == 0 && VT_NULL == 1 && VT_I2 == 2 && VT_I4 == 3 && VT_R4 == 4 && VT_R8 == 5,
               "types 0 to 5");
_Static_assert(VT_CY == 6 && VT_DATE == 7 && VT_BSTR == 8 && VT_DISPATCH == 9 && VT_ERROR == 10,
               "types 6 to 10");
_Static_assert(VT_BOOL == 11 && VT_VARIANT == 12 && VT_UNKNOWN == 13 && VT_DECIMAL == 14, "types 11 to 14");
_Static_assert(VT_I1 == 16 && VT_UI1 == 17 && VT_UI2 == 18 && VT_UI4 == 19 && VT_I8 == 20, "types 16 to 20");
_Static_assert(VT_UI8 == 21 && VT_INT == 22 && VT_UINT == 23, "types 21 to 23");
_Static_assert(VT_ARRAY == 0x2000 && VT_BYREF == 0x4000, "the flags of a type");
_Static_assert(VARIANT_TRUE == -1 && VARIANT_FALSE == 0, "true and false");
_Static_assert(S_OK == 0 && S_FALSE == 1 && SUCCEEDED(S_FALSE) && FAILED(E_FAIL), "successes and failures");
_Static_assert((uint32_t)E_NOTIMPL == 0x80004001u && (uint32_t)E_FAIL == 0x80004005u,
               "failures of all kinds");
_Static_assert((uint32_t)E_UNEXPECTED == 0x8000FFFFu && (uint32_t)E_OUTOFMEMORY == 0x8007000Eu,
               "failures of calls");
_Static_assert((uint32_t)E_INVALIDARG == 0x80070057u, "failures of arguments");
_Static_assert((uint32_t)DISP_E_TYPEMISMATCH == 0x80020005u && (uint32_t)DISP_E_BADVARTYPE == 0x80020008u,
               "of types");
_Static_assert((uint32_t)DISP_E_OVERFLOW == 0x8002000Au && (uint32_t)DISP_E_BADINDEX == 0x8002000Bu,
               "of elements");
_Static_assert((uint32_t)DISP_E_ARRAYISLOCKED == 0x8002000Du, "of locked arrays");

/* Where the fields of a value and of a bound stand. */
_Static_assert(offsetof(VARIANT, vt) == 0 && offsetof(VARIANT, wReserved1) == 2, "the type");
_Static_assert(offsetof(VARIANT, wReserved2) == 4 && offsetof(VARIANT, wReserved3) == 6,
               "the reserved fields");
_Static_assert(offsetof(VARIANT, bVal) == 8 && offsetof(VARIANT, iVal) == 8 && offsetof(VARIANT, lVal) == 8,
               "whole numbers");
_Static_assert(offsetof(VARIANT, fltVal) == 8 && offsetof(VARIANT, dblVal) == 8 &&
                   offsetof(VARIANT, date) == 8,
               "others");
_Static_assert(offsetof(VARIANT, boolVal) == 8 && offsetof(VARIANT, scode) == 8 &&
                   offsetof(VARIANT, cyVal) == 8,
               "more");
_Static_assert(offsetof(VARIANT, bstrVal) == 8 && offsetof(VARIANT, pbstrVal) == 8, "texts");
_Static_assert(offsetof(VARIANT, parray) == 8 && offsetof(VARIANT, byref) == 8, "arrays and references");
_Static_assert(offsetof(SAFEARRAYBOUND, cElements) == 0 && offsetof(SAFEARRAYBOUND, lLbound) == 4, "a bound");
