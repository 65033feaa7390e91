// Exports of workbook files: forwards, and nothing but forwards.
#include "tolvenar/tolvenar.h"
#include "workbook/open_workbook.h"
#include "workbook/refresh.h"
#include "workbook/save_workbook.h"
#include "workbook/sheet_table.h"

extern "C" {

int16_t TOLVENAR_CALL XLOpenFile(const char* path, uint32_t* buffer, uint32_t* size) {
  return tolvenar::XLOpenFile(path, buffer, size);
}

int16_t TOLVENAR_CALL XLLocateSheets(uint32_t buffer, uint32_t* table, uint32_t size) {
  return tolvenar::XLLocateSheets(buffer, table, size);
}

uint32_t TOLVENAR_CALL XLFreeHandle(uint32_t* handle) {
  return tolvenar::XLFreeHandle(handle);
}

int16_t TOLVENAR_CALL XLSaveFile(const char* path, uint32_t* buffer, uint32_t* table, uint32_t* size) {
  return tolvenar::XLSaveFile(path, buffer, table, size);
}

int16_t TOLVENAR_CALL DebugSaveFile(const char* path, int32_t count) {
  return tolvenar::DebugSaveFile(path, count);
}

int16_t TOLVENAR_CALL XLRefreshHandles(uint32_t* buffer, uint32_t table, uint32_t* size) {
  return tolvenar::XLRefreshHandles(buffer, table, size);
}

int16_t TOLVENAR_CALL XLDeleteDBCells(uint32_t buffer, uint32_t size) {
  return tolvenar::XLDeleteDBCells(buffer, size);
}

}  // extern "C"
