// Arrays as they are looked at: which one a variable names, its bounds, and an element as plain bytes.
#include "platform/array_get.h"

#include <gtest/gtest.h>

#include "support/automation_values.h"

namespace tolvenar::platform {
namespace {

using testing::Array;
using testing::NewBstr;

// The first `count` bytes of an element, as they come out over bytes that were there before.
uint64_t BytesOfElement(SAFEARRAY* array, LONG index, uint32_t count) {
  uint64_t bytes = 0xEEEEEEEEEEEEEEEE;
  GetBytes(array, &index, &bytes, count);
  return bytes;
}

TEST(ArrayGet, ArrayAt_IsTheOneThatTheVariableNames) {
  Array array(VT_I4, 1);
  SAFEARRAY* named = array;
  SAFEARRAY* none = nullptr;
  EXPECT_EQ(ArrayAt(&named), named);
  EXPECT_EQ(ArrayAt(&none), nullptr);
  EXPECT_EQ(ArrayAt(nullptr), nullptr);
}

TEST(ArrayGet, ArrayAt_AnArrayOfMoreDimensionsThanIndices_CountsAsNone) {
  Array array(VT_I4, {{1, 0}, {1, 0}});
  SAFEARRAY* named = array;
  EXPECT_EQ(ArrayAt(&named, 1), nullptr);
  EXPECT_EQ(ArrayAt(&named, 2), named);
  EXPECT_EQ(ArrayAt(&named, 3), named);
  EXPECT_EQ(ArrayAt(nullptr, 1), nullptr);
}

TEST(ArrayGet, HasBounds_AreBothExact) {
  Array array(VT_I4, {{3, -1}, {2, 5}});
  EXPECT_TRUE(HasBounds(array, 1, -1, 1));
  EXPECT_TRUE(HasBounds(array, 2, 5, 6));
  EXPECT_FALSE(HasBounds(array, 1, -2, 1));
  EXPECT_FALSE(HasBounds(array, 1, 0, 1));
  EXPECT_FALSE(HasBounds(array, 1, -1, 0));
  EXPECT_FALSE(HasBounds(array, 1, -1, 2));
}

TEST(ArrayGet, HasBounds_OfADimensionThatIsNotThere_AreNone) {
  Array array(VT_I4, {{1, 0}});
  EXPECT_FALSE(HasBounds(array, 0, 0, 0));
  EXPECT_FALSE(HasBounds(array, 2, 0, 0));
  EXPECT_FALSE(HasBounds(nullptr, 1, 0, 0));
}

TEST(ArrayGet, GetBytes_NarrowElementsHaveZerosBehind) {
  Array bytes(VT_UI1, 2), words(VT_I2, 2), longs(VT_I4, 2);
  for (uint8_t i = 0; i < 2; ++i) bytes.Data<uint8_t>()[i] = static_cast<uint8_t>(0x81 + i);
  words.Data<int16_t>()[1] = -2;
  longs.Data<int32_t>()[1] = -2;
  EXPECT_EQ(BytesOfElement(bytes, 0, 8), 0x81u);
  EXPECT_EQ(BytesOfElement(bytes, 1, 8), 0x82u);
  EXPECT_EQ(BytesOfElement(words, 1, 8), 0xFFFEu);
  EXPECT_EQ(BytesOfElement(longs, 1, 8), 0xFFFFFFFEu);
}

TEST(ArrayGet, GetBytes_GivesAsManyAsAreAskedFor) {
  Array doubles(VT_R8, 1);
  doubles.Data<uint64_t>()[0] = 0x1122334455667788;
  EXPECT_EQ(BytesOfElement(doubles, 0, 8), 0x1122334455667788u);
  EXPECT_EQ(BytesOfElement(doubles, 0, 2), 0xEEEEEEEEEEEE7788u);
}

TEST(ArrayGet, GetBytes_WithoutAnElement_GivesZeros) {
  Array longs(VT_I4, 1);
  longs.Data<int32_t>()[0] = -1;
  EXPECT_EQ(BytesOfElement(nullptr, 0, 8), 0u);
  EXPECT_EQ(BytesOfElement(longs, 1, 8), 0u);
  EXPECT_EQ(BytesOfElement(longs, -1, 4), 0xEEEEEEEE00000000u);
}

// A text or a value would come out as a copy that nobody releases: the sanitized build tells of it.
TEST(ArrayGet, GetBytes_TextsAndValuesHaveNoPlainBytes) {
  Array texts(VT_BSTR, 1), values(VT_VARIANT, 1), longs(VT_I4, 1);
  texts.Data<BSTR>()[0] = NewBstr(OLESTR("text"));
  values.Data<VARIANT>()[0].vt = VT_BSTR;
  values.Data<VARIANT>()[0].bstrVal = NewBstr(OLESTR("value"));
  EXPECT_EQ(BytesOfElement(texts, 0, 8), 0u);
  EXPECT_EQ(BytesOfElement(values, 0, 8), 0u);
  EXPECT_FALSE(HasPlainElements(texts));
  EXPECT_FALSE(HasPlainElements(values));
  EXPECT_TRUE(HasPlainElements(longs));
}

}  // namespace
}  // namespace tolvenar::platform
