// The process-wide BIFF generation.
#include "workbook/biff_version.h"

namespace tolvenar {

int32_t BiffVersion = 0;

}  // namespace tolvenar
