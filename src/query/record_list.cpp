// Record list: one walk over the whole buffer, four puts a record.
#include "query/record_list.h"

#include "platform/array_put.h"
#include "query/array_element.h"
#include "query/byte_text.h"

namespace tolvenar {

namespace {

constexpr int16_t kListed = 0;
constexpr int16_t kNoBuffer = 1;
constexpr int16_t kNoImage = 10;

constexpr uint32_t kChartTypes = 256;

struct ListArrays {
  SAFEARRAY* offsets;
  SAFEARRAY* types;
  SAFEARRAY* images;
  SAFEARRAY* lengths;
};

void PutSlot(SAFEARRAY* array, LONG index, uint32_t slot) {
  platform::PutBytes(array, &index, &slot, sizeof slot);
}

// The high byte counts only when it is exactly 0x10, unlike in the chart test, on purpose: 0x1151 lists
// as 0x51.
uint32_t TypeCode(const Block& block, uint32_t at) {
  const uint32_t low = U8At(block, at + kRecordTypeLow);
  return U8At(block, at + kRecordTypeHigh) == kChartHigh ? low + kChartTypes : low;
}

// Lists the record at `at` as element `index`. False when the pool has no block for its image: offset and
// type are then listed.
bool ListRecord(const Block& block, uint32_t at, LONG index, const ListArrays& arrays) {
  PutSlot(arrays.offsets, index, at);
  PutSlot(arrays.types, index, TypeCode(block, at));
  // 16 bits, signed: a record of 32764 payload bytes or more comes out negative, which asks the pool for
  // no room and makes no text.
  const int16_t n = static_cast<int16_t>(LengthAt(block, at) + kHeaderSize);
  if (!PoolHasRoom(n)) return false;
  platform::PutOwnedBstr(arrays.images, &index, ByteBstr(block, at, n));
  PutSlot(arrays.lengths, index, static_cast<uint16_t>(n));
  return true;
}

int16_t ListRecords(const Block& block, int32_t limit, int32_t* count, const ListArrays& arrays) {
  for (Walk walk = StartWalk(block, 0); static_cast<int32_t>(walk.at) < limit && !walk.ended; Step(&walk)) {
    // A jump to a negative offset is below the limit, but out of the block.
    if (At(block, walk.at, 1) == nullptr) break;
    const LONG index = static_cast<int16_t>(*count) + 1;
    if (!ListRecord(block, walk.at, index, arrays)) return kNoImage;
    ++*count;
    if (IsPrivate(block, walk.at, kLowBufEnd)) break;
  }
  return kListed;
}

}  // namespace

int16_t XLGetList(uint32_t buffer, int32_t size, int32_t* count, SAFEARRAY** offsets, SAFEARRAY** types,
                  SAFEARRAY** images, SAFEARRAY** lengths) {
  const Block block = OpenBlock(buffer);
  if (block.extent == 0) return kNoBuffer;
  int32_t listed = 0;
  const ListArrays arrays = {ArrayAt(offsets, 1), ArrayAt(types, 1), ArrayAt(images, 1), ArrayAt(lengths, 1)};
  const int16_t result = size <= 1 ? kListed : ListRecords(block, size - 1, &listed, arrays);
  if (count != nullptr) *count = listed;
  return result;
}

}  // namespace tolvenar
