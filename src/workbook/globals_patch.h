// A patch into the globals that keeps the sheets found.
//
// In front of the EOF of the globals PatchRecord displaces more than that EOF: it has 4 bytes, a DETOUR has 8, so the BOF of the first sheet
// goes along. The SheetTable would then lead into the DETOUR, and the sheet could neither be read nor saved.
//
//   before   ... X  EOF BOF ...                      entry 2 leads to BOF, and EOF stands 4 bytes in front of it
//   after    ... X  DETOUR ...   record EOF BOF RESUME     entry 2 leads to BOF at its new place, and EOF stands in front of it still
#pragma once

#include <cstdint>

namespace tolvenar {

// PatchRecord at `at` in the globals; where it displaces the BOF of a sheet, or the EOF behind the last one, the entry in the SheetTable and
// the BOUNDSHEET that lead there are led to the new place. Results and effects are those of PatchRecord.
int16_t PatchGlobals(uint32_t* buffer, uint32_t table, uint32_t* size, const uint8_t* record, uint32_t at,
                     uint32_t count);

}  // namespace tolvenar
