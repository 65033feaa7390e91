// Exports of the editors and of the sheet builders: every argument arrives where it belongs. What the export makes of a workbook is compared with
// what it holds by its own rules; all values differ, so that two that have changed places show.
#include <gtest/gtest.h>

#include "support/pool_fixture.h"
#include "support/stream_builder.h"
#include "tolvenar/tolvenar.h"

namespace {

using namespace tolvenar::testing;

class EditExports : public PoolTest {
 protected:
  // Two sheets; the second has the rows 3 to 5 and the columns 2 to 9, and a number in row 4, column 6.
  void Load() {
    StreamBuilder book =
        StreamBuilder().Bof(6).Sheet("A").Sheet("B").Eof().Bof(6, kWorksheet).Dimensions(0, 1, 0, 1).Eof();
    book.Bof(6, kWorksheet).Dimensions(2, 5, 1, 9).Row(2).Row(3).Row(4);
    number_at_ = book.Here();
    buffer_ = book.Number(3, 5, 15, 1.5).Eof().Load(&size_);
    ASSERT_EQ(::XLLocateSheets(buffer_, &table_, size_), 0);
    ::XLGetNumVers(buffer_, table_);
  }

  std::vector<int> RangeOf(int16_t sheet) const {
    uint16_t range[4] = {};
    EXPECT_EQ(::XLGetSheetSize(buffer_, table_, sheet, &range[0], &range[1], &range[2], &range[3]), 0);
    return std::vector<int>(range, range + 4);
  }

  uint32_t number_at_ = 0;
  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
  uint32_t table_ = 0;
};

TEST_F(EditExports, AddCol_WidensTheSheetThatIsNamed) {
  Load();
  EXPECT_EQ(::XLAddCol(&buffer_, table_, &size_, 2, 10), 0);
  EXPECT_EQ(RangeOf(1), (std::vector<int>{1, 1, 1, 1}));
  EXPECT_EQ(RangeOf(2), (std::vector<int>{3, 5, 2, 10}));
}

TEST_F(EditExports, DeleteRow_MovesTheCellsBelowInTheSheetThatIsNamed) {
  Load();
  EXPECT_EQ(::XLDeleteRow(&buffer_, table_, &size_, 2, 3), 0);
  const uint8_t* number = reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(buffer_)) + number_at_;
  EXPECT_EQ(Bytes(number, number + 8), U16(0x0203) + U16(14) + U16(2) + U16(5));
}

VARIANT Number(double number) {
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_R8;
  value.dblVal = number;
  return value;
}

TEST_F(EditExports, CreateVariantSheet2_AppendsColumnsByRowsCells) {
  uint32_t size = 0;
  uint32_t position = 0;
  ASSERT_EQ(::XLCreateEmptyBook(&buffer_, &size, 8), 0);
  const int16_t number = ::AppendVariantSheet1(&buffer_, &size, "S");
  ASSERT_EQ(::CreateVariantSheet1(&buffer_, &size, &position), 0);
  const VARIANT cells[] = {Number(1), Number(2), Number(3), Number(4), Number(5), Number(6)};
  const uint16_t xf[] = {15, 16, 17};
  ASSERT_EQ(::CreateVariantSheet2(&buffer_, &size, &position, 3, 2, cells, xf), 0);
  ASSERT_EQ(::CreateVariantSheet3(&buffer_, &size, &position), 0);
  ASSERT_EQ(::AppendVariantSheet2(&buffer_, &size, number), number);
  ASSERT_EQ(::XLLocateSheets(buffer_, &table_, size), 0);
  const std::vector<int> range = RangeOf(number);
  EXPECT_EQ(range[3] - range[1], 3 - 2);
}

TEST_F(EditExports, CreateVariantSheet_AppendsASheetOfCells) {
  ASSERT_EQ(::XLCreateEmptyBook(&buffer_, &size_, 8), 0);
  const uint32_t before = size_;
  const VARIANT cells[] = {Number(1), Number(2)};
  const VARIANT* const pointers[] = {&cells[0], &cells[1]};
  const uint16_t xf[] = {15, 16};
  EXPECT_EQ(::CreateVariantSheet(&buffer_, &size_, 2, 1, pointers, xf), 0);
  EXPECT_GT(size_, before);
}

TEST_F(EditExports, AddZemblerRecord_EndsTheBufferAndCountsTheEnd) {
  Load();
  const uint32_t before = size_;
  EXPECT_EQ(::AddZemblerRecord(&buffer_, &size_), 0);
  EXPECT_EQ(size_, before + 4);
}

}  // namespace
