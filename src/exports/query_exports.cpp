// Exports of the sheet catalogue and of the cell data: forwards, and nothing but forwards.
#include "query/cell_formats.h"
#include "query/cell_values.h"
#include "query/record_list.h"
#include "query/shared_strings.h"
#include "query/sheet_catalogue.h"
#include "query/sheet_size.h"
#include "tolvenar/tolvenar.h"

extern "C" {

int16_t TOLVENAR_CALL XLGetList(uint32_t buffer, int32_t size, int32_t* count, SAFEARRAY** offsets,
                                SAFEARRAY** types, SAFEARRAY** images, SAFEARRAY** lengths) {
  return tolvenar::XLGetList(buffer, size, count, offsets, types, images, lengths);
}

int16_t TOLVENAR_CALL XLGetNumSheets(uint32_t table) {
  return tolvenar::XLGetNumSheets(table);
}

uint16_t TOLVENAR_CALL XLGetNumVers(uint32_t buffer, uint32_t table) {
  return tolvenar::XLGetNumVers(buffer, table);
}

int16_t TOLVENAR_CALL XLVersInt(int16_t version) {
  return tolvenar::XLVersInt(version);
}

int16_t TOLVENAR_CALL XLGetNameSheet(uint32_t buffer, uint32_t table, int16_t sheet, BSTR* name) {
  return tolvenar::XLGetNameSheet(buffer, table, sheet, name);
}

uint32_t TOLVENAR_CALL XLGetSheetParam(uint32_t buffer, uint32_t table, int16_t sheet, uint32_t unused1,
                                       uint32_t unused2, uint32_t unused3, uint32_t unused4) {
  return tolvenar::XLGetSheetParam(buffer, table, sheet, unused1, unused2, unused3, unused4);
}

int16_t TOLVENAR_CALL XLSheetsNameNum(uint32_t buffer, uint32_t table, uint32_t unused) {
  return tolvenar::XLSheetsNameNum(buffer, table, unused);
}

uint16_t TOLVENAR_CALL XLNumStrBucket(uint32_t buffer, uint32_t table) {
  return tolvenar::XLNumStrBucket(buffer, table);
}

int16_t TOLVENAR_CALL XLNumStrExt(uint32_t buffer, uint32_t table) {
  return tolvenar::XLNumStrExt(buffer, table);
}

void TOLVENAR_CDECL XLEXTLabel(uint32_t buffer, int32_t* index, int16_t* bucket, int32_t sstOffset,
                               SAFEARRAY** cells, int32_t recordOffset) {
  tolvenar::XLEXTLabel(buffer, index, bucket, sstOffset, cells, recordOffset);
}

int16_t TOLVENAR_CALL XLGetSheetSize(uint32_t buffer, uint32_t table, int16_t sheet, uint16_t* firstRow,
                                     uint16_t* lastRow, uint16_t* firstCol, uint16_t* lastCol) {
  return tolvenar::XLGetSheetSize(buffer, table, sheet, firstRow, lastRow, firstCol, lastCol);
}

int16_t TOLVENAR_CALL XLGetVariantData(SAFEARRAY** cells, uint32_t buffer, uint32_t table, int16_t sheet) {
  return tolvenar::XLGetVariantData(cells, buffer, table, sheet);
}

int16_t TOLVENAR_CDECL XLSGetVariantData(uint32_t unused, SAFEARRAY** cells) {
  return tolvenar::XLSGetVariantData(unused, cells);
}

int16_t TOLVENAR_CALL XLGetCellData(SAFEARRAY** cells, uint32_t buffer, uint32_t table, int16_t sheet) {
  return tolvenar::XLGetCellData(cells, buffer, table, sheet);
}

}  // extern "C"
