// Graphs: ids, the main table, the numbered links, deletion, among patches and in a compacted reference.
#include "reference/graph_object.h"

#include "reference/reference_states.h"
#include "reference/reference_table.h"

namespace tolvenar::testing {
namespace {

const std::string kOtherGraph = Hex(GraphHeadOf(2, 0) + kGraphEnd);

class GraphObjectTest : public RefStateTest {
 protected:
  // Graph 1 with table 1, graph 2 with none.
  void SetUp() override {
    RefStateTest::SetUp();
    ASSERT_EQ(XLRCreateGraph(&buffer_, &size_, 1), 1);
    ASSERT_EQ(XLRCreateGraph(&buffer_, &size_, 0), 2);
    Settle();
  }
  int16_t Bind(uint16_t graph, uint16_t table, uint16_t link) {
    return XLRUpdateGraphTable(&buffer_, &size_, graph, table, link);
  }
  int16_t TableOf(uint16_t graph, uint16_t link) { return XLRTableByGraph(buffer_, graph, link); }
  static std::string WithGraph1(const Bytes& content, uint16_t table = 1) {
    return Hex(GraphHeadOf(1, table) + content + kGraphEnd) + kOtherGraph;
  }
};
TOLVENAR_BOTH_STATES(GraphObjectTest);

TEST_P(GraphObjectTest, CreationGivesTheLowestFreeIdAndStoresTheTable) {
  EXPECT_EQ(Objects(), WithGraph1({}));
  EXPECT_EQ(TableOf(1, 0), 1);
  EXPECT_EQ(TableOf(2, 0), 0);
  EXPECT_EQ(XLRDeleteGraph(buffer_, 1), 0);
  EXPECT_EQ(XLRCreateGraph(&buffer_, &size_, 0xFFFE), 1);
  EXPECT_EQ(TableOf(1, 0), -2);  // the table id, in 16 bits
  EXPECT_EQ(Objects(), kOtherGraph + Hex(GraphHeadOf(1, 0xFFFE) + kGraphEnd));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(GraphObjectTest, TheMainTableChangesInPlace) {
  const uint32_t size = size_;
  EXPECT_EQ(XLRUpdateGraph(buffer_, 1, 7), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(TableOf(1, 0), 7);
  EXPECT_EQ(Objects(), WithGraph1({}, 7));
}

TEST_P(GraphObjectTest, EachGraphHasItsOwnMainTable) {
  EXPECT_EQ(XLRUpdateGraph(buffer_, 2, 0x1234), 0);
  EXPECT_EQ(TableOf(2, 0), 0x1234);
  EXPECT_EQ(TableOf(1, 0), 1);
  EXPECT_EQ(Bind(2, 0x5678, 1), 0);
  EXPECT_EQ(TableOf(2, 1), 0x5678);
  EXPECT_EQ(Bind(2, 0x6789, 1), 0);
  EXPECT_EQ(TableOf(2, 1), 0x6789);
}

TEST_P(GraphObjectTest, AnEntryThatPointsToTheHeaderIsNoObject) {
  RepointRefEntry(buffer_, 1, kKindGraph, 0);
  const Bytes before = Image();
  EXPECT_EQ(TableOf(1, 0), -997);
  EXPECT_EQ(XLRUpdateGraph(buffer_, 1, 7), -997);
  EXPECT_EQ(Bind(1, 5, 2), -997);
  EXPECT_EQ(XLRDeleteGraph(buffer_, 1), -997);
  EXPECT_EQ(Image(), before);  // the entry stays
}

TEST_P(GraphObjectTest, ALinkIsAddedChangedAndRemoved) {
  EXPECT_EQ(Bind(1, 5, 2), 0);
  EXPECT_EQ(Bind(1, 6, 3), 0);
  EXPECT_EQ(Objects(), WithGraph1(GraphLink(2, 5) + GraphLink(3, 6)));
  EXPECT_EQ(TableOf(1, 2), 5);
  EXPECT_EQ(TableOf(1, 3), 6);
  const uint32_t size = size_;
  EXPECT_EQ(Bind(1, 9, 2), 0);
  EXPECT_EQ(Objects(), WithGraph1(GraphLink(2, 9) + GraphLink(3, 6)));
  EXPECT_EQ(Bind(1, 0, 2), 0);
  EXPECT_EQ(TableOf(1, 2), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Objects(), WithGraph1(GraphLink(3, 6)));
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(GraphObjectTest, RemovingALinkThatIsNotThereDoesNothing) {
  const Bytes before = Image();
  EXPECT_EQ(Bind(1, 0, 2), 0);
  EXPECT_EQ(Image(), before);
}

TEST_P(GraphObjectTest, Link0IsAnsweredByTheMainTable) {
  EXPECT_EQ(Bind(1, 5, 0), 0);
  EXPECT_EQ(Objects(), WithGraph1(GraphLink(0, 5)));
  EXPECT_EQ(TableOf(1, 0), 1);
}

TEST_P(GraphObjectTest, ALaterGraphAnswersForALinkThatIsMissing) {
  EXPECT_EQ(Bind(2, 5, 4), 0);
  EXPECT_EQ(TableOf(1, 4), 5);
  EXPECT_EQ(TableOf(1, 3), 0);
  EXPECT_EQ(Bind(1, 6, 3), 0);
  EXPECT_EQ(TableOf(2, 3), 0);  // an earlier one doesn't
}

TEST_P(GraphObjectTest, WhatLiesBehindTheDirectoryIsNotReached) {
  const Bytes behind = GraphLink(4, 5) + GraphHeadOf(1, 6) + kGraphEnd;
  MEMORYFREE(&buffer_);
  Load(RefRecord(0xFF, 20) + GraphHeadOf(3, 9) + kGraphEnd + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) +
       Entry(2, 3, 8) + Entry(2, 1, 8) + RefRecord(0xFE, 0) + behind);
  const Bytes before = Image();
  EXPECT_EQ(TableOf(3, 4), 0);
  EXPECT_EQ(TableOf(1, 0), -2);
  EXPECT_EQ(XLRUpdateGraph(buffer_, 1, 7), -5);
  EXPECT_EQ(Bind(1, 7, 4), -2);
  EXPECT_EQ(Image(), before);
}

TEST_P(GraphObjectTest, ALinkAbove255IsStoredInEightBitsAndNotFoundByItsNumber) {
  EXPECT_EQ(Bind(1, 5, 0x102), 0);
  EXPECT_EQ(Bind(1, 6, 0x102), 0);
  EXPECT_EQ(Objects(), WithGraph1(GraphLink(2, 5) + GraphLink(2, 6)));
  EXPECT_EQ(TableOf(1, 0x102), 0);
  EXPECT_EQ(TableOf(1, 2), 5);  // the first one answers
  EXPECT_EQ(Bind(1, 7, 2), 0);  // the last one changes
  EXPECT_EQ(Objects(), WithGraph1(GraphLink(2, 5) + GraphLink(2, 7)));
}

TEST_P(GraphObjectTest, DeletionLeavesNothingOfTheGraphAndKeepsTables) {
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 1);
  ASSERT_EQ(Bind(1, 5, 2), 0);
  const uint32_t size = size_;
  EXPECT_EQ(XLRDeleteGraph(buffer_, 1), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Objects(), kOtherGraph + Hex(TableHeadOf(1, 1, 1, 1, 1) + kTableEnd));
  EXPECT_EQ(TableOf(1, 0), -997);
  EXPECT_EQ(TableOf(2, 0), 0);
  EXPECT_EQ(XLRDeleteGraph(buffer_, 1), -997);
  Compact();
  EXPECT_EQ(TableOf(2, 0), 0);
}

TEST_P(GraphObjectTest, DeletingItsTableLeavesTheIdInTheGraph) {
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 1);
  EXPECT_EQ(XLRDeleteTable(buffer_, 1), 0);
  EXPECT_EQ(TableOf(1, 0), 1);
}

TEST_P(GraphObjectTest, WithoutABufferNothingIsDone) {
  uint32_t none = 0;
  EXPECT_EQ(XLRCreateGraph(&none, &size_, 1), -1);
  EXPECT_EQ(XLRCreateGraph(nullptr, &size_, 1), -1);
  EXPECT_EQ(XLRCreateGraph(&buffer_, nullptr, 1), -1);
  EXPECT_EQ(XLRUpdateGraph(0, 1, 1), -1);
  EXPECT_EQ(XLRDeleteGraph(0, 1), -1);
  EXPECT_EQ(XLRTableByGraph(0, 1, 0), -1);
  EXPECT_EQ(XLRUpdateGraphTable(&none, &size_, 1, 1, 1), -1);
  EXPECT_EQ(XLRUpdateGraphTable(nullptr, &size_, 1, 1, 1), -1);
  EXPECT_EQ(XLRUpdateGraphTable(&buffer_, nullptr, 1, 1, 1), -1);
}

TEST_P(GraphObjectTest, AGraphThatIsNotListedIsNoObject) {
  const Bytes before = Image();
  EXPECT_EQ(XLRUpdateGraph(buffer_, 3, 1), -997);
  EXPECT_EQ(XLRDeleteGraph(buffer_, 3), -997);
  EXPECT_EQ(TableOf(3, 0), -997);
  EXPECT_EQ(Bind(3, 1, 1), -997);
  EXPECT_EQ(Image(), before);
  PutU32(Stream(), kRefHeaderMark, 0);
  EXPECT_EQ(TableOf(1, 0), -997);
  EXPECT_EQ(XLRCreateGraph(&buffer_, &size_, 1), -999);
}

TEST_P(GraphObjectTest, AHeadThatIsNotMetIsTold) {
  RepointRefEntry(buffer_, 1, kKindGraph, static_cast<uint32_t>(FindRefEntry(buffer_, 2, kKindGraph)));
  const std::string before = Objects();
  EXPECT_EQ(XLRUpdateGraph(buffer_, 1, 7), -5);
  EXPECT_EQ(TableOf(1, 0), -2);
  EXPECT_EQ(TableOf(1, 2), -2);
  EXPECT_EQ(Bind(1, 5, 2), -2);
  EXPECT_EQ(XLRDeleteGraph(buffer_, 1), -2);
  EXPECT_EQ(Objects(), before);
  EXPECT_EQ(TableOf(1, 0), -997);
}

TEST_P(GraphObjectTest, ALinkInFrontOfTheHeadDoesNotCount) {
  ASSERT_EQ(Bind(1, 5, 2), 0);
  RepointRefEntry(buffer_, 2, kKindGraph, static_cast<uint32_t>(FindRefEntry(buffer_, 1, kKindGraph)));
  EXPECT_EQ(TableOf(2, 2), 0);
  EXPECT_EQ(Bind(2, 9, 2), 0);
  EXPECT_EQ(TableOf(1, 2), 5);
  EXPECT_EQ(TableOf(2, 2), 9);
}

TEST_P(GraphObjectTest, WithAFullPoolOnlyChangesInPlaceAreMade) {
  ASSERT_EQ(Bind(1, 5, 2), 0);
  const Bytes before = Image();
  LeaveFree(0);
  EXPECT_EQ(XLRCreateGraph(&buffer_, &size_, 1), -2);
  EXPECT_EQ(Bind(1, 5, 3), -4);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(Bind(1, 6, 2), 0);
  EXPECT_EQ(XLRUpdateGraph(buffer_, 1, 7), 0);
  EXPECT_EQ(Objects(), WithGraph1(GraphLink(2, 6), 7));
  EXPECT_EQ(LiveBlocks(), 9u);
}

TEST_P(GraphObjectTest, AFailedPatchFreesTheBufferAndTheRecord) {
  for (const bool creates : {false, true}) {
    SetUp();
    FillSlot();
    LeaveFree(1);
    EXPECT_EQ(creates ? XLRCreateGraph(&buffer_, &size_, 1) : Bind(1, 5, 3), creates ? -4 : -5);
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(LiveBlocks(), 7u);
  }
}

TEST_P(GraphObjectTest, ADirectoryWithoutAnEndGetsNoGraph) {
  Walk walk = StartWalk(Stream(), U32At(Stream(), kRefHeaderMark));
  while (!IsChart(Stream(), walk.at, kLowRefEnd)) Step(&walk);
  PutU16(Stream(), walk.at, 0xFEFF);  // where REFEND stood: a jump to itself
  PutU32(Stream(), walk.at + kJumpTarget, walk.at);
  EXPECT_EQ(XLRCreateGraph(&buffer_, &size_, 1), -998);
  EXPECT_EQ(TableOf(1, 9), 0);  // the walk ends all the same
  EXPECT_EQ(LiveBlocks(), 1u);
}

}  // namespace
}  // namespace tolvenar::testing
