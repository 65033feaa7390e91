// Saves and gets of text references.
#include "reference/text_references.h"

#include <algorithm>
#include <iterator>

#include "reference/graph_visit.h"
#include "reference/run_effort.h"
#include "reference/text_reference_runs.h"

namespace tolvenar {

namespace {

constexpr int32_t kSets = 4;
constexpr int32_t kRequestedItem = 2;  // bytes per item in the requests of the stores, on purpose
constexpr uint32_t kItemBytes = 4;
// Items that the stores keep, from lo on: a pass gets no further, since each of its records takes one of the pool's blocks for two items at the
// most, and looks one item ahead. Any slot has room for them, whatever the caller's maximum is and however far stored runs reach.
constexpr int32_t kKeptItems = 2 * kSlotCount + 1;
static_assert(std::size(kLowSetText) == kSets);

struct Save {
  SetRange range;
  SAFEARRAY* firsts;
  SAFEARRAY* seconds;
  uint16_t graph;
};

// The two working stores: their blocks, and opened.
struct Stores {
  uint32_t first_block = 0;
  uint32_t second_block = 0;
  SetStore first;
  SetStore second;
};

void Release(Stores* stores) {
  MEMORYFREE(&stores->first_block);
  MEMORYFREE(&stores->second_block);
}

void PutPair(const Stores& stores, int32_t item, uint32_t first, uint32_t second) {
  PutU32(stores.first.block, stores.first.PlaceOf(item), first);
  PutU32(stores.second.block, stores.second.PlaceOf(item), second);
}

bool IsOfSet(uint8_t low, int32_t set, const Block& block, uint32_t at) {
  return IsChart(block, at, low) && U8At(block, at + kTextRefSet) == set;
}

// A run as its record has it: items f to l, and no item at all with l below f.
struct Run {
  int32_t f;
  int32_t l;
  uint32_t base;
  uint32_t step;

  uint32_t ValueOf(int32_t item) const {
    return base + (static_cast<uint32_t>(item) - static_cast<uint32_t>(f)) * step;
  }
};

Run RunAt(const Block& block, uint32_t at) {
  const int32_t f = I16At(block, at + kTextRefRunFirst);
  const int32_t n = I16At(block, at + kTextRefRunCount);
  return {f, f + n - 1, U32At(block, at + kTextRefRunBase), TextRefStep(U8At(block, at + kTextRefRunStep))};
}

// Puts the items of a run that the stores keep.
void PutRun(const Stores& stores, const Run& run) {
  const int32_t first = std::max(run.f, stores.first.lowest);
  const int32_t last = std::min(run.l, stores.first.lowest + kKeptItems - 1);
  for (int32_t item = first; item <= last; ++item) PutPair(stores, item, run.ValueOf(item), 0);
}

bool LiesInRange(const SetRange& range, int32_t item) {
  return range.first <= item && item <= range.last;
}

// A text of the set, which a reference at its index replaces.
bool IsReplacedText(const SetRange& range, const Block& block, uint32_t at) {
  const int32_t set = range.Number();
  return set >= 1 && IsChart(block, at, kLowSetText[set - 1]) &&
         LiesInRange(range, I16At(block, at + kSetItem));
}

// Merges the record at `at` if it belongs to the set and touches. In the look nothing changes but the bounds.
void MergeRecord(const Save& save, MergePass pass, MergeBounds* bounds, const Stores& stores,
                 const Block& block, uint32_t at) {
  const int32_t set = save.range.Number();
  bool goes = IsReplacedText(save.range, block, at);
  if (IsOfSet(kLowTextRef, set, block, at)) {
    const int32_t x = I16At(block, at + kTextRefItem);
    goes = bounds->MergeSingle(x, LiesInRange(save.range, x), [&](int32_t item) {
      if (pass == MergePass::kLook) return;
      PutPair(stores, item, U32At(block, at + kTextRefFirst), U32At(block, at + kTextRefSecond));
    });
  } else if (IsOfSet(kLowTextRefRun, set, block, at)) {
    const Run run = RunAt(block, at);
    goes = bounds->MergeRun(run.f, run.l);
    if (goes && pass == MergePass::kMerge) PutRun(stores, run);
  }
  if (goes && pass == MergePass::kMerge) MarkRecordSlack(block, at);
}

int16_t Merge(const Save& save, uint32_t buffer, MergePass pass, MergeBounds* bounds, const Stores& stores,
              uint32_t* end) {
  return VisitGraph(buffer, save.graph, end, [&](const Block& block, uint32_t at) {
    MergeRecord(save, pass, bounds, stores, block, at);
  });
}

// Tests the shape of both arrays: the dimensions of both come before the bounds of either.
int16_t CheckPair(SAFEARRAY* firsts, SAFEARRAY* seconds, int32_t first, int32_t last) {
  const int16_t one = CheckRefVector(firsts, first, last);
  const int16_t other = CheckRefVector(seconds, first, last);
  return one == kRefWrongDimensions || other == kRefArrayFits ? one : other;
}

int16_t CheckSave(const Save& save) {
  const int16_t result = CheckSetRange(save.range, 0, kSets);
  return result != 0 ? result : CheckPair(save.firsts, save.seconds, save.range.first, save.range.last);
}

// Takes the two blocks. False when there is none; at the second one's failure the first stays allocated, on purpose.
bool TakeStores(const SetRange& range, Stores* stores) {
  stores->first_block = MEMORYALLOC(range.max * kRequestedItem);
  if (stores->first_block == 0) return false;
  stores->second_block = MEMORYALLOC(range.max * kRequestedItem);
  return stores->second_block != 0;
}

// Merges what is stored, and writes what came of it at the graph's end. The stores may be released by then.
int16_t MergeAndPut(const Save& save, uint32_t* buffer, uint32_t* size, const MergeBounds& looked,
                    Stores* stores) {
  stores->first = FillStore(stores->first_block, looked.lo, kItemBytes, save.firsts, save.range);
  stores->second = FillStore(stores->second_block, looked.lo, kItemBytes, save.seconds, save.range);
  MergeBounds bounds(save.range);
  uint32_t end = 0;
  Merge(save, *buffer, MergePass::kMerge, &bounds, *stores, &end);
  if (!save.range.Stores()) return kRefDone;
  const TextRefItems items = {bounds.lo, bounds.hi, stores->first, stores->second};
  const uint8_t set = static_cast<uint8_t>(save.range.set);
  if (items.lo != items.hi) return PutTextRefItems(buffer, size, end, set, items);
  uint32_t record = NewTextRef(set, items, items.lo);
  Release(stores);  // the buffer may want their slots
  return record == 0 ? kRefNoRecord : PutObjectRecord(buffer, size, kNoRecord, end, &record, kTextRefSize);
}

int16_t SaveItems(const Save& save, uint32_t* buffer, uint32_t* size) {
  const int16_t checked = CheckSave(save);
  if (checked != 0) return checked;
  Stores stores;
  if (!TakeStores(save.range, &stores)) return kSetNoStore;
  MergeBounds looked(save.range);
  int16_t result = HasBuffer(buffer, size) ? Merge(save, *buffer, MergePass::kLook, &looked, stores, nullptr)
                                           : kSetNoBuffer;
  if (result == kRefHeadNotMet) return result;  // the stores stay allocated, on purpose
  if (result == kRefDone) result = MergeAndPut(save, buffer, size, looked, &stores);
  Release(&stores);
  return result;
}

void PutItem(SAFEARRAY* array, LONG item, uint32_t value) {
  platform::PutBytes(array, &item, &value, sizeof value);
}

}  // namespace

int16_t XLRSaveTextRef(uint32_t* buffer, uint32_t* size, uint16_t graph, int16_t first, int16_t last,
                       int16_t max, SAFEARRAY** firsts, SAFEARRAY** seconds, int16_t set) {
  return SaveItems({{first, last, max, set}, ArrayAt(firsts), ArrayAt(seconds), graph}, buffer, size);
}

int16_t XLRGetTextRef(uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY** firsts, SAFEARRAY** seconds,
                      uint16_t set) {
  SAFEARRAY* const a = ArrayAt(firsts);
  SAFEARRAY* const b = ArrayAt(seconds);
  const int16_t fits = CheckPair(a, b, 1, n);
  if (fits != kRefArrayFits) return fits;
  if (buffer == 0) return kRefNoBuffer;
  RunEffort effort;
  return VisitGraph(buffer, graph, nullptr, [&](const Block& block, uint32_t at) {
    if (IsOfSet(kLowTextRef, set, block, at)) {
      PutItem(a, I16At(block, at + kTextRefItem), U32At(block, at + kTextRefFirst));
      PutItem(b, I16At(block, at + kTextRefItem), U32At(block, at + kTextRefSecond));
    } else if (IsOfSet(kLowTextRefRun, set, block, at)) {
      const Run run = RunAt(block, at);
      const RunItems items = ItemsToPut(&effort, run.f, run.l, n);
      for (int32_t item = items.first; item <= items.last; ++item) {
        PutItem(a, item, run.ValueOf(item));
        PutItem(b, item, 0);
      }
    }
  });
}

}  // namespace tolvenar
