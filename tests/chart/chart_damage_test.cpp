// Damage: a workbook with two charts, cut at every place, with every byte spoilt and with runs of random bytes, through every reader
// of charts. The buffer fills its slot to the last byte, so that a read behind it would hit the page that can't be read. A call may
// leave one block behind, where it says so.
#include <algorithm>
#include <cstring>
#include <random>

#include "chart/chart_block.h"
#include "chart/chart_properties.h"
#include "chart/chart_search.h"
#include "chart/chart_titles.h"
#include "chart/series_cells.h"
#include "chart/series_details.h"
#include "chart/series_tokens.h"
#include "support/chart_fixture.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

constexpr uint32_t kSlot = 1024;
constexpr int16_t kUnbalanced = 100;

class ChartDamage : public ChartTest {
 protected:
  void SetUp() override { MakeBook(); }
  void MakeBook();
  void ReadChart(int16_t sheet, int16_t chart);
  void ReadAll();
  void Restore(uint32_t size) {
    std::memset(BlockBytes(buffer_), 0, kSlot);
    std::memcpy(BlockBytes(buffer_), whole_.data(), size);
  }
  static ChartBuilder Book();

  Bytes whole_;
  Bytes table_bytes_;
  TestArray cells_{VT_I4, 1, 4, 1, 20};
  TestArray names_{VT_BSTR, 1, 4};
  TestArray numbers_[3] = {{VT_I4, 1, 4}, {VT_I4, 1, 4}, {VT_I4, 1, 4}};
  TestArray properties_{VT_I4, 1, 21};
};

ChartBuilder ChartDamage::Book() {
  ChartBuilder book({"One", "Two"});
  book.Worksheet().Obj(5, 1, 1, 1).Open().Chart().Begin().Series(3).Begin();
  book.Ai(0, {})
      .Ai(1, Area3d(0, 0, {1, 3, 1, 1}))
      .SeriesText("North")
      .AreaFormat(1, 2, 1)
      .Low(0x45, U16(0))
      .End();
  book.Series(2).Begin().Ai(1, Ref3d(0, 1, 1)).Low(0x51).Low(0x06, U16(0) + U16(18) + Ref3d(0, 8, 2)).End();
  book.Low(0x14).Begin().Low(0x17, Bytes(6)).Low(0x3A, Bytes(14)).Low(0x15, Bytes(20)).Begin().End().End();
  book.TextRecord(7)
      .Begin()
      .FontX(5)
      .ObjectLink(1)
      .SeriesText("Title")
      .End()
      .Low(0x0C, U16(0x10))
      .End()
      .Close();
  book.EndSheet().Worksheet().Open().Chart().Begin().Low(0x19).Begin().Low(0x3E, U16(1)).End();
  book.Low(0x1D, Bytes(18))
      .Begin()
      .Low(0x18, U16(0))
      .Low(0x1A, U16(2))
      .Low(0x3F, U16(3))
      .Low(0x1B, Bytes(6))
      .End();
  book.TextRecord(7).Begin().FontX(6).ObjectLink(2).SeriesText("Axis").End().End().Close();
  // The EOF is at the very end, but for the BUFEND.
  book.Stream().Slack(static_cast<uint16_t>(kSlot - book.Here() - 12)).Eof().BufEnd();
  return book;
}

void ChartDamage::MakeBook() {
  ChartTest::SetUp();
  // The slots below 1024 are taken, so that the book lands in that one.
  MEMORYALLOC(1);
  MEMORYALLOC(1);
  ChartBuilder book = Book();
  Load(book);
  ASSERT_EQ(size_, kSlot);
  ASSERT_EQ(MEMORYALLOCSIZE(buffer_), kSlot);
  whole_ = BlockContents(buffer_, kSlot);
  table_bytes_ = BlockContents(table_, MEMORYSIZE(table_));
}

void ChartDamage::ReadChart(int16_t sheet, int16_t chart) {
  BSTR texts[3] = {};
  uint16_t fonts[2] = {};
  uint32_t colour = 0;
  const int16_t graph = XLGetGraphData(cells_.Ref(), buffer_, table_, sheet, chart);
  const int16_t set = XLGetSetData(
      buffer_, table_, sheet, chart,
      {names_.Ref(), numbers_[0].Ref(), names_.Ref(), numbers_[1].Ref(), numbers_[2].Ref(), 4, 4});
  const int16_t titles = XLGetTitleData(buffer_, table_, sheet, chart,
                                        {&texts[0], &texts[1], &texts[2], &fonts[0], &fonts[1], &colour});
  const int16_t data = XLGetChartData(properties_.Ref(), buffer_, table_, sheet, chart);
  for (BSTR text : texts) SysFreeString(text);
  // All agree on whether there is such a chart. An END too many matters to two of them, which count them in their own ways.
  ASSERT_EQ(set, titles);
  for (int16_t result : {graph, data}) ASSERT_EQ(result == kUnbalanced ? 0 : result, set);
  const uint32_t left = (graph == kUnbalanced ? 1u : 0u) + (data == kUnbalanced ? 1u : 0u);
  ASSERT_EQ(LiveBlocks(), 4u + left);
  if (left == 0) return;
  // What stays behind can only be had back with the whole pool.
  const Bytes stream = BlockContents(buffer_, kSlot);
  const Bytes table = BlockContents(table_, MEMORYSIZE(table_));
  MakeBook();
  std::memcpy(BlockBytes(buffer_), stream.data(), kSlot);
  std::memcpy(BlockBytes(table_), table.data(), table.size());
}

void ChartDamage::ReadAll() {
  for (int16_t sheet : {int16_t{1}, int16_t{2}}) {
    XLGetNumCharts(buffer_, table_, sheet);
    for (int16_t chart : {int16_t{1}, int16_t{2}}) ReadChart(sheet, chart);
  }
}

TEST_F(ChartDamage, TheWholeBookReads) {
  ReadChart(1, 1);
  EXPECT_EQ(names_.TextAt(1), "North");
  EXPECT_EQ(cells_.NumberAt(1, 3), 0x01000301);
  EXPECT_EQ(Numbers(numbers_[0], 2), (std::vector<int64_t>{0, 0x02000801}));
  EXPECT_EQ(properties_.NumberAt(2), 2);
  ReadChart(2, 1);
  EXPECT_EQ(properties_.NumberAt(3), 1);
  ReadAll();
}

TEST_F(ChartDamage, EveryPrefix) {
  for (uint32_t n = 0; n <= kSlot; ++n) {
    Restore(n);
    ReadAll();
  }
}

TEST_F(ChartDamage, EveryByte) {
  for (uint32_t at = 0; at < kSlot; ++at) {
    for (uint8_t value :
         {uint8_t{0x00}, uint8_t{0x10}, uint8_t{0x33}, uint8_t{0x7F}, uint8_t{0x80}, uint8_t{0xFF}}) {
      Restore(kSlot);
      BlockBytes(buffer_)[at] = value;
      ReadAll();
    }
  }
}

TEST_F(ChartDamage, EveryByteOfTheTable) {
  for (size_t at = 0; at < table_bytes_.size(); ++at) {
    for (uint8_t value : {uint8_t{0x00}, uint8_t{0x7F}, uint8_t{0x80}, uint8_t{0xFF}}) {
      std::memcpy(BlockBytes(table_), table_bytes_.data(), table_bytes_.size());
      BlockBytes(table_)[at] = value;
      ReadAll();
    }
  }
}

TEST_F(ChartDamage, AJumpFromEveryPlaceToEveryPlace) {
  for (uint32_t at = 0; at + kJumpSize <= kSlot; at += 7) {
    for (uint32_t target = 0; target < kSlot + 16; target += 13) {
      Restore(kSlot);
      PutU16(Stream(), at, 0xFEFF);
      PutU32(Stream(), at + kJumpTarget, target);
      ReadAll();
    }
  }
}

TEST_F(ChartDamage, RunsOfRandomBytes) {
  std::mt19937 random(20240229);
  for (int round = 0; round < 5000; ++round) {
    Restore(kSlot);
    const auto at = static_cast<uint32_t>(random() % kSlot);
    const uint32_t end = std::min<uint32_t>(kSlot, at + 1 + static_cast<uint32_t>(random() % 64));
    for (uint32_t i = at; i < end; ++i) BlockBytes(buffer_)[i] = static_cast<uint8_t>(random());
    ReadAll();
  }
}

// Streams of nothing but chart records, in random order and of random length.
TEST_F(ChartDamage, RandomChartRecords) {
  constexpr uint8_t kLows[] = {0x02, 0x03, 0x0A, 0x0C, 0x0D, 0x14, 0x15, 0x17, 0x18, 0x19,
                               0x1A, 0x1B, 0x1D, 0x25, 0x26, 0x27, 0x33, 0x33, 0x33, 0x33,
                               0x34, 0x34, 0x3A, 0x3E, 0x3F, 0x45, 0x51, 0x51};
  std::mt19937 random(19970117);
  const uint32_t begin = TableEntry(Table(), 2);
  for (int round = 0; round < 3000; ++round) {
    Restore(kSlot);
    uint32_t at = NextRecord(Stream(), begin);
    PutU32(Stream(), at, 0x00001002);
    for (at += 4; at < 1000; at = NextRecord(Stream(), at)) {
      PutU8(Stream(), at, kLows[random() % sizeof kLows]);
      PutU8(Stream(), at + 1, 0x10);
      PutU16(Stream(), at + 2, static_cast<uint16_t>(random() % 3 == 0 ? random() % 24 : 0));
      for (uint32_t i = 0; i < LengthAt(Stream(), at); ++i)
        PutU8(Stream(), at + 4 + i, static_cast<uint8_t>(random() % 4 == 0 ? random() : 0x3A + random() % 2));
    }
    PutU32(Stream(), at, 0x0000000A);
    ReadAll();
  }
}

// A block full of records that each would walk over all the others: blocks that are never closed, and formulas that claim all.
TEST_F(ChartDamage, OverlappingInnerWalks_End) {
  MEMORYFREEALL();
  ChartBuilder book = OneChart();
  book.Chart();
  for (int i = 0; i < 20000; ++i) book.Series(0xFFFF).TextRecord(1).Low(0x51);
  LoadChart(book);
  EXPECT_EQ(XLGetSetData(
                buffer_, table_, 1, 1,
                {names_.Ref(), numbers_[0].Ref(), names_.Ref(), numbers_[1].Ref(), numbers_[2].Ref(), 4, 4}),
            0);
  EXPECT_EQ(XLGetTitleData(buffer_, table_, 1, 1, {}), 0);
  EXPECT_EQ(XLGetGraphData(cells_.Ref(), buffer_, table_, 1, 1), 0);
  EXPECT_EQ(XLGetChartData(properties_.Ref(), buffer_, table_, 1, 1), 0);
  EXPECT_EQ(LiveBlocks(), 2u);
}

TEST_F(ChartDamage, InnerWalks_ShareTheirBudget) {
  const uint32_t series = TableEntry(Table(), 2);
  Effort effort = {10};
  int records = 0, areas = 0;
  ForEachInBlockOf(Stream(), series, &effort, [&](uint32_t, int32_t) { ++records; });
  EXPECT_EQ(records, 10);
  EXPECT_EQ(effort.left, 0u);
  ForEachInBlockOf(Stream(), series, &effort, [&](uint32_t, int32_t) { ++records; });
  EXPECT_EQ(records, 10);
  const Bytes ai = Bytes{0x51, 0x10, 44, 0, 1, 0, 0, 0, 0, 0, 36, 0} + Ref3d(0, 1, 1) + Ref3d(0, 2, 1);
  CopyIn(Stream(), 0, ai.data(), static_cast<uint32_t>(ai.size()));
  effort.left = 1;
  ForEachCellArea(Stream(), 0, &effort, [&](const CellArea&) { ++areas; });
  EXPECT_EQ(areas, 1);
  ForEachCellArea(Stream(), 0, &effort, [&](const CellArea&) { ++areas; });
  EXPECT_EQ(areas, 1);
  EXPECT_EQ(EffortFor(Stream()).left, 2 * kSlot + 0x100000);
}

}  // namespace
