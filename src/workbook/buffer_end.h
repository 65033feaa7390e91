// The BUFEND that takes the last 4 bytes of a RecordBuffer that was just read, saved or refreshed: F8 FE 00
// 00.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"

namespace tolvenar {

// Writes the BUFEND at size - 4 of `buffer` (`size` bytes).
inline void PutBufEnd(uint32_t buffer, uint32_t size) {
  PutPrivateHeader(OpenBlock(buffer), size - kBufEndSize, kLowBufEnd, 0);
}

}  // namespace tolvenar
