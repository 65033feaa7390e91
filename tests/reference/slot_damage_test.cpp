// Damage: a small reference with a record of every kind of slot and set, with every byte spoilt, cut at every place, and spoilt at random,
// through every export that works on them. The buffer fills its slot to the last byte, so that a read behind it hits the page that can't
// be read.
#include <random>
#include <set>

#include "reference/delete_property.h"
#include "reference/graph_flags.h"
#include "reference/graph_properties.h"
#include "reference/graph_slots.h"
#include "reference/number_sets.h"
#include "reference/reference_fixture.h"
#include "reference/text_references.h"
#include "support/test_array.h"

namespace tolvenar::testing {
namespace {

constexpr uint32_t kSlot = 1024;

// What the calls work on.
struct Target {
  uint32_t buffer = 0;
  uint32_t size = 0;
  TestArray properties{VT_I4, 1, 128};
  TestArray flags{VT_I2, 1, 40};
  TestArray ints{VT_I2, 1, 6};
  TestArray longs{VT_I4, 1, 6};
  TestArray others{VT_I4, 1, 6};
  TestArray part{VT_I4, 3, 4};
};

BSTR text_got = nullptr;
int16_t Released(int16_t result) {
  SysFreeString(text_got);
  text_got = nullptr;
  return result;
}

struct Call {
  const char* label;
  int16_t (*run)(Target* t);
};
uint64_t eight_bytes;
uint16_t fonts[4];
constexpr Call kGetters[] = {
    {"text", [](Target* t) { return Released(XLRGetText(t->buffer, 1, &text_got, 1)); }},
    {"double", [](Target* t) { return XLRGetDouble(t->buffer, 1, &eight_bytes, 1); }},
    {"font", [](Target* t) { return XLRGetFont(t->buffer, 1, fonts, fonts + 1, fonts + 2, fonts + 3, 1); }},
    {"set text", [](Target* t) { return Released(XLRGetSetText(t->buffer, 1, 3, &text_got, 1)); }},
    {"properties", [](Target* t) { return XLRGetProperties(t->buffer, t->properties.Ref(), 1); }},
    {"flags", [](Target* t) { return XLRGetSelVis(t->buffer, t->flags.Ref(), 1, 40, 1); }},
    {"ints", [](Target* t) { return XLRGetSetInt(t->buffer, 1, 6, t->ints.Ref(), 1); }},
    {"longs", [](Target* t) { return XLRGetSetLong(t->buffer, 1, 6, t->longs.Ref(), 1); }},
    {"text references",
     [](Target* t) { return XLRGetTextRef(t->buffer, 1, 6, t->longs.Ref(), t->others.Ref(), 1); }}};
constexpr Call kEditors[] = {
    {"text", [](Target* t) { return XLRSaveText(&t->buffer, &t->size, 1, "a longer text", 1); }},
    {"double", [](Target* t) { return XLRSaveDouble(&t->buffer, &t->size, 1, 1, 2, 1); }},
    {"font", [](Target* t) { return XLRSaveFont(&t->buffer, &t->size, 1, 1, 2, 3, 4, 1); }},
    {"set text", [](Target* t) { return XLRSaveSetText(&t->buffer, &t->size, 1, 3, "a longer text", 1); }},
    {"properties", [](Target* t) { return XLRSaveProperties(&t->buffer, &t->size, t->properties.Ref(), 1); }},
    {"flags", [](Target* t) { return XLRSaveSelVis(&t->buffer, &t->size, t->flags.Ref(), 1, 40, 1); }},
    {"ints", [](Target* t) { return XLRSaveSetInt(&t->buffer, &t->size, 1, 3, 4, 6, t->part.Ref(), 1); }},
    {"no ints", [](Target* t) { return XLRSaveSetInt(&t->buffer, &t->size, 1, 3, 4, 6, t->part.Ref(), -2); }},
    {"longs", [](Target* t) { return XLRSaveSetLong(&t->buffer, &t->size, 1, 3, 4, 6, t->part.Ref(), 2); }},
    {"no longs",
     [](Target* t) { return XLRSaveSetLong(&t->buffer, &t->size, 1, 3, 4, 6, t->part.Ref(), -1); }},
    {"text references",
     [](Target* t) {
       return XLRSaveTextRef(&t->buffer, &t->size, 1, 3, 4, 6, t->part.Ref(), t->part.Ref(), 1);
     }},
    {"no text references",
     [](Target* t) {
       return XLRSaveTextRef(&t->buffer, &t->size, 1, 3, 4, 6, t->part.Ref(), t->part.Ref(), -1);
     }},
    {"item", [](Target* t) { return XLRDeleteProperty(t->buffer, 1, 24, 3); }},
    {"all items", [](Target* t) { return XLRDeleteProperty(t->buffer, 1, 0, 3); }}};

Bytes Low(uint8_t low, const Bytes& payload) {
  return Bytes{low, 0x10} + U16(static_cast<uint16_t>(payload.size())) + payload;
}

// A record of every kind.
Bytes Records() {
  const Bytes item = U16(3), set1 = {1}, run = U16(2) + U16(4);
  return Low(0xE5, U16(2) + Text("ab")) + Low(0xE4, Bytes(8, 1)) + Low(0xDD, Bytes(8, 2)) +
         Low(0xEB, item + U16(2) + Text("cd")) + Low(0xD7, set1 + U16(9) + Bytes{3, 1}) +
         Low(0xE3, item + U16(5)) + Low(0xE9, item + U16(5)) + Low(0xEF, item + U32(6)) +
         Low(0xF0, item + U32(6)) + Low(0xD8, set1 + run + Bytes(6, 7)) +
         Low(0xD8, Bytes{2} + run + Bytes(6, 7)) + Low(0xD9, set1 + run + Bytes(12, 8)) +
         Low(0xD9, Bytes{2} + run + Bytes(12, 8)) + Low(0xD2, set1 + U16(2) + U32(9) + U32(0)) +
         Low(0xD1, Bytes{1, 2} + item + U16(2) + U32(256));
}

class SlotDamageTest : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    while (const uint32_t handle = MEMORYALLOC(1)) handles_.push_back(handle);
    ASSERT_EQ(handles_.size(), 9u);
    const Bytes front = RefRecord(0xFF, 0) + GraphHead(1) + Records();
    Bytes back = kGraphEnd + RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(2, 1, 8) + RefRecord(0xFE, 0) +
                 Bytes{0xF8, 0xFE, 0, 0};
    const uint32_t here = static_cast<uint32_t>(front.size());
    const Bytes jumps = Bytes{0xFF, 0xFE, 4, 0} + U32(here + 8) + Bytes{0xFA, 0xFE, 4, 0} + U32(here + 16);
    const uint32_t room = kSlot - here - static_cast<uint32_t>(jumps.size() + back.size()) - 4 - 516;
    whole_ = front + jumps + Low(0xFA, Bytes(512, 9)) + Bytes{0xFD, 0xFE} + U16(static_cast<uint16_t>(room)) +
             Bytes(room) + back;
    ASSERT_EQ(whole_.size(), kSlot);
    whole_[4] = static_cast<uint8_t>((kSlot - 40) & 0xFF);  // the mark: 40 bytes from there to the end
    whole_[5] = static_cast<uint8_t>((kSlot - 40) >> 8);
  }

  // Loads a stream into the slot that it fills; every other block is given back.
  void Restore(const Bytes& stream) {
    for (uint32_t handle : handles_) MEMORYFREE(&handle);
    target_.buffer = MEMORYALLOC(kSlot);
    target_.size = kSlot;
    CopyIn(OpenBlock(target_.buffer), 0, stream.data(), kSlot);
  }

  // Every call on the stream ends with a result that it has, and leaves the buffer live or zeroes its variable.
  void RunAll(const Bytes& stream) {
    const std::set<int16_t> results = {0, -2, -4, -5, -6, -14, -997};
    Restore(stream);
    for (const Call& getter : kGetters) {
      const int16_t result = getter.run(&target_);
      ASSERT_TRUE(result == 0 || result == -2 || result == -997) << getter.label << " " << result;
    }
    ASSERT_EQ(BlockContents(target_.buffer, kSlot), stream);
    for (const Call& editor : kEditors) {
      Restore(stream);
      const int16_t result = editor.run(&target_);
      ASSERT_TRUE(results.contains(result)) << editor.label << " " << result;
      ASSERT_TRUE(target_.buffer == 0 || MEMORYISHANDLE(target_.buffer) != 0) << editor.label;
    }
  }

  Bytes whole_;
  Target target_;
  std::vector<uint32_t> handles_;
};

TEST_F(SlotDamageTest, TheWholeStream_ServesEveryCall) {
  for (const Call& call : kGetters) {
    Restore(whole_);
    EXPECT_EQ(call.run(&target_), 0) << call.label;
  }
  target_.properties.SetNumber(1, 0, 77);  // they are those of the stream by now
  for (const Call& call : kEditors) {
    Restore(whole_);
    EXPECT_EQ(call.run(&target_), 0) << call.label;
    EXPECT_NE(BlockContents(target_.buffer, kSlot), whole_) << call.label;
  }
}

TEST_F(SlotDamageTest, EverySpoiltByte_EndsEveryCall) {
  for (size_t at = 0; at < kSlot; ++at) {
    if (at > 330 && at < 950) continue;  // values of properties, and room
    for (const uint8_t spoilt : Bytes{0x00, 0x7F, 0x80, 0xFA, 0xFE, 0xFF}) {
      Bytes stream = whole_;
      stream[at] = spoilt;
      ASSERT_NO_FATAL_FAILURE(RunAll(stream)) << at << " " << int{spoilt};
    }
  }
}

TEST_F(SlotDamageTest, AStreamThatIsCut_EndsEveryCall) {
  for (size_t at = 0; at < kSlot; at += 3) {
    for (const uint8_t rest : Bytes{0x00, 0xFF, 0x10}) {
      Bytes stream = whole_;
      std::fill(stream.begin() + static_cast<ptrdiff_t>(at), stream.end(), rest);
      ASSERT_NO_FATAL_FAILURE(RunAll(stream)) << at << " " << int{rest};
    }
  }
}

TEST_F(SlotDamageTest, RandomDamage_EndsEveryCall) {
  std::mt19937 random(20261120);
  for (int round = 0; round < 3000; ++round) {
    Bytes stream = whole_;
    for (auto changes = 1 + random() % 6; changes != 0; --changes) {
      const size_t at = random() % 3 == 0 ? kSlot - 1 - random() % 44 : random() % 330;
      stream[at] = static_cast<uint8_t>(random());
    }
    ASSERT_NO_FATAL_FAILURE(RunAll(stream)) << round;
  }
}

}  // namespace
}  // namespace tolvenar::testing
