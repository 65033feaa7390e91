// A copy that may run on behind a host's text, off Windows. Whether a page can be read is asked of the system
// by letting it write a byte from there into a pipe: it answers, where a look would fault.
#include "platform/host_text.h"

#include <unistd.h>

#include <algorithm>

namespace tolvenar::platform {

namespace {

bool CanRead(const uint8_t* address) {
  int ends[2];
  if (pipe(ends) != 0) return false;
  const bool can = write(ends[1], address, 1) == 1;
  close(ends[0]);
  close(ends[1]);
  return can;
}

// How far into its page an address lies.
uint32_t PlaceInPage(const uint8_t* address, uint32_t page) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address) % page);
}

// Byte by byte and through a volatile pointer, so that it stays a loop of its own: the bytes behind a text
// are the host's promise, of which a sanitizer can't know.
__attribute__((no_sanitize("address"))) void CopyPromised(uint8_t* to, const volatile uint8_t* from,
                                                          uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) to[i] = from[i];
}

}  // namespace

void CopyHostBytes(uint8_t* to, const void* from, uint32_t known, uint32_t count) {
  const uint8_t* bytes = static_cast<const uint8_t*>(from);
  uint32_t copied = std::min(known, count);
  std::copy_n(bytes, copied, to);
  const uint32_t page = static_cast<uint32_t>(sysconf(_SC_PAGESIZE));
  bool readable = copied != 0;  // a page with a known byte can be read to its end
  while (copied < count) {
    const uint32_t place = PlaceInPage(bytes + copied, page);
    const uint32_t piece = std::min(page - place, count - copied);
    if (place == 0) readable = CanRead(bytes + copied);
    if (readable) {
      CopyPromised(to + copied, bytes + copied, piece);
    } else {
      std::fill_n(to + copied, piece, uint8_t{0});
    }
    copied += piece;
  }
}

}  // namespace tolvenar::platform
