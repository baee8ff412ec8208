/* A 32-bit program: the debugger hands it to the 32-bit debugger and never starts it.
   Were it started, it would leave ran32.txt behind. */
#include <stdio.h>

int main(void) {
  FILE* out = fopen("ran32.txt", "w");
  if (out) fclose(out);
  return 0;
}
