#include "session/pending_command.h"

namespace vantor {

std::uint32_t PendingCommand = 0;

void SetPendingCommand(std::uint32_t command, std::uint32_t flags) { PendingCommand = command | flags; }

}  // namespace vantor
