#include "session/startup.h"

#include <deque>

#include "process/debugged_process.h"
#include "session/program_dialog.h"
#include "session/session_fixture.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

using os::InMemorySystem;

// A window library whose program dialog answers from a script: each answer is a button
// and, for OK, the text typed.
class DialogLibrary : public winlib::HeadlessLibrary {
 public:
  DialogLibrary() { winlib::set_window_library(this); }
  ~DialogLibrary() override { winlib::set_window_library(nullptr); }
  int program_dialog(std::string& edit_text) override {
    shown_texts.push_back(edit_text);
    if (answers.empty()) return winlib::kDialogCancel;
    auto [button, text] = answers.front();
    answers.pop_front();
    if (button == winlib::kDialogOk) edit_text = text;
    return button;
  }
  std::optional<std::wstring> browse_for_program(const std::wstring&) override { return browsed; }
  std::deque<std::pair<int, std::string>> answers;
  std::vector<std::string> shown_texts;
  std::optional<std::wstring> browsed;
};

class StartupTest : public testing::SessionTest {
 protected:
  // Runs a whole session with console output captured.
  int session(const std::vector<std::wstring>& arguments) {
    ::testing::internal::CaptureStdout();
    int status = start_session(arguments);
    output = ::testing::internal::GetCapturedStdout();
    return status;
  }
  std::string profile(const std::string& key) {
    return target.system.profile["C:\\Users\\me\\AppData\\vantor64.ini|Debugger-Win32"][key];
  }
  std::string output;
};

TEST_F(StartupTest, RejectedFilesAreLoadErrors) {
  auto damaged = image(0x8664);
  damaged[60] = 0x01;
  damaged[61] = 0x04;  // header offset 1025
  target.system.add_file(L"damaged.exe", damaged);
  target.system.add_text_file(L"notes.txt", "MZ but no more");
  EXPECT_EQ(session(args({L"/console", L"damaged.exe"})), 1);
  EXPECT_EQ(output, "Load Error: There seems to be something wrong with this executable file\n");
  EXPECT_TRUE(DebuggerClosing);
  reset_startup_globals();
  EXPECT_EQ(session(args({L"/console", L"notes.txt"})), 1);
  EXPECT_EQ(output, "Load Error: This does not appear to be an executable file\n");
  EXPECT_TRUE(target.system.created_command_lines.empty());
}

TEST_F(StartupTest, AThirtyTwoBitProgramIsHandedOverAndNeverStarted) {
  target.system.add_file(L"C:\\old progs\\p32.exe", image(0x014C));
  EXPECT_EQ(session(args({L"/console", L"C:\\old progs\\p32.exe", L"/p", L"x", L"y z"})), 0);
  ASSERT_EQ(target.system.shell_commands.size(), 1u);
  EXPECT_EQ(target.system.shell_commands[0], L"vantor /console \"C:\\old progs\\p32.exe\" /p x \"y z\"");
  EXPECT_TRUE(target.system.created_command_lines.empty());
  EXPECT_TRUE(DebuggerClosing);
  EXPECT_EQ(output, "");
}

TEST_F(StartupTest, ASilentSessionRunsToTheEndAndRemembersTheCommandLine) {
  target.system.add_file(L"C:\\my progs\\p.exe", image(0x8664));
  queue_run(L"C:\\my progs\\p.exe", 4);
  EXPECT_EQ(session(args({L"/console", L"/silent", L"C:\\my progs\\p.exe", L"/params", L"a", L"b c"})), 0);
  EXPECT_EQ(output, "");
  ASSERT_EQ(target.system.created_command_lines.size(), 1u);
  EXPECT_EQ(target.system.created_command_lines[0], L"\"C:\\my progs\\p.exe\" a \"b c\"");
  EXPECT_EQ(full_command_line, L"\"C:\\my progs\\p.exe\" a \"b c\"");
  EXPECT_EQ(ProgramDirectory, L"C:\\my progs");
  EXPECT_EQ(profile("LastCommandLine"), "\"C:\\my progs\\p.exe\" a \"b c\"");
  ASSERT_NE(CurrentProcess, nullptr);
  EXPECT_EQ(CurrentProcess->state(), psEnded);
  EXPECT_TRUE(CurrentProcess->silent());
}

TEST_F(StartupTest, AConsoleSessionReportsTheEndAndClosesThePocess) {
  target.system.add_file(L"p.exe", image(0x8664));
  queue_run(L"p.exe", 3);
  EXPECT_EQ(session(args({L"/console", L"p.exe"})), 0);
  EXPECT_EQ(output, "Program ended with exit code 3\n");
  EXPECT_EQ(CurrentProcess, nullptr);
  EXPECT_EQ(target.system.created_command_lines[0], L"p.exe");
}

TEST_F(StartupTest, RunToIsKeptAsADeferredBreakpointOfTheProcess) {
  target.system.add_file(L"p.exe", image(0x8664));
  queue_run(L"p.exe", 0);
  EXPECT_EQ(session(args({L"/console", L"/runto", L"main.f95", L"12", L"p.exe"})), 0);
  ASSERT_NE(CurrentProcess, nullptr);
  ASSERT_EQ(CurrentProcess->deferred_breakpoints().size(), 1u);
  const auto& request = CurrentProcess->deferred_breakpoints()[0];
  EXPECT_EQ(request.file, "main.f95");
  EXPECT_EQ(request.line, 12);
  EXPECT_EQ(request.after, 1);
  EXPECT_EQ(request.every, 1);
  EXPECT_EQ(RunToLine, 0);
}

TEST_F(StartupTest, SettingsAndEnvironmentFeedTheSession) {
  target.system.add_file(L"p.exe", image(0x8664));
  auto& section = target.system.profile["C:\\Users\\me\\AppData\\vantor64.ini|Debugger-Win32"];
  section["IgnoreException-0"] = "E0005678";
  section["IgnoreException-7"] = "0xc0000094";
  section["IgnoreException-8"] = "not a code";
  section["IgnoreException-9"] = "0";
  target.system.set_environment(L"SOURCEPATH", L"C:\\sources");
  LogCommandLine = true;
  queue_run(L"p.exe", 0);
  EXPECT_EQ(session(args({L"/console", L"/silent", L"p.exe"})), 0);
  ASSERT_NE(CurrentProcess, nullptr);
  EXPECT_EQ(CurrentProcess->ignored_exceptions(), (std::vector<std::uint32_t>{0xE0005678, 0xC0000094}));
  EXPECT_EQ(SourcePath, L"C:\\sources");
  const auto* log = target.system.file(L"vantor64.log");
  ASSERT_NE(log, nullptr);
  EXPECT_EQ(std::string(log->begin(), log->end()), "p.exe\n");
}

TEST_F(StartupTest, AFailedLaunchInAConsoleSessionEndsIt) {
  target.system.set_create_process_error(2);
  EXPECT_EQ(session(args({L"/console", L"missing.exe"})), 1);
  EXPECT_EQ(output, std::string("Error: There was a problem debugging your executable:\n\nFile not found\nError: ") +
                        kConsoleUsage + "\n");
  EXPECT_TRUE(DebuggerClosing);
}

TEST_F(StartupTest, WithoutAProgramAConsoleSessionShowsTheUsage) {
  EXPECT_EQ(session(args({L"/console"})), 1);
  EXPECT_EQ(output, std::string("Error: ") + kConsoleUsage + "\n");
}

// C:\none.exe cannot be launched; everything else starts.
struct OneMissingProgram : InMemorySystem {
  bool create_process(const std::wstring& line, os::LaunchedProcess& out, std::uint32_t& error) override {
    set_create_process_error(line.find(L"none.exe") != std::wstring::npos ? 2 : 0);
    return InMemorySystem::create_process(line, out, error);
  }
};

TEST_F(StartupTest, TheDialogStartsFromTheLastCommandLineAndAsksAgainAfterAFailure) {
  OneMissingProgram system;
  os::set_system(&system);
  system.set_environment(L"APPDATA", L"C:\\Users\\me\\AppData");
  system.profile["C:\\Users\\me\\AppData\\vantor64.ini|Debugger-Win32"]["LastCommandLine"] = "*C:\\x y\\p.exe* last";
  system.add_file(L"C:\\good.exe", image(0x8664));
  DialogLibrary dialog;
  dialog.answers = {{winlib::kDialogOk, "   "},  // nothing typed: asked again
                    {winlib::kDialogOk, "\"C:\\none.exe\" 1 2"},
                    {winlib::kDialogBrowse, ""},
                    {winlib::kDialogOk, "C:\\good.exe   -v  x"}};
  dialog.browsed = L"C:\\picked.exe";
  ConsoleMode = false;
  SilentMode = true;
  os::DebugEvent exit;
  exit.kind = os::kExitProcessEvent;
  exit.process_id = InMemorySystem::kProcessId;
  exit.thread_id = InMemorySystem::kThreadId;
  system.queue_event(exit);

  int status = start_session({});
  os::set_system(&target.system);
  EXPECT_EQ(status, 0);
  ASSERT_EQ(dialog.shown_texts.size(), 4u);
  EXPECT_EQ(dialog.shown_texts[0], "\"C:\\x y\\p.exe\" last");
  EXPECT_EQ(dialog.shown_texts[3], "C:\\picked.exe");
  ASSERT_EQ(system.message_boxes.size(), 1u);
  EXPECT_EQ(system.message_boxes[0].text, L"There was a problem debugging your executable:\n\nFile not found");
  EXPECT_EQ(system.created_command_lines, (std::vector<std::wstring>{L"C:\\none.exe 1 2", L"C:\\good.exe -v  x"}));
  EXPECT_EQ(ProgramArguments, L"-v  x");
}

TEST_F(StartupTest, CancelInTheDialogEndsTheSession) {
  DialogLibrary dialog;
  ConsoleMode = false;
  EXPECT_EQ(session({}), 1);
  EXPECT_TRUE(DebuggerClosing);
  EXPECT_EQ(dialog.shown_texts.size(), 1u);
}

TEST(ProgramText, NamesAreQuotedOrRunToWhiteSpace) {
  auto plain = split_program_text(L"  prog.exe   a  b ");
  EXPECT_EQ(plain.name, L"prog.exe");
  EXPECT_EQ(plain.arguments, L"a  b ");
  auto quoted = split_program_text(L"\"C:\\my dir\\p.exe\"x y");
  EXPECT_EQ(quoted.name, L"C:\\my dir\\p.exe");
  EXPECT_EQ(quoted.arguments, L"x y");
  auto open = split_program_text(L"\"C:\\unclosed p.exe");
  EXPECT_EQ(open.name, L"C:\\unclosed p.exe");
  EXPECT_EQ(open.arguments, L"");
  EXPECT_EQ(split_program_text(L"").name, L"");
  EXPECT_EQ(split_program_text(L"p.exe\targ").arguments, L"\targ");  // only blanks are skipped
}

TEST(FullCommandLine, QuotesOnlyNamesWithBlanks) {
  EXPECT_EQ(build_full_command_line(L"p.exe", L""), L"p.exe");
  EXPECT_EQ(build_full_command_line(L"C:\\a b\\p.exe", L"x"), L"\"C:\\a b\\p.exe\" x");
  EXPECT_EQ(directory_of(L"C:\\a b\\p.exe"), L"C:\\a b");
  EXPECT_EQ(directory_of(L"p.exe"), L"");
}

}  // namespace
}  // namespace vantor
