// The directory of a ReferenceFile: read, changed, written back.
#include "reference/reference_contents.h"

#include <algorithm>
#include <memory>
#include <new>

#include "foundation/memory_pool.h"
#include "reference/reference_records.h"
#include "reference/stream_transfer.h"
#include "workbook/stm_file.h"

namespace tolvenar {

namespace {

constexpr uint32_t kIdSize = 4;

// The image as far as it is the stream's: a slot is larger, and holds what an earlier tenant left.
Block OpenImage(uint32_t image, uint32_t size) {
  Block block = OpenBlock(image);
  block.extent = std::min(block.extent, size);
  return block;
}

uint32_t CountOf(const Block& image) {
  const uint32_t count = U32At(image, kRefField);
  return count > INT32_MAX ? 0 : count;
}

// A walk over the REFIDs of an image.
struct IdWalk {
  Walk walk;

  explicit IdWalk(const Block& image) : walk(StartWalk(image, 0)) { Settle(); }
  bool AtId() const { return At(walk.block, walk.at, kRefRecordSize) != nullptr && !walk.ended && !AtEnd(); }
  uint32_t Id() const { return U32At(walk.block, walk.at + kRefField); }
  void Next() {
    Step(&walk);
    Settle();
  }

 private:
  bool AtEnd() const { return IsChart(walk.block, walk.at, kLowRefEnd); }
  void Settle() {
    while (AtId() && !IsChart(walk.block, walk.at, kLowRefId)) Step(&walk);
  }
};

// The lowest positive id that is free among those from `base` on, as far as `taken` has a bit for each; 0 when it has none left.
uint32_t LowestFreeFrom(const Block& image, uint32_t base, uint8_t* taken, uint32_t ids) {
  for (IdWalk walk(image); walk.AtId(); walk.Next()) {
    const uint32_t id = walk.Id() - base;
    if (id < ids) taken[id / 8] = static_cast<uint8_t>(taken[id / 8] | (1u << (id % 8)));
  }
  for (uint32_t id = 0; id < ids; ++id) {
    if ((taken[id / 8] & (1u << (id % 8))) == 0) return base + id;
  }
  return 0;
}

// The lowest positive id that the image doesn't have. There is one among as many as a walk can meet, and one more, so that one walk finds
// it; without memory for those it is looked for in windows, a walk for each.
uint32_t LowestFreeId(const Block& image) {
  const uint32_t bytes =
      image.extent / kHeaderSize / 8 + 2;  // a walk makes no more steps than there are headers
  const std::unique_ptr<uint8_t[]> all(new (std::nothrow) uint8_t[bytes]());
  if (all) return LowestFreeFrom(image, 1, all.get(), bytes * 8);
  constexpr uint32_t kWindow = 0x8000;
  uint32_t found = 0;
  for (uint32_t base = 1; found == 0; base += kWindow) {
    uint8_t taken[kWindow / 8] = {};
    found = LowestFreeFrom(image, base, taken, kWindow);
  }
  return found;
}

uint32_t AllocateIds(uint32_t count) {
  return count > INT32_MAX / kIdSize ? 0 : MEMORYALLOC(static_cast<int32_t>(count * kIdSize));
}

// What differs from every id.
constexpr uint64_t kNoId = UINT64_MAX;

// Gathers the ids that differ from `without` into the `places` of a list; what has no place is dropped.
void GatherIds(const Block& image, uint32_t list, uint32_t places, uint64_t without) {
  const Block to = OpenBlock(list);
  uint32_t place = 0;
  for (IdWalk ids(image); ids.AtId() && place < places; ids.Next()) {
    if (ids.Id() == without) continue;
    PutU32(to, place * kIdSize, ids.Id());
    ++place;
  }
}

// Builds the image of the first `count` ids of the list. Releases the list, unless there is no block.
int16_t BuildImage(uint32_t* list, uint32_t count, uint32_t* image, uint32_t* size) {
  constexpr uint32_t kMost = INT32_MAX / kRefRecordSize - 2;
  *size = (count + 2) * kRefRecordSize;
  *image = count > kMost ? 0 : MEMORYALLOC(static_cast<int32_t>(*size));
  if (*image == 0) return kContentsNoImage;
  const Block to = OpenBlock(*image);
  const Block ids = OpenBlock(*list);
  PutRefRecord(to, 0, kLowRefHeader, count);
  for (uint32_t i = 0; i < count; ++i) {
    PutRefRecord(to, (i + 1) * kRefRecordSize, kLowRefId, U32At(ids, i * kIdSize));
  }
  PutRefRecord(to, (count + 1) * kRefRecordSize, kLowRefEnd, 0);
  MEMORYFREE(list);
  return kContentsDone;
}

}  // namespace

int16_t ReadContents(StmFFile* file, uint32_t* image, uint32_t* size) {
  StmFItemHolder stream;
  *image = 0;
  if (file->OpenStream(kContentsStream, &stream.item) != kStmDone) return kContentsNotOpened;
  *size = stream.item->GetSize();
  if (static_cast<int32_t>(*size) <= 0) return kContentsEmpty;
  *image = MEMORYALLOC(static_cast<int32_t>(*size));
  if (*image == 0) return kContentsNoBlock;
  if (!ReadWhole(stream.item, *image, *size)) {
    MEMORYFREE(image);
    return kContentsNotRead;
  }
  stream.item->Close();  // whatever comes of it
  return kContentsDone;
}

int16_t AddNewId(uint32_t* image, uint32_t* size, int32_t* id) {
  const Block old = OpenImage(*image, *size);
  const uint32_t count = CountOf(old);
  uint32_t list = AllocateIds(count + 1);
  if (list == 0) return kContentsNoList;
  const uint32_t new_id = count == 0 ? 1 : LowestFreeId(old);
  GatherIds(old, list, count, kNoId);
  PutU32(OpenBlock(list), count * kIdSize, new_id);
  *id = static_cast<int32_t>(new_id);
  MEMORYFREE(image);
  return BuildImage(&list, count + 1, image, size);
}

int16_t DropId(uint32_t* image, uint32_t* size, uint32_t id) {
  const Block old = OpenImage(*image, *size);
  const uint32_t count = CountOf(old);
  uint32_t list = AllocateIds(count);
  if (list == 0) return kContentsNoList;
  GatherIds(old, list, count, id);
  MEMORYFREE(image);
  return BuildImage(&list, count == 0 ? 0 : count - 1, image, size);
}

int16_t WriteContents(StmFFile* file, uint32_t* image, uint32_t size) {
  StmFItemHolder stream;
  const int32_t made = file->CreateStream(kContentsStream, &stream.item, true);
  const bool written = made == kStmDone && WriteWhole(stream.item, *image, size);
  MEMORYFREE(image);
  if (made != kStmDone) return kContentsNotMade;
  if (!written) return kContentsNotWritten;
  stream.item->Close();
  return kContentsDone;
}

}  // namespace tolvenar
