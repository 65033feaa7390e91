// Cell values: the values of a worksheet's cells, put into a two-dimensional array of the caller's.
//
//   RECORD    LOW   FIELDS FROM 10 ON                    WHAT IS PUT                            SHAPE
//   BOOLERR   0x05  value u8, error flag u8              "ERROR", "FALSE" or " TRUE"            VARIANT
//   FORMULA   0x06  8 result bytes                       its number or its text                 VARIANT
//   LABEL     0x04  cch u16; BIFF8: flags u8; cch bytes  PackedBstr                             BSTR
//   LABELSST  0xFD  index, low 16 bits, signed           ByteBstr of the shared string          BSTR
//   MULRK     0xBD  RKs of a run of cells                ByteBstr of each number, six decimals  BSTR
//   NUMBER    0x03  f64                                  ByteBstr of the number, six decimals   BSTR
//   RK        0x7E  RK                                   ByteBstr of the number, six decimals   BSTR
//   RSTRING   0xD6  cch u16, cch bytes                   ByteBstr                               VARIANT
//
// Records are told by the plain test, and looked at in the sheet itself only, not in substreams embedded
// in it. The result is one walk: each record writes the element that it names, in whatever order they
// come; cells without a record, or with BLANK or MULBLANK, leave theirs as the caller set it.
// The mix of shapes is the interface, on purpose: a caller's array must serve those of the records in its
// sheets.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"
#include "tolvenar/automation.h"

namespace tolvenar {

// Puts the values of sheet `sheet` (1-based) into *cells, first index the row, second the column, both
// 1-based.
// RESULT as CheckCellRead; with anything but 0 nothing has been put. With 0 some cells may have been
// passed over: those whose element the array refuses, and those whose text found no pool block.
// A BSTR that is put in a VARIANT is released after the put; the array holds its own copy.
// A formula whose result is no number, no text, no boolean and no error (the empty result is one) puts
// nothing: no text is defined for it, and the element as the caller set it is as harmless as any.
int16_t XLGetVariantData(SAFEARRAY** cells, uint32_t buffer, uint32_t table, int16_t sheet);

// Takes access to the array's data and gives it straight back. `unused` is not read. Returns 0, whatever
// the array says.
int16_t XLSGetVariantData(uint32_t unused, SAFEARRAY** cells);

// The number that an RK word stands for: bit 0x2 set, its upper 30 bits as a signed integer, else as the
// upper 30 bits of a double; times 0.01 when bit 0x1 is set.
double RkNumber(uint32_t rk);

}  // namespace tolvenar
