// Arrays: bounds, order in memory, what a put and a get copy, locks, and every result.
#include <gtest/gtest.h>

#include <cstring>

#include "support/automation_values.h"

namespace tolvenar {
namespace {

using testing::Array;
using testing::NewBstr;
using testing::TakeText;
using testing::Text;
using testing::TextOf;
using testing::Value;

HRESULT PutText(SAFEARRAY* array, LONG index, const Text& text) {
  BSTR made = NewBstr(text);
  const HRESULT result = SafeArrayPutElement(array, &index, made);
  SysFreeString(made);
  return result;
}

Text GetText(SAFEARRAY* array, LONG index) {
  BSTR text = nullptr;
  EXPECT_EQ(SafeArrayGetElement(array, &index, &text), S_OK);
  return TakeText(text);
}

TEST(SafeArray, ElementsHaveTheSizeOfTheirType) {
  constexpr struct {
    VARTYPE type;
    UINT size;
  } kRows[] = {{VT_UI1, 1},
               {VT_I2, 2},
               {VT_UI2, 2},
               {VT_BOOL, 2},
               {VT_I4, 4},
               {VT_UI4, 4},
               {VT_ERROR, 4},
               {VT_R4, 4},
               {VT_R8, 8},
               {VT_CY, 8},
               {VT_DATE, 8},
               {VT_BSTR, sizeof(BSTR)},
               {VT_VARIANT, sizeof(VARIANT)}};
  for (const auto& row : kRows) {
    Array array(row.type, 2);
    EXPECT_EQ(SafeArrayGetElemsize(array), row.size) << row.type;
    VARTYPE type = 0;
    EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
    EXPECT_EQ(type, row.type);
  }
}

TEST(SafeArray, BoundsAreGivenAndAskedForByDimension) {
  Array array(VT_I2, {{3, 1}, {5, -2}, {1, 10}});
  EXPECT_EQ(SafeArrayGetDim(array), 3u);
  const LONG expected[3][2] = {{1, 3}, {-2, 2}, {10, 10}};
  for (UINT d = 1; d <= 3; ++d) {
    LONG lower = 0;
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, d, &lower), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array, d, &upper), S_OK);
    EXPECT_EQ(lower, expected[d - 1][0]) << d;
    EXPECT_EQ(upper, expected[d - 1][1]) << d;
  }
}

TEST(SafeArray, DimensionsThatAreNotThereAreABadIndex) {
  Array array(VT_I2, {{3, 1}, {5, 1}});
  for (const UINT dimension : {0u, 3u, 0xFFFFFFFFu}) {
    LONG bound = 77;
    EXPECT_EQ(SafeArrayGetLBound(array, dimension, &bound), DISP_E_BADINDEX) << dimension;
    EXPECT_EQ(SafeArrayGetUBound(array, dimension, &bound), DISP_E_BADINDEX) << dimension;
    EXPECT_EQ(bound, 77);
  }
}

TEST(SafeArray, Dimension1VariesFastestInMemory) {
  Array array(VT_I2, {{3, 1}, {2, 1}});
  for (LONG second = 1; second <= 2; ++second) {
    for (LONG first = 1; first <= 3; ++first) {
      LONG indices[2] = {first, second};
      int16_t value = static_cast<int16_t>(10 * first + second);
      ASSERT_EQ(SafeArrayPutElement(array, indices, &value), S_OK);
    }
  }
  const int16_t expected[6] = {11, 21, 31, 12, 22, 32};
  EXPECT_EQ(std::memcmp(array.Data<int16_t>(), expected, sizeof expected), 0);
}

TEST(SafeArray, FourDimensionsKeepTheirElementsApart) {
  Array array(VT_I4, {{2, 0}, {3, 5}, {4, -1}, {2, 1}});
  LONG* data = array.Data<LONG>();
  for (LONG i = 0; i < 48; ++i) data[i] = i;
  LONG indices[4] = {1, 7, 2, 2};
  LONG got = 0;
  EXPECT_EQ(SafeArrayGetElement(array, indices, &got), S_OK);
  EXPECT_EQ(got, 1 + 2 * (2 + 3 * (3 + 4 * 1)));
}

TEST(SafeArray, IndicesOutsideTheBoundsAreABadIndex) {
  Array array(VT_I4, {{3, 1}, {5, -2}});
  const LONG bad[][2] = {{0, 0},         {4, 0},         {1, -3},     {1, 3},
                         {INT32_MIN, 0}, {INT32_MAX, 0}, {-65535, 0}, {1, INT32_MAX}};
  for (const auto& row : bad) {
    LONG indices[2] = {row[0], row[1]};
    LONG value = 77;
    EXPECT_EQ(SafeArrayPutElement(array, indices, &value), DISP_E_BADINDEX) << row[0] << ' ' << row[1];
    EXPECT_EQ(SafeArrayGetElement(array, indices, &value), DISP_E_BADINDEX) << row[0] << ' ' << row[1];
    EXPECT_EQ(value, 77);
  }
  for (int i = 0; i < 15; ++i) EXPECT_EQ(array.Data<LONG>()[i], 0);
}

TEST(SafeArray, BoundsAtTheEndsOfTheRange) {
  for (const LONG lower : {INT32_MIN, INT32_MAX - 1}) {
    Array array(VT_UI1, {{2, lower}});
    uint8_t value = 5;
    LONG index = lower + 1;
    EXPECT_EQ(SafeArrayPutElement(array, &index, &value), S_OK);
    EXPECT_EQ(array.Data<uint8_t>()[1], 5);
    index = -1;
    EXPECT_EQ(SafeArrayPutElement(array, &index, &value), DISP_E_BADINDEX);
  }
}

TEST(SafeArray, ElementsAreZeroedAtFirst) {
  Array numbers(VT_R8, 3);
  const double zeros[3] = {};
  EXPECT_EQ(std::memcmp(numbers.Data<double>(), zeros, sizeof zeros), 0);
  Array texts(VT_BSTR, 1);
  EXPECT_EQ(texts.Data<BSTR>()[0], nullptr);
  Array values(VT_VARIANT, 1);
  EXPECT_EQ(values.Data<VARIANT>()[0].vt, VT_EMPTY);
}

TEST(SafeArray, DimensionWithoutElementsHasNoIndex) {
  Array array(VT_I4, {{0, 1}, {2, 1}});
  LONG upper = 77;
  EXPECT_EQ(SafeArrayGetUBound(array, 1, &upper), S_OK);
  EXPECT_EQ(upper, 0);
  LONG indices[2] = {1, 1};
  LONG value = 5;
  EXPECT_EQ(SafeArrayPutElement(array, indices, &value), DISP_E_BADINDEX);
}

TEST(SafeArray, SafeArrayCreateVector_IsOneDimension) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 5, 3);
  EXPECT_EQ(SafeArrayGetDim(array), 1u);
  LONG lower = 0;
  LONG upper = 0;
  EXPECT_EQ(SafeArrayGetLBound(array, 1, &lower), S_OK);
  EXPECT_EQ(SafeArrayGetUBound(array, 1, &upper), S_OK);
  EXPECT_EQ(lower, 5);
  EXPECT_EQ(upper, 7);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, PutCopiesTextAndReleasesTheOld) {
  Array array(VT_BSTR, 2);
  EXPECT_EQ(PutText(array, 1, OLESTR("old")), S_OK);
  const Text units(OLESTR("a\0b"), 3);
  EXPECT_EQ(PutText(array, 1, units), S_OK);
  EXPECT_EQ(GetText(array, 1), units);
  EXPECT_EQ(array.Data<BSTR>()[0], nullptr);
}

TEST(SafeArray, GetHandsOutACopyOfTheText) {
  Array array(VT_BSTR, 1);
  EXPECT_EQ(PutText(array, 0, OLESTR("text")), S_OK);
  LONG index = 0;
  BSTR text = nullptr;
  EXPECT_EQ(SafeArrayGetElement(array, &index, &text), S_OK);
  EXPECT_NE(text, array.Data<BSTR>()[0]);
  text[0] = 'T';
  SysFreeString(text);
  EXPECT_EQ(GetText(array, 0), OLESTR("text"));
}

TEST(SafeArray, PutKeepsAnOddByteLength) {
  Array array(VT_BSTR, 1);
  BSTR text = SysAllocStringByteLen("abc", 3);
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(array, &index, text), S_OK);
  SysFreeString(text);
  EXPECT_EQ(SysStringByteLen(array.Data<BSTR>()[0]), 3u);
  EXPECT_EQ(std::memcmp(array.Data<BSTR>()[0], "abc", 3), 0);
}

TEST(SafeArray, PutAndGetCopyValues) {
  Array array(VT_VARIANT, 1);
  Value old(OLESTR("old"));
  Value text(OLESTR("text"));
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(array, &index, &old), S_OK);
  EXPECT_EQ(SafeArrayPutElement(array, &index, &text), S_OK);
  Value got;
  EXPECT_EQ(SafeArrayGetElement(array, &index, &got), S_OK);
  EXPECT_EQ(got.vt, VT_BSTR);
  EXPECT_NE(got.bstrVal, array.Data<VARIANT>()[0].bstrVal);
  EXPECT_NE(got.bstrVal, text.bstrVal);
  EXPECT_EQ(TextOf(got.bstrVal), OLESTR("text"));
}

TEST(SafeArray, PutReadsNoMoreThanTheElement) {
  Array array(VT_I2, 2);
  const uint8_t bytes[2] = {0x34, 0x12};
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(array, &index, const_cast<uint8_t*>(bytes)), S_OK);
  EXPECT_EQ(array.Data<int16_t>()[0], 0x1234);
  EXPECT_EQ(array.Data<int16_t>()[1], 0);
}

TEST(SafeArray, PutAndGetWorkOnALockedArray) {
  Array array(VT_BSTR, 1);
  EXPECT_EQ(SafeArrayLock(array), S_OK);
  EXPECT_EQ(PutText(array, 0, OLESTR("text")), S_OK);
  EXPECT_EQ(GetText(array, 0), OLESTR("text"));
  EXPECT_EQ(SafeArrayUnlock(array), S_OK);
}

TEST(SafeArray, DestroyRefusesALockedArray) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 1);
  void* data = nullptr;
  EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
  EXPECT_EQ(SafeArrayLock(array), S_OK);
  EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
  EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(SafeArrayUnlock(array), S_OK);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, UnlockOfAnUnlockedArrayIsUnexpected) {
  Array array(VT_I4, 1);
  EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
  EXPECT_EQ(SafeArrayUnaccessData(array), E_UNEXPECTED);
  EXPECT_EQ(SafeArrayLock(array), S_OK);
  EXPECT_EQ(SafeArrayUnlock(array), S_OK);
}

TEST(SafeArray, DestroyOfNullIsDone) {
  EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
}

TEST(SafeArray, SizesOfNullAreZero) {
  EXPECT_EQ(SafeArrayGetDim(nullptr), 0u);
  EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0u);
}

TEST(SafeArray, NullArraysAreInvalid) {
  LONG index = 0;
  LONG bound = 0;
  VARTYPE type = 0;
  void* data = nullptr;
  EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &bound), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetUBound(nullptr, 1, &bound), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetVartype(nullptr, &type), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetElement(nullptr, &index, &bound), E_INVALIDARG);
  EXPECT_EQ(SafeArrayPutElement(nullptr, &index, &bound), E_INVALIDARG);
  EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
  EXPECT_EQ(SafeArrayUnaccessData(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
}

TEST(SafeArray, CreateRefusesNoDimensionsAndNoBounds) {
  SAFEARRAYBOUND bound = {1, 0};
  EXPECT_EQ(SafeArrayCreate(VT_I4, 0, &bound), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_I4, 1, nullptr), nullptr);
}

// The system has more element types, other limits and failures of its own, and need not take null for an out
// pointer.

TEST(SafeArray, CreateRefusesOtherElementTypes) {
  for (const int type : {VT_EMPTY + 0, VT_NULL + 0, VT_DISPATCH + 0, VT_UNKNOWN + 0, 15, 24, VT_ARRAY | VT_I4,
                         VT_BYREF | VT_I4}) {
    EXPECT_EQ(SafeArrayCreateVector(static_cast<VARTYPE>(type), 0, 1), nullptr) << type;
  }
}

TEST(SafeArray, CreateRefusesSizesThatOverflow) {
  SAFEARRAYBOUND square[2] = {{0x10000, 0}, {0x10000, 0}};
  EXPECT_EQ(SafeArrayCreate(VT_UI1, 2, square), nullptr);
  EXPECT_EQ(SafeArrayCreate(VT_VARIANT, 2, square), nullptr);
  EXPECT_EQ(SafeArrayCreateVector(VT_VARIANT, 0, 0x10000000), nullptr);
  EXPECT_EQ(SafeArrayCreateVector(VT_R8, 0, 0x20000000), nullptr);
  SAFEARRAYBOUND wraps[3] = {{0x40000000, 0}, {0x40000000, 0}, {16, 0}};
  EXPECT_EQ(SafeArrayCreate(VT_VARIANT, 3, wraps), nullptr);
}

TEST(SafeArray, CreateRefusesAnUpperBoundThatIsNoLong) {
  EXPECT_EQ(SafeArrayCreateVector(VT_UI1, INT32_MAX, 2), nullptr);
  EXPECT_EQ(SafeArrayCreateVector(VT_UI1, 1, 0x80000000u), nullptr);
}

TEST(SafeArray, DimensionsGoUpTo64) {
  std::vector<SAFEARRAYBOUND> bounds(65, SAFEARRAYBOUND{1, 7});
  SAFEARRAY* array = SafeArrayCreate(VT_I4, 64, bounds.data());
  ASSERT_NE(array, nullptr);
  std::vector<LONG> indices(64, 7);
  LONG value = 9;
  EXPECT_EQ(SafeArrayPutElement(array, indices.data(), &value), S_OK);
  indices[63] = 8;
  EXPECT_EQ(SafeArrayPutElement(array, indices.data(), &value), DISP_E_BADINDEX);
  EXPECT_EQ(SafeArrayDestroy(array), S_OK);
  EXPECT_EQ(SafeArrayCreate(VT_I4, 65, bounds.data()), nullptr);
}

TEST(SafeArray, WholeSheetOfValuesCanBeHad) {
  Array array(VT_VARIANT, {{65536, 1}, {256, 1}});
  Value value(1.5);
  LONG last[2] = {65536, 256};
  EXPECT_EQ(SafeArrayPutElement(array, last, &value), S_OK);
  EXPECT_EQ(array.Data<VARIANT>()[65536 * 256 - 1].dblVal, 1.5);
}

TEST(SafeArray, NullPointersAreInvalid) {
  Array array(VT_I4, 1);
  LONG index = 0;
  LONG value = 0;
  EXPECT_EQ(SafeArrayGetLBound(array, 1, nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetUBound(array, 1, nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetVartype(array, nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetElement(array, nullptr, &value), E_INVALIDARG);
  EXPECT_EQ(SafeArrayGetElement(array, &index, nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayPutElement(array, nullptr, &value), E_INVALIDARG);
  EXPECT_EQ(SafeArrayPutElement(array, &index, nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayAccessData(array, nullptr), E_INVALIDARG);
  EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
}

TEST(SafeArray, PutOfNullTextStoresNullAndGetGivesIt) {
  Array array(VT_BSTR, 1);
  EXPECT_EQ(PutText(array, 0, OLESTR("old")), S_OK);
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
  BSTR text = array.Data<BSTR>()[0];
  EXPECT_EQ(text, nullptr);
  OLECHAR unit = 0;
  text = &unit;
  EXPECT_EQ(SafeArrayGetElement(array, &index, &text), S_OK);
  EXPECT_EQ(text, nullptr);
}

TEST(SafeArray, GetOverwritesWithoutReleasing) {
  Array array(VT_VARIANT, 1);
  VARIANT raw;
  std::memset(&raw, 0xCC, sizeof raw);
  LONG index = 0;
  EXPECT_EQ(SafeArrayGetElement(array, &index, &raw), S_OK);
  EXPECT_EQ(raw.vt, VT_EMPTY);
}

TEST(SafeArray, PutOfTextThatCannotBeCopiedKeepsTheOld) {
  Array array(VT_BSTR, 1);
  EXPECT_EQ(PutText(array, 0, OLESTR("old")), S_OK);
  testing::UncopyableText text;
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(array, &index, text.Get()), E_OUTOFMEMORY);
  EXPECT_EQ(GetText(array, 0), OLESTR("old"));
}

TEST(SafeArray, PutOfAValueThatCannotBeCopiedKeepsTheOld) {
  Array array(VT_VARIANT, 1);
  Value old(OLESTR("old"));
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(array, &index, &old), S_OK);
  testing::UncopyableText text;
  VARIANT value = {};
  value.vt = VT_BSTR;
  value.bstrVal = text.Get();
  EXPECT_EQ(SafeArrayPutElement(array, &index, &value), E_OUTOFMEMORY);
  value.vt = 15;
  EXPECT_EQ(SafeArrayPutElement(array, &index, &value), DISP_E_BADVARTYPE);
  EXPECT_EQ(TextOf(array.Data<VARIANT>()[0].bstrVal), OLESTR("old"));
}

TEST(SafeArray, GetOfWhatCannotBeCopiedGivesNothing) {
  testing::UncopyableText text;
  Array texts(VT_BSTR, 1);
  texts.Data<BSTR>()[0] = text.Get();
  LONG index = 0;
  BSTR got = text.Get();
  EXPECT_EQ(SafeArrayGetElement(texts, &index, &got), E_OUTOFMEMORY);
  EXPECT_EQ(got, nullptr);
  texts.Data<BSTR>()[0] = nullptr;
  Array values(VT_VARIANT, 1);
  values.Data<VARIANT>()[0].vt = 15;
  Value value(1.5);
  EXPECT_EQ(SafeArrayGetElement(values, &index, &value), DISP_E_BADVARTYPE);
  EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(SafeArray, PutOfAnElementIntoItselfChangesNothing) {
  Array array(VT_VARIANT, 1);
  Value text(OLESTR("text"));
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(array, &index, &text), S_OK);
  EXPECT_EQ(SafeArrayPutElement(array, &index, array.Data<VARIANT>()), S_OK);
  EXPECT_EQ(TextOf(array.Data<VARIANT>()[0].bstrVal), OLESTR("text"));
}

TEST(SafeArray, PutOverALockedArrayIsRefused) {
  Array array(VT_VARIANT, 1);
  VARIANT* element = array.Data<VARIANT>();
  element->parray = SafeArrayCreateVector(VT_I4, 0, 1);
  element->vt = VT_ARRAY | VT_I4;
  SafeArrayLock(element->parray);
  Value text(OLESTR("text"));
  LONG index = 0;
  EXPECT_EQ(SafeArrayPutElement(array, &index, &text), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(element->vt, VT_ARRAY | VT_I4);
  EXPECT_EQ(SafeArrayUnlock(element->parray), S_OK);
}

TEST(SafeArray, LocksAreCountedUpTo65535) {
  Array array(VT_I4, 1);
  for (int i = 0; i < 65535; ++i) ASSERT_EQ(SafeArrayLock(array), S_OK);
  void* data = array;
  EXPECT_EQ(SafeArrayLock(array), E_UNEXPECTED);
  EXPECT_EQ(SafeArrayAccessData(array, &data), E_UNEXPECTED);
  for (int i = 0; i < 65535; ++i) ASSERT_EQ(SafeArrayUnlock(array), S_OK);
  EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
}

}  // namespace
}  // namespace tolvenar
