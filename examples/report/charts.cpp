// How the workbook of workbook.h reads charts: the properties first, since they tell how large the arrays for the
// series have to be.
#include <algorithm>
#include <memory>

#include "workbook.h"

namespace report {

namespace {

constexpr int kNoSuchChart = 9;
constexpr ULONG kPropertyCount = 21;
constexpr int kUnitsAPoint = 20;

// Indices of properties.
constexpr size_t kLongestSeries = 1;
constexpr size_t kSeriesCount = 2;
constexpr size_t kRound = 3;
constexpr size_t kFamily = 5;
constexpr size_t kBars = 10;
constexpr size_t kWidth = 13;
constexpr size_t kHeight = 14;
constexpr size_t kLines = 20;

struct DestroyArray {
  void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
};
using Array = std::unique_ptr<SAFEARRAY, DestroyArray>;

// An array from 1 on; its numbers are 0.
Array MakeArray(VARTYPE type, int count) {
  SAFEARRAY* array = SafeArrayCreateVector(type, 1, static_cast<ULONG>(count));
  if (array == nullptr) throw std::bad_alloc();
  return Array(array);
}

void Check(int result) {
  if (result != 0) throw Failure("the chart can't be read", result);
}

// A cell as the library packs it: less 1, the sheet, 14 bits of the row, the column. 0 is none.
bool Unpack(LONG packed, ChartCell* cell) {
  if (packed == 0) return false;
  const uint32_t bytes = static_cast<uint32_t>(packed) - 1;
  *cell = {static_cast<int>(bytes & 0xFF) + 1, static_cast<int>(bytes >> 8 & 0x3FFF) + 1,
           static_cast<int>(bytes >> 24) + 1};
  return true;
}

// In generation 6 a byte of flags stands in front of the characters, and is counted as one; bit 0 says that
// each character has a second byte.
std::string TakeChartText(BSTR text, int generation) {
  std::string bytes;
  if (text != nullptr) bytes.assign(reinterpret_cast<const char*>(text), SysStringByteLen(text));
  SysFreeString(text);
  if (generation != 6 || bytes.empty()) return bytes;
  const size_t step = (bytes[0] & 1) != 0 ? 2 : 1;
  std::string narrow;
  for (size_t i = 1; i < bytes.size(); i += step) narrow += bytes[i];
  return narrow;
}

// The library hands the codes on as they are, and this is what they come to.
std::string FamilyOf(const std::vector<int>& properties) {
  if (properties[kRound] != 0) return properties[kFamily] == 1 ? "radar" : "pie";
  if (properties[kFamily] == 3) return "three-dimensional";
  if (properties[kBars] != 0) return properties[kBars] == 4 ? "bars" : "columns";
  return properties[kLines] != 0 ? "lines" : "areas or points";
}

}  // namespace

int Workbook::ChartCount(int sheet) const {
  return static_cast<int16_t>(XLGetNumCharts(buffer_, table_, static_cast<int16_t>(sheet)));
}

// Nothing but zeros where the chart is not there.
std::vector<int> Workbook::ReadProperties(int sheet, int chart) const {
  const Array array = MakeArray(VT_I4, kPropertyCount);
  SAFEARRAY* properties = array.get();
  const int result =
      XLGetChartData(&properties, buffer_, table_, static_cast<int16_t>(sheet), static_cast<int16_t>(chart));
  std::vector<int> values(kPropertyCount + 1);
  if (result == kNoSuchChart) return values;
  Check(result);
  for (LONG i = 1; i <= static_cast<LONG>(kPropertyCount); ++i) {
    LONG value = 0;
    SafeArrayGetElement(properties, &i, &value);
    values[static_cast<size_t>(i)] = value;
  }
  return values;
}

void Workbook::ReadSeriesCells(int sheet, int chart, int longest, Chart* into) const {
  SAFEARRAYBOUND bounds[2] = {};
  bounds[0].cElements = static_cast<ULONG>(into->series.size());
  bounds[0].lLbound = 1;
  bounds[1].cElements = static_cast<ULONG>(longest);
  bounds[1].lLbound = 1;
  const Array array(SafeArrayCreate(VT_I4, 2, bounds));
  if (array == nullptr) throw std::bad_alloc();
  SAFEARRAY* cells = array.get();
  Check(XLGetGraphData(&cells, buffer_, table_, static_cast<int16_t>(sheet), static_cast<int16_t>(chart)));
  for (size_t i = 0; i < into->series.size(); ++i) {
    for (LONG item = 1; item <= longest; ++item) {
      LONG index[2] = {static_cast<LONG>(i) + 1, item};
      LONG packed = 0;
      ChartCell cell;
      SafeArrayGetElement(cells, index, &packed);
      if (Unpack(packed, &cell)) into->series[i].cells.push_back(cell);
    }
  }
}

void Workbook::ReadSeriesNames(int sheet, int chart, Chart* into) const {
  const int count = static_cast<int>(into->series.size());
  const Array names = MakeArray(VT_BSTR, count), references = MakeArray(VT_I4, count),
              groups = MakeArray(VT_I4, count), colours = MakeArray(VT_I4, count);
  SAFEARRAY* arrays[] = {names.get(), references.get(), groups.get(), colours.get()};
  // Nothing is put into the spare array: any of the others will do.
  Check(XLGetSetData(buffer_, table_, static_cast<int16_t>(sheet), static_cast<int16_t>(chart), &arrays[0],
                     &arrays[1], &arrays[3], &arrays[2], &arrays[3], static_cast<int16_t>(count),
                     static_cast<int16_t>(count)));
  for (LONG i = 1; i <= count; ++i) {
    BSTR name = nullptr;
    SafeArrayGetElement(names.get(), &i, &name);
    into->series[static_cast<size_t>(i) - 1].name = TakeChartText(name, Generation());
  }
}

void Workbook::ReadTitles(int sheet, int chart, Chart* into) const {
  BSTR texts[3] = {};
  uint16_t fonts[2] = {};
  uint32_t colour = 0;
  Check(XLGetTitleData(buffer_, table_, static_cast<int16_t>(sheet), static_cast<int16_t>(chart), &texts[0],
                       &texts[1], &texts[2], &fonts[0], &fonts[1], &colour));
  into->title = TakeChartText(texts[0], Generation());
  for (size_t axis = 0; axis < 2; ++axis) into->axes[axis] = TakeChartText(texts[axis + 1], Generation());
}

Chart Workbook::ReadChart(int sheet, int chart) const {
  const std::vector<int> properties = ReadProperties(sheet, chart);
  Chart read;
  if (properties == std::vector<int>(properties.size())) return read;
  read.family = FamilyOf(properties);
  read.width = properties[kWidth] / kUnitsAPoint;
  read.height = properties[kHeight] / kUnitsAPoint;
  read.series.resize(static_cast<size_t>(std::min(properties[kSeriesCount], 0x7FFF)));
  ReadTitles(sheet, chart, &read);
  if (read.series.empty()) return read;
  ReadSeriesCells(sheet, chart, std::max(properties[kLongestSeries], 1), &read);
  ReadSeriesNames(sheet, chart, &read);
  return read;
}

}  // namespace report
