// The public headers stand alone in C++17: each is included first here or beside this, and twice.
#include "tolvenar/automation.h"

// Again, in the other order.
#include "tolvenar/tolvenar.h"

#include "tolvenar/automation.h"

#include <cstddef>

static_assert(offsetof(VARIANT, dblVal) == 8, "a VARIANT's value stands at offset 8");
static_assert(sizeof(VARIANT) == 16, "a VARIANT is 16 bytes");
static_assert(sizeof(OLECHAR) == 2, "text has units of 16 bits");
static_assert(sizeof(CY) == 8 && sizeof(DATE) == 8, "the wide types have their widths");
