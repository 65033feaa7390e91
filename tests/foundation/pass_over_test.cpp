// PassOver stops where steps would have stopped, whatever the stream: at records that are not skipped, at private ones, at the bound, at the
// block's end, in a ring.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "foundation/record_stream.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::StreamBuilder;

constexpr uint8_t kSkipped = 0x03;

bool Skips(const uint8_t* record) {
  return record[kRecordTypeLow] == kSkipped;
}

class PassOverTest : public testing::PoolTest {
 protected:
  // Where PassOver stops in the first `extent` bytes of a stream.
  static Walk Passed(const StreamBuilder& stream, uint32_t bound, uint32_t extent = UINT32_MAX) {
    uint32_t size = 0;
    Block block = OpenBlock(stream.Load(&size));
    if (extent < block.extent) block.extent = extent;
    Walk walk = StartWalk(block, 0);
    PassOver(&walk, bound, Skips);
    return walk;
  }
};

TEST_F(PassOverTest, StopsAtTheFirstRecordThatIsNotSkipped) {
  const StreamBuilder stream =
      StreamBuilder().Record(kSkipped, Bytes(4)).Record(kSkipped, Bytes(6)).Record(0x04).BufEnd();
  EXPECT_EQ(Passed(stream, 1000).at, 18u);
}

TEST_F(PassOverTest, StopsAtEveryPrivateRecord) {
  EXPECT_EQ(Passed(StreamBuilder().Record(kSkipped, Bytes(4)).Slack(3).BufEnd(), 1000).at, 8u);
  EXPECT_EQ(Passed(StreamBuilder().Record(kSkipped, Bytes(4)).Detour(0).BufEnd(), 1000).at, 8u);
  EXPECT_EQ(Passed(StreamBuilder().Record(kSkipped, Bytes(4)).BufEnd(), 1000).at, 8u);
}

TEST_F(PassOverTest, StopsAtTheFirstRecordAtTheBoundOrBeyond) {
  StreamBuilder stream;
  for (int i = 0; i < 8; ++i) stream.Record(kSkipped, Bytes(6));
  EXPECT_EQ(Passed(stream, 20).at, 20u);
  EXPECT_EQ(Passed(stream, 21).at, 30u);
  EXPECT_EQ(Passed(stream, 0).at, 0u);
}

// It looks at 8 bytes of a record: those nearer to the block's end are left to the walker.
TEST_F(PassOverTest, LooksAtNothingBehindTheBlock) {
  StreamBuilder stream;
  for (int i = 0; i < 8; ++i) stream.Record(kSkipped, Bytes(2));
  EXPECT_EQ(Passed(stream, 1000, 20).at, 18u);
  EXPECT_EQ(Passed(stream, 1000, 19).at, 12u);
  EXPECT_EQ(Passed(stream, 1000, 7).at, 0u);
  EXPECT_EQ(Passed(stream, 1000, 0).at, 0u);
}

TEST_F(PassOverTest, OfAWalkThatHasEndedDoesNothing) {
  Walk walk = Passed(StreamBuilder().Record(0x04).Record(kSkipped).BufEnd(), 0);
  walk.at = 4;
  walk.ended = true;
  PassOver(&walk, 1000, Skips);
  EXPECT_EQ(walk.at, 4u);
}

// Walks over any bytes by steps, and by steps and `pass` by turns: both come by the same offsets and end in the same way. In some of the
// streams long stretches are alike.
template <typename Pass>
void ExpectTheSameWalks(uint32_t size, uint32_t odd, int turns, Pass pass) {
  std::mt19937 source(7);
  const auto random = [&source] { return static_cast<uint32_t>(source()); };
  const uint32_t handle = MEMORYALLOC(static_cast<int32_t>(size));
  const Block block = OpenBlock(handle);
  for (int turn = 0; turn < turns; ++turn) {
    for (uint32_t at = 0; at < block.extent; at += 4) {
      const uint32_t word =
          (random() % odd == 0 ? random() : kSkipped) & (random() % 3 != 0 ? 0xFFFFu : 0x1FFFFFu);
      PutU32(block, at, random() % (odd * 4) == 0 ? 0x0004FEFFu : word);
    }
    Walk steps = StartWalk(block, 0);
    Walk passes = StartWalk(block, 0);
    while (!steps.ended && !passes.ended) {
      pass(&passes, size - 100);
      while (!steps.ended && steps.at != passes.at) Step(&steps);
      ASSERT_EQ(steps.at, passes.at);
      ASSERT_EQ(steps.ended, passes.ended);
      ASSERT_EQ(steps.lapLeft, passes.lapLeft);
      ASSERT_EQ(steps.marked, passes.marked);
      Step(&steps);
      Step(&passes);
    }
    ASSERT_EQ(steps.ended, passes.ended);
  }
}

TEST_F(PassOverTest, AnyBytes_AreWalkedAsBySteps) {
  const auto pass = [](Walk* walk, uint32_t bound) { PassOver(walk, bound, Skips); };
  ExpectTheSameWalks(512, 9, 2000, pass);
  ExpectTheSameWalks(2048, 200, 200, pass);
}

TEST_F(PassOverTest, AnyBytes_AreWalkedAsByStepsAlsoWhereManyAreAlike) {
  const auto pass = [](Walk* walk, uint32_t bound) { PassOverAlike(walk, bound, Skips); };
  ExpectTheSameWalks(512, 9, 2000, pass);
  ExpectTheSameWalks(2048, 200, 200, pass);
}

// A hundred records alike: no step but those that PassOver makes to see that they are, and those of the last few.
TEST_F(PassOverTest, RecordsAlike_ArePassedUpToTheFirstOther) {
  StreamBuilder stream;
  for (int i = 0; i < 100; ++i) stream.Record(kSkipped, Bytes(6));
  uint32_t size = 0;
  const Block block = OpenBlock(stream.Record(0x04).BufEnd().Load(&size));
  for (const uint32_t bound : {1000u, 995u, 991u, 2000u}) {
    Walk walk = StartWalk(block, 0);
    PassOverAlike(&walk, bound, Skips);
    EXPECT_EQ(walk.at, 1000u);
  }
}

}  // namespace
}  // namespace tolvenar
