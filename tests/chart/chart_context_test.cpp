// Chart context: the stack, cell by cell, and the walk that opens and closes its cells.
#include "chart/chart_context.h"

#include "support/chart_fixture.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

class ChartContext : public ChartTest {
 protected:
  void SetUp() override {
    ChartTest::SetUp();
    stack_ = NewContextStack();
    cells_ = ContextCells(stack_);
  }

  // The depth and the current context at each record that is handled, as "depth:context ".
  std::string Walked(const StreamBuilder& records, bool* balanced) {
    std::string text;
    const uint32_t handle = records.Load(&size_);
    const auto note = [&](uint32_t) {
      text += std::to_string(Depth(cells_)) + ":" + std::to_string(CurrentContext(cells_)) + " ";
    };
    *balanced = WalkContexts(OpenBlock(handle), {0, size_ - kBufEndSize}, cells_, note);
    return text;
  }

  uint32_t stack_ = 0;
  Block cells_;
};

TEST_F(ChartContext, StackIsSixtyZeroCells) {
  EXPECT_EQ(MEMORYSIZE(stack_), 120u);
  EXPECT_EQ(BlockContents(stack_, 120), Bytes(120));
  EXPECT_EQ(Depth(cells_), 0u);
}

TEST_F(ChartContext, PushOpensACell_PopClearsIt) {
  PushContext(cells_);
  EXPECT_EQ(BlockContents(stack_, 6), (Bytes{1, 0, 0xFF, 0xFF, 0, 0}));
  SetContext(cells_, kContextChart);
  PushContext(cells_);
  EXPECT_EQ(BlockContents(stack_, 6), (Bytes{2, 0, 5, 0, 0xFF, 0xFF}));
  EXPECT_EQ(OuterContext(cells_), kContextChart);
  EXPECT_TRUE(PopContext(cells_));
  EXPECT_EQ(BlockContents(stack_, 6), (Bytes{1, 0, 5, 0, 0, 0}));
  EXPECT_TRUE(PopContext(cells_));
  EXPECT_FALSE(PopContext(cells_));
  EXPECT_EQ(BlockContents(stack_, 120), Bytes(120));
}

TEST_F(ChartContext, NothingOpen_TheCurrentCellIsTheDepth_AndNothingIsOutside) {
  EXPECT_EQ(OuterContext(cells_), 0);
  SetContext(cells_, 2);
  EXPECT_EQ(Depth(cells_), 2u);
  EXPECT_EQ(CurrentContext(cells_), 0);
}

TEST_F(ChartContext, DeeperThanItsBlock_CountsOn_AndTouchesNothingBehindIt) {
  for (uint32_t at = 120; at < 256; ++at) PutU8(OpenBlock(stack_), at, 0xEE);
  for (int i = 0; i < 200; ++i) PushContext(cells_);
  EXPECT_EQ(Depth(cells_), 200u);
  EXPECT_EQ(ContextCell(cells_, 59), 0xFFFF);
  EXPECT_EQ(CurrentContext(cells_), 0);
  SetContext(cells_, 5);
  EXPECT_EQ(CurrentContext(cells_), 0);
  for (int i = 0; i < 200; ++i) EXPECT_TRUE(PopContext(cells_));
  EXPECT_FALSE(PopContext(cells_));
  const Bytes all = BlockContents(stack_, 256);
  EXPECT_EQ(Bytes(all.begin(), all.begin() + 120), Bytes(120));
  EXPECT_EQ(Bytes(all.begin() + 120, all.end()), Bytes(136, 0xEE));
}

TEST_F(ChartContext, DepthOfSixteenBits_ComesRoundToItself) {
  for (int i = 0; i < 0xFFFF; ++i) PushContext(cells_);
  EXPECT_EQ(Depth(cells_), 0xFFFFu);
  PushContext(cells_);
  EXPECT_EQ(Depth(cells_), 0u);
  EXPECT_FALSE(PopContext(cells_));
}

TEST_F(ChartContext, CellIsOpenWhileTheOwnerOfTheBeginIsHandled) {
  bool balanced = false;
  const StreamBuilder stream =
      StreamBuilder().Record(0x1002).Record(0x1033).Record(0x1003).Record(0x1033).Record(0x1034).Record(
          0x1034);
  EXPECT_EQ(Walked(stream, &balanced), "1:65535 1:65535 2:65535 2:65535 ");
  EXPECT_TRUE(balanced);
  EXPECT_EQ(Depth(cells_), 0u);
}

TEST_F(ChartContext, BeginIsKnownByItsWholeHighByte_EndByItsBit) {
  bool balanced = false;
  const StreamBuilder stream =
      StreamBuilder().Record(0x1002).Record(0x1133).Record(0x1002).Record(0x0033).Record(0x1002).Record(
          0x1033);
  EXPECT_EQ(Walked(stream, &balanced), "0:0 0:0 0:0 0:0 1:65535 1:65535 ");
  ASSERT_TRUE(PopContext(cells_));
  EXPECT_EQ(Walked(StreamBuilder().Record(0x0034).Record(0x1002), &balanced), "0:0 0:0 ");
  EXPECT_TRUE(balanced);
  Walked(StreamBuilder().Record(0x1134), &balanced);
  EXPECT_FALSE(balanced);
}

TEST_F(ChartContext, EndInFrontOfABegin_ClosesTheCellOfThatBegin) {
  bool balanced = false;
  const StreamBuilder stream =
      StreamBuilder().Record(0x1002).Record(0x1033).Record(0x1034).Record(0x1033).Record(0x1003);
  // The END opens a second cell for the BEGIN behind it, clears and closes it: the first stays the current one.
  EXPECT_EQ(Walked(stream, &balanced), "1:65535 1:65535 1:65535 1:65535 ");
  EXPECT_TRUE(balanced);
  EXPECT_EQ(ContextCell(cells_, 2), 0);
}

TEST_F(ChartContext, EndWithNothingOpen_StopsTheWalk) {
  bool balanced = true;
  EXPECT_EQ(Walked(StreamBuilder().Record(0x1002).Record(0x1034).Record(0x1002), &balanced), "0:0 ");
  EXPECT_FALSE(balanced);
}

TEST_F(ChartContext, BeginBehindAJump_OpensItsCellAtTheJump) {
  bool balanced = false;
  const StreamBuilder stream = StreamBuilder().Record(0x1002).Detour(16).Slack(0).Record(0x1033);
  EXPECT_EQ(Walked(stream, &balanced), "0:0 1:65535 1:65535 ");
}

}  // namespace
