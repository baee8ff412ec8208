// The session's start-up state: set from the command line (or the program dialog) before
// the main loop starts, and read by the rest of the debugger afterwards.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantor {

// One "/testsuite" entry: a line number and what to do when the program stops there
// (expressions to show, or "exit").
struct TestSuiteEntry {
  std::int32_t line = 0;
  std::vector<std::string> items;
};

constexpr std::size_t kMaxTestSuiteEntries = 50;

extern std::wstring ProgramName;       // the executable, as typed
extern std::wstring ProgramArguments;  // its arguments, one blank-separated string
extern std::wstring ProgramDirectory;  // ProgramName up to its last backslash
extern std::wstring full_command_line;  // handed to process creation; kept for a restart
extern std::wstring SourcePath;
extern std::wstring ScriptFile;
extern std::string RunToFile;
extern std::int32_t RunToLine;  // 0: no run-to target
extern bool SilentMode;
extern bool DumpLinesMode;
extern bool TestSuiteMode;
extern std::vector<TestSuiteEntry> TestSuiteEntries;
extern bool DebuggerClosing;
extern bool LogCommandLine;

// Accepted on the command line and kept, though nothing in this build consults them.
extern bool RdcDumpMode;
extern bool RdcDebugMode;
extern bool ShowOdsMode;
extern bool ShowAllMode;
extern bool HideTornlibC;

// Back to the values before any command line was read (ConsoleMode included).
void reset_startup_globals();

}  // namespace vantor
