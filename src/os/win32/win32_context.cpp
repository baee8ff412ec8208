#include "os/win32/win32_context.h"

#include <cstring>

namespace vantor::os {

void context_from_native(const CONTEXT& native, ThreadContext& context) {
  context.rax = native.Rax;
  context.rbx = native.Rbx;
  context.rcx = native.Rcx;
  context.rdx = native.Rdx;
  context.rsi = native.Rsi;
  context.rdi = native.Rdi;
  context.rsp = native.Rsp;
  context.rbp = native.Rbp;
  context.r8 = native.R8;
  context.r9 = native.R9;
  context.r10 = native.R10;
  context.r11 = native.R11;
  context.r12 = native.R12;
  context.r13 = native.R13;
  context.r14 = native.R14;
  context.r15 = native.R15;
  context.rip = native.Rip;
  context.eflags = native.EFlags;
  context.seg_cs = native.SegCs;
  context.seg_ss = native.SegSs;
  context.dr0 = native.Dr0;
  context.dr1 = native.Dr1;
  context.dr2 = native.Dr2;
  context.dr3 = native.Dr3;
  context.dr6 = native.Dr6;
  context.dr7 = native.Dr7;
  context.fp_control_word = native.FltSave.ControlWord;
  context.fp_status_word = native.FltSave.StatusWord;
  context.mxcsr = native.MxCsr;
  for (std::size_t i = 0; i < context.xmm.size(); ++i)
    std::memcpy(context.xmm[i].data(), &native.FltSave.XmmRegisters[i], 16);
  for (std::size_t i = 0; i < context.x87.size(); ++i)
    std::memcpy(context.x87[i].data(), &native.FltSave.FloatRegisters[i], 16);
  std::memcpy(context.native.data(), &native, sizeof native);
  context.has_native = true;
}

void native_from_context(const ThreadContext& context, CONTEXT& native) {
  if (context.has_native)
    std::memcpy(&native, context.native.data(), sizeof native);
  native.ContextFlags = CONTEXT_ALL;
  native.Rax = context.rax;
  native.Rbx = context.rbx;
  native.Rcx = context.rcx;
  native.Rdx = context.rdx;
  native.Rsi = context.rsi;
  native.Rdi = context.rdi;
  native.Rsp = context.rsp;
  native.Rbp = context.rbp;
  native.R8 = context.r8;
  native.R9 = context.r9;
  native.R10 = context.r10;
  native.R11 = context.r11;
  native.R12 = context.r12;
  native.R13 = context.r13;
  native.R14 = context.r14;
  native.R15 = context.r15;
  native.Rip = context.rip;
  native.EFlags = context.eflags;
  native.SegCs = context.seg_cs;
  native.SegSs = context.seg_ss;
  native.Dr0 = context.dr0;
  native.Dr1 = context.dr1;
  native.Dr2 = context.dr2;
  native.Dr3 = context.dr3;
  native.Dr6 = context.dr6;
  native.Dr7 = context.dr7;
  native.FltSave.ControlWord = context.fp_control_word;
  native.FltSave.StatusWord = context.fp_status_word;
  native.MxCsr = context.mxcsr;
  native.FltSave.MxCsr = context.mxcsr;
  for (std::size_t i = 0; i < context.xmm.size(); ++i)
    std::memcpy(&native.FltSave.XmmRegisters[i], context.xmm[i].data(), 16);
  for (std::size_t i = 0; i < context.x87.size(); ++i)
    std::memcpy(&native.FltSave.FloatRegisters[i], context.x87[i].data(), 16);
}

}  // namespace vantor::os
