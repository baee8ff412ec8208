/* Start-up and ending, and run-time errors when no debugger is attached. Generated code
   raises an error with `int 9` (RCX = number, RDX = routine name for 29, message text for
   345); under a debugger the debugger reports it, otherwise the access violation that
   the trap becomes reaches this filter, which prints the error and ends the program. */
#include <stdio.h>
#include <stdlib.h>
#include <windows.h>

#include "common/runtime_error_numbers.h"
#include "f95rt.h"

const char* __f95_error_text(long long number) {
  switch (number) {
    case kRuntimeErrorSubscript: return "Array subscript out of bounds";
    case kRuntimeErrorSubstring: return "Substring out of bounds";
    case kRuntimeErrorZeroIncrement: return "DO-loop has zero increment";
    case kRuntimeErrorCharRange: return "Argument to CHAR outside range 0 - 255";
    case kRuntimeErrorAlreadyAllocated: return "ALLOCATABLE array is already allocated";
    case kRuntimeErrorNotAllocated: return "ALLOCATABLE array is not allocated";
    case kRuntimeErrorNoMemory: return "Out of memory in ALLOCATE";
    default: return "Undefined error";
  }
}

static void say(const char* text) { __f95_write_text(text, strlen(text)); }

static LONG WINAPI on_unhandled(EXCEPTION_POINTERS* info) {
  EXCEPTION_RECORD* r = info->ExceptionRecord;
  CONTEXT* c = info->ContextRecord;
  const unsigned char* pc = (const unsigned char*)r->ExceptionAddress;
  char buf[1200];
  if (r->ExceptionCode == EXCEPTION_ACCESS_VIOLATION && pc && pc[0] == 0xCD && pc[1] == 0x09) {
    long long number = (long long)c->Rcx;
    const char* text = (const char*)c->Rdx;
    if (number == kRuntimeErrorMissingRoutine) snprintf(buf, sizeof buf, "Call to missing routine: %.512s\n", text ? text : "?");
    else if (number == kRuntimeErrorMessage) snprintf(buf, sizeof buf, "%.1024s\n", text ? text : "");
    else snprintf(buf, sizeof buf, "Run-time error %lld: %s\n", number, __f95_error_text(number));
    say(buf);
    ExitProcess(2);
  }
  snprintf(buf, sizeof buf, "Exception 0x%08lX at %p\n", (unsigned long)r->ExceptionCode, r->ExceptionAddress);
  say(buf);
  ExitProcess(3);
  return EXCEPTION_CONTINUE_SEARCH;
}

void __f95_start(void) {
  setvbuf(stdout, NULL, _IONBF, 0);
  SetUnhandledExceptionFilter(on_unhandled);
}

void __f95_stop(long long code) {
  fflush(stdout);
  exit((int)code);
}
