#include "commands/view_producers.h"

#include <algorithm>
#include <cctype>

#include "commands/command_handlers.h"
#include "commands/command_host.h"
#include "debuginfo/module.h"
#include "debuginfo/source_file.h"
#include "process/breakpoint_list.h"
#include "process/cached_target_memory.h"
#include "process/data_breakpoints.h"
#include "stack/stack_frame.h"
#include "values/error_codes.h"
#include "values/eval.h"
#include "values/registers.h"
#include "values/value_format.h"
#include "values/variable_element.h"

namespace vantor {

namespace {

std::int32_t CurrentFrameIndex = -1;

// An expression window lists this many elements of an array at most; the array view lists
// more, since it only draws the rows on screen.
constexpr std::size_t kExpressionElementLimit = 1000;
constexpr std::size_t kArrayViewElementLimit = 100000;

// A variable of the frame's symbols that is a named constant rather than storage.
constexpr std::uint32_t kConstantAddressType = 4;

std::vector<int> iterated_dimensions(const array_info& info) {
  std::vector<int> dims;
  for (int d = 0; d < info.num_dims; ++d)
    if (info.section_dims == 0 || (info.section_dims & (1u << d))) dims.push_back(d);
  return dims;
}

std::unique_ptr<element> element_at_offset(const element& array, std::int64_t offset) {
  auto item = clone_element(*array.next);
  item->address = array.address + static_cast<Address>(offset);
  return item;
}

bool same_name_ignoring_case(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
         });
}

std::vector<std::pair<std::string, std::unique_ptr<element>>> named_components(const element& structure,
                                                                               TargetMemory& memory) {
  std::vector<std::pair<std::string, std::unique_ptr<element>>> out;
  if (structure.type != kTypeStructure || !structure.structure || !structure.structure->type) return out;
  for (const auto& record : structure.structure->type->components) {
    auto component = find_component(structure, record->name, memory);
    if (!component || component->type == kTypeFunction || component->is_typedef()) continue;
    out.emplace_back(record->name, std::move(component));
  }
  return out;
}

}  // namespace

std::int32_t current_frame_index() { return CurrentFrameIndex; }
void set_current_frame_index(std::int32_t index) { CurrentFrameIndex = index; }

std::unique_ptr<element> evaluate_in_frame(const std::string& expression, std::int32_t frame_index) {
  CommandHost& host = command_host();
  return evaluate(expression, scope_of_frame(frame_at(frame_index), host.memory(), host.registers())).value;
}

std::vector<array_item> array_items(const element& array, std::size_t limit) {
  std::vector<array_item> items;
  // A held array (a named constant) has no elements in the program to point at.
  if (array.type != kTypeArray || !array.array || !array.next || array.next->size <= 0 || array.is_constant())
    return items;
  const array_info& info = *array.array;
  std::vector<int> dims = iterated_dimensions(info);
  bool fortran = is_fortran_language(array.lang_code);
  // Fortran stores the first subscript fastest, C the last: count in that order.
  if (!fortran) std::reverse(dims.begin(), dims.end());

  std::vector<long long> subscripts(static_cast<std::size_t>(info.num_dims));
  for (int d = 0; d < info.num_dims; ++d) {
    bool iterated = std::find(dims.begin(), dims.end(), d) != dims.end();
    subscripts[static_cast<std::size_t>(d)] = iterated ? info.first_element[d] : info.indexes[d];
  }
  auto last_of = [&](int d) {
    // An upper bound the program does not know (an assumed size, or bounds that make no
    // sense): the first element is all that can be shown.
    std::int64_t lower = info.first_element[d], upper = info.last_element[d];
    bool assumed = upper == 0x80000000ll || upper == 0x7FFFFFFF || upper == 100000000;
    return assumed || upper < lower ? lower : upper;
  };
  for (int d : dims)
    if (info.last_element[d] + 1 == info.first_element[d]) return items;  // an empty dimension

  for (;;) {
    if (items.size() >= limit) break;
    std::int64_t offset = 0;
    for (int d : dims) offset += (subscripts[static_cast<std::size_t>(d)] - info.first_element[d]) * info.distance[d];
    items.push_back({subscripts, element_at_offset(array, offset)});
    std::size_t k = 0;
    for (; k < dims.size(); ++k) {
      int d = dims[k];
      if (subscripts[static_cast<std::size_t>(d)] < last_of(d)) {
        ++subscripts[static_cast<std::size_t>(d)];
        break;
      }
      subscripts[static_cast<std::size_t>(d)] = info.first_element[d];
    }
    if (k == dims.size()) break;
  }
  return items;
}

void expression_rows(const std::string& expression, element& value, ui::window_rows& rows) {
  CachedTargetMemory memory(command_host().memory());
  rows.add(expression + " = " + value_text_or_error(value, memory));
  if (value.error_code != 0) return;
  bool fortran = is_fortran_language(value.lang_code);
  if (value.type == kTypeArray) {
    auto items = array_items(value, kExpressionElementLimit + 1);
    for (std::size_t i = 0; i < items.size() && i < kExpressionElementLimit; ++i)
      rows.add(expression + ui::subscripts_text(items[i].subscripts, fortran) + " = " +
               value_text_or_error(*items[i].value, memory));
    if (items.size() > kExpressionElementLimit) rows.add("...");
  } else if (value.type == kTypeStructure) {
    for (auto& [name, component] : named_components(value, memory))
      rows.add(ui::member_expression(expression, name, fortran) + " = " + value_text_or_error(*component, memory));
  }
}

ui::vars_window::producer variables_producer() {
  return [](int frame_index, std::string& routine, std::vector<ui::variable_row>& variables) {
    StackFrame* frame = frame_at(frame_index);
    if (!frame) return false;
    routine = frame->routine_name();
    frame->load_symbols();
    CachedTargetMemory memory(command_host().memory());
    for (int i = 0; i < frame->variable_count(); ++i) {
      const VariableRecord* record = frame->variable_record(i);
      auto value = frame->variable_element(i);
      if (!record || !value) continue;
      ui::variable_row row;
      row.name = record->name;
      row.value = value_text_or_error(*value, memory);
      row.is_parameter = record->address_type() == kConstantAddressType;
      variables.push_back(std::move(row));
    }
    return true;
  };
}

ui::watch_window::evaluator watch_evaluator() {
  return [](const std::string& expression) {
    ui::watch_value watch;
    auto value = evaluate_in_frame(expression, current_frame_index());
    if (value->error_code == kErrorUnknownVariable || value->error_code == kErrorOutOfScope) {
      watch.state = ui::watch_value::kOutOfScope;
    } else if (value->error_code != 0) {
      watch.state = ui::watch_value::kError;
    } else {
      watch.text = value_text_or_error(*value, command_host().memory());
    }
    return watch;
  };
}

ui::inspector_window::producer expression_producer() {
  return [](int frame_index, const std::string& expression, ui::window_rows& rows) {
    auto value = evaluate_in_frame(expression, frame_index);
    if (value->error_code != 0) {
      rows.add(evaluation_message(value->error_code));
      return;
    }
    expression_rows(expression, *value, rows);
  };
}

ui::array_window::producer array_producer() {
  return [](int frame_index, const std::string& expression, ui::array_contents& out) {
    auto value = evaluate_in_frame(expression, frame_index);
    if (value->error_code == 0 && value->type != kTypeArray) value->error_code = kErrorArrayExpected;
    if (value->error_code != 0) {
      out.error = evaluation_message(value->error_code);
      return;
    }
    out.fortran = is_fortran_language(value->lang_code);
    CachedTargetMemory memory(command_host().memory());
    for (auto& item : array_items(*value, kArrayViewElementLimit))
      out.elements.push_back({std::move(item.subscripts), value_text_or_error(*item.value, memory)});
  };
}

ui::structure_window::producer structure_producer() {
  return [](int frame_index, const std::string& expression, ui::structure_contents& out) {
    auto value = evaluate_in_frame(expression, frame_index);
    if (value->error_code == 0 && value->type != kTypeStructure) value->error_code = kErrorStructureExpected;
    if (value->error_code != 0) {
      out.error = evaluation_message(value->error_code);
      return;
    }
    out.fortran = is_fortran_language(value->lang_code);
    CachedTargetMemory memory(command_host().memory());
    for (auto& [name, component] : named_components(*value, memory))
      out.members.push_back({name, value_text_or_error(*component, memory)});
  };
}

ui::row_producer registers_producer() {
  return [](ui::window_rows& rows, std::string&) {
    for (std::string line : register_dump(command_host().registers())) {
      while (!line.empty() && line.back() == '\n') line.pop_back();
      rows.add(std::move(line));
    }
  };
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
