// The default records as literal bytes, header included, to be held against a record description line by
// line.
//
// Invariants: (1) a table row is the whole block that is served, header and payload. (2) Rows of one key that
// differ by generation or variant exclude each other; the first row that fits is served.
#include "workbook/default_records.h"

#include <cstring>
#include <iterator>
#include <string_view>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "workbook/biff_version.h"

namespace tolvenar {

namespace {

constexpr uint8_t kIn5 = 1;
constexpr uint8_t kIn6 = 2;
constexpr uint8_t kBoth = kIn5 | kIn6;
constexpr int16_t kAnyVariant = -1;

// Bytes written as hexadecimal text, two digits each; blanks separate. Anything else does not compile.
struct HexBytes {
  static constexpr size_t kRoom = 38;
  uint8_t bytes[kRoom] = {};
  uint32_t size = 0;

  template <size_t N>
  consteval HexBytes(const char (&text)[N]) {
    for (size_t i = 0; i + 1 < N; ++i) {
      if (text[i] == ' ') continue;
      bytes[size++] = static_cast<uint8_t>(Digit(text[i]) * 16 + Digit(text[i + 1]));
      ++i;
    }
  }

  static consteval uint8_t Digit(char c) {
    if (c >= '0' && c <= '9') return static_cast<uint8_t>(c - '0');
    if (c >= 'A' && c <= 'F') return static_cast<uint8_t>(c - 'A' + 10);
    throw "no hexadecimal digit";
  }
};

struct DefaultRecord {
  int16_t key;
  int16_t variant;
  uint8_t generations;
  HexBytes record;
};

// clang-format off
constexpr DefaultRecord kRecords[] = {
    {kKeyEof, kAnyVariant, kBoth, "0A 00 00 00"},
    {kKeyCalcCount, kAnyVariant, kBoth, "0C 00 02 00  64 00"},
    {kKeyCalcMode, kAnyVariant, kBoth, "0D 00 02 00  01 00"},
    {kKeyPrecision, kAnyVariant, kBoth, "0E 00 02 00  01 00"},
    {kKeyRefMode, kAnyVariant, kBoth, "0F 00 02 00  01 00"},
    {kKeyDelta, kAnyVariant, kBoth, "10 00 08 00  FC A9 F1 D2 4D 62 50 3F"},
    {kKeyIteration, kAnyVariant, kBoth, "11 00 02 00  00 00"},
    {kKeyProtect, kAnyVariant, kBoth, "12 00 02 00  00 00"},
    {kKeyPassword, kAnyVariant, kBoth, "13 00 02 00  00 00"},
    {kKeyHeader, kAnyVariant, kIn5, "14 00 03 00  02 26 41"},
    {kKeyHeader, kAnyVariant, kIn6, "14 00 00 00"},
    {kKeyFooter, kAnyVariant, kIn5, "15 00 08 00  07 50 61 67 65 20 26 50"},
    {kKeyFooter, kAnyVariant, kIn6, "15 00 00 00"},
    {kKeyWindowProtect, kAnyVariant, kBoth, "19 00 02 00  00 00"},
    {kKeySelection, kAnyVariant, kBoth, "1D 00 0F 00  03 00 00 00 00 00 00 01 00 00 00 00 00 00 00"},
    {kKeyDateMode1904, kAnyVariant, kBoth, "22 00 02 00  00 00"},
    {kKeyPrintHeaders, kAnyVariant, kBoth, "2A 00 02 00  00 00"},
    {kKeyPrintGridlines, kAnyVariant, kBoth, "2B 00 02 00  01 00"},
    {kKeyWindow1, kAnyVariant, kIn5, "3D 00 12 00  78 00 4B 00 9F 24 63 15 38 00 00 00 00 00 01 00 58 02"},
    {kKeyWindow1, kAnyVariant, kIn6, "3D 00 12 00  78 00 78 00 4C 3B 83 22 38 00 00 00 00 00 01 00 58 02"},
    {kKeyWindow2, kAnyVariant, kIn5, "3E 02 0A 00  B6 00 00 00 00 00 00 00 00 00"},
    {kKeyWindow2, kAnyVariant, kIn6, "3E 02 12 00  B6 06 00 00 00 00 40 00 00 00 00 00 00 00 00 00 00 00"},
    {kKeyBackup, kAnyVariant, kBoth, "40 00 02 00  00 00"},
    {kKeyCodepage, kAnyVariant, kIn5, "42 00 02 00  E4 04"},
    {kKeyCodepage, kAnyVariant, kIn6, "42 00 02 00  B0 04"},
    {kKeySaveRecalc, kAnyVariant, kBoth, "5F 00 02 00  01 00"},
    {kKeyDsf, kAnyVariant, kIn6, "61 01 02 00  00 00"},
    {kKeyGuts, kAnyVariant, kBoth, "80 00 08 00  00 00 00 00 00 00 00 00"},
    {kKeyWsBool, kAnyVariant, kBoth, "81 00 02 00  C1 04"},
    {kKeyGridSet, kAnyVariant, kBoth, "82 00 02 00  01 00"},
    {kKeyHCenter, kAnyVariant, kBoth, "83 00 02 00  00 00"},
    {kKeyVCenter, kAnyVariant, kBoth, "84 00 02 00  00 00"},
    {kKeyCountry, kAnyVariant, kBoth, "8C 00 04 00  01 00 01 00"},
    {kKeyHideObj, kAnyVariant, kBoth, "8D 00 02 00  00 00"},
    {kKeyFnGroupCount, kAnyVariant, kBoth, "9C 00 02 00  0E 00"},
    {kKeySetup, kAnyVariant, kIn5, "A1 00 22 00  00 00 01 00 01 00 01 00 01 00 44 00 63 65 6E 74 00 00 00 00 00 00 E0 3F 00 00 00 00 00 00 E0 3F FA 12"},
    {kKeySetup, kAnyVariant, kIn6, "A1 00 22 00  00 00 01 00 01 00 01 00 01 00 44 00 63 65 6E 20 00 00 00 00 00 00 E0 3F 00 00 00 00 00 00 E0 3F FA 12"},
    {kKeyToolbar00A4, kAnyVariant, kBoth, "A4 00 06 00  01 00 10 0F 00 00"},
    {kKeyToolbarHdr, kAnyVariant, kBoth, "BF 00 00 00"},
    {kKeyToolbarEnd, kAnyVariant, kBoth, "C0 00 00 00"},
    {kKeyMms, kAnyVariant, kBoth, "C1 00 02 00  00 00"},
    {kKeyBookBool, kAnyVariant, kBoth, "DA 00 02 00  00 00"},
    {kKeyInterfaceHdr, kAnyVariant, kIn5, "E1 00 00 00"},
    {kKeyInterfaceHdr, kAnyVariant, kIn6, "E1 00 02 00"},
    // The header before promises 2 bytes that it does not have, on purpose: they are a block of their own.
    {kKeyInterfacePayload, kAnyVariant, kIn6, "B0 04"},
    {kKeyInterfaceEnd, kAnyVariant, kBoth, "E2 00 00 00"},
    {kKeyTabId, kAnyVariant, kIn6, "3D 01 02 00  01 00"},
    {kKeyUsesElfs, kAnyVariant, kIn6, "60 01 02 00  01 00"},
    {kKeyProt4Rev, kAnyVariant, kIn6, "AF 01 02 00  00 00"},
    {kKeyRefreshAll, kAnyVariant, kIn6, "B7 01 02 00  00 00"},
    {kKeyProt4RevPass, kAnyVariant, kIn6, "BC 01 02 00  00 00"},
    {kKeyIndex, kAnyVariant, kIn6, "0B 02 14 00  00 00 00 00 00 00 00 00 03 00 00 00 32 0B 00 00 C0 0B 00 00"},
};

constexpr DefaultRecord kFonts[] = {
    {kKeyFont, 0, kIn5, "31 00 14 00  C8 00 00 00 FF 7F 90 01 00 00 00 00 00 44 05 41 72 69 61 6C"},
    {kKeyFont, 1, kIn5, "31 00 14 00  C8 00 01 00 FF 7F BC 02 00 00 00 00 00 44 05 41 72 69 61 6C"},
    {kKeyFont, 2, kIn5, "31 00 14 00  C8 00 02 00 FF 7F 90 01 00 00 00 00 00 44 05 41 72 69 61 6C"},
    {kKeyFont, 3, kIn5, "31 00 14 00  C8 00 03 00 FF 7F BC 02 00 00 00 00 00 44 05 41 72 69 61 6C"},
    {kKeyFont, 4, kIn5, "31 00 14 00  C8 00 00 00 FF 7F 90 01 00 00 00 00 00 44 05 41 72 69 61 6C"},
    {kKeyFont, 0, kIn6, "31 00 1A 00  C8 00 00 00 FF 7F 90 01 00 00 00 00 00 00 05 01 41 00 72 00 69 00 61 00 6C 00"},
    {kKeyFont, 1, kIn6, "31 00 1A 00  C8 00 00 00 FF 7F 90 01 00 00 00 00 00 00 05 01 41 00 72 00 69 00 61 00 6C 00"},
    {kKeyFont, 2, kIn6, "31 00 1A 00  C8 00 00 00 FF 7F 90 01 00 00 00 00 00 00 05 01 41 00 72 00 69 00 61 00 6C 00"},
    {kKeyFont, 3, kIn6, "31 00 1A 00  C8 00 00 00 FF 7F 90 01 00 00 00 00 00 00 05 01 41 00 72 00 69 00 61 00 6C 00"},
};

constexpr DefaultRecord kXfs[] = {
    {kKeyXf, 0, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 00 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 1, kIn5, "E0 00 10 00  01 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 2, kIn5, "E0 00 10 00  01 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 3, kIn5, "E0 00 10 00  02 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 4, kIn5, "E0 00 10 00  02 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 5, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 6, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 7, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 8, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 9, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 10, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 11, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 12, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 13, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 14, kIn5, "E0 00 10 00  00 00 00 00 F5 FF 20 F4 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 15, kIn5, "E0 00 10 00  00 00 00 00 01 00 20 00 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 16, kIn5, "E0 00 10 00  05 00 00 00 F5 FF 20 F8 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 17, kIn5, "E0 00 10 00  05 00 29 00 F5 FF 20 F8 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 18, kIn5, "E0 00 10 00  05 00 2C 00 F5 FF 20 F8 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 19, kIn5, "E0 00 10 00  05 00 2A 00 F5 FF 20 F8 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 20, kIn5, "E0 00 10 00  05 00 09 00 F5 FF 20 F8 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 21, kIn5, "E0 00 10 00  00 00 A4 00 01 00 20 04 C0 20 00 00 00 00 00 00"},
    {kKeyXf, 0, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 00 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 1, kIn6, "E0 00 14 00  01 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 2, kIn6, "E0 00 14 00  01 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 3, kIn6, "E0 00 14 00  02 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 4, kIn6, "E0 00 14 00  02 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 5, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 6, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 C0 20 00 C0 20"},
    {kKeyXf, 7, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 8, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 9, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 10, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 11, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 12, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 13, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 14, kIn6, "E0 00 14 00  00 00 00 00 F5 FF 20 00 00 F4 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 15, kIn6, "E0 00 14 00  00 00 00 00 01 00 20 00 00 00 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 16, kIn6, "E0 00 14 00  01 00 2B 00 F5 FF 20 00 00 F8 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 17, kIn6, "E0 00 14 00  01 00 29 00 F5 FF 20 00 00 F8 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 18, kIn6, "E0 00 14 00  01 00 2C 00 F5 FF 20 00 00 F8 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 19, kIn6, "E0 00 14 00  01 00 2A 00 F5 FF 20 00 00 F8 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 20, kIn6, "E0 00 14 00  01 00 09 00 F5 FF 20 00 00 F8 00 00 00 00 00 00 00 00 C0 20"},
    {kKeyXf, 21, kIn6, "E0 00 14 00  00 00 A4 00 01 00 20 00 00 04 00 00 00 00 00 00 00 00 C0 20"},
};

constexpr DefaultRecord kStyles[] = {
    {kKeyStyle, 0, kBoth, "93 02 04 00  10 80 03 FF"},
    {kKeyStyle, 1, kBoth, "93 02 04 00  11 80 06 FF"},
    {kKeyStyle, 2, kBoth, "93 02 04 00  12 80 04 FF"},
    {kKeyStyle, 3, kBoth, "93 02 04 00  13 80 07 FF"},
    {kKeyStyle, 4, kBoth, "93 02 04 00  00 80 00 FF"},
    {kKeyStyle, 5, kBoth, "93 02 04 00  14 80 05 FF"},
};

// Number formats: index and text. In BIFF8 variant 2 has a text of its own, which differs in two bytes from this one, on purpose.
struct NumberFormat {
  uint16_t index;
  std::string_view text;
};

constexpr NumberFormat kFormats[] = {
    {5, R"f("$"#,##0_);\("$"#,##0\))f"},
    {6, R"f("$"#,##0_);[Red]\("$"#,##0\))f"},
    {7, R"f("$"#,##0.00_);\("$"#,##0.00\))f"},
    {8, R"f("$"#,##0.00_);[Red]\("$"#,##0.00\))f"},
    {42, R"f(_("$"* #,##0_);_("$"* \(#,##0\);_("$"* "-"_);_(@_))f"},
    {41, R"f(_(* #,##0_);_(* \(#,##0\);_(* "-"_);_(@_))f"},
    {44, R"f(_("$"* #,##0.00_);_("$"* \(#,##0.00\);_("$"* "-"??_);_(@_))f"},
    {43, R"f(_(* #,##0.00_);_(* \(#,##0.00\);_(* "-"??_);_(@_))f"},
    {164, R"f(dd\-mmm\-yy)f"},
};

constexpr size_t kFormatOddInBiff8 = 2;
constexpr std::string_view kFormatOddText = {R"f("$"#,##0.00_);#("$")f" "\0" R"f(,##0.00\))f", 29};

// Colours as 0xRRGGBB.
constexpr uint32_t kPaletteBiff5[] = {
    0x000000, 0xFFFFFF, 0xFF0000, 0x00FF00, 0x0000FF, 0xFFFF00, 0xFF00FF, 0x00FFFF,  // 0 to 7
    0x800000, 0x008000, 0x000080, 0x808000, 0x800080, 0x008080, 0xC0C0C0, 0x808080,  // 8 to 15
    0x404040, 0x804000, 0xC00000, 0x00C000, 0x0000C0, 0xC0C000, 0xC000C0, 0x00C0C0,  // 16 to 23
    0x800040, 0x400080, 0x400000, 0x004000, 0x000040, 0x404000, 0x400040, 0x004040,  // 24 to 31
    0x004080, 0x008040, 0xFF8080, 0x80FF80, 0x8080FF, 0xFFFF80, 0xFF80FF, 0x80FFFF,  // 32 to 39
    0xC04040, 0x408000, 0xFF8000, 0x80FF00, 0x8000FF, 0xC04000, 0x40C000, 0x4000C0,  // 40 to 47
    0xC02020, 0x2020C0, 0xFF0080, 0x00FF80, 0x0080FF, 0xC00040, 0x000040, 0x0040C0,  // 48 to 55
};

// Entries 1 to 5 and 7 differ, in this order on purpose.
constexpr uint32_t kPaletteBiff8[] = {
    0x000000, 0x00FFFF, 0xFF00FF, 0x000000, 0x00FF00, 0x000000, 0xFF00FF, 0xFF0000,  // 0 to 7
    0x800000, 0x008000, 0x000080, 0x808000, 0x800080, 0x008080, 0xC0C0C0, 0x808080,  // 8 to 15
    0x404040, 0x804000, 0xC00000, 0x00C000, 0x0000C0, 0xC0C000, 0xC000C0, 0x00C0C0,  // 16 to 23
    0x800040, 0x400080, 0x400000, 0x004000, 0x000040, 0x404000, 0x400040, 0x004040,  // 24 to 31
    0x004080, 0x008040, 0xFF8080, 0x80FF80, 0x8080FF, 0xFFFF80, 0xFF80FF, 0x80FFFF,  // 32 to 39
    0xC04040, 0x408000, 0xFF8000, 0x80FF00, 0x8000FF, 0xC04000, 0x40C000, 0x4000C0,  // 40 to 47
    0xC02020, 0x2020C0, 0xFF0080, 0x00FF80, 0x0080FF, 0xC00040, 0x000040, 0x0040C0,  // 48 to 55
};
// clang-format on

constexpr uint16_t kPaletteEntries = 56;
static_assert(std::size(kPaletteBiff5) == kPaletteEntries && std::size(kPaletteBiff8) == kPaletteEntries);
static_assert(std::size(kFonts) == 5 + 4 && std::size(kXfs) == 2 * 22 && std::size(kStyles) == 6 &&
              std::size(kFormats) == 9);
static_assert(kFormatOddText.size() == 29 && kFormats[kFormatOddInBiff8].text.size() == 29);

constexpr std::string_view kWriterBiff5 = "zovi";
constexpr std::string_view kWriterBiff8 = "Torvek";

// A block of `total` bytes with a record header whose length is that of the rest. 0 when the pool refuses.
uint32_t MakeBlock(uint32_t* size, uint16_t type, uint32_t total) {
  const uint32_t block = MEMORYALLOC(static_cast<int32_t>(total));
  if (block == 0) return 0;
  *size = total;
  WriteU16(BlockBytes(block), type);
  WriteU16(BlockBytes(block) + kRecordLength, static_cast<uint16_t>(total - kHeaderSize));
  return block;
}

void PutText(uint32_t block, uint32_t at, std::string_view text) {
  std::memcpy(BlockBytes(block) + at, text.data(), text.size());
}

// WINDOW1 and WINDOW2 of BIFF5 hold the variant.
void PutVariant(uint32_t block, int16_t key, uint8_t variant) {
  if (BiffVersion != kBiff5) return;
  if (key == kKeyWindow1)
    BlockBytes(block)[kWindow1ActiveTab] = BlockBytes(block)[kWindow1FirstTab] = variant;
  if (key == kKeyWindow2) BlockBytes(block)[kWindow2OptionsHigh] = variant;
}

template <size_t N>
uint32_t ServeFrom(const DefaultRecord (&table)[N], uint32_t* size, int16_t key, uint8_t variant) {
  const uint8_t generation = BiffVersion == kBiff5 ? kIn5 : kIn6;
  for (const DefaultRecord& row : table) {
    if (row.key != key || (row.generations & generation) == 0) continue;
    if (row.variant != kAnyVariant && row.variant != variant) continue;
    const uint32_t block = MEMORYALLOC(static_cast<int32_t>(row.record.size));
    if (block == 0) return 0;
    std::memcpy(BlockBytes(block), row.record.bytes, row.record.size);
    PutVariant(block, key, variant);
    *size = row.record.size;
    return block;
  }
  return 0;
}

// WRITEACCESS: the writer's name filled up with blanks. BIFF5: u8 length, 31 characters. BIFF8: u16 length,
// option byte, 109 characters.
uint32_t MakeWriteAccess(uint32_t* size) {
  const bool biff8 = BiffVersion == kBiff8;
  const std::string_view writer = biff8 ? kWriterBiff8 : kWriterBiff5;
  const uint32_t total = biff8 ? 116 : 36;
  const uint32_t text_at = kHeaderSize + (biff8 ? 3 : 1);
  const uint32_t block = MakeBlock(size, kTypeWriteAccess, total);
  if (block == 0) return 0;
  BlockBytes(block)[kHeaderSize] = static_cast<uint8_t>(writer.size());
  std::memset(BlockBytes(block) + text_at, ' ', total - text_at);
  PutText(block, text_at, writer);
  return block;
}

// FORMAT: u16 index, then BIFF5: u8 length, text. BIFF8: u16 length, option byte, text.
uint32_t MakeFormat(uint32_t* size, uint8_t variant) {
  if (variant >= std::size(kFormats)) return 0;
  const bool biff8 = BiffVersion == kBiff8;
  const std::string_view text =
      biff8 && variant == kFormatOddInBiff8 ? kFormatOddText : kFormats[variant].text;
  const uint32_t text_at = kFormatLength + (biff8 ? 3 : 1);
  const uint32_t block = MakeBlock(size, kTypeFormat, text_at + static_cast<uint32_t>(text.size()));
  if (block == 0) return 0;
  WriteU16(BlockBytes(block) + kFormatIndex, kFormats[variant].index);
  BlockBytes(block)[kFormatLength] = static_cast<uint8_t>(text.size());
  PutText(block, text_at, text);
  return block;
}

// PALETTE: u16 count, then red, green, blue and a zero for each colour.
uint32_t MakePalette(uint32_t* size) {
  const uint32_t* colours = BiffVersion == kBiff8 ? kPaletteBiff8 : kPaletteBiff5;
  const uint32_t block = MakeBlock(size, kTypePalette, kPaletteColours + kPaletteEntries * kPaletteColour);
  if (block == 0) return 0;
  WriteU16(BlockBytes(block) + kPaletteCount, kPaletteEntries);
  for (uint32_t i = 0; i < kPaletteEntries; ++i) {
    uint8_t* colour = BlockBytes(block) + kPaletteColours + i * kPaletteColour;
    colour[0] = static_cast<uint8_t>(colours[i] >> 16);
    colour[1] = static_cast<uint8_t>(colours[i] >> 8);
    colour[2] = static_cast<uint8_t>(colours[i]);
  }
  return block;
}

}  // namespace

uint32_t MakeDefaultRecord(uint32_t* size, int16_t key, uint32_t variant) {
  if (BiffVersion != kBiff5 && BiffVersion != kBiff8) return 0;
  const uint8_t v = static_cast<uint8_t>(variant);  // only the low byte counts
  switch (key) {
    case kKeyWriteAccess:
      return MakeWriteAccess(size);
    case kKeyFormat:
      return MakeFormat(size, v);
    case kKeyPalette:
      return MakePalette(size);
    case kKeyFont:
      return ServeFrom(kFonts, size, key, v);
    case kKeyXf:
      return ServeFrom(kXfs, size, key, v);
    case kKeyStyle:
      return ServeFrom(kStyles, size, key, v);
    default:
      return ServeFrom(kRecords, size, key, v);
  }
}

}  // namespace tolvenar
