// Shared fixture of the call-stack tests: an in-memory target with a process over it, one
// image of our compiler's code at kBase, and a stack region the tests lay frames into.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "stack/call_stack.h"
#include "support/debug_image_builder.h"
#include "support/fake_target.h"

namespace vantor::testing {

class StackTest : public ::testing::Test {
 protected:
  static constexpr Address kBase = 0x140000000;
  static constexpr Address kStackLow = 0x20000;
  static constexpr Address kStackHigh = 0x40000;

  // Code of a routine of our compiler whose prologue allocates `frame` bytes:
  //   +0 nop (line start)   +1 sub_q RSP,frame   +5 nop (body line) ... filler.
  static std::vector<std::uint8_t> small_frame_code(std::uint8_t frame) {
    return {0x90, 0x48, 0x83, 0xEC, frame, 0x90};
  }

  // An assertion's box answered Cancel, so a broken invariant is recorded, not fatal.
  StackTest() {
    target.system.set_message_box_answer(os::kIdCancel);
    target.system.map(kStackLow, kStackHigh - kStackLow);
  }

  Module& load(DebugImageBuilder& builder, const std::wstring& path, bool main_image) {
    builder.install(target.system, path);
    return *process.add_module(std::make_unique<Module>(process, 0, path, builder.base(), main_image));
  }

  void code(const DebugImageBuilder& builder, const std::string& routine, const std::vector<std::uint8_t>& bytes) {
    target.system.poke(builder.address_of(routine), bytes);
  }

  void put(Address at, std::uint64_t value) { target.system.poke_value(at, value); }

  std::unique_ptr<CallStack> walk(Address pc, Address sp) {
    os::ThreadContext context;
    context.rip = pc;
    context.rsp = sp;
    return std::make_unique<CallStack>(process, context);
  }

  // The thread stopped at `pc` with the stack at `sp`, and the process's stack walked there.
  void stop_at(Address pc, Address sp) {
    os::ThreadContext& context = target.system.context(process.thread_handle());
    context.rip = pc;
    context.rsp = sp;
    process.refresh_call_stack();
  }

  std::vector<std::wstring> boxes() const {
    std::vector<std::wstring> texts;
    for (const auto& box : target.system.message_boxes) texts.push_back(box.text);
    return texts;
  }

  FakeTarget target;
  DebuggedProcess process;
  DebugImageBuilder image{kBase};
};

}  // namespace vantor::testing
