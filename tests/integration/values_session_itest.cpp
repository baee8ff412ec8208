// Values of real programs built by the test compiler: the program is stepped line by
// line, and at each line that its source annotates ("! expect: EXPRESSION => TEXT; ...")
// every expression is evaluated in the innermost frame and its text compared; at a line
// annotated "! let: LEFT = RIGHT; ..." each assignment is made before the line runs, and the
// program's own output then shows the assigned values.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "common/messages.h"
#include "debuggee.h"
#include "os/win32/win32_system.h"
#include "process/debugged_process.h"
#include "stack/call_stack.h"
#include "values/assignment.h"
#include "values/error_codes.h"
#include "values/eval.h"
#include "values/value_format.h"
#include "values/element_dump.h"
#include "debuginfo/map_entry.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

struct Check {
  std::string left, right;
};

struct Annotations {
  std::map<int, std::vector<Check>> expects;
  std::map<int, std::vector<Check>> lets;
};

std::string trimmed(const std::string& text) {
  std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return {};
  std::size_t last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

// "A => B; C => D" (or with "=" for assignments) as pairs.
std::vector<Check> split_checks(const std::string& text, const std::string& separator) {
  std::vector<Check> checks;
  std::stringstream parts(text);
  std::string part;
  while (std::getline(parts, part, ';')) {
    std::size_t at = part.find(separator);
    if (at == std::string::npos) continue;
    checks.push_back({trimmed(part.substr(0, at)), trimmed(part.substr(at + separator.size()))});
  }
  return checks;
}

Annotations read_annotations(const std::string& path) {
  Annotations annotations;
  std::ifstream source(path);
  std::string line;
  for (int number = 1; std::getline(source, line); ++number) {
    std::size_t expect = line.find("! expect:");
    if (expect != std::string::npos) annotations.expects[number] = split_checks(line.substr(expect + 9), " => ");
    std::size_t let = line.find("! let:");
    if (let != std::string::npos) annotations.lets[number] = split_checks(line.substr(let + 6), " = ");
  }
  return annotations;
}

class ValuesSessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    os::set_system(&system);
    winlib::set_window_library(&windows);
    ConsoleMode = true;
  }
  void TearDown() override {
    if (process.launched()) process.end();
    winlib::set_window_library(nullptr);
    if (output_ != INVALID_HANDLE_VALUE) CloseHandle(output_);
    DeleteFileW(output_path_.c_str());
  }

  // The program's standard output goes to a scratch file, read back by program_output().
  void capture_output() {
    output_path_ = testing::scratch_path(L"values_output.txt");
    SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    output_ = CreateFileW(output_path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                          CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(output_, INVALID_HANDLE_VALUE);
    saved_output_ = GetStdHandle(STD_OUTPUT_HANDLE);
    SetStdHandle(STD_OUTPUT_HANDLE, output_);
  }
  void restore_output() {
    if (saved_output_) SetStdHandle(STD_OUTPUT_HANDLE, saved_output_);
    saved_output_ = nullptr;
  }
  std::string program_output() {
    std::string all;
    HANDLE file = CreateFileW(output_path_.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return all;
    char chunk[4096];
    DWORD got = 0;
    while (ReadFile(file, chunk, sizeof chunk, &got, nullptr) && got > 0) all.append(chunk, got);
    CloseHandle(file);
    all.erase(std::remove(all.begin(), all.end(), '\r'), all.end());
    return all;
  }

  // Steps the program a line at a time to its end, checking and assigning at the
  // annotated lines; returns how many annotated lines were reached.
  int step_through(const std::wstring& program) {
    capture_output();
    bool launched = process.launch(testing::debuggee_command(program));
    restore_output();
    EXPECT_TRUE(launched) << process.status_text();
    if (!launched) return 0;
    Annotations annotations;
    bool read = false;
    std::set<int> reached;
    std::int32_t state = process.run(kStepInto);
    for (int steps = 0; state == psStopped && steps < 5000; ++steps) {
      CallStack* stack = process.current_stack();
      if (stack && stack->depth() > 0) {
        frame_information here = stack->information(0);
        if (here.has_source && !read) {
          annotations = read_annotations(here.source_file_name);
          read = true;
        }
        if (here.has_source && reached.insert(here.line).second) check_line(annotations, here);
      }
      state = process.run(kStepInto);
    }
    EXPECT_EQ(state, psEnded) << process.status_text();
    int annotated = 0;
    for (const auto& [line, checks] : annotations.expects) {
      EXPECT_TRUE(reached.count(line)) << "line " << line << " was never reached";
      annotated += reached.count(line) ? 1 : 0;
    }
    return annotated;
  }

  void check_line(const Annotations& annotations, const frame_information& here) {
    EvalScope scope = scope_of_frame(here.frame, process, &process.context());
    if (auto expects = annotations.expects.find(here.line); expects != annotations.expects.end()) {
      for (const Check& check : expects->second) {
        auto value = evaluate(check.left, scope, kEvalEqualsCompares).value;
        if (getenv("VALUES_DUMP")) {
          auto whole = evaluate("p", scope).value;
          printf("%s\n", dump_element(*whole, process).c_str());
          if (whole->structure && whole->structure->type) for (auto& c : whole->structure->type->components) printf("comp %s\n", c->name.c_str());
          if (auto* me = here.frame->map_entry(); me && me->symbols) {
            for (auto& v : me->symbols->variables()) printf("var %s key %u\n", v->name.c_str(), v->type_key);
            for (auto& t : me->symbols->derived_types()) printf("type %s key %u\n", t->name.c_str(), t->key);
          }
        }
        EXPECT_EQ(value_text_or_error(*value, process), check.right)
            << "line " << here.line << ": " << check.left;
      }
    }
    if (auto lets = annotations.lets.find(here.line); lets != annotations.lets.end()) {
      for (const Check& let : lets->second) {
        auto left = evaluate(let.left, scope).value;
        auto right = evaluate(let.right, scope).value;
        ASSERT_EQ(left->error_code, 0) << let.left << ": " << error_text(left->error_code);
        ASSERT_EQ(right->error_code, 0) << let.right << ": " << error_text(right->error_code);
        EXPECT_EQ(assign(*left, *right, process), 0) << "line " << here.line << ": let " << let.left;
      }
    }
  }

  static constexpr std::int32_t kStepInto = 3;
  os::Win32System system;
  winlib::HeadlessLibrary windows;
  DebuggedProcess process;
  std::wstring output_path_;
  HANDLE output_ = INVALID_HANDLE_VALUE;
  HANDLE saved_output_ = nullptr;
};

TEST_F(ValuesSessionTest, EveryTypeFormatsEvaluatesAndAssigns) {
  EXPECT_EQ(step_through(L"all_types"), 12);
  // The assignments made at the "let" line reached the program: it printed them.
  std::string output = program_output();
  EXPECT_NE(output.find(" let 99 2.25 abc   -1\n"), std::string::npos) << output;
  EXPECT_NE(output.find(" after 99 2.25 abc   -1\n"), std::string::npos) << output;
}

TEST_F(ValuesSessionTest, NeverAssignedVariablesOfACheckingBuildAreUndefined) {
  EXPECT_EQ(step_through(L"undefined"), 2);
}

TEST_F(ValuesSessionTest, Bisect1) { step_through(L"p1"); }
TEST_F(ValuesSessionTest, Bisect2) { step_through(L"p2"); }
TEST_F(ValuesSessionTest, Bisect3) { step_through(L"p3"); }

}  // namespace
}  // namespace vantor
