// Line traps: our compiler puts a one-byte no-operation at the first instruction of every
// source line, so stopping at the next line is a matter of turning all of them into
// breakpoint bytes at once, and running on is turning them back.
#include <vector>

#include "common/messages.h"
#include "debuginfo/module.h"
#include "process/debugged_process.h"

namespace vantor {

namespace {
constexpr std::uint8_t kBreakpointByte = 0xCC;
constexpr std::uint8_t kNoOperationByte = 0x90;
// Line ranges beyond this come from a corrupt table and are left alone.
constexpr std::int64_t kLargestLineRange = 1 << 24;
}  // namespace

void Module::set_line_traps(bool on) {
  if (on == line_traps_on_) return;
  const std::uint8_t byte = on ? kBreakpointByte : kNoOperationByte;
  std::vector<std::uint8_t> code;
  for (const auto& routine : routines_) {
    if (!routine->has_lines()) continue;
    const auto& records = routine->lines->records;
    const std::int64_t low = records.front().offset;
    const std::int64_t high = records.back().offset;
    const Address first = routine->start + static_cast<Address>(low);
    if (low == high) {
      std::size_t nbytes = process_.write(first, &byte, 1);
      VANTOR_ASSERT(nbytes == 1, "nbytes == 1", "Module");
      continue;
    }
    if (high < low || high - low >= kLargestLineRange) continue;
    // One read and one write of the whole range instead of one write per line.
    const std::size_t size = static_cast<std::size_t>(high - low + 1);
    code.resize(size);
    std::size_t nbytes = process_.read(first, code.data(), size);
    VANTOR_ASSERT(nbytes == size, "nbytes == size", "Module");
    if (nbytes != size) continue;  // writing back what was never read would damage the code
    for (const LineRecord& record : records)
      if (record.offset >= low && record.offset <= high) code[static_cast<std::size_t>(record.offset - low)] = byte;
    process_.write(first, code.data(), size);
  }
  line_traps_on_ = on;
}

}  // namespace vantor
