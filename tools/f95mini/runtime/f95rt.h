/* The run-time library of programs built by f95mini: entry points called by the
   generated code. Every routine here is plain C with the Win64 calling convention. */
#ifndef F95RT_H
#define F95RT_H

#include <stddef.h>

void __f95_program(void); /* the compiled main program */

void __f95_start(void);
void __f95_stop(long long code);

void __f95_print_integer(long long v);
void __f95_print_logical(long long v);
void __f95_print_real4(float v);
void __f95_print_real8(double v);
void __f95_print_complex4(float re, float im);
void __f95_print_complex8(double re, double im);
void __f95_print_string(const char* p, long long len);
void __f95_print_array(const void* p, long long count, int code, long long element_size);
void __f95_print_end(void);
void __f95_write_text(const char* p, size_t len);

void __f95_assign_string(char* dst, long long dst_len, const char* src, long long src_len);
int __f95_compare_strings(const char* a, long long a_len, const char* b, long long b_len);
long long __f95_concatenate(char* out, const char* a, long long a_len, const char* b, long long b_len);
long long __f95_trimmed_length(const char* p, long long len);
char* __f95_scratch(long long bytes);

void* __f95_allocate(long long bytes, int undefined);
void __f95_release(void* p);
void __f95_fill_undefined(void* p, long long bytes);
void __f95_broadcast(void* dst, long long count, long long size, const void* value);

long long __f95_power_integer(long long base, long long exponent);
double __f95_power_real(double base, long long exponent);
void __f95_power_complex(double re, double im, long long exponent, double* out);
long long __f95_nearest_integer(double v);

const char* __f95_error_text(long long number);

#endif
