// Sheet catalogue: how many sheets a workbook has, their names, and its BIFF generation.
//
//   A BOUNDSHEET as it is read
//   OFFSET  SIZE  FIELD
//        0     2  type: low byte 0x85, plain test
//       10     1  n, length of the name in bytes
//       11     1  not read
//       12     n  name
//
// Entry k + 1 is taken to lie at entry k + 12 + n(k), by plain arithmetic: no record is walked and no DETOUR
// followed. That is BIFF8's layout in both generations, on purpose. A BIFF5 name stands at 11: there the
// first name comes out without its first character and with one byte of what follows, and later entries are
// misplaced.
//
// Nothing here changes the buffer. A table that is no live block counts as a null one; a buffer that is
// none reads as zeros.
#pragma once

#include <cstdint>

#include "tolvenar/automation.h"

namespace tolvenar {

// Number of sheets: entry 0 of the table, low 16 bits, signed. 0 for a null table.
int16_t XLGetNumSheets(uint32_t table);

// Sets BiffVersion to what the globals say: the high byte of the version field, as it stands, of the last
// BOF in them (low byte 0x09, plain test). Returns the low 16 bits of BiffVersion, which stays as it was
// where the globals hold no BOF, are empty (the first sheet at offset 4), or the table is null: a null
// table says nothing of any globals, and a guess would change the library's generation.
uint16_t XLGetNumVers(uint32_t buffer, uint32_t table);

// Returns `version`, unchanged.
int16_t XLVersInt(int16_t version);

// Gives the name of sheet `sheet` (1-based; 1 or less is the first; it is not checked against the number
// of sheets, and one past the last reads whatever the stride lands on). *name is a PackedBstr, the
// caller's; its length in units is that of the name in bytes.
// Returns the length of the name in bytes. 0 with *name not written: null table, no pool block. 0 with an
// empty *name: globals without a BOUNDSHEET.
int16_t XLGetNameSheet(uint32_t buffer, uint32_t table, int16_t sheet, BSTR* name);

// Looks the same entry up and hands nothing back: the four last arguments are neither read nor written.
// Returns 1; 0 for a null table or when the pool has no block.
uint32_t XLGetSheetParam(uint32_t buffer, uint32_t table, int16_t sheet, uint32_t unused1, uint32_t unused2,
                         uint32_t unused3, uint32_t unused4);

// Copies each sheet's name into a pool block of its own (length + 1 bytes) that stays live after the
// call, on purpose: one of the nine for every sheet. It ends early when the pool has no more. `unused` is
// not read. Returns 3 for a null buffer, else 0, null table included. What else it would note of the
// names is never seen by anyone, and is not kept.
int16_t XLSheetsNameNum(uint32_t buffer, uint32_t table, uint32_t unused);

}  // namespace tolvenar
