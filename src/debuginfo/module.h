// One loaded image of the debugged process (the main program or a DLL). It maps the
// image file read-only to learn its PE layout and reads, from the running process, the
// routine map and per-routine debug blocks that our compiler leaves in the image. It also
// owns the line traps: the one-byte no-operations at every line start, all turned into
// breakpoint bytes at once when the debugger needs to stop at the next line.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "debuginfo/map_entry.h"
#include "os/os.h"

namespace vantor {

class DebuggedProcess;

class Module {
 public:
  // Opens the image (by `file_name`, or through `file` with its final path when the name is
  // empty), checks the PE headers, computes the end address, then reads the routine map.
  Module(DebuggedProcess& process, os::Handle file, const std::wstring& file_name, Address load_base,
         bool main_image);
  ~Module();
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  Address load_base() const { return load_base_; }
  Address end_address() const { return end_address_; }
  const std::wstring& path() const { return path_; }
  bool main_image() const { return main_image_; }
  bool line_traps_on() const { return line_traps_on_; }
  bool has_routine_map() const { return !routines_.empty(); }
  // Routines in lookup order: the one stored later in the map comes first.
  const std::vector<std::unique_ptr<MapEntry>>& routines() const { return routines_; }

 private:
  DebuggedProcess& process_;
  Address load_base_ = 0;
  Address end_address_ = 0;
  std::wstring path_;
  os::Handle file_ = 0;
  os::Handle mapping_ = 0;
  os::MappedView view_;
  const std::uint8_t* file_header_ = nullptr;
  const std::uint8_t* optional_header_ = nullptr;
  const std::uint8_t* first_section_ = nullptr;
  bool owns_file_ = false;
  bool line_traps_on_ = false;
  bool main_image_ = false;
  std::vector<std::unique_ptr<MapEntry>> routines_;
};

}  // namespace vantor
