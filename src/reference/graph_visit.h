// A visit to the records of one graph: what every saver and getter of slots, sets and links does first.
//
// Invariants: (1) A visitor sees the graph's head and what follows it, up to the graph's end; records in front of the head pass by unseen.
// (2) Turning visited records into SLACK doesn't change the way, unless it is a RESUME.
#pragma once

#include <cstdint>

#include "reference/reference_directory.h"

namespace tolvenar {

// Results that the savers share, besides those of reference_directory.h and reference_array.h.
constexpr int16_t kRefNoRecord = -4;  // no pool block for the record
constexpr int16_t kRefNoCopy = -8;    // none for the copy of the array

// The longest record: a patch counts its bytes in 16 bits with a sign.
constexpr int32_t kLongestRefRecord = INT16_MAX;

// Calls visit(block, at) for each record of the graph. *end (unless null) is then the offset of the graph's end record, where a new record
// goes. Result: kRefDone; kRefNoObject; kRefHeadNotMet.
template <class Visit>
int16_t VisitGraph(uint32_t buffer, uint16_t graph, uint32_t* end, Visit visit) {
  ObjectWalk object;
  const int16_t found = StartObject(buffer, graph, kKindGraph, &object);
  if (found != kRefDone) return found;
  for (; !object.ended; StepObject(&object)) {
    if (object.seen) visit(object.walk.block, object.walk.at);
  }
  if (end != nullptr) *end = object.walk.at;
  return object.seen ? kRefDone : kRefHeadNotMet;
}

// Where a record that is saved belongs.
struct NotedRecord {
  uint32_t noted = kNoRecord;  // the record that it replaces: the last that matches
  uint32_t end = 0;            // the graph's end record
};

// Looks for the last record of the graph for which matches(block, at) is true. Result as of VisitGraph.
template <class Matches>
int16_t NoteLast(uint32_t buffer, uint16_t graph, NotedRecord* place, Matches matches) {
  return VisitGraph(buffer, graph, &place->end, [&](const Block& block, uint32_t at) {
    if (matches(block, at)) place->noted = at;
  });
}

// Hands the last record of the graph for which matches(block, at) is true to deliver(block, at). A getter whose every record would fill all
// that the one before has filled is answered so: the outcome is the same, and many records in a damaged graph take no longer than one.
// Result as of VisitGraph; with another than kRefDone nothing is delivered.
template <class Matches, class Deliver>
int16_t DeliverLast(uint32_t buffer, uint16_t graph, Matches matches, Deliver deliver) {
  NotedRecord place;
  const int16_t found = NoteLast(buffer, graph, &place, matches);
  if (found == kRefDone && place.noted != kNoRecord) deliver(OpenBlock(buffer), place.noted);
  return found;
}

// Takes a pool block for a record of `count` bytes, header included, and writes its header. Returns 0 when there is none.
uint32_t NewGraphRecord(uint16_t type, uint32_t count);

}  // namespace tolvenar
