// Little-endian fields of a file's bytes, read and written through memcpy. Plain pointers, trusted: the
// callers hand in buffers of a fixed, known size (a header, a directory entry, a sector).
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tolvenar::platform {

static_assert(std::endian::native == std::endian::little, "fields are copied as they stand");

inline uint16_t FileU16(const uint8_t* p) {
  uint16_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

inline uint32_t FileU32(const uint8_t* p) {
  uint32_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

inline uint64_t FileU64(const uint8_t* p) {
  uint64_t value;
  std::memcpy(&value, p, sizeof value);
  return value;
}

inline void PutFileU16(uint8_t* p, uint16_t value) {
  std::memcpy(p, &value, sizeof value);
}

inline void PutFileU32(uint8_t* p, uint32_t value) {
  std::memcpy(p, &value, sizeof value);
}

inline void PutFileU64(uint8_t* p, uint64_t value) {
  std::memcpy(p, &value, sizeof value);
}

}  // namespace tolvenar::platform
