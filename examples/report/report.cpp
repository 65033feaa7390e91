// The report: shows what is in a workbook, its charts too, changes a few cells in memory, shows the patches that this has
// made, saves the workbook under a new name, opens the result and shows that the changes are there. In a
// workbook of Excel 5.0 or 95 that has formulas it also inserts a row, in memory only, and shows how cells and
// formulas follow. The workbook that it was given stays as it is.
//
//   report [--out FOLDER] [--references FILE] WORKBOOK ...
//
// With a ReferenceFile (tolvenar-newref makes one) each result is also bound to a new reference in it.
//
// Exit status: 0 all is well; 1 something could not be done, and a sentence says what; 2 called without a
// workbook.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "workbook.h"

namespace fs = std::filesystem;
using report::Cell;
using report::Chart;
using report::ChartCell;
using report::Formula;
using report::Patches;
using report::Series;
using report::Sheet;
using report::Workbook;

namespace {

constexpr size_t kRowsShown = 6;
constexpr size_t kColumnsShown = 7;
constexpr int kColumnWidth = 13;
constexpr size_t kFormulasShown = 3;
constexpr size_t kCellsShown = 4;

// A text of the workbook for the terminal: its bytes are characters of Latin-1.
std::string Printable(const std::string& text) {
  std::string utf8;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || (byte >= 0x7F && byte < 0xA0)) {
      utf8 += '.';
    } else if (byte < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | (byte >> 6));
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

// Cut or filled up to the width of a column, which is counted in characters: in UTF-8 those are the bytes
// that don't go on.
std::string Padded(const std::string& text) {
  std::string padded;
  int width = 0;
  for (const char c : text) {
    const bool begins = (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    if (begins && width == kColumnWidth - 1) break;
    width += begins;
    padded += c;
  }
  return padded + std::string(static_cast<size_t>(kColumnWidth - width), ' ');
}

void PrintTable(const Sheet& sheet) {
  for (size_t row = 0; row < std::min(sheet.rows.size(), kRowsShown); ++row) {
    std::string line;
    const auto& cells = sheet.rows[row];
    for (size_t column = 0; column < std::min(cells.size(), kColumnsShown); ++column) {
      line += Padded(Printable(cells[column].text));
    }
    std::printf("    %s\n", line.c_str());
  }
  if (sheet.rows.size() > kRowsShown) std::printf("    ... %zu rows more\n", sheet.rows.size() - kRowsShown);
}

void PrintSeries(const Series& series, size_t number) {
  std::string line;
  for (size_t i = 0; i < std::min(series.cells.size(), kCellsShown); ++i) {
    const ChartCell& cell = series.cells[i];
    line += (i == 0 ? ": sheet " : ", sheet ") + std::to_string(cell.sheet) + " R" +
            std::to_string(cell.row) + "C" + std::to_string(cell.column);
  }
  if (series.cells.size() > kCellsShown)
    line += " ... " + std::to_string(series.cells.size() - kCellsShown) + " cells more";
  std::printf("      series %zu \"%s\"%s\n", number, Printable(series.name).c_str(), line.c_str());
}

void PrintCharts(const Workbook& book, int sheet) {
  if (book.Generation() == 6 && book.ChartCount(sheet) > 0) {
    std::printf(
        "    (The library takes charts for those of BIFF5. Of BIFF8 it gives their texts cut short, and for\n"
        "    the cells of a series what stands in the place of a longer formula.)\n");
  }
  for (int number = 1; number <= book.ChartCount(sheet); ++number) {
    const Chart chart = book.ReadChart(sheet, number);
    if (chart.family.empty()) {
      std::printf("    chart %d: the library does not find it in a sheet of its own here\n", number);
      continue;
    }
    std::printf("    chart %d: %s, %d by %d points, %zu series, title \"%s\", axes \"%s\" and \"%s\"\n",
                number, chart.family.c_str(), chart.width, chart.height, chart.series.size(),
                Printable(chart.title).c_str(), Printable(chart.axes[0]).c_str(),
                Printable(chart.axes[1]).c_str());
    for (size_t i = 0; i < chart.series.size(); ++i) PrintSeries(chart.series[i], i + 1);
  }
}

void PrintSheets(const Workbook& book) {
  if (book.Generation() == 5)
    std::printf("  (The library gives the sheet names of BIFF5 without their first letter.)\n");
  for (int sheet = 1; sheet <= book.SheetCount(); ++sheet) {
    std::printf("  Sheet %d, \"%s\"", sheet, Printable(book.SheetName(sheet)).c_str());
    if (!book.IsWorksheet(sheet)) {
      std::printf(": no worksheet\n");
      PrintCharts(book, sheet);
      continue;
    }
    const Sheet read = book.ReadSheet(sheet);
    const size_t columns = read.rows.empty() ? 0 : read.rows[0].size();
    std::printf(": %zu rows, %zu columns\n", read.rows.size(), columns);
    PrintTable(read);
    PrintCharts(book, sheet);
  }
}

void PrintPatches(const char* when, const Workbook& book) {
  const Patches patches = book.CountPatches();
  std::printf("  %s: %u bytes with %d DETOUR, %d RESUME, %d SLACK and %d BUFEND\n", when, book.Size(),
              patches.detours, patches.resumes, patches.slacks, patches.ends);
}

// A place in a workbook. Rows and columns count from 1.
struct Place {
  int sheet;
  int row;
  int column;
};

std::string Name(const Place& place) {
  return "sheet " + std::to_string(place.sheet) + ", row " + std::to_string(place.row) + ", column " +
         std::to_string(place.column);
}

const Cell& CellAt(const Sheet& sheet, const Place& place) {
  return sheet.rows[static_cast<size_t>(place.row - sheet.first_row)]
                   [static_cast<size_t>(place.column - sheet.first_column)];
}

int XfAt(const Sheet& sheet, const Place& place) {
  return sheet.xfs[static_cast<size_t>(place.row - sheet.first_row)]
                  [static_cast<size_t>(place.column - sheet.first_column)];
}

// The cells to try, best first: those that hold a number, then the empty ones. Texts are left alone, since a
// text of the shared table would stay where it is, beside the new cell; so are formulas, which a report wants
// to keep.
std::vector<Place> PlacesOf(const Sheet& sheet, int number) {
  std::vector<Place> numbers, empty;
  for (size_t row = 0; row < sheet.rows.size(); ++row) {
    for (size_t column = 0; column < sheet.rows[row].size(); ++column) {
      const Place place = {number, sheet.first_row + static_cast<int>(row),
                           sheet.first_column + static_cast<int>(column)};
      const Cell::Kind kind = sheet.rows[row][column].kind;
      if (kind == Cell::Kind::kNumber) numbers.push_back(place);
      if (kind == Cell::Kind::kEmpty) empty.push_back(place);
    }
  }
  numbers.insert(numbers.end(), empty.begin(), empty.end());
  return numbers;
}

// A change, and what the cell holds after it.
struct Change {
  const char* what;
  std::function<bool(Workbook&, const Place&)> make;
  std::string text;  // what the cell then reads as; "-" where its value stays
};

struct Changed {
  Place place;
  const Change* change;
};

// Makes every change in the first of the remaining places that has room for it.
std::vector<Changed> Make(Workbook& book, const std::vector<Change>& changes, std::vector<Place> places) {
  std::vector<Changed> done;
  for (const Change& change : changes) {
    const auto taken = std::find_if(places.begin(), places.end(),
                                    [&](const Place& place) { return change.make(book, place); });
    if (taken == places.end()) {
      std::printf("  No cell was found that %s could be written into.\n", change.what);
      continue;
    }
    std::printf("  Wrote %s into %s\n", change.what, Name(*taken).c_str());
    done.push_back({*taken, &change});
    places.erase(places.begin(), taken + 1);
  }
  return done;
}

// The format of the first cell that has one, to be given to another.
int SomeXf(const Sheet& sheet) {
  for (const auto& row : sheet.xfs) {
    for (const int xf : row) {
      if (xf >= 0) return xf;
    }
  }
  return 0;
}

std::vector<Change> ChangesWith(int xf) {
  return {
      {"the number 1234.5",
       [](Workbook& book, const Place& at) { return book.PutNumber(at.sheet, at.row, at.column, 1234.5); },
       "1234.500000"},
      {"the text \"changed\"",
       [](Workbook& book, const Place& at) { return book.PutText(at.sheet, at.row, at.column, "changed"); },
       "changed"},
      {"an empty value",
       [](Workbook& book, const Place& at) { return book.PutNothing(at.sheet, at.row, at.column); }, ""},
      {"a format",
       [xf](Workbook& book, const Place& at) { return book.PutFormat(at.sheet, at.row, at.column, xf); },
       "-"},
  };
}

int FirstWorksheet(const Workbook& book) {
  int sheet = 1;
  while (sheet <= book.SheetCount() && !book.IsWorksheet(sheet)) ++sheet;
  return sheet <= book.SheetCount() ? sheet : 0;
}

// Whether a cell reads as what was written into it. A text may show one stray character behind it: see
// Workbook::PutText.
bool Holds(const Workbook& book, const Cell& cell, const std::string& written) {
  const bool may_be_longer = book.Generation() == 6 && cell.kind == Cell::Kind::kText;
  return cell.text == written || (may_be_longer && cell.text.substr(0, cell.text.size() - 1) == written);
}

// Opens the result and compares. Gives false when a cell doesn't hold what was written into it.
bool ShowResult(const fs::path& path, const std::vector<Changed>& changed, int xf) {
  const Workbook book(path);
  std::printf("%s, opened again\n", path.string().c_str());
  PrintPatches("As opened", book);
  bool all_there = true;
  for (const Changed& one : changed) {
    const Sheet sheet = book.ReadSheet(one.place.sheet);
    const Cell& cell = CellAt(sheet, one.place);
    const bool there =
        one.change->text == "-" ? XfAt(sheet, one.place) == xf : Holds(book, cell, one.change->text);
    std::printf("  %s holds \"%s\" with format %d%s\n", Name(one.place).c_str(), Printable(cell.text).c_str(),
                XfAt(sheet, one.place), there ? "" : ", which is not what was written");
    all_there = all_there && there;
  }
  return all_there;
}

void PrintFormulas(const Workbook& book, int sheet) {
  const std::vector<Formula> formulas = book.Formulas(sheet);
  for (size_t i = 0; i < std::min(formulas.size(), kFormulasShown); ++i) {
    std::printf("    formula in %s:", Name({sheet, formulas[i].row, formulas[i].column}).c_str());
    for (const uint8_t byte : formulas[i].tokens) std::printf(" %02X", byte);
    std::printf("\n");
  }
}

// Inserts a row in front of the second row of the first worksheet, and shows the sheet before and after. The
// tokens are those of Excel 5.0 and 95, which the library moves the references of: a reference is 24, 44 or
// 64, the row in 14 bits under two flags, and the column. The row grows by one, but the flags come back in
// bits 7 and 6 of the row word and not in 15 and 14. So only absolute references (without flags) still mean
// their cell afterwards: a host whose formulas have relative ones has to write them anew.
void ShowInsertedRow(const fs::path& path) {
  Workbook book(path);
  const int sheet = FirstWorksheet(book);
  if (book.Generation() != 5 || sheet == 0 || book.Formulas(sheet).empty()) return;
  const int row = book.ReadSheet(sheet).first_row + 1;
  std::printf("%s, opened once more to insert a row at row %d of sheet %d\n", path.string().c_str(), row,
              sheet);
  const auto print = [&](const char* when) {
    std::printf("  %s\n", when);
    PrintTable(book.ReadSheet(sheet));
    PrintFormulas(book, sheet);
  };
  print("Before");
  book.InsertRow(sheet, row);
  print("After");
  PrintPatches("With the row", book);
}

// Reads the id out of the saved file.
bool ShowBinding(const fs::path& result, int reference) {
  const int found = report::BoundTo(result);
  std::printf("Bound to reference %d, and %d is what the file says\n", reference, found);
  return found == reference;
}

bool Report(const fs::path& path, const fs::path& folder, const fs::path& references) {
  const fs::path result = folder / path.filename();
  if (fs::exists(result) && fs::equivalent(path, result)) {
    throw std::runtime_error("saving into " + folder.string() + " would replace the workbook itself");
  }
  Workbook book(path);
  std::printf("%s: BIFF%d, %d sheets\n", path.string().c_str(), book.Generation() == 5 ? 5 : 8,
              book.SheetCount());
  PrintSheets(book);
  PrintPatches("As opened", book);

  const int sheet = FirstWorksheet(book);
  const Sheet before = sheet == 0 ? Sheet() : book.ReadSheet(sheet);
  const int xf = SomeXf(before);
  const std::vector<Change> changes = ChangesWith(xf);
  const std::vector<Changed> changed = Make(book, changes, PlacesOf(before, sheet));
  PrintPatches("As changed", book);

  // Saved into a copy, so that all else that the file holds (properties, macros) is in the result as well.
  const int reference = references.empty() ? 0 : report::CreateReference(references);
  if (reference != 0) book.Bind(reference);
  fs::create_directories(folder);
  fs::copy_file(path, result, fs::copy_options::overwrite_existing);
  book.Save(result);
  PrintPatches("As saved", book);
  const bool bound = reference == 0 || ShowBinding(result, reference);
  return ShowResult(result, changed, xf) && bound;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto option = [&arguments](const char* name, fs::path otherwise) {
    if (arguments.size() < 2 || arguments[0] != name) return otherwise;
    const fs::path value = arguments[1];
    arguments.erase(arguments.begin(), arguments.begin() + 2);
    return value;
  };
  const fs::path folder = option("--out", "out");
  const fs::path references = option("--references", {});
  const bool asks = !arguments.empty() && arguments[0] == "--help";
  if (arguments.empty() || asks) {
    std::fprintf(asks ? stdout : stderr, "usage: report [--out FOLDER] [--references FILE] WORKBOOK ...\n");
    return asks ? 0 : 2;
  }
  try {
    bool good = true;
    for (const std::string& path : arguments) {
      good = Report(path, folder, references) && good;
      ShowInsertedRow(path);
    }
    return good ? 0 : 1;
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "report: %s\n", problem.what());
    return 1;
  }
}
