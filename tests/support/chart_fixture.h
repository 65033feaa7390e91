// A test with one workbook whose first worksheet holds one chart.
#pragma once

#include "support/book_fixture.h"
#include "support/chart_builder.h"
#include "support/test_array.h"

namespace tolvenar::testing {

class ChartTest : public BookTest {
 protected:
  void Load(ChartBuilder& book) { BookTest::Load(book.Stream()); }

  // A worksheet with one chart of these records, which begin with its CHART.
  void LoadChart(ChartBuilder& records) {
    records.Close().EndSheet();
    Load(records);
  }
  static ChartBuilder OneChart() {
    ChartBuilder book;
    book.Worksheet().Open();
    return book;
  }
};

// The first `count` numbers of an array of one dimension.
inline std::vector<int64_t> Numbers(TestArray& array, LONG count) {
  std::vector<int64_t> numbers;
  for (LONG i = 1; i <= count; ++i) numbers.push_back(static_cast<int32_t>(array.NumberAt(i)));
  return numbers;
}

inline void Fill(TestArray& array, LONG count, int32_t value) {
  for (LONG i = 1; i <= count; ++i) array.SetNumber(i, 0, value);
}

}  // namespace tolvenar::testing
