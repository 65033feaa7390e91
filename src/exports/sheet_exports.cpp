// Exports of new workbooks and sheets: forwards, and nothing but forwards.
#include "sheet/sheet_append.h"
#include "sheet/staged_sheet.h"
#include "sheet/variant_sheet.h"
#include "tolvenar/tolvenar.h"
#include "workbook/empty_book.h"

extern "C" {

int16_t TOLVENAR_CALL XLCreateEmptyBook(uint32_t* buffer, uint32_t* size, int32_t selector) {
  return tolvenar::XLCreateEmptyBook(buffer, size, selector);
}

int16_t TOLVENAR_CALL XLEmptyBookLocateSheets(uint32_t buffer, uint32_t* table, int32_t size) {
  return tolvenar::XLEmptyBookLocateSheets(buffer, table, size);
}

int16_t TOLVENAR_CALL XLAppendSheet(uint32_t* buffer, uint32_t* size, const char* name, int16_t cols,
                                    int16_t rows) {
  return tolvenar::XLAppendSheet(buffer, size, name, cols, rows);
}

int16_t TOLVENAR_CALL XLAppendFullSheet(uint32_t* buffer, uint32_t* size, const char* name, int16_t cols,
                                        int16_t rows, const char* const* texts) {
  return tolvenar::XLAppendFullSheet(buffer, size, name, cols, rows, texts);
}

int16_t TOLVENAR_CALL XLAppendVariantSheet(uint32_t* buffer, uint32_t* size, const char* name, int16_t cols,
                                           int16_t rows, const VARIANT* const* cells, const uint16_t* xf) {
  return tolvenar::XLAppendVariantSheet(buffer, size, name, cols, rows, cells, xf);
}

int16_t TOLVENAR_CALL XLAppendVariantSheetVB(uint32_t* buffer, uint32_t* size, const char* name, int16_t cols,
                                             int16_t rows, SAFEARRAY** cells, SAFEARRAY** xf) {
  return tolvenar::XLAppendVariantSheetVB(buffer, size, name, cols, rows, cells, xf);
}

int16_t TOLVENAR_CALL CreateVariantSheet(uint32_t* buffer, uint32_t* size, int16_t cols, int16_t rows,
                                         const VARIANT* const* cells, const uint16_t* xf) {
  return tolvenar::CreateVariantSheet(buffer, size, cols, rows, cells, xf);
}

int16_t TOLVENAR_CALL AppendVariantSheet1(uint32_t* buffer, uint32_t* size, const char* name) {
  return tolvenar::AppendVariantSheet1(buffer, size, name);
}

int16_t TOLVENAR_CALL CreateVariantSheet1(uint32_t* buffer, uint32_t* size, uint32_t* position) {
  return tolvenar::CreateVariantSheet1(buffer, size, position);
}

int16_t TOLVENAR_CALL CreateVariantSheet1A(uint32_t* buffer, uint32_t* size, int32_t cols, int32_t rows,
                                           uint32_t* position) {
  return tolvenar::CreateVariantSheet1A(buffer, size, cols, rows, position);
}

int16_t TOLVENAR_CALL CreateVariantSheet2(uint32_t* buffer, uint32_t* size, uint32_t* position, int16_t cols,
                                          int16_t rows, const VARIANT* cells, const uint16_t* xf) {
  return tolvenar::CreateVariantSheet2(buffer, size, position, cols, rows, cells, xf);
}

int16_t TOLVENAR_CALL CreateVariantSheet2A(uint32_t* buffer, uint32_t* size, uint32_t* position,
                                           uint16_t firstCol, uint16_t firstRow, uint16_t cols, uint16_t rows,
                                           const VARIANT* cells, const uint16_t* xf) {
  return tolvenar::CreateVariantSheet2A(buffer, size, position, firstCol, firstRow, cols, rows, cells, xf);
}

int16_t TOLVENAR_CALL CreateVariantSheet3(uint32_t* buffer, uint32_t* size, uint32_t* position) {
  return tolvenar::CreateVariantSheet3(buffer, size, position);
}

int16_t TOLVENAR_CALL AppendVariantSheet2(uint32_t* buffer, uint32_t* size, int16_t sheet) {
  return tolvenar::AppendVariantSheet2(buffer, size, sheet);
}

int16_t TOLVENAR_CALL AddZemblerRecord(uint32_t* buffer, uint32_t* size) {
  return tolvenar::AddZemblerRecord(buffer, size);
}

}  // extern "C"
