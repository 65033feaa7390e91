// An array that a test makes and that destroys itself.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "tolvenar/automation.h"

namespace tolvenar::testing {

// It can be destroyed only when no lock is left.
class OwnedArray {
 public:
  OwnedArray(int vt, std::vector<SAFEARRAYBOUND> bounds)
      : array_(SafeArrayCreate(static_cast<VARTYPE>(vt), static_cast<UINT>(bounds.size()), bounds.data())) {
    EXPECT_NE(array_, nullptr);
  }
  // One dimension of `count` elements from index 0 on.
  OwnedArray(int vt, ULONG count) : OwnedArray(vt, std::vector<SAFEARRAYBOUND>{{count, 0}}) {}
  OwnedArray(const OwnedArray&) = delete;
  OwnedArray& operator=(const OwnedArray&) = delete;
  ~OwnedArray() { EXPECT_EQ(SafeArrayDestroy(array_), S_OK); }

  operator SAFEARRAY*() const { return array_; }

  // The elements as they lie in memory.
  template <typename T>
  T* Data() const {
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array_, &data), S_OK);
    EXPECT_EQ(SafeArrayUnaccessData(array_), S_OK);
    return static_cast<T*>(data);
  }

 private:
  SAFEARRAY* array_;
};

}  // namespace tolvenar::testing
