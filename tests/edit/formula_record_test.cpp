// Formulas in their records: where the three kinds hold length and tokens, and that a formula reaches no
// other record, whatever its length says and however its generation lays its tokens out.
#include "edit/row_column_walk.h"
#include "row_column_fixture.h"
#include "support/formula_builder.h"

namespace tolvenar {
namespace {

using namespace testing;
using namespace testing::formula;

// A formula record: type, the payload in front of the length field, and one of them with some tokens.
struct FormulaRecord {
  const char* name;
  uint16_t type;
  Bytes front;

  Bytes Payload(uint16_t length, const Bytes& tokens) const { return front + U16(length) + tokens; }
  Bytes Payload(const Bytes& tokens) const { return Payload(static_cast<uint16_t>(tokens.size()), tokens); }
};

const FormulaRecord kFormulaRecords[] = {
    {"FORMULA", 0x0006, U16(1) + U16(2) + U16(15) + Bytes(14)},
    {"ARRAY", 0x0221, U16(1) + U16(1) + Bytes{2, 2} + U16(0) + U32(0)},
    {"SHRFMLA", 0x04BC, U16(1) + U16(1) + Bytes{2, 2} + U16(0)},
};

class FormulaInItsRecord : public RowColumnTest {
 protected:
  // The record as it is after the adjustment. The record behind it must be the same afterwards.
  static Bytes Adjusted(const FormulaRecord& kind, const Bytes& payload, int16_t position, AdjustMode mode) {
    const Bytes behind = Bytes{0x08, 0x02, 0x10, 0x00} + Bytes(16, 0xC9);
    const Bytes record = U16(kind.type) + U16(static_cast<uint16_t>(payload.size())) + payload;
    uint32_t handle = MEMORYALLOC(200);
    const Block block = OpenBlock(handle);
    const Bytes all = record + behind;
    CopyIn(block, 0, all.data(), static_cast<uint32_t>(all.size()));
    AdjustFormulaOfRecord(block, 0, position, mode);
    const Bytes after = BlockContents(handle, static_cast<uint32_t>(all.size()));
    MEMORYFREE(&handle);
    const auto end = after.begin() + static_cast<int64_t>(record.size());
    EXPECT_EQ(Hex(Bytes(end, after.end())), Hex(behind)) << kind.name;
    EXPECT_EQ(Hex(Bytes(after.begin(), after.begin() + 4)), Hex(Bytes(record.begin(), record.begin() + 4)));
    return Bytes(after.begin() + 4, end);
  }
};

#define EXPECT_PAYLOAD(actual, expected) EXPECT_EQ(Hex(actual), Hex(expected)) << kind.name

TEST_F(FormulaInItsRecord, LengthAndTokensStandWhereTheKindHasThem) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    const Bytes payload = kind.Payload(Ref(9, 9) + Area(9, 10, 3, 4));
    EXPECT_PAYLOAD(Adjusted(kind, payload, 3, kRowIn), kind.Payload(Ref(10, 9) + Area(10, 11, 3, 4)));
    EXPECT_PAYLOAD(Adjusted(kind, payload, 3, kColIn), kind.Payload(Ref(9, 10) + Area(9, 10, 4, 5)));
  }
}

TEST_F(FormulaInItsRecord, TokensBehindTheLengthField_StayInThePayload) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    EXPECT_PAYLOAD(Adjusted(kind, kind.Payload(4, Ref(9, 9) + Ref(9, 9)), 3, kRowIn),
                   kind.Payload(4, Ref(10, 9) + Ref(9, 9)));
  }
}

TEST_F(FormulaInItsRecord, LengthIsSigned) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    const Bytes payload = kind.Payload(0x8004, Ref(9, 9));
    EXPECT_PAYLOAD(Adjusted(kind, payload, 3, kRowIn), payload);
  }
}

TEST_F(FormulaInItsRecord, OtherRecords_AreLeft) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    for (int type : {0x1006, 0x1021, 0x10BC, 0x0203, 0x0018}) {
      const Bytes payload = kind.Payload(Ref(9, 9));
      const FormulaRecord other = {kind.name, static_cast<uint16_t>(type), kind.front};
      EXPECT_PAYLOAD(Adjusted(other, payload, 3, kRowIn), payload);
    }
  }
}

// BIFF8: id, sheet index u16, row u16, column u16. By BIFF5's layout the row word stands 8 bytes behind the
// token.
TEST_F(FormulaInItsRecord, Biff8Ref3d_AtTheEnd_TouchesNothing) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    for (AdjustMode mode : {kRowIn, kColIn}) {
      const Bytes payload = kind.Payload(Bytes{0x5A, 1, 0, 4, 0, 2, 0xC0});
      EXPECT_PAYLOAD(Adjusted(kind, payload, 1, mode), payload);
    }
  }
}

// What lies behind the record reads as row 0 and column 0, and those die with row or column 0.
TEST_F(FormulaInItsRecord, Biff8Ref3d_AtTheEnd_DiesAsAReferenceToTheFirstRowOrColumn) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    for (AdjustMode mode : {kRowDel, kColDel}) {
      EXPECT_PAYLOAD(Adjusted(kind, kind.Payload(Bytes{0x5A, 1, 0, 4, 0, 2, 0xC0}), 0, mode),
                     kind.Payload(Bytes{0x5C, 1, 0, 4, 0, 2, 0xC0}));
    }
  }
}

// BIFF8: id, sheet index u16, two row words, two column words: 11 bytes where BIFF5 has 21.
TEST_F(FormulaInItsRecord, Biff8Area3d_AtTheEnd_TouchesNothing) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    for (AdjustMode mode : {kRowIn, kRowDel, kColIn, kColDel}) {
      const Bytes payload = kind.Payload(Bytes{0x3B, 1, 0, 4, 0, 6, 0, 2, 0xC0, 3, 0xC0});
      EXPECT_PAYLOAD(Adjusted(kind, payload, 1, mode), payload);
    }
  }
}

// BIFF8: id, two row words, two column words. The first column word stands where BIFF5 has both columns; the
// second is walked as two tokens of its own, here a ptgRef's id and a byte of no meaning. Its fields lie
// behind the record, but for the first half of its row word, which does not change alone.
TEST_F(FormulaInItsRecord, Biff8Area_AtTheEnd_KeepsToItself) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    const Bytes payload = kind.Payload(Bytes{0x25, 4, 0, 6, 0, 2, 0x00, 0x24, 0x40});
    EXPECT_PAYLOAD(Adjusted(kind, payload, 4, kRowIn),
                   kind.Payload(Bytes{0x25, 5, 0, 7, 0, 2, 0x00, 0x24, 0x40}));
    EXPECT_PAYLOAD(Adjusted(kind, payload, 2, kColIn),
                   kind.Payload(Bytes{0x25, 4, 0, 6, 0, 3, 0x01, 0x24, 0x40}));
  }
}

TEST_F(FormulaInItsRecord, TruncatedTokens_ChangeWhatIsThere) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    // The columns of the area are missing, and of the reference the column.
    EXPECT_PAYLOAD(Adjusted(kind, kind.Payload(7, Bytes{0x25, 4, 0, 6, 0}), 1, kRowIn),
                   kind.Payload(7, Bytes{0x25, 5, 0, 7, 0}));
    EXPECT_PAYLOAD(Adjusted(kind, kind.Payload(4, Bytes{0x24, 4, 0}), 1, kRowIn),
                   kind.Payload(4, Bytes{0x24, 5, 0}));
  }
}

TEST_F(FormulaInItsRecord, LengthThatPromisesMoreThanTheRecord_EndsAtTheRecord) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    for (uint16_t length : {uint16_t{5}, uint16_t{24}, uint16_t{0x7FFF}}) {
      EXPECT_PAYLOAD(Adjusted(kind, kind.Payload(length, Ref(9, 1)), 3, kRowIn),
                     kind.Payload(length, Ref(10, 1)));
    }
  }
}

TEST_F(FormulaInItsRecord, RectanglesBehindTheRecord_AreNotWritten) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    EXPECT_PAYLOAD(Adjusted(kind, kind.Payload(19, MemArea(12) + Rect(2, 3, 0, 4)), 0, kRowIn),
                   kind.Payload(19, MemArea(12) + Rect(3, 4, 0, 4)));
  }
}

// A list that would begin far in front of the tokens: what it has of the payload moves, the header does not,
// which Adjusted looks at.
TEST_F(FormulaInItsRecord, RectanglesInFrontOfTheRecord_AreNotWritten) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    const Bytes payload = kind.Payload(MemArea(7 + 600));
    EXPECT_NE(Hex(Adjusted(kind, payload, 0, kRowIn)), Hex(payload)) << kind.name;
  }
}

// A Mem token reads its count behind itself, but not behind the record.
TEST_F(FormulaInItsRecord, ThreeByteMemToken_AtTheEnd_FindsNoExtraData) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    const Bytes tokens = Ref(9, 1) + Bytes{0x29, 0, 0};
    EXPECT_PAYLOAD(Adjusted(kind, kind.Payload(tokens), 3, kRowIn),
                   kind.Payload(Ref(10, 1) + Bytes{0x29, 0, 0}));
  }
}

TEST_F(FormulaInItsRecord, RecordWithoutALengthField_StaysAsItIs) {
  for (const FormulaRecord& kind : kFormulaRecords) {
    for (size_t n = 0; n <= kind.front.size() + 1; ++n) {
      const Bytes payload(n, 0x24);
      EXPECT_PAYLOAD(Adjusted(kind, payload, 0, kRowIn), payload);
    }
  }
}

// The same through an operation: the record behind the formula is the ROW of the next block of rows.
TEST_F(FormulaInItsRecord, Biff8Ref3d_InASheet_LeavesTheRecordBehindIt) {
  const auto sheet = [](uint16_t past_row, uint16_t past_column) {
    StreamBuilder stream = Book().Dimensions(0, past_row, 0, past_column);
    stream.Formula(0, 0, 15, Bytes(8), Bytes{0x3A, 1, 0, 0, 0, 0, 0});
    return EndSheet(stream.LabelSst(0, 3, 0x00C9, 0x04030201));
  };
  Load(sheet(3, 5));
  EXPECT_EQ(Run(XLInsertRow, 2), 0);
  EXPECT_READS_AS(sheet(4, 5));
  EXPECT_EQ(Run(XLInsertCol, 2), 0);
  EXPECT_READS_AS(sheet(4, 6));
}

TEST_F(FormulaInItsRecord, LengthThatPromisesMoreThanTheRecord_InASheet_LeavesAllBehindIt) {
  const auto sheet = [](uint16_t past_row, uint16_t to) {
    StreamBuilder stream = Book().Dimensions(0, past_row, 0, 5);
    stream.Record(0x0006, U16(0) + U16(0) + U16(15) + Bytes(14) + U16(0x7FFF) + Ref(to, 1));
    return EndSheet(stream.Record(0x00FD, Ref(9, 1) + Ref(9, 1) + Ref(9, 1)));
  };
  Load(sheet(3, 9));
  EXPECT_EQ(Run(XLInsertRow, 3), 0);
  EXPECT_READS_AS(sheet(4, 10));
  EXPECT_EQ(LiveBlocks(), 2u);
}

}  // namespace
}  // namespace tolvenar
