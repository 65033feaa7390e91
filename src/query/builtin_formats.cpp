// Built-in formats: the two lists. Indices and texts are part of the interface, also where BIFF5's own list
// begins otherwise than the file format's.
#include "query/builtin_formats.h"

#include "foundation/biff_records.h"
#include "workbook/biff_version.h"

namespace tolvenar {

namespace {

constexpr BuiltinFormat kBuiltinBiff5[] = {
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

constexpr BuiltinFormat kBuiltinBiff8[] = {
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

}  // namespace

std::span<const BuiltinFormat> BuiltinFormats() {
  if (BiffVersion == kBiff5) return kBuiltinBiff5;
  if (BiffVersion == kBiff8) return kBuiltinBiff8;
  return {};
}

}  // namespace tolvenar
