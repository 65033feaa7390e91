// Numbered slots of a graph, one record each: texts 1 to 7, doubles 1 to 3, fonts 1 to 5, and the texts of sets 1 to 4 by index.
//
//   GRAPHTEXT    header, t i16, t bytes            GRAPHDOUBLE   header, 8 bytes
//   SETTEXT      header, index u16, t i16, t bytes  GRAPHFONT     header, 4 x u16
//
// All of them are a type by slot number, up to 8 bytes of fields, and a text behind them: there is one saver and one getter. Nothing is
// done with a value but to keep it.
//
// Invariants: (1) A saver replaces the last record of its slot, or appends one. (2) A slot number that there is not gives a record of a type
// that nothing reads, on purpose; a getter finds nothing in it.
//
// Results of the savers, in this order: 0; -1 no buffer; -997 no such graph in the directory; -2 its head was not met; -4 no pool block for
// the record, or the text is longer than a record of 32767 bytes can hold: nothing has changed; -5, -6 the patch at the end of the graph, in
// place of the old record failed: the buffer is released and *buffer is 0.
// Results of the getters: 0, also for an empty slot, which leaves what is given out as it was; -1; -997; -2.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Stores a text, 8-bit and zero-terminated; null is an empty one.
int16_t XLRSaveText(uint32_t* buffer, uint32_t* size, uint16_t graph, const char* text, uint16_t slot);

// Gives the text as a new BSTR, the caller's; what *out held is not released. A text whose stored length is negative comes out as null.
int16_t XLRGetText(uint32_t buffer, uint16_t graph, BSTR* out, uint16_t slot);

// Stores 8 bytes, given as two halves.
int16_t XLRSaveDouble(uint32_t* buffer, uint32_t* size, uint16_t graph, uint32_t low, uint32_t high,
                      int16_t slot);

// Gives them at `out`, which has room for 8 bytes.
int16_t XLRGetDouble(uint32_t buffer, uint16_t graph, void* out, uint16_t slot);

// Stores and gives four values. A null variable is passed over.
int16_t XLRSaveFont(uint32_t* buffer, uint32_t* size, uint16_t graph, uint16_t first, uint16_t second,
                    uint16_t third, uint16_t fourth, uint16_t slot);
int16_t XLRGetFont(uint32_t buffer, uint16_t graph, uint16_t* first, uint16_t* second, uint16_t* third,
                   uint16_t* fourth, uint16_t slot);

// Stores and gives the text of item `index` of a set. A text reference of that item stays.
int16_t XLRSaveSetText(uint32_t* buffer, uint32_t* size, uint16_t graph, uint16_t index, const char* text,
                       uint16_t set);
int16_t XLRGetSetText(uint32_t buffer, uint16_t graph, uint16_t index, BSTR* out, uint16_t set);

}  // namespace tolvenar
