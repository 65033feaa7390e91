// Flag vectors of a graph.
#include "reference/graph_flags.h"

#include <cstdlib>

#include "foundation/memory_pool.h"
#include "reference/graph_visit.h"
#include "reference/reference_array.h"

namespace tolvenar {

namespace {

constexpr uint32_t kFlagBytes = 2;
constexpr uint32_t kBits = 8;

bool IsFlags(const Block& block, uint32_t at, int32_t set) {
  return IsChart(block, at, kLowSelVis) && U8At(block, at + kSelVisSet) == set;
}

// A block with the n flags of the array; 0 when there is none.
uint32_t CopyFlags(SAFEARRAY* array, int16_t n) {
  const uint32_t copy = MEMORYALLOC(n * static_cast<int32_t>(kFlagBytes));
  const Block flags = OpenBlock(copy);
  for (LONG item = 1; item <= n && copy != 0; ++item) {
    uint16_t flag = 0;
    platform::GetBytes(array, &item, &flag, sizeof flag);
    PutU16(flags, static_cast<uint32_t>(item - 1) * kFlagBytes, flag);
  }
  return copy;
}

// Items 8j to 8j + 7; those from n on are 0.
uint8_t PackedByte(const Block& flags, uint32_t j, uint32_t n) {
  uint16_t eight[kBits] = {};
  for (uint32_t k = 0; k < kBits && j * kBits + k < n; ++k) {
    eight[k] = U16At(flags, (j * kBits + k) * kFlagBytes);
  }
  return PackBits(eight);
}

uint32_t MakeRecord(uint32_t copy, uint16_t n, int16_t set, uint32_t* count) {
  const uint32_t last = n / kBits;  // with n a multiple of 8 a spare byte, on purpose
  *count = kSelVisFlags + last + 1;
  const uint32_t record = NewGraphRecord(ReferenceType(kLowSelVis), *count);
  const Block block = OpenBlock(record);
  PutU8(block, kSelVisSet, static_cast<uint8_t>(set));
  PutU16(block, kSelVisCount, n);
  for (uint32_t j = 0; j <= last; ++j) PutU8(block, kSelVisFlags + j, PackedByte(OpenBlock(copy), j, n));
  return record;
}

void PutFlags(SAFEARRAY* array, int16_t n, const Block& block, uint32_t at) {
  for (int16_t i = 0; i < n; ++i) {
    const uint32_t bit = static_cast<uint32_t>(i);
    const uint16_t flag = ExtractBit(U8At(block, at + kSelVisFlags + bit / kBits), bit % kBits);
    LONG index = i + 1;
    platform::PutBytes(array, &index, &flag, sizeof flag);
  }
}

}  // namespace

uint8_t PackBits(const uint16_t* flags) {
  uint32_t byte = 0;
  for (uint32_t k = 0; k < kBits; ++k) byte |= (flags[k] != 0 ? 1u : 0u) << k;
  return static_cast<uint8_t>(byte);
}

uint16_t ExtractBit(uint8_t byte, uint32_t k) {
  return static_cast<uint16_t>((byte >> k) & 1u);
}

int16_t XLRSaveSelVis(uint32_t* buffer, uint32_t* size, SAFEARRAY** array, uint16_t graph, int16_t n,
                      int16_t set) {
  if (!HasBuffer(buffer, size)) return kRefNoBuffer;
  NotedRecord place;
  const int32_t number = std::abs(int32_t{set});
  const int16_t found = NoteLast(*buffer, graph, &place, [number](const Block& block, uint32_t at) {
    return IsFlags(block, at, number);
  });
  if (found != kRefDone) return found;
  const int16_t fits = CheckRefVector(ArrayAt(array), 1, n);
  if (fits != kRefArrayFits) return fits;
  uint32_t copy = CopyFlags(ArrayAt(array), n);
  if (copy == 0) return kRefNoCopy;
  int16_t result = kRefDone;
  if (set > 0) {
    uint32_t count = 0;
    uint32_t record = MakeRecord(copy, static_cast<uint16_t>(n), set, &count);
    result =
        record == 0 ? kRefNoRecord : PutObjectRecord(buffer, size, place.noted, place.end, &record, count);
  }
  MEMORYFREE(&copy);
  return result;
}

int16_t XLRGetSelVis(uint32_t buffer, SAFEARRAY** array, uint16_t graph, int16_t n, uint16_t set) {
  SAFEARRAY* const flags = ArrayAt(array);
  const int16_t fits = CheckRefVector(flags, 1, n);
  if (fits != kRefArrayFits) return fits;
  if (buffer == 0) return kRefNoBuffer;
  return DeliverLast(
      buffer, graph, [set](const Block& block, uint32_t at) { return IsFlags(block, at, set); },
      [flags, n](const Block& block, uint32_t at) { PutFlags(flags, n, block, at); });
}

}  // namespace tolvenar
