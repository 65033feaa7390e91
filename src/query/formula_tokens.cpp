// Formula tokens: the two tables of sizes, as data, each with the one function that reads it.
#include "query/formula_tokens.h"

#include <algorithm>

namespace tolvenar {

namespace {

constexpr uint16_t kUnknownSize = 1;
constexpr uint32_t kMaxTokenSize = 0xFFFF;

enum class Rule : uint8_t {
  kFixed,  // the size stands in the table
  kMem,    // so it does, and the token tells of extra data
  kText,   // a length byte and as many characters
  kArray,  // elements to be walked
};

struct TokenShape {
  uint8_t size;
  Rule rule;
};

constexpr TokenShape kUnknown = {kUnknownSize, Rule::kFixed};

constexpr TokenShape Fixed(uint8_t size) {
  return {size, Rule::kFixed};
}
constexpr TokenShape Mem(uint8_t size) {
  return {size, Rule::kMem};
}

// One entry for each id below 0x20, then one for each base from 0x20 on, which serves all three classes.
constexpr TokenShape kShapes[] = {
    kUnknown,                        // 00
    Fixed(5),                        // 01 ptgExp: row u16, column u16
    Fixed(5),                        // 02 ptgTbl: row u16, column u16
    Fixed(1),                        // 03 operators, up to 16
    Fixed(1),                        // 04
    Fixed(1),                        // 05
    Fixed(1),                        // 06
    Fixed(1),                        // 07
    Fixed(1),                        // 08
    Fixed(1),                        // 09
    Fixed(1),                        // 0A
    Fixed(1),                        // 0B
    Fixed(1),                        // 0C
    Fixed(1),                        // 0D
    Fixed(1),                        // 0E
    Fixed(1),                        // 0F
    Fixed(1),                        // 10
    Fixed(1),                        // 11
    Fixed(1),                        // 12
    Fixed(1),                        // 13
    Fixed(1),                        // 14
    Fixed(1),                        // 15
    Fixed(1),                        // 16
    {kStrFixed, Rule::kText},        // 17 ptgStr
    kUnknown,                        // 18
    Fixed(4),                        // 19 ptgAttr
    kUnknown,                        // 1A
    kUnknown,                        // 1B
    Fixed(2),                        // 1C ptgErr
    Fixed(2),                        // 1D ptgBool
    Fixed(3),                        // 1E ptgInt
    Fixed(9),                        // 1F ptgNum
    {kArrayElements, Rule::kArray},  // 20 ptgArray
    Fixed(3),                        // 21 ptgFunc
    Fixed(4),                        // 22 ptgFuncVar
    Fixed(15),                       // 23 ptgName
    Fixed(4),                        // 24 ptgRef: row word, column u8
    Fixed(7),                        // 25 ptgArea: first and last row word, first and last column u8
    Mem(7),                          // 26 ptgMemArea
    Mem(7),                          // 27 ptgMemErr
    Mem(7),                          // 28 ptgMemNoMem
    Mem(3),                          // 29 ptgMemFunc
    Fixed(4),                        // 2A ptgRefErr
    Fixed(7),                        // 2B ptgAreaErr
    Fixed(4),                        // 2C ptgRefN
    Fixed(7),                        // 2D ptgAreaN
    Mem(3),                          // 2E ptgMemAreaN
    Mem(3),                          // 2F ptgMemNoMemN
    kUnknown,                        // 30 no tokens, up to 38
    kUnknown,                        // 31
    kUnknown,                        // 32
    kUnknown,                        // 33
    kUnknown,                        // 34
    kUnknown,                        // 35
    kUnknown,                        // 36
    kUnknown,                        // 37
    kUnknown,                        // 38
    Fixed(25),                       // 39 ptgNameX
    Fixed(18),                       // 3A ptgRef3d: 14 bytes of sheet reference, then as ptgRef
    Fixed(21),                       // 3B ptgArea3d: 14 bytes of sheet reference, then as ptgArea
    Fixed(18),                       // 3C ptgRefErr3d
    Fixed(21),                       // 3D ptgAreaErr3d
    kUnknown,                        // 3E
    kUnknown,                        // 3F
};
static_assert(sizeof kShapes / sizeof kShapes[0] == 0x40);

// The table for chart series, indexed as the one above. It is a table of its own and not derived from that one,
// on purpose: tokens of variable size have none here, and an id of no token is told from a token of 1 byte.
constexpr int8_t kVar = kChartTokenVariable;
constexpr int8_t kNone = kChartTokenUnknown;
constexpr int8_t kChartSizes[] = {
    kNone,  // 00
    5,      // 01 ptgExp
    5,      // 02 ptgTbl
    1,      // 03 operators, up to 16
    1,      // 04
    1,      // 05
    1,      // 06
    1,      // 07
    1,      // 08
    1,      // 09
    1,      // 0A
    1,      // 0B
    1,      // 0C
    1,      // 0D
    1,      // 0E
    1,      // 0F
    1,      // 10
    1,      // 11
    1,      // 12
    1,      // 13
    1,      // 14
    1,      // 15
    1,      // 16
    kVar,   // 17 ptgStr
    kNone,  // 18
    4,      // 19 ptgAttr
    kNone,  // 1A
    kNone,  // 1B
    2,      // 1C ptgErr
    2,      // 1D ptgBool
    3,      // 1E ptgInt
    9,      // 1F ptgNum
    kVar,   // 20 ptgArray
    3,      // 21 ptgFunc
    4,      // 22 ptgFuncVar
    15,     // 23 ptgName
    4,      // 24 ptgRef
    7,      // 25 ptgArea
    kVar,   // 26 ptgMemArea
    7,      // 27 ptgMemErr
    7,      // 28 ptgMemNoMem
    3,      // 29 ptgMemFunc
    4,      // 2A ptgRefErr
    7,      // 2B ptgAreaErr
    4,      // 2C ptgRefN
    7,      // 2D ptgAreaN
    3,      // 2E ptgMemAreaN
    3,      // 2F ptgMemNoMemN
    kNone,  // 30 no tokens, up to 38
    kNone,  // 31
    kNone,  // 32
    kNone,  // 33
    kNone,  // 34
    kNone,  // 35
    kNone,  // 36
    kNone,  // 37
    kNone,  // 38
    25,     // 39 ptgNameX
    18,     // 3A ptgRef3d
    21,     // 3B ptgArea3d
    18,     // 3C ptgRefErr3d
    21,     // 3D ptgAreaErr3d
    kNone,  // 3E
    kNone,  // 3F
};
static_assert(sizeof kChartSizes == sizeof kShapes / sizeof kShapes[0]);

TokenShape ShapeOf(uint8_t id) {
  return id > kLastTokenId ? kUnknown : kShapes[TokenBase(id)];
}

// Elements of an array constant: the product in 16 bits, signed.
int16_t ArrayCount(const Block& block, uint32_t at) {
  const uint32_t columns = U8At(block, at + kArrayColumns);
  const uint32_t rows = U16At(block, at + kArrayRows);
  return static_cast<int16_t>(rows * (columns == 0 ? 256 : columns));
}

uint16_t ArraySize(const Block& block, uint32_t at) {
  uint32_t size = kArrayElements;
  int32_t left = ArrayCount(block, at);
  for (; left > 0 && at + size < block.extent && size < kMaxTokenSize; --left) {
    const bool number = U8At(block, at + size) == kArrayNumber;
    size += number ? kArrayNumberSize : kStrFixed + U8At(block, at + size + kStrLength);
  }
  // Behind the block every element reads as an empty text.
  if (left > 0) size += kStrFixed * static_cast<uint32_t>(left);
  return static_cast<uint16_t>(std::min(size, kMaxTokenSize));
}

}  // namespace

uint16_t FormulaTokenSize(const Block& block, uint32_t at, int16_t* remaining) {
  const TokenShape shape = ShapeOf(U8At(block, at + kTokenId));
  switch (shape.rule) {
    case Rule::kText:
      return static_cast<uint16_t>(shape.size + U8At(block, at + kStrLength));
    case Rule::kArray:
      return ArraySize(block, at);
    case Rule::kMem:
      *remaining = static_cast<int16_t>(*remaining - U16At(block, at + kMemExtra));
      return shape.size;
    case Rule::kFixed:
      return shape.size;
  }
  return kUnknownSize;
}

int16_t ChartTokenSize(uint8_t id) {
  return id > kLastTokenId ? kChartTokenUnknown : kChartSizes[TokenBase(id)];
}

}  // namespace tolvenar
