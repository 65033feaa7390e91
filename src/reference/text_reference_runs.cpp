// The greedy pass over text references.
#include "reference/text_reference_runs.h"

#include "reference/graph_visit.h"
#include "reference/text_references.h"

namespace tolvenar {

namespace {

constexpr uint8_t kNoStep = 0;
constexpr uint8_t kStepCodes[] = {1, 2, 3};
constexpr uint16_t kRunItems = 2;

struct Pass {
  uint32_t* buffer;
  uint32_t* size;
  uint32_t end;
  uint8_t set;
  const TextRefItems& items;
  uint32_t record = 0;  // each new block takes over this variable: only the last is released, on purpose
  uint8_t open = kNoStep;
};

// Step code of a run that begins at item i; kNoStep when none does.
uint8_t StepFrom(const TextRefItems& items, int32_t i) {
  if (i == items.hi || items.B(i) != 0 || items.B(i + 1) != 0) return kNoStep;
  const uint32_t difference = items.A(i + 1) - items.A(i);
  for (const uint8_t code : kStepCodes) {
    if (difference == TextRefStep(code)) return code;
  }
  return kNoStep;
}

int16_t Write(Pass* pass, uint32_t count) {
  const int16_t patched =
      PatchReference(pass->buffer, BlockBytes(pass->record), pass->end, count, pass->size);
  return patched == kPatchDone ? kRefDone : kRefNotAppended;
}

int16_t OpenRun(Pass* pass, int32_t i, uint8_t code) {
  pass->record = NewGraphRecord(ReferenceType(kLowTextRefRun), kTextRefRunSize);
  if (pass->record == 0) return kRefNoRecord;
  const Block block = OpenBlock(pass->record);
  PutU8(block, kTextRefSet, pass->set);
  PutU8(block, kTextRefRunStep, code);
  PutU16(block, kTextRefRunFirst, static_cast<uint16_t>(i));
  PutU16(block, kTextRefRunCount, kRunItems);
  PutU32(block, kTextRefRunBase, pass->items.A(i));
  pass->open = code;
  return kRefDone;
}

int16_t WriteSingle(Pass* pass, int32_t i) {
  pass->record = NewTextRef(pass->set, pass->items, i);
  return pass->record != 0 ? Write(pass, kTextRefSize) : kRefNoRecord;
}

// Item i is the second of the open run.
int16_t EndRun(Pass* pass, int32_t i) {
  const TextRefItems& items = pass->items;
  const uint32_t step = TextRefStep(pass->open);
  pass->open = kNoStep;
  const bool closes = i == items.hi || items.A(i + 1) != items.A(i) + step || items.B(i + 1) == 0;
  // Where the next item goes on and has a second value the run is dropped, unwritten, on purpose.
  return closes ? Write(pass, kTextRefRunSize) : kRefDone;
}

int16_t PutItem(Pass* pass, int32_t i) {
  if (pass->open != kNoStep) return EndRun(pass, i);
  const uint8_t code = StepFrom(pass->items, i);
  return code != kNoStep ? OpenRun(pass, i, code) : WriteSingle(pass, i);
}

}  // namespace

uint32_t NewTextRef(uint8_t set, const TextRefItems& items, int32_t i) {
  const uint32_t record = NewGraphRecord(ReferenceType(kLowTextRef), kTextRefSize);
  const Block block = OpenBlock(record);
  PutU8(block, kTextRefSet, set);
  PutU16(block, kTextRefItem, static_cast<uint16_t>(i));
  PutU32(block, kTextRefFirst, items.A(i));
  PutU32(block, kTextRefSecond, items.B(i));
  return record;
}

int16_t PutTextRefItems(uint32_t* buffer, uint32_t* size, uint32_t end, uint8_t set,
                        const TextRefItems& items) {
  Pass pass{buffer, size, end, set, items};
  int16_t result = kRefDone;
  for (int32_t i = items.lo; i <= items.hi && result == kRefDone; ++i) result = PutItem(&pass, i);
  MEMORYFREE(&pass.record);
  return result;
}

}  // namespace tolvenar
