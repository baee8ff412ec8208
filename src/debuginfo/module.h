// One loaded image of the debugged process (the main program or a DLL). It maps the
// image file read-only to learn its PE layout and reads, from the running process, the
// routine map and per-routine debug blocks that our compiler leaves in the image. It also
// owns the line traps: the one-byte no-operations at every line start, all turned into
// breakpoint bytes at once when the debugger needs to stop at the next line.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "debuginfo/map_entry.h"
#include "os/os.h"
#include "process/target_memory.h"

namespace vantor {

class DebuggedProcess;
class Module;

// One routine found by a name fragment, for the routine chooser.
struct routine_match {
  std::string name;
  Address start = 0;
  bool has_lines = false;
  LineRecord first_line;  // when has_lines
  std::string file_name;  // when has_lines
  Module* module = nullptr;
};

class Module {
 public:
  // Opens the image (by `file_name`, or through `file` with its final path when the name is
  // empty), checks the PE headers, computes the end address, then reads the routine map.
  // The Module takes over `file` and closes it when it is destroyed, so the handle of a
  // load event stays open exactly as long as the view of its image.
  Module(DebuggedProcess& process, os::Handle file, const std::wstring& file_name, Address load_base,
         bool main_image);
  ~Module();
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  DebuggedProcess& process() const { return process_; }
  Address load_base() const { return load_base_; }
  Address end_address() const { return end_address_; }
  const std::wstring& path() const { return path_; }
  bool main_image() const { return main_image_; }
  bool owns_file() const { return owns_file_; }
  bool line_traps_on() const { return line_traps_on_; }
  bool has_routine_map() const { return !routines_.empty(); }
  // Routines in lookup order: the one stored later in the map comes first.
  const std::vector<std::unique_ptr<MapEntry>>& routines() const { return routines_; }
  // The PE headers inside the view of the file; null when the image is not a PE file.
  const std::uint8_t* file_header() const { return file_header_; }
  const std::uint8_t* optional_header() const { return optional_header_; }
  const std::uint8_t* first_section() const { return first_section_; }

  // ---- lookups; every one takes the first match in lookup order ----
  // The routine with start <= address <= end (the end is the routine's last byte).
  MapEntry* routine_at(Address address) const;
  // Start of the routine with exactly this name (case matters); 0 if none.
  Address routine_start(const std::string& name) const;
  // Start of `line` in the routine whose line table names `file` (case ignored); 0 if
  // none. The first form compares the whole recorded path, the second only the recorded
  // name after its last backslash.
  Address line_address(std::string_view file, std::int32_t line) const;
  Address line_address_by_bare_name(std::string_view file, std::int32_t line) const;
  bool has_source_file(std::string_view name, bool whole_path) const;
  // Appends every routine whose lower-case name contains `text`.
  void collect_routines(std::string_view text, std::vector<routine_match>& out);
  // The file name after the path's last backslash, or the whole path when it has none.
  std::wstring display_name() const;

  // Turns every line start of every routine into a breakpoint byte (on) or back into a
  // no-operation (off), one read and one write per routine. Nothing is done when the
  // traps are already in the requested state.
  void set_line_traps(bool on);

  // The routine's symbol stream, read the first time it is needed (false without symbols).
  bool load_symbols(MapEntry& routine);

 private:
  bool open_image(os::Handle file, const std::wstring& file_name);
  void read_routine_map();
  void read_debug_block_header(TargetMemory& memory, MapEntry& routine);
  Address line_address_matching(std::string_view file, std::int32_t line, bool whole_path) const;

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

// The part of a recorded path after its last backslash (the whole path when it has none).
std::string_view bare_file_name(std::string_view path);

}  // namespace vantor
