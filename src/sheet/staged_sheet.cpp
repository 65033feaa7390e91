// Variant sheets in stages. The order of the calls stands in staged_sheet.h.
#include "sheet/staged_sheet.h"

#include <algorithm>

#include "foundation/memory_pool.h"
#include "platform/prediction.h"
#include "sheet/cell_columns.h"
#include "sheet/cell_templates.h"
#include "sheet/sheet_append.h"
#include "sheet/sheet_rows.h"
#include "sheet/sheet_skeleton.h"
#include "sheet/sheet_stream.h"
#include "workbook/record_builders.h"

namespace tolvenar {

namespace {

constexpr int16_t kDone = 0;
constexpr int32_t kMostCells = 65534;  // rows or columns of CreateVariantSheet1A

// The caller's three variables for the length of a stage.
class Stage {
 public:
  Stage(uint32_t* buffer, uint32_t* size, uint32_t* position)
      : buffer_(OrZero(buffer, &none_[0])),
        size_(OrZero(size, &none_[1])),
        position_(OrZero(position, &none_[2])),
        stream{*buffer_, *size_, *position_} {}

  // Stores what has become of them and gives the stage's result.
  int16_t End(bool done) {
    *buffer_ = stream.buffer;
    *size_ = stream.size;
    *position_ = stream.at;
    return done ? kDone : kAppendFailed;
  }

 private:
  uint32_t none_[3] = {};
  uint32_t* buffer_;
  uint32_t* size_;
  uint32_t* position_;

 public:
  SheetStream stream;
};

bool OpenSheet(SheetStream* stream) {
  stream->at = stream->size;
  return AppendSheetHead(stream, Country::kWith);
}

// DIMENSIONS, by the builder or by its twin.
using DimensionsBuilder = uint32_t (*)(uint32_t*, uint16_t, uint32_t, uint16_t, uint32_t);

bool AppendDimensions(SheetStream* stream, DimensionsBuilder make, int32_t columns, int32_t rows) {
  uint32_t size = 0;
  const uint32_t record = make(&size, 0, static_cast<uint32_t>(rows), 0, static_cast<uint32_t>(columns));
  return AppendRecord(stream, record, size);
}

// A slice of cells: where its first cell goes, and where its VARIANTs lie.
struct Slice {
  uint16_t first_column;
  uint16_t first_row;
  int32_t columns;
  int32_t rows;
  const VARIANT* cells;
  ColumnXfs xfs;
};

bool AppendSliceCell(CellTemplates* templates, SheetStream* stream, const Slice& slice, int32_t row,
                     int32_t column) {
  const VARIANT* value =
      slice.cells != nullptr ? slice.cells + (int64_t{row} * slice.columns + column) : nullptr;
  return AppendCell(templates, stream, static_cast<uint16_t>(slice.first_row + row),
                    static_cast<uint16_t>(slice.first_column + column),
                    XfOf(slice.xfs, static_cast<uint32_t>(column)), value);
}

bool AppendByRows(CellTemplates* templates, SheetStream* stream, const Slice& slice) {
  for (int32_t row = 0; row < slice.rows; ++row) {
    for (int32_t column = 0; column < slice.columns; ++column) {
      if (!AppendSliceCell(templates, stream, slice, row, column)) return false;
    }
  }
  return true;
}

// The texts of a column lie all over the memory of the host, and each would be waited for.
void FetchTextAhead(const Slice& slice, int32_t row, int32_t column) {
  constexpr int32_t kAhead = 16;
  if (slice.cells == nullptr || row >= slice.rows - kAhead) return;
  const VARIANT& value = slice.cells[int64_t{row + kAhead} * slice.columns + column];
  if (value.vt == VT_BSTR) FetchAhead(value.bstrVal);
}

bool AppendByColumns(CellTemplates* templates, SheetStream* stream, const Slice& slice) {
  for (int32_t column = 0; column < slice.columns; ++column) {
    for (int32_t row = 0; row < slice.rows; ++row) {
      FetchTextAhead(slice, row, column);
      if (!AppendSliceCell(templates, stream, slice, row, column)) return false;
    }
  }
  return true;
}

// The slice's cells in the order of `append`, between the making and the release of the templates.
template <typename Append>
bool FillSlice(SheetStream* stream, const Slice& slice, Append append) {
  CellTemplates templates = {};
  if (!MakeTemplates(&templates, stream)) return false;
  const bool filled = append(&templates, stream, slice);
  ReleaseTemplates(&templates);
  return filled;
}

}  // namespace

int16_t AppendVariantSheet1(uint32_t* buffer, uint32_t* size, const char* name) {
  uint32_t none[2] = {};
  buffer = OrZero(buffer, &none[0]);
  size = OrZero(size, &none[1]);
  Splice splice = SpliceSheet(buffer, size, name);
  *size = splice.size;
  if (splice.failure != 0) return kAppendFailed;
  MEMORYFREE(&splice.old_buffer);
  *buffer = splice.new_buffer;
  return static_cast<int16_t>(splice.number);
}

int16_t CreateVariantSheet1(uint32_t* buffer, uint32_t* size, uint32_t* position) {
  Stage stage(buffer, size, position);
  return stage.End(OpenSheet(&stage.stream));
}

int16_t CreateVariantSheet1A(uint32_t* buffer, uint32_t* size, int32_t columns, int32_t rows,
                             uint32_t* position) {
  Stage stage(buffer, size, position);
  columns = std::min(columns, kMostCells);
  rows = std::min(rows, kMostCells);
  const int32_t written = static_cast<uint16_t>(rows);  // compared as 16 unsigned bits
  return stage.End(OpenSheet(&stage.stream) &&
                   AppendDimensions(&stage.stream, MakeStagedDimensionsRecord, columns, rows) &&
                   AppendRows(&stage.stream, columns, written, rows, RowRoom::kWhole));
}

int16_t CreateVariantSheet2(uint32_t* buffer, uint32_t* size, uint32_t* position, int16_t columns,
                            int16_t rows, const VARIANT* cells, const uint16_t* xf) {
  Stage stage(buffer, size, position);
  const Slice slice = {0, 0, columns, rows, cells, TrustedXfs(xf)};
  return stage.End(AppendDimensions(&stage.stream, MakeDimensionsRecord, columns, rows) &&
                   AppendRows(&stage.stream, columns, rows, rows, RowRoom::kMissing) &&
                   FillSlice(&stage.stream, slice, AppendByRows));
}

int16_t CreateVariantSheet2A(uint32_t* buffer, uint32_t* size, uint32_t* position, uint16_t first_column,
                             uint16_t first_row, uint16_t columns, uint16_t rows, const VARIANT* cells,
                             const uint16_t* xf) {
  Stage stage(buffer, size, position);
  const Slice slice = {first_column, first_row, columns, rows, cells, TrustedXfs(xf)};
  return stage.End(FillSlice(&stage.stream, slice, AppendByColumns));
}

int16_t CreateVariantSheet3(uint32_t* buffer, uint32_t* size, uint32_t* position) {
  Stage stage(buffer, size, position);
  const bool closed = AppendSheetTail(&stage.stream);
  if (closed) stage.stream.size = stage.stream.at;
  return stage.End(closed);
}

int16_t AppendVariantSheet2(uint32_t* buffer, uint32_t* size, int16_t number) {
  uint32_t none[2] = {};
  buffer = OrZero(buffer, &none[0]);
  size = OrZero(size, &none[1]);
  const int16_t closed = CloseStream(buffer, *size, kPrivateHigh);
  if (closed != 0) return closed;
  const int16_t finished = FinishSheet(buffer, size);
  return finished != 0 ? finished : number;
}

int16_t AddZemblerRecord(uint32_t* buffer, uint32_t* size) {
  uint32_t none[2] = {};
  buffer = OrZero(buffer, &none[0]);
  size = OrZero(size, &none[1]);
  constexpr uint32_t kFailedOffset = UINT32_MAX;  // the -1 of the append, which is stored too, on purpose
  SheetStream stream = {*buffer, *size, *size};
  const bool appended = AppendBufEnd(&stream, kPrivateHigh);
  *buffer = stream.buffer;
  *size = appended ? stream.at : kFailedOffset;
  return appended ? kDone : kAppendFailed;
}

}  // namespace tolvenar
