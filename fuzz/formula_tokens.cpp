// Any bytes as the record that a formula lies in: sizes of tokens and all adjustments. Nothing outside the record is touched, every walk
// ends, and the tokens keep their places. Only extra data, whose rectangles may lie over the tokens, and ids of no token can move them.
//
//   the input   length i16 | position i16 | offset of the tokens u8 | the record
#include <algorithm>
#include <iterator>
#include <vector>

#include "edit/formula_adjustment.h"
#include "foundation/memory_pool.h"
#include "fuzz_support.h"
#include "query/formula_tokens.h"

using tolvenar::AdjustMode;
using tolvenar::Block;
using tolvenar::fuzz::Choices;
using tolvenar::fuzz::Require;
using tolvenar::testing::Bytes;

namespace {

constexpr size_t kNeighbours = 16;  // bytes in front of the record and behind it
constexpr uint8_t kNeighbour = 0xA5;

struct Walked {
  std::vector<int32_t> places;
  bool overlapping =
      false;  // extra data, and ids beyond the table, which are one byte and are adjusted as whole tokens
};

// Ids beyond the table, which are one byte and are adjusted as whole tokens; and the Mem tokens, which tell of rectangles anywhere.
bool CanReachOthers(uint8_t id) {
  constexpr uint8_t kMem[] = {0x26, 0x27, 0x28, 0x29, 0x2E, 0x2F};
  const uint8_t base = tolvenar::TokenBase(id);
  return id > tolvenar::kLastTokenId || std::find(std::begin(kMem), std::end(kMem), base) != std::end(kMem);
}

// The places of the tokens, as an adjustment walks them.
Walked Places(const Block& record, uint32_t tokens, int16_t length) {
  Walked walked;
  int16_t remaining = length;
  for (int32_t at = 0; at < length && at < remaining;) {
    walked.places.push_back(at);
    if (CanReachOthers(tolvenar::U8At(record, tokens + static_cast<uint32_t>(at)))) walked.overlapping = true;
    const uint16_t size = tolvenar::FormulaTokenSize(record, tokens + static_cast<uint32_t>(at), &remaining);
    Require(size != 0, "a token has a size");
    at += size;
  }
  return walked;
}

void AdjustOnce(const Bytes& record, uint32_t tokens, int16_t length, int16_t position, AdjustMode mode) {
  Bytes around(record.size() + 2 * kNeighbours, kNeighbour);
  std::copy(record.begin(), record.end(), around.begin() + kNeighbours);
  const Block block = {around.data() + kNeighbours, static_cast<uint32_t>(record.size())};
  const Walked before = Places(block, tokens, length);
  const int16_t result = tolvenar::AdjustFormulaReferences(block, tokens, length, position, mode);
  Require(result == 0 || result == 1, "an adjustment has two results");
  const auto untouched = [](uint8_t byte) { return byte == kNeighbour; };
  Require(std::all_of(around.begin(), around.begin() + kNeighbours, untouched),
          "nothing in front is touched");
  Require(std::all_of(around.end() - kNeighbours, around.end(), untouched), "nothing behind is touched");
  if (!before.overlapping) {
    Require(Places(block, tokens, length).places == before.places, "tokens keep their places");
  }
}

// Seldom far longer than any record here: a walk over zeros takes its time, and nothing comes of it.
int16_t ChosenLength(Choices* choices) {
  constexpr int16_t kUsual = 600;
  const auto length = static_cast<int16_t>(choices->Word());
  return length > 0x7F00 ? length : static_cast<int16_t>(length % kUsual);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Choices choices(data, size);
  const int16_t length = ChosenLength(&choices);
  const auto position = static_cast<int16_t>(choices.Word());
  const uint32_t tokens = choices.Byte();
  const Bytes record = choices.Rest();
  for (const AdjustMode mode : {AdjustMode::kRowInserted, AdjustMode::kRowDeleted,
                                AdjustMode::kColumnInserted, AdjustMode::kColumnDeleted})
    AdjustOnce(record, tokens, length, position, mode);
  return 0;
}
