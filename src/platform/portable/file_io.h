// Whole reads and writes on a descriptor, and the storage result that stands for a system error.
#pragma once

#include <cstdint>

#include "platform/storage.h"

namespace tolvenar::platform {

// The storage result for the system error `error`; `otherwise` for an error that has none of its own.
HRESULT ResultOfError(int error, HRESULT otherwise);

// Reads the `count` bytes at offset `at` of `file`. Returns how many were there: fewer at the end of the
// file, and after an error, when *failed becomes true.
uint64_t ReadAt(int file, uint64_t at, void* bytes, uint64_t count, bool* failed);

// Writes `count` bytes at offset `at` of `file`. S_OK, or the result of what stopped it.
HRESULT WriteAt(int file, uint64_t at, const void* bytes, uint64_t count);

// Closes *file, if it is open, and sets it to -1.
void CloseFile(int* file);

}  // namespace tolvenar::platform
