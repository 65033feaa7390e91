// EncodeTableBox: the directions, the largest box that fits, its record.
#include "reference/table_box.h"

#include <algorithm>

#include "foundation/memory_pool.h"
#include "reference/reference_directory.h"
#include "reference/table_grid.h"

namespace tolvenar {

namespace {

constexpr uint32_t kMarkSize = 4;  // of a row's mark in the mask

// What is known of a box while it is looked for.
struct Box {
  Block values;
  GridStrides strides = {};  // of the whole table
  uint32_t first = 0;        // place of the corner
  uint32_t base = 0;         // its value
  GridCell extents = {};     // first of the remaining array, in the end of the box
  GridStrides steps = {};    // by which the values advance, 0 for none
  uint32_t axes = 0;
};

uint32_t ValueAt(const Box& box, const GridCell& cell) {
  return U32At(box.values, (box.first + PlaceOf(box.strides, cell)) * kPositionSize);
}

uint32_t ExpectedAt(const Box& box, const GridCell& cell) {
  return box.base + PlaceOf(box.steps, cell);
}

// Gives dimension k the step that its next cell shows, or a single cell.
void FindStep(Box* box, uint32_t k) {
  if (box->extents[k] <= 1) return;
  GridCell next = kGridOrigin;
  next[k] = 1;
  const uint32_t distance = ValueAt(*box, next) - box->base;
  for (uint32_t i = 0; i < kBoxStepCount; ++i) {
    const bool taken = (box->axes / kBoxAxisUnits[i]) % 5 != 0;
    if (distance != kBoxSteps[i] || taken) continue;
    box->steps[k] = distance;
    box->axes += (k + 1) * kBoxAxisUnits[i];
    return;
  }
  box->extents[k] = 1;
}

// How many cells of a row, which goes along dimension 1, fit: `cell` is its first one.
int32_t RowLength(const Box& box, GridCell cell, int32_t limit) {
  while (cell[0] < limit && ValueAt(box, cell) == ExpectedAt(box, cell)) ++cell[0];
  return cell[0];
}

// Marks how far the row that begins at `cell` fits together with all rows between it and the corner: no further than the rows before it.
int32_t MarkRow(const Box& box, const Block& mask, const GridStrides& strides, const GridCell& cell) {
  const uint32_t place = PlaceOf(strides, cell);
  int32_t limit = box.extents[0];
  for (uint32_t k = 1; k < kGridDimensions; ++k) {
    if (cell[k] == 0) continue;
    limit = std::min(limit, static_cast<int32_t>(U32At(mask, (place - strides[k]) * kMarkSize)));
  }
  const int32_t length = RowLength(box, cell, limit);
  PutU32(mask, place * kMarkSize, static_cast<uint32_t>(length));
  return length;
}

// Of boxes of one volume the one that reaches further along the first dimensions is larger.
bool IsLarger(const GridCell& extents, const GridCell& than) {
  const int64_t more = VolumeOf(extents) - VolumeOf(than);
  return more != 0 ? more > 0 : extents > than;
}

// Cuts the extents to those of the largest box whose cells all fit. A row without a cell that fits ends its plane, for behind it nothing can:
// so the time goes with the cells that fit, and not with the remaining array. Only marks that this call has made are read.
void TakeLargest(Box* box, const Block& mask) {
  const GridCell& past = box->extents;
  const GridStrides strides = StridesOf({1, past[1], past[2], past[3]});
  GridCell largest = {1, 1, 1, 1};
  GridCell row = kGridOrigin;
  for (row[3] = 0; row[3] < past[3]; ++row[3]) {
    for (row[2] = 0; row[2] < past[2]; ++row[2]) {
      for (row[1] = 0; row[1] < past[1]; ++row[1]) {
        const int32_t length = MarkRow(*box, mask, strides, row);
        if (length == 0) break;
        const GridCell extents = {length, row[1] + 1, row[2] + 1, row[3] + 1};
        if (IsLarger(extents, largest)) largest = extents;
      }
      if (row[1] == 0) break;
    }
    if (row[2] == 0) break;
  }
  box->extents = largest;
}

// The block of the mask has room for the remaining array of `volume` cells, whether so much is needed or not; it is not zeroed, since the
// remaining array may be large and a box small.
int16_t FitBox(Box* box, int64_t volume) {
  const bool too_large = volume > INT32_MAX / int64_t{kMarkSize};
  uint32_t mask = too_large ? 0 : AllocateForOverwrite(static_cast<int32_t>(volume * kMarkSize));
  if (mask == 0) return kBoxNoMask;
  TakeLargest(box, OpenBlock(mask));
  MEMORYFREE(&mask);
  return kBoxDone;
}

void BuildCell(const Box& box, const Block& record) {
  PutU16(record, kRecordTypeLow, ReferenceType(kLowTableCell));
  PutU16(record, kRecordLength, kTableCellSize - kHeaderSize);
  PutU32(record, kTableCellNumber, box.first);
  PutU32(record, kTableCellPosition, box.base);
}

// The counts are cut to the width of their fields.
void BuildBlock(const Box& box, const Block& record) {
  PutU16(record, kRecordTypeLow, ReferenceType(kLowTableBlock));
  PutU16(record, kRecordLength, kTableBlockSize - kHeaderSize);
  PutU8(record, kTableBlockAxes, static_cast<uint8_t>(box.axes));
  PutU32(record, kTableBlockFirst, box.first);
  PutU32(record, kTableBlockPosition, box.base);
  for (uint32_t k = 0; k < kGridDimensions; ++k) {
    const int32_t count = box.extents[k];
    if (box.steps[k] == kBoxSteps[0]) PutU8(record, kTableBlockCountA, static_cast<uint8_t>(count));
    if (box.steps[k] == kBoxSteps[1]) PutU16(record, kTableBlockCountB, static_cast<uint16_t>(count));
    if (box.steps[k] == kBoxSteps[2]) PutU8(record, kTableBlockCountC, static_cast<uint8_t>(count));
  }
}

// Writes the record and zeroes the cells of the box.
int16_t WriteBox(const Box& box, bool alone, uint32_t* buffer, uint32_t* size, uint32_t at) {
  const uint32_t count = alone ? kTableCellSize : kTableBlockSize;
  uint32_t record = MEMORYALLOC(static_cast<int32_t>(count));
  if (record == 0) return kBoxNoRecord;
  (alone ? BuildCell : BuildBlock)(box, OpenBlock(record));
  const int16_t patched = PatchReference(buffer, BlockBytes(record), at, count, size);
  MEMORYFREE(&record);
  if (patched != kPatchDone) return alone ? kBoxCellNotPatched : kBoxNotPatched;
  VisitPlaces(kGridOrigin, box.extents, [&](const GridCell& cell) {
    PutU32(box.values, (box.first + PlaceOf(box.strides, cell)) * kPositionSize, 0);
  });
  return kBoxDone;
}

}  // namespace

int16_t EncodeTableBox(uint32_t* buffer, uint32_t* size, uint32_t at, uint32_t values, int16_t a, int16_t b,
                       int16_t c, int16_t d, int16_t d1, int16_t d2, int16_t d3, int16_t d4) {
  Box box;
  box.values = OpenBlock(values);
  box.strides = StridesOf({d1, d2, d3, d4});
  box.first = LinearCellIndex(a, b, c, d, d1, d2, d3, d4);
  box.base = U32At(box.values, box.first * kPositionSize);
  box.extents = {d1 - a, d2 - b, d3 - c, d4 - d};
  for (uint32_t k = 0; k < kGridDimensions; ++k) FindStep(&box, k);
  const int64_t volume = VolumeOf(box.extents);
  if (volume != 1) {
    const int16_t fitted = FitBox(&box, volume);
    if (fitted != kBoxDone) return fitted;
  }
  return WriteBox(box, volume == 1, buffer, size, at);
}

}  // namespace tolvenar
