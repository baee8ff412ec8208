/* Memory for ALLOCATE, the checking mode's undefined pattern, and arithmetic helpers. */
#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "f95rt.h"

void* __f95_allocate(long long bytes, int undefined) {
  void* p = malloc(bytes > 0 ? (size_t)bytes : 1);
  if (p && undefined) memset(p, 0x80, bytes > 0 ? (size_t)bytes : 1);
  return p;
}

void __f95_release(void* p) { free(p); }

void __f95_fill_undefined(void* p, long long bytes) {
  if (bytes > 0) memset(p, 0x80, (size_t)bytes);
}

void __f95_broadcast(void* dst, long long count, long long size, const void* value) {
  unsigned char* d = (unsigned char*)dst;
  for (long long i = 0; i < count; ++i) memcpy(d + i * size, value, (size_t)size);
}

long long __f95_power_integer(long long base, long long exponent) {
  if (exponent < 0) return base == 1 ? 1 : base == -1 ? (exponent % 2 ? -1 : 1) : 0;
  long long r = 1;
  while (exponent > 0) {
    if (exponent & 1) r *= base;
    base *= base;
    exponent >>= 1;
  }
  return r;
}

double __f95_power_real(double base, long long exponent) {
  double r = 1.0;
  int negative = exponent < 0;
  unsigned long long e = negative ? 0ull - (unsigned long long)exponent : (unsigned long long)exponent;
  while (e) {
    if (e & 1) r *= base;
    base *= base;
    e >>= 1;
  }
  return negative ? 1.0 / r : r;
}

void __f95_power_complex(double re, double im, long long exponent, double* out) {
  double rr = 1.0, ri = 0.0;
  int negative = exponent < 0;
  unsigned long long e = negative ? 0ull - (unsigned long long)exponent : (unsigned long long)exponent;
  while (e) {
    if (e & 1) {
      double t = rr * re - ri * im;
      ri = rr * im + ri * re;
      rr = t;
    }
    double t = re * re - im * im;
    im = 2 * re * im;
    re = t;
    e >>= 1;
  }
  if (negative) {
    double d = rr * rr + ri * ri;
    rr = rr / d;
    ri = -ri / d;
  }
  out[0] = rr;
  out[1] = ri;
}

long long __f95_nearest_integer(double v) { return llround(v); }
