// MakeDefaultRecord: every record byte for byte against its description, and everything that is not served.
#include "workbook/default_records.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "foundation/biff_records.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "workbook/biff_version.h"
#include "workbook/described_records.h"

namespace tolvenar::testing {
namespace {

constexpr uint32_t kUntouched = 0xDEADBEEF;

// Bytes of "E4 04 vv"; blanks separate, vv is the variant.
Bytes FromHex(const char* text, uint8_t variant) {
  Bytes bytes;
  for (const char* p = text; *p != 0; p += *p == ' ' ? 1 : 2) {
    if (*p == ' ') continue;
    bytes.push_back(*p == 'v' ? variant : static_cast<uint8_t>(std::stoi(std::string(p, 2), nullptr, 16)));
  }
  return bytes;
}

Bytes RecordOf(uint16_t type, const Bytes& payload) {
  return U16(type) + U16(static_cast<uint16_t>(payload.size())) + payload;
}

class DefaultRecordTest : public PoolTest {
 protected:
  void TearDown() override {
    BiffVersion = 0;
    PoolTest::TearDown();
  }

  // The whole block that is served; nothing when there is none. The pool is as before after it.
  static Bytes Served(int16_t key, uint32_t variant) {
    uint32_t size = kUntouched;
    uint32_t record = MakeDefaultRecord(&size, key, variant);
    if (record == 0) {
      EXPECT_EQ(size, kUntouched) << key;
      EXPECT_EQ(LiveBlocks(), 0u) << key;
      return {};
    }
    EXPECT_EQ(MEMORYSIZE(record), size) << key;
    const Bytes bytes = BlockContents(record, size);
    MEMORYFREE(&record);
    return bytes;
  }

  // Whether a description covers the key and variant in the generation of BiffVersion.
  static bool IsDescribed(int16_t key, uint8_t variant) {
    const int generation = BiffVersion == kBiff5 ? k5 : k6;
    for (const DescribedRecord& row : kDescribedRecords) {
      const bool fits = row.variant == kAny || row.variant == variant;
      if (row.key == key && fits && (row.generations & generation) != 0) return true;
    }
    if (key == kKeyFormat) return variant <= 8;
    if (key == kKeyWriteAccess || key == kKeyPalette) return true;
    return BiffVersion == kBiff8 && (key == kKeyInterfaceHdr || key == kKeyInterfacePayload);
  }
};

TEST_F(DefaultRecordTest, EveryRecordIsServedAsDescribed) {
  for (const DescribedRecord& row : kDescribedRecords) {
    for (int32_t version : {kBiff5, kBiff8}) {
      BiffVersion = version;
      if ((row.generations & (version == kBiff5 ? k5 : k6)) == 0) continue;
      const uint8_t variant = static_cast<uint8_t>(row.variant == kAny ? 0x5A : row.variant);
      const Bytes expected = RecordOf(row.type, FromHex(row.payload, variant));
      const std::string label = std::string(row.label) + " BIFF" + std::to_string(version);
      EXPECT_EQ(expected.size(), row.size) << label;
      EXPECT_EQ(Hex(Served(row.key, variant)), Hex(expected)) << label << " variant " << int{variant};
    }
  }
}

TEST_F(DefaultRecordTest, FormatsBiff5) {
  BiffVersion = kBiff5;
  for (uint32_t variant = 0; variant < 9; ++variant) {
    const DescribedFormat& format = kDescribedFormats[variant];
    const Bytes text = Text(format.text);
    EXPECT_EQ(text.size(), format.characters);
    const Bytes served = Served(30, variant);
    EXPECT_EQ(served.size(), format.size_biff5);
    EXPECT_EQ(Hex(served),
              Hex(RecordOf(0x041E, U16(format.index) + Bytes{static_cast<uint8_t>(text.size())} + text)));
  }
}

TEST_F(DefaultRecordTest, FormatsBiff8) {
  BiffVersion = kBiff8;
  for (uint32_t variant = 0; variant < 9; ++variant) {
    const DescribedFormat& format = kDescribedFormats[variant];
    Bytes text = Text(format.text);
    if (variant == 2) {
      text = FromHex("22 24 22 23 2C 23 23 30 2E 30 30 5F 29 3B 23 28 22 24 22 00 2C 23 23 30 2E 30 30 5C 29",
                     0);
    }
    const Bytes served = Served(30, variant);
    EXPECT_EQ(served.size(), format.size_biff8);
    EXPECT_EQ(Hex(served), Hex(RecordOf(0x041E, U16(format.index) + U16(static_cast<uint16_t>(text.size())) +
                                                    Bytes{0} + text)));
  }
}

TEST_F(DefaultRecordTest, WriteAccessBiff5) {
  BiffVersion = kBiff5;
  EXPECT_EQ(Served(92, 0), RecordOf(0x005C, Bytes{4} + Text("zovi") + Bytes(27, ' ')));
  EXPECT_EQ(Served(92, 0).size(), 36u);
}

TEST_F(DefaultRecordTest, WriteAccessBiff8) {
  BiffVersion = kBiff8;
  EXPECT_EQ(Served(92, 0), RecordOf(0x005C, U16(6) + Bytes{0} + Text("Torvek") + Bytes(103, ' ')));
  EXPECT_EQ(Served(92, 0).size(), 116u);
}

TEST_F(DefaultRecordTest, InterfaceHdrBiff8_PromisesTwoBytesThatAreABlockOfTheirOwn) {
  BiffVersion = kBiff8;
  EXPECT_EQ(Served(225, 0), (Bytes{0xE1, 0x00, 0x02, 0x00}));
  EXPECT_EQ(Served(176, 0), (Bytes{0xB0, 0x04}));
  BiffVersion = kBiff5;
  EXPECT_TRUE(Served(176, 0).empty());
}

// 56 colours as they are written down: red, green, blue.
constexpr const char* kColours =
    "000000 FFFFFF FF0000 00FF00 0000FF FFFF00 FF00FF 00FFFF 800000 008000 000080 808000 800080 008080 "
    "C0C0C0 808080 404040 804000 C00000 00C000 0000C0 C0C000 C000C0 00C0C0 800040 400080 400000 004000 "
    "000040 404000 400040 004040 004080 008040 FF8080 80FF80 8080FF FFFF80 FF80FF 80FFFF C04040 408000 "
    "FF8000 80FF00 8000FF C04000 40C000 4000C0 C02020 2020C0 FF0080 00FF80 0080FF C00040 000040 0040C0";

Bytes PaletteOf(const char* colours) {
  const Bytes rgb = FromHex(colours, 0);
  Bytes payload = U16(56);
  for (size_t i = 0; i + 2 < rgb.size(); i += 3) {
    payload = payload + Bytes{rgb[i], rgb[i + 1], rgb[i + 2], 0};
  }
  return RecordOf(0x0092, payload);
}

TEST_F(DefaultRecordTest, PaletteBiff5_AnyVariant) {
  BiffVersion = kBiff5;
  for (uint32_t variant : {0u, 1u, 255u}) EXPECT_EQ(Hex(Served(146, variant)), Hex(PaletteOf(kColours)));
  EXPECT_EQ(Served(146, 0).size(), 230u);
}

TEST_F(DefaultRecordTest, PaletteBiff8_DiffersInSixColours) {
  BiffVersion = kBiff8;
  std::string colours = kColours;
  colours.replace(0, 8 * 7 - 1, "000000 00FFFF FF00FF 000000 00FF00 000000 FF00FF FF0000");
  EXPECT_EQ(Hex(Served(146, 9)), Hex(PaletteOf(colours.c_str())));
}

TEST_F(DefaultRecordTest, AnythingElse_GivesNullAndTouchesNothing) {
  for (int32_t version : {kBiff5, kBiff8}) {
    BiffVersion = version;
    for (int32_t key = INT16_MIN; key <= INT16_MAX; ++key) {
      for (uint32_t variant : {0u, 1u, 4u, 5u, 6u, 8u, 9u, 21u, 22u, 255u}) {
        const int16_t k = static_cast<int16_t>(key);
        const bool described = IsDescribed(k, static_cast<uint8_t>(variant));
        ASSERT_EQ(!Served(k, variant).empty(), described) << key << " variant " << variant;
      }
    }
  }
}

TEST_F(DefaultRecordTest, EveryVariantOfTheKeysThatHaveThem) {
  for (int32_t version : {kBiff5, kBiff8}) {
    BiffVersion = version;
    for (int16_t key : {int16_t{30}, int16_t{49}, int16_t{147}, int16_t{224}}) {
      for (uint32_t variant = 0; variant < 256; ++variant) {
        const bool described = IsDescribed(key, static_cast<uint8_t>(variant));
        EXPECT_EQ(!Served(key, variant).empty(), described) << key << " variant " << variant;
      }
    }
  }
}

TEST_F(DefaultRecordTest, Format_VariantNine_GivesNullAndLeavesTheSize) {
  BiffVersion = kBiff5;
  uint32_t size = 77;
  EXPECT_EQ(MakeDefaultRecord(&size, 30, 9), 0u);
  EXPECT_EQ(size, 77u);
}

TEST_F(DefaultRecordTest, Font_VariantFour_IsVariantZeroInBiff5AndNothingInBiff8) {
  BiffVersion = kBiff5;
  EXPECT_EQ(Served(49, 4), Served(49, 0));
  EXPECT_FALSE(Served(49, 4).empty());
  BiffVersion = kBiff8;
  EXPECT_TRUE(Served(49, 4).empty());
}

TEST_F(DefaultRecordTest, OnlyTheLowByteOfTheVariantCounts) {
  BiffVersion = kBiff5;
  EXPECT_EQ(Served(49, 256 + 2), Served(49, 2));
  EXPECT_EQ(Served(62, 0xFFFFFF06), Served(62, 6));
  EXPECT_NE(Served(49, 2), Served(49, 1));
}

TEST_F(DefaultRecordTest, PoolRefuses_NoTraceEither) {
  BiffVersion = kBiff5;
  for (int i = 0; i < kSlotCount; ++i) ASSERT_NE(MEMORYALLOC(1), 0u);
  for (int16_t key : {int16_t{10}, int16_t{30}, int16_t{92}, int16_t{146}, int16_t{224}}) {
    uint32_t size = kUntouched;
    EXPECT_EQ(MakeDefaultRecord(&size, key, 0), 0u);
    EXPECT_EQ(size, kUntouched);
  }
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_F(DefaultRecordTest, NoGenerationYet_ServesNothing) {
  for (int32_t version : {0, 4, 7, -1}) {
    BiffVersion = version;
    EXPECT_TRUE(Served(10, 0).empty());
    EXPECT_TRUE(Served(92, 0).empty());
  }
}

TEST_F(DefaultRecordTest, ServedBlockIsZeroedOverAnEarlierTenant) {
  BiffVersion = kBiff5;
  uint32_t tenant = MEMORYALLOC(256);
  MEMORYSET1(&tenant, 256, 0xEE);
  MEMORYFREE(&tenant);
  EXPECT_EQ(Hex(Served(62, 0)), "3E 02 0A 00 B6 00 00 00 00 00 00 00 00 00 ");
}

}  // namespace
}  // namespace tolvenar::testing
