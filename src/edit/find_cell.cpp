// FindCell: the search for one cell. The rules stand in find_cell.h.
#include "edit/find_cell.h"

#include <optional>

#include "edit/rows_above.h"
#include "query/extent_walk.h"
#include "workbook/biff_version.h"

namespace tolvenar {

namespace {

// A search under way: what is wanted, in the records' own 0-based numbers, and what has been met.
struct Search {
  Block block;
  int16_t row;
  int16_t column;
  int32_t depth = 1;
  bool rowSeen = false;
  uint32_t last = 0;  // the ROW, then the cell, met last
};

// What a record says about the search: the result that ends it, or nothing.
using Verdict = std::optional<int32_t>;

constexpr int32_t kCannotExist = 0;

int32_t Here(uint32_t at) {
  return static_cast<int32_t>(at);
}

int32_t BelongsBefore(uint32_t at) {
  return -static_cast<int32_t>(at);
}

// True when the wanted cell lies outside the DIMENSIONS at `at`, taken 1-based as the caller gave it. The
// first values are stored 0-based, the last ones one past the end: as 1-based bounds the first need 1 more
// and the last are right as they stand.
bool OutsideDimensions(const Search& search, uint32_t at) {
  const DimensionsFields* fields = FieldsOfDimensions();
  if (fields == nullptr) return false;
  const Block& block = search.block;
  const int16_t first_row = static_cast<int16_t>(U16At(block, at + fields->firstRow) + 1);
  const int16_t first_column = static_cast<int16_t>(U16At(block, at + fields->firstColumn) + 1);
  const int16_t row = static_cast<int16_t>(search.row + 1);
  const int16_t column = static_cast<int16_t>(search.column + 1);
  return row < first_row || row > I16At(block, at + fields->pastRow) || column < first_column ||
         column > I16At(block, at + fields->pastColumn);
}

// In the wanted row: is the cell at `at` the wanted one, or beyond it?
Verdict CompareColumn(const Search& search, uint32_t at, CellShape shape) {
  const int16_t first = I16At(search.block, at + kCellColumn);
  if (first > search.column) return BelongsBefore(at);
  const int16_t last = shape == CellShape::kSingle ? first : LastColumnOfRun(search.block, at);
  return search.column <= last ? Verdict(Here(at)) : std::nullopt;
}

Verdict ExamineCell(Search* search, uint32_t at, CellShape shape) {
  search->last = at;
  const int16_t row = I16At(search->block, at + kCellRow);
  if (row < search->row) return std::nullopt;
  if (!search->rowSeen)
    return kCannotExist;  // cells of a row whose ROW record has not come by are not to be edited
  return row == search->row ? CompareColumn(*search, at, shape) : Verdict(BelongsBefore(at));
}

void ExamineRow(Search* search, uint32_t at) {
  if (search->depth != 1 || search->rowSeen || I16At(search->block, at + kRowNumber) != search->row) return;
  search->rowSeen = true;
  search->last = at;
}

// One record of the walk. An EOF that brings the depth to 0 is examined like any other.
Verdict ExamineRecord(Search* search, uint32_t at) {
  if ((U8At(search->block, at + kRecordTypeHigh) & kChartBit) != 0) return std::nullopt;
  const uint8_t low = U8At(search->block, at);
  if (low == kLowBof) ++search->depth;
  if (low == kLowEof) --search->depth;
  if (low == kLowDimensions && OutsideDimensions(*search, at)) return kCannotExist;
  if (low == kLowRow) ExamineRow(search, at);
  // NUMBER counts in the sheet itself only; the other nine kinds count inside nested substreams too, on
  // purpose.
  if (kCellShapes[low] == CellShape::kNoCell || (low == kLowNumber && search->depth != 1))
    return std::nullopt;
  return ExamineCell(search, at, kCellShapes[low]);
}

}  // namespace

CellShape ShapeOfCell(const Block& block, uint32_t at) {
  const bool plain = (U8At(block, at + kRecordTypeHigh) & kChartBit) == 0;
  return plain ? kCellShapes[U8At(block, at)] : CellShape::kNoCell;
}

bool SheetForEdit(uint32_t buffer, uint32_t table, int16_t sheet, SheetExtent* extent) {
  if (table == 0) return false;
  const Block entries = OpenBlock(table);
  if (sheet > TableCount(entries) || sheet < 1) return false;
  *extent = ExtentOfSheet(entries, sheet);
  return buffer != 0;
}

int32_t FindCell(uint32_t buffer, uint32_t table, int16_t sheet, int16_t row, int16_t column) {
  SheetExtent extent;
  if (!SheetForEdit(buffer, table, sheet, &extent)) return kCannotExist;
  Search search = {OpenBlock(buffer), static_cast<int16_t>(row - 1), static_cast<int16_t>(column - 1)};
  RowsAbove above;
  above.end = extent.end;
  above.wanted = search.row;
  Walk walk = StartWalk(search.block, extent.begin);
  for (Step(&walk); search.depth >= 1 && InExtent(walk, extent.end); Step(&walk)) {
    if (search.depth == 1) PassRowsAbove(&walk, &above, &search.last);
    if (!InExtent(walk, extent.end)) break;
    if (const Verdict verdict = ExamineRecord(&search, walk.at)) return *verdict;
  }
  return search.rowSeen ? BelongsBefore(NextRecord(search.block, search.last)) : kCannotExist;
}

uint16_t GetCellXF(const Block& block, uint32_t at, int16_t column) {
  const CellShape shape = ShapeOfCell(block, at);
  if (shape != CellShape::kMulRk && shape != CellShape::kMulBlank) return U16At(block, at + kCellXf);
  const int32_t cell = column - 1 - I16At(block, at + kCellColumn);
  const uint32_t cell_size = shape == CellShape::kMulRk ? kMulRkCell : kMulBlankCell;
  return U16At(block, at + kCellXf + static_cast<uint32_t>(cell) * cell_size);
}

}  // namespace tolvenar
