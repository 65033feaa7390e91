// Graphs: made, deleted, and bound to tables. A graph names one main table in its head and further tables in GRAPHTABLE records, by the
// number of the link. Whether a table exists is not looked at.
#pragma once

#include <cstdint>

namespace tolvenar {

constexpr int16_t kGraphNotMet = -5;  // XLRUpdateGraph

// Makes a graph with the lowest free id. Once all 65535 are taken its id is 0.
// RESULT: the id, which above 32767 reads as a negative number; or -1, -999, -2, -4, -998 as CreateRefObject tells.
int16_t XLRCreateGraph(uint32_t* buffer, uint32_t* size, uint16_t table);

// Retires the graph's entry and turns its records into SLACK. The tables stay.
// RESULT: 0. -1 no buffer; -997 no such graph; -2 its head was not met: the entry is gone.
int16_t XLRDeleteGraph(uint32_t buffer, uint16_t graph);

// Names another main table, in place. RESULT: 0. -1 no buffer; -997 no such graph; -5 its head was not met.
int16_t XLRUpdateGraph(uint32_t buffer, uint16_t graph, uint16_t table);

// Binds link `link` to a table, in place of what it was bound to; a table of 0 removes the link. A record holds the low 8 bits of the number
// and is found by the whole of it, on purpose: a link above 255 is added each time.
// RESULT: 0. -1 no buffer; -997 no such graph; -2 its head was not met; -4 no pool block: nothing has changed; -5 the patch failed: a
// buffer that can't grow has been freed and *buffer is 0.
int16_t XLRUpdateGraphTable(uint32_t* buffer, uint32_t* size, uint16_t graph, uint16_t table, uint16_t link);

// The table of a link, the main one for link 0. Only the end of the directory ends the search: a link that the graph doesn't have is
// answered by the first later graph that has one of that number, on purpose.
// RESULT: the table's id, 0 when there is no such link. -1 no buffer; -997 no such graph; -2 its head was not met.
int16_t XLRTableByGraph(uint32_t buffer, uint16_t graph, uint16_t link);

}  // namespace tolvenar
