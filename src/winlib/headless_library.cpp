#include "winlib/headless_library.h"

namespace vantor::winlib {

std::int64_t HeadlessLibrary::info(const std::string& name) {
  if (name == "PIXELS_PER_H_UNIT") return kPixelsPerHUnit;
  if (name == "PIXELS_PER_V_UNIT") return kPixelsPerVUnit;
  return 0;
}

}  // namespace vantor::winlib
