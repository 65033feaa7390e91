// A tour of what a reference holds: makes one with a table of four dimensions and a graph that is bound to it, saves it, reads it back, and
// prints what came back as a tree.
//
//   reference_tour STORE         STORE: a file of references, which tolvenar-newref makes
//
// The table "turnover" has 4 months x 3 regions x 2 years x 1 product; each cell has its place in a workbook as a position value, a number
// that advances by 1, 0x100 and 0x1000000 along the dimensions, so that the whole table is stored as one box.
//
// Exit status: 0 all is well; 1 something could not be done, and a sentence says what; 2 called without a file.
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include <tolvenar/tolvenar.h>

namespace {

constexpr uint16_t kSizes[4] = {4, 3, 2, 1};
constexpr LONG kPlaceOfFirst = 0x01000101;
constexpr LONG kMonthStep = 1, kRegionStep = 0x100, kYearStep = 0x1000000;
constexpr const char* kRegions[] = {"North", "South", "West"};

// Slots of this program's graphs. The library gives them no meaning.
constexpr uint16_t kTitle = 1, kFootnote = 2;
constexpr int16_t kScale = 1;
constexpr uint16_t kTitleFont = 1;
constexpr uint16_t kSecondTable = 1;  // number of a link
constexpr uint16_t kLegend = 1;       // set of texts, and of text references
constexpr int16_t kColours = 1;       // set of ints
constexpr int16_t kShown = 1;         // set of flags
constexpr LONG kProperties = 128;
constexpr int16_t kSeries = 6;

// Ends the program with a sentence when a call has not done what it was asked for.
void Check(bool done, const std::string& what, int result) {
  if (!done) throw std::runtime_error(what + " (result " + std::to_string(result) + ")");
}

// An array that is given back at the end.
class Array {
 public:
  Array(VARTYPE type, const std::vector<SAFEARRAYBOUND>& bounds) {
    std::vector<SAFEARRAYBOUND> copy = bounds;
    array_ = SafeArrayCreate(type, static_cast<UINT>(copy.size()), copy.data());
    Check(array_ != nullptr, "There is no memory for an array", 0);
  }
  Array(VARTYPE type, LONG first, LONG last) : Array(type, {{static_cast<ULONG>(last - first + 1), first}}) {}
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;
  ~Array() { SafeArrayDestroy(array_); }

  SAFEARRAY** Ref() { return &array_; }
  template <typename Value>
  void Set(std::vector<LONG> index, Value value) {
    SafeArrayPutElement(array_, index.data(), &value);
  }
  template <typename Value>
  Value At(std::vector<LONG> index) {
    Value value = {};
    SafeArrayGetElement(array_, index.data(), &value);
    return value;
  }

 private:
  SAFEARRAY* array_ = nullptr;
};

std::vector<SAFEARRAYBOUND> TableBounds() {
  std::vector<SAFEARRAYBOUND> bounds;
  for (const uint16_t size : kSizes) bounds.push_back({size, 1});
  return bounds;
}

LONG PlaceOf(LONG month, LONG region, LONG year) {
  return kPlaceOfFirst + (month - 1) * kMonthStep + (region - 1) * kRegionStep + (year - 1) * kYearStep;
}

// Calls `visit` with month, region and year of each cell.
template <typename Visit>
void ForEachCell(Visit visit) {
  for (LONG year = 1; year <= kSizes[2]; ++year) {
    for (LONG region = 1; region <= kSizes[1]; ++region) {
      for (LONG month = 1; month <= kSizes[0]; ++month) visit(month, region, year);
    }
  }
}

// A BSTR as text, and released.
std::string Taken(BSTR text) {
  if (text == nullptr) return "(none)";
  const std::string bytes(reinterpret_cast<const char*>(text), SysStringByteLen(text));
  SysFreeString(text);
  return bytes;
}

// A reference in memory.
class Reference {
 public:
  Reference(const std::string& store, int id) {
    const int result = XLReadReference(store.c_str(), &buffer_, &size_, id);
    Check(result == 0, "Reference " + std::to_string(id) + " can't be read", result);
  }
  Reference(const Reference&) = delete;
  Reference& operator=(const Reference&) = delete;
  ~Reference() { XLFreeHandle(&buffer_); }

  int16_t AddTable();
  int16_t AddGraph(int16_t table);
  void Save(const std::string& store, int id) {
    const int result = XLSaveReference(store.c_str(), &buffer_, &size_, id);
    Check(result == 0, "The reference can't be saved", result);
  }
  void PrintTable(int16_t table);
  void PrintGraph(int16_t graph);

 private:
  void FillTable(int16_t table);
  void FillSlots(uint16_t graph);
  void FillSets(uint16_t graph);
  void PrintSlots(uint16_t graph);
  void PrintSets(uint16_t graph);

  uint32_t buffer_ = 0;
  uint32_t size_ = 0;
};

int16_t Reference::AddTable() {
  const int16_t table = XLRCreateTable(&buffer_, &size_, kSizes[0], kSizes[1], kSizes[2], kSizes[3]);
  Check(table > 0, "The table can't be made", table);
  FillTable(table);
  return table;
}

// Places of all cells; the names of the regions as the texts of the first month's; two values.
void Reference::FillTable(int16_t table) {
  Array places(VT_I4, TableBounds());
  ForEachCell([&](LONG month, LONG region, LONG year) {
    places.Set<LONG>({month, region, year, 1}, PlaceOf(month, region, year));
  });
  int result = XLRFillTable(&buffer_, &size_, places.Ref(), static_cast<uint16_t>(table));
  Check(result == 0, "The places can't be stored", result);
  for (uint32_t region = 1; region <= kSizes[1]; ++region) {
    result = XLRTextToTable(&buffer_, &size_, table, 1, region, 1, 1, kRegions[region - 1]);
    Check(result == 0, "A text can't be stored", result);
  }
  const double values[] = {120.5, 80.25};
  for (uint32_t month = 1; month <= 2; ++month) {
    uint32_t halves[2];
    std::memcpy(halves, &values[month - 1], sizeof halves);
    result = XLRValueToTable(&buffer_, &size_, table, month, 1, 1, 1, halves[0], halves[1]);
    Check(result == 0, "A value can't be stored", result);
  }
}

int16_t Reference::AddGraph(int16_t table) {
  const int16_t id = XLRCreateGraph(&buffer_, &size_, static_cast<uint16_t>(table));
  Check(id > 0, "The graph can't be made", id);
  const uint16_t graph = static_cast<uint16_t>(id);
  const int result = XLRUpdateGraphTable(&buffer_, &size_, graph, static_cast<uint16_t>(table), kSecondTable);
  Check(result == 0, "The graph can't be linked", result);
  FillSlots(graph);
  FillSets(graph);
  return id;
}

void Reference::FillSlots(uint16_t graph) {
  const double scale = 0.001;
  uint32_t halves[2];
  std::memcpy(halves, &scale, sizeof halves);
  Array properties(VT_I4, 1, kProperties);
  properties.Set<LONG>({1}, 3);
  properties.Set<LONG>({kProperties}, -1);
  Array shown(VT_I2, 1, kSeries);
  for (const LONG series : {1, 2, 5}) shown.Set<int16_t>({series}, 1);
  const int results[] = {
      XLRSaveText(&buffer_, &size_, graph, "Turnover by region", kTitle),
      XLRSaveText(&buffer_, &size_, graph, "in thousands", kFootnote),
      XLRSaveDouble(&buffer_, &size_, graph, halves[0], halves[1], kScale),
      XLRSaveFont(&buffer_, &size_, graph, 1, 200, 700, 0, kTitleFont),
      XLRSaveProperties(&buffer_, &size_, properties.Ref(), graph),
      XLRSaveSelVis(&buffer_, &size_, shown.Ref(), graph, kSeries, kShown),
  };
  for (const int result : results) Check(result == 0, "A slot of the graph can't be stored", result);
}

// Colours of series 2 to 5, a text for the legend of series 1, and places in the workbook for those of 2 to 4.
void Reference::FillSets(uint16_t graph) {
  Array colours(VT_I2, 2, 5), places(VT_I4, 2, 4), none(VT_I4, 2, 4);
  for (LONG series = 2; series <= 5; ++series)
    colours.Set<int16_t>({series}, static_cast<int16_t>(series * 8));
  for (LONG series = 2; series <= 4; ++series) places.Set<LONG>({series}, PlaceOf(1, series - 1, 1));
  const int results[] = {
      XLRSaveSetText(&buffer_, &size_, graph, 1, "All regions", kLegend),
      XLRSaveSetInt(&buffer_, &size_, graph, 2, 5, kSeries, colours.Ref(), kColours),
      XLRSaveTextRef(&buffer_, &size_, graph, 2, 4, kSeries, places.Ref(), none.Ref(), kLegend),
  };
  for (const int result : results) Check(result == 0, "A set of the graph can't be stored", result);
}

void Reference::PrintTable(int16_t table) {
  const uint16_t id = static_cast<uint16_t>(table);
  std::printf("|-- table %d: %d x %d x %d x %d\n", table, kSizes[0], kSizes[1], kSizes[2], kSizes[3]);
  for (uint32_t region = 1; region <= kSizes[1]; ++region) {
    BSTR text = nullptr;
    const int result = XLRGetTableText(buffer_, id, &text, 1, region, 1, 1);
    Check(result == 0, "A text can't be read", result);
    std::printf("|   |-- text of (1,%u,1,1): \"%s\"\n", region, Taken(text).c_str());
  }
  for (uint32_t month = 1; month <= 2; ++month) {
    double value = 0;
    const int result = XLRGetTableValue(buffer_, id, &value, month, 1, 1, 1);
    Check(result == 0, "A value can't be read", result);
    std::printf("|   |-- value of (%u,1,1,1): %g\n", month, value);
  }
  Array places(VT_I4, TableBounds());
  const int result = XLRGetRefTable(buffer_, id, places.Ref());
  Check(result == 0, "The places can't be read", result);
  int alike = 0;
  ForEachCell([&](LONG month, LONG region, LONG year) {
    alike += places.At<LONG>({month, region, year, 1}) == PlaceOf(month, region, year);
  });
  std::printf("|   `-- places: 0x%08X in the first cell, %d of %d as they were stored\n",
              static_cast<unsigned>(places.At<LONG>({1, 1, 1, 1})), alike, kSizes[0] * kSizes[1] * kSizes[2]);
}

void Reference::PrintGraph(int16_t graph) {
  const uint16_t id = static_cast<uint16_t>(graph);
  std::printf("`-- graph %d\n", graph);
  std::printf("    |-- main table: %d\n", XLRTableByGraph(buffer_, id, 0));
  std::printf("    |-- table by link %d: %d\n", kSecondTable, XLRTableByGraph(buffer_, id, kSecondTable));
  PrintSlots(id);
  PrintSets(id);
}

void Reference::PrintSlots(uint16_t graph) {
  for (const uint16_t slot : {kTitle, kFootnote}) {
    BSTR text = nullptr;
    XLRGetText(buffer_, graph, &text, slot);
    std::printf("    |-- text %d: \"%s\"\n", slot, Taken(text).c_str());
  }
  double scale = 0;
  XLRGetDouble(buffer_, graph, &scale, kScale);
  std::printf("    |-- double %d: %g\n", kScale, scale);
  uint16_t font[4] = {};
  XLRGetFont(buffer_, graph, &font[0], &font[1], &font[2], &font[3], kTitleFont);
  std::printf("    |-- font %d: %d, %d, %d, %d\n", kTitleFont, font[0], font[1], font[2], font[3]);
  Array properties(VT_I4, 1, kProperties);
  XLRGetProperties(buffer_, properties.Ref(), graph);
  std::printf("    |-- properties: %d first, %d last\n", static_cast<int>(properties.At<LONG>({1})),
              static_cast<int>(properties.At<LONG>({kProperties})));
  Array shown(VT_I2, 1, kSeries);
  XLRGetSelVis(buffer_, shown.Ref(), graph, kSeries, kShown);
  std::printf("    |-- flags %d:", kShown);
  for (LONG series = 1; series <= kSeries; ++series) std::printf(" %d", shown.At<int16_t>({series}));
  std::printf("\n");
}

void Reference::PrintSets(uint16_t graph) {
  BSTR text = nullptr;
  XLRGetSetText(buffer_, graph, 1, &text, kLegend);
  std::printf("    |-- set of texts %d: 1 \"%s\"\n", kLegend, Taken(text).c_str());
  Array colours(VT_I2, 1, kSeries), places(VT_I4, 1, kSeries), seconds(VT_I4, 1, kSeries);
  XLRGetSetInt(buffer_, graph, kSeries, colours.Ref(), kColours);
  std::printf("    |-- set of ints %d:", kColours);
  for (LONG series = 1; series <= kSeries; ++series) std::printf(" %d", colours.At<int16_t>({series}));
  XLRGetTextRef(buffer_, graph, kSeries, places.Ref(), seconds.Ref(), kLegend);
  std::printf("\n    `-- text references %d:", kLegend);
  for (LONG series = 1; series <= kSeries; ++series)
    std::printf(" 0x%08X", static_cast<unsigned>(places.At<LONG>({series})));
  std::printf("\n");
}

void Tour(const std::string& store) {
  const int id = XLCreateReference(store.c_str());
  Check(id > 0, store + " takes no reference: make a first one with tolvenar-newref " + store, id);
  int16_t table = 0, graph = 0;
  {
    Reference made(store, id);
    table = made.AddTable();
    graph = made.AddGraph(table);
    made.Save(store, id);
  }
  Reference read(store, id);
  std::printf("reference %d in %s\n", id, store.c_str());
  read.PrintTable(table);
  read.PrintGraph(graph);
}

}  // namespace

int main(int argc, char** argv) {
  const bool asks = argc == 2 && std::strcmp(argv[1], "--help") == 0;
  if (argc != 2 || asks) {
    std::fprintf(asks ? stdout : stderr,
                 "usage: reference_tour STORE\n"
                 "Makes a reference in STORE, saves it, reads it back and prints it as a tree.\n"
                 "STORE is a file of references: tolvenar-newref STORE makes an empty one.\n");
    return asks ? 0 : 2;
  }
  try {
    Tour(argv[1]);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "reference_tour: %s\n", failure.what());
    return 1;
  }
  return 0;
}
