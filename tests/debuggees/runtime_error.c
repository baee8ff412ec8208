/* Stops the way the run-time library does on an error: `int 9` with the error number in
   RCX and the address of a name or message in RDX. Arguments: the number, then the text. */
#include <stdlib.h>

static void runtime_error(long long number, const char* text) {
  __asm__ volatile("mov %0, %%rcx\n\t"
                   "mov %1, %%rdx\n\t"
                   "int $9"
                   :
                   : "r"(number), "r"(text)
                   : "rcx", "rdx", "memory");
}

int main(int argc, char** argv) {
  runtime_error(argc > 1 ? atoll(argv[1]) : 0, argc > 2 ? argv[2] : "");
  return 0;
}
