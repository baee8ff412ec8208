#include "support/fake_command_host.h"

#include <algorithm>
#include <cctype>

#include "values/variable_element.h"

namespace vantor::testing {

namespace {

// Variables of a fake frame sit where their records say.
class AbsoluteLocator : public VariableLocator {
 public:
  VariableAddress locate(std::uint32_t, std::uint64_t value, const VariableRecord*, Address) override {
    return {value, value, 0};
  }
};

constexpr std::uint32_t kAddressTypeAbsolute = 0;
constexpr std::uint32_t kAddressTypeHeld = 4;

bool same_ignoring_case(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
         });
}

}  // namespace

VariableRecord& FakeFrame::add_variable(const std::string& name, std::uint32_t debug_type, Address address,
                                        std::uint32_t size) {
  auto record = std::make_unique<VariableRecord>();
  record->name = name;
  record->descriptor = (debug_type << 4) | kAddressTypeAbsolute;
  record->address_value = address;
  record->size = size;
  records_.push_back(std::move(record));
  return *records_.back();
}

VariableRecord& FakeFrame::add_parameter(const std::string& name, std::uint32_t debug_type,
                                         std::vector<std::uint8_t> bytes) {
  auto record = std::make_unique<VariableRecord>();
  record->name = name;
  record->descriptor = (debug_type << 4) | kAddressTypeHeld;
  record->size = static_cast<std::uint32_t>(bytes.size());
  record->constant_value = std::move(bytes);
  records_.push_back(std::move(record));
  return *records_.back();
}

const VariableRecord* FakeFrame::variable_record(int index) {
  return index >= 0 && index < variable_count() ? records_[static_cast<std::size_t>(index)].get() : nullptr;
}

std::unique_ptr<element> FakeFrame::variable_element(int index) {
  const VariableRecord* record = variable_record(index);
  if (!record) return nullptr;
  AbsoluteLocator locator;
  return make_variable_element(locator, memory_, lang_code_, *record);
}

std::unique_ptr<element> FakeFrame::find_variable(std::string_view name) {
  for (int i = 0; i < variable_count(); ++i)
    if (same_ignoring_case(records_[static_cast<std::size_t>(i)]->name, name)) return variable_element(i);
  return nullptr;
}

FakeCommandHost::FakeCommandHost(FakeTarget& target)
    : breakpoint_host(target), target_(target), previous_(&command_host()) {
  set_command_host(this);
}

FakeCommandHost::~FakeCommandHost() { set_command_host(previous_); }

FakeFrame& FakeCommandHost::add_frame(const std::string& routine, const std::string& file, int lang_code) {
  frames.push_back(std::make_unique<FakeFrame>(target_.memory, routine, file, lang_code));
  frames.back()->index = static_cast<std::int32_t>(frames.size());
  return *frames.back();
}

StackFrame* FakeCommandHost::stack_frame(std::int32_t index) {
  return index >= 0 && index < stack_depth() ? frames[static_cast<std::size_t>(index)].get() : nullptr;
}

void FakeCommandHost::fill_stack_rows(ui::window_rows& rows, std::string& status) {
  status = stopped ? "Status: stopped" : "";
  for (const auto& frame : frames) rows.add(frame->routine_name());
}

std::vector<ui::found_routine> FakeCommandHost::find_routines(std::string_view fragment) {
  std::vector<ui::found_routine> found;
  std::string wanted(fragment);
  std::transform(wanted.begin(), wanted.end(), wanted.begin(), [](unsigned char c) { return std::tolower(c); });
  for (const auto& routine : routines) {
    std::string name = routine.routine;
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    if (name.find(wanted) != std::string::npos) found.push_back(routine);
  }
  return found;
}

source_file* FakeCommandHost::program_source_file(const std::wstring& path) {
  for (const auto& file : sources)
    if (file->recorded_name == path || file->full_path == path) return file.get();
  return nullptr;
}

bool FakeCommandHost::frame_source(StackFrame& frame, source_file*& file, std::int32_t& line) {
  for (std::size_t i = 0; i < frames.size() && i < frame_lines.size(); ++i)
    if (frames[i].get() == &frame && frame_lines[i].first) {
      file = frame_lines[i].first;
      line = frame_lines[i].second;
      return true;
    }
  return false;
}

}  // namespace vantor::testing
