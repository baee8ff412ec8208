// Compile errors: every fault in the user's program becomes one "file:line: error: text"
// line and a non-zero exit. The front end throws CompileError and the driver reports it,
// so a bad program can never reach code generation half-understood.
#pragma once

#include <stdexcept>
#include <string>

namespace f95mini {

struct SourcePos {
  std::string file;
  int line = 0;
};

class CompileError : public std::runtime_error {
 public:
  CompileError(const SourcePos& pos, const std::string& message)
      : std::runtime_error(pos.file + ":" + std::to_string(pos.line) + ": error: " + message), pos_(pos) {}
  const SourcePos& pos() const { return pos_; }

 private:
  SourcePos pos_;
};

[[noreturn]] inline void fail(const SourcePos& pos, const std::string& message) { throw CompileError(pos, message); }

}  // namespace f95mini
