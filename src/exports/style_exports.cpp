// Exports of the style tables and of the sizes of rows and columns: forwards, and nothing but forwards.
#include "query/format_catalogue.h"
#include "query/palette.h"
#include "query/row_column_sizes.h"
#include "tolvenar/tolvenar.h"

extern "C" {

uint16_t TOLVENAR_CALL XLGetNumFormatItems(uint32_t buffer, uint32_t table, int16_t kind) {
  return tolvenar::XLGetNumFormatItems(buffer, table, kind);
}

int16_t TOLVENAR_CALL XLGetFormatData(SAFEARRAY** items, uint32_t buffer, uint32_t table, int16_t kind) {
  return tolvenar::XLGetFormatData(items, buffer, table, kind);
}

int16_t TOLVENAR_CALL XLGetColorData(SAFEARRAY** colours, uint32_t buffer, uint32_t table) {
  return tolvenar::XLGetColorData(colours, buffer, table);
}

int16_t TOLVENAR_CALL XLGetStandardPalette(SAFEARRAY** colours) {
  return tolvenar::XLGetStandardPalette(colours);
}

int16_t TOLVENAR_CALL XLGetRowHeight(SAFEARRAY** heights, uint32_t buffer, uint32_t table, int16_t sheet) {
  return tolvenar::XLGetRowHeight(heights, buffer, table, sheet);
}

int16_t TOLVENAR_CALL XLGetColWidth(SAFEARRAY** widths, uint32_t buffer, uint32_t table, int16_t sheet) {
  return tolvenar::XLGetColWidth(widths, buffer, table, sheet);
}

double TOLVENAR_CALL XLGetMagnification(uint32_t buffer, uint32_t table, int16_t sheet) {
  return tolvenar::XLGetMagnification(buffer, table, sheet);
}

}  // extern "C"
