// Test support for the windows: an in-memory system with its settings file under
// C:\AppData, and a fake window library (1024 x 768 client, 8 x 16 cells).
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "support/fake_target.h"
#include "support/fake_window_library.h"
#include "ui/settings.h"

namespace vantor::ui {

class WindowTest : public ::testing::Test {
 protected:
  static constexpr const char* kIni = "C:\\AppData\\vantor64.ini";

  WindowTest() {
    target.system.set_environment(L"APPDATA", L"C:\\AppData");
    forget_settings_file_path();
  }
  ~WindowTest() override { forget_settings_file_path(); }

  std::map<std::string, std::string>& section() { return target.system.profile[std::string(kIni) + "|Debugger-Win32"]; }

  testing::FakeTarget target;
  testing::FakeWindowLibrary library;
};

}  // namespace vantor::ui
