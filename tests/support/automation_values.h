// Text, values and arrays for tests, released by themselves.
#pragma once

#include <string>

#include "support/owned_array.h"
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

using Array = OwnedArray;

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
