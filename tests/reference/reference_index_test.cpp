// The directory by kind: counts, and the arrays that are filled from the stream's header.
#include "reference/reference_index.h"

#include "reference/chart_edit.h"
#include "reference/graph_object.h"
#include "reference/reference_states.h"
#include "reference/reference_table.h"
#include "support/test_array.h"

namespace tolvenar::testing {
namespace {

class ReferenceIndexTest : public RefStateTest {
 protected:
  // Three tables, two graphs, chart edits 1, 128, 129 and 0; one table deleted again.
  void SetUp() override {
    RefStateTest::SetUp();
    for (int16_t id = 1; id <= 3; ++id) ASSERT_EQ(XLRCreateTable(&buffer_, &size_, 1, 1, 1, 1), id);
    for (int16_t id = 1; id <= 2; ++id) ASSERT_EQ(XLRCreateGraph(&buffer_, &size_, 1), id);
    for (const int number : {1, 128, 129, 0}) {
      ASSERT_EQ(XLRCreateChartEdit(&buffer_, &size_, static_cast<uint8_t>(number), 4, 1), 0);
    }
    ASSERT_EQ(XLRDeleteTable(buffer_, 2), 0);
    // Some 300 bytes more in front of the live mark.
    ASSERT_EQ(XLRTextToTable(&buffer_, &size_, 1, {1, 1, 1, 1}, std::string(300, 'x').c_str()), 0);
    Settle();
  }

  int16_t Indices(TestArray* first, TestArray* second, uint32_t count, uint32_t kind) {
    return XLRGetIndices(buffer_, first->Ref(), second->Ref(), count, kind);
  }
};
TOLVENAR_BOTH_STATES(ReferenceIndexTest);

TEST_P(ReferenceIndexTest, ItemsAreCountedByKind) {
  EXPECT_EQ(XLRGetNumItems(buffer_, 1), 2);
  EXPECT_EQ(XLRGetNumItems(buffer_, 2), 2);
  EXPECT_EQ(XLRGetNumItems(buffer_, 0), 0);
  EXPECT_EQ(XLRGetNumItems(buffer_, 4), 0);
  EXPECT_EQ(XLRGetNumItems(buffer_, 257), 0);
}

TEST_P(ReferenceIndexTest, OnlyEntriesOfTheDirectoryAreCounted) {
  const Bytes no_end = {0xFE, 0x00, 4, 0, 0, 0, 0, 0};
  const Bytes no_entry = {0xDC, 0x00, 8, 0, 1, 0, 1, 0, 77, 0, 0, 0};
  Load(RefRecord(0xFF, 8) + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + no_entry + no_end + Entry(1, 1, 8) +
       RefRecord(0xFE, 0) + Entry(1, 2, 8));
  EXPECT_EQ(XLRGetNumItems(buffer_, 1), 1);
}

TEST_P(ReferenceIndexTest, ChartEditsAbove128AreOfNoKind3) {
  EXPECT_EQ(XLRGetNumItems(buffer_, 3), 2);
  EXPECT_EQ(XLRGetNumItems(buffer_, -253), 2);  // the signed remainder of 0x8003 and of 0xFF03
}

TEST_P(ReferenceIndexTest, WithoutABufferOrADirectoryThereIsNoCount) {
  EXPECT_EQ(XLRGetNumItems(0, 1), -1);
  PutU32(Stream(), kRefHeaderMark, 0);
  EXPECT_EQ(XLRGetNumItems(buffer_, 1), -1);
  uint32_t stale = buffer_;
  MEMORYFREE(&buffer_);
  EXPECT_EQ(XLRGetNumItems(stale, 1), -1);
}

TEST_P(ReferenceIndexTest, AllElementsArePartsOfTheLiveMarksOffset) {
  PutU32(Stream(), 8, 0x99887766);  // what stands behind the header belongs to wide elements
  const uint32_t mark = U32At(Stream(), 4);
  ASSERT_GT(mark, 0xFFu);
  TestArray first(VT_UI1, 1, 2);
  TestArray second(VT_I4, 1, 2);
  EXPECT_EQ(Indices(&first, &second, 2, 2), 0);
  for (const LONG i : {1, 2}) {
    EXPECT_EQ(static_cast<uint8_t>(first.NumberAt(i)), static_cast<uint8_t>(mark >> 8)) << i;
    EXPECT_EQ(second.NumberAt(i), static_cast<uint16_t>(mark >> 16)) << i;
  }
  TestArray wide(VT_I4, 1, 2);
  EXPECT_EQ(Indices(&wide, &second, 2, 2), 0);
  EXPECT_EQ(static_cast<uint32_t>(wide.NumberAt(1)), (mark >> 8) | 0x66000000);
  EXPECT_EQ(wide.NumberAt(2), wide.NumberAt(1));
}

TEST_P(ReferenceIndexTest, ElementsOfEightBytesReachIntoTheNextRecord) {
  const Bytes image = Image();
  TestArray first(VT_R8, 1, 1);
  TestArray second(VT_I2, 1, 1);
  EXPECT_EQ(Indices(&first, &second, 1, 1), 0);
  LONG index = 1;
  Bytes element(8);
  SafeArrayGetElement(first.Get(), &index, element.data());
  EXPECT_EQ(Hex(element), Hex(Bytes(image.begin() + 5, image.begin() + 13)));
  EXPECT_EQ(static_cast<uint16_t>(second.NumberAt(1)), U16At(Stream(), 6));
}

TEST_P(ReferenceIndexTest, AnArrayThatIsTooLongKeepsItsTail) {
  TestArray first(VT_I4, 1, 3);
  TestArray second(VT_I4, 1, 3);
  for (const LONG i : {1, 2, 3}) {
    first.SetNumber(i, 0, 77);
    second.SetNumber(i, 0, 88);
  }
  EXPECT_EQ(Indices(&first, &second, 3, 3), 0);
  EXPECT_NE(first.NumberAt(2), 77);
  EXPECT_NE(second.NumberAt(2), 88);
  EXPECT_EQ(first.NumberAt(3), 77);
  EXPECT_EQ(second.NumberAt(3), 88);
}

TEST_P(ReferenceIndexTest, AnArrayThatIsTooShortGetsWhatFits) {
  TestArray first(VT_UI1, 1, 1);
  TestArray second(VT_I2, 1, 1);
  EXPECT_EQ(Indices(&first, &second, 1, 1), 0);
  EXPECT_EQ(static_cast<uint8_t>(first.NumberAt(1)), U8At(Stream(), 5));
}

TEST_P(ReferenceIndexTest, TextsAndVariantsTakeNoElement) {
  TestArray texts(VT_BSTR, 1, 2);
  TestArray variants(VT_VARIANT, 1, 2);
  EXPECT_EQ(Indices(&texts, &variants, 2, 2), 0);
  EXPECT_EQ(texts.TextAt(1), "(none)");
  EXPECT_EQ(variants.TextAt(1), "(none)");
}

TEST_P(ReferenceIndexTest, TheCountIsTakenAs16Bits) {
  TestArray first(VT_UI1, 1, 2);
  TestArray second(VT_I2, 1, 2);
  EXPECT_EQ(Indices(&first, &second, 0x70002, 2), 0);
  EXPECT_EQ(Indices(&first, &second, 0xFFFF, 2), -4);
}

TEST_P(ReferenceIndexTest, AllBitsOfTheKindCount) {
  TestArray first(VT_I4, 1, 2);
  TestArray second(VT_I4, 1, 2);
  for (const uint32_t kind : {0x10002u, 0x102u, 0xFF03u, 0u}) {
    EXPECT_EQ(Indices(&first, &second, 2, kind), 0) << kind;
    EXPECT_EQ(first.NumberAt(1), 0) << kind;
  }
  EXPECT_EQ(Indices(&first, &second, 2, 0xFFFFFF03), 0);  // the edits of which the remainder is negative
  EXPECT_NE(first.NumberAt(1), 0);
  EXPECT_NE(first.NumberAt(2), 0);
}

TEST_P(ReferenceIndexTest, ArraysWithoutElementsTakeNothing) {
  TestArray first(VT_I4, 1, 0);
  TestArray second(VT_I4, 1, 0);
  EXPECT_EQ(Indices(&first, &second, 0, 1), 0);
  EXPECT_EQ(Indices(&first, &second, 1, 1), -4);
}

TEST_P(ReferenceIndexTest, TheFirstArrayIsTestedBeforeTheSecondAndBothBeforeTheDirectory) {
  TestArray fits(VT_I4, 1, 2);
  TestArray matrix(VT_I4, 1, 2, 1, 2);
  TestArray low(VT_I4, 0, 1);
  TestArray high(VT_I4, 1, 3);
  EXPECT_EQ(XLRGetIndices(0, matrix.Ref(), fits.Ref(), 2, 1), -1);
  PutU32(Stream(), kRefHeaderMark, 0);
  EXPECT_EQ(Indices(&matrix, &low, 2, 1), -3);
  EXPECT_EQ(Indices(&low, &matrix, 2, 1), -4);
  EXPECT_EQ(Indices(&high, &fits, 2, 1), -4);
  EXPECT_EQ(Indices(&fits, &matrix, 2, 1), -3);
  EXPECT_EQ(Indices(&fits, &low, 2, 1), -4);
  EXPECT_EQ(XLRGetIndices(buffer_, nullptr, fits.Ref(), 2, 1), -3);
  EXPECT_EQ(XLRGetIndices(buffer_, fits.Ref(), nullptr, 2, 1), -3);
  EXPECT_EQ(Indices(&fits, &fits, 2, 1), -1);
}

}  // namespace
}  // namespace tolvenar::testing
