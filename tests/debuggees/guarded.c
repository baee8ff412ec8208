/* Faults under its own handler, which reports the fault and ends the program with 7: the
   handler runs only when a debugger passes the exception back to the program.
   guarded raise   raises the program's own exception code 0xE0001234
   guarded write   writes through a null pointer */
#include <windows.h>
#include <stdio.h>
#include <string.h>

#define OWN_CODE 0xE0001234u
#define HANDLER_EXIT_CODE 7

static LONG CALLBACK handler(EXCEPTION_POINTERS* info) {
  DWORD code = info->ExceptionRecord->ExceptionCode;
  if (code != OWN_CODE && code != EXCEPTION_ACCESS_VIOLATION) return EXCEPTION_CONTINUE_SEARCH;
  printf("handled 0x%08lX\n", (unsigned long)code);
  fflush(stdout);
  ExitProcess(HANDLER_EXIT_CODE);
  return EXCEPTION_CONTINUE_SEARCH;
}

int main(int argc, char** argv) {
  AddVectoredExceptionHandler(1, handler);
  if (argc > 1 && !strcmp(argv[1], "raise")) RaiseException(OWN_CODE, 0, 0, NULL);
  if (argc > 1 && !strcmp(argv[1], "write")) *(volatile int*)0 = 1;
  return 0;
}
