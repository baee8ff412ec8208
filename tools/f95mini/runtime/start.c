/* The program entry: the C run-time calls main, which runs the compiled main program. */
#include "f95rt.h"

int main(void) {
  __f95_start();
  __f95_program();
  __f95_stop(0);
  return 0;
}
