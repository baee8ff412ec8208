#include "commands/command_table.h"

#include <cctype>

namespace vantor {

// clang-format off
const command_row CommandTable[] = {
  {"print",       kCmdPrint,       1},
  {"p",           kCmdPrint,       1},
  {"printmem",    kCmdPrintMemory, 1},
  {"pm",          kCmdPrintMemory, 1},
  {"dump",        kCmdPrintMemory, 1},
  {"view",        kCmdView,        1},
  {"find",        kCmdFind,        1},
  {"write_break", kCmdWriteBreak,  0},
  {"wb",          kCmdWriteBreak,  0},
  {"use_break",   kCmdUseBreak,    0},
  {"ub",          kCmdUseBreak,    0},
  {"regs",        kCmdRegisters,   0},
  {"let",         kCmdLet,         1},
  {"plot",        kCmdPlot,        1},
  {"breakpoints", kCmdBreakpoints, 0},
  {"bps",         kCmdBreakpoints, 0},
  {"stream",      kCmdStream,      1},
  {"unit",        kCmdStream,      1},
  {"streams",     kCmdStreams,     0},
  {"units",       kCmdStreams,     0},
  {"watch",       kCmdWatch,       1},
  {"exit",        kCmdExit,        0},
  {"stopscript",  kCmdStopScript,  0},
  {"dumpinfo",    kCmdDumpInfo,    1},
  {"dprint",      kCmdDPrint,      1},
  {"step",        kCmdStep,        0},
  {"s",           kCmdStep,        0},
  {"stepover",    kCmdStepOver,    0},
  {"so",          kCmdStepOver,    0},
  {"getto",       kCmdGetTo,       1},
  {"go",          kCmdGo,          0},
  {"continue",    kCmdGo,          0},
  {"breakpoint",  kCmdBreakpoint,  1},
  {"dstream",     kCmdDStream,     1},
  {"dunit",       kCmdDStream,     1},
  {"script",      kCmdScript,      1},
  {nullptr,       kCmdNone,        0},
};
// clang-format on

namespace {

bool same_word(const char* word, std::string_view text) {
  std::size_t i = 0;
  for (; word[i] != '\0'; ++i) {
    if (i == text.size()) return false;
    if (std::tolower(static_cast<unsigned char>(word[i])) != std::tolower(static_cast<unsigned char>(text[i])))
      return false;
  }
  return i == text.size();
}

const char* const ResultTexts[] = {"", "Command not known", "An expression was expected", "Error"};

}  // namespace

const command_row* find_command(std::string_view word) {
  for (const command_row* row = CommandTable; row->code != kCmdNone; ++row)
    if (same_word(row->word, word)) return row;
  return nullptr;
}

const char* command_result_text(std::uint32_t result) {
  return result < sizeof ResultTexts / sizeof ResultTexts[0] ? ResultTexts[result] : "";
}

}  // namespace vantor
