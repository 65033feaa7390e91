// Random savings of slots and sets of two graphs: all that the getters give stays the same when the reference is compacted, when it is saved
// to a file and read again, and for the slots it is what was saved last.
#include <algorithm>
#include <map>
#include <random>

#include "reference/delete_property.h"
#include "reference/graph_flags.h"
#include "reference/graph_properties.h"
#include "reference/graph_slots.h"
#include "reference/number_fixture.h"
#include "reference/reference_file.h"
#include "reference/text_references.h"
#include "support/temp_file.h"
#include "support/workbook_file.h"

namespace tolvenar::testing {
namespace {

constexpr int16_t kItems = 12;
constexpr int kProperties = 128;

// What a getter gave, by the name of the slot.
using Snapshot = std::map<std::string, std::string>;

std::string Elements(TestArray* array, LONG n) {
  std::string all;
  for (LONG item = 1; item <= n; ++item) all += std::to_string(array->NumberAt(item)) + " ";
  return all;
}

void Fill(TestArray* array, LONG from, LONG to, const std::vector<int32_t>& values) {
  for (LONG item = from; item <= to; ++item)
    array->SetNumber(item, 0, values[static_cast<size_t>(item - from)]);
}

class SlotSurvivalTest : public ReferenceTest {
 protected:
  int Roll(int from, int to) {
    const uint32_t values = static_cast<uint32_t>(to) - static_cast<uint32_t>(from) + 1;
    return from + static_cast<int>(random_() % values);
  }
  static std::string Name(const char* family, int graph, int slot, int item = 0) {
    return std::string(family) + std::to_string(graph) + " " + std::to_string(slot) + " " +
           std::to_string(item);
  }
  std::string AnyText() {
    return std::string(static_cast<size_t>(Roll(0, 20)), static_cast<char>(Roll('a', 'z')));
  }
  std::vector<int32_t> AnyValues(int count, int most) {
    std::vector<int32_t> values;
    for (int i = 0; i < count; ++i) values.push_back(Roll(0, most));
    return values;
  }

  void Restart(uint32_t seed) {
    MEMORYFREEALL();
    random_.seed(seed);
    saved_.clear();
    Load(kNewStream);
    ASSERT_EQ(CreateGraph(1), 0);
    ASSERT_EQ(CreateTable(1), 0);
    ASSERT_EQ(CreateGraph(2), 0);
  }
  void Compact() { ASSERT_EQ(XLRefreshReference(&buffer_, &size_), 0); }

  void SaveTexts(uint16_t graph) {
    const uint16_t slot = static_cast<uint16_t>(Roll(1, 7)), set = static_cast<uint16_t>(Roll(1, 4));
    const uint16_t item = static_cast<uint16_t>(Roll(1, kItems));
    const std::string one = AnyText(), other = AnyText();
    ASSERT_EQ(XLRSaveText(&buffer_, &size_, graph, one.c_str(), slot), 0);
    ASSERT_EQ(XLRSaveSetText(&buffer_, &size_, graph, item, other.c_str(), set), 0);
    saved_[Name("text", graph, slot)] = one;
    saved_[Name("set text", graph, set, item)] = other;
  }
  void SaveDoubleAndFont(uint16_t graph) {
    const int16_t slot = static_cast<int16_t>(Roll(1, 3));
    const uint16_t font = static_cast<uint16_t>(Roll(1, 5)), value = static_cast<uint16_t>(Roll(0, 0xFFFF));
    ASSERT_EQ(XLRSaveDouble(&buffer_, &size_, graph, value, value * 3u, slot), 0);
    ASSERT_EQ(XLRSaveFont(&buffer_, &size_, graph, 1, value, 3, 4, font), 0);
    saved_[Name("double", graph, slot)] = std::to_string(value) + " " + std::to_string(value * 3u);
    saved_[Name("font", graph, font)] = "1 " + std::to_string(value) + " 3 4";
  }
  // A RESUME in the graph passes for properties: the reference is compacted first.
  void SaveProperties(uint16_t graph) {
    TestArray array(VT_I4, 1, kProperties);
    Fill(&array, 1, kProperties, AnyValues(kProperties, 0x7FFFFFFF));
    Compact();
    ASSERT_EQ(XLRSaveProperties(&buffer_, &size_, array.Ref(), graph), 0);
    saved_[Name("properties", graph, 0)] = Elements(&array, kProperties);
  }
  void SaveFlags(uint16_t graph) {
    const int16_t set = static_cast<int16_t>(Roll(1, 3));
    TestArray array(VT_I2, 1, kItems);
    Fill(&array, 1, kItems, AnyValues(kItems, 1));
    ASSERT_EQ(XLRSaveSelVis(&buffer_, &size_, array.Ref(), graph, kItems, set), 0);
    saved_[Name("flags", graph, set)] = Elements(&array, kItems);
  }
  // Sets: what they hold by their rules is no matter here.
  void SaveNumbers(uint16_t graph) {
    const int16_t first = static_cast<int16_t>(Roll(1, kItems));
    const int16_t last = static_cast<int16_t>(std::min<int>(kItems, first + Roll(0, 3)));
    TestArray array(VT_I4, first, last);
    Fill(&array, first, last, AnyValues(last - first + 1, 0x7FFF));
    const int16_t set = static_cast<int16_t>(Roll(1, 2) * (Roll(1, 4) == 1 ? -1 : 1));
    const testing::SaveNumbers save = Roll(1, 2) == 1 ? XLRSaveSetInt : XLRSaveSetLong;
    ASSERT_EQ(save(&buffer_, &size_, graph, first, last, kItems, array.Ref(), set), 0);
  }
  // Singles at odd items, which never touch one another: a save of several would leave blocks behind.
  void SaveReference(uint16_t graph) {
    const int16_t item = static_cast<int16_t>(2 * Roll(1, kItems / 2) - 1),
                  set = static_cast<int16_t>(Roll(1, 4));
    if (Roll(1, 3) == 1) {  // a run that the pass would write
      const Bytes fields = Bytes{static_cast<uint8_t>(set), static_cast<uint8_t>(Roll(1, 3))};
      const Bytes run =
          fields + U16(static_cast<uint16_t>(item)) + U16(2) + U32(static_cast<uint32_t>(random_()));
      ASSERT_EQ(Put(graph, kKindGraph, GraphRecord(0xD1, run)), 0);
      return;
    }
    TestArray a(VT_I4, item, item), b(VT_I4, item, item);
    a.SetNumber(item, 0, Roll(0, 0x7FFFFFFF));
    b.SetNumber(item, 0, Roll(1, 99));
    ASSERT_EQ(XLRSaveTextRef(&buffer_, &size_, graph, item, item, kItems, a.Ref(), b.Ref(),
                             static_cast<int16_t>(-set)),
              0);
    ASSERT_EQ(XLRSaveTextRef(&buffer_, &size_, graph, item, item, kItems, a.Ref(), b.Ref(), set), 0);
    saved_.erase(Name("set text", graph, set, item));
  }
  void SaveAny() {
    const uint16_t graph = static_cast<uint16_t>(Roll(1, 2));
    switch (Roll(1, 8)) {
      case 1:
        return SaveDoubleAndFont(graph);
      case 2:
        return SaveProperties(graph);
      case 3:
        return SaveFlags(graph);
      case 4:
        return SaveNumbers(graph);
      case 5:
        return SaveReference(graph);
      case 6:
        return Compact();
      default:
        return SaveTexts(graph);
    }
  }

  void TakeTexts(uint16_t graph, Snapshot* taken) {
    for (uint16_t slot = 1; slot <= 7; ++slot) {
      BSTR text = nullptr;
      ASSERT_EQ(XLRGetText(buffer_, graph, &text, slot), 0);
      if (text != nullptr) (*taken)[Name("text", graph, slot)] = BytesOf(text);
      SysFreeString(text);
    }
    for (uint16_t set = 1; set <= 4; ++set) {
      for (uint16_t item = 1; item <= kItems; ++item) {
        BSTR text = nullptr;
        ASSERT_EQ(XLRGetSetText(buffer_, graph, item, &text, set), 0);
        if (text != nullptr) (*taken)[Name("set text", graph, set, item)] = BytesOf(text);
        SysFreeString(text);
      }
    }
  }
  void TakeValues(uint16_t graph, Snapshot* taken) {
    for (uint16_t slot = 1; slot <= 5; ++slot) {
      uint32_t halves[2] = {77, 77};
      uint16_t font[4] = {};
      ASSERT_EQ(XLRGetDouble(buffer_, graph, halves, slot), 0);
      ASSERT_EQ(XLRGetFont(buffer_, graph, font, font + 1, font + 2, font + 3, slot), 0);
      if (halves[0] != 77 || halves[1] != 77) {
        (*taken)[Name("double", graph, slot)] = std::to_string(halves[0]) + " " + std::to_string(halves[1]);
      }
      if (font[0] == 0) continue;
      std::string& all = (*taken)[Name("font", graph, slot)];
      all = std::to_string(font[0]);
      for (int i = 1; i < 4; ++i) all += " " + std::to_string(font[i]);
    }
  }
  void TakeFlags(uint16_t graph, Snapshot* taken) {
    for (uint16_t set = 1; set <= 3; ++set) {
      TestArray array(VT_I2, 1, kItems);
      array.SetNumber(1, 0, 7);
      ASSERT_EQ(XLRGetSelVis(buffer_, array.Ref(), graph, kItems, set), 0);
      if (array.NumberAt(1) != 7) (*taken)[Name("flags", graph, set)] = Elements(&array, kItems);
    }
  }
  void TakeProperties(uint16_t graph, Snapshot* taken) {
    TestArray array(VT_I4, 1, kProperties);
    array.SetNumber(1, 0, -1);
    ASSERT_EQ(XLRGetProperties(buffer_, array.Ref(), graph), 0);
    if (array.NumberAt(1) != 0xFFFFFFFF)
      (*taken)[Name("properties", graph, 0)] = Elements(&array, kProperties);
  }
  void TakeSets(uint16_t graph, Snapshot* taken) {
    for (uint16_t set = 1; set <= 4; ++set) {
      TestArray ints(VT_I2, 1, kItems), longs(VT_I4, 1, kItems), a(VT_I4, 1, kItems), b(VT_I4, 1, kItems);
      ASSERT_EQ(XLRGetSetInt(buffer_, graph, kItems, ints.Ref(), set), 0);
      ASSERT_EQ(XLRGetTextRef(buffer_, graph, kItems, a.Ref(), b.Ref(), set), 0);
      (*taken)[Name("ints", graph, set)] = Elements(&ints, kItems);
      (*taken)[Name("references", graph, set)] = Elements(&a, kItems) + "/ " + Elements(&b, kItems);
    }
  }
  // All that the getters give. Properties only where no RESUME can pass for them; longs not, which are read from runs of ints across their end.
  Snapshot Take(bool compacted, bool sets) {
    Snapshot taken;
    for (const uint16_t graph : Unsigned{1, 2}) {
      TakeTexts(graph, &taken);
      TakeValues(graph, &taken);
      TakeFlags(graph, &taken);
      if (compacted) TakeProperties(graph, &taken);
      if (sets) TakeSets(graph, &taken);
    }
    return taken;
  }
  Snapshot Saved(bool properties) const {
    Snapshot saved = saved_;
    if (!properties)
      std::erase_if(saved, [](const auto& entry) { return entry.first.starts_with("properties"); });
    return saved;
  }

  void ThroughAFile(const std::string& path) {
    ASSERT_TRUE(WriteWorkbook(path, "Contents", Bytes{}));
    ASSERT_EQ(XLSaveReference(path.c_str(), &buffer_, &size_, 4), 0);
    MEMORYFREEALL();
    ASSERT_EQ(XLReadReference(path.c_str(), &buffer_, &size_, 4), 0);
  }

  Snapshot saved_;
  std::mt19937 random_;
};

TEST_F(SlotSurvivalTest, WhatIsSaved_ComesBackCompactedAndFromAFile) {
  TempFolder folder;
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    ASSERT_NO_FATAL_FAILURE(Restart(seed));
    for (int step = Roll(5, 60); step > 0; --step) ASSERT_NO_FATAL_FAILURE(SaveAny()) << seed;
    ASSERT_EQ(Take(false, false), Saved(false)) << seed;
    const Snapshot edited = Take(false, true);
    Compact();
    ASSERT_EQ(Take(true, false), Saved(true)) << seed;
    ASSERT_EQ(LiveBlocks(), 1u);
    const Snapshot compacted = Take(true, true);
    for (const auto& [name, value] : edited) ASSERT_EQ(compacted.at(name), value) << seed << " " << name;
    ASSERT_NO_FATAL_FAILURE(ThroughAFile(folder.File("references.ref")));
    ASSERT_EQ(Take(true, true), compacted) << seed;
    ASSERT_EQ(LiveBlocks(), 1u);
  }
}

TEST_F(SlotSurvivalTest, EditsGoOnInAReferenceThatWasRead) {
  TempFolder folder;
  for (uint32_t seed = 101; seed <= 115; ++seed) {
    ASSERT_NO_FATAL_FAILURE(Restart(seed));
    for (int round = 0; round < 4; ++round) {
      for (int step = 0; step < 15; ++step) ASSERT_NO_FATAL_FAILURE(SaveAny()) << seed;
      ASSERT_EQ(Take(false, false), Saved(false)) << seed;
      ASSERT_NO_FATAL_FAILURE(ThroughAFile(folder.File("references.ref")));
      ASSERT_EQ(Take(true, false), Saved(true)) << seed;
    }
  }
}

}  // namespace
}  // namespace tolvenar::testing
