/* The chart exports as a host in plain C11 calls them, on a workbook that it brings along. */
#include "charts_c11.h"

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "chart_book.h"
#include "tolvenar/automation.h"
#include "tolvenar/tolvenar.h"

#define REQUIRE(condition, sentence) Require((condition) != 0, sentence, __LINE__)

typedef struct {
  uint32_t buffer;
  uint32_t table;
} ChartBook;

static void Require(int condition, const char* sentence, int line) {
  if (condition) return;
  fprintf(stderr, "charts_c11.c:%d: %s\n", line, sentence);
  exit(1);
}

static int TextIs(BSTR text, const char* expected) {
  const size_t n = strlen(expected);
  return SysStringByteLen(text) == n && memcmp(text, expected, n) == 0;
}

static LONG NumberIn(SAFEARRAY* array, LONG* index) {
  LONG value = -1;
  REQUIRE(SafeArrayGetElement(array, index, &value) == S_OK, "an element of a chart's array can't be read");
  return value;
}

static void CheckSeries(const ChartBook* book) {
  BSTR name = NULL;
  LONG index[2] = {1, 1};
  SAFEARRAYBOUND bounds[2];
  for (int i = 0; i < 2; ++i) bounds[i].cElements = 1, bounds[i].lLbound = 1;
  SAFEARRAY* cells = SafeArrayCreate(VT_I4, 2, bounds);
  SAFEARRAY* names = SafeArrayCreateVector(VT_BSTR, 1, 1);
  SAFEARRAY* numbers[3];
  for (int i = 0; i < 3; ++i) numbers[i] = SafeArrayCreateVector(VT_I4, 1, 1);
  REQUIRE(XLGetGraphData(&cells, book->buffer, book->table, 1, 1) == 0,
          "the cells of a series can't be read");
  REQUIRE(NumberIn(cells, index) == 0x03000201, "the cell of a series is another");
  REQUIRE(XLGetSetData(book->buffer, book->table, 1, 1, &names, &numbers[0], &names, &numbers[1], &numbers[2],
                       1, 1) == 0,
          "the names of the series can't be read");
  SafeArrayGetElement(names, index, &name);
  REQUIRE(TextIs(name, "abc") && NumberIn(numbers[1], index) == 0, "a series has another name or group");
  SysFreeString(name);
  for (int i = 0; i < 3; ++i) SafeArrayDestroy(numbers[i]);
  SafeArrayDestroy(names);
  SafeArrayDestroy(cells);
}

void CheckCharts(void) {
  ChartBook book = {MEMORYALLOC(sizeof kChartBook), 0};
  BSTR title = NULL;
  uint16_t font = 0;
  uint32_t colour = 0;
  LONG index = 13;
  memcpy((void*)(uintptr_t)book.buffer, kChartBook, sizeof kChartBook);
  REQUIRE(XLLocateSheets(book.buffer, &book.table, sizeof kChartBook) == 0,
          "the sheet with a chart can't be located");
  REQUIRE((int16_t)XLGetNumCharts(book.buffer, book.table, 1) == 1, "the sheet has not one chart");
  REQUIRE((int16_t)XLGetNumCharts(book.buffer, book.table, 2) == -2, "there is a second sheet");
  SAFEARRAY* properties = SafeArrayCreateVector(VT_I4, 1, 21);
  REQUIRE(XLGetChartData(&properties, book.buffer, book.table, 1, 2) == 9, "the sheet has a second chart");
  REQUIRE(XLGetChartData(&properties, book.buffer, book.table, 1, 1) == 0,
          "a chart's properties can't be read");
  REQUIRE(NumberIn(properties, &index) == 2000, "a chart has another width");
  index = 1;
  REQUIRE(NumberIn(properties, &index) == 7, "a chart has other categories");
  SafeArrayDestroy(properties);
  CheckSeries(&book);
  REQUIRE(XLGetTitleData(book.buffer, book.table, 1, 1, &title, NULL, NULL, &font, NULL, &colour) == 0,
          "a chart's title can't be read");
  REQUIRE(TextIs(title, "Top") && font == 5 && colour == 0x112233, "a chart has another title");
  SysFreeString(title);
  REQUIRE(XLFreeHandle(&book.table) == 1 && XLFreeHandle(&book.buffer) == 1,
          "the workbook with a chart can't be released");
}
