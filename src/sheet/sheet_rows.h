// ROW records of a staged sheet: a run of ROW records copied from one template.
#pragma once

#include <cstdint>

#include "sheet/sheet_stream.h"

namespace tolvenar {

// What MEMORYREALLOC is asked for when the nominal size has outgrown the buffer's capacity: the size and 4096
// more, or, on purpose, only what is missing and 4096 more.
enum class RowRoom { kWhole, kMissing };

// Appends a ROW of height 255 for each row from 0 to `rows` - 1, and one for row 0 whatever `rows` is. Adds
// `reserved_rows` x 20 plus the write offset to the nominal size, which already holds that offset: it
// overshoots, on purpose. False when the template can't be made, or the buffer can't grow: it is then
// released.
bool AppendRows(SheetStream* stream, int32_t columns, int32_t rows, int32_t reserved_rows, RowRoom room);

}  // namespace tolvenar
