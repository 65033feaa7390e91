// Tables: made, deleted, and the text and the value that each cell can have. A cell is called by its four 1-based coordinates, of which 16
// bits count, signed; its records name it by its linear index plus 1.
//
// Invariant: text and value of a cell are two records of one mechanism; they differ in the type, and in the length that stands in front of
// a text.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

constexpr int16_t kTableNoRecord = -4;
constexpr int16_t kTableOutside = -100;
constexpr int16_t kTableCellEmpty = -200;

// Coordinates as a call gives them.
struct TableCoordinates {
  uint32_t c1;
  uint32_t c2;
  uint32_t c3;
  uint32_t c4;
};

// Makes a table with the lowest free id; the sizes are not looked at. Once all 65535 ids are taken its id is 0.
// RESULT: the id, which above 32767 reads as a negative number. -1 no buffer; -999 no valid directory; -2 no pool block; -4 a patch failed: a
// buffer that can't grow has been freed and *buffer is 0; -998 the new REFMARK was not met again. At -2 and -998 the entry and the mark may
// already be in the buffer.
int16_t XLRCreateTable(uint32_t* buffer, uint32_t* size, uint16_t d1, uint16_t d2, uint16_t d3, uint16_t d4);

// Retires the table's entry and turns its records into SLACK.
// RESULT: 0. -1 no buffer; -997 no such table; -2 its head was not met: the entry is gone.
int16_t XLRDeleteTable(uint32_t buffer, uint16_t table);

// Stores a cell's text (null: an empty one), its value (8 bytes, low half first), in the place of an old one or last in the table. With a
// negative id it deletes that of table -id; a cell that has none gets the new one all the same, on purpose.
// RESULT: 0. -1 no buffer; -997 no such table; -2 its head was not met; -100 a coordinate above its dimension, and nothing below it is
// tested, on purpose: nothing has changed. -4 no pool block for the record, also for a text that a record can't hold, of more than 32757
// bytes: nothing has changed. -6, -5 the patch failed, in the place of the old one, at the end: a buffer that can't grow has been freed and
// *buffer is 0. No block stays taken.
int16_t XLRTextToTable(uint32_t* buffer, uint32_t* size, int16_t table, const TableCoordinates& cell,
                       const char* text);
int16_t XLRValueToTable(uint32_t* buffer, uint32_t* size, int16_t table, const TableCoordinates& cell,
                        uint32_t low, uint32_t high);

// Gives a cell's text, which is the caller's, its value (8 bytes). Of several the first counts.
// RESULT: 0. -1 no buffer; -997 no such table; -2 its head was not met; -100 a coordinate above its dimension; -200 the cell has none. The
// variable changes with 0 only. A damaged length gives what lies inside the buffer's block; a negative one an empty text.
int16_t XLRGetTableText(uint32_t buffer, uint16_t table, BSTR* text, const TableCoordinates& cell);
int16_t XLRGetTableValue(uint32_t buffer, uint16_t table, void* value, const TableCoordinates& cell);

}  // namespace tolvenar
