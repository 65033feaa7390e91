/* Tolvenar: what a host needs of BSTR, VARIANT and SAFEARRAY.
 *
 * On Windows these are the system's own, and this header only includes the system's. Everywhere else the
 * library brings them itself, under the names, numbers and result values that hosts know from there:
 *
 *   BSTR        text of 16-bit units; a u32 byte length stands in front of it, a zero unit behind it. A null
 *               BSTR is empty text.
 *   VARIANT     16 bytes: u16 vt, three reserved u16, an 8-byte union at offset 8.
 *   SAFEARRAY   an array with bounds of its own, given and asked for by dimension, from 1. The first entry
 *               of an index vector belongs to dimension 1, and dimension 1 varies fastest in memory. A put
 *               copies a BSTR or a VARIANT, a get hands out a copy that is the caller's to release.
 *
 * Compiles as C11 and as C++17.
 */
#ifndef TOLVENAR_AUTOMATION_H
#define TOLVENAR_AUTOMATION_H

#if defined(_WIN32)

#include <windows.h>

#include <oleauto.h>

#else

#include <stdint.h>

#ifndef __cplusplus
#include <uchar.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

#ifndef TOLVENAR_API
#define TOLVENAR_API __attribute__((visibility("default")))
#endif

typedef int32_t HRESULT;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef uint32_t UINT;
typedef uint16_t USHORT;
typedef uint16_t VARTYPE;
typedef int16_t VARIANT_BOOL;
typedef double DATE;
typedef char16_t OLECHAR;
typedef OLECHAR* BSTR;

/* A literal of OLECHAR units: OLESTR("text"). */
#define OLESTR(literal)      u##literal

/* A currency value: a count of ten-thousandths. */
typedef struct tagCY {
  int64_t int64;
} CY;

/* Results. Negative values are failures. */
#define S_OK                 ((HRESULT)0)
#define S_FALSE              ((HRESULT)1)
#define E_NOTIMPL            ((HRESULT)0x80004001u)
#define E_FAIL               ((HRESULT)0x80004005u)
#define E_UNEXPECTED         ((HRESULT)0x8000FFFFu)
#define E_OUTOFMEMORY        ((HRESULT)0x8007000Eu)
#define E_INVALIDARG         ((HRESULT)0x80070057u)
#define DISP_E_TYPEMISMATCH  ((HRESULT)0x80020005u)
#define DISP_E_BADVARTYPE    ((HRESULT)0x80020008u)
#define DISP_E_OVERFLOW      ((HRESULT)0x8002000Au)
#define DISP_E_BADINDEX      ((HRESULT)0x8002000Bu)
#define DISP_E_ARRAYISLOCKED ((HRESULT)0x8002000Du)
#define SUCCEEDED(hr)        ((HRESULT)(hr) >= 0)
#define FAILED(hr)           ((HRESULT)(hr) < 0)

#define VARIANT_TRUE  ((VARIANT_BOOL)-1)
#define VARIANT_FALSE ((VARIANT_BOOL)0)

/* Types of a VARIANT and of the elements of a SAFEARRAY. */
enum VARENUM {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_VARIANT = 12,
  VT_UNKNOWN = 13,
  VT_DECIMAL = 14,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000
};

/* An array. A host uses the functions below; the layout is the library's own. */
typedef struct tagSAFEARRAY SAFEARRAY;

/* A value. A VT_DISPATCH or VT_UNKNOWN is carried as a bare pointer: there are no interfaces to count
 * references of here. */
typedef struct tagVARIANT {
  VARTYPE vt;
  uint16_t wReserved1;
  uint16_t wReserved2;
  uint16_t wReserved3;
  union {
    uint8_t bVal;
    int16_t iVal;
    uint16_t uiVal;
    int32_t lVal;
    uint32_t ulVal;
    int64_t llVal;
    float fltVal;
    double dblVal;
    VARIANT_BOOL boolVal;
    int32_t scode;
    CY cyVal;
    DATE date;
    BSTR bstrVal;
    BSTR* pbstrVal;
    SAFEARRAY* parray;
    void* byref;
  };
} VARIANT;

/* One dimension of an array: how many elements, and the index of the first. */
typedef struct tagSAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
} SAFEARRAYBOUND;

/* Text. All lengths leave the zero unit behind the text out; SysFreeString releases, and null is fine for it.
 *
 * SysAllocString copies up to the first zero unit; null gives null. SysAllocStringLen copies `units` units
 * and SysAllocStringByteLen `count` bytes, zeros among them included; `count` may be odd. For these two a
 * null source gives zeroed text of the length asked for. Result: text of the caller's; null when it can't be
 * had, as from 0x7FFFFFFF bytes on. */
TOLVENAR_API BSTR SysAllocString(const OLECHAR* text);
TOLVENAR_API BSTR SysAllocStringLen(const OLECHAR* text, UINT units);
TOLVENAR_API BSTR SysAllocStringByteLen(const char* bytes, UINT count);
TOLVENAR_API void SysFreeString(BSTR text);

/* The length of a text in units, or in bytes; 0 for null. */
TOLVENAR_API UINT SysStringLen(BSTR text);
TOLVENAR_API UINT SysStringByteLen(BSTR text);

/* Makes *value a VT_EMPTY, whatever it held: nothing is released. */
TOLVENAR_API void VariantInit(VARIANT* value);

/* Releases the text or the array that *value owns, and makes it a VT_EMPTY. What a VT_BYREF points at is not
 * released. Result: S_OK; E_INVALIDARG for null; DISP_E_BADVARTYPE; DISP_E_ARRAYISLOCKED. *value is untouched
 * after a failure. */
TOLVENAR_API HRESULT VariantClear(VARIANT* value);

/* Clears *to and makes it a copy of *from; text and arrays are copied, what a VT_BYREF points at is not. A
 * value copied to itself stays as it is. Result: S_OK; E_INVALIDARG for null; DISP_E_BADVARTYPE, for either;
 * DISP_E_ARRAYISLOCKED, for *to; these leave *to untouched. E_OUTOFMEMORY leaves it VT_EMPTY. */
TOLVENAR_API HRESULT VariantCopy(VARIANT* to, const VARIANT* from);

/* Arrays. Element types: VT_I2, VT_I4, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BSTR, VT_ERROR, VT_BOOL, VT_VARIANT,
 * VT_UI1, VT_UI2, VT_UI4. Every function that gives an HRESULT gives E_INVALIDARG where it is handed a null
 * pointer, other than those that take null. */

/* Makes an array of zeroed elements with 1 to 64 dimensions; bounds[0] belongs to dimension 1, and a
 * dimension may have no elements. Result: the array, to be released with SafeArrayDestroy; null for another
 * element type or number of dimensions, for elements of 4 GiB and more, for an upper bound that is no LONG,
 * and when there is no memory. */
TOLVENAR_API SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds);

/* The same for one dimension. */
TOLVENAR_API SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lower, ULONG count);

/* Releases an array and all text, values and arrays in it. Result: S_OK, also for null; DISP_E_ARRAYISLOCKED:
 * it is still there. */
TOLVENAR_API HRESULT SafeArrayDestroy(SAFEARRAY* array);

/* The number of dimensions, and the bytes of one element; 0 for null. */
TOLVENAR_API UINT SafeArrayGetDim(SAFEARRAY* array);
TOLVENAR_API UINT SafeArrayGetElemsize(SAFEARRAY* array);

/* Store the first or the last index of a dimension, counted from 1. Result: S_OK; DISP_E_BADINDEX: there is
 * no such dimension. */
TOLVENAR_API HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* lower);
TOLVENAR_API HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* upper);

/* Stores the type of the elements. Result: S_OK. */
TOLVENAR_API HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type);

/* Stores a copy of an element: at a BSTR* for VT_BSTR, at a VARIANT* for VT_VARIANT. What *element held is
 * not released. Result: S_OK; DISP_E_BADINDEX: *element is untouched; E_OUTOFMEMORY and, for a VARIANT of no
 * known type, DISP_E_BADVARTYPE: *element is null or VT_EMPTY. */
TOLVENAR_API HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* element);

/* Puts a copy of `element`, which is the BSTR itself for VT_BSTR (null may be put), for all others the
 * address of the element. The old element is released. Result: S_OK; DISP_E_BADINDEX; E_OUTOFMEMORY; of a
 * VT_VARIANT also DISP_E_BADVARTYPE and, where the old element holds a locked array, DISP_E_ARRAYISLOCKED.
 * The old element stays after a failure. */
TOLVENAR_API HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* element);

/* Lock an array against its release, and let it go again; AccessData also stores the address of the first
 * element. Locks are counted, up to 65535. Result: S_OK; E_UNEXPECTED: one lock too many, or one unlock. */
TOLVENAR_API HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data);
TOLVENAR_API HRESULT SafeArrayUnaccessData(SAFEARRAY* array);
TOLVENAR_API HRESULT SafeArrayLock(SAFEARRAY* array);
TOLVENAR_API HRESULT SafeArrayUnlock(SAFEARRAY* array);

#ifdef __cplusplus
}
#endif

#endif /* !_WIN32 */

#endif /* TOLVENAR_AUTOMATION_H */
