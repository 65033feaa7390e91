// The small record builders: one record each, from arguments, in the generation of BiffVersion at the moment
// of the call. (Default records: default_records.h. Labels: label_record.h. XFs: xf_record.h.)
//
//   RECORD            BYTES FROM THE HEADER ON (integers little-endian)                             SIZE
//   DEFAULTROWHEIGHT  25 02 04 00, flags u16 0, height u16                                             8
//   DEFCOLWIDTH       55 00 02 00, width u16                                                           6
//   DIMENSIONS        00 02 0E 00, then                                                               18
//     BIFF5           first row, last row + 1, first column, last column + 1, 0: u16; 4 zero bytes
//     BIFF8           first row, last row + 1: u16 in a u32; first column, last column + 1, 0: u16
//   NUMBER            03 02 0E 00, row, column, XF: u16, value f64                                    18
//   BLANK             01 02 06 00, row, column, XF: u16                                               10
//   BOF, BIFF5        09 08 08 00 00 05 t 00 6C 09 C9 07                                              12
//   BOF, BIFF8        09 08 10 00 00 06 t 00 D3 10 CC 07 41 00 00 00 06 00 00 00                      20
//   BOUNDSHEET        85 00, n + 8 u16, BOF offset u32, u16 0, n u8, n bytes of name, a byte to spare n + 12
//   COLINFO           7D 00 0B 00, first column, last column, width: u16, 00 00 00 02 00              15
//   ROW               08 02 10 00, row, first column, last column + 1, height: u16,                   20
//                     0, 0x00F3, 0x0140, 0x021D: u16
//
// Every builder takes a pool block of the record's size, which is the caller's, and stores that size in
// *size, also when the pool refuses and the result is 0. A caller hands the block on to AppendBytes or
// PatchRecord at once: records in the making hold one of the nine slots each.
#pragma once

#include <cstdint>

namespace tolvenar {

// Substream types of a BOF.
constexpr uint8_t kBofGlobals = 5;
constexpr uint8_t kBofWorksheet = 16;

uint32_t MakeDefaultRowHeightRecord(uint32_t* size, uint16_t height);
uint32_t MakeDefColWidthRecord(uint32_t* size, uint16_t width);

// The last row and column are stored plus one and cut to 16 bits, so that 65535 becomes 0. While BiffVersion
// is neither 5 nor 6 no field is written at all, on purpose.
uint32_t MakeDimensionsRecord(uint32_t* size, uint16_t first_row, uint32_t last_row, uint16_t first_column,
                              uint32_t last_column);

// Its twin of the staged sheets, on purpose different in one test: every generation but BIFF8 gets BIFF5's
// fields.
uint32_t MakeStagedDimensionsRecord(uint32_t* size, uint16_t first_row, uint32_t last_row,
                                    uint16_t first_column, uint32_t last_column);

// The value is a 32-bit float on purpose: a number that enters a workbook this way has single precision.
uint32_t MakeNumberRecord(uint32_t* size, uint16_t row, uint16_t column, uint16_t xf, float value);
uint32_t MakeBlankRecord(uint32_t* size, uint16_t row, uint16_t column, uint16_t xf);

// BIFF8's form while BiffVersion is 6, else BIFF5's.
uint32_t MakeBofRecord(uint32_t* size, uint8_t substream);

// Both generations get the same layout, on purpose. `name` is 8-bit, zero-terminated or null (no name); its
// length counts in 16 bits, and in the record's own field in 8. A name too long for a record whose size is a
// positive 16-bit value is cut to fit.
uint32_t MakeBoundSheetRecord(uint32_t* size, uint32_t bof, const char* name);

// Always gives 0, on purpose, though the block is made and filled: it stays live until MEMORYFREEALL, and the
// caller takes the 0 for a failure.
uint32_t MakeColInfoRecord(uint32_t* size, uint16_t first_column, uint16_t last_column, uint16_t width);

uint32_t MakeRowRecord(uint32_t* size, uint16_t row, uint16_t first_column, uint32_t last_column,
                       uint16_t height);

// Refill the fields of a record that MakeNumberRecord or MakeBlankRecord made; the header stays. `record` is
// its first byte. Nothing is allocated: a sheet of many cells costs a copy a cell.
void FillNumberRecord(uint8_t* record, uint16_t row, uint16_t column, uint16_t xf, float value);
void FillBlankRecord(uint8_t* record, uint16_t row, uint16_t column, uint16_t xf);

}  // namespace tolvenar
