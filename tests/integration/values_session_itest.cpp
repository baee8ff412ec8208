// Values of real programs built by the test compiler (tests/integration/values), at real
// stops under Wine. The program is stepped line by line; at each line that its source
// annotates, the annotations are checked in the innermost frame:
//   "! expect: EXPRESSION => TEXT; ..."  the expression's text (or error text) is TEXT;
//   "! shows: EXPRESSION, ..."           the line's PRINT writes a label and then these
//                                         values: the debugger's text of each must be what
//                                         the program prints for it;
//   "! let: LEFT = RIGHT; ..."           assigned before the line runs.
// Values of a real program built by the test compiler (tests/integration/values), at real
// stops under Wine. The program is stepped line by line; at each line that its source
// annotates, the annotations are checked in the innermost frame:
//   "! expect: EXPRESSION => TEXT; ..."  the expression's text (or error text) is TEXT;
//   "! let: LEFT = RIGHT; ..."           assigned before the line runs.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "process/stepping.h"
#include "program_test.h"
#include "values/assignment.h"
#include "values/error_codes.h"
#include "values/eval.h"
#include "values/value_format.h"

namespace vantor {
namespace {

std::string trimmed(const std::string& text) {
  std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// "A => B; C => D" (or "A = B" for assignments) as pairs.
struct Check {
  std::string left, right;
};
std::vector<Check> split_checks(const std::string& text, const std::string& separator) {
  std::vector<Check> checks;
  std::stringstream parts(text);
  std::string part;
  while (std::getline(parts, part, ';')) {
    std::size_t at = part.find(separator);
    if (at != std::string::npos)
      checks.push_back({trimmed(part.substr(0, at)), trimmed(part.substr(at + separator.size()))});
  }
  return checks;
}

struct Annotations {
  std::map<int, std::vector<Check>> expects, lets;
};

Annotations read_annotations(const std::string& path) {
  Annotations notes;
  std::ifstream source(path);
  EXPECT_TRUE(source.good()) << "cannot read " << path;
  std::string line;
  for (int number = 1; std::getline(source, line); ++number) {
    if (trimmed(line).rfind("!", 0) == 0) continue;  // comment lines only describe the annotations
    if (std::size_t at = line.find("! expect:"); at != std::string::npos)
      notes.expects[number] = split_checks(line.substr(at + 9), " => ");
    else if (std::size_t at = line.find("! let:"); at != std::string::npos)
      notes.lets[number] = split_checks(line.substr(at + 6), " = ");
  }
  return notes;
}

class ValuesSessionTest : public testing::ProgramTest {
 protected:
  void TearDown() override {
    ProgramTest::TearDown();
    if (output_ != INVALID_HANDLE_VALUE) CloseHandle(output_);
    if (!output_path_.empty()) DeleteFileW(output_path_.c_str());
  }

  // Launches the program with its standard output in a scratch file, and runs it to its
  // first line.
  bool start_with_output(const std::wstring& program) {
    output_path_ = testing::scratch_path(program + L"_output.txt");
    SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    output_ = CreateFileW(output_path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                          CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_NE(output_, INVALID_HANDLE_VALUE);
    HANDLE saved = GetStdHandle(STD_OUTPUT_HANDLE);
    SetStdHandle(STD_OUTPUT_HANDLE, output_);
    bool launched = process.launch(testing::program_command(program));
    SetStdHandle(STD_OUTPUT_HANDLE, saved);
    EXPECT_TRUE(launched) << process.status_text();
    if (!launched) return false;
    std::int32_t state = command(kModeStepInto);
    EXPECT_EQ(state, psStopped) << process.status_text();
    return state == psStopped;
  }

  // The program's output lines, once it has ended.
  std::vector<std::string> program_output() {
    std::vector<std::string> lines;
    std::ifstream file{std::filesystem::path(output_path_)};
    for (std::string line; std::getline(file, line);) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      lines.push_back(line);
    }
    return lines;
  }
  frame_information innermost() {
    return process.current_stack() && stack().depth() > 0 ? stack().information(0) : frame_information{};
  }
  EvalScope scope(const frame_information& here) { return scope_of_frame(here.frame, process, &process.context()); }
  std::string text_of(const std::string& expression, const frame_information& here) {
    auto value = evaluate(expression, scope(here), kEvalEqualsCompares).value;
    return value_text_or_error(*value, process);
  }

  // Steps the program a line at a time to its end, checking and assigning at the
  // annotated lines.
  void step_through(const std::wstring& program) {
    if (!start_with_output(program)) return;
    Annotations notes;
    bool read = false;
    std::set<int> reached;
    std::int32_t state = psStopped;
    for (int steps = 0; state == psStopped && steps < 5000; ++steps) {
      frame_information here = innermost();
      if (here.has_source && !read) {
        innermost_source_ = here.source_file_name;
        notes = read_annotations(here.source_file_name);
        read = true;
      }
      if (here.has_source && reached.insert(here.line).second) check_line(notes, here);
      state = command(kModeStepInto);
    }
    EXPECT_EQ(state, psEnded) << process.status_text();
    ASSERT_TRUE(read) << "no stop had a source line";
    EXPECT_FALSE(notes.expects.empty()) << "no annotations in " << innermost_source_;
    for (const auto* lines : {&notes.expects, &notes.lets})
      for (const auto& [line, checks] : *lines) {
        EXPECT_TRUE(reached.count(line)) << "line " << line << " was never reached";
      }
  }

  void check_line(const Annotations& notes, const frame_information& here) {
    SCOPED_TRACE("line " + std::to_string(here.line));
    if (auto expects = notes.expects.find(here.line); expects != notes.expects.end()) {
      for (const Check& check : expects->second) EXPECT_EQ(text_of(check.left, here), check.right) << check.left;
    }
    if (auto lets = notes.lets.find(here.line); lets != notes.lets.end())
      for (const Check& let : lets->second) {
        auto left = evaluate(let.left, scope(here)).value;
        auto right = evaluate(let.right, scope(here)).value;
        ASSERT_EQ(left->error_code, 0) << let.left << ": " << error_text(left->error_code);
        ASSERT_EQ(right->error_code, 0) << let.right << ": " << error_text(right->error_code);
        EXPECT_EQ(assign(*left, *right, process), 0) << "let " << let.left;
      }
  }

  std::string innermost_source_;
  std::wstring output_path_;
  HANDLE output_ = INVALID_HANDLE_VALUE;
};

TEST_F(ValuesSessionTest, EveryTypeEvaluatesAndAssignsAtRealStops) {
  step_through(L"all_types");
  // The assignments made at the "let" line reached the program: it printed them.
  std::vector<std::string> output = program_output();
  for (const char* line : {" let 99 2.25 abc   -1", " others 4 5 F 78"}) {
    EXPECT_NE(std::find(output.begin(), output.end(), line), output.end()) << line;
  }
}

}  // namespace
}  // namespace vantor
