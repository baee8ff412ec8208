#include "session/startup_globals.h"

#include "common/messages.h"

namespace vantor {

std::wstring ProgramName;
std::wstring ProgramArguments;
std::wstring ProgramDirectory;
std::wstring full_command_line;
std::wstring SourcePath;
std::wstring ScriptFile;
std::string RunToFile;
std::int32_t RunToLine = 0;
bool SilentMode = false;
bool DumpLinesMode = false;
bool TestSuiteMode = false;
std::vector<TestSuiteEntry> TestSuiteEntries;
bool DebuggerClosing = false;
bool LogCommandLine = false;
bool RdcDumpMode = false;
bool RdcDebugMode = false;
bool ShowOdsMode = false;
bool ShowAllMode = false;
bool HideTornlibC = true;

void reset_startup_globals() {
  ProgramName.clear();
  ProgramArguments.clear();
  ProgramDirectory.clear();
  full_command_line.clear();
  SourcePath.clear();
  ScriptFile.clear();
  RunToFile.clear();
  RunToLine = 0;
  SilentMode = false;
  DumpLinesMode = false;
  TestSuiteMode = false;
  TestSuiteEntries.clear();
  DebuggerClosing = false;
  LogCommandLine = false;
  RdcDumpMode = false;
  RdcDebugMode = false;
  ShowOdsMode = false;
  ShowAllMode = false;
  HideTornlibC = true;
  ConsoleMode = false;
}

}  // namespace vantor
