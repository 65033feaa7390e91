// Chart edits: creation, and lookups that pass the edit with the next number.
#include "reference/chart_edit.h"

#include "reference/graph_object.h"
#include "reference/reference_index.h"
#include "reference/reference_states.h"
#include "reference/reference_table.h"

namespace tolvenar::testing {
namespace {

class ChartEditTest : public RefContentsTest {
 protected:
  int16_t Create(uint8_t number, uint16_t id, uint16_t graph) {
    return XLRCreateChartEdit(&buffer_, &size_, number, id, graph);
  }
  int32_t EntryOf(uint16_t number, uint16_t id) { return FindRefEntry(buffer_, id, EditKindWord(number)); }
  // Edits (1, 4) and (2, 4), with graphs 2 and 0x1234.
  void CreateTwo() {
    ASSERT_EQ(Create(1, 4, 2), 0);
    ASSERT_EQ(Create(2, 4, 0x1234), 0);
  }
};

const std::string kFirstEdit = Hex(EditHeadOf(0, 4, 2) + kEditEnd);

TEST_F(ChartEditTest, CreationEntersTheNumberLess1) {
  EXPECT_EQ(Create(1, 4, 2), 0);
  EXPECT_EQ(Create(2, 0x8005, 0xFFFF), 0);
  EXPECT_EQ(Create(0, 6, 1), 0);  // a number of 0 wraps
  EXPECT_EQ(Objects(), kFirstEdit + Hex(EditHeadOf(1, 0x8005, 0xFFFF) + kEditEnd) +
                           Hex(EditHeadOf(255, 6, 1) + kEditEnd));
  EXPECT_EQ(FindRefEntry(buffer_, 4, 0x0003), 8);
  EXPECT_GT(FindRefEntry(buffer_, 0x8005, 0x0103), 0);
  EXPECT_GT(FindRefEntry(buffer_, 6, 0xFF03), 0);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(ChartEditTest, TwoMayHaveTheSameNumberAndId) {
  EXPECT_EQ(Create(1, 4, 2), 0);
  EXPECT_EQ(Create(1, 4, 2), 0);
  EXPECT_EQ(Objects(), kFirstEdit + kFirstEdit);
  EXPECT_EQ(XLRGetNumItems(buffer_, 3), 2);
}

TEST_F(ChartEditTest, TheEditThatIsFoundDoesNotPass) {
  ASSERT_EQ(Create(1, 4, 2), 0);
  const Bytes before = Image();
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), -2);
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 1, 4, 9), -5);
  EXPECT_EQ(Image(), before);
}

TEST_F(ChartEditTest, TheNextNumberPassesAndAnswersAcrossItsFields) {
  CreateTwo();
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), 0x3400);  // high byte of the id, low byte of the graph
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 2, 4), -2);
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 1, 4, 0x5678), 0);
  EXPECT_EQ(Objects(), kFirstEdit + Hex(EditHeadOf(1, 4, 0x5678) + kEditEnd));
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), 0x7800);
}

TEST_F(ChartEditTest, TheAnswerMayLookLikeACode) {
  ASSERT_EQ(Create(1, 0xFE04, 2), 0);
  ASSERT_EQ(Create(2, 0xFE04, 0xFF), 0);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 0xFE04), -2);
}

TEST_F(ChartEditTest, TheNextNumberMustHaveTheId) {
  ASSERT_EQ(Create(1, 4, 2), 0);
  ASSERT_EQ(Create(2, 5, 3), 0);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), -2);
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 1, 4, 9), -5);
  EXPECT_EQ(Create(2, 4, 7), 0);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), 0x0700);
}

TEST_F(ChartEditTest, TheNextNumberIsLookedForBehindTheEntryOnly) {
  ASSERT_EQ(Create(2, 4, 7), 0);
  ASSERT_EQ(Create(1, 4, 2), 0);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), -2);
}

TEST_F(ChartEditTest, ANumberAbove255FindsAnEntryAndNoHead) {
  CreateTwo();
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 257, 4), -2);
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 257, 4, 9), -5);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 0, 4), -997);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 257, 4), -2);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), -997);
}

TEST_F(ChartEditTest, Number0IsFollowedByNumber1) {
  ASSERT_EQ(Create(0, 4, 2), 0);
  ASSERT_EQ(Create(1, 4, 0x56), 0);  // its head holds 0
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 0, 4), 0x5600);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 256, 4), -2);  // the entry of number 0, and a head that no byte is
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 0, 4, 7), 0);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 0, 4), 0);
  EXPECT_EQ(Objects(), Hex(EditHeadOf(255, 4, 2) + kEditEnd));
  EXPECT_EQ(EntryOf(0, 4), -2);
  EXPECT_GT(EntryOf(1, 4), 0);
}

TEST_F(ChartEditTest, AnEntryThatPointsToTheHeaderIsNoObject) {
  CreateTwo();
  RepointRefEntry(buffer_, 4, EditKindWord(1), 0);
  const Bytes before = Image();
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), -997);
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 1, 4, 9), -997);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), -997);
  EXPECT_EQ(Image(), before);
}

TEST_F(ChartEditTest, AHeadBehindTheDirectoryDoesNotPass) {
  MEMORYFREE(&buffer_);
  Load(RefRecord(0xFF, 21) + EditHeadOf(0, 4, 2) + kEditEnd + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) +
       Entry(3, 4, 8) + RefRecord(0xFE, 0) + EditHeadOf(1, 4, 3) + kEditEnd);
  const Bytes before = Image();
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), -2);
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 1, 4, 9), -5);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), -2);
}

// An edit that this library doesn't make: a record and jumps inside, or no end.
class OddEditTest : public ChartEditTest {
 protected:
  void LoadEdit(const Bytes& edit) {
    const Bytes object = EditHeadOf(1, 9, 2) + edit;
    MEMORYFREE(&buffer_);
    Load(RefRecord(0xFF, static_cast<uint32_t>(8 + object.size())) + object + RefRecord(0xDA, 0) +
         RefRecord(0xDB, 0) + Entry(3, 4, 8) + RefRecord(0xFE, 0));
  }
};

TEST_F(OddEditTest, DeletionKeepsTheJumpsInside) {
  const Bytes jumps = Bytes{0xFF, 0xFE, 4, 0} + U32(25) + Bytes{0xFA, 0xFE, 4, 0} + U32(33);
  LoadEdit(jumps + Value(1, 1) + kEditEnd);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), 0);
  EXPECT_EQ(Objects(), "");
  EXPECT_EQ(Hex(BlockContents(buffer_, 33)).substr(3 * 17), Hex(jumps));
}

TEST_F(OddEditTest, DeletionWithoutAnEndGoesOnToTheEndOfTheDirectory) {
  LoadEdit(Value(1, 1));
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), 0);
  EXPECT_EQ(Hex(BlockContents(buffer_, size_)).substr(3 * (size_ - 8 - 4)),
            Hex(RefRecord(0xFE, 0) + Bytes{0xF8, 0xFE, 0, 0}));
  EXPECT_EQ(XLRGetNumItems(buffer_, 3), -1);  // the mark and the directory went along
}

TEST_F(ChartEditTest, DeletingTheLastOneLeavesItsRecords) {
  ASSERT_EQ(Create(1, 4, 2), 0);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), -2);
  EXPECT_EQ(Objects(), kFirstEdit);
  EXPECT_EQ(XLRGetNumItems(buffer_, 3), 0);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), -997);
}

TEST_F(ChartEditTest, DeletionTakesTheNextNumberWhateverItsId) {
  ASSERT_EQ(Create(1, 4, 2), 0);
  ASSERT_EQ(Create(3, 9, 7), 0);
  ASSERT_EQ(Create(2, 5, 3), 0);
  ASSERT_EQ(XLRCreateGraph(&buffer_, &size_, 1), 1);
  const uint32_t size = size_;
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 0x10004), 0);  // 16 bits of the id count
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Objects(), kFirstEdit + Hex(EditHeadOf(2, 9, 7) + kEditEnd) + Hex(GraphHeadOf(1, 1) + kGraphEnd));
  EXPECT_GT(EntryOf(2, 5), 0);  // its own entry stays
  EXPECT_EQ(EntryOf(1, 4), -2);
  EXPECT_EQ(XLRTableByGraph(buffer_, 1, 0), 1);
}

TEST_F(ChartEditTest, WithoutABufferNothingIsDone) {
  uint32_t none = 0;
  EXPECT_EQ(XLRCreateChartEdit(&none, &size_, 1, 4, 2), -1);
  EXPECT_EQ(XLRCreateChartEdit(nullptr, &size_, 1, 4, 2), -1);
  EXPECT_EQ(XLRCreateChartEdit(&buffer_, nullptr, 1, 4, 2), -1);
  EXPECT_EQ(XLRGraphByChartEdit(0, 1, 4), -1);
  EXPECT_EQ(XLRUpdateChartEdit(0, 1, 4, 2), -1);
  EXPECT_EQ(XLRDeleteChartEdit(0, 1, 4), -1);
}

TEST_F(ChartEditTest, WithoutADirectoryThereAreNoEdits) {
  CreateTwo();
  PutU32(Stream(), kRefHeaderMark, 0);
  EXPECT_EQ(Create(3, 4, 2), -999);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), -997);
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 1, 4, 2), -997);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), -997);
}

TEST_F(ChartEditTest, CreationWithAFullPoolOrBuffer) {
  const Bytes before = Image();
  LeaveFree(0);
  EXPECT_EQ(Create(1, 4, 2), -2);
  EXPECT_EQ(Image(), before);
  EXPECT_EQ(LiveBlocks(), 9u);
  SetUp();
  FillSlot();
  LeaveFree(1);
  EXPECT_EQ(Create(1, 4, 2), -4);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 7u);
}

TEST_F(ChartEditTest, CreationInADirectoryWithoutAnEnd) {
  PutU16(Stream(), 24, 0xFEFF);  // where REFEND stood: a jump to itself
  PutU32(Stream(), 24 + kJumpTarget, 24);
  EXPECT_EQ(Create(1, 4, 2), -998);
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_F(ChartEditTest, ACompactionLeavesTheEntryWhereTheEditWas) {
  ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 1);
  CreateTwo();
  const int32_t before = EntryOf(1, 4);
  ASSERT_GT(before, static_cast<int32_t>(8 + kTableHeadSize + kObjectEndSize));
  Compact();
  EXPECT_EQ(EntryOf(1, 4), before);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), -2);  // from there no edit comes by
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), -2);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), -997);
}

TEST_F(ChartEditTest, TheFirstObjectOfAStreamKeepsATrueEntry) {
  CreateTwo();
  Compact();
  EXPECT_EQ(EntryOf(1, 4), 8);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), 0x3400);
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 1, 4, 9), 0);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), 0);
  EXPECT_EQ(Objects(), kFirstEdit);
  EXPECT_EQ(Create(1, 4, 2), 0);
  EXPECT_EQ(Objects(), kFirstEdit + kFirstEdit);
}

TEST_F(ChartEditTest, AnEntryFarBehindTheStreamEndsInACode) {
  CreateTwo();
  RepointRefEntry(buffer_, 4, EditKindWord(1), 0x7FFFFFF0);
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 1, 4), -2);
  EXPECT_EQ(XLRUpdateChartEdit(buffer_, 1, 4, 9), -5);
  EXPECT_EQ(XLRDeleteChartEdit(buffer_, 1, 4), -2);
  RepointRefEntry(buffer_, 4, EditKindWord(2), 0x80000000);  // not above 0
  EXPECT_EQ(XLRGraphByChartEdit(buffer_, 2, 4), -997);
}

}  // namespace
}  // namespace tolvenar::testing
