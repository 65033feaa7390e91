// Built-in formats: both lists, entry by entry.
#include "query/builtin_formats.h"

#include <gtest/gtest.h>

#include "foundation/biff_records.h"
#include "support/made_record.h"

using namespace tolvenar;
using namespace tolvenar::testing;

namespace {

constexpr BuiltinFormat kBiff5Formats[] = {
    {0, "0"},
    {1, "0.00"},
    {2, "#,##0"},
    {3, "#,##0.00"},
    {4, "#,##0 ;(#,##0)"},
    {5, "#,##0 ;[Red](#,##0)"},
    {6, "#,##0.00 ;(#,##0.00)"},
    {7, "#,##0.00 ;[Red](#,##0.00)"},
    {8, "0.00E+00"},
    {9, "##0.0E+0"},
    {10, "0%"},
    {11, "0.00%"},
    {12, "dd-mm-yy"},
    {13, "dd-mmm-yy"},
    {14, "dd-mmm"},
    {15, "mmm-yy"},
    {16, "dd-mm-yy h:mm"},
};

constexpr BuiltinFormat kBiff8Formats[] = {
    {0, "General"},
    {1, "0"},
    {2, "0.00"},
    {3, "#,##0"},
    {4, "#,##0.00"},
    {5, "($#,##0_);($#,##0)"},
    {6, "($#,##0_);[Red]($#,##0)"},
    {7, "($#,##0.00_);($#,##0.00)"},
    {8, "($#,##0.00_);[Red]($#,##0.00)"},
    {9, "0%"},
    {10, "0.00%"},
    {11, "0.00E+00"},
    {12, "# ?/?"},
    {13, "# ??"},
    {14, "m/d/yy"},
    {15, "d-mmm-yy"},
    {16, "d-mmm"},
    {17, "mmm-yy"},
    {18, "h:mm AM/PM"},
    {19, "h:mm:ss AM/PM"},
    {20, "h:mm"},
    {21, "h:mm:ss"},
    {22, "m/d/yy h:mm"},
    {37, "(#,##0_);(#,##0)"},
    {38, "(#,##0_);[Red](#,##0)"},
    {39, "(#,##0.00_);(#,##0.00)"},
    {40, "(#,##0.00_);[Red](#,##0.00)"},
    {41, "_(* #,##0_);_(* (#,##0);_(* \"-\"_);_(@_)"},
    {42, "_($* #,##0_);_($* (#,##0);_($* \"-\"_);_(@_)"},
    {43, "_(* #,##0.00_);_(* (#,##0.00);_(* \"-\"??_);_(@_)"},
    {44, "_($* #,##0.00_);_($* (#,##0.00);_($* \"-\"??_);_(@_)"},
    {45, "mm:ss"},
    {46, "[h]:mm:ss"},
    {47, "mm:ss.0"},
    {48, "##0.0E+0"},
    {49, "@"},
};

void ExpectFormats(std::span<const BuiltinFormat> wanted) {
  const auto formats = BuiltinFormats();
  ASSERT_EQ(formats.size(), wanted.size());
  for (size_t i = 0; i < wanted.size(); ++i) {
    EXPECT_EQ(formats[i].index, wanted[i].index) << i;
    EXPECT_STREQ(formats[i].text, wanted[i].text) << i;
  }
}

TEST(BuiltinFormatLists, Biff5_HasSeventeen_WithTextsOfItsOwn) {
  const Generation biff5(kBiff5);
  ExpectFormats(kBiff5Formats);
}

TEST(BuiltinFormatLists, Biff8_HasThirtySix_WithAGapBehind22) {
  const Generation biff8(kBiff8);
  ExpectFormats(kBiff8Formats);
}

TEST(BuiltinFormatLists, NoOtherGeneration_HasAny) {
  for (int32_t version : {0, 4, 7, 8}) {
    const Generation other(version);
    EXPECT_TRUE(BuiltinFormats().empty()) << version;
  }
}

}  // namespace
