/* A C program calling a routine of a library our compiler built: below the routine lie
   the program's main, its C start-up and the system's thread start, all unwound and named
   by the system's walker and symbol handler. */
void TALLY(int* n);

int main(void) {
  int n = 1;
  TALLY(&n);
  return 0;
}
