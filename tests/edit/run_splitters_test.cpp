// The six run splitters: the pieces, the places, the four oddities of the right-hand side, and what each
// failure leaves.
#include "edit/run_splitters.h"

#include "edit/cell_writers.h"
#include "edit/sheet_edit_fixture.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::kFiller;
using testing::StreamBuilder;
using testing::U32;
using testing::operator+;

using Splitter = int32_t (*)(uint32_t*, uint32_t*, uint32_t, int16_t);
using Stream = StreamBuilder;

constexpr uint8_t kTenant = 0xEE;  // what an earlier tenant left in the scratch slot

class RunSplittersTest : public testing::SheetEditTest {
 protected:
  // A run and a filler behind it; the slot that the copy of the body will get has been used before.
  void OpenRun(const Stream& run) {
    StreamBuilder book = Sheet(6);
    run_ = book.Here();
    Open(book.Raw(run.Stream()).Raw(kFiller));
    uint32_t tenant = MEMORYALLOC(1);
    MEMORYSET1(&tenant, static_cast<int32_t>(MEMORYALLOCSIZE(tenant)), kTenant);
    MEMORYFREE(&tenant);
  }

  // Columns 2 to 6 of row 1.
  static Stream RkRun() {
    return Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}, {23, 0x33}, {24, 0x44}, {25, 0x55}});
  }
  static Stream BlankRun() { return Stream().MulBlank(1, 2, {21, 22, 23, 24, 25}); }

  int32_t Split(Splitter split, int16_t column) { return split(&buffer_, &size_, run_, column); }

  Bytes BytesAt(uint32_t at, uint32_t count) const {
    Bytes bytes(count);
    CopyOut(OpenBlock(buffer_), at, bytes.data(), count);
    return bytes;
  }

  uint32_t run_ = 0;
};

// One split of a run with a cell written at the result: what stands in the walk.
struct SplitCase {
  const char* label;
  int16_t column;
  Stream pieces;
};

class SplitForChangeTest : public RunSplittersTest {
 protected:
  void Check(Splitter split, const Stream& run, const SplitCase& c) {
    SCOPED_TRACE(c.label);
    OpenRun(run);
    const int32_t place = Split(split, c.column);
    ASSERT_GT(place, 0);
    EXPECT_EQ(LiveBlocks(), live_);
    EXPECT_EQ(WriteBlankCell(&buffer_, &size_, static_cast<uint32_t>(place), 2, c.column, 99), kWriteDone);
    EXPECT_EQ(Cells(), c.pieces.Stream() + kFiller);
    EXPECT_EQ(LiveBlocks(), live_);
    MEMORYFREEALL();
  }
};

TEST_F(SplitForChangeTest, MulRk_LeavesThePiecesOnBothSidesOfTheNewCell) {
  const SplitCase cases[] = {
      {"first", 3, Stream().Blank(1, 2, 99).MulRk(1, 3, {{22, 0x22}, {23, 0x33}, {24, 0x44}, {25, 0x55}})},
      {"second", 4,
       Stream().Rk(1, 2, 21, 0x11).Blank(1, 3, 99).MulRk(1, 4, {{23, 0x33}, {24, 0x44}, {25, 0x55}})},
      {"middle", 5,
       Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}}).Blank(1, 4, 99).MulRk(1, 5, {{24, 0x44}, {25, 0x55}})},
      {"last but one", 6,
       Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}, {23, 0x33}}).Blank(1, 5, 99).Rk(1, 6, 25, 0x55)},
      {"last", 7, Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}, {23, 0x33}, {24, 0x44}}).Blank(1, 6, 99)},
  };
  for (const SplitCase& c : cases) Check(SplitMulRkForChange, RkRun(), c);
}

TEST_F(SplitForChangeTest, MulBlank_LeavesThePiecesOnBothSidesOfTheNewCell) {
  const SplitCase cases[] = {
      {"first", 3, Stream().Blank(1, 2, 99).MulBlank(1, 3, {22, 23, 24, 25})},
      {"second", 4, Stream().Blank(1, 2, 21).Blank(1, 3, 99).MulBlank(1, 4, {23, 24, 25})},
      {"middle", 5, Stream().MulBlank(1, 2, {21, 22}).Blank(1, 4, 99).MulBlank(1, 5, {24, 25})},
      {"last", 7, Stream().MulBlank(1, 2, {21, 22, 23, 24}).Blank(1, 6, 99)},
  };
  for (const SplitCase& c : cases) Check(SplitMulBlankForChange, BlankRun(), c);
}

TEST_F(SplitForChangeTest, MulBlankWithOneCellOnTheRight_GivesItTheColumnOfTheNewCell) {
  Check(SplitMulBlankForChange, BlankRun(),
        {"last but one", 6, Stream().MulBlank(1, 2, {21, 22, 23}).Blank(1, 5, 99).Blank(1, 5, 25)});
}

TEST_F(SplitForChangeTest, ShortRuns_LeaveLoneCellsOrNothing) {
  const Stream two = Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}});
  Check(SplitMulRkForChange, two, {"first of two", 3, Stream().Blank(1, 2, 99).Rk(1, 3, 22, 0x22)});
  Check(SplitMulRkForChange, two, {"last of two", 4, Stream().Rk(1, 2, 21, 0x11).Blank(1, 3, 99)});
  Check(SplitMulRkForChange, Stream().MulRk(1, 2, {{21, 0x11}}), {"only", 3, Stream().Blank(1, 2, 99)});
  const Stream blanks = Stream().MulBlank(1, 2, {21, 22});
  Check(SplitMulBlankForChange, blanks, {"first of two", 3, Stream().Blank(1, 2, 99).Blank(1, 2, 22)});
  Check(SplitMulBlankForChange, blanks, {"last of two", 4, Stream().Blank(1, 2, 21).Blank(1, 3, 99)});
  Check(SplitMulBlankForChange, Stream().MulBlank(1, 2, {21}), {"only", 3, Stream().Blank(1, 2, 99)});
}

TEST_F(RunSplittersTest, MulRkForChange_LaysTheBytesAsDrawn) {
  OpenRun(Stream().MulRk(1, 0, {{21, 0x11}, {22, 0x22}, {23, 0x33}, {24, 0x44}}));
  const uint32_t old_size = size_;
  const int32_t place = Split(SplitMulRkForChange, 3);
  EXPECT_EQ(place, static_cast<int32_t>(run_ + 22));
  EXPECT_EQ(BytesAt(run_, 22),
            (Bytes{0xBD, 0, 18, 0, 1, 0, 0, 0, 21, 0, 0x11, 0, 0, 0, 22, 0, 0x22, 0, 0, 0, 1, 0}));
  EXPECT_EQ(BytesAt(run_ + 22, 8), (Bytes{0xFF, 0xFE, 4, 0} + U32(old_size)));
  EXPECT_EQ(BytesAt(old_size, 14), (Bytes{0x7E, 0x02, 10, 0, 1, 0, 3, 0, 24, 0, 0x44, 0, 0, 0}));
  EXPECT_EQ(BytesAt(old_size + 14, 4), (Bytes{0xFD, 0xFE, 8, 0}));
  EXPECT_EQ(BytesAt(old_size + 26, 8), (Bytes{0xFA, 0xFE, 4, 0} + U32(run_ + 34)));
  EXPECT_EQ(size_, old_size + 34);
}

TEST_F(RunSplittersTest, MulRkForChange_WithoutLeftPiece_PlacesTheRightOneAtTheRun) {
  OpenRun(RkRun());
  EXPECT_EQ(Split(SplitMulRkForChange, 3), static_cast<int32_t>(run_));
  EXPECT_EQ(BytesAt(run_, 4), (Bytes{0xBD, 0, 30, 0}));
  EXPECT_EQ(BytesAt(run_ + 34, 4), (Bytes{0xFD, 0xFE, 2, 0}));
  EXPECT_EQ(size_, opened_.size());
}

TEST_F(RunSplittersTest, MulBlankForChange_WithoutLeftPiece_GoesBehindTheErasedRun) {
  OpenRun(BlankRun());
  EXPECT_EQ(Split(SplitMulBlankForChange, 3), static_cast<int32_t>(run_ + 20));
  EXPECT_EQ(BytesAt(run_, 4), (Bytes{0xFD, 0xFE, 16, 0}));
  EXPECT_EQ(BytesAt(run_ + 20, 4), (Bytes{0xFF, 0xFE, 4, 0}));
  EXPECT_EQ(Cells(), Stream().MulBlank(1, 3, {22, 23, 24, 25}).Stream() + kFiller);
}

TEST_F(RunSplittersTest, MulBlankForChange_OfARunOfOneCell_GoesBehindItToo) {
  OpenRun(Stream().MulBlank(1, 2, {21}));
  EXPECT_EQ(Split(SplitMulBlankForChange, 3), static_cast<int32_t>(run_ + 12));
  EXPECT_EQ(BytesAt(run_, 4), (Bytes{0xFD, 0xFE, 8, 0}));
  EXPECT_EQ(size_, opened_.size());
}

TEST_F(RunSplittersTest, LeftPieceThatDoesNotFit_HasThePlaceBehindItInThePatchArea) {
  OpenRun(BlankRun());  // without its last cell the run is 2 bytes too long for a SLACK behind it
  const uint32_t old_size = size_;
  EXPECT_EQ(Split(SplitMulBlankForChange, 7), static_cast<int32_t>(old_size + 18));
  EXPECT_EQ(BytesAt(run_, 8), (Bytes{0xFF, 0xFE, 4, 0} + U32(old_size)));
  EXPECT_EQ(BytesAt(old_size, 4), (Bytes{0xBE, 0, 14, 0}));
  EXPECT_EQ(BytesAt(old_size + 18, 4), (Bytes{0xFD, 0xFE, 16, 0}));
}

// One split for a column edit: what stands in the walk.
class SplitForColumnTest : public RunSplittersTest {
 protected:
  void Check(Splitter split, const Stream& run, const SplitCase& c) {
    SCOPED_TRACE(c.label);
    OpenRun(run);
    EXPECT_GT(Split(split, c.column), 0);
    EXPECT_EQ(Cells(), c.pieces.Stream() + kFiller);
    EXPECT_EQ(LiveBlocks(), live_);
    MEMORYFREEALL();
  }
};

TEST_F(SplitForColumnTest, MulRkForInsert_MovesTheRightPieceOn) {
  const SplitCase cases[] = {
      {"first", 3, Stream().MulRk(1, 3, {{21, 0x11}, {22, 0x22}, {23, 0x33}, {24, 0x44}, {25, 0x55}})},
      {"second", 4,
       Stream().Rk(1, 2, 21, 0x11).MulRk(1, 4, {{22, 0x22}, {23, 0x33}, {24, 0x44}, {25, 0x55}})},
      {"last but one", 6,
       Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}, {23, 0x33}}).MulRk(1, 6, {{24, 0x44}, {25, 0x55}})},
      {"one behind", 8, RkRun()},
  };
  for (const SplitCase& c : cases) Check(SplitMulRkForInsert, RkRun(), c);
}

TEST_F(SplitForColumnTest, MulRkForInsertAtTheLastCell_ReadsItOneCellTooFarOn) {
  const Stream left = Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}, {23, 0x33}, {24, 0x44}});
  const Stream lost = Stream().Raw({0x7E, 0x02, 10, 0, 1, 0, 7, 0, 6, 0, kTenant, kTenant, kTenant, kTenant});
  Check(SplitMulRkForInsert, RkRun(), {"last", 7, Stream().Raw(left.Stream()).Raw(lost.Stream())});
}

TEST_F(SplitForColumnTest, MulBlankForInsert_MovesTheRightPieceOn) {
  const SplitCase cases[] = {
      {"first", 3, Stream().MulBlank(1, 3, {21, 22, 23, 24, 25})},
      {"second", 4, Stream().Blank(1, 2, 21).MulBlank(1, 4, {22, 23, 24, 25})},
      {"last but one", 6, Stream().MulBlank(1, 2, {21, 22, 23}).MulBlank(1, 6, {24, 25})},
      {"one behind", 8, BlankRun()},
  };
  for (const SplitCase& c : cases) Check(SplitMulBlankForInsert, BlankRun(), c);
}

TEST_F(SplitForColumnTest, MulBlankForInsertAtTheLastCell_MakesALongBlank) {
  Check(SplitMulBlankForInsert, BlankRun(),
        {"last", 7,
         Stream().MulBlank(1, 2, {21, 22, 23, 24}).Raw({0x01, 0x02, 10, 0, 1, 0, 7, 0, 25, 0, 0, 0, 0, 0})});
}

TEST_F(SplitForColumnTest, MulRkForDelete_ClosesTheGap) {
  const SplitCase cases[] = {
      {"first", 3, Stream().MulRk(1, 2, {{22, 0x22}, {23, 0x33}, {24, 0x44}, {25, 0x55}})},
      {"second", 4, Stream().Rk(1, 2, 21, 0x11).MulRk(1, 3, {{23, 0x33}, {24, 0x44}, {25, 0x55}})},
      {"last but one", 6, Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}, {23, 0x33}}).Rk(1, 5, 25, 0x55)},
      {"last", 7, Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}, {23, 0x33}, {24, 0x44}})},
  };
  for (const SplitCase& c : cases) Check(SplitMulRkForDelete, RkRun(), c);
}

TEST_F(SplitForColumnTest, MulBlankForDelete_ClosesTheGap) {
  const SplitCase cases[] = {
      {"first", 3, Stream().MulBlank(1, 2, {22, 23, 24, 25})},
      {"second", 4, Stream().Blank(1, 2, 21).MulBlank(1, 3, {23, 24, 25})},
      {"last", 7, Stream().MulBlank(1, 2, {21, 22, 23, 24})},
  };
  for (const SplitCase& c : cases) Check(SplitMulBlankForDelete, BlankRun(), c);
}

TEST_F(SplitForColumnTest, MulBlankForDeleteWithOneCellOnTheRight_MakesALongBlank) {
  Check(SplitMulBlankForDelete, BlankRun(),
        {"last but one", 6,
         Stream().MulBlank(1, 2, {21, 22, 23}).Raw({0x01, 0x02, 10, 0, 1, 0, 5, 0, 25, 0, 0, 0, 0, 0})});
}

TEST_F(RunSplittersTest, ColumnSplitters_EndAtTheRecordAfterThePieces) {
  OpenRun(RkRun());
  EXPECT_EQ(Split(SplitMulRkForDelete, 3), static_cast<int32_t>(run_ + 34));  // the rest of the room
  MEMORYFREEALL();
  OpenRun(RkRun());
  EXPECT_EQ(Split(SplitMulRkForDelete, 7), static_cast<int32_t>(run_ + 34));  // no right piece
  MEMORYFREEALL();
  OpenRun(Stream().MulRk(1, 2, {{21, 0x11}, {22, 0x22}, {23, 0x33}}));
  EXPECT_EQ(Split(SplitMulRkForDelete, 4), static_cast<int32_t>(run_ + 28));  // two RKs fill the room exactly
  EXPECT_EQ(BytesAt(run_ + 28, 8), kFiller);
  MEMORYFREEALL();
  OpenRun(RkRun());
  const uint32_t old_size = size_;
  EXPECT_EQ(Split(SplitMulRkForInsert, 4),
            static_cast<int32_t>(old_size + 34));  // the right piece was patched in
  EXPECT_EQ(BytesAt(old_size + 34, 2), (Bytes{0xFD, 0xFE}));
}

TEST_F(RunSplittersTest, InsertSplitters_WithoutLeftPiece_PlaceTheRightOneAtTheRun) {
  OpenRun(RkRun());
  EXPECT_EQ(Split(SplitMulRkForInsert, 3), static_cast<int32_t>(run_ + 40));
  EXPECT_EQ(BytesAt(run_, 8), (Bytes{0xBD, 0, 36, 0, 1, 0, 3, 0}));
  EXPECT_EQ(size_, opened_.size());
  MEMORYFREEALL();
  OpenRun(BlankRun());
  EXPECT_EQ(Split(SplitMulBlankForInsert, 3), static_cast<int32_t>(run_ + 20));
  EXPECT_EQ(BytesAt(run_, 8), (Bytes{0xBE, 0, 16, 0, 1, 0, 3, 0}));
  EXPECT_EQ(size_, opened_.size());
}

TEST_F(RunSplittersTest, OnlyCellOfARun_DeletedOrMovedOn) {
  OpenRun(Stream().MulRk(1, 2, {{21, 0x11}}));
  EXPECT_EQ(Split(SplitMulRkForDelete, 3), static_cast<int32_t>(run_));  // no piece: the place of the run
  EXPECT_EQ(BytesAt(run_, 4), (Bytes{0xFD, 0xFE, 12, 0}));
  MEMORYFREEALL();
  OpenRun(Stream().MulBlank(1, 2, {21}));
  EXPECT_EQ(Split(SplitMulBlankForDelete, 3), static_cast<int32_t>(run_));
  EXPECT_EQ(BytesAt(run_, 4), (Bytes{0xFD, 0xFE, 8, 0}));
  MEMORYFREEALL();
  OpenRun(Stream().MulRk(1, 2, {{21, 0x11}}));  // 16 bytes have no room for an RK and a header behind it
  const uint32_t old_size = size_;
  EXPECT_EQ(Split(SplitMulRkForInsert, 3), static_cast<int32_t>(old_size + 14));
  EXPECT_EQ(BytesAt(old_size, 14),
            (Bytes{0x7E, 0x02, 10, 0, 1, 0, 3, 0, 2, 0, kTenant, kTenant, kTenant, kTenant}));
  EXPECT_EQ(LiveBlocks(), live_);
}

constexpr Splitter kAllSplitters[] = {SplitMulRkForChange,    SplitMulBlankForChange, SplitMulRkForInsert,
                                      SplitMulBlankForInsert, SplitMulRkForDelete,    SplitMulBlankForDelete};

bool TakesMulRk(size_t splitter) {
  return splitter % 2 == 0;
}

TEST_F(RunSplittersTest, NoBuffer_Gives0) {
  uint32_t null = 0;
  uint32_t stale = 0x1234;
  uint32_t size = 100;
  for (Splitter split : kAllSplitters) {
    EXPECT_EQ(split(&null, &size, 8, 3), 0);
    EXPECT_EQ(split(&stale, &size, 8, 3), 0);
    EXPECT_EQ(LiveBlocks(), 0u);
  }
}

TEST_F(RunSplittersTest, ColumnOutsideTheRun_Gives0AndLeavesTheCopyOfTheBody) {
  for (size_t i = 0; i < std::size(kAllSplitters); ++i) {
    SCOPED_TRACE(i);
    for (int16_t column : testing::Columns{2, 9, -32768}) {
      OpenRun(TakesMulRk(i) ? RkRun() : BlankRun());
      EXPECT_EQ(Split(kAllSplitters[i], column), 0);
      EXPECT_EQ(Contents(), opened_);
      EXPECT_EQ(LiveBlocks(), live_ + 1);
      MEMORYFREEALL();
    }
  }
}

TEST_F(RunSplittersTest, PieceTooLongForAPatch_FailsAsAPatch) {
  // The run says that it goes to column 30000, and has the bytes of one cell. 20000 cells are 120010 bytes,
  // which count as negative in 16 bits; 11000 are 66010 bytes, which count as 474.
  for (int16_t column : testing::Columns{20001, 11001}) {
    OpenRun(Stream().Raw({0xBD, 0, 12, 0, 1, 0, 0, 0, 15, 0, 1, 0, 0, 0, 0x30, 0x75}));
    EXPECT_EQ(Split(SplitMulRkForChange, column), 0);
    EXPECT_NE(buffer_, 0u);
    EXPECT_EQ(size_, opened_.size());
    EXPECT_EQ(Cells(), kFiller);
    EXPECT_EQ(LiveBlocks(), live_ + 3);
    MEMORYFREEALL();
  }
}

// Splits of a run into two pieces with `taken` blocks live beforehand, in a buffer that has to move.
class ExhaustedPoolTest : public RunSplittersTest {
 protected:
  int32_t SplitWith(size_t splitter, uint32_t taken) {
    StreamBuilder book = Sheet(6).Row(1);
    run_ = book.Here();
    OpenFull(book.Raw((TakesMulRk(splitter) ? RkRun() : BlankRun()).Stream()));
    TakeBlocksUntil(taken);
    return Split(kAllSplitters[splitter], 5);
  }
};

TEST_F(ExhaustedPoolTest, NoBlockForTheBody_ChangesNothing) {
  for (size_t i = 0; i < std::size(kAllSplitters); ++i) {
    EXPECT_EQ(SplitWith(i, 9), 0);
    EXPECT_EQ(Contents(), opened_);
    EXPECT_EQ(LiveBlocks(), 9u);
    MEMORYFREEALL();
  }
}

TEST_F(ExhaustedPoolTest, NoBlockForAPiece_LeavesTheRunSlackAndReleasesTheRest) {
  for (size_t i = 0; i < std::size(kAllSplitters); ++i) {
    for (uint32_t taken : {8u, 7u}) {  // 8: none for the left piece, 7: none for the right one
      SCOPED_TRACE(i);
      EXPECT_EQ(SplitWith(i, taken), 0);
      EXPECT_EQ(Cells(), Stream().Row(1).Stream());
      EXPECT_EQ(size_, opened_.size());
      EXPECT_EQ(LiveBlocks(), taken);
      MEMORYFREEALL();
    }
  }
}

TEST_F(ExhaustedPoolTest, NoRoomForTheRightPiece_LosesTheBufferAndLeavesTheScratchBlocks) {
  for (size_t i = 0; i < std::size(kAllSplitters); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(SplitWith(i, 6), 0);
    EXPECT_EQ(buffer_, 0u);
    EXPECT_EQ(LiveBlocks(), 6u + 3 - 1);
    MEMORYFREEALL();
  }
}

TEST_F(ExhaustedPoolTest, NoRoomForTheLeftPiece_LosesTheBufferAndLeavesTheScratchBlocks) {
  StreamBuilder book = Sheet(6).Row(1);
  run_ = book.Here();
  OpenFull(book.Raw(BlankRun().Stream()));
  TakeBlocksUntil(7);
  EXPECT_EQ(Split(SplitMulBlankForChange, 7), 0);
  EXPECT_EQ(buffer_, 0u);
  EXPECT_EQ(LiveBlocks(), 7u + 2 - 1);
}

TEST_F(ExhaustedPoolTest, WithFourFreeBlocks_ItIsDone) {
  for (size_t i = 0; i < std::size(kAllSplitters); ++i) {
    for (uint32_t taken = 2; taken <= 5; ++taken) {
      SCOPED_TRACE(i);
      EXPECT_GT(SplitWith(i, taken), 0);
      EXPECT_GT(size_, opened_.size());
      EXPECT_EQ(LiveBlocks(), taken);
      MEMORYFREEALL();
    }
  }
}

}  // namespace
}  // namespace tolvenar
