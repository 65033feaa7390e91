// The quick part of FindCell finds what a search record by record finds: on sheets whose rows are laid out alike, on those whose rows are not,
// and on streams that make no sense.
#include <gtest/gtest.h>

#include <random>

#include "edit/find_cell.h"
#include "edit/sheet_edit_fixture.h"
#include "query/extent_walk.h"

namespace tolvenar {
namespace {

using testing::Bytes;
using testing::Columns;
using testing::StreamBuilder;
using testing::U16;
using testing::operator+;

// A search by steps alone, as find_cell.h describes it.
class SlowSearch {
 public:
  SlowSearch(const Block& block, int16_t row, int16_t column) : block_(block), row_(row), column_(column) {}

  int32_t Run(SheetExtent extent) {
    Walk walk = StartWalk(block_, extent.begin);
    for (Step(&walk); depth_ >= 1 && InExtent(walk, extent.end); Step(&walk)) {
      Look(walk.at);
      if (done_) return result_;
    }
    return row_seen_ ? -static_cast<int32_t>(NextRecord(block_, last_)) : 0;
  }

 private:
  void End(int32_t result) {
    done_ = true;
    result_ = result;
  }

  bool IsOutside(uint32_t at) const {
    const DimensionsFields& fields = BiffVersion == kBiff5 ? kDimensionsBiff5 : kDimensionsBiff8;
    const auto past_first = [&](uint32_t field) {
      return static_cast<int16_t>(U16At(block_, at + field) + 1);
    };
    return row_ + 1 < past_first(fields.firstRow) || row_ + 1 > I16At(block_, at + fields.pastRow) ||
           column_ + 1 < past_first(fields.firstColumn) ||
           column_ + 1 > I16At(block_, at + fields.pastColumn);
  }

  void Look(uint32_t at) {
    if (IsPlain(block_, at, kLowBof)) ++depth_;
    if (IsPlain(block_, at, kLowEof)) --depth_;
    if (IsPlain(block_, at, kLowDimensions) && IsOutside(at)) return End(0);
    if (IsPlain(block_, at, kLowRow) && depth_ == 1 && !row_seen_ && I16At(block_, at + kRowNumber) == row_) {
      row_seen_ = true;
      last_ = at;
    }
    const bool counts = depth_ == 1 || !IsPlain(block_, at, kLowNumber);
    if (ShapeOfCell(block_, at) != CellShape::kNoCell && counts) LookAtCell(at);
  }

  void LookAtCell(uint32_t at) {
    last_ = at;
    const int16_t row = I16At(block_, at + kCellRow);
    if (row < row_) return;
    if (!row_seen_) return End(0);
    const int16_t first = I16At(block_, at + kCellColumn);
    if (row > row_ || first > column_) return End(-static_cast<int32_t>(at));
    const bool run = ShapeOfCell(block_, at) != CellShape::kSingle;
    if (column_ <= (run ? LastColumnOfRun(block_, at) : first)) End(static_cast<int32_t>(at));
  }

  Block block_;
  int16_t row_;
  int16_t column_;
  int32_t depth_ = 1;
  bool row_seen_ = false;
  uint32_t last_ = 0;
  bool done_ = false;
  int32_t result_ = 0;
};

class RowsAboveTest : public testing::SheetEditTest {
 protected:
  uint32_t Random(uint32_t below) { return static_cast<uint32_t>(source_()) % below; }

  // One cell, or a record that stands between cells.
  void AddRecord(StreamBuilder* book, uint16_t row, uint16_t column, uint32_t kind) {
    switch (kind) {
      case 0:
      case 1:
        book->Number(row, column, 15, row + 0.5);
        break;
      case 2:
        book->Rk(row, column, 15, 4);
        break;
      case 3:
        book->LabelSst(row, column, 15, 1);
        break;
      case 4:
        book->MulRk(row, column, {{15, 2}, {15, 6}});
        break;
      case 5:
        book->Formula(row, column, 15, Bytes(8)).Record(0x0207, U16(3) + Bytes(5));
        break;
      case 6:
        book->Record(static_cast<uint16_t>(0x1000 + Random(0x60)),
                     Bytes(Random(3) * 4));  // with the chart bit
        break;
      case 7:
        book->Slack(static_cast<uint16_t>(Random(20)));
        break;
      case 8:
        book->Record(0x00D7, U16(row) + Bytes(Random(12)));
        break;
      default:
        book->LabelBiff8(row, column, 15, std::string(Random(9), 'x'));
    }
  }

  // The cells of a row. Rows of one `layout` are alike; those of layout 0 are like no other.
  void AddCells(StreamBuilder* book, uint16_t row, uint32_t layout) {
    std::mt19937 of_layout(layout);
    const uint32_t count = layout == 0 ? Random(9) : 1 + layout % 11;
    for (uint32_t i = 0; i < count; ++i) {
      const uint32_t kind = layout == 0 ? Random(10) : static_cast<uint32_t>(of_layout()) % 5;
      AddRecord(book, row, static_cast<uint16_t>(i * 2), kind);
    }
  }

  // ROWs in blocks of `block` before their cells; one row in `odd` is not like the others; between two rows is a gap now and then.
  StreamBuilder AlikeRows(uint16_t rows, uint16_t block, uint32_t layout, uint32_t odd) {
    StreamBuilder book = Sheet(6);
    uint16_t number = 0;
    for (uint16_t first = 0; first < rows; first = static_cast<uint16_t>(first + block)) {
      const uint16_t begin = number;
      for (uint16_t i = 0; i < block; ++i) book.Row(static_cast<uint16_t>(begin + i));
      for (uint16_t i = 0; i < block; ++i, ++number) {
        if (Random(20) != 0) AddCells(&book, number, Random(odd) == 0 ? Random(4) : layout);
      }
    }
    return book;
  }

  void ExpectTheSameFor(int16_t row, int16_t column) const {
    const SheetExtent extent = ExtentOfSheet(OpenBlock(table_), 1);
    SlowSearch slow(OpenBlock(buffer_), static_cast<int16_t>(row - 1), static_cast<int16_t>(column - 1));
    EXPECT_EQ(FindCell(buffer_, table_, 1, row, column), slow.Run(extent))
        << "row " << row << ", column " << column;
  }

  void ExpectTheSameAllOver(uint16_t rows) {
    for (int i = 0; i < 40; ++i)
      ExpectTheSameFor(static_cast<int16_t>(Random(rows + 2u)), static_cast<int16_t>(1 + Random(24)));
  }

  // DIMENSIONS behind which no cell is.
  void OpenWide(StreamBuilder book) {
    Open(std::move(book));
    const SheetExtent extent = ExtentOfSheet(OpenBlock(table_), 1);
    const uint32_t dimensions = NextRecord(OpenBlock(buffer_), extent.begin);
    PutU16(OpenBlock(buffer_), dimensions + kDimensionsBiff8.pastRow, 0x7FFF);
    PutU16(OpenBlock(buffer_), dimensions + kDimensionsBiff8.pastColumn, 0x7FFF);
  }

  void CloseBook() {
    MEMORYFREE(&buffer_);
    MEMORYFREE(&table_);
  }

  std::mt19937 source_{5};
};

TEST_F(RowsAboveTest, RowsAlike_AreSearchedAsRecordByRecord) {
  for (const uint16_t block : {uint16_t{1}, uint16_t{3}, uint16_t{32}, uint16_t{400}}) {
    for (uint32_t layout = 1; layout < 14; ++layout) {
      OpenWide(AlikeRows(400, block, layout, 1000));
      ExpectTheSameAllOver(400);
      CloseBook();
    }
  }
}

TEST_F(RowsAboveTest, OddRowsInBetween_AreSearchedAsRecordByRecord) {
  for (const uint32_t odd : {1u, 2u, 4u, 12u, 60u}) {
    for (uint32_t layout = 1; layout < 14; ++layout) {
      OpenWide(AlikeRows(300, 8, layout, odd));
      ExpectTheSameAllOver(300);
      CloseBook();
    }
  }
}

// Now one layout, now the other, in no order: of equal length or not, the one the beginning of the other or not.
TEST_F(RowsAboveTest, RowsOfTwoKinds_AreSearchedAsRecordByRecord) {
  for (uint32_t one = 1; one < 12; ++one) {
    for (uint32_t other = one + 1; other < 14; ++other) {
      StreamBuilder book = Sheet(6);
      for (uint16_t row = 0; row < 120; ++row) book.Row(row);
      for (uint16_t row = 0; row < 120; ++row) AddCells(&book, row, Random(3) == 0 ? one : other);
      OpenWide(std::move(book));
      ExpectTheSameAllOver(120);
      CloseBook();
    }
  }
}

TEST_F(RowsAboveTest, RowsWithASignBit_AreSearchedAsRecordByRecord) {
  StreamBuilder book = Sheet(6);
  for (uint16_t row = 0; row < 10; ++row) book.Row(row);
  for (const uint16_t row :
       std::initializer_list<uint16_t>{0, 1, 2, 3, 0x8000, 0x8001, 0x8002, 4, 5, 0xFFFF, 6, 7})
    book.Number(row, 0, 15, 1).Rk(row, 1, 15, 4);
  OpenWide(book);
  for (int16_t row = -3; row < 12; ++row) ExpectTheSameFor(row, 2);
}

TEST_F(RowsAboveTest, PatchedRows_AreSearchedAsRecordByRecord) {
  OpenWide(AlikeRows(300, 32, 9, 30));
  const Bytes blank = StreamBuilder().Blank(7, 90, 15).Stream();
  for (int i = 0; i < 60; ++i) {
    const int32_t at = FindCell(buffer_, table_, 1, static_cast<int16_t>(1 + Random(300)), 3);
    if (at > 0) {
      ASSERT_EQ(PatchRecord(&buffer_, blank.data(), static_cast<uint32_t>(at), 10, &size_), kPatchDone);
    }
    ExpectTheSameAllOver(300);
  }
}

TEST_F(RowsAboveTest, DamagedRows_AreSearchedAsRecordByRecord) {
  for (uint32_t layout = 1; layout < 9; ++layout) {
    OpenWide(AlikeRows(120, 8, layout, 40));
    const SheetExtent extent = ExtentOfSheet(OpenBlock(table_), 1);
    for (int i = 0; i < 60; ++i) {
      const uint32_t at = extent.begin + 20 + Random(extent.end - extent.begin);
      PutU8(OpenBlock(buffer_), at, static_cast<uint8_t>(Random(3) == 0 ? kPrivateHigh : Random(256)));
      ExpectTheSameAllOver(120);
    }
    CloseBook();
  }
}

// Rows laid out alike in which single records say that they belong to another row.
TEST_F(RowsAboveTest, RecordsOfOtherRowsInBetween_AreSearchedAsRecordByRecord) {
  for (uint32_t layout = 1; layout < 8; ++layout) {
    OpenWide(AlikeRows(60, 8, layout, 12));
    const Block block = OpenBlock(buffer_);
    std::vector<uint32_t> records;
    for (Walk walk = StartWalk(block, ExtentOfSheet(OpenBlock(table_), 1).begin); walk.at < size_;
         Step(&walk))
      records.push_back(walk.at);
    for (int i = 0; i < 30; ++i) {
      const uint32_t at = records[2 + Random(static_cast<uint32_t>(records.size()) - 4)];
      if (LengthAt(block, at) >= 4) PutU16(block, at + kCellRow, static_cast<uint16_t>(Random(70)));
      ExpectTheSameAllOver(60);
    }
    CloseBook();
  }
}

TEST_F(RowsAboveTest, RowsAlikeUpToTheEndOfTheSlot_AreNotReadBeyondIt) {
  StreamBuilder book = Sheet(6).Row(2000);
  for (int i = 0; i < 40; ++i) book.Number(3, 0, 15, 1).Rk(3, 1, 15, 4).Number(3, 2, 15, 2);
  OpenWide(book);
  const Block block = OpenBlock(buffer_);
  const Bytes row = StreamBuilder().Number(4, 0, 15, 1).Rk(4, 1, 15, 4).Number(4, 2, 15, 2).Stream();
  for (uint32_t at =
           static_cast<uint32_t>(opened_.size() - testing::kWindow2.size()) - kEofSize - kBufEndSize;
       at < block.extent; at += static_cast<uint32_t>(row.size()))
    CopyIn(block, at, row.data(), static_cast<uint32_t>(row.size()));
  PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, 1);
  ExpectTheSameFor(2001, 1);
}

TEST_F(RowsAboveTest, SheetThatEndsInARowAlike_IsSearchedToItsEnd) {
  StreamBuilder book = Sheet(6);
  for (uint16_t row = 0; row < 20; ++row) book.Row(row);
  for (uint16_t row = 0; row < 18; ++row) book.Number(row, 0, 15, 1).Rk(row, 1, 15, 4).Number(row, 2, 15, 2);
  OpenWide(book);
  const SheetExtent extent = ExtentOfSheet(OpenBlock(table_), 1);
  const uint32_t row_size = 18 + 14 + 18;
  for (uint32_t cut = 1; cut < 3 * row_size; ++cut) {
    PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, extent.end - cut);
    ExpectTheSameFor(20, 1);
  }
}

TEST_F(RowsAboveTest, SheetThatEndsBetweenTwoRows_IsSearchedToItsEnd) {
  StreamBuilder book = Sheet(6);
  for (uint16_t row = 0; row < 20; ++row) book.Row(row);
  for (uint16_t row = 0; row < 6; ++row) book.Number(row, 0, 15, 1).Rk(row, 1, 15, 4).Number(row, 2, 15, 2);
  const uint32_t behind_alike = book.Here();
  OpenWide(book.Number(6, 0, 15, 1).Rk(6, 1, 15, 4).Rk(6, 2, 15, 4).Number(7, 0, 15, 1));
  for (uint32_t entry = behind_alike; entry <= behind_alike + kEofSize; ++entry) {
    PutTableEntry(OpenBlock(table_), kTableFirstSheet + 1, entry);
    ExpectTheSameFor(20, 1);
  }
}

TEST_F(RowsAboveTest, BufEndBelowTheRowsAbove_EndsTheSearch) {
  StreamBuilder book = Sheet(6).Row(0).Number(0, 0, 15, 1).Record(0x0042);
  const uint32_t middle = book.Last();
  OpenWide(book.Row(5).Number(5, 0, 15, 2));
  EXPECT_GT(FindCell(buffer_, table_, 1, 6, 1), 0);
  const Bytes end = StreamBuilder().BufEnd().Stream();
  CopyIn(OpenBlock(buffer_), middle, end.data(), kBufEndSize);
  EXPECT_EQ(FindCell(buffer_, table_, 1, 6, 1), 0);
}

TEST_F(RowsAboveTest, RowsOfMoreRecordsThanAreLearned_AreSearchedAsRecordByRecord) {
  StreamBuilder book = Sheet(6);
  for (uint16_t row = 0; row < 30; ++row) book.Row(row);
  for (uint16_t row = 0; row < 30; ++row) {
    for (uint16_t column = 0; column < 300; ++column) {
      if (column % 7 != 0) book.Number(row, column, 15, 1);
    }
  }
  OpenWide(book);
  for (int16_t row = 1; row <= 31; ++row) {
    for (const int16_t column : Columns{1, 2, 256, 257, 300, 301}) ExpectTheSameFor(row, column);
  }
}

}  // namespace
}  // namespace tolvenar
