// Start-up over the in-memory system: what a session remembers and reads, and the program
// dialog. Load errors, the hand-over of 32-bit programs, the switches and runs to the end
// are compared end to end (tests/e2e/cases/load_errors, handover, switches, run_to_end,
// batch_modes).
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

TEST_F(StartupTest, ASilentSessionRunsToTheEndWithTheSettingsAndRemembersTheCommandLine) {
  target.system.add_file(L"C:\\my progs\\p.exe", image(0x8664));
  target.system.profile["C:\\Users\\me\\AppData\\vantor64.ini|Debugger-Win32"]["IgnoreException-7"] = "0xc0000094";
  target.system.set_environment(L"SOURCEPATH", L"C:\\sources");
  LogCommandLine = true;
  queue_run(L"C:\\my progs\\p.exe", 4);
  EXPECT_EQ(session(args({L"/console", L"/silent", L"C:\\my progs\\p.exe", L"/params", L"a", L"b c"})), 0);
  EXPECT_EQ(output, "");
  const std::wstring line = L"\"C:\\my progs\\p.exe\" a \"b c\"";
  EXPECT_EQ(target.system.created_command_lines, (std::vector<std::wstring>{line}));
  EXPECT_EQ(ProgramDirectory, L"C:\\my progs");
  const std::string narrow = "\"C:\\my progs\\p.exe\" a \"b c\"";
  EXPECT_EQ(profile("LastCommandLine"), narrow);
  EXPECT_EQ(SourcePath, L"C:\\sources");
  const auto* log = target.system.file(L"vantor64.log");
  ASSERT_NE(log, nullptr);
  EXPECT_EQ(std::string(log->begin(), log->end()), narrow + "\n");
  ASSERT_NE(CurrentProcess, nullptr);
  EXPECT_EQ(CurrentProcess->state(), psEnded);
  EXPECT_TRUE(CurrentProcess->silent());
  EXPECT_EQ(CurrentProcess->ignored_exceptions(), (std::vector<std::uint32_t>{0xC0000094}));
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
