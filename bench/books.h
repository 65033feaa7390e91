// Workbooks to measure on, as the library itself makes them: its empty book, its sheet heads and tails, its save.
//
//   KIND       SHEETS  A ROW OF A SHEET                                              ROWS
//   numbers         2  20 NUMBERs, doubles with a fraction that is no short binary   half of them in each sheet
//   integers        2  10 RKs, a MULRK of 10                                         half of them in each sheet
//   texts           1  10 LABELSSTs, over one shared string for every ten cells      all
//   mixed           1  5 NUMBERs, a MULRK of 3, an RK, a LABEL                       all
//
// Rows are taken for signed 16-bit numbers by all that edits and reads, so 65,000 of them stand in two sheets. Every row has a ROW record in
// front of all cells. The cells are laid behind the rows as bytes where the library has no export that writes their kind.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/stream_builder.h"

namespace bench {

constexpr int kColumns = 20;
constexpr int kMixedColumns = 10;
constexpr int kTextColumns = 10;
constexpr int kCellsPerText = 10;

enum class Kind { kNumbers, kIntegers, kTexts, kMixed };

// A workbook in the pool.
struct Book {
  uint32_t buffer = 0;
  uint32_t table = 0;
  uint32_t size = 0;
};

// Ends the program with a message unless `condition` holds: a measurement of something that failed is worth nothing.
void Require(bool condition, const char* what);

// What the cells hold.
double NumberAt(int row, int column);
int32_t IntegerAt(int row, int column);
std::string TextAt(int index);

// How many sheets a kind of workbook has.
int SheetsOf(Kind kind);

// Makes the workbook, with `rows` rows in all; everything that the pool held before is released.
Book MakeBook(Kind kind, int rows);

// Gives its blocks back to the pool.
void Release(Book* book);

// Saves the workbook; its table is located anew.
void Save(Book* book, const std::string& path);

// A path in the folder for temporary files, with nothing there.
std::string FreshPath(const std::string& name);

}  // namespace bench
