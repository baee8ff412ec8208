/* C side of the mixed-language test: Fortran passes every argument by reference and
   procedures as code addresses; Fortran names are upper case. */
#include <stdio.h>

void APPLY_EACH(int* values, int* n, void (*callback)(int*)) {
  for (int i = 0; i < *n; ++i) callback(&values[i]);
  printf(" C visited %d values\n", *n);
}

int C_SUM(const int* values, const int* n) {
  int s = 0;
  for (int i = 0; i < *n; ++i) s += values[i];
  return s;
}

void C_SCALE(double* x) { *x *= 10.0; }
