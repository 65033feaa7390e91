// Exports of the memory pool: forwards, and nothing but forwards.
#include "foundation/memory_pool.h"
#include "tolvenar/tolvenar.h"

extern "C" {

uint32_t TOLVENAR_CALL MEMORYALLOC(int32_t size) {
  return tolvenar::MEMORYALLOC(size);
}

uint32_t TOLVENAR_CALL MEMORYREALLOC(uint32_t handle, int32_t newSize) {
  return tolvenar::MEMORYREALLOC(handle, newSize);
}

int32_t TOLVENAR_CALL MEMORYFREE(uint32_t* handle) {
  return tolvenar::MEMORYFREE(handle);
}

int32_t TOLVENAR_CALL MEMORYREMOVE(uint32_t* handle) {
  return tolvenar::MEMORYREMOVE(handle);
}

int32_t TOLVENAR_CALL MEMORYISHANDLE(uint32_t handle) {
  return tolvenar::MEMORYISHANDLE(handle);
}

void TOLVENAR_CALL MEMORYFREEALL() {
  tolvenar::MEMORYFREEALL();
}

uint32_t TOLVENAR_CALL MEMORYHANDLES(uint32_t* bytesInUse, uint32_t ignored) {
  return tolvenar::MEMORYHANDLES(bytesInUse, ignored);
}

uint32_t TOLVENAR_CALL MEMORYSIZE(uint32_t handle) {
  return tolvenar::MEMORYSIZE(handle);
}

uint32_t TOLVENAR_CALL MEMORYALLOCSIZE(uint32_t handle) {
  return tolvenar::MEMORYALLOCSIZE(handle);
}

int32_t TOLVENAR_CALL MEMORYSET(uint32_t* handle, int32_t count) {
  return tolvenar::MEMORYSET(handle, count);
}

int32_t TOLVENAR_CALL MEMORYSET1(uint32_t* handle, int32_t count, uint8_t value) {
  return tolvenar::MEMORYSET1(handle, count, value);
}

uint32_t TOLVENAR_CALL MEMORYGET(uint32_t* handle, int32_t size, int32_t index) {
  return tolvenar::MEMORYGET(handle, size, index);
}

}  // extern "C"
