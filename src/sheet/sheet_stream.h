// SheetStream: a workbook's buffer while a sheet is added behind its end. Records go in one by one, each made
// by a builder and consumed by the append.
//
// Invariants: (1) `size` is nominal: it grows by 32767 with each growth of the buffer, whatever was written;
// `at` is the true end. (2) After a failed append the buffer has been released and `buffer` is 0.
#pragma once

#include <cstdint>

namespace tolvenar {

struct SheetStream {
  uint32_t buffer;
  uint32_t size;
  uint32_t at;
};

// Appends a record, of `size` bytes, and releases it. A record of 0 leaves nothing, on purpose: it is one
// that the generation does not serve, that the pool refused, or a cell without text. False when the append
// failed.
bool AppendRecord(SheetStream* stream, uint32_t record, uint32_t size);

// Appends the default record of a key.
bool AppendDefault(SheetStream* stream, int16_t key, uint32_t variant = 0);

// Appends a BUFEND whose type has the high byte `high`; false when the append failed.
bool AppendBufEnd(SheetStream* stream, uint8_t high);

// Where an argument by reference is read and written: in the caller's variable, or, for a null pointer, in
// one that holds 0.
inline uint32_t* OrZero(uint32_t* variable, uint32_t* zero) {
  return variable != nullptr ? variable : zero;
}

}  // namespace tolvenar
