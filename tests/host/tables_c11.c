/* The part of host_c11 that knows references: a reference as XLReadReference would give a new one, filled with tables, graphs and
 * chart edits through the exports, read back, compacted and read again.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tolvenar/automation.h"
#include "tolvenar/tolvenar.h"

#define REQUIRE(condition, sentence) Require((condition) != 0, sentence, __LINE__)

void CheckReferenceTables(void);

enum { kDimensions = 4, kNewSize = 36 };

typedef struct {
  uint32_t buffer;
  uint32_t size;
} Reference;

static void Require(int condition, const char* sentence, int line) {
  if (condition) return;
  fprintf(stderr, "tables_c11.c:%d: %s\n", line, sentence);
  exit(1);
}

static Reference NewReference(void) {
  static const uint8_t bytes[kNewSize] = {0xFF, 0x10, 4, 0, 8,    0,    0, 0, 0xDA, 0x10, 4, 0,
                                          0,    0,    0, 0, 0xDB, 0x10, 4, 0, 0,    0,    0, 0,
                                          0xFE, 0x10, 4, 0, 0,    0,    0, 0, 0xF8, 0xFE, 0, 0};
  Reference reference;
  reference.buffer = MEMORYALLOC(kNewSize);
  reference.size = kNewSize;
  REQUIRE(reference.buffer != 0, "there is no block for a reference");
  memcpy((uint8_t*)(uintptr_t)reference.buffer, bytes, kNewSize);
  return reference;
}

static SAFEARRAY* Positions(ULONG d1, ULONG d2) {
  SAFEARRAYBOUND bounds[kDimensions] = {{0, 1}, {0, 1}, {1, 1}, {1, 1}};
  bounds[0].cElements = d1;
  bounds[1].cElements = d2;
  return SafeArrayCreate(VT_I4, kDimensions, bounds);
}

/* Cell (a, b) of an array has the value a + 256 b. */
static void FillPositions(SAFEARRAY* positions, LONG d1, LONG d2) {
  for (LONG a = 1; a <= d1; ++a) {
    for (LONG b = 1; b <= d2; ++b) {
      LONG index[kDimensions] = {a, b, 1, 1};
      LONG value = a + 256 * b;
      REQUIRE(SafeArrayPutElement(positions, index, &value) == S_OK, "an element can't be put");
    }
  }
}

static void Create(Reference* reference) {
  uint32_t* buffer = &reference->buffer;
  uint32_t* size = &reference->size;
  SAFEARRAY* positions = Positions(3, 2);
  FillPositions(positions, 3, 2);
  REQUIRE(XLRCreateTable(buffer, size, 3, 2, 1, 1) == 1, "the first table is not 1");
  REQUIRE(XLRCreateTable(buffer, size, 1, 1, 1, 1) == 2, "the second table is not 2");
  REQUIRE(XLRFillTable(buffer, size, &positions, 1) == 0, "position values can't be stored");
  REQUIRE(XLRTextToTable(buffer, size, 1, 3, 2, 1, 1, "corner") == 0, "a cell takes no text");
  REQUIRE(XLRValueToTable(buffer, size, 1, 1, 1, 1, 1, 7, 9) == 0, "a cell takes no value");
  REQUIRE(XLRTextToTable(buffer, size, 1, 4, 1, 1, 1, "outside") == -100, "a cell outside takes a text");
  REQUIRE(XLRCreateGraph(buffer, size, 2) == 1, "the first graph is not 1");
  REQUIRE(XLRUpdateGraphTable(buffer, size, 1, 2, 5) == 0, "a graph takes no link");
  REQUIRE(XLRUpdateGraph(reference->buffer, 1, 1) == 0, "a graph takes no other table");
  REQUIRE(XLRCreateChartEdit(buffer, size, 1, 4, 1) == 0 && XLRCreateChartEdit(buffer, size, 2, 4, 0x56) == 0,
          "chart edits can't be made");
  SafeArrayDestroy(positions);
}

static void CheckPositions(const Reference* reference) {
  SAFEARRAY* positions = Positions(3, 2);
  LONG index[kDimensions] = {3, 2, 1, 1};
  LONG value = 0;
  REQUIRE(XLRGetRefTable(reference->buffer, 1, &positions) == 0, "position values can't be read");
  REQUIRE(SafeArrayGetElement(positions, index, &value) == S_OK && value == 3 + 256 * 2,
          "a position value is another");
  SafeArrayDestroy(positions);
}

static void CheckObjects(const Reference* reference) {
  const uint32_t buffer = reference->buffer;
  uint32_t value[2] = {0, 0};
  BSTR text = NULL;
  CheckPositions(reference);
  REQUIRE(XLRGetTableText(buffer, 1, &text, 3, 2, 1, 1) == 0, "the text of a cell is gone");
  REQUIRE(SysStringByteLen(text) == 6 && memcmp(text, "corner", 6) == 0, "the text of a cell is another");
  SysFreeString(text);
  REQUIRE(XLRGetTableValue(buffer, 1, value, 1, 1, 1, 1) == 0 && value[0] == 7 && value[1] == 9,
          "the value of a cell is another");
  REQUIRE(XLRGetTableValue(buffer, 1, value, 2, 1, 1, 1) == -200, "an empty cell has a value");
  REQUIRE(XLRGetNumItems(buffer, 1) == 2 && XLRGetNumItems(buffer, 2) == 1 && XLRGetNumItems(buffer, 3) == 2,
          "the objects are not two tables, a graph and two chart edits");
  REQUIRE(XLRTableByGraph(buffer, 1, 0) == 1 && XLRTableByGraph(buffer, 1, 5) == 2,
          "a graph is bound to other tables");
}

static void CheckIndices(const Reference* reference) {
  SAFEARRAY* first = SafeArrayCreateVector(VT_I2, 1, 2);
  SAFEARRAY* second = SafeArrayCreateVector(VT_I2, 1, 2);
  const uint8_t* bytes = (const uint8_t*)(uintptr_t)reference->buffer;
  LONG index = 2;
  uint8_t element[2];
  REQUIRE(XLRGetIndices(reference->buffer, &first, &second, 2, 1) == 0, "the directory can't be listed");
  REQUIRE(SafeArrayGetElement(first, &index, element) == S_OK && memcmp(element, bytes + 5, 2) == 0,
          "the first array is not filled from offset 5");
  REQUIRE(SafeArrayGetElement(second, &index, element) == S_OK && memcmp(element, bytes + 6, 2) == 0,
          "the second array is not filled from offset 6");
  SafeArrayDestroy(first);
  SafeArrayDestroy(second);
}

static void Delete(const Reference* reference) {
  const uint32_t buffer = reference->buffer;
  REQUIRE(XLRDeleteTable(buffer, 1) == 0 && XLRDeleteTable(buffer, 1) == -997, "a table is not deleted once");
  REQUIRE(XLRDeleteGraph(buffer, 1) == 0 && XLRDeleteGraph(buffer, 1) == -997, "a graph is not deleted once");
  REQUIRE(XLRGetNumItems(buffer, 1) == 1 && XLRGetNumItems(buffer, 2) == 0, "what is deleted is listed");
}

void CheckReferenceTables(void) {
  Reference reference = NewReference();
  Create(&reference);
  CheckObjects(&reference);
  CheckIndices(&reference);
  REQUIRE(XLRGraphByChartEdit(reference.buffer, 1, 4) == 0x5600, "the next chart edit does not answer");
  REQUIRE(XLRUpdateChartEdit(reference.buffer, 1, 4, 0x78) == 0, "the next chart edit does not change");
  REQUIRE(XLRGraphByChartEdit(reference.buffer, 1, 4) == 0x7800, "the chart edit has another graph");
  REQUIRE(XLRefreshReference(&reference.buffer, &reference.size) == 0, "a reference can't be compacted");
  CheckObjects(&reference);
  REQUIRE(XLRDeleteChartEdit(reference.buffer, 2, 4) == -2, "the last chart edit passes");
  Delete(&reference);
  REQUIRE(MEMORYFREE(&reference.buffer) == 1, "the reference is no live block");
}
