// XLRDeleteProperty, and its table of items.
#include "reference/delete_property.h"

#include <iterator>

#include "reference/graph_visit.h"

namespace tolvenar {

namespace {

constexpr uint16_t kEveryItem = 0;

struct Item {
  uint8_t low;
  bool indexed;  // the index must be that of the record
};

// Item 1 first.
constexpr Item kItems[] = {
    {kLowGraphFont[0], false},   {kLowGraphFont[1], false},   {kLowSetInt[0], true},
    {kLowGraphDouble[0], false}, {kLowGraphText[0], false},   {kLowGraphText[1], false},
    {kLowGraphText[2], false},   {kLowGraphDouble[1], false}, {kLowSetInt[1], true},
    {kLowGraphDouble[2], false}, {kLowSetText[0], true},      {kLowSetText[1], true},
    {kLowSetText[2], true},      {kLowSetText[3], true},      {kLowSetLong[0], true},
    {kLowSetLong[1], true},      {kLowGraphFont[2], false},   {kLowGraphFont[3], false},
    {kLowGraphFont[4], false},   {kLowGraphText[3], false},   {kLowGraphText[4], false},
    {kLowGraphText[5], false},   {kLowGraphText[6], false},   {kLowGraphProps, false}};
static_assert(std::size(kItems) == 24);

bool IsItem(const Item& item, const Block& block, uint32_t at, uint16_t index) {
  return IsChart(block, at, item.low) && (!item.indexed || U16At(block, at + kSetItem) == index);
}

bool IsSelected(const Block& block, uint32_t at, uint16_t item, uint16_t index) {
  if (item != kEveryItem) return item <= std::size(kItems) && IsItem(kItems[item - 1], block, at, index);
  for (const Item& any : kItems) {
    if (IsItem(any, block, at, index)) return true;
  }
  return false;
}

}  // namespace

int16_t XLRDeleteProperty(uint32_t buffer, uint16_t graph, uint16_t item, uint16_t index) {
  if (buffer == 0) return kRefNoBuffer;
  ObjectWalk object;
  const int16_t found = StartObject(buffer, graph, kKindGraph, &object);
  if (found != kRefDone) return found;
  for (; !object.ended; StepObject(&object)) {
    if (!IsSelected(object.walk.block, object.walk.at, item, index)) continue;  // seen or not, on purpose
    MarkRecordSlack(object.walk.block, object.walk.at);
    if (item != kEveryItem) break;
  }
  return object.seen ? kRefDone : kRefHeadNotMet;
}

}  // namespace tolvenar
