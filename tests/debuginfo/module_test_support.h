// Shared fixture of the debug-information tests: an in-memory target, a process over it,
// and an image builder at a fixed base.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "common/messages.h"
#include "debuginfo/module.h"
#include "process/debugged_process.h"
#include "support/debug_image_builder.h"
#include "support/fake_target.h"

namespace vantor::testing {

class ModuleTest : public ::testing::Test {
 protected:
  static constexpr Address kBase = 0x140000000;
  static constexpr const wchar_t* kPath = L"C:\\build\\prog.exe";

  // An assertion's box answered Cancel, so a broken invariant is recorded, not fatal.
  ModuleTest() { target.system.set_message_box_answer(os::kIdCancel); }

  Module& load(DebugImageBuilder& builder, const std::wstring& path = kPath) {
    builder.install(target.system, path);
    return *process.add_module(std::make_unique<Module>(process, 0, path, builder.base(), true));
  }
  Module& load() { return load(image); }

  // The texts of the message boxes shown so far.
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
