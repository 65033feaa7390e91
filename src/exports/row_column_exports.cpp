// Exports of rows and columns: forwards, and nothing but forwards.
#include "edit/row_column_edit.h"
#include "tolvenar/tolvenar.h"

extern "C" {

int16_t TOLVENAR_CALL XLAddRow(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet, int16_t row) {
  return tolvenar::XLAddRow(buffer, table, size, sheet, row);
}

int16_t TOLVENAR_CALL XLAddCol(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                               int16_t column) {
  return tolvenar::XLAddCol(buffer, table, size, sheet, column);
}

int16_t TOLVENAR_CALL XLInsertRow(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                  int16_t row) {
  return tolvenar::XLInsertRow(buffer, table, size, sheet, row);
}

int16_t TOLVENAR_CALL XLInsertCol(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                  int16_t column) {
  return tolvenar::XLInsertCol(buffer, table, size, sheet, column);
}

int16_t TOLVENAR_CALL XLDeleteRow(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                  int16_t row) {
  return tolvenar::XLDeleteRow(buffer, table, size, sheet, row);
}

int16_t TOLVENAR_CALL XLDeleteCol(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                  int16_t column) {
  return tolvenar::XLDeleteCol(buffer, table, size, sheet, column);
}

}  // extern "C"
