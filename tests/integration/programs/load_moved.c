/* Loads lines_moved.dll (beside the program) after reserving the address range it would
   prefer, so that the loader has to relocate it, then calls one of its routines. */
#include <windows.h>
#include <stdio.h>
#include <string.h>

static int preferred_range(const char* path, ULONGLONG* base, DWORD* size) {
  unsigned char headers[4096];
  FILE* file = fopen(path, "rb");
  if (!file) return 0;
  size_t got = fread(headers, 1, sizeof headers, file);
  fclose(file);
  if (got < 64) return 0;
  LONG pe = *(LONG*)(headers + 60);
  if (pe < 0 || (size_t)pe + 24 + 60 > got) return 0;
  *base = *(ULONGLONG*)(headers + pe + 24 + 24);
  *size = *(DWORD*)(headers + pe + 24 + 56);
  return 1;
}

void LOAD_MOVED(void) {
  char path[MAX_PATH];
  DWORD length = GetModuleFileNameA(NULL, path, MAX_PATH);
  char* slash = strrchr(path, '\\');
  if (length == 0 || !slash) return;
  strcpy(slash + 1, "lines_moved.dll");
  ULONGLONG base;
  DWORD size;
  if (!preferred_range(path, &base, &size)) {
    printf(" no headers in %s\n", path);
    return;
  }
  void* taken = VirtualAlloc((void*)(ULONG_PTR)base, size, MEM_RESERVE, PAGE_NOACCESS);
  HMODULE library = LoadLibraryA(path);
  if (!library) {
    printf(" could not load %s\n", path);
    return;
  }
  void (*work)(int*) = (void (*)(int*))GetProcAddress(library, "MOVED_WORK");
  int n = 20;
  if (work) work(&n);
  printf(" moved %s, n %d\n", (ULONG_PTR)library != base && taken ? "yes" : "no", n);
}
