// The assembler window's model: the machine code from a start address, one instruction a
// row, with a label row where a routine starts and a source row where a source line's
// code starts. It reads the code in one call per refresh and keeps the address of every
// row, so that the view can map a click to an address.
#pragma once

#include <functional>
#include <vector>

#include "process/target_memory.h"
#include "ui/code_map.h"
#include "ui/source_base_window.h"

namespace vantor::ui {

// Popup choice: ask for a routine and show it.
constexpr int kPopupGotoRoutine = 1;

class assembler_window : public source_base_window {
 public:
  // The program counter of the frame with that index of the current call stack, and
  // whether it is the current frame (the innermost); false when there is no such frame.
  using frame_locator = std::function<bool(int frame_index, Address& pc)>;

  assembler_window(TargetMemory& memory, code_map& code, frame_locator locate);

  bool show_frame(int frame_index) override;
  // Shows the code from `address`, with offsets from the routine that holds it.
  void show_address(Address address);
  bool show_routine(const std::string& name);

  Address start_address() const { return start_; }
  Address routine_start() const { return routine_start_; }
  // The instruction the program stopped at; 0 when the window does not show a frame.
  Address instruction_pointer() const { return instruction_pointer_; }
  Address selected_address() const { return selected_address_; }
  void select_address(Address address);
  // The address of each row, as last drawn.
  const std::vector<Address>& row_addresses() const { return row_addresses_; }
  // Whether the window shows the innermost frame (typed commands then use it).
  bool shows_current_frame() const { return frame_index_ == 0; }

  // Line moves go one instruction; page moves a window's worth of rows.
  bool handle_command(int code) override;
  bool handle_popup_choice(int choice) override;

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  Address next_instruction(Address address);
  Address previous_instruction(Address address);

  TargetMemory& memory_;
  code_map& code_;
  frame_locator locate_;
  Address start_ = 0;
  Address routine_start_ = 0;
  Address instruction_pointer_ = 0;
  Address selected_address_ = 0;
  std::vector<Address> row_addresses_;
};

}  // namespace vantor::ui
