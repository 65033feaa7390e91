// Little-endian fields of a byte buffer, read and written through memcpy. These take plain pointers and trust them: they are for
// records under construction, tables, and the headers and sectors of a file. A stream in a pool block is read through the gate of
// record_stream.h.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tolvenar {

static_assert(std::endian::native == std::endian::little, "fields are copied as they stand");

inline uint16_t ReadU16(const uint8_t* p) {
  uint16_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

inline int16_t ReadI16(const uint8_t* p) {
  return static_cast<int16_t>(ReadU16(p));
}

inline uint32_t ReadU32(const uint8_t* p) {
  uint32_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

inline uint64_t ReadU64(const uint8_t* p) {
  uint64_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

inline double ReadF64(const uint8_t* p) {
  return std::bit_cast<double>(ReadU64(p));
}

inline void WriteU16(uint8_t* p, uint16_t value) {
  std::memcpy(p, &value, sizeof value);
}

inline void WriteU32(uint8_t* p, uint32_t value) {
  std::memcpy(p, &value, sizeof value);
}

inline void WriteU64(uint8_t* p, uint64_t value) {
  std::memcpy(p, &value, sizeof value);
}

inline void WriteF64(uint8_t* p, double value) {
  std::memcpy(p, &value, sizeof value);
}

}  // namespace tolvenar
