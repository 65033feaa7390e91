// AppendBytes and AppendBytesTracked: writing a stream front to back, and how the buffer climbs through the
// slots.
#include <cstring>

#include "foundation/record_stream.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"

namespace tolvenar {
namespace {

using testing::BlockContents;
using testing::operator+;
using testing::Bytes;

class AppendBytesTest : public testing::PoolTest {
 protected:
  // A source block of `count` bytes, all `fill`.
  static uint32_t Source(uint32_t count, uint8_t fill) {
    const uint32_t block = MEMORYALLOC(static_cast<int32_t>(count));
    std::memset(BlockBytes(block), fill, count);
    return block;
  }

  // A buffer in the slot of that capacity, the first fitting one.
  void TakeBuffer(int32_t capacity) {
    buffer_ = MEMORYALLOC(capacity);
    size_ = 1000;
  }

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
};

TEST_F(AppendBytesTest, CopiesAndConsumesItsSource) {
  TakeBuffer(33000);
  EXPECT_EQ(AppendBytes(&buffer_, &size_, 10, Source(5, 0xAB), 5), 15);
  EXPECT_EQ(BlockContents(buffer_, 16), Bytes(10, 0) + Bytes(5, 0xAB) + Bytes{0});
  EXPECT_EQ(size_, 1000u);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(AppendBytesTest, NullSource_ReturnsTheOffsetAndChangesNothing) {
  TakeBuffer(256);
  const uint32_t buffer = buffer_;
  EXPECT_EQ(AppendBytes(&buffer_, &size_, 255, 0, 100), 255);
  EXPECT_EQ(buffer_, buffer);
  EXPECT_EQ(size_, 1000u);
}

TEST_F(AppendBytesTest, OneByteBelowTheCapacity_StaysInPlace) {
  TakeBuffer(33000);
  const uint32_t buffer = buffer_;
  EXPECT_EQ(AppendBytes(&buffer_, &size_, 32994, Source(5, 1), 5), 32999);
  EXPECT_EQ(buffer_, buffer);
}

TEST_F(AppendBytesTest, ExactlyAtTheCapacity_GrowsThoughTheBytesWouldFit) {
  TakeBuffer(33000);
  EXPECT_EQ(AppendBytes(&buffer_, &size_, 32995, Source(5, 1), 5), 33000);
  EXPECT_EQ(MEMORYISHANDLE(buffer_), 5);
  EXPECT_EQ(MEMORYSIZE(buffer_), 33000u + 32767);
  EXPECT_EQ(size_, 1000u + 32767);
  EXPECT_EQ(U8At(OpenBlock(buffer_), 32999), 1);
}

TEST_F(AppendBytesTest, SmallestSlot_SkipsThe33000ByteSlot) {
  TakeBuffer(256);
  EXPECT_EQ(AppendBytes(&buffer_, &size_, 250, Source(10, 1), 10), 260);
  EXPECT_EQ(MEMORYISHANDLE(buffer_), 5);  // 256 + 32767 is 33023
}

TEST_F(AppendBytesTest, EachGrowthClimbsOneSlot) {
  TakeBuffer(33000);
  const int32_t slots[] = {5, 6, 7, 8};
  for (int32_t slot : slots) {
    const uint32_t at = MEMORYALLOCSIZE(buffer_) - 4;
    ASSERT_EQ(AppendBytes(&buffer_, &size_, at, Source(4, 1), 4), static_cast<int32_t>(at + 4));
    EXPECT_EQ(MEMORYISHANDLE(buffer_), slot);
  }
  EXPECT_EQ(size_, 1000u + 4 * 32767);
}

TEST_F(AppendBytesTest, FromThe105000000ByteSlot_GrowthFailsAndReleasesBoth) {
  TakeBuffer(105000000);
  EXPECT_EQ(AppendBytes(&buffer_, &size_, 105000000 - 4, Source(4, 1), 4), -1);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(size_, 1000u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(AppendBytesTest, NoBuffer_GivesMinus1AndReleasesTheSource) {
  EXPECT_EQ(AppendBytes(&buffer_, &size_, 0, Source(4, 1), 4), -1);
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(AppendBytesTest, GrowthIsTriedOnce_AndWhatDoesNotFitIsDropped) {
  TakeBuffer(256);
  const uint32_t source = Source(120000, 7);
  EXPECT_EQ(AppendBytes(&buffer_, &size_, 0, source, 120000), 120000);
  EXPECT_EQ(MEMORYISHANDLE(buffer_), 5);  // 100000 bytes; the rest would lie behind the block
  EXPECT_EQ(U8At(OpenBlock(buffer_), 99999), 7);
}

TEST_F(AppendBytesTest, CountBehindTheSource_StopsAtItsSlot) {
  TakeBuffer(33000);
  EXPECT_EQ(AppendBytes(&buffer_, &size_, 0, Source(256, 9), 1000), 1000);
  EXPECT_EQ(U8At(OpenBlock(buffer_), 255), 9);
  EXPECT_EQ(U8At(OpenBlock(buffer_), 256), 0);
}

TEST_F(AppendBytesTest, Tracked_CopiesAndLeavesTheSource) {
  TakeBuffer(33000);
  int32_t capacity = 33000;
  const uint32_t source = Source(5, 0xAB);
  EXPECT_EQ(AppendBytesTracked(&buffer_, &size_, 10, BlockBytes(source), 5, &capacity), 15);
  EXPECT_EQ(capacity, 33000);
  EXPECT_EQ(LiveBlocks(), 2u);
  EXPECT_EQ(U8At(OpenBlock(buffer_), 14), 0xAB);
}

TEST_F(AppendBytesTest, Tracked_RenewsTheCapacityAfterGrowing) {
  TakeBuffer(33000);
  int32_t capacity = 33000;
  const uint8_t bytes[4] = {1, 2, 3, 4};
  EXPECT_EQ(AppendBytesTracked(&buffer_, &size_, 32996, bytes, 4, &capacity), 33000);
  EXPECT_EQ(capacity, 100000);
  EXPECT_EQ(size_, 1000u + 32767);
  EXPECT_EQ(U8At(OpenBlock(buffer_), 32999), 4);
}

TEST_F(AppendBytesTest, Tracked_BelievesTheCapacityItIsGiven) {
  TakeBuffer(33000);
  int32_t capacity = 300;  // as if the buffer were smaller: it grows to 300 + 32767 bytes
  const uint8_t bytes[4] = {1, 2, 3, 4};
  EXPECT_EQ(AppendBytesTracked(&buffer_, &size_, 296, bytes, 4, &capacity), 300);
  EXPECT_EQ(MEMORYISHANDLE(buffer_), 5);
  EXPECT_EQ(capacity, 100000);
}

TEST_F(AppendBytesTest, Tracked_FailedGrowthGivesMinus1AndReleasesTheBuffer) {
  TakeBuffer(105000000);
  int32_t capacity = 105000000;
  const uint8_t bytes[4] = {1, 2, 3, 4};
  EXPECT_EQ(AppendBytesTracked(&buffer_, &size_, 105000000 - 4, bytes, 4, &capacity), -1);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 0u);
}

}  // namespace
}  // namespace tolvenar
