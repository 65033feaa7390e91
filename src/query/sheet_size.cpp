// Sheet size: read off the BOF and the first DIMENSIONS.
#include "query/sheet_size.h"

#include "query/extent_walk.h"
#include "workbook/biff_version.h"

namespace tolvenar {

namespace {

constexpr int16_t kMeasured = 0;
constexpr int16_t kNoTable = 1;
constexpr int16_t kNoSheet = 2;
constexpr int16_t kNoBuffer = 3;
constexpr int16_t kIsGlobals = 5;
constexpr int16_t kIsVisualBasic = 6;
constexpr int16_t kIsMacroSheet = 7;
constexpr int16_t kIsWorkspace = 8;
constexpr int16_t kIsChart = 9;

// Result for the kind of substream that the BOF at `bof` opens.
int16_t KindOfSheet(const Block& block, uint32_t bof) {
  switch (U8At(block, bof + kBofSubstream)) {
    case kSubstreamGlobals:
      return kIsGlobals;
    case kSubstreamVisualBasic:
      return kIsVisualBasic;
    case kSubstreamChart:
      return kIsChart;
    case kSubstreamMacroSheet:
      return kIsMacroSheet;
    case kSubstreamWorkspace:
      return U8At(block, bof + kBofSubstreamHigh) == kSubstreamWorkspaceHigh ? kIsWorkspace : kMeasured;
    default:
      return kMeasured;
  }
}

void Give(uint16_t* out, uint32_t value) {
  if (out != nullptr) *out = static_cast<uint16_t>(value);
}

}  // namespace

int16_t XLGetSheetSize(uint32_t buffer, uint32_t table, int16_t sheet, uint16_t* first_row,
                       uint16_t* last_row, uint16_t* first_col, uint16_t* last_col) {
  const Block entries = OpenBlock(table);
  if (entries.extent == 0) return kNoTable;
  if (sheet > TableCount(entries) || sheet < 1) return kNoSheet;
  if (buffer == 0) return kNoBuffer;
  const Block block = OpenBlock(buffer);
  const SheetExtent extent = ExtentOfSheet(entries, sheet);
  const int16_t kind = KindOfSheet(block, extent.begin);
  if (kind != kMeasured) return kind;

  Walk walk = StartWalk(block, extent.begin);
  while (InExtent(walk, extent.end) && !IsPlain(block, walk.at, kLowDimensions)) Step(&walk);
  const DimensionsFields* fields = FieldsOfDimensions();
  if (!InExtent(walk, extent.end) || fields == nullptr) return kMeasured;
  Give(first_row, U16At(block, walk.at + fields->firstRow) + 1u);
  Give(last_row, U16At(block, walk.at + fields->pastRow));
  Give(first_col, U16At(block, walk.at + fields->firstColumn) + 1u);
  Give(last_col, U16At(block, walk.at + fields->pastColumn));
  return kMeasured;
}

}  // namespace tolvenar
