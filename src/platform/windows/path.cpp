// Paths on Windows. Storage calls get a path widened byte by byte with sign extension, so a byte from 0x80 up
// names a unit from 0xFF80 up. The test for existence widens alike and not by a code page, on purpose: it
// then speaks of the very file that the storage calls open and create.
#include "platform/path.h"

#include <windows.h>

#include <io.h>

#include <cstring>
#include <memory>
#include <new>

namespace tolvenar::platform {

namespace {

constexpr int kExistenceOnly = 0;

wchar_t Widen(char byte) {
  return static_cast<wchar_t>(static_cast<int16_t>(static_cast<int8_t>(byte)));
}

}  // namespace

bool PathExists(const char* path) {
  if (path == nullptr) return false;
  const size_t length = std::strlen(path);
  std::unique_ptr<wchar_t[]> wide(new (std::nothrow) wchar_t[length + 1]);
  if (!wide) return false;
  for (size_t i = 0; i <= length; ++i) wide[i] = Widen(path[i]);
  return _waccess(wide.get(), kExistenceOnly) == 0;
}

bool IsReadable(const void* address, uint32_t count) {
  return address != nullptr && !IsBadReadPtr(address, count);
}

}  // namespace tolvenar::platform
