// Reference streams damaged at random: every operation ends with one of its codes, keeps within its block (which the sanitizers and the
// pages behind the slots watch) and holds no block but the buffer.
#include <random>
#include <set>

#include "reference/reference_fixture.h"

namespace tolvenar::testing {
namespace {

class ReferenceDamageTest : public ReferenceTest {
 protected:
  uint32_t Below(uint32_t n) { return static_cast<uint32_t>(random_() % n); }

  // Objects from before and since a compaction, with records put into each.
  void MakeSound() {
    MEMORYFREEALL();
    Load(kNewStream);
    ASSERT_EQ(CreateTable(1), 0);
    ASSERT_EQ(CreateGraph(1), 0);
    ASSERT_EQ(Put(1, kKindTable, Value(1, 1)), 0);
    ASSERT_EQ(Create(4, EditKindWord(1), EditHead(0, 4) + kEditEnd), 0);
    ASSERT_EQ(CreateTable(2), 0);
    ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0);
    ASSERT_EQ(CreateGraph(2), 0);
    ASSERT_EQ(Put(1, kKindTable, Value(2, 2)), 0);
    ASSERT_EQ(Put(1, kKindGraph, Bytes{0xE5, 0x10, 2, 0, 0, 0}), 0);
    sound_ = BlockContents(buffer_, size_);
  }

  // What a 32-bit field may come to say.
  uint32_t AnyOffset() {
    constexpr uint32_t kFar[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFC, 0xFFFFFFFF};
    return Below(3) == 0 ? kFar[Below(6)] : Below(static_cast<uint32_t>(sound_.size()) + 16);
  }

  void DamageOnce() {
    const uint32_t at = Below(size_);
    switch (Below(5)) {
      case 0:
        return PutU8(Stream(), at, static_cast<uint8_t>(random_()));
      case 1:
        return PutU32(Stream(), at & ~3u, AnyOffset());
      case 2:
        return PutU16(Stream(), at, static_cast<uint16_t>(Below(2) == 0 ? 0x7FF0 + Below(32) : random_()));
      case 3:
        PutU32(Stream(), at, Below(2) == 0 ? 0x0004FEFFu : 0x0004FEFAu);
        return PutU32(Stream(), at + 4, AnyOffset());
      default:
        return PutU8(Stream(), at, static_cast<uint8_t>(0xD0 + Below(48)));
    }
  }

  void Damage() {
    MEMORYFREE(&buffer_);
    buffer_ = MEMORYALLOC(static_cast<int32_t>(sound_.size()));
    size_ = static_cast<uint32_t>(sound_.size());
    CopyIn(Stream(), 0, sound_.data(), size_);
    for (uint32_t i = 0; i <= Below(6); ++i) DamageOnce();
  }

  // One operation on the damaged buffer; its result.
  int32_t Operate() {
    const uint16_t id = static_cast<uint16_t>(1 + Below(3));
    const uint16_t kind_word = Below(2) == 0 ? kKindTable : kKindGraph;
    switch (Below(7)) {
      case 0:
        return Put(id, kind_word, Value(1, 1), true);
      case 1:
        return Put(id, kind_word, Bytes{0xE5, 0x10, 3, 0, 1, 0, 7});
      case 2:
        return Create(LowestFreeRefId(buffer_, kind_word), kind_word, GraphHead(9) + kGraphEnd);
      case 3:
        return XLRefreshReference(&buffer_, &size_);
      case 4:
        RetireRefEntry(buffer_, id, kind_word);
        return 0;
      case 5:
        RepointRefEntry(buffer_, id, kind_word, AnyOffset());
        return 0;
      default:
        FindRefEntry(buffer_, 4, EditKindWord(1));  // any offset that an entry has
        return 0;
    }
  }

  std::mt19937 random_{11};
  Bytes sound_;
};

TEST_F(ReferenceDamageTest, EveryOperationEndsWithACode) {
  const std::set<int32_t> codes = {0, 2, 6, -1, -2, -4, -5, -6, -997, -998, -999};
  MakeSound();
  for (int round = 0; round < 20000; ++round) {
    Damage();
    for (int operation = 0; operation < 6 && buffer_ != 0; ++operation) {
      const int32_t result = Operate();
      ASSERT_EQ(codes.count(result), 1u) << round << " " << result;
      ASSERT_EQ(LiveBlocks(), buffer_ != 0 ? 1u : 0u) << round << " " << result;
    }
  }
}

TEST_F(ReferenceDamageTest, BytesThatAreNoStreamAtAllEndWithACode) {
  for (int round = 0; round < 5000; ++round) {
    sound_.resize(1 + Below(200));
    for (uint8_t& byte : sound_) byte = static_cast<uint8_t>(Below(3) == 0 ? random_() : Below(17));
    Damage();
    PutU32(Stream(), 4, Below(size_));
    for (int operation = 0; operation < 4 && buffer_ != 0; ++operation) Operate();
    ASSERT_EQ(LiveBlocks(), buffer_ != 0 ? 1u : 0u) << round;
  }
}

}  // namespace
}  // namespace tolvenar::testing
