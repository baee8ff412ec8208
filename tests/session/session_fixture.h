// Test support for start-up: a fresh in-memory OS layer, start-up globals as before any
// command line, console messages, and what the session printed.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "common/messages.h"
#include "process/debugged_process.h"
#include "session/pending_command.h"
#include "session/startup_globals.h"
#include "support/fake_target.h"
#include "ui/settings.h"

namespace vantor::testing {

// A DOS header pointing at a PE signature at `offset` followed by the machine field, in a
// file of `size` bytes (the signature is left out when it does not fit).
inline std::vector<std::uint8_t> pe_image(std::int32_t offset, std::uint16_t machine, std::size_t size = 1024) {
  std::vector<std::uint8_t> bytes(size, 0);
  bytes[0] = 'M';
  bytes[1] = 'Z';
  std::memcpy(bytes.data() + 60, &offset, 4);
  if (offset >= 0 && static_cast<std::size_t>(offset) + 6 <= size) {
    bytes[offset] = 'P';
    bytes[offset + 1] = 'E';
    std::memcpy(bytes.data() + offset + 4, &machine, 2);
  }
  return bytes;
}

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

  // The first bytes of an executable for the machine (0x8664 x64, 0x014C i386).
  static std::vector<std::uint8_t> image(std::uint16_t machine) { return pe_image(0x80, machine, 2048); }

  // The events of the program `path` that starts and ends with `exit_code`.
  void queue_run(const std::wstring& path, std::uint32_t exit_code) {
    os::DebugEvent create;
    std::uint32_t error = 0;
    create.file = target.system.open_file_for_reading(path, error);
    create.kind = os::kCreateProcessEvent;
    create.process_id = os::InMemorySystem::kProcessId;
    create.thread_id = os::InMemorySystem::kThreadId;
    create.image_base = 0x140000000;
    target.system.queue_event(create);
    os::DebugEvent loader = create;
    loader.kind = os::kExceptionEvent;
    loader.exception_code = 0x80000003;
    target.system.queue_event(loader);
    os::DebugEvent exit = create;
    exit.kind = os::kExitProcessEvent;
    exit.exit_code = exit_code;
    target.system.queue_event(exit);
  }

  FakeTarget target;
};

}  // namespace vantor::testing
