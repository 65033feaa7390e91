// Property values of a graph.
#include "reference/graph_properties.h"

#include "foundation/memory_pool.h"
#include "reference/graph_visit.h"
#include "reference/reference_array.h"

namespace tolvenar {

namespace {

constexpr LONG kItems = kGraphPropsCount;
constexpr uint32_t kItemBytes = 4;

// The chart test alone, on purpose: a RESUME passes it.
bool IsProperties(const Block& block, uint32_t at) {
  return IsChart(block, at, kLowGraphProps);
}

void GetItems(SAFEARRAY* array, uint32_t copy) {
  for (LONG item = 1; item <= kItems; ++item) {
    uint32_t value = 0;
    platform::GetBytes(array, &item, &value, sizeof value);
    PutU32(OpenBlock(copy), static_cast<uint32_t>(item - 1) * kItemBytes, value);
  }
}

void PutItems(SAFEARRAY* array, const Block& block, uint32_t at) {
  for (LONG item = 1; item <= kItems; ++item) {
    const uint32_t value =
        U32At(block, at + kGraphPropsValues + static_cast<uint32_t>(item - 1) * kItemBytes);
    platform::PutBytes(array, &item, &value, sizeof value);
  }
}

}  // namespace

int16_t XLRSaveProperties(uint32_t* buffer, uint32_t* size, SAFEARRAY** array, uint16_t graph) {
  if (!HasBuffer(buffer, size)) return kRefNoBuffer;
  NotedRecord place;
  const int16_t found = NoteLast(*buffer, graph, &place, IsProperties);
  if (found != kRefDone) return found;
  const int16_t fits = CheckRefVector(ArrayAt(array), 1, kItems);
  if (fits != kRefArrayFits) return fits;
  uint32_t copy = MEMORYALLOC(kItems * static_cast<LONG>(kItemBytes));
  if (copy == 0) return kRefNoCopy;
  GetItems(ArrayAt(array), copy);
  uint32_t record = NewGraphRecord(ReferenceType(kLowGraphProps), kGraphPropsSize);
  if (record != 0) {
    CopyIn(OpenBlock(record), kGraphPropsValues, BlockBytes(copy), kGraphPropsCount * kItemBytes);
  }
  const int16_t result =
      record == 0 ? kRefNoRecord
                  : PutObjectRecord(buffer, size, place.noted, place.end, &record, kGraphPropsSize);
  MEMORYFREE(&copy);
  return result;
}

int16_t XLRGetProperties(uint32_t buffer, SAFEARRAY** array, uint16_t graph) {
  SAFEARRAY* const values = ArrayAt(array);
  const int16_t fits = CheckRefVector(values, 1, kItems);
  if (fits != kRefArrayFits) return fits;
  if (buffer == 0) return kRefNoBuffer;
  return DeliverLast(buffer, graph, IsProperties,
                     [values](const Block& block, uint32_t at) { PutItems(values, block, at); });
}

}  // namespace tolvenar
