// Cells of a staged sheet, from templates.
#include "sheet/cell_templates.h"

#include <cstring>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "sheet/cell_value.h"
#include "workbook/label_record.h"
#include "workbook/record_builders.h"

namespace tolvenar {

namespace {

// A template as it is filled.
struct Filled {
  const uint8_t* bytes;
  uint32_t size;
};

Filled Fill(const CellTemplates& templates, uint16_t row, uint16_t column, uint16_t xf,
            const CellValue& cell) {
  if (cell.kind == CellKind::kNumber) {
    FillNumberRecord(BlockBytes(templates.number), row, column, xf, cell.number);
    return {BlockBytes(templates.number), kNumberSize};
  }
  if (cell.kind == CellKind::kText) {
    uint32_t size = 0;
    FillLabelRecord(templates.shell, &size, row, column, xf, cell.text);
    return {BlockBytes(templates.label), size};
  }
  FillBlankRecord(BlockBytes(templates.blank), row, column, xf);
  return {BlockBytes(templates.blank), kBlankSize};
}

// The first kSize bytes of a template. It may overlap its cell: a handle of the host's that was no live block may have become the template.
template <size_t kSize>
void CopyTemplate(uint8_t* to, uint32_t block) {
  uint8_t bytes[kSize];
  std::memcpy(bytes, BlockBytes(block), kSize);
  std::memcpy(to, bytes, kSize);
}

// The same at `to`, where the longest cell has room: the template is only read, so that nothing waits for what was just written to it.
// Returns the size.
uint32_t FillInPlace(const CellTemplates& templates, uint8_t* to, uint16_t row, uint16_t column, uint16_t xf,
                     const CellValue& cell) {
  if (cell.kind == CellKind::kNumber) {
    CopyTemplate<kNumberSize>(to, templates.number);
    FillNumberRecord(to, row, column, xf, cell.number);
    return kNumberSize;
  }
  if (cell.kind == CellKind::kText) {
    uint32_t size = 0;
    CopyTemplate<kLabelTextBiff8>(to, templates.label);
    FillLabelRecord({to, templates.shell.extent}, &size, row, column, xf, cell.text);
    return size;
  }
  CopyTemplate<kBlankSize>(to, templates.blank);
  FillBlankRecord(to, row, column, xf);
  return kBlankSize;
}

}  // namespace

bool MakeTemplates(CellTemplates* templates, SheetStream* stream) {
  uint32_t size = 0;
  templates->blank = MakeBlankRecord(&size, 0, 0, 0);
  templates->number = MakeNumberRecord(&size, 0, 0, 0, 0);
  templates->label = AllocLabelRecord(kLabelShellSize, 0, 0, 0);
  if (templates->blank == 0 || templates->number == 0 || templates->label == 0) {
    ReleaseTemplates(templates);
    MEMORYFREE(&stream->buffer);
    return false;
  }
  templates->shell = {BlockBytes(templates->label), MEMORYSIZE(templates->label)};
  templates->room = OpenBlock(stream->buffer);
  templates->capacity = static_cast<int32_t>(templates->room.extent);
  return true;
}

void ReleaseTemplates(CellTemplates* templates) {
  MEMORYFREE(&templates->blank);
  MEMORYFREE(&templates->number);
  MEMORYFREE(&templates->label);
}

bool AppendCell(CellTemplates* templates, SheetStream* stream, uint16_t row, uint16_t column, uint16_t xf,
                const VARIANT* value) {
  const CellValue cell = MapCell(value);
  // While there is room for the longest cell and one byte more, no append would grow the buffer: the cell is made in its place.
  if (uint8_t* to = At(templates->room, stream->at, kLabelShellSize + 1)) {
    stream->at += FillInPlace(*templates, to, row, column, xf, cell);
    return true;
  }
  const Filled filled = Fill(*templates, row, column, xf, cell);
  const int32_t behind = AppendBytesTracked(&stream->buffer, &stream->size, static_cast<int32_t>(stream->at),
                                            filled.bytes, filled.size, &templates->capacity);
  if (behind < 0) return false;
  templates->room = OpenBlock(stream->buffer);
  stream->at = static_cast<uint32_t>(behind);
  return true;
}

}  // namespace tolvenar
