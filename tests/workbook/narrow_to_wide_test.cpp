// NarrowToWide: sign extension, the 16-bit length, and names that can't be had.
#include "workbook/narrow_to_wide.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/allocation_faults.h"

namespace tolvenar::testing {
namespace {

std::vector<uint32_t> Units(const WideName& wide) {
  std::vector<uint32_t> units;
  for (size_t i = 0; wide[i] != 0; ++i) units.push_back(static_cast<uint16_t>(wide[i]));
  return units;
}

TEST(NarrowToWide, PlainLetters_BecomeUnitsOfTheSameValue) {
  EXPECT_EQ(Units(NarrowToWide("Book")), (std::vector<uint32_t>{0x42, 0x6F, 0x6F, 0x6B}));
}

TEST(NarrowToWide, BytesFrom0x80Up_AreSignExtended) {
  EXPECT_EQ(Units(NarrowToWide("\x7F\x80\xC3\xA4\xFF")),
            (std::vector<uint32_t>{0x7F, 0xFF80, 0xFFC3, 0xFFA4, 0xFFFF}));
}

TEST(NarrowToWide, EmptyName_IsATerminatorAlone) {
  const WideName wide = NarrowToWide("");
  ASSERT_NE(wide, nullptr);
  EXPECT_EQ(wide[0], 0);
}

TEST(NarrowToWide, LengthKeepsItsLow16Bits) {
  EXPECT_EQ(Units(NarrowToWide(std::string(65535, 'x').c_str())).size(), 65535u);
  EXPECT_EQ(Units(NarrowToWide(std::string(65536, 'x').c_str())).size(), 0u);
  EXPECT_EQ(Units(NarrowToWide(std::string(65539, 'x').c_str())).size(), 3u);
}

TEST(NarrowToWide, NullName_GivesNull) {
  EXPECT_EQ(NarrowToWide(nullptr), nullptr);
}

TEST(NarrowToWide, NoMemory_GivesNull) {
  AllocationFault fault(0);
  EXPECT_EQ(NarrowToWide("Book"), nullptr);
}

}  // namespace
}  // namespace tolvenar::testing
