// Formula tokens: how long each is. This is all that the library knows of the token stream of a formula. There
// are two tables of sizes: one for the formulas of cells, and one for those of chart series.
//
//   A token                                  Class, bits 5 and 6 of an id from 0x20 up
//   OFFSET  SIZE  FIELD                      0x20  reference   0x24, 0x44 and 0x64 are the
//        0     1  id                         0x40  value       three forms of one token;
//        1        operands, by the table     0x60  array       its base is 0x24
//
// The layout is BIFF5's: row words of 16 bits with two flags in them, columns of 8 bits. A BIFF8 formula is
// walked with the same sizes and the same fields, on purpose: nothing here asks for the generation.
//
// Invariants: a token takes at least 1 byte; tokens are read through the gate, so that one that runs out of
// the block reads as zeros.
#pragma once

#include <cstdint>

#include "foundation/record_stream.h"

namespace tolvenar {

// Bases of the tokens that matter here.
constexpr uint8_t kPtgExp = 0x01;
constexpr uint8_t kPtgTbl = 0x02;
constexpr uint8_t kPtgRef = 0x24;
constexpr uint8_t kPtgArea = 0x25;
constexpr uint8_t kPtgRefErr = 0x2A;
constexpr uint8_t kPtgAreaErr = 0x2B;
constexpr uint8_t kPtgRefN = 0x2C;
constexpr uint8_t kPtgAreaN = 0x2D;
constexpr uint8_t kPtgRef3d = 0x3A;
constexpr uint8_t kPtgArea3d = 0x3B;
constexpr uint8_t kPtgRefErr3d = 0x3C;
constexpr uint8_t kPtgAreaErr3d = 0x3D;

// Ids up to here are known; those beyond are bytes of no meaning.
constexpr uint8_t kLastTokenId = 0x7D;

// Classes of an id.
constexpr uint8_t kFirstClassedId = 0x20;
constexpr uint8_t kTokenClassBits = 0x60;
constexpr uint8_t kTokenValueBit = 0x40;
constexpr uint8_t kTokenNumberBits = 0x1F;

// Fields, from the id byte.
constexpr uint32_t kTokenId = 0;
constexpr uint32_t kStrLength = 1;        // u8; the text behind it
constexpr uint32_t kStrFixed = 2;         // id and length
constexpr uint32_t kArrayColumns = 1;     // u8; 0 means 256
constexpr uint32_t kArrayRows = 2;        // u16
constexpr uint32_t kArrayElements = 4;    // the elements, inline
constexpr uint32_t kArrayNumberSize = 9;  // an element of type 1: type u8, f64
constexpr uint8_t kArrayNumber = 1;
constexpr uint32_t kMemExtra = 5;  // u16, how many bytes of the formula are extra data

// The base of an id. An id beyond kLastTokenId has one too: its top bit counts for nothing.
inline uint8_t TokenBase(uint8_t id) {
  if (id < kFirstClassedId) return id;
  if ((id & kTokenValueBit) != 0) return static_cast<uint8_t>((id & kTokenNumberBits) | kFirstClassedId);
  return static_cast<uint8_t>(id & (kTokenNumberBits | kFirstClassedId));
}

// Size in bytes, id included, of the token at `at`.
//   remaining  in/out: the count of the formula's bytes that are not yet known to be extra data. A Mem token
//              takes the u16 at kMemExtra off it, in 16 bits; behind itself when it is one of the 3-byte
//              ones, on purpose
// An id of no token has size 1. An array constant that would take more than 65535 bytes counts as 65535,
// which carries any walk past the end of its formula. Nothing is written but *remaining.
uint16_t FormulaTokenSize(const Block& block, uint32_t at, int16_t* remaining);

// What the table for chart series says of tokens that have no size in it.
constexpr int16_t kChartTokenVariable = -1;  // a text, an array constant and ptgMemArea
constexpr int16_t kChartTokenUnknown = -2;   // an id of no token

// Size in bytes, id included, of a token with this id in the formula of a chart series, or one of the two
// negative values above. It never looks at the token itself, and Mem tokens have no effect beside their size.
int16_t ChartTokenSize(uint8_t id);

}  // namespace tolvenar
