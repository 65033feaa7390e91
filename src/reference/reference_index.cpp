// XLRGetNumItems, XLRGetIndices.
#include "reference/reference_index.h"

#include "reference/reference_array.h"
#include "reference/reference_directory.h"

namespace tolvenar {

namespace {

// What XLRGetIndices delivers: offsets in the buffer, which an entry has its number and its id at.
constexpr uint32_t kDeliveredNumber = kRefEntryNumber;
constexpr uint32_t kDeliveredId = kRefEntryId;
constexpr uint32_t kWidestElement = 8;

bool IsOfKind(const Block& block, uint32_t entry, int32_t kind) {
  return I16At(block, entry + kRefEntryKindWord) % int32_t{kKindNumberUnit} == kind;
}

// Calls visit() for each entry of the kind. False without a valid directory.
template <typename Visit>
bool VisitEntries(uint32_t buffer, int32_t kind, Visit visit) {
  uint32_t mark = 0;
  if (!FindDirectory(buffer, &mark)) return false;
  const Block block = OpenBlock(buffer);
  for (Walk walk = StartWalk(block, mark); !walk.ended && !IsChart(block, walk.at, kLowRefEnd); Step(&walk)) {
    if (IsChart(block, walk.at, kLowRefEntry) && IsOfKind(block, walk.at, kind)) visit();
  }
  return true;
}

}  // namespace

int16_t XLRGetNumItems(uint32_t buffer, int16_t kind) {
  uint32_t items = 0;
  if (buffer == 0 || !VisitEntries(buffer, kind, [&] { ++items; })) return kRefNoBuffer;
  return static_cast<int16_t>(items);
}

int16_t XLRGetIndices(uint32_t buffer, SAFEARRAY** first, SAFEARRAY** second, uint32_t count, uint32_t kind) {
  if (buffer == 0) return kRefNoBuffer;
  SAFEARRAY* arrays[] = {ArrayAt(first), ArrayAt(second)};
  for (SAFEARRAY* array : arrays) {
    const int16_t fits = CheckRefVector(array, 1, static_cast<int16_t>(count));
    if (fits != kRefArrayFits) return fits;
  }
  const Block block = OpenBlock(buffer);
  uint8_t number[kWidestElement];
  CopyOut(block, kDeliveredNumber, number, sizeof number);
  const uint16_t id = U16At(block, kDeliveredId);
  LONG i = 0;
  const bool listed = VisitEntries(buffer, static_cast<int32_t>(kind), [&] {
    ++i;
    platform::PutBytes(arrays[0], &i, number, sizeof number);
    platform::PutBytes(arrays[1], &i, &id, sizeof id);
  });
  return listed ? kRefDone : kRefNoBuffer;
}

}  // namespace tolvenar
