/* Stands in for the 32-bit debugger in tests: copied as vantor.exe into a test's working
   directory, it writes the command line it was started with to vantor_args.txt. */
#include <windows.h>
#include <stdio.h>

int main(void) {
  FILE* out = fopen("vantor_args.txt", "w");
  if (!out) return 2;
  fprintf(out, "%s\n", GetCommandLineA());
  fclose(out);
  return 0;
}
