// Saves and gets of sets of numbers: one mechanism, by item width and record types.
#include "reference/number_sets.h"

#include "reference/graph_visit.h"
#include "reference/run_effort.h"
#include "reference/set_merge.h"

namespace tolvenar {

namespace {

constexpr int32_t kSets = 2;
constexpr int32_t kRequestedItem = 2;  // bytes per item in the request of a store, of longs too, on purpose

// What makes the difference between ints and longs.
struct NumberKind {
  const uint8_t (&singles)[kSets];  // low byte of the type of a single, by set
  uint8_t run;                      // of a run that is saved
  uint8_t run_got;                  // of a run that is given back
  uint32_t width;                   // bytes of an item
};

constexpr NumberKind kInts = {kLowSetInt, kLowSetIntRun, kLowSetIntRun, 2};
constexpr NumberKind kLongs = {kLowSetLong, kLowSetLongRun, kLowSetIntRun /* on purpose */, 4};

struct Save {
  const NumberKind& kind;
  SetRange range;
  SAFEARRAY* array;
  uint16_t graph;
};

bool IsSingle(const NumberKind& kind, int32_t set, const Block& block, uint32_t at) {
  return set >= 1 && set <= kSets && IsChart(block, at, kind.singles[set - 1]);
}

bool IsRun(uint8_t low, int32_t set, const Block& block, uint32_t at) {
  return IsChart(block, at, low) && U8At(block, at + kSetRunSet) == set;
}

// Copies values of the stream into the store, from `item` on. What would lie outside the store is left out as a whole.
void TakeValues(const SetStore& store, int32_t item, int32_t count, const Block& block, uint32_t at) {
  if (count < 1) return;
  const uint32_t bytes = static_cast<uint32_t>(count) * store.width;
  if (uint8_t* to = At(store.block, store.PlaceOf(item), bytes)) CopyOut(block, at, to, bytes);
}

// Merges the record at `at` if it belongs to the set and touches. In the look nothing changes but the bounds.
void MergeRecord(const Save& save, MergePass pass, MergeBounds* bounds, const SetStore& store,
                 const Block& block, uint32_t at) {
  const int32_t set = save.range.Number();
  bool goes = false;
  if (IsSingle(save.kind, set, block, at)) {
    const int32_t x = I16At(block, at + kSetItem);
    // The range of set 1 is the one that was given, that of set 2 follows the bounds, on purpose.
    const bool in_range =
        set == 1 ? save.range.first <= x && x <= save.range.last : bounds->lo <= x && x <= bounds->hi;
    goes = bounds->MergeSingle(x, in_range, [&](int32_t item) {
      if (pass == MergePass::kMerge) TakeValues(store, item, 1, block, at + kSetValue);
    });
  } else if (IsRun(save.kind.run, set, block, at)) {
    const int32_t f = I16At(block, at + kSetRunFirst);
    const int32_t l = I16At(block, at + kSetRunLast);
    goes = bounds->MergeRun(f, l);
    if (goes && pass == MergePass::kMerge) TakeValues(store, f, l - f + 1, block, at + kSetRunValues);
  }
  if (goes && pass == MergePass::kMerge) MarkRecordSlack(block, at);
}

int16_t Merge(const Save& save, uint32_t buffer, MergePass pass, MergeBounds* bounds, const SetStore& store,
              uint32_t* end) {
  return VisitGraph(buffer, save.graph, end, [&](const Block& block, uint32_t at) {
    MergeRecord(save, pass, bounds, store, block, at);
  });
}

int32_t RecordSize(const NumberKind& kind, const MergeBounds& bounds) {
  const int32_t items = bounds.hi - bounds.lo + 1;
  const uint32_t header = items == 1 ? kSetValue : kSetRunValues;
  return static_cast<int32_t>(header) + items * static_cast<int32_t>(kind.width);
}

// Makes the record of items lo to hi in a pool block of `count` bytes; 0 when there is none.
uint32_t MakeRecord(const Save& save, const MergeBounds& bounds, const SetStore& store, uint32_t count) {
  const bool single = bounds.lo == bounds.hi;
  const uint8_t low = single ? save.kind.singles[save.range.Number() - 1] : save.kind.run;
  const uint32_t record = NewGraphRecord(ReferenceType(low), count);
  const Block block = OpenBlock(record);
  if (single) {
    PutU16(block, kSetItem, static_cast<uint16_t>(bounds.lo));
  } else {
    PutU8(block, kSetRunSet, static_cast<uint8_t>(save.range.Number()));
    PutU16(block, kSetRunFirst, static_cast<uint16_t>(bounds.lo));
    PutU16(block, kSetRunLast, static_cast<uint16_t>(bounds.hi));
  }
  const uint32_t values = single ? kSetValue : kSetRunValues;
  if (uint8_t* to = At(block, values, count - values)) {
    CopyOut(store.block, store.PlaceOf(bounds.lo), to, count - values);
  }
  return record;
}

// Merges what is stored, and puts the record of what came of it at the graph's end. Room for all of it is there. *working is released.
int16_t MergeAndPut(const Save& save, uint32_t* buffer, uint32_t* size, const MergeBounds& looked,
                    uint32_t* working) {
  const SetStore store = FillStore(*working, looked.lowest, save.kind.width, save.array, save.range);
  MergeBounds bounds(save.range);
  uint32_t end = 0;
  Merge(save, *buffer, MergePass::kMerge, &bounds, store, &end);
  uint32_t record = 0;
  uint32_t count = 0;
  const bool stores = save.range.Stores() && bounds.lo <= bounds.hi;
  if (stores) {
    count = static_cast<uint32_t>(RecordSize(save.kind, bounds));
    record = MakeRecord(save, bounds, store, count);
  }
  MEMORYFREE(working);
  if (!stores) return kRefDone;
  if (record == 0) return kRefNoRecord;
  return PutObjectRecord(buffer, size, kNoRecord, end, &record, count);
}

// What the look forbids, with everything as it was; else 0.
int16_t CheckLook(const Save& save, const MergeBounds& looked, uint32_t* working) {
  if (!save.range.Stores()) return kRefDone;
  if (RecordSize(save.kind, looked) > kLongestRefRecord) return kRefNotAppended;
  return MakeRoom(working, looked, save.kind.width) ? kRefDone : kSetNoStore;
}

int16_t SaveSet(const Save& save, uint32_t* buffer, uint32_t* size) {
  int16_t result = CheckSetRange(save.range, 1, kSets);
  if (result == 0) result = CheckRefVector(save.array, save.range.first, save.range.last);
  if (result != 0) return result;
  uint32_t working = MEMORYALLOC(save.range.max * kRequestedItem);
  if (working == 0) return kSetNoStore;
  MergeBounds looked(save.range);
  result = HasBuffer(buffer, size) ? Merge(save, *buffer, MergePass::kLook, &looked, SetStore{}, nullptr)
                                   : kSetNoBuffer;
  if (result == kRefHeadNotMet) return result;  // the store stays allocated, on purpose
  if (result == kRefDone) result = CheckLook(save, looked, &working);
  if (result != kRefDone) {
    MEMORYFREE(&working);
    return result;
  }
  return MergeAndPut(save, buffer, size, looked, &working);
}

// Puts the items of a run.
void PutRun(const NumberKind& kind, int16_t n, SAFEARRAY* array, RunEffort* effort, const Block& block,
            uint32_t at) {
  const int32_t f = I16At(block, at + kSetRunFirst);
  const RunItems items = ItemsToPut(effort, f, I16At(block, at + kSetRunLast), n);
  for (LONG item = items.first; item <= items.last; ++item) {
    uint8_t value[sizeof(uint32_t)];
    CopyOut(block, at + kSetRunValues + static_cast<uint32_t>(item - f) * kind.width, value, kind.width);
    platform::PutBytes(array, &item, value, kind.width);
  }
}

int16_t GetSet(const NumberKind& kind, uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY* array,
               uint16_t set) {
  const int16_t fits = CheckRefVector(array, 1, n);
  if (fits != kRefArrayFits) return fits;
  if (buffer == 0) return kRefNoBuffer;
  RunEffort effort;
  return VisitGraph(buffer, graph, nullptr, [&](const Block& block, uint32_t at) {
    if (IsSingle(kind, set, block, at)) {
      LONG item = I16At(block, at + kSetItem);
      uint8_t value[sizeof(uint32_t)];
      CopyOut(block, at + kSetValue, value, kind.width);
      platform::PutBytes(array, &item, value, kind.width);
    } else if (IsRun(kind.run_got, set, block, at)) {
      PutRun(kind, n, array, &effort, block, at);
    }
  });
}

}  // namespace

int16_t XLRSaveSetInt(uint32_t* buffer, uint32_t* size, uint16_t graph, int16_t first, int16_t last,
                      int16_t max, SAFEARRAY** array, int16_t set) {
  return SaveSet({kInts, {first, last, max, set}, ArrayAt(array), graph}, buffer, size);
}

int16_t XLRSaveSetLong(uint32_t* buffer, uint32_t* size, uint16_t graph, int16_t first, int16_t last,
                       int16_t max, SAFEARRAY** array, int16_t set) {
  return SaveSet({kLongs, {first, last, max, set}, ArrayAt(array), graph}, buffer, size);
}

int16_t XLRGetSetInt(uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY** array, uint16_t set) {
  return GetSet(kInts, buffer, graph, n, ArrayAt(array), set);
}

int16_t XLRGetSetLong(uint32_t buffer, uint16_t graph, int16_t n, SAFEARRAY** array, uint16_t set) {
  return GetSet(kLongs, buffer, graph, n, ArrayAt(array), set);
}

}  // namespace tolvenar
