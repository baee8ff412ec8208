#include "values/display_name.h"

namespace vantor {

std::string undecorate_fortran_name(std::string_view name) {
  if (name == "program") return "MAIN@";
  std::string out;
  constexpr std::string_view kStruct = "struct ";
  if (name.substr(0, kStruct.size()) == kStruct) {
    out = "TYPE ";
    name.remove_prefix(kStruct.size());
    constexpr std::string_view kProgramType = "programdt_";
    if (name.substr(0, kProgramType.size()) == kProgramType) name.remove_prefix(kProgramType.size());
  }
  for (std::size_t i = 0; i < name.size();) {
    std::string_view rest = name.substr(i);
    if (rest.substr(0, 6) == "_F90__") {
      i += 6;
    } else if (rest.substr(0, 3) == "mp_" || rest.substr(0, 3) == "ip_" || rest.substr(0, 3) == "dt_") {
      out += ':';
      i += 3;
    } else if (rest.substr(0, 4) == "var_") {
      out += ':';
      i += 4;
    } else if (name[i] >= 'a' && name[i] <= 'z') {
      ++i;
    } else {
      out += name[i++];
    }
  }
  return out;
}

std::optional<std::string> display_name(std::string_view decorated, std::int32_t lang_code) {
  switch (lang_code) {
    case 0: return std::string(decorated);
    case 1:
    case 4: {
      std::string_view name = decorated;
      if (name.size() >= 3 && name.substr(name.size() - 3) == "__C") name.remove_suffix(3);
      return std::string(name);
    }
    case 3: return undecorate_fortran_name(decorated);
    default: return std::nullopt;
  }
}

}  // namespace vantor
