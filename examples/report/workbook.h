// A workbook as a C++ program would hold it: the library's three values (buffer, size and table) with one
// owner, result codes turned into exceptions that say what went wrong, and the arrays turned into tables of
// text. Take it and make it yours.
#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tolvenar/tolvenar.h"

namespace report {

// A call that gave another result than success.
class Failure : public std::runtime_error {
 public:
  Failure(const std::string& what, int result);
  int result() const { return result_; }

 private:
  int result_;
};

// A cell, as it was read. Text that was no text in the workbook is a number's, with six decimals.
struct Cell {
  enum class Kind { kEmpty, kNumber, kText, kFormula };
  Kind kind = Kind::kEmpty;
  std::string text;
};

// A worksheet's used range, 1-based and inclusive, and its cells: rows[0] is the first row of the range.
struct Sheet {
  int first_row = 1;
  int first_column = 1;
  std::vector<std::vector<Cell>> rows;
  std::vector<std::vector<int>> xfs;  // the index of each cell's format; -1 where there is none to read
};

// How many patch records the buffer holds.
struct Patches {
  int detours = 0;  // jumps to a patch
  int resumes = 0;  // jumps back
  int slacks = 0;   // free room that a patch has left
  int ends = 0;     // the end of the stream
};

// A formula cell: its place, 1-based, and the bytes of its tokens.
struct Formula {
  int row = 0;
  int column = 0;
  std::vector<uint8_t> tokens;
};

// A cell that a chart draws on; all count from 1.
struct ChartCell {
  int sheet = 0;
  int row = 0;
  int column = 0;
};

// A series of a chart. Its name is in a cell where it is no text.
struct Series {
  std::string name;
  std::vector<ChartCell> cells;
};

// A chart. Texts of generation 6 come cut short: by a character, or to half of them.
struct Chart {
  std::string family;
  int width = 0;  // in points
  int height = 0;
  std::string title;
  std::string axes[2];
  std::vector<Series> series;
};

class Workbook {
 public:
  // Opens a workbook. Nobody else may have it open meanwhile; it is closed again when this returns.
  explicit Workbook(const std::filesystem::path& path);
  ~Workbook();
  Workbook(const Workbook&) = delete;
  Workbook& operator=(const Workbook&) = delete;

  int SheetCount() const;
  // 5 for Excel 5.0 and 95, 6 for Excel 97 to 2003.
  int Generation() const;
  uint32_t Size() const { return size_; }

  // Sheets count from 1. In a workbook of generation 5 a name comes without its first letter.
  std::string SheetName(int sheet) const;
  bool IsWorksheet(int sheet) const;
  Sheet ReadSheet(int sheet) const;
  // Charts count from 1 in their sheet. The chart of a chart sheet is counted, but may not be there to read: Chart
  // is then without a family. In generation 6 the cells are not those that the formulas of the series mean: the
  // library takes every formula of a chart for one of generation 5.
  int ChartCount(int sheet) const;
  Chart ReadChart(int sheet, int chart) const;
  Patches CountPatches() const;
  std::vector<Formula> Formulas(int sheet) const;

  // Each of these gives false where the workbook has no room for the cell: it has to lie inside the used
  // range, in a row that the workbook describes.
  bool PutNumber(int sheet, int row, int column, double number);
  bool PutText(int sheet, int row, int column, const std::string& text);
  bool PutNothing(int sheet, int row, int column);
  bool PutFormat(int sheet, int row, int column, int xf);

  // Opens an empty row: the cells from `row` on move down by one, and the sheet's formulas follow.
  void InsertRow(int sheet, int row);

  // Stamps the workbook with the id of a reference. The stamp is in the file once it is saved.
  void Bind(int id);

  // Saves into `path`: into the place of the workbook in a file that is there, else as a new file.
  void Save(const std::filesystem::path& path);

 private:
  bool Put(int sheet, int row, int column, VARIANT* value);
  void ReadValues(int sheet, Sheet* into) const;
  void ReadFormats(int sheet, Sheet* into) const;
  std::vector<std::vector<uint8_t>> Records() const;
  std::vector<int> ReadProperties(int sheet, int chart) const;
  void ReadSeriesCells(int sheet, int chart, int longest, Chart* into) const;
  void ReadSeriesNames(int sheet, int chart, Chart* into) const;
  void ReadTitles(int sheet, int chart, Chart* into) const;

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
  uint32_t table_ = 0;
};

// Makes a new reference in a ReferenceFile, which has to be there (tolvenar-newref makes one). Returns its id.
int CreateReference(const std::filesystem::path& file);

// The id that the saved workbook at `path` is bound to, 0 for none. To be asked while a workbook of the same
// generation is the one opened last.
int BoundTo(const std::filesystem::path& path);

}  // namespace report
