/* Writes 42 into row 2, column 3 of a workbook's first sheet, and saves the workbook under another name. */
#include <stdio.h>
#include <tolvenar/tolvenar.h>

int main(int argc, char** argv) {
  uint32_t buffer = 0, table = 0, size = 0;
  VARIANT value = {.vt = VT_R8, .dblVal = 42.0};
  if (argc != 3) return puts("usage: first_host WORKBOOK RESULT"), 1;
  int result = XLOpenFile(argv[1], &buffer, &size);
  if (result == 0) result = XLLocateSheets(buffer, &table, size);
  if (result == 0) result = XLChangeCellValue(&buffer, table, &size, 1, 2, 3, &value);
  if (result == 0) result = XLSaveFile(argv[2], &buffer, &table, &size);
  if (result != 0) printf("%s: not written, a call gave %d (tolvenar.h says why)\n", argv[2], result);
  XLFreeHandle(&buffer);
  return result != 0;
}
