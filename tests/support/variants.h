// VARIANTs of every kind for tests. Those with text own it no further than the list that made them.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "tolvenar/automation.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define TOLVENAR_LEAK_CHECK 1
#endif
#endif

namespace tolvenar::testing {

// For the length of a scope, what is lost is not held against the test: the loss is what it is about.
class LeaksExpected {
 public:
#if defined(TOLVENAR_LEAK_CHECK)
  LeaksExpected() {
    __lsan_disable();
  }
  ~LeaksExpected() {
    __lsan_enable();
  }
#else
  LeaksExpected() {}
  ~LeaksExpected() {}
#endif
  LeaksExpected(const LeaksExpected&) = delete;
  LeaksExpected& operator=(const LeaksExpected&) = delete;
};

// A list of values, row by row.
class Variants {
 public:
  Variants() = default;
  Variants(const Variants&) = delete;
  Variants& operator=(const Variants&) = delete;
  ~Variants() {
    for (BSTR text : texts_) SysFreeString(text);
  }

  Variants& Empty(int vt = VT_EMPTY) {
    VARIANT value = {};
    value.vt = static_cast<VARTYPE>(vt);
    values_.push_back(value);
    return *this;
  }
  Variants& I2(int16_t number) {
    Empty(VT_I2);
    values_.back().iVal = number;
    return *this;
  }
  Variants& I4(int32_t number) {
    Empty(VT_I4);
    values_.back().lVal = number;
    return *this;
  }
  Variants& R4(float number) {
    Empty(VT_R4);
    values_.back().fltVal = number;
    return *this;
  }
  Variants& R8(double number, int vt = VT_R8) {
    Empty(vt);
    values_.back().dblVal = number;
    return *this;
  }
  Variants& Currency(int64_t ten_thousandths) {
    Empty(VT_CY);
    std::memcpy(&values_.back().cyVal, &ten_thousandths, sizeof ten_thousandths);
    return *this;
  }
  Variants& Text(const OLECHAR* text) {
    Empty(VT_BSTR);
    values_.back().bstrVal = Own(text);
    return *this;
  }
  Variants& TextByReference(const OLECHAR* text) {
    Empty(VT_BSTR | VT_BYREF);
    Own(text);
    values_.back().pbstrVal = &texts_.back();
    return *this;
  }

  const VARIANT* Data() const { return values_.data(); }
  std::vector<const VARIANT*> Addresses() const {
    std::vector<const VARIANT*> addresses;
    for (const VARIANT& value : values_) addresses.push_back(&value);
    return addresses;
  }

 private:
  BSTR Own(const OLECHAR* text) {
    texts_.push_back(SysAllocString(text));
    return texts_.back();
  }

  std::vector<VARIANT> values_;
  std::deque<BSTR> texts_;
};

// An array that destroys itself, which it can only when no lock is left.
class OwnedArray {
 public:
  OwnedArray(int vt, std::vector<SAFEARRAYBOUND> bounds)
      : array_(SafeArrayCreate(static_cast<VARTYPE>(vt), static_cast<UINT>(bounds.size()), bounds.data())) {}
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
