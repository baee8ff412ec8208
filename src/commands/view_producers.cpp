#include "commands/view_producers.h"

#include <algorithm>
#include <cctype>

#include "commands/command_host.h"
#include "debuginfo/module.h"
#include "debuginfo/source_file.h"
#include "process/breakpoint_list.h"
#include "process/data_breakpoints.h"
#include "values/data_view_contents.h"
#include "values/element.h"
#include "values/eval.h"

namespace vantor {

namespace {

std::int32_t CurrentFrameIndex = -1;

// An expression window lists this many elements of an array at most; the array view lists
// more, since it only draws the rows on screen.
constexpr std::size_t kExpressionElementLimit = 1000;

bool same_name_ignoring_case(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
         });
}

}  // namespace

std::int32_t current_frame_index() { return CurrentFrameIndex; }
void set_current_frame_index(std::int32_t index) { CurrentFrameIndex = index; }

DataViewSource data_view_source() {
  CommandHost& host = command_host();
  DataViewSource source;
  source.memory = &host.memory();
  source.frame = [](int index) { return frame_at(index); };
  source.registers = host.registers();
  return source;
}

void expression_rows(const std::string& expression, std::int32_t frame_index, ui::window_rows& rows) {
  expression_rows_of(data_view_source(), frame_index, expression, kExpressionElementLimit, rows);
}

ui::vars_window::producer variables_producer() {
  return [](int frame_index, std::string& routine, std::vector<ui::variable_row>& variables) {
    return variables_of_frame(data_view_source(), frame_index, routine, variables);
  };
}

// Watches are evaluated in the frame that stopped, whatever the windows show.
ui::watch_window::evaluator watch_evaluator() {
  return [](const std::string& expression) {
    DataViewSource source = data_view_source();
    source.frame = [](int index) { return index == 0 ? frame_at(current_frame_index()) : nullptr; };
    return watch_value_of(source, expression);
  };
}

ui::value_window::producer expression_producer() {
  return [](int frame_index, const std::string& expression, ui::window_rows& rows) {
    expression_rows(expression, frame_index, rows);
  };
}

ui::array_window::producer array_producer() {
  return [](int frame_index, const std::string& expression, ui::array_contents& out) {
    array_contents_of(data_view_source(), frame_index, expression, out);
  };
}

ui::structure_window::producer structure_producer() {
  return [](int frame_index, const std::string& expression, ui::structure_contents& out) {
    structure_contents_of(data_view_source(), frame_index, expression, out);
  };
}

ui::row_producer registers_producer() {
  return [](ui::window_rows& rows, std::string& status) { register_rows_of(data_view_source(), rows, status); };
}

ui::breakpoints_window::lister breakpoint_lister() {
  return [] {
    BreakpointList* list = command_host().breakpoints();
    return list ? ui::breakpoint_rows_of(*list) : std::vector<ui::breakpoint_row>{};
  };
}

ui::breakpoints_window::deleter breakpoint_deleter() {
  return [](std::uint32_t id) {
    if (BreakpointList* list = command_host().breakpoints()) list->remove_breakpoint(id);
  };
}

ui::dump_window::data_break_setter dump_break_setter() {
  return [](bool use, Address address, int bytes) {
    if (BreakpointList* list = command_host().breakpoints())
      set_data_breakpoint_on_address(*list, address, bytes, use ? kAccessUse : kAccessWrite);
  };
}

ui::source_window::frame_locator source_locator() {
  return [](int frame_index, source_file*& file, int& line) {
    StackFrame* frame = frame_at(frame_index);
    std::int32_t number = 0;
    if (!frame || !command_host().frame_source(*frame, file, number)) return false;
    line = number - 1;
    return true;
  };
}

// A breakpoint keeps the file name its maker gave, a full path or a bare name: the mark
// goes on the line when the bare names agree.
ui::source_window::breakpoint_test breakpoint_marks() {
  return [](const source_file& file, int line) {
    BreakpointList* list = command_host().breakpoints();
    if (!list) return false;
    const std::wstring& path = file.full_path.empty() ? file.recorded_name : file.full_path;
    std::string shown = os::system().oem_from_wide(path);
    std::string_view shown_name = bare_file_name(shown);
    for (int i = 0; i < list->count(); ++i) {
      const breakpoint_info* breakpoint = list->breakpoint(i);
      if (breakpoint && !breakpoint->is_data() && !breakpoint->temporary && breakpoint->line == line &&
          same_name_ignoring_case(bare_file_name(breakpoint->file), shown_name))
        return true;
    }
    return false;
  };
}

}  // namespace vantor
