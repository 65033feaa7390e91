// CompactReference: turns a patched ReferenceBuffer back into a plain stream.
//
//   kept                      REFHEADER, objects, the live REFMARK, REFDIR, REFENTRYs, REFEND, and any record that is not known
//   dropped                   DETOUR, RESUME, SLACK, BUFEND, and every REFMARK but the live one
//   renewed                   the REFHEADER's field, and the entries of tables and graphs. Those of chart edits keep their offset, on purpose
//
// Invariant: the stream is the same whether it is compacted once or twice.
#pragma once

#include <cstdint>

namespace tolvenar {

constexpr int16_t kReferenceCompacted = 0;
constexpr int16_t kReferenceNoBlock = 4;
constexpr int16_t kReferenceNotCut = 6;

// Replaces *buffer (*size bytes) by its compact form. The last 4 bytes are zero, the place of a BUFEND; a buffer that still has them so is
// taken to end there.
// RESULT: 0: the old block is freed, *buffer and *size are the new ones. 4 no pool block for the copy, nothing has changed. 6 the copy
// can't be cut to its size; also a walk that goes round, and a buffer with nothing in it: the copy is freed and the old buffer stays, though
// its entries may have been renewed.
int16_t CompactReference(uint32_t* buffer, uint32_t* size);

}  // namespace tolvenar
