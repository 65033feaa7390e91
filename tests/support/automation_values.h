// Text, values and arrays for tests, released by themselves.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "tolvenar/automation.h"

namespace tolvenar::testing {

using Text = std::basic_string<OLECHAR>;

inline BSTR NewBstr(const Text& text) {
  return SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

// The units of `text`, zeros included; nothing for null.
inline Text TextOf(BSTR text) {
  return text == nullptr ? Text() : Text(text, SysStringLen(text));
}

inline Text TakeText(BSTR text) {
  const Text units = TextOf(text);
  SysFreeString(text);
  return units;
}

// A VARIANT that clears itself.
struct Value : VARIANT {
  Value() { VariantInit(this); }
  explicit Value(const Text& text) : Value() {
    vt = VT_BSTR;
    bstrVal = NewBstr(text);
  }
  explicit Value(double number) : Value() {
    vt = VT_R8;
    dblVal = number;
  }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
  ~Value() { VariantClear(this); }
};

// An array that destroys itself.
class Array {
 public:
  Array(VARTYPE type, std::initializer_list<SAFEARRAYBOUND> bounds) {
    std::vector<SAFEARRAYBOUND> all = bounds;
    array_ = SafeArrayCreate(type, static_cast<UINT>(all.size()), all.data());
    EXPECT_NE(array_, nullptr);
  }
  // One dimension of `count` elements from index 0 on.
  Array(VARTYPE type, ULONG count) : Array(type, {{count, 0}}) {}
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;
  ~Array() { EXPECT_EQ(SafeArrayDestroy(array_), S_OK); }

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
  SAFEARRAY* array_ = nullptr;
};

// Text that says it is too long to be copied, to be had without the memory: copying it is what fails.
class UncopyableText {
 public:
  BSTR Get() { return static_cast<BSTR>(static_cast<void*>(&block_.units)); }

 private:
  struct {
    uint32_t length = 0x7FFFFFFF;
    OLECHAR units[2] = {};
  } block_;
};

}  // namespace tolvenar::testing
