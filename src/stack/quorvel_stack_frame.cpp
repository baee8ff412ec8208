#include "stack/quorvel_stack_frame.h"

namespace vantor {

int QuorvelStackFrame::variable_count() {
  return entry_ && entry_->symbols ? entry_->symbols->variable_count() : 0;
}

bool QuorvelStackFrame::has_lines() const { return entry_ && entry_->has_lines(); }

std::string QuorvelStackFrame::source_file_name() const {
  return entry_ && entry_->lines ? entry_->lines->file_name : std::string();
}

std::string QuorvelStackFrame::routine_name() const { return entry_ ? entry_->name : std::string(); }

Address QuorvelStackFrame::routine_start() const { return entry_ ? entry_->start : pc; }

}  // namespace vantor
