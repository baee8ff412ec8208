// Test support for the command language: a program stopped in routine MAIN of
// C:\src\prog.f95, with variables of each shape in fake memory, breakpoints possible at
// lines 12 and 20 of that file, windows opened through a fake window library, and
// messages on the console so that a test reads what the user would have read.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "commands/execute_command.h"
#include "commands/script_runner.h"
#include "commands/view_producers.h"
#include "common/messages.h"
#include "session/pending_command.h"
#include "support/fake_command_host.h"
#include "support/fake_target.h"
#include "support/fake_window_library.h"
#include "ui/settings.h"
#include "ui/window_kinds.h"
#include "ui/window_list.h"

namespace vantor::testing {

class CommandTest : public ::testing::Test {
 protected:
  static constexpr Address kN = 0x2000;      // INTEGER*4 N = 7
  static constexpr Address kX = 0x2008;      // REAL*8 X = 2.5
  static constexpr Address kA = 0x2100;      // INTEGER*4 A(1:5) = 10, 20, 30, 40, 50
  static constexpr Address kM = 0x2200;      // INTEGER*4 M(1:2, 1:3) = 11 21 12 22 13 23
  static constexpr Address kText = 0x2300;   // CHARACTER*36 TEXT
  static constexpr Address kPoint = 0x2400;  // TYPE(POINT) P = (1.5, 4)

  CommandTest() {
    target.system.set_environment(L"APPDATA", L"C:\\AppData");
    ui::forget_settings_file_path();
    ConsoleMode = true;
    PendingCommand = 0;
    set_current_frame_index(0);

    target.system.poke_value<std::int32_t>(kN, 7);
    target.system.poke_value<double>(kX, 2.5);
    for (int i = 0; i < 5; ++i) target.system.poke_value<std::int32_t>(kA + 4 * i, 10 * (i + 1));
    const std::int32_t m[] = {11, 21, 12, 22, 13, 23};
    target.system.poke(kM, m, sizeof m);
    target.system.poke(kText, std::string(36, ' ').data(), 36);
    target.system.poke_value<float>(kPoint, 1.5f);
    target.system.poke_value<std::int32_t>(kPoint + 4, 4);

    point.name = "POINT";
    point.components.push_back(component("X", kDebugReal4, 0, 4));
    point.components.push_back(component("N", kDebugInteger4, 4, 4));

    FakeFrame& main = host.add_frame("MAIN", kSource);
    main.add_variable("N", kDebugInteger4, kN, 4);
    main.add_variable("X", kDebugReal8, kX, 8);
    with_bounds(main.add_variable("A", kDebugInteger4, kA, 4), {{1, 5}});
    with_bounds(main.add_variable("M", kDebugInteger4, kM, 4), {{1, 2}, {1, 3}});
    main.add_variable("TEXT", kDebugCharacter, kText, 36);
    main.add_variable("P", kDebugDerivedType, kPoint, 8).structure = &point;
    main.add_parameter("LIMIT", kDebugInteger4, {100, 0, 0, 0});

    for (const char* file : {kSource, "prog.f95"}) {
      host.breakpoint_host.add_line(file, 12, 0x401010);
      host.breakpoint_host.add_line(file, 20, 0x401040);
    }
  }
  ~CommandTest() override {
    close_script();
    ui::OpenWindows.close_all();
    ui::forget_settings_file_path();
    ConsoleMode = false;
    PendingCommand = 0;
    set_current_frame_index(-1);
  }

  // Runs a line in the name space of frame 0, as a script would; what it printed goes to
  // `printed`.
  std::uint32_t run(const std::string& line, int x = 5, int y = 5) {
    ::testing::internal::CaptureStdout();
    std::uint32_t result = execute_command(line, host.stack_frame(0), x, y);
    printed = ::testing::internal::GetCapturedStdout();
    return result;
  }
  // One line's result and everything it printed.
  void expect_run(const std::string& line, std::uint32_t result, const std::string& text) {
    SCOPED_TRACE(line);
    EXPECT_EQ(run(line), result);
    EXPECT_EQ(printed, text);
  }
  static std::string captured(const std::function<void()>& action) {
    ::testing::internal::CaptureStdout();
    action();
    return ::testing::internal::GetCapturedStdout();
  }
  template <typename T>
  T peek(Address address) {
    T value{};
    target.memory.read(address, &value, sizeof value);
    return value;
  }

  static std::unique_ptr<VariableRecord> component(const std::string& name, std::uint32_t type, std::uint64_t offset,
                                                   std::uint32_t size) {
    auto r = std::make_unique<VariableRecord>();
    r->name = name;
    r->descriptor = type << 4;
    r->address_value = offset;
    r->size = size;
    return r;
  }
  static void with_bounds(VariableRecord& record, std::initializer_list<std::pair<long, long>> bounds) {
    record.descriptor |= 1u << 9;
    record.array = std::make_unique<ArrayDescriptorRecord>();
    int d = 0;
    for (auto [lower, extent] : bounds)
      record.array->dimensions[d++].bounds = {ArrayBound{kBoundConstant, lower}, ArrayBound{kBoundConstant, extent},
                                              ArrayBound{}};
    record.array->rank = d;
  }

  static constexpr const char* kSource = "C:\\src\\prog.f95";
  FakeTarget target;
  FakeWindowLibrary library;
  DerivedTypeRecord point;
  FakeCommandHost host{target};
  std::string printed;
};

}  // namespace vantor::testing
