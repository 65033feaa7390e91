// The shape test of a caller's array.
#include "reference/reference_array.h"

namespace tolvenar {

int16_t CheckRefArray(SAFEARRAY* array, const IndexRange* ranges, UINT dimensions) {
  if (SafeArrayGetDim(array) != dimensions) return kRefWrongDimensions;
  for (UINT dimension = 1; dimension <= dimensions; ++dimension) {
    const IndexRange& range = ranges[dimension - 1];
    if (!platform::HasBounds(array, dimension, range.first, range.last)) return kRefWrongBounds;
  }
  return kRefArrayFits;
}

}  // namespace tolvenar
