/* List-directed output. Each PRINT builds one line and writes it with a single
   WriteFile, so output stays in order with the C library's (unbuffered) stdout and is
   never lost when a run-time error ends the program. Every item is preceded by one
   blank; reals print with a decimal point in %G style (7 digits for REAL(4), 15 for
   REAL(8)); logicals print T or F; complex values print as (re,im). */
#include <stdio.h>
#include <string.h>
#include <windows.h>

#include "f95rt.h"

static char line[65536];
static size_t used;

void __f95_write_text(const char* p, size_t len) {
  HANDLE out = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD written = 0;
  while (len > 0) {
    DWORD chunk = len > 65536 ? 65536 : (DWORD)len;
    if (!WriteFile(out, p, chunk, &written, NULL) || written == 0) return;
    p += written;
    len -= written;
  }
}

static void put(const char* p, size_t n) {
  while (n > 0) {
    size_t room = sizeof line - used;
    if (room == 0) {
      __f95_write_text(line, used);
      used = 0;
      room = sizeof line;
    }
    size_t k = n < room ? n : room;
    memcpy(line + used, p, k);
    used += k;
    p += k;
    n -= k;
  }
}

static void item(const char* text) {
  put(" ", 1);
  put(text, strlen(text));
}

static void format_real(char* buf, size_t size, double v, int digits) {
  snprintf(buf, size, "%.*G", digits, v);
  if (strchr(buf, '.') || strchr(buf, 'N')) return; /* has a point, or INF / NAN */
  char* e = strchr(buf, 'E');
  size_t at = e ? (size_t)(e - buf) : strlen(buf);
  if (strlen(buf) + 3 > size) return;
  memmove(buf + at + 2, buf + at, strlen(buf) - at + 1);
  buf[at] = '.';
  buf[at + 1] = '0';
}

void __f95_print_integer(long long v) {
  char buf[32];
  snprintf(buf, sizeof buf, "%lld", v);
  item(buf);
}

void __f95_print_logical(long long v) { item(v ? "T" : "F"); }

void __f95_print_real4(float v) {
  char buf[64];
  format_real(buf, sizeof buf, v, 7);
  item(buf);
}

void __f95_print_real8(double v) {
  char buf[64];
  format_real(buf, sizeof buf, v, 15);
  item(buf);
}

static void complex_item(double re, double im, int digits) {
  char a[64], b[64], buf[140];
  format_real(a, sizeof a, re, digits);
  format_real(b, sizeof b, im, digits);
  snprintf(buf, sizeof buf, "(%s,%s)", a, b);
  item(buf);
}

void __f95_print_complex4(float re, float im) { complex_item(re, im, 7); }
void __f95_print_complex8(double re, double im) { complex_item(re, im, 15); }

void __f95_print_string(const char* p, long long len) {
  put(" ", 1);
  if (len > 0) put(p, (size_t)len);
}

/* code = base * 16 + kind; bases: 0 INTEGER, 1 REAL, 2 COMPLEX, 3 LOGICAL, 4 CHARACTER. */
void __f95_print_array(const void* p, long long count, int code, long long size) {
  const unsigned char* q = (const unsigned char*)p;
  int base = code / 16, kind = code % 16;
  for (long long i = 0; i < count; ++i, q += size) {
    switch (base) {
      case 0:
      case 3: {
        long long v = kind == 1 ? *(const signed char*)q
                      : kind == 2 ? *(const short*)q
                      : kind == 4 ? *(const int*)q
                                  : *(const long long*)q;
        if (base == 0) __f95_print_integer(v);
        else __f95_print_logical(v);
        break;
      }
      case 1:
        if (kind == 4) __f95_print_real4(*(const float*)q);
        else __f95_print_real8(*(const double*)q);
        break;
      case 2:
        if (kind == 4) __f95_print_complex4(((const float*)q)[0], ((const float*)q)[1]);
        else __f95_print_complex8(((const double*)q)[0], ((const double*)q)[1]);
        break;
      default: __f95_print_string((const char*)q, size); break;
    }
  }
}

void __f95_print_end(void) {
  put("\n", 1);
  __f95_write_text(line, used);
  used = 0;
}
