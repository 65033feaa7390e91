// Paths: whether one exists, and how the units of a widened name go back to what the system takes.
#pragma once

#include <cstdint>

namespace tolvenar::platform {

// True when `path` (8-bit, zero-terminated) names something that exists; rights to it are not asked for. A null path does not exist.
bool PathExists(const char* path);

// True when the `count` bytes at `address` can be read. Off Windows only null is known to be unreadable.
bool IsReadable(const void* address, uint32_t count);

}  // namespace tolvenar::platform
