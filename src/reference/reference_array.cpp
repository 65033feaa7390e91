// The shape test of a caller's array.
#include "reference/reference_array.h"

namespace tolvenar {

int16_t CheckRefArray(SAFEARRAY* array, const IndexRange* ranges, UINT dimensions) {
  if (SafeArrayGetDim(array) != dimensions) return kRefWrongDimensions;
  for (UINT dimension = 1; dimension <= dimensions; ++dimension) {
    const IndexRange& range = ranges[dimension - 1];
    LONG first = 0;
    LONG last = 0;
    const bool told = SUCCEEDED(SafeArrayGetLBound(array, dimension, &first)) &&
                      SUCCEEDED(SafeArrayGetUBound(array, dimension, &last));
    if (!told || first != range.first || last != range.last) return kRefWrongBounds;
  }
  return kRefArrayFits;
}

}  // namespace tolvenar
