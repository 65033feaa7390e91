// What a VARIANT becomes in a cell of a new worksheet.
//
//   TYPE                                    RECORD
//   VT_EMPTY and whatever is not below      BLANK
//   VT_NULL                                 BLANK, or the end of the sheet: the caller's choice
//   VT_I2, VT_I4, VT_R4                     NUMBER
//   VT_R8, VT_CY                            NUMBER, of the 8 bytes as a double; a currency is not scaled, on
//                                           purpose
//   VT_DATE                                 NUMBER, of the day: the time of day goes
//   VT_BSTR, VT_BSTR by reference           LABEL
//
// Every number is narrowed to a float, on purpose: what enters a new sheet has single precision.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

enum class CellKind { kBlank, kNull, kNumber, kText };

struct CellValue {
  CellKind kind;
  float number;         // of kNumber
  const OLECHAR* text;  // of kText; may be null
};

// The mapping; a null address is an empty value. The text stays the VARIANT's.
CellValue MapCell(const VARIANT* value);

}  // namespace tolvenar
