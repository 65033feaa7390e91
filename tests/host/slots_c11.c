/* The part of host_c11 that knows the slots and sets of a graph: each is stored in a reference that holds one graph, and given back
 * before and after a compaction.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tolvenar/automation.h"
#include "tolvenar/tolvenar.h"

#define REQUIRE(condition, sentence) Require((condition) != 0, sentence, __LINE__)

void CheckReferenceSlots(void);

enum { kReferenceSize = 60, kGraph = 1, kProperties = 128, kFlags = 9, kItems = 5 };

typedef struct {
  uint32_t buffer;
  uint32_t size;
} Reference;

static void Require(int condition, const char* sentence, int line) {
  if (condition) return;
  fprintf(stderr, "slots_c11.c:%d: %s\n", line, sentence);
  exit(1);
}

/* A reference with an empty graph, as it would be read from a file. */
static Reference OneGraph(void) {
  static const uint8_t bytes[kReferenceSize] = {
      0xFF, 0x10, 4, 0, 20, 0, 0, 0, 0xFC, 0x10, 4, 0, 1, 0, 0, 0, 0xE2, 0x10, 0, 0,
      0xDA, 0x10, 4, 0, 0,  0, 0, 0, 0xDB, 0x10, 4, 0, 0, 0, 0, 0, 0xDC, 0x10, 8, 0,
      2,    0,    1, 0, 8,  0, 0, 0, 0xFE, 0x10, 4, 0, 0, 0, 0, 0, 0xF8, 0xFE, 0, 0};
  Reference reference;
  reference.buffer = MEMORYALLOC(kReferenceSize);
  reference.size = kReferenceSize;
  REQUIRE(reference.buffer != 0, "there is no block for a reference");
  memcpy((uint8_t*)(uintptr_t)reference.buffer, bytes, kReferenceSize);
  return reference;
}

/* An array whose element i holds i times `factor`. */
static SAFEARRAY* Vector(VARTYPE type, LONG first, ULONG count, LONG factor) {
  SAFEARRAY* array = SafeArrayCreateVector(type, first, count);
  REQUIRE(array != NULL, "there is no array");
  for (LONG index = first; index < first + (LONG)count; ++index) {
    LONG value = index * factor;
    REQUIRE(SafeArrayPutElement(array, &index, &value) == S_OK, "an element is refused");
  }
  return array;
}

static LONG At(SAFEARRAY* array, LONG index) {
  LONG value = 0;
  REQUIRE(SafeArrayGetElement(array, &index, &value) == S_OK, "an element can't be got");
  return value;
}

static void RequireText(BSTR text, const char* expected) {
  REQUIRE(text != NULL && SysStringByteLen(text) == strlen(expected), "a text has another length");
  REQUIRE(memcmp(text, expected, strlen(expected)) == 0, "a text came back as another one");
  SysFreeString(text);
}

static void SaveSlots(Reference* r) {
  SAFEARRAY* properties = Vector(VT_I4, 1, kProperties, 1000);
  SAFEARRAY* flags = Vector(VT_I2, 1, kFlags, 0);
  LONG last = kFlags;
  int16_t set = -1;
  SafeArrayPutElement(flags, &last, &set);
  REQUIRE(XLRSaveText(&r->buffer, &r->size, kGraph, "Sales by region", 1) == 0, "a text isn't stored");
  REQUIRE(XLRSaveDouble(&r->buffer, &r->size, kGraph, 0, 0x3FF80000, 3) == 0, "a double isn't stored");
  REQUIRE(XLRSaveFont(&r->buffer, &r->size, kGraph, 1, 2, 3, 4, 5) == 0, "a font isn't stored");
  REQUIRE(XLRSaveProperties(&r->buffer, &r->size, &properties, kGraph) == 0, "properties aren't stored");
  REQUIRE(XLRSaveSelVis(&r->buffer, &r->size, &flags, kGraph, kFlags, 7) == 0, "flags aren't stored");
  SafeArrayDestroy(properties);
  SafeArrayDestroy(flags);
}

static void CheckSlots(const Reference* r) {
  SAFEARRAY* properties = Vector(VT_I4, 1, kProperties, 0);
  SAFEARRAY* flags = Vector(VT_I2, 1, kFlags, 9);
  BSTR text = NULL;
  double value = 0;
  uint16_t font[4] = {0, 0, 0, 0};
  REQUIRE(XLRGetText(r->buffer, kGraph, &text, 1) == 0, "there is no text");
  RequireText(text, "Sales by region");
  REQUIRE(XLRGetDouble(r->buffer, kGraph, &value, 3) == 0 && value == 1.5,
          "a double came back as another one");
  REQUIRE(XLRGetFont(r->buffer, kGraph, font, font + 1, font + 2, font + 3, 5) == 0, "there is no font");
  REQUIRE(font[0] == 1 && font[1] == 2 && font[2] == 3 && font[3] == 4, "a font came back as another one");
  REQUIRE(XLRGetProperties(r->buffer, &properties, kGraph) == 0, "there are no properties");
  REQUIRE(At(properties, 1) == 1000 && At(properties, kProperties) == 128000,
          "properties came back as others");
  REQUIRE(XLRGetSelVis(r->buffer, &flags, kGraph, kFlags, 7) == 0, "there are no flags");
  REQUIRE(At(flags, 1) == 0 && At(flags, kFlags) == 1, "flags came back as others");
  SafeArrayDestroy(properties);
  SafeArrayDestroy(flags);
}

static void SaveSets(Reference* r) {
  SAFEARRAY* values = Vector(VT_I4, 2, 2, 100);
  SAFEARRAY* one = Vector(VT_I4, 4, 1, 100000);
  SAFEARRAY* none = Vector(VT_I4, 4, 1, 0);
  REQUIRE(XLRSaveSetText(&r->buffer, &r->size, kGraph, 3, "March", 1) == 0, "the text of a set isn't stored");
  REQUIRE(XLRSaveSetInt(&r->buffer, &r->size, kGraph, 2, 3, kItems, &values, 1) == 0, "ints aren't stored");
  REQUIRE(XLRSaveSetLong(&r->buffer, &r->size, kGraph, 4, 4, kItems, &one, 2) == 0, "a long isn't stored");
  REQUIRE(XLRSaveTextRef(&r->buffer, &r->size, kGraph, 4, 4, kItems, &one, &none, 1) == 0,
          "a text reference isn't stored");
  SafeArrayDestroy(values);
  SafeArrayDestroy(one);
  SafeArrayDestroy(none);
}

static void CheckSets(const Reference* r) {
  SAFEARRAY* values = Vector(VT_I4, 1, kItems, -1);
  SAFEARRAY* others = Vector(VT_I4, 1, kItems, -1);
  BSTR text = NULL;
  REQUIRE(XLRGetSetText(r->buffer, kGraph, 3, &text, 1) == 0, "there is no text of a set");
  RequireText(text, "March");
  REQUIRE(XLRGetSetInt(r->buffer, kGraph, kItems, &values, 1) == 0, "there are no ints");
  REQUIRE(At(values, 1) == -1 && At(values, 2) == 200 && At(values, 3) == 300, "ints came back as others");
  REQUIRE(XLRGetSetLong(r->buffer, kGraph, kItems, &values, 2) == 0, "there are no longs");
  REQUIRE(At(values, 4) == 400000, "a long came back as another one");
  REQUIRE(XLRGetTextRef(r->buffer, kGraph, kItems, &values, &others, 1) == 0, "there are no text references");
  REQUIRE(At(values, 4) == 400000 && At(others, 4) == 0 && At(others, 5) == -5,
          "a text reference came back as another one");
  SafeArrayDestroy(values);
  SafeArrayDestroy(others);
}

void CheckReferenceSlots(void) {
  BSTR text = NULL;
  Reference reference = OneGraph();
  SaveSlots(&reference);
  CheckSlots(&reference);
  SaveSets(&reference);
  REQUIRE(XLRefreshReference(&reference.buffer, &reference.size) == 0, "a reference can't be compacted");
  CheckSlots(&reference);
  CheckSets(&reference);
  REQUIRE(XLRDeleteProperty(reference.buffer, kGraph, 5, 0) == 0, "a text can't be deleted");
  REQUIRE(XLRGetText(reference.buffer, kGraph, &text, 1) == 0 && text == NULL, "a text was not deleted");
  REQUIRE(MEMORYHANDLES(NULL, 0) == 1, "slots and sets left blocks behind");
  MEMORYFREE(&reference.buffer);
}
