// Fuzz target for the image reader: any bytes are the image file of a module loaded at a
// fixed base, and the same bytes are its memory there, so that a file whose map offset
// lands inside it reaches the routine map too. The module is opened both ways a session
// opens one: by name (the main image) and through the load event's handle (a library).
// The PE checks must accept exactly the images whose headers fit and are signed, and no
// input may crash, leak or hang.
#include <cstdint>
#include <cstring>
#include <vector>

#include "debuginfo/module.h"
#include "fuzz/fuzz_target.h"
#include "process/debugged_process.h"
#include "support/fake_target.h"

namespace {

using namespace vantor;
using fuzz::kImageBase;
using fuzz::kImagePath;

[[noreturn]] void fail(const char* what) { fuzz::fail("image reader", what); }

// Where the reader must find the PE signature, or -1 for an image it must refuse: the
// new-header offset is a signed 16-bit value, and the signature, file header and 64-bit
// optional header must all lie inside the file.
std::int64_t expected_signature(const std::vector<std::uint8_t>& file) {
  if (file.size() < 62) return -1;
  std::int16_t offset;
  std::memcpy(&offset, file.data() + 60, 2);
  if (offset < 0 || static_cast<std::size_t>(offset) + 4 + 20 + 240 > file.size()) return -1;
  return std::memcmp(file.data() + offset, "PE\0\0", 4) == 0 ? offset : -1;
}

void check(const Module& module, const std::vector<std::uint8_t>& file, const std::uint8_t* view) {
  std::int64_t signature = expected_signature(file);
  if (signature < 0) {
    if (module.file_header() || module.has_routine_map() || module.end_address() != 0) fail("a bad image was taken");
    return;
  }
  if (module.file_header() != view + signature + 4) fail("the file header is not after the signature");
  if (module.optional_header() != module.file_header() + 20 || module.first_section() != module.optional_header() + 240)
    fail("the headers do not follow one another");
  std::uint32_t size_of_image;
  std::memcpy(&size_of_image, module.optional_header() + 56, 4);
  if (module.end_address() != kImageBase + size_of_image) fail("the end is not the base plus the image size");
  for (const auto& routine : module.routines())
    if (module.routine_at(routine->start) == nullptr && routine->start <= routine->end)
      fail("a routine is not found at its own start");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > fuzz::kLargestImage) return 0;
  testing::FakeTarget target;
  target.system.set_message_box_answer(os::kIdCancel);
  std::vector<std::uint8_t> file(data, data + size);
  target.system.add_file(kImagePath, file);
  target.system.poke(kImageBase, file);
  const std::uint8_t* view = target.system.file(kImagePath)->data();

  {
    DebuggedProcess process;
    Module by_name(process, 0, kImagePath, kImageBase, true);
    check(by_name, file, view);
    by_name.display_name();
  }
  std::uint32_t error = 0;
  os::Handle handle = target.system.open_file_for_reading(kImagePath, error);
  if (!handle) fail("the image file cannot be opened");
  DebuggedProcess process;
  Module by_handle(process, handle, L"", kImageBase, false);
  check(by_handle, file, view);
  return 0;
}
