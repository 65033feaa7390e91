// Chart edits: small links from a numbered edit to a graph. A chart edit is entered in the directory by its id and its number (1 to 255);
// nothing keeps two from having the same.
//
// The lookups are no mirror of the creation, on purpose: the head holds the number less 1, and they compare it with the number itself. So
// the edit that the directory leads to does not pass, and what passes, if anything, is one further on with the next number. A compaction
// leaves the entries of chart edits as they are, so that they may lead anywhere.
#pragma once

#include <cstdint>

namespace tolvenar {

constexpr int16_t kEditNotMet = -5;  // XLRUpdateChartEdit

// Makes a chart edit. RESULT: 0; or -1, -999, -2, -4, -998 as CreateRefObject tells.
int16_t XLRCreateChartEdit(uint32_t* buffer, uint32_t* size, uint8_t number, uint16_t id, uint16_t graph);

// Retires the entry, first and in any case; then the first edit from there whose head passes, whatever its id, becomes SLACK.
// RESULT: 0. -1 no buffer; -997 no entry; -2 no head passed, which is usual for the last edit: its records stay, and nothing finds them.
int16_t XLRDeleteChartEdit(uint32_t buffer, uint16_t number, uint32_t id);

// Stores the graph in the head of this id that passes. RESULT: 0. -1 no buffer; -997 no entry; -5 no head passed.
int16_t XLRUpdateChartEdit(uint32_t buffer, uint16_t number, uint16_t id, uint16_t graph);

// Gives the 16 bits at offset 6 of the head of this id that passes: the high byte of the id, and above it the low byte of the graph's id, on
// purpose. RESULT: that value. -1 no buffer; -997 no entry; -2 no head passed.
int16_t XLRGraphByChartEdit(uint32_t buffer, uint16_t number, uint16_t id);

}  // namespace tolvenar
