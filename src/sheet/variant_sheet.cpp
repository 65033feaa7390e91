// Variant sheets in one call.
#include "sheet/variant_sheet.h"

#include "foundation/memory_pool.h"
#include "sheet/cell_columns.h"
#include "sheet/cell_value.h"
#include "sheet/sheet_append.h"
#include "sheet/sheet_skeleton.h"
#include "sheet/sheet_stream.h"
#include "workbook/label_record.h"
#include "workbook/record_builders.h"

namespace tolvenar {

namespace {

constexpr int16_t kDone = 0;
constexpr int16_t kNullCell = 2;

constexpr int64_t kAddressSize = 4;
constexpr int64_t kVariantSize = 16;
static_assert(sizeof(VARIANT) == kVariantSize);

uint32_t MakeCell(uint32_t* size, uint16_t row, uint16_t column, uint16_t xf, const CellValue& cell) {
  switch (cell.kind) {
    case CellKind::kNumber:
      return MakeNumberRecord(size, row, column, xf, cell.number);
    case CellKind::kText:
      return MakeLabelRecordWide(size, row, column, xf, cell.text);  // a null text leaves the cell out
    default:
      return MakeBlankRecord(size, row, column, xf);
  }
}

// The cells row by row. `cell_at` gives the VARIANT of an index. Result: 0, 2 or -2.
template <typename CellAt>
int16_t AppendCells(SheetStream* stream, int16_t columns, int16_t rows, const ColumnXfs& xfs,
                    CellAt cell_at) {
  for (int16_t row = 0; row < rows; ++row) {
    for (int16_t column = 0; column < columns; ++column) {
      const CellValue cell = MapCell(cell_at(int32_t{row} * columns + column));
      if (cell.kind == CellKind::kNull) return kNullCell;
      uint32_t size = 0;
      const uint32_t record = MakeCell(&size, static_cast<uint16_t>(row), static_cast<uint16_t>(column),
                                       XfOf(xfs, static_cast<uint32_t>(column)), cell);
      if (!AppendRecord(stream, record, size)) return kAppendFailed;
    }
  }
  return kDone;
}

template <typename CellAt>
int16_t AppendVariantBody(uint32_t* buffer, uint32_t* size, int16_t columns, int16_t rows,
                          const ColumnXfs& xfs, CellAt cell_at) {
  SheetStream stream = {*buffer, *size, *size};
  if (!AppendSheetHead(&stream, Country::kWith)) return kAppendFailed;
  if (!AppendSheetRange(&stream, columns, rows)) return kAppendFailed;
  const int16_t filled = AppendCells(&stream, columns, rows, xfs, cell_at);
  if (filled != kDone) return filled;
  if (!AppendSheetTail(&stream)) return kAppendFailed;
  *buffer = stream.buffer;
  *size = stream.at;
  return kDone;
}

// The VARIANT of an index among a host's addresses.
auto CellsAt(const VARIANT* const* cells) {
  return [cells](int32_t index) { return cells != nullptr ? cells[index] : nullptr; };
}

// The two blocks of the array path: a table of addresses, which are handles' neighbours and fit 32 bits, and
// the VARIANTs that they name.
struct ArrayCells {
  uint32_t table;
  uint32_t values;
};

// A pool block of n elements; 0 also for more than a block can hold.
uint32_t BlockOf(int64_t n, int64_t element_size) {
  const int64_t bytes = n * element_size;
  return bytes > INT32_MAX ? 0 : MEMORYALLOC(static_cast<int32_t>(bytes));
}

// Reads the elements 0 to n - 1 into the blocks.
void ReadElements(const ArrayCells& blocks, SAFEARRAY* array, int32_t n) {
  constexpr LONG kMostDimensions = 64;
  VARTYPE type = VT_EMPTY;
  const bool of_variants =
      array != nullptr && SUCCEEDED(SafeArrayGetVartype(array, &type)) && type == VT_VARIANT;
  for (int32_t i = 0; i < n; ++i) {
    VARIANT* value =
        static_cast<VARIANT*>(static_cast<void*>(BlockBytes(blocks.values) + int64_t{i} * kVariantSize));
    VariantInit(value);
    LONG indices[kMostDimensions] = {i};  // an array of more dimensions reads as many
    if (of_variants) SafeArrayGetElement(array, indices, value);
    const uint32_t address = blocks.values + static_cast<uint32_t>(i * kVariantSize);
    WriteU32(BlockBytes(blocks.table) + int64_t{i} * kAddressSize, address);
  }
}

// The VARIANT of an index in the table.
auto CellsIn(const ArrayCells& blocks) {
  return [table = blocks.table](int32_t index) {
    const uint32_t address = ReadU32(BlockBytes(table) + int64_t{index} * kAddressSize);
    return static_cast<const VARIANT*>(static_cast<const void*>(BlockBytes(address)));
  };
}

// Number of elements of an array, over all its dimensions.
uint32_t ElementCount(SAFEARRAY* array) {
  uint64_t count = 1;
  const UINT dimensions = SafeArrayGetDim(array);
  for (UINT dimension = 1; dimension <= dimensions; ++dimension) {
    LONG lower = 0;
    LONG upper = -1;
    SafeArrayGetLBound(array, dimension, &lower);
    SafeArrayGetUBound(array, dimension, &upper);
    count *= static_cast<uint64_t>(int64_t{upper} - lower + 1);
    if (count > UINT32_MAX) return UINT32_MAX;
  }
  return static_cast<uint32_t>(count);
}

// The XFs of a locked array; none when it has no data, or elements of another width.
ColumnXfs XfsOf(SAFEARRAY* array, void* data) {
  if (data == nullptr || SafeArrayGetElemsize(array) != sizeof(uint16_t)) return {nullptr, 0};
  return {static_cast<const uint16_t*>(data), ElementCount(array)};
}

}  // namespace

int16_t CreateVariantSheet(uint32_t* buffer, uint32_t* size, int16_t columns, int16_t rows,
                           const VARIANT* const* cells, const uint16_t* xf) {
  uint32_t none[2] = {};
  return AppendVariantBody(OrZero(buffer, &none[0]), OrZero(size, &none[1]), columns, rows, TrustedXfs(xf),
                           CellsAt(cells));
}

int16_t XLAppendVariantSheet(uint32_t* buffer, uint32_t* size, const char* name, int16_t columns,
                             int16_t rows, const VARIANT* const* cells, const uint16_t* xf) {
  uint32_t none[2] = {};
  return AppendSheetWith(OrZero(buffer, &none[0]), OrZero(size, &none[1]), name, kPrivateHigh,
                         [&](uint32_t* new_buffer, uint32_t* new_size) {
                           return CreateVariantSheet(new_buffer, new_size, columns, rows, cells, xf);
                         });
}

int16_t XLAppendVariantSheetVB(uint32_t* buffer, uint32_t* size, const char* name, int16_t columns,
                               int16_t rows, SAFEARRAY** cells, SAFEARRAY** xf) {
  const int32_t n = int32_t{columns} * rows;
  ArrayCells blocks = {BlockOf(n, kAddressSize), BlockOf(n, kVariantSize)};
  int16_t result = kBodyFailed;
  if (blocks.table != 0 && blocks.values != 0) {
    ReadElements(blocks, cells != nullptr ? *cells : nullptr, n);
    SAFEARRAY* xf_array = xf != nullptr ? *xf : nullptr;
    void* xf_data = nullptr;
    const bool locked = xf_array != nullptr && SUCCEEDED(SafeArrayAccessData(xf_array, &xf_data));
    const ColumnXfs xfs = XfsOf(xf_array, xf_data);
    uint32_t none[2] = {};
    result =
        AppendSheetWith(OrZero(buffer, &none[0]), OrZero(size, &none[1]), name, kPrivateHigh,
                        [&](uint32_t* new_buffer, uint32_t* new_size) {
                          return AppendVariantBody(new_buffer, new_size, columns, rows, xfs, CellsIn(blocks));
                        });
    if (locked) SafeArrayUnlock(xf_array);
  }
  MEMORYFREE(&blocks.table);
  MEMORYFREE(&blocks.values);
  return result;
}

}  // namespace tolvenar
