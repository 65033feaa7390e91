// All exports that read a workbook, as one call.
#pragma once

#include "fuzz_support.h"

namespace tolvenar::fuzz {

// Calls every export that reads and gives back the blocks that it takes, on every sheet, with arrays of the kinds that a host would give
// them.
void ReadEverything(const Book& book);

// Makes the item blocks of all kinds, asks them everything, and releases them. Returns how many blocks stay live by contract: the list of
// formats, where the pool ran out while the XFs were handed out.
uint32_t ReadStyles(const Book& book);

// Counts the charts of each sheet, and asks the first ones all that there is. Returns how many blocks stay live by contract: that of a call
// that met an END with nothing open.
uint32_t ReadCharts(const Book& book);

// The values of all sheets as text, for comparing a workbook with itself.
testing::Bytes AllValues(const Book& book);

}  // namespace tolvenar::fuzz
