/* A host in plain C11: knows the public headers and the shared library, and nothing else. It drives the whole
 * life of a workbook through the exports and says in a sentence what is not as it should be.
 *
 *   host_c11 SAMPLE FOLDER      SAMPLE: sample_biff5.xls or sample_biff8.xls; what is written goes into
 * FOLDER
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "charts_c11.h"
#include "tolvenar/automation.h"
#include "tolvenar/tolvenar.h"

#define REQUIRE(condition, sentence) Require((condition) != 0, sentence, __LINE__)

enum { kSales = 1, kRegions = 2, kRows = 8, kColumns = 6, kPathRoom = 1024, kTextRoom = 256 };
enum { kSlotCount = 9, kDetour = 0xFF, kBufEnd = 0xF8 };

typedef struct {
  uint32_t buffer;
  uint32_t table;
  uint32_t size;
} Workbook;

void CheckReferenceTables(void);

static void Require(int condition, const char* sentence, int line) {
  if (condition) return;
  fprintf(stderr, "host_c11.c:%d: %s\n", line, sentence);
  exit(1);
}

void CheckReferenceSlots(void);

static uint32_t LiveBlocks(void) {
  uint32_t bytes = 0;
  return MEMORYHANDLES(&bytes, 0);
}

/* ---- The pool ---- */

static void CheckUnsetPool(void) {
  uint32_t bytes = 77;
  uint32_t none = 0;
  REQUIRE(MEMORYHANDLES(&bytes, 0) == 0 && bytes == 0, "an unset pool has live blocks");
  REQUIRE(MEMORYFREE(&none) == 0 && MEMORYREMOVE(&none) == 0, "an unset pool released something");
  REQUIRE(MEMORYREALLOC(4096, 10) == 0 && MEMORYISHANDLE(4096) == 0, "an unset pool knows a handle");
  REQUIRE(MEMORYSIZE(4096) == 0 && MEMORYALLOCSIZE(4096) == 0, "an unset pool knows a size");
  REQUIRE(MEMORYSET(&none, 5) == 0 && MEMORYGET(&none, 5, 0) == 0, "an unset pool has bytes");
}

static void CheckNineBlocks(void) {
  uint32_t blocks[kSlotCount];
  for (int i = 0; i < kSlotCount; ++i) {
    blocks[i] = MEMORYALLOC(1);
    REQUIRE(MEMORYISHANDLE(blocks[i]) == i + 1, "nine small blocks do not take the nine slots in order");
  }
  REQUIRE(MEMORYALLOC(1) == 0, "there is a tenth block");
  REQUIRE(LiveBlocks() == kSlotCount, "nine live blocks are not counted as nine");
  for (int i = 0; i < kSlotCount; ++i) {
    const uint32_t copy = blocks[i];
    uint32_t stale = copy;
    REQUIRE(MEMORYFREE(&blocks[i]) == 1 && blocks[i] == 0, "a live block is not released");
    REQUIRE(MEMORYFREE(&stale) == 0 && stale == copy, "a block is released twice");
  }
}

static void CheckGrowth(void) {
  uint32_t block = MEMORYALLOC(257);
  REQUIRE(MEMORYISHANDLE(block) == 2 && MEMORYSIZE(block) == 257 && MEMORYALLOCSIZE(block) == 512,
          "257 bytes are not in slot 2");
  REQUIRE(MEMORYSET(&block, 512) == 512, "512 bytes can't be set");
  REQUIRE(MEMORYGET(&block, 512, 254) == 254 && MEMORYGET(&block, 512, 255) == 0,
          "the pattern is not the index modulo 255");
  REQUIRE(MEMORYREALLOC(block, 512) == block, "a block moved that had room where it is");
  block = MEMORYREALLOC(block, 513);
  REQUIRE(MEMORYISHANDLE(block) == 3, "513 bytes are not in slot 3");
  REQUIRE(((const uint8_t*)(uintptr_t)block)[511] == 511 % 255,
          "what lay in the old slot did not come along");
  REQUIRE(MEMORYGET(&block, 4, 4) == 0, "the byte behind the size reads as something");
  REQUIRE(MEMORYSET1(&block, 3, 9) == 3 && MEMORYGET(&block, 513, 2) == 9 && MEMORYGET(&block, 513, 3) == 3,
          "MEMORYSET1 missed");
  REQUIRE(MEMORYSET1(&block, 0, 9) == 0 && MEMORYSET(&block, -1) == 0, "nothing was to be set");
  REQUIRE(MEMORYREMOVE(&block) == 1 && block == 0, "a live block is not removed");
}

static void CheckLargest(void) {
  REQUIRE(MEMORYALLOC(105000001) == 0, "a block is larger than the largest slot");
  uint32_t first = MEMORYALLOC(105000000);
  uint32_t second = MEMORYALLOC(105000000);
  REQUIRE(MEMORYISHANDLE(first) == 8 && MEMORYISHANDLE(second) == 9, "two of the largest blocks do not fit");
  REQUIRE(MEMORYALLOC(105000000) == 0, "a third of the largest blocks fits");
  MEMORYFREEALL();
  REQUIRE(MEMORYISHANDLE(first) == 0 && LiveBlocks() == 0, "a handle outlived MEMORYFREEALL");
  uint32_t empty = MEMORYALLOC(0);
  uint32_t bytes = 77;
  REQUIRE(empty != 0 && MEMORYHANDLES(&bytes, 0) == 1 && bytes == 0, "a block of no bytes is no block");
  MEMORYFREEALL();
}

/* ---- Text and arrays ---- */

static BSTR Wide(const char* text) {
  OLECHAR units[kTextRoom];
  UINT n = 0;
  for (; text[n] != '\0' && n < kTextRoom; ++n) units[n] = (OLECHAR)(unsigned char)text[n];
  return SysAllocStringLen(units, n);
}

/* Text as the library hands it out: one byte a character, from the first byte of the BSTR on. */
static void Narrow(BSTR text, char* to) {
  UINT n = SysStringByteLen(text);
  if (n >= kTextRoom) n = kTextRoom - 1;
  if (n != 0) memcpy(to, text, n);
  to[n] = '\0';
}

static SAFEARRAY* Matrix(VARTYPE type, ULONG rows, ULONG columns) {
  SAFEARRAYBOUND bounds[2];
  bounds[0].cElements = rows;
  bounds[0].lLbound = 1;
  bounds[1].cElements = columns;
  bounds[1].lLbound = 1;
  SAFEARRAY* array = SafeArrayCreate(type, 2, bounds);
  REQUIRE(array != NULL, "an array can't be made");
  return array;
}

static void CheckText(void) {
  static const OLECHAR units[] = {'a', 'b', 0};
  BSTR whole = SysAllocString(units);
  BSTR bytes = SysAllocStringByteLen("abc", 3);
  REQUIRE(SysStringLen(whole) == 2 && SysStringByteLen(whole) == 4 && whole[2] == 0,
          "SysAllocString miscounts");
  REQUIRE(SysStringByteLen(bytes) == 3 && SysStringLen(bytes) == 1, "SysAllocStringByteLen miscounts");
  REQUIRE(SysStringLen(NULL) == 0 && SysStringByteLen(NULL) == 0, "a null text has a length");
  SysFreeString(whole);
  SysFreeString(bytes);
  SysFreeString(NULL);
}

static void CheckVariants(void) {
  VARIANT one;
  VARIANT two;
  VariantInit(&one);
  VariantInit(&two);
  one.vt = VT_BSTR;
  one.bstrVal = Wide("text");
  REQUIRE(VariantCopy(&two, &one) == S_OK && two.vt == VT_BSTR && two.bstrVal != one.bstrVal,
          "a copy shares its text");
  REQUIRE(VariantClear(&one) == S_OK && one.vt == VT_EMPTY, "a cleared value is not empty");
  REQUIRE(SysStringLen(two.bstrVal) == 4 && two.bstrVal[3] == 't', "the copied text is another");
  VariantClear(&two);
}

static void CheckVector(void) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 5, 3);
  LONG index = 7;
  LONG value = -12;
  VARTYPE type = 0;
  void* data = NULL;
  REQUIRE(SafeArrayPutElement(array, &index, &value) == S_OK, "the last element is refused");
  index = 8;
  REQUIRE(SafeArrayPutElement(array, &index, &value) == DISP_E_BADINDEX,
          "an element behind the last is taken");
  REQUIRE(SafeArrayGetVartype(array, &type) == S_OK && type == VT_I4 && SafeArrayGetElemsize(array) == 4,
          "a vector forgot its type");
  REQUIRE(SafeArrayLock(array) == S_OK && SafeArrayUnlock(array) == S_OK, "a vector can't be locked");
  REQUIRE(SafeArrayAccessData(array, &data) == S_OK && ((const LONG*)data)[2] == -12,
          "a vector's data is elsewhere");
  REQUIRE(SafeArrayDestroy(array) == DISP_E_ARRAYISLOCKED, "an array is destroyed while its data is in use");
  REQUIRE(SafeArrayUnaccessData(array) == S_OK && SafeArrayDestroy(array) == S_OK,
          "a vector can't be given back");
}

static void CheckMatrix(void) {
  SAFEARRAY* array = Matrix(VT_VARIANT, 2, 3);
  LONG lower = 0;
  LONG upper = 0;
  LONG index[2] = {2, 3};
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_R8;
  value.dblVal = 2.5;
  REQUIRE(SafeArrayGetDim(array) == 2, "a matrix has not two dimensions");
  REQUIRE(SafeArrayGetLBound(array, 1, &lower) == S_OK && SafeArrayGetUBound(array, 2, &upper) == S_OK,
          "a matrix has no bounds");
  REQUIRE(lower == 1 && upper == 3, "a matrix has other bounds");
  REQUIRE(SafeArrayPutElement(array, index, &value) == S_OK, "a value is refused");
  value.dblVal = 0;
  REQUIRE(SafeArrayGetElement(array, index, &value) == S_OK && value.vt == VT_R8 && value.dblVal == 2.5,
          "a value is lost");
  REQUIRE(SafeArrayDestroy(array) == S_OK, "a matrix can't be given back");
}

/* ---- Workbooks ---- */

static void CopyFile11(const char* from, const char* to) {
  char chunk[4096];
  size_t n = 0;
  FILE* in = fopen(from, "rb");
  FILE* out = fopen(to, "wb");
  REQUIRE(in != NULL && out != NULL, "the sample can't be copied");
  while ((n = fread(chunk, 1, sizeof chunk, in)) != 0)
    REQUIRE(fwrite(chunk, 1, n, out) == n, "the copy can't be written");
  fclose(in);
  REQUIRE(fclose(out) == 0, "the copy can't be finished");
}

static Workbook Open(const char* path) {
  Workbook book = {0, 0, 0};
  REQUIRE(XLOpenFile(path, &book.buffer, &book.size) == 0, "the workbook can't be opened");
  REQUIRE(XLLocateSheets(book.buffer, &book.table, book.size) == 0, "the workbook's sheets can't be located");
  XLGetNumVers(book.buffer, book.table);
  return book;
}

static void Close(Workbook* book) {
  if (book->table != 0)
    REQUIRE(XLFreeHandle(&book->table) == 1 && book->table == 0, "the table can't be released");
  REQUIRE(XLFreeHandle(&book->buffer) == 1 && book->buffer == 0, "the buffer can't be released");
  REQUIRE(XLFreeHandle(&book->buffer) == 0, "a buffer is released twice");
  REQUIRE(LiveBlocks() == 0, "a closed workbook left blocks behind");
}

/* The values of the first sheet. Numbers and texts come as a BSTR, and an array of these takes them on every
 * platform; formulas and errors come as a VARIANT. */
static SAFEARRAY* Values(const Workbook* book, VARTYPE type) {
  SAFEARRAY* cells = Matrix(type, kRows, kColumns);
  REQUIRE(XLGetVariantData(&cells, book->buffer, book->table, kSales) == 0, "the cells can't be read");
  return cells;
}

static int CellIs(SAFEARRAY* cells, LONG row, LONG column, const char* expected) {
  char text[kTextRoom];
  LONG index[2] = {row, column};
  BSTR value = NULL;
  REQUIRE(SafeArrayGetElement(cells, index, &value) == S_OK, "a cell's element can't be read");
  Narrow(value, text);
  SysFreeString(value);
  const int same = strcmp(text, expected) == 0;
  if (!same) fprintf(stderr, "cell (%d, %d) is '%s', not '%s'\n", (int)row, (int)column, text, expected);
  return same;
}

/* A text as it reads once it was written. It is written in BIFF5's layout in both generations, on purpose,
 * and a reader of BIFF8 takes its first character for flags, and one character of what stands behind it. */
static const char* WrittenText(const Workbook* book, const char* text) {
  return XLGetNumVers(book->buffer, book->table) == 6 ? text + 1 : text;
}

static int CellBegins(SAFEARRAY* cells, LONG row, LONG column, const char* expected) {
  char text[kTextRoom];
  LONG index[2] = {row, column};
  BSTR value = NULL;
  REQUIRE(SafeArrayGetElement(cells, index, &value) == S_OK, "a cell's element can't be read");
  Narrow(value, text);
  SysFreeString(value);
  return strncmp(text, expected, strlen(expected)) == 0;
}

static int XfOf(const Workbook* book, LONG row, LONG column) {
  SAFEARRAY* xfs = Matrix(VT_I4, kRows, kColumns);
  LONG index[2] = {row, column};
  LONG xf = -1;
  REQUIRE(XLGetCellData(&xfs, book->buffer, book->table, kSales) == 0, "the formats can't be read");
  REQUIRE(SafeArrayGetElement(xfs, index, &xf) == S_OK, "a format's element can't be read");
  REQUIRE(SafeArrayDestroy(xfs) == S_OK, "the formats can't be given back");
  return (int16_t)xf;
}

static void CheckCatalogue(const Workbook* book, int generation) {
  char text[kTextRoom];
  BSTR name = NULL;
  uint16_t range[4] = {0, 0, 0, 0};
  REQUIRE(XLGetNumSheets(book->table) == 2, "the sample has not two sheets");
  REQUIRE(XLGetNumVers(book->buffer, book->table) == generation, "the sample is of another generation");
  REQUIRE(XLVersInt(-3) == -3, "XLVersInt changes its argument");
  REQUIRE(XLGetNameSheet(book->buffer, book->table, kSales, &name) == 5,
          "the first name has not five letters");
  Narrow(name, text);
  SysFreeString(name);
  /* BIFF5 names come out without their first letter. */
  REQUIRE(generation == 6 ? strcmp(text, "Sales") == 0 : strncmp(text, "ales", 4) == 0,
          "the first sheet has another name");
  REQUIRE(XLGetSheetParam(book->buffer, book->table, kSales, 0, 0, 0, 0) != 0,
          "the first sheet has no entry");
  REQUIRE(XLGetSheetSize(book->buffer, book->table, kSales, &range[0], &range[1], &range[2], &range[3]) == 0,
          "no worksheet");
  REQUIRE(range[0] == 1 && range[1] == kRows && range[2] == 1 && range[3] == kColumns,
          "the first sheet has another range");
  REQUIRE(XLGetSheetSize(book->buffer, book->table, 3, &range[0], &range[1], &range[2], &range[3]) == 2,
          "there is a third sheet");
}

static void CheckCells(const Workbook* book) {
  SAFEARRAY* cells = Values(book, VT_BSTR);
  REQUIRE(CellIs(cells, 1, 1, "Date") && CellIs(cells, 2, 2, "North") && CellIs(cells, 7, 2, "East"),
          "a text is another");
  REQUIRE(CellIs(cells, 2, 3, "120.000000") && CellIs(cells, 2, 5, "17.500000"), "a number is another");
  REQUIRE(CellIs(cells, 2, 1, "45322.000000") && CellIs(cells, 8, 1, ""),
          "a date is another, or an empty cell is not empty");
  REQUIRE(XLSGetVariantData(0, &cells) == 0, "the array's data can't be had");
  SafeArrayDestroy(cells);
  SAFEARRAY* narrow = Matrix(VT_VARIANT, kRows - 1, kColumns);
  REQUIRE(XLGetVariantData(&narrow, book->buffer, book->table, kSales) == 5,
          "an array that is too small is taken");
  SafeArrayDestroy(narrow);
}

/* The formulas of the BIFF5 sample hold their results; those of the other were never calculated. */
static void CheckFormula(const Workbook* book) {
  SAFEARRAY* cells = Values(book, VT_VARIANT);
  LONG index[2] = {2, 6};
  VARIANT value;
  VariantInit(&value);
  REQUIRE(SafeArrayGetElement(cells, index, &value) == S_OK, "a formula's element can't be read");
  REQUIRE(value.vt == VT_R8 && value.dblVal == 2047.5, "a formula's result is another");
  SafeArrayDestroy(cells);
}

/* A string of the shared table, asked for as XLGetVariantData does: the first one stands for every cell. */
static void CheckSharedString(const Workbook* book, uint32_t label) {
  SAFEARRAY* cells = Matrix(VT_BSTR, kRows, kColumns);
  LONG index[2] = {1, 1};
  int32_t string = 0;
  int16_t bucket = (int16_t)XLNumStrBucket(book->buffer, book->table);
  BSTR text = NULL;
  char narrow[kTextRoom];
  XLEXTLabel(book->buffer, &string, &bucket, XLNumStrExt(book->buffer, book->table), &cells, (int32_t)label);
  REQUIRE(SafeArrayGetElement(cells, index, &text) == S_OK, "a shared string's element can't be read");
  Narrow(text, narrow);
  REQUIRE(strcmp(narrow, "Date") == 0, "the first shared string is another");
  SysFreeString(text);
  SafeArrayDestroy(cells);
}

/* How many records of one code a listing has; -1 if it doesn't end with a BUFEND. *first is the offset of the
 * first of them. */
static int CountRecords(const Workbook* book, int code, uint32_t* first) {
  enum { kMost = 1000 };
  int32_t count = 0;
  LONG found = 0;
  LONG type = 0;
  SAFEARRAY* offsets = SafeArrayCreateVector(VT_I4, 1, kMost);
  SAFEARRAY* types = SafeArrayCreateVector(VT_I2, 1, kMost);
  SAFEARRAY* images = SafeArrayCreateVector(VT_BSTR, 1, kMost);
  SAFEARRAY* lengths = SafeArrayCreateVector(VT_I2, 1, kMost);
  REQUIRE(XLGetList(book->buffer, (int32_t)book->size, &count, &offsets, &types, &images, &lengths) == 0,
          "no listing");
  REQUIRE(count > 0 && count < kMost, "the listing is empty, or too long for its arrays");
  for (LONG i = count; i >= 1; --i) {
    int16_t value = 0;
    REQUIRE(SafeArrayGetElement(types, &i, &value) == S_OK, "a record's type can't be read");
    if (i == count) type = value;
    if (value != code) continue;
    ++found;
    SafeArrayGetElement(offsets, &i, first);
  }
  SafeArrayDestroy(offsets);
  SafeArrayDestroy(types);
  SafeArrayDestroy(images);
  SafeArrayDestroy(lengths);
  return type == kBufEnd ? (int)found : -1;
}

static int16_t Change(Workbook* book, int16_t row, int16_t column, VARIANT* value) {
  const int16_t result =
      XLChangeCellValue(&book->buffer, book->table, &book->size, kSales, row, column, value);
  VariantClear(value);
  return result;
}

/* A number, a text, an empty value and a format. */
static void ChangeCells(Workbook* book) {
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_R8;
  value.dblVal = 99.5;
  REQUIRE(Change(book, 2, 3, &value) == 0, "a number can't be written");
  value.vt = VT_BSTR;
  value.bstrVal = Wide("late");
  REQUIRE(Change(book, 3, 4, &value) == 0, "a text can't be written");
  REQUIRE(Change(book, 4, 5, &value) == 0, "an empty value can't be written");
  value.vt = VT_NULL;
  REQUIRE(Change(book, 2, 3, &value) == 2, "a null value is written");
  REQUIRE(Change(book, kRows + 1, 1, &value) == 1, "a cell below the sheet is written");
  const uint16_t date = (uint16_t)XfOf(book, 2, 1);
  REQUIRE(XLChangeCellXF(&book->buffer, book->table, &book->size, kSales, 6, 1, date) == 0,
          "a format can't be given");
  REQUIRE(XLChangeCellXF(&book->buffer, book->table, &book->size, kSales, 5, 3, date) == 0,
          "a format can't be given in a run");
}

static void CheckChanged(const Workbook* book) {
  SAFEARRAY* cells = Values(book, VT_BSTR);
  REQUIRE(CellIs(cells, 2, 3, "99.500000") && CellIs(cells, 4, 5, ""), "a changed number is another");
  REQUIRE(CellBegins(cells, 3, 4, WrittenText(book, "late")), "a changed text is another");
  REQUIRE(CellIs(cells, 2, 5, "17.500000") && CellIs(cells, 4, 3, "131.000000"),
          "a neighbour of a changed cell changed too");
  REQUIRE(XfOf(book, 5, 3) == XfOf(book, 2, 1), "the changed format is another");
  SafeArrayDestroy(cells);
}

static void CheckPatches(Workbook* book, int generation) {
  uint32_t first = 0;
  REQUIRE(CountRecords(book, kDetour, &first) == 0, "a workbook as opened holds patches");
  if (generation == 6) {
    REQUIRE(CountRecords(book, 0xFD, &first) > 0, "a BIFF8 workbook has no shared strings");
    CheckSharedString(book, first);
  }
  ChangeCells(book);
  REQUIRE(CountRecords(book, kDetour, &first) > 0, "a changed workbook holds no patches");
  CheckChanged(book);
  REQUIRE(XLDeleteDBCells(book->buffer, book->size) == 0, "the row offsets can't be deleted");
  REQUIRE(XLRefreshHandles(&book->buffer, book->table, &book->size) == 0, "the workbook can't be refreshed");
  REQUIRE(CountRecords(book, kDetour, &first) == 0, "a refreshed workbook holds patches");
  CheckChanged(book);
}

/* Every cell of the second sheet gets XF 0 by a matrix, but for the first row, which keeps what it has. */
static void CheckMatrixOfFormats(const Workbook* book) {
  int16_t matrix[4 * 5];
  SAFEARRAY* xfs = Matrix(VT_I4, 4, 5);
  LONG index[2] = {2, 4};
  LONG xf = -1;
  for (int i = 0; i < 4 * 5; ++i) matrix[i] = i < 5 ? -1 : 0;
  REQUIRE(ChangeFormat(book->buffer, book->table, kRegions, matrix, 5) == 1,
          "a matrix of formats is not taken");
  REQUIRE(ChangeFormat(book->buffer, book->table, 3, matrix, 5) == 0, "a third sheet takes formats");
  REQUIRE(XLGetCellData(&xfs, book->buffer, book->table, kRegions) == 0,
          "the second sheet's formats can't be read");
  REQUIRE(SafeArrayGetElement(xfs, index, &xf) == S_OK && (int16_t)xf == 0, "a cell did not get its format");
  SafeArrayDestroy(xfs);
}

static void CheckSave(Workbook* book, const char* path) {
  REQUIRE(XLSaveFile(path, &book->buffer, &book->table, &book->size) == 0, "the workbook can't be saved");
  REQUIRE(book->table == 0 && MEMORYISHANDLE(book->buffer) != 0,
          "a save keeps the buffer and releases the table");
  Close(book);
  Workbook again = Open(path);
  CheckChanged(&again);
  Close(&again);
}

static void CheckFailures(const char* missing) {
  uint32_t buffer = 1;
  uint32_t table = 1;
  uint32_t size = 0;
  REQUIRE(XLOpenFile(missing, &buffer, &size) == 101, "a missing workbook is opened");
  REQUIRE(XLLocateSheets(0, &table, 100) == 1, "nothing has sheets");
  REQUIRE(XLGetNumSheets(0) == 0 && XLDeleteDBCells(0, 100) == 1, "nothing is taken for a workbook");
  REQUIRE(LiveBlocks() == 0, "a failure left blocks behind");
}

static void CheckNames(const char* path) {
  Workbook book = Open(path);
  const uint32_t before = LiveBlocks();
  REQUIRE(XLSheetsNameNum(book.buffer, book.table, 0) == 0, "the names can't be gathered");
  REQUIRE(LiveBlocks() == before + 2, "the names of two sheets do not stay in two blocks");
  MEMORYFREEALL();
}

int main(int argc, char** argv) {
  char copy[kPathRoom];
  char saved[kPathRoom];
  char debug[kPathRoom];
  REQUIRE(argc == 3, "usage: host_c11 SAMPLE FOLDER");
  const int generation = strstr(argv[1], "biff5") != NULL ? 5 : 6;
  snprintf(copy, sizeof copy, "%s/c11_copy_%d.xls", argv[2], generation);
  snprintf(saved, sizeof saved, "%s/c11_saved_%d.xls", argv[2], generation);
  snprintf(debug, sizeof debug, "%s/c11_debug_%d.xls", argv[2], generation);
  remove(saved);
  remove(debug);
  CopyFile11(argv[1], copy);

  CheckUnsetPool();
  CheckNineBlocks();
  CheckGrowth();
  CheckLargest();
  CheckText();
  CheckVariants();
  CheckVector();
  CheckMatrix();
  CheckReferenceSlots();
  CheckFailures(saved);
  CheckCharts();
  REQUIRE(LiveBlocks() == 0, "reading charts left blocks behind");

  Workbook book = Open(copy);
  CheckCatalogue(&book, generation);
  CheckCells(&book);
  if (generation == 5) CheckFormula(&book);
  CheckPatches(&book, generation);
  CheckMatrixOfFormats(&book);
  CheckSave(&book, saved);
  book = Open(copy);
  ChangeCells(&book);
  CheckSave(&book, copy);
  CheckNames(copy);
  CheckReferenceTables();
  REQUIRE(DebugSaveFile(debug, 100) == 0, "the test file can't be written");
  printf("%s: every export answered as it should\n", argv[1]);
  return 0;
}
