// The batch driver of "/testsuite": the program is stepped into from line start to line
// start, each one reached is printed, and the command line's entries name the lines at
// which values are shown or the session ends.
#pragma once

#include <cstdint>
#include <string>

namespace vantor {

// One step of the driver, taken by the main loop whenever no command is pending:
// - stopped: prints the position line, carries out the entry for that line (the first one
//   with that line number; its items in order, an expression shown in the view that suits
//   its value, "exit" ending the session) and steps into the next line;
// - failed: prints the failure and the position line, and ends the session;
// - ended: prints "Process ended, exiting debugger" and ends the session.
// False in any other state: the driver had nothing to do and queued nothing.
bool RunTestSuiteStep();

// Where the program stopped, as the driver reports it: the innermost frame of the last
// stop, or, when that has no source position (code without our debug information), the
// first frame further out that has one. The file is named without its folders.
struct stop_position {
  std::string routine;
  std::string file;
  std::int32_t line = 0;  // 0: no source position, or no call stack at all

  // "ROUTINE (FILE: LINE)"
  std::string text() const;
};
stop_position test_suite_position();

}  // namespace vantor
