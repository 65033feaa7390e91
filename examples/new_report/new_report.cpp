// A report made from nothing: a workbook of two sheets, in both BIFF generations, is built in memory, filled
// slice by slice, saved, and read back.
//
//   new_report [FOLDER]          writes new_report_biff5.xls and new_report_biff8.xls, to "." without a FOLDER
//
// The sheet "Orders" has 10,000 rows of texts, dates, counts and amounts, of which only a slice of 500 is in
// memory at a time; "Products" is small and goes out in one call. Each column has its number format through
// an XF that every new workbook brings along; in the BIFF5 workbook the headers of "Orders" are bold and the
// amounts have a format of their own, through a font, a format and XFs that are looked up and so added.
// Numbers in new sheets have seven digits, dates no time of day; docs/new-workbooks.md tells what other
// programs make of the results.
//
// Exit status: 0 all is well; 1 something could not be done, and a sentence says what; 2
// called in another way, and the usage is shown.
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include <tolvenar/tolvenar.h>

namespace {

// XFs of a new workbook: the number format that each brings.
constexpr uint16_t kGeneral = 15;
constexpr uint16_t kCount = 17;    // _(* #,##0_)
constexpr uint16_t kAmount = 18;   // _("$"* #,##0.00_)
constexpr uint16_t kPercent = 20;  // 0%
constexpr uint16_t kDate = 21;     // dd-mmm-yy

// XFs that differ from workbook to workbook.
struct Looks {
  uint16_t header = kGeneral;
  uint16_t amount = kAmount;
};

constexpr int kOrders = 10000;
constexpr uint16_t kSlice = 500;
constexpr double kFirstDay = 45292;  // 1 January 2024, in days since 1900

constexpr const char* kProducts[] = {"Anvil", "Bellows", "Crucible", "Drawplate", "Engraver"};
constexpr double kPrices[] = {249.5, 89.25, 34.75, 18.5, 12.125};
constexpr double kShares[] = {0.4, 0.25, 0.15, 0.125, 0.075};
constexpr int kProductCount = 5;

// Ends the program with a sentence when a call has not done what it was asked for.
void Check(bool done, const char* what, int result) {
  if (!done) throw std::runtime_error(std::string(what) + " (result " + std::to_string(result) + ")");
}

// The values of a sheet, row by row. It owns its texts.
class Values {
 public:
  Values() = default;
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;
  ~Values() { Clear(); }

  void Text(const std::string& text) {
    const std::basic_string<OLECHAR> wide(text.begin(), text.end());
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(wide.c_str());
    values_.push_back(value);
  }
  void Number(double number) { Double(VT_R8, number); }
  void Date(double day) { Double(VT_DATE, day); }

  void Clear() {
    for (VARIANT& value : values_) VariantClear(&value);
    values_.clear();
  }

  const VARIANT* Data() const { return values_.data(); }
  std::vector<const VARIANT*> Addresses() const {
    std::vector<const VARIANT*> addresses;
    for (const VARIANT& value : values_) addresses.push_back(&value);
    return addresses;
  }

 private:
  void Double(VARTYPE type, double number) {
    VARIANT value;
    VariantInit(&value);
    value.vt = type;
    value.dblVal = number;
    values_.push_back(value);
  }

  std::vector<VARIANT> values_;
};

// A new workbook, and what a caller holds of it.
class NewBook {
 public:
  explicit NewBook(int selector) {
    const int result = XLCreateEmptyBook(&buffer_, &size_, selector);
    Check(result == 0, "The workbook can't be made", result);
  }
  NewBook(const NewBook&) = delete;
  NewBook& operator=(const NewBook&) = delete;
  ~NewBook() {
    XLFreeHandle(&table_);
    XLFreeHandle(&buffer_);
  }

  // Adds the looks of this report. To be called before the first sheet, since a SheetTable doesn't outlive one.
  Looks AddLooks() {
    const int result = XLEmptyBookLocateSheets(buffer_, &table_, static_cast<int32_t>(size_));
    if (result != 0) buffer_ = 0;  // released by the call
    Check(result == 0, "The new workbook has no table", result);
    const int16_t bold = XLGetFont(&buffer_, table_, &size_, "Arial", 0, 200, 700, 0, 0, 0);
    Check(bold >= 0, "The font can't be had", bold);
    const int16_t format = XLGetFormat(&buffer_, table_, &size_, "#,##0.00;[Red]-#,##0.00");
    Check(format >= 0, "The number format can't be had", format);
    const Looks looks = {XfOf(bold, 0), XfOf(0, format)};
    XLFreeHandle(&table_);
    return looks;
  }

  // A sheet whose values are all at hand.
  void AddSheet(const char* name, const Values& values, int16_t columns, int16_t rows, const uint16_t* xf) {
    const int result =
        XLAppendVariantSheet(&buffer_, &size_, name, columns, rows, values.Addresses().data(), xf);
    Check(result > 0, "The sheet can't be added", result);
  }

  // A sheet that is filled slice by slice, between BeginSheet and EndSheet.
  void BeginSheet(const char* name, int columns, int rows) {
    sheet_ = AppendVariantSheet1(&buffer_, &size_, name);
    Check(sheet_ > 0, "The sheet can't be entered", sheet_);
    const int result = CreateVariantSheet1A(&buffer_, &size_, columns, rows, &position_);
    Check(result == 0, "The sheet can't be opened", result);
  }
  void AddSlice(uint16_t first_row, uint16_t columns, uint16_t rows, const Values& values,
                const uint16_t* xf) {
    const int result =
        CreateVariantSheet2A(&buffer_, &size_, &position_, 0, first_row, columns, rows, values.Data(), xf);
    Check(result == 0, "A slice can't be written", result);
  }
  void EndSheet() {
    int result = CreateVariantSheet3(&buffer_, &size_, &position_);
    Check(result == 0, "The sheet can't be closed", result);
    result = AppendVariantSheet2(&buffer_, &size_, sheet_);
    Check(result == sheet_, "The workbook can't be laid out", result);
  }

  void Save(const std::string& path) {
    int result = XLLocateSheets(buffer_, &table_, size_);
    if (result != 0) buffer_ = 0;  // released by the call
    Check(result == 0, "The sheets can't be located", result);
    result = XLSaveFile(path.c_str(), &buffer_, &table_, &size_);
    Check(result == 0, "The workbook can't be saved", result);
  }

 private:
  // A locked XF on the automatic background, bottom-aligned.
  uint16_t XfOf(int16_t font, int16_t format) {
    const int16_t xf = XLGetXFIndFull(&buffer_, table_, &size_, font, format, 1, 0, 0, 2, 0, 56, 0, 56, 0, 0,
                                      0, 0, 0, 0, 0, 0);
    Check(xf >= 0, "The XF can't be had", xf);
    return static_cast<uint16_t>(xf);
  }

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
  uint32_t table_ = 0;
  uint32_t position_ = 0;
  int16_t sheet_ = 0;
};

void AddProducts(NewBook* book, const Looks& looks) {
  Values values;
  for (const char* header : {"Product", "Price", "Share"}) values.Text(header);
  for (int i = 0; i < kProductCount; ++i) {
    values.Text(kProducts[i]);
    values.Number(kPrices[i]);
    values.Number(kShares[i]);
  }
  const uint16_t xf[] = {kGeneral, looks.amount, kPercent};
  book->AddSheet("Products", values, 3, kProductCount + 1, xf);
}

// One row of the large sheet.
void AddOrder(Values* values, int order) {
  const int product = order % kProductCount;
  const int count = 1 + order * 7 % 90;
  values->Text("Order " + std::to_string(order + 1));
  values->Date(kFirstDay + order / 30);
  values->Text(kProducts[product]);
  values->Number(count);
  values->Number(count * kPrices[product]);
}

void AddOrders(NewBook* book, const Looks& looks) {
  constexpr uint16_t kColumns = 5;
  const uint16_t h = looks.header;
  const uint16_t header_xf[kColumns] = {h, h, h, h, h};
  const uint16_t xf[kColumns] = {kGeneral, kDate, kGeneral, kCount, looks.amount};
  book->BeginSheet("Orders", kColumns, kOrders + 1);
  Values values;
  for (const char* header : {"Order", "Day", "Product", "Count", "Amount"}) values.Text(header);
  book->AddSlice(0, kColumns, 1, values, header_xf);
  for (int first = 0; first < kOrders; first += kSlice) {
    values.Clear();
    for (int order = first; order < first + kSlice; ++order) AddOrder(&values, order);
    book->AddSlice(static_cast<uint16_t>(first + 1), kColumns, kSlice, values, xf);
  }
  book->EndSheet();
}

// Opens the file again and tells what is in it.
void ShowResult(const std::string& path) {
  uint32_t buffer = 0, size = 0, table = 0;
  int result = XLOpenFile(path.c_str(), &buffer, &size);
  Check(result == 0, "The saved workbook can't be opened", result);
  result = XLLocateSheets(buffer, &table, size);
  Check(result == 0, "The saved workbook's sheets can't be located", result);
  std::printf("%s: %u bytes\n", path.c_str(), size);
  for (int16_t sheet = 1; sheet <= XLGetNumSheets(table); ++sheet) {
    uint16_t first_row = 0, last_row = 0, first_column = 0, last_column = 0;
    result = XLGetSheetSize(buffer, table, sheet, &first_row, &last_row, &first_column, &last_column);
    Check(result == 0, "A sheet has no size", result);
    // A new sheet states its range one larger in each direction.
    std::printf("  sheet %d: %d rows, %d columns\n", sheet, last_row - 1, last_column - 1);
  }
  XLFreeHandle(&table);
  XLFreeHandle(&buffer);
}

void MakeReport(int selector, const std::string& path) {
  NewBook book(selector);
  // Records that a lookup adds have BIFF5's layout, which is no good in a BIFF8 workbook.
  const Looks looks = selector == 5 ? book.AddLooks() : Looks();
  AddProducts(&book, looks);
  AddOrders(&book, looks);
  std::remove(path.c_str());  // a save replaces the stream of an existing file; this is a new one
  book.Save(path);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2 || (argc == 2 && argv[1][0] == '-')) {
    std::printf(
        "usage: new_report [FOLDER]\nMakes new_report_biff5.xls and new_report_biff8.xls in FOLDER.\n");
    return argc == 2 && std::string(argv[1]) == "--help" ? 0 : 2;
  }
  const std::string folder = argc > 1 ? argv[1] : ".";
  try {
    for (const int selector : {5, 8}) {
      const std::string path = folder + "/new_report_biff" + std::to_string(selector) + ".xls";
      MakeReport(selector, path);
      ShowResult(path);
    }
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
  return 0;
}
