/* The demo's program: greets, counts its arguments and ends with the number of them. */
#include <stdio.h>

int main(int argc, char** argv) {
  printf("Hello from the debugged program.\n");
  for (int i = 1; i < argc; ++i) printf("  argument %d: %s\n", i, argv[i]);
  fflush(stdout);
  return argc - 1;
}
