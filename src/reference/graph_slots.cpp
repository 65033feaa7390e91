// The saver and the getter of slots, and what each family of slots puts into its records.
#include "reference/graph_slots.h"

#include <cstring>
#include <span>

#include "foundation/memory_pool.h"
#include "reference/graph_visit.h"

namespace tolvenar {

namespace {

constexpr uint32_t kMostFields = 8;

// Which records are those of a slot.
struct Slot {
  uint16_t type = kTypeNoSlot;
  bool exists = false;
  bool has_index = false;
  uint16_t index = 0;

  bool Holds(const Block& block, uint32_t at) const {
    if (!exists || !IsChart(block, at, static_cast<uint8_t>(type))) return false;
    return !has_index || U16At(block, at + kSetItem) == index;
  }
};

// What a record has behind its header.
struct Content {
  uint8_t fields[kMostFields] = {};
  uint32_t field_bytes = 0;
  const char* text = nullptr;
  size_t text_bytes = 0;
};

// Slot `number`, from 1 on, of a family. Any other number is none.
Slot SlotOf(std::span<const uint8_t> lows, int32_t number) {
  Slot slot;
  if (number < 1 || number > static_cast<int32_t>(lows.size())) return slot;
  slot.type = ReferenceType(lows[static_cast<size_t>(number) - 1]);
  slot.exists = true;
  return slot;
}

Slot ItemSlot(uint16_t set, uint16_t index) {
  Slot slot = SlotOf(kLowSetText, set);
  slot.has_index = true;
  slot.index = index;
  return slot;
}

void AddField(Content* content, uint16_t value) {
  WriteU16(content->fields + content->field_bytes, value);
  content->field_bytes += sizeof value;
}

// A text and in front of it its length.
void AddText(Content* content, const char* text) {
  content->text = text;
  content->text_bytes = text == nullptr ? 0 : std::strlen(text);
  AddField(content, static_cast<uint16_t>(content->text_bytes));
}

// Makes the record in a pool block; its bytes in *count. Returns 0 when there is no block, or the record would be too long for one.
uint32_t MakeRecord(const Slot& slot, const Content& content, uint32_t* count) {
  const uint32_t before_text = kHeaderSize + content.field_bytes;
  if (content.text_bytes > static_cast<size_t>(kLongestRefRecord) - before_text) return 0;
  const uint32_t text_bytes = static_cast<uint32_t>(content.text_bytes);
  *count = before_text + text_bytes;
  const uint32_t record = NewGraphRecord(slot.type, *count);
  if (record == 0) return 0;
  const Block block = OpenBlock(record);
  CopyIn(block, kHeaderSize, content.fields, content.field_bytes);
  if (text_bytes != 0) std::memcpy(block.base + before_text, content.text, text_bytes);
  return record;
}

int16_t SaveSlot(uint32_t* buffer, uint32_t* size, uint16_t graph, const Slot& slot, const Content& content) {
  if (!HasBuffer(buffer, size)) return kRefNoBuffer;
  NotedRecord place;
  const int16_t found = NoteLast(*buffer, graph, &place,
                                 [&slot](const Block& block, uint32_t at) { return slot.Holds(block, at); });
  if (found != kRefDone) return found;
  uint32_t count = 0;
  uint32_t record = MakeRecord(slot, content, &count);
  if (record == 0) return kRefNoRecord;
  return PutObjectRecord(buffer, size, place.noted, place.end, &record, count);
}

// Hands the record of the slot to deliver(block, at): of several the last.
template <class Deliver>
int16_t GetSlot(uint32_t buffer, uint16_t graph, const Slot& slot, Deliver deliver) {
  if (buffer == 0) return kRefNoBuffer;
  return DeliverLast(
      buffer, graph, [&slot](const Block& block, uint32_t at) { return slot.Holds(block, at); }, deliver);
}

// A new text of the `length` bytes at `at`; null when the length is negative or there is no memory.
BSTR NewText(const Block& block, uint32_t at, int16_t length) {
  if (length < 0) return nullptr;
  const UINT bytes = static_cast<UINT>(length);
  const BSTR text = SysAllocStringByteLen(nullptr, bytes);
  if (text != nullptr) CopyOut(block, at, reinterpret_cast<uint8_t*>(text), bytes);
  return text;
}

int16_t GetSlotText(uint32_t buffer, uint16_t graph, const Slot& slot, BSTR* out, uint32_t length_at,
                    uint32_t text_at) {
  return GetSlot(buffer, graph, slot, [&](const Block& block, uint32_t at) {
    if (out != nullptr) *out = NewText(block, at + text_at, I16At(block, at + length_at));
  });
}

}  // namespace

int16_t XLRSaveText(uint32_t* buffer, uint32_t* size, uint16_t graph, const char* text, uint16_t slot) {
  Content content;
  AddText(&content, text);
  return SaveSlot(buffer, size, graph, SlotOf(kLowGraphText, slot), content);
}

int16_t XLRGetText(uint32_t buffer, uint16_t graph, BSTR* out, uint16_t slot) {
  return GetSlotText(buffer, graph, SlotOf(kLowGraphText, slot), out, kGraphTextLength, kGraphText);
}

int16_t XLRSaveDouble(uint32_t* buffer, uint32_t* size, uint16_t graph, uint32_t low, uint32_t high,
                      int16_t slot) {
  Content content;
  content.field_bytes = sizeof low + sizeof high;
  WriteU32(content.fields, low);
  WriteU32(content.fields + sizeof low, high);
  return SaveSlot(buffer, size, graph, SlotOf(kLowGraphDouble, slot), content);
}

int16_t XLRGetDouble(uint32_t buffer, uint16_t graph, void* out, uint16_t slot) {
  constexpr uint32_t kBytes = kGraphDoubleSize - kGraphDoubleValue;
  return GetSlot(buffer, graph, SlotOf(kLowGraphDouble, slot), [out](const Block& block, uint32_t at) {
    if (out != nullptr) CopyOut(block, at + kGraphDoubleValue, static_cast<uint8_t*>(out), kBytes);
  });
}

int16_t XLRSaveFont(uint32_t* buffer, uint32_t* size, uint16_t graph, uint16_t first, uint16_t second,
                    uint16_t third, uint16_t fourth, uint16_t slot) {
  Content content;
  for (const uint16_t value : {first, second, third, fourth}) AddField(&content, value);
  return SaveSlot(buffer, size, graph, SlotOf(kLowGraphFont, slot), content);
}

int16_t XLRGetFont(uint32_t buffer, uint16_t graph, uint16_t* first, uint16_t* second, uint16_t* third,
                   uint16_t* fourth, uint16_t slot) {
  uint16_t* const out[] = {first, second, third, fourth};
  return GetSlot(buffer, graph, SlotOf(kLowGraphFont, slot), [&out](const Block& block, uint32_t at) {
    uint32_t field = at + kGraphFontValues;
    for (uint16_t* value : out) {
      if (value != nullptr) *value = U16At(block, field);
      field += sizeof *value;
    }
  });
}

int16_t XLRSaveSetText(uint32_t* buffer, uint32_t* size, uint16_t graph, uint16_t index, const char* text,
                       uint16_t set) {
  Content content;
  AddField(&content, index);
  AddText(&content, text);
  return SaveSlot(buffer, size, graph, ItemSlot(set, index), content);
}

int16_t XLRGetSetText(uint32_t buffer, uint16_t graph, uint16_t index, BSTR* out, uint16_t set) {
  return GetSlotText(buffer, graph, ItemSlot(set, index), out, kSetTextLength, kSetText);
}

}  // namespace tolvenar
