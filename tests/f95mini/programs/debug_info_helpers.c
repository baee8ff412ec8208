/* A debugger's view of a running program, from inside it: CALL INSPECT('NAME') finds the
   calling routine in the image's routine map, reads its symbol stream, locates NAME the
   way the debugger does (frame base = the caller's stack pointer at the call, return
   slot from the prologue's allocation, the caller's caller for host association, the
   run-time COMMON list for COMMON members) and prints " NAME = value". Test programs
   print the same variables themselves, so a wrong address, offset, size, bound or type
   code in the debug tables shows up as a difference. */
#include <ctype.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

void __f95_write_text(const char* p, size_t len);
void* __get_common_info(void);

typedef unsigned char u8;
typedef unsigned long long u64;

struct routine {
  const u8* start;
  const u8* end;
  const u8* block;
};

struct frame {
  const u8* base;       /* the stack pointer recorded for the frame */
  const u8* slot;       /* its return slot */
  struct routine r;
};

static const u8* image;

static unsigned u32at(const u8* p) { unsigned v; memcpy(&v, p, 4); return v; }
static u64 u64at(const u8* p) { u64 v; memcpy(&v, p, 8); return v; }

static int find_routine(const u8* pc, struct routine* out) {
  const u8* m = image + u32at(image + 28);
  if (memcmp(m, "QUOR", 4) != 0) return 0;
  m += 8;
  int found = 0;
  while (*m) {
    m += strlen((const char*)m) + 1;
    u64 flags = u64at(m), start = u64at(m + 8), end = u64at(m + 16), block = u64at(m + 24);
    const u8* base = (flags & 1) ? image : 0;
    if (pc >= base + start && pc <= base + end) {
      out->start = base + start;
      out->end = base + end;
      out->block = block ? base + block : 0;
      found = 1; /* later records win, as in the debugger */
    }
    m += 40;
  }
  return found;
}

/* The allocation of the routine's prologue. */
static u64 frame_size(const u8* p) {
  if (*p == 0x90) ++p;
  if (p[0] == 0x48 && p[1] == 0x83 && p[2] == 0xEC) return p[3];
  if (p[0] == 0x48 && p[1] == 0x81 && p[2] == 0xEC) return u32at(p + 3);
  if (p[0] == 0x48 && p[1] == 0xB8) return u64at(p + 2);
  return 0;
}

static void outer_frame(const struct frame* f, struct frame* out) {
  out->base = f->slot + 8;
  const u8* pc = (const u8*)u64at(f->slot);
  memset(&out->r, 0, sizeof out->r);
  out->slot = 0;
  if (find_routine(pc, &out->r)) out->slot = out->base + frame_size(out->r.start);
}

struct record {
  unsigned word, size, type_key, common_key;
  u64 value;
  const char* name;
  const u8* constant;
  const u8* array;
  const u8* next;
};

static const u8* skip_array(const u8* p) {
  int rank_word = (int)u32at(p);
  unsigned mask = u32at(p + 4), rank = rank_word & 15;
  p += 8;
  for (unsigned d = 0; d < rank; ++d) {
    for (int k = 0; k < 3; ++k) {
      if (rank_word < 0 && (mask >> (3 * d + k) & 1)) p += 8;
      p += 8;
    }
    p += 8;
  }
  return p;
}

static const u8* read_record(const u8* p, struct record* r) {
  r->word = u32at(p + 4);
  r->value = u64at(p + 8);
  r->size = u32at(p + 16);
  r->type_key = u32at(p + 20);
  r->common_key = u32at(p + 24);
  r->name = (const char*)(p + 36);
  p += 36 + strlen(r->name) + 1;
  r->constant = (r->word & 15) == 4 ? p : 0;
  if ((r->word & 15) == 4) p += r->size;
  r->array = (r->word & (1u << 9)) ? p : 0;
  if (r->array) p = skip_array(p);
  r->next = p;
  return p;
}

static char out[8192];
static size_t used;
static void put(const char* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  int n = vsnprintf(out + used, sizeof out - used, fmt, ap);
  va_end(ap);
  if (n > 0) used += (size_t)n < sizeof out - used ? (size_t)n : sizeof out - used - 1;
}

struct context {
  struct frame frame, caller;
  const u8* block;
};

/* The address of a variable or bound of the given address type. */
static const u8* locate(struct context* c, unsigned type, u64 value, const u8* base, const struct record* r) {
  const u8* lead = image + u32at(c->block);
  switch (type) {
    case 0: return base + value;
    case 1: return c->frame.base + 32 + value;
    case 11: return (const u8*)u64at(c->frame.base + 32 + value);
    case 3: return c->caller.base + 32 + value;
    case 12: return (const u8*)u64at(c->caller.base + 32 + value);
    case 5: return (const u8*)u64at(c->frame.slot + value);
    case 7: return (const u8*)u64at(c->caller.slot + value);
    case 9: return lead + value;
    case 8: {
      /* the block's name from its tag-3 record, then the run-time list */
      const u8* key_at = c->block + r->common_key + 4;
      char want[300];
      snprintf(want, sizeof want, "/%s/", (const char*)(key_at + 4));
      for (const u8* node = (const u8*)__get_common_info(); node; node = (const u8*)u64at(node))
        if (strcmp((const char*)u64at(node + 8), want) == 0) return (const u8*)u64at(node + 16) + value;
      return 0;
    }
  }
  return 0;
}

static void value_text(struct context* c, const struct record* r, const u8* at, int code, unsigned size);

static void structure_text(struct context* c, unsigned key, const u8* at) {
  const u8* p = c->block + key + 4;
  p += 4;
  p += strlen((const char*)p) + 1;
  unsigned members = u32at(p);
  p += 4;
  put("{");
  for (unsigned i = 0; i < members; ++i) {
    struct record m;
    p = read_record(p, &m);
    put("%s%s=", i ? " " : "", m.name);
    const u8* where = at + m.value;
    if (m.word & (1u << 10)) {
      put(u64at(where) ? "->" : "null");
      continue;
    }
    value_text(c, &m, where, (m.word >> 4) & 31, m.size);
  }
  put("}");
}

static void scalar_text(struct context* c, const struct record* r, const u8* at, int code, unsigned size) {
  switch (code) {
    case 0: case 1: case 2: case 3: {
      u64 v = 0;
      memcpy(&v, at, code == 0 ? 1 : code == 1 ? 2 : code == 2 ? 4 : 8);
      put(v ? "T" : "F");
      break;
    }
    case 4: put("%d", *(const signed char*)at); break;
    case 5: put("%d", *(const short*)at); break;
    case 6: put("%d", *(const int*)at); break;
    case 7: put("%lld", *(const long long*)at); break;
    case 8: put("%.7G", *(const float*)at); break;
    case 9: put("%.15G", *(const double*)at); break;
    case 11: put("(%.7G,%.7G)", ((const float*)at)[0], ((const float*)at)[1]); break;
    case 12: put("(%.15G,%.15G)", ((const double*)at)[0], ((const double*)at)[1]); break;
    case 14: structure_text(c, r->type_key, at); break;
    case 15: put("'%.*s'", (int)size, (const char*)at); break;
    case 16: put("procedure"); break;
    default: put("?code %d", code);
  }
}

static void value_text(struct context* c, const struct record* r, const u8* at, int code, unsigned size) {
  if (!r->array) {
    scalar_text(c, r, at, code, size);
    return;
  }
  const u8* p = r->array;
  int rank_word = (int)u32at(p);
  unsigned mask = u32at(p + 4), rank = rank_word & 15;
  long long lower[7], extent[7], stride[7];
  p += 8;
  for (unsigned d = 0; d < rank; ++d) {
    long long v[3];
    for (int k = 0; k < 3; ++k) {
      if (rank_word < 0 && (mask >> (3 * d + k) & 1)) {
        unsigned type = p[0];
        const u8* where = locate(c, type, u64at(p + 8), 0, r);
        v[k] = where ? (long long)u64at(where) : -999;
        p += 16;
      } else {
        v[k] = (long long)u64at(p);
        p += 8;
      }
    }
    p += 8;
    lower[d] = v[0];
    extent[d] = v[1];
    stride[d] = v[2];
    put("%s%lld:%lld", d ? "," : "(", v[0], v[0] + v[1] - 1);
  }
  put(")");
  /* the elements in storage order, at most 12 */
  long long index[7] = {0};
  for (int shown = 0; shown < 12; ++shown) {
    const u8* e = at;
    for (unsigned d = 0; d < rank; ++d) e += index[d] * stride[d];
    put(" ");
    scalar_text(c, r, e, code, size);
    unsigned d = 0;
    while (d < rank && ++index[d] >= extent[d] && extent[d] < 100000) index[d++] = 0;
    if (d == rank || extent[d] >= 100000) break;
  }
  (void)lower;
}

void inspect_impl(const char* name, long long len, const u8* pc, const u8* sp) {
  struct context c;
  char want[64];
  used = 0;
  snprintf(want, sizeof want, "%.*s", (int)len, name);
  image = (const u8*)GetModuleHandleA(NULL);
  memset(&c, 0, sizeof c);
  if (!find_routine(pc, &c.frame.r) || !c.frame.r.block) {
    put(" %s: no debug block\n", want);
    __f95_write_text(out, used);
    return;
  }
  c.frame.base = sp;
  c.frame.slot = sp + frame_size(c.frame.r.start);
  outer_frame(&c.frame, &c.caller);
  c.block = c.frame.r.block;
  const u8* p = c.block + 16;
  int found = 0;
  while (*p != 2 && !found) {
    u8 tag = *p++;
    if (tag == 1) {
      p += 4;
      p += strlen((const char*)p) + 1;
      unsigned n = u32at(p);
      p += 4;
      for (unsigned i = 0; i < n; ++i) {
        struct record m;
        p = read_record(p, &m);
      }
      continue;
    }
    if (tag == 3) {
      p += 4;
      p += strlen((const char*)p) + 1;
      continue;
    }
    struct record r;
    p = read_record(p, &r);
    if (_stricmp(r.name, want) != 0) continue;
    found = 1;
    unsigned type = r.word & 15, code = (r.word >> 4) & 31;
    put(" %s = ", r.name);
    if (type == 4) {
      scalar_text(&c, &r, r.constant, code, r.size);
    } else {
      const u8* at = locate(&c, type, r.value, 0, &r);
      /* static pointers and allocatables: the address is the slot itself */
      if (at && type == 9 && (r.word & (3u << 10))) at = (const u8*)u64at(at);
      if (!at) put("not associated");
      else value_text(&c, &r, at, code, r.size);
    }
    put("  [type %u]\n", type);
  }
  if (!found) put(" %s: not in the symbol stream\n", want);
  __f95_write_text(out, used);
}

/* INSPECT(name): RCX = the name, RDX = its length (the hidden length argument). Passes
   the return address and the caller's stack pointer at the call on to inspect_impl. */
__asm__(
    "\t.intel_syntax noprefix\n"
    "\t.text\n"
    "\t.globl INSPECT\n"
    "INSPECT:\n"
    "\tmov r8, qword ptr [rsp]\n"
    "\tlea r9, [rsp+8]\n"
    "\tjmp inspect_impl\n"
    "\t.att_syntax\n");
