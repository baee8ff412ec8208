// Bad programs get "file:line: error: ..." and never a crash; good ones compile to
// assembler with the documented prologues, line records and map entries.
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <regex>
#include <sstream>

#include "f95mini/compilation.h"
#include "f95mini/parser.h"
#include "f95mini/program_writer.h"

namespace f95mini {
namespace {

std::string compile(const std::string& source, Options opts = {}) {
  std::vector<SourceFile> files;
  files.push_back(parse_source("t.f95", source));
  Compilation comp(opts);
  comp.opts.record_full_path = false;
  return compile_program(comp, files);
}

std::string error_of(const std::string& source) {
  try {
    compile(source);
  } catch (const CompileError& e) {
    return e.what();
  }
  return "(compiled)";
}

TEST(CompileErrors, NamesTypesAndStatements) {
  EXPECT_EQ(error_of("program p\n implicit none\n x = 1\nend\n"), "t.f95:3: error: 'x' has no type (IMPLICIT NONE)");
  EXPECT_EQ(error_of("program p\n integer, parameter :: n = 2\n n = 3\nend\n"),
            "t.f95:3: error: cannot assign to the constant 'n'");
  EXPECT_EQ(error_of("program p\n integer :: a(2, 3)\n a(1) = 0\nend\n"), "t.f95:3: error: 'a' needs 2 subscript(s)");
  EXPECT_EQ(error_of("program p\n integer :: i\n i = 'text'\nend\n"),
            "t.f95:3: error: cannot convert CHARACTER(4) to INTEGER(4)");
  EXPECT_EQ(error_of("program p\n use nowhere\nend\n"), "t.f95:2: error: module 'nowhere' is not defined before this unit");
  EXPECT_EQ(error_of("program p\n character(len=*) :: s\nend\n"),
            "t.f95:2: error: CHARACTER(*) is only allowed for dummy arguments and constants");
  EXPECT_EQ(error_of("subroutine s(n)\n real :: w(n)\nend\nprogram p\nend\n"),
            "t.f95:2: error: automatic arrays are not supported ('w' needs constant bounds)");
  EXPECT_EQ(error_of("program p\n real :: r\n do r = 1, 2\n end do\nend\n"),
            "t.f95:3: error: the DO variable 'r' must be an INTEGER scalar variable");
  EXPECT_EQ(error_of("program p\n exit\nend\n"), "t.f95:2: error: EXIT or CYCLE outside a DO loop");
  EXPECT_EQ(error_of("program p\n do i = 1, 5, 0\n end do\nend\n"), "t.f95:2: error: DO-loop has zero increment");
  EXPECT_EQ(error_of("program p\n integer, pointer :: q\n integer :: t\n q => t\nend\n"),
            "t.f95:4: error: 't' is neither TARGET nor POINTER");
  EXPECT_EQ(error_of("program p\n type(missing) :: m\nend\n"), "t.f95:2: error: unknown type 'missing'");
  EXPECT_EQ(error_of("program p\n type t\n  integer :: a\n end type\n type(t) :: v\n v%b = 1\nend\n"),
            "t.f95:6: error: type t has no component 'b'");
  EXPECT_EQ(error_of("program p\n if (1) x = 2\nend\n"), "t.f95:2: error: the condition must be LOGICAL, not INTEGER(4)");
  EXPECT_EQ(error_of("program p\n integer(3) :: k\nend\n"), "t.f95:2: error: kind 3 is not supported for INTEGER(3)");
  EXPECT_EQ(error_of("subroutine s\nend\n"), "t.f95:1: error: no main program");
  EXPECT_EQ(error_of("program p\n call rax\nend\n"), "t.f95:2: error: the name 'rax' is reserved for external routines");
}

TEST(CompileErrors, CodeConventions) {
  std::string s = compile(
      "program p\n"
      "  real(8) :: big(1000)\n"
      "  big(1) = 1\n"
      "  call small(2)\n"
      "end program p\n"
      "subroutine small(n)\n"
      "  integer :: n\n"
      "  n = n + 1\n"
      "end subroutine small\n");
  // A frame of 4096 bytes or more: the size in RAX, then the probe.
  EXPECT_NE(s.find("__f95_program:\n.Lline"), std::string::npos);
  std::smatch m;
  ASSERT_TRUE(std::regex_search(s, m, std::regex("\tnop\n\tmovabs rax, (\\d+)\n\tcall qword ptr \\[rip\\+__f95_probe_ptr\\]\n")));
  EXPECT_GE(std::stoi(m[1]), 8000);
  EXPECT_EQ(std::stoi(m[1]) % 16, 8);
  // A small frame: one sub, frame size 8 mod 16, the NOP of the SUBROUTINE line first,
  // then RCX spilled to the first slot of the caller's home area.
  std::size_t small = s.find("SMALL:\n");
  ASSERT_NE(small, std::string::npos);
  std::string rest = s.substr(small);
  ASSERT_TRUE(std::regex_search(rest, m, std::regex("^SMALL:\n\\.Lline\\d+:\n\tnop\n\tsub rsp, (\\d+)\n\tmov qword ptr \\[rsp\\+(\\d+)\\], rcx\n")));
  EXPECT_EQ(std::stoi(m[1]) % 16, 8);
  EXPECT_EQ(std::stoi(m[2]), std::stoi(m[1]) + 8);
  // Map: both routines and the two run-time entries.
  EXPECT_NE(s.find(".asciz \"P\"\n\t.quad 1\n\t.rva __f95_program\n"), std::string::npos);
  EXPECT_NE(s.find(".asciz \"SMALL\"\n"), std::string::npos);
  EXPECT_NE(s.find(".asciz \"__get_common_info\"\n"), std::string::npos);
  EXPECT_NE(s.find(".asciz \"exit\"\n"), std::string::npos);
  // Line records of SMALL: its statement line at its first byte, then lines 8 and 9.
  EXPECT_NE(s.find("\t.long 3\n\t.long 6, "), std::string::npos);
  EXPECT_NE(s.find("\t.asciz \"t.f95\"\n"), std::string::npos);
}

TEST(CompileErrors, RecordedSourceNames) {
  EXPECT_EQ(recorded_file_name("/no/such/dir/prog.f95", false), "prog.f95");
  // A path that cannot be resolved is kept as given, in Wine's Z: form.
  EXPECT_EQ(recorded_file_name("/no/such/dir/prog.f95", true), "Z:\\no\\such\\dir\\prog.f95");
}

// Every prefix of a valid program, and the program with bytes dropped at random, either
// compiles or is rejected with a compile error.
TEST(CompileErrors, DamagedProgramsNeverCrashTheCompiler) {
  auto attempt = [](const std::string& text) {
    try {
      compile(text);
    } catch (const CompileError&) {
    }
  };
  std::mt19937 rng(7);
  for (const char* name : {"derived_types.f95", "strings.f95", "static_data.f95"}) {
    SCOPED_TRACE(name);
    std::ifstream file(std::string(VANTOR_SOURCE_DIR) + "/tests/f95mini/programs/" + name);
    std::stringstream whole;
    whole << file.rdbuf();
    const std::string program = whole.str();
    ASSERT_EQ(error_of(program), "(compiled)");
    std::string prefix, line;
    for (std::stringstream in(program); std::getline(in, line);) {
      EXPECT_NO_FATAL_FAILURE(attempt(prefix));
      EXPECT_NO_FATAL_FAILURE(attempt(prefix + "end\n"));
      prefix += line + "\n";
    }
    for (int round = 0; round < 100; ++round) {
      std::string damaged = program;
      for (int cuts = 1 + static_cast<int>(rng() % 3); cuts > 0; --cuts) damaged.erase(rng() % damaged.size(), 1 + rng() % 6);
      EXPECT_NO_FATAL_FAILURE(attempt(damaged));
    }
  }
}

}  // namespace
}  // namespace f95mini
