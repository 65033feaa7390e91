// Bytes of a host that stand behind a text it handed over: a copy that takes more of them than the text is
// known to have.
//
//   known bytes ........ 0 | bytes that the host has promised | a page that may not be there
//
// Invariants: (1) The copy never faults. (2) It changes nothing but its target.
#pragma once

#include <cstdint>

namespace tolvenar::platform {

// Copies `count` bytes from `from`, of which the first `known` are certainly readable. Of those behind them,
// the ones that lie on pages that can't be read come out as zeros.
void CopyHostBytes(uint8_t* to, const void* from, uint32_t known, uint32_t count);

}  // namespace tolvenar::platform
