/* CHARACTER operations: assignment with blank padding, comparison as if the shorter
   operand were padded with blanks, concatenation into a caller's buffer. */
#include <string.h>

#include "f95rt.h"

void __f95_assign_string(char* dst, long long dst_len, const char* src, long long src_len) {
  if (dst_len <= 0) return;
  long long n = src_len < dst_len ? src_len : dst_len;
  if (n > 0) memmove(dst, src, (size_t)n);
  if (dst_len > n) memset(dst + n, ' ', (size_t)(dst_len - n));
}

int __f95_compare_strings(const char* a, long long a_len, const char* b, long long b_len) {
  long long n = a_len > b_len ? a_len : b_len;
  for (long long i = 0; i < n; ++i) {
    unsigned char x = i < a_len ? (unsigned char)a[i] : ' ';
    unsigned char y = i < b_len ? (unsigned char)b[i] : ' ';
    if (x != y) return x < y ? -1 : 1;
  }
  return 0;
}

long long __f95_concatenate(char* out, const char* a, long long a_len, const char* b, long long b_len) {
  if (a_len < 0) a_len = 0;
  if (b_len < 0) b_len = 0;
  memmove(out, a, (size_t)a_len);
  memmove(out + a_len, b, (size_t)b_len);
  return a_len + b_len;
}

long long __f95_trimmed_length(const char* p, long long len) {
  while (len > 0 && p[len - 1] == ' ') --len;
  return len;
}

/* Concatenations whose length is known only at run time are built here. The ring is
   large enough for the operands of any one statement of the test programs. */
static char scratch[1 << 20];
static size_t scratch_used;

char* __f95_scratch(long long bytes) {
  size_t n = bytes > 0 ? (size_t)bytes : 1;
  if (n > sizeof scratch) return NULL;
  if (scratch_used + n > sizeof scratch) scratch_used = 0;
  char* p = scratch + scratch_used;
  scratch_used += (n + 15) & ~(size_t)15;
  return p;
}
