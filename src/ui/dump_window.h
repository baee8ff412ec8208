// The memory dump: lines of bytes of the debugged program from an address, 16, 8, 4, 2
// or 1 bytes a line (remembered in the settings). Each refresh reads the visible lines in
// one call of the target where it can, since each call is a round trip to the program.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "process/target_memory.h"
#include "ui/frame_window.h"

namespace vantor::ui {

// Popup choices: the bytes-per-line entries carry their menu keys.
constexpr int kPopupDump16Bytes = 6;
constexpr int kPopupDump8Bytes = 8;
constexpr int kPopupDump4Bytes = 4;
constexpr int kPopupDump2Bytes = 2;
constexpr int kPopupDump1Byte = 1;
constexpr int kPopupDumpWriteBreak = 20;
constexpr int kPopupDumpUseBreak = 21;

// "%p": the address as sixteen upper-case hexadecimal digits.
std::string dump_address_text(Address address);

class dump_window : public frame_window {
 public:
  // Sets a data breakpoint over `bytes` bytes at `address` (use: any access, else write),
  // with the checks and messages of the data-breakpoint commands; the command part
  // supplies it.
  using data_break_setter = std::function<void(bool use, Address address, int bytes)>;

  dump_window(TargetMemory& memory, Address address, std::string expression, int frame_index = -1,
              data_break_setter set_break = nullptr);

  std::string caption() const override { return "Dump View"; }
  Address address() const { return address_; }
  int bytes_per_line() const { return bytes_per_line_; }
  // Also remembered in the settings; anything but 16, 8, 4, 2 or 1 is refused.
  bool set_bytes_per_line(int bytes);

  // Line and page moves shift the address.
  bool handle_command(int code) override;
  bool handle_popup_choice(int choice) override;

  // The address of the byte drawn at (row, column) of the window, if a byte is there.
  std::optional<Address> byte_address_at(int row, int column) const;
  // Asks for a new value of the byte at (row, column) and writes it into the program.
  bool edit_byte(int row, int column);

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  void ask_data_break(bool use);

  TargetMemory& memory_;
  Address address_;
  int bytes_per_line_;
  data_break_setter set_break_;
};

}  // namespace vantor::ui
