// The process-wide BIFF generation, and the layout that it decides.
#include "workbook/biff_version.h"

namespace tolvenar {

int32_t BiffVersion = 0;

const DimensionsFields* FieldsOfDimensions() {
  if (BiffVersion == kBiff5) return &kDimensionsBiff5;
  if (BiffVersion == kBiff8) return &kDimensionsBiff8;
  return nullptr;
}

}  // namespace tolvenar
