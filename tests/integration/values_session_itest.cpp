// Values of real programs built by the test compiler (tests/integration/values), at real
// stops under Wine. The program is stepped line by line; at each line that its source
// annotates, the annotations are checked in the innermost frame:
//   "! expect: EXPRESSION => TEXT; ..."  the expression's text (or error text) is TEXT;
//   "! shows: EXPRESSION, ..."           the line's PRINT writes a label and then these
//                                         values: the debugger's text of each must be what
//                                         the program prints for it;
//   "! let: LEFT = RIGHT; ..."           assigned before the line runs.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
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
#include "process/stepping.h"
#include "stack/call_stack.h"
#include "values/assignment.h"
#include "values/error_codes.h"
#include "values/eval.h"
#include "values/value_format.h"
#include "winlib/headless_library.h"

namespace vantor {
namespace {

// The main loop's part of a run command: the line traps switched for the mode.
std::int32_t command(DebuggedProcess& process, std::int32_t mode) {
  if (mode == kModeStepInto)
    process.arm_line_traps();
  else
    process.disarm_line_traps();
  return process.run(mode);
}

std::string trimmed(const std::string& text) {
  std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return {};
  std::size_t last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
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

// "A, B(1,2), C" as its expressions: commas inside brackets belong to them.
std::vector<std::string> split_expressions(const std::string& text) {
  std::vector<std::string> expressions;
  std::string current;
  int depth = 0;
  for (char c : text) {
    depth += c == '(' ? 1 : c == ')' ? -1 : 0;
    if (c == ',' && depth == 0) {
      expressions.push_back(trimmed(current));
      current.clear();
    } else {
      current += c;
    }
  }
  if (!trimmed(current).empty()) expressions.push_back(trimmed(current));
  return expressions;
}

struct Annotations {
  std::map<int, std::vector<Check>> expects, lets;
  std::map<int, std::vector<std::string>> shows;
  std::map<int, std::string> labels;  // of the lines that show values
  std::set<int> lines;                // every annotated line
};

Annotations read_annotations(const std::string& path) {
  Annotations notes;
  std::ifstream source(path);
  EXPECT_TRUE(source.good()) << "cannot read " << path;
  std::string line;
  for (int number = 1; std::getline(source, line); ++number) {
    // Comment lines only describe the annotations.
    if (trimmed(line).rfind("!", 0) == 0) continue;
    if (std::size_t at = line.find("! expect:"); at != std::string::npos) {
      notes.expects[number] = split_checks(line.substr(at + 9), " => ");
    } else if (std::size_t at = line.find("! let:"); at != std::string::npos) {
      notes.lets[number] = split_checks(line.substr(at + 6), " = ");
    } else if (std::size_t at = line.find("! shows:"); at != std::string::npos) {
      notes.shows[number] = split_expressions(line.substr(at + 8));
      std::size_t open = line.find('\''), close = line.find('\'', open + 1);
      EXPECT_NE(close, std::string::npos) << "line " << number << " prints no label";
      if (close != std::string::npos) notes.labels[number] = line.substr(open + 1, close - open - 1);
    } else {
      continue;
    }
    notes.lines.insert(number);
  }
  return notes;
}

// One value as the debugger shows it, with what it takes to read the program's text of it.
struct ShownValue {
  std::string expression;
  std::string text;
  std::int32_t type = 0;
};

// Whether the program's list-directed `printed` item is the debugger's text of the same
// value: integers alike; logicals T and F; CHARACTER without its apostrophes; reals and
// complex numbers by value, to the six digits the debugger's format keeps.
bool printed_as(const ShownValue& value, const std::string& printed) {
  const std::string& text = value.text;
  if (value.type == kTypeLogical8 || is_logical_type(value.type))
    return (text == ".TRUE." && printed == "T") || (text == ".FALSE." && printed == "F");
  if (value.type == kTypeCharacter) return text.size() >= 2 && text.substr(1, text.size() - 2) == printed;
  if (is_integer_type(value.type)) return text == printed;
  auto parts = [](const std::string& number) {
    std::vector<double> values;
    std::string inner = number.front() == '(' ? number.substr(1, number.size() - 2) : number;
    std::stringstream pieces(inner);
    std::string piece;
    while (std::getline(pieces, piece, ',')) {
      char* end = nullptr;
      values.push_back(std::strtod(piece.c_str(), &end));
      if (end == piece.c_str() || *end != '\0') return std::vector<double>{};
    }
    return values;
  };
  if (text.empty() || printed.empty()) return false;
  std::vector<double> shown = parts(text), written = parts(printed);
  if (shown.empty() || shown.size() != written.size()) return false;
  for (std::size_t i = 0; i < shown.size(); ++i)
    if (std::fabs(shown[i] - written[i]) > 5e-6 * std::max(1.0, std::fabs(written[i]))) return false;
  return true;
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
    if (!output_path_.empty()) DeleteFileW(output_path_.c_str());
  }

  // Launches the program with its standard output in a scratch file, and runs it to its
  // first line.
  bool start(const std::wstring& program) {
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
    std::int32_t state = command(process, kModeStepInto);
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
  std::string program_output_text() {
    std::string all;
    for (const std::string& line : program_output()) all += line + "\n";
    return all;
  }

  frame_information innermost() {
    CallStack* stack = process.current_stack();
    if (!stack || stack->depth() == 0) return {};
    return stack->information(0);
  }
  EvalScope scope(const frame_information& here) { return scope_of_frame(here.frame, process, &process.context()); }
  std::string text_of(const std::string& expression, const frame_information& here) {
    auto value = evaluate(expression, scope(here), kEvalEqualsCompares).value;
    return value_text_or_error(*value, process);
  }

  // Steps the program a line at a time to its end, checking and assigning at the
  // annotated lines, then compares the shown values with the program's output.
  void step_through(const std::wstring& program) {
    if (!start(program)) return;
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
      state = command(process, kModeStepInto);
    }
    EXPECT_EQ(state, psEnded) << process.status_text();
    ASSERT_TRUE(read) << "no stop had a source line";
    EXPECT_FALSE(notes.lines.empty()) << "no annotations in " << innermost_source_;
    for (int line : notes.lines) EXPECT_TRUE(reached.count(line)) << "line " << line << " was never reached";
    compare_with_output(notes);
  }

  void check_line(const Annotations& notes, const frame_information& here) {
    SCOPED_TRACE("line " + std::to_string(here.line));
    if (auto expects = notes.expects.find(here.line); expects != notes.expects.end()) {
      for (const Check& check : expects->second) EXPECT_EQ(text_of(check.left, here), check.right) << check.left;
    }
    if (auto shows = notes.shows.find(here.line); shows != notes.shows.end()) {
      std::vector<ShownValue>& values = shown_[here.line];
      for (const std::string& expression : shows->second) {
        auto value = evaluate(expression, scope(here), kEvalEqualsCompares).value;
        values.push_back({expression, value_text_or_error(*value, process), value->type});
        EXPECT_EQ(value->error_code, 0) << expression << ": " << values.back().text;
      }
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

  // Each line that shows values printed " LABEL" and then, per value, a blank and its text
  // (a CHARACTER value at its full length, blanks included).
  void compare_with_output(const Annotations& notes) {
    std::vector<std::string> output = program_output();
    for (const auto& [line, values] : shown_) {
      const std::string label = " " + notes.labels.at(line) + " ";
      auto printed = std::find_if(output.begin(), output.end(),
                                  [&](const std::string& text) { return text.rfind(label, 0) == 0; });
      ASSERT_NE(printed, output.end()) << "no output line begins with \"" << label << "\"";
      std::size_t at = label.size() - 1;
      for (const ShownValue& value : values) {
        SCOPED_TRACE("line " + std::to_string(line) + ": " + value.expression + " in \"" + *printed + "\"");
        ASSERT_LT(at, printed->size());
        ASSERT_EQ((*printed)[at], ' ');
        std::size_t begin = at + 1;
        std::size_t end = value.type == kTypeCharacter ? begin + std::max<std::size_t>(value.text.size(), 2) - 2
                                                       : std::min(printed->find(' ', begin), printed->size());
        std::string item = printed->substr(begin, end - begin);
        EXPECT_TRUE(printed_as(value, item)) << "the debugger shows " << value.text << ", the program printed " << item;
        at = end;
      }
    }
  }

  os::Win32System system;
  winlib::HeadlessLibrary windows;
  DebuggedProcess process;
  std::map<int, std::vector<ShownValue>> shown_;
  std::string innermost_source_;
  std::wstring output_path_;
  HANDLE output_ = INVALID_HANDLE_VALUE;
};

TEST_F(ValuesSessionTest, EveryTypeShowsWhatTheProgramPrintsEvaluatesAndAssigns) {
  step_through(L"all_types");
  // The assignments made at the "let" line reached the program: it printed them.
  EXPECT_NE(program_output_text().find(" let 99 2.25 abc   -1\n"), std::string::npos) << program_output_text();
}

TEST_F(ValuesSessionTest, NeverAssignedValuesOfACheckingBuildAreUndefined) { step_through(L"undefined"); }

// A breakpoint's condition is evaluated at each hit in the frame that hit it.
class ValuesBreakpointConditionTest : public ValuesSessionTest {
 protected:
  std::int32_t condition_line() {
    return testing::line_of("..\\values\\all_types.f95", "condition");
  }
};

TEST_F(ValuesBreakpointConditionTest, StopsOnlyWhereTheConditionHolds) {
  ASSERT_TRUE(start(L"all_types"));
  std::string source = innermost().source_file_name;
  ASSERT_GE(process.breakpoints().set_breakpoint(source, condition_line(), 1, 1, "i == 2 .AND. odd(-2) < 0"), 0)
      << source << " line " << condition_line();
  EXPECT_EQ(command(process, kModeGo), psStopped) << process.status_text();
  frame_information here = innermost();
  EXPECT_EQ(here.line, condition_line());
  EXPECT_EQ(text_of("i", here), "2");
  EXPECT_EQ(text_of("odd(1)", here), "10");
  EXPECT_EQ(command(process, kModeGo), psEnded) << "stopped again at line " << innermost().line;
}

TEST_F(ValuesBreakpointConditionTest, AConditionThatNeverHoldsNeverStops) {
  ASSERT_TRUE(start(L"all_types"));
  std::string source = innermost().source_file_name;
  ASSERT_GE(process.breakpoints().set_breakpoint(source, condition_line(), 1, 1, "i .GT. 3"), 0);
  EXPECT_EQ(command(process, kModeGo), psEnded) << "stopped at line " << innermost().line;
  EXPECT_NE(program_output_text().find(" let 123456"), std::string::npos) << program_output_text();
}

}  // namespace
}  // namespace vantor
