#include "values/registers.h"

#include <cstring>

#include "debuginfo/symbol_table.h"
#include "values/crt_format.h"

namespace vantor {

namespace {

struct RegisterName {
  const char* name;
  std::uint64_t os::ThreadContext::*field;
};

constexpr RegisterName kRegisterNames[] = {
    {"rax", &os::ThreadContext::rax}, {"rbx", &os::ThreadContext::rbx}, {"rcx", &os::ThreadContext::rcx},
    {"rdx", &os::ThreadContext::rdx}, {"rdi", &os::ThreadContext::rdi}, {"rsi", &os::ThreadContext::rsi},
    {"rsp", &os::ThreadContext::rsp}, {"rbp", &os::ThreadContext::rbp}, {"rip", &os::ThreadContext::rip},
    {"r8", &os::ThreadContext::r8},   {"r9", &os::ThreadContext::r9},   {"r10", &os::ThreadContext::r10},
    {"r11", &os::ThreadContext::r11}, {"r12", &os::ThreadContext::r12}, {"r13", &os::ThreadContext::r13},
    {"r14", &os::ThreadContext::r14}, {"r15", &os::ThreadContext::r15},
};

void* as_pointer(std::uint64_t value) { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(value)); }

std::string xmm_line(int index, const std::array<std::uint8_t, 16>& bytes) {
  float f[4];
  double d[2];
  std::memcpy(f, bytes.data(), 16);
  std::memcpy(d, bytes.data(), 16);
  if (f[0] == 0 && f[1] == 0 && f[2] == 0 && f[3] == 0) return crt_format("XMM%d = 0\n", index);
  if (f[2] == 0 && f[3] == 0)
    return crt_format("XMM%d = %f_1 %f_1 %f_2\n", index, static_cast<double>(f[0]), static_cast<double>(f[1]), d[0]);
  return crt_format("XMM%d = %f_1 %f_1 %f_2 %f_2\n", index, static_cast<double>(f[0]), static_cast<double>(f[1]), d[0],
                    d[1]);
}

}  // namespace

std::unique_ptr<element> register_element(std::string_view name, const os::ThreadContext* context) {
  if (context == nullptr) return nullptr;
  for (const RegisterName& r : kRegisterNames) {
    if (!equal_ignoring_case(name, r.name)) continue;
    auto e = make_element();
    set_integer_constant(*e, static_cast<std::int64_t>(context->*r.field), kTypeInteger8);
    return e;
  }
  return nullptr;
}

std::string decimal_hint(std::int64_t value) {
  if (value == 0 || value <= -1000000 || value >= 1000000) return {};
  return crt_format("(%lld)", static_cast<long long>(value));
}

std::vector<std::string> register_dump(const os::ThreadContext* context) {
  std::vector<std::string> lines;
  if (context == nullptr) return lines;
  const os::ThreadContext& c = *context;
  lines.push_back(crt_format("RIP = %p  CONTROL WORD = %04X\n", as_pointer(c.rip), static_cast<unsigned>(c.fp_control_word)));
  lines.push_back(crt_format("RSP = %p\n", as_pointer(c.rsp)));
  lines.push_back(crt_format("RBP = %p\n", as_pointer(c.rbp)));
  const std::pair<const char*, std::uint64_t> general[] = {
      {"RAX = ", c.rax}, {"RBX = ", c.rbx}, {"RCX = ", c.rcx}, {"RDX = ", c.rdx}, {"RDI = ", c.rdi},
      {"RSI = ", c.rsi}, {"R8  = ", c.r8},  {"R9  = ", c.r9},  {"R10 = ", c.r10}, {"R11 = ", c.r11},
      {"R12 = ", c.r12}, {"R13 = ", c.r13}, {"R14 = ", c.r14}, {"R15 = ", c.r15},
  };
  for (const auto& [label, value] : general)
    lines.push_back(crt_format("%s%p %s\n", label, as_pointer(value), decimal_hint(static_cast<std::int64_t>(value)).c_str()));
  for (int i = 0; i < 16; ++i) lines.push_back(xmm_line(i, c.xmm[static_cast<std::size_t>(i)]));
  std::string flags = crt_format("FLG = %8X [", c.eflags);
  if (c.eflags & 0x80) flags += "S ";
  flags += (c.eflags & 0x40) ? "Z " : "NZ ";
  if (c.eflags & 0x10) flags += "A ";
  if (c.eflags & 0x04) flags += "P ";
  flags += (c.eflags & 0x01) ? "C " : "NC ";
  flags += crt_format("] STATUS WORD = %4X\n", static_cast<unsigned>(c.fp_status_word));
  lines.push_back(flags);
  return lines;
}

}  // namespace vantor
