// The words of the command language: typed in the Command dialog or read from a script,
// every line starts with one of them. The table is data in one place so that its order
// (first match wins) and its codes can be read, and tested, as a whole.
#pragma once

#include <cstdint>
#include <string_view>

namespace vantor {

// What a command does; several words share a code.
enum CommandCode : std::uint32_t {
  kCmdNone = 0,  // ends the table
  kCmdPrint = 1,
  kCmdPrintMemory = 2,
  kCmdView = 3,
  kCmdFind = 4,
  kCmdWriteBreak = 5,
  kCmdUseBreak = 6,
  kCmdRegisters = 7,
  kCmdLet = 8,
  kCmdBreakpoints = 10,
  kCmdStream = 11,
  kCmdStreams = 12,
  kCmdPlot = 13,
  kCmdWatch = 14,
  kCmdExit = 15,
  kCmdStopScript = 16,
  kCmdDumpInfo = 17,
  kCmdStep = 18,
  kCmdStepOver = 19,
  kCmdGetTo = 20,
  kCmdGo = 21,
  kCmdBreakpoint = 22,
  kCmdDPrint = 23,
  kCmdDStream = 24,
  kCmdScript = 25,
};

struct command_row {
  const char* word;
  std::uint32_t code;
  std::uint8_t needs_argument;  // 1: the word must be followed by text
};

// The 36 words in lookup order, then a row whose code is kCmdNone.
extern const command_row CommandTable[];
constexpr int kCommandWordCount = 36;

// The first row whose word equals `word`, letter case ignored; null when none does.
const command_row* find_command(std::string_view word);

// What a command line came to.
enum CommandResult : std::uint32_t {
  kCommandDone = 0,          // also an empty line or a comment
  kCommandNotKnown = 1,      // the first word is not in the table
  kCommandNeedsArgument = 2, // and "stopscript", which ends a script the same way
  kCommandFailed = 3,        // the message has been shown
};

// The text a script prints for a result: "" for done and for results outside the table.
const char* command_result_text(std::uint32_t result);

}  // namespace vantor
