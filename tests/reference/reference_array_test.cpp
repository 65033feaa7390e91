// The shape of a caller's array, and elements as plain bytes.
#include "reference/reference_array.h"

#include <gtest/gtest.h>

#include "support/test_array.h"

namespace tolvenar {
namespace {

using testing::TestArray;

TEST(ReferenceArrayTest, Vector_FitsWithItsExactBoundsOnly) {
  TestArray array(VT_I4, 2, 5);
  EXPECT_EQ(CheckRefVector(array.Get(), 2, 5), kRefArrayFits);
  EXPECT_EQ(CheckRefVector(array.Get(), 1, 5), kRefWrongBounds);
  EXPECT_EQ(CheckRefVector(array.Get(), 2, 6), kRefWrongBounds);
}

TEST(ReferenceArrayTest, OtherNumberOfDimensions_ComesBeforeTheBounds) {
  TestArray array(VT_I4, 1, 2, 1, 2);
  EXPECT_EQ(CheckRefVector(array.Get(), 1, 9), kRefWrongDimensions);
  EXPECT_EQ(CheckRefVector(nullptr, 1, 2), kRefWrongDimensions);
}

TEST(ReferenceArrayTest, EachDimension_IsComparedWithItsOwnRange) {
  SAFEARRAYBOUND bounds[4] = {{2, 1}, {3, 1}, {4, 1}, {5, 1}};
  SAFEARRAY* array = SafeArrayCreate(VT_I4, 4, bounds);
  const IndexRange fits[4] = {{1, 2}, {1, 3}, {1, 4}, {1, 5}};
  const IndexRange differs[4] = {{1, 2}, {1, 3}, {1, 4}, {1, 6}};
  EXPECT_EQ(CheckRefArray(array, fits, 4), kRefArrayFits);
  EXPECT_EQ(CheckRefArray(array, differs, 4), kRefWrongBounds);
  SafeArrayDestroy(array);
}

TEST(ReferenceArrayTest, NarrowElement_IsFilledUpWithZeroBytes) {
  TestArray array(VT_I2, 1, 1);
  LONG index = 1;
  const int16_t value = -2;
  platform::PutBytes(array.Get(), &index, &value, sizeof value);
  uint32_t got = 0xAAAAAAAA;
  platform::GetBytes(array.Get(), &index, &got, sizeof got);
  EXPECT_EQ(got, 0x0000FFFEu);
}

TEST(ReferenceArrayTest, TextsValuesAndIndicesOutside_ReadAsZero) {
  TestArray texts(VT_BSTR, 1, 1);
  TestArray numbers(VT_I4, 1, 1);
  LONG index = 1;
  uint32_t got = 7;
  platform::GetBytes(texts.Get(), &index, &got, sizeof got);
  EXPECT_EQ(got, 0u);
  index = 2;
  got = 7;
  platform::GetBytes(numbers.Get(), &index, &got, sizeof got);
  EXPECT_EQ(got, 0u);
  got = 7;
  platform::GetBytes(nullptr, &index, &got, sizeof got);
  EXPECT_EQ(got, 0u);
}

}  // namespace
}  // namespace tolvenar
