// Formula adjustment: the reference rule, the area rule, the rectangles behind the tokens, and what a formula
// may not reach.
#include "edit/formula_adjustment.h"

#include <random>

#include "support/formula_builder.h"
#include "support/pool_fixture.h"
#include "support/stream_builder.h"

namespace tolvenar {
namespace {

using namespace testing::formula;  // Ref, Area and the other tokens
using testing::Bytes;
using testing::operator+;

class FormulaAdjustment : public testing::PoolTest {};

// ---- Edges of the walk ----

TEST_F(FormulaAdjustment, LengthBelowOne_ChangesNothing) {
  EXPECT_EQ(Adjusted(Ref(10, 1), 0, 0, kRowIn), (Outcome{1, Ref(10, 1)}));
  EXPECT_EQ(Adjusted(Ref(10, 1), -1, 0, kRowIn), (Outcome{1, Ref(10, 1)}));
}

TEST_F(FormulaAdjustment, TokensBehindTheLength_AreNotVisited) {
  EXPECT_EQ(Adjusted(Ref(10, 1) + Ref(10, 1), 4, 0, kRowIn), (Outcome{1, Ref(11, 1) + Ref(10, 1)}));
}

TEST_F(FormulaAdjustment, TokenThatBeginsBelowTheLength_IsAdjustedWhole) {
  EXPECT_EQ(Adjusted(Ref(10, 1) + Ref(10, 1), 5, 0, kRowIn), (Outcome{1, Ref(11, 1) + Ref(11, 1)}));
}

TEST_F(FormulaAdjustment, OtherTokens_AreSteppedOverByTheirSize) {
  const Bytes name = Bytes{0x43} + Bytes(14, 0x24);
  const Bytes name_x = Bytes{0x39} + Bytes(24, 0x24);
  const Bytes text = Bytes{0x17, 3, 0x24, 0x25, 0x24};
  const Bytes number = Bytes{0x1F} + Bytes(8, 0x24);
  const Bytes rest = Bytes{0x1E, 0x24, 0x00, 0x03, 0x19, 0x24, 0x24, 0x24, 0x42, 0x24, 0x24, 0x24};
  const Bytes array = Bytes{0x60, 1, 1, 0, 0x01, 0x24, 0x24, 0x24, 0x24, 0x24, 0x24, 0x24, 0x24};
  const Bytes head = name + name_x + text + number + rest + array;
  for (AdjustMode mode : {kRowIn, kRowDel, kColIn, kColDel}) {
    EXPECT_EQ(Adjusted(head, 0, mode), (Outcome{1, head}));
  }
  EXPECT_EQ(Adjusted(head + Ref(10, 1), 5, kRowIn), (Outcome{1, head + Ref(11, 1)}));
}

TEST_F(FormulaAdjustment, ErrorTokens_StayWhateverTheMode) {
  const Bytes tokens = Ref(10, 10, 0x2A) + Area(10, 12, 10, 12, 0x2B) + Ref3d(10, 10, 0x3C) +
                       Area3d(10, 12, 10, 12, 0x3D) + Ref(10, 10, 0x4A) + Area(10, 10, 10, 10, 0x6B);
  for (AdjustMode mode : {kRowIn, kRowDel, kColIn, kColDel}) {
    for (int16_t position : {int16_t{0}, int16_t{10}})
      EXPECT_EQ(Adjusted(tokens, position, mode), (Outcome{1, tokens}));
  }
}

// ---- ptgExp and ptgTbl ----

constexpr struct {
  const char* label;
  int16_t position;
  AdjustMode mode;
  uint16_t row;
  uint16_t column;
} kExpCases[] = {
    {"row inserted in front", 9, kRowIn, 11, 20},     {"row inserted at", 10, kRowIn, 11, 20},
    {"row inserted behind", 11, kRowIn, 10, 20},      {"row deleted in front", 9, kRowDel, 9, 20},
    {"row deleted at", 10, kRowDel, 10, 20},          {"row deleted behind", 11, kRowDel, 10, 20},
    {"column inserted in front", 19, kColIn, 10, 21}, {"column inserted at", 20, kColIn, 10, 21},
    {"column inserted behind", 21, kColIn, 10, 20},   {"column deleted in front", 19, kColDel, 10, 19},
    {"column deleted at", 20, kColDel, 10, 20},       {"column deleted behind", 21, kColDel, 10, 20},
};

TEST_F(FormulaAdjustment, ExpAndTbl_MoveTheOneFieldOfTheAxis) {
  for (const auto& row : kExpCases) {
    EXPECT_EQ(Adjusted(Exp(10, 20), row.position, row.mode), (Outcome{1, Exp(row.row, row.column)}))
        << row.label;
    EXPECT_EQ(Adjusted(Exp(10, 20, 0x02), row.position, row.mode),
              (Outcome{1, Exp(row.row, row.column, 0x02)}))
        << row.label;
  }
}

TEST_F(FormulaAdjustment, Exp_ComparesSigned) {
  for (AdjustMode mode : {kRowIn, kRowDel, kColIn, kColDel})
    EXPECT_EQ(Adjusted(Exp(0x8005, 0x8005), 3, mode), (Outcome{1, Exp(0x8005, 0x8005)}));
}

TEST_F(FormulaAdjustment, Exp_HasNoFlags) {
  EXPECT_EQ(Adjusted(Exp(0x4003, 0x4003), 9, kRowIn), (Outcome{1, Exp(0x4004, 0x4003)}));
  EXPECT_EQ(Adjusted(Exp(0x4003, 0x4003), 9, kColDel), (Outcome{1, Exp(0x4003, 0x4002)}));
}

// ---- The reference rule ----

constexpr struct {
  const char* label;
  int16_t position;
  AdjustMode mode;
  int16_t result;
  uint8_t id;
  uint16_t row;
  uint8_t column;
} kRefCases[] = {
    {"row inserted in front", 9, kRowIn, 1, 0x24, 11, 20},
    {"row inserted at", 10, kRowIn, 1, 0x24, 11, 20},
    {"row inserted behind", 11, kRowIn, 1, 0x24, 10, 20},
    {"row 8 deleted", 8, kRowDel, 1, 0x24, 9, 20},
    {"row 9 deleted: dead as well", 9, kRowDel, 0, 0x2A, 9, 20},
    {"row 10 deleted: dead", 10, kRowDel, 0, 0x2A, 10, 20},
    {"row 11 deleted", 11, kRowDel, 1, 0x24, 10, 20},
    {"column inserted in front", 19, kColIn, 1, 0x24, 10, 21},
    {"column inserted at", 20, kColIn, 1, 0x24, 10, 21},
    {"column inserted behind", 21, kColIn, 1, 0x24, 10, 20},
    {"column 18 deleted", 18, kColDel, 1, 0x24, 10, 19},
    {"column 19 deleted: dead, not reported", 19, kColDel, 1, 0x2A, 10, 19},
    {"column 20 deleted: dead, not reported", 20, kColDel, 1, 0x2A, 10, 20},
    {"column 21 deleted", 21, kColDel, 1, 0x24, 10, 20},
};

TEST_F(FormulaAdjustment, Ref_FollowsTheReferenceRule) {
  for (const auto& row : kRefCases) {
    EXPECT_EQ(Adjusted(Ref(10, 20), row.position, row.mode),
              (Outcome{row.result, Ref(row.row, row.column, row.id)}))
        << row.label;
  }
}

TEST_F(FormulaAdjustment, Ref3d_FollowsTheReferenceRuleFourteenBytesOn) {
  for (const auto& row : kRefCases) {
    const uint8_t id = row.id == 0x24 ? 0x3A : 0x3C;
    EXPECT_EQ(Adjusted(Ref3d(10, 20), row.position, row.mode),
              (Outcome{row.result, Ref3d(row.row, row.column, id)}))
        << row.label;
  }
}

constexpr struct {
  uint8_t id;
  uint8_t error;
} kRefErrors[] = {{0x24, 0x2A}, {0x2C, 0x2A}, {0x44, 0x4A}, {0x4C, 0x4A}, {0x64, 0x6A}, {0x6C, 0x6A}};
constexpr struct {
  uint8_t id;
  uint8_t error;
} kRef3dErrors[] = {{0x3A, 0x3C}, {0x5A, 0x5C}, {0x7A, 0x7C}};
constexpr struct {
  uint8_t id;
  uint8_t error;
} kAreaErrors[] = {{0x25, 0x2B}, {0x2D, 0x2B}, {0x45, 0x4B}, {0x4D, 0x4B}, {0x65, 0x6B}, {0x6D, 0x6B}};
constexpr struct {
  uint8_t id;
  uint8_t error;
} kArea3dErrors[] = {{0x3B, 0x3D}, {0x5B, 0x5D}, {0x7B, 0x7D}};

TEST_F(FormulaAdjustment, ErrorForms_KeepTheClass) {
  for (const auto& row : kRefErrors) {
    EXPECT_EQ(Adjusted(Ref(10, 1, row.id), 10, kRowDel), (Outcome{0, Ref(10, 1, row.error)}));
    EXPECT_EQ(Adjusted(Ref(10, 1, row.id), 1, kColDel), (Outcome{1, Ref(10, 1, row.error)}));
  }
  for (const auto& row : kRef3dErrors) {
    EXPECT_EQ(Adjusted(Ref3d(10, 1, row.id), 10, kRowDel), (Outcome{0, Ref3d(10, 1, row.error)}));
  }
  for (const auto& row : kAreaErrors) {
    EXPECT_EQ(Adjusted(Area(10, 10, 1, 1, row.id), 10, kRowDel), (Outcome{0, Area(10, 10, 1, 1, row.error)}));
    EXPECT_EQ(Adjusted(Area(10, 10, 1, 1, row.id), 1, kColDel), (Outcome{0, Area(10, 10, 1, 1, row.error)}));
  }
  for (const auto& row : kArea3dErrors) {
    EXPECT_EQ(Adjusted(Area3d(10, 10, 1, 1, row.id), 10, kRowDel),
              (Outcome{0, Area3d(10, 10, 1, 1, row.error)}));
  }
}

TEST_F(FormulaAdjustment, Ref_FlagsComeBackInBitsSevenAndSix) {
  for (AdjustMode mode : {kRowIn, kRowDel, kColIn, kColDel}) {
    EXPECT_EQ(Adjusted(Ref(0xC003, 1), 100, mode), (Outcome{1, Ref(0x00C3, 1)}));
    EXPECT_EQ(Adjusted(Ref(0x8003, 1), 100, mode), (Outcome{1, Ref(0x0083, 1)}));
    EXPECT_EQ(Adjusted(Ref(0x4003, 1), 100, mode), (Outcome{1, Ref(0x0043, 1)}));
  }
}

TEST_F(FormulaAdjustment, Ref_FlagsJoinTheRowThatMoved) {
  EXPECT_EQ(Adjusted(Ref(0xC003, 1), 0, kRowIn), (Outcome{1, Ref(0x00C4, 1)}));
  EXPECT_EQ(Adjusted(Ref(0xC003, 1), 3, kRowDel), (Outcome{0, Ref(0x00C3, 1, 0x2A)}));
}

TEST_F(FormulaAdjustment, Ref_RowBitsSevenAndSixOfItsOwnStay) {
  EXPECT_EQ(Adjusted(Ref(0x00C3, 1), 300, kRowIn), (Outcome{1, Ref(0x00C3, 1)}));
  EXPECT_EQ(Adjusted(Ref(0x8140, 1), 1, kColIn), (Outcome{1, Ref(0x01C0, 2)}));
}

TEST_F(FormulaAdjustment, Ref3d_TakesItsFlagsFromTheSheetReference) {
  // Flags in the row word are cleared and lost; bits 7 and 6 of the byte at +2 come in their place, and stay
  // where they are.
  EXPECT_EQ(Adjusted(Ref3d(0xC003, 1), 100, kRowIn), (Outcome{1, Ref3d(0x0003, 1)}));
  EXPECT_EQ(Adjusted(Ref3d(0x0003, 1, 0x3A, 0xFF), 100, kColDel), (Outcome{1, Ref3d(0x00C3, 1, 0x3A, 0xFF)}));
  EXPECT_EQ(Adjusted(Ref3d(0x8003, 1, 0x5A, 0x40), 0, kRowIn), (Outcome{1, Ref3d(0x0044, 1, 0x5A, 0x40)}));
}

TEST_F(FormulaAdjustment, Ref_ColumnWrapsInEightBits) {
  EXPECT_EQ(Adjusted(Ref(10, 255), 255, kColIn), (Outcome{1, Ref(10, 0)}));
  EXPECT_EQ(Adjusted(Ref(10, 255), 3, kColIn), (Outcome{1, Ref(10, 0)}));
  EXPECT_EQ(Adjusted(Ref(10, 255), 256, kColIn), (Outcome{1, Ref(10, 255)}));
  EXPECT_EQ(Adjusted(Ref(10, 0), -1, kColDel), (Outcome{1, Ref(10, 255)}));
}

TEST_F(FormulaAdjustment, Ref_LastRowOfThe14Bits_CarriesIntoTheFlags) {
  EXPECT_EQ(Adjusted(Ref(0x3FFF, 1), 0, kRowIn), (Outcome{1, Ref(0x4000, 1)}));
}

TEST_F(FormulaAdjustment, Ref_PositionBeforeTheFirstRow_Compares_Signed) {
  EXPECT_EQ(Adjusted(Ref(10, 1), -1, kRowIn), (Outcome{1, Ref(11, 1)}));
  EXPECT_EQ(Adjusted(Ref(0, 1), -1, kRowDel), (Outcome{0, Ref(0xFFFF, 1, 0x2A)}));
}

// ---- The area rule ----

constexpr struct {
  const char* label;
  int16_t position;
  AdjustMode mode;
  int16_t result;
  uint8_t first;
  uint8_t last;
} kAreaCases[] = {
    {"inserted in front", 9, kRowIn, 1, 11, 13},
    {"inserted at the first", 10, kRowIn, 1, 11, 13},
    {"inserted inside", 11, kRowIn, 1, 10, 13},
    {"inserted at the last", 12, kRowIn, 1, 10, 13},
    {"inserted behind", 13, kRowIn, 1, 10, 12},
    {"8 deleted", 8, kRowDel, 1, 9, 11},
    {"9 deleted: moved and then shrunk", 9, kRowDel, 1, 9, 10},
    {"first deleted", 10, kRowDel, 1, 10, 11},
    {"middle deleted", 11, kRowDel, 1, 10, 11},
    {"last deleted", 12, kRowDel, 1, 10, 11},
    {"13 deleted", 13, kRowDel, 1, 10, 12},
};

TEST_F(FormulaAdjustment, Area_FollowsTheAreaRuleOnRows) {
  for (const auto& row : kAreaCases) {
    EXPECT_EQ(Adjusted(Area(10, 12, 1, 5), row.position, row.mode),
              (Outcome{row.result, Area(row.first, row.last, 1, 5)}))
        << row.label;
    EXPECT_EQ(Adjusted(Area3d(10, 12, 1, 5), row.position, row.mode),
              (Outcome{row.result, Area3d(row.first, row.last, 1, 5)}))
        << row.label;
  }
}

TEST_F(FormulaAdjustment, Area_FollowsTheAreaRuleOnColumns) {
  for (const auto& row : kAreaCases) {
    const AdjustMode mode = row.mode == kRowIn ? kColIn : kColDel;
    EXPECT_EQ(Adjusted(Area(1, 5, 10, 12), row.position, mode),
              (Outcome{row.result, Area(1, 5, row.first, row.last)}))
        << row.label;
    EXPECT_EQ(Adjusted(Area3d(1, 5, 10, 12), row.position, mode),
              (Outcome{row.result, Area3d(1, 5, row.first, row.last)}))
        << row.label;
  }
}

TEST_F(FormulaAdjustment, OneRowArea_DiesWithItsRowAndWithTheRowInFront) {
  EXPECT_EQ(Adjusted(Area(10, 10, 1, 5), 8, kRowDel), (Outcome{1, Area(9, 9, 1, 5)}));
  EXPECT_EQ(Adjusted(Area(10, 10, 1, 5), 9, kRowDel), (Outcome{0, Area(9, 9, 1, 5, 0x2B)}));
  EXPECT_EQ(Adjusted(Area(10, 10, 1, 5), 10, kRowDel), (Outcome{0, Area(10, 10, 1, 5, 0x2B)}));
  EXPECT_EQ(Adjusted(Area(10, 10, 1, 5), 11, kRowDel), (Outcome{1, Area(10, 10, 1, 5)}));
}

TEST_F(FormulaAdjustment, OneColumnArea_ThatDies_ReportsIt) {
  EXPECT_EQ(Adjusted(Area(1, 5, 10, 10), 9, kColDel), (Outcome{0, Area(1, 5, 9, 9, 0x2B)}));
  EXPECT_EQ(Adjusted(Area3d(1, 5, 10, 10), 10, kColDel), (Outcome{0, Area3d(1, 5, 10, 10, 0x3D)}));
}

TEST_F(FormulaAdjustment, TwoRowArea_DiesWhenItsStepsLeaveTheDeletedRow) {
  EXPECT_EQ(Adjusted(Area(10, 11, 1, 5), 9, kRowDel), (Outcome{0, Area(9, 9, 1, 5, 0x2B)}));
  EXPECT_EQ(Adjusted(Area(10, 11, 1, 5), 10, kRowDel), (Outcome{0, Area(10, 10, 1, 5, 0x2B)}));
  EXPECT_EQ(Adjusted(Area(10, 11, 1, 5), 11, kRowDel), (Outcome{1, Area(10, 10, 1, 5)}));
}

TEST_F(FormulaAdjustment, Area_FlagsOfBothRowWordsComeBackInBitsSevenAndSix) {
  for (AdjustMode mode : {kRowIn, kRowDel, kColIn, kColDel}) {
    EXPECT_EQ(Adjusted(Area(0x8003, 0x4005, 1, 5), 100, mode), (Outcome{1, Area(0x0083, 0x0045, 1, 5)}));
    EXPECT_EQ(Adjusted(Area3d(0xC003, 0xC005, 1, 5), 100, mode), (Outcome{1, Area3d(0x00C3, 0x00C5, 1, 5)}));
  }
}

TEST_F(FormulaAdjustment, Area_ColumnsWrapInEightBits) {
  EXPECT_EQ(Adjusted(Area(1, 5, 200, 255), 100, kColIn), (Outcome{1, Area(1, 5, 201, 0)}));
  EXPECT_EQ(Adjusted(Area(1, 5, 255, 255), 255, kColIn), (Outcome{1, Area(1, 5, 0, 0)}));
  EXPECT_EQ(Adjusted(Area(1, 5, 0, 255), 10, kColIn), (Outcome{1, Area(1, 5, 0, 0)}));
}

TEST_F(FormulaAdjustment, Area_ColumnsCompareInSixteenBits) {
  // First column 256 after the move: the position is not between it and the last one, which it would be in 8
  // bits.
  EXPECT_EQ(Adjusted(Area(1, 5, 255, 10), 5, kColIn), (Outcome{1, Area(1, 5, 0, 11)}));
}

// ---- One death among many ----

TEST_F(FormulaAdjustment, ResultIsZeroWhenAnyOneTokenDied) {
  const Bytes before = Ref(3, 1) + Ref(10, 1) + Ref(20, 1) + Bytes{0x03};
  const Bytes after = Ref(3, 1) + Ref(10, 1, 0x2A) + Ref(19, 1) + Bytes{0x03};
  EXPECT_EQ(Adjusted(before, 10, kRowDel), (Outcome{0, after}));
}

// ---- The rectangles behind the tokens ----

TEST_F(FormulaAdjustment, Rectangles_FollowTheAreaRuleWithoutFlags) {
  const Bytes head = MemArea(12) + Ref(3, 1);
  EXPECT_EQ(Adjusted(head + Rect(10, 12, 1, 2) + Rect(2, 4, 5, 6), 11, kRowIn),
            (Outcome{1, head + Rect(10, 13, 1, 2) + Rect(2, 4, 5, 6)}));
  EXPECT_EQ(Adjusted(head + Rect(0x4003, 0x4005, 10, 12) + Rect(2, 4, 50, 60), 9, kColDel),
            (Outcome{1, head + Rect(0x4003, 0x4005, 9, 10) + Rect(2, 4, 49, 59)}));
  const Bytes one = MemArea(6);
  EXPECT_EQ(Adjusted(one + Rect(0x4003, 0x4005, 1, 2), 11, kRowIn),
            (Outcome{1, one + Rect(0x4004, 0x4006, 1, 2)}));
}

TEST_F(FormulaAdjustment, Rectangles_NeverBecomeAnError) {
  const Bytes head = MemArea(6);
  EXPECT_EQ(Adjusted(head + Rect(10, 10, 1, 1), 10, kRowDel), (Outcome{1, head + Rect(10, 10, 1, 1)}));
  EXPECT_EQ(Adjusted(head + Rect(10, 10, 7, 7), 6, kColDel), (Outcome{1, head + Rect(10, 10, 6, 6)}));
}

TEST_F(FormulaAdjustment, Rectangles_AreNotWalkedAsTokens) {
  // The list is full of ids of references.
  const Bytes list = Rect(0x2424, 0x2424, 0x24, 0x24);
  EXPECT_EQ(Adjusted(MemArea(6) + list, 0, kColIn),
            (Outcome{1, MemArea(6) + Rect(0x2424, 0x2424, 0x25, 0x25)}));
}

TEST_F(FormulaAdjustment, Rectangles_CountIsRoundedUp) {
  // 7 bytes of extra data are two rectangles; the second lies 5 bytes behind the formula.
  const Bytes tokens = MemArea(7) + Rect(10, 12, 1, 2) + Rect(20, 22, 3, 4);
  const Bytes moved = MemArea(7) + Rect(11, 13, 1, 2) + Rect(21, 23, 3, 4);
  EXPECT_EQ(Adjusted(tokens, 7 + 7, 0, kRowIn), (Outcome{1, moved}));
}

TEST_F(FormulaAdjustment, ThreeByteMemToken_TakesItsCountFromTheTokenBehindIt) {
  // ptgMemFunc, then a ptgBool whose value, with the next id, reads as 6 bytes of extra data.
  const Bytes head = Bytes{0x29, 0x00, 0x00, 0x03, 0x1D, 0x06, 0x00};
  EXPECT_EQ(Adjusted(head + Rect(10, 12, 1, 2), 0, kRowIn), (Outcome{1, head + Rect(11, 13, 1, 2)}));
}

TEST_F(FormulaAdjustment, MoreExtraDataThanFormula_BeginsTheListInFrontOfIt) {
  uint32_t handle = MEMORYALLOC(256);
  const Block block = OpenBlock(handle);
  const Bytes stream = Rect(10, 12, 1, 2) + MemArea(7 + 6) + Bytes(5);
  CopyIn(block, 0, stream.data(), static_cast<uint32_t>(stream.size()));
  EXPECT_EQ(AdjustFormulaReferences(block, 6, 7, 50, kRowIn), 1);
  EXPECT_EQ(testing::BlockContents(handle, static_cast<uint32_t>(stream.size())), stream);
  EXPECT_EQ(AdjustFormulaReferences(block, 6, 7, 11, kRowIn), 1);
  EXPECT_EQ(U16At(block, 0), 10);
  EXPECT_EQ(U16At(block, 2), 13);
  MEMORYFREE(&handle);
}

TEST_F(FormulaAdjustment, ExtraDataThatWrapsPastTheLength_VisitsNoTokenBehindIt) {
  const Bytes tokens = MemArea(0xFFFF) + Ref(10, 1);
  EXPECT_EQ(Adjusted(tokens, 7, 0, kRowIn), (Outcome{1, tokens}));
}

TEST_F(FormulaAdjustment, FieldsOfTheLastToken_CanLieBehindTheFormula) {
  // A 3d reference as BIFF8 writes it takes 7 bytes. By the one layout there is its row stands at +15, column
  // at +17.
  const Bytes biff8 = {0x5A, 0x01, 0x00, 0x5C, 0x01, 0x05, 0xC0};
  const Bytes behind = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0x0A, 0x00, 0x14};
  Bytes moved = behind;
  moved[8] = 0x0B;
  EXPECT_EQ(Adjusted(biff8 + behind, 7, 3, kRowIn), (Outcome{1, biff8 + moved}));
}

// ---- Oddities of ids beyond the table ----

TEST_F(FormulaAdjustment, IdsBeyondTheTable_AreTreatedByTheirBaseAndTakeOneByte) {
  EXPECT_EQ(Adjusted(Bytes{0xA4, 0x0A, 0x00, 0x00}, 1, 0, kRowIn),
            (Outcome{1, Bytes{0xA4, 0x0B, 0x00, 0x00}}));
  EXPECT_EQ(Adjusted(Bytes{0x81, 0x0A, 0x00, 0x05, 0x00}, 1, 0, kColIn),
            (Outcome{1, Bytes{0x81, 0x0A, 0x00, 0x06, 0x00}}));
}

TEST_F(FormulaAdjustment, IdsBeyondTheTable_HaveNoErrorForm) {
  EXPECT_EQ(Adjusted(Bytes{0xC4, 0x0A, 0x00, 0x00}, 1, 10, kRowDel),
            (Outcome{1, Bytes{0xC4, 0x0A, 0x00, 0x00}}));
}

// ---- Nothing outside the block ----

TEST_F(FormulaAdjustment, LengthBeyondTheBlock_EndsAndChangesNothingBehindIt) {
  for (uint32_t place = 240; place <= 260; ++place) {
    for (int id = 0; id < 256; ++id) {
      uint32_t handle = MEMORYALLOC(256);
      MEMORYSET1(&handle, 256, static_cast<uint8_t>(id));
      for (AdjustMode mode : {kRowIn, kRowDel, kColIn, kColDel}) {
        AdjustFormulaReferences(OpenBlock(handle), place, INT16_MAX, 0, mode);
      }
      MEMORYFREE(&handle);
    }
  }
  EXPECT_EQ(LiveBlocks(), 0u);
}

TEST_F(FormulaAdjustment, TokensOutsideTheBlock_ChangeNothing) {
  uint32_t handle = MEMORYALLOC(256);
  MEMORYSET1(&handle, 256, 0x24);
  for (uint32_t tokens : {256u, 0x7FFFFFFFu, 0xFFFFFF00u}) {
    EXPECT_EQ(AdjustFormulaReferences(OpenBlock(handle), tokens, 100, 0, kRowIn), 1);
  }
  EXPECT_EQ(testing::BlockContents(handle, 256), Bytes(256, 0x24));
  EXPECT_EQ(AdjustFormulaReferences(Block{}, 0, 100, 0, kRowIn), 1);
  MEMORYFREE(&handle);
}

TEST_F(FormulaAdjustment, ListThatWouldBeginInFrontOfTheBlock_ChangesNothingThere) {
  uint32_t handle = MEMORYALLOC(256);
  const Block block = OpenBlock(handle);
  const Bytes tokens = MemArea(0x6000);
  CopyIn(block, 0, tokens.data(), static_cast<uint32_t>(tokens.size()));
  EXPECT_EQ(AdjustFormulaReferences(block, 0, 7, 0x7000, kRowIn), 1);
  EXPECT_EQ(testing::BlockContents(handle, 7), tokens);
  MEMORYFREE(&handle);
}

TEST_F(FormulaAdjustment, ArrayThatCarriesPastTheEnd_EndsTheWalk) {
  // 0x7FFF elements of 2 bytes each make 65538 bytes: the reference behind the header is an element, not a
  // token.
  const Bytes tokens = Bytes{0x20, 0x01, 0xFF, 0x7F} + Bytes(2) + Ref(10, 1);
  EXPECT_EQ(Adjusted(tokens, 0, kColIn), (Outcome{1, tokens}));
}

TEST_F(FormulaAdjustment, RandomBytes_EndAndStayInTheBlock) {
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    uint32_t handle = MEMORYALLOC(256);
    const Block block = OpenBlock(handle);
    for (uint32_t i = 0; i < 256; ++i) PutU8(block, i, static_cast<uint8_t>(random()));
    const uint32_t tokens = static_cast<uint32_t>(random() % 256);
    const int16_t length = static_cast<int16_t>(random() % 400);
    const int16_t position = static_cast<int16_t>(random());
    AdjustFormulaReferences(block, tokens, length, position, static_cast<AdjustMode>(random() % 4));
    MEMORYFREE(&handle);
  }
  EXPECT_EQ(LiveBlocks(), 0u);
}

}  // namespace
}  // namespace tolvenar
