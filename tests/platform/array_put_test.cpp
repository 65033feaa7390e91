// The puts: which shape goes into which array, what arrives, and what becomes of the text (a text lost or
// released twice is told by the sanitized build).
#include "platform/array_put.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/automation_values.h"

namespace tolvenar::platform {
namespace {

using testing::Array;
using testing::NewBstr;
using testing::Text;
using testing::TextOf;
using testing::Value;

constexpr VARTYPE kPlainTypes[] = {VT_I2,    VT_I4,   VT_R4,  VT_R8,  VT_CY, VT_DATE,
                                   VT_ERROR, VT_BOOL, VT_UI1, VT_UI2, VT_UI4};

template <typename T>
bool IsZero(const Array& array) {
  const T zero = {};
  return std::memcmp(array.Data<T>(), &zero, sizeof zero) == 0;
}

// Sixteen bytes of elements, whatever their type.
bool PlainIsZero(const Array& array) {
  const uint8_t zeros[16] = {};
  return std::memcmp(array.Data<uint8_t>(), zeros, sizeof zeros) == 0;
}

TEST(ArrayPut, PutOwnedBstr_TextArrives) {
  Array array(VT_BSTR, {{2, 1}, {2, 1}});
  const Text units(OLESTR("a\0b"), 3);
  LONG indices[2] = {1, 2};
  EXPECT_EQ(PutOwnedBstr(array, indices, NewBstr(OLESTR("old"))), S_OK);
  EXPECT_EQ(PutOwnedBstr(array, indices, NewBstr(units)), S_OK);
  EXPECT_EQ(TextOf(array.Data<BSTR>()[2]), units);
}

TEST(ArrayPut, PutVariant_ValueArrivesAsACopy) {
  Array array(VT_VARIANT, 2);
  Value old(OLESTR("old"));
  Value text(OLESTR("text"));
  Value number(1.5);
  LONG index = 1;
  EXPECT_EQ(PutVariant(array, &index, &old), S_OK);
  EXPECT_EQ(PutVariant(array, &index, &text), S_OK);
  const VARIANT* element = array.Data<VARIANT>() + 1;
  EXPECT_NE(element->bstrVal, text.bstrVal);
  EXPECT_EQ(TextOf(element->bstrVal), OLESTR("text"));
  EXPECT_EQ(PutVariant(array, &index, &number), S_OK);
  EXPECT_EQ(element->vt, VT_R8);
  EXPECT_EQ(element->dblVal, 1.5);
}

TEST(ArrayPut, PutOwnedBstrVariant_ArrivesAsATextValue) {
  Array array(VT_VARIANT, 1);
  LONG index = 0;
  EXPECT_EQ(PutOwnedBstrVariant(array, &index, NewBstr(OLESTR("old"))), S_OK);
  EXPECT_EQ(PutOwnedBstrVariant(array, &index, NewBstr(OLESTR("text"))), S_OK);
  EXPECT_EQ(array.Data<VARIANT>()->vt, VT_BSTR);
  EXPECT_EQ(TextOf(array.Data<VARIANT>()->bstrVal), OLESTR("text"));
}

TEST(ArrayPut, PutBytes_ElementTakesItsOwnSizeOfThem) {
  const uint8_t bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  for (const VARTYPE type : kPlainTypes) {
    Array array(type, 16);
    LONG index = 1;
    EXPECT_EQ(PutBytes(array, &index, bytes, 8), S_OK) << type;
    const UINT size = SafeArrayGetElemsize(array);
    uint8_t expected[24] = {};
    std::memcpy(expected + size, bytes, size);
    EXPECT_EQ(std::memcmp(array.Data<uint8_t>(), expected, 16), 0) << type;
  }
}

TEST(ArrayPut, PutBytes_AWiderElementIsFilledUpWithZeros) {
  Array array(VT_R8, 1);
  std::memset(array.Data<uint8_t>(), 0xCC, 8);
  const uint8_t bytes[2] = {0x34, 0x12};
  LONG index = 0;
  EXPECT_EQ(PutBytes(array, &index, bytes, 2), S_OK);
  const uint8_t expected[8] = {0x34, 0x12};
  EXPECT_EQ(std::memcmp(array.Data<uint8_t>(), expected, 8), 0);
}

TEST(ArrayPut, PutBytes_TextAndValuesRefuseBytes) {
  const uint8_t bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  LONG index = 0;
  Array texts(VT_BSTR, 1);
  EXPECT_EQ(PutBytes(texts, &index, bytes, 8), DISP_E_TYPEMISMATCH);
  EXPECT_TRUE(IsZero<BSTR>(texts));
  Array values(VT_VARIANT, 1);
  EXPECT_EQ(PutBytes(values, &index, bytes, 8), DISP_E_TYPEMISMATCH);
  EXPECT_TRUE(IsZero<VARIANT>(values));
}

TEST(ArrayPut, PutOwnedBstr_PlainElementsRefuseTextAndReleaseIt) {
  for (const VARTYPE type : kPlainTypes) {
    Array array(type, 16);
    LONG index = 0;
    EXPECT_EQ(PutOwnedBstr(array, &index, NewBstr(OLESTR("text"))), DISP_E_TYPEMISMATCH) << type;
    EXPECT_TRUE(PlainIsZero(array)) << type;
  }
}

TEST(ArrayPut, BadIndexChangesNothing) {
  Array texts(VT_BSTR, 1);
  Array values(VT_VARIANT, 1);
  Array numbers(VT_I4, 1);
  Value value(1.5);
  const uint8_t bytes[4] = {1, 2, 3, 4};
  for (LONG bad : {1, -1, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(PutOwnedBstr(texts, &bad, NewBstr(OLESTR("text"))), DISP_E_BADINDEX) << bad;
    EXPECT_EQ(PutOwnedBstrVariant(values, &bad, NewBstr(OLESTR("text"))), DISP_E_BADINDEX) << bad;
    EXPECT_EQ(PutVariant(values, &bad, &value), DISP_E_BADINDEX) << bad;
    EXPECT_EQ(PutBytes(numbers, &bad, bytes, 4), DISP_E_BADINDEX) << bad;
  }
  EXPECT_TRUE(IsZero<BSTR>(texts));
  EXPECT_TRUE(IsZero<VARIANT>(values));
  EXPECT_TRUE(IsZero<LONG>(numbers));
}

TEST(ArrayPut, NullArraysRefuseEverything) {
  Value value(1.5);
  LONG index = 0;
  EXPECT_EQ(PutOwnedBstr(nullptr, &index, NewBstr(OLESTR("text"))), E_INVALIDARG);
  EXPECT_EQ(PutOwnedBstrVariant(nullptr, &index, NewBstr(OLESTR("text"))), E_INVALIDARG);
  EXPECT_EQ(PutVariant(nullptr, &index, &value), E_INVALIDARG);
  EXPECT_EQ(PutBytes(nullptr, &index, &value, 4), E_INVALIDARG);
}

TEST(ArrayPut, NullPointersAreRefused) {
  Array texts(VT_BSTR, 1);
  Array values(VT_VARIANT, 1);
  Array numbers(VT_I4, 1);
  Value value(1.5);
  LONG index = 0;
  EXPECT_EQ(PutOwnedBstr(texts, nullptr, NewBstr(OLESTR("text"))), E_INVALIDARG);
  EXPECT_EQ(PutOwnedBstrVariant(values, nullptr, NewBstr(OLESTR("text"))), E_INVALIDARG);
  EXPECT_EQ(PutVariant(values, nullptr, &value), E_INVALIDARG);
  EXPECT_EQ(PutVariant(values, &index, nullptr), E_INVALIDARG);
  EXPECT_EQ(PutBytes(numbers, nullptr, &value, 4), E_INVALIDARG);
  EXPECT_EQ(PutBytes(numbers, &index, nullptr, 4), E_INVALIDARG);
}

// What the library's own arrays serve, and the system's can't: there every put ends in the system's own.

TEST(ArrayPut, PutOwnedBstr_TextIsTakenOverWithoutACopy) {
  Array texts(VT_BSTR, 1);
  BSTR text = NewBstr(OLESTR("text"));
  LONG index = 0;
  EXPECT_EQ(PutOwnedBstr(texts, &index, text), S_OK);
  EXPECT_EQ(texts.Data<BSTR>()[0], text);
}

TEST(ArrayPut, PutOwnedBstr_ArrivesInAValueArrayAsATextValue) {
  Array values(VT_VARIANT, 1);
  Value old(OLESTR("old"));
  LONG index = 0;
  EXPECT_EQ(PutVariant(values, &index, &old), S_OK);
  BSTR text = NewBstr(OLESTR("text"));
  EXPECT_EQ(PutOwnedBstr(values, &index, text), S_OK);
  EXPECT_EQ(values.Data<VARIANT>()->vt, VT_BSTR);
  EXPECT_EQ(values.Data<VARIANT>()->bstrVal, text);
}

TEST(ArrayPut, PutOwnedBstr_NullTextIsStored) {
  Array texts(VT_BSTR, 1);
  Array values(VT_VARIANT, 1);
  LONG index = 0;
  EXPECT_EQ(PutOwnedBstr(texts, &index, NewBstr(OLESTR("old"))), S_OK);
  EXPECT_EQ(PutOwnedBstr(texts, &index, nullptr), S_OK);
  EXPECT_TRUE(IsZero<BSTR>(texts));
  EXPECT_EQ(PutOwnedBstr(values, &index, nullptr), S_OK);
  EXPECT_EQ(values.Data<VARIANT>()->vt, VT_BSTR);
  EXPECT_EQ(values.Data<VARIANT>()->bstrVal, nullptr);
}

TEST(ArrayPut, PutVariant_TextValueArrivesInATextArrayAsItsText) {
  Array texts(VT_BSTR, 1);
  const Text units(OLESTR("a\0b"), 3);
  Value text(units);
  LONG index = 0;
  EXPECT_EQ(PutOwnedBstr(texts, &index, NewBstr(OLESTR("old"))), S_OK);
  EXPECT_EQ(PutVariant(texts, &index, &text), S_OK);
  EXPECT_NE(texts.Data<BSTR>()[0], text.bstrVal);
  EXPECT_EQ(TextOf(texts.Data<BSTR>()[0]), units);
  BSTR owned = NewBstr(OLESTR("owned"));
  EXPECT_EQ(PutOwnedBstrVariant(texts, &index, owned), S_OK);
  EXPECT_EQ(texts.Data<BSTR>()[0], owned);
}

TEST(ArrayPut, PutVariant_TextArrayRefusesAllOtherValues) {
  Array texts(VT_BSTR, 1);
  BSTR text = NewBstr(OLESTR("text"));
  LONG index = 0;
  for (const int type : {VT_EMPTY + 0, VT_R8 + 0, VT_I4 + 0, VT_BSTR | VT_BYREF, VT_ARRAY | VT_BSTR}) {
    VARIANT value = {};
    value.vt = static_cast<VARTYPE>(type);
    value.pbstrVal = &text;
    EXPECT_EQ(PutVariant(texts, &index, &value), DISP_E_TYPEMISMATCH) << type;
    EXPECT_TRUE(IsZero<BSTR>(texts)) << type;
  }
  SysFreeString(text);
}

TEST(ArrayPut, PutVariant_PlainElementsRefuseValues) {
  Value value(1.5);
  for (const VARTYPE type : kPlainTypes) {
    Array array(type, 16);
    LONG index = 0;
    EXPECT_EQ(PutVariant(array, &index, &value), DISP_E_TYPEMISMATCH) << type;
    EXPECT_EQ(PutOwnedBstrVariant(array, &index, NewBstr(OLESTR("text"))), DISP_E_TYPEMISMATCH) << type;
    EXPECT_TRUE(PlainIsZero(array)) << type;
  }
}

TEST(ArrayPut, PutVariant_ValueThatCannotBeCopiedKeepsTheOld) {
  testing::UncopyableText text;
  VARIANT value = {};
  value.vt = VT_BSTR;
  value.bstrVal = text.Get();
  LONG index = 0;
  for (const VARTYPE type : {VT_BSTR, VT_VARIANT}) {
    Array array(type, 1);
    BSTR old = NewBstr(OLESTR("old"));
    EXPECT_EQ(PutOwnedBstr(array, &index, old), S_OK);
    EXPECT_EQ(PutVariant(array, &index, &value), E_OUTOFMEMORY);
    BSTR kept = type == VT_BSTR ? array.Data<BSTR>()[0] : array.Data<VARIANT>()->bstrVal;
    EXPECT_EQ(kept, old);
    EXPECT_EQ(TextOf(kept), OLESTR("old"));
  }
}

TEST(ArrayPut, OneArrayTakesAWholeMixedSheet) {
  Array array(VT_VARIANT, {{1, 1}, {3, 1}});
  Value number(2.5);
  LONG indices[2] = {1, 1};
  EXPECT_EQ(PutOwnedBstr(array, indices, NewBstr(OLESTR("1.500000"))), S_OK);
  indices[1] = 2;
  EXPECT_EQ(PutVariant(array, indices, &number), S_OK);
  indices[1] = 3;
  EXPECT_EQ(PutOwnedBstrVariant(array, indices, NewBstr(OLESTR("FALSE"))), S_OK);
  const VARIANT* elements = array.Data<VARIANT>();
  EXPECT_EQ(TextOf(elements[0].bstrVal), OLESTR("1.500000"));
  EXPECT_EQ(elements[1].dblVal, 2.5);
  EXPECT_EQ(TextOf(elements[2].bstrVal), OLESTR("FALSE"));
}

// And what the system's arrays do instead.
#if defined(_WIN32)

TEST(ArrayPut, PutOwnedBstr_ValueArraysRefuseTextItself) {
  Array values(VT_VARIANT, 1);
  LONG index = 0;
  EXPECT_EQ(PutOwnedBstr(values, &index, NewBstr(OLESTR("text"))), DISP_E_TYPEMISMATCH);
  EXPECT_TRUE(IsZero<VARIANT>(values));
}

TEST(ArrayPut, PutVariant_TextArraysRefuseValues) {
  Array texts(VT_BSTR, 1);
  Value text(OLESTR("text"));
  LONG index = 0;
  EXPECT_EQ(PutVariant(texts, &index, &text), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(PutOwnedBstrVariant(texts, &index, NewBstr(OLESTR("text"))), DISP_E_TYPEMISMATCH);
  EXPECT_TRUE(IsZero<BSTR>(texts));
}

TEST(ArrayPut, PutVariant_PlainElementsTakeItsFirstBytes) {
  Array numbers(VT_I2, 1);
  Value value(1.5);
  LONG index = 0;
  EXPECT_EQ(PutVariant(numbers, &index, &value), S_OK);
  EXPECT_EQ(numbers.Data<int16_t>()[0], VT_R8);
}

TEST(ArrayPut, InterfaceArraysRefuseEverything) {
  Array interfaces(VT_UNKNOWN, 1);
  Value value(1.5);
  LONG index = 0;
  EXPECT_EQ(PutOwnedBstr(interfaces, &index, NewBstr(OLESTR("text"))), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(PutVariant(interfaces, &index, &value), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(PutBytes(interfaces, &index, &value, 8), DISP_E_TYPEMISMATCH);
  EXPECT_TRUE(IsZero<void*>(interfaces));
}

#endif

}  // namespace
}  // namespace tolvenar::platform
