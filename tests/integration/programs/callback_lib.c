/* The C side of the callback program, built as a DLL of its own so that its frames are
   unwound by the system walker. Fortran passes everything by reference and names its
   routines in upper case. VISITS is found by the debugger only through the system's
   symbol handler: no routine map names it. */
__declspec(dllexport) int VISITS = 0;

__declspec(dllexport) void APPLY_EACH(int* values, int* n, void (*visit)(int*)) {
  for (int i = 0; i < *n; ++i) {
    VISITS += 1000;
    visit(&values[i]);
  }
}
