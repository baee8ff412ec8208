/* Fails in the way its first argument names, so that the debugger's stop message for each
   kind of fault can be checked. Ends with 0 when the fault does not stop it. */
#include <windows.h>
#include <stdio.h>
#include <string.h>

#define HANDLED_CODE 0xE0005678u
#define INFORMATION_CODE 0x40001234u
#define HANDLER_EXIT_CODE 7

static volatile int zero = 0;
static volatile int no_limit = 0x7FFFFFFF;
static int handle_access_violations = 0;

/* The program's own handler for the codes a debugger is expected to pass back, and for
   access violations when asked ("guarded-write"). */
static LONG CALLBACK own_handler(EXCEPTION_POINTERS* info) {
  DWORD code = info->ExceptionRecord->ExceptionCode;
  if (code == HANDLED_CODE || code == INFORMATION_CODE ||
      (code == EXCEPTION_ACCESS_VIOLATION && handle_access_violations)) {
    printf("handled 0x%08lX\n", (unsigned long)code);
    fflush(stdout);
    ExitProcess(HANDLER_EXIT_CODE);
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

static int recurse(int depth) {
  volatile char frame[4096];
  frame[0] = (char)depth;
  return depth < no_limit ? recurse(depth + 1) + frame[0] : 0;
}

static DWORD WINAPI short_thread(LPVOID unused) {
  (void)unused;
  return 0;
}

int main(int argc, char** argv) {
  const char* what = argc > 1 ? argv[1] : "";
  AddVectoredExceptionHandler(1, own_handler);
  if (!strcmp(what, "read-null")) return *(volatile int*)0;
  handle_access_violations = !strcmp(what, "guarded-write");
  if (!strcmp(what, "write-null") || handle_access_violations) *(volatile int*)0 = 1;
  if (!strcmp(what, "read-high")) return *(volatile int*)0x12345678;
  if (!strcmp(what, "jump")) ((void (*)(void))0x12345670)();
  if (!strcmp(what, "divide")) return 1000 / zero; /* 1 / x compiles without a division */
  if (!strcmp(what, "illegal")) __asm__ volatile("ud2");
  if (!strcmp(what, "privileged")) __asm__ volatile("hlt");
  if (!strcmp(what, "stack")) return recurse(0);
  if (!strcmp(what, "raise")) RaiseException(0xE0001234u, 0, 0, NULL);
  if (!strcmp(what, "raise-bounds")) RaiseException(0xC000008Cu, 0, 0, NULL);
  if (!strcmp(what, "raise-handled")) RaiseException(HANDLED_CODE, 0, 0, NULL);
  if (!strcmp(what, "raise-information")) RaiseException(INFORMATION_CODE, 0, 0, NULL);
  if (!strcmp(what, "breakpoint")) __debugbreak();
  if (!strcmp(what, "events")) {
    OutputDebugStringA("a line for the debugger\n");
    HANDLE thread = CreateThread(NULL, 0, short_thread, NULL, 0, NULL);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    LoadLibraryA("version.dll");
  }
  return 0;
}
