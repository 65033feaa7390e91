// TableArray: a SAFEARRAY of four dimensions, from 1 on, as a host hands it over for a table's position values.
#pragma once

#include <cstring>
#include <vector>

#include "reference/table_grid.h"
#include "tolvenar/automation.h"

namespace tolvenar::testing {

class TableArray {
 public:
  explicit TableArray(const GridCell& sizes, VARTYPE type = VT_I4, LONG lowest = 1) : sizes_(sizes) {
    SAFEARRAYBOUND bounds[kGridDimensions];
    for (uint32_t k = 0; k < kGridDimensions; ++k) bounds[k] = {static_cast<ULONG>(sizes[k]), lowest};
    array_ = SafeArrayCreate(type, kGridDimensions, bounds);
  }
  TableArray(const TableArray&) = delete;
  TableArray& operator=(const TableArray&) = delete;
  ~TableArray() { SafeArrayDestroy(array_); }

  SAFEARRAY** Ref() { return &array_; }

  // Elements by their 1-based indices.
  void Set(LONG a, LONG b, LONG c, LONG d, uint32_t value) {
    LONG index[] = {a, b, c, d};
    SafeArrayPutElement(array_, index, &value);
  }
  uint32_t At(LONG a, LONG b, LONG c, LONG d) {
    LONG index[] = {a, b, c, d};
    uint32_t value = 0;
    SafeArrayGetElement(array_, index, &value);
    return value;
  }

  // All elements, dimension 1 fastest.
  void SetAll(const std::vector<uint32_t>& values) {
    void* data = nullptr;
    SafeArrayAccessData(array_, &data);
    if (!values.empty()) std::memcpy(data, values.data(), values.size() * sizeof values[0]);
    SafeArrayUnaccessData(array_);
  }
  std::vector<uint32_t> All() {
    std::vector<uint32_t> values(static_cast<size_t>(VolumeOf(sizes_)));
    void* data = nullptr;
    SafeArrayAccessData(array_, &data);
    if (!values.empty()) std::memcpy(values.data(), data, values.size() * sizeof values[0]);
    SafeArrayUnaccessData(array_);
    return values;
  }

 private:
  GridCell sizes_;
  SAFEARRAY* array_ = nullptr;
};

}  // namespace tolvenar::testing
