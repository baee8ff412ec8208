/* Loops until the file named by its first argument appears, then ends with 5: a program
   that runs until it is paused, and that can be told to finish once resumed. */
#include <windows.h>

int main(int argc, char** argv) {
  volatile unsigned long long turns = 0;
  if (argc < 2) return 1;
  for (;;) {
    for (int i = 0; i < 1000000; ++i) ++turns;
    if (GetFileAttributesA(argv[1]) != INVALID_FILE_ATTRIBUTES) return 5;
  }
}
