// Random saves, deletions and compactions of sets against a slow, plain model of the rules: a list of the stored records, in the order of
// the walk, and for each save a map of the items that it brings together.
#include <list>
#include <map>
#include <random>

#include "reference/number_fixture.h"
#include "reference/text_reference_fixture.h"

namespace tolvenar::testing {
namespace {

constexpr int kHighest = 16;  // index

// A stored record: items from `first` on. Of numbers the second values are 0.
struct Stored {
  int set;
  int first;
  bool run;
  Pairs items;

  int Last() const { return first + static_cast<int>(items.size()) - 1; }
};
using Records = std::list<Stored>;

struct Request {
  int set;  // with its sign
  int first;
  Pairs items;

  int Last() const { return first + static_cast<int>(items.size()) - 1; }
};

// What a save has brought together. `moving`: singles are in the range of lo and hi as they stand.
struct Gathered {
  int lo, hi;
  std::map<int, std::pair<uint32_t, uint32_t>> items;
};

bool Absorb(const Request& request, bool moving, const Stored& record, Gathered* g) {
  if (record.set != std::abs(request.set)) return false;
  if (record.run) {
    bool touches = false;  // some item of the run lies in the range or next to it
    for (int item = record.first; item <= record.Last(); ++item) touches |= item >= g->lo && item <= g->hi;
    touches |= record.Last() == g->lo - 1 || record.first == g->hi + 1;
    if (!touches) return false;
    for (int item = record.first; item <= record.Last(); ++item) {
      g->items[item] = record.items[static_cast<size_t>(item - record.first)];
    }
    g->lo = std::min(g->lo, record.first);
    g->hi = std::max(g->hi, record.Last());
    return true;
  }
  const int x = record.first;
  const int from = moving ? g->lo : request.first, to = moving ? g->hi : request.Last();
  bool goes = x >= from && x <= to;
  if (request.set > 0 && x == g->lo - 1) {
    g->items[--g->lo] = record.items[0];
    goes = true;
  }
  if (request.set > 0 && x == g->hi + 1) {
    g->items[g->hi] = record.items[0];
    ++g->lo;
    goes = true;
  }
  return goes;
}

// Merges a request into the records; what there is to store then comes out.
Gathered MergeInto(const Request& request, bool moving, Records* records) {
  Gathered g{request.first, request.Last(), {}};
  for (int item = request.first; item <= request.Last(); ++item) {
    g.items[item] = request.items[static_cast<size_t>(item - request.first)];
  }
  for (auto record = records->begin(); record != records->end();) {
    record = Absorb(request, moving, *record, &g) ? records->erase(record) : std::next(record);
  }
  return g;
}

Pairs ItemsOf(const Gathered& g, int first, int last) {
  Pairs items;
  for (int item = first; item <= last; ++item) items.push_back(g.items.at(item));
  return items;
}

void SaveNumbersInModel(const Request& request, Records* records) {
  const Gathered g = MergeInto(request, std::abs(request.set) == 2, records);
  if (request.set < 0 || g.lo > g.hi) return;
  records->push_back({request.set, g.lo, g.lo < g.hi, ItemsOf(g, g.lo, g.hi)});
}

// The records of a greedy pass, in the order of their writing.
std::vector<Stored> Pack(const Request& request, const Gathered& g) {
  std::vector<Stored> written;
  for (int i = g.lo; i <= g.hi; ++i) {
    const auto [a, b] = g.items.at(i);
    const bool pair = i < g.hi && b == 0 && g.items.at(i + 1).second == 0;
    const uint32_t step = pair ? g.items.at(i + 1).first - a : 0;
    if (step != 1 && step != 0x100 && step != 0x1000000) {
      written.push_back({request.set, i, false, {{a, b}}});
      continue;
    }
    ++i;  // the second item of the run
    const bool goes_on = i < g.hi && g.items.at(i + 1).first == a + 2 * step;
    if (goes_on && g.items.at(i + 1).second != 0) continue;  // dropped
    written.push_back({request.set, i - 1, true, {{a, 0}, {a + step, 0}}});
  }
  return written;
}

// The records in front of the graph's end are met before those that were written earlier in the same save.
void SaveReferencesInModel(const Request& request, Records* records) {
  const Gathered g = MergeInto(request, false, records);
  if (request.set < 0 || g.lo > g.hi) return;
  const std::vector<Stored> written = Pack(request, g);
  records->insert(records->end(), written.rbegin(), written.rend());
}

class Dice {
 public:
  explicit Dice(uint32_t seed) : random_(seed) {}
  int Roll(int from, int to) {
    return from + static_cast<int>(random_() % static_cast<uint32_t>(to - from + 1));
  }

  // A save or, one time in four, a deletion; values often one step apart and often without a second one.
  Request NextRequest(int sets, int longest) {
    Request request{Roll(1, sets) * (Roll(1, 4) == 1 ? -1 : 1), Roll(1, kHighest), {}};
    const int count = std::min(Roll(1, longest), kHighest - request.first + 1);
    const uint32_t steps[] = {1, 1, 0x100, 0x1000000, 5};
    const uint32_t step = steps[Roll(0, 4)];
    uint32_t value = static_cast<uint32_t>(Roll(1, 0x7FFF));
    for (int i = 0; i < count; ++i, value += Roll(1, 4) == 1 ? 1 : step) {
      request.items.emplace_back(value, Roll(1, 4) == 1 ? static_cast<uint32_t>(Roll(1, 9)) : 0);
    }
    return request;
  }

 private:
  std::mt19937 random_;
};

class NumberModelTest : public NumberSetsTest {
 protected:
  static Bytes BytesOf(const NumberSet& kind, const Records& records) {
    Bytes bytes;
    for (const Stored& record : records) {
      Values values;
      for (const auto& item : record.items) values.push_back(item.first);
      bytes = bytes + (record.run ? Run(kind, record.set, record.first, record.Last(), values)
                                  : Single(kind, record.set, record.first, values[0]));
    }
    return bytes;
  }

  void Compare(const NumberSet& kind, uint32_t seed) {
    Dice dice(seed);
    Records records;
    for (int step = 0; step < 60; ++step) {
      Request request = dice.NextRequest(2, 5);
      Values values;
      for (auto& item : request.items) {
        item = {item.first & (kind.width == 2 ? 0xFFFFu : 0xFFFFFFFFu), 0};
        values.push_back(item.first);
      }
      ASSERT_EQ(Save(kind, request.set, request.first, values, static_cast<int16_t>(request.Last())), 0);
      SaveNumbersInModel(request, &records);
      if (dice.Roll(1, 10) == 1) Compact();
      ASSERT_EQ(Hex(Content()), Hex(BytesOf(kind, records))) << kind.label << " " << seed << " " << step;
      ASSERT_EQ(LiveBlocks(), 1u);
    }
  }
};

TEST_P(NumberModelTest, IntsFollowTheRules) {
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    NewReference();
    ASSERT_NO_FATAL_FAILURE(Compare(kInts, seed));
  }
}

TEST_P(NumberModelTest, LongsFollowTheRules) {
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    NewReference();
    ASSERT_NO_FATAL_FAILURE(Compare(kLongs, seed));
  }
}

TEST_P(NumberModelTest, WhatComesBack_IsWhatTheModelHolds) {
  for (uint32_t seed = 101; seed <= 120; ++seed) {
    NewReference();
    Dice dice(seed);
    Records records;
    for (int step = 0; step < 20; ++step) {
      const Request request = dice.NextRequest(2, 5);
      Values values;
      for (const auto& item : request.items) values.push_back(item.first & 0xFFFF);
      ASSERT_EQ(Save(kInts, request.set, request.first, values), 0);
      SaveNumbersInModel(request, &records);
    }
    for (const uint16_t set : Unsigned{1, 2}) {
      Values expected(kHighest, 7);
      for (const Stored& record : records) {
        size_t place = static_cast<size_t>(record.first) - 1;
        for (const auto& item : record.items) {
          if (record.set == set) expected[place] = item.first & 0xFFFF;
          ++place;
        }
      }
      EXPECT_EQ(Got(kInts, set, kHighest), expected) << seed;
    }
  }
}

TOLVENAR_IN_BOTH_STATES(NumberModelTest);

class ReferenceModelTest : public TextReferenceTest {
 protected:
  static Bytes BytesOf(const Records& records) {
    Bytes bytes;
    for (const Stored& record : records) {
      const auto [a, b] = record.items[0];
      const int code = !record.run                          ? 0
                       : record.items[1].first - a == 1     ? 1
                       : record.items[1].first - a == 0x100 ? 2
                                                            : 3;
      bytes = bytes + (record.run ? Run(record.set, code, record.first, 2, a)
                                  : Single(record.set, record.first, a, b));
    }
    return bytes;
  }

  // Learns the handles of all slots, so that the blocks that a save leaves can be given back.
  void LearnHandles() {
    handles_.assign(1, buffer_);
    while (const uint32_t handle = MEMORYALLOC(1)) handles_.push_back(handle);
    GiveBack();
  }
  void GiveBack() {
    for (uint32_t handle : handles_) {
      if (handle != buffer_) MEMORYFREE(&handle);
    }
    ASSERT_EQ(LiveBlocks(), 1u);
    buffer_ =
        MEMORYREALLOC(buffer_, 100000);  // where it can grow: the record blocks take all the slots there are
  }

  // How many records a save writes at the most.
  static size_t Needed(const Request& request, Records records) {
    const Gathered g = MergeInto(request, false, &records);
    return request.set < 0 || g.lo > g.hi ? 0 : static_cast<size_t>((g.hi - g.lo) + 1);
  }

  void Compare(uint32_t seed, int* stored) {
    Dice dice(seed);
    Records records;
    LearnHandles();
    for (int step = 0; step < 80; ++step) {
      Request request = dice.NextRequest(4, 3);
      if (Needed(request, records) > 6) request.set = -request.set;
      ASSERT_EQ(Save(request.set, request.first, request.items), 0) << seed << " " << step;
      SaveReferencesInModel(request, &records);
      if (dice.Roll(1, 10) == 1) Compact();
      GiveBack();
      ASSERT_EQ(Hex(Content()), Hex(BytesOf(records))) << seed << " " << step;
      *stored += request.set > 0;
    }
  }

 private:
  std::vector<uint32_t> handles_;
};

TEST_P(ReferenceModelTest, TextReferencesFollowTheRules) {
  int stored = 0;
  for (uint32_t seed = 1; seed <= 25; ++seed) {
    NewReference();
    ASSERT_NO_FATAL_FAILURE(Compare(seed, &stored));
  }
  EXPECT_GT(stored, 25 * 40);  // most requests are saves that fit the pool
}

TOLVENAR_IN_BOTH_STATES(ReferenceModelTest);

}  // namespace
}  // namespace tolvenar::testing
