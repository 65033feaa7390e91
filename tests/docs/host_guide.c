/* Calls the pieces of C in the host's guide and in the page on references, and looks whether they do what the guide says.
 *
 *   host_guide SAMPLE NEWREF OUT        SAMPLE: a workbook of BIFF5; NEWREF: the program that makes a file of references; OUT: a folder
 */
#include "host_guide_blocks.h"
#include "references_blocks.h"

#include <stdlib.h>

#include "../host/chart_book.h"

static int failures = 0;

static void expect(int holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "does not hold: %s\n", what);
  failures = 1;
}

#define EXPECT(condition) expect(condition, #condition)

static void expect_cell(const char* path, int row, int column, const char* wanted) {
  uint32_t buffer, size, table;
  char text[32];
  EXPECT(open_workbook(path, &buffer, &size, &table) == 0);
  EXPECT(read_cell(buffer, table, 1, row, column, text, sizeof text) == 0);
  expect(strcmp(text, wanted) == 0, wanted);
  close_workbook(&buffer, &table);
}

static void change_and_format(const char* sample, const char* out) {
  uint32_t buffer, size, table;
  EXPECT(open_workbook(sample, &buffer, &size, &table) == 0);
  EXPECT(write_number(&buffer, table, &size, 1, 2, 3, 41.5) == 0);
  const int xf = bold_amount(&buffer, table, &size);
  EXPECT(xf > 0);
  EXPECT(bold_amount(&buffer, table, &size) == xf);
  EXPECT(XLChangeCellXF(&buffer, table, &size, 1, 2, 3, (uint16_t)xf) == 0);
  remove(out);
  EXPECT(XLSaveFile(out, &buffer, &table, &size) == 0);
  close_workbook(&buffer, &table);
  expect_cell(out, 2, 3, "41.500000");
}

static void open_what_is_not_there(void) {
  uint32_t buffer = 1, size = 1, table = 1;
  EXPECT(open_workbook("no such file.xls", &buffer, &size, &table) == 101);
  EXPECT(buffer == 0 && table == 0);
}

/* What a piece printed, zero-terminated. */
static void take_print(FILE* printed, char* text, size_t room) {
  rewind(printed);
  text[fread(text, 1, room - 1, printed)] = 0;
  fclose(printed);
}

static void print_the_chart(const char* out) {
  char text[256];
  uint32_t table = 0, buffer = MEMORYALLOC(sizeof kChartBook);
  memcpy((void*)(uintptr_t)buffer, kChartBook, sizeof kChartBook);
  EXPECT(XLLocateSheets(buffer, &table, sizeof kChartBook) == 0);
  FILE* printed = fopen(out, "w+b");
  EXPECT(print_chart(printed, buffer, table, 1, 1) == 0);
  EXPECT(print_chart(printed, buffer, table, 1, 2) == 9);
  take_print(printed, text, sizeof text);
  expect(strcmp(text, "Top, 100 by 50 points\nabc: sheet 1 row 3 column 4\n") == 0, text);
  close_workbook(&buffer, &table);
}

/* A sheet without charts, in a workbook from a file. */
static void print_no_chart(const char* sample, const char* out) {
  char text[16];
  uint32_t buffer, size, table;
  EXPECT(open_workbook(sample, &buffer, &size, &table) == 0);
  FILE* printed = fopen(out, "w+b");
  EXPECT(print_chart(printed, buffer, table, 1, 1) == 9);
  take_print(printed, text, sizeof text);
  EXPECT(text[0] == 0);
  close_workbook(&buffer, &table);
}

static void bind(const char* workbook, const char* newref, const char* folder) {
  char store[1024], command[2048];
  snprintf(store, sizeof store, "%s/guide.ref", folder);
  snprintf(command, sizeof command, "\"%s\" \"%s\"", newref, store);
  remove(store);
  EXPECT(system(command) == 0);
  const int id = bind_workbook(workbook, store);
  EXPECT(id > 0);
  EXPECT(XLGetReference(workbook) == id);

  uint32_t buffer, size, table, reference = 0, reference_size = 0;
  EXPECT(open_workbook(workbook, &buffer, &size, &table) == 0);
  const int32_t next = keep_and_bind(store, workbook, &buffer, &table, &size);
  EXPECT(next == id + 1);
  close_workbook(&buffer, &table);
  EXPECT(XLGetReference(workbook) == next);
  EXPECT(XLReadReference(store, &reference, &reference_size, next) == 0);
  EXPECT(XLRTableByGraph(reference, 1, 0) == 1);
  XLFreeHandle(&reference);
}

int main(int argc, char** argv) {
  char path[1024];
  if (argc != 4) {
    fprintf(stderr, "usage: host_guide SAMPLE NEWREF OUT\n");
    return 2;
  }
  expect_cell(argv[1], 2, 3, "120.000000");
  expect_cell(argv[1], 2, 2, "North");
  open_what_is_not_there();
  snprintf(path, sizeof path, "%s/guide_changed.xls", argv[3]);
  change_and_format(argv[1], path);
  bind(path, argv[2], argv[3]);
  expect_cell(path, 2, 3, "41.500000");
  snprintf(path, sizeof path, "%s/guide_made.xls", argv[3]);
  remove(path);
  EXPECT(make_workbook(path) == 0);
  expect_cell(path, 1, 1, "Total");
  expect_cell(path, 1, 2, "12.500000");
  snprintf(path, sizeof path, "%s/guide_chart.txt", argv[3]);
  print_the_chart(path);
  print_no_chart(argv[1], path);
  EXPECT(free_blocks() == 9);
  return failures;
}
