/* The public headers stand alone in C11: each is included first here or beside this, and twice. */
#include "tolvenar/tolvenar.h"

/* Again, in the other order. */
#include "tolvenar/automation.h"
#include "tolvenar/tolvenar.h"

_Static_assert(sizeof(VARIANT) == 16, "a VARIANT is 16 bytes");
_Static_assert(sizeof(OLECHAR) == 2, "text has units of 16 bits");
_Static_assert(sizeof(VARIANT_BOOL) == 2 && sizeof(HRESULT) == 4, "the types have their widths");
