// The arrays that a caller hands over with a reference: of 1 dimension for properties, flags and sets, of 4 for a table. Their shape is
// tested as a whole; their elements are then got and put one by one, and a refused one goes unnoticed.
#pragma once

#include <cstdint>

#include "platform/array_get.h"
#include "platform/array_put.h"
#include "tolvenar/automation.h"

namespace tolvenar {

using platform::ArrayAt;

constexpr int16_t kRefArrayFits = 0;
constexpr int16_t kRefWrongDimensions = -3;
constexpr int16_t kRefWrongBounds = -4;

// First and last index of a dimension.
struct IndexRange {
  LONG first;
  LONG last;
};

// Tests the shape: `dimensions` dimensions, dimension k with the bounds of ranges[k - 1]. Result: kRefArrayFits; kRefWrongDimensions, also
// for a null array; kRefWrongBounds.
int16_t CheckRefArray(SAFEARRAY* array, const IndexRange* ranges, UINT dimensions);

// The same for one dimension.
inline int16_t CheckRefVector(SAFEARRAY* array, LONG first, LONG last) {
  const IndexRange range = {first, last};
  return CheckRefArray(array, &range, 1);
}

}  // namespace tolvenar
