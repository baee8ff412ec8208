// f95check IMAGE...: checks the debug tables of images built by f95mini.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "f95mini/checker/image_checker.h"

// --require-address-types 1,3,5: fail unless the images' variable records, taken
// together, use each of these address types.
int main(int argc, char** argv) {
  std::set<std::uint32_t> required, seen;
  int first = 1;
  if (argc > 2 && std::string(argv[1]) == "--require-address-types") {
    std::string list = argv[2];
    for (size_t at = 0; at < list.size();) {
      size_t comma = list.find(',', at);
      required.insert(static_cast<std::uint32_t>(std::stoul(list.substr(at, comma - at))));
      at = comma == std::string::npos ? list.size() : comma + 1;
    }
    first = 3;
  }
  if (argc <= first) {
    std::fprintf(stderr, "usage: f95check [--require-address-types LIST] IMAGE...\n");
    return 2;
  }
  int status = 0;
  for (int i = first; i < argc; ++i) {
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
    seen.insert(r.address_types.begin(), r.address_types.end());
  }
  for (std::uint32_t t : required) {
    if (!seen.count(t)) {
      std::printf("no variable record has address type %u\n", t);
      status = 1;
    }
  }
  return status;
}
