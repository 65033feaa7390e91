// Every type of value and what becomes of it in BIFF5 at row 0, column c, XF 0x21: the record without its
// column, and the same in BIFF8 where it differs.
#pragma once

#include <limits>
#include <string>

#include "support/stream_builder.h"
#include "support/variants.h"

namespace tolvenar::testing {

struct MappedCell {
  const char* label;
  void (*add)(Variants&);
  const char* number_or_text;  // N and the double, T and the text, B, or nothing where the cell is left out
};

// A double as it stands in a NUMBER record, and T with the text.
inline const MappedCell kMappedCells[] = {
    {"VT_EMPTY", [](Variants& v) { v.Empty(); }, "B"},
    {"VT_I2", [](Variants& v) { v.I2(-32768); }, "N 00 00 00 00 00 00 E0 C0"},
    {"VT_I4 16777217", [](Variants& v) { v.I4(16777217); }, "N 00 00 00 00 00 00 70 41"},
    {"VT_I4 16777219", [](Variants& v) { v.I4(16777219); }, "N 00 00 00 40 00 00 70 41"},
    {"VT_I4 smallest", [](Variants& v) { v.I4(INT32_MIN); }, "N 00 00 00 00 00 00 E0 C1"},
    {"VT_R4", [](Variants& v) { v.R4(-1.5f); }, "N 00 00 00 00 00 00 F8 BF"},
    {"VT_R8 0.1", [](Variants& v) { v.R8(0.1); }, "N 00 00 00 A0 99 99 B9 3F"},
    {"VT_R8 too large", [](Variants& v) { v.R8(1e300); }, "N 00 00 00 00 00 00 F0 7F"},
    {"VT_CY, its bits a double's", [](Variants& v) { v.Currency(0x3FF8000000000000); },
     "N 00 00 00 00 00 00 F8 3F"},
    {"VT_CY 1.0000, a tiny double", [](Variants& v) { v.Currency(10000); }, "N 00 00 00 00 00 00 00 00"},
    {"VT_DATE", [](Variants& v) { v.R8(36526.75, VT_DATE); }, "N 00 00 00 00 C0 D5 E1 40"},
    {"VT_DATE negative", [](Variants& v) { v.R8(-1.75, VT_DATE); }, "N 00 00 00 00 00 00 F0 BF"},
    {"VT_DATE last day of 32 bits", [](Variants& v) { v.R8(2147483647.5, VT_DATE); },
     "N 00 00 00 00 00 00 E0 41"},
    {"VT_DATE first day of 32 bits", [](Variants& v) { v.R8(-2147483648.5, VT_DATE); },
     "N 00 00 00 00 00 00 E0 C1"},
    {"VT_DATE out of range", [](Variants& v) { v.R8(1e18, VT_DATE); }, "N 00 00 00 00 00 00 E0 C1"},
    {"VT_DATE no number", [](Variants& v) { v.R8(std::numeric_limits<double>::quiet_NaN(), VT_DATE); },
     "N 00 00 00 00 00 00 E0 C1"},
    {"VT_BSTR", [](Variants& v) { v.Text(OLESTR("Ab")); }, "T 41 62"},
    {"VT_BSTR wide", [](Variants& v) { v.Text(OLESTR("\x0142\x20AC")); }, "T 42 AC"},
    {"VT_BSTR empty", [](Variants& v) { v.Text(OLESTR("")); }, "T"},
    {"VT_BSTR by reference", [](Variants& v) { v.TextByReference(OLESTR("Ab")); }, "T 41 62"},
    {"VT_BOOL", [](Variants& v) { v.Empty(VT_BOOL); }, "B"},
    {"VT_ERROR", [](Variants& v) { v.Empty(VT_ERROR); }, "B"},
    {"VT_VARIANT", [](Variants& v) { v.Empty(VT_VARIANT); }, "B"},
    {"VT_UI1", [](Variants& v) { v.Empty(VT_UI1); }, "B"},
    {"VT_I2 by reference", [](Variants& v) { v.Empty(VT_I2 | VT_BYREF); }, "B"},
    {"array of VT_R8", [](Variants& v) { v.Empty(VT_R8 | VT_ARRAY); }, "B"},
    {"array of VT_BSTR", [](Variants& v) { v.Empty(VT_BSTR | VT_ARRAY); }, "B"},
    {"type 0xFFFF", [](Variants& v) { v.Empty(0xFFFF); }, "B"},
};

// The record of a mapping, as hexadecimal text with a line end.
inline std::string RecordOfMapping(const MappedCell& mapped, bool biff8, const std::string& place) {
  const std::string body = mapped.number_or_text;
  if (body == "B") return "01 02 06 00 " + place + "\n";
  if (body[0] == 'N') return "03 02 0E 00 " + place + body.substr(2) + " \n";
  const size_t length = (body.size() - 1) / 3;
  const std::string option = biff8 ? "00 " : "";
  const std::string text = length != 0 ? body.substr(2) + " " : "";
  return "04 02 " + Hex(U16(static_cast<uint16_t>(8 + length + biff8))) + place +
         Hex(U16(static_cast<uint16_t>(length))) + option + text + "\n";
}

}  // namespace tolvenar::testing
