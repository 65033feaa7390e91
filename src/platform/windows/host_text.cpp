// A copy that may run on behind a host's text, on Windows: the system tells of each page whether it can be
// read.
#include "platform/host_text.h"

#include <windows.h>

#include <algorithm>

namespace tolvenar::platform {

namespace {

constexpr uint32_t kPage = 4096;

}  // namespace

void CopyHostBytes(uint8_t* to, const void* from, uint32_t known, uint32_t count) {
  const uint8_t* bytes = static_cast<const uint8_t*>(from);
  uint32_t copied = std::min(known, count);
  std::copy_n(bytes, copied, to);
  while (copied < count) {
    const uint32_t to_page_end =
        kPage - static_cast<uint32_t>(reinterpret_cast<uintptr_t>(bytes + copied) % kPage);
    const uint32_t piece = std::min(to_page_end, count - copied);
    if (IsBadReadPtr(bytes + copied, piece)) {
      std::fill_n(to + copied, piece, uint8_t{0});
    } else {
      std::copy_n(bytes + copied, piece, to + copied);
    }
    copied += piece;
  }
}

}  // namespace tolvenar::platform
