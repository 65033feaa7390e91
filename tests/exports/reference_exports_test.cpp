// Exports of references: every argument arrives where it belongs. All values differ, so that two that have changed places show.
#include <gtest/gtest.h>

#include <cstring>

#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "support/test_array.h"
#include "tolvenar/tolvenar.h"

namespace {

using namespace tolvenar::testing;

// A reference with three tables, the third of 2 x 3 x 4 x 5 cells, and two graphs: the first bound to table 2, the second to table 1.
class ReferenceExports : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    const Bytes bytes = StreamBuilder()
                            .Record(0x10FF, U32(8))
                            .Record(0x10DA, U32(0))
                            .Record(0x10DB, U32(0))
                            .Record(0x10FE, U32(0))
                            .BufEnd()
                            .Stream();
    size_ = static_cast<uint32_t>(bytes.size());
    buffer_ = ::MEMORYALLOC(static_cast<int32_t>(size_));
    std::memcpy(reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(buffer_)), bytes.data(), bytes.size());
    ASSERT_EQ(::XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 1);
    ASSERT_EQ(::XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), 2);
    ASSERT_EQ(::XLRCreateTable(&buffer_, &size_, 2, 3, 4, 5), 3);
    ASSERT_EQ(::XLRCreateGraph(&buffer_, &size_, 2), 1);
    ASSERT_EQ(::XLRCreateGraph(&buffer_, &size_, 1), kGraph);
  }

  // Expects that these bytes stand in what the walk meets.
  void ExpectBytes(const Bytes& bytes) {
    EXPECT_NE(Hex(WalkedStream(buffer_)).find(Hex(bytes)), std::string::npos) << Hex(bytes);
  }

  // An array from `first` to `last` whose element i holds i times `factor`.
  static void Fill(TestArray& array, LONG first, LONG last, int32_t factor) {
    for (LONG i = first; i <= last; ++i) array.SetNumber(i, 0, static_cast<int32_t>(i) * factor);
  }

  static constexpr uint16_t kGraph = 2;
  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
};

TEST_F(ReferenceExports, Table_DimensionsInOrder) {
  ExpectBytes(U16(3) + U16(2) + U16(3) + U16(4) + U16(5));
}

TEST_F(ReferenceExports, Cells_CoordinatesInOrder) {
  BSTR text = nullptr;
  EXPECT_EQ(::XLRTextToTable(&buffer_, &size_, 3, 2, 3, 4, 5, "corner"), 0);
  EXPECT_EQ(::XLRGetTableText(buffer_, 3, &text, 2, 3, 4, 5), 0);
  EXPECT_EQ(BytesOf(text), "corner");
  SysFreeString(text);
  uint32_t value[2] = {};
  EXPECT_EQ(::XLRValueToTable(&buffer_, &size_, 3, 2, 3, 4, 5, 66, 77), 0);
  EXPECT_EQ(::XLRGetTableValue(buffer_, 3, value, 2, 3, 4, 5), 0);
  EXPECT_EQ(value[0], 66u);
  EXPECT_EQ(value[1], 77u);
}

TEST_F(ReferenceExports, Graphs_TablesAndLinks) {
  EXPECT_EQ(::XLRTableByGraph(buffer_, 1, 0), 2);
  EXPECT_EQ(::XLRTableByGraph(buffer_, kGraph, 0), 1);
  EXPECT_EQ(::XLRUpdateGraph(buffer_, 1, 3), 0);
  EXPECT_EQ(::XLRTableByGraph(buffer_, 1, 0), 3);
  EXPECT_EQ(::XLRUpdateGraphTable(&buffer_, &size_, kGraph, 3, 7), 0);
  EXPECT_EQ(::XLRTableByGraph(buffer_, kGraph, 7), 3);
}

TEST_F(ReferenceExports, ChartEdits_NumberIdAndGraph) {
  EXPECT_EQ(::XLRCreateChartEdit(&buffer_, &size_, 5, 0x0304, 0x0506), 0);
  ExpectBytes(Bytes{4} + U16(0x0304) + U16(0x0506));
  EXPECT_EQ(::XLRCreateChartEdit(&buffer_, &size_, 6, 0x0304, 0x0708), 0);
  EXPECT_EQ(::XLRGraphByChartEdit(buffer_, 5, 0x0304), 0x0803);
  EXPECT_EQ(::XLRUpdateChartEdit(buffer_, 5, 0x0304, 0x0A0B), 0);
  EXPECT_EQ(::XLRGraphByChartEdit(buffer_, 5, 0x0304), 0x0B03);
  EXPECT_EQ(::XLRDeleteChartEdit(buffer_, 5, 0x0304), 0);
}

TEST_F(ReferenceExports, Slots_GraphAndSlot) {
  BSTR text = nullptr;
  EXPECT_EQ(::XLRSaveText(&buffer_, &size_, kGraph, "title", 3), 0);
  EXPECT_EQ(::XLRGetText(buffer_, kGraph, &text, 3), 0);
  EXPECT_EQ(BytesOf(text), "title");
  SysFreeString(text);
  uint32_t value[2] = {};
  EXPECT_EQ(::XLRSaveDouble(&buffer_, &size_, kGraph, 66, 77, 3), 0);
  EXPECT_EQ(::XLRGetDouble(buffer_, kGraph, value, 3), 0);
  EXPECT_EQ(value[0], 66u);
  EXPECT_EQ(value[1], 77u);
  uint16_t font[4] = {};
  EXPECT_EQ(::XLRSaveFont(&buffer_, &size_, kGraph, 11, 12, 13, 14, 5), 0);
  EXPECT_EQ(::XLRGetFont(buffer_, kGraph, &font[0], &font[1], &font[2], &font[3], 5), 0);
  EXPECT_EQ((std::vector<int>(font, font + 4)), (std::vector<int>{11, 12, 13, 14}));
}

TEST_F(ReferenceExports, Flags_GraphCountAndSet) {
  TestArray flags(VT_I2, 1, 9), got(VT_I2, 1, 9);
  flags.SetNumber(8, 0, 1);
  EXPECT_EQ(::XLRSaveSelVis(&buffer_, &size_, flags.Ref(), kGraph, 9, 7), 0);
  EXPECT_EQ(::XLRGetSelVis(buffer_, got.Ref(), kGraph, 9, 7), 0);
  EXPECT_EQ(got.NumberAt(8), 1);
  EXPECT_EQ(got.NumberAt(7), 0);
}

TEST_F(ReferenceExports, SetTexts_GraphIndexAndSet_AndTheirDeletion) {
  BSTR text = nullptr;
  EXPECT_EQ(::XLRSaveSetText(&buffer_, &size_, kGraph, 4, "April", 1), 0);
  EXPECT_EQ(::XLRGetSetText(buffer_, kGraph, 4, &text, 1), 0);
  EXPECT_EQ(BytesOf(text), "April");
  SysFreeString(text);
  text = nullptr;
  constexpr uint16_t kTextsOfSet1 = 11;
  EXPECT_EQ(::XLRDeleteProperty(buffer_, kGraph, kTextsOfSet1, 4), 0);
  EXPECT_EQ(::XLRGetSetText(buffer_, kGraph, 4, &text, 1), 0);
  EXPECT_EQ(text, nullptr);
}

TEST_F(ReferenceExports, SetNumbers_RangeMaximumAndSet) {
  TestArray ints(VT_I2, 3, 4), longs(VT_I4, 5, 5), range(VT_I4, 4, 6), got(VT_I4, 1, 8);
  Fill(ints, 3, 4, 100);
  Fill(longs, 5, 5, 100000);
  Fill(got, 1, 8, 0);
  EXPECT_EQ(::XLRSaveSetInt(&buffer_, &size_, kGraph, 3, 4, 8, ints.Ref(), 1), 0);
  EXPECT_EQ(::XLRSaveSetLong(&buffer_, &size_, kGraph, 5, 5, 8, longs.Ref(), 1), 0);
  EXPECT_EQ(::XLRSaveSetLong(&buffer_, &size_, kGraph, 4, 6, 8, range.Ref(), -1), 0);
  EXPECT_EQ(::XLRGetSetInt(buffer_, kGraph, 8, got.Ref(), 1), 0);
  EXPECT_EQ(got.NumberAt(3), 300);
  EXPECT_EQ(got.NumberAt(4), 400);
  EXPECT_EQ(::XLRSaveSetLong(&buffer_, &size_, kGraph, 5, 5, 8, longs.Ref(), 2), 0);
  EXPECT_EQ(::XLRGetSetLong(buffer_, kGraph, 8, got.Ref(), 2), 0);
  EXPECT_EQ(got.NumberAt(5), 500000);
}

TEST_F(ReferenceExports, TextReferences_RangeMaximumArraysAndSet) {
  TestArray firsts(VT_I4, 4, 5), seconds(VT_I4, 4, 5), got(VT_I4, 1, 8), others(VT_I4, 1, 8);
  Fill(firsts, 4, 5, 10);
  Fill(seconds, 4, 5, 1000);
  EXPECT_EQ(::XLRSaveTextRef(&buffer_, &size_, kGraph, 4, 5, 8, firsts.Ref(), seconds.Ref(), 1), 0);
  EXPECT_EQ(::XLRGetTextRef(buffer_, kGraph, 8, got.Ref(), others.Ref(), 1), 0);
  EXPECT_EQ(got.NumberAt(4), 40);
  EXPECT_EQ(got.NumberAt(5), 50);
  EXPECT_EQ(others.NumberAt(4), 4000);
  EXPECT_EQ(others.NumberAt(5), 5000);
}

TEST_F(ReferenceExports, Properties_AndIndices) {
  TestArray values(VT_I4, 1, 128), got(VT_I4, 1, 128), first(VT_UI1, 1, 3), second(VT_I2, 1, 3);
  Fill(values, 1, 128, 3);
  EXPECT_EQ(::XLRSaveProperties(&buffer_, &size_, values.Ref(), kGraph), 0);
  EXPECT_EQ(::XLRGetProperties(buffer_, got.Ref(), kGraph), 0);
  EXPECT_EQ(got.NumberAt(77), 231);
  EXPECT_EQ(::XLRGetNumItems(buffer_, 1), 3);
  EXPECT_EQ(::XLRGetIndices(buffer_, first.Ref(), second.Ref(), 3, 1), 0);
  EXPECT_EQ(::XLRGetIndices(buffer_, first.Ref(), second.Ref(), 1, 3), -4);
}

}  // namespace
