// Exports of cell editing: forwards, and nothing but forwards.
#include "edit/cell_change.h"
#include "edit/change_format.h"
#include "tolvenar/tolvenar.h"

extern "C" {

int16_t TOLVENAR_CALL XLChangeCellValue(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                        int16_t row, int16_t column, const VARIANT* value) {
  return tolvenar::XLChangeCellValue(buffer, table, size, sheet, row, column, value);
}

int16_t TOLVENAR_CALL XLChangeCellXF(uint32_t* buffer, uint32_t table, uint32_t* size, int16_t sheet,
                                     int16_t row, int16_t column, uint16_t xf) {
  return tolvenar::XLChangeCellXF(buffer, table, size, sheet, row, column, xf);
}

uint32_t TOLVENAR_CALL ChangeFormat(uint32_t buffer, uint32_t table, int16_t sheet, const int16_t* matrix,
                                    int32_t stride) {
  return tolvenar::ChangeFormat(buffer, table, sheet, matrix, stride);
}

}  // extern "C"
