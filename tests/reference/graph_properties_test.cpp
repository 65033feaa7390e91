// Property values of a graph: what is stored, what comes back, the RESUME that passes for properties, and every result.
#include "reference/graph_properties.h"

#include "reference/delete_property.h"
#include "reference/graph_fixture.h"
#include "reference/graph_slots.h"

namespace tolvenar::testing {
namespace {

constexpr uint32_t kRecordSize = 516;

class GraphPropertiesTest : public GraphTest {
 protected:
  GraphPropertiesTest() {
    for (LONG item = 1; item <= 128; ++item) values_.SetNumber(item, 0, ValueOf(item));
  }

  static int32_t ValueOf(LONG item) { return static_cast<int32_t>(item * 0x00F00001 - 7); }
  static Bytes Record(int32_t added = 0) {
    Bytes payload;
    for (LONG item = 1; item <= 128; ++item)
      payload = payload + U32(static_cast<uint32_t>(ValueOf(item) + added));
    return GraphRecord(0xFA, payload);
  }

  int16_t Save() { return XLRSaveProperties(&buffer_, &size_, values_.Ref(), 1); }

  // Puts a text into slot 1 and replaces it by a longer one, so that a RESUME lies in the graph.
  void MakeResume() {
    ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "short text", 1), 0);
    ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "a longer text", 1), 0);
  }
  // Offset of the last RESUME that the walk of graph 1 meets; 0 when there is none.
  uint32_t LastResume() const {
    uint32_t last = 0;
    Walk walk = StartWalk(Stream(), kFirstHead);
    for (; !walk.ended && !IsChart(walk.block, walk.at, kLowGraphEnd); Step(&walk)) {
      if (IsPrivate(walk.block, walk.at, kLowResume)) last = walk.at;
    }
    return last;
  }

  TestArray values_{VT_I4, 1, 128};
  TestArray got_{VT_I4, 1, 128};
};

TEST_P(GraphPropertiesTest, AllValues_AreStoredInTheirOrderAndComeBack) {
  EXPECT_EQ(Save(), 0);
  ExpectContent(Record());
  EXPECT_EQ(Content().size(), kRecordSize);
  for (const bool compacted : {false, true}) {
    if (compacted) Compact();
    EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), 0);
    for (LONG item = 1; item <= 128; ++item) ASSERT_EQ(got_.NumberAt(item), uint32_t(ValueOf(item))) << item;
  }
}

TEST_P(GraphPropertiesTest, ASecondSave_TakesTheRoomOfTheFirst) {
  EXPECT_EQ(Save(), 0);
  const uint32_t size = size_;
  values_.SetNumber(1, 0, 99);
  EXPECT_EQ(Save(), 0);
  EXPECT_EQ(size_, size);
  EXPECT_EQ(Content().size(), kRecordSize);
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), 0);
  EXPECT_EQ(got_.NumberAt(1), 99);
}

TEST_P(GraphPropertiesTest, WithoutARecord_TheArrayStays) {
  got_.SetNumber(5, 0, 55);
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), 0);
  EXPECT_EQ(got_.NumberAt(5), 55);
  EXPECT_EQ(got_.NumberAt(6), 0);
}

TEST_P(GraphPropertiesTest, NarrowElements_AreFilledUpWithZeros) {
  TestArray narrow(VT_I2, 1, 128);
  narrow.SetNumber(128, 0, -2);
  EXPECT_EQ(XLRSaveProperties(&buffer_, &size_, narrow.Ref(), 1), 0);
  EXPECT_EQ(Content().size(), kRecordSize);
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), 0);
  EXPECT_EQ(got_.NumberAt(128), 0xFFFE);
}

TEST_P(GraphPropertiesTest, ArraysOfTexts_AreReadAsZerosAndRefuseTheValues) {
  TestArray texts(VT_BSTR, 1, 128);
  EXPECT_EQ(XLRSaveProperties(&buffer_, &size_, texts.Ref(), 1), 0);
  ExpectContent(GraphRecord(0xFA, Bytes(512)));
  EXPECT_EQ(XLRGetProperties(buffer_, texts.Ref(), 1), 0);
  EXPECT_EQ(texts.TextAt(1), "(none)");
}

TEST_P(GraphPropertiesTest, TheLastRecordOfTwo_Wins) {
  PutRecords(Record());
  PutRecords(Record(5));
  Compact();
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), 0);
  EXPECT_EQ(got_.NumberAt(128), uint32_t(ValueOf(128) + 5));
  EXPECT_EQ(Save(), 0);
  ExpectContent(Record() + Record());
}

TEST_P(GraphPropertiesTest, AResume_IsTakenForProperties) {
  MakeResume();
  const uint32_t resume = LastResume();
  ASSERT_NE(resume, 0u);
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), 0);
  EXPECT_EQ(got_.NumberAt(1), U32At(Stream(), resume + 4));  // where it jumps back to
  EXPECT_EQ(got_.NumberAt(2), U32At(Stream(), resume + 8));
}

TEST_P(GraphPropertiesTest, AResumeBehindTheRecord_OverridesIt) {
  PutRecords(Record());
  MakeResume();  // behind the properties: the text was put last
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), 0);
  EXPECT_EQ(got_.NumberAt(1), U32At(Stream(), LastResume() + 4));
  Compact();
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), 0);
  EXPECT_EQ(got_.NumberAt(1), uint32_t(ValueOf(1)));
}

TEST_P(GraphPropertiesTest, ARecordBehindTheResume_OverridesIt) {
  // A text replaced in a compacted graph: its RESUME stands in front of the properties.
  ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "short text", 1), 0);
  PutRecords(Record());
  Compact();
  ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "a longer text", 1), 0);
  ASSERT_NE(LastResume(), 0u);
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), 0);
  EXPECT_EQ(got_.NumberAt(1), uint32_t(ValueOf(1)));
  EXPECT_EQ(got_.NumberAt(128), uint32_t(ValueOf(128)));
}

TEST_P(GraphPropertiesTest, AResumeThatIsReplaced_LosesItsJumpBack) {
  ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "short text", 1), 0);
  ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "second", 2), 0);
  Compact();
  ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "a longer text", 1), 0);
  ASSERT_EQ(XLRSaveText(&buffer_, &size_, 2, "other graph", 1), 0);  // its patch stands behind the RESUME
  const uint32_t resume = LastResume(), size = size_;
  ASSERT_NE(resume, 0u);
  EXPECT_EQ(Save(), 0);
  // In the place of the RESUME a DETOUR to the properties, which go on right behind it and not where it jumped back to.
  EXPECT_EQ(U32At(Stream(), resume), 0x0004FEFFu);
  EXPECT_EQ(U32At(Stream(), resume + 4), size);
  EXPECT_EQ(U16At(Stream(), size), 0x10FA);
  EXPECT_EQ(U32At(Stream(), size + kRecordSize), 0x0004FEFDu);  // the RESUME, SLACK by now
  EXPECT_EQ(U32At(Stream(), size + kRecordSize + 8), 0x0004FEFAu);
  EXPECT_EQ(U32At(Stream(), size + kRecordSize + 12), resume + 8);
  BSTR second = nullptr;
  XLRGetText(buffer_, 1, &second, 2);
  EXPECT_EQ(BytesOf(second), "(none)");  // no longer on the way
  EXPECT_EQ(LiveBlocks(), 1u);
}

TEST_P(GraphPropertiesTest, Delete_MarksAResumeToo) {
  for (const uint16_t item : Unsigned{24, 0}) {
    NewReference();
    MakeResume();
    Compact();
    ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "the longest text", 1), 0);
    const uint32_t resume = LastResume();
    EXPECT_EQ(U32At(Stream(), resume), 0x0004FEFAu);
    XLRDeleteProperty(buffer_, 1, item, 0);
    EXPECT_EQ(U32At(Stream(), resume), 0x0004FEFDu) << item;
  }
}

TEST_P(GraphPropertiesTest, DeleteOfAll_WalksOnBehindTheResume) {
  ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "short text", 1), 0);
  ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "second", 2), 0);
  Compact();
  ASSERT_EQ(XLRSaveText(&buffer_, &size_, 1, "a longer text", 1), 0);
  const uint32_t resume = LastResume(), behind = size_;
  const uint32_t second = U32At(Stream(), resume + 4);  // where it jumps back to, less what it left
  ASSERT_EQ(Put(2, kKindGraph, GraphRecord(0xE7, U16(1) + Text("z"))), 0);
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 0, 0), 0);
  EXPECT_EQ(U16At(Stream(), resume), 0xFEFD);
  EXPECT_EQ(U16At(Stream(), behind), 0xFEFD);  // the text of graph 2, physically behind the RESUME
  EXPECT_EQ(U16At(Stream(), second), 0x10E6);  // off the way by then
  EXPECT_EQ(U16At(Stream(), resume - 16 - 19),
            0xFEFD);  // the longer text, in front of the room of the short one
}

TEST_P(GraphPropertiesTest, DeleteOfProperties_EndsAtTheResume) {
  PutRecords(Record());
  MakeResume();
  PutRecords(Record(5));
  const uint32_t resume = LastResume();
  EXPECT_EQ(XLRDeleteProperty(buffer_, 1, 24, 0), 0);
  EXPECT_EQ(U16At(Stream(), resume), 0xFEFA);  // the record in front of it was the first to pass the test
  EXPECT_EQ(Content().size() % kRecordSize, 6u + 13);
}

TEST_P(GraphPropertiesTest, Save_LooksForTheGraphBeforeTheArray) {
  TestArray flat(VT_I4, 1, 127), wide(VT_I4, 1, 128, 1, 2), from_0(VT_I4, 0, 127);
  uint32_t none = 0;
  EXPECT_EQ(XLRSaveProperties(&none, &size_, wide.Ref(), 9), -1);
  EXPECT_EQ(XLRSaveProperties(nullptr, &size_, wide.Ref(), 9), -1);
  EXPECT_EQ(XLRSaveProperties(&buffer_, &size_, wide.Ref(), 9), -997);
  const Bytes image = Image();
  LeaveFree(0);
  EXPECT_EQ(XLRSaveProperties(&buffer_, &size_, wide.Ref(), 1), -3);
  EXPECT_EQ(XLRSaveProperties(&buffer_, &size_, nullptr, 1), -3);
  EXPECT_EQ(XLRSaveProperties(&buffer_, &size_, flat.Ref(), 1), -4);
  EXPECT_EQ(XLRSaveProperties(&buffer_, &size_, from_0.Ref(), 1), -4);
  EXPECT_EQ(Save(), -8);
  EXPECT_EQ(Image(), image);
  LoseHead();
  EXPECT_EQ(XLRSaveProperties(&buffer_, &size_, wide.Ref(), 1), -2);
}

TEST_P(GraphPropertiesTest, Get_LooksAtTheArrayFirst) {
  TestArray flat(VT_I4, 1, 127), wide(VT_I4, 1, 128, 1, 2);
  EXPECT_EQ(XLRGetProperties(0, wide.Ref(), 9), -3);
  EXPECT_EQ(XLRGetProperties(0, nullptr, 9), -3);
  EXPECT_EQ(XLRGetProperties(0, flat.Ref(), 9), -4);
  EXPECT_EQ(XLRGetProperties(0, got_.Ref(), 9), -1);
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 9), -997);
  LoseHead();
  EXPECT_EQ(XLRGetProperties(buffer_, got_.Ref(), 1), -2);
}

TEST_P(GraphPropertiesTest, WithoutABlockForTheRecord_TheCopyIsReleased) {
  const Bytes image = Image();
  LeaveFree(1);
  EXPECT_EQ(Save(), -4);
  EXPECT_EQ(LiveBlocks(), 8u);
  EXPECT_EQ(Image(), image);
}

TEST_P(GraphPropertiesTest, AFailedPatch_ReleasesAllBlocks) {
  Cram();
  EXPECT_EQ(Save(), -5);
  ExpectGone();
  NewReference();
  PutRecords(GraphRecord(0xFA, Bytes(20)));  // shorter than properties are
  Compact();
  Cram();
  EXPECT_EQ(Save(), -6);
  ExpectGone();
}

TOLVENAR_IN_BOTH_STATES(GraphPropertiesTest);

}  // namespace
}  // namespace tolvenar::testing
