// All exports on what a reference holds, as one list.
#pragma once

#include "fuzz_support.h"

namespace tolvenar::fuzz {

// A reference in memory and the file that it is kept in.
struct Reference {
  uint32_t buffer = 0;
  uint32_t size = 0;
  std::string file;
};

// Calls one export on a table, a graph or a chart edit, with arguments as the choices say. Few ids are chosen from, so that calls meet the
// objects of one another.
void CallObjectExport(Reference* reference, Choices* choices);

}  // namespace tolvenar::fuzz
