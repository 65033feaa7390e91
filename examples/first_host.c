/* Writes 42 into row 2, column 3 of a workbook's first sheet, and saves the workbook under another name. */
#include <tolvenar/tolvenar.h>

int main(int argc, char** argv) {
  uint32_t buffer = 0, table = 0, size = 0;
  VARIANT value = {.vt = VT_R8, .dblVal = 42.0};
  if (argc != 3 || XLOpenFile(argv[1], &buffer, &size) != 0) return 1;
  if (XLLocateSheets(buffer, &table, size) != 0) return 2;
  if (XLChangeCellValue(&buffer, table, &size, 1, 2, 3, &value) != 0) return 3;
  if (XLSaveFile(argv[2], &buffer, &table, &size) != 0) return 4;
  return XLFreeHandle(&buffer) == 1 ? 0 : 5;
}
