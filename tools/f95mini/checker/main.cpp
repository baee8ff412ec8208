// f95check IMAGE...: checks the debug tables of images built by f95mini.
#include <cstdio>
#include <fstream>
#include <iterator>

#include "f95mini/checker/image_checker.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: f95check IMAGE...\n");
    return 2;
  }
  int status = 0;
  for (int i = 1; i < argc; ++i) {
    std::ifstream in(argv[i], std::ios::binary);
    if (!in) {
      std::fprintf(stderr, "f95check: cannot open %s\n", argv[i]);
      status = 1;
      continue;
    }
    std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
    f95check::CheckResult r = f95check::check_image(bytes);
    for (const auto& e : r.errors) std::printf("%s: %s\n", argv[i], e.c_str());
    std::printf("%s: %d routines, %d debug blocks, %d line records, %d variables, %d types, %d COMMON records: %s\n",
                argv[i], r.routines, r.debug_blocks, r.line_records, r.variables, r.derived_types, r.common_blocks,
                r.ok() ? "OK" : "FAILED");
    if (!r.ok()) status = 1;
  }
  return status;
}
