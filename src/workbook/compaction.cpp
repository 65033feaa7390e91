// Compaction: copy in runs, renew the table and the BOUNDSHEETs, find the last EOF, cut.
#include "workbook/compaction.h"

#include <algorithm>
#include <cstring>

#include "foundation/biff_records.h"
#include "foundation/memory_pool.h"
#include "workbook/ring.h"
#include "workbook/sheet_table.h"

namespace tolvenar {

namespace {

// Kept records wait for a copy until there are this many bytes of them, or a gap: few enough to be still in the processor's cache, where
// the walk has just brought them.
constexpr uint32_t kLongestRun = 128u << 10;

// Lays kept records end to end, in as few copies as there are gaps between them.
struct RunCopier {
  Block from;
  Block to;
  uint32_t run = 0;         // offset of the run that waits to be copied
  uint32_t run_length = 0;  // its bytes
  int32_t written = 0;      // where the next record goes in `to`, the waiting run counted
  uint32_t filled = 0;      // bytes of `to` that have been written at some time
};

void Flush(RunCopier* copier) {
  const uint32_t target = static_cast<uint32_t>(copier->written) - copier->run_length;
  const uint32_t inside = BytesInside(copier->to, target, copier->run_length);
  if (inside != 0) {
    CopyOut(copier->from, copier->run, At(copier->to, target, inside), inside);
    copier->filled = std::max(copier->filled, target + inside);
  }
  copier->run_length = 0;
}

// Keeps `count` bytes at `at`. A count below 0, which only a signed length gives, copies nothing and takes
// the write offset back.
inline void Keep(RunCopier* copier, uint32_t at, int32_t count) {
  if (at != copier->run + copier->run_length || copier->run_length >= kLongestRun) {
    Flush(copier);
    copier->run = at;
  }
  if (count < 0) Flush(copier);
  copier->run_length += count < 0 ? 0 : static_cast<uint32_t>(count);
  copier->written += count;
}

// The block of the copy is not zeroed when it is taken; what the records leave of its `size` bytes is.
void ZeroRest(RunCopier* copier, uint32_t size) {
  if (copier->filled < size) std::memset(copier->to.base + copier->filled, 0, size - copier->filled);
}

bool HasRoom(const RunCopier& copier) {
  return copier.written >= 0 && static_cast<uint32_t>(copier.written) <= copier.to.extent;
}

int32_t RecordSize(const Block& block, uint32_t at, LengthField lengths) {
  const int32_t length =
      lengths == LengthField::kSigned ? I16At(block, at + kRecordLength) : int32_t{LengthAt(block, at)};
  return length + static_cast<int32_t>(kHeaderSize);
}

// True for DETOUR, RESUME, SLACK and BUFEND, which a compact stream has none of. One look at the high byte tells
// for nearly every record that it is none of them.
bool IsPatch(const Block& block, uint32_t at) {
  if (U8At(block, at + kRecordTypeHigh) != kPrivateHigh) return false;
  return IsJump(block, at) || IsPrivate(block, at, kLowSlack) || IsPrivate(block, at, kLowBufEnd);
}

// True for a record that is copied and nothing else, whichever way its length counts.
inline bool IsOrdinary(const uint8_t* record) {
  const uint8_t low = record[kRecordTypeLow];
  return low != kLowBof && low != kLowEof && ReadI16(record + kRecordLength) >= 0;
}

// Goes on over ordinary records, which lie side by side, and keeps them all at once: up to `limit`, as far as one run may grow, and only
// where there is room for a whole one. False when the walk has not moved.
bool KeepOrdinary(RunCopier* copier, Walk* walk, uint32_t limit) {
  constexpr uint32_t kMost = kLongestRun + kHeaderSize + INT16_MAX;
  if (copier->to.extent - static_cast<uint32_t>(copier->written) < kMost) return false;
  const uint32_t begin = walk->at;
  PassOverAlike(walk, std::min(limit, begin + kLongestRun), IsOrdinary);
  if (walk->at == begin) return false;
  Keep(copier, begin, static_cast<int32_t>(walk->at - begin));
  return true;
}

// The sheet that was met last, and where it ends in the copy, as far as that can be told on the way.
struct LastSheet {
  int16_t number = 0;    // of the sheets met; 16 bits, signed
  int32_t depth = 0;     // of the substreams that are open, from the sheet's BOF on
  uint32_t eof = 0;      // of the sheet; 0: not met yet
  bool straight = true;  // the records of the copy lie as the walk has met them
};

// Takes note of a record that is not ordinary, before it is kept. The table's entry of a sheet that is met becomes an offset in the copy.
void Note(LastSheet* last, const RunCopier& copier, uint32_t at, const Block& table) {
  const uint32_t written = static_cast<uint32_t>(copier.written);
  if (IsPlain(copier.from, at, kLowBof)) {
    ++last->depth;
    const uint32_t entry = static_cast<uint32_t>(last->number + static_cast<int32_t>(kTableFirstSheet));
    if (at == TableEntry(table, entry)) {
      PutTableEntry(table, entry, written);
      *last = {static_cast<int16_t>(last->number + 1), 1, 0, last->straight};
    }
  }
  if (IsPlain(copier.from, at, kLowEof) && --last->depth == 0 && last->eof == 0) last->eof = written;
  if (I16At(copier.from, at + kRecordLength) < 0) last->straight = false;
}

constexpr uint32_t kAllRecords = UINT32_MAX;

// Walks the old buffer, `max_records` at most, and lays what is kept into the copy; the table's entries of
// the sheets met become offsets in the copy. False when the walk came to neither the limit nor a BUFEND.
bool CopyRecords(RunCopier* copier, const Block& table, uint32_t limit, LengthField lengths,
                 uint32_t max_records, LastSheet* last) {
  const Block& from = copier->from;
  bool at_end = false;
  uint32_t records = 0;
  Walk walk = StartWalk(from, 0);
  while (walk.at < limit && !walk.ended && !at_end && HasRoom(*copier) && records != max_records) {
    if (max_records == kAllRecords && KeepOrdinary(copier, &walk, limit)) continue;
    ++records;
    Note(last, *copier, walk.at, table);
    if (IsPatch(from, walk.at)) {
      at_end = IsPrivate(from, walk.at, kLowBufEnd);
    } else {
      Keep(copier, walk.at, RecordSize(from, walk.at, lengths));
    }
    Step(&walk);
  }
  Flush(copier);
  if (!HasRoom(*copier)) last->straight = false;
  return at_end || walk.at >= limit;
}

// Copies a buffer whose walk goes round, as far as each record is met for the first time. The table has been
// renewed on the first round.
void CopyOneRound(RunCopier* copier, uint32_t limit, LengthField lengths, LastSheet* last) {
  last->straight = false;
  const uint32_t records = RecordsBeforeRing(copier->from, 0);
  if (records == 0) return;
  std::memset(copier->to.base, 0, copier->to.extent);
  copier->filled = copier->to.extent;
  copier->written = 0;
  LastSheet unwanted;
  CopyRecords(copier, Block{}, limit, lengths, records, &unwanted);
}

// Gives the copy's BOUNDSHEETs the new offsets, in order. Returns how many there are. One so short, or so near to the first sheet, that its
// offset is written over another record may have changed what comes behind it.
int16_t RepairBoundSheets(const Block& copy, const Block& table, LastSheet* last) {
  const int32_t end = static_cast<int32_t>(GlobalsEnd(table));  // table entries are signed
  int16_t count = 0;
  Walk walk = StartWalk(copy, TableEntry(table, kTableGlobalsBegin));
  for (; static_cast<int32_t>(walk.at) < end && !walk.ended; Step(&walk)) {
    if (!IsPlain(copy, walk.at, kLowBoundSheet)) continue;
    const uint32_t entry = static_cast<uint32_t>(count + static_cast<int32_t>(kTableFirstSheet));
    PutU32(copy, walk.at + kBoundSheetBof, TableEntry(table, entry));
    if (static_cast<int32_t>(walk.at) > end - static_cast<int32_t>(kBoundSheetBof)) last->straight = false;
    ++count;
  }
  return count;
}

// Finds the EOF that closes the substream whose BOF stands at `bof`. False when the walk gets to `limit`:
// behind the records the copy is zero, which reads as empty records. A BUFEND ends the walk, and the offset
// behind it is then the one found, on purpose.
bool FindLastEof(const Block& copy, uint32_t bof, uint32_t limit, uint32_t* eof) {
  Walk walk = StartWalk(copy, bof);
  Step(&walk);
  int32_t depth = 1;
  bool at_end = false;
  while (walk.at < limit && !walk.ended && !at_end) {
    if (IsPlain(copy, walk.at, kLowBof)) ++depth;
    if (IsPlain(copy, walk.at, kLowEof)) --depth;
    if (depth == 0) break;
    at_end = IsPrivate(copy, walk.at, kLowBufEnd);
    Step(&walk);
  }
  *eof = walk.at;
  return walk.at < limit && !walk.ended;
}

// Cuts the copy to what was kept and room for a BUFEND, left zero. It is a shrink, unless the old buffer had
// no BUFEND. False when it can't be done, also when not everything kept had room.
bool Cut(const RunCopier& copier, uint32_t* copy, uint32_t* copy_size) {
  if (!HasRoom(copier)) return false;
  const int32_t cut_size = copier.written + static_cast<int32_t>(kBufEndSize);
  const uint32_t cut = MEMORYREALLOC(*copy, cut_size);
  if (cut == 0) return false;
  *copy = cut;
  *copy_size = static_cast<uint32_t>(cut_size);
  PutU32(OpenBlock(cut), static_cast<uint32_t>(copier.written), 0);
  return true;
}

int16_t Drop(uint32_t* copy, int16_t result) {
  MEMORYFREE(copy);
  return result;
}

}  // namespace

int16_t Compact(uint32_t buffer, uint32_t table, uint32_t size, LengthField lengths, uint32_t* copy,
                uint32_t* copy_size) {
  // A size of 2 GiB or more would be a negative one to the pool, which fits every slot.
  *copy = size > INT32_MAX ? 0 : AllocateForOverwrite(static_cast<int32_t>(size));
  if (*copy == 0) return kCompactNoBlock;
  const uint32_t limit = size == 0 ? 0 : size - 1;
  const Block entries = OpenBlock(table);
  RunCopier copier{OpenBlock(buffer), OpenBlock(*copy)};
  LastSheet last;
  if (!CopyRecords(&copier, entries, limit, lengths, kAllRecords, &last))
    CopyOneRound(&copier, limit, lengths, &last);
  ZeroRest(&copier, size);
  const int16_t count = RepairBoundSheets(copier.to, entries, &last);
  const uint32_t entry = static_cast<uint32_t>(count + static_cast<int32_t>(kTableGlobalsBegin));
  const bool met = last.straight && last.number > 0 && last.number == count && last.eof != 0;
  uint32_t eof = last.eof;
  if ((!met || eof >= limit) && !FindLastEof(copier.to, TableEntry(entries, entry), limit, &eof))
    return Drop(copy, kCompactNotClosed);
  PutTableEntry(entries, entry + 1, eof);
  return Cut(copier, copy, copy_size) ? kCompacted : Drop(copy, kCompactNotCut);
}

}  // namespace tolvenar
