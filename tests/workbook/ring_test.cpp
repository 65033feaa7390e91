// RecordsBeforeRing: where a ring begins, how long it is, and walks that are none.
#include "workbook/ring.h"

#include <gtest/gtest.h>

#include "support/pool_fixture.h"
#include "support/stream_builder.h"

namespace tolvenar::testing {
namespace {

class RingTest : public PoolTest {
 protected:
  static uint32_t Count(const StreamBuilder& stream, uint32_t from = 0) {
    uint32_t size = 0;
    return RecordsBeforeRing(OpenBlock(stream.Load(&size)), from);
  }
};

TEST_F(RingTest, RingNamesItself) {
  EXPECT_EQ(Count(StreamBuilder().Detour(0)), 1u);
}

TEST_F(RingTest, RingOfTwo) {
  EXPECT_EQ(Count(StreamBuilder().Detour(8).Detour(0)), 2u);
}

TEST_F(RingTest, RingBehindSomeRecords_CountsThemAndTheRing) {
  EXPECT_EQ(Count(StreamBuilder().Bof(6).Eof().Record(0x0042).Record(0x0043).Detour(24)), 5u);
}

TEST_F(RingTest, EveryLengthAndEveryStart) {
  for (uint32_t records = 1; records < 30; ++records) {
    for (uint32_t start = 0; start < records; ++start) {
      MEMORYFREEALL();
      StreamBuilder ring;
      for (uint32_t i = 1; i < records; ++i) ring.Record(0x0042);
      EXPECT_EQ(Count(ring.Detour(start * 4)), records) << records << " " << start;
    }
  }
}

TEST_F(RingTest, StartInsideTheRing) {
  EXPECT_EQ(Count(StreamBuilder().Record(0x42).Detour(0), 4), 2u);
}

TEST_F(RingTest, StreamThatEnds_IsNoRing) {
  EXPECT_EQ(Count(StreamBuilder().Bof(6).Eof()), 0u);
  EXPECT_EQ(RecordsBeforeRing(Block{}, 0), 0u);
}

TEST_F(RingTest, OffsetsWrapAround32Bits) {
  EXPECT_EQ(Count(StreamBuilder().Detour(0xFFFFFFF0)), 5u);
}

// The block has 256 bytes.
TEST_F(RingTest, RingOfAsManyRecordsAsTheBlockHasBytes_IsTheLongestThatIsFound) {
  EXPECT_EQ(Count(StreamBuilder().Detour(0u - 255 * 4)), 256u);
  MEMORYFREEALL();
  EXPECT_EQ(Count(StreamBuilder().Detour(0u - 256 * 4)), 0u);
}

}  // namespace
}  // namespace tolvenar::testing
