// Paths off Windows.
#include "platform/path.h"

#include <unistd.h>

namespace tolvenar::platform {

bool PathExists(const char* path) {
  return path != nullptr && access(path, F_OK) == 0;
}

bool IsReadable(const void* address, uint32_t) {
  return address != nullptr;
}

}  // namespace tolvenar::platform
