#include "process/breakpoint_list.h"

#include <algorithm>

namespace vantor {

namespace {

std::string trimmed(const std::string& text) {
  const char* blanks = " \t\r\n";
  auto first = text.find_first_not_of(blanks);
  if (first == std::string::npos) return {};
  auto last = text.find_last_not_of(blanks);
  return text.substr(first, last - first + 1);
}

}  // namespace

// The byte a new breakpoint must put back when it is lifted. Reading the code can find one
// of our own traps there (a line trap while they are armed, or another breakpoint on the
// same line that is planted); saving that would leave a stray trap behind after the lift.
// Line starts hold a no-operation beneath any trap.
std::uint8_t BreakpointList::original_byte_at(Address address, std::uint8_t read) {
  if (read != kTrapByte) return read;
  for (const auto& record : records_)
    if (!record->is_data() && record->address == address) return record->saved_byte;
  return line_traps_armed_ ? kNoOperationByte : read;
}

std::uint32_t BreakpointList::add_breakpoint(Address address, std::int32_t after, std::int32_t every,
                                             const std::string& condition, const std::string& file, std::int32_t line,
                                             bool temporary) {
  auto record = std::make_unique<breakpoint_info>();
  record->id = counter_++;
  record->kind = kCodeBreakpoint;
  record->file = file;
  record->condition = trimmed(condition);
  record->line = line;
  record->address = address;
  record->after = after;
  record->every = every;
  record->temporary = temporary;
  record->saved_byte = original_byte_at(address, static_cast<std::uint8_t>(host_.memory().read_u8(address)));
  if (planted_) host_.memory().write(address, &kTrapByte, 1);
  records_.push_back(std::move(record));
  return records_.back()->id;
}

std::uint32_t BreakpointList::add_carried_breakpoint(const breakpoint_info& earlier, std::uint32_t access) {
  if (earlier.is_data()) {
    if (set_hardware_slot(access, kSlotDataBreakpoint, earlier.address, earlier.length) < 0) return 0;
    return records_.front()->id;
  }
  auto record = std::make_unique<breakpoint_info>(earlier);
  record->id = counter_++;
  record->hits = 0;
  record->every_counter = 0;
  record->temporary = false;
  if (planted_) host_.memory().write(record->address, &kTrapByte, 1);
  records_.push_back(std::move(record));
  return records_.back()->id;
}

std::int64_t BreakpointList::set_breakpoint(const std::string& file, std::int32_t line, std::int32_t after,
                                            std::int32_t every, const std::string& condition) {
  Address address = host_.address_of_line(file, line);
  if (address == 0) return -1;
  return add_breakpoint(address, after, every, condition, file, line);
}

int BreakpointList::set_hardware_slot(std::uint32_t access, std::uint32_t kind, Address address, std::uint32_t size) {
  int slot = slots_.take(access, kind, address, size);
  if (slot < 0 || kind != kSlotDataBreakpoint) return slot;
  auto record = std::make_unique<breakpoint_info>();
  record->kind = kDataBreakpoint;
  record->line = slot;
  record->address = address;
  record->length = size;
  record->id = counter_++;
  records_.insert(records_.begin(), std::move(record));
  return slot;
}

// The byte a code breakpoint leaves behind when it goes for good: a line trap while they
// are armed (lifting at a stop put the no-operation back, and switching the traps on again
// would not rewrite it), its saved byte while it is planted (a paused program), and nothing
// when it was lifted already. Another breakpoint on the same address keeps it as it is.
void BreakpointList::restore_byte_if_unused(const breakpoint_info& gone) {
  if (gone.is_data()) return;
  for (const auto& record : records_)
    if (!record->is_data() && record->address == gone.address) return;
  if (line_traps_armed_)
    host_.memory().write(gone.address, &kTrapByte, 1);
  else if (planted_)
    host_.memory().write(gone.address, &gone.saved_byte, 1);
}

void BreakpointList::remove_breakpoint(std::uint32_t id) {
  auto it = std::find_if(records_.begin(), records_.end(), [id](const auto& record) { return record->id == id; });
  if (it == records_.end()) return;
  std::unique_ptr<breakpoint_info> gone = std::move(*it);
  records_.erase(it);
  if (gone->is_data()) slots_.free(gone->line);
  restore_byte_if_unused(*gone);
}

void BreakpointList::clear_breakpoints() {
  lift_breakpoints();
  slots_.free_data_breakpoint_slots();
  std::vector<std::unique_ptr<breakpoint_info>> gone;
  gone.swap(records_);
  for (const auto& record : gone) restore_byte_if_unused(*record);
}

void BreakpointList::plant_breakpoints() {
  for (const auto& record : records_)
    if (!record->is_data()) host_.memory().write(record->address, &kTrapByte, 1);
  planted_ = true;
}

void BreakpointList::lift_breakpoints() {
  for (const auto& record : records_)
    if (!record->is_data()) host_.memory().write(record->address, &record->saved_byte, 1);
  planted_ = false;
}

void BreakpointList::add_deferred_breakpoint(const std::string& file, std::int32_t line, std::int32_t after,
                                             std::int32_t every, const std::string& condition) {
  deferred_.push_back({file, condition, line, after, every});
}

void BreakpointList::retry_deferred_breakpoints() {
  for (std::size_t i = deferred_.size(); i-- > 0;) {
    const auto& request = deferred_[i];
    if (set_breakpoint(request.file, request.line, request.after, request.every, request.condition) >= 0)
      deferred_.erase(deferred_.begin() + static_cast<std::ptrdiff_t>(i));
  }
}

BreakpointCheck BreakpointList::check_breakpoint(Address address) {
  auto it = std::find_if(records_.begin(), records_.end(),
                         [address](const auto& record) { return record->address == address; });
  if (it == records_.end()) return kNoBreakpoint;
  breakpoint_info& record = **it;

  const std::int64_t hits = record.hits;
  BreakpointCheck result = kBreakpointRunOn;
  if (hits + 1 == record.after) {
    result = kBreakpointStop;
  } else if (hits >= record.after && record.after != 0) {
    // An after-count of 0 lands here never: it counts hits and never stops, deliberately.
    if (++record.every_counter >= static_cast<std::uint32_t>(std::max(record.every, 0))) {
      record.every_counter = 0;
      result = kBreakpointStop;
    }
  }
  ++record.hits;

  if (result == kBreakpointStop && !record.condition.empty()) {
    // A condition that cannot be evaluated stops rather than silently ignore the breakpoint.
    std::optional<bool> truth = host_.evaluate_condition(record.condition);
    if (truth && !*truth) result = kBreakpointRunOn;
  }
  return result;
}

void BreakpointList::arm_line_traps() {
  host_.set_module_line_traps(true);
  plant_breakpoints();
  line_traps_armed_ = true;
}

void BreakpointList::disarm_line_traps() {
  if (!line_traps_armed_) return;
  host_.set_module_line_traps(false);
  // Turning the traps off wrote no-operations over every planted breakpoint too.
  plant_breakpoints();
  line_traps_armed_ = false;
}

const breakpoint_info* BreakpointList::breakpoint(int index) const {
  return index >= 0 && index < count() ? records_[static_cast<std::size_t>(index)].get() : nullptr;
}

const breakpoint_info* BreakpointList::find(std::uint32_t id) const {
  for (const auto& record : records_)
    if (record->id == id) return record.get();
  return nullptr;
}

}  // namespace vantor
