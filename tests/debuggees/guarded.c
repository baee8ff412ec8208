/* Writes through a null pointer under its own handler for access violations, which reports
   the fault and ends the program with 7: the handler runs only when a debugger passes the
   exception back to the program. */
#include <windows.h>
#include <stdio.h>

#define HANDLER_EXIT_CODE 7

static LONG CALLBACK catch_access_violation(EXCEPTION_POINTERS* info) {
  if (info->ExceptionRecord->ExceptionCode != EXCEPTION_ACCESS_VIOLATION) return EXCEPTION_CONTINUE_SEARCH;
  printf("access violation handled\n");
  fflush(stdout);
  ExitProcess(HANDLER_EXIT_CODE);
  return EXCEPTION_CONTINUE_SEARCH;
}

int main(void) {
  AddVectoredExceptionHandler(1, catch_access_violation);
  *(volatile int*)0 = 1;
  return 0;
}
