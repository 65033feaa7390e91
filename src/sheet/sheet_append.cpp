// XLAppendSheet, XLAppendFullSheet, and the steps that they share with the variant sheets.
#include "sheet/sheet_append.h"

#include "sheet/sheet_skeleton.h"
#include "sheet/sheet_stream.h"
#include "workbook/label_record.h"
#include "workbook/refresh.h"
#include "workbook/sheet_table.h"

namespace tolvenar {

namespace {

constexpr int16_t kDone = 0;
constexpr uint16_t kFullSheetXf = 0;

// The BUFEND of XLAppendFullSheet has no high byte, on purpose: the refresh ends at the size, in front of it.
constexpr uint8_t kFullSheetBufEndHigh = 0;

bool AppendLabels(SheetStream* stream, int16_t columns, int16_t rows, const char* const* texts) {
  for (int16_t row = 0; row < rows; ++row) {
    for (int16_t column = 0; column < columns; ++column) {
      const char* text = texts != nullptr ? texts[int32_t{row} * columns + column] : nullptr;
      uint32_t size = 0;
      const uint32_t label = MakeLabelRecord(&size, static_cast<uint16_t>(row), static_cast<uint16_t>(column),
                                             kFullSheetXf, text);
      if (!AppendRecord(stream, label, size)) return false;
    }
  }
  return true;
}

// A sheet without COUNTRY whose cells `append_cells` appends.
template <typename AppendCells>
int16_t AppendBody(uint32_t* buffer, uint32_t* size, int16_t columns, int16_t rows,
                   AppendCells append_cells) {
  SheetStream stream = {*buffer, *size, *size};
  const bool whole = AppendSheetHead(&stream, Country::kWithout) &&
                     AppendSheetRange(&stream, columns, rows) && append_cells(&stream) &&
                     AppendSheetTail(&stream);
  if (!whole) return kAppendFailed;
  *buffer = stream.buffer;
  *size = stream.at;
  return kDone;
}

}  // namespace

int16_t AppendWorksheetBody(uint32_t* buffer, uint32_t* size, int16_t columns, int16_t rows) {
  return AppendBody(buffer, size, columns, rows, [](SheetStream*) { return true; });
}

int16_t AppendFullWorksheetBody(uint32_t* buffer, uint32_t* size, int16_t columns, int16_t rows,
                                const char* const* texts) {
  return AppendBody(buffer, size, columns, rows,
                    [&](SheetStream* stream) { return AppendLabels(stream, columns, rows, texts); });
}

int16_t CloseStream(uint32_t* buffer, uint32_t size, uint8_t high) {
  SheetStream stream = {*buffer, size, size};
  const bool closed = AppendBufEnd(&stream, high);
  *buffer = stream.buffer;
  return closed ? kDone : kAppendFailed;
}

int16_t FinishSheet(uint32_t* buffer, uint32_t* size) {
  uint32_t table = 0;
  if (XLLocateSheets(*buffer, &table, *size) != 0) {
    *buffer = 0;  // released by the call
    return kLocateFailed;
  }
  const int16_t refreshed = XLRefreshHandles(buffer, table, size);
  MEMORYFREE(&table);
  return refreshed == 0 ? kDone : kRefreshFailed;
}

int16_t XLAppendSheet(uint32_t* buffer, uint32_t* size, const char* name, int16_t columns, int16_t rows) {
  uint32_t none[2] = {};
  return AppendSheetWith(OrZero(buffer, &none[0]), OrZero(size, &none[1]), name, kPrivateHigh,
                         [&](uint32_t* new_buffer, uint32_t* new_size) {
                           return AppendWorksheetBody(new_buffer, new_size, columns, rows);
                         });
}

int16_t XLAppendFullSheet(uint32_t* buffer, uint32_t* size, const char* name, int16_t columns, int16_t rows,
                          const char* const* texts) {
  uint32_t none[2] = {};
  return AppendSheetWith(OrZero(buffer, &none[0]), OrZero(size, &none[1]), name, kFullSheetBufEndHigh,
                         [&](uint32_t* new_buffer, uint32_t* new_size) {
                           return AppendFullWorksheetBody(new_buffer, new_size, columns, rows, texts);
                         });
}

}  // namespace tolvenar
