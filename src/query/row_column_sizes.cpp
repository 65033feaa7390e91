// Row and column sizes: the checks and the three walks.
#include "query/row_column_sizes.h"

#include "platform/array_put.h"
#include "query/array_element.h"
#include "query/extent_walk.h"
#include "query/sheet_catalogue.h"
#include "query/sheet_size.h"

namespace tolvenar {

namespace {

constexpr int16_t kSizesRead = 0;
constexpr int16_t kSizesNoSheets = 1;
constexpr int16_t kSizesBadCount = 2;
constexpr int16_t kSizesNoWorksheet = 3;
constexpr int16_t kSizesNotOneDimension = 4;
constexpr int16_t kSizesArrayDoesNotFit = 5;
constexpr int16_t kSizesNoTable = 6;
constexpr int16_t kSizesNoBuffer = 7;

// What XLGetSheetSize says of a chart sheet.
constexpr int16_t kIsChartSheet = 9;

constexpr int32_t kUnitsACharacter = 120;
constexpr int32_t kWidthsACharacter = 256;

enum class Axis { kRows, kColumns };

struct SizeArray {
  SAFEARRAY* array;
  LONG last;  // row or column
};

// The ladder of both readers. `out->last` becomes the last row or column.
int16_t CheckSizeRead(SizeArray* out, uint32_t buffer, uint32_t table, int16_t sheet, Axis axis) {
  const int16_t count = XLGetNumSheets(table);
  if (count == 0) return kSizesNoSheets;
  // Both at once, on purpose: a sheet that is merely out of range comes out as 3.
  if (sheet > count && !(sheet > 0)) return kSizesBadCount;
  LONG lower = 0;
  LONG upper = 0;
  const bool bounded = SUCCEEDED(SafeArrayGetLBound(out->array, 1, &lower)) &&
                       SUCCEEDED(SafeArrayGetUBound(out->array, 1, &upper));
  // A sheet that tells no range leaves this as it is, and the array's end passes.
  uint16_t last = static_cast<uint16_t>(upper);
  uint16_t* last_row = axis == Axis::kRows ? &last : nullptr;
  uint16_t* last_col = axis == Axis::kColumns ? &last : nullptr;
  if (XLGetSheetSize(buffer, table, sheet, nullptr, last_row, nullptr, last_col) != 0)
    return kSizesNoWorksheet;
  if (SafeArrayGetDim(out->array) != 1) return kSizesNotOneDimension;
  out->last = static_cast<int16_t>(last);
  if (!bounded || lower != 1 || upper != out->last) return kSizesArrayDoesNotFit;
  // These two stay in the ladder though codes 1 and 3 come first, on purpose.
  if (table == 0) return kSizesNoTable;
  if (buffer == 0) return kSizesNoBuffer;
  return kSizesRead;
}

void PutSize(const SizeArray& out, LONG index, int32_t size) {
  platform::PutBytes(out.array, &index, &size, sizeof size);
}

// Puts `size` into the elements first .. last, as far as the array has them.
void PutSizes(const SizeArray& out, LONG first, LONG last, int32_t size) {
  const LONG from = first < 1 ? 1 : first;
  const LONG to = last > out.last ? out.last : last;
  for (LONG index = from; index <= to; ++index) PutSize(out, index, size);
}

void PutColInfoWidths(const SizeArray& out, const Block& block, uint32_t at) {
  // Both are signed 16-bit values after the step to 1-based, so column 32767 becomes -32768.
  const int16_t first = static_cast<int16_t>(U16At(block, at + kColInfoFirst) + 1);
  const int16_t last = static_cast<int16_t>(U16At(block, at + kColInfoLast) + 1);
  // The division truncates toward zero, as the product with 0.46875 would.
  PutSizes(out, first, last, I16At(block, at + kColInfoWidth) * kUnitsACharacter / kWidthsACharacter);
}

}  // namespace

int16_t XLGetRowHeight(SAFEARRAY** heights, uint32_t buffer, uint32_t table, int16_t sheet) {
  SizeArray out = {ArrayAt(heights), 0};
  const int16_t check = CheckSizeRead(&out, buffer, table, sheet, Axis::kRows);
  if (check != kSizesRead) return check;
  const Block block = OpenBlock(buffer);
  const SheetExtent extent = ExtentOfSheet(OpenBlock(table), sheet);
  ForEachRecord(block, extent.begin, extent.end, [&](uint32_t at) {
    if (IsPlain(block, at, kLowDefaultRowHeight)) {
      PutSizes(out, 1, out.last, U16At(block, at + kDefaultRowHeightHeight));
    } else if (IsPlain(block, at, kLowRow)) {
      PutSize(out, I16At(block, at + kRowNumber) + 1, U16At(block, at + kRowHeight) + 1);
    }
  });
  return kSizesRead;
}

int16_t XLGetColWidth(SAFEARRAY** widths, uint32_t buffer, uint32_t table, int16_t sheet) {
  SizeArray out = {ArrayAt(widths), 0};
  const int16_t check = CheckSizeRead(&out, buffer, table, sheet, Axis::kColumns);
  if (check != kSizesRead) return check;
  const Block block = OpenBlock(buffer);
  const SheetExtent extent = ExtentOfSheet(OpenBlock(table), sheet);
  ForEachRecord(block, extent.begin, extent.end, [&](uint32_t at) {
    if (IsPlain(block, at, kLowDefColWidth)) {
      PutSizes(out, 1, out.last, U16At(block, at + kDefColWidthWidth) * kUnitsACharacter);
    } else if (IsPlain(block, at, kLowColInfo)) {
      PutColInfoWidths(out, block, at);
    }
  });
  return kSizesRead;
}

double XLGetMagnification(uint32_t buffer, uint32_t table, int16_t sheet) {
  const int16_t kind = XLGetSheetSize(buffer, table, sheet, nullptr, nullptr, nullptr, nullptr);
  if (kind != 0 && kind != kIsChartSheet) return -kind;
  const Block block = OpenBlock(buffer);
  const SheetExtent extent = ExtentOfSheet(OpenBlock(table), sheet);
  double numerator = 1.0;
  double denominator = 1.0;
  ForEachRecord(block, extent.begin, extent.end, [&](uint32_t at) {
    if (!IsPlain(block, at, kLowScl)) return;
    numerator = I16At(block, at + kSclNumerator);
    denominator = I16At(block, at + kSclDenominator);
  });
  return numerator / denominator;
}

}  // namespace tolvenar
