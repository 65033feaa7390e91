// Exports of reference files and bindings: forwards, and nothing but forwards.
#include "reference/reference_binding.h"
#include "reference/reference_file.h"
#include "tolvenar/tolvenar.h"

extern "C" {

int32_t TOLVENAR_CALL XLCreateReference(const char* path) {
  return tolvenar::XLCreateReference(path);
}

int16_t TOLVENAR_CALL XLDeleteReference(const char* path, uint32_t id) {
  return tolvenar::XLDeleteReference(path, id);
}

int16_t TOLVENAR_CALL XLReadReference(const char* path, uint32_t* buffer, uint32_t* size, int32_t id) {
  return tolvenar::XLReadReference(path, buffer, size, id);
}

int16_t TOLVENAR_CALL XLSaveReference(const char* path, uint32_t* buffer, uint32_t* size, int32_t id) {
  return tolvenar::XLSaveReference(path, buffer, size, id);
}

int16_t TOLVENAR_CALL XLInsertReference(uint32_t* buffer, uint32_t table, uint32_t* size, uint32_t id) {
  return tolvenar::XLInsertReference(buffer, table, size, id);
}

int16_t TOLVENAR_CALL XLUnbindReference(uint32_t buffer, uint32_t table) {
  return tolvenar::XLUnbindReference(buffer, table);
}

int32_t TOLVENAR_CALL XLGetReference(const char* path) {
  return tolvenar::XLGetReference(path);
}

int16_t TOLVENAR_CALL XLRefreshReference(uint32_t* buffer, uint32_t* size) {
  return tolvenar::XLRefreshReference(buffer, size);
}

int16_t TOLVENAR_CALL XLDestroyFString(uint32_t* handle) {
  return tolvenar::XLDestroyFString(handle);
}

}  // extern "C"
