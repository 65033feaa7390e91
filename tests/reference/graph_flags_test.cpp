// Flag vectors of a graph: bits, spare bytes, set numbers, and every result.
#include "reference/graph_flags.h"

#include "reference/graph_fixture.h"

namespace tolvenar::testing {
namespace {

class GraphFlagsTest : public GraphTest {
 protected:
  // Saves flags, '1' for a set one.
  int16_t Save(const std::string& flags, int16_t set = 1) {
    const int16_t n = static_cast<int16_t>(flags.size());
    TestArray array(VT_I2, 1, n);
    for (int16_t i = 0; i < n; ++i) array.SetNumber(i + 1, 0, flags[static_cast<size_t>(i)] == '1' ? -1 : 0);
    return XLRSaveSelVis(&buffer_, &size_, array.Ref(), 1, n, set);
  }
  // Gets n flags into an array of 7s.
  std::string FlagsOf(int16_t n, uint16_t set = 1) {
    TestArray array(VT_I2, 1, n);
    for (LONG i = 1; i <= n; ++i) array.SetNumber(i, 0, 7);
    EXPECT_EQ(XLRGetSelVis(buffer_, array.Ref(), 1, n, set), 0);
    std::string flags;
    for (LONG i = 1; i <= n; ++i) flags += std::to_string(array.NumberAt(i));
    return flags;
  }
  static Bytes Record(uint8_t set, uint16_t n, const Bytes& flags) {
    return GraphRecord(0xD7, Bytes{set} + U16(n) + flags);
  }
};

TEST(BitsTest, PackBits_SetsABitForEachFlagThatIsNotZero) {
  const uint16_t none[8] = {}, all[8] = {1, 2, 0x100, 0x8000, 0xFFFF, 1, 1, 1};
  const uint16_t some[8] = {0, 0x100, 0, 0, 0, 0, 0, 0xFFFF};
  EXPECT_EQ(PackBits(none), 0);
  EXPECT_EQ(PackBits(all), 0xFF);
  EXPECT_EQ(PackBits(some), 0x82);
}

TEST(BitsTest, ExtractBit_CountsFromTheLowest) {
  std::string bits;
  for (uint32_t k = 0; k < 8; ++k) bits += std::to_string(ExtractBit(0x82, k));
  EXPECT_EQ(bits, "01000001");
}

TEST_P(GraphFlagsTest, SevenFlags_TakeOneByte) {
  EXPECT_EQ(Save("1010011"), 0);
  ExpectContent({0xD7, 0x10, 4, 0, 1, 7, 0, 0x65});
  EXPECT_EQ(FlagsOf(7), "1010011");
}

TEST_P(GraphFlagsTest, EightFlags_TakeTwoBytesTheSecondZero) {
  EXPECT_EQ(Save("11111111"), 0);
  ExpectContent({0xD7, 0x10, 5, 0, 1, 8, 0, 0xFF, 0x00});
  EXPECT_EQ(FlagsOf(8), "11111111");
}

TEST_P(GraphFlagsTest, NineFlags_TakeTwoBytes) {
  EXPECT_EQ(Save("000000011"), 0);
  ExpectContent({0xD7, 0x10, 5, 0, 1, 9, 0, 0x80, 0x01});
  EXPECT_EQ(FlagsOf(9), "000000011");
}

TEST_P(GraphFlagsTest, NoFlags_TakeOneByte) {
  EXPECT_EQ(Save(""), 0);
  ExpectContent({0xD7, 0x10, 4, 0, 1, 0, 0, 0});
  EXPECT_EQ(FlagsOf(0), "");
}

TEST_P(GraphFlagsTest, AFlagIsSet_ByAnyBitOfItsSixteen) {
  TestArray array(VT_I4, 1, 3);
  array.SetNumber(1, 0, 0x0100);
  array.SetNumber(2, 0, 0x10000);  // above the 16 bits that count
  EXPECT_EQ(XLRSaveSelVis(&buffer_, &size_, array.Ref(), 1, 3, 1), 0);
  EXPECT_EQ(FlagsOf(3), "100");
}

TEST_P(GraphFlagsTest, EachSetNumber_HasARecordOfItsOwn) {
  EXPECT_EQ(Save("10", 1), 0);
  EXPECT_EQ(Save("01", 255), 0);
  EXPECT_EQ(Save("11", 1), 0);
  ExpectContent(Record(1, 2, {3}) + Record(255, 2, {2}));
  Compact();
  EXPECT_EQ(FlagsOf(2, 1), "11");
  EXPECT_EQ(FlagsOf(2, 255), "01");
  EXPECT_EQ(FlagsOf(2, 3), "77");
  EXPECT_EQ(FlagsOf(2, 0x101), "77");
}

TEST_P(GraphFlagsTest, AnotherNumberOfFlags_ReplacesTheRecord) {
  EXPECT_EQ(Save("10", 4), 0);
  EXPECT_EQ(Save("0000000000000001", 4), 0);
  ExpectContent(Record(4, 16, {0x00, 0x80, 0x00}));
  EXPECT_EQ(Save("1", 4), 0);
  ExpectContent(Record(4, 1, {1}));
}

TEST_P(GraphFlagsTest, ANumberNotAboveZero_LeavesEverything) {
  EXPECT_EQ(Save("10", 1), 0);
  const Bytes image = Image();
  EXPECT_EQ(Save("01", -1), 0);
  EXPECT_EQ(Save("01", 0), 0);
  EXPECT_EQ(Save("01", -32768), 0);
  EXPECT_EQ(Image(), image);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(GraphFlagsTest, ANumberAbove255_IsStoredByItsLowByteAndNotFoundAgain) {
  EXPECT_EQ(Save("10", 0x101), 0);
  EXPECT_EQ(Save("01", 0x101), 0);
  ExpectContent(Record(1, 2, {1}) + Record(1, 2, {2}));
  EXPECT_EQ(FlagsOf(2, 1), "01");
}

TEST_P(GraphFlagsTest, AGetOfMoreFlags_ReadsOnBehindTheRecord) {
  PutRecords(Record(1, 2, {3}) + Record(2, 2, {0}));
  EXPECT_EQ(FlagsOf(16), "1100000011101011");  // the low type byte 0xD7 of the record behind it
  EXPECT_EQ(FlagsOf(2), "11");
}

TEST_P(GraphFlagsTest, AGetOfManyFlags_EndsInZerosBehindTheBlock) {
  EXPECT_EQ(Save("1"), 0);
  ASSERT_LE(MEMORYALLOCSIZE(buffer_), 1024u);
  const std::string flags = FlagsOf(32767);
  EXPECT_EQ(flags.substr(0, 8), "10000000");
  EXPECT_EQ(flags.substr(8 * 1024).find('1'), std::string::npos);
}

TEST_P(GraphFlagsTest, TheMostFlags_AreStoredAndComeBack) {
  std::string flags(32767, '0');
  for (size_t i = 0; i < flags.size(); i += 3) flags[i] = '1';
  EXPECT_EQ(Save(flags), 0);
  const Bytes content = Content();
  ASSERT_EQ(content.size(), 4095u + 8);
  EXPECT_EQ(Hex(Bytes(content.begin(), content.begin() + 7)), Hex({0xD7, 0x10, 0x03, 0x10, 1, 0xFF, 0x7F}));
  Compact();
  EXPECT_EQ(FlagsOf(32767), flags);
}

TEST_P(GraphFlagsTest, OfTwoRecordsOfASet_TheLastWinsAndIsReplaced) {
  PutRecords(Record(1, 2, {1}) + Record(1, 2, {2}));
  EXPECT_EQ(FlagsOf(2), "01");
  EXPECT_EQ(Save("11"), 0);
  ExpectContent(Record(1, 2, {1}) + Record(1, 2, {3}));
}

TEST_P(GraphFlagsTest, Save_LooksForTheGraphBeforeTheArray) {
  TestArray two(VT_I2, 1, 2), wide(VT_I2, 1, 2, 1, 2);
  uint32_t none = 0;
  EXPECT_EQ(XLRSaveSelVis(&none, &size_, wide.Ref(), 9, 2, 1), -1);
  EXPECT_EQ(XLRSaveSelVis(nullptr, &size_, wide.Ref(), 9, 2, 1), -1);
  EXPECT_EQ(XLRSaveSelVis(&buffer_, &size_, wide.Ref(), 9, 2, 1), -997);
  LeaveFree(0);
  for (const int16_t set : Signed{1, -1, 0}) {  // the checks are the same for all numbers
    EXPECT_EQ(XLRSaveSelVis(&buffer_, &size_, wide.Ref(), 1, 2, set), -3);
    EXPECT_EQ(XLRSaveSelVis(&buffer_, &size_, nullptr, 1, 2, set), -3);
    EXPECT_EQ(XLRSaveSelVis(&buffer_, &size_, two.Ref(), 1, 3, set), -4);
    EXPECT_EQ(XLRSaveSelVis(&buffer_, &size_, two.Ref(), 1, -2, set), -4);
    EXPECT_EQ(XLRSaveSelVis(&buffer_, &size_, two.Ref(), 1, 2, set), -8);
  }
  LoseHead();
  EXPECT_EQ(XLRSaveSelVis(&buffer_, &size_, wide.Ref(), 1, 2, 1), -2);
}

TEST_P(GraphFlagsTest, Get_LooksAtTheArrayFirst) {
  TestArray two(VT_I2, 1, 2), wide(VT_I2, 1, 2, 1, 2);
  EXPECT_EQ(XLRGetSelVis(0, wide.Ref(), 9, 2, 1), -3);
  EXPECT_EQ(XLRGetSelVis(0, nullptr, 9, 2, 1), -3);
  EXPECT_EQ(XLRGetSelVis(0, two.Ref(), 9, 3, 1), -4);
  EXPECT_EQ(XLRGetSelVis(0, two.Ref(), 9, 2, 1), -1);
  EXPECT_EQ(XLRGetSelVis(buffer_, two.Ref(), 9, 2, 1), -997);
  LoseHead();
  EXPECT_EQ(XLRGetSelVis(buffer_, two.Ref(), 1, 2, 1), -2);
}

TEST_P(GraphFlagsTest, WithoutABlockForTheRecord_TheCopyIsReleased) {
  const Bytes image = Image();
  LeaveFree(1);
  EXPECT_EQ(Save("101"), -4);
  EXPECT_EQ(Save("101", -1), 0);  // which needs no record
  EXPECT_EQ(LiveBlocks(), 8u);
  EXPECT_EQ(Image(), image);
}

TEST_P(GraphFlagsTest, AFailedPatch_ReleasesAllBlocks) {
  Cram();
  EXPECT_EQ(Save("101"), -5);
  ExpectGone();
  NewReference();
  EXPECT_EQ(Save("101"), 0);
  Cram();
  EXPECT_EQ(Save("10110110101"), -6);
  ExpectGone();
}

TOLVENAR_IN_BOTH_STATES(GraphFlagsTest);

}  // namespace
}  // namespace tolvenar::testing
