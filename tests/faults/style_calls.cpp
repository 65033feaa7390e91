// Calls: styles, heights and widths.
#include "faults/calls.h"
#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "tolvenar/tolvenar.h"
#include "workbook/biff_version.h"

namespace tolvenar::testing {

namespace {

// XLGetFormatData of a kind into an array of indices 0 to `last`.
std::function<int32_t(Ground&)> Items(int16_t kind, int32_t last) {
  return [kind, last](Ground& g) {
    g.array = std::make_unique<TestArray>(VT_I4, 0, last);
    g.items = last + 1;
    return ::XLGetFormatData(g.array->Ref(), g.buffer, g.table, kind);
  };
}

int32_t ItemsIntoATable(Ground& g) {
  g.array = std::make_unique<TestArray>(VT_I4, 0, 1, 0, 1);
  return ::XLGetFormatData(g.array->Ref(), g.buffer, g.table, 0);
}

// More XFs than the pool has blocks.
void OpenManyXfs(Ground& g) {
  StreamBuilder book;
  book.Bof(6);
  for (int i = 0; i < 10; ++i) book.Record(0x00E0, Bytes(20));
  book.Sheet("Data").Eof().Bof(6, kWorksheet).Dimensions(0, 1, 0, 1).Eof();
  OpenStream(g, book, kBiff8);
}

void TakeItem(Ground& g) {
  g.block = MEMORYALLOC(64);
}

// A decoder of an item block with a result alone.
Call Decoder(const char* name, int16_t(TOLVENAR_CALL* decode)(uint32_t)) {
  return {name, "", TakeItem, [decode](Ground& g) { return decode(g.block) == -1; }, {0}, {}};
}

int32_t Borders(Ground& g) {
  uint16_t out[5] = {};
  return ::XLXFBorderStyle(g.block, out, out + 1, out + 2, out + 3, out + 4);
}

int32_t Colours(Ground& g) {
  uint16_t out[6] = {};
  return ::XLXFColors(g.block, out, out + 1, out + 2, out + 3, out + 4, out + 5);
}

int32_t ColourArray(Ground& g) {
  g.array = std::make_unique<TestArray>(VT_I4, 0, 1);
  return ::XLGetColorData(g.array->Ref(), g.buffer, g.table);
}

int32_t StandardColours(Ground& g) {
  g.array = std::make_unique<TestArray>(VT_I4, 0, 55);
  return ::XLGetStandardPalette(g.array->Ref());
}

int32_t Heights(Ground& g) {
  g.array = std::make_unique<TestArray>(VT_I2, 1, 4);
  return ::XLGetRowHeight(g.array->Ref(), g.buffer, g.table, 1);
}

int32_t Widths(Ground& g) {
  g.array = std::make_unique<TestArray>(VT_I2, 1, 6);
  return ::XLGetColWidth(g.array->Ref(), g.buffer, g.table, 1);
}

int32_t FullXf(Ground& g) {
  return ::XLGetXFIndFull(&g.buffer, g.table, &g.size, 3, 2, 1, 0, 1, 1, 0, 9, 1, 9, 1, 9, 1, 9, 1, 9, 1, 9);
}

using enum Leaves;

std::vector<Call> Lookups() {
  const auto font = [](Ground& g) {
    return ::XLGetFont(&g.buffer, g.table, &g.size, "New", 1, 240, 700, 0, 0, 0);
  };
  const auto known_font = [](Ground& g) {
    return ::XLGetFont(&g.buffer, g.table, &g.size, "Big", 0, 200, 400, 0, 0, 0);
  };
  const auto format = [](Ground& g) { return ::XLGetFormat(&g.buffer, g.table, &g.size, "0.000"); };
  const auto known_format = [](Ground& g) { return ::XLGetFormat(&g.buffer, g.table, &g.size, "0.0"); };
  const auto xf = [](Ground& g) { return ::XLGetXFInd(&g.buffer, g.table, &g.size, 3, 2, 1, 0, 1, 1, 0, 9); };
  const auto width = [](int16_t column) {
    return [column](Ground& g) { return ::XLChangeColWidth(&g.buffer, g.table, &g.size, 1, column, 3000); };
  };
  // clang-format off
  return {
      {"XLGetFont", "New", OpenBook, font, {3}, {{-3, kUnchanged}, {-4, kReleased}}},
      {"XLGetFont", "Known", OpenBook, known_font, {1}, {}},
      {"XLGetFormat", "New", OpenBook, format, {254}, {{-21, kUnchanged}, {-3, kUnchanged}, {-4, kReleased}}},
      {"XLGetFormat", "Known", OpenBook, known_format, {164}, {{-21, kUnchanged}}},
      {"XLGetXFInd", "", OpenBook, xf, {2}, {{-3, kUnchanged}, {-4, kReleased}}},
      {"XLGetXFInd", "Tight", OpenTightBook, xf, {2}, {{-3, kUnchanged}, {-4, kReleased}}},
      {"XLGetXFIndFull", "", OpenBook, FullXf, {2}, {{-12, kUnchanged}, {-4, kReleased}}},
      {"XLGetXFIndFull", "Biff5", OpenBookBiff5, FullXf, {2}, {{-12, kUnchanged}, {-4, kReleased}}},
      {"XLChangeRowHeight", "", OpenBook, [](Ground& g) { return ::XLChangeRowHeight(&g.buffer, g.table, &g.size, 1, 2, 300); }, {0}, {}},
      {"XLChangeColWidth", "Known", OpenBook, width(1), {0}, {}},
      {"XLChangeColWidth", "New", OpenBook, width(4), {-20}, {}},
  };
  // clang-format on
}

}  // namespace

std::vector<Call> StyleCalls() {
  const auto count = [](Ground& g) { return ::XLGetNumFormatItems(g.buffer, g.table, 0); };
  const auto zoom = [](Ground& g) {
    return static_cast<int32_t>(::XLGetMagnification(g.buffer, g.table, 1));
  };
  // clang-format off
  std::vector<Call> calls = {
      {"XLGetNumFormatItems", "", OpenBook, count, {2}, {}},
      {"XLGetFormatData", "Xfs", OpenBook, Items(0, 1), {0}, {{21, kUnchanged}, {8, kUnchanged}}},
      {"XLGetFormatData", "ManyXfs", OpenManyXfs, Items(0, 9), {8}, {{21, kUnchanged}}},
      {"XLGetFormatData", "WrongArray", OpenBook, Items(0, 5), {5}, {{21, kUnchanged}}},
      {"XLGetFormatData", "TwoDimensions", OpenBook, ItemsIntoATable, {4}, {{21, kUnchanged}}},
      {"XLGetFormatData", "Fonts", OpenBook, Items(1, 2), {0}, {{8, kUnchanged}}},
      {"XLGetFormatData", "Formats", OpenBook, Items(2, 36), {10}, {{8, kUnchanged}}},
      {"XLGetFormatData", "Palette", OpenBook, Items(3, 1), {0}, {}},
      {"XLGetColorData", "", OpenBook, ColourArray, {0}, {}},
      {"XLGetStandardPalette", "", Nothing, StandardColours, {0}, {}},
      {"XLGetRowHeight", "", OpenBook, Heights, {0}, {}},
      {"XLGetColWidth", "", OpenBook, Widths, {0}, {}},
      {"XLGetMagnification", "", OpenBook, zoom, {1}, {}},
      {"XLXFBorderStyle", "", TakeItem, Borders, {0}, {}},
      {"XLXFColors", "", TakeItem, Colours, {0}, {}},
      {"XLFontName", "", TakeItem, [](Ground& g) { return ::XLFontName(g.block, &g.text); }, {0}, {{-4, kNone}}},
      {"XLFormatString", "", TakeItem, [](Ground& g) { return ::XLFormatString(g.block, &g.text); }, {0}, {{-4, kNone}}},
      Decoder("XLFontSize", ::XLFontSize), Decoder("XLFontColor", ::XLFontColor),
      Decoder("XLFontBoldness", ::XLFontBoldness), Decoder("XLFontItalic", ::XLFontItalic),
      Decoder("XLFontStrikeOut", ::XLFontStrikeOut), Decoder("XLFontUnderline", ::XLFontUnderline),
      Decoder("XLXFFont", ::XLXFFont), Decoder("XLXFFormat", ::XLXFFormat), Decoder("XLXFLocked", ::XLXFLocked),
      Decoder("XLXFHidden", ::XLXFHidden), Decoder("XLXFHAlignment", ::XLXFHAlignment),
      Decoder("XLXFVAlignment", ::XLXFVAlignment), Decoder("XLXFRotation", ::XLXFRotation),
  };
  // clang-format on
  for (const Call& call : Lookups()) calls.push_back(call);
  return calls;
}

}  // namespace tolvenar::testing
