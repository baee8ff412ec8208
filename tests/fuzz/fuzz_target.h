// What the fuzz targets share: how a fault ends the run (the driver then keeps the input),
// the image they load, and the assertion boxes no input may raise.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "os/inmemory/in_memory_system.h"
#include "process/target_memory.h"

namespace vantor::fuzz {

constexpr Address kImageBase = 0x140000000;
constexpr const wchar_t* kImagePath = L"C:\\build\\prog.exe";
constexpr std::size_t kLargestImage = 1 << 16;

[[noreturn]] inline void fail(const char* target, const char* what) {
  std::fprintf(stderr, "%s fault: %s\n", target, what);
  std::abort();
}

// Whether an internal assertion was shown in a box; only those from `source` when given.
inline bool assertion_shown(const os::InMemorySystem& system, const wchar_t* source = L"") {
  for (const auto& box : system.message_boxes)
    if (box.text.find(L"Assert failure") != std::wstring::npos && box.text.find(source) != std::wstring::npos)
      return true;
  return false;
}

}  // namespace vantor::fuzz
