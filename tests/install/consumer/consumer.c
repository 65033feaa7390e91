/* The least that shows that headers and library are found and fit: a block taken, filled, read and given
 * back. */
#include <stdio.h>
#include <tolvenar/tolvenar.h>

int main(void) {
  uint32_t block = MEMORYALLOC(16);
  if (block == 0 || MEMORYSET1(&block, 16, 42) != 16 || MEMORYGET(&block, 16, 15) != 42 ||
      MEMORYFREE(&block) != 1) {
    fprintf(stderr, "the installed library does not answer as it should\n");
    return 1;
  }
  printf("the installed library answers\n");
  return 0;
}
