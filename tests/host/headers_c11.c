/* The public headers stand alone in C11: included twice, each one first, in the order that no other file has.
 */
#include "tolvenar/automation.h"
#include "tolvenar/tolvenar.h"

_Static_assert(sizeof(VARIANT) == 16 || sizeof(void*) == 4, "a VARIANT is 16 bytes");
_Static_assert(sizeof(OLECHAR) == 2, "text has units of 16 bits");
_Static_assert(sizeof(VARIANT_BOOL) == 2 && sizeof(HRESULT) == 4 && sizeof(LONG) == 4,
               "the types have their widths");
