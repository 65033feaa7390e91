// The border between code that allocates with the standard library and calls that throw nothing.
#pragma once

#include <new>
#include <stdexcept>

#include "platform/storage.h"

namespace tolvenar::platform {

// The result of `body`, or kStgInsufficientMemory when it ran out of memory.
template <typename Body>
HRESULT Guarded(const Body& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return kStgInsufficientMemory;
  } catch (const std::length_error&) {
    return kStgInsufficientMemory;
  }
}

}  // namespace tolvenar::platform
