// The headless window library, pressing Pause on a chosen yield of the debugger's wait
// loop (one yield per quiet 500 ms), as a user would while the program runs.
#pragma once

#include "process/debugged_process.h"
#include "winlib/headless_library.h"

namespace vantor::testing {

class PausingLibrary : public winlib::HeadlessLibrary {
 public:
  void yield_program_control() override {
    if (++yields == pause_on_yield && process != nullptr) process->request_pause();
  }
  int yields = 0;
  int pause_on_yield = -1;  // never
  DebuggedProcess* process = nullptr;
};

}  // namespace vantor::testing
