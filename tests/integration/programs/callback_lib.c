/* The C side of the callback and waiting programs, built as a DLL of its own so that its
   frames are unwound by the system walker. Fortran passes everything by reference and
   names its routines in upper case. VISITS is found by the debugger only through the
   system's symbol handler: no routine map names it. */
#include <windows.h>

__declspec(dllexport) int VISITS = 0;

__declspec(dllexport) void APPLY_EACH(int* values, int* n, void (*visit)(int*)) {
  for (int i = 0; i < *n; ++i) {
    VISITS += 1000;
    visit(&values[i]);
  }
}

/* Loads a library of its own only now, and has it call back. */
__declspec(dllexport) void LOAD_AND_APPLY(int* values, int* n, void (*visit)(int*)) {
  HMODULE late = LoadLibraryA("late_callback_lib.dll");
  void (*apply)(int*, int*, void (*)(int*)) =
      late ? (void (*)(int*, int*, void (*)(int*)))GetProcAddress(late, "APPLY_EACH_LATE") : 0;
  if (apply) apply(values, n, visit);
}

/* Waits inside the system, where a pause finds the thread. */
__declspec(dllexport) void WAIT_IN_C(int* seconds) { Sleep((DWORD)*seconds * 1000); }
