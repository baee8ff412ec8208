#include "disasm/mnemonics.h"

namespace vantor::disasm {

const MnemonicInfo kMnemonicTable[kMnemonicCount + 1] = {
    {"", 0},
#define VANTOR_DISASM_INFO(name, size) {#name, size},
    VANTOR_DISASM_MNEMONICS(VANTOR_DISASM_INFO)
#undef VANTOR_DISASM_INFO
};

static_assert(static_cast<std::uint32_t>(Mnemonic::VTESTPS) == kMnemonicCount,
              "the mnemonic list holds exactly the table's names");

}  // namespace vantor::disasm
