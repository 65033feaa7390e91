// XLRFillTable, XLRGetRefTable.
#include "reference/table_positions.h"

#include <algorithm>

#include "foundation/memory_pool.h"
#include "reference/reference_array.h"
#include "reference/table_box.h"
#include "reference/table_object.h"

namespace tolvenar {

namespace {

int16_t CheckTableArray(SAFEARRAY* array, const GridCell& sizes) {
  IndexRange ranges[kGridDimensions];
  for (uint32_t k = 0; k < kGridDimensions; ++k) ranges[k] = {1, sizes[k]};
  return CheckRefArray(array, ranges, kGridDimensions);
}

// Copies the array's elements into the block, in the order of their places.
void LoadValues(SAFEARRAY* array, const GridCell& sizes, uint32_t values) {
  const Block block = OpenBlock(values);
  const GridStrides strides = StridesOf(sizes);
  VisitPlaces(kGridOrigin, sizes, [&](const GridCell& cell) {
    LONG index[kGridDimensions];
    for (uint32_t k = 0; k < kGridDimensions; ++k) index[k] = cell[k] + 1;
    uint32_t value = 0;
    platform::GetBytes(array, index, &value, sizeof value);
    PutU32(block, PlaceOf(strides, cell) * kPositionSize, value);
  });
}

// Encodes every cell that still has a value when its turn comes. False when one could not be.
bool EncodeValues(uint32_t* buffer, uint32_t* size, uint32_t at, const GridCell& sizes, uint32_t values) {
  const Block block = OpenBlock(values);
  const GridStrides strides = StridesOf(sizes);
  const auto narrow = [](int32_t value) { return static_cast<int16_t>(value); };
  return VisitCells(kGridOrigin, sizes, [&](const GridCell& cell) {
    if (U32At(block, PlaceOf(strides, cell) * kPositionSize) == 0) return true;
    return EncodeTableBox(buffer, size, at, values, narrow(cell[0]), narrow(cell[1]), narrow(cell[2]),
                          narrow(cell[3]), narrow(sizes[0]), narrow(sizes[1]), narrow(sizes[2]),
                          narrow(sizes[3])) == kBoxDone;
  });
}

// A pool block for a value of each cell; 0 when there is none. Sizes whose product is negative fit every block, and have no cells.
uint32_t TakeValues(const GridCell& sizes) {
  const int64_t bytes = VolumeOf(sizes) * int64_t{kPositionSize};
  if (bytes > INT32_MAX) return 0;
  return MEMORYALLOC(static_cast<int32_t>(std::max<int64_t>(bytes, INT32_MIN)));
}

// Cells of boxes that one get puts at most: those of a table that was filled 64 times over, and in a small one 2^26.
// Each of many boxes in a damaged table can claim all cells, and a get would take hours.
constexpr int64_t kMostPuts = int64_t{1} << 26;
constexpr int64_t kMostFills = 64;

// Where the position values go: the array, the sizes that it has, and the puts that are left.
struct Target {
  SAFEARRAY* array = nullptr;
  GridCell sizes = {};
  int64_t left = 0;
};

void PutPosition(const Target& target, const GridCell& index, uint32_t value) {
  LONG at[kGridDimensions];
  for (uint32_t k = 0; k < kGridDimensions; ++k) at[k] = index[k];
  platform::PutBytes(target.array, at, &value, sizeof value);
}

// Splits a linear index by signed division. False for a table without cells, which has no room for any value.
bool SplitPlace(uint32_t place, const GridCell& sizes, GridCell* cell) {
  int32_t rest = static_cast<int32_t>(place);
  for (uint32_t k = 0; k < kGridDimensions; ++k) {
    if (sizes[k] <= 0) return false;
    (*cell)[k] = rest % sizes[k];
    rest /= sizes[k];
  }
  return true;
}

// The 0-based coordinates serve as indices of an array that begins at 1, on purpose: a cell with a 0 among them is lost, and any other
// lands one place lower.
void PutCell(const Target& target, const Block& block, uint32_t at) {
  GridCell cell;
  if (!SplitPlace(U32At(block, at + kTableCellNumber), target.sizes, &cell)) return;
  PutPosition(target, cell, U32At(block, at + kTableCellPosition));
}

// A box as its record tells it.
struct StoredBox {
  GridCell counts = {1, 1, 1, 1};
  GridStrides steps = {};
};

StoredBox BoxAt(const Block& block, uint32_t at) {
  const int32_t counts[kBoxStepCount] = {U8At(block, at + kTableBlockCountA),
                                         U16At(block, at + kTableBlockCountB),
                                         U8At(block, at + kTableBlockCountC)};
  const uint32_t axes = U8At(block, at + kTableBlockAxes);
  StoredBox box;
  for (uint32_t i = 0; i < kBoxStepCount; ++i) {
    const uint32_t dimension = (axes / kBoxAxisUnits[i]) % 5;
    if (dimension == 0) continue;
    box.counts[dimension - 1] = counts[i];
    box.steps[dimension - 1] = kBoxSteps[i];
  }
  return box;
}

// Visits only the cells inside the array, as the puts of all others would fail. A box without a count along a dimension has no cells. One of
// more cells than there are puts left is left out.
void PutBlock(Target* target, const Block& block, uint32_t at) {
  const GridCell& sizes = target->sizes;
  GridCell corner;
  if (!SplitPlace(U32At(block, at + kTableBlockFirst), sizes, &corner)) return;
  const StoredBox box = BoxAt(block, at);
  const uint32_t base = U32At(block, at + kTableBlockPosition);
  GridCell first;
  GridCell past;
  int64_t cells = 1;
  for (uint32_t k = 0; k < kGridDimensions; ++k) {
    first[k] = std::max(0, -corner[k]);
    past[k] = std::min(box.counts[k], sizes[k] - corner[k]);
    if (past[k] <= first[k]) return;
    cells *= past[k] - first[k];
  }
  if (cells > target->left) return;
  target->left -= cells;
  VisitPlaces(first, past, [&](const GridCell& cell) {
    GridCell index;
    for (uint32_t k = 0; k < kGridDimensions; ++k) index[k] = corner[k] + cell[k] + 1;
    PutPosition(*target, index, base + PlaceOf(box.steps, cell));
  });
}

}  // namespace

int16_t XLRFillTable(uint32_t* buffer, uint32_t* size, SAFEARRAY** array, uint16_t table) {
  if (!HasBuffer(buffer, size)) return kRefNoBuffer;
  ObjectWalk object;
  const int16_t found = StartObject(*buffer, table, kKindTable, &object);
  if (found != kRefDone) return found;
  GridCell sizes = {};
  for (; !object.ended; StepObject(&object)) {
    if (AtObjectHead(object)) sizes = TableSizesAt(object.walk.block, object.walk.at);
  }
  if (!object.seen) return kRefHeadNotMet;
  SAFEARRAY* source = ArrayAt(array);
  const int16_t fits = CheckTableArray(source, sizes);
  if (fits != kRefArrayFits) return fits;
  uint32_t values = TakeValues(sizes);
  if (values == 0) return kFillNoCopy;
  LoadValues(source, sizes, values);
  const bool encoded = EncodeValues(buffer, size, object.walk.at, sizes, values);
  MEMORYFREE(&values);
  return encoded ? kRefDone : kFillNotEncoded;
}

int16_t XLRGetRefTable(uint32_t buffer, uint16_t table, SAFEARRAY** array) {
  if (buffer == 0) return kRefNoBuffer;
  ObjectWalk object;
  const int16_t found = StartObject(buffer, table, kKindTable, &object);
  if (found != kRefDone) return found;
  Target target;
  target.array = ArrayAt(array);
  for (; !object.ended; StepObject(&object)) {
    const Block& block = object.walk.block;
    if (AtObjectHead(object)) {
      target.sizes = TableSizesAt(block, object.walk.at);
      const int16_t fits = CheckTableArray(target.array, target.sizes);
      if (fits != kRefArrayFits) return fits;
      target.left = std::max(kMostPuts, kMostFills * VolumeOf(target.sizes));
    } else if (AtObjectRecord(object, kLowTableCell)) {
      PutCell(target, block, object.walk.at);
    } else if (AtObjectRecord(object, kLowTableBlock)) {
      PutBlock(&target, block, object.walk.at);
    }
  }
  return object.seen ? kRefDone : kRefHeadNotMet;
}

}  // namespace tolvenar
