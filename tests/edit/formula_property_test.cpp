// Formula adjustment of random formulas: sizes never change, nothing but operands changes, and what an
// insertion and a deletion at one place restore.
#include <random>

#include "query/formula_tokens.h"
#include "support/formula_builder.h"
#include "support/pool_fixture.h"

namespace tolvenar {
namespace {

using namespace testing::formula;  // Ref, Area and the other tokens
using testing::Bytes;
using testing::operator+;

class FormulaProperties : public testing::PoolTest {};

struct Operand {
  uint32_t at;
  uint32_t size;
};

struct RandomFormula {
  Bytes tokens;
  std::vector<bool> touched;     // per byte: may an adjustment change it?
  std::vector<uint32_t> starts;  // of the tokens
};

class RandomFormulas {
 public:
  RandomFormula Next() {
    RandomFormula formula;
    const int count = 1 + static_cast<int>(Below(12));
    for (int i = 0; i < count; ++i) Add(&formula);
    return formula;
  }
  uint32_t Below(uint32_t n) { return static_cast<uint32_t>(random_() % n); }

 private:
  uint8_t Class() { return static_cast<uint8_t>(0x20 * (1 + Below(3))); }
  uint8_t Byte() { return static_cast<uint8_t>(Below(256)); }
  Bytes Noise(uint32_t n) {
    Bytes bytes(n);
    for (uint8_t& byte : bytes) byte = Byte();
    return bytes;
  }
  uint16_t Row() { return static_cast<uint16_t>(Below(30)); }
  uint8_t Column() { return static_cast<uint8_t>(Below(30)); }

  void Append(RandomFormula* formula, const Bytes& token, std::initializer_list<Operand> operands,
              bool id_too) {
    const uint32_t start = static_cast<uint32_t>(formula->tokens.size());
    formula->starts.push_back(start);
    formula->tokens = formula->tokens + token;
    formula->touched.resize(formula->tokens.size(), false);
    formula->touched[start] = id_too;
    for (const Operand& operand : operands) {
      for (uint32_t i = 0; i < operand.size; ++i) formula->touched[start + operand.at + i] = true;
    }
  }

  void Add(RandomFormula* formula) {
    const uint8_t n = static_cast<uint8_t>(Class() & 0x60);
    const uint16_t row = Row(), row2 = static_cast<uint16_t>(row + Below(9));
    const uint8_t column = Column(), column2 = static_cast<uint8_t>(column + Below(9));
    switch (Below(9)) {
      case 0:
        return Append(formula, Ref(row, column, n | 0x04), {{1, 3}}, true);
      case 1:
        return Append(formula, Area(row, row2, column, column2, n | 0x05), {{1, 6}}, true);
      case 2:
        return Append(formula, Ref3d(row, column, n | 0x1A), {{15, 3}}, true);
      case 3:
        return Append(formula, Area3d(row, row2, column, column2, n | 0x1B), {{15, 6}}, true);
      case 4:
        return Append(formula, Exp(row, column), {{1, 4}}, false);
      case 5:
        return Append(formula, Bytes{0x17, 6} + Noise(6), {}, false);
      case 6:
        return Append(formula, Bytes{static_cast<uint8_t>(n | 0x03)} + Noise(14), {}, false);
      case 7:
        return Append(formula, Bytes{0x1F} + Noise(8), {}, false);
      default:
        return Append(formula, Bytes{static_cast<uint8_t>(3 + Below(0x14))}, {}, false);
    }
  }

  std::mt19937 random_{20240229};
};

std::vector<uint32_t> TokenStarts(const Bytes& tokens) {
  uint32_t handle = MEMORYALLOC(33000);
  const Block block = OpenBlock(handle);
  const uint32_t size = static_cast<uint32_t>(tokens.size());
  CopyIn(block, 0, tokens.data(), size);
  int16_t remaining = static_cast<int16_t>(size);
  std::vector<uint32_t> starts;
  for (uint32_t at = 0; at < size;) {
    starts.push_back(at);
    at += FormulaTokenSize(block, at, &remaining);
  }
  MEMORYFREE(&handle);
  return starts;
}

TEST_F(FormulaProperties, RandomFormulas_KeepSizesAndAllBytesOutsideTheOperands) {
  RandomFormulas formulas;
  for (int round = 0; round < 4000; ++round) {
    const RandomFormula formula = formulas.Next();
    const AdjustMode mode = static_cast<AdjustMode>(formulas.Below(4));
    const Outcome outcome = Adjusted(formula.tokens, static_cast<int16_t>(formulas.Below(32)), mode);
    ASSERT_EQ(TokenStarts(outcome.tokens), formula.starts) << testing::Hex(formula.tokens);
    for (size_t i = 0; i < formula.tokens.size(); ++i) {
      ASSERT_TRUE(formula.touched[i] || outcome.tokens[i] == formula.tokens[i])
          << i << ": " << testing::Hex(formula.tokens);
    }
  }
}

// Insertion and deletion at one place restore a formula, but for the tokens that stand exactly there: a
// reference dies, an area that begins there loses a row or column or dies. What ptgExp names always comes
// back.
Bytes RestoredToken(const Bytes& token, uint8_t position, bool rows) {
  Bytes restored = token;
  const uint8_t base = static_cast<uint8_t>((token[0] & 0x1F) | 0x20);
  if (token[0] < 0x20) return restored;
  const bool is3d = base == 0x3A || base == 0x3B;
  const size_t shift = is3d ? 14 : 0;
  if (base == 0x24 || base == 0x3A) {
    if (token[(rows ? 1u : 3u) + shift] == position)
      restored[0] = static_cast<uint8_t>((token[0] & 0x60) | (is3d ? 0x1C : 0x0A));
  } else if (base == 0x25 || base == 0x3B) {
    const size_t first = (rows ? 1u : 5u) + shift, last = (rows ? 3u : 6u) + shift;
    if (token[first] != position) return restored;
    if (token[last] > position) --restored[last];
    if (restored[last] == position)
      restored[0] = static_cast<uint8_t>((token[0] & 0x60) | (is3d ? 0x1D : 0x0B));
  }
  return restored;
}

TEST_F(FormulaProperties, RandomFormulas_InsertThenDelete_RestoreAllThatDoesNotStandThere) {
  RandomFormulas formulas;
  for (int round = 0; round < 4000; ++round) {
    const RandomFormula formula = formulas.Next();
    const uint8_t position = static_cast<uint8_t>(formulas.Below(32));
    const bool rows = formulas.Below(2) == 0;
    const Outcome there = Adjusted(formula.tokens, position, rows ? kRowIn : kColIn);
    EXPECT_EQ(there.result, 1);
    const Outcome back = Adjusted(there.tokens, position, rows ? kRowDel : kColDel);
    Bytes expected;
    for (size_t i = 0; i < formula.starts.size(); ++i) {
      const auto end = i + 1 < formula.starts.size() ? formula.tokens.begin() + formula.starts[i + 1]
                                                     : formula.tokens.end();
      expected =
          expected + RestoredToken(Bytes(formula.tokens.begin() + formula.starts[i], end), position, rows);
    }
    ASSERT_EQ(testing::Hex(back.tokens), testing::Hex(expected))
        << testing::Hex(formula.tokens) << " at " << int{position};
  }
}

}  // namespace
}  // namespace tolvenar
