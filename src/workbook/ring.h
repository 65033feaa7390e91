// Rings: a walk that comes by an offset again goes round for ever.
//
//   offset 0 --> ... --> e --> ... --> the end of the main stream
//                        '<---------------------'
//
// That is what becomes of a buffer that a failed save has left without its BUFEND and that is then patched:
// the end of the main stream runs on into the first patch area, and the RESUME there leads back. Every record
// of the stream has been met once when the ring closes.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"

namespace tolvenar {

// How many records the walk from `from` meets before it comes to one of them again; 0 when it doesn't, or not
// within as many steps as the block has bytes. Costs a few walks.
uint32_t RecordsBeforeRing(const Block& block, uint32_t from);

}  // namespace tolvenar
