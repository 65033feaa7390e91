// The widths that hosts count on, which are the same on every platform: handles of 32 bits, VARIANTs of 16
// bytes, 16-bit text units, and the 32-bit entries of a SheetTable.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "tolvenar/tolvenar.h"

namespace {

using tolvenar::testing::kWorksheet;
using tolvenar::testing::StreamBuilder;
using Sizes = tolvenar::testing::PoolTest;

int32_t EntryOf(uint32_t table, uint32_t index) {
  int32_t entry = 0;
  std::memcpy(&entry, reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(table)) + 4 * index, 4);
  return entry;
}

TEST_F(Sizes, HandlesAre4Bytes) {
  EXPECT_EQ(sizeof(MEMORYALLOC(0)), 4u);
  EXPECT_TRUE((std::is_same_v<decltype(MEMORYREALLOC(0, 0)), uint32_t>));
  EXPECT_TRUE((std::is_invocable_v<decltype(XLLocateSheets), uint32_t, uint32_t*, uint32_t>));
}

TEST_F(Sizes, AHandleWidenedIsTheBlocksAddress) {
  const uint32_t handle = MEMORYALLOC(4);
  uint8_t* block = reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(handle));
  block[3] = 77;
  uint32_t variable = handle;
  EXPECT_EQ(MEMORYGET(&variable, 4, 3), 77u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(block), handle);
}

TEST_F(Sizes, AVariantIs16BytesWithItsValueAt8) {
  EXPECT_EQ(sizeof(VARIANT), 16u);
  EXPECT_EQ(offsetof(VARIANT, vt), 0u);
  EXPECT_EQ(offsetof(VARIANT, dblVal), 8u);
  EXPECT_EQ(offsetof(VARIANT, bstrVal), 8u);
  EXPECT_EQ(sizeof(VARTYPE), 2u);
  EXPECT_EQ(sizeof(VARIANT_BOOL), 2u);
  EXPECT_EQ(sizeof(DATE), 8u);
  EXPECT_EQ(sizeof(CY), 8u);
}

TEST_F(Sizes, ResultsAndBoundsAre32Bits) {
  EXPECT_EQ(sizeof(HRESULT), 4u);
  EXPECT_EQ(sizeof(LONG), 4u);
  EXPECT_EQ(sizeof(ULONG), 4u);
  EXPECT_EQ(sizeof(UINT), 4u);
  EXPECT_EQ(sizeof(SAFEARRAYBOUND), 8u);
}

TEST_F(Sizes, ABstrHasItsByteLengthInFrontAndAZeroUnitBehind) {
  EXPECT_EQ(sizeof(OLECHAR), 2u);
  BSTR text = SysAllocStringByteLen("abc", 3);
  uint32_t length = 0;
  std::memcpy(&length, reinterpret_cast<const uint8_t*>(text) - 4, 4);
  EXPECT_EQ(length, 3u);
  EXPECT_EQ(std::memcmp(text, "abc\0\0", 5), 0);
  SysFreeString(text);
}

TEST_F(Sizes, ASheetTableHasThreeMoreI32EntriesThanSheets) {
  const StreamBuilder builder =
      StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof().Bof(6, kWorksheet).Eof().Bof(6, kWorksheet).Eof();
  uint32_t size = 0;
  const uint32_t buffer = builder.Load(&size);
  uint32_t table = 0;
  ASSERT_EQ(XLLocateSheets(buffer, &table, size), 0);
  EXPECT_EQ(MEMORYSIZE(table), 5u * 4);
  EXPECT_EQ(EntryOf(table, 0), 2);
  EXPECT_EQ(EntryOf(table, 1), 0);
  EXPECT_EQ(EntryOf(table, 4), static_cast<int32_t>(builder.Last()));
}

}  // namespace
