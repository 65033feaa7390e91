// The three records of which a staged sheet's cells are made: refilled in place for every cell and copied
// behind the stream's end, so that a cell costs no allocation.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"
#include "sheet/sheet_stream.h"
#include "tolvenar/automation.h"

namespace tolvenar {

struct CellTemplates {
  uint32_t blank;  // pool blocks
  uint32_t number;
  uint32_t label;
  Block shell;       // the label's block, its extent the shell's size
  int32_t capacity;  // of the stream's buffer, kept up by the appends
  Block room;        // the stream's buffer, opened anew whenever an append may have moved it
};

// Makes the templates, at most one pool block each. False when one is missing: all are released, and so is
// the stream's buffer.
bool MakeTemplates(CellTemplates* templates, SheetStream* stream);

void ReleaseTemplates(CellTemplates* templates);

// Appends the cell that the VARIANT makes at (row, column); a VT_NULL makes a blank, a null text one blank of
// text. False when the append failed: the buffer is released, the templates stay.
bool AppendCell(CellTemplates* templates, SheetStream* stream, uint16_t row, uint16_t column, uint16_t xf,
                const VARIANT* value);

}  // namespace tolvenar
