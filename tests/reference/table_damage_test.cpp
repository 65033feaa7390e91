// Damage: a small reference with a table, a graph and two chart edits, with every byte spoilt, cut at every place, and spoilt at random,
// through every export that works on them. The buffer fills its slot to the last byte, so that a read behind it hits what the sanitizers
// watch.
#include <random>
#include <set>
#include <span>

#include "reference/chart_edit.h"
#include "reference/graph_object.h"
#include "reference/reference_index.h"
#include "reference/reference_states.h"
#include "reference/reference_table.h"
#include "reference/table_array.h"
#include "reference/table_positions.h"
#include "support/test_array.h"

namespace tolvenar::testing {
namespace {

constexpr uint32_t kSlot = 256;

// What the calls work on.
struct Target {
  uint32_t buffer = 0;
  uint32_t size = 0;
  TableArray positions{{3, 2, 2, 1}};
  TestArray first{VT_I4, 1, 2};
  TestArray second{VT_I4, 1, 2};
};

constexpr TableCoordinates kCell = {2, 1, 1, 1};
BSTR text_got = nullptr;
uint64_t value_got = 0;

int16_t Released(int16_t result) {
  SysFreeString(text_got);
  text_got = nullptr;
  return result;
}

struct Call {
  const char* label;
  int16_t (*run)(Target* t);
};
constexpr Call kGetters[] = {
    {"text", [](Target* t) { return Released(XLRGetTableText(t->buffer, 1, &text_got, kCell)); }},
    {"value", [](Target* t) { return XLRGetTableValue(t->buffer, 1, &value_got, kCell); }},
    {"positions", [](Target* t) { return XLRGetRefTable(t->buffer, 1, t->positions.Ref()); }},
    {"indices", [](Target* t) { return XLRGetIndices(t->buffer, t->first.Ref(), t->second.Ref(), 2, 3); }}};
// What these give is no code.
constexpr Call kLookups[] = {
    {"items", [](Target* t) { return XLRGetNumItems(t->buffer, 3); }},
    {"table of a link", [](Target* t) { return XLRTableByGraph(t->buffer, 1, 2); }},
    {"table of no link", [](Target* t) { return XLRTableByGraph(t->buffer, 1, 3); }},
    {"graph of an edit", [](Target* t) { return XLRGraphByChartEdit(t->buffer, 1, 4); }}};
constexpr Call kEditorsInPlace[] = {
    {"main table", [](Target* t) { return XLRUpdateGraph(t->buffer, 1, 0x7777); }},
    {"edit", [](Target* t) { return XLRUpdateChartEdit(t->buffer, 1, 4, 0x7777); }},
    {"no table", [](Target* t) { return XLRDeleteTable(t->buffer, 1); }},
    {"no graph", [](Target* t) { return XLRDeleteGraph(t->buffer, 1); }},
    {"no edit", [](Target* t) { return XLRDeleteChartEdit(t->buffer, 1, 4); }}};
constexpr Call kEditors[] = {
    {"fill", [](Target* t) { return XLRFillTable(&t->buffer, &t->size, t->positions.Ref(), 1); }},
    {"text", [](Target* t) { return XLRTextToTable(&t->buffer, &t->size, 1, kCell, "longer"); }},
    {"new text",
     [](Target* t) {
       return XLRTextToTable(&t->buffer, &t->size, 1, {1, 1, 1, 1}, "");
     }},
    {"no text", [](Target* t) { return XLRTextToTable(&t->buffer, &t->size, -1, kCell, "longer"); }},
    {"value", [](Target* t) { return XLRValueToTable(&t->buffer, &t->size, 1, kCell, 3, 4); }},
    {"link", [](Target* t) { return XLRUpdateGraphTable(&t->buffer, &t->size, 1, 0x7777, 2); }},
    {"new link", [](Target* t) { return XLRUpdateGraphTable(&t->buffer, &t->size, 1, 0x7777, 3); }},
    {"no link", [](Target* t) { return XLRUpdateGraphTable(&t->buffer, &t->size, 1, 0, 2); }},
    {"new table",
     [](Target* t) {
       return XLRCreateTable(&t->buffer, &t->size, 1, 1, 1, 1) == 2 ? int16_t{0} : kTableOutside;
     }},
    {"new graph",
     [](Target* t) { return XLRCreateGraph(&t->buffer, &t->size, 1) == 2 ? int16_t{0} : kTableOutside; }},
    {"new edit", [](Target* t) { return XLRCreateChartEdit(&t->buffer, &t->size, 3, 4, 1); }}};

Bytes WholeStream() {
  const Bytes front =
      RefRecord(0xFF, kSlot - 76) + TableHeadOf(1, 3, 2, 2, 1) + CellText(2, "abc") + CellValue(2, 1, 2);
  const uint32_t here = static_cast<uint32_t>(front.size());
  const Bytes jumps = Bytes{0xFF, 0xFE, 4, 0} + U32(here + 8) + Bytes{0xFA, 0xFE, 4, 0} + U32(here + 16);
  const Bytes table = BoxPosition(1 + 10 + 75, 0, 256, 3, 2, 2) + CellPosition(11, 7) + kTableEnd;
  const uint32_t graph_at = here + 16 + static_cast<uint32_t>(table.size());
  const Bytes graph = GraphHeadOf(1, 1) + GraphLink(2, 5) + kGraphEnd;
  const uint32_t edit_at = graph_at + static_cast<uint32_t>(graph.size());
  const Bytes edits = EditHeadOf(0, 4, 1) + kEditEnd + EditHeadOf(1, 4, 1) + kEditEnd;
  const Bytes back = RefRecord(0xDA, 0) + RefRecord(0xDB, 0) + Entry(1, 1, 8) + Entry(2, 1, graph_at) +
                     Entry(3, 4, edit_at) + Entry(0x103, 4, edit_at + 13) + RefRecord(0xFE, 0) +
                     Bytes{0xF8, 0xFE, 0, 0};
  const Bytes objects = front + jumps + table + graph + edits;
  const uint32_t room = kSlot - static_cast<uint32_t>(objects.size() + back.size()) - kHeaderSize;
  return objects + Bytes{0xFD, 0xFE} + U16(static_cast<uint16_t>(room)) + Bytes(room) + back;
}

class TableDamageTest : public PoolTest {
 protected:
  void SetUp() override {
    PoolTest::SetUp();
    ASSERT_EQ(whole_.size(), kSlot);
    ASSERT_EQ(whole_[kSlot - 76], kLowRefMark);
  }

  // Loads a stream into the slot that it fills.
  void Restore(const Bytes& stream) {
    MEMORYFREE(&target_.buffer);
    target_.buffer = MEMORYALLOC(kSlot);
    target_.size = kSlot;
    CopyIn(OpenBlock(target_.buffer), 0, stream.data(), kSlot);
  }

  void RunGetters(const Bytes& stream) {
    const std::set<int16_t> results = {0, -1, -2, -4, -100, -200, -997};
    Restore(stream);
    for (const Call& getter : kGetters) {
      const int16_t result = getter.run(&target_);
      ASSERT_TRUE(results.contains(result)) << getter.label << " " << result;
    }
    for (const Call& lookup : kLookups) lookup.run(&target_);
    ASSERT_EQ(BlockContents(target_.buffer, kSlot), stream);
  }

  // Every call on the stream ends with a result that it has, and leaves no block but the buffer's.
  void RunAll(const Bytes& stream) {
    ASSERT_NO_FATAL_FAILURE(RunGetters(stream));
    const std::set<int16_t> results = {0, -2, -4, -5, -6, -10, -100, -997, -998, -999};
    for (const Call& editor : kEditorsInPlace) {
      Restore(stream);
      const int16_t result = editor.run(&target_);
      ASSERT_TRUE(results.contains(result)) << editor.label << " " << result;
    }
    for (const Call& editor : kEditors) {
      Restore(stream);
      const int16_t result = editor.run(&target_);
      ASSERT_TRUE(results.contains(result)) << editor.label << " " << result;
      ASSERT_EQ(LiveBlocks(), target_.buffer != 0 ? 1u : 0u) << editor.label;
    }
  }

  const Bytes whole_ = WholeStream();
  Target target_;
};

TEST_F(TableDamageTest, TheWholeStreamServesEveryCall) {
  for (const Call& call : kGetters) {
    Restore(whole_);
    EXPECT_EQ(call.run(&target_), 0) << call.label;
  }
  const int16_t looked_up[] = {2, 5, 0, 0x0100};
  for (size_t i = 0; i < std::size(kLookups); ++i) {
    EXPECT_EQ(kLookups[i].run(&target_), looked_up[i]) << kLookups[i].label;
  }
  for (const auto& calls : {std::span<const Call>(kEditorsInPlace), std::span<const Call>(kEditors)}) {
    for (const Call& call : calls) {
      Restore(whole_);
      EXPECT_EQ(call.run(&target_), 0) << call.label;
      EXPECT_NE(BlockContents(target_.buffer, kSlot), whole_) << call.label;
    }
  }
}

TEST_F(TableDamageTest, EverySpoiltByteEndsEveryCall) {
  for (size_t at = 0; at < kSlot; ++at) {
    for (const uint8_t spoilt : Bytes{0x00, 0x01, 0x7F, 0x80, 0xFA, 0xFE, 0xFF}) {
      Bytes stream = whole_;
      stream[at] = spoilt;
      ASSERT_NO_FATAL_FAILURE(RunAll(stream)) << at << " " << int{spoilt};
    }
  }
}

TEST_F(TableDamageTest, AStreamThatIsCutEndsEveryCall) {
  for (size_t at = 0; at < kSlot; ++at) {
    for (const uint8_t rest : Bytes{0x00, 0xFF, 0x10}) {
      Bytes stream = whole_;
      std::fill(stream.begin() + static_cast<ptrdiff_t>(at), stream.end(), rest);
      ASSERT_NO_FATAL_FAILURE(RunAll(stream)) << at << " " << int{rest};
    }
  }
}

TEST_F(TableDamageTest, RandomDamageEndsEveryCall) {
  std::mt19937 random(20261120);
  for (int round = 0; round < 4000; ++round) {
    Bytes stream = whole_;
    for (auto changes = 1 + random() % 6; changes != 0; --changes) {
      stream[random() % kSlot] = static_cast<uint8_t>(random());
    }
    ASSERT_NO_FATAL_FAILURE(RunAll(stream)) << round;
  }
}

}  // namespace
}  // namespace tolvenar::testing
