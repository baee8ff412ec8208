/* Loads the library of late_dll while the program runs, then calls its routine. */
#include <windows.h>
#include <stdio.h>
void LOAD_AND_CALL(int* n) {
  HMODULE library = LoadLibraryA("late_dll_lib.dll");
  if (!library) { printf(" no library\n"); return; }
  void (*work)(int*) = (void (*)(int*))GetProcAddress(library, "LATE_WORK");
  if (!work) { printf(" no routine\n"); return; }
  work(n);
}
