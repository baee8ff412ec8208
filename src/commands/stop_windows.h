// What a stop changes in the windows: the frame that stopped becomes the current frame
// for expressions, the source, call-stack and variables windows move to it, and every
// other window refreshes.
#pragma once

#include <cstdint>

namespace vantor {

// The innermost frame of the last stop's call stack that has a source line; -1 when none
// has.
std::int32_t first_frame_with_source();

// Brings the windows up to date after a stop. `instruction_level` (a step of one
// instruction) keeps to the windows already open instead of opening a source window.
void show_stop_in_windows(bool instruction_level);

}  // namespace vantor
