// The small record builders. The records' layouts stand in record_builders.h.
#include "workbook/record_builders.h"

#include <algorithm>
#include <cstring>

#include "foundation/biff_records.h"
#include "workbook/biff_version.h"
#include "workbook/record_pen.h"

namespace tolvenar {

namespace {

constexpr uint32_t kDefaultRowHeightSize = kHeaderSize + 2 + 2;
constexpr uint32_t kDefColWidthSize = kHeaderSize + 2;
constexpr uint32_t kDimensionsSize = kHeaderSize + 14;
constexpr uint32_t kBofSizeBiff5 = kHeaderSize + 8;
constexpr uint32_t kBofSizeBiff8 = kHeaderSize + 16;
constexpr uint32_t kBoundSheetFixed = kHeaderSize + 4 + 2 + 1 + 1;  // BOF, state, name length, spare byte
constexpr uint32_t kColInfoSize = kHeaderSize + 3 * 2 + 5;

// Versions and builds that a BOF names.
constexpr uint16_t kBofVersionBiff5 = 0x0500;
constexpr uint16_t kBofVersionBiff8 = 0x0600;
constexpr uint16_t kBofBuildBiff5 = 0x096C;
constexpr uint16_t kBofYearBiff5 = 0x07C9;
constexpr uint16_t kBofBuildBiff8 = 0x10D3;
constexpr uint16_t kBofYearBiff8 = 0x07CC;
constexpr uint32_t kBofHistory = 0x41;
constexpr uint32_t kBofLowestReader = 6;

// Reserved word, options and XF of every ROW.
constexpr uint16_t kRowReserved = 0;
constexpr uint16_t kRowOptions = 0x00F3;
constexpr uint16_t kRowLook = 0x0140;
constexpr uint16_t kRowXf = 0x021D;

enum class DimensionsLayout { kNone, kBiff5, kBiff8 };

uint16_t Past(uint32_t last) {
  return static_cast<uint16_t>(last + 1);
}

uint32_t MakeDimensions(uint32_t* size, DimensionsLayout layout, uint16_t first_row, uint32_t last_row,
                        uint16_t first_column, uint32_t last_column) {
  RecordPen pen = StartRecord(kTypeDimensions, kDimensionsSize, size);
  // BIFF5 needs 10 bytes of payload and gets 14 as well, the last four zero, on purpose.
  if (layout == DimensionsLayout::kBiff5) {
    WriteFields(&pen, first_row, Past(last_row), first_column, Past(last_column));
  } else if (layout == DimensionsLayout::kBiff8) {
    WriteFields(&pen, uint32_t{first_row}, uint32_t{Past(last_row)}, first_column, Past(last_column));
  }
  return pen.block;
}

// Length of a sheet's name as the record counts it: the low 16 bits of its length, cut so that the record's
// size stays a positive 16-bit value.
uint16_t NameLength(const char* name) {
  constexpr uint16_t kLongest = INT16_MAX - kBoundSheetFixed;
  const uint16_t length = name != nullptr ? static_cast<uint16_t>(std::strlen(name)) : uint16_t{0};
  return std::min(length, kLongest);
}

}  // namespace

uint32_t MakeDefaultRowHeightRecord(uint32_t* size, uint16_t height) {
  RecordPen pen = StartRecord(kTypeDefaultRowHeight, kDefaultRowHeightSize, size);
  WriteFields(&pen, uint16_t{0}, height);
  return pen.block;
}

uint32_t MakeDefColWidthRecord(uint32_t* size, uint16_t width) {
  RecordPen pen = StartRecord(kTypeDefColWidth, kDefColWidthSize, size);
  WriteFields(&pen, width);
  return pen.block;
}

uint32_t MakeDimensionsRecord(uint32_t* size, uint16_t first_row, uint32_t last_row, uint16_t first_column,
                              uint32_t last_column) {
  const DimensionsLayout layout = BiffVersion == kBiff8   ? DimensionsLayout::kBiff8
                                  : BiffVersion == kBiff5 ? DimensionsLayout::kBiff5
                                                          : DimensionsLayout::kNone;
  return MakeDimensions(size, layout, first_row, last_row, first_column, last_column);
}

uint32_t MakeStagedDimensionsRecord(uint32_t* size, uint16_t first_row, uint32_t last_row,
                                    uint16_t first_column, uint32_t last_column) {
  const DimensionsLayout layout = BiffVersion == kBiff8 ? DimensionsLayout::kBiff8 : DimensionsLayout::kBiff5;
  return MakeDimensions(size, layout, first_row, last_row, first_column, last_column);
}

uint32_t MakeNumberRecord(uint32_t* size, uint16_t row, uint16_t column, uint16_t xf, float value) {
  RecordPen pen = StartRecord(kTypeNumber, kNumberSize, size);
  WriteFields(&pen, row, column, xf, static_cast<double>(value));
  return pen.block;
}

uint32_t MakeBlankRecord(uint32_t* size, uint16_t row, uint16_t column, uint16_t xf) {
  RecordPen pen = StartRecord(kTypeBlank, kBlankSize, size);
  WriteFields(&pen, row, column, xf);
  return pen.block;
}

uint32_t MakeBofRecord(uint32_t* size, uint8_t substream) {
  if (BiffVersion == kBiff8) {
    RecordPen pen = StartRecord(kTypeBof, kBofSizeBiff8, size);
    WriteFields(&pen, kBofVersionBiff8, uint16_t{substream}, kBofBuildBiff8, kBofYearBiff8, kBofHistory,
                kBofLowestReader);
    return pen.block;
  }
  RecordPen pen = StartRecord(kTypeBof, kBofSizeBiff5, size);
  WriteFields(&pen, kBofVersionBiff5, uint16_t{substream}, kBofBuildBiff5, kBofYearBiff5);
  return pen.block;
}

uint32_t MakeBoundSheetRecord(uint32_t* size, uint32_t bof, const char* name) {
  const uint16_t length = NameLength(name);
  RecordPen pen = StartRecord(kTypeBoundSheet, kBoundSheetFixed + length, size);
  WriteFields(&pen, bof, uint16_t{0}, static_cast<uint8_t>(length));
  WriteBytes(&pen, name, length);
  return pen.block;
}

uint32_t MakeColInfoRecord(uint32_t* size, uint16_t first_column, uint16_t last_column, uint16_t width) {
  RecordPen pen = StartRecord(kTypeColInfo, kColInfoSize, size);
  WriteFields(&pen, first_column, last_column, width, uint16_t{0}, uint16_t{0x0200}, uint8_t{0});
  return 0;  // on purpose: see the declaration
}

uint32_t MakeRowRecord(uint32_t* size, uint16_t row, uint16_t first_column, uint32_t last_column,
                       uint16_t height) {
  RecordPen pen = StartRecord(kTypeRow, kRowSize, size);
  WriteFields(&pen, row, first_column, Past(last_column), height, kRowReserved, kRowOptions, kRowLook,
              kRowXf);
  return pen.block;
}

void FillBlankRecord(uint8_t* record, uint16_t row, uint16_t column, uint16_t xf) {
  WriteU16(record + kCellRow, row);
  WriteU16(record + kCellColumn, column);
  WriteU16(record + kCellXf, xf);
}

void FillNumberRecord(uint8_t* record, uint16_t row, uint16_t column, uint16_t xf, float value) {
  FillBlankRecord(record, row, column, xf);
  WriteF64(record + kNumberValue, static_cast<double>(value));
}

}  // namespace tolvenar
