// TestArray: a SAFEARRAY of one or two dimensions that a test fills by a call and then looks into.
//
//   TestArray cells(VT_BSTR, 1, 4, 1, 3);                 rows 1 to 4, columns 1 to 3
//   XLGetVariantData(cells.Ref(), buffer, table, 1);
//   EXPECT_EQ(cells.TextAt(2, 1), "1.500000");
#pragma once

#include <string>

#include "tolvenar/automation.h"

namespace tolvenar::testing {

class TestArray {
 public:
  TestArray(VARTYPE type, LONG first, LONG last);
  TestArray(VARTYPE type, LONG first_row, LONG last_row, LONG first_column, LONG last_column);
  TestArray(const TestArray&) = delete;
  TestArray& operator=(const TestArray&) = delete;
  ~TestArray();

  SAFEARRAY** Ref() { return &array_; }
  SAFEARRAY* Get() { return array_; }

  // The bytes of the text in an element (of a VT_BSTR array, or a VT_BSTR variant); "(none)" for a null text
  // or another variant. The column is left out for an array of one dimension.
  std::string TextAt(LONG row, LONG column = 0);
  // The number in an element of up to 32 bits.
  int64_t NumberAt(LONG row, LONG column = 0);
  // Type and number of a variant element.
  VARTYPE TypeAt(LONG row, LONG column);
  double DoubleAt(LONG row, LONG column);

  // Puts a 32-bit value, or a text, into an element of that type.
  void SetNumber(LONG row, LONG column, int32_t value);
  void SetText(LONG row, LONG column, const char* text);

  // All elements of a two-dimensional array of text, row by row, "|" between cells and "/" between rows.
  std::string AllText();

 private:
  VARIANT VariantAt(LONG row, LONG column);

  VARTYPE type_;
  SAFEARRAY* array_;
};

// The bytes of a text; "(none)" for null.
std::string BytesOf(BSTR text);

}  // namespace tolvenar::testing
