// Placeholder entry point until start-up lands.
#include <cstdio>
int wmain(int, wchar_t**) {
  std::printf("Quorvel Debugger for 64-bit Windows version 8.50\n");
  return 1;
}
