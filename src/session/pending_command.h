// The single run-request word: the user interface, scripts and start-up ask for a run by
// writing it; only the main loop reads and clears it. A new request overwrites one that
// has not been taken yet.
#pragma once

#include <cstdint>

namespace vantor {

// Run commands (bits 0-4). The number is also the run mode handed to the process.
enum RunCommand : std::uint32_t {
  kQuitCommand = 1,
  kRebuildWindowCommand = 2,
  kStepIntoCommand = 3,
  kGoCommand = 4,
  kStepOverCommand = 5,
  kStepInstructionCommand = 6,
  kRestartCommand = 7,
  kStepOutCommand = 8,
};

constexpr std::uint32_t kCommandMask = 31;
constexpr std::uint32_t kStartFlag = 4096;        // a normal run request
constexpr std::uint32_t kInstructionFlag = 8192;  // present the stop at instruction level

extern std::uint32_t PendingCommand;

// Stores command OR flags.
void SetPendingCommand(std::uint32_t command, std::uint32_t flags);

}  // namespace vantor
