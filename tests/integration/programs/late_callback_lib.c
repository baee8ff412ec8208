/* A C library that the callback program's C library loads only when asked, after the
   debugger has started its symbol handler: the walk must still unwind and name its frames. */
__declspec(dllexport) void APPLY_EACH_LATE(int* values, int* n, void (*visit)(int*)) {
  for (int i = *n - 1; i >= 0; --i) visit(&values[i]);
}
