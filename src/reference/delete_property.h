// Deleting items out of a graph by number: a table of record types, 1 to 24, in the order of the types.
#pragma once

#include <cstdint>

namespace tolvenar {

// Turns the first record of `item`, or with item 0 every record of any item, into SLACK. Items of sets (SETINT, SETLONG, SETTEXT) must have
// `index`, with item 0 as well; for the others it plays no part. Flag vectors, links to tables, text references and runs have no number and
// stay. A RESUME counts as GRAPHPROPS (item 24, and 0), on purpose: the walk then goes on at the place behind it.
// The records in front of the graph's head are tested too, on purpose; a directory that points right has none.
// Result, in this order: 0, also when there is no such record or the number is above 24; -1 no buffer; -997 no such graph in the directory;
// -2 its head was not met, though a record in front of it may be gone.
int16_t XLRDeleteProperty(uint32_t buffer, uint16_t graph, uint16_t item, uint16_t index);

}  // namespace tolvenar
