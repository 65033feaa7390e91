// Values: what a clear releases (told by the leak check of the sanitized build) and what a copy copies.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "support/automation_values.h"

namespace tolvenar {
namespace {

using testing::NewBstr;
using testing::Text;
using testing::TextOf;
using testing::Value;

VARIANT Junk(VARTYPE type) {
  VARIANT value;
  std::memset(&value, 0xCC, sizeof value);
  value.vt = type;
  return value;
}

TEST(Variant, VariantInit_MakesItEmptyWithoutReleasingAnything) {
  VARIANT value = Junk(VT_BSTR);
  VariantInit(&value);
  EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, VariantClear_ReleasesText) {
  VARIANT value = {};
  value.vt = VT_BSTR;
  value.bstrVal = NewBstr(OLESTR("text"));
  EXPECT_EQ(VariantClear(&value), S_OK);
  EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, VariantClear_TakesNullText) {
  VARIANT value = {};
  value.vt = VT_BSTR;
  EXPECT_EQ(VariantClear(&value), S_OK);
  EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, VariantClear_LeavesTextByReferenceAlone) {
  BSTR text = NewBstr(OLESTR("text"));
  VARIANT value = {};
  value.vt = VT_BSTR | VT_BYREF;
  value.pbstrVal = &text;
  EXPECT_EQ(VariantClear(&value), S_OK);
  EXPECT_EQ(value.vt, VT_EMPTY);
  EXPECT_EQ(testing::TakeText(text), OLESTR("text"));
}

TEST(Variant, VariantClear_DestroysAnArray) {
  VARIANT value = {};
  value.vt = VT_ARRAY | VT_R8;
  value.parray = SafeArrayCreateVector(VT_R8, 0, 3);
  EXPECT_EQ(VariantClear(&value), S_OK);
  EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, VariantClear_RefusesALockedArrayAndKeepsIt) {
  Value value;
  value.vt = VT_ARRAY | VT_R8;
  value.parray = SafeArrayCreateVector(VT_R8, 0, 3);
  SafeArrayLock(value.parray);
  EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(value.vt, VT_ARRAY | VT_R8);
  EXPECT_EQ(SafeArrayUnlock(value.parray), S_OK);
}

TEST(Variant, VariantCopy_CopiesTextWithItsZeros) {
  const Text units(OLESTR("a\0b"), 3);
  Value from(units);
  Value to;
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  EXPECT_EQ(to.vt, VT_BSTR);
  EXPECT_NE(to.bstrVal, from.bstrVal);
  EXPECT_EQ(TextOf(to.bstrVal), units);
  EXPECT_EQ(TextOf(from.bstrVal), units);
}

TEST(Variant, VariantCopy_KeepsAnOddByteLength) {
  Value from;
  from.vt = VT_BSTR;
  from.bstrVal = SysAllocStringByteLen("abc", 3);
  Value to;
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  ASSERT_EQ(SysStringByteLen(to.bstrVal), 3u);
  EXPECT_EQ(std::memcmp(to.bstrVal, "abc\0", 5), 0);
}

TEST(Variant, VariantCopy_ReleasesWhatWasThere) {
  Value from(1.5);
  Value to(OLESTR("old"));
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  EXPECT_EQ(to.vt, VT_R8);
  EXPECT_EQ(to.dblVal, 1.5);
}

TEST(Variant, VariantCopy_ToItselfChangesNothing) {
  Value value(OLESTR("text"));
  BSTR text = value.bstrVal;
  EXPECT_EQ(VariantCopy(&value, &value), S_OK);
  EXPECT_EQ(value.bstrVal, text);
  EXPECT_EQ(TextOf(text), OLESTR("text"));
}

TEST(Variant, VariantCopy_CopiesOnlyTheReferenceOfAByref) {
  BSTR text = NewBstr(OLESTR("text"));
  VARIANT from = {};
  from.vt = VT_BSTR | VT_BYREF;
  from.pbstrVal = &text;
  Value to;
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  EXPECT_EQ(to.vt, VT_BSTR | VT_BYREF);
  EXPECT_EQ(to.pbstrVal, &text);
  SysFreeString(text);
}

Value& FillWithTexts(Value& value) {
  value.vt = VT_ARRAY | VT_BSTR;
  value.parray = SafeArrayCreateVector(VT_BSTR, 1, 2);
  LONG index = 2;
  BSTR text = NewBstr(OLESTR("two"));
  EXPECT_EQ(SafeArrayPutElement(value.parray, &index, text), S_OK);
  SysFreeString(text);
  return value;
}

TEST(Variant, VariantCopy_CopiesAnArrayAndItsTexts) {
  Value from;
  FillWithTexts(from);
  Value to;
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  EXPECT_EQ(to.vt, VT_ARRAY | VT_BSTR);
  EXPECT_NE(to.parray, from.parray);
  LONG lower = 0;
  EXPECT_EQ(SafeArrayGetLBound(to.parray, 1, &lower), S_OK);
  EXPECT_EQ(lower, 1);
  LONG index = 2;
  BSTR text = nullptr;
  EXPECT_EQ(SafeArrayGetElement(to.parray, &index, &text), S_OK);
  EXPECT_EQ(testing::TakeText(text), OLESTR("two"));
}

TEST(Variant, VariantCopy_CopiesAnArrayOfPlainElements) {
  Value from;
  from.vt = VT_ARRAY | VT_I4;
  from.parray = SafeArrayCreateVector(VT_I4, 0, 3);
  LONG index = 1;
  LONG number = 77;
  EXPECT_EQ(SafeArrayPutElement(from.parray, &index, &number), S_OK);
  Value to;
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  LONG got = 0;
  EXPECT_EQ(SafeArrayGetElement(to.parray, &index, &got), S_OK);
  EXPECT_EQ(got, 77);
}

TEST(Variant, VariantCopy_CopiesArraysInsideArrays) {
  Value inner;
  FillWithTexts(inner);
  Value from;
  from.vt = VT_ARRAY | VT_VARIANT;
  from.parray = SafeArrayCreateVector(VT_VARIANT, 0, 1);
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(from.parray, &index, &inner), S_OK);
  Value to;
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  Value got;
  EXPECT_EQ(SafeArrayGetElement(to.parray, &index, &got), S_OK);
  EXPECT_EQ(got.vt, VT_ARRAY | VT_BSTR);
}

TEST(Variant, VariantCopy_CopyOfALockedArrayIsNotLocked) {
  Value from;
  FillWithTexts(from);
  SafeArrayLock(from.parray);
  Value to;
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  EXPECT_EQ(SafeArrayUnlock(from.parray), S_OK);
  EXPECT_EQ(VariantClear(&to), S_OK);
}

TEST(Variant, VariantCopy_RefusesADestinationWithALockedArray) {
  Value from(OLESTR("new"));
  Value to;
  FillWithTexts(to);
  SafeArrayLock(to.parray);
  EXPECT_EQ(VariantCopy(&to, &from), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(to.vt, VT_ARRAY | VT_BSTR);
  EXPECT_EQ(SafeArrayUnlock(to.parray), S_OK);
}

TEST(Variant, TypesThatAreNoneAreRefusedAndLeftAlone) {
  for (const int type : {15, 24, 0x0FFF, 0x1008, 0x8003, 0xCCCC}) {
    VARIANT value = Junk(static_cast<VARTYPE>(type));
    EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE) << type;
    EXPECT_EQ(value.vt, type);
    Value other(OLESTR("kept"));
    EXPECT_EQ(VariantCopy(&other, &value), DISP_E_BADVARTYPE) << type;
    EXPECT_EQ(TextOf(other.bstrVal), OLESTR("kept"));
    EXPECT_EQ(VariantCopy(&value, &other), DISP_E_BADVARTYPE) << type;
    EXPECT_EQ(value.vt, type);
  }
}

// The system's functions need not take null, its element types are more, and a text of theirs can't be made
// to fail.

TEST(Variant, Layout) {
  EXPECT_EQ(sizeof(VARIANT), 16u);
  EXPECT_EQ(offsetof(VARIANT, vt), 0u);
  EXPECT_EQ(offsetof(VARIANT, bVal), 8u);
  EXPECT_EQ(offsetof(VARIANT, byref), 8u);
}

TEST(Variant, VariantInit_ZeroesAllOfIt) {
  VARIANT value = Junk(VT_R8);
  VariantInit(&value);
  const uint8_t zeros[16] = {};
  EXPECT_EQ(std::memcmp(&value, zeros, sizeof zeros), 0);
}

TEST(Variant, NullPointersAreRefused) {
  Value value;
  VariantInit(nullptr);
  EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantCopy(nullptr, &value), E_INVALIDARG);
  EXPECT_EQ(VariantCopy(&value, nullptr), E_INVALIDARG);
}

TEST(Variant, EveryTypeThatOwnsNothingIsCopiedAsItsBytes) {
  for (const int type :
       {0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 13, 14, 16, 17, 18, 19, 20, 21, 22, 23, 0x400C, 0x6008}) {
    VARIANT value = Junk(static_cast<VARTYPE>(type));
    Value copy;
    EXPECT_EQ(VariantCopy(&copy, &value), S_OK) << type;
    EXPECT_EQ(std::memcmp(&copy, &value, sizeof value), 0) << type;
    EXPECT_EQ(VariantClear(&copy), S_OK) << type;
    EXPECT_EQ(copy.vt, VT_EMPTY);
  }
}

TEST(Variant, ModifiersOfNothingAndAValueByValueAreNoTypes) {
  for (const int type : {0x2000, 0x2001, 0x4000, 0x4001, 0x000C}) {
    VARIANT value = Junk(static_cast<VARTYPE>(type));
    EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE) << type;
  }
}

TEST(Variant, VariantCopy_NullTextAndNullArrayStayNull) {
  for (const int type : {VT_BSTR + 0, VT_ARRAY | VT_I4}) {
    VARIANT from = {};
    from.vt = static_cast<VARTYPE>(type);
    Value to(1.5);
    EXPECT_EQ(VariantCopy(&to, &from), S_OK);
    EXPECT_EQ(to.vt, type);
    EXPECT_EQ(to.byref, nullptr);
  }
}

TEST(Variant, VariantCopy_OfTextThatCannotBeCopiedLeavesTheDestinationEmpty) {
  testing::UncopyableText text;
  VARIANT from = {};
  from.vt = VT_BSTR;
  from.bstrVal = text.Get();
  Value to(OLESTR("old"));
  EXPECT_EQ(VariantCopy(&to, &from), E_OUTOFMEMORY);
  EXPECT_EQ(to.vt, VT_EMPTY);
}

TEST(Variant, VariantCopy_OfAnArrayWithSuchTextLeavesTheDestinationEmpty) {
  testing::UncopyableText text;
  Value from;
  FillWithTexts(from);
  void* data = nullptr;
  EXPECT_EQ(SafeArrayAccessData(from.parray, &data), S_OK);
  BSTR* elements = static_cast<BSTR*>(data);
  elements[0] = text.Get();
  Value to(OLESTR("old"));
  EXPECT_EQ(VariantCopy(&to, &from), E_OUTOFMEMORY);
  EXPECT_EQ(to.vt, VT_EMPTY);
  elements[0] = nullptr;
  EXPECT_EQ(SafeArrayUnaccessData(from.parray), S_OK);
}

TEST(Variant, VariantCopy_OutOfTheArrayThatTheDestinationOwns) {
  Value inner(OLESTR("inner"));
  Value outer;
  outer.vt = VT_ARRAY | VT_VARIANT;
  outer.parray = SafeArrayCreateVector(VT_VARIANT, 0, 1);
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(outer.parray, &index, &inner), S_OK);
  void* data = nullptr;
  EXPECT_EQ(SafeArrayAccessData(outer.parray, &data), S_OK);
  EXPECT_EQ(SafeArrayUnaccessData(outer.parray), S_OK);
  EXPECT_EQ(VariantCopy(&outer, static_cast<VARIANT*>(data)), S_OK);
  EXPECT_EQ(TextOf(outer.bstrVal), OLESTR("inner"));
}

}  // namespace
}  // namespace tolvenar
