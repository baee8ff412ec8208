#include "values/data_view_contents.h"

#include <algorithm>
#include <cstring>

#include "stack/stack_frame.h"
#include "values/display_name.h"
#include "values/error_codes.h"
#include "values/eval.h"
#include "values/eval_operations.h"
#include "values/registers.h"
#include "values/value_format.h"
#include "values/variable_element.h"

namespace vantor {

namespace {

constexpr std::int64_t kOneReadLimit = 16 << 20;

EvalResult evaluate_in(const DataViewSource& source, int frame_index, const std::string& expression) {
  StackFrame* frame = source.frame ? source.frame(frame_index) : nullptr;
  return evaluate(expression, scope_of_frame(frame, *source.memory, source.registers));
}

std::string shown(element& e, TargetMemory& memory) { return value_text_or_error(e, memory); }

// The extent of a dimension as the view can walk it; an unknown extent walks nothing.
std::int64_t extent_of(const array_info& a, int d) {
  std::int64_t extent = a.last_element[d] - a.first_element[d] + 1;
  return extent > 0 ? extent : 0;
}

}  // namespace

bool variables_of_frame(const DataViewSource& source, int frame_index, std::string& routine,
                        std::vector<ui::variable_row>& variables) {
  StackFrame* frame = source.frame ? source.frame(frame_index) : nullptr;
  if (!frame || !source.memory) return false;
  frame->load_symbols();
  routine = frame->routine_name();
  int count = frame->variable_count();
  for (int i = 0; i < count; ++i) {
    const VariableRecord* record = frame->variable_record(i);
    auto value = frame->variable_element(i);
    if (!record || !value) continue;
    ui::variable_row row;
    row.name = display_name(record->name, frame->language_code()).value_or(record->name);
    row.value = shown(*value, *source.memory);
    row.is_parameter = record->address_type() == 4;
    variables.push_back(std::move(row));
  }
  return true;
}

namespace {

// At most `limit` elements of an evaluated array.
void fill_array_contents(element& array, TargetMemory& memory, std::uint64_t limit, ui::array_contents& out) {
  if (array.error_code) {
    out.error = error_text(array.error_code);
    return;
  }
  if (array.type != kTypeArray || !array.array || !array.next) {
    out.error = error_text(kErrorArrayExpected);
    return;
  }
  out.fortran = is_fortran_language(array.lang_code);
  const array_info& a = *array.array;
  int dims = std::clamp<int>(a.num_dims, 0, kMaxRank);
  if (dims == 0) return;

  // The bytes the elements span, fetched at once when that is reasonable: one read in
  // place of one per element.
  std::uint64_t total = 1;
  std::int64_t low = 0, high = std::max<std::int64_t>(array.next->size, 0);
  for (int d = 0; d < dims; ++d) {
    std::int64_t extent = extent_of(a, d);
    total = std::min<std::uint64_t>(total * static_cast<std::uint64_t>(extent), limit + 1);
    std::int64_t reach = extent > 0 ? (extent - 1) * a.distance[d] : 0;
    (reach < 0 ? low : high) += reach;
  }
  if (total == 0) return;
  std::vector<std::uint8_t> bytes;
  const std::uint8_t* held = nullptr;
  if (array.is_constant()) {
    if (low == 0 && high <= array.size) held = constant_bytes(array);
  } else if (high - low <= kOneReadLimit) {
    bytes.resize(static_cast<std::size_t>(high - low));
    if (memory.read(array.address + static_cast<Address>(low), bytes.data(), bytes.size()) == bytes.size())
      held = bytes.data() - low;
  }
  if (array.is_constant() && !held) {
    out.error = error_text(kErrorInternal);
    return;
  }

  std::vector<std::int64_t> index(static_cast<std::size_t>(dims), 0);
  for (std::uint64_t n = 0; n < total && n < limit; ++n) {
    std::int64_t offset = 0;
    ui::array_element_row row;
    for (int d = 0; d < dims; ++d) {
      offset += index[static_cast<std::size_t>(d)] * a.distance[d];
      row.subscripts.push_back(a.first_element[d] + index[static_cast<std::size_t>(d)]);
    }
    std::unique_ptr<element> item;
    if (held) {
      item = clone_element(*array.next);
      item->lang_code = array.lang_code;
      set_constant(*item, held + offset, array.next->size, item->type);
    } else {
      item = object_at(*array.next, array.address + static_cast<Address>(offset));
    }
    row.value = shown(*item, memory);
    out.elements.push_back(std::move(row));
    // Next subscript: the first dimension fastest in Fortran, the last in C.
    for (int k = 0; k < dims; ++k) {
      int d = out.fortran ? k : dims - 1 - k;
      if (++index[static_cast<std::size_t>(d)] < extent_of(a, d)) break;
      index[static_cast<std::size_t>(d)] = 0;
    }
  }
}

// The members of an evaluated structure, or of the structure a pointer points at.
void fill_structure_contents(std::unique_ptr<element> value, TargetMemory& memory, ui::structure_contents& out) {
  if (value->error_code == 0 && value->type == kTypePointer8 && value->next && value->next->type == kTypeStructure)
    value = dereference(*value, memory);
  if (value->error_code) {
    out.error = error_text(value->error_code);
    return;
  }
  if (value->type != kTypeStructure) {
    out.error = error_text(kErrorStructureExpected);
    return;
  }
  out.fortran = is_fortran_language(value->lang_code);
  for (structure_component& component : component_elements(*value, memory))
    out.members.push_back({component.name, shown(*component.value, memory)});
}

bool is_structure(const element& value) {
  return value.type == kTypeStructure ||
         (value.type == kTypePointer8 && value.next && value.next->type == kTypeStructure);
}

}  // namespace

void array_contents_of(const DataViewSource& source, int frame_index, const std::string& expression,
                       ui::array_contents& out) {
  fill_array_contents(*evaluate_in(source, frame_index, expression).value, *source.memory, kArrayViewLimit, out);
}

void structure_contents_of(const DataViewSource& source, int frame_index, const std::string& expression,
                           ui::structure_contents& out) {
  fill_structure_contents(std::move(evaluate_in(source, frame_index, expression).value), *source.memory, out);
}

void expression_rows_of(const DataViewSource& source, int frame_index, const std::string& expression,
                        std::size_t element_limit, ui::window_rows& rows) {
  EvalResult result = evaluate_in(source, frame_index, expression);
  element& value = *result.value;
  if (value.error_code) {
    rows.add(error_text(value.error_code));
    return;
  }
  TargetMemory& memory = *source.memory;
  rows.add(expression + " = " + shown(value, memory));
  if (value.type == kTypeArray) {
    ui::array_contents contents;
    fill_array_contents(value, memory, element_limit + 1, contents);
    const std::size_t listed = std::min(contents.elements.size(), element_limit);
    for (std::size_t i = 0; i < listed; ++i)
      rows.add(expression + ui::subscripts_text(contents.elements[i].subscripts, contents.fortran) + " = " +
               contents.elements[i].value);
    if (contents.elements.size() > listed) rows.add("...");
  } else if (is_structure(value)) {
    ui::structure_contents contents;
    fill_structure_contents(std::move(result.value), memory, contents);
    for (const auto& member : contents.members)
      rows.add(ui::member_expression(expression, member.name, contents.fortran) + " = " + member.value);
  }
}

ui::watch_value watch_value_of(const DataViewSource& source, const std::string& expression) {
  ui::watch_value watch;
  EvalResult result = evaluate_in(source, 0, expression);
  std::int32_t error = result.value->error_code;
  if (error == kErrorUnknownVariable || error == kErrorOutOfScope) {
    watch.state = ui::watch_value::kOutOfScope;
    return watch;
  }
  if (error == 0) {
    TextOutput text;
    error = value_text(*result.value, *source.memory, text.buffer());
    watch.text = text.str();
  }
  if (error) watch.state = ui::watch_value::kError;
  return watch;
}

void register_rows_of(const DataViewSource& source, ui::window_rows& rows, std::string& status) {
  status.clear();
  for (std::string line : register_dump(source.registers)) {
    if (!line.empty() && line.back() == '\n') line.pop_back();
    rows.add(std::move(line));
  }
}

}  // namespace vantor
