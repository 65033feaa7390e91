// BiffVersion: the BIFF generation that the library works with. There is one for the process, not one per
// workbook: whichever workbook was opened or created last decides for all.
#pragma once

#include "foundation/biff_records.h"

namespace tolvenar {

// 5 (BIFF5 and BIFF7) or 6 (BIFF8); 0 before the first workbook, when code that branches on it has no branch
// to take.
extern int32_t BiffVersion;

// Fields of DIMENSIONS in that generation; null when it is neither: there is then no layout to read one by.
const DimensionsFields* FieldsOfDimensions();

}  // namespace tolvenar
