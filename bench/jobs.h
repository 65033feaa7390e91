// What is measured: whole pieces of work as a host does them, through the exports and nothing else.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "books.h"
#include "tolvenar/automation.h"

namespace bench {

// Opens the file and locates its sheets, in a pool that holds nothing else.
Book Open(const std::string& path);

// A new array of texts that covers a sheet (1-based); the caller destroys it.
SAFEARRAY* ArrayFor(const Book& book, int16_t sheet);

// Reads all cells of a sheet into an array of ArrayFor.
void ReadSheet(const Book& book, int16_t sheet, SAFEARRAY* cells);

// How many elements of the array hold a text.
int64_t CountTexts(SAFEARRAY* cells);

// Opens, reads every sheet into an array that is released again, closes. Returns the number of sheets.
int ReadFile(const std::string& path);

// Opens `from`, changes one number in the middle, saves over it.
void ChangeOne(const std::string& path);

// Opens, changes `count` cells spread over the rows and columns of the one sheet, saves over it.
void ChangeMany(const std::string& path, int rows, int count);

// Opens, inserts a row in the middle of the first sheet, saves over it.
void InsertRow(const std::string& path, int rows);

// The cells of a new sheet, row by row, as a host hands them over. The texts are released with it.
class Values {
 public:
  static Values Numbers(int rows);
  static Values Texts(int rows);
  Values(Values&& other) noexcept = default;
  ~Values();

  int rows;
  int columns;
  std::vector<VARIANT> cells;
  std::vector<uint16_t> xfs;

 private:
  Values(int rows_, int columns_);
};

// Makes a new workbook with one sheet of these cells, in slices of some rows, and saves it as a new file. Returns the size of its stream.
uint32_t WriteBook(const std::string& path, const Values& values);

}  // namespace bench
