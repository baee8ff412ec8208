// The commands that open or print windows: view, find, regs and dumpinfo.
#include <memory>
#include <vector>

#include "commands/command_handlers.h"
#include "commands/command_host.h"
#include "commands/data_views.h"
#include "commands/view_producers.h"
#include "common/console.h"
#include "common/messages.h"
#include "debuginfo/source_file.h"
#include "debuginfo/source_locator.h"
#include "os/os.h"
#include "ui/find_window.h"
#include "ui/source_window.h"
#include "ui/window_kinds.h"
#include "ui/window_list.h"

namespace vantor {

namespace {

// Files the user viewed that are not among the program's own sources. The windows that
// show them hold pointers, so the records live as long as the session.
std::vector<std::unique_ptr<source_file>> ViewedFiles;

source_file* viewed_file(const std::wstring& path) {
  for (const auto& file : ViewedFiles)
    if (file->full_path == path) {
      load_source_text(*file, path);  // the text may have changed since
      return file.get();
    }
  auto file = std::make_unique<source_file>();
  file->recorded_name = path;
  if (!load_source_text(*file, path)) return nullptr;
  ViewedFiles.push_back(std::move(file));
  return ViewedFiles.back().get();
}

}  // namespace

std::uint32_t view_command(const command_call& call) {
  std::wstring path = os::system().wide_from_oem(std::string(call.argument));
  if (!os::system().file_exists(path)) {
    ShowErrorMessage("Cannot locate file");
    return kCommandFailed;
  }
  source_file* file = command_host().program_source_file(path);
  if (file && file->locate_state != kSourceLoaded) load_source_text(*file, path);
  if (!file) file = viewed_file(path);
  if (!file) {
    ShowErrorMessage("Cannot locate file");
    return kCommandFailed;
  }
  auto window = std::make_unique<ui::source_window>(file, source_locator(), breakpoint_marks());
  window->place_from_settings();
  ui::OpenWindows.open(std::move(window));
  return kCommandDone;
}

std::uint32_t find_routines_command(const command_call& call) {
  std::vector<ui::found_routine> found = command_host().find_routines(call.argument);
  if (found.empty()) {
    ShowInformationMessage("No routines found", "Find");
    return kCommandDone;
  }
  auto window = std::make_unique<ui::find_window>(std::move(found));
  window->place_from_settings();
  ui::OpenWindows.open(std::move(window));
  return kCommandDone;
}

std::uint32_t registers_command(const command_call&) {
  show_registers_window();
  return kCommandDone;
}

std::uint32_t dumpinfo_command(const command_call& call) {
  const std::string_view site = call.argument;
  ui::text_window* window = nullptr;
  if (site == "call_stack") {
    window = &show_stack_window();
  } else if (site == "vars") {
    std::int32_t frame = current_frame_index() < 0 ? 0 : current_frame_index();
    window = &show_variables_window(frame);
  } else if (site == "breakpoints") {
    window = &show_breakpoints_window();
  } else if (site == "units" || site == "streams") {
    ShowInformationMessage("streams command is not currently available");
    window = &show_streams_window();
  } else {
    console_print("Unknown dump site: %s\n", std::string(site).c_str());
    return kCommandDone;
  }
  if (window) {
    window->refresh();
    window->dump_to_console();
  }
  return kCommandDone;
}

}  // namespace vantor
