// Test support for start-up: a fresh in-memory OS layer, start-up globals as before any
// command line, console messages, and what the session printed.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/messages.h"
#include "process/debugged_process.h"
#include "session/pending_command.h"
#include "session/startup_globals.h"
#include "support/fake_target.h"
#include "ui/settings.h"

namespace vantor::testing {

class SessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    reset_startup_globals();
    ConsoleMode = true;
    PendingCommand = 0;
    ui::forget_settings_file_path();
    target.system.set_environment(L"APPDATA", L"C:\\Users\\me\\AppData");
  }
  void TearDown() override {
    delete CurrentProcess;
    CurrentProcess = nullptr;
    reset_startup_globals();
    PendingCommand = 0;
    ui::forget_settings_file_path();
  }

  static std::vector<std::wstring> args(std::initializer_list<const wchar_t*> list) {
    return std::vector<std::wstring>(list.begin(), list.end());
  }

  FakeTarget target;
};

}  // namespace vantor::testing
