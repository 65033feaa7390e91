// Streams that are made to cost: each as large as is asked for, and well-formed enough to be opened.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/stream_builder.h"

namespace tolvenar::testing {

struct HostileStream {
  Bytes bytes;
  // A u32 that is put into the stream when its sheets have been located: with it, the sheet doesn't end.
  uint32_t late_at = 0;
  uint32_t late_value = 0;
};

struct HostileShape {
  const char* name;
  HostileStream (*make)(size_t bytes);
};

// Workbooks of one sheet of 100 rows and 10 columns, or of very many sheets.
std::vector<HostileShape> HostileWorkbooks();

// A reference with as many tables as there are ids, and then some; `bytes` of it.
Bytes HostileReference(size_t bytes);

// A directory of a file of references, with ids from the highest down.
Bytes HostileContents(size_t bytes);

}  // namespace tolvenar::testing
